// Texts of the period's system error numbers, for errors with bit 31 set.
#pragma once

#include <cstdint>
#include <string>

namespace vl {

enum SystemError : uint32_t {
  SYS_SUCCESS = 0,
  SYS_INVALID_FUNCTION = 1,
  SYS_FILE_NOT_FOUND = 2,
  SYS_PATH_NOT_FOUND = 3,
  SYS_TOO_MANY_OPEN_FILES = 4,
  SYS_ACCESS_DENIED = 5,
  SYS_INVALID_HANDLE = 6,
  SYS_NOT_ENOUGH_MEMORY = 8,
  SYS_INVALID_DRIVE = 15,
  SYS_NO_MORE_FILES = 18,
  SYS_WRITE_PROTECT = 19,
  SYS_SHARING_VIOLATION = 32,
  SYS_HANDLE_EOF = 38,
  SYS_FILE_EXISTS = 80,
  SYS_INVALID_PARAMETER = 87,
  SYS_DISK_FULL = 112,
  SYS_INVALID_NAME = 123,
  SYS_DIR_NOT_EMPTY = 145,
  SYS_ALREADY_EXISTS = 183,
};

// The system's message, with its full stop; a number in words for one without a text here.
std::string SystemErrorText(uint32_t number, bool french);

}  // namespace vl

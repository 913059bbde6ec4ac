// Numbers of the period's system errors, as a program reads them of the last thing that failed.
#pragma once

#include <cstdint>

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
  SYS_BAD_NETPATH = 53,
  SYS_FILE_EXISTS = 80,
  SYS_INVALID_PARAMETER = 87,
  SYS_DISK_FULL = 112,
  SYS_INVALID_NAME = 123,
  SYS_DIR_NOT_EMPTY = 145,
  SYS_ALREADY_EXISTS = 183,
  SYS_FILENAME_TOO_LONG = 206,
  SYS_DIRECTORY = 267,
};

}  // namespace vl

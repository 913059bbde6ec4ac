// CIError: a script error, which is a number. All failures of compiler, walker and members travel as one.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vl {

enum ErrorCode : uint32_t {
  ERR_END = 0,      // the program ends
  ERR_RESTART = 1,  // the program starts anew
  ERR_BLOCK_END = 3,
  ERR_BRACE_EXPECTED = 4,
  ERR_CASE_END = 5,
  ERR_SEMICOLON = 6,
  ERR_SECOND_WINDOW = 8,
  ERR_NOT_MADE = 9,
  ERR_NO_SURFACE = 10,
  ERR_UNKNOWN_MEMBER = 11,
  ERR_STRING_VALUE = 12,
  ERR_TOO_MANY = 13,
  ERR_BAD_ARGUMENT = 14,
  ERR_MEMORY = 15,
  ERR_SYNTAX = 16,
  ERR_OBJECT_VALUE = 18,
  ERR_OBJECT_MISSING = 19,
  ERR_NOT_OFFERED = 20,
  ERR_UNKNOWN_BLOCK = 20,
  ERR_ARGUMENT_COUNT = 21,
  ERR_POLYGON_COORDINATES = 22,
  ERR_BAD_DEPTH = 23,
  ERR_DRAW_MODE = 24,
  ERR_BREAK = 25,
  ERR_CONTINUE = 26,
  ERR_NO_BLOCK = 27,
  ERR_NOT_INDEXED = 28,
  ERR_NO_FILE_NAME = 29,
  ERR_NEW = 30,
  ERR_NO_WINDOW = 31,
  ERR_NULL_OBJECT = 32,
  ERR_SPRITE_IMAGE = 34,
  ERR_NO_MEMBERS = 35,
  ERR_AUTO_BACK = 36,
  ERR_AUTO_REFRESH = 37,
  ERR_CONSTRUCTION = 38,
  ERR_SPRITE_SURFACE = 39,
  ERR_NOT_FUNCTION = 40,
  ERR_UNDEFINED = 41,
  ERR_UNKNOWN_FUNCTION = 42,
  ERR_RETURN = 43,
  ERR_INTERNAL = 44,
  ERR_ARRAY_STRING = 44,
  ERR_SUBSCRIPT = 45,
  ERR_NOT_ARRAY = 46,
  ERR_WRONG_CLASS = 47,
  ERR_FILE_CLOSED = 48,
  ERR_POLYGON_ARGUMENT = 53,
  ERR_POINT_VALUES = 56,
  ERR_POINT_DIMENSIONS = 57,
  ERR_QUEUE_FULL = 61,
  ERR_FIXED_CLASS = 65,
  ERR_SUBSCRIPT_COUNT = 66,
  ERR_INPUT_RUNNING = 67,
  ERR_SOUND_3D = 78,
  ERR_NO_STRING = 79,
  ERR_ANIMATION = 81,
  ERR_WAIT_IN_EVENT = 84,
  ERR_NO_DATA = 87,
  ERR_MATRIX_ELEMENT = 88,
  ERR_NO_GAME_INPUT = 91,
  ERR_MODAL = 105,
  ERR_DIVISION = 111,
  ERR_STRING_ARGUMENT = 115,
  ERR_OUT_OF_RANGE = 115,
  ERR_FUNCTION_VALUE = 128,
  ERR_FILE_LIMIT = 129,
  ERR_ARRAY_VALUE = 130,
  ERR_DELETE_INTERPRETER = 133,
  ERR_BANK = 134,
};

inline constexpr uint32_t kNoArgument = 0x80000000;
inline constexpr uint32_t kSystemError = 0x80000000;

// Base of all exceptions of the runtime.
class CFCException {
 public:
  virtual ~CFCException() = default;
};

class CIError : public CFCException {
 public:
  CIError() = default;
  CIError(uint32_t code, uint32_t argument, std::string sourceName, uint32_t column, uint32_t line)
      : code(code), argument(argument), sourceName(std::move(sourceName)), column(column), line(line) {}

  uint32_t code = 0;
  uint32_t argument = kNoArgument;
  std::string sourceName;  // path of the source, "" for none
  uint32_t column = 0;     // 0-based; -1 before a source is known
  uint32_t line = 0;       // 0-based; as `column`
  // What a person who writes the program would want to know; never seen by the program itself.
  std::string detail;
};

// The runtime's own texts; English and French.
struct ErrorTexts {
  bool french = false;
};

// Text of a code: without a line "%s.", with one "%s at line %i." (the line is counted from 1 in the text).
std::string FormatError(uint32_t code, const uint32_t* line, const ErrorTexts& texts);
// Title of the error box, from `part://bank/name.ext`: "part - name".
std::string FormatErrorTitle(std::string_view sourceName);

}  // namespace vl

// Token records: kinds, shapes and access.
//
// A record is u16 kind, u8 size of the whole record, u8 flags (bit 0: the last 4 bytes are a position word),
// operands, position word. The next record starts at record + size. All fields are little-endian and read
// through the helpers below, since records are only 2-aligned by format.
#pragma once

#include <cstdint>
#include <cstring>

namespace vl {

enum TokenKind : uint16_t {
  TK_END = 0,
  TK_CLASS_FIRST = 1,
  TK_CLASS_LAST = 75,
  TK_CALL = 77,            // name (
  TK_NAME = 78,            // name
  TK_ELEMENT = 79,         // name [
  TK_MEMBER_CALL = 80,     // .name (
  TK_MEMBER = 81,          // .name
  TK_MEMBER_ELEMENT = 82,  // .name [
  TK_VAR = 83,
  TK_NEW = 84,
  TK_FOR = 85,
  TK_RETURN = 86,
  TK_BREAK = 87,
  TK_CONTINUE = 88,
  TK_DELETE = 89,
  TK_FUNCTION = 90,
  TK_THIS = 91,
  TK_IF = 92,
  TK_ELSE = 93,
  TK_WHILE = 94,
  TK_IN = 95,
  TK_CURWINDOW = 96,
  TK_SWITCH = 97,
  TK_CASE = 98,
  TK_DEFAULT = 99,
  TK_MAIN_START = 100,
  TK_MAIN_END = 101,
  TK_DECIMAL = 102,
  TK_BASED = 103,
  TK_INTEGER = 104,
  TK_TEXT = 105,
  TK_FLOAT = 106,
  TK_ZERO = 107,
  TK_TRUE = 108,
  TK_FALSE = 109,
  TK_ON = 110,
  TK_OFF = 111,
  TK_OMITTED = 112,
  TK_PAREN_OPEN = 113,
  TK_PAREN_CLOSE = 114,
  TK_COMMA = 115,
  TK_BRACE_OPEN = 116,
  TK_BRACE_CLOSE = 117,
  TK_SEMICOLON = 118,
  TK_OPERATOR_FIRST = 121,
  TK_ASSIGN = 121,
  TK_ADD_ASSIGN = 122,
  TK_SUB_ASSIGN = 123,
  TK_MUL_ASSIGN = 124,
  TK_DIV_ASSIGN = 125,
  TK_AND_ASSIGN = 126,
  TK_OR_ASSIGN = 127,
  TK_XOR_ASSIGN = 128,
  TK_MOD_ASSIGN = 129,
  TK_SHL_ASSIGN = 130,
  TK_SHR_ASSIGN = 131,
  TK_CONDITIONAL = 132,
  TK_LOGICAL_AND = 133,
  TK_LOGICAL_OR = 134,
  TK_GREATER_EQUAL = 135,
  TK_LESS_EQUAL = 136,
  TK_EQUAL = 137,
  TK_LESS = 138,
  TK_GREATER = 139,
  TK_NOT_EQUAL = 140,
  TK_NOT = 141,
  TK_COMPLEMENT = 142,
  TK_INCREMENT = 143,
  TK_DECREMENT = 144,
  TK_ADD = 145,
  TK_SUB = 146,
  TK_DIV = 147,
  TK_MUL = 148,
  TK_AND = 149,
  TK_OR = 150,
  TK_XOR = 151,
  TK_MOD = 152,
  TK_SHL = 153,
  TK_SHR = 154,
  TK_OPERATOR_LAST = 154,
  TK_DOT = 166,
  TK_COLON = 168,
  TK_BRACKET_OPEN = 169,
  TK_BRACKET_CLOSE = 170,
  TK_COMMENT = 171,
  TK_COMMENT_OPEN = 172,
  TK_COMMENT_CLOSE = 173,
  TK_KIND_COUNT = 174,
};

// Size before the position word, by shape.
enum TokenShape : uint8_t {
  kShapePlain = 4,
  kShapeWord = 8,
  kShapeJump = 12,
  kShapeFloat = 12,
  kShapeName = 16,
  kShapeFunction = 20,
};

inline constexpr uint8_t kTokenHasPosition = 1;
inline constexpr uint8_t kTokenMemberFollows = 2;  // of a name; set when the program starts

// Sizes of whole records: the compiler writes each with its position word. The walker steps by these where it
// knows the kind, as the next step then doesn't wait for the record's size.
inline constexpr uint32_t kPlainRecord = kShapePlain + 4;
inline constexpr uint32_t kWordRecord = kShapeWord + 4;
inline constexpr uint32_t kJumpRecord = kShapeJump + 4;
inline constexpr uint32_t kFloatRecord = kShapeFloat + 4;
inline constexpr uint32_t kNameRecord = kShapeName + 4;
// The first word of a name that no member follows.
inline constexpr uint32_t kPlainNameHeader = TK_NAME | kNameRecord << 16 | uint32_t{kTokenHasPosition} << 24;

using Token = const uint8_t*;

template <typename T>
inline T ReadRaw(const uint8_t* p) {
  T v;
  std::memcpy(&v, p, sizeof v);
  return v;
}
template <typename T>
inline void WriteRaw(uint8_t* p, T v) {
  std::memcpy(p, &v, sizeof v);
}

inline uint16_t TokenKindOf(Token t) { return ReadRaw<uint16_t>(t); }
inline bool IsMemberToken(uint16_t kind) { return kind >= TK_MEMBER_CALL && kind <= TK_MEMBER_ELEMENT; }
inline uint8_t TokenSize(Token t) { return t[2]; }
inline uint8_t TokenFlags(Token t) { return t[3]; }
inline Token TokenNext(Token t) { return t + t[2]; }
inline uint32_t TokenWord(Token t) { return ReadRaw<uint32_t>(t + 4); }
inline uint32_t TokenWord2(Token t) { return ReadRaw<uint32_t>(t + 8); }
inline double TokenFloat(Token t) { return ReadRaw<double>(t + 4); }
inline const char* TokenText(Token t) { return reinterpret_cast<const char*>(t + 4); }
// Name shape: the cached member id and class, and the name id.
inline uint16_t TokenMemberId(Token t) { return ReadRaw<uint16_t>(t + 4); }
inline uint32_t TokenMemberClass(Token t) { return ReadRaw<uint32_t>(t + 8); }
// Kinds 77 to 79 keep in these words the variable that was found last. It may be another one by now.
struct CVariable;
inline CVariable* TokenVariable(Token t) { return ReadRaw<CVariable*>(t + 4); }
inline void SetTokenVariable(uint8_t* t, CVariable* variable) { WriteRaw(t + 4, variable); }
static_assert(sizeof(CVariable*) <= 8);
inline uint32_t TokenNameId(Token t) { return ReadRaw<uint32_t>(t + 12); }
// Function shape of the first pass.
inline uint32_t TokenSourcePart(Token t) { return ReadRaw<uint32_t>(t + 12); }
inline uint32_t TokenFunctionName(Token t) { return ReadRaw<uint32_t>(t + 16); }
inline bool TokenPosition(Token t, uint32_t& position) {
  if (!(TokenFlags(t) & kTokenHasPosition)) return false;
  position = ReadRaw<uint32_t>(t + t[2] - 4);
  return true;
}

// A construct with a body. Offsets count from the start of the final stream.
enum BlockKind : uint32_t { kBlockFor = 1, kBlockPlain = 3, kBlockWhile = 4, kBlockSwitch = 5, kBlockFunction = 6 };

struct BlockRecord {
  uint32_t kind = 0;
  uint32_t bodyStart = 0;   // the {
  uint32_t bodyEnd = 0;     // the }
  uint32_t test = 0;        // condition (0: none); for a function its name id
  uint32_t extra = 0;       // For: increment; Switch: statements behind Default; Function: its token; 0: none
  uint32_t sourcePart = 0;  // functions
};

}  // namespace vl

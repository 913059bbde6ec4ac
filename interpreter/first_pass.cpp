#include "interpreter/first_pass.h"

#include <array>

#include "base/limits.h"
#include "interpreter/number_text.h"

namespace vl {

namespace {

enum CharClass : uint8_t { kEnd = 0, kLineEnd = 1, kLetter = 2, kDigit = 3, kSpace = 4, kPunctuation = 5 };

constexpr size_t kWordBytes = 255;

constexpr std::array<uint8_t, 256> MakeClasses() {
  std::array<uint8_t, 256> classes{};
  for (int c = 0; c < 256; ++c) {
    uint8_t k = kPunctuation;
    if (c == 0) {
      k = kEnd;
    } else if (c == 9 || c == 32 || c == 0xA0) {
      k = kSpace;
    } else if (c < 32) {
      k = kLineEnd;
    } else if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c >= 0x80) {
      k = kLetter;
    } else if (c >= '0' && c <= '9') {
      k = kDigit;
    }
    classes[static_cast<size_t>(c)] = k;
  }
  return classes;
}
constexpr std::array<uint8_t, 256> kClasses = MakeClasses();

uint8_t ClassOf(char c) { return kClasses[static_cast<uint8_t>(c)]; }
bool IsWordChar(char c) { return ClassOf(c) == kLetter || ClassOf(c) == kDigit; }

}  // namespace

void CFirstPass::Run() {
  infos_.pass1Buffer.clear();
  for (uint32_t s = 0; s < infos_.sources.size(); ++s) Source(s);
  Begin(TK_END, kShapePlain);
  infos_.pass1Buffer.back() = 0;  // the end carries no position
}

void CFirstPass::Fail(uint32_t code, uint32_t at, std::string detail) {
  infos_.currentSource = sourceNumber_;
  infos_.textCursor = at;
  infos_.Raise(code, kNoArgument, std::move(detail));
}

void CFirstPass::Begin(uint16_t kind, uint8_t size) {
  auto& out = infos_.pass1Buffer;
  if (out.size() > limits::kMaxStreamBytes) Fail(ERR_MEMORY, wordStart_);
  Put<uint16_t>(kind);
  Put<uint8_t>(static_cast<uint8_t>(kind == TK_END ? size : size + 4));
  Put<uint8_t>(kTokenHasPosition);
}

template <typename T>
void CFirstPass::Put(T value) {
  auto& out = infos_.pass1Buffer;
  const size_t at = out.size();
  out.resize(at + sizeof value);
  WriteRaw<T>(out.data() + at, value);
}

void CFirstPass::End() { Put<uint32_t>((sourceNumber_ << 24) | (wordStart_ & 0xFFFFFF)); }

void CFirstPass::Plain(uint16_t kind) {
  Begin(kind, kShapePlain);
  End();
}

uint32_t CFirstPass::NameId(std::string_view name) {
  uint32_t id = 0;
  if (!infos_.namePool->Intern(name, id)) Fail(ERR_MEMORY, wordStart_, "too many names");
  return id;
}

void CFirstPass::NameToken(uint16_t kind, std::string_view name) {
  Begin(kind, kShapeName);
  Put<uint32_t>(0);
  Put<uint32_t>(0);
  Put<uint32_t>(NameId(name));
  End();
}

void CFirstPass::Source(uint32_t number) {
  const CTokenInfos::Source& source = infos_.sources[number];
  sourceNumber_ = number;
  text_ = source.text;
  cursor_ = wordStart_ = 0;
  if (source.flags & kSourceControlEnds) {
    size_t end = 0;
    while (end < text_.size() && ClassOf(text_[end]) != kLineEnd) ++end;
    text_ = text_.substr(0, end);
  }
  const bool main = source.flags & kSourceMain;
  if (main) {
    Begin(TK_MAIN_START, kShapeWord);
    Put<uint32_t>(source.part);
    End();
    Plain(TK_SEMICOLON);
  }
  while (cursor_ < text_.size()) {
    wordStart_ = cursor_;
    switch (ClassOf(text_[cursor_])) {
      case kLetter:
        Word();
        break;
      case kDigit:
        Number();
        break;
      case kPunctuation:
        if (text_[cursor_] == '"' || text_[cursor_] == '\'') {
          Quoted();
        } else {
          Punctuation();
        }
        break;
      default:
        ++cursor_;
        break;
    }
  }
  wordStart_ = static_cast<uint32_t>(text_.size());
  if (main) {
    Plain(TK_MAIN_END);
    Plain(TK_SEMICOLON);
  }
}

std::string_view CFirstPass::LetterWord() {
  const uint32_t start = cursor_;
  while (cursor_ < text_.size() && cursor_ - start < kWordBytes && IsWordChar(text_[cursor_])) ++cursor_;
  return text_.substr(start, cursor_ - start);
}

char CFirstPass::PeekSignificant(uint32_t* at) const {
  uint32_t i = cursor_;
  while (i < text_.size() && (ClassOf(text_[i]) == kSpace || ClassOf(text_[i]) == kLineEnd)) ++i;
  if (at) *at = i;
  return i < text_.size() ? text_[i] : '\0';
}

void CFirstPass::CheckBuilt(uint32_t classId, const KeywordRow* member) {
  const ClassTable* table = infos_.keywords->tables[classId];
  if (!table) {
    Fail(ERR_UNKNOWN_MEMBER, wordStart_,
         std::string("the class ") + FactsOfClass(classId).name + " isn't part of this player yet");
  }
  if (!member || (member->flags & 0x80000000u)) return;
  for (const MemberRow& row : table->rows) {
    if (row.id == member->id && row.kind != MemberKind::Constant && !row.function) {
      Fail(ERR_UNKNOWN_MEMBER, wordStart_,
           std::string(table->Name()) + "." + row.name + " isn't part of this player yet");
    }
  }
}

void CFirstPass::Word() {
  const std::string_view word = LetterWord();
  if (const KeywordRow* row = infos_.keywords->language.Find(word)) {
    const auto kind = static_cast<uint16_t>(row->id);
    switch (kind) {
      case TK_IF:
      case TK_ELSE:
      case TK_CASE:
      case TK_DEFAULT:
        Begin(kind, kShapeWord);
        Put<uint32_t>(0);
        End();
        return;
      case TK_FOR:
      case TK_WHILE:
      case TK_SWITCH:
        Begin(kind, kShapeJump);
        Put<uint32_t>(0);
        Put<uint32_t>(0);
        End();
        return;
      case TK_FUNCTION: {
        uint32_t at = 0;
        const char next = PeekSignificant(&at);
        if (ClassOf(next) != kLetter) Fail(ERR_NOT_FUNCTION, wordStart_, "a name must follow Function");
        cursor_ = at;
        const std::string_view name = LetterWord();
        Begin(kind, kShapeFunction);
        Put<uint32_t>(0);
        Put<uint32_t>(0);
        Put<uint32_t>(infos_.sources[sourceNumber_].part);
        Put<uint32_t>(NameId(name));
        End();
        return;
      }
      default:
        if (kind >= TK_CLASS_FIRST && kind <= TK_CLASS_LAST) CheckBuilt(kind, nullptr);
        Plain(kind);
        return;
    }
  }
  for (uint32_t id = 1; id <= kClassCount; ++id) {
    const CKeywordTable* members = infos_.keywords->members[id].get();
    const KeywordRow* row = members ? members->Find(word) : nullptr;
    if (row && row->field3) {
      CheckBuilt(id, row);
      Plain(static_cast<uint16_t>(row->field3));
      MemberToken(word);
      return;
    }
  }
  uint32_t at = 0;
  const char next = PeekSignificant(&at);
  if (next == '[' || next == '(') cursor_ = at + 1;
  NameToken(next == '[' ? TK_ELEMENT : next == '(' ? TK_CALL : TK_NAME, word);
}

void CFirstPass::MemberToken(std::string_view name) {
  uint32_t at = 0;
  const char next = PeekSignificant(&at);
  if (next == '[' || next == '(') cursor_ = at + 1;
  NameToken(next == '[' ? TK_MEMBER_ELEMENT : next == '(' ? TK_MEMBER_CALL : TK_MEMBER, name);
}

void CFirstPass::Number() {
  const std::string_view rest = text_.substr(cursor_);
  if (rest.size() >= 2 && rest[0] == '0' && ((rest[1] | 0x20) == 'b' || (rest[1] | 0x20) == 'x')) {
    size_t used = 0;
    const uint32_t value = ParseDigits(rest.substr(2), (rest[1] | 0x20) == 'b' ? 2 : 16, used);
    cursor_ += static_cast<uint32_t>(used) + 2;
    Begin(TK_BASED, kShapeWord);
    Put<uint32_t>(value);
    End();
    return;
  }
  bool point = false;
  bool exponent = false;
  size_t i = 0;
  for (; i < rest.size(); ++i) {
    const char c = rest[i];
    if (ClassOf(c) == kDigit) continue;
    const char lower = static_cast<char>(c | 0x20);
    if (c == '.') {
      if (point) Fail(ERR_SYNTAX, wordStart_, "a second point in a number");
      point = true;
    } else if (lower == 'e' || lower == 'd') {
      if (exponent) Fail(ERR_SYNTAX, wordStart_, "a second exponent in a number");
      exponent = true;
    } else if (exponent && (c == '+' || c == '-')) {
      continue;
    } else {
      break;
    }
  }
  const double value = ParseDouble(rest.substr(0, i));
  cursor_ += static_cast<uint32_t>(i);
  if (!point && !exponent && value >= -2147483646.0 && value <= 2147483646.0) {
    Begin(TK_DECIMAL, kShapeWord);
    Put<uint32_t>(static_cast<uint32_t>(static_cast<int32_t>(value)));
  } else {
    Begin(TK_FLOAT, kShapeFloat);
    Put<double>(value);
  }
  End();
}

void CFirstPass::Quoted() {
  const char quote = text_[cursor_++];
  const uint32_t start = cursor_;
  while (cursor_ < text_.size() && cursor_ - start < kWordBytes && text_[cursor_] != quote &&
         ClassOf(text_[cursor_]) != kLineEnd) {
    ++cursor_;
  }
  const std::string_view literal = text_.substr(start, cursor_ - start);
  if (cursor_ < text_.size() && text_[cursor_] == quote) ++cursor_;
  if (literal.size() > limits::kMaxLiteralBytes) {
    Fail(ERR_SYNTAX, wordStart_,
         "a text literal holds at most " + std::to_string(limits::kMaxLiteralBytes) + " characters");
  }
  const size_t size = ((literal.size() + 4) & ~size_t{3}) + 4;
  Begin(TK_TEXT, static_cast<uint8_t>(size));
  auto& out = infos_.pass1Buffer;
  out.insert(out.end(), literal.begin(), literal.end());
  out.insert(out.end(), size - 4 - literal.size(), 0);
  End();

  uint32_t dot = 0;
  if (PeekSignificant(&dot) != '.') return;
  const uint32_t back = cursor_;
  cursor_ = dot + 1;
  uint32_t at = 0;
  if (ClassOf(PeekSignificant(&at)) != kLetter) {
    cursor_ = back;
    return;
  }
  cursor_ = wordStart_ = at;
  const std::string_view member = LetterWord();
  // Without parentheses the member is dropped: the text alone is the value.
  if (PeekSignificant(&at) == '(') {
    cursor_ = at + 1;
    NameToken(TK_MEMBER_CALL, member);
  }
}

void CFirstPass::Dot() {
  ++cursor_;
  uint32_t at = 0;
  if (ClassOf(PeekSignificant(&at)) != kLetter) {
    Plain(TK_DOT);
    return;
  }
  cursor_ = at;
  wordStart_ = at;
  const std::string_view name = LetterWord();
  MemberToken(name);
}

void CFirstPass::Punctuation() {
  if (text_[cursor_] == '.') {
    Dot();
    return;
  }
  uint32_t length = 0;
  while (cursor_ + length < text_.size() && length < kWordBytes && ClassOf(text_[cursor_ + length]) == kPunctuation) {
    ++length;
  }
  // No word of the language has more than three punctuation characters.
  if (length > 3) length = 3;
  const KeywordRow* row = nullptr;
  for (; length > 0; --length) {
    row = infos_.keywords->language.Find(text_.substr(cursor_, length));
    if (row) break;
  }
  if (!row) Fail(ERR_SYNTAX, wordStart_, std::string("unexpected character ") + text_[cursor_]);
  cursor_ += length;
  switch (row->id) {
    case TK_COMMENT:
      infos_.commentSeen = true;
      while (cursor_ < text_.size() && ClassOf(text_[cursor_]) != kLineEnd) ++cursor_;
      return;
    case TK_BRACE_OPEN:
    case TK_BRACE_CLOSE:
      Begin(static_cast<uint16_t>(row->id), kShapeJump);
      Put<uint32_t>(0);
      Put<uint32_t>(0);
      End();
      return;
    default:
      Plain(static_cast<uint16_t>(row->id));
      return;
  }
}

}  // namespace vl

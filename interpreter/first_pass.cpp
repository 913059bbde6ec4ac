#include "interpreter/first_pass.h"

#include <algorithm>
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
  used_ = 0;
  for (uint32_t s = 0; s < infos_.sources.size(); ++s) Source(s);
  // The end carries no position.
  uint8_t* end = Room(kShapePlain);
  WriteRaw<uint16_t>(end, TK_END);
  end[2] = kShapePlain;
  infos_.pass1Buffer.resize(used_);
}

void CFirstPass::Fail(uint32_t code, uint32_t at, std::string detail) {
  infos_.currentSource = sourceNumber_;
  infos_.textCursor = at;
  infos_.Raise(code, kNoArgument, std::move(detail));
}

uint8_t* CFirstPass::Room(size_t bytes) {
  std::vector<uint8_t>& out = infos_.pass1Buffer;
  if (used_ > limits::kMaxStreamBytes) Fail(ERR_MEMORY, wordStart_);
  if (out.size() - used_ < bytes) out.resize(std::max<size_t>(4096, out.size() * 2), 0);
  uint8_t* room = out.data() + used_;
  used_ += bytes;
  return room;
}

uint8_t* CFirstPass::Record(uint16_t kind, uint32_t shape) {
  uint8_t* record = Room(shape + 4);
  WriteRaw<uint16_t>(record, kind);
  record[2] = static_cast<uint8_t>(shape + 4);
  record[3] = kTokenHasPosition;
  WriteRaw<uint32_t>(record + shape, (sourceNumber_ << 24) | (wordStart_ & 0xFFFFFF));
  return record + 4;
}

uint32_t CFirstPass::NameId(CWord& word, std::string_view text) {
  if (word.nameId == CWord::kNoName && !infos_.namePool->Intern(text, word.nameId)) {
    Fail(ERR_MEMORY, wordStart_, "too many names");
  }
  return word.nameId;
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
    WriteRaw<uint32_t>(Record(TK_MAIN_START, kShapeWord), source.part);
    Record(TK_SEMICOLON, kShapePlain);
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
    Record(TK_MAIN_END, kShapePlain);
    Record(TK_SEMICOLON, kShapePlain);
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
  const std::string_view text = LetterWord();
  CWord& word = words_.Find(text);
  if (word.language) {
    const auto kind = static_cast<uint16_t>(word.language->id);
    switch (kind) {
      case TK_IF:
      case TK_ELSE:
      case TK_CASE:
      case TK_DEFAULT:
        Record(kind, kShapeWord);
        return;
      case TK_FOR:
      case TK_WHILE:
      case TK_SWITCH:
        Record(kind, kShapeJump);
        return;
      case TK_FUNCTION: {
        uint32_t at = 0;
        const char next = PeekSignificant(&at);
        if (ClassOf(next) != kLetter) Fail(ERR_NOT_FUNCTION, wordStart_, "a name must follow Function");
        cursor_ = at;
        const uint32_t nameId = NameId(LetterWord());
        uint8_t* operands = Record(kind, kShapeFunction);
        WriteRaw<uint32_t>(operands + 8, infos_.sources[sourceNumber_].part);
        WriteRaw<uint32_t>(operands + 12, nameId);
        return;
      }
      default:
        if (kind >= TK_CLASS_FIRST && kind <= TK_CLASS_LAST) CheckBuilt(kind, nullptr);
        Record(kind, kShapePlain);
        return;
    }
  }
  if (word.globalClass) {
    const KeywordRow* row = infos_.keywords->members[word.globalClass]->Find(word.text);
    CheckBuilt(word.globalClass, row);
    Record(static_cast<uint16_t>(row->field3), kShapePlain);
    MemberToken(word, text);
    return;
  }
  uint32_t at = 0;
  const char next = PeekSignificant(&at);
  if (next == '[' || next == '(') cursor_ = at + 1;
  NameToken(next == '[' ? TK_ELEMENT : next == '(' ? TK_CALL : TK_NAME, NameId(word, text));
}

// A member's name by what follows: call, element or plain.
void CFirstPass::MemberToken(CWord& word, std::string_view text) {
  uint32_t at = 0;
  const char next = PeekSignificant(&at);
  if (next == '[' || next == '(') cursor_ = at + 1;
  NameToken(next == '[' ? TK_MEMBER_ELEMENT : next == '(' ? TK_MEMBER_CALL : TK_MEMBER, NameId(word, text));
}

void CFirstPass::Number() {
  const std::string_view rest = text_.substr(cursor_);
  if (rest.size() >= 2 && rest[0] == '0' && ((rest[1] | 0x20) == 'b' || (rest[1] | 0x20) == 'x')) {
    size_t used = 0;
    const uint32_t value = ParseDigits(rest.substr(2), (rest[1] | 0x20) == 'b' ? 2 : 16, used);
    cursor_ += static_cast<uint32_t>(used) + 2;
    WriteRaw<uint32_t>(Record(TK_BASED, kShapeWord), value);
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
    WriteRaw<uint32_t>(Record(TK_DECIMAL, kShapeWord), static_cast<uint32_t>(static_cast<int32_t>(value)));
  } else {
    WriteRaw<double>(Record(TK_FLOAT, kShapeFloat), value);
  }
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
  std::copy(literal.begin(), literal.end(), Record(TK_TEXT, static_cast<uint32_t>(size)));

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
    NameToken(TK_MEMBER_CALL, NameId(member));
  }
}

void CFirstPass::Dot() {
  ++cursor_;
  uint32_t at = 0;
  if (ClassOf(PeekSignificant(&at)) != kLetter) {
    Record(TK_DOT, kShapePlain);
    return;
  }
  cursor_ = at;
  wordStart_ = at;
  const std::string_view name = LetterWord();
  MemberToken(words_.Find(name), name);
}

void CFirstPass::Punctuation() {
  if (text_[cursor_] == '.') {
    Dot();
    return;
  }
  const KeywordRow* row = LongestOperator(text_.substr(cursor_));
  if (!row) Fail(ERR_SYNTAX, wordStart_, std::string("unexpected character ") + text_[cursor_]);
  cursor_ += static_cast<uint32_t>(std::string_view(row->name).size());
  switch (row->id) {
    case TK_COMMENT:
      infos_.commentSeen = true;
      while (cursor_ < text_.size() && ClassOf(text_[cursor_]) != kLineEnd) ++cursor_;
      return;
    case TK_BRACE_OPEN:
    case TK_BRACE_CLOSE:
      Record(static_cast<uint16_t>(row->id), kShapeJump);
      return;
    default:
      Record(static_cast<uint16_t>(row->id), kShapePlain);
      return;
  }
}

}  // namespace vl

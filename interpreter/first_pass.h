// CFirstPass: characters to token records.
#pragma once

#include <string_view>

#include "interpreter/token_infos.h"
#include "interpreter/word_table.h"

namespace vl {

class CFirstPass {
 public:
  explicit CFirstPass(CTokenInfos& infos) : infos_(infos), words_(*infos.keywords) {}
  // Throws CIError.
  void Run();

 private:
  void Source(uint32_t number);
  void Word();
  void Number();
  void Quoted();
  void Punctuation();
  void Dot();
  // A member's name token by what follows: call, element or plain.
  void MemberToken(CWord& word, std::string_view text);
  void CheckBuilt(uint32_t classId, const KeywordRow* member);

  std::string_view LetterWord();
  // The next character that isn't white space (line ends included), without moving.
  char PeekSignificant(uint32_t* at = nullptr) const;
  [[noreturn]] void Fail(uint32_t code, uint32_t at, std::string detail = {});

  // Writes a record of the shape with its position; gives its operands, which are 0 yet.
  uint8_t* Record(uint16_t kind, uint32_t shape);
  uint8_t* Room(size_t bytes);
  // The pool keeps a name as it is written where it first is one.
  uint32_t NameId(CWord& word, std::string_view text);
  uint32_t NameId(std::string_view name) { return NameId(words_.Find(name), name); }
  void NameToken(uint16_t kind, uint32_t nameId) { WriteRaw<uint32_t>(Record(kind, kShapeName) + 8, nameId); }

  CTokenInfos& infos_;
  CWordTable words_;
  size_t used_ = 0;  // of the buffer
  std::string_view text_;
  uint32_t cursor_ = 0;
  uint32_t wordStart_ = 0;
  uint32_t sourceNumber_ = 0;
};

}  // namespace vl

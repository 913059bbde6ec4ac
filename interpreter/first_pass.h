// CFirstPass: characters to token records.
#pragma once

#include <string_view>

#include "interpreter/token_infos.h"

namespace vl {

class CFirstPass {
 public:
  explicit CFirstPass(CTokenInfos& infos) : infos_(infos) {}
  // Throws CIError.
  void Run();

 private:
  void Source(uint32_t number);
  void Word();
  void Number();
  void Quoted();
  void Punctuation();
  void Dot();
  void GlobalName(uint32_t classId, const KeywordRow& row, std::string_view word);
  // A member's name token by what follows: call, element or plain.
  void MemberToken(std::string_view name);
  void CheckBuilt(uint32_t classId, const KeywordRow* member);

  std::string_view LetterWord();
  // The next character that isn't white space (line ends included), without moving.
  char PeekSignificant(uint32_t* at = nullptr) const;
  [[noreturn]] void Fail(uint32_t code, uint32_t at, std::string detail = {});

  void Begin(uint16_t kind, uint8_t size);
  template <typename T>
  void Put(T value);
  void End();
  void Plain(uint16_t kind);
  uint32_t NameId(std::string_view name);
  void NameToken(uint16_t kind, std::string_view name);

  CTokenInfos& infos_;
  std::string_view text_;
  uint32_t cursor_ = 0;
  uint32_t wordStart_ = 0;
  uint32_t sourceNumber_ = 0;
};

}  // namespace vl

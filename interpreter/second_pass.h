// CSecondPass: checks the structure, resolves blocks and jumps, writes the final stream.
#pragma once

#include "interpreter/token_infos.h"

namespace vl {

class CSecondPass {
 public:
  explicit CSecondPass(CTokenInfos& infos) : infos_(infos) {}
  // Throws CIError.
  void Run();

 private:
  class Nested;  // counts the depth of the recursion

  uint16_t Kind() const { return TokenKindOf(infos_.readCursor); }
  uint16_t NextKind() const;
  void Step() { infos_.readCursor = TokenNext(infos_.readCursor); }
  // Copies the current record; gives its offset in the final stream.
  uint32_t Copy();
  // Copies a construct's record with its block number.
  uint32_t CopyWithBlock(uint32_t block);
  void WriteJump(uint16_t kind, uint32_t position);
  void WriteSemicolon(uint32_t position);
  uint32_t Position() const;
  void Expect(uint16_t kind, uint32_t error = ERR_SYNTAX);
  void CopySemicolon();
  uint32_t NewBlock(uint32_t kind);
  uint32_t Offset() const { return static_cast<uint32_t>(infos_.tokens.size()); }
  void SetWord(uint32_t recordOffset, uint32_t word, uint32_t value);
  [[noreturn]] void Fail(uint32_t code, const char* detail = "");

  void Statement();
  void IfStatement();
  void LoopBody(uint32_t token, uint32_t block);
  void BraceBody(uint32_t block);
  void WhileStatement();
  void ForStatement();
  void SwitchStatement();
  void FunctionStatement();

  // depth 1: an expression inside parentheses, whose closing one ends it and is copied.
  void Expression(int depth);
  void Primary();
  void PrimaryToken();
  void MemberChain();
  void Arguments();
  void Subscripts();

  CTokenInfos& infos_;
  int nesting_ = 0;
};

}  // namespace vl

// CCodeScan: looks once over the token stream for what must be known of a program before it runs, so that its functions
// are prepared at their first calls: whether members may show what slots held, and which functions hold something rare
// of which only the compiler of code can tell whether it knows it.
//
// It may take too much for rare or for needed, never too little.
#pragma once

#include <vector>

#include "interpreter/executor/executor.h"

namespace vl {

class CCodeScan {
 public:
  explicit CCodeScan(CExecutor& executor) : rare(executor.i.blocks.size(), false), x_(executor), i_(executor.i) {}
  void Run();

  bool suspects = false;                     // a member that may show what a slot held
  bool collects = false;                     // one that collects objects
  uint8_t families = CExecutor::kAnyFamily;  // of which the program may have objects
  std::vector<bool> rare;                    // by block, of functions

 private:
  // What a closing parenthesis or bracket belongs to.
  enum class Opener : uint8_t { Value, Call, Header, Bracket };
  struct OpenFunction {
    uint32_t block;
    uint32_t bodyEnd;
  };

  void Look(uint32_t at, uint16_t kind, uint16_t next);
  void Head(uint32_t block);
  void Close(uint16_t next);
  void Member(uint32_t at, uint16_t kind, uint16_t next);
  void Class(uint32_t at, uint16_t kind, uint16_t next);
  void Operator(uint16_t kind, uint16_t next);
  void StartStatement() {
    openers_.clear();
    leads_ = starts_ = true;
    isOwn_ = false;
  }
  void EndLead() { leads_ = starts_ = false; }
  void Rare() {
    if (!functions_.empty()) rare[functions_.back().block] = true;
  }
  uint16_t KindAt(uint32_t offset) const { return TokenKindOf(i_.At(offset)); }
  uint32_t Next(uint32_t offset) const { return offset + TokenSize(i_.At(offset)); }

  CExecutor& x_;
  CInterpretor& i_;
  uint32_t at_ = 0;
  uint8_t showers_ = 0;      // the families of which a member would be suspicious
  uint16_t before_ = 0;      // kind of the token before
  bool closedValue_ = true;  // a closing parenthesis before was of a value, not of a call
  bool starts_ = true;       // nothing of the statement has been met
  bool leads_ = false;       // all so far is the value that the statement starts with
  bool isOwn_ = false;       // the statement starts with what is no expression statement of the compiler's
  bool inFor_ = false;
  bool inCase_ = false;
  uint8_t pending_ = 0;  // the call that closes next would be suspicious in these families, if its value is used
  size_t pendingDepth_ = 0;
  uint32_t lists_ = 0;  // argument lists that are open
  uint32_t brackets_ = 0;
  std::vector<Opener> openers_;
  std::vector<OpenFunction> functions_;
};

}  // namespace vl

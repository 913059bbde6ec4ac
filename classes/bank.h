// CIBank: a bank of the application, as a script sees it.
#pragma once

#include "interpreter/class_base.h"

namespace vl {

class CBank;

class CIBank : public CIBaseClassImpl {
 public:
  explicit CIBank(CInterpretor& interpreter) : CIBaseClassImpl(interpreter, CLASS_BANK, Listing::Listed) {}
  void Construct() override;

  void GetElemCount();
  void GetType();
  void GetElemName();
  void GetElemIndex();

 private:
  CBank* bank_ = nullptr;  // of the application, which outlives every object
};

}  // namespace vl

#include "classes/bank.h"

#include "classes/core_classes.h"
#include "host/appfile/app_file.h"
#include "host/appfile/element.h"
#include "interpreter/interpretor.h"

namespace vl {

namespace {
constexpr uint32_t kBankTypeFamily = 0x89AF0000;
}

void CIBank::Construct() {
  if (interpreter.IsArgDefault(0)) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  const char* name = interpreter.GetArgString(0);
  bank_ = interpreter.app ? interpreter.app->GetBankByName(name) : nullptr;
  // The sources aren't for scripts.
  if (!bank_ || bank_->type == 0) {
    interpreter.RaiseError(ERR_BANK, kNoArgument, std::string("no bank ") + name);
  }
  Create();
}

void CIBank::GetElemCount() { interpreter.GetResult().SetInt(static_cast<int32_t>(bank_->elements.size())); }

void CIBank::GetType() { interpreter.GetResult().SetInt(static_cast<int32_t>(kBankTypeFamily + bank_->type)); }

void CIBank::GetElemName() {
  if (interpreter.IsArgDefault(0)) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  const auto index = static_cast<uint32_t>(interpreter.GetArgInt(0));
  const bool named = index < bank_->elements.size() && bank_->elements[index];
  interpreter.GetResult().SetString(named ? std::string_view(bank_->elements[index]->name) : "");
}

void CIBank::GetElemIndex() {
  if (interpreter.IsArgDefault(0)) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  interpreter.GetResult().SetInt(bank_->FindByName(interpreter.GetArgString(0)));
}

namespace {

constexpr MemberRow Constant(uint16_t id, const char* name, uint32_t type) {
  return {id, name, MemberKind::Constant, nullptr, kBankTypeFamily + type, 0, "kind of a bank, as GetType gives it"};
}

constexpr MemberRow kRows[] = {
    {1, "GetElemCount", MemberKind::Member, kMember<&CIBank::GetElemCount>, 0, 0,
     "GetElemCount(): number of slots, empty ones included"},
    {2, "GetType", MemberKind::Member, kMember<&CIBank::GetType>, 0, 0, "GetType(): a BANKTYPE constant"},
    {3, "GetElemName", MemberKind::Member, kMember<&CIBank::GetElemName>, 0, 0,
     "GetElemName(index): name of an element, \"\" for an empty slot"},
    {4, "GetElemIndex", MemberKind::Member, kMember<&CIBank::GetElemIndex>, 0, 0,
     "GetElemIndex(name): index of the first element of that name, or -1"},
    Constant(6, "BANKTYPE_IMAGE", 1),
    Constant(7, "BANKTYPE_ANIMATION", 2),
    Constant(8, "BANKTYPE_SOUND", 3),
    Constant(9, "BANKTYPE_MUSIC", 4),
    Constant(10, "BANKTYPE_STRING", 5),
    Constant(11, "BANKTYPE_3D", 6),
    Constant(12, "BANKTYPE_BINARY", 7),
};

}  // namespace

const ClassTable kBankClass = {CLASS_BANK, kRows, &CreateObject<CIBank>, "A bank of resources: New Bank(name)"};

}  // namespace vl

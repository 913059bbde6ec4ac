// CIVEXClassImpl: the base of the runtime classes that wrap an object of the network layer; CVexNetwork: the layer of
// one run.
//
// A wrapper that is made on demand holds one reference to itself, which the end of its core drops: it lives as long as
// the core, or as long as the script keeps it. Without a core its members do nothing and give 0 or "".
#pragma once

#include <array>
#include <memory>
#include <string>

#include "interpreter/interpretor.h"
#include "net/vex_api.h"

namespace vl {

class CVexNetwork : public CSubsystem {
 public:
  // Made on first use.
  static CVexNetwork& Of(CInterpretor& interpreter);
  explicit CVexNetwork(CInterpretor& interpreter);

 private:
  CInterpretor& interpreter_;
  std::unique_ptr<Sockets> noSockets_;  // for a back end that has none

 public:
  VexApi api;
};

class CIVEXClassImpl : public CIBaseClassImpl {
 public:
  CIVEXClassImpl(CInterpretor& interpreter, uint32_t classId)
      : CIBaseClassImpl(interpreter, classId, Listing::Listed), value_(&interpreter) {
    value_.SetInt(0);
  }
  void Destroy(bool final) override;

  // Joins this with its core. `holdsItself`: it was made on demand.
  void Attach(VexObject& object, bool holdsItself);
  VexObject* Core() const { return core_; }
  const BlockRecord* Function(uint32_t event) const { return functions_[event]; }

  void SetPrivateData() { value_.Assign(*interpreter.GetArg(0)); }
  void GetPrivateData() { interpreter.GetResult().Assign(value_); }
  void IsValid() { interpreter.GetResult().SetInt(core_ != nullptr); }
  template <uint32_t Event>
  void OnEvent() {
    functions_[Event] = interpreter.GetEventFunction();
  }

 protected:
  // Arguments by position: missing numbers are 0, missing texts are empty.
  bool IsMissing(int i) const { return interpreter.IsArgDefault(i); }
  int32_t Number(int i) const { return IsMissing(i) ? 0 : interpreter.GetArgInt(i); }
  uint16_t Short(int i) const { return static_cast<uint16_t>(Number(i)); }
  std::string String(int i) const {
    return IsMissing(i) ? std::string() : std::string(interpreter.GetArgText(i).View());
  }
  CValue& Result() const { return interpreter.GetResult(); }
  // The wrapper of an object, made when there is none; 0 for null.
  void GiveWrapper(VexObject* object, uint32_t ofClass) const;
  void GiveStats(const VexStats* stats) const;

 private:
  static void CoreIsGone(VexObject& object);

  VexObject* core_ = nullptr;
  bool holdsItself_ = false;
  CValue value_;
  std::array<const BlockRecord*, kVexEvents> functions_{};
};

// With the type of the core and what every class of texts has.
template <typename CoreType>
class CIVexOf : public CIVEXClassImpl {
 public:
  using CIVEXClassImpl::CIVEXClassImpl;

  void SendText() {
    const std::string text = String(0);
    if (core() && !text.empty()) core()->SendText(text, Short(1));
  }
  void BlastText() {
    const std::string text = String(0);
    if (core() && !text.empty()) core()->BlastText(text, Short(1));
  }

 protected:
  CoreType* core() const { return static_cast<CoreType*>(Core()); }
  void GiveName() const { GiveText(core() ? std::string_view(core()->name) : std::string_view()); }
  void GiveText(std::string_view text) const { Result().SetString(text); }
  template <typename V>
  void GiveNumber(V&& value) const {
    Result().SetInt(core() ? static_cast<int32_t>(value(*core())) : 0);
  }
};

// The wrapper of an object of the layer; null for null, and when the application doesn't use the class.
CIBaseClassImpl* WrapVexObject(CInterpretor& interpreter, VexObject* object, uint32_t ofClass);

}  // namespace vl

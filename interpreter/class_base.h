// CIBaseClassImpl: the base of every runtime object; CIBaseObjectVar: one with script variables.
//
// A class's own Destroy releases what it holds and then calls the base's. The interpreter frees the memory
// afterwards, later when a member of the object is still running (`pins`): such an object stays as a shell
// with `destroyed` set, without variables and unknown to every script value.
#pragma once

#include <cstdint>
#include <vector>

#include "interpreter/class_table.h"
#include "interpreter/keyword_table.h"
#include "interpreter/referrers.h"
#include "interpreter/value.h"
#include "interpreter/var_table.h"

namespace vl {

// The run-time description of a class that the application uses.
struct CIClassInfo {
  CInterpretor* interpreter = nullptr;
  const CKeywordTable* keywords = nullptr;
  const ClassTable* table = nullptr;
  const char* name = "";
  uint32_t id = 0;
  std::vector<const MemberRow*> rows;  // by member id; null where there is none
};

class CIBaseClassImpl {
 public:
  enum class Listing { None, Listed };

  CIBaseClassImpl(CInterpretor& interpreter, uint32_t classId, Listing listing);
  virtual ~CIBaseClassImpl();
  CIBaseClassImpl(const CIBaseClassImpl&) = delete;
  CIBaseClassImpl& operator=(const CIBaseClassImpl&) = delete;

  // Releases what the object holds and takes it out of its list. `final`: the interpreter is being reset, or
  // this is a call frame or a temporary.
  virtual void Destroy(bool final);
  // True when this object can't live without `target`; then its mark is set.
  virtual bool DependsOn(CIBaseClassImpl* target) { return false; }
  // Reads the arguments of New.
  virtual void Construct() { Create(); }
  virtual void Create();
  virtual void Invalidate() { alive = false; }
  // True when the collection must leave the object alone: it is held, or of a class that always is. A collection looks
  // only at objects that are new or have lost their last holder, so nothing else may decide this.
  bool IsKept() const;
  // Something of the runtime holds the object, besides the values that refer to it.
  void Hold() { ++refCount; }
  void Unhold();
  virtual uint32_t RequiredKinds() const { return 0xFFFFFFFF; }

  // Helper for DependsOn: marks this object as a dependant. Always true.
  bool MarkDependant() {
    if (mark == 0) mark = 1;
    return true;
  }

  CInterpretor& interpreter;
  CReferrers referrers;  // values that hold a reference to this object
  const CIClassInfo* classInfo = nullptr;
  uint64_t order = 0;   // later objects of a run have higher ones
  uint32_t serial = 0;  // per class, from 1
  uint32_t listNode = 0;
  bool alive = false;
  bool destroyed = false;
  uint8_t mark = 0;  // deletion walk: 0 none, 1 dependant, 2 deletion started here
  uint8_t classId = 0;
  bool suspected = false;  // the next collection looks at it
  int32_t refCount = 0;
  uint32_t pins = 0;    // member calls and frames in progress that use this object
  uint32_t number = 0;  // what a reference reads as when it is compared with an integer; never 0
};

class CIBaseObjectVar : public CIBaseClassImpl {
 public:
  CIBaseObjectVar(CInterpretor& interpreter, Listing listing) : CIBaseClassImpl(interpreter, CLASS_NONE, listing) {}
  ~CIBaseObjectVar() override;
  void Destroy(bool final) override;

  bool isCallFrame = false;  // its variables come from a pool of their own
  CVarTable variables;
};

// An object that draws. The pass that calls Refresh runs in the order that RefreshAll gives.
class CIRefresh {
 public:
  CIRefresh(CInterpretor& interpreter, bool atHead);
  virtual ~CIRefresh();
  virtual void Refresh() { dirty = false; }
  bool IsDirty() const { return dirty; }
  // Asks for a Refresh in the next pass.
  void RequestRefresh();
  // Draws after all others: objects that bring pixels to a window.
  virtual bool IsWindowBound() const { return false; }
  virtual bool IsSurface() const { return false; }

  bool dirty = false;
  uint32_t listNode = 0;

 private:
  CInterpretor& refreshInterpreter_;
};

}  // namespace vl

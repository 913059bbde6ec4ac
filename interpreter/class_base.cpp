#include "interpreter/class_base.h"

#include "interpreter/interpretor.h"

namespace vl {

CIBaseClassImpl::CIBaseClassImpl(CInterpretor& interpreter, uint32_t classId, Listing listing)
    : interpreter(interpreter), classId(static_cast<uint8_t>(classId)) {
  if (static_cast<void*>(&interpreter) == static_cast<void*>(this)) return;  // the interpreter itself
  if (classId) classInfo = interpreter.ClassInfo(classId);
  // A call's frame is no object that a program could see.
  if (!classId && listing == Listing::None) return;
  number = interpreter.nextObjectNumber;
  interpreter.nextObjectNumber += 64;
  if (interpreter.nextObjectNumber == 0) interpreter.nextObjectNumber = 64;
  if (listing == Listing::Listed) interpreter.Enlist(this);
}

CIBaseClassImpl::~CIBaseClassImpl() = default;

void CIBaseClassImpl::Destroy(bool final) {
  destroyed = true;
  alive = false;
  // Every value that refers to this object becomes the integer 0; its count no longer matters.
  for (CValue* value : referrers) {
    if (value->type != VT_OBJECT) value->lvalue = nullptr;  // a member that was about to be made
    value->type = VT_INTEGER;
    value->data.integer = 0;
  }
  referrers.clear();
  interpreter.Delist(this);
}

void CIBaseClassImpl::Create() {
  if (classId) serial = interpreter.NextSerial(classId);
  alive = true;
}

void CIBaseClassImpl::Unhold() {
  if (--refCount <= 0) interpreter.Suspect(*this);
}

bool CIBaseClassImpl::IsKept() const { return refCount > 0 || (classId && FactsOfClass(classId).kept); }

CIBaseObjectVar::~CIBaseObjectVar() {
  if (static_cast<void*>(&interpreter) != static_cast<void*>(this)) variables.Clear(interpreter.PoolOf(*this));
}

void CIBaseObjectVar::Destroy(bool final) {
  variables.Clear(interpreter.PoolOf(*this));
  CIBaseClassImpl::Destroy(final);
}

CIRefresh::CIRefresh(CInterpretor& interpreter, bool atHead) : refreshInterpreter_(interpreter) {
  listNode = interpreter.AddRefresh(this, atHead);
  RequestRefresh();
}

CIRefresh::~CIRefresh() { refreshInterpreter_.RemoveRefresh(this); }

void CIRefresh::RequestRefresh() {
  dirty = true;
  refreshInterpreter_.needsRefresh = true;
}

}  // namespace vl

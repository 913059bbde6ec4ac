// Objects: lists, deletion with its dependants, collection, arrays.
#include "interpreter/interpretor.h"

namespace vl {

void CInterpretor::Enlist(CIBaseClassImpl* object) { object->listNode = classLists[object->classId].Prepend(object); }

void CInterpretor::Delist(CIBaseClassImpl* object) {
  if (!object->listNode) return;
  classLists[object->classId].Remove(object->listNode);
  object->listNode = 0;
}

void CInterpretor::Unpin(CIBaseClassImpl* object) {
  if (--object->pins == 0 && object->destroyed) delete object;
}

void CInterpretor::DestroyObject(CIBaseClassImpl* object, bool final) {
  if (object->destroyed) return;
  // Pinned while it dies, so that what its Destroy sets off can't free it under its feet.
  ++object->pins;
  object->Destroy(final);
  Unpin(object);
}

// Marks what can't live without `object`, and what can't live without that. True when there is any.
bool CInterpretor::MarkDependants(CIBaseClassImpl* object) {
  bool found = false;
  std::vector<CIBaseClassImpl*> work{object};
  const auto visit = [&](uint32_t id, CIBaseClassImpl* target) {
    uint32_t cursor = classLists[id].First();
    while (CIBaseClassImpl* d = classLists[id].Step(cursor)) {
      if (d->mark == 2 || !d->DependsOn(target)) continue;
      found = true;
      d->mark = 2;
      work.push_back(d);
    }
  };
  object->mark = 2;
  while (!work.empty()) {
    CIBaseClassImpl* target = work.back();
    work.pop_back();
    if (target->classId == 0) continue;
    for (uint8_t id : FactsOfClass(target->classId).dependants) visit(id, target);
  }
  return found;
}

void CInterpretor::DeleteObject(CIBaseClassImpl* object) {
  if (terminating || object->destroyed) return;
  ++object->pins;
  if (object->IsKept()) {
    const bool found = MarkDependants(object);
    if (currentWindow == object) currentWindow = nullptr;
    if (found) {
      for (uint32_t id = 1; id < kClassLists; ++id) {
        uint32_t cursor = classLists[id].First();
        while (CIBaseClassImpl* d = classLists[id].Step(cursor)) {
          if (d->mark && d != object) DestroyObject(d, false);
        }
      }
    }
    object->mark = 0;
  }
  DestroyObject(object, false);
  Unpin(object);
}

void CInterpretor::Collect() {
  // Stale copies in the argument bank and the evaluation stack count no longer.
  const auto clear = [](CValue& value) {
    if (value.type == VT_OBJECT || value.type == VT_ARRAY) value.SetInt(0);
  };
  const int32_t top = argDepth < limits::kArgumentLevels
                          ? static_cast<int32_t>(argDepth) * limits::kArgumentsPerLevel + argCounts[argDepth]
                          : static_cast<int32_t>(args.size());
  for (int32_t i = top; i < highWater; ++i) clear(args[static_cast<size_t>(i)]);
  highWater = std::min(highWater, top);
  for (size_t s = sp; s < valuePointers.size(); ++s) clear(*values[s]);
  for (uint32_t id = 0; id < kClassLists; ++id) {
    uint32_t cursor = classLists[id].First();
    while (CIBaseClassImpl* object = classLists[id].Step(cursor)) {
      // An object whose member is running stays until the next collection.
      if (!object->IsKept() && object->pins == 0) DeleteObject(object);
    }
  }
  newsSinceCollection = 0;
  collectAboveBytes = budget.Used() + limits::kCollectAfterBytes;
}

CArrayStore* CInterpretor::NewArray() {
  if (!budget.Take(sizeof(CArrayStore))) RaiseError(ERR_MEMORY);
  auto* store = new CArrayStore(this, elementPool, budget);
  store->handle = arrays_.Append(store);
  return store;
}

void CInterpretor::DropArray(CArrayStore* store) {
  graveyard_.push_back(store);
  if (draining_) return;
  draining_ = true;
  while (!graveyard_.empty()) {
    CArrayStore* dead = graveyard_.back();
    graveyard_.pop_back();
    arrays_.Remove(dead->handle);
    delete dead;
    budget.Return(sizeof(CArrayStore));
  }
  draining_ = false;
}

}  // namespace vl

// Objects: lists, deletion with its dependants, collection, arrays.
#include "interpreter/interpretor.h"

namespace vl {

void CInterpretor::Enlist(CIBaseClassImpl* object) {
  object->listNode = classLists[object->classId].Prepend(object);
  object->order = ++nextObjectOrder;
  Suspect(*object);
}

void CInterpretor::Suspect(CIBaseClassImpl& object) {
  const uint32_t id = object.classId;
  if (object.suspected || !object.listNode || terminating || (id && FactsOfClass(id).kept)) return;
  object.suspected = true;
  const Suspected entry{object.order, object.listNode};
  if (id == collectingClass_ && entry.order < collectingOrder_) {
    collecting_.push_back(entry);
    std::push_heap(collecting_.begin(), collecting_.end());
    return;
  }
  SuspectedList& list = suspected_[id];
  if (list.entries.size() >= list.tidyAt) {
    std::erase_if(list.entries, [&](const Suspected& e) {
      const CIBaseClassImpl* o = classLists[id].At(e.node);
      return !o || o->order != e.order;
    });
    list.tidyAt = std::max<size_t>(1024, list.entries.size() * 2);
  }
  list.entries.push_back(entry);
}

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
  // A death that sets off a collection waits for the one that runs.
  if (collectingClass_ == kClassLists) {
    for (uint32_t id = 0; id < kClassLists; ++id) CollectClass(id);
  }
  newsSinceCollection = 0;
  collectAboveBytes = budget.Used() + limits::kCollectAfterBytes;
}

// In the order of the class's list, whose head is the newest object.
void CInterpretor::CollectClass(uint32_t id) {
  if (suspected_[id].entries.empty()) return;
  struct Collecting {
    CInterpretor& i;
    ~Collecting() {
      std::vector<Suspected>& next = i.suspected_[i.collectingClass_].entries;
      next.insert(next.end(), i.collecting_.begin(), i.collecting_.end());
      i.collecting_.clear();
      i.collectingClass_ = kClassLists;
    }
  } guard{*this};
  collectingClass_ = id;
  collectingOrder_ = UINT64_MAX;
  collecting_.swap(suspected_[id].entries);
  std::make_heap(collecting_.begin(), collecting_.end());
  while (!collecting_.empty()) {
    const Suspected entry = collecting_.front();
    std::pop_heap(collecting_.begin(), collecting_.end());
    collecting_.pop_back();
    CIBaseClassImpl* object = classLists[id].At(entry.node);
    if (!object || object->order != entry.order) continue;
    collectingOrder_ = entry.order;
    object->suspected = false;
    if (object->IsKept()) continue;
    if (object->pins == 0) {
      DeleteObject(object);
    } else {
      Suspect(*object);  // one whose member is running stays until the next collection
    }
  }
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

// CVarTable: the script variables of one object or call frame.
//
// A chained hash over the name id, the newest variable first: nothing checks for an existing entry, so the
// newest of two like-named variables is the one that is found. It starts with 8 buckets inside and grows, as
// the table of the globals may hold thousands. Variables come from a pool of the interpreter and keep their
// address while they live.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "interpreter/value.h"

namespace vl {

// Free store of variables and array elements; grows in chunks that count against the run's memory budget and
// that live as long as the pool, so that a stale pointer to a variable never leaves it.
class CVariablePool {
 public:
  CVariablePool(CInterpretor* interpreter, MemoryBudget* budget) : interpreter_(interpreter), budget_(budget) {}
  ~CVariablePool();
  CVariablePool(const CVariablePool&) = delete;
  CVariablePool& operator=(const CVariablePool&) = delete;
  // Null when the budget is spent.
  CVariable* Take() {
    if (!free_ && !Grow()) return nullptr;
    CVariable* variable = free_;
    free_ = variable->next;
    return variable;
  }
  void Give(CVariable* variable) {
    variable->SetInt(0);
    variable->next = free_;
    free_ = variable;
  }

 private:
  static constexpr size_t kChunk = 128;
  bool Grow();
  CInterpretor* interpreter_;
  MemoryBudget* budget_;
  CVariable* free_ = nullptr;
  std::vector<void*> chunks_;
};

class CVarTable {
 public:
  CVarTable() { inline_.fill(nullptr); }
  CVarTable(const CVarTable&) = delete;
  CVarTable& operator=(const CVarTable&) = delete;

  CVariable* Find(uint32_t nameId) const {
    for (CVariable* v = buckets_[Hash(nameId)]; v; v = v->next) {
      if (v->nameId == nameId) return v;
    }
    return nullptr;
  }
  // A new variable of type VT_NEW_NAME; null when the budget is spent.
  CVariable* Add(uint32_t nameId, int32_t level, CVariablePool& pool);
  // Removes every variable whose level is at or above `level`; level 0 variables stay.
  void RemoveFromLevel(int32_t level, CVariablePool& pool) {
    while (scopeTop_ && scopeTop_->level >= level) RemoveScopeTop(pool);
  }
  bool HasScoped() const { return scopeTop_ != nullptr; }
  void Clear(CVariablePool& pool);
  uint32_t Count() const { return count_; }

  template <typename F>
  void ForEach(F&& f) const {
    for (uint32_t b = 0; b <= mask_; ++b) {
      for (CVariable* v = buckets_[b]; v; v = v->next) f(*v);
    }
  }

 private:
  // A name id is (bucket << 16) | index: both parts must tell in the low bits, and few names share one index.
  uint32_t Hash(uint32_t nameId) const { return ((nameId >> 16) + (nameId & 0xFFFF) * 33) & mask_; }
  void Grow();
  void RemoveScopeTop(CVariablePool& pool);

  std::array<CVariable*, 8> inline_;
  CVariable** buckets_ = inline_.data();
  uint32_t mask_ = 7;
  uint32_t count_ = 0;
  CVariable* scopeTop_ = nullptr;
  std::unique_ptr<CVariable*[]> large_;
};

}  // namespace vl

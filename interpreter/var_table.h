// CVarTable: the script variables of one object or call frame.
//
// A chained hash over the name id, the newest variable first: nothing checks for an existing entry, so the
// newest of two like-named variables is the one that is found. It starts as one chain, which most objects stay with,
// and gets buckets when it grows: the table of the globals may hold thousands. Variables come from a pool of the
// interpreter and keep their address while they live.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "interpreter/value.h"

namespace vl {

// Free store of variables or of array elements; grows in chunks that count against the run's memory budget and
// that live as long as the pool, so that a stale pointer to a variable never leaves it. Free ones are chained by
// their `lvalue`, which neither a variable nor an element uses and no late write touches.
template <typename T>
class CValuePool {
 public:
  CValuePool(CInterpretor* interpreter, MemoryBudget* budget) : interpreter_(interpreter), budget_(budget) {}
  ~CValuePool();
  CValuePool(const CValuePool&) = delete;
  CValuePool& operator=(const CValuePool&) = delete;
  // Null when the budget is spent.
  T* Take() {
    if (!free_ && !Grow()) return nullptr;
    T* value = free_;
    free_ = static_cast<T*>(value->lvalue);
    return value;
  }
  void Give(T* value) {
    value->SetInt(0);
    value->lvalue = free_;
    free_ = value;
  }

 private:
  struct Chunk {
    T* values;
    size_t count;
  };
  static constexpr size_t kSmallChunk = 128;
  static constexpr size_t kLargeChunk = size_t{1} << 17;
  bool Grow();
  bool AddChunk(size_t count);
  CInterpretor* interpreter_;
  MemoryBudget* budget_;
  T* free_ = nullptr;
  std::vector<Chunk> chunks_;
  size_t total_ = 0;
};

using CVariablePool = CValuePool<CVariable>;
using CElementPool = CValuePool<CValue>;

// The newest variable of each name in a table that is asked often: the table of the globals.
struct CVariableIndex {
  CVariable* absent = nullptr;        // what stands for none
  std::array<uint32_t, 33> starts{};  // place of each name bucket's first name
  std::vector<CVariable*> cells;
  CVariable** CellOf(uint32_t nameId) { return &cells[starts[nameId >> 16] + (nameId & 0xFFFF)]; }
};

class CVarTable {
 public:
  CVarTable() = default;
  ~CVarTable() {
    if (buckets_ != &chain_) delete[] buckets_;
    if (firsts_ != few_) delete[] firsts_;
  }
  CVarTable(const CVarTable&) = delete;
  CVarTable& operator=(const CVarTable&) = delete;

  CVariable* Find(uint32_t nameId) const { return FindIn(buckets_[Hash(nameId)], nameId); }
  // A new variable of type VT_NEW_NAME; null when the budget is spent.
  CVariable* Add(uint32_t nameId, int32_t level, CVariablePool& pool);
  // Removes every variable whose level is at or above `level`; level 0 variables stay.
  void RemoveFromLevel(int32_t level, CVariablePool& pool) {
    while (scopeTop_ && scopeTop_->level >= level) RemoveScopeTop(pool);
  }
  // Keeps the index true from now on; null ends that. The table's own variables are entered.
  void SetIndex(CVariableIndex* index);
  bool HasScoped() const { return scopeTop_ != nullptr; }
  void Clear(CVariablePool& pool) {
    if (count_) ClearSlow(pool);
  }
  uint32_t Count() const { return count_; }
  // A lasting variable by the order of making: null when it isn't the newest of that name, or further back than the
  // first few. Objects of one constructor have like variables at like places.
  CVariable* Made(uint32_t place, uint32_t nameId) const {
    if (place >= firstCount_) return nullptr;
    CVariable* variable = firsts_[place];
    return variable->nameId == nameId && variable->home == this ? variable : nullptr;
  }
  uint32_t PlaceOf(const CVariable* variable) const {
    CVariable** const end = firsts_ + firstCount_;
    return static_cast<uint32_t>(std::find(firsts_, end, variable) - firsts_);
  }

  template <typename F>
  void ForEach(F&& f) const {
    for (uint32_t b = 0; b <= mask_; ++b) {
      for (CVariable* v = buckets_[b]; v; v = v->next) f(*v);
    }
  }

 private:
  // A name id is (bucket << 16) | index: both parts must tell in the low bits, and few names share one index.
  uint32_t Hash(uint32_t nameId) const { return ((nameId >> 16) + (nameId & 0xFFFF) * 33) & mask_; }
  static CVariable* FindIn(CVariable* chain, uint32_t nameId) {
    while (chain && chain->nameId != nameId) chain = chain->next;
    return chain;
  }
  void ClearSlow(CVariablePool& pool);
  void Grow();
  void NoteFirst(CVariable* variable);
  void RemoveScopeTop(CVariablePool& pool);

  static constexpr uint32_t kFirsts = 12;
  static constexpr uint32_t kFew = 4;
  static constexpr uint32_t kLongestChain = 8;
  CVariable* chain_ = nullptr;
  CVariable** buckets_ = &chain_;
  uint32_t mask_ = 0;
  uint32_t count_ = 0;
  CVariable* scopeTop_ = nullptr;
  CVariableIndex* index_ = nullptr;
  CVariable** firsts_ = few_;  // of level 0, which only Clear removes
  uint32_t firstCount_ = 0;
  CVariable* few_[kFew];
};

}  // namespace vl

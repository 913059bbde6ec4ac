#include "interpreter/var_table.h"

#include <cstdlib>
#include <new>

namespace vl {

template <typename T>
CValuePool<T>::~CValuePool() {
  for (const Chunk& chunk : chunks_) {
    // A stale write may have left content in a variable that was given back.
    for (size_t i = 0; i < chunk.count; ++i) chunk.values[i].~T();
    budget_->Return(chunk.count * sizeof(T));
    std::free(chunk.values);
  }
}

// Chunks grow with the pool: neighbours in a large array then mostly are neighbours in memory.
template <typename T>
bool CValuePool<T>::Grow() {
  const size_t wanted = std::clamp(total_ / 4, kSmallChunk, kLargeChunk);
  return AddChunk(wanted) || (wanted > kSmallChunk && AddChunk(kSmallChunk));
}

template <typename T>
bool CValuePool<T>::AddChunk(size_t count) {
  if (!budget_->Take(count * sizeof(T))) return false;
  auto* values = static_cast<T*>(std::malloc(count * sizeof(T)));
  if (!values) {
    budget_->Return(count * sizeof(T));
    return false;
  }
  chunks_.push_back({values, count});
  total_ += count;
  for (size_t i = count; i-- > 0;) Give(new (&values[i]) T(interpreter_));
  return true;
}

template class CValuePool<CVariable>;
template class CValuePool<CValue>;

CVariable* CVarTable::Add(uint32_t nameId, int32_t level, CVariablePool& pool) {
  CVariable* variable = pool.Take();
  if (!variable) return nullptr;
  if (count_ >= (mask_ ? 4 * mask_ : kLongestChain)) Grow();
  variable->level = level;
  variable->nameId = nameId;
  CVariable*& bucket = buckets_[Hash(nameId)];
  if (CVariable* older = FindIn(bucket, nameId)) older->home = nullptr;
  variable->home = this;
  if (index_) *index_->CellOf(nameId) = variable;
  variable->next = bucket;
  bucket = variable;
  if (level <= 0 && firstCount_ < kFirsts) NoteFirst(variable);
  if (level > 0) {
    variable->SetScopeBelow(scopeTop_);
    scopeTop_ = variable;
  }
  ++count_;
  return variable;
}

void CVarTable::RemoveScopeTop(CVariablePool& pool) {
  CVariable* variable = scopeTop_;
  CVariable** link = &buckets_[Hash(variable->nameId)];
  while (*link != variable) link = &(*link)->next;
  *link = variable->next;
  if (variable->home) {
    variable->home = nullptr;
    CVariable* older = FindIn(variable->next, variable->nameId);
    if (older) older->home = this;
    if (index_) *index_->CellOf(variable->nameId) = older ? older : index_->absent;
  }
  scopeTop_ = variable->ScopeBelow();
  --count_;
  pool.Give(variable);
}

void CVarTable::ClearSlow(CVariablePool& pool) {
  scopeTop_ = nullptr;
  count_ = 0;
  firstCount_ = 0;
  for (uint32_t b = 0; b <= mask_; ++b) {
    CVariable* variable = buckets_[b];
    buckets_[b] = nullptr;
    while (variable) {
      CVariable* next = variable->next;
      variable->home = nullptr;
      if (index_) *index_->CellOf(variable->nameId) = index_->absent;
      pool.Give(variable);
      variable = next;
    }
  }
}

void CVarTable::SetIndex(CVariableIndex* index) {
  index_ = index;
  if (!index) return;
  ForEach([&](CVariable& variable) {
    if (variable.home == this) *index->CellOf(variable.nameId) = &variable;
  });
}

void CVarTable::Grow() {
  const uint32_t newMask = mask_ ? mask_ * 8 + 7 : 31;
  auto table = std::make_unique<CVariable*[]>(newMask + 1);
  CVariable** old = buckets_;
  const uint32_t oldMask = mask_;
  mask_ = newMask;
  // Within a chain the order is the age, which must hold; so each chain is appended in its order.
  std::vector<CVariable*> tails(newMask + 1, nullptr);
  for (uint32_t b = 0; b <= oldMask; ++b) {
    for (CVariable* v = old[b]; v;) {
      CVariable* next = v->next;
      const uint32_t to = Hash(v->nameId);
      v->next = nullptr;
      (tails[to] ? tails[to]->next : table[to]) = v;
      tails[to] = v;
      v = next;
    }
  }
  if (old != &chain_) delete[] old;
  buckets_ = table.release();
}

void CVarTable::NoteFirst(CVariable* variable) {
  if (firstCount_ == kFew && firsts_ == few_) {
    firsts_ = std::copy(few_, few_ + kFew, new CVariable*[kFirsts]) - kFew;
  }
  firsts_[firstCount_++] = variable;
}

}  // namespace vl

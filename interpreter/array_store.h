// CArrayStore: the body of a script array, shared by every value that refers to it.
//
// An element is a value of its own and stays null until it is assigned. The first subscript runs fastest.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "interpreter/var_table.h"

namespace vl {

class CArrayStore {
 public:
  static constexpr uint32_t kMaxDimensions = 10;
  static constexpr uint32_t kMaxSize = 0x1FFFFFFE;

  CArrayStore(CInterpretor* interpreter, CElementPool& pool, MemoryBudget& budget);
  ~CArrayStore();
  CArrayStore(const CArrayStore&) = delete;
  CArrayStore& operator=(const CArrayStore&) = delete;

  // Linear index of an element; grows the store to hold it. Raises 14, 15, 45 or 66.
  uint32_t Address(const int32_t* subscripts, uint32_t count) {
    if (count == 1 && dimensions == 1 && static_cast<uint32_t>(subscripts[0]) < sizes[0]) {
      return static_cast<uint32_t>(subscripts[0]);
    }
    return AddressSlow(subscripts, count);
  }
  // Null when it was never assigned, or the index is outside.
  CValue* Element(uint32_t index) const { return index < elements_.size() ? elements_[index] : nullptr; }
  // The same for an array of one dimension; null for any other.
  CValue* OfOneDimension(uint32_t index) const {
    return dimensions == 1 && index < sizes[0] ? elements_[index] : nullptr;
  }
  uint32_t ElementCount() const { return static_cast<uint32_t>(elements_.size()); }
  // Stores a copy. Raises 15 and what copying raises; 45 for an index outside.
  CValue& Store(uint32_t index, const CValue& value);
  uint32_t handle = 0;  // node in the interpreter's list
  uint32_t refcount = 0;
  uint32_t dimensions = 0;
  std::array<uint32_t, kMaxDimensions> sizes{};

 private:
  uint32_t AddressSlow(const int32_t* subscripts, uint32_t count);
  uint32_t FirstAddress(const int32_t* subscripts, uint32_t count);
  void Resize(uint64_t count);
  void Rebuild(const std::array<uint32_t, kMaxDimensions>& newSizes);

  CInterpretor* owner_;
  CElementPool& pool_;
  MemoryBudget& budget_;
  std::vector<CValue*> elements_;
  uint64_t counted_ = 0;  // bytes taken from the budget for `elements_`
};

}  // namespace vl

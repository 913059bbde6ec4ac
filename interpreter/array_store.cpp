#include "interpreter/array_store.h"

#include <algorithm>

#include "interpreter/interpretor.h"

namespace vl {

CArrayStore::CArrayStore(CInterpretor* interpreter, CElementPool& pool, MemoryBudget& budget)
    : owner_(interpreter), pool_(pool), budget_(budget) {}

CArrayStore::~CArrayStore() {
  for (CValue* element : elements_) {
    if (element) pool_.Give(element);
  }
  budget_.Return(counted_);
}

void CArrayStore::Resize(uint64_t count) {
  if (count > elements_.capacity()) {
    const uint64_t capacity = std::max<uint64_t>(count, elements_.capacity() + elements_.capacity() / 2);
    const uint64_t bytes = capacity * sizeof(CValue*);
    if (bytes > counted_) {
      if (!budget_.Take(bytes - counted_)) owner_->RaiseError(ERR_MEMORY);
      counted_ = bytes;
    }
    elements_.reserve(static_cast<size_t>(capacity));
  }
  elements_.resize(static_cast<size_t>(count), nullptr);
}

uint32_t CArrayStore::FirstAddress(const int32_t* subscripts, uint32_t count) {
  if (count < 1 || count > kMaxDimensions) owner_->RaiseError(ERR_BAD_ARGUMENT, count);
  uint64_t product = 1;
  for (uint32_t d = 0; d < count; ++d) {
    const uint32_t size = static_cast<uint32_t>(subscripts[d]) + 1;
    if (size < 1 || size > kMaxSize) owner_->RaiseError(ERR_SUBSCRIPT, d + 1);
    product *= size;
    if (product > limits::kRunMemoryBytes / sizeof(CValue*)) owner_->RaiseError(ERR_MEMORY);
  }
  Resize(product);
  for (uint32_t d = 0; d < count; ++d) sizes[d] = static_cast<uint32_t>(subscripts[d]) + 1;
  dimensions = count;
  return static_cast<uint32_t>(product - 1);
}

uint32_t CArrayStore::AddressSlow(const int32_t* subscripts, uint32_t count) {
  if (dimensions == 0) return FirstAddress(subscripts, count);
  if (count != dimensions) owner_->RaiseError(ERR_SUBSCRIPT_COUNT, dimensions);
  if (count == 1) {
    const auto index = static_cast<uint32_t>(subscripts[0]);
    if (index >= kMaxSize + 1) owner_->RaiseError(ERR_SUBSCRIPT, 1);
    if (index >= sizes[0]) {
      Resize(uint64_t{index} + 1);
      sizes[0] = index + 1;
    }
    return index;
  }
  auto newSizes = sizes;
  bool grows = false;
  for (uint32_t d = 0; d < count; ++d) {
    const auto index = static_cast<uint32_t>(subscripts[d]);
    if (index >= kMaxSize + 1) owner_->RaiseError(ERR_SUBSCRIPT, d + 1);
    if (index >= sizes[d]) {
      newSizes[d] = index + 1;
      grows = true;
    }
  }
  if (grows) Rebuild(newSizes);
  uint32_t linear = 0;
  for (uint32_t d = count; d-- > 0;) linear = linear * sizes[d] + static_cast<uint32_t>(subscripts[d]);
  return linear;
}

void CArrayStore::Rebuild(const std::array<uint32_t, kMaxDimensions>& newSizes) {
  uint64_t product = 1;
  for (uint32_t d = 0; d < dimensions; ++d) {
    product *= newSizes[d];
    if (product > limits::kRunMemoryBytes / sizeof(CValue*)) owner_->RaiseError(ERR_MEMORY);
  }
  const uint64_t bytes = product * sizeof(CValue*);
  if (!budget_.Take(bytes)) owner_->RaiseError(ERR_MEMORY);
  std::vector<CValue*> moved(static_cast<size_t>(product), nullptr);
  // Walk the old places with a running subscript, so that no division is needed.
  std::array<uint32_t, kMaxDimensions> at{};
  for (size_t i = 0; i < elements_.size(); ++i) {
    if (elements_[i]) {
      uint64_t linear = 0;
      for (uint32_t d = dimensions; d-- > 0;) linear = linear * newSizes[d] + at[d];
      moved[static_cast<size_t>(linear)] = elements_[i];
    }
    for (uint32_t d = 0; d < dimensions && ++at[d] == sizes[d]; ++d) at[d] = 0;
  }
  elements_.swap(moved);
  budget_.Return(counted_);
  counted_ = bytes;
  sizes = newSizes;
}

CValue& CArrayStore::Store(uint32_t index, const CValue& value) {
  if (index >= elements_.size()) owner_->RaiseError(ERR_SUBSCRIPT, 1);
  CValue*& element = elements_[index];
  if (!element) {
    if (value.type >= VT_NEW_NAME && value.type <= VT_NEW_ELEMENT) owner_->RaiseError(ERR_UNDEFINED);
    CValue* fresh = pool_.Take();
    if (!fresh) owner_->RaiseError(ERR_MEMORY);
    element = fresh;
  }
  element->Assign(value);
  return *element;
}

}  // namespace vl

#include "interpreter/array_store.h"

#include <algorithm>
#include <cstdlib>

#include "interpreter/interpretor.h"

namespace vl {

namespace {
// A run's memory holds no more in the wide form, which any store may come to.
constexpr uint64_t kMostElements = limits::kRunMemoryBytes / sizeof(uint64_t);
}  // namespace

CArrayStore::CArrayStore(CInterpretor* interpreter, CElementPool& pool, MemoryBudget& budget)
    : owner_(interpreter), pool_(pool), budget_(budget) {}

CArrayStore::~CArrayStore() {
  for (uint32_t i = 0; i < wideCount_; ++i) {
    if (IsCell(wide_[i])) pool_.Give(CellOf(wide_[i]));
  }
  budget_.Return(BytesOf(capacity_));
  std::free(narrow_);
  std::free(wide_);
}

// Counted memory; the caller gives back what it replaces.
void* CArrayStore::Allocate(uint64_t bytes) {
  if (!budget_.Take(bytes)) owner_->RaiseError(ERR_MEMORY);
  void* memory = std::malloc(static_cast<size_t>(bytes));
  if (!memory) {
    budget_.Return(bytes);
    owner_->RaiseError(ERR_MEMORY);
  }
  return memory;
}

void CArrayStore::Resize(uint64_t count) {
  if (count > capacity_) {
    if (count > kMostElements) owner_->RaiseError(ERR_MEMORY);
    const uint64_t capacity = std::clamp(capacity_ + capacity_ / 2, count, kMostElements);
    const uint64_t more = BytesOf(capacity) - BytesOf(capacity_);
    if (!budget_.Take(more)) owner_->RaiseError(ERR_MEMORY);
    void* old = IsWide() ? static_cast<void*>(wide_) : narrow_;
    void* memory = std::realloc(old, static_cast<size_t>(BytesOf(capacity)));
    if (!memory) {
      budget_.Return(more);
      owner_->RaiseError(ERR_MEMORY);
    }
    if (IsWide()) {
      wide_ = static_cast<uint64_t*>(memory);
    } else {
      narrow_ = static_cast<int32_t*>(memory);
    }
    capacity_ = capacity;
  }
  const auto newCount = static_cast<uint32_t>(count);
  if (IsWide()) {
    std::fill(wide_ + wideCount_, wide_ + newCount, kNothing);
    wideCount_ = newCount;
  } else {
    std::fill(narrow_ + narrowCount_, narrow_ + newCount, kNoInteger);
    narrowCount_ = newCount;
  }
}

// From 4 bytes an element to 8.
void CArrayStore::Widen() {
  if (IsWide()) return;
  auto* wide = static_cast<uint64_t*>(Allocate(capacity_ * sizeof(uint64_t)));
  for (uint32_t i = 0; i < narrowCount_; ++i) {
    wide[i] = narrow_[i] == kNoInteger ? kNothing : kIntegers | static_cast<uint32_t>(narrow_[i]);
  }
  budget_.Return(BytesOf(capacity_));
  std::free(narrow_);
  narrow_ = nullptr;
  wide_ = wide;
  wideCount_ = narrowCount_;
  narrowCount_ = 0;
}

uint32_t CArrayStore::FirstAddress(const int32_t* subscripts, uint32_t count) {
  if (count < 1 || count > kMaxDimensions) owner_->RaiseError(ERR_BAD_ARGUMENT, count);
  uint64_t product = 1;
  for (uint32_t d = 0; d < count; ++d) {
    const uint32_t size = static_cast<uint32_t>(subscripts[d]) + 1;
    if (size < 1 || size > kMaxSize) owner_->RaiseError(ERR_SUBSCRIPT, d + 1);
    product *= size;
    if (product > kMostElements) owner_->RaiseError(ERR_MEMORY);
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
    if (product > kMostElements) owner_->RaiseError(ERR_MEMORY);
  }
  void* const memory = Allocate(BytesOf(product));
  budget_.Return(BytesOf(capacity_));
  const auto move = [&](auto*& elements, uint32_t& elementCount, auto nothing) {
    auto* const moved = static_cast<decltype(&nothing)>(memory);
    std::fill(moved, moved + product, nothing);
    MoveTo(moved, elements, newSizes);
    std::free(elements);
    elements = moved;
    elementCount = static_cast<uint32_t>(product);
  };
  if (IsWide()) {
    move(wide_, wideCount_, kNothing);
  } else {
    move(narrow_, narrowCount_, kNoInteger);
  }
  capacity_ = product;
  sizes = newSizes;
}

// Each element to its place in the new shape; rows along the first dimension stay whole.
template <typename T>
void CArrayStore::MoveTo(T* to, const T* from, const std::array<uint32_t, kMaxDimensions>& newSizes) const {
  std::array<uint32_t, kMaxDimensions> at{};
  const uint32_t count = ElementCount();
  for (uint32_t i = 0; i < count; i += sizes[0]) {
    uint64_t linear = 0;
    for (uint32_t d = dimensions; d-- > 1;) linear = (linear + at[d]) * newSizes[d - 1];
    std::copy(from + i, from + i + sizes[0], to + linear);
    for (uint32_t d = 1; d < dimensions && ++at[d] == sizes[d]; ++d) at[d] = 0;
  }
}

// A fresh cell for the element at an index inside the wide form.
CValue* CArrayStore::MakeCell(uint32_t index) {
  CValue* fresh = pool_.Take();
  if (!fresh) owner_->RaiseError(ERR_MEMORY);
  wide_[index] = kCells | reinterpret_cast<uintptr_t>(fresh);
  return fresh;
}

CValue* CArrayStore::Place(uint32_t index) {
  if (CValue* cell = Cell(index)) return cell;
  CValue number(owner_);
  if (!ReadNumber(index, number)) return nullptr;
  Widen();
  CValue* cell = MakeCell(index);
  cell->type = number.type;
  cell->data = number.data;
  return cell;
}

CValue& CArrayStore::StoreInCell(uint32_t index, const CValue& value) {
  if (index >= ElementCount()) owner_->RaiseError(ERR_SUBSCRIPT, 1);
  CValue* cell = Cell(index);
  if (!cell) {
    if (value.type >= VT_NEW_NAME && value.type <= VT_NEW_ELEMENT) owner_->RaiseError(ERR_UNDEFINED);
    Widen();
    cell = MakeCell(index);
  }
  // The last step: this store may go with what the cell held.
  cell->Assign(value);
  return *cell;
}

void CArrayStore::Store(uint32_t index, const CValue& value) {
  if (value.type <= VT_FLOAT) {
    if (WriteNumber(index, value)) return;
    if (index < narrowCount_) {
      Widen();
      if (WriteNumber(index, value)) return;
    }
  }
  StoreInCell(index, value);
}

}  // namespace vl

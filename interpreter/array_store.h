// CArrayStore: the body of a script array, shared by every value that refers to it.
//
// Elements that are numbers are kept compact: 4 bytes each while all are integers, 8 once there is anything else.
// Another value, or an element whose place something wants to keep, is a cell of its own, which stays with its element
// while the store lives. An element doesn't exist until it is assigned. The first subscript runs fastest.
#pragma once

#include <array>
#include <bit>
#include <cstdint>

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
  // Index of an element inside a store of one or two dimensions, and kOutside for anything else.
  static constexpr uint32_t kOutside = UINT32_MAX;
  uint32_t InsideOfOne(uint32_t i) const { return dimensions == 1 && i < sizes[0] ? i : kOutside; }
  uint32_t InsideOfTwo(uint32_t i, uint32_t j) const {
    return dimensions == 2 && i < sizes[0] && j < sizes[1] ? sizes[0] * j + i : kOutside;
  }

  // The element as a number into the type and content of `to`, which owns nothing. False when it doesn't exist, isn't
  // a number or has a cell. `index` may be outside.
  bool ReadNumber(uint32_t index, CValue& to) const {
    if (index < narrowCount_) {
      const int32_t number = narrow_[index];
      if (number == kNoInteger) return false;
      to.type = VT_INTEGER;
      to.data.integer = number;
      return true;
    }
    if (index >= wideCount_) return false;
    const uint64_t bits = wide_[index];
    if (bits < kIntegers) {
      to.type = VT_FLOAT;
      to.data.real = std::bit_cast<double>(bits);
      return true;
    }
    if (bits >= kCells) return false;
    to.type = VT_INTEGER;
    to.data.integer = static_cast<int32_t>(static_cast<uint32_t>(bits));
    return true;
  }
  // Stores an integer or a real where that needs no memory; nothing happens otherwise. `index` may be outside.
  bool WriteInteger(uint32_t index, int32_t number) {
    if (index < narrowCount_) {
      if (number == kNoInteger) return false;
      narrow_[index] = number;
      return true;
    }
    if (index >= wideCount_ || IsCell(wide_[index])) return false;
    wide_[index] = kIntegers | static_cast<uint32_t>(number);
    return true;
  }
  bool WriteReal(uint32_t index, double number) {
    const auto bits = std::bit_cast<uint64_t>(number);
    if (index >= wideCount_ || IsCell(wide_[index]) || bits >= kIntegers) return false;
    wide_[index] = bits;
    return true;
  }
  bool WriteNumber(uint32_t index, const CValue& number) {
    return number.type == VT_INTEGER ? WriteInteger(index, number.data.integer) : WriteReal(index, number.data.real);
  }
  // The same for the element one behind the last of a store of one dimension, where there is memory for it.
  bool AppendNumber(uint32_t index, const CValue& number) {
    if (index != ElementCount() || index >= capacity_ || dimensions != 1) return false;
    if (wide_) {
      if (number.type == VT_FLOAT && std::bit_cast<uint64_t>(number.data.real) >= kIntegers) return false;
      wide_[index] = number.type == VT_FLOAT ? std::bit_cast<uint64_t>(number.data.real)
                                             : kIntegers | static_cast<uint32_t>(number.data.integer);
      ++wideCount_;
    } else {
      if (number.type == VT_FLOAT || number.data.integer == kNoInteger) return false;
      narrow_[index] = number.data.integer;
      ++narrowCount_;
    }
    ++sizes[0];
    return true;
  }
  // The cell of an element that has one; null for any other.
  CValue* Cell(uint32_t index) const {
    return index < wideCount_ && IsCell(wide_[index]) ? CellOf(wide_[index]) : nullptr;
  }

  // The element's value, which `scratch` holds unless there is a cell. Null when it doesn't exist or is outside.
  const CValue* Element(uint32_t index, CValue& scratch) const {
    if (const CValue* cell = Cell(index)) return cell;
    scratch.Release();
    return ReadNumber(index, scratch) ? &scratch : nullptr;
  }
  // A cell for the element, which stays its own. Null when the element doesn't exist or is outside. Raises 15.
  CValue* Place(uint32_t index);
  uint32_t ElementCount() const { return narrowCount_ + wideCount_; }
  // Stores a copy. Raises 15 and what copying raises; 45 for an index outside.
  void Store(uint32_t index, const CValue& value);
  // The same, into a cell.
  CValue& StoreInCell(uint32_t index, const CValue& value);
  uint32_t handle = 0;  // node in the interpreter's list
  uint32_t refcount = 0;
  uint32_t dimensions = 0;
  std::array<uint32_t, kMaxDimensions> sizes{};

 private:
  // Of 4 bytes: the integer that stands for an element that doesn't exist. To hold it as a number takes the wide form.
  static constexpr int32_t kNoInteger = INT32_MIN;
  // Of 8 bytes: a real, or by the upper 16 bits an integer, a cell's address, or nothing. They are those of numbers
  // that aren't any (NaN) and which no calculation gives; a real that is one of these is kept in a cell.
  static constexpr uint64_t kIntegers = uint64_t{0xFFFC} << 48;
  static constexpr uint64_t kCells = uint64_t{0xFFFD} << 48;
  static constexpr uint64_t kNothing = uint64_t{0xFFFE} << 48;
  static bool IsCell(uint64_t bits) { return bits - kCells < kNothing - kCells; }
  static CValue* CellOf(uint64_t bits) { return reinterpret_cast<CValue*>(static_cast<uintptr_t>(bits - kCells)); }

  uint32_t AddressSlow(const int32_t* subscripts, uint32_t count);
  uint32_t FirstAddress(const int32_t* subscripts, uint32_t count);
  void Resize(uint64_t count);
  void Rebuild(const std::array<uint32_t, kMaxDimensions>& newSizes);
  template <typename T>
  void MoveTo(T* to, const T* from, const std::array<uint32_t, kMaxDimensions>& newSizes) const;
  void Widen();
  void* Allocate(uint64_t bytes);
  CValue* MakeCell(uint32_t index);
  bool IsWide() const { return wide_ != nullptr; }
  uint64_t BytesOf(uint64_t count) const { return count * (IsWide() ? sizeof(uint64_t) : sizeof(int32_t)); }

  CInterpretor* owner_;
  CElementPool& pool_;
  MemoryBudget& budget_;
  // One of the two holds the elements; the other's count is 0.
  int32_t* narrow_ = nullptr;
  uint64_t* wide_ = nullptr;
  uint32_t narrowCount_ = 0;
  uint32_t wideCount_ = 0;
  uint64_t capacity_ = 0;  // elements that the memory is for, all counted against the budget
};

}  // namespace vl

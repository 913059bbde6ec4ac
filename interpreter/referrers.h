// CReferrers: the values that hold a reference to one object. Most objects have one or two, which need no memory.
#pragma once

#include <algorithm>
#include <cstdint>

namespace vl {

class CValue;

class CReferrers {
 public:
  CReferrers() = default;
  ~CReferrers() {
    if (capacity_ > kFew) delete[] many_;
  }
  CReferrers(const CReferrers&) = delete;
  CReferrers& operator=(const CReferrers&) = delete;

  uint32_t size() const { return size_; }
  CValue** begin() { return capacity_ > kFew ? many_ : few_; }
  CValue** end() { return begin() + size_; }
  CValue*& operator[](uint32_t index) { return begin()[index]; }
  // Gives the place of the value.
  uint32_t Add(CValue* value) {
    if (size_ == capacity_) Grow();
    begin()[size_] = value;
    return size_++;
  }
  // The last one takes the freed place; gives it, to be told.
  CValue* Remove(uint32_t index) {
    CValue** const all = begin();
    return all[index] = all[--size_];
  }
  void clear() { size_ = 0; }

 private:
  static constexpr uint32_t kFew = 2;
  void Grow() {
    auto** const more = new CValue*[capacity_ * 2];
    std::copy(begin(), end(), more);
    if (capacity_ > kFew) delete[] many_;
    many_ = more;
    capacity_ *= 2;
  }
  union {
    CValue* few_[kFew];
    CValue** many_;
  };
  uint32_t size_ = 0;
  uint32_t capacity_ = kFew;
};

}  // namespace vl

// NameTable: a hash table over objects that carry their own link (`nextByName`).
//
// Holds what it doesn't own. Objects of one name all stay; the newest is found first.
#pragma once

#include <array>
#include <cstdint>

namespace vl {

template <class T, uint32_t kBuckets>
class NameTable {
 public:
  void Add(T& object, uint32_t hash) {
    T*& head = buckets_[hash % kBuckets];
    object.nextByName = head;
    head = &object;
  }
  void Remove(T& object, uint32_t hash) {
    for (T** link = &buckets_[hash % kBuckets]; *link; link = &(*link)->nextByName) {
      if (*link == &object) {
        *link = object.nextByName;
        return;
      }
    }
  }
  // The newest object of that hash for which `matches(object)` is true, or null.
  template <class Matches>
  T* Find(uint32_t hash, Matches matches) const {
    for (T* object = buckets_[hash % kBuckets]; object; object = object->nextByName) {
      if (matches(*object)) return object;
    }
    return nullptr;
  }
  void Clear() { buckets_.fill(nullptr); }

 private:
  std::array<T*, kBuckets> buckets_{};
};

}  // namespace vl

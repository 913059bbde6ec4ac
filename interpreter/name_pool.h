// CNamePool: interns identifier texts, ignoring case.
//
// A name id is (bucket << 16) | index, so a bucket holds at most 65536 names. Ids are stable within one compilation
// and the run that follows it.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vl {

// Sum of the characters, each with bit 5 cleared: the hash of names all over the runtime.
uint32_t NameSum(std::string_view name);
bool EqualNoCase(std::string_view a, std::string_view b);

class CNamePool {
 public:
  explicit CNamePool(bool exact = false) : exact_(exact) {}
  // False when the name's bucket is full.
  bool Intern(std::string_view name, uint32_t& id);
  // False when the name was never interned.
  bool Find(std::string_view name, uint32_t& id) const;
  const std::string& Name(uint32_t id) const;
  static constexpr uint32_t kBuckets = 32;
  size_t NamesIn(uint32_t bucket) const { return buckets_[bucket].size(); }

 private:
  static constexpr size_t kBucketNames = 65536;
  std::string Key(std::string_view name) const;

  std::array<std::vector<std::string>, kBuckets> buckets_;
  // By folded name: a program may hold a million names, and its author shouldn't wait for them.
  std::unordered_map<std::string, uint32_t> ids_;
  bool exact_;
};

}  // namespace vl

// CNamePool: interns identifier texts, ignoring case.
//
// A name id is (bucket << 16) | index. Ids are stable within one compilation and the run that follows it.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vl {

// Sum of the characters, each with bit 5 cleared: the hash of names all over the runtime.
uint32_t NameSum(std::string_view name);
bool EqualNoCase(std::string_view a, std::string_view b);

class CNamePool {
 public:
  explicit CNamePool(bool exact = false) : exact_(exact) {}
  uint32_t Intern(std::string_view name);
  // False when the name was never interned.
  bool Find(std::string_view name, uint32_t& id) const;
  const std::string& Name(uint32_t id) const;

 private:
  static constexpr uint32_t kBuckets = 32;
  std::array<std::vector<std::string>, kBuckets> buckets_;
  bool exact_;
};

}  // namespace vl

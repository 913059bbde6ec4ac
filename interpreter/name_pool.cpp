#include "interpreter/name_pool.h"

namespace vl {

namespace {
char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; }
}  // namespace

uint32_t NameSum(std::string_view name) {
  uint32_t sum = 0;
  for (char c : name) sum += static_cast<uint8_t>(c) & 0xDFu;
  return sum;
}

bool EqualNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (Lower(a[i]) != Lower(b[i])) return false;
  }
  return true;
}

bool CNamePool::Find(std::string_view name, uint32_t& id) const {
  const uint32_t bucket = NameSum(name) % kBuckets;
  const auto& names = buckets_[bucket];
  for (size_t i = 0; i < names.size(); ++i) {
    if (exact_ ? names[i] == name : EqualNoCase(names[i], name)) {
      id = (bucket << 16) | static_cast<uint32_t>(i);
      return true;
    }
  }
  return false;
}

uint32_t CNamePool::Intern(std::string_view name) {
  uint32_t id = 0;
  if (Find(name, id)) return id;
  const uint32_t bucket = NameSum(name) % kBuckets;
  buckets_[bucket].emplace_back(name);
  return (bucket << 16) | static_cast<uint32_t>(buckets_[bucket].size() - 1);
}

const std::string& CNamePool::Name(uint32_t id) const {
  static const std::string none;
  const uint32_t bucket = id >> 16;
  const uint32_t index = id & 0xFFFF;
  if (bucket >= kBuckets || index >= buckets_[bucket].size()) return none;
  return buckets_[bucket][index];
}

}  // namespace vl

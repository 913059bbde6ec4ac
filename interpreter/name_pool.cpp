#include "interpreter/name_pool.h"

#include <algorithm>

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

std::string CNamePool::Key(std::string_view name) const {
  std::string key(name);
  if (!exact_) std::transform(key.begin(), key.end(), key.begin(), Lower);
  return key;
}

bool CNamePool::Find(std::string_view name, uint32_t& id) const {
  const auto found = ids_.find(Key(name));
  if (found == ids_.end()) return false;
  id = found->second;
  return true;
}

bool CNamePool::Intern(std::string_view name, uint32_t& id) {
  std::string key = Key(name);
  const auto found = ids_.find(key);
  if (found != ids_.end()) {
    id = found->second;
    return true;
  }
  const uint32_t bucket = NameSum(name) % kBuckets;
  std::vector<std::string>& names = buckets_[bucket];
  if (names.size() >= kBucketNames) return false;
  id = (bucket << 16) | static_cast<uint32_t>(names.size());
  names.emplace_back(name);
  ids_.emplace(std::move(key), id);
  return true;
}

const std::string& CNamePool::Name(uint32_t id) const {
  static const std::string none;
  const uint32_t bucket = id >> 16;
  const uint32_t index = id & 0xFFFF;
  if (bucket >= kBuckets || index >= buckets_[bucket].size()) return none;
  return buckets_[bucket][index];
}

}  // namespace vl

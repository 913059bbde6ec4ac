// Arbitrary texts as .ini files, with arbitrary sections, keys and values: what is set is read again, and nothing else
// of the text goes.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "classes/ini_text.h"

namespace {

std::string TakeLine(std::string& text) {
  const size_t end = text.find('\0');
  std::string line = text.substr(0, end);
  text.erase(0, end == std::string::npos ? text.size() : end + 1);
  return line;
}

bool IsPlain(const std::string& text) {
  if (text.empty()) return false;
  for (const char c : text) {
    const bool isPlain = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    if (!isPlain) return false;
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string text(reinterpret_cast<const char*>(data), size);
  const std::string section = TakeLine(text);
  const std::string key = TakeLine(text);
  const std::string value = TakeLine(text);
  vl::ReadIniValue(text, section, key);
  const std::string set = vl::WithIniValue(text, section, key, value);
  const std::string again = vl::WithIniValue(set, section, key, value);
  const std::string removed = vl::WithIniValue(set, section, key, std::nullopt);
  const std::string without = vl::WithoutIniSection(set, section);
  if (removed.size() > set.size() || without.size() > set.size()) abort();
  if (!IsPlain(section) || !IsPlain(key) || !IsPlain(value)) return 0;
  if (vl::ReadIniValue(set, section, key) != value || again != set) abort();
  const auto other = vl::ReadIniValue(text, section + "x", key);
  if (vl::ReadIniValue(set, section + "x", key) != other) abort();
  return 0;
}

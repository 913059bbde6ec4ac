// ManifestTable: typed reading of a table of vorlane.toml, with the place of every fault.
//
// Each key is asked for once; what was never asked for is an unknown key, and the error names the nearest key
// that would have been known here.
#pragma once

#include <toml++/toml.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vl {

// Thrown and caught inside the loader.
struct ProjectFault {
  std::string text;
};

[[noreturn]] inline void FaultAt(const std::filesystem::path& file, const toml::source_region& where,
                                 const std::string& what, const std::string& hint = {}) {
  std::string text = file.string();
  if (where.begin) text += ":" + std::to_string(where.begin.line) + ":" + std::to_string(where.begin.column);
  text += ": " + what;
  if (!hint.empty()) text += " (" + hint + ")";
  throw ProjectFault{text};
}

class ManifestTable {
 public:
  ManifestTable(const std::filesystem::path& file, const toml::table& table) : file_(file), table_(table) {}

  const toml::table& Table() const { return table_; }
  // The value of a key, or null.
  const toml::node* Find(std::string_view key) {
    asked_.emplace_back(key);
    return table_.get(key);
  }

  bool Has(std::string_view key) const { return table_.get(key) != nullptr; }

  // Bytes of code page 1252.
  std::optional<std::string> Text(std::string_view key);
  // UTF-8: names of files and key words.
  std::optional<std::string> RawText(std::string_view key);
  std::optional<bool> Bool(std::string_view key);
  std::optional<int64_t> Integer(std::string_view key, int64_t low, int64_t high);

  // Overwrites `*field` when the key is there.
  template <class T>
  void Into(std::string_view key, T* field) {
    const auto value = Integer(key, std::numeric_limits<T>::min(), std::numeric_limits<T>::max());
    if (value) *field = static_cast<T>(*value);
  }

  [[noreturn]] void Fault(std::string_view key, const std::string& what, const std::string& hint = {}) const {
    const toml::node* node = table_.get(key);
    FaultAt(file_, node ? node->source() : table_.source(), what, hint);
  }
  // Every key was asked for, or a fault.
  void Finish() const;

  // A text node as bytes of code page 1252.
  static std::string TextOf(const std::filesystem::path& file, const toml::node& node);

 private:
  const std::filesystem::path& file_;
  const toml::table& table_;
  std::vector<std::string> asked_;
};

}  // namespace vl

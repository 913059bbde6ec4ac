#include "tools/project/manifest_table.h"

#include <algorithm>
#include <numeric>

#include "tools/project/code_page.h"

namespace vl {

namespace {

size_t EditDistance(std::string_view a, std::string_view b) {
  std::vector<size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), 0);
  for (size_t i = 1; i <= a.size(); ++i) {
    size_t diagonal = row[0];
    row[0] = i;
    for (size_t j = 1; j <= b.size(); ++j) {
      const size_t change = diagonal + (std::tolower(a[i - 1]) != std::tolower(b[j - 1]));
      diagonal = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, change});
    }
  }
  return row[b.size()];
}

}  // namespace

std::string ManifestTable::TextOf(const std::filesystem::path& file, const toml::node& node) {
  const auto value = node.value_exact<std::string>();
  if (!value) FaultAt(file, node.source(), "a text is expected here");
  CodePageText text = CodePageFromUtf8(*value);
  if (text.unknownAt) {
    FaultAt(file, node.source(), "a character that code page 1252 doesn't have",
            "names and texts are 8 bits a character");
  }
  return std::move(text.bytes);
}

std::optional<std::string> ManifestTable::Text(std::string_view key) {
  const toml::node* node = Find(key);
  if (!node) return std::nullopt;
  return TextOf(file_, *node);
}

std::optional<std::string> ManifestTable::RawText(std::string_view key) {
  const toml::node* node = Find(key);
  if (!node) return std::nullopt;
  auto value = node->value_exact<std::string>();
  if (!value) Fault(key, "'" + std::string(key) + "' must be a text");
  return value;
}

std::optional<bool> ManifestTable::Bool(std::string_view key) {
  const toml::node* node = Find(key);
  if (!node) return std::nullopt;
  const auto value = node->value_exact<bool>();
  if (!value) Fault(key, "'" + std::string(key) + "' must be true or false");
  return value;
}

std::optional<int64_t> ManifestTable::Integer(std::string_view key, int64_t low, int64_t high) {
  const toml::node* node = Find(key);
  if (!node) return std::nullopt;
  const auto value = node->value_exact<int64_t>();
  if (!value) Fault(key, "'" + std::string(key) + "' must be a whole number");
  if (*value < low || *value > high) {
    Fault(key, "'" + std::string(key) + "' must lie between " + std::to_string(low) + " and " + std::to_string(high));
  }
  return value;
}

void ManifestTable::Finish() const {
  for (const auto& [key, node] : table_) {
    if (std::find(asked_.begin(), asked_.end(), key.str()) != asked_.end()) continue;
    std::string nearest;
    size_t best = 4;
    for (const std::string& known : asked_) {
      const size_t distance = EditDistance(key.str(), known);
      if (distance < best) {
        best = distance;
        nearest = known;
      }
    }
    std::string hint;
    if (!nearest.empty()) {
      hint = "did you mean '" + nearest + "'?";
    } else {
      for (const std::string& known : asked_) hint += (hint.empty() ? "known here: " : ", ") + known;
    }
    FaultAt(file_, key.source(), "unknown key '" + std::string(key.str()) + "'", hint);
  }
}

}  // namespace vl

// CKeywordTable: names to rows, ignoring case. One holds the language's own words, one more each class's.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

namespace vl {

struct KeywordRow {
  uint32_t id = 0;        // token kind, or member id
  const char* name = "";  // static text
  uint32_t field3 = 0;    // token kind under which a member is also a global name, or 0
  uint32_t flags = 0;     // bit 31: a constant
};

class CKeywordTable {
 public:
  void Add(const KeywordRow& row);
  const KeywordRow* Find(std::string_view name) const;

 private:
  std::array<std::vector<KeywordRow>, 256> buckets_;
};

// The language's own rows: every keyword and operator.
void AddLanguageKeywords(CKeywordTable& table);
// The longest operator or bracket that the text begins with; null for none.
const KeywordRow* LongestOperator(std::string_view text);
// The source form of a token kind, "" for none.
const char* TokenSourceForm(uint32_t kind);

}  // namespace vl

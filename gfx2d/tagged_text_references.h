// Character references: "&lt;", "&#228;" and their like become characters.
//
// The references are the rows of a table, which are applied one after another: a row replaces all its occurrences,
// also those that come about by it, before the next row's turn. So "&amp;lt;" gives '<', as the row of '&' comes first,
// but "&#38" with a ';' from a later row stays.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vl {

struct CharacterReference {
  std::string_view name;  // with '&' and ';'
  char character;         // 0: the reference vanishes
};

inline constexpr int kReferenceRows = 297;
// The rows in their order.
const CharacterReference& ReferenceRow(int row);

// A text that grows by one character at a time, with its references replaced: Text() always is what the table makes
// of everything appended so far. Each character costs the same, whatever is before it.
//
// How that can be: no two references overlap unless they are the same, so nothing can keep a complete one from being
// replaced but the order of rows. For that each character remembers the row that formed it, and the row that brought
// it beside its neighbour: a reference is replaced when its own row comes no earlier than those.
class ReferenceText {
 public:
  void Clear();
  void Append(char c);
  const std::string& Text() const { return text_; }

 private:
  struct Origin {
    uint16_t formedBy;    // row from 1, 0 when it was appended as it is
    uint16_t besideLeft;  // row that made the left neighbour one
  };
  void Push(char c, uint16_t formedBy);

  std::string text_;
  std::vector<Origin> origins_;
  uint16_t gap_ = 0;  // what the next character's besideLeft will be
};

// Characters that stand in no reference: what is before one can't be joined to what is behind it.
bool CanBeInReference(char c);

// The whole of `text`; `scratch` holds the result where it differs from the text.
std::string_view ReplaceReferences(std::string_view text, ReferenceText& scratch);

}  // namespace vl

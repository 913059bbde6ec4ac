#include "gfx2d/tagged_text_references.h"

#include <algorithm>
#include <array>

namespace vl {
namespace {

// Names of the characters 160 to 255.
constexpr std::string_view kLatinNames[96] = {
    "nbsp",   "iexcl",  "cent",   "pound",  "curren", "yen",    "brvbar", "sect",   "uml",    "copy",   "ordf",
    "laquo",  "not",    "shy",    "reg",    "macr",   "deg",    "plusmn", "sup2",   "sup3",   "acute",  "micro",
    "para",   "middot", "cedil",  "sup1",   "ordm",   "raquo",  "frac14", "frac12", "frac34", "iquest", "Agrave",
    "Aacute", "Acirc",  "Atilde", "Auml",   "Aring",  "AElig",  "Ccedil", "Egrave", "Eacute", "Ecirc",  "Euml",
    "Igrave", "Iacute", "Icirc",  "Iuml",   "ETH",    "Ntilde", "Ograve", "Oacute", "Ocirc",  "Otilde", "Ouml",
    "times",  "Oslash", "Ugrave", "Uacute", "Ucirc",  "Uuml",   "Yacute", "THORN",  "szlig",  "agrave", "aacute",
    "acirc",  "atilde", "auml",   "aring",  "aelig",  "ccedil", "egrave", "eacute", "ecirc",  "euml",   "igrave",
    "iacute", "icirc",  "iuml",   "eth",    "ntilde", "ograve", "oacute", "ocirc",  "otilde", "ouml",   "divide",
    "oslash", "ugrave", "uacute", "ucirc",  "uuml",   "yacute", "thorn",  "yuml",
};

struct SecondName {
  int code;
  std::string_view name;
};
constexpr SecondName kSecondNames[] = {{34, "quot"},    {38, "amp"},  {60, "lt"},    {62, "gt"},
                                       {166, "brkbar"}, {168, "die"}, {175, "hibar"}};

constexpr size_t kLongest = 8;

struct Row {
  std::array<char, kLongest> name{};
  uint8_t length = 0;
  uint8_t character = 0;
  constexpr std::string_view Name() const { return {name.data(), length}; }
};

struct Table {
  std::array<Row, kReferenceRows> rows{};
  std::array<uint16_t, kReferenceRows> sorted{};  // rows by name
  int count = 0;

  constexpr void Add(std::string_view inner, int character) {
    Row& row = rows[size_t(count++)];
    row.name[row.length++] = '&';
    for (const char c : inner) row.name[row.length++] = c;
    row.name[row.length++] = ';';
    row.character = uint8_t(character);
  }
};

// Numbers before names, a character's usual name before its other one.
constexpr Table MakeTable() {
  Table table;
  for (int code = 9; code < 256; ++code) {
    const bool isListed = code <= 10 || code == 13 || (code >= 32 && code <= 126) || code >= 160;
    if (!isListed) continue;
    int character = code;
    // Line ends don't break lines in a text; they become characters without a picture. The hard blank is no character.
    if (code == 10) character = 0x08;
    if (code == 13) character = 0x0B;
    if (code == 160) character = 0;
    char number[4] = {'#'};
    size_t length = 1;
    if (code >= 100) number[length++] = char('0' + code / 100);
    number[length++] = char('0' + code / 10 % 10);
    number[length++] = char('0' + code % 10);
    table.Add({number, length}, character);
    if (code >= 160) table.Add(kLatinNames[code - 160], character);
    for (const SecondName& second : kSecondNames) {
      if (second.code == code) table.Add(second.name, character);
    }
  }
  for (size_t i = 0; i < kReferenceRows; ++i) table.sorted[i] = uint16_t(i);
  std::sort(table.sorted.begin(), table.sorted.end(),
            [&](uint16_t a, uint16_t b) { return table.rows[a].Name() < table.rows[b].Name(); });
  return table;
}

constexpr Table kTable = MakeTable();
static_assert(kTable.count == kReferenceRows);

// The row of a reference, -1 for none.
int FindRow(std::string_view name) {
  const auto found = std::lower_bound(kTable.sorted.begin(), kTable.sorted.end(), name,
                                      [](uint16_t row, std::string_view n) { return kTable.rows[row].Name() < n; });
  return found != kTable.sorted.end() && kTable.rows[*found].Name() == name ? *found : -1;
}

}  // namespace

const CharacterReference& ReferenceRow(int row) {
  static constexpr auto kRows = [] {
    std::array<CharacterReference, kReferenceRows> rows{};
    for (size_t i = 0; i < rows.size(); ++i) rows[i] = {kTable.rows[i].Name(), char(kTable.rows[i].character)};
    return rows;
  }();
  return kRows[size_t(row)];
}

bool CanBeInReference(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '#' || c == '&' || c == ';';
}

void ReferenceText::Clear() {
  text_.clear();
  origins_.clear();
  gap_ = 0;
}

void ReferenceText::Push(char c, uint16_t formedBy) {
  text_ += c;
  origins_.push_back({formedBy, gap_});
  gap_ = 0;
}

void ReferenceText::Append(char c) {
  Push(c, 0);
  // A replacement that is a ';' may complete another reference.
  while (!text_.empty() && text_.back() == ';') {
    const size_t most = std::min(text_.size(), kLongest);
    size_t length = 2;
    while (length <= most && text_[text_.size() - length] != '&' && text_[text_.size() - length] != ';') ++length;
    if (length > most || text_[text_.size() - length] != '&') return;
    const size_t start = text_.size() - length;
    const int row = FindRow(std::string_view(text_).substr(start));
    if (row < 0) return;
    const auto rank = uint16_t(row + 1);
    for (size_t i = start; i < text_.size(); ++i) {
      if (origins_[i].formedBy > rank || (i > start && origins_[i].besideLeft > rank)) return;
    }
    const uint16_t left = origins_[start].besideLeft;
    text_.resize(start);
    origins_.resize(start);
    const char character = ReferenceRow(row).character;
    if (character == 0) {
      gap_ = std::max(left, rank);
      return;
    }
    gap_ = left;
    Push(character, rank);
  }
}

std::string_view ReplaceReferences(std::string_view text, ReferenceText& scratch) {
  if (text.find('&') == std::string_view::npos) return text;
  scratch.Clear();
  for (const char c : text) scratch.Append(c);
  return scratch.Text();
}

}  // namespace vl

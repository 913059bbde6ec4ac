#include "interpreter/keyword_table.h"

#include <iterator>

#include "interpreter/name_pool.h"
#include "interpreter/token.h"

namespace vl {

namespace {

constexpr KeywordRow kLanguage[] = {
    {TK_VAR, "Var"},
    {TK_NEW, "New"},
    {TK_FOR, "For"},
    {TK_RETURN, "Return"},
    {TK_BREAK, "Break"},
    {TK_CONTINUE, "Continue"},
    {TK_DELETE, "Delete"},
    {TK_FUNCTION, "Function"},
    {TK_THIS, "This"},
    {TK_IF, "If"},
    {TK_ELSE, "Else"},
    {TK_WHILE, "While"},
    {TK_IN, "in"},
    {TK_CURWINDOW, "CurWindow"},
    {TK_SWITCH, "Switch"},
    {TK_CASE, "Case"},
    {TK_DEFAULT, "Default"},
    {TK_TRUE, "TRUE"},
    {TK_FALSE, "FALSE"},
    {TK_ON, "ON"},
    {TK_OFF, "OFF"},
    {TK_PAREN_OPEN, "("},
    {TK_PAREN_CLOSE, ")"},
    {TK_COMMA, ","},
    {TK_BRACE_OPEN, "{"},
    {TK_BRACE_CLOSE, "}"},
    {TK_SEMICOLON, ";"},
    {TK_ASSIGN, "="},
    {TK_ADD_ASSIGN, "+="},
    {TK_SUB_ASSIGN, "-="},
    {TK_MUL_ASSIGN, "*="},
    {TK_DIV_ASSIGN, "/="},
    {TK_AND_ASSIGN, "&="},
    {TK_OR_ASSIGN, "|="},
    {TK_XOR_ASSIGN, "^="},
    {TK_MOD_ASSIGN, "%="},
    {TK_SHL_ASSIGN, "<<="},
    {TK_SHR_ASSIGN, ">>="},
    {TK_CONDITIONAL, "?"},
    {TK_LOGICAL_AND, "&&"},
    {TK_LOGICAL_OR, "||"},
    {TK_GREATER_EQUAL, ">="},
    {TK_LESS_EQUAL, "<="},
    {TK_EQUAL, "=="},
    {TK_LESS, "<"},
    {TK_GREATER, ">"},
    {TK_NOT_EQUAL, "!="},
    {TK_NOT, "!"},
    {TK_COMPLEMENT, "~"},
    {TK_INCREMENT, "++"},
    {TK_DECREMENT, "--"},
    {TK_ADD, "+"},
    {TK_SUB, "-"},
    {TK_DIV, "/"},
    {TK_MUL, "*"},
    {TK_AND, "&"},
    {TK_OR, "|"},
    {TK_XOR, "^"},
    {TK_MOD, "%"},
    {TK_SHL, "<<"},
    {TK_SHR, ">>"},
    {TK_DOT, "."},
    {TK_COLON, ":"},
    {TK_BRACKET_OPEN, "["},
    {TK_BRACKET_CLOSE, "]"},
    {TK_COMMENT, "//"},
    {TK_COMMENT_OPEN, "/*"},
    {TK_COMMENT_CLOSE, "*/"},
};

}  // namespace

void CKeywordTable::Add(const KeywordRow& row) { buckets_[NameSum(row.name) % buckets_.size()].push_back(row); }

const KeywordRow* CKeywordTable::Find(std::string_view name) const {
  for (const KeywordRow& row : buckets_[NameSum(name) % buckets_.size()]) {
    if (EqualNoCase(row.name, name)) return &row;
  }
  return nullptr;
}

void AddLanguageKeywords(CKeywordTable& table) {
  for (const KeywordRow& row : kLanguage) table.Add(row);
}

namespace {

// The rows in the order of their first characters, and where each character's begin.
struct OperatorRows {
  std::array<uint8_t, std::size(kLanguage)> rows{};
  std::array<uint8_t, 129> starts{};
};

constexpr OperatorRows SortOperators() {
  OperatorRows sorted;
  uint8_t count = 0;
  for (size_t c = 0; c < 128; ++c) {
    sorted.starts[c] = count;
    for (size_t r = 0; r < std::size(kLanguage); ++r) {
      if (static_cast<size_t>(kLanguage[r].name[0]) == c) sorted.rows[count++] = static_cast<uint8_t>(r);
    }
  }
  sorted.starts[128] = count;
  return sorted;
}
constexpr OperatorRows kOperators = SortOperators();

}  // namespace

const KeywordRow* LongestOperator(std::string_view text) {
  const auto first = static_cast<uint8_t>(text[0]);
  if (first >= 128) return nullptr;
  const KeywordRow* longest = nullptr;
  size_t length = 0;
  for (size_t r = kOperators.starts[first]; r < kOperators.starts[first + 1u]; ++r) {
    const KeywordRow& row = kLanguage[kOperators.rows[r]];
    size_t same = 1;
    while (row.name[same] && same < text.size() && row.name[same] == text[same]) ++same;
    if (row.name[same] || same <= length) continue;
    longest = &row;
    length = same;
  }
  return longest;
}

const char* TokenSourceForm(uint32_t kind) {
  for (const KeywordRow& row : kLanguage) {
    if (row.id == kind) return row.name;
  }
  return "";
}

}  // namespace vl

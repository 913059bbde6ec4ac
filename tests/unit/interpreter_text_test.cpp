// Numbers in texts, error texts, places in texts, names.
#include <cmath>
#include <limits>

#include "interpreter/error.h"
#include "interpreter/name_pool.h"
#include "interpreter/number_text.h"
#include "interpreter/system_errors.h"
#include "interpreter/token_infos.h"

namespace vl {
namespace {

// --- Numbers ---

TEST(NumberText, Integers) {
  const std::pair<std::string, int32_t> cases[] = {
      {"", 0},
      {"12abc", 12},
      {" \t\n\v\f\r-7", -7},
      {"+5", 5},
      {"--5", 0},
      {"- 5", 0},
      {"abc", 0},
      {"0x10", 0},
      {"3.99", 3},
      {"1e3", 1},
      {"2147483647", 2147483647},
      {"-2147483648", std::numeric_limits<int32_t>::min()},
      {"4294967297", 1},
      {"007", 7},
      {std::string("1\0002", 3), 1},
  };
  for (const auto& [text, wanted] : cases) EXPECT_EQ(ParseInteger(text), wanted) << text;
}

TEST(NumberText, Floats) {
  const double infinity = std::numeric_limits<double>::infinity();
  const std::pair<std::string, double> cases[] = {
      {"", 0.0},
      {"12abc", 12.0},
      {"  -1.5", -1.5},
      {".5", 0.5},
      {"5.", 5.0},
      {".", 0.0},
      {"-.25e-2x", -0.0025},
      {"1e5", 1e5},
      {"1E+5", 1e5},
      {"1d5", 1e5},
      {"1D-2", 0.01},
      {"1e", 1.0},
      {"1e+", 1.0},
      {"1.2.3", 1.2},
      {"e5", 0.0},
      {"inf", 0.0},
      {"nan", 0.0},
      {"0x10", 0.0},
      {"1e400", infinity},
      {"-1e400", -infinity},
      {"1e-400", 0.0},
      {"1e99999999999999999999", infinity},
      {"1e-99999999999999999999", 0.0},
      {"0e99999999999999999999", 0.0},
      {"123456789012345678", 123456789012345678.0},
      {"0.1", 0.1},
      {"2.2250738585072011e-308", 2.2250738585072011e-308},
      {"4.9e-324", 4.9e-324},
      {"1.7976931348623157e308", std::numeric_limits<double>::max()},
      {"9007199254740993", 9007199254740992.0},
      // Zeros in front count for the place only, however many there are.
      {std::string(5000, '0') + "5", 5.0},
      {"0." + std::string(5000, '0') + "5e5001", 5.0},
      {std::string(3000, '0') + "." + std::string(3000, '0') + "25e3000", 0.25},
      {std::string(5000, '0'), 0.0},
      {"0." + std::string(5000, '0'), 0.0},
      {"7" + std::string(400, '0'), infinity},
      {"7" + std::string(2000, '0') + "e-2000", 7.0},
      {"1." + std::string(3000, '0') + "9", 1.0},
      {"1" + std::string(700, '0') + "e-1", infinity},
      {"0." + std::string(700, '0') + "1e1", 0.0},
      {"." + std::string(600, '0') + "1e700", 1e99},
  };
  for (const auto& [text, wanted] : cases) EXPECT_EQ(ParseDouble(text), wanted) << text.substr(0, 50);
  EXPECT_TRUE(std::signbit(ParseDouble("-0")));
}

TEST(NumberText, Digits) {
  struct {
    const char* text;
    uint32_t base;
    uint32_t value;
    size_t used;
  } const cases[] = {
      {"", 16, 0, 0},
      {"xyz", 16, 0, 0},
      {"fF0g", 16, 0xFF0, 3},
      {"FFFFFFFF", 16, 0xFFFFFFFF, 8},
      {"1FFFFFFFF", 16, 0x1FFFFFFF, 8},
      {"000000000001", 16, 1, 12},
      {"1012", 2, 5, 3},
      {"11111111111111111111111111111111", 2, 0xFFFFFFFF, 32},
      {"111111111111111111111111111111111", 2, 0xFFFFFFFF, 32},
      {"2", 2, 0, 0},
  };
  for (const auto& c : cases) {
    size_t used = 99;
    EXPECT_EQ(ParseDigits(c.text, c.base, used), c.value) << c.text;
    EXPECT_EQ(used, c.used) << c.text;
  }
}

TEST(NumberText, PrefixedNumbers) {
  const std::pair<const char*, double> cases[] = {
      {"0x10", 16}, {"0X10", 16}, {"0b101", 5}, {"0B101", 5},    {"0xFFFFFFFF", -1}, {"12abc", 12},
      {"-0x10", 0}, {"0x", 0},    {"0b2", 0},   {"1.5e1", 15.0}, {" 0x10", 0},       {"", 0},
  };
  for (const auto& [text, wanted] : cases) EXPECT_EQ(ParsePrefixedNumber(text), wanted) << text;
}

TEST(NumberText, FormattedIntegers) {
  for (const int32_t value : {0, -7, 10, std::numeric_limits<int32_t>::max(), std::numeric_limits<int32_t>::min()}) {
    char buffer[12];
    const size_t length = FormatInteger(value, buffer);
    EXPECT_EQ(std::string(buffer), std::to_string(value));
    EXPECT_EQ(length, std::to_string(value).size());
  }
}

TEST(NumberText, FormattedFloats) {
  const std::pair<double, const char*> cases[] = {
      {0.0, "0"},
      {1.5, "1.5"},
      {-1.5, "-1.5"},
      {3.0, "3"},
      {100000.0, "100000"},
      {999999.0, "999999"},
      {1234567.0, "1.23457e+06"},
      {0.0001, "0.0001"},
      {0.00001, "1e-05"},
      {1.0 / 3, "0.333333"},
      {2.5e300, "2.5e+300"},
      {123456.5, "123456"},
      {0.1 + 0.2, "0.3"},
  };
  for (const auto& [value, wanted] : cases) {
    char buffer[32];
    EXPECT_EQ(FormatDouble(value, buffer), std::string(wanted).size()) << wanted;
    EXPECT_STREQ(buffer, wanted);
  }
  char buffer[32];
  for (const double value : {-std::numeric_limits<double>::max(), std::numeric_limits<double>::denorm_min(),
                             std::numeric_limits<double>::quiet_NaN(), -std::numeric_limits<double>::infinity()}) {
    const size_t length = FormatDouble(value, buffer);
    ASSERT_LT(length, sizeof buffer);
    EXPECT_EQ(buffer[length], 0);
  }
}

TEST(NumberText, Truncation) {
  const std::pair<double, int32_t> cases[] = {
      {3.99, 3},
      {-3.99, -3},
      {0.5, 0},
      {2147483647.5, 2147483647},
      {2147483648.0, std::numeric_limits<int32_t>::min()},
      {4294967296.0 * 5 + 7, 7},
      {-4294967297.0, -1},
      {1e30, 0},
      {std::numeric_limits<double>::infinity(), 0},
      {std::numeric_limits<double>::quiet_NaN(), 0},
  };
  for (const auto& [value, wanted] : cases) EXPECT_EQ(TruncateToInt(value), wanted) << value;
}

// --- Places ---

TEST(LineAndColumnTest, EveryLineEnd) {
  struct {
    const char* text;
    uint32_t offset, line, column;
  } const cases[] = {
      {"", 0, 0, 0},          {"abc", 2, 0, 2},
      {"abc", 99, 0, 3},      {"a\nb", 2, 1, 0},
      {"a\rb", 2, 1, 0},      {"a\r\nb", 3, 1, 0},
      {"a\n\rb", 3, 1, 0},    {"a\n\nb", 3, 2, 0},
      {"a\r\rb", 3, 2, 0},    {"\r\n\r\nxyz", 6, 2, 2},
      {"\n\r\n\rx", 4, 2, 0}, {"\n\r\nx", 3, 2, 0},
      {"\r\n\rx", 3, 2, 0},   {"a\nb\rc\r\nd\n\re", 10, 4, 0},
      {"\tab", 1, 0, 1},      {"one\ntwo\n", 8, 2, 0},
      {"a\nb", 1, 0, 1},
  };
  for (const auto& c : cases) {
    uint32_t line = 77;
    uint32_t column = 77;
    LineAndColumn(c.text, c.offset, line, column);
    EXPECT_EQ(line, c.line) << testing::PrintToString(c.text) << " at " << c.offset;
    EXPECT_EQ(column, c.column) << testing::PrintToString(c.text) << " at " << c.offset;
  }
}

// --- Texts of errors ---

TEST(ErrorTextTest, BothLanguages) {
  const uint32_t line = 11;
  const ErrorTexts english;
  const ErrorTexts french{true};
  EXPECT_EQ(FormatError(16, &line, english), "Error #16 at line 12.");
  EXPECT_EQ(FormatError(16, nullptr, english), "Error #16.");
  EXPECT_EQ(FormatError(16, &line, french), "Erreur #16 ligne 12.");
  EXPECT_EQ(FormatError(16, nullptr, french), "Erreur #16.");
}

TEST(ErrorTextTest, SystemErrorsLoseTheirFullStop) {
  const uint32_t line = 2;
  const uint32_t code = kSystemError | 5;
  EXPECT_EQ(FormatError(code, &line, {}), "Access is denied at line 3.");
  EXPECT_EQ(FormatError(code, nullptr, {}), "Access is denied.");
  EXPECT_EQ(FormatError(code, &line, {true}), "Acc\xE8s refus\xE9 ligne 3.");
  EXPECT_EQ(FormatError(code, nullptr, {true}), "Acc\xE8s refus\xE9.");
  // A number that nobody knows still gives one sentence.
  const std::string unknown = FormatError(kSystemError | 0x7FFFFFFF, nullptr, {});
  EXPECT_FALSE(unknown.empty());
  EXPECT_EQ(unknown.find('.'), unknown.size() - 1);
}

TEST(ErrorTextTest, Titles) {
  const std::pair<std::string, std::string> cases[] = {
      {"part://bank/source.ext", "part - source"},
      {"part://bank/source", "part - source"},
      {"My Game://a.b/main.old.vlq", "My Game - main"},
      {"p://b/g/name.x", "p - name"},
      {"p://b/", "p - "},
      {std::string(400, 'x') + "://b/name", std::string(148, 'x')},
      {"p://b/" + std::string(400, 'y'), "p - " + std::string(144, 'y')},
  };
  for (const auto& [path, title] : cases) EXPECT_EQ(FormatErrorTitle(path), title);
  EXPECT_LE(FormatErrorTitle("").size(), 148u);
}

// --- Names ---

uint32_t Intern(CNamePool& pool, std::string_view name) {
  uint32_t id = 0xFFFFFFFF;
  EXPECT_TRUE(pool.Intern(name, id)) << name;
  return id;
}

TEST(NamePool, IgnoresCaseAndKeepsIds) {
  CNamePool pool;
  const uint32_t first = Intern(pool, "Hello");
  EXPECT_EQ(Intern(pool, "hELLO"), first);
  EXPECT_EQ(pool.Name(first), "Hello") << "the first spelling stays";
  const uint32_t other = Intern(pool, "olleH");
  EXPECT_NE(other, first) << "the same bucket";
  EXPECT_EQ(other >> 16, first >> 16);
  EXPECT_EQ(first & 0xFFFF, 0u);
  EXPECT_EQ(other & 0xFFFF, 1u);
  // Bit 5 of each character is cleared: h e l l o sum up as H E L L O do.
  EXPECT_EQ(first >> 16, ('H' + 'E' + 'L' + 'L' + 'O') % 32u);
  uint32_t id = 0;
  EXPECT_TRUE(pool.Find("HELLO", id));
  EXPECT_EQ(id, first);
  EXPECT_FALSE(pool.Find("HELL", id));
}

TEST(NamePool, ExactWhenAsked) {
  CNamePool pool(true);
  EXPECT_NE(Intern(pool, "a"), Intern(pool, "A"));
  EXPECT_EQ(Intern(pool, "a"), Intern(pool, "a"));
}

TEST(NamePool, ManyNames) {
  CNamePool pool;
  std::vector<uint32_t> ids;
  for (int i = 0; i < 3000; ++i) ids.push_back(Intern(pool, "name" + std::to_string(i)));
  for (int i = 0; i < 3000; ++i) {
    ASSERT_EQ(Intern(pool, "NAME" + std::to_string(i)), ids[static_cast<size_t>(i)]);
    ASSERT_EQ(pool.Name(ids[static_cast<size_t>(i)]), "name" + std::to_string(i));
  }
}

// The index has 16 bits: a full bucket must refuse, as the next name would take the id of another bucket's.
TEST(NamePool, AFullBucketRefuses) {
  CNamePool pool;
  uint32_t id = 0;
  // Pairs of letters with the same sum: all these names fall into one bucket.
  constexpr const char* kPairs[] = {"AD", "BC", "CB", "DA"};
  std::string name;
  uint32_t made = 0;
  for (uint32_t n = 0;; ++n) {
    name.clear();
    for (uint32_t pair = 0; pair < 9; ++pair) name += kPairs[n >> 2 * pair & 3];
    if (!pool.Intern(name, id)) break;
    ASSERT_EQ(pool.Name(id), name);
    ++made;
  }
  EXPECT_EQ(made, 65536u);
  EXPECT_TRUE(pool.Intern("ADADADADADADADADAD", id)) << "a known name is still found";
  EXPECT_TRUE(pool.Intern("E", id)) << "another bucket has room";
}

}  // namespace
}  // namespace vl

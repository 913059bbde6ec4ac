#include "interpreter/number_text.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace vl {

namespace {

bool IsBlank(char c) { return c == ' ' || (c >= 9 && c <= 13); }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

int DigitValue(char c) {
  if (IsDigit(c)) return c - '0';
  const char lower = static_cast<char>(c | 0x20);
  if (lower >= 'a' && lower <= 'f') return lower - 'a' + 10;
  return 99;
}

size_t SkipBlanks(std::string_view text) {
  size_t i = 0;
  while (i < text.size() && IsBlank(text[i])) ++i;
  return i;
}

}  // namespace

int32_t ParseInteger(std::string_view text) {
  size_t i = SkipBlanks(text);
  bool negative = false;
  if (i < text.size() && (text[i] == '-' || text[i] == '+')) negative = text[i++] == '-';
  uint32_t value = 0;
  for (; i < text.size() && IsDigit(text[i]); ++i) value = value * 10 + static_cast<uint32_t>(text[i] - '0');
  return static_cast<int32_t>(negative ? 0u - value : value);
}

double ParseDouble(std::string_view text) {
  // The accepted form is rebuilt with an 'e' in a plain buffer. Zeros in front and digits beyond 800, which can't
  // change the result of a correctly rounded conversion by more than the last place, only count for the exponent.
  char number[1024];
  size_t n = 0;
  size_t i = SkipBlanks(text);
  bool negative = false;
  if (i < text.size() && (text[i] == '-' || text[i] == '+')) negative = text[i++] == '-';
  int64_t dropped = 0;
  bool digits = false;
  for (; i < text.size() && IsDigit(text[i]); ++i) {
    digits = true;
    if (n == 0 && text[i] == '0') continue;
    if (n < 800) {
      number[n++] = text[i];
    } else {
      ++dropped;
    }
  }
  // Digits before the point, for telling too large from too small.
  [[maybe_unused]] const auto whole = static_cast<int64_t>(n);
  if (i < text.size() && text[i] == '.') {
    ++i;
    bool significant = n > 0;
    number[n++] = '.';
    for (; i < text.size() && IsDigit(text[i]); ++i) {
      digits = true;
      if (!significant && text[i] == '0') {
        --dropped;
        continue;
      }
      significant = true;
      if (n < 900) number[n++] = text[i];
    }
  }
  if (!digits) return negative ? -0.0 : 0.0;
  int64_t exponent = 0;
  if (i < text.size() && ((text[i] | 0x20) == 'e' || (text[i] | 0x20) == 'd')) {
    ++i;
    bool down = false;
    if (i < text.size() && (text[i] == '-' || text[i] == '+')) down = text[i++] == '-';
    for (; i < text.size() && IsDigit(text[i]); ++i) {
      if (exponent < 1'000'000'000) exponent = exponent * 10 + (text[i] - '0');
    }
    if (down) exponent = -exponent;
  }
  exponent += dropped;
  number[n++] = 'e';
  const auto end = std::to_chars(number + n, number + sizeof number - 1, exponent).ptr;
  *end = 0;
  double value = 0;
#if defined(__cpp_lib_to_chars)
  const char* first = number;
  const auto result = std::from_chars(first, static_cast<const char*>(end), value);
  if (result.ec == std::errc::result_out_of_range) value = whole + exponent > 0 ? HUGE_VAL : 0.0;
#else
  // Only where the library lacks from_chars for doubles; such a platform has the C locale alone.
  value = std::strtod(number, nullptr);
#endif
  return negative ? -value : value;
}

uint32_t ParseDigits(std::string_view text, uint32_t base, size_t& used) {
  uint32_t value = 0;
  size_t i = 0;
  for (; i < text.size(); ++i) {
    const int digit = DigitValue(text[i]);
    if (digit >= static_cast<int>(base)) break;
    const uint64_t next = uint64_t{value} * base + static_cast<uint32_t>(digit);
    if (next > UINT32_MAX) break;
    value = static_cast<uint32_t>(next);
  }
  used = i;
  return value;
}

double ParsePrefixedNumber(std::string_view text) {
  if (text.size() >= 2 && text[0] == '0') {
    size_t used = 0;
    if ((text[1] | 0x20) == 'b') return static_cast<int32_t>(ParseDigits(text.substr(2), 2, used));
    if ((text[1] | 0x20) == 'x') return static_cast<int32_t>(ParseDigits(text.substr(2), 16, used));
  }
  return ParseDouble(text);
}

size_t FormatInteger(int32_t value, std::span<char> buffer) {
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size() - 1, value);
  *result.ptr = 0;
  return static_cast<size_t>(result.ptr - buffer.data());
}

size_t FormatDouble(double value, std::span<char> buffer) {
  const auto result =
      std::to_chars(buffer.data(), buffer.data() + buffer.size() - 1, value, std::chars_format::general, 6);
  *result.ptr = 0;
  return static_cast<size_t>(result.ptr - buffer.data());
}

int32_t TruncateToInt(double value) {
  if (!(value > -9223372036854775808.0 && value < 9223372036854775808.0)) return 0;
  return static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(static_cast<int64_t>(value))));
}

}  // namespace vl

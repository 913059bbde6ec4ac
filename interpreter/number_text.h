// Numbers and text: conversions by the rules of the period's C library, independent of any locale.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace vl {

// atol: blanks, sign, digits; wraps at 32 bits.
int32_t ParseInteger(std::string_view text);
// atof: blanks, sign, digits with one point, an exponent after e, E, d or D. No hexadecimal, no "inf".
double ParseDouble(std::string_view text);
// Digits of a base (2 or 16), stopping at the first other character or at the digit that would not
// fit 32 bits any more. `used` gets the number of characters taken.
uint32_t ParseDigits(std::string_view text, uint32_t base, size_t& used);
// Number of String.GetFloat: "0b" and "0x" prefixes, else ParseDouble.
double ParsePrefixedNumber(std::string_view text);

// Decimal text; needs 12 bytes. Gives the length, NUL behind it.
size_t FormatInteger(int32_t value, std::span<char> buffer);
// "%g"; needs 32 bytes.
size_t FormatDouble(double value, std::span<char> buffer);
// Truncation towards zero as the period's compilers did it: through 64 bits, low half kept.
int32_t TruncateToInt(double value);

}  // namespace vl

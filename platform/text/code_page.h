// Code page 1252: the bytes of the runtime's texts as Unicode, and back.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vl {

// The five bytes without a character are the control characters of the same number.
char32_t UnicodeOf1252(uint8_t byte);
// The byte of a character, -1 when the code page lacks it.
int Byte1252Of(char32_t character);

std::string Utf8Of1252(std::string_view text);
// Characters that the code page lacks become '?'; broken UTF-8 too.
std::string Text1252OfUtf8(std::string_view utf8);

}  // namespace vl

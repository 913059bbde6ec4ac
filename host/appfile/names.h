// Names of the application file: hash and comparison, and file names that stay inside a folder.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vl {

// Lower case by code page 1252, only the letters whose two forms differ in bit 5, as in the hash below.
uint8_t FoldByte(uint8_t c);
bool EqualsIgnoringCase(std::string_view a, std::string_view b);
// The sum of the bytes, each with bit 5 cleared. The hash of a path is the sum of those of its pieces.
uint32_t HashName(std::string_view name);

// Makes a name of the period ('\\' or '/' between components) a path below a folder. False for an empty name, an
// absolute one, one with a drive or a control character, and one whose '..' leaves the folder.
bool ConfineName(std::string_view name, std::string* relative);
// Up to and with the last separator; empty when there is none.
std::string_view DirectoryOf(std::string_view path);

}  // namespace vl

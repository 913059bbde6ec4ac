// The texts of .ini files: sections in brackets, lines of key=value, comments after a semicolon.
//
// Sections and keys ignore case, blanks around them don't count; the first of several counts. A change leaves every
// other line as it is.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vl {

// The value without blanks around it and, when it stands in a pair of quotes, without these. Nothing when it is absent.
std::optional<std::string> ReadIniValue(std::string_view text, std::string_view section, std::string_view key);
// The text with the value set; section and key are made when they aren't there. Without a value the key is taken out.
std::string WithIniValue(std::string_view text, std::string_view section, std::string_view key,
                         std::optional<std::string_view> value);
std::string WithoutIniSection(std::string_view text, std::string_view section);

}  // namespace vl

// The names of keys in recorded input and settings.
#pragma once

#include <cstdint>
#include <string>

namespace vl {

// The virtual key of "A", "7", "F10", "Enter", "PageUp" and the like, in any case. False when there is no such key.
bool KeyOfName(const std::string& name, int32_t& code);

}  // namespace vl

// Texts of the period's system error numbers, for errors with bit 31 set.
#pragma once

#include <cstdint>
#include <string>

#include "base/system_error.h"

namespace vl {

// The system's message, with its full stop; a number in words for one without a text here.
std::string SystemErrorText(uint32_t number, bool french);

}  // namespace vl

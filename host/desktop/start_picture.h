// The picture that a control shows until its program has a window.
#pragma once

#include <cstdint>
#include <vector>

#include "base/rect.h"
#include "platform/text_engine.h"

namespace vl {

// Words 0x00RRGGBB, line after line, for a control of that size; empty when there is no memory for it.
std::vector<uint32_t> MakeStartPicture(Size bounds, TextEngine& text);

}  // namespace vl

// Writes pictures as PNG files.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vl {

// `pixels`: words 0x00RRGGBB, line after line. False when the file can't be written.
bool WritePng(const std::string& path, const std::vector<uint32_t>& pixels, int width, int height);

}  // namespace vl

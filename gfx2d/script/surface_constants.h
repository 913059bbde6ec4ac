// The constants of the class Surface, which the class Window repeats.
#pragma once

#include <array>
#include <cstdint>

#include "interpreter/class_table.h"

namespace vl {

struct SurfaceConstant {
  const char* name;
  uint32_t value;
  uint8_t globalKind;
  const char* help;
};

inline constexpr uint32_t kUseImageDepth = 0xABCD0010;
inline constexpr uint32_t kUseImagePalette = 0xABCD0020;
inline constexpr uint32_t kAutoSize = 0xABCD0040;

inline constexpr SurfaceConstant kSurfaceConstants[] = {
    {"COPYALL", 0, 0, "draw mode: the source as it is"},
    {"BLENDING", 1, 0, "draw mode: mixed, the parameter from 0 to 255"},
    {"INVERT", 2, 0, "draw mode: the source inverted"},
    {"XOR", 3, 0, "draw mode"},
    {"AND", 4, 0, "draw mode"},
    {"OR", 5, 0, "draw mode"},
    {"ADD", 9, 0, "draw mode: added, at most 255"},
    {"USEIMAGEPALETTE", kUseImagePalette, 0, "keep the picture's palette"},
    {"USEIMAGEDEPTH", kUseImageDepth, 0, "keep the picture's depth"},
    {"AUTOSIZE", kAutoSize, 0, "take the picture's size"},
    {"BMP", 0x20504D42, 0, "picture file"},
    {"JPEG", 0x4745504A, 0, "picture file"},
    {"PNG", 0x20474E50, 0, "picture file"},
    {"RED", 0xFF0000, CLASS_SURFACE, "colour"},
    {"GREEN", 0x00FF00, CLASS_SURFACE, "colour"},
    {"BLUE", 0x0000FF, CLASS_SURFACE, "colour"},
    {"WHITE", 0xFFFFFF, CLASS_SURFACE, "colour"},
    {"BLACK", 0, CLASS_SURFACE, "colour"},
    {"LIGHTGRAY", 0xC0C0C0, CLASS_SURFACE, "colour"},
    {"DARKGRAY", 0x808080, CLASS_SURFACE, "colour"},
};

// A table's own rows with the constants behind them, numbered from `firstId`.
template <size_t N>
constexpr auto WithSurfaceConstants(const std::array<MemberRow, N>& own, uint16_t firstId) {
  std::array<MemberRow, N + std::size(kSurfaceConstants)> rows{};
  size_t n = 0;
  for (const MemberRow& row : own) rows[n++] = row;
  for (const SurfaceConstant& c : kSurfaceConstants) {
    rows[n++] = {firstId++, c.name, MemberKind::Constant, nullptr, c.value, c.globalKind, c.help};
  }
  return rows;
}

}  // namespace vl

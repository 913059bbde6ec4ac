// The default palette: the twenty system colours around a colour cube and a grey ramp.
#include "gfx2d/palette.h"

namespace vl {
namespace {

constexpr PaletteEntry kSystemLow[10] = {{0, 0, 0},       {128, 0, 0},    {0, 128, 0},   {128, 128, 0},
                                         {0, 0, 128},     {128, 0, 128},  {0, 128, 128}, {192, 192, 192},
                                         {192, 220, 192}, {166, 202, 240}};
constexpr PaletteEntry kSystemHigh[10] = {{255, 251, 240}, {160, 160, 164}, {128, 128, 128}, {255, 0, 0},
                                          {0, 255, 0},     {255, 255, 0},   {0, 0, 255},     {255, 0, 255},
                                          {0, 255, 255},   {255, 255, 255}};
constexpr int kFirstHigh = 246;
constexpr uint8_t kRampFlag = 4;

constexpr PaletteRecord MakeDefault() {
  PaletteRecord record;
  for (size_t i = 0; i < 10; ++i) {
    record.entries[i] = kSystemLow[i];
    record.entries[kFirstHigh + i] = kSystemHigh[i];
  }
  size_t next = 10;
  // Six steps a channel, without the corners of the cube, which are system colours.
  for (int i = 1; i < 216; ++i) {
    const int red = i / 36;
    const int green = i / 6 % 6;
    const int blue = i % 6;
    if (red % 5 == 0 && green % 5 == 0 && blue % 5 == 0) continue;
    record.entries[next++] = {uint8_t(red * 51), uint8_t(green * 51), uint8_t(blue * 51), kRampFlag};
  }
  // Greys between the cube's own.
  for (int i = 0; i < 16; ++i) {
    const uint8_t grey = uint8_t(17 + i * 14);
    record.entries[next++] = {grey, grey, grey, kRampFlag};
  }
  while (next < kFirstHigh) record.entries[next++] = {8, 0, 0, kRampFlag};
  return record;
}

constexpr PaletteRecord kDefault = MakeDefault();

}  // namespace

const PaletteRecord& DefaultPaletteRecord() { return kDefault; }

}  // namespace vl

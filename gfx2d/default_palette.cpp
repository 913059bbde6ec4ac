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
  // Six steps a channel, without black.
  for (int i = 1; i < 216; ++i) {
    record.entries[next++] = {uint8_t(i / 36 * 51), uint8_t(i / 6 % 6 * 51), uint8_t(i % 6 * 51), kRampFlag};
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

// The palette of a part that names none: the twenty system colours around a cube of 6 x 6 x 6 colours and greys.
#pragma once

#include "host/appfile/bank.h"

namespace vl {

inline StoredPalette DefaultPartPalette() {
  constexpr uint8_t kSystem[20][3] = {{0, 0, 0},       {128, 0, 0},     {0, 128, 0},     {128, 128, 0},
                                      {0, 0, 128},     {128, 0, 128},   {0, 128, 128},   {192, 192, 192},
                                      {192, 220, 192}, {166, 202, 240}, {255, 251, 240}, {160, 160, 164},
                                      {128, 128, 128}, {255, 0, 0},     {0, 255, 0},     {255, 255, 0},
                                      {0, 0, 255},     {255, 0, 255},   {0, 255, 255},   {255, 255, 255}};
  StoredPalette record{};
  const auto set = [&](size_t index, int r, int g, int b) {
    record[index * 4] = static_cast<uint8_t>(r);
    record[index * 4 + 1] = static_cast<uint8_t>(g);
    record[index * 4 + 2] = static_cast<uint8_t>(b);
  };
  for (size_t i = 0; i < 20; ++i) set(i < 10 ? i : 236 + i, kSystem[i][0], kSystem[i][1], kSystem[i][2]);
  for (int i = 0; i < 216; ++i) set(10 + static_cast<size_t>(i), i / 36 * 51, i / 6 % 6 * 51, i % 6 * 51);
  for (int i = 0; i < 20; ++i) set(226 + static_cast<size_t>(i), 8 + i * 12, 8 + i * 12, 8 + i * 12);
  return record;
}

}  // namespace vl

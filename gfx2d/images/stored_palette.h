// Palettes as application files store them, to and from those of surfaces.
#pragma once

#include "gfx2d/palette.h"
#include "host/appfile/bank.h"

namespace vl {

inline PaletteRecord RecordOf(const StoredPalette& stored) {
  PaletteRecord record;
  for (size_t i = 0; i < 256; ++i) {
    record.entries[i] = {stored[i * 4], stored[i * 4 + 1], stored[i * 4 + 2], stored[i * 4 + 3]};
  }
  return record;
}

inline StoredPalette StoredPaletteOf(const PaletteRecord& record) {
  StoredPalette stored{};
  for (size_t i = 0; i < 256; ++i) {
    const PaletteEntry& e = record.entries[i];
    stored[i * 4] = e.red;
    stored[i * 4 + 1] = e.green;
    stored[i * 4 + 2] = e.blue;
    stored[i * 4 + 3] = e.flag;
  }
  return stored;
}

}  // namespace vl

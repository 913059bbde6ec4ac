// cPalette and PaletteList: the palettes that surfaces of depth 8 share.
//
// A list belongs to one run. It interns: equal palettes are one record, counted by its holders. In an
// interned record entry 0 is the transparent index, and no entry from 1 on is pure black: black is stored
// as (8, 0, 0), so that index 0 alone means transparent.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "base/memory_budget.h"
#include "gfx2d/colour.h"

namespace vl {

struct PaletteEntry {
  uint8_t red = 0;
  uint8_t green = 0;
  uint8_t blue = 0;
  uint8_t flag = 0;
  Colour ToColour() const { return MakeColour(red, green, blue); }
  bool SameColour(const PaletteEntry& o) const { return red == o.red && green == o.green && blue == o.blue; }
};

// A logical palette: what files and scripts give and get.
struct PaletteRecord {
  uint16_t version = 0x300;
  uint16_t count = 256;  // 0 to 256
  std::array<PaletteEntry, 256> entries{};
};

class PaletteList;

// An interned palette. Only its list makes one; holders keep it by PaletteRef.
class cPalette : public PaletteRecord {
 public:
  static constexpr int kMapCells = 32768;

  // 0-based index of the nearest colour, by the inverse map when there is one. With 256 entries colour 0
  // gives 0 and no other colour does.
  int NearestIndex(Colour colour);
  // As NearestIndex without the map.
  int SearchNearest(Colour colour) const;
  // Makes the inverse map; false when memory is spent. A cell is 5 bits of each channel, red highest.
  bool EnsureInverseMap();
  bool HasInverseMap() const { return inverseMap != nullptr; }
  // The colour of an entry, 0 past the end.
  Colour ColourAt(int index) const { return index >= 0 && index < count ? entries[size_t(index)].ToColour() : 0; }

  std::unique_ptr<uint8_t[]> inverseMap;  // a cell of 0 is not known yet
  int32_t blackIndex = 0;                 // the darkest entry from 1 on
  int32_t refCount = 0;

 private:
  friend class PaletteList;
  friend void PaletteRelease(cPalette* palette);
  PaletteList* list_ = nullptr;
};

void PaletteAddRef(cPalette* palette);
// At zero the record leaves its list and dies.
void PaletteRelease(cPalette* palette);

// One counted hold on a palette, or none.
class PaletteRef {
 public:
  PaletteRef() = default;
  explicit PaletteRef(cPalette* palette) : palette_(palette) {
    if (palette_) PaletteAddRef(palette_);
  }
  PaletteRef(const PaletteRef& o) : PaletteRef(o.palette_) {}
  PaletteRef(PaletteRef&& o) noexcept : palette_(std::exchange(o.palette_, nullptr)) {}
  PaletteRef& operator=(PaletteRef o) noexcept {
    std::swap(palette_, o.palette_);
    return *this;
  }
  ~PaletteRef() {
    if (palette_) PaletteRelease(palette_);
  }
  cPalette* Get() const { return palette_; }
  cPalette* operator->() const { return palette_; }
  explicit operator bool() const { return palette_ != nullptr; }
  bool operator==(const PaletteRef& o) const { return palette_ == o.palette_; }

 private:
  cPalette* palette_ = nullptr;
};

using RemapTable = std::array<uint8_t, 256>;

class PaletteList {
 public:
  // `budget` outlives the list. The list interns the default palette at once.
  explicit PaletteList(MemoryBudget* budget);
  ~PaletteList();
  PaletteList(const PaletteList&) = delete;
  PaletteList& operator=(const PaletteList&) = delete;

  // The record's equal in this list, or a new one. Empty when memory is spent.
  PaletteRef InternPalette(const PaletteRecord& record);
  PaletteRef GetDefaultPalette() const { return default_; }
  // The palette in the order of the system colours, and the table from old to new indices. `palette` itself
  // when nothing changed or memory is spent.
  PaletteRef ArrangePalette(const PaletteRef& palette, RemapTable& remap);
  size_t Count() const { return palettes_.size(); }

 private:
  friend class cPalette;
  friend void PaletteRelease(cPalette* palette);
  PaletteRef FindEqual(const PaletteRecord& record) const;
  void Remove(cPalette* palette);

  MemoryBudget* budget_;
  std::vector<std::unique_ptr<cPalette>> palettes_;
  PaletteRef default_;
};

// The palette every surface of depth 8 starts with.
const PaletteRecord& DefaultPaletteRecord();

// Index of the nearest entry from `first` on: least sum of squared differences; the last of equal entries,
// but the first exact one.
int SearchPalette(const PaletteRecord& record, Colour colour, int first);

// For each index of `source` the nearest one of `target`. With keepZero entries from 1 on never become 0.
// False, and no table, when both are 256 entries of the same colours.
bool BuildRemapTable(RemapTable& table, cPalette& target, const PaletteRecord& source, bool keepZero);

}  // namespace vl

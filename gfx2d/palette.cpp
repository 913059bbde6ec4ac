#include "gfx2d/palette.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <numeric>

namespace vl {
namespace {

constexpr PaletteEntry kVisibleBlack = {8, 0, 0, 0};

bool IsBlack(const PaletteEntry& e) { return (e.red | e.green | e.blue) == 0; }

// Equal for interning: flags apart, and black from index 1 on is stored as (8, 0, 0).
bool SameEntry(const PaletteRecord& a, const PaletteRecord& b, size_t i) {
  PaletteEntry x = a.entries[i];
  PaletteEntry y = b.entries[i];
  if (i > 0 && IsBlack(x)) x = kVisibleBlack;
  if (i > 0 && IsBlack(y)) y = kVisibleBlack;
  return x.SameColour(y);
}

bool SamePalette(const PaletteRecord& a, const PaletteRecord& b) {
  // Palettes tend to share their system colours; entry 10 is the first that tells them apart.
  if (a.count != b.count || !SameEntry(a, b, 10)) return false;
  for (size_t i = 0; i < 256; ++i) {
    if (!SameEntry(a, b, i)) return false;
  }
  return true;
}

int CellOf(Colour c) { return int(RedOf(c) >> 3 << 10 | GreenOf(c) >> 3 << 5 | BlueOf(c) >> 3); }

int ChannelDistance(const PaletteEntry& a, const PaletteEntry& b) {
  return std::abs(a.red - b.red) + std::abs(a.green - b.green) + std::abs(a.blue - b.blue);
}

bool IsSystemIndex(int i) { return i < 10 || i >= 246; }

}  // namespace

int SearchPalette(const PaletteRecord& record, Colour colour, int first) {
  const int red = int(RedOf(colour));
  const int green = int(GreenOf(colour));
  const int blue = int(BlueOf(colour));
  const int count = record.count;
  std::array<int32_t, 256> distance;
  int32_t best = INT32_MAX;
  for (int i = first; i < count; ++i) {
    const PaletteEntry& e = record.entries[size_t(i)];
    const int dr = e.red - red;
    const int dg = e.green - green;
    const int db = e.blue - blue;
    distance[size_t(i)] = dr * dr + dg * dg + db * db;
    best = std::min(best, distance[size_t(i)]);
  }
  if (best == 0) {
    for (int i = first; i < count; ++i) {
      if (distance[size_t(i)] == 0) return i;
    }
  }
  for (int i = count - 1; i > first; --i) {
    if (distance[size_t(i)] == best) return i;
  }
  return first < count ? first : 0;
}

int cPalette::SearchNearest(Colour colour) const {
  colour &= kColourMask;
  if (count != 256) return SearchPalette(*this, colour, 0);
  return colour == 0 ? 0 : SearchPalette(*this, colour, 1);
}

int cPalette::NearestIndex(Colour colour) {
  colour &= kColourMask;
  // Black shares its cell with other dark colours, so it never asks the map.
  if (!inverseMap || (colour == 0 && count == 256)) return SearchNearest(colour);
  uint8_t& cell = inverseMap[size_t(CellOf(colour))];
  if (cell == 0) cell = uint8_t(SearchNearest(colour));
  return cell;
}

bool cPalette::EnsureInverseMap() {
  if (inverseMap) return true;
  if (!list_ || !list_->budget_->Take(kMapCells)) return false;
  inverseMap.reset(new (std::nothrow) uint8_t[kMapCells]());
  if (!inverseMap) {
    list_->budget_->Return(kMapCells);
    return false;
  }
  for (int i = 0; i < count; ++i) inverseMap[size_t(CellOf(entries[size_t(i)].ToColour()))] = uint8_t(i);
  return true;
}

void PaletteAddRef(cPalette* palette) { ++palette->refCount; }

void PaletteRelease(cPalette* palette) {
  if (--palette->refCount > 0) return;
  if (palette->list_) {
    palette->list_->Remove(palette);
  } else {
    delete palette;  // its list is gone and left it to its last holder
  }
}

PaletteList::PaletteList(MemoryBudget* budget) : budget_(budget) { default_ = InternPalette(DefaultPaletteRecord()); }

PaletteList::~PaletteList() {
  default_ = PaletteRef();
  for (auto& palette : palettes_) {
    palette->list_ = nullptr;
    palette.release();  // NOLINT: the remaining holders own it now
  }
}

void PaletteList::Remove(cPalette* palette) {
  budget_->Return(sizeof(cPalette) + (palette->inverseMap ? cPalette::kMapCells : 0));
  std::erase_if(palettes_, [palette](const auto& p) { return p.get() == palette; });
}

PaletteRef PaletteList::FindEqual(const PaletteRecord& record) const {
  for (const auto& palette : palettes_) {
    if (SamePalette(*palette, record)) return PaletteRef(palette.get());
  }
  return PaletteRef();
}

PaletteRef PaletteList::InternPalette(const PaletteRecord& record) {
  PaletteRecord copy = record;
  copy.version = 0x300;
  copy.count = std::min<uint16_t>(copy.count, 256);
  // What lies past the count takes no part in anything, but it must not tell equal palettes apart.
  std::fill(copy.entries.begin() + copy.count, copy.entries.end(), PaletteEntry{});
  for (size_t i = 0; i < 256; ++i) {
    copy.entries[i].flag = 0;
    if (i > 0 && IsBlack(copy.entries[i])) copy.entries[i] = kVisibleBlack;
  }
  if (PaletteRef found = FindEqual(copy)) return found;
  if (!budget_->Take(sizeof(cPalette))) return PaletteRef();
  auto palette = std::unique_ptr<cPalette>(new (std::nothrow) cPalette);
  if (!palette) {
    budget_->Return(sizeof(cPalette));
    return PaletteRef();
  }
  static_cast<PaletteRecord&>(*palette) = copy;
  palette->list_ = this;
  palette->blackIndex = SearchPalette(copy, 0, 1);
  PaletteRef ref(palette.get());
  palettes_.push_back(std::move(palette));
  return ref;
}

bool BuildRemapTable(RemapTable& table, cPalette& target, const PaletteRecord& source, bool keepZero) {
  if (target.count == 256 && source.count == 256 &&
      std::equal(target.entries.begin(), target.entries.end(), source.entries.begin(),
                 [](const PaletteEntry& a, const PaletteEntry& b) { return a.SameColour(b); })) {
    return false;
  }
  for (size_t i = 0; i < 256; ++i) {
    const Colour colour = i < source.count ? source.entries[i].ToColour() : 0;
    table[i] = uint8_t(keepZero ? SearchPalette(target, colour, i == 0 ? 0 : 1) : target.SearchNearest(colour));
  }
  return true;
}

PaletteRef PaletteList::ArrangePalette(const PaletteRef& palette, RemapTable& remap) {
  std::iota(remap.begin(), remap.end(), uint8_t{0});
  if (!palette || palette->count != 256) return palette;
  const PaletteRecord& system = DefaultPaletteRecord();
  PaletteRecord arranged = *palette.Get();
  RemapTable oldIndex = remap;  // of each new place
  auto& entries = arranged.entries;
  for (int i = 0; i < 256; ++i) {
    if (!IsSystemIndex(i)) continue;
    int best = i;
    int bestDistance = INT32_MAX;
    const auto search = [&](int first, int last) {
      for (int j = first; j < last && bestDistance > 0; ++j) {
        const int distance = ChannelDistance(entries[size_t(j)], system.entries[size_t(i)]);
        if (distance < bestDistance) {
          bestDistance = distance;
          best = j;
        }
      }
    };
    search(i, 256);
    if (i >= 246) search(10, 246);
    std::swap(entries[size_t(i)], entries[size_t(best)]);
    std::swap(oldIndex[size_t(i)], oldIndex[size_t(best)]);
  }
  for (size_t i = 0; i < 256; ++i) {
    remap[oldIndex[i]] = uint8_t(i);
    if (IsSystemIndex(int(i))) {
      entries[i] = system.entries[i];
      entries[i].flag = 0;
    } else {
      if ((entries[i].red | entries[i].green | entries[i].blue) < 8) entries[i] = kVisibleBlack;
      entries[i].flag = 4;
    }
  }
  if (std::equal(entries.begin(), entries.end(), palette->entries.begin(),
                 [](const PaletteEntry& a, const PaletteEntry& b) { return a.SameColour(b); })) {
    return palette;
  }
  PaletteRef interned = InternPalette(arranged);
  if (!interned) {
    std::iota(remap.begin(), remap.end(), uint8_t{0});
    return palette;
  }
  return interned;
}

}  // namespace vl

// Palettes: interning, nearest colours, remap tables, the system's order.
#include <gtest/gtest.h>

#include "tests/unit/gfx2d_support.h"

namespace vl {
namespace {

using testing::Gfx;
using testing::RawAt;

PaletteRecord Grey() {
  PaletteRecord record;
  for (size_t i = 0; i < 256; ++i) record.entries[i] = {uint8_t(i), uint8_t(i), uint8_t(i), 7};
  return record;
}

TEST(Palette, EqualPalettesAreOneRecord) {
  MemoryBudget budget(1 << 20);
  PaletteList list(&budget);
  const uint64_t used = budget.Used();
  EXPECT_EQ(list.Count(), 1u) << "the default palette";
  {
    PaletteRecord record = Grey();
    const PaletteRef a = list.InternPalette(record);
    record.entries[20].flag = 99;
    const PaletteRef b = list.InternPalette(record);
    EXPECT_EQ(a, b) << "flags tell nothing apart";
    EXPECT_EQ(a->refCount, 2);
    EXPECT_EQ(a->entries[20].flag, 0);
    record.entries[30] = {0, 0, 0, 0};
    const PaletteRef black = list.InternPalette(record);
    EXPECT_NE(black, a);
    EXPECT_EQ(black->ColourAt(30), 8u) << "black is kept apart from transparent";
    record.entries[30] = {8, 0, 0, 0};
    EXPECT_EQ(list.InternPalette(record), black);
    EXPECT_EQ(list.Count(), 3u);
    EXPECT_EQ(black->blackIndex, 1) << "grey 1 is the darkest";
  }
  EXPECT_EQ(list.Count(), 1u);
  EXPECT_EQ(budget.Used(), used);
}

TEST(Palette, DefaultHoldsTheSystemColours) {
  Gfx gfx;
  const cSurface s = gfx.Make(1, 1, 8);
  const std::pair<int, Colour> fixed[] = {{0, 0},        {1, 0x000080},   {7, 0xC0C0C0},   {8, 0xC0DCC0},
                                          {9, 0xF0CAA6}, {246, 0xF0FBFF}, {249, 0x0000FF}, {255, 0xFFFFFF}};
  for (const auto& [index, colour] : fixed) EXPECT_EQ(s.impl->PaletteColor(index), colour) << index;
  EXPECT_EQ(s.impl->PaletteColor(245), 8u);
  EXPECT_EQ(s.impl->PaletteColor(256), 0u);
  EXPECT_EQ(s.impl->PaletteColor(-1), 0u);
  for (int i = 1; i < 256; ++i) EXPECT_NE(s.impl->PaletteColor(i), 0u) << i;
}

TEST(Palette, NearestIndexNeverConfusesDarkAndTransparent) {
  Gfx gfx;
  std::mt19937 random(1);
  for (const bool withMap : {false, true}) {
    PaletteRecord record = Grey();
    record.entries[100] = record.entries[50];
    record.entries[200] = {101, 100, 100, 0};
    const PaletteRef p = gfx.library.Palettes().InternPalette(record);
    if (withMap) {
      EXPECT_TRUE(p->EnsureInverseMap());
    }
    EXPECT_EQ(p->NearestIndex(0x020202), withMap ? 7 : 2) << "a cell of the map is as exact as 5 bits";
    EXPECT_EQ(p->NearestIndex(0), 0);
    EXPECT_EQ(p->NearestIndex(0xFF000000), 0) << "the top byte is no colour";
    for (int i = 0; i < 1000; ++i) {
      const Colour c = random() & kColourMask;
      EXPECT_EQ(p->NearestIndex(c) == 0, c == 0);
      EXPECT_EQ(p->NearestIndex(c), p->NearestIndex(c));
    }
  }
  const PaletteRef p = gfx.library.Palettes().InternPalette(Grey());
  EXPECT_EQ(p->SearchNearest(MakeColour(50, 50, 50)), 50);
  PaletteRecord ties = Grey();
  ties.entries[10] = {100, 0, 0, 0};
  ties.entries[20] = {104, 0, 0, 0};
  ties.entries[30] = {104, 0, 0, 0};
  EXPECT_EQ(SearchPalette(ties, MakeColour(102, 0, 0), 1), 30) << "the last of equal distances";
  EXPECT_EQ(SearchPalette(ties, MakeColour(104, 0, 0), 1), 20) << "the first exact one";
}

TEST(Palette, SmallPalettesAreSearchedWhole) {
  MemoryBudget budget(1 << 20);
  PaletteList list(&budget);
  PaletteRecord record;
  record.count = 2;
  record.entries[0] = {9, 9, 9, 0};
  record.entries[1] = {200, 0, 0, 0};
  const PaletteRef p = list.InternPalette(record);
  EXPECT_EQ(p->NearestIndex(0), 0);
  EXPECT_EQ(p->NearestIndex(MakeColour(255, 0, 0)), 1);
  EXPECT_EQ(p->ColourAt(2), 0u);
  record.count = 0;
  EXPECT_EQ(list.InternPalette(record)->NearestIndex(0xFFFFFF), 0);
}

TEST(Palette, SpentMemoryGivesNoPaletteAndNoMap) {
  MemoryBudget budget(sizeof(cPalette) * 3 + 64);
  SurfaceLibrary library(&budget);
  EXPECT_FALSE(library.Palettes().GetDefaultPalette()->EnsureInverseMap());
  PaletteRecord record = Grey();
  PaletteRef held[4];
  for (size_t i = 0; i < 4; ++i) {
    record.entries[200].red = uint8_t(i);
    held[i] = library.Palettes().InternPalette(record);
  }
  EXPECT_TRUE(held[1]);
  EXPECT_FALSE(held[3]);
  cSurface a;
  cSurface b;
  // Without room for the map, blends on palettes fail and change nothing.
  ASSERT_TRUE(a.Create(2, 2, library.FindPrototype(8)));
  ASSERT_TRUE(b.Create(2, 2, library.FindPrototype(8)));
  a.FillRaw(0, 0, 2, 2, 7);
  EXPECT_FALSE(a.Blit(b, 0, 0, 0, 0, 2, 2, 0, kEffectBlend, 64));
  EXPECT_TRUE(b.impl->IsEmpty());
}

TEST(Palette, RemapTablesKeepZero) {
  Gfx gfx;
  const PaletteRef grey = gfx.library.Palettes().InternPalette(Grey());
  RemapTable table;
  EXPECT_FALSE(BuildRemapTable(table, *grey.Get(), Grey(), true)) << "the same colours need no table";
  PaletteRecord source = Grey();
  source.entries[9] = {0, 0, 0, 0};
  source.entries[0] = {200, 200, 200, 0};
  EXPECT_TRUE(BuildRemapTable(table, *grey.Get(), source, true));
  EXPECT_NE(table[9], 0) << "only entry 0 may become 0";
  EXPECT_EQ(table[0], 200);
  EXPECT_EQ(table[77], 77);
  EXPECT_TRUE(BuildRemapTable(table, *grey.Get(), source, false));
  EXPECT_EQ(table[9], 0);
}

TEST(Palette, ArrangePutsSystemColoursInTheirPlaces) {
  Gfx gfx;
  PaletteList& list = gfx.library.Palettes();
  const PaletteRef standard = list.GetDefaultPalette();
  RemapTable remap;
  EXPECT_EQ(list.ArrangePalette(standard, remap), standard) << "nothing to arrange";
  EXPECT_EQ(remap[123], 123);

  PaletteRecord record = *standard.Get();
  std::swap(record.entries[1], record.entries[100]);   // a system colour in the middle
  std::swap(record.entries[255], record.entries[60]);  // white, too
  record.entries[77] = {7, 7, 7, 0};
  const PaletteRef mixed = list.InternPalette(record);
  const PaletteRef arranged = list.ArrangePalette(mixed, remap);
  EXPECT_EQ(arranged->ColourAt(1), standard->ColourAt(1));
  EXPECT_EQ(arranged->ColourAt(255), 0xFFFFFFu);
  EXPECT_EQ(remap[100], 1);
  EXPECT_EQ(remap[60], 255);
  EXPECT_EQ(arranged->ColourAt(remap[77]), 8u) << "what is all but black becomes visible black";
  // The table is a permutation: each pixel finds its colour again, the system's entries and dark ones apart.
  std::array<bool, 256> seen{};
  for (size_t i = 0; i < 256; ++i) {
    EXPECT_FALSE(seen[remap[i]]);
    seen[remap[i]] = true;
    if (remap[i] < 10 || remap[i] >= 246 || i == 77) continue;
    EXPECT_EQ(arranged->ColourAt(remap[i]), mixed->ColourAt(int(i)));
  }
}

TEST(Palette, SetPaletteTranslatesPixelsWhenAsked) {
  Gfx gfx;
  cSurface s = gfx.Make(3, 1, 8);
  s.SetPixelRaw(0, 0, 255);
  s.SetPixelRaw(1, 0, 0);
  s.SetPixelRaw(2, 0, 7);
  EXPECT_TRUE(s.impl->SetPaletteRecord(Grey(), true));
  EXPECT_EQ(RawAt(*s.impl, 0, 0), 255u);
  EXPECT_EQ(RawAt(*s.impl, 1, 0), 0u);
  EXPECT_EQ(RawAt(*s.impl, 2, 0), 192u) << "light grey";
  cSurface other = gfx.Make(1, 1, 8);
  EXPECT_TRUE(s.impl->SetPaletteFrom(*other.impl, false));
  EXPECT_EQ(RawAt(*s.impl, 2, 0), 192u) << "the pixels stay";
  EXPECT_TRUE(s.impl->RemapFromPalette(Grey()));
  EXPECT_EQ(s.impl->PaletteColor(int(RawAt(*s.impl, 2, 0))), 0xC0C0C0u);
  cSurface deep = gfx.Make(1, 1, 16);
  EXPECT_FALSE(deep.impl->SetPaletteRecord(Grey(), true));
  EXPECT_FALSE(s.impl->SetPaletteFrom(*deep.impl, true));
  PaletteEntry entries[300];
  EXPECT_EQ(s.impl->GetPaletteEntries(nullptr, 0, 0), 256);
  EXPECT_EQ(s.impl->GetPaletteEntries(entries, 250, 300), 6);
  EXPECT_EQ(s.impl->GetPaletteEntries(entries, 256, 1), 0);
  EXPECT_EQ(s.impl->GetPaletteEntries(entries, -1, 1), 0);
}

TEST(Palette, RecordsOutliveTheirList) {
  MemoryBudget budget(1 << 20);
  auto list = std::make_unique<PaletteList>(&budget);
  PaletteRef held = list->InternPalette(Grey());
  list.reset();
  EXPECT_EQ(held->ColourAt(9), MakeColour(9, 9, 9));
  EXPECT_FALSE(held->EnsureInverseMap());
}

}  // namespace
}  // namespace vl

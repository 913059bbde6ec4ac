// Bitmaps in and out of surfaces, and pointers made of them.
#include <gtest/gtest.h>

#include "tests/unit/gfx2d_support.h"

namespace vl {
namespace {

using testing::Gfx;
using testing::Pixels;
using testing::Randomise;
using testing::RawAt;

struct Bitmap {
  int width = 1;
  int height = 1;  // below 0: top-down
  int bits = 24;
  uint32_t compression = 0;
  std::vector<uint32_t> table;  // masks or colours as 0x00RRGGBB
  std::vector<uint8_t> pixels;
  uint32_t coloursUsed = 0;

  std::vector<uint8_t> Header() const {
    std::vector<uint8_t> out(40 + table.size() * 4);
    StoreWord<uint32_t>(&out[0], 40);
    StoreWord<int32_t>(&out[4], width);
    StoreWord<int32_t>(&out[8], height);
    StoreWord<uint16_t>(&out[12], 1);
    StoreWord<uint16_t>(&out[14], uint16_t(bits));
    StoreWord<uint32_t>(&out[16], compression);
    StoreWord<uint32_t>(&out[32], coloursUsed);
    for (size_t i = 0; i < table.size(); ++i) StoreWord(&out[40 + i * 4], table[i]);
    return out;
  }
  std::vector<uint8_t> Whole() const {
    std::vector<uint8_t> out = Header();
    out.insert(out.end(), pixels.begin(), pixels.end());
    return out;
  }
};

TEST(Dib, SavesWhatItLoads) {
  Gfx gfx;
  std::mt19937 random(1);
  struct Case {
    int depth;
    size_t headerBytes;
    int bits;
    uint32_t compression;
  };
  const Case cases[] = {{8, 40 + 1024, 8, 0}, {15, 40, 16, 0}, {16, 52, 16, 3}, {24, 40, 24, 0}, {32, 40, 32, 0}};
  for (const Case& c : cases) {
    cSurface s = gfx.Make(7, 5, c.depth);
    Randomise(*s.impl, random);
    const size_t lineBytes = size_t(LineBytes(c.depth, 7));
    ASSERT_EQ(s.DIBSize(), c.headerBytes + lineBytes * 5);
    std::vector<uint8_t> dib(s.DIBSize() + 3, 0xEE);
    ASSERT_TRUE(s.SaveToDIB(dib, {}, 0));
    EXPECT_EQ(LoadWord<uint32_t>(&dib[0]), 40u);
    EXPECT_EQ(LoadWord<int32_t>(&dib[4]), 7);
    EXPECT_EQ(LoadWord<int32_t>(&dib[8]), 5);
    EXPECT_EQ(LoadWord<uint16_t>(&dib[12]), 1);
    EXPECT_EQ(LoadWord<uint16_t>(&dib[14]), c.bits);
    EXPECT_EQ(LoadWord<uint32_t>(&dib[16]), c.compression);
    EXPECT_EQ(LoadWord<uint32_t>(&dib[20]), lineBytes * 5);
    EXPECT_EQ(dib[s.DIBSize()], 0xEE) << "nothing behind the bitmap";
    if (c.depth == 16) {
      EXPECT_EQ(LoadWord<uint32_t>(&dib[40]), 0xF800u);
      EXPECT_EQ(LoadWord<uint32_t>(&dib[44]), 0x7E0u);
      EXPECT_EQ(LoadWord<uint32_t>(&dib[48]), 0x1Fu);
    }
    if (c.depth == 8) {
      EXPECT_EQ(LoadWord<uint32_t>(&dib[40 + 249 * 4]), 0xFF0000u) << "red, as blue green red nothing";
    }
    // The first stored line is the last one of the picture, with its end filled up.
    EXPECT_EQ(std::memcmp(&dib[c.headerBytes], s.impl->Line(4), size_t(7 * s.impl->bytesPerPixel)), 0);
    for (size_t i = size_t(7 * s.impl->bytesPerPixel); i < lineBytes; ++i) EXPECT_EQ(dib[c.headerBytes + i], 0);

    // The same in two parts, and the header alone.
    std::vector<uint8_t> header(c.headerBytes), bits(lineBytes * 5);
    ASSERT_TRUE(s.SaveToDIB(header, bits, 0));
    EXPECT_TRUE(std::equal(header.begin(), header.end(), dib.begin()));
    EXPECT_TRUE(std::equal(bits.begin(), bits.end(), dib.begin() + int(c.headerBytes)));
    std::vector<uint8_t> alone(c.headerBytes);
    ASSERT_TRUE(s.SaveToDIB(alone, {}, kDibHeaderOnly));
    EXPECT_EQ(alone, header);

    for (const bool isSplit : {false, true}) {
      cSurface back = gfx.Make(isSplit ? 7 : 2, 5, c.depth);
      ASSERT_TRUE(isSplit ? back.LoadFromDIB(header, bits, 0) : back.LoadFromDIB(dib, {}, 0));
      EXPECT_EQ(back.impl->width, 7);
      EXPECT_EQ(Pixels(*back.impl), Pixels(*s.impl)) << c.depth;
      EXPECT_EQ(back.impl->palette, s.impl->palette);
    }
  }
}

TEST(Dib, SaysWhatFails) {
  Gfx gfx;
  cSurface s = gfx.Make(4, 4, 16);
  std::vector<uint8_t> dib(s.DIBSize());
  EXPECT_FALSE(s.SaveToDIB({}, {}, 0));
  EXPECT_EQ(s.lastError, SURF_ERR_BADDATA);
  EXPECT_FALSE(s.SaveToDIB(std::span(dib).first(dib.size() - 1), {}, 0));
  EXPECT_FALSE(s.SaveToDIB(std::span(dib).first(51), {}, kDibHeaderOnly));
  EXPECT_FALSE(cSurface().SaveToDIB(dib, {}, 0));
  EXPECT_FALSE(cSurface().LoadFromDIB(dib, {}, 0));
  EXPECT_EQ(cSurface().DIBSize(), 0u);

  const std::vector<uint8_t> pixels(64, 0x55);
  struct Case {
    const char* what;
    Bitmap bitmap;
    uint32_t error;  // 0: it loads
  };
  const Case cases[] = {
      {"plain", {4, 4, 24, 0, {}, std::vector<uint8_t>(48)}, 0},
      {"a byte short", {4, 4, 24, 0, {}, std::vector<uint8_t>(47)}, SURF_ERR_BADDATA},
      {"packed runs", {4, 4, 8, 1, std::vector<uint32_t>(256), pixels}, SURF_ERR_UNSUPPORTED},
      {"another packing", {4, 4, 32, 4, {}, pixels}, SURF_ERR_UNSUPPORTED},
      {"masks that no depth has", {4, 4, 16, 3, {0xF000, 0xF00, 0xF0}, pixels}, SURF_ERR_BADDATA},
      {"masks of depth 15", {4, 4, 16, 3, {0x7C00, 0x3E0, 0x1F}, pixels}, 0},
      {"no masks", {4, 4, 16, 3, {}, {}}, SURF_ERR_BADDATA},
      {"2 bits", {4, 4, 2, 0, std::vector<uint32_t>(4), pixels}, SURF_ERR_BADDATA},
      {"no width", {0, 4, 24, 0, {}, pixels}, SURF_ERR_BADDATA},
      {"too wide", {INT32_MAX, 4, 4, 0, std::vector<uint32_t>(16), pixels}, SURF_ERR_BADDATA},
      {"too high", {4, INT32_MIN, 24, 0, {}, pixels}, SURF_ERR_BADDATA},
      {"4 bits, a line short", {9, 4, 4, 0, std::vector<uint32_t>(16), std::vector<uint8_t>(24)}, SURF_ERR_BADDATA},
      {"4 bits", {9, 4, 4, 0, std::vector<uint32_t>(16), std::vector<uint8_t>(32)}, 0},
      {"4 bits without colours", {4, 4, 4, 0, {}, std::vector<uint8_t>(16)}, SURF_ERR_BADDATA},
  };
  for (const Case& c : cases) {
    for (const int depth : {8, 16, 32}) {
      cSurface t = gfx.Make(3, 3, depth);
      t.FillRaw(0, 0, 3, 3, 7);
      EXPECT_EQ(t.LoadFromDIB(c.bitmap.Whole(), {}, 0), c.error == 0) << c.what;
      EXPECT_EQ(t.lastError, c.error) << c.what;
      if (c.error != 0) {
        EXPECT_EQ(RawAt(*t.impl, 2, 2), 7u) << c.what;
      }
    }
  }
  // Cut anywhere, it is refused or the pixels were all there.
  const std::vector<uint8_t> whole = cases[12].bitmap.Whole();
  for (size_t n = 0; n < whole.size(); ++n) {
    cSurface t = gfx.Make(3, 3, 8);
    EXPECT_FALSE(t.LoadFromDIB(std::span(whole).first(n), {}, 0)) << n;
  }
  // Its size in pixels is more than the run may hold.
  MemoryBudget small(1 << 18);
  SurfaceLibrary library(&small);
  cSurface t;
  ASSERT_TRUE(t.Create(1, 1, library.FindPrototype(32)));
  const Bitmap wide = {20000, 4, 8, 0, std::vector<uint32_t>(256), std::vector<uint8_t>(80000)};
  EXPECT_FALSE(t.LoadFromDIB(wide.Whole(), {}, 0));
  EXPECT_EQ(t.lastError, SURF_ERR_NOMEM);
  EXPECT_EQ(t.impl->width, 1);
}

TEST(Dib, LineOrderAndDepthsOfSixteenBits) {
  Gfx gfx;
  Bitmap bitmap = {1, 2, 16, 0, {}, {0x1F, 0x00, 0, 0, 0xE0, 0x7F, 0, 0}};
  cSurface s = gfx.Make(1, 1, 15);
  ASSERT_TRUE(s.LoadFromDIB(bitmap.Whole(), {}, 0));
  EXPECT_EQ(Pixels(*s.impl), (std::vector<uint32_t>{0x7FE0, 0x001F}))
      << "plain 16 bits are depth 15, bottom line first";
  bitmap.height = -2;
  ASSERT_TRUE(s.LoadFromDIB(bitmap.Whole(), {}, 0));
  EXPECT_EQ(Pixels(*s.impl), (std::vector<uint32_t>{0x001F, 0x7FE0}));
  bitmap.compression = 3;
  bitmap.table = {0xF800, 0x7E0, 0x1F};
  cSurface deep = gfx.Make(1, 1, 32);
  ASSERT_TRUE(deep.LoadFromDIB(bitmap.Whole(), {}, 0));
  EXPECT_EQ(Pixels(*deep.impl), (std::vector<uint32_t>{0x0000F8, 0x78FC00})) << "5, 6 and 5 bits";
}

TEST(Dib, PackedIndicesLandBehindTheReservedOnes) {
  Gfx gfx;
  Bitmap four = {3, 1, 4, 0, {}, {0x01, 0xF0, 0, 0}};
  for (uint32_t i = 0; i < 16; ++i) four.table.push_back(i * 0x101010);
  Bitmap one = {9, -2, 1, 0, {0x112233, 0x445566}, {0xA0, 0x80, 0, 0, 0x01, 0x00, 0, 0}};
  for (const uint32_t flags : {0u, kDibPaletteAsIs, kDibKeepPalette}) {
    cSurface s = gfx.Make(1, 1, 8);
    const PaletteRef own = s.impl->palette;
    ASSERT_TRUE(s.LoadFromDIB(four.Whole(), {}, flags));
    Colour colours[3];
    for (int x = 0; x < 3; ++x) s.GetPixel(x, 0, colours[x]);
    EXPECT_EQ(colours[2], flags == kDibKeepPalette ? MakeColour(255, 251, 240) : 0xF0F0F0u) << flags;
    if (flags == kDibPaletteAsIs) {
      EXPECT_EQ(Pixels(*s.impl), (std::vector<uint32_t>{10, 11, 25}));
      EXPECT_EQ(colours[0], MakeColour(8, 0, 0)) << "black that isn't transparent";
      EXPECT_EQ(s.impl->PaletteColor(249), MakeColour(255, 0, 0)) << "the others are the surface's own";
    }
    EXPECT_EQ(s.impl->palette == own, flags == kDibKeepPalette);
    ASSERT_TRUE(s.LoadFromDIB(one.Whole(), {}, kDibPaletteAsIs));
    EXPECT_EQ(Pixels(*s.impl), (std::vector<uint32_t>{11, 10, 11, 10, 10, 10, 10, 10, 11,  //
                                                      10, 10, 10, 10, 10, 10, 10, 11, 10}));
  }
  cSurface deep = gfx.Make(1, 1, 32);
  ASSERT_TRUE(deep.LoadFromDIB(four.Whole(), {}, 0));
  EXPECT_EQ(Pixels(*deep.impl), (std::vector<uint32_t>{0x080000, 0x101010, 0xF0F0F0}));
  four.coloursUsed = 2;
  four.table.resize(2);
  ASSERT_TRUE(deep.LoadFromDIB(four.Whole(), {}, 0)) << "a shorter colour table";
  EXPECT_EQ(RawAt(*deep.impl, 1, 0), 0x101010u);
}

TEST(Dib, PalettesOfDepth8) {
  Gfx gfx;
  std::mt19937 random(5);
  Bitmap bitmap = {16, 16, 8, 0, {}, {}};
  for (int i = 0; i < 256; ++i) bitmap.table.push_back(i == 0 ? 0 : random() & 0xFFFFFF);
  for (int i = 0; i < 256; ++i) bitmap.pixels.push_back(uint8_t(i));
  const auto colourOf = [&](size_t i) { return SwapRedBlue(bitmap.table[i]); };
  const auto at = [](const cSurface& s, size_t i) {  // of stored pixel i
    Colour c = 0;
    s.GetPixel(int(i % 16), 15 - int(i / 16), c);
    return c;
  };
  // As it is: indices and colours unchanged.
  cSurface asIs = gfx.Make(1, 1, 8);
  ASSERT_TRUE(asIs.LoadFromDIB(bitmap.Whole(), {}, kDibPaletteAsIs));
  EXPECT_EQ(RawAt(*asIs.impl, 3, 15), 3u);
  EXPECT_EQ(at(asIs, 77), colourOf(77));
  // In order: the system's colours at their places, all others kept by translation.
  cSurface arranged = gfx.Make(1, 1, 8);
  ASSERT_TRUE(arranged.LoadFromDIB(bitmap.Whole(), {}, 0));
  int kept = 0;
  for (size_t i = 0; i < 256; ++i) kept += at(arranged, i) == colourOf(i);
  EXPECT_GE(kept, 256 - 20);
  for (const int i : {0, 1, 9, 246, 255}) {
    const PaletteEntry& e = DefaultPaletteRecord().entries[size_t(i)];
    EXPECT_EQ(arranged.impl->PaletteColor(i), e.ToColour()) << i;
  }
  EXPECT_FALSE(arranged.impl->palette == asIs.impl->palette);
  // Its own palette kept: the nearest of it, and never transparent by accident.
  cSurface own = gfx.Make(16, 16, 8);
  ASSERT_TRUE(own.LoadFromDIB(bitmap.Whole(), {}, kDibKeepPalette));
  EXPECT_EQ(own.impl->palette, gfx.Make(1, 1, 8).impl->palette);
  for (size_t i = 1; i < 256; ++i) {
    EXPECT_EQ(at(own, i), own.impl->PaletteColor(own.impl->palette->SearchNearest(colourOf(i)))) << i;
    EXPECT_NE(RawAt(*own.impl, int(i % 16), 15 - int(i / 16)), 0u);
  }
  EXPECT_EQ(RawAt(*own.impl, 0, 15), 0u);
}

TEST(Cursor, IsCentredOrMadeToFit) {
  Gfx gfx;
  cSurface s = gfx.Make(2, 1, 32);
  s.FillRaw(0, 0, 2, 1, 0x112233);
  const Colour mask = MakeColour(255, 0, 255);
  const auto shown = [](const CursorImage& c) {
    std::string picture;
    for (int y = 0; y < c.height; ++y) {
      for (int x = 0; x < c.width; ++x) {
        const bool isMasked = c.mask[size_t(y * c.MaskPitch() + x / 8)] >> (7 - x % 8) & 1;
        EXPECT_EQ(isMasked, c.words[size_t(y * c.width + x)] == 0xFF00FF);
        picture += isMasked ? '.' : '#';
      }
      picture += '\n';
    }
    return picture;
  };
  auto cursor = s.MakeCursor(6, 3, mask, Point{1, 2});
  ASSERT_TRUE(cursor);
  EXPECT_EQ(shown(*cursor), "......\n..##..\n......\n");
  EXPECT_EQ(cursor->words[8], 0x112233u);
  EXPECT_EQ(cursor->MaskPitch(), 2);
  EXPECT_FALSE(cursor->isIcon);
  EXPECT_EQ(cursor->hotX, 1);
  EXPECT_EQ(cursor->hotY, 2);

  cursor = s.MakeCursor(0, 0, mask, std::nullopt);
  ASSERT_TRUE(cursor);
  EXPECT_EQ(cursor->width, 32);
  EXPECT_EQ(cursor->height, 32);
  EXPECT_EQ(cursor->mask.size(), 128u);
  EXPECT_TRUE(cursor->isIcon);

  cSurface wide = gfx.Make(40, 10, 16);
  wide.Fill(0, 0, 40, 10, 0xFFFFFF);
  EXPECT_EQ(shown(*wide.MakeCursor(8, 4, mask, std::nullopt)), "........\n########\n########\n........\n");
  cSurface high = gfx.Make(5, 300, 8);
  high.Fill(0, 0, 5, 300, 0xFFFFFF);
  EXPECT_EQ(shown(*high.MakeCursor(3, 4, mask, std::nullopt)), ".#.\n.#.\n.#.\n.#.\n") << "at least a pixel";

  EXPECT_FALSE(cSurface().MakeCursor(8, 8, mask, std::nullopt));
  EXPECT_FALSE(s.MakeCursor(INT32_MAX, 8, mask, std::nullopt));
}

}  // namespace
}  // namespace vl

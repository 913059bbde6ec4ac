// Blits at their limits; gfx2d_exact_test.cpp compares all their pixels.
#include <gtest/gtest.h>

#include "tests/unit/gfx2d_support.h"

namespace vl {
namespace {

using testing::Gfx;
using testing::Pixels;
using testing::Randomise;
using testing::RawAt;

TEST(Blit, RefusesWhatHasNoMeaning) {
  Gfx gfx;
  cSurface a = gfx.Make(4, 4, 32);
  cSurface b = gfx.Make(4, 4, 32);
  cSurface none;
  a.FillRaw(0, 0, 4, 4, 0x123456);
  EXPECT_FALSE(a.Blit(b, 0, 0, 0, 0, 4, 4, 2));
  EXPECT_FALSE(a.Blit(b, 0, 0, 0, 0, 4, 4, -1));
  EXPECT_FALSE(a.Blit(b, 0, 0, 0, 0, 4, 4, 0, 10));
  EXPECT_FALSE(a.Blit(b, 0, 0, 0, 0, 4, 4, 0, 7, 0x123));
  EXPECT_FALSE(a.Blit(b, 0, 0, 0, 0, 0, 4, 0));
  EXPECT_FALSE(a.Blit(none, 0, 0, 0, 0, 4, 4, 0));
  EXPECT_FALSE(none.Blit(a, 0, 0, 0, 0, 4, 4, 0));
  EXPECT_TRUE(b.impl->IsEmpty());
  EXPECT_TRUE(a.Blit(b, 0, 0, 0, 0, 4, 4, 0, 7, 0xCC0020)) << "the plain copy among the raster operations";
  EXPECT_EQ(RawAt(*b.impl, 3, 3), 0x123456u);
}

TEST(Blit, SurvivesAnyCoordinates) {
  Gfx gfx;
  const int extremes[] = {INT32_MIN, INT32_MIN + 1, -5, 0, 3, INT32_MAX - 1, INT32_MAX};
  cSurface a = gfx.Make(5, 5, 16);
  cSurface b = gfx.Make(6, 6, 16);
  for (const int p : extremes) {
    for (const int q : extremes) {
      for (const int w : extremes) {
        a.Blit(b, p, q, q, p, w, w, 0);
        b.Fill(p, q, w, w, 0xFF);
        b.MirrorHorizontal(p, q, w, w);
        b.MirrorVertical(p, q, w, w);
        b.MoveBox(p, q, q, p, w, w);
        a.StretchBlit(b, p, q, w, 9, 0, 0, 5, 5, 0);
        b.SetOrigin(p, q);
        b.SetClipRect(p, q, w, w);
        const Rect clip = b.impl->GetClipRect();
        EXPECT_TRUE(clip.left >= 0 && clip.right <= 6 && clip.left <= clip.right);
        EXPECT_TRUE(clip.top >= 0 && clip.bottom <= 6 && clip.top <= clip.bottom);
        b.SetOrigin(0, 0);
        b.impl->ResetClipRect();
      }
    }
  }
}

TEST(Convert, DarkPixelsStayVisible) {
  Gfx gfx;
  struct Case {
    int from;
    uint32_t pixel;
    int to;
    uint32_t expected;
  };
  const Case cases[] = {
      {32, 0x00000001, 15, 1},  {32, 0x00010000, 16, 1},        {24, 0x070307, 15, 1},
      {16, 0x0020, 15, 1},      {15, 0x0020, 16, 0x40},         {15, 0x7FFF, 16, 0xFFDF},
      {16, 0xFFFF, 15, 0x7FFF}, {32, 0x12345678, 24, 0x345678}, {15, 0x7FFF, 24, 0xF8F8F8},
  };
  for (const Case& c : cases) {
    cSurface from = gfx.Make(1, 1, c.from);
    cSurface to = gfx.Make(1, 1, c.to);
    from.SetPixelRaw(0, 0, c.pixel);
    from.Blit(to, 0, 0, 0, 0, 1, 1, 0);
    EXPECT_EQ(RawAt(*to.impl, 0, 0), c.expected) << c.from << " to " << c.to;
  }
}

TEST(Blit, BottomUpMemoryLooksLikeAnyOther) {
  Gfx gfx;
  std::mt19937 random(3);
  // A 16-bit bitmap of 5 x 4: lines of 12 bytes, the last line first.
  std::vector<uint8_t> dib(40 + 12 * 4);
  dib[0] = 40;
  dib[4] = 5;
  dib[8] = 4;
  dib[12] = 1;
  dib[14] = 16;
  cSurface source = gfx.Make(5, 4, 15);
  Randomise(*source.impl, random);
  cWrapSurface wrap(gfx.library, dib, {}, false);
  ASSERT_EQ(wrap.depth, 15);
  EXPECT_TRUE(source.impl->Blit(wrap, 0, 0, 0, 0, 5, 4, 0, 0, 0, false));
  EXPECT_EQ(Pixels(wrap), Pixels(*source.impl));
  EXPECT_EQ(LoadWord<uint16_t>(&dib[40]), RawAt(*source.impl, 0, 3)) << "the first stored line is the bottom one";
  dib[8] = 0xFC;  // height -4: top-down
  dib[9] = dib[10] = dib[11] = 0xFF;
  cWrapSurface topDown(gfx.library, dib, {}, false);
  EXPECT_EQ(RawAt(topDown, 0, 0), RawAt(*source.impl, 0, 3));
}

TEST(WrapSurface, RefusesHeadersThatLie) {
  Gfx gfx;
  const auto header = [](int32_t w, int32_t h, uint16_t bits, uint32_t compression, size_t bytes) {
    std::vector<uint8_t> dib(bytes);
    dib[0] = 40;
    std::memcpy(&dib[4], &w, 4);
    std::memcpy(&dib[8], &h, 4);
    dib[12] = 1;
    std::memcpy(&dib[14], &bits, 2);
    std::memcpy(&dib[16], &compression, 4);
    return dib;
  };
  struct Case {
    std::vector<uint8_t> dib;
    int depth;
  };
  std::vector<Case> cases = {
      {header(2, 2, 24, 0, 40 + 16), 24},
      {header(2, 2, 24, 0, 40 + 15), 0},  // a byte short
      {header(2, 2, 32, 1, 40 + 16), 0},  // packed runs
      {header(0, 2, 32, 0, 40 + 16), 0},
      {header(2, INT32_MIN, 32, 0, 40 + 16), 0},
      {header(INT32_MAX, INT32_MAX, 32, 0, 40 + 16), 0},
      {header(2, 2, 12, 0, 40 + 16), 0},
      {header(2, 2, 8, 0, 40 + 8), 0},  // its colour table is missing
      {header(2, 2, 8, 0, 40 + 1024 + 8), 8},
      {header(2, 2, 4, 0, 40 + 64 + 8), 0},   // packed indices are not surfaces
      {header(2, 2, 16, 3, 40 + 12 + 8), 0},  // masks of zero
      {std::vector<uint8_t>(39), 0},
      {{}, 0},
  };
  auto masks = header(2, 2, 16, 3, 40 + 12 + 8);
  const uint32_t rgb565[3] = {0xF800, 0x7E0, 0x1F};
  std::memcpy(&masks[40], rgb565, 12);
  cases.push_back({masks, 16});
  for (size_t i = 0; i < cases.size(); ++i) {
    cWrapSurface wrap(gfx.library, cases[i].dib, {}, true);
    EXPECT_EQ(wrap.depth, cases[i].depth) << "case " << i;
    EXPECT_EQ(wrap.Lock(), cases[i].depth != 0);
    EXPECT_EQ(wrap.FillRaw(0, 0, 2, 2, 1), cases[i].depth != 0);
  }
}

Colour Average(Colour d, Colour s, void* calls) {
  ++*static_cast<int*>(calls);
  return MakeColour((RedOf(d) + RedOf(s)) / 2, (GreenOf(d) + GreenOf(s)) / 2, (BlueOf(d) + BlueOf(s)) / 2);
}

TEST(BlitCallback, SeesColoursAndSkipsKeyedPixels) {
  Gfx gfx;
  for (const int depth : kDepths) {
    cSurface a = gfx.Make(2, 1, depth);
    cSurface b = gfx.Make(2, 1, depth);
    a.SetPixel(0, 0, 0x0000FF);
    b.Fill(0, 0, 2, 1, 0xFF0000);
    int calls = 0;
    EXPECT_TRUE(a.BlitCallback(b, 0, 0, 0, 0, 2, 1, 1, Average, &calls));
    EXPECT_EQ(calls, 1);
    Colour mixed = 0;
    b.GetPixel(0, 0, mixed);
    Colour kept = 0;
    b.GetPixel(1, 0, kept);
    EXPECT_NEAR(int(RedOf(mixed)), 127, 8) << depth;
    EXPECT_GE(BlueOf(kept), 248u);
    EXPECT_TRUE(a.BlitCallback(b, 0, 0, 0, 0, 2, 1, 0, Average, &calls));
    EXPECT_EQ(calls, 3);
  }
  cSurface a = gfx.Make(2, 1, 16);
  cSurface b = gfx.Make(2, 1, 32);
  int calls = 0;
  EXPECT_FALSE(a.BlitCallback(b, 0, 0, 0, 0, 2, 1, 0, Average, &calls)) << "depths differ";
}

TEST(AntiAlias, SoftensInnerCornersOnly) {
  Gfx gfx;
  cSurface shape = gfx.Make(4, 4, 24);
  shape.FillRaw(0, 0, 1, 4, 0xFFFFFF);
  shape.FillRaw(0, 3, 4, 1, 0xFFFFFF);
  cSurface target = gfx.Make(4, 4, 24);
  target.Fill(0, 0, 4, 4, MakeColour(10, 20, 30));
  EXPECT_TRUE(shape.Blit(target, 0, 0, 0, 0, 4, 4, 1, 0, 0, true));
  Colour c = 0;
  // (1, 2) lies in the corner: left and below, with three diagonals of the shape.
  target.GetPixel(1, 2, c);
  const auto soften = [](int own) { return (12 * own + 2 * 255 * 2 + 3 * 255 + 2 * 2 * own + own) / 24; };
  EXPECT_EQ(c, MakeColour(uint32_t(soften(10)), uint32_t(soften(20)), uint32_t(soften(30))));
  // Next to one straight edge nothing changes.
  target.GetPixel(2, 2, c);
  EXPECT_EQ(c, MakeColour(10, 20, 30));
  target.GetPixel(1, 0, c);
  EXPECT_EQ(c, MakeColour(10, 20, 30));
  target.GetPixel(0, 0, c);
  EXPECT_EQ(c, 0xFFFFFFu);
}

}  // namespace
}  // namespace vl

// Stretching and turning at their limits; gfx2d_exact_test.cpp compares all their pixels.
#include <gtest/gtest.h>

#include <cmath>

#include "tests/unit/gfx2d_support.h"

namespace vl {
namespace {

using testing::Gfx;
using testing::Picture;
using testing::Pixels;
using testing::RawAt;

TEST(Stretch, NeedsItsSourceInsideAndConvertsDepths) {
  Gfx gfx;
  cSurface s = gfx.Make(4, 4, 32);
  cSurface t = gfx.Make(8, 8, 16);
  s.FillRaw(0, 0, 4, 4, 0xFF0000);
  EXPECT_FALSE(s.StretchBlit(t, 0, 0, 8, 8, -1, 0, 4, 4, 0));
  EXPECT_FALSE(s.StretchBlit(t, 0, 0, 8, 8, 0, 0, 5, 4, 0));
  EXPECT_FALSE(s.StretchBlit(t, 9, 0, 8, 8, 0, 0, 4, 4, 0));
  EXPECT_FALSE(s.StretchBlit(t, 0, 0, -8, 8, 0, 0, 4, 4, 0));
  EXPECT_FALSE(s.StretchBlit(t, INT32_MIN, 0, INT32_MAX, 8, 0, 0, 4, 4, 0));
  EXPECT_TRUE(t.impl->IsEmpty());
  EXPECT_TRUE(s.StretchBlit(t, 0, 0, 8, 8, 0, 0, 4, 4, 0));
  EXPECT_EQ(RawAt(*t.impl, 7, 7), 0xF800u);
}

TEST(Stretch, FilterKeepsFlatPicturesAndAveragesOthers) {
  Gfx gfx;
  for (const int depth : {24, 32}) {
    cSurface s = gfx.Make(16, 16, depth);
    s.Fill(0, 0, 16, 16, MakeColour(90, 160, 30));
    for (const auto& [w, h] : {std::pair{40, 31}, std::pair{7, 5}, std::pair{16, 3}, std::pair{1, 1}}) {
      cSurface t = gfx.Make(w, h, depth);
      EXPECT_TRUE(s.StretchBlit(t, 0, 0, w, h, 0, 0, 16, 16, 0, 0, 0, true));
      for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
          Colour c = 0;
          t.GetPixel(x, y, c);
          // Weights are truncated, so a level may be lost in each pass.
          ASSERT_NEAR(int(RedOf(c)), 90, 1);
          ASSERT_NEAR(int(GreenOf(c)), 160, 1);
          ASSERT_NEAR(int(BlueOf(c)), 30, 1);
        }
      }
    }
  }
  // One tap more, worked out by hand: 2 pixels to 4, the second lies halfway between them.
  cSurface s = gfx.Make(2, 1, 24);
  s.SetPixel(1, 0, MakeColour(200, 0, 0));
  cSurface t = gfx.Make(4, 1, 24);
  EXPECT_TRUE(s.StretchBlit(t, 0, 0, 4, 1, 0, 0, 2, 1, 0, 0, 0, true));
  const int expected[] = {0, 100, 200, 200};
  for (int x = 0; x < 4; ++x) {
    Colour c = 0;
    t.GetPixel(x, 0, c);
    EXPECT_NEAR(int(RedOf(c)), expected[x], 1) << x;
  }
}

TEST(Rotate, HalvesAndWholesAreExact) {
  Gfx gfx;
  for (const int depth : kDepths) {
    cSurface s = gfx.Make(5, 3, depth);
    for (int y = 0; y < 3; ++y) {
      for (int x = 0; x < 5; ++x) s.SetPixelRaw(x, y, uint32_t(y * 5 + x + 1));
    }
    cSurface t;
    EXPECT_TRUE(s.RotateInto(t, 180, false, 0));
    EXPECT_EQ(Picture(*t.impl), "onmlk\njihgf\nedcba\n");
    EXPECT_TRUE(s.RotateInto(t, -360, false, 0));
    EXPECT_EQ(Pixels(*t.impl), Pixels(*s.impl));
  }
}

TEST(Rotate, SlantedPicturesGetTheBackground) {
  Gfx gfx;
  const Colour red = MakeColour(248, 0, 0);
  for (const int depth : kDepths) {
    for (const bool interpolate : {false, true}) {
      cSurface s = gfx.Make(20, 20, depth);
      s.Fill(0, 0, 20, 20, red);
      cSurface t;
      ASSERT_TRUE(s.RotateInto(t, 45, interpolate, MakeColour(0, 248, 0)));
      EXPECT_EQ(t.impl->width, 28);
      Colour c = 0;
      t.GetPixel(14, 14, c);
      EXPECT_NEAR(int(RedOf(c)), 248, 8);
      t.GetPixel(0, 0, c);
      EXPECT_NEAR(int(GreenOf(c)), 248, 8);
    }
  }
  cSurface t;
  EXPECT_FALSE(cSurface().RotateInto(t, 45, false, 0));
  cSurface a = gfx.Make(4, 4, 16);
  cSurface b = gfx.Make(4, 4, 32);
  EXPECT_FALSE(a.impl->Rotate(*b.impl, 45, false, 0));
}

}  // namespace
}  // namespace vl

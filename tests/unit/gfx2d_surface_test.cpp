// Surfaces: making them, single pixels, fills, the clip, moves and mirrors, and what limits hold.
#include <gtest/gtest.h>

#include "base/limits.h"
#include "gfx2d/present.h"
#include "platform/headless/memory_windows.h"
#include "tests/unit/gfx2d_support.h"

namespace vl {
namespace {

using testing::Gfx;
using testing::Picture;
using testing::Pixels;
using testing::Randomise;
using testing::RawAt;

TEST(Surface, AnEmptyHandleAnswersEveryCall) {
  cSurface s;
  Colour c = 0;
  uint32_t raw = 0;
  Rect box;
  const Point points[] = {{0, 0}, {5, 0}, {0, 5}};
  EXPECT_FALSE(s.IsValid());
  EXPECT_FALSE(s.SetPixel(0, 0, 1));
  EXPECT_FALSE(s.GetPixel(0, 0, c));
  EXPECT_FALSE(s.GetPixelRaw(0, 0, raw));
  EXPECT_FALSE(s.Fill(0, 0, 9, 9, 1));
  EXPECT_FALSE(s.MoveBox(0, 0, 1, 1, 1, 1));
  EXPECT_FALSE(s.MirrorHorizontal(0, 0, 1, 1));
  EXPECT_FALSE(s.DrawLine(0, 0, 5, 5, 1, 1));
  EXPECT_FALSE(s.DrawEllipse({0, 0, 5, 5}, 1, 1, 1, true));
  EXPECT_FALSE(s.DrawPolygonShape(points, 1, 1, 1, true));
  EXPECT_FALSE(s.FloodFill(0, 0, box, 1, 0));
  EXPECT_FALSE(s.impl->IsEmpty());
  EXPECT_FALSE(s.impl->GetContentBox(box));
  EXPECT_FALSE(s.impl->ReplaceColor(1, 2));
  EXPECT_FALSE(s.impl->SetPaletteRecord(DefaultPaletteRecord(), false));
  EXPECT_EQ(s.impl->GetBlackIndex(), 4);
  EXPECT_EQ(s.GetBits(), nullptr);
  s.SetClipRect(1, 2, 3, 4);
  EXPECT_EQ(s.GetClipRect(), Rect());
  EXPECT_FALSE(s.CloneFrom(cSurface()));
  EXPECT_EQ(s.lastError, SURF_ERR_NOMEM);
}

TEST(Surface, CreateTakesMemoryFromTheBudgetAndGivesItBack) {
  MemoryBudget budget(1 << 20);
  {
    SurfaceLibrary library(&budget);
    const uint64_t before = budget.Used();
    cSurface s;
    EXPECT_TRUE(s.Create(0, -7, library.FindPrototype(32)));
    EXPECT_EQ(s.impl->width, 1);
    EXPECT_EQ(s.impl->height, 1);
    EXPECT_TRUE(s.Create(100, 10, library.FindPrototype(24)));
    EXPECT_EQ(s.impl->absPitch, 300);
    EXPECT_EQ(budget.Used(), before + 3000);
    EXPECT_FALSE(s.Create(1000, 1000, library.FindPrototype(32))) << "more than the budget";
    EXPECT_EQ(s.lastError, SURF_ERR_NOMEM);
    EXPECT_FALSE(s.IsValid());
    EXPECT_EQ(budget.Used(), before);
    for (const auto& [w, h] : {std::pair{32768, 1}, std::pair{1, 32768}, std::pair{INT32_MAX, INT32_MAX}}) {
      EXPECT_FALSE(s.Create(w, h, library.FindPrototype(8)));
    }
    EXPECT_FALSE(s.Create(5, 5, nullptr));
  }
  EXPECT_EQ(budget.Used(), 0u);
}

TEST(Surface, PrototypesFoldDepths) {
  Gfx gfx;
  const std::pair<int, int> depths[] = {{0, 8},   {1, 8},   {8, 8},   {9, 15},  {15, 15},
                                        {16, 16}, {17, 24}, {24, 24}, {25, 32}, {32, 32}};
  for (const auto& [asked, given] : depths) EXPECT_EQ(gfx.library.FindPrototype(asked)->depth, given);
  EXPECT_NE(gfx.library.FindPrototype(16, 3, 2), nullptr);
  EXPECT_EQ(gfx.library.FindPrototype(16, 4), nullptr);
  EXPECT_EQ(gfx.library.FindPrototype(33), nullptr);
  EXPECT_EQ(gfx.library.FindPrototype(-1), nullptr);
  const cSurface s = gfx.Make(1, 1, 16);
  EXPECT_EQ(s.impl->GetKind(), 1);
  EXPECT_EQ(gfx.library.FindPrototype(16, s.GetKindGroup(), s.GetFamily())->depth, 16);
}

TEST(Surface, ColoursNarrowAndWidenByTheirHighBits) {
  Gfx gfx;
  struct Case {
    int depth;
    Colour in;
    uint32_t pixel;
    Colour out;
  };
  const Case cases[] = {
      {15, MakeColour(255, 130, 7), 0x7E00, MakeColour(248, 128, 0)},
      {16, MakeColour(255, 130, 9), 0xFC01, MakeColour(248, 128, 8)},
      {24, MakeColour(1, 2, 3), 0x010203, MakeColour(1, 2, 3)},
      {32, MakeColour(1, 2, 3) | 0xFF000000, 0x010203, MakeColour(1, 2, 3)},
      {15, MakeColour(1, 1, 1), 1, MakeColour(0, 0, 8)},  // not transparent
      {16, 0, 0, 0},
      {8, 0, 0, 0},
      {8, MakeColour(255, 0, 0), 249, MakeColour(255, 0, 0)},
      {8, MakeColour(1, 0, 0), 245, MakeColour(8, 0, 0)},
  };
  for (const Case& c : cases) {
    cSurface s = gfx.Make(3, 3, c.depth);
    Colour out = 0;
    EXPECT_TRUE(s.SetPixel(1, 1, c.in));
    EXPECT_TRUE(s.GetPixel(1, 1, out));
    EXPECT_EQ(RawAt(*s.impl, 1, 1), c.pixel) << c.depth;
    EXPECT_EQ(out, c.out) << c.depth;
    s.Fill(0, 0, 3, 3, c.in);
    EXPECT_EQ(RawAt(*s.impl, 2, 0), c.pixel) << c.depth;
  }
}

TEST(Surface, PixelsOutsideTheClipAreOutOfReach) {
  Gfx gfx;
  cSurface s = gfx.Make(10, 10, 16);
  s.SetClipRect(2, 3, 4, 100);
  EXPECT_EQ(s.impl->GetClipRect(), (Rect{2, 3, 6, 10}));
  Colour c = 0;
  const Point outside[] = {{1, 5}, {6, 5}, {3, 2}, {3, 10}, {-1, -1}, {INT32_MAX, INT32_MIN}};
  for (const Point& p : outside) {
    EXPECT_FALSE(s.SetPixel(p.x, p.y, 0xFF));
    EXPECT_FALSE(s.GetPixel(p.x, p.y, c));
  }
  EXPECT_TRUE(s.impl->IsEmpty());
  // The handle's origin moves coordinates and the clip alike.
  s.SetOrigin(100, 200);
  EXPECT_EQ(s.GetClipRect(), (Rect{102, 203, 106, 210}));
  EXPECT_TRUE(s.SetPixel(102, 203, 0xFF));
  EXPECT_NE(RawAt(*s.impl, 2, 3), 0u);
  s.SetClipRect(100, 200, 10, 10);
  EXPECT_EQ(s.impl->GetClipRect(), (Rect{0, 0, 10, 10}));
}

TEST(Surface, FillsEveryWidthOfEveryDepth) {
  Gfx gfx;
  for (const int depth : kDepths) {
    for (int width = 1; width <= 20; ++width) {
      cSurface s = gfx.Make(24, 3, depth);
      const uint32_t pixel = 0x818283;
      EXPECT_TRUE(s.FillRaw(2, 1, width, 2, pixel));
      const uint32_t mask = depth == 8 ? 0xFF : depth <= 16 ? 0xFFFF : 0xFFFFFF;
      for (int y = 0; y < 3; ++y) {
        for (int x = 0; x < 24; ++x) {
          const bool inside = y >= 1 && x >= 2 && x < 2 + width;
          ASSERT_EQ(RawAt(*s.impl, x, y), inside ? pixel & mask : 0) << depth << " " << width;
        }
      }
    }
  }
}

TEST(Surface, MovesBoxesOverThemselves) {
  Gfx gfx;
  std::mt19937 random(5);
  for (const int depth : kDepths) {
    for (const auto& [dx, dy] : {std::pair{2, 0}, std::pair{0, 3}, std::pair{4, 4}, std::pair{0, 0}}) {
      cSurface s = gfx.Make(12, 12, depth);
      Randomise(*s.impl, random);
      const std::vector<uint32_t> before = Pixels(*s.impl);
      EXPECT_TRUE(s.MoveBox(2, 1, dx, dy, 8, 7));
      std::vector<uint32_t> expected = before;
      for (int y = 0; y < 7; ++y) {
        for (int x = 0; x < 8; ++x) expected[size_t((y + dy) * 12 + x + dx)] = before[size_t((y + 1) * 12 + x + 2)];
      }
      ASSERT_EQ(Pixels(*s.impl), expected);
    }
  }
  cSurface s = gfx.Make(4, 4, 8);
  EXPECT_FALSE(s.MoveBox(0, 0, 1, 0, 4, 4)) << "the target sticks out";
  EXPECT_FALSE(s.MoveBox(-1, 0, 0, 0, 2, 2));
  EXPECT_FALSE(s.MoveBox(0, 0, 0, 0, 0, 2));
}

TEST(Surface, MirrorsBoxes) {
  Gfx gfx;
  for (const int depth : kDepths) {
    cSurface s = gfx.Make(5, 2, depth);
    for (int x = 0; x < 5; ++x) s.SetPixelRaw(x, 0, uint32_t(x + 1));
    s.MirrorHorizontal(0, 0, 5, 1);
    EXPECT_EQ(Picture(*s.impl), "edcba\n.....\n");
    s.MirrorHorizontal(1, 0, 2, 1);
    EXPECT_EQ(Picture(*s.impl), "ecdba\n.....\n");
    s.MirrorVertical(1, 0, 3, 2);
    EXPECT_EQ(Picture(*s.impl), "e...a\n.cdb.\n");
    EXPECT_TRUE(s.MirrorHorizontal(0, 0, 1, 1)) << "nothing to do is no failure";
  }
}

TEST(Surface, FindsContentAndReplacesColours) {
  Gfx gfx;
  for (const int depth : kDepths) {
    cSurface s = gfx.Make(9, 7, depth);
    Rect box;
    EXPECT_TRUE(s.impl->IsEmpty());
    EXPECT_FALSE(s.impl->GetContentBox(box));
    const Colour red = MakeColour(255, 0, 0);
    const Colour lime = MakeColour(0, 255, 0);
    s.SetPixel(3, 2, red);
    s.SetPixel(6, 5, red);
    EXPECT_TRUE(s.impl->GetContentBox(box));
    EXPECT_EQ(box, (Rect{3, 2, 7, 6}));
    EXPECT_FALSE(s.impl->IsEmpty());
    s.impl->ReplaceColor(red, lime);
    EXPECT_EQ(RawAt(*s.impl, 3, 2), s.impl->PixelOfColour(lime));
    EXPECT_EQ(RawAt(*s.impl, 0, 0), 0u);
  }
  cSurface tiny = gfx.Make(2, 2, 8);
  tiny.SetPixelRaw(0, 0, 1);
  Rect box;
  EXPECT_FALSE(tiny.impl->GetContentBox(box));
}

TEST(Surface, ClonesAndCopies) {
  Gfx gfx;
  std::mt19937 random(11);
  for (const int depth : kDepths) {
    cSurface s = gfx.Make(13, 9, depth);
    Randomise(*s.impl, random);
    cSurface copy;
    EXPECT_TRUE(copy.CloneFrom(s));
    EXPECT_EQ(Pixels(*copy.impl), Pixels(*s.impl));
    EXPECT_EQ(copy.impl->depth, depth);
    EXPECT_TRUE(copy.CloneFrom(s, 26, 18));
    EXPECT_EQ(copy.impl->width, 26);
    EXPECT_EQ(RawAt(*copy.impl, 25, 17), RawAt(*s.impl, 12, 8));
    cSurface moved = std::move(copy);
    EXPECT_FALSE(copy.IsValid());  // NOLINT: a moved-from handle is empty
    EXPECT_TRUE(moved.IsValid());
  }
}

TEST(Present, ShowsEveryDepthInWords) {
  Gfx gfx;
  MemoryWindows windows({8, 4}, true);
  const std::pair<int, uint32_t> white[] = {
      {8, 0xFFFFFF}, {15, 0xF8F8F8}, {16, 0xF8FCF8}, {24, 0xFFFFFF}, {32, 0xFFFFFF}};
  for (const auto& [depth, word] : white) {
    cSurface s = gfx.Make(8, 4, depth);
    s.SetPixel(1, 1, 0xFFFFFF);
    s.SetPixel(2, 1, MakeColour(255, 0, 0));
    PresentSurface present;
    const Rect box = {1, 1, 2, 2};
    EXPECT_TRUE(present.Present(windows, windows.hostWindow(), *s.impl, {&box, 1}));
    const MemoryWindow* window = windows.Find(windows.hostWindow());
    ASSERT_EQ(window->pixels.size(), 32u);
    EXPECT_EQ(window->pixels[9], word) << depth;
    EXPECT_EQ(window->pixels[10], word & 0xFF0000) << "a new picture is shown whole";
    s.SetPixel(3, 3, 0xFFFFFF);
    s.SetPixel(1, 1, 0);
    const Rect small = {1, 1, 2, 2};
    present.Present(windows, windows.hostWindow(), *s.impl, {&small, 1});
    EXPECT_EQ(window->pixels[9], 0u);
    EXPECT_EQ(window->pixels[27], 0u) << "outside the dirty box";
  }
  EXPECT_FALSE(PresentSurface().Present(windows, 1, *cSurface().impl, {}));
}

}  // namespace
}  // namespace vl

// Lines, shapes, patterns and flood fill: small exact pictures and rules that hold for all.
#include <gtest/gtest.h>

#include "gfx2d/pattern.h"
#include "gfx2d/shape_paint.h"
#include "tests/unit/gfx2d_support.h"

namespace vl {
namespace {

using testing::Gfx;
using testing::Picture;
using testing::Pixels;
using testing::Randomise;
using testing::RawAt;

constexpr Colour kPen = MakeColour(0, 0, 2);   // pixel 'b' in depth 24
constexpr Colour kFill = MakeColour(0, 0, 6);  // pixel 'f'

TEST(Line, ExactPictures) {
  Gfx gfx;
  struct Case {
    int x1, y1, x2, y2;
    const char* picture;
  };
  const Case cases[] = {
      {0, 0, 6, 2, "bb.....\n..bbb..\n.....bb\n"},
      {6, 2, 0, 0, "bb.....\n..bbb..\n.....bb\n"},
      {0, 2, 6, 2, ".......\n.......\nbbbbbbb\n"},
      {3, 0, 3, 2, "...b...\n...b...\n...b...\n"},
      {2, 1, 2, 1, ".......\n..b....\n.......\n"},
      {0, 0, 2, 2, "b......\n.b.....\n..b....\n"},
      {-3, 0, 100, 0, "bbbbbbb\n.......\n.......\n"},
      {0, -9, 9, -1, ".......\n.......\n.......\n"},
      {INT32_MIN, 1, INT32_MAX, 1, ".......\nbbbbbbb\n.......\n"},
  };
  for (const Case& c : cases) {
    cSurface s = gfx.Make(7, 3, 24);
    s.DrawLine(c.x1, c.y1, c.x2, c.y2, 1, kPen);
    EXPECT_EQ(Picture(*s.impl), c.picture) << c.x1 << "," << c.y1 << " " << c.x2 << "," << c.y2;
  }
}

TEST(Line, ThickLinesAreRoundedAndCentred) {
  Gfx gfx;
  cSurface s = gfx.Make(12, 7, 24);
  s.DrawLine(3, 3, 8, 3, 3, kPen);
  EXPECT_EQ(Picture(*s.impl),
            "............\n............\n..bbbbbbbb..\n..bbbbbbbb..\n..bbbbbbbb..\n............\n............\n");
  s.FillRaw(0, 0, 12, 7, 0);
  s.DrawLine(3, 3, 8, 3, 4, kPen);
  EXPECT_EQ(Picture(*s.impl),
            "............\n..bbbbbbb...\n.bbbbbbbbb..\n.bbbbbbbbb..\n..bbbbbbb...\n............\n............\n");
  // Whatever the direction, a thick line covers the thin one and stays within its pen of it.
  std::mt19937 random(4);
  for (int round = 0; round < 200; ++round) {
    cSurface thick = gfx.Make(40, 40, 8);
    cSurface thin = gfx.Make(40, 40, 8);
    const int x1 = int(random() % 40), y1 = int(random() % 40), x2 = int(random() % 40), y2 = int(random() % 40);
    const int size = 2 + int(random() % 9);
    thick.DrawLine(x1, y1, x2, y2, size, 0xFFFFFF);
    thin.DrawLine(x1, y1, x2, y2, 1, 0xFFFFFF);
    Rect box;
    ASSERT_TRUE(thick.impl->GetContentBox(box));
    EXPECT_GE(box.left, std::min(x1, x2) - size / 2);
    EXPECT_LE(box.bottom, std::max(y1, y2) + size / 2 + 1);
    for (int y = 0; y < 40; ++y) {
      for (int x = 0; x < 40; ++x) {
        if (RawAt(*thin.impl, x, y) == 0 || size == 2) continue;
        ASSERT_NE(RawAt(*thick.impl, x, y), 0u) << "round " << round;
      }
    }
  }
}

TEST(Rectangle, BoxesExcludeRightAndBottom) {
  Gfx gfx;
  struct Case {
    Rect box;
    int pen;
    bool fill;
    const char* picture;
  };
  const Case cases[] = {
      {{1, 1, 5, 4}, 0, true, "......\n.ffff.\n.ffff.\n.ffff.\n......\n"},
      {{5, 4, 1, 1}, 1, true, "......\n.bbbb.\n.bffb.\n.bbbb.\n......\n"},
      {{1, 1, 5, 4}, 1, false, "......\n.bbbb.\n.b..b.\n.bbbb.\n......\n"},
      {{0, 0, 6, 5}, 2, true, "bbbbbb\nbbbbbb\nbbffbb\nbbbbbb\nbbbbbb\n"},
      {{0, 0, 6, 5}, 3, true, "bbbbbb\nbbbbbb\nbbbbbb\nbbbbbb\nbbbbbb\n"},
      {{1, 1, 5, 4}, 0, false, "......\n......\n......\n......\n......\n"},
      {{2, 2, 2, 4}, 1, true, "......\n......\n......\n......\n......\n"},
      {{-100, -100, 2, 2}, 1, true, "fb....\nbb....\n......\n......\n......\n"},
  };
  for (const Case& c : cases) {
    cSurface s = gfx.Make(6, 5, 24);
    EXPECT_TRUE(s.DrawRectangle(c.box, kFill, c.pen, kPen, c.fill));
    EXPECT_EQ(Picture(*s.impl), c.picture);
  }
}

TEST(Ellipse, ExactPictures) {
  Gfx gfx;
  cSurface s = gfx.Make(10, 7, 24);
  s.DrawEllipse({0, 0, 10, 7}, kFill, 0, kPen, true);
  EXPECT_EQ(Picture(*s.impl), "..ffffff..\n.ffffffff.\nffffffffff\nffffffffff\nffffffffff\n.ffffffff.\n..ffffff..\n");
  s.FillRaw(0, 0, 10, 7, 0);
  s.DrawEllipse({10, 7, 0, 0}, kFill, 1, kPen, true);
  EXPECT_EQ(Picture(*s.impl), "..bbbbbb..\n.bffffffb.\nbffffffffb\nbffffffffb\nbffffffffb\n.bffffffb.\n..bbbbbb..\n");
  cSurface circle = gfx.Make(6, 6, 24);
  circle.DrawEllipse({0, 0, 6, 6}, kFill, 1, kPen, false);
  EXPECT_EQ(Picture(*circle.impl), ".bbbb.\nb....b\nb....b\nb....b\nb....b\n.bbbb.\n");
}

TEST(Ellipse, OutlinesAreSymmetricClosedAndWithinTheFilling) {
  Gfx gfx;
  for (int width = 1; width <= 40; width += 3) {
    for (int height = 1; height <= 40; height += 2) {
      for (const int pen : {1, 2, 3, 7, 30}) {
        cSurface s = gfx.Make(width + 2, height + 2, 24);
        s.DrawEllipse({1, 1, width + 1, height + 1}, kFill, pen, kPen, true);
        cSurface plain = gfx.Make(width + 2, height + 2, 24);
        plain.DrawEllipse({1, 1, width + 1, height + 1}, kFill, 0, kPen, true);
        for (int y = 0; y < height + 2; ++y) {
          for (int x = 0; x < width + 2; ++x) {
            const uint32_t p = RawAt(*s.impl, x, y);
            ASSERT_EQ(p != 0, RawAt(*plain.impl, x, y) != 0) << "the pen stays in the box and leaves no gap";
            ASSERT_EQ(p, RawAt(*s.impl, width + 1 - x, y));
            ASSERT_EQ(p, RawAt(*s.impl, x, height + 1 - y));
            if (p != kFill >> 16) continue;
            // The filling never meets the outside.
            ASSERT_NE(RawAt(*s.impl, x - 1, y), 0u);
            ASSERT_NE(RawAt(*s.impl, x, y - 1), 0u);
          }
        }
      }
    }
  }
}

TEST(Polygon, FillsByTheEvenOddRule) {
  Gfx gfx;
  cSurface s = gfx.Make(9, 9, 24);
  const Point square[] = {{1, 1}, {6, 1}, {6, 5}, {1, 5}};
  s.DrawPolygonShape(square, kFill, 0, kPen, true);
  cSurface same = gfx.Make(9, 9, 24);
  same.FillRaw(1, 1, 5, 4, 6);
  EXPECT_EQ(Picture(*s.impl), Picture(*same.impl)) << "right and bottom edges are outside";
  s.DrawPolygonShape(square, kFill, 1, kPen, true);
  EXPECT_EQ(RawAt(*s.impl, 6, 5), 2u) << "the pen goes through the corners";
  // A ring: the inner square turns the inside out.
  s.FillRaw(0, 0, 9, 9, 0);
  const Point ring[] = {{0, 0}, {9, 0}, {9, 9}, {0, 9}, {0, 0}, {3, 3}, {3, 6}, {6, 6}, {6, 3}, {3, 3}};
  s.DrawPolygonShape(ring, kFill, 0, kPen, true);
  EXPECT_EQ(RawAt(*s.impl, 1, 1), 6u);
  EXPECT_EQ(RawAt(*s.impl, 4, 4), 0u);
  EXPECT_EQ(RawAt(*s.impl, 8, 8), 6u);
  // Neighbours that share an edge cover each pixel once.
  std::mt19937 random(9);
  for (int round = 0; round < 100; ++round) {
    cSurface a = gfx.Make(30, 30, 24);
    cSurface b = gfx.Make(30, 30, 24);
    const Point shared1 = {int(random() % 30), 0};
    const Point shared2 = {int(random() % 30), 30};
    const Point left[] = {shared1, shared2, {0, 30}, {0, 0}};
    const Point right[] = {shared1, {30, 0}, {30, 30}, shared2};
    a.DrawPolygonShape(left, kFill, 0, 0, true);
    b.DrawPolygonShape(right, kFill, 0, 0, true);
    for (int y = 0; y < 30; ++y) {
      for (int x = 0; x < 30; ++x) ASSERT_NE(RawAt(*a.impl, x, y) != 0, RawAt(*b.impl, x, y) != 0);
    }
  }
  EXPECT_FALSE(s.DrawPolygonShape({}, kFill, 1, kPen, true));
  EXPECT_FALSE(s.DrawPolygonShape(std::vector<Point>(kMaxPolygonPoints + 1), kFill, 1, kPen, true));
  const Point huge[] = {{INT32_MIN, INT32_MIN}, {INT32_MAX, INT32_MIN}, {INT32_MAX, INT32_MAX}, {INT32_MIN, INT32_MAX}};
  EXPECT_TRUE(s.DrawPolygonShape(huge, kFill, 65, kPen, true));
  EXPECT_EQ(RawAt(*s.impl, 4, 4), 6u);
}

TEST(Pattern, ColoursThatCouldBeTransparentAreRaised) {
  const std::pair<Colour, Colour> raised[] = {
      {MakeColour(1, 2, 3), MakeColour(1, 2, 8)}, {MakeColour(1, 7, 3), MakeColour(1, 8, 3)},
      {MakeColour(5, 2, 3), MakeColour(8, 2, 3)}, {MakeColour(3, 3, 3), MakeColour(8, 3, 3)},
      {MakeColour(1, 2, 9), MakeColour(1, 2, 9)}, {0, 8}};
  for (const auto& [from, to] : raised) EXPECT_EQ(ProtectColour(from), to);
  EXPECT_EQ(SolidPattern(0).GetColour(), 8u);
}

TEST(Pattern, GradientsRunInBands) {
  Gfx gfx;
  cSurface s = gfx.Make(8, 2, 24);
  GradientPattern pattern(MakeColour(100, 0, 0), MakeColour(104, 0, 0), 0);
  pattern.Render(*s.impl, 8, 2, true);
  for (int x = 0; x < 8; ++x) {
    Colour c = 0;
    s.GetPixel(x, 1, c);
    EXPECT_EQ(c, MakeColour(100 + uint32_t(x) / 2, 0, 0)) << "four bands of two pixels; the last colour is not reached";
  }
  // A part of a shape shows its part of the gradient.
  EXPECT_EQ(pattern.SetOrigin(-4, 0), (Point{0, 0}));
  cSurface part = gfx.Make(4, 2, 24);
  pattern.Render(*part.impl, 8, 2, true);
  Colour c = 0;
  part.GetPixel(0, 0, c);
  EXPECT_EQ(c, MakeColour(102, 0, 0));
  GradientPattern down(0, 0xFFFFFF, 1);
  EXPECT_EQ(down.color1, 8u);
  cSurface tall = gfx.Make(1, 4, 24);
  down.Render(*tall.impl, 1, 4, false);
  Colour last = 0;
  for (int y = 0; y < 4; ++y) {
    tall.GetPixel(0, y, c);
    EXPECT_GT(c, last);
    last = c;
  }
}

TEST(RichShapes, MatchSimpleOnesForSolidColours) {
  Gfx gfx;
  const Colour red = MakeColour(255, 0, 0);
  const Colour blue = MakeColour(0, 0, 255);
  const Point triangle[] = {{3, 2}, {27, 9}, {8, 22}};
  for (const int depth : kDepths) {
    for (const int pen : {0, 1, 3}) {
      cSurface simple = gfx.Make(30, 25, depth);
      cSurface rich = gfx.Make(30, 25, depth);
      SolidPattern fill(red);
      SolidPattern outline(blue);
      simple.DrawEllipse({-5, 3, 20, 24}, red, pen, blue, true);
      simple.DrawRectangle({22, 1, 40, 9}, red, pen, blue, true);
      simple.DrawPolygonShape(triangle, red, pen, blue, true);
      EXPECT_TRUE(rich.DrawEllipsePattern({-5, 3, 20, 24}, &fill, pen, &outline, false, 0, 0));
      EXPECT_TRUE(rich.DrawRectanglePattern({22, 1, 40, 9}, &fill, pen, &outline, false, 0, 0));
      EXPECT_TRUE(rich.DrawPolygonPattern(triangle, &fill, pen, &outline, false, 0, 0));
      ASSERT_EQ(Pixels(*rich.impl), Pixels(*simple.impl)) << depth << " " << pen;
      simple.DrawLine(1, 20, 28, 4, std::max(pen, 1), blue);
      EXPECT_TRUE(rich.DrawLinePattern(1, 20, 28, 4, std::max(pen, 1), outline, false, 0, 0));
      ASSERT_EQ(Pixels(*rich.impl), Pixels(*simple.impl)) << depth << " " << pen;
    }
  }
}

TEST(RichShapes, TakeEffectsAndKeepBlackVisible) {
  Gfx gfx;
  cSurface s = gfx.Make(10, 10, 24);
  SolidPattern black(0);
  EXPECT_TRUE(s.DrawEllipsePattern({0, 0, 10, 10}, &black, 0, nullptr, false, 0, 0));
  EXPECT_EQ(RawAt(*s.impl, 5, 5), 0x080000u);
  s.FillRaw(0, 0, 10, 10, 0x646464);
  SolidPattern grey(MakeColour(200, 200, 200));
  s.DrawRectanglePattern({2, 2, 8, 8}, &grey, 0, nullptr, false, kEffectAdd, 0);
  EXPECT_EQ(RawAt(*s.impl, 5, 5), 0xFFFFFFu);
  EXPECT_EQ(RawAt(*s.impl, 1, 5), 0x646464u);
  // The gradient belongs to the shape, not to the part of it that shows.
  GradientPattern ramp(MakeColour(0, 8, 0), MakeColour(250, 8, 0), 0);
  cSurface whole = gfx.Make(20, 4, 24);
  cSurface cut = gfx.Make(20, 4, 24);
  whole.DrawRectanglePattern({0, 0, 20, 4}, &ramp, 0, nullptr, false, 0, 0);
  cut.SetClipRect(7, 1, 5, 2);
  cut.DrawRectanglePattern({0, 0, 20, 4}, &ramp, 0, nullptr, false, 0, 0);
  for (int x = 7; x < 12; ++x) EXPECT_EQ(RawAt(*cut.impl, x, 1), RawAt(*whole.impl, x, 1));
  EXPECT_EQ(RawAt(*cut.impl, 6, 1), 0u);
  EXPECT_EQ(ramp.originX, 0) << "the origin is put back";
  EXPECT_FALSE(cut.DrawRectanglePattern({0, 0, 3, 3}, &ramp, 0, nullptr, false, 0, 0)) << "nothing in the clip";
}

TEST(FloodFill, FillsWhatIsConnected) {
  Gfx gfx;
  std::mt19937 random(8);
  for (const int depth : kDepths) {
    for (int round = 0; round < 30; ++round) {
      const int w = 1 + int(random() % 30), h = 1 + int(random() % 30);
      cSurface s = gfx.Make(w, h, depth);
      // A maze of two colours.
      for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) s.SetPixel(x, y, random() % 5 < 2 ? 0xFFFFFF : 0x808080);
      }
      const int x0 = int(random() % uint32_t(w)), y0 = int(random() % uint32_t(h));
      const uint32_t seed = RawAt(*s.impl, x0, y0);
      const uint32_t red = s.impl->PixelOfColour(0x0000FF);
      // The plain way: grow until nothing changes.
      std::vector<uint32_t> expected = Pixels(*s.impl);
      expected[size_t(y0 * w + x0)] = red;
      Rect bounds = {x0, y0, x0 + 1, y0 + 1};
      for (bool grew = true; grew;) {
        grew = false;
        for (int y = 0; y < h; ++y) {
          for (int x = 0; x < w; ++x) {
            if (expected[size_t(y * w + x)] != seed) continue;
            const auto isRed = [&](int nx, int ny) {
              return nx >= 0 && ny >= 0 && nx < w && ny < h && expected[size_t(ny * w + nx)] == red;
            };
            if (!isRed(x - 1, y) && !isRed(x + 1, y) && !isRed(x, y - 1) && !isRed(x, y + 1)) continue;
            expected[size_t(y * w + x)] = red;
            bounds = bounds.Union({x, y, x + 1, y + 1});
            grew = true;
          }
        }
      }
      Rect box;
      ASSERT_TRUE(s.FloodFill(x0, y0, box, 0x0000FF, 0));
      ASSERT_EQ(Pixels(*s.impl), expected) << depth << " round " << round;
      EXPECT_EQ(box, bounds);
      EXPECT_FALSE(s.FloodFill(x0, y0, box, 0x0000FF, 0)) << "already that colour";
    }
  }
}

TEST(FloodFill, ToleranceClipAndNarrowedColours) {
  Gfx gfx;
  cSurface s = gfx.Make(9, 1, 24);
  for (int x = 0; x < 9; ++x) s.SetPixel(x, 0, MakeColour(uint32_t(x) * 10, 0, 0));
  Rect box;
  EXPECT_TRUE(s.FloodFill(0, 0, box, 0x00FF00, 25));
  EXPECT_EQ(box, (Rect{0, 0, 3, 1})) << "the tolerance is to the seed";
  EXPECT_TRUE(s.FloodFill(4, 0, box, 0xFF0000, 255));
  EXPECT_EQ(box, (Rect{0, 0, 9, 1}));
  s.SetClipRect(2, 0, 3, 1);
  EXPECT_FALSE(s.FloodFill(0, 0, box, 0x0000FF, 255)) << "the seed lies outside the clip";
  EXPECT_TRUE(s.FloodFill(3, 0, box, 0x0000FF, 255));
  EXPECT_EQ(box, (Rect{2, 0, 5, 1}));
  // Colours that read back as others end all the same.
  for (const int depth : kDepths) {
    cSurface other = gfx.Make(50, 50, depth);
    if (depth == 8) other.impl->palette->EnsureInverseMap();
    other.FloodFill(25, 25, box, 0x030201, 255);
    other.FloodFill(25, 25, box, 0x7B5A39, 255);
    EXPECT_EQ(box, (Rect{0, 0, 50, 50})) << depth;
  }
}

}  // namespace
}  // namespace vl

// Blits in every depth, mode and effect against a plain reference written from the formulas.
#include <gtest/gtest.h>

#include "tests/unit/gfx2d_support.h"

namespace vl {
namespace {

using testing::Gfx;
using testing::Picture;
using testing::Pixels;
using testing::Randomise;
using testing::RawAt;

// Channels of a pixel as 8 bits, and back; depth 8 is not made of channels.
struct Rgb {
  int r, g, b;
};

Rgb Widen(int depth, uint32_t p) {
  switch (depth) {
    case 15:
      return {int(p >> 10 & 31) * 8, int(p >> 5 & 31) * 8, int(p & 31) * 8};
    case 16:
      return {int(p >> 11 & 31) * 8, int(p >> 5 & 63) * 4, int(p & 31) * 8};
    default:
      return {int(p >> 16 & 255), int(p >> 8 & 255), int(p & 255)};
  }
}

uint32_t Narrow(int depth, Rgb c) {
  switch (depth) {
    case 15:
      return uint32_t(c.r / 8 << 10 | c.g / 8 << 5 | c.b / 8);
    case 16:
      return uint32_t(c.r / 8 << 11 | c.g / 4 << 5 | c.b / 8);
    default:
      return uint32_t(c.r << 16 | c.g << 8 | c.b);
  }
}

uint32_t MaskOf(int depth) { return depth == 8 ? 0xFF : depth <= 16 ? 0xFFFF : depth == 24 ? 0xFFFFFF : 0xFFFFFFFF; }

// One pixel through an effect, straight from the table of formulas.
uint32_t EffectPixel(const cSurfaceImpl& target, int effect, uint32_t param, uint32_t s, uint32_t d) {
  const int depth = target.depth;
  const uint32_t mask = MaskOf(depth);
  switch (effect) {
    case 0:
      return s;
    case 2:
      return ~s & mask;
    case 3:
      return s ^ d;
    case 4:
      return s & d;
    case 5:
      return s | d;
    case 8:
      return d & ~s;
    default:
      break;
  }
  if (depth == 8) {
    if (effect == 9) return std::min(s + d, 255u);
    const auto rgb = [&](uint32_t index) {
      const Colour c = target.PaletteColor(int(index));
      return Rgb{int(RedOf(c)), int(GreenOf(c)), int(BlueOf(c))};
    };
    const int c = effect == 6 ? int(param >> 24) : int(param);
    const Rgb a = rgb(s);
    Rgb b = rgb(d);
    if (effect == 6 && d == 0) b = {int(param & 255), int(param >> 8 & 255), int(param >> 16 & 255)};
    const auto mix = [c](int x, int y) { return uint32_t((x * (128 - c) + y * c) >> 7); };
    return uint32_t(target.palette->NearestIndex(MakeColour(mix(a.r, b.r), mix(a.g, b.g), mix(a.b, b.b))));
  }
  const Rgb a = Widen(depth, s);
  Rgb b = Widen(depth, d);
  Rgb result{};
  if (effect == 9) {
    result = {std::min(a.r + b.r, 255), std::min(a.g + b.g, 255), std::min(a.b + b.b, 255)};
  } else {
    const int c = effect == 6 ? int(param >> 24) : int(param);
    if (effect == 6 && d == 0) b = {int(param & 255), int(param >> 8 & 255), int(param >> 16 & 255)};
    const auto mix = [c](int x, int y) { return (x * (128 - c) + y * c) >> 7; };
    result = {mix(a.r, b.r), mix(a.g, b.g), mix(a.b, b.b)};
  }
  // The fourth byte of a pixel takes no part in what is done to channels.
  return Narrow(depth, result) | (depth == 32 ? d & 0xFF000000 : 0);
}

class EveryEffect : public ::testing::TestWithParam<std::tuple<int, int, int>> {};

TEST_P(EveryEffect, MatchesTheFormulasOnRandomBoxes) {
  const auto [depth, mode, effect] = GetParam();
  Gfx gfx;
  std::mt19937 random(uint32_t(depth * 1000 + mode * 100 + effect));
  const auto between = [&](int low, int high) { return low + int(random() % uint32_t(high - low + 1)); };
  for (int round = 0; round < 60; ++round) {
    // Wider than the blocks that effects work through, now and then.
    cSurface source = gfx.Make(round % 10 == 0 ? 700 : between(1, 40), between(1, 30), depth);
    cSurface target = gfx.Make(round % 10 == 0 ? 650 : between(1, 40), between(1, 30), depth);
    Randomise(*source.impl, random);
    Randomise(*target.impl, random);
    target.SetClipRect(between(0, 5), between(0, 5), between(1, 700), between(1, 40));
    const int dx = between(-12, 20), dy = between(-12, 20), sx = between(-8, 20), sy = between(-8, 20);
    const int w = round % 10 == 0 ? 690 : between(-2, 45), h = between(-2, 35);
    uint32_t param = effect == 1 ? uint32_t(between(0, 128)) : uint32_t(between(0, 128)) << 24 | (random() & 0xFFFFFF);
    if (effect == 1 && round % 4 == 0) param = round % 8 == 0 ? 0 : 128;

    const std::vector<uint32_t> before = Pixels(*target.impl);
    std::vector<uint32_t> expected = before;
    bool touched = false;
    const Rect clip = target.impl->GetClipRect();
    for (int y = 0; y < h; ++y) {
      for (int x = 0; x < w; ++x) {
        if (sx + x < 0 || sy + y < 0 || sx + x >= source.impl->width || sy + y >= source.impl->height) continue;
        if (!clip.Contains(dx + x, dy + y)) continue;
        touched = true;
        const uint32_t s = RawAt(*source.impl, sx + x, sy + y);
        if (mode == 1 && s == 0) continue;
        uint32_t& d = expected[size_t((dy + y) * target.impl->width + dx + x)];
        if (depth == 8 && (effect == 1 || effect == 6)) target.impl->palette->EnsureInverseMap();
        d = EffectPixel(*target.impl, effect, param, s, d);
      }
    }
    EXPECT_EQ(source.Blit(target, dx, dy, sx, sy, w, h, mode, effect, param), touched);
    ASSERT_EQ(Pixels(*target.impl), expected) << "round " << round;
  }
}

INSTANTIATE_TEST_SUITE_P(Blit, EveryEffect,
                         ::testing::Combine(::testing::Values(8, 15, 16, 24, 32), ::testing::Values(0, 1),
                                            ::testing::Values(0, 1, 2, 3, 4, 5, 6, 8, 9)));

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

// What a pixel becomes in another depth.
uint32_t ConvertPixel(const cSurfaceImpl& from, const cSurfaceImpl& to, uint32_t s) {
  if (s == 0) return 0;
  Rgb c{};
  if (from.depth == 8) {
    const Colour colour = from.PaletteColor(int(s));
    c = {int(RedOf(colour)), int(GreenOf(colour)), int(BlueOf(colour))};
  } else {
    c = Widen(from.depth, s);
  }
  uint32_t result = 0;
  if (to.depth == 8) {
    // The whole palette is walked; the last of equal distances wins, the first of exact ones.
    const PaletteRecord& palette = *to.palette.Get();
    int best = INT32_MAX;
    for (uint32_t i = 1; i < 256 && best > 0; ++i) {
      const PaletteEntry& e = palette.entries[i];
      const int d = (e.red - c.r) * (e.red - c.r) + (e.green - c.g) * (e.green - c.g) + (e.blue - c.b) * (e.blue - c.b);
      if (d <= best) {
        best = d;
        result = i;
      }
    }
    if (c.r == 0 && c.g == 0 && c.b == 0) result = 0;
  } else {
    result = Narrow(to.depth, c);
  }
  return result == 0 ? 1 : result;
}

TEST(Convert, EveryPairOfDepthsKeepsTransparentApart) {
  Gfx gfx;
  std::mt19937 random(7);
  for (const int fromDepth : kDepths) {
    for (const int toDepth : kDepths) {
      if (fromDepth == toDepth) continue;
      cSurface from = gfx.Make(61, 40, fromDepth);
      cSurface to = gfx.Make(50, 50, toDepth);
      Randomise(*from.impl, random);
      Randomise(*to.impl, random);
      std::vector<uint32_t> expected = Pixels(*to.impl);
      for (int y = 0; y < 35; ++y) {
        for (int x = 0; x < 45; ++x) {
          expected[size_t((y + 10) * 50 + x + 5)] = ConvertPixel(*from.impl, *to.impl, RawAt(*from.impl, x + 3, y + 2));
        }
      }
      EXPECT_TRUE(from.Blit(to, 5, 10, 3, 2, 45, 35, 0));
      ASSERT_EQ(Pixels(*to.impl), expected) << fromDepth << " to " << toDepth;
      // Keyed, through a temporary: zero leaves what is there.
      to.FillRaw(0, 0, 50, 50, 5);
      from.Blit(to, 0, 0, 0, 0, 50, 40, 1);
      for (int y = 0; y < 40; ++y) {
        for (int x = 0; x < 50; ++x) {
          const uint32_t s = RawAt(*from.impl, x, y);
          ASSERT_EQ(RawAt(*to.impl, x, y), s == 0 ? 5 : ConvertPixel(*from.impl, *to.impl, s));
        }
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

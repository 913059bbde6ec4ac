// Text on surfaces, with a font of solid blocks: each letter is as wide as its place in the alphabet says.
#include <gtest/gtest.h>

#include "gfx2d/surface_text.h"
#include "gfx2d/text_layout.h"
#include "tests/unit/gfx2d_support.h"

namespace vl {
namespace {

using testing::Gfx;
using testing::Picture;
using testing::RawAt;

// Letters are blocks 2 wide and 2 high on the baseline, 3 apart; a blank is 3.
class BlockFont final : public TextFont {
 public:
  BlockFont() {
    metrics_.ascent = 3;
    metrics_.descent = 1;
    metrics_.height = 4;
    metrics_.averageWidth = 3;
  }

 protected:
  int loadAdvance(uint8_t) override { return 3; }
  void loadGlyph(uint8_t character, Glyph& glyph) override {
    if (character != ' ') glyph.runs = {{0, -2, 2}, {0, -1, 2}};
  }
};

std::vector<std::string> Lines(std::string_view text, int width, uint32_t format) {
  BlockFont font;
  std::vector<std::string> lines;
  for (const TextLine& line : LayOutText(font, text, width, format, {})) {
    std::string joined;
    for (const TextPiece& piece : line.pieces) joined += (joined.empty() ? "" : "|") + piece.text;
    lines.push_back(joined);
  }
  return lines;
}

TEST(TextLayout, BreaksLinesAndWords) {
  using Expected = std::vector<std::string>;
  const uint32_t wrap = kTextWordBreak | kTextNoPrefix;
  struct Case {
    const char* text;
    int width;
    uint32_t format;
    Expected lines;
  };
  const Case cases[] = {
      {"ab cd ef", 100, wrap, {"ab cd ef"}},
      {"ab cd ef", 15, wrap, {"ab cd", "ef"}},
      {"ab cd ef", 14, wrap, {"ab", "cd", "ef"}},
      {"ab   cd", 9, wrap, {"ab", "cd"}},
      {"abcdef gh", 9, wrap, {"abcdef", "gh"}},                         // a word too long stays whole
      {"abcdef gh", 9, wrap | kTextEditControl, {"abc", "def", "gh"}},  // or is cut
      {"abc", 0, wrap, {"abc"}},
      {"abc", 0, wrap | kTextEditControl, {"a", "b", "c"}},
      {"a\r\nb\n\nc\r", 100, wrap, {"a", "b", "", "c"}},
      {"a\nb", 100, kTextSingleLine | kTextNoPrefix, {"a\nb"}},
      {"a\tb", 100, kTextSingleLine | kTextExpandTabs | kTextNoPrefix, {"a|b"}},
      {"&File && &x", 100, kTextSingleLine, {"File & x"}},
      {"", 10, wrap, {""}},
  };
  for (const Case& c : cases) EXPECT_EQ(Lines(c.text, c.width, c.format), c.lines) << c.text << " in " << c.width;
  // Long texts are laid out in reasonable time: no line looks at all of the rest.
  EXPECT_EQ(Lines(std::string(300000, 'x'), 30, wrap | kTextEditControl).size(), 30000u);
}

TEST(TextLayout, TabsStopByAverageWidths) {
  BlockFont font;
  TextMargins margins;
  margins.tabLength = 4;
  const auto lines = LayOutText(font, "a\tbcdefg\th", 0, kTextSingleLine | kTextExpandTabs | kTextTabStop, margins);
  ASSERT_EQ(lines.size(), 1u);
  ASSERT_EQ(lines[0].pieces.size(), 3u);
  EXPECT_EQ(lines[0].pieces[1].x, 12);
  EXPECT_EQ(lines[0].pieces[2].x, 36);
  EXPECT_EQ(lines[0].width, 39);
}

TEST(DrawText, StaysInsideClipAndSurface) {
  Gfx gfx;
  BlockFont font;
  cSurface s = gfx.Make(10, 5, 24);
  EXPECT_TRUE(DrawText(s, font, "aaaa", 1, 3, kAlignBaseline, {0, 0, 8, 3}, {MakeColour(0, 0, 2)}));
  EXPECT_EQ(Picture(*s.impl), "..........\n.bb.bb.b..\n.bb.bb.b..\n..........\n..........\n");
  s.FillRaw(0, 0, 10, 5, 0);
  s.SetOrigin(100, 100);
  s.SetClipRect(100, 100, 5, 5);
  EXPECT_TRUE(DrawText(s, font, "aa", 99, 103, kAlignBaseline, {0, 0, 1000, 1000}, {MakeColour(0, 0, 2)}));
  EXPECT_EQ(Picture(*s.impl), "..........\nb.bb......\nb.bb......\n..........\n..........\n");
  EXPECT_FALSE(DrawText(s, font, "aa", 99, 103, kAlignBaseline, {0, 0, 50, 50}, {1}));
  EXPECT_FALSE(DrawText(s, font, "", 100, 103, kAlignBaseline, {0, 0, 1000, 1000}, {1}));
  DrawText(s, font, "aa", INT32_MIN, INT32_MAX, kAlignBaseline, {INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX}, {1});
}

TEST(DrawText, LiesAtItsPointAsAligned) {
  Gfx gfx;
  BlockFont font;  // 3 above the baseline, 1 below; the first ink of a text is at its left, two rows above
  struct Case {
    uint32_t alignment;
    int x, y;
  };
  const Case cases[] = {
      {kAlignLeft | kAlignTop, 10, 6},      {kAlignBaseline, 10, 3}, {kAlignBottom, 10, 2},
      {kAlignRight | kAlignBaseline, 4, 3}, {kAlignCentre, 7, 6},    {kAlignCentre | kAlignBaseline, 7, 3},
  };
  for (const Case& c : cases) {
    cSurface s = gfx.Make(20, 12, 16);
    EXPECT_TRUE(DrawText(s, font, "aa", 10, 5, c.alignment, {0, 0, 20, 12}, {0xFF}));
    Rect box;
    ASSERT_TRUE(s.impl->GetContentBox(box));
    EXPECT_EQ(box, (Rect{c.x, c.y, c.x + 5, c.y + 2})) << c.alignment;
  }
}

TEST(DrawText, BlackTextStaysVisibleThroughEffects) {
  Gfx gfx;
  BlockFont font;
  for (const int depth : kDepths) {
    cSurface s = gfx.Make(4, 4, depth);
    s.Fill(0, 0, 4, 4, 0xFFFFFF);
    const Rect all = {0, 0, 4, 4};
    EXPECT_TRUE(DrawText(s, font, "a", 0, 2, kAlignBaseline, all, {0, kEffectBlend, 0, false}));
    Colour c = 0;
    s.GetPixel(1, 1, c);
    EXPECT_EQ(c, MakeColour(8, 0, 0)) << depth;
    s.GetPixel(3, 3, c);
    EXPECT_GE(RedOf(c), 248u) << "the rest is untouched";
    // Plain, the colour goes in as it is.
    EXPECT_TRUE(DrawText(s, font, "a", 0, 2, kAlignBaseline, all, {0}));
    EXPECT_EQ(RawAt(*s.impl, 1, 1), 0u);
  }
  const cSurface s = gfx.Make(1, 1, 8);
  EXPECT_EQ(TextColour(*s.impl, 0), 8u);
  EXPECT_EQ(TextColour(*s.impl, 5), 5u);
}

TEST(DrawTextEx, PlacesAndMeasures) {
  Gfx gfx;
  BlockFont font;
  struct Case {
    uint32_t format;
    int x, y;  // the first inked pixel
  };
  const Case cases[] = {
      {kTextSingleLine, 0, 1},
      {kTextSingleLine | kTextCentre, 7, 1},
      {kTextSingleLine | kTextRight, 14, 1},
      {kTextSingleLine | kTextVerticalCentre, 0, 4},
      {kTextSingleLine | kTextBottom | kTextRight, 14, 7},
  };
  for (const Case& c : cases) {
    cSurface s = gfx.Make(20, 10, 32);
    Rect rect = {0, 0, 20, 10};
    EXPECT_EQ(DrawTextEx(s, font, "ab", rect, c.format, {0}, {}), 4);
    Rect box;
    ASSERT_TRUE(s.impl->GetContentBox(box)) << "black text is drawn as dark";
    EXPECT_EQ(box.left, c.x);
    EXPECT_EQ(box.top, c.y);
  }
  Rect rect = {5, 6, 20, 10};
  cSurface s = gfx.Make(20, 10, 32);
  EXPECT_EQ(DrawTextEx(s, font, "ab cd ef", rect, kTextWordBreak | kTextCalculate, {1}, {}), 8);
  EXPECT_EQ(rect, (Rect{5, 6, 20, 14}));
  EXPECT_TRUE(s.impl->IsEmpty()) << "measuring draws nothing";
  // A control that edits shows no line in part; others cut it off.
  rect = {0, 0, 9, 7};
  DrawTextEx(s, font, "a\nb", rect, kTextEditControl, {1}, {});
  Rect box;
  s.impl->GetContentBox(box);
  EXPECT_EQ(box.bottom, 3);
  DrawTextEx(s, font, "a\nb", rect, 0, {1}, {});
  s.impl->GetContentBox(box);
  EXPECT_EQ(box.bottom, 7);
  // The prefix is drawn as a line under its letter.
  cSurface prefixed = gfx.Make(20, 10, 24);
  rect = {0, 0, 20, 10};
  DrawTextEx(prefixed, font, "a&b", rect, kTextSingleLine, {MakeColour(0, 0, 2)}, {});
  EXPECT_EQ(RawAt(*prefixed.impl, 3, 4), 2u);
  EXPECT_EQ(RawAt(*prefixed.impl, 5, 4), 2u);
  EXPECT_EQ(RawAt(*prefixed.impl, 2, 4), 0u);
}

}  // namespace
}  // namespace vl

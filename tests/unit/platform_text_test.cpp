// Code page 1252 and the text engine with the pinned fonts.
#include <gtest/gtest.h>

#include "platform/posix/posix_font_finder.h"
#include "platform/text/code_page.h"
#include "platform/text/freetype_text_engine.h"

namespace vl {
namespace {

TEST(CodePage, EveryByteGoesThereAndBack) {
  for (int byte = 0; byte < 256; ++byte) {
    EXPECT_EQ(Byte1252Of(UnicodeOf1252(uint8_t(byte))), byte);
    const std::string text(1, char(byte));
    EXPECT_EQ(Text1252OfUtf8(Utf8Of1252(text)), text) << byte;
  }
  EXPECT_EQ(UnicodeOf1252(0x80), U'\u20AC');
  EXPECT_EQ(Utf8Of1252("\xE9\x80"), "\xC3\xA9\xE2\x82\xAC");
  EXPECT_EQ(Byte1252Of(U'\u0416'), -1);
}

TEST(CodePage, BrokenUtf8BecomesQuestionMarks) {
  const std::pair<const char*, const char*> cases[] = {{"a\xFFz", "a?z"},           {"\xC3", "?"},
                                                       {"\xE2\x82", "??"},          {"\xC3(", "?("},
                                                       {"\xF0\x9F\x98\x80!", "?!"}, {"\xD0\x96", "?"}};
  for (const auto& [utf8, text] : cases) EXPECT_EQ(Text1252OfUtf8(utf8), text);
}

TEST(FontNames, StandInsByFaceAndPitch) {
  const auto family = [](const char* face, bool fixed) { return StandInFor({face, false, false, fixed}).family; };
  EXPECT_EQ(family("ARIAL", false), StandInFamily::Sans);
  EXPECT_EQ(family("Times New Roman", false), StandInFamily::Serif);
  EXPECT_EQ(family("courier new", false), StandInFamily::Mono);
  EXPECT_EQ(family("Unheard Of", false), StandInFamily::Sans);
  EXPECT_EQ(family("Unheard Of", true), StandInFamily::Mono);
  EXPECT_TRUE(StandInFor({"MS Sans Serif"}).isPinned);
  EXPECT_FALSE(StandInFor({"Arial Black"}).isPinned);
}

class Fonts : public ::testing::Test {
 protected:
  PosixFontFinder finder;
  FreeTypeTextEngine engine{finder};

  std::shared_ptr<TextFont> Open(const char* face, int height, int weight = 400, bool italic = false) {
    FontDescription d;
    d.face = face;
    d.height = height;
    d.weight = weight;
    d.italic = italic;
    return engine.openFont(d);
  }
  // Calls emit(x, y, width) for the runs of a text and of the lines under and through it.
  template <class Emit>
  static void ForRuns(TextFont& font, std::string_view text, Emit&& emit) {
    int x = 0;
    for (const char c : text) {
      for (const GlyphRun& run : font.glyph(uint8_t(c)).runs) emit(x + run.x, int(run.y), int(run.width));
      x += font.advance(uint8_t(c));
    }
    for (const TextBar& bar : font.bars()) {
      for (int i = 0; i < bar.thickness; ++i) emit(0, bar.y + i, x);
    }
  }
  std::string Draw(TextFont& font, std::string_view text) {
    const Size size = font.measure(text);
    const int ascent = font.metrics().ascent;
    std::vector<std::string> rows(size_t(size.height), std::string(size_t(size.width), '.'));
    ForRuns(font, text, [&](int left, int row, int length) {
      for (int x = left; x < left + length; ++x) {
        const int y = ascent + row;
        if (x >= 0 && x < size.width && y >= 0 && y < size.height) rows[size_t(y)][size_t(x)] = '#';
      }
    });
    std::string picture;
    for (const std::string& row : rows) picture += row + "\n";
    return picture;
  }
};

TEST_F(Fonts, MetricsOfArial16) {
  const auto font = Open("Arial", -16);
  const FontMetrics& m = font->metrics();
  // 1854 and 434 of 2048 units.
  EXPECT_EQ(m.ascent, 14);
  EXPECT_EQ(m.descent, 3);
  EXPECT_EQ(m.height, 17);
  EXPECT_EQ(m.internalLeading, 1);
  EXPECT_EQ(m.averageWidth, 7);
  EXPECT_TRUE(m.hasOutline);
  EXPECT_GT(m.superscriptOffset, m.subscriptOffset);
  EXPECT_EQ(font->measure("").width, 0);
  EXPECT_EQ(font->measure("").height, 17);
  EXPECT_EQ(font->measure("iiii").width, 4 * font->measure("i").width);
  EXPECT_EQ(font->measure(" ").width, 4);
  EXPECT_EQ(font->measure("\n\r\t").width, 0);
  // A cell height is exact, whatever the rounding.
  for (int height = 1; height < 60; ++height) {
    EXPECT_EQ(Open("Arial", height)->metrics().height, height);
  }
}

TEST_F(Fonts, GlyphsAreHintedPixels) {
  const auto font = Open("Arial", -13);
  EXPECT_EQ(Draw(*font, "Hi"), Draw(*Open("Liberation Sans", -13), "Hi"));
  const std::string h = Draw(*font, "H");
  // Two stems of whole pixels and a bar: the left column is inked over the cap height.
  EXPECT_NE(h.find("#.....#"), std::string::npos) << h;
  EXPECT_NE(h.find("#######"), std::string::npos) << h;
  EXPECT_EQ(h.find("##...##"), std::string::npos) << h;
}

TEST_F(Fonts, StylesDiffer) {
  const std::string regular = Draw(*Open("Times New Roman", -20), "Rag");
  EXPECT_NE(regular, Draw(*Open("Times New Roman", -20, 700), "Rag"));
  EXPECT_NE(regular, Draw(*Open("Times New Roman", -20, 400, true), "Rag"));
  EXPECT_EQ(regular, Draw(*Open("Times New Roman", -20, 500), "Rag")) << "medium has no file of its own";
  const auto mono = Open("Courier New", -16);
  EXPECT_EQ(mono->measure("i").width, mono->measure("W").width);
}

TEST_F(Fonts, LinesUnderAndThroughGoTheWholeWidth) {
  FontDescription d;
  d.underline = true;
  d.strikeOut = true;
  const auto font = engine.openFont(d);
  const int width = font->measure("a b").width;
  bool under = false;
  bool through = false;
  ForRuns(*font, "a b", [&](int x, int y, int length) {
    if (x == 0 && length == width) (y > 0 ? under : through) = true;
  });
  EXPECT_TRUE(under);
  EXPECT_TRUE(through);
}

TEST_F(Fonts, ExtremesAreHarmless) {
  for (const int height : {INT32_MIN + 1, -5000, -1, 0, 1, 5000, INT32_MAX}) {
    const auto font = Open("Arial", height);
    EXPECT_GT(font->metrics().height, 0);
    EXPECT_LE(font->metrics().height, 2048);
    const Rect& box = font->glyph('W').box;
    EXPECT_FALSE(box.IsEmpty()) << height;
    EXPECT_LE(box.Width(), 2048);
  }
  const auto font = Open("Arial", -1000);
  EXPECT_GT(font->measure(std::string(5000000, 'W')).width, 1 << 20);
  // Equal descriptions share one font; fonts outlive the cache.
  EXPECT_EQ(Open("Arial", -16), Open("Arial", -16));
  std::vector<std::shared_ptr<TextFont>> held;
  for (int i = 1; i < 100; ++i) held.push_back(Open("Arial", -i));
  EXPECT_EQ(held[15]->measure("i").width, Open("Arial", -16)->measure("i").width);
}

TEST(FontsWithoutFiles, BoxesStandIn) {
  TableFontFinder empty;
  FreeTypeTextEngine engine(empty);
  const auto font = engine.openFont({});
  EXPECT_EQ(font->metrics().height, 16);
  EXPECT_GT(font->glyph('a').runs.size(), 4u);
  EXPECT_TRUE(font->glyph(' ').runs.empty());
  TableFontFinder broken;
  broken.Add(StandInFamily::Sans, false, false, "no font at all");
  EXPECT_GT(FreeTypeTextEngine(broken).openFont({})->measure("abc").width, 0);
}

TEST(FontsWithoutFiles, StylesAreMadeFromTheRegularFile) {
  PosixFontFinder installed;
  TableFontFinder regular;
  regular.Add(StandInFamily::Sans, false, false, *installed.Find({"Arial"}).bytes);
  FreeTypeTextEngine engine(regular);
  FontDescription d;
  const auto plain = engine.openFont(d);
  d.weight = 700;
  const auto bold = engine.openFont(d);
  EXPECT_EQ(bold->measure("ll").width, plain->measure("ll").width + 2);
  d.weight = 400;
  d.italic = true;
  const auto italic = engine.openFont(d);
  EXPECT_GT(italic->glyph('l').box.Width(), plain->glyph('l').box.Width()) << "slanted";
}

}  // namespace
}  // namespace vl

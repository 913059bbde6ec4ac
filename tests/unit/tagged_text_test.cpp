// Tagged text: tokens, references, layout and wrapping, each beside the plain and slow way of doing the same.
#include "gfx2d/tagged_text.h"

#include <gtest/gtest.h>

#include <random>

#include "gfx2d/pattern.h"
#include "gfx2d/tagged_text_writer.h"
#include "tests/unit/gfx2d_support.h"

namespace vl {
namespace {

using testing::Gfx;
using testing::Picture;

// "code:text" of all tokens, attributes of FONT in braces.
std::string Tokens(std::string_view text) {
  std::string all;
  size_t position = 0;
  while (position < text.size()) {
    const size_t before = position;
    const TagToken t = ReadToken(text, position);
    EXPECT_GT(position, before);
    if (!all.empty()) all += " ";
    if (t.code == kTagText) {
      all += "[" + std::string(t.text) + "]";
      continue;
    }
    EXPECT_EQ(EndOfTag(text, before), position);
    all += (t.code >= kTagClosing ? "/" : "") + std::to_string(t.code & 0xFFF);
    if (t.hasFace) all += "{" + t.face + "}";
    if (t.hasColor) all += "{#" + std::to_string(SwapRedBlue(t.color)) + "}";
    if (t.hasSize) all += "{" + std::string(t.isSizeRelative ? "~" : "") + std::to_string(t.size) + "}";
  }
  EXPECT_EQ(ReadToken(text, position).code, kTagEnd);
  EXPECT_EQ(position, text.size());
  return all;
}

TEST(TaggedText, Tokens) {
  const std::pair<const char*, const char*> cases[] = {
      {"", ""},
      {"plain", "[plain]"},
      {"a<B>b</b>c", "[a] 4 [b] /4 [c]"},
      {"<u></U><strong></STRONG><I></i><em></em><StRiKe></strike>", "3 /3 4 /4 5 /5 5 /5 6 /6"},
      {"<TT></TT><SMALL></SMALL><BIG></BIG><SUP></SUP><SUB></SUB><FONT></FONT>",
       "10 /10 11 /11 12 /12 13 /13 14 /14 9 /9"},
      // What can't be read as a tag is text, from its '<' up to the next one.
      {"a < b", "[a ] [< b]"},
      {"a<b", "[a] [<b]"},
      {"<B", "[<B]"},
      {"<B <I>", "[<B ] 5"},
      {"<B x>y", "[<B x>y]"},
      {"<B=1>", "[<B=1>]"},
      {"<<B>>", "1 [>]"},
      {"<", "[<]"},
      {"<<<", "[<] [<] [<]"},
      // Well formed, but of another name: gone.
      {"a<X>b", "[a] 1 [b]"},
      {"<>", "1"},
      {"</>", "1"},
      {"<STRONGER>", "1"},
      {"< \t\nB>x", "4 [x]"},
      {"<\"B\">x", "4 [x]"},
      {"<\"B>x", "[<\"B>x]"},
      {"a<b>c", "[a] 4 [c]"},
      // Attributes.
      {"<FONT FACE=arial>", "9{ARIAL}"},
      {"<font face=\"Times New Roman\" size=12 color=#ff8000>", "9{TIMES NEW ROMAN}{#16744448}{12}"},
      {"<FONT SIZE=+2>", "9{~2}"},
      {"<FONT SIZE=-20>", "9{~-20}"},
      {"<FONT SIZE=+0>", "9{~0}"},
      {"<FONT SIZE=0>", "9"},
      {"<FONT SIZE=12px>", "9{12}"},
      {"<FONT SIZE=big>", "9"},
      {"<FONT SIZE=99999999999>", "9{1048576}"},
      {"<FONT COLOR=00FF00>", "9{#65280}"},
      {"<FONT COLOR=#F00>", "9"},
      {"<FONT COLOR=#FF001>", "9{#16711681}"},
      {"<FONT COLOR=#0000FFAA>", "9{#255}"},
      {"<FONT COLOR=RED>", "9"},
      {"<FONT FACE=>", "9{}"},
      {"<FONT FACE=\"\">", "9{}"},
      {"<FONT FACE=\"a>b\">", "9{A>B}"},
      {"<FONT FACE=\"a>b>", "[<FONT FACE=\"a>b>]"},
      {"<FONT FACE = arial>", "[<FONT FACE = arial>]"},
      {"<FONT FACE= arial>", "9{ARIAL}"},
      {"<FONT FACE>", "9"},
      {"<FONT SIZE COLOR=#FFFFFF>", "[<FONT SIZE COLOR=#FFFFFF>]"},
      {"<FONT ID=7 SIZE=9 >", "9{9}"},
      {"<FONT ===SIZE=9>", "9{9}"},
      {"<FONT a b c>", "9"},
      {"<FONT SIZE=9", "[<FONT SIZE=9]"},
      {"<FONT SIZE=1 SIZE=2>", "9{2}"},
      {"<FONTS>", "1"},
  };
  for (const auto& [text, tokens] : cases) EXPECT_EQ(Tokens(text), tokens) << text;
  const std::string quoted = "<FONT FACE=\"" + std::string(kMaxTagBytes - 14, 'x') + "\">";
  ASSERT_EQ(quoted.size(), kMaxTagBytes);
  EXPECT_EQ(EndOfTag(quoted, 0), quoted.size());
  EXPECT_EQ(Tokens(quoted.substr(0, 13) + "x" + quoted.substr(13))[0], '[') << "a longer tag is text";
}

TEST(References, EachRowGivesItsCharacter) {
  ReferenceText scratch;
  const std::pair<const char*, const char*> cases[] = {
      {"&lt;&gt;&amp;&quot;", "<>&\""},
      {"&#60;&#62;&#38;&#34;", "<>&\""},
      {"&amp;lt;", "<"},
      {"&amp;amp;", "&"},
      {"&amp;amp;amp;lt;", "<"},
      {"&#38;#60;", "<"},
      {"&#09;|&#9;", "\t|&#9;"},
      {"&#10;&#13;", "\x08\x0B"},
      {"a&nbsp;b&#160;c", "abc"},
      {"&Auml;&auml;&AUML;", "\xC4\xE4&AUML;"},
      {"&brkbar;&brvbar;", "\xA6\xA6"},
      {"&die;&uml;&hibar;&macr;", "\xA8\xA8\xAF\xAF"},
      {"&iexcl;&yuml;", "\xA1\xFF"},
      {"&#127;&#128;&#159;&#256;", "&#127;&#128;&#159;&#256;"},
      {"&lt", "&lt"},
      {"&lt &gt;", "&lt >"},
      {"&&lt;;", "&<;"},
      {"&#108;t;", "lt;"},
      // Formed when its own row has had its turn.
      {"&&#108;t;", "&lt;"},
      {"&nb&nbsp;sp;x", "x"},
      {"&l&nbsp;t;", "&lt;"},
      {"&#38&#59;#38;", "&#38;#38;"},
      {"&#&#54;0;", "<"},
      {"&lt&#59;", "<"},
  };
  for (const auto& [text, plain] : cases) EXPECT_EQ(ReplaceReferences(text, scratch), plain) << text;
  const std::string_view untouched = "no reference; at all #38";
  EXPECT_EQ(ReplaceReferences(untouched, scratch).data(), untouched.data());
}

// The table as it is told: row by row, each until it finds nothing more.
std::string ReplaceRowByRow(std::string text) {
  for (int i = 0; i < kReferenceRows; ++i) {
    const CharacterReference& row = ReferenceRow(i);
    for (size_t at = text.find(row.name); at != std::string::npos; at = text.find(row.name)) {
      text.replace(at, row.name.size(), row.character ? std::string(1, row.character) : std::string());
    }
  }
  return text;
}

TEST(References, GrowingTextIsWhatTheTableMakesOfIt) {
  const std::string_view pieces[] = {"&",      "amp;",  "&amp;",  "lt;",    "&lt",   ";",     "&#59;", "#38", "&#108;",
                                     "&nbsp;", "nb",    "sp;",    "&#160;", "&#51;", "&#56;", "&#35;", "t",   "x ",
                                     "a",      "&#97;", "&#109;", "&#112;", "60",    "&#6",   "&#48;", "53;", "&#"};
  std::mt19937 random(1);
  for (int round = 0; round < 3000; ++round) {
    std::string text;
    ReferenceText growing;
    const size_t count = 1 + random() % 12;
    for (size_t i = 0; i < count; ++i) {
      for (const char c : pieces[random() % std::size(pieces)]) {
        text += c;
        growing.Append(c);
      }
      ASSERT_EQ(growing.Text(), ReplaceRowByRow(text)) << text;
    }
  }
  std::string deep = "&#59";
  for (int i = 0; i < 50000; ++i) deep += "&#59";
  ReferenceText growing;
  for (const char c : deep + ";") growing.Append(c);
  EXPECT_EQ(growing.Text(), ";") << "one end completes all of them";
}

// Characters are blocks, 3 wide at a height of 4 and wider with each style; control characters are nothing.
class StyleFont final : public TextFont {
 public:
  explicit StyleFont(const FontDescription& d) {
    const int height = std::clamp(d.height < 0 ? -d.height : 4, 1, 512);
    metrics_.height = height;
    metrics_.ascent = height - height / 4;
    metrics_.averageWidth = std::max(1, height * 3 / 4);
    metrics_.hasOutline = d.face != "Flat" && d.face != "FLAT";
    metrics_.subscriptSize = metrics_.superscriptSize = std::max(1, height / 2);
    metrics_.subscriptOffset = 1;
    metrics_.superscriptOffset = 2;
    width_ = metrics_.averageWidth + (d.weight >= 600) + (d.italic ? 2 : 0) + int(d.face.size() % 5);
  }

 protected:
  int loadAdvance(uint8_t c) override { return c < 32 ? 0 : c == 'i' ? 1 : width_; }
  void loadGlyph(uint8_t c, Glyph& glyph) override {
    if (c > 32) glyph.runs = {{0, -1, int16_t(std::max(1, width_ - 1))}};
  }

 private:
  int width_;
};

class StyleEngine final : public TextEngine {
 public:
  std::shared_ptr<TextFont> openFont(const FontDescription& d) override {
    ++opened;
    last = d;
    return std::make_shared<StyleFont>(d);
  }
  int opened = 0;
  FontDescription last;
};

class Writing : public ::testing::Test, public TextTarget {
 protected:
  void NoteTextChange(const Rect& box) override { noted.push_back(box); }
  bool MayGoOn() override { return ++questions <= patience; }

  void Begin(int width, int height, int depth = 32) {
    surface = gfx.Make(width, height, depth);
    pen = {};
    pen.description.height = -4;
    pen.description.face = "Block";  // as wide as its height says
    pen.font = engine.openFont(pen.description);
    noted.clear();
    questions = 0;
  }
  TaggedTextWriter Writer() { return {surface, engine, *this, pen}; }
  std::vector<std::string> Wrap(std::string_view text) {
    TaggedTextWriter writer = Writer();
    std::vector<std::string> lines;
    for (const std::string_view line : writer.WrapText(text)) lines.emplace_back(line);
    return lines;
  }

  Gfx gfx;
  StyleEngine engine;
  cSurface surface;
  TextPen pen;
  std::vector<Rect> noted;
  int questions = 0;
  int patience = INT32_MAX;
};

TEST_F(Writing, StylesAndTheirMetrics) {
  Begin(100, 20);
  struct Case {
    const char* text;
    int width, height, ascent;
  };
  const Case cases[] = {
      {"", 0, 0, 0},
      {"ab", 6, 4, 3},
      {"<B>ab</B>a", 11, 4, 3},
      {"<I>a</I><B>a", 9, 4, 3},
      {"<B><B>a</B>a", 7, 4, 3},  // they don't count their depth
      {"<U>a</U><STRIKE>a", 6, 4, 3},
      {"<FONT SIZE=8>a", 6, 8, 6},
      {"<FONT SIZE=+4>a</FONT>a", 9, 8, 6},
      {"<FONT SIZE=-20>a", 3, 4, 3},
      {"<FONT SIZE=0>a", 3, 4, 3},
      {"<BIG>a", 5, 7, 6},
      {"<SMALL><BIG>a", 2, 3, 3},
      {"<TT>a</TT>a", 7, 4, 3},  // "Courier New" has 11 letters
      {"</TT>a", 3, 4, 3},
      {"<SUP>a</SUP>", 1, 4, 4},
      {"a<SUB>a</SUB>a", 7, 4, 3},
      {"<FONT FACE=FLAT><SUP>aa", 14, 4, 3},  // a font without outline metrics
      // Tags that cross: each closes the newest of its kind and puts back only what it changed.
      {"<TT><BIG></TT>a</BIG>a", 8, 7, 6},
      {"<BIG><TT></BIG>a</TT>a", 7, 4, 3},
      {"<FONT SIZE=8><BIG></FONT>a</BIG>a", 9, 8, 6},
      {"a&nbsp;b", 6, 4, 3},
      {"<X>", 0, 0, 0},
  };
  for (const Case& c : cases) {
    TaggedTextWriter writer = Writer();
    const TextExtent e = writer.MeasureText(c.text);
    EXPECT_EQ(e.width, c.width) << c.text;
    EXPECT_EQ(e.height, c.height) << c.text;
    EXPECT_EQ(e.ascent, c.ascent) << c.text;
  }
}

TEST_F(Writing, FontsAreMadeOnceAndNotWithoutEnd) {
  Begin(1000, 20);
  engine.opened = 0;
  TaggedTextWriter writer = Writer();
  writer.MeasureText("<B>a</B>b<B>c</B><FONT FACE=Block>d<FONT FACE=BLOCK>e");
  EXPECT_EQ(engine.opened, 1) << "only the bold one; faces are equal whatever their case";
  std::string sizes;
  for (int i = 0; i < 1000; ++i) sizes += "<FONT SIZE=" + std::to_string(i + 5) + ">a";
  EXPECT_EQ(writer.MeasureText(sizes).height, 4 + int(TaggedTextWriter::kMaxFonts) - 2);
  EXPECT_EQ(engine.opened, int(TaggedTextWriter::kMaxFonts) - 1);
}

TEST_F(Writing, CutsLines) {
  Begin(12, 20);
  using Lines = std::vector<std::string>;
  const std::string blanks(12, ' ');
  struct Case {
    int penX;
    const char* text;
    Lines lines;
  };
  const Case cases[] = {
      {0, "", {""}},
      {0, "abcd", {"abcd"}},
      {0, "abcde", {"abcd", "e"}},
      {0, "ab cd", {"ab ", "cd"}},
      {0, "a b cd", {"a b ", "cd"}},
      {0, "abcd ef", {"abcd ", "ef"}},
      {0, "ab\tcd", {"ab\tcd"}},  // a tab has no width here
      {0, "ab\tcde", {"ab\t", "cde"}},
      {6, "abc", {"ab", "c"}},
      {12, "abc", {blanks, "abc"}},
      {0, "<FONT SIZE=30>ab", {"<FON", "T ", "SIZE", "=30>", "ab"}},  // half-read tags are text
      {0, "&amp;&amp;&amp;", {"&amp;&am", "p;&a", "mp;"}},
  };
  for (const Case& c : cases) {
    pen.penX = c.penX;
    EXPECT_EQ(Wrap(c.text), c.lines) << c.text << " from " << c.penX;
  }
  pen.penX = 5;
  pen.wrapping = false;
  EXPECT_EQ(Wrap("long text that stays whole"), Lines{"long text that stays whole"});
  Begin(30, 20);
  EXPECT_EQ(Wrap("<B>ab</B> cd <X>efghij"), (Lines{"<B>ab</B> cd ", "<X>efghij"}))
      << "a tag is nothing once it is whole";
}

// As WrapText is told, measuring the whole line at each character.
std::vector<std::string> WrapSlowly(TaggedTextWriter& writer, std::string_view text, int64_t x, int width) {
  std::vector<std::string> lines;
  std::string line;
  for (const char c : text) {
    line += c;
    if (writer.MeasureText(line).width + x <= width) continue;
    const size_t blank = line.find_last_of(" \t");
    const size_t end = blank != std::string::npos ? blank + 1 : line.size() - 1;
    lines.push_back(end > 0 ? line.substr(0, end) : std::string(size_t(width), ' '));
    line.erase(0, end);
    x = 0;
  }
  lines.push_back(line);
  return lines;
}

TEST_F(Writing, GrowingLinesAreAsWideAsMeasuredAnew) {
  const std::string_view pieces[] = {"a",       "b ",      "i",
                                     "<B>",     "</B>",    "<",
                                     ">",       "<I",      "<FONT SIZE=6>",
                                     "</FONT>", "&amp;",   "&lt;",
                                     "&",       "amp;",    "&nbsp;",
                                     "<SUP>",   "</SUP>",  "<TT>",
                                     "</TT>",   "\"",      "<FONT FACE=\"",
                                     "\">",     "<X>",     " <BIG>",
                                     "</BIG>",  "<SMALL>", "</SMALL>",
                                     "\t",      "\n",      "<FONT COLOR=\"<B>",
                                     "SIZE=",   "=",       "<FONT SIZE=+3 FACE=\"<I>",
                                     "9>",      "&#59;",   "<<",
                                     "<a<b"};
  std::mt19937 random(7);
  for (int round = 0; round < 1500; ++round) {
    Begin(1 + int(random() % 60), 20);
    pen.penX = int(random() % 40) - 5;
    std::string text;
    for (size_t i = 0, n = 1 + random() % 25; i < n; ++i) text += pieces[random() % std::size(pieces)];
    TaggedTextWriter slow = Writer();
    ASSERT_EQ(Wrap(text), WrapSlowly(slow, text, pen.penX, surface.impl->width)) << text;
  }
}

TEST_F(Writing, LongTextsEnd) {
  const std::string_view hostile[] = {"<FONT FACE=\"",
                                      "<a",
                                      "<",
                                      "<FONT ",
                                      "<FONT SIZE ",
                                      "<TT>",
                                      "<TT></TT>",
                                      "&amp;",
                                      "amp;",
                                      "&#59",
                                      "<SUP><B>a</SUP>",
                                      "\"<FONT FACE=",
                                      "<FONT FACE=\"<B>",
                                      "x",
                                      " ",
                                      "\n",
                                      "<BIG><I>",
                                      "<FONT SIZE=+1>",
                                      "><\""};
  for (const std::string_view piece : hostile) {
    std::string text;
    while (text.size() < (size_t{1} << 16)) text += piece;
    for (const int width : {1, 40, 2000}) {
      Begin(width, 12, 8);
      TextExtent extent;
      Writer().WriteText(text, extent);
      EXPECT_LE(pen.penX, width);
      EXPECT_LE(pen.penY, 12);
    }
  }
}

TEST_F(Writing, MovesThePenAndScrolls) {
  Begin(12, 8);
  TextExtent extent;
  pen.paint.colour = MakeColour(0, 0, 1);
  pen.backColor = MakeColour(0, 0, 2);
  Writer().WriteText("ab", extent);
  EXPECT_EQ(pen.penX, 6);
  EXPECT_EQ(pen.penY, 0);
  Writer().WriteText("cd", extent);
  EXPECT_EQ(pen.penX, 0) << "the edge is reached";
  EXPECT_EQ(pen.penY, 4);
  Writer().WriteTextLine("e");
  EXPECT_EQ(pen.penY, 8) << "stops at the edge";
  EXPECT_EQ(Picture(*surface.impl),
            "............\n............\naa.aa.aa.aa.\n............\n"
            "............\n............\naa..........\n............\n");
  noted.clear();
  Writer().WriteTextLine("f");
  EXPECT_EQ(Picture(*surface.impl),
            "............\n............\naa..........\n............\n"
            "bbbbbbbbbbbb\nbbbbbbbbbbbb\naabbbbbbbbbb\nbbbbbbbbbbbb\n");
  ASSERT_EQ(noted.size(), 2u);
  EXPECT_EQ(noted[0], (Rect{0, 0, 12, 8}));
  EXPECT_EQ(noted[1], (Rect{0, 4, 3, 8}));
  EXPECT_EQ(pen.penY, 8);
  Writer().WriteTextLine("");
  EXPECT_EQ(pen.penY, 8) << "scrolled, and moved down again";
  pen.penY = 2;
  Writer().WriteTextLine("");
  EXPECT_EQ(pen.penY, 6);
  // Without wrapping the pen stays at the edge.
  Begin(12, 8);
  pen.wrapping = false;
  Writer().WriteText("abcdefgh", extent);
  EXPECT_EQ(pen.penX, 12);
  EXPECT_EQ(pen.penY, 0);
  EXPECT_EQ(extent.width, 24);
  // Pens far outside are harmless.
  for (const int32_t far : {INT32_MIN, -100000, 100000, INT32_MAX}) {
    Begin(12, 8);
    pen.penX = pen.penY = far;
    Writer().WriteText("ab<SUP>c</SUP> d", extent);
    pen.penX = pen.penY = far;
    Writer().WriteTextLine("x y z");
    Writer().WriteTextLine("");
    EXPECT_LE(pen.penY, 8);
  }
}

TEST_F(Writing, ColoursAndPatterns) {
  Begin(12, 4, 24);
  pen.paint.colour = MakeColour(0, 0, 3);
  pen.wrapping = false;
  TextExtent extent;
  Writer().WriteText("a<FONT COLOR=#000001>b<FONT COLOR=#000002>c</FONT>d", extent);
  EXPECT_EQ(Picture(*surface.impl), "............\n............\ncc.aa.bb.aa.\n............\n");
  // A pattern spans the line; a coloured piece keeps its colour.
  Begin(12, 4, 24);
  GradientPattern gradient(MakeColour(255, 0, 0), MakeColour(0, 0, 255), 0);
  pen.paint.pattern = &gradient;
  pen.wrapping = false;
  Writer().WriteText("ab<FONT COLOR=#000002>c</FONT>d", extent);
  Colour first = 0;
  Colour last = 0;
  surface.GetPixel(0, 2, first);
  surface.GetPixel(10, 2, last);
  EXPECT_GT(RedOf(first), 200u);
  EXPECT_GT(BlueOf(last), 190u);
  EXPECT_EQ(testing::RawAt(*surface.impl, 6, 2), 2u);
}

TEST_F(Writing, EndsWhenTheTargetSaysSo) {
  Begin(40, 20);
  patience = 3;
  const std::string text(size_t{1} << 20, 'i');
  TextExtent extent;
  Writer().WriteText(text, extent);
  EXPECT_LE(questions, 5);
  EXPECT_LE(extent.height, 3 * 4);
}

}  // namespace
}  // namespace vl

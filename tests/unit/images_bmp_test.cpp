// Bitmaps: the forms of the header, what is refused and how, run lengths, and saved files byte by byte.
#include "tests/unit/images_support.h"

namespace vl {
namespace {

using namespace testing;

const std::string kBlueGreen24 = Bytes({1, 2, 3, 4, 5, 6, 0, 0, 7, 8, 9, 10, 11, 12, 0, 0});  // 2 by 2, bottom-up

TEST(ImagesBmp, HeaderForms) {
  const std::string old = U32(12) + U16(2) + U16(2) + U16(1) + U16(24);
  struct Case {
    const char* name;
    std::string file;
  } const cases[] = {
      {"file and info header", BmpFileHeader() + BmpInfo(2, 2, 24) + kBlueGreen24},
      {"info header alone", BmpInfo(2, 2, 24) + kBlueGreen24},
      {"file and old header", BmpFileHeader() + old + kBlueGreen24},
      {"old header alone", old + kBlueGreen24},
      {"last line without its padding", BmpInfo(2, 2, 24) + kBlueGreen24.substr(0, 14)},
  };
  for (const Case& c : cases) {
    for (const bool bottomUp : {false, true}) {
      const Frame f = ReadPicture(c.file, 0, nullptr, bottomUp);
      EXPECT_EQ(f.error, kImageOk) << c.name;
      EXPECT_EQ(Hex(f.pixels), "07 08 09 0a 0b 0c 01 02 03 04 05 06") << c.name;
    }
  }
}

TEST(ImagesBmp, DepthsAndMasks) {
  const auto masks = [](uint32_t r, uint32_t g, uint32_t b) { return U32(r) + U32(g) + U32(b); };
  struct Case {
    const char* name;
    std::string file;
    int depth;
    const char* pixels;
  } const cases[] = {
      {"16 plain is 15", BmpInfo(1, 1, 16) + U16(0x7FFF) + U16(0), 15, "ff 7f"},
      {"16 with masks of 15", BmpInfo(1, 1, 16, 3) + masks(0x7C00, 0x3E0, 0x1F) + U16(0x1234) + U16(0), 15, "34 12"},
      {"16 with masks", BmpInfo(1, 1, 16, 3) + masks(0xF800, 0x7E0, 0x1F) + U16(0xFFFF) + U16(0), 16, "ff ff"},
      {"32 plain", BmpInfo(1, 1, 32) + U32(0x80112233), 32, "33 22 11 80"},
      {"32 with masks", BmpInfo(1, 1, 32, 3) + masks(0xFF0000, 0xFF00, 0xFF) + U32(0x112233), 32, "33 22 11 00"},
      {"8 of 3 colours", BmpInfo(3, 1, 8, 0, 3) + GreyQuads(3, 4) + Bytes({2, 1, 200, 0}), 8, "02 01 c8"},
      {"8 of 256 colours", BmpInfo(1, 1, 8) + GreyQuads(256, 4) + Bytes({9, 0, 0, 0}), 8, "09"},
      {"8 of 258 colours", BmpInfo(1, 1, 8, 0, 258) + GreyQuads(258, 4) + Bytes({9, 0, 0, 0}), 8, "09"},
      {"8 behind an old header", U32(12) + U16(1) + U16(1) + U16(1) + U16(8) + GreyQuads(256, 3) + Bytes({7, 0, 0, 0}),
       8, "07"},
  };
  for (const Case& c : cases) {
    const Frame f = ReadPicture(c.file);
    EXPECT_EQ(f.error, kImageOk) << c.name;
    EXPECT_EQ(f.depth, c.depth) << c.name;
    EXPECT_EQ(Hex(f.pixels), c.pixels) << c.name;
  }
}

TEST(ImagesBmp, Refusals) {
  const std::string pixels(64, '\0');
  struct Case {
    const char* name;
    std::string file;
    ImageError error;
  } const cases[] = {
      {"1 bit", BmpInfo(1, 1, 1) + pixels, kImageDepthTooSmall},
      {"4 bits", BmpFileHeader() + BmpInfo(1, 1, 4) + pixels, kImageDepthTooSmall},
      {"4 bits, old", U32(12) + U16(1) + U16(1) + U16(1) + U16(4) + pixels, kImageDepthTooSmall},
      {"planes come first", BmpInfo(1, 1, 4, 0, 0, 2) + pixels, kImageBadPlanes},
      {"12 bits", BmpInfo(1, 1, 12) + pixels, kImageBadData},
      {"masks of 4-4-4", BmpInfo(1, 1, 16, 3) + U32(0xF00) + U32(0xF0) + U32(0xF) + pixels, kImageBadPlanes},
      {"red first", BmpInfo(1, 1, 32, 3) + U32(0xFF) + U32(0xFF00) + U32(0xFF0000) + pixels, kImageBadPlanes},
      {"masks at 24", BmpInfo(1, 1, 24, 3) + U32(0xFF0000) + U32(0xFF00) + U32(0xFF) + pixels, kImageBadPlanes},
      {"header of 64", BmpFileHeader() + U32(64) + pixels, kImageBadData},
      {"no width", BmpInfo(0, 1, 24) + pixels, kImageBadData},
      {"negative height", BmpInfo(1, -1, 24) + pixels, kImageBadData},
      {"too wide", BmpInfo(40000, 1, 24) + pixels, kImageBadData},
      {"more than there is", BmpInfo(30000, 2000, 24) + pixels, kImageBadData},
      {"one byte short", BmpInfo(2, 2, 24) + kBlueGreen24.substr(0, 13), kImageBadData},
      {"a palette that isn't there", BmpInfo(1, 1, 8, 0, 0x40000000) + pixels, kImageBadData},
      {"packed nibbles", BmpInfo(1, 1, 8, 2) + GreyQuads(256, 4) + pixels, kImageBadData},
      {"header cut", BmpInfo(1, 1, 24).substr(0, 30), kImageBadData},
  };
  for (const Case& c : cases) EXPECT_EQ(ErrorOf(c.file), c.error) << c.name;
}

TEST(ImagesBmp, RunLengths) {
  const std::string head = BmpInfo(4, 3, 8, 1, 1) + Bytes({1, 2, 3, 0});
  struct Case {
    const char* name;
    std::string data;
    const char* pixels;  // from the top; null for a read error
  } const cases[] = {
      {"runs and lines", Bytes({4, 1, 0, 0, 2, 2, 2, 3, 0, 0, 4, 4, 0, 0}), "04 04 04 04 02 02 03 03 01 01 01 01"},
      {"literals padded to even", Bytes({0, 3, 7, 8, 9, 99, 1, 1, 0, 0, 0, 4, 1, 2, 3, 4, 0, 1}),
       "00 00 00 00 01 02 03 04 07 08 09 01"},
      {"a move", Bytes({1, 5, 0, 2, 1, 2, 2, 6, 0, 1}), "00 00 06 06 00 00 00 00 05 00 00 00"},
      {"end at once", Bytes({0, 1}), "00 00 00 00 00 00 00 00 00 00 00 00"},
      {"a run past the line", Bytes({200, 1, 0, 0, 0, 6, 1, 2, 3, 4, 5, 6, 0, 1}),
       "00 00 00 00 01 02 03 04 01 01 01 01"},
      {"a move out of the picture", Bytes({0, 2, 200, 200}), "00 00 00 00 00 00 00 00 00 00 00 00"},
      {"cut in a literal", Bytes({0, 4, 1, 2}), nullptr},
      {"cut between lines", Bytes({4, 1, 0, 0}), nullptr},
  };
  for (const Case& c : cases) {
    const Frame f = ReadPicture(head + c.data);
    EXPECT_EQ(f.error, c.pixels ? kImageOk : kImageReadFailed) << c.name;
    if (c.pixels) {
      EXPECT_EQ(Hex(f.pixels), c.pixels) << c.name;
    }
  }
  const Frame wide = ReadPicture(head + Bytes({4, 0, 0, 1}), 24);
  EXPECT_EQ(Hex(wide.pixels.substr(24, 3)), "01 02 03") << "lines of runs are converted too";
}

TEST(ImagesBmp, Save) {
  struct Case {
    int depth;
    std::string pixels;  // 3 by 2
    std::string expected;
  } const cases[] = {
      {15, Bytes({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}),
       "BM" + U32(70) + U32(0) + U32(54) + U32(40) + U32(3) + U32(2) + U16(1) + U16(16) + U32(0) + U32(16) +
           std::string(16, '\0') + Bytes({7, 8, 9, 10, 11, 12, 0, 0, 1, 2, 3, 4, 5, 6, 0, 0})},
      {16, Bytes({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}),
       "BM" + U32(82) + U32(0) + U32(66) + U32(40) + U32(3) + U32(2) + U16(1) + U16(16) + U32(3) + U32(16) +
           std::string(16, '\0') + U32(0xF800) + U32(0x7E0) + U32(0x1F) +
           Bytes({7, 8, 9, 10, 11, 12, 0, 0, 1, 2, 3, 4, 5, 6, 0, 0})},
      {24, Bytes({1, 2, 3, 4, 5, 6, 7, 8, 9, 11, 12, 13, 14, 15, 16, 17, 18, 19}),
       "BM" + U32(78) + U32(0) + U32(54) + U32(40) + U32(3) + U32(2) + U16(1) + U16(24) + U32(0) + U32(24) +
           std::string(16, '\0') +
           Bytes({11, 12, 13, 14, 15, 16, 17, 18, 19, 0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 0, 0, 0})},
      {32, std::string(24, 'x'),
       "BM" + U32(78) + U32(0) + U32(54) + U32(40) + U32(3) + U32(2) + U16(1) + U16(32) + U32(0) + U32(24) +
           std::string(16, '\0') + std::string(24, 'x')},
  };
  for (const Case& c : cases) {
    ImageError error = kImageBadData;
    const std::string file = SavePicture(ImageFilterId("BMP "), c.pixels, 3, 2, c.depth, nullptr, &error);
    EXPECT_EQ(error, kImageOk) << c.depth;
    EXPECT_EQ(Hex(file), Hex(c.expected)) << c.depth;
    EXPECT_EQ(ReadPicture(file).pixels, c.pixels) << c.depth;
  }
  // Depth 8: the palette lies behind the header, blue first.
  const PaletteRecord colours = Colours({MakeColour(1, 2, 3), MakeColour(4, 5, 6)});
  ImageError error = kImageBadData;
  const std::string file = SavePicture(ImageFilterId("BMP "), Bytes({0, 1, 2, 3}), 2, 2, 8, &colours, &error);
  EXPECT_EQ(error, kImageOk);
  EXPECT_EQ(Hex(file.substr(54, 8)), "03 02 01 00 06 05 04 00");
  EXPECT_EQ(Hex(file.substr(54 + 1024)), "02 03 00 00 00 01 00 00");
  EXPECT_EQ(file.substr(0, 18), "BM" + U32(1086) + U32(0) + U32(1078) + U32(40));

  const PaletteRecord few = Colours({}, 255);
  SavePicture(ImageFilterId("BMP "), Bytes({0}), 1, 1, 8, &few, &error);
  EXPECT_EQ(error, kImageNoPalette);
  SavePicture(ImageFilterId("BMP "), Bytes({0}), 1, 1, 8, nullptr, &error);
  EXPECT_EQ(error, kImageNoPalette);
}

}  // namespace
}  // namespace vl

// TGA, PCX, PNG and JPEG: their forms, what is refused, and what is saved.
#include <png.h>

#include <cstdio>

// Wants <cstdio> before it.
#include <jpeglib.h>

#include "tests/unit/images_support.h"

namespace vl {
namespace {

using namespace testing;

struct TgaForm {
  int type = 2;
  int bits = 24;
  int width = 2;
  int height = 2;
  int descriptor = 0;
  std::string id = {};
  int mapType = 0;
  int first = 0;
  int mapLength = 0;
  int mapBits = 0;
  std::string map = {};
};

std::string Tga(const TgaForm& f, std::string_view pixels) {
  return Bytes({int(f.id.size()), f.mapType, f.type}) + U16(uint32_t(f.first)) + U16(uint32_t(f.mapLength)) +
         Byte(uint32_t(f.mapBits)) + U16(7) + U16(9) + U16(uint32_t(f.width)) + U16(uint32_t(f.height)) +
         Bytes({f.bits, f.descriptor}) + f.id + f.map + std::string(pixels);
}

TEST(ImagesTga, Forms) {
  const std::string map24 = Bytes({1, 2, 3, 4, 5, 6});
  struct Case {
    const char* name;
    std::string file;
    int depth;
    const char* pixels;
  } const cases[] = {
      {"bottom-up", Tga({}, "aaabbbcccddd"), 24, "63 63 63 64 64 64 61 61 61 62 62 62"},
      {"top-down", Tga({.descriptor = 0x20}, "aaabbbcccddd"), 24, "61 61 61 62 62 62 63 63 63 64 64 64"},
      {"with an id", Tga({.height = 1, .id = "remark"}, "aaabbb"), 24, "61 61 61 62 62 62"},
      {"a map that isn't needed",
       Tga({.height = 1, .mapType = 1, .mapLength = 2, .mapBits = 24, .map = map24}, "aaabbb"), 24,
       "61 61 61 62 62 62"},
      {"16 bits lose their attribute", Tga({.bits = 16, .height = 1}, U16(0xFFFF) + U16(0x8000)), 15, "ff 7f 00 00"},
      {"15 bits", Tga({.bits = 15, .height = 1}, U16(0x7C00) + U16(0x1F)), 15, "00 7c 1f 00"},
      {"32 bits", Tga({.bits = 32, .width = 1, .height = 1}, "bgra"), 32, "62 67 72 61"},
      {"grey", Tga({.type = 3, .bits = 8, .height = 1}, Bytes({5, 250})), 24, "05 05 05 fa fa fa"},
      {"runs across lines",
       Tga({.type = 10, .width = 2, .height = 3, .descriptor = 0x20}, Bytes({0x82, 1, 2, 3, 2}) + "aaabbbccc"), 24,
       "01 02 03 01 02 03 01 02 03 61 61 61 62 62 62 63 63 63"},
      {"grey runs", Tga({.type = 11, .bits = 8, .width = 3, .height = 1}, Bytes({0x81, 9, 0, 8})), 24,
       "09 09 09 09 09 09 08 08 08"},
      {"indices",
       Tga({.type = 1, .bits = 8, .height = 1, .mapType = 1, .first = 1, .mapLength = 2, .mapBits = 24, .map = map24},
           Bytes({2, 0})),
       8, "02 00"},
  };
  for (const Case& c : cases) {
    const Frame f = ReadPicture(c.file);
    EXPECT_EQ(f.error, kImageOk) << c.name;
    EXPECT_EQ(f.depth, c.depth) << c.name;
    EXPECT_EQ(Hex(f.pixels), c.pixels) << c.name;
  }
}

TEST(ImagesTga, ColourMaps) {
  struct Case {
    int bits;
    std::string map;
    const char* pixels;  // of entries 0, 1 and 2; the map starts at 1 with one entry
  } const cases[] = {
      {8, Bytes({77}), "00 00 00 4d 4d 4d 00 00 00"},          {15, U16(0x7C01), "00 00 00 08 00 f8 00 00 00"},
      {16, U16(0xFC01), "00 00 00 08 00 f8 00 00 00"},         {24, Bytes({1, 2, 3}), "00 00 00 01 02 03 00 00 00"},
      {32, Bytes({1, 2, 3, 4}), "00 00 00 01 02 03 00 00 00"},
  };
  for (const Case& c : cases) {
    const TgaForm form{.type = 1,
                       .bits = 8,
                       .width = 3,
                       .height = 1,
                       .mapType = 1,
                       .first = 1,
                       .mapLength = 1,
                       .mapBits = c.bits,
                       .map = c.map};
    EXPECT_EQ(Hex(ReadPicture(Tga(form, Bytes({0, 1, 2})), 24).pixels), c.pixels) << c.bits;
  }
  const TgaForm bad{.type = 1, .bits = 8, .mapType = 1, .mapLength = 1, .mapBits = 40, .map = "12345"};
  EXPECT_EQ(ErrorOf(Tga(bad, "abcd")), kImageBadData);
}

TEST(ImagesTga, AlphaAndDamage) {
  const std::string pixels = "bgrAbgrBbgrCbgrD";
  EXPECT_EQ(ReadPicture(Tga({.bits = 32, .descriptor = 8}, pixels)).mask, "CDAB");
  EXPECT_EQ(ReadPicture(Tga({.bits = 32, .descriptor = 0x28}, pixels)).mask, "ABCD");
  EXPECT_EQ(ReadPicture(Tga({.bits = 32, .descriptor = 7}, pixels)).mask, "") << "not eight bits of alpha";
  EXPECT_EQ(ReadPicture(Tga({.bits = 24, .descriptor = 8}, pixels)).mask, "") << "not 32 bits";
  const std::string packets = Bytes({0x83}) + "bgrA";
  EXPECT_EQ(ReadPicture(Tga({.type = 10, .bits = 32, .descriptor = 8}, packets)).mask, "AAAA");

  EXPECT_EQ(ErrorOf(Tga({.width = 30000, .height = 2000}, "abc")), kImageBadData);
  EXPECT_EQ(ErrorOf(Tga({.type = 10, .width = 30000, .height = 2000}, "abc")), kImageBadData);
  EXPECT_EQ(ErrorOf(Tga({}, "aaabbbcccdd")), kImageBadData) << "plain pixels that aren't all there";
  EXPECT_EQ(ErrorOf(Tga({.type = 10}, Bytes({0x82, 1, 2, 3, 0, 9}))), kImageReadFailed) << "cut in a packet";
}

std::string Pcx(int bits, int planes, int width, int height, int lineBytes, std::string_view data, int encoding = 1) {
  std::string h = Bytes({10, 5, encoding, bits}) + U16(10) + U16(20) + U16(uint32_t(10 + width - 1)) +
                  U16(uint32_t(20 + height - 1));
  h.resize(65);
  h += Byte(uint32_t(planes)) + U16(uint32_t(lineBytes));
  h.resize(128);
  return h + std::string(data);
}

TEST(ImagesPcx, Forms) {
  std::string palette;
  for (int i = 0; i < 256; ++i) palette += Bytes({i, 255 - i, 7});
  struct Case {
    const char* name;
    std::string file;
    int depth;
    const char* pixels;
  } const cases[] = {
      {"runs and literals", Pcx(8, 1, 3, 2, 4, Bytes({0xC2, 9, 5, 0, 1, 0xC1, 0xC7, 3, 0}) + Byte(12) + palette), 8,
       "09 09 05 01 c7 03"},
      {"plain", Pcx(8, 1, 3, 1, 4, Bytes({0xC2, 9, 5, 0}) + Byte(12) + palette, 0), 8, "c2 09 05"},
      {"three planes", Pcx(8, 3, 2, 1, 2, Bytes({1, 2, 3, 4, 5, 6})), 24, "05 03 01 06 04 02"},
      {"a run over planes", Pcx(8, 3, 2, 1, 2, Bytes({0xC6, 8})), 24, "08 08 08 08 08 08"},
      {"a run past the line stops there", Pcx(8, 3, 1, 2, 1, Bytes({0xC9, 8, 1, 2, 3})), 24, "08 08 08 03 02 01"},
      {"lines shorter than the picture", Pcx(8, 3, 2, 1, 1, Bytes({1, 2, 3})), 24, "03 02 01 00 00 00"},
  };
  for (const Case& c : cases) {
    const Frame f = ReadPicture(c.file);
    EXPECT_EQ(f.error, kImageOk) << c.name;
    EXPECT_EQ(f.depth, c.depth) << c.name;
    EXPECT_EQ(Hex(f.pixels), c.pixels) << c.name;
  }
  EXPECT_EQ(Hex(ReadPicture(cases[0].file, 24).pixels).substr(0, 8), "07 f6 09") << "the palette at the end";

  const std::string data(800, '\0');
  EXPECT_EQ(ErrorOf(Pcx(1, 1, 8, 1, 1, data)), kImageDepthTooSmall);
  EXPECT_EQ(ErrorOf(Pcx(1, 4, 8, 1, 1, data)), kImageDepthTooSmall);
  EXPECT_EQ(ErrorOf(Pcx(8, 2, 8, 1, 8, data)), kImageBadPlanes);
  EXPECT_EQ(ErrorOf(Pcx(8, 4, 8, 1, 8, data)), kImageBadPlanes);
  EXPECT_EQ(ErrorOf(Pcx(8, 3, 0, 1, 8, data)), kImageBadData);
  EXPECT_EQ(ErrorOf(Pcx(8, 3, 8, 1, 0, data)), kImageBadData);
  EXPECT_EQ(ErrorOf(Pcx(8, 3, 20000, 3000, 20000, data)), kImageBadData) << "more than runs can make of it";
  EXPECT_EQ(ErrorOf(Pcx(8, 3, 2, 1, 2, Bytes({1, 2, 0xC4}))), kImageReadFailed);
}

// A PNG written by the library, with its chunks as given.
struct PngForm {
  int bits = 8;
  int colour = PNG_COLOR_TYPE_RGB;
  int interlace = PNG_INTERLACE_NONE;
  int colours = 0;
  bool transparent = false;
  size_t textBytes = 0;
};

std::string WritePng(const PngForm& f, int width, int height, const std::string& rows) {
  std::string file;
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_set_write_fn(
      png, &file,
      [](png_structp p, png_bytep bytes, size_t n) {
        static_cast<std::string*>(png_get_io_ptr(p))->append(reinterpret_cast<char*>(bytes), n);
      },
      nullptr);
  png_set_IHDR(png, info, png_uint_32(width), png_uint_32(height), f.bits, f.colour, f.interlace, 0, 0);
  std::vector<png_color> colours(256);
  for (size_t i = 0; i < 256; ++i) colours[i] = {png_byte(i), png_byte(2 * i), png_byte(255 - i)};
  if (f.colours) png_set_PLTE(png, info, colours.data(), f.colours);
  png_byte alpha[2] = {0, 128};
  if (f.transparent) png_set_tRNS(png, info, alpha, 2, nullptr);
  const std::string text(f.textBytes, 't');
  png_text chunk{};
  chunk.compression = PNG_TEXT_COMPRESSION_NONE;
  chunk.key = const_cast<char*>("Comment");
  chunk.text = const_cast<char*>(text.c_str());
  chunk.text_length = text.size();
  if (f.textBytes) png_set_text(png, info, &chunk, 1);
  png_write_info(png, info);
  const size_t row = png_get_rowbytes(png, info);
  EXPECT_EQ(rows.size(), row * size_t(height));
  std::vector<png_bytep> lines;
  for (int y = 0; y < height; ++y) {
    lines.push_back(reinterpret_cast<png_bytep>(const_cast<char*>(rows.data()) + size_t(y) * row));
  }
  png_write_image(png, lines.data());
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
  return file;
}

TEST(ImagesPng, Forms) {
  struct Case {
    const char* name;
    PngForm form;
    int width;
    std::string row;
    int depth;
    const char* pixels;
    const char* at32;
  } const cases[] = {
      {"colour", {}, 2, Bytes({1, 2, 3, 4, 5, 6}), 24, "03 02 01 06 05 04", "03 02 01 00 06 05 04 00"},
      {"16 bits a channel", {.bits = 16}, 1, Bytes({1, 99, 2, 99, 3, 99}), 24, "03 02 01", "03 02 01 00"},
      {"grey", {.colour = PNG_COLOR_TYPE_GRAY}, 2, Bytes({7, 200}), 24, "07 07 07 c8 c8 c8", "07 07 07 00 c8 c8 c8 00"},
      {"grey of 16 bits",
       {.bits = 16, .colour = PNG_COLOR_TYPE_GRAY},
       1,
       Bytes({7, 99}),
       24,
       "07 07 07",
       "07 07 07 00"},
      {"grey with alpha", {.colour = PNG_COLOR_TYPE_GRAY_ALPHA}, 1, Bytes({7, 80}), 32, "07 07 07 50", "07 07 07 50"},
      {"colour with alpha",
       {.colour = PNG_COLOR_TYPE_RGB_ALPHA},
       1,
       Bytes({1, 2, 3, 4}),
       32,
       "03 02 01 04",
       "03 02 01 04"},
      {"indices",
       {.colour = PNG_COLOR_TYPE_PALETTE, .colours = 3},
       2,
       Bytes({2, 1}),
       8,
       "02 01",
       "fd 04 02 00 fe 02 01 00"},
      {"transparent indices",
       {.colour = PNG_COLOR_TYPE_PALETTE, .colours = 3, .transparent = true},
       2,
       Bytes({2, 1}),
       8,
       "02 01",
       "fd 04 02 00 fe 02 01 00"},
      {"long text", {.textBytes = 200000}, 1, Bytes({1, 2, 3}), 24, "03 02 01", "03 02 01 00"},
      {"interlaced",
       {.interlace = PNG_INTERLACE_ADAM7},
       2,
       Bytes({1, 2, 3, 4, 5, 6}),
       24,
       "03 02 01 06 05 04",
       "03 02 01 00 06 05 04 00"},
  };
  for (const Case& c : cases) {
    const std::string file = WritePng(c.form, c.width, 1, c.row);
    const Frame f = ReadPicture(file);
    EXPECT_EQ(f.error, kImageOk) << c.name;
    EXPECT_EQ(f.depth, c.depth) << c.name;
    EXPECT_EQ(Hex(f.pixels), c.pixels) << c.name;
    EXPECT_EQ(f.mask, "") << c.name << ": alpha stays in the pixels";
    EXPECT_EQ(Hex(ReadPicture(file, 32).pixels), c.at32) << c.name;
  }
  for (const int bits : {1, 2, 4}) {
    const std::string row(1, '\x40');
    EXPECT_EQ(ErrorOf(WritePng({.bits = bits, .colour = PNG_COLOR_TYPE_GRAY}, 1, 1, row)), kImageDepthTooSmall);
    EXPECT_EQ(ErrorOf(WritePng({.bits = bits, .colour = PNG_COLOR_TYPE_PALETTE, .colours = 2}, 1, 1, row)),
              kImageDepthTooSmall);
  }
}

// A picture of smooth colours with some detail, red first.
std::string Smooth(int width, int height) {
  std::string rgb;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      rgb += Bytes({(x * 255 / width), (y * 255 / height), ((x / 8 + y / 8) % 2 ? 200 : 40)});
    }
  }
  return rgb;
}

std::string SwapChannels(std::string pixels) {
  for (size_t i = 0; i + 2 < pixels.size(); i += 3) std::swap(pixels[i], pixels[i + 2]);
  return pixels;
}

TEST(ImagesPng, EveryPathAgrees) {
  // Straight into the target, through lines, through the whole picture, into both line orders.
  const std::string rgb = Smooth(61, 37);
  const std::string plain = WritePng({}, 61, 37, rgb);
  const std::string interlaced = WritePng({.interlace = PNG_INTERLACE_ADAM7}, 61, 37, rgb);
  EXPECT_EQ(ReadPicture(plain).pixels, SwapChannels(rgb));
  const PaletteRecord greys = Greys();
  const std::string bitmap = SavePicture(ImageFilterId("BMP "), SwapChannels(rgb), 61, 37, 24, nullptr);
  for (const int depth : {15, 16, 24, 32}) {
    const std::string expected = ReadPicture(bitmap, depth).pixels;
    for (const bool bottomUp : {false, true}) {
      EXPECT_EQ(ReadPicture(plain, depth, nullptr, bottomUp).pixels, expected) << depth;
      EXPECT_EQ(ReadPicture(interlaced, depth, nullptr, bottomUp).pixels, expected) << depth;
    }
  }
  EXPECT_EQ(ReadPicture(plain, 8, &greys).pixels, ReadPicture(interlaced, 8, &greys).pixels);

  // Cut short: an error, and what was read is in the target.
  EXPECT_EQ(ErrorOf(plain.substr(0, plain.size() / 2)), kImageReadFailed);
  EXPECT_EQ(ErrorOf(plain.substr(0, 20)), kImageReadFailed);
  std::string broken = plain;
  broken[20] = char(0x7F);  // the height, so the check sum fails
  EXPECT_NE(ErrorOf(broken), kImageOk);
}

TEST(ImagesPng, Save) {
  const std::string pixels = SwapChannels(Smooth(5, 4));
  const std::string colour = SavePicture(ImageFilterId("PNG "), pixels, 5, 4, 24, nullptr);
  EXPECT_EQ(Hex(colour.substr(24, 5)), "08 02 00 00 00") << "bit depth 8, colour type 2";
  EXPECT_EQ(ReadPicture(colour).pixels, pixels);
  const PaletteRecord palette = Colours({MakeColour(1, 2, 3), MakeColour(4, 5, 6)});
  const std::string indices = SavePicture(ImageFilterId("PNG "), Bytes({0, 1, 255, 3}), 2, 2, 8, &palette);
  EXPECT_EQ(Hex(indices.substr(24, 5)), "08 03 00 00 00");
  EXPECT_EQ(Hex(indices.substr(33, 14)), "00 00 03 00 50 4c 54 45 01 02 03 04 05 06");
  EXPECT_EQ(Hex(ReadPicture(indices).pixels), "00 01 ff 03");
}

std::string WriteJpeg(int width, int height, const std::string& samples, J_COLOR_SPACE space, bool progressive = false,
                      int quality = 95, bool adobe = true) {
  jpeg_compress_struct info{};
  jpeg_error_mgr errors;
  info.err = jpeg_std_error(&errors);
  jpeg_create_compress(&info);
  unsigned char* memory = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&info, &memory, &size);
  info.image_width = JDIMENSION(width);
  info.image_height = JDIMENSION(height);
  info.in_color_space = space;
  info.input_components = space == JCS_GRAYSCALE ? 1 : space == JCS_RGB ? 3 : 4;
  jpeg_set_defaults(&info);
  jpeg_set_quality(&info, quality, TRUE);
  if (!adobe) info.write_Adobe_marker = FALSE;
  if (progressive) jpeg_simple_progression(&info);
  jpeg_start_compress(&info, TRUE);
  for (int y = 0; y < height; ++y) {
    auto* row = reinterpret_cast<JSAMPROW>(const_cast<char*>(samples.data()) +
                                           size_t(y) * size_t(width) * size_t(info.input_components));
    jpeg_write_scanlines(&info, &row, 1);
  }
  jpeg_finish_compress(&info);
  std::string file(reinterpret_cast<char*>(memory), size);
  jpeg_destroy_compress(&info);
  std::free(memory);
  return file;
}

int LargestDifference(const std::string& a, const std::string& b) {
  if (a.size() != b.size()) return 999;
  int largest = 0;
  for (size_t i = 0; i < a.size(); ++i) largest = std::max(largest, std::abs(uint8_t(a[i]) - uint8_t(b[i])));
  return largest;
}

TEST(ImagesJpeg, Forms) {
  const std::string rgb = Smooth(61, 37);
  const std::string bgr = SwapChannels(rgb);
  std::string grey;
  std::string inks;
  std::string inverted;
  for (size_t i = 0; i < rgb.size(); i += 3) {
    grey += rgb[i];
    // With the marker of a painting program inks count from full to none, without it from none to full.
    inverted += rgb.substr(i, 3) + '\xFF';
    inks += Bytes({255 - uint8_t(rgb[i]), 255 - uint8_t(rgb[i + 1]), 255 - uint8_t(rgb[i + 2]), 0});
  }
  const std::string flat(size_t(61) * 37 * 3, 'x');
  for (const bool progressive : {false, true}) {
    const Frame colour = ReadPicture(WriteJpeg(61, 37, flat, JCS_RGB, progressive));
    EXPECT_EQ(colour.error, kImageOk);
    EXPECT_EQ(colour.depth, 24);
    EXPECT_LE(LargestDifference(colour.pixels, flat), 2);
    const Frame spread = ReadPicture(WriteJpeg(61, 37, grey, JCS_GRAYSCALE, progressive));
    EXPECT_EQ(spread.depth, 24);
    for (size_t i = 0; i < grey.size(); ++i) {
      ASSERT_LE(std::abs(uint8_t(spread.pixels[i * 3]) - uint8_t(grey[i])), 3);
      ASSERT_EQ(spread.pixels[i * 3], spread.pixels[i * 3 + 2]);
    }
    // No sub-sampling of inks: close to the original.
    for (const bool adobe : {false, true}) {
      const Frame mixed = ReadPicture(WriteJpeg(61, 37, adobe ? inverted : inks, JCS_CMYK, progressive, 100, adobe));
      EXPECT_EQ(mixed.error, kImageOk);
      EXPECT_LE(LargestDifference(mixed.pixels, bgr), 6) << adobe;
    }
  }
  // All ways into a target agree with the way through 24 bits.
  for (const J_COLOR_SPACE space : {JCS_RGB, JCS_GRAYSCALE, JCS_CMYK}) {
    const std::string file = WriteJpeg(61, 37, space == JCS_RGB ? rgb : space == JCS_CMYK ? inks : grey, space);
    const Frame whole = ReadPicture(file);
    const std::string bitmap = SavePicture(ImageFilterId("BMP "), whole.pixels, 61, 37, 24, nullptr);
    const PaletteRecord greys = Greys();
    for (const int depth : {15, 16, 24, 32}) {
      EXPECT_EQ(ReadPicture(file, depth, nullptr, true).pixels, ReadPicture(bitmap, depth).pixels) << depth;
    }
    EXPECT_EQ(ReadPicture(file, 8, &greys).pixels.size(), grey.size());
  }
}

TEST(ImagesJpeg, CutShort) {
  const std::string rgb = Smooth(64, 256);
  const std::string file = WriteJpeg(64, 256, rgb, JCS_RGB);
  const std::string whole = ReadPicture(file).pixels;
  const Frame half = ReadPicture(file.substr(0, file.size() / 2));
  EXPECT_EQ(half.error, kImageOk);
  const size_t line = 64 * 3;
  size_t same = 0;
  while (same < 256 && half.pixels.compare(same * line, line, whole, same * line, line) == 0) ++same;
  EXPECT_GT(same, 80u) << "about half of the lines";
  EXPECT_LT(same, 180u);
  EXPECT_EQ(half.pixels.substr(255 * line), std::string(line, '\0')) << "the others stay as they were";
  // In several scans all lines are there, coarser.
  const std::string progressive = WriteJpeg(64, 256, rgb, JCS_RGB, true);
  const Frame coarse = ReadPicture(progressive.substr(0, progressive.size() / 2));
  EXPECT_EQ(coarse.error, kImageOk);
  EXPECT_NE(coarse.pixels.substr(255 * line), std::string(line, '\0'));
  // Damage in the header: no depth, so it is too small.
  EXPECT_EQ(ErrorOf(file.substr(0, 100)), kImageDepthTooSmall);
  EXPECT_EQ(ErrorOf(Bytes({0xFF, 0xD8, 0xFF, 0xE0}) + std::string(40, 'x')), kImageDepthTooSmall);
}

TEST(ImagesJpeg, TooManyScans) {
  // A picture in several scans whose last scan is repeated thousands of times ends all the same, with what it has.
  const std::string file = WriteJpeg(512, 512, std::string(512 * 512, 'g'), JCS_GRAYSCALE, true);
  const size_t last = file.rfind("\xFF\xDA");
  ASSERT_NE(last, std::string::npos);
  const std::string scan = file.substr(last, file.size() - 2 - last);
  std::string bomb = file.substr(0, file.size() - 2);
  for (int i = 0; i < 3000; ++i) bomb += scan;
  EXPECT_EQ(ErrorOf(bomb + "\xFF\xD9"), kImageOk);
}

TEST(ImagesJpeg, Save) {
  const std::string pixels = SwapChannels(Smooth(33, 17));
  const std::string file = SavePicture(ImageFilterId("JPEG"), pixels, 33, 17, 24, nullptr);
  EXPECT_EQ(file, WriteJpeg(33, 17, SwapChannels(pixels), JCS_RGB, false, 75)) << "the library's defaults";
  ImageError error = kImageOk;
  SavePicture(ImageFilterId("JPEG"), pixels, 33, 17, 32, nullptr, &error);
  EXPECT_EQ(error, kImageDepthNotWritable);
}

}  // namespace
}  // namespace vl

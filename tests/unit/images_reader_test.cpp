// The layer around the filters: who takes a stream, the reader's rules, conversion, and loading into surfaces.
#include <random>

#include "tests/unit/images_support.h"

namespace vl {
namespace {

using namespace testing;

std::string Tga(int type, int bits, int width, int height, std::string_view data, int descriptor = 0) {
  return Bytes({0, 0, type, 0, 0, 0, 0, 0, 0, 0, 0, 0}) + U16(uint32_t(width)) + U16(uint32_t(height)) +
         Bytes({bits, descriptor}) + std::string(data);
}

TEST(ImagesList, Prototypes) {
  const ImageFilterList list;
  struct Case {
    const char* id;
    uint32_t depths;
    bool stills, animations, savesStills, savesAnimations;
  } const cases[] = {
      {"BMP ", 0x7C, true, false, true, false},  {"JPEG", 0x20, true, false, true, false},
      {"PNG ", 0x24, true, false, true, false},  {"TGA ", 0x7C, true, false, false, false},
      {"ANM ", 0x7C, false, true, false, true},  {"FLI ", 0x04, false, true, false, false},
      {"PCX ", 0x24, true, false, false, false},
  };
  ASSERT_EQ(list.Count(), std::size(cases));
  std::vector<uint32_t> ids;
  for (uint32_t i = 0; i < std::size(cases); ++i) {
    const Case& c = cases[i];
    const ImageFilter& f = *list.At(i);
    uint32_t id = 0;
    std::memcpy(&id, c.id, 4);
    EXPECT_EQ(f.GetId(), id) << c.id;
    EXPECT_EQ(list.Find(id), &f) << c.id;
    EXPECT_EQ(list.Find(i), &f) << c.id;
    EXPECT_EQ(f.GetWritableDepths(), c.depths) << c.id;
    EXPECT_EQ(f.ReadsStills(), c.stills) << c.id;
    EXPECT_EQ(f.ReadsAnimations(), c.animations) << c.id;
    EXPECT_EQ(f.IsAnimation(), c.animations) << c.id;
    EXPECT_EQ(f.SavesStills(), c.savesStills) << c.id;
    EXPECT_EQ(f.SavesAnimations(), c.savesAnimations) << c.id;
    EXPECT_FALSE(f.GetName().empty() || f.GetDescription().empty() || f.GetExtensions().empty()) << c.id;
    ids.push_back(f.nameStringId);
    EXPECT_EQ(f.descriptionStringId, f.nameStringId + 100);
    EXPECT_EQ(f.extensionStringId, f.nameStringId - 100);
  }
  EXPECT_EQ(ids.front(), 3801u);
  EXPECT_EQ(ids[4], 3808u);
  EXPECT_EQ(list.Find(7), nullptr);
}

TEST(ImagesList, Detection) {
  Images images;
  // Fits PCX (it begins with 10) and TGA (type 2, 24 bits, a size): TGA is asked first.
  const std::string both = Bytes({10, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0}) + U16(1) + U16(1) + Bytes({24, 0}) +
                           std::string(10, 'i') + "bgr" + std::string(100, '\0');
  const std::string jpeg = Bytes({0xFF, 0xD8, 0xFF});
  struct Case {
    const char* name;
    std::string bytes;
    const char* id;  // null: none
    const char* asked;
  } const cases[] = {
      {"both", both, "TGA ", nullptr},
      {"both, asked for PCX", both, "PCX ", "PCX "},
      {"both, asked for PNG", both, "TGA ", "PNG "},
      {"bitmap", BmpFileHeader() + U32(40), "BMP ", nullptr},
      {"bare bitmap header", U32(12), "BMP ", nullptr},
      {"bitmap with another header", BmpFileHeader() + U32(108), nullptr, nullptr},
      {"jpeg", jpeg + Byte(0xE0), "JPEG", nullptr},
      {"jpeg, fourth byte too low", jpeg + Byte(0x80), nullptr, nullptr},
      {"png", "\x89PNG\r\n\x1A\n", "PNG ", nullptr},
      {"png, last byte", "\x89PNG\r\n\x1A\r", nullptr, nullptr},
      {"anm", "ANMV", "ANM ", nullptr},
      {"fli", U32(0) + U16(0xAF11), "FLI ", nullptr},
      {"flc", U32(0) + U16(0xAF12), "FLI ", nullptr},
      {"pcx", Bytes({10, 5, 1, 8}), "PCX ", nullptr},
      {"three bytes", "ANM", nullptr, nullptr},
      {"nothing", "", nullptr, nullptr},
      {"tga of type 4", Tga(4, 24, 1, 1, "bgr"), nullptr, nullptr},
      {"tga without width", Tga(2, 24, 0, 1, "bgr"), nullptr, nullptr},
      {"tga of 8 bits in colour", Tga(2, 8, 1, 1, "bgr"), nullptr, nullptr},
      {"tga of 16 bits in grey", Tga(3, 16, 1, 1, "bgr"), nullptr, nullptr},
      {"tga with indices and no map", Tga(1, 8, 1, 1, "bgr"), nullptr, nullptr},
      {"tga whose map ends at 257", Bytes({0, 1, 9, 1, 0, 0, 1, 24, 0, 0, 0, 0, 1, 0, 1, 0, 8, 0}), nullptr, nullptr},
      {"tga whose map ends at 256", Bytes({0, 1, 9, 1, 0, 255, 0, 24, 0, 0, 0, 0, 1, 0, 1, 0, 8, 0}), "TGA ", nullptr},
  };
  for (const Case& c : cases) {
    // In the middle of a stream, as a bank has it.
    const std::string bytes = "xyz" + c.bytes;
    CMemoryStream stream(bytes.data(), uint32_t(bytes.size()));
    stream.Seek(3);
    uint32_t asked = 0;
    if (c.asked) std::memcpy(&asked, c.asked, 4);
    const ImageFilter* found = images.filters.Detect(stream, asked);
    const uint32_t id = found ? found->GetId() : 0;
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(&id), found ? 4 : 0), c.id ? c.id : "") << c.name;
    EXPECT_EQ(stream.GetPosition(), 3) << c.name;
  }
}

TEST(ImagesReader, Errors) {
  Images images;
  MemoryFileSystem files;
  const std::string good = BmpInfo(2, 1, 24) + "abcdef" + "  ";
  files.Add("good.bmp", good);
  files.Add("bad.bmp", "nothing that anybody knows");
  ImageReader reader(images.filters);
  std::vector<uint8_t> bits(64);
  const ImageTarget target{bits.data(), 2, 1, 8, 24, nullptr, nullptr};
  EXPECT_EQ(reader.Read(target), kImageReaderClosed);
  EXPECT_EQ(reader.SeekFrame(0, target), kImageReaderClosed);
  EXPECT_EQ(reader.Save(files, "x", bits.data(), 1, 1, 24, 4, nullptr), kImageReaderClosed);
  EXPECT_EQ(reader.OpenFile(files, ""), kImageNoName);
  EXPECT_EQ(reader.OpenFile(files, "missing.bmp"), kImageCantOpen);
  EXPECT_EQ(reader.OpenFile(files, "bad.bmp"), kImageBadData);
  EXPECT_EQ(reader.OpenStream(nullptr), kImageNoName);
  EXPECT_FALSE(reader.IsOpen());

  ASSERT_EQ(reader.OpenFile(files, "good.bmp"), kImageOk);
  EXPECT_TRUE(reader.ownsStream);
  EXPECT_EQ(reader.OpenFile(files, "good.bmp"), kImageAlreadyOpen);
  EXPECT_EQ(reader.SeekFrame(0, target), kImageCantDo);
  const auto with = [&](auto change) {
    ImageTarget t = target;
    change(t);
    return reader.Read(t);
  };
  EXPECT_EQ(with([](ImageTarget& t) { t.width = 3; }), kImageWrongSize);
  EXPECT_EQ(with([](ImageTarget& t) { t.height = 2; }), kImageWrongSize);
  EXPECT_EQ(with([](ImageTarget& t) { t.depth = 12; }), kImageBadArgument);
  EXPECT_EQ(with([](ImageTarget& t) { t.depth = 8; }), kImageBadArgument) << "no palette anywhere";
  const PaletteRecord huge = Colours({}, 257);
  EXPECT_EQ(with([&](ImageTarget& t) { t.depth = 8, t.palette = &huge; }), kImageBadArgument);
  EXPECT_EQ(reader.Read(target), kImageOk);
  EXPECT_EQ(std::string(bits.begin(), bits.begin() + 6), "abcdef");
  EXPECT_EQ(reader.Read(target), kImagePastEnd) << "a still picture has one frame";
  reader.Close();
  EXPECT_EQ(reader.Read(target), kImageReaderClosed);

  // Saving.
  ASSERT_EQ(reader.OpenFilter(ImageFilterId("PNG ")), kImageOk);
  const auto save = [&](std::string_view name, const uint8_t* from, int w, int h, int depth) {
    return reader.Save(files, name, from, w, h, depth, 8, nullptr);
  };
  EXPECT_EQ(save("", bits.data(), 1, 1, 24), kImageBadArgument);
  EXPECT_EQ(save("x", nullptr, 1, 1, 24), kImageBadArgument);
  EXPECT_EQ(save("x", bits.data(), 0, 1, 24), kImageBadArgument);
  EXPECT_EQ(save("x", bits.data(), 1, 1, 15), kImageDepthNotWritable);
  EXPECT_EQ(save("x", bits.data(), 1, 1, 20), kImageDepthNotWritable);
  EXPECT_FALSE(files.exists("x")) << "nothing is made before the arguments are good";
  EXPECT_EQ(save("x", bits.data(), 1, 1, 8), kImageNoPalette);
  EXPECT_EQ(save("x", bits.data(), 1, 1, 24), kImageOk);
  reader.Close();
  for (const char* id : {"TGA ", "FLI ", "PCX ", "ANM "}) {
    uint32_t number = 0;
    std::memcpy(&number, id, 4);
    ASSERT_EQ(reader.OpenFilter(number), kImageOk);
    const PaletteRecord greys = Greys();
    EXPECT_EQ(reader.Save(files, "y", bits.data(), 1, 1, 8, 8, &greys), kImageCantDo) << id;
    reader.Close();
  }
  EXPECT_EQ(reader.OpenFilter(99), kImageBadArgument);
  // A full disk.
  MemoryFileSystem small(100);
  ASSERT_EQ(reader.OpenFilter(ImageFilterId("BMP ")), kImageOk);
  std::vector<uint8_t> large(300000);
  EXPECT_EQ(reader.Save(small, "x", large.data(), 100, 100, 24, 300, nullptr), kImageWriteFailed);
  reader.Close();
  for (const char* id : {"PNG ", "JPEG"}) {
    uint32_t number = 0;
    std::memcpy(&number, id, 4);
    ASSERT_EQ(reader.OpenFilter(number), kImageOk);
    EXPECT_EQ(reader.Save(small, "x", large.data(), 300, 300, 24, 900, nullptr), kImageWriteFailed) << id;
    reader.Close();
  }
}

TEST(ImagesReader, NoMemory) {
  // Every way through a reader with a budget that ends somewhere inside it.
  std::vector<uint8_t> noise(64 * 64 * 3);
  std::mt19937 random(3);
  for (uint8_t& b : noise) b = uint8_t(random());
  const std::string pixels(noise.begin(), noise.end());
  const std::string files[] = {
      SavePicture(ImageFilterId("PNG "), pixels, 64, 64, 24, nullptr),
      SavePicture(ImageFilterId("JPEG"), pixels, 64, 64, 24, nullptr),
      SavePicture(ImageFilterId("BMP "), pixels, 64, 64, 24, nullptr),
  };
  for (const std::string& file : files) {
    ASSERT_FALSE(file.empty());
    int failed = 0;
    for (uint64_t limit = 0; limit < 200000; limit += limit / 16 + 1) {
      MemoryBudget budget(limit);
      {
        const ImageFilterList filters(&budget);
        ImageReader reader(filters);
        CMemoryStream stream(file.data(), uint32_t(file.size()));
        Target target(64, 64, 16);
        if (reader.OpenStream(&stream) || reader.Read(target.target)) ++failed;
      }
      EXPECT_EQ(budget.Used(), 0u) << limit;
    }
    EXPECT_GT(failed, 0);
  }
}

TEST(ImagesConvert, FromIndices) {
  // Index 0 is a colour like any other; a colour that isn't black never becomes pixel 0.
  const std::string file =
      BmpInfo(4, 1, 8, 0, 4) + Bytes({10, 20, 30, 9, 0, 0, 0, 9, 3, 2, 1, 9, 255, 255, 255, 9}) + Bytes({0, 1, 2, 3});
  struct Case {
    int depth;
    const char* pixels;
  } const cases[] = {
      {15, "41 0c 00 00 01 00 ff 7f"},
      {16, "a1 18 00 00 01 00 ff ff"},
      {24, "0a 14 1e 00 00 00 03 02 01 ff ff ff"},
      {32, "0a 14 1e 00 00 00 00 00 03 02 01 00 ff ff ff 00"},
  };
  for (const Case& c : cases) EXPECT_EQ(Hex(ReadPicture(file, c.depth).pixels), c.pixels) << c.depth;

  // To other indices: the least sum of absolute differences, the first of equal ones.
  const auto remap = [&](const std::vector<Colour>& colours) {
    const PaletteRecord target = Colours(colours, uint16_t(colours.size()));
    return Hex(ReadPicture(file, 8, &target).pixels);
  };
  EXPECT_EQ(remap({MakeColour(9, 9, 9)}), "00 00 00 00") << "one entry serves all";
  EXPECT_EQ(remap({MakeColour(40, 20, 10), MakeColour(30, 20, 20), 0, 0, MakeColour(255, 255, 255)}), "00 02 02 04");
  // 60 + 0 + 0 against 20 + 20 + 20: equal, so the first. By squares the second would be nearer.
  EXPECT_EQ(remap({MakeColour(90, 20, 10), MakeColour(50, 40, 30)}).substr(0, 2), "00");
}

TEST(ImagesConvert, ToIndicesByKey) {
  const auto convert = [](const std::string& pixels24, const PaletteRecord& target) {
    const int width = int(pixels24.size() / 3);
    const std::string padding(size_t(-3 * width & 3), '\0');
    return Hex(ReadPicture(BmpInfo(width, 1, 24) + pixels24 + padding, 8, &target).pixels);
  };
  // Entries write their own cells, the later over the earlier: 1 and 2 share a key.
  const PaletteRecord shared = Colours({0, MakeColour(8, 8, 8), MakeColour(10, 9, 9), MakeColour(200, 0, 0)});
  EXPECT_EQ(convert(Bytes({8, 8, 8}), shared), "02");
  // The first pixel of a key decides for all: (15,11,15) is nearer to 1, (8,8,8) would be nearer to 2.
  const PaletteRecord two = Colours({0, MakeColour(20, 20, 20), MakeColour(7, 7, 7)});
  EXPECT_EQ(convert(Bytes({15, 11, 15, 8, 8, 8}), two), "01 01");
  EXPECT_EQ(convert(Bytes({8, 8, 8, 15, 11, 15}), two), "02 02");
  // The mark of an unknown cell is searched again, pixel for pixel.
  PaletteRecord marked = Colours({0});
  marked.entries[253] = {20, 20, 20, 0};
  marked.entries[254] = {7, 7, 7, 0};
  for (size_t i = 1; i < 253; ++i) marked.entries[i] = {255, 255, 255, 0};
  marked.entries[255] = {255, 255, 255, 0};
  EXPECT_EQ(convert(Bytes({15, 11, 15, 15, 11, 15, 8, 8, 8, 15, 11, 15}), marked), "fd fd fe fe");

  // Narrow pixels: the key is the colour. 0x7FFF is (248, 252 less its low bit, 248).
  const PaletteRecord bright = Colours({0, MakeColour(248, 248, 248), MakeColour(255, 255, 255)});
  EXPECT_EQ(Hex(ReadPicture(BmpInfo(1, 1, 16) + U16(0x7FFF) + U16(0), 8, &bright).pixels), "01");
  const std::string masks = U32(0xF800) + U32(0x7E0) + U32(0x1F);
  EXPECT_EQ(Hex(ReadPicture(BmpInfo(2, 1, 16, 3) + masks + U16(0xFFFF) + U16(0xF800), 8, &bright).pixels), "02 00");
}

TEST(ImagesConvert, BetweenDepths) {
  // As surfaces convert: what isn't 0 stays so.
  const std::string wide = BmpInfo(3, 1, 32) + U32(0) + U32(0x00000001) + U32(0x00F8FCF8);
  EXPECT_EQ(Hex(ReadPicture(wide, 16).pixels), "00 00 01 00 ff ff");
  EXPECT_EQ(Hex(ReadPicture(wide, 15).pixels), "00 00 01 00 ff 7f");
  EXPECT_EQ(Hex(ReadPicture(wide, 24).pixels), "00 00 00 01 00 00 f8 fc f8");
  const std::string narrow = BmpInfo(2, 1, 16) + U16(0x7FFF) + U16(0x0001);
  EXPECT_EQ(Hex(ReadPicture(narrow, 16).pixels), "df ff 01 00");
  EXPECT_EQ(Hex(ReadPicture(narrow, 32).pixels), "f8 f8 f8 00 08 00 00 00");
}

TEST(ImagesLoad, DepthPaletteAndSize) {
  Gfx gfx;
  const ImageFilterList filters(&gfx.budget);
  const auto load = [&](cSurface& s, const std::string& file, uint32_t flags, std::vector<uint8_t>* mask = nullptr) {
    CMemoryStream stream(file.data(), uint32_t(file.size()));
    return LoadImageIntoSurface(filters, gfx.library, s, stream, flags, mask);
  };
  const std::string indexed = BmpInfo(2, 1, 8, 0, 2) + Bytes({1, 2, 200, 0, 3, 250, 4, 0, 0, 1, 0, 0});
  const std::string wide = BmpInfo(2, 1, 24) + Bytes({1, 2, 3, 200, 100, 50, 0, 0});

  cSurface s = gfx.Make(5, 5, 16);
  EXPECT_TRUE(load(s, indexed, 0));
  EXPECT_EQ(s.impl->depth, 8);
  EXPECT_EQ(s.impl->width, 2);
  EXPECT_EQ(Pixels(*s.impl), (std::vector<uint32_t>{0, 1}));
  EXPECT_EQ(s.impl->PaletteColor(1), MakeColour(4, 250, 3)) << "the picture's palette";

  s = gfx.Make(5, 5, 16);
  EXPECT_TRUE(load(s, indexed, kLoadKeepDepth));
  EXPECT_EQ(s.impl->depth, 16);
  EXPECT_EQ(Pixels(*s.impl), (std::vector<uint32_t>{0xC800, 0x07C0}));

  s = gfx.Make(2, 1, 8);
  const uint8_t* bits = s.impl->rawBits;
  EXPECT_TRUE(load(s, indexed, kLoadKeepDepth | kLoadKeepPalette));
  EXPECT_EQ(s.impl->rawBits, bits) << "a surface that fits stays";
  EXPECT_EQ(s.impl->GetPalette(), gfx.library.Palettes().GetDefaultPalette());
  // The nearest of the default palette are among its pure colours.
  EXPECT_EQ(s.impl->PaletteColor(int(RawAt(*s.impl, 1, 0))) & 0xFF00, 0xFF00u);

  s = gfx.Make(1, 1, 8);
  EXPECT_TRUE(load(s, wide, kLoadKeepDepth)) << "no palette but the surface's own";
  EXPECT_EQ(s.impl->depth, 8);

  cSurface empty;
  EXPECT_TRUE(load(empty, wide, 0));
  EXPECT_EQ(empty.impl->depth, 24);
  EXPECT_EQ(Pixels(*empty.impl), (std::vector<uint32_t>{0x030201, 0x3264C8}));
  cSurface none;
  EXPECT_FALSE(load(none, wide, kLoadKeepDepth)) << "no depth to keep";

  // A mask only for alpha.
  std::vector<uint8_t> mask = {1};
  EXPECT_TRUE(load(s, wide, 0, &mask));
  EXPECT_TRUE(mask.empty());
  EXPECT_TRUE(load(s, Tga(2, 32, 2, 2, "bgrAbgrBbgrCbgrD", 8), 0, &mask));
  EXPECT_EQ(std::string(mask.begin(), mask.end()), "CDAB") << "as the lines lie in the surface";
  EXPECT_EQ(s.impl->depth, 32);

  EXPECT_FALSE(load(s, BmpInfo(0, 1, 24) + "abcd", 0));
  EXPECT_FALSE(load(s, "no picture", 0));
  EXPECT_FALSE(load(s, BmpInfo(4, 1, 8, 1, 1) + "bgr " + Bytes({0, 4, 1}), 0)) << "cut in its pixels";
}

}  // namespace
}  // namespace vl

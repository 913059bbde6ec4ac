// The pictures of banks: every combination of depth, palette and mask, and what the packer stores.
#include "gfx2d/images/encode_image_element.h"
#include "gfx2d/images/image_banks.h"
#include "tests/unit/images_support.h"

namespace vl {
namespace {

using namespace testing;
using test::Bank;
using test::Deflate;
using test::Newest;
using test::OpenApp;
using test::Slot;

std::string ImageHead(int32_t palette, uint32_t marker, uint32_t w, uint32_t h, uint32_t depth, uint32_t flags) {
  return U16(0xFFFF) + U16(5) + U32(uint32_t(palette)) + U16(marker) + U16(w) + U16(h) + U16(depth) + U32(flags);
}

// A part's header with a palette; flag 1 puts it in use.
std::string PartHeader(const PaletteRecord& palette, bool inUse) {
  std::string stored;
  for (const PaletteEntry& e : palette.entries) stored += Bytes({e.red, e.green, e.blue, 0});
  return test::Short("P") + U32(inUse) + stored + U32(0) + U16(100) + U32(0xFFFFFF) + U16(1) + U16(1) + U16(1) + U16(1);
}

std::string StoredRecord(const PaletteRecord& palette) {
  std::string stored;
  for (const PaletteEntry& e : palette.entries) stored += Bytes({e.red, e.green, e.blue, 0});
  return stored;
}

struct App {
  App(const std::vector<Slot>& slots, const std::vector<PaletteRecord>& palettes, const PaletteRecord& own, bool inUse)
      : open(File(slots, palettes, own, inUse)), bank(static_cast<CImageBank*>(open.app.GetBank(1))) {}
  static std::string File(const std::vector<Slot>& slots, const std::vector<PaletteRecord>& palettes,
                          const PaletteRecord& own, bool inUse) {
    const std::string measured = Bank(1, "pics", slots, U32(0));
    const uint32_t field = 4 + 2 + 4 + 4;
    std::string bytes = Bank(1, "pics", slots, U32(palettes.empty() ? 0 : uint32_t(measured.size()) - field));
    if (!palettes.empty()) bytes += U32(uint32_t(palettes.size()));
    for (const PaletteRecord& p : palettes) bytes += StoredRecord(p);
    return Newest(test::Part(test::Chunk(0x1000, PartHeader(own, inUse)) + test::InlineBank(bytes)));
  }
  OpenApp open;
  CImageBank* bank;
};

// Colours in the order that the screen wants already, but for `extra` from 10 on.
PaletteRecord Ordered(const std::vector<Colour>& extra) {
  PaletteRecord p = DefaultPaletteRecord();
  for (size_t i = 0; i < extra.size(); ++i) {
    p.entries[10 + i] = {uint8_t(RedOf(extra[i])), uint8_t(GreenOf(extra[i])), uint8_t(BlueOf(extra[i])), 0};
  }
  return p;
}

// The colours of a picture, as 0xRRGGBB.
std::vector<uint32_t> Shown(const cSurface& s) {
  std::vector<uint32_t> colours;
  for (int y = 0; y < s.impl->height; ++y) {
    for (int x = 0; x < s.impl->width; ++x) {
      Colour c = 0;
      s.GetPixel(x, y, c);
      colours.push_back(SwapRedBlue(c));
    }
  }
  return colours;
}

TEST(ImagesBanks, DepthsPalettesAndMasks) {
  const Colour orange = MakeColour(250, 130, 10);
  const Colour violet = MakeColour(130, 10, 250);
  const PaletteRecord own = Ordered({0, violet, orange});     // the part's: violet is 11, orange 12
  const PaletteRecord stored = Ordered({orange, violet, 0});  // the element's: orange is 10, violet 11
  const std::string mask = Bytes({1, 2, 3, 4});
  // Orange, violet / violet, transparent: at every depth, lines of whole words.
  const std::string pixels[5] = {
      Bytes({10, 11, 0, 0, 11, 0, 0, 0}),
      U16(0x7E01) + U16(0x403F) + U16(0x403F) + U16(0),
      U16(0xFC01) + U16(0x805F) + U16(0x805F) + U16(0),
      Bytes({10, 130, 250, 250, 10, 130, 0, 0, 250, 10, 130, 0, 0, 0, 0, 0}),
      U32(0xFA820A) + U32(0x820AFA) + U32(0x820AFA) + U32(0),
  };
  std::vector<Slot> slots;
  for (int i = 0; i < 5; ++i) {
    const std::string& p = pixels[i];
    const uint32_t depth = uint32_t(kDepths[i]);
    slots.push_back({"raw", ImageHead(i == 0 ? 0 : -1, 0, 2, 2, depth, 0) + U32(0) + p});
    slots.push_back({"masked", ImageHead(i == 0 ? 0 : -1, 7, 2, 2, depth, 1) + U32(uint32_t(Deflate(p).size())) +
                                   Deflate(p) + U32(uint32_t(Deflate(mask).size())) + Deflate(mask)});
    slots.push_back({"raw mask", ImageHead(i == 0 ? 0 : -1, 7, 2, 2, depth, 1) + U32(0) + p + U32(0) + mask});
  }
  for (const bool use : {false, true}) {
    App app(slots, {stored}, own, use);
    ASSERT_NE(app.bank, nullptr);
    const uint64_t before = app.open.app.Budget().Used();
    for (const int depth : kDepths) {
      Gfx gfx;
      const ImageFilterList filters(&gfx.budget);
      ImageBanks banks(filters, gfx.library, depth);
      for (uint32_t i = 0; i < slots.size(); ++i) {
        const int storedDepth = kDepths[i / 3];
        SCOPED_TRACE(std::to_string(storedDepth) + " shown at " + std::to_string(depth) + (use ? " in own" : ""));
        BankImage* image = banks.Load(*app.bank, i);
        ASSERT_NE(image, nullptr) << app.open.app.lastBankError;
        EXPECT_EQ(image->surface.impl->depth, depth);
        EXPECT_EQ(image->hotX, -1);
        EXPECT_EQ(image->hotY, 5);
        EXPECT_EQ(std::string(image->mask.begin(), image->mask.end()), i % 3 ? mask : "");
        EXPECT_EQ(RawAt(*image->surface.impl, 1, 1), 0u) << "transparent stays so";
        const std::vector<uint32_t> shown = Shown(image->surface);
        if (depth == 8) {
          // Deeper pictures fall to the part's colours whether in use or not, as they have none.
          const bool inOwn = use || storedDepth > 8;
          EXPECT_EQ(RawAt(*image->surface.impl, 0, 0), inOwn ? 12u : 10u);
          EXPECT_EQ(RawAt(*image->surface.impl, 1, 0), 11u);
          const PaletteRef expected = gfx.library.Palettes().InternPalette(inOwn ? own : stored);
          EXPECT_EQ(image->surface.impl->PaletteColor(12), expected->ColourAt(12));
        } else {
          const int least = std::min(depth, storedDepth == 8 ? 24 : storedDepth);
          const uint32_t keep = least >= 24 ? 0xFFFFFF : least == 16 ? 0xF8FCF8 : 0xF8F8F8;
          // 15 and 16 keep the same five bits of these colours.
          EXPECT_EQ(shown[0] & keep & 0xF8F8F8, 0xFA820Au & 0xF8F8F8);
          EXPECT_EQ(shown[1] & 0xF8F8F8, 0x820AFAu & 0xF8F8F8);
          if (least >= 24) {
            EXPECT_EQ(shown[0], 0xFA820Au);
          }
        }
        EXPECT_EQ(banks.Load(*app.bank, i), image) << "kept";
      }
      EXPECT_EQ(app.open.app.Budget().Used(), before) << "the stored bodies are dropped again";
      banks.Unload(*app.bank, 0);
      EXPECT_EQ(banks.Find(*app.bank, 0), nullptr);
      EXPECT_NE(banks.Find(*app.bank, 1), nullptr);
      banks.Forget(*app.bank);
      EXPECT_EQ(banks.Find(*app.bank, 1), nullptr);
    }
  }
}

TEST(ImagesBanks, ArrangedPaletteMovesPixels) {
  // A palette in no order: its white at 1 goes to the end, where the screen has it.
  PaletteRecord mixed;
  for (size_t i = 0; i < 256; ++i) mixed.entries[i] = {uint8_t(i), uint8_t(255 - i), 60, 0};
  mixed.entries[1] = {255, 255, 255, 0};
  App app({{"a", ImageHead(0, 0, 4, 1, 8, 0) + U32(0) + Bytes({0, 1, 100, 200})}}, {mixed}, Greys(), false);
  Gfx gfx;
  const ImageFilterList filters(&gfx.budget);
  ImageBanks banks(filters, gfx.library, 8);
  BankImage* image = banks.Load(*app.bank, 0);
  ASSERT_NE(image, nullptr);
  EXPECT_EQ(image->surface.impl->GetPalette(), banks.GetArrangedPalette(*app.bank, 0));
  EXPECT_EQ(RawAt(*image->surface.impl, 1, 0), 255u);
  EXPECT_EQ(Shown(image->surface)[2], 0x649B3Cu);
  EXPECT_EQ(RawAt(*image->surface.impl, 1, 0), 255u);
  EXPECT_EQ(banks.GetPalette(*app.bank, 0), banks.GetPalette(*app.bank, 0));
  EXPECT_FALSE(banks.GetPalette(*app.bank, 1));
  EXPECT_EQ(app.open.app.lastBankError, kAppBankHeader);
  EXPECT_FALSE(banks.GetArrangedPalette(*app.bank, -1));
  EXPECT_EQ(app.open.app.lastBankError, kAppBankHeader);
}

TEST(ImagesBanks, FilesAndFailures) {
  const std::string picture = BmpInfo(2, 1, 24) + Bytes({1, 2, 3, 200, 100, 50, 0, 0});
  const std::string alpha = Bytes({0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0}) + U16(1) + U16(1) + Bytes({32, 8}) + "bgrA";
  const std::string raw = Bytes({1, 2, 3, 4});
  const std::vector<Slot> slots = {
      {"file", ImageHead(-1, 0xFFFF, 9, 9, 8, 0) + picture},
      {"alpha", ImageHead(-1, 0xFFFF, 0, 0, 0, 0) + alpha},
      {"no picture", ImageHead(-1, 0xFFFF, 2, 1, 24, 0) + "no picture"},
      {"damaged", ImageHead(-1, 0, 4, 1, 8, 0) + U32(4) + "junk"},
      {"33 bits", ImageHead(-1, 0, 1, 1, 33, 0) + U32(0) + std::string(8, 'x')},
      {"0 bits", ImageHead(-1, 0, 4, 1, 0, 0) + U32(0)},
      {"palette 7", ImageHead(7, 0, 4, 1, 8, 0) + U32(0) + raw},
      {"damaged mask", ImageHead(-1, 0, 4, 1, 8, 1) + U32(0) + raw + U32(3) + "bad"},
      {"too large", ImageHead(-1, 0, 40000, 1, 8, 0) + U32(0) + std::string(40000, 'x')},
      {"nothing", ImageHead(-1, 0, 0, 0, 8, 0) + U32(0)},
      {.name = "empty", .empty = true},
  };
  App app(slots, {}, Greys(), false);
  Gfx gfx;
  const uint64_t before = gfx.budget.Used();
  {
    const ImageFilterList filters(&gfx.budget);
    ImageBanks banks(filters, gfx.library, 32);
    ASSERT_TRUE(banks.Load(*app.bank, 0));
    EXPECT_EQ(Shown(banks.Load(*app.bank, 0)->surface), (std::vector<uint32_t>{0x030201, 0x3264C8}));
    BankImage* masked = banks.Load(*app.bank, 1);
    ASSERT_TRUE(masked);
    EXPECT_EQ(std::string(masked->mask.begin(), masked->mask.end()), "A");
    const std::pair<uint32_t, uint32_t> failures[] = {{2, kAppBadStream},   {3, kAppBadStream},  {4, kAppNoPixels},
                                                      {5, kAppNoPixels},    {6, kAppBankHeader}, {7, kAppBadStream},
                                                      {8, kAppOutOfMemory}, {10, kAppOk},        {99, kAppOk}};
    for (const auto& [index, error] : failures) {
      EXPECT_EQ(banks.Load(*app.bank, index), nullptr) << index;
      EXPECT_EQ(app.open.app.lastBankError, error) << index;
    }
    ASSERT_TRUE(banks.Load(*app.bank, 9)) << "no size becomes one pixel";
    EXPECT_EQ(banks.Load(*app.bank, 9)->surface.impl->width, 1);

    // Into a surface of the caller's, which keeps its depth; a failure leaves it alone.
    cSurface s = gfx.Make(7, 7, 16);
    std::vector<uint8_t> mask;
    EXPECT_FALSE(banks.LoadInto(*app.bank, 2, s, &mask));
    EXPECT_EQ(s.impl->width, 7);
    EXPECT_TRUE(banks.LoadInto(*app.bank, 0, s, &mask));
    EXPECT_EQ(s.impl->depth, 16);
    EXPECT_EQ(s.impl->width, 2);
    EXPECT_TRUE(mask.empty());
    cSurface fresh;
    EXPECT_TRUE(banks.LoadInto(*app.bank, 1, fresh, &mask));
    EXPECT_EQ(fresh.impl->depth, 32);
    EXPECT_EQ(mask.size(), 1u);
    EXPECT_TRUE(banks.SetDepth(*app.bank, 15));
    EXPECT_FALSE(banks.SetDepth(*app.bank, 12));
    banks.Unload(*app.bank, 0);
    EXPECT_EQ(banks.Load(*app.bank, 0)->surface.impl->depth, 15);
  }
  EXPECT_LE(gfx.budget.Used(), before);
}

TEST(ImagesBanks, WhatThePackerStoresComesBack) {
  Gfx gfx;
  const ImageFilterList filters(&gfx.budget);
  const std::string alpha =
      Bytes({0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0}) + U16(3) + U16(2) + Bytes({32, 0x20}) + "bgrAxyz0...1bgr2bgr3bgr4";
  const auto encode = [&](const std::string& file, int depth, bool mask, EncodedImage& image) {
    return EncodeImageElement(filters, gfx.library, {reinterpret_cast<const uint8_t*>(file.data()), file.size()}, depth,
                              nullptr, mask, &image);
  };
  for (const int depth : kDepths) {
    EncodedImage image;
    ASSERT_EQ(encode(alpha, depth, true, image), kImageOk);
    EXPECT_EQ(image.width, 3);
    EXPECT_EQ(image.height, 2);
    EXPECT_EQ(image.depth, depth);
    EXPECT_EQ(std::string(image.mask.begin(), image.mask.end()), "A01234");
    EXPECT_EQ(image.pixels.size(), CImageElement::StoredPitch(3, uint32_t(depth)) * 2);
    EXPECT_EQ(image.palette.has_value(), depth == 8);
    const std::string body = ImageHead(-1, 0, 3, 2, uint32_t(depth), 1) + U32(0) +
                             std::string(image.pixels.begin(), image.pixels.end()) + U32(0) +
                             std::string(image.mask.begin(), image.mask.end());
    App app({{"a", body}}, {}, DefaultPaletteRecord(), false);
    ImageBanks banks(filters, gfx.library, depth);
    BankImage* back = banks.Load(*app.bank, 0);
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(back->mask, image.mask);
    EXPECT_EQ(std::memcmp(back->surface.impl->rawBits, image.pixels.data(), image.pixels.size()), 0);
  }
  EncodedImage image;
  EXPECT_EQ(encode("no picture", 0, false, image), kImageBadData);
  EXPECT_EQ(encode(alpha, 12, false, image), kImageBadArgument);
  EXPECT_EQ(encode(BmpInfo(1, 1, 24) + "abc", 0, true, image), kImageOk);
  EXPECT_EQ(image.depth, 24);
  EXPECT_TRUE(image.mask.empty());
}

}  // namespace
}  // namespace vl

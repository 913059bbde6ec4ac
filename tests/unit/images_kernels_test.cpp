// The inner loops of converting lines, against the plain rules, at every length and alignment.
#include <random>

#include "gfx2d/images/line_kernels.h"
#include "tests/unit/images_support.h"

namespace vl {
namespace {

using namespace testing;

TEST(ImagesKernels, LinesOfEveryLength) {
  std::mt19937 random(5);
  for (int32_t pixels = 0; pixels < 70; ++pixels) {
    for (size_t shift = 0; shift < 4; ++shift) {
      std::vector<uint8_t> words(size_t(pixels) * 4 + shift + 1, 0x5A);
      std::vector<uint8_t> rgb(size_t(pixels) * 3 + shift + 1, 0x5A);
      for (int32_t i = 0; i < pixels; ++i) {
        uint32_t w = random();
        if (random() % 3 == 0) w &= 0xFF000000;  // transparent but for the byte that doesn't count
        if (random() % 3 == 0) w &= 0xFF070303;  // dark
        StoreWord(words.data() + shift + i * 4, w);
        for (size_t c = 0; c < 3; ++c) rgb[shift + size_t(i) * 3 + c] = uint8_t(random());
      }
      const uint8_t* source = words.data() + shift;
      std::vector<uint8_t> narrow(size_t(pixels) * 2 + 1, 0xA5);
      std::vector<uint16_t> keys(size_t(pixels) + 1, 0xA5A5);
      std::vector<uint8_t> spread(size_t(pixels) * 4 + 1, 0xA5);
      const auto word = [&](int32_t i) { return LoadWord<uint32_t>(source + i * 4) & 0xFFFFFF; };
      for (const bool sixteen : {true, false}) {
        (sixteen ? kernels::WordsTo16 : kernels::WordsTo15)(source, narrow.data(), pixels);
        for (int32_t i = 0; i < pixels; ++i) {
          const Colour c = SwapRedBlue(word(i));
          ASSERT_EQ(LoadWord<uint16_t>(narrow.data() + i * 2),
                    sixteen ? PixelFormat<16>::FromColour(c) : PixelFormat<15>::FromColour(c));
        }
        ASSERT_EQ(narrow.back(), 0xA5);
      }
      kernels::WordsToKeys(source, keys.data(), pixels);
      for (int32_t i = 0; i < pixels; ++i) ASSERT_EQ(keys[size_t(i)], Narrow16(SwapRedBlue(word(i))));
      ASSERT_EQ(keys.back(), 0xA5A5);
      kernels::RgbToWords(rgb.data() + shift, spread.data(), pixels);
      for (int32_t i = 0; i < pixels; ++i) {
        const uint8_t* p = rgb.data() + shift + i * 3;
        ASSERT_EQ(LoadWord<uint32_t>(spread.data() + i * 4), uint32_t(p[0] << 16 | p[1] << 8 | p[2]));
      }
      ASSERT_EQ(spread.back(), 0xA5);
      const std::vector<uint8_t> before = words;
      kernels::ClearHighBytes(words.data() + shift, pixels);
      for (int32_t i = 0; i < pixels; ++i) {
        ASSERT_EQ(LoadWord<uint32_t>(source + i * 4), LoadWord<uint32_t>(before.data() + shift + i * 4) & 0xFFFFFF);
      }
      ASSERT_EQ(words.back(), 0x5A);
    }
  }
}

TEST(ImagesKernels, NearestColourIsTheFirstOfTheLeast) {
  std::mt19937 random(9);
  for (int round = 0; round < 4000; ++round) {
    // Few different colours, so that many are equally far.
    uint8_t channels[3][256];
    for (auto& channel : channels) {
      for (uint8_t& v : channel) v = uint8_t(random() % (round % 2 ? 4 : 256) * (round % 2 ? 60 : 1));
    }
    const int32_t count = round % 3 ? 256 : int32_t(random() % 256) + 1;
    const uint8_t colour[3] = {uint8_t(random()), uint8_t(random()), uint8_t(random())};
    int32_t best = 0;
    int least = INT32_MAX;
    for (int32_t i = 0; i < count; ++i) {
      int distance = 0;
      for (size_t c = 0; c < 3; ++c) distance += std::abs(int(channels[c][i]) - colour[c]);
      if (distance < least) {
        least = distance;
        best = i;
      }
    }
    ASSERT_EQ(kernels::NearestColour(channels, count, colour[0], colour[1], colour[2]), best) << count;
  }
}

}  // namespace
}  // namespace vl

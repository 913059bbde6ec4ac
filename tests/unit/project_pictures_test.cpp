// Pictures on their way into banks: what the packer makes of picture files.
#include <gtest/gtest.h>

#include "gfx2d/images/image_reader.h"
#include "gfx2d/surface_library.h"
#include "tools/project/pictures.h"

namespace vl {
namespace {

// A bottom-up bitmap of one line: blue, green, red bytes of each pixel.
std::string Bmp24(const std::vector<uint32_t>& colours) {
  const auto width = static_cast<uint8_t>(colours.size());
  std::string file = {'B', 'M', 0, 0, 0, 0, 0, 0, 0, 0,  54, 0, 0, 0, 40, 0, 0, 0, static_cast<char>(width),
                      0,   0,   0, 1, 0, 0, 0, 1, 0, 24, 0};
  file.append(24, '\0');
  for (const uint32_t c : colours) {
    for (int shift = 0; shift < 24; shift += 8) file += static_cast<char>(c >> shift);
  }
  file.append((4 - file.size() % 4 + 54 % 4) % 4, '\0');
  return file;
}

std::vector<uint32_t> Words(const std::string& bytes, size_t bytesPerPixel, size_t count) {
  std::vector<uint32_t> words;
  for (size_t i = 0; i < count; ++i) {
    uint32_t w = 0;
    for (size_t k = 0; k < bytesPerPixel; ++k) {
      w |= static_cast<uint32_t>(static_cast<uint8_t>(bytes[i * bytesPerPixel + k])) << (k * 8);
    }
    words.push_back(w);
  }
  return words;
}

TEST(ProjectPicturesTest, AKeyBecomesTheTransparentPixelAndBlackStaysVisible) {
  const std::string file = Bmp24({0xFF00FF, 0x000000, 0x123456, 0x010203});
  PictureOptions options;
  options.transparentColour = 0xFF00FF;
  ImageModel image;
  std::optional<StoredPalette> palette;
  std::string error;
  ASSERT_TRUE(StorePicture(file, options, &image, &palette, &error)) << error;
  EXPECT_EQ(image.marker, 0);
  EXPECT_EQ(image.depth, 24);
  EXPECT_EQ(Words(image.pixels.bytes, 3, 4), (std::vector<uint32_t>{0, 0x080000, 0x123456, 0x010203}));
  EXPECT_FALSE(palette);

  options.depth = 16;
  ASSERT_TRUE(StorePicture(file, options, &image, &palette, &error)) << error;
  EXPECT_EQ(image.depth, 16);
  EXPECT_EQ(Words(image.pixels.bytes, 2, 4), (std::vector<uint32_t>{0, 0x0800, 0x11AA, 1}));

  options.depth = 8;
  ASSERT_TRUE(StorePicture(file, options, &image, &palette, &error)) << error;
  ASSERT_TRUE(palette);
  EXPECT_EQ(image.pixels.bytes[0], 0);
  EXPECT_NE(image.pixels.bytes[1], 0);

  // Without a key the pixels are the file's, black too.
  options = {};
  ASSERT_TRUE(StorePicture(file, options, &image, &palette, &error)) << error;
  EXPECT_EQ(Words(image.pixels.bytes, 3, 4), (std::vector<uint32_t>{0xFF00FF, 0, 0x123456, 0x010203}));

  EXPECT_FALSE(StorePicture("no picture", options, &image, &palette, &error));
  EXPECT_NE(error.find("damaged"), std::string::npos);
}

TEST(ProjectPicturesTest, PicturesBecomeAnAnimation) {
  AnimationOptions options;
  options.frameTimeMs = 70;
  options.loopCount = 0;
  std::string animation;
  std::string error;
  const std::vector<std::string> pictures = {Bmp24({0x112233, 0x445566}), Bmp24({0x112233, 0x445566}),
                                             Bmp24({0x112233, 0xABCDEF})};
  ASSERT_TRUE(MakeAnimation(pictures, options, &animation, &error)) << error;

  MemoryBudget budget;
  SurfaceLibrary library(&budget);
  ImageFilterList filters(&budget);
  CMemoryStream stream(animation.data(), static_cast<uint32_t>(animation.size()));
  ImageReader reader(filters);
  ASSERT_EQ(reader.OpenStream(&stream), kImageOk);
  EXPECT_EQ(reader.GetFrameCount(), 3) << "a repeated picture is a frame of its own";
  EXPECT_EQ(reader.GetTotalTime(), 210);
  EXPECT_EQ(reader.GetLoopCount(), 0);
  uint8_t pixels[8] = {};
  const ImageTarget target = {pixels, 2, 1, 8};
  ASSERT_EQ(reader.SeekFrame(2, target), kImageOk);
  EXPECT_EQ(Words(std::string(pixels, pixels + 6), 3, 2), (std::vector<uint32_t>{0x112233, 0xABCDEF}));

  EXPECT_FALSE(MakeAnimation({pictures[0], Bmp24({1, 2, 3})}, options, &animation, &error));
  EXPECT_NE(error.find("frame 2"), std::string::npos) << error;
  EXPECT_NE(error.find("3 by 1"), std::string::npos) << error;
}

}  // namespace
}  // namespace vl

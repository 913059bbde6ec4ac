// What the tests of the surface library share: surfaces of every depth and kind, random pixels of a fixed seed,
// and pictures as rows of letters.
#pragma once

#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "gfx2d/pixel_format.h"
#include "gfx2d/surface.h"
#include "gfx2d/surface_library.h"
#include "gfx2d/wrap_surface.h"

namespace vl::testing {

struct Gfx {
  MemoryBudget budget{uint64_t{256} << 20};
  SurfaceLibrary library{&budget};

  cSurface Make(int width, int height, int depth) {
    cSurface s;
    s.Create(width, height, library.FindPrototype(depth));
    return s;
  }
};

inline uint32_t RawAt(const cSurfaceImpl& s, int x, int y) {
  uint32_t pixel = 0;
  std::memcpy(&pixel, s.PixelAt(x, y), size_t(s.bytesPerPixel));
  return pixel;
}

// All pixels, row by row.
inline std::vector<uint32_t> Pixels(const cSurfaceImpl& s) {
  std::vector<uint32_t> pixels;
  for (int y = 0; y < s.height; ++y) {
    for (int x = 0; x < s.width; ++x) pixels.push_back(RawAt(s, x, y));
  }
  return pixels;
}

// Random pixels, a third of them 0 and some with all bits, so that keys and limits are met.
inline void Randomise(cSurfaceImpl& s, std::mt19937& random) {
  for (int y = 0; y < s.height; ++y) {
    for (int x = 0; x < s.width; ++x) {
      uint32_t pixel = random();
      if (random() % 3 == 0) pixel = 0;
      if (random() % 16 == 0) pixel = 0xFFFFFFFF;
      if (random() % 16 == 0) pixel = random() % 8;
      std::memcpy(s.PixelAt(x, y), &pixel, size_t(s.bytesPerPixel));
    }
  }
}

// The picture as text: '.' for 0, '#' for other pixels, or a letter for pixels 1 to 26.
inline std::string Picture(const cSurfaceImpl& s) {
  std::string picture;
  for (int y = 0; y < s.height; ++y) {
    for (int x = 0; x < s.width; ++x) {
      const uint32_t p = RawAt(s, x, y);
      picture += p == 0 ? '.' : p <= 26 ? char('a' + p - 1) : '#';
    }
    picture += '\n';
  }
  return picture;
}

}  // namespace vl::testing

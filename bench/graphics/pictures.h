// What the pixel benchmarks share: the same bytes seen as our surfaces, as SDL's and as pixman's.
//
// A Pictures holds pairs of source and destination, 10 MB of them as far as more than one fits, and hands them out in
// turn, so that each pass finds its pixels outside the nearest caches, ours and the peers' alike.
#pragma once

#include <SDL.h>
#include <benchmark/benchmark.h>
#include <pixman.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "gfx2d/pixel_format.h"
#include "gfx2d/surface_library.h"
#include "gfx2d/wrap_surface.h"

namespace vl::bench {

inline constexpr int kWidth = 640;
inline constexpr int kHeight = 480;

enum class Content { kNoise, kSprites };  // noise has a 0 in every second pixel

struct Picture {
  int depth;
  int width;
  int height;
  int pitch;
  std::vector<uint8_t> bytes;

  Picture(int bits, int w, int h)
      : depth(bits), width(w), height(h), pitch(LineBytes(bits, w)), bytes(size_t(pitch) * size_t(h) + 64) {}
  size_t Bytes() const { return size_t(pitch) * size_t(height); }
};

inline void Draw(Picture& p, Content content, uint32_t seed) {
  std::mt19937 random(seed);
  const int bytes = (p.depth + 7) / 8;
  for (int y = 0; y < p.height; ++y) {
    for (int x = 0; x < p.width; ++x) {
      // Discs of a radius of 23 in cells of 58: about half of the pixels.
      const int dx = x % 58 - 29;
      const int dy = y % 58 - 29;
      const uint32_t noise = random() | 1;
      const bool isSet = content == Content::kNoise ? (noise & 0x100) != 0 : dx * dx + dy * dy < 23 * 23;
      const uint32_t mask = p.depth == 15 ? 0x7FFF : 0xFFFFFF;
      const uint32_t pixel = isSet ? noise & mask : 0;
      std::memcpy(&p.bytes[size_t(y) * size_t(p.pitch) + size_t(x) * size_t(bytes)], &pixel, size_t(bytes));
    }
  }
}

struct FreeSdl {
  void operator()(SDL_Surface* s) const { SDL_FreeSurface(s); }
};
using SdlPicture = std::unique_ptr<SDL_Surface, FreeSdl>;

inline SdlPicture ForSdl(Picture& p) {
  const uint32_t format = p.depth == 8    ? uint32_t{SDL_PIXELFORMAT_INDEX8}
                          : p.depth == 15 ? uint32_t{SDL_PIXELFORMAT_RGB555}
                          : p.depth == 16 ? uint32_t{SDL_PIXELFORMAT_RGB565}
                          : p.depth == 24 ? uint32_t{SDL_PIXELFORMAT_BGR24}
                                          : uint32_t{SDL_PIXELFORMAT_RGB888};
  return SdlPicture(SDL_CreateRGBSurfaceWithFormatFrom(p.bytes.data(), p.width, p.height, p.depth, p.pitch, format));
}

struct FreePixman {
  void operator()(pixman_image_t* i) const { pixman_image_unref(i); }
};
using PixmanPicture = std::unique_ptr<pixman_image_t, FreePixman>;

inline PixmanPicture ForPixman(Picture& p, bool hasAlpha = false) {
  const pixman_format_code_t format = p.depth == 15   ? PIXMAN_x1r5g5b5
                                      : p.depth == 16 ? PIXMAN_r5g6b5
                                      : p.depth == 24 ? PIXMAN_r8g8b8
                                      : hasAlpha      ? PIXMAN_a8r8g8b8
                                                      : PIXMAN_x8r8g8b8;
  // Its memory is on a bound of 4 bytes, as pixman asks.
  return PixmanPicture(
      pixman_image_create_bits(format, p.width, p.height, reinterpret_cast<uint32_t*>(p.bytes.data()), p.pitch));
}

struct Ours {
  MemoryBudget budget;
  SurfaceLibrary library{&budget};
  std::unique_ptr<cWrapSurface> Wrap(Picture& p) {
    return std::make_unique<cWrapSurface>(library, p.depth, p.width, p.height, p.bytes, p.pitch,
                                          p.depth == 8 ? library.Palettes().GetDefaultPalette() : PaletteRef());
  }
};

struct Pair {
  Picture source;
  Picture destination;
  std::unique_ptr<cWrapSurface> from = nullptr;
  std::unique_ptr<cWrapSurface> to = nullptr;
  SdlPicture sdlFrom = nullptr;
  SdlPicture sdlTo = nullptr;
  PixmanPicture pixmanFrom = nullptr;
  PixmanPicture pixmanTo = nullptr;
};

class Pictures {
 public:
  Pictures(int depth, Content content) : Pictures(depth, content, depth) {}
  Pictures(int depth, Content content, int toWidth, int toHeight)
      : Pictures(depth, content, depth, toWidth, toHeight) {}
  Pictures(int depth, Content content, int toDepth) : Pictures(depth, content, toDepth, kWidth, kHeight) {}
  Pictures(int depth, Content content, int toDepth, int toWidth, int toHeight) {
    const int64_t pairBytes =
        int64_t{LineBytes(depth, kWidth)} * kHeight + int64_t{LineBytes(toDepth, toWidth)} * toHeight;
    const auto pairs = uint32_t(std::clamp<int64_t>((int64_t{10} << 20) / pairBytes, 1, 8));
    for (uint32_t i = 0; i < pairs; ++i) {
      auto pair = std::make_unique<Pair>(Pair{Picture(depth, kWidth, kHeight), Picture(toDepth, toWidth, toHeight)});
      Draw(pair->source, content, i + 1);
      Draw(pair->destination, Content::kNoise, i + 100);
      pair->from = ours_.Wrap(pair->source);
      pair->to = ours_.Wrap(pair->destination);
      pair->sdlFrom = ForSdl(pair->source);
      pair->sdlTo = ForSdl(pair->destination);
      if (depth > 8) {
        pair->pixmanFrom = ForPixman(pair->source);
        pair->pixmanTo = ForPixman(pair->destination);
      }
      pairs_.push_back(std::move(pair));
    }
  }
  Pair& Next() { return *pairs_[next_++ % pairs_.size()]; }
  std::vector<std::unique_ptr<Pair>>& All() { return pairs_; }

 private:
  Ours ours_;
  std::vector<std::unique_ptr<Pair>> pairs_;
  size_t next_ = 0;
};

// Registers GROUP/CASE/PEER; `make` builds what `pass(pictures, pair)` then works on, when the benchmark runs.
template <class Make, class Pass>
void Register(const std::string& name, Make make, Pass pass) {
  benchmark::RegisterBenchmark(name.c_str(), [make, pass](benchmark::State& state) {
    auto pictures = make();
    for (auto _ : state) {
      Pair& pair = pictures->Next();
      pass(pair);
      benchmark::ClobberMemory();
    }
  });
}

}  // namespace vl::bench

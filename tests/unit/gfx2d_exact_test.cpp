// Every pixel operation against the plain reference, over memory of every layout, by each table of row loops.
//
// Whole buffers are compared, so that what must not change is seen too: bytes between lines, around the surface and
// outside the clip.
#include <gtest/gtest.h>

#include "gfx2d/present.h"
#include "tests/unit/gfx2d_reference.h"
#include "tests/unit/gfx2d_support.h"

namespace vl {
namespace {

namespace ref = reference;
using testing::Gfx;

// Numbers that are the same on every machine.
class Random {
 public:
  explicit Random(uint32_t seed) : engine_(seed) {}
  uint32_t Next() { return uint32_t(engine_()); }
  int Between(int low, int high) { return low + int(Next() % uint32_t(high - low + 1)); }
  bool OneIn(int n) { return Next() % uint32_t(n) == 0; }

 private:
  std::mt19937 engine_;
};

// A surface over bytes, and the image that it must become.
struct Sheet {
  std::vector<uint8_t> memory;
  std::vector<uint8_t> header;
  std::unique_ptr<cWrapSurface> surface;
  ref::Image image;

  void Expect(const char* what) const {
    if (memory == image.memory) return;
    for (int y = 0; y < image.height; ++y) {
      for (int x = 0; x < image.width; ++x) {
        uint32_t pixel = 0;
        std::memcpy(&pixel, surface->PixelAt(x, y), size_t(image.Bytes()));
        ASSERT_EQ(pixel, image.Get(x, y)) << what << ": depth " << image.depth << " at " << x << ", " << y << " of "
                                          << image.width << " x " << image.height;
      }
    }
    FAIL() << what << ": depth " << image.depth << " wrote outside its pixels";
  }
};

class Lab {
 public:
  Lab(const RowKernels& kernels, uint32_t seed) : random(seed), library_(&budget_, kernels) {
    for (int i = 0; i < 2; ++i) {
      PaletteRecord record;
      if (random.OneIn(4)) record.count = uint16_t(random.Between(2, 255));
      for (PaletteEntry& e : record.entries) {
        e = {uint8_t(random.Next()), uint8_t(random.Next()), uint8_t(random.Next()), 0};
        if (random.OneIn(8)) e = {0, 0, uint8_t(random.Between(0, 9)), 4};
        if (random.OneIn(8)) e = {uint8_t(random.Between(0, 3) * 64), 255, 255, 0};
      }
      record.entries[0] = {};
      shared_.push_back(library_.Palettes().InternPalette(record));
      auto palette = std::make_unique<ref::Palette>();
      palette->count = record.count;
      for (size_t k = 0; k < record.count; ++k) {
        const PaletteEntry& e = record.entries[k];
        palette->entries[k] = {e.red, e.green, e.blue};
        if (k > 0 && palette->entries[k].IsBlack()) palette->entries[k] = {8, 0, 0};
      }
      palettes_.push_back(std::move(palette));
    }
  }

  // Random pixels in blobs and noise, of any layout, with a random clip.
  Sheet Make(int depth, int width, int height, bool isSource) {
    Sheet s;
    ref::Image& image = s.image;
    image.depth = depth;
    image.width = width;
    image.height = height;
    const bool isDib = random.OneIn(2);
    const int least = isDib ? LineBytes(depth, width) : width * image.Bytes();
    image.pitch = isDib ? least : least + random.Between(0, 9) * (random.OneIn(2) ? 1 : 0);
    const int lead = random.Between(1, 40);
    s.memory.resize(size_t(lead + image.pitch * height + random.Between(1, 40)));
    for (uint8_t& b : s.memory) b = uint8_t(random.Next());
    const std::span<uint8_t> bits(s.memory.data() + lead, size_t(image.pitch * height));
    image.top = lead;
    const size_t palette = size_t(random.Between(0, 1));
    if (isDib) {
      s.header.resize(40 + 12 + 1024);
      StoreWord<uint32_t>(&s.header[0], 40);
      StoreWord<int32_t>(&s.header[4], width);
      StoreWord<int32_t>(&s.header[8], height);
      StoreWord<uint16_t>(&s.header[12], 1);
      StoreWord<uint16_t>(&s.header[14], uint16_t(depth == 15 ? 16 : depth));
      if (depth == 16) {
        s.header[16] = 3;
        StoreWord<uint32_t>(&s.header[40], 0xF800);
        StoreWord<uint32_t>(&s.header[44], 0x7E0);
        StoreWord<uint32_t>(&s.header[48], 0x1F);
      }
      s.surface = std::make_unique<cWrapSurface>(library_, s.header, bits, false);
      s.surface->palette = depth == 8 ? shared_[palette] : PaletteRef();
      image.top += (height - 1) * image.pitch;
      image.pitch = -image.pitch;
    } else {
      s.surface =
          std::make_unique<cWrapSurface>(library_, depth, width, height, bits, int(image.pitch), shared_[palette]);
    }
    EXPECT_EQ(s.surface->depth, depth);
    if (depth == 8) image.palette = palettes_[palette].get();
    image.memory = s.memory;
    const bool isBlobs = random.OneIn(2);
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        uint32_t pixel = random.Next();
        if (isBlobs ? (x / 5 + y / 4) % 3 != 0 && !random.OneIn(9) : random.OneIn(3)) pixel = 0;
        if (random.OneIn(16)) pixel = 0xFFFFFFFF;
        if (random.OneIn(16)) pixel = random.Next() % 8;
        if (random.OneIn(24)) pixel = 0xFF000000 | 0x8000;
        image.Put(x, y, pixel);
      }
    }
    s.memory = image.memory;  // assigned in place: the size is the same, so the surface still lies over it
    if (!isSource && random.OneIn(2)) {
      const int left = random.Between(0, width - 1), top = random.Between(0, height - 1);
      const int across = random.Between(1, width), down = random.Between(1, height);
      s.surface->SetClipRect(left, top, across, down);
    }
    image.clip = s.surface->GetClipRect();
    return s;
  }
  int Side() { return random.OneIn(5) ? random.Between(60, 330) : random.Between(1, 40); }
  Sheet Any(int depth, bool isSource) {
    const int width = Side(), height = random.Between(1, 30);
    return Make(depth, width, height, isSource);
  }
  Sheet Source(int depth) { return Any(depth, true); }
  Sheet Target(int depth) { return Any(depth, false); }

  Random random;

 private:
  MemoryBudget budget_;
  SurfaceLibrary library_;
  std::vector<PaletteRef> shared_;
  std::vector<std::unique_ptr<ref::Palette>> palettes_;
};

// Runs a trial from the same seeds by each table of kernels.
template <class Trial>
void ForAllKernels(int rounds, uint32_t seed, Trial&& trial) {
  std::vector<const RowKernels*> tables = {&PortableRowKernels()};
  if (WideRowKernels()) tables.push_back(WideRowKernels());
  for (const RowKernels* kernels : tables) {
    for (int round = 0; round < rounds * 2; ++round) {
      Lab lab(*kernels, seed * 1000 + uint32_t(round));
      SCOPED_TRACE((kernels == tables[0] ? "plain loops, round " : "wide vectors, round ") + std::to_string(round));
      trial(lab);
      if (::testing::Test::HasFatalFailure()) return;
    }
  }
}

struct Box {
  int dx, dy, sx, sy, w, h;
  Box(Random& r, const Sheet& to, const Sheet& from)
      : dx(r.Between(-12, to.image.width)),
        dy(r.Between(-12, to.image.height)),
        sx(r.Between(-8, from.image.width)),
        sy(r.Between(-8, from.image.height)),
        w(r.Between(-1, from.image.width + 12)),
        h(r.Between(-1, from.image.height + 12)) {
    // Often the whole, as programs do.
    if (r.OneIn(3)) dx = dy = sx = sy = 0;
  }
};

uint32_t Param(Random& random, int effect) {
  static constexpr uint32_t kEdges[] = {0, 1, 64, 127, 128, 129, 255};
  const uint32_t weight = random.OneIn(2) ? kEdges[random.Between(0, 6)] : uint32_t(random.Between(0, 128));
  if (effect == 7) return kRasterCopy;
  return effect == 6 ? weight << 24 | (random.OneIn(3) ? 0 : random.Next() & 0xFFFFFF) : weight;
}

class ExactBlit : public ::testing::TestWithParam<int> {};

TEST_P(ExactBlit, EveryModeAndEffect) {
  const int depth = GetParam();
  for (int effect = 0; effect < 10; ++effect) {
    for (const int mode : {0, 1}) {
      ForAllKernels(20, uint32_t(depth * 100 + effect * 2 + mode), [&](Lab& lab) {
        Sheet from = lab.Source(depth), to = lab.Target(depth);
        const Box b(lab.random, to, from);
        const uint32_t param = Param(lab.random, effect);
        const bool expected =
            ref::Blit(to.image, from.image, b.dx, b.dy, b.sx, b.sy, b.w, b.h, mode, effect, param, false);
        EXPECT_EQ(from.surface->Blit(*to.surface, b.dx, b.dy, b.sx, b.sy, b.w, b.h, mode, effect, param, false),
                  expected);
        to.Expect("blit");
        from.Expect("its source");
      });
    }
  }
}

TEST_P(ExactBlit, EdgesAreSoftened) {
  const int depth = GetParam();
  for (const int effect : {0, 1, 6, 9}) {
    ForAllKernels(25, uint32_t(depth * 100 + effect), [&](Lab& lab) {
      Sheet from = lab.Source(lab.random.OneIn(4) ? kDepths[lab.random.Between(0, 4)] : depth), to = lab.Target(depth);
      const Box b(lab.random, to, from);
      const uint32_t param = Param(lab.random, effect);
      const int mode = lab.random.Between(0, 1);
      const bool expected =
          ref::Blit(to.image, from.image, b.dx, b.dy, b.sx, b.sy, b.w, b.h, mode, effect, param, true);
      EXPECT_EQ(from.surface->Blit(*to.surface, b.dx, b.dy, b.sx, b.sy, b.w, b.h, mode, effect, param, true), expected);
      to.Expect("softened blit");
    });
  }
}

TEST_P(ExactBlit, FromEveryOtherDepth) {
  const int depth = GetParam();
  for (const int fromDepth : kDepths) {
    ForAllKernels(40, uint32_t(depth * 100 + fromDepth), [&](Lab& lab) {
      Sheet from = lab.Source(fromDepth), to = lab.Target(depth);
      const Box b(lab.random, to, from);
      const int effect = lab.random.OneIn(2) ? 0 : lab.random.Between(0, 9);
      const int mode = lab.random.Between(0, 1);
      const uint32_t param = Param(lab.random, effect);
      const bool expected =
          ref::Blit(to.image, from.image, b.dx, b.dy, b.sx, b.sy, b.w, b.h, mode, effect, param, false);
      EXPECT_EQ(from.surface->Blit(*to.surface, b.dx, b.dy, b.sx, b.sy, b.w, b.h, mode, effect, param, false),
                expected);
      to.Expect("conversion");
    });
  }
}

TEST_P(ExactBlit, OverItsOwnPixelsShowsWhatWasThere) {
  const int depth = GetParam();
  ForAllKernels(60, uint32_t(depth), [&](Lab& lab) {
    Sheet s = lab.Target(depth);
    const Box b(lab.random, s, s);
    const int effect = lab.random.Between(0, 9);
    const int mode = lab.random.Between(0, 1);
    const uint32_t param = Param(lab.random, effect);
    const bool isSoft = lab.random.OneIn(4);
    const ref::Image before = s.image;
    ref::Blit(s.image, before, b.dx, b.dy, b.sx, b.sy, b.w, b.h, mode, effect, param, isSoft);
    s.surface->Blit(*s.surface, b.dx, b.dy, b.sx, b.sy, b.w, b.h, mode, effect, param, isSoft);
    s.Expect("blit on itself");
  });
}

Colour Darker(Colour d, Colour s, void* amount) {
  const uint32_t n = *static_cast<uint32_t*>(amount);
  return (d >> 1 & 0x7F7F7F) + (s >> 2 & 0x3F3F3F) + (n & 0x0F0F0F);
}

Colour Weave(const Colour* d, const Colour* s, uint32_t param) { return (d[0] ^ s[param % 6] ^ d[5] << 1) & 0xFFFFFF; }

TEST_P(ExactBlit, CallbacksAndFiltersSeeColours) {
  const int depth = GetParam();
  ForAllKernels(40, uint32_t(depth) + 7, [&](Lab& lab) {
    Sheet from = lab.Source(depth), to = lab.Target(depth);
    const Box b(lab.random, to, from);
    const int mode = lab.random.Between(0, 1);
    uint32_t amount = lab.random.Next();
    if (depth == 8) to.image.palette->EnsureMap();
    const bool any =
        ref::ForEach(to.image, from.image, b.dx, b.dy, b.sx, b.sy, b.w, b.h, [&](int x, int y, int fx, int fy) {
          const uint32_t s = from.image.Get(fx, fy);
          if (mode == 1 && s == 0) return;
          // A callback sees what depth 32 keeps in its fourth byte no more than any other.
          const Colour result =
              Darker(ref::ToColour(to.image.ColourAt(x, y)), ref::ToColour(from.image.Widen(s)), &amount);
          to.image.Put(x, y, to.image.PixelOf(ref::FromColour(result)));
        });
    EXPECT_EQ(from.surface->BlitCallback(*to.surface, b.dx, b.dy, b.sx, b.sy, b.w, b.h, mode, Darker, &amount), any);
    to.Expect("callback");

    const ref::WindowShape shape = {lab.random.Between(2, 4), 3,
                                    lab.random.Between(0, 5), lab.random.Between(0, 3),
                                    lab.random.Between(0, 3), lab.random.Between(0, 3)};
    const FilterWindow window = {shape.width, shape.height, shape.centreX, shape.centreY, shape.marginX, shape.marginY};
    const bool filtered = ref::Filter(to.image, from.image, b.dx, b.dy, b.sx, b.sy, b.w, b.h, shape,
                                      [&](const ref::Rgb* d, const ref::Rgb* s) {
                                        Colour dc[12], sc[12];
                                        for (int i = 0; i < shape.width * shape.height; ++i) {
                                          dc[i] = ref::ToColour(d[i]), sc[i] = ref::ToColour(s[i]);
                                        }
                                        return ref::FromColour(Weave(dc, sc, amount));
                                      });
    EXPECT_EQ(from.surface->BlitFilter(*to.surface, b.dx, b.dy, b.sx, b.sy, b.w, b.h, window, Weave, amount), filtered);
    to.Expect("filter");
  });
}

TEST_P(ExactBlit, Stretches) {
  const int depth = GetParam();
  for (const bool resample : {false, true}) {
    ForAllKernels(60, uint32_t(depth * 2 + resample), [&](Lab& lab) {
      Random& r = lab.random;
      Sheet from = lab.Source(depth), to = lab.Target(r.OneIn(4) ? kDepths[r.Between(0, 4)] : depth);
      const int sx = r.Between(0, from.image.width - 1), sy = r.Between(0, from.image.height - 1);
      const int sw = r.Between(1, from.image.width - sx), sh = r.Between(1, from.image.height - sy);
      int dw = r.Between(1, 90), dh = r.Between(1, 50);
      if (r.OneIn(3)) dw = 2 * sw, dh = 2 * sh;
      if (r.OneIn(4)) dw = std::max(sw / 2, 1), dh = std::max(sh / 3, 1);
      const int dx = r.Between(-20, to.image.width - 1), dy = r.Between(-15, to.image.height - 1);
      const int effect = r.OneIn(3) ? r.Between(0, 9) : 0;
      const int mode = r.OneIn(3) ? 1 : 0;
      const uint32_t param = Param(r, effect);
      const bool expected =
          ref::Stretch(to.image, from.image, dx, dy, dw, dh, sx, sy, sw, sh, mode, effect, param, resample);
      EXPECT_EQ(from.surface->StretchBlit(*to.surface, dx, dy, dw, dh, sx, sy, sw, sh, mode, effect, param, resample),
                expected);
      to.Expect(resample ? "filtered stretch" : "stretch");
    });
  }
}

TEST_P(ExactBlit, Turns) {
  const int depth = GetParam();
  for (const bool interpolate : {false, true}) {
    ForAllKernels(40, uint32_t(depth * 2 + interpolate), [&](Lab& lab) {
      Random& r = lab.random;
      Sheet from = lab.Source(depth), to = lab.Target(depth);
      int degrees = r.OneIn(3) ? r.Between(0, 1) * 180 + 90 : r.Between(1, 359);
      if (degrees == 180) degrees = 181;
      const Colour background = r.Next() & 0xFFFFFF;
      ref::Rotate(to.image, from.image, degrees, interpolate, ref::FromColour(background));
      EXPECT_TRUE(from.surface->Rotate(*to.surface, degrees + r.Between(-2, 2) * 360, interpolate, background));
      to.Expect("turn");
    });
  }
}

TEST_P(ExactBlit, FillsMirrorsAndReplacements) {
  const int depth = GetParam();
  ForAllKernels(60, uint32_t(depth) + 3, [&](Lab& lab) {
    Random& r = lab.random;
    Sheet s = lab.Target(depth);
    ref::Image& image = s.image;
    const int x = r.Between(-9, image.width), y = r.Between(-9, image.height);
    int w = r.Between(-1, image.width + 9), h = r.Between(-1, image.height + 9);
    Rect box = Rect{x, y, x + w, y + h}.Intersect(image.clip);
    if (box.IsEmpty()) box = {};
    const uint32_t pixel = r.Next();
    for (int j = box.top; j < box.bottom; ++j) {
      for (int i = box.left; i < box.right; ++i) image.Put(i, j, pixel);
    }
    EXPECT_EQ(s.surface->FillRaw(x, y, w, h, pixel), box.Width() > 0);
    s.Expect("raw fill");

    const Colour from = r.OneIn(2) ? ref::ToColour(image.ColourAt(0, 0)) : r.Next() & 0xFFFFFF;
    const Colour to = r.OneIn(4) ? 0 : r.Next() & 0xFFFFFF;
    const uint32_t old = image.PixelOf(ref::FromColour(from));
    const uint32_t replacement = image.PixelOf(ref::FromColour(to));
    for (int j = 0; j < image.height; ++j) {
      for (int i = 0; i < image.width; ++i) {
        if (image.Get(i, j) == old) image.Put(i, j, replacement);
      }
    }
    EXPECT_TRUE(s.surface->ReplaceColor(from, to));
    s.Expect("replacement");

    const ref::Image before = image;
    for (int j = box.top; j < box.bottom; ++j) {
      for (int i = box.left; i < box.right; ++i) image.Put(i, j, before.Get(box.left + box.right - 1 - i, j));
    }
    EXPECT_TRUE(s.surface->MirrorHorizontal(x, y, w, h));
    s.Expect("mirror across");
    const ref::Image mirrored = image;
    for (int j = box.top; j < box.bottom; ++j) {
      for (int i = box.left; i < box.right; ++i) image.Put(i, j, mirrored.Get(i, box.top + box.bottom - 1 - j));
    }
    EXPECT_TRUE(s.surface->MirrorVertical(x, y, w, h));
    s.Expect("mirror down");

    Rect content = {INT32_MAX, INT32_MAX, INT32_MIN, INT32_MIN};
    const int keep = r.Between(0, 3);  // of the content, in the middle or nothing
    for (int j = 0; j < image.height; ++j) {
      for (int i = 0; i < image.width; ++i) {
        const bool inside = keep > 0 && i * keep >= image.width / 2 && j * keep >= image.height / 2 && i % 7 != 0;
        if (!inside) image.Put(i, j, 0);
        if (image.Get(i, j) != 0) content = content.Union({i, j, i + 1, j + 1});
      }
    }
    s.memory = image.memory;
    Rect found;
    const bool any = !content.IsEmpty() && (image.width >= 3 || image.height >= 3);
    EXPECT_EQ(s.surface->GetContentBox(found), any);
    if (any) {
      EXPECT_EQ(found, content);
    }
    EXPECT_EQ(s.surface->IsEmpty(), content.IsEmpty());
  });
}

TEST_P(ExactBlit, WordsForWindows) {
  const int depth = GetParam();
  ForAllKernels(30, uint32_t(depth) + 5, [&](Lab& lab) {
    Sheet s = lab.Target(depth);
    const ref::Image& image = s.image;
    const int left = lab.random.Between(0, image.width - 1), top = lab.random.Between(0, image.height - 1);
    const Rect box = {left, top, lab.random.Between(left + 1, image.width), lab.random.Between(top + 1, image.height)};
    const int pitch = box.Width() + 3;
    std::vector<uint32_t> words(size_t(pitch * box.Height()), 0xABCDABCD), expected = words;
    for (int y = box.top; y < box.bottom; ++y) {
      for (int x = box.left; x < box.right; ++x) {
        const ref::Rgb c = image.ColourAt(x, y);
        expected[size_t((y - box.top) * pitch + x - box.left)] = uint32_t(c.r << 16 | c.g << 8 | c.b);
      }
    }
    SurfaceToWords(*s.surface, box, words.data(), pitch);
    ASSERT_EQ(words, expected);
  });
}

TEST_P(ExactBlit, FloodFillsWhatHangsTogether) {
  const int depth = GetParam();
  Gfx gfx;
  Random r(uint32_t(depth) + 11);
  for (int round = 0; round < 60; ++round) {
    cSurface s = gfx.Make(r.Between(1, 40), r.Between(1, 30), depth);
    ref::Palette palette;
    for (size_t i = 0; depth == 8 && i < 256; ++i) palette.entries[i] = ref::FromColour(s.impl->PaletteColor(int(i)));
    // A few colours, close to each other and not.
    Colour colours[5];
    for (Colour& c : colours) c = r.Next() & 0xFFFFFF;
    colours[1] = colours[0] ^ 0x080808;
    colours[2] = colours[0] ^ 0x101000;
    for (int y = 0; y < s.impl->height; ++y) {
      for (int x = 0; x < s.impl->width; ++x) s.SetPixel(x, y, colours[r.OneIn(3) ? r.Between(0, 4) : r.Between(0, 1)]);
    }
    if (r.OneIn(2)) s.SetClipRect(r.Between(0, 4), r.Between(0, 4), r.Between(1, 30), r.Between(1, 30));
    ref::Image image;
    image.depth = depth;
    image.width = s.impl->width;
    image.height = s.impl->height;
    image.pitch = s.impl->pitch;
    image.clip = s.impl->GetClipRect();
    image.palette = &palette;
    const auto bytes = [&] {
      const size_t n = size_t(s.impl->absPitch) * size_t(s.impl->height);
      return std::vector<uint8_t>(s.impl->rawBits, s.impl->rawBits + n);
    };
    image.memory = bytes();
    const int x = r.Between(0, image.width - 1), y = r.Between(0, image.height - 1);
    static constexpr int kTolerances[] = {0, 0, 7, 8, 16, 255};
    const int tolerance = kTolerances[r.Between(0, 5)];
    const Colour colour = r.OneIn(3) ? colours[r.Between(0, 4)] : r.Next() & 0xFFFFFF;
    const Rect expected = ref::FloodFill(image, x, y, ref::FromColour(colour), tolerance);
    Rect box;
    EXPECT_EQ(s.FloodFill(x, y, box, colour, tolerance), !expected.IsEmpty());
    EXPECT_EQ(box, expected) << "round " << round;
    ASSERT_EQ(bytes(), image.memory) << "depth " << depth << " round " << round;
  }
}

INSTANTIATE_TEST_SUITE_P(Depth, ExactBlit, ::testing::ValuesIn(kDepths));

// They start on the far corner: a line of background comes in at one side, and at the other one is lost.
TEST(ExactRotate, QuarterTurnsMoveWholePixels) {
  Gfx gfx;
  Random r(1);
  for (const int depth : kDepths) {
    for (const bool interpolate : {false, true}) {
      cSurface s = gfx.Make(r.Between(1, 90), r.Between(1, 90), depth);
      const int w = s.impl->width, h = s.impl->height;
      for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) s.SetPixel(x, y, r.Next() & 0xFFFFFF);
      }
      cSurface right, left;
      ASSERT_TRUE(s.RotateInto(right, 90, interpolate, 0x123456));
      ASSERT_TRUE(s.RotateInto(left, 270, interpolate, 0x123456));
      ASSERT_EQ(right.impl->width, h);
      ASSERT_EQ(left.impl->height, w);
      for (int y = 0; y < w; ++y) {
        for (int x = 0; x < h; ++x) {
          const uint32_t outside = s.impl->PixelOfColour(0x123456);
          ASSERT_EQ(testing::RawAt(*right.impl, x, y), y == 0 ? outside : testing::RawAt(*s.impl, w - y, x));
          ASSERT_EQ(testing::RawAt(*left.impl, x, y), x == 0 ? outside : testing::RawAt(*s.impl, y, h - x));
        }
      }
    }
  }
}

TEST(Scratch, KeepsLittleAndGivesAllBack) {
  MemoryBudget budget(uint64_t{64} << 20);
  {
    SurfaceLibrary library(&budget);
    const uint64_t before = budget.Used();
    {
      const Scratch large = library.Scratches().Take(20 << 20);
      const Scratch small = library.Scratches().Take(100);
      EXPECT_TRUE(large && small);
      EXPECT_GE(budget.Used(), before + (20 << 20) + 100);
      EXPECT_FALSE(library.Scratches().Take(50 << 20)) << "more than the budget";
      EXPECT_FALSE(library.Scratches().Take(UINT64_MAX));
    }
    EXPECT_LT(budget.Used(), before + (9 << 20)) << "a large block isn't kept";
    for (int i = 0; i < 20; ++i) {
      std::vector<Scratch> blocks;
      for (int k = 0; k < 20; ++k) blocks.push_back(library.Scratches().Take(uint64_t(k + i) << 16));
    }
    EXPECT_LT(budget.Used(), before + (9 << 20));
    // What is kept gives way to a surface.
    cSurface s;
    EXPECT_TRUE(s.Create(4000, int(((64 << 20) - before) / 16000), library.FindPrototype(32)));
  }
  EXPECT_EQ(budget.Used(), 0u);
}

}  // namespace
}  // namespace vl

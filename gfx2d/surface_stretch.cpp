// Scaling: StretchBlit, by the nearest pixel or filtered.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "gfx2d/pixel_format.h"
#include "gfx2d/surface_library.h"
#include "gfx2d/wrap_surface.h"

namespace vl {
namespace {

// The resampling filter of one axis, for the targets `first` to `first + count`.
class Filter {
 public:
  Filter(ScratchPool& scratches, int sourceSize, int targetSize, int first, int count)
      : scale_(double(targetSize) / sourceSize),
        radius_(scale_ >= 1 ? 1 : 1 / scale_),
        widest_(2 * int(std::ceil(radius_)) + 1),
        sourceSize_(sourceSize),
        memory_(scratches.Take(uint64_t(widest_) * sizeof(double) +
                               uint64_t(count) * (sizeof(FilterTaps) + uint64_t(widest_) * sizeof(int32_t)))) {
    if (!memory_) return;
    taps_ = memory_.At<FilterTaps>(size_t(widest_) * sizeof(double));
    weights_ = reinterpret_cast<int32_t*>(taps_ + count);
    int32_t used = 0;
    for (int i = 0; i < count; ++i) used += Make(first + i, taps_[i], used);
  }
  explicit operator bool() const { return bool(memory_); }
  // The most taps of one target.
  int Widest() const { return widest_; }
  const FilterTaps* Taps() const { return taps_; }
  const int32_t* Weights() const { return weights_; }

 private:
  // Gives the number of weights.
  int32_t Make(int target, FilterTaps& taps, int32_t used) {
    const double factor = std::min(1.0, scale_);
    const double centre = target / scale_;
    int first = std::max(0, int(std::floor(centre - radius_)));
    int last = std::min(sourceSize_ - 1, int(std::ceil(centre + radius_)));
    if (last - first + 1 > widest_) (first < sourceSize_) ? void(++first) : void(--last);
    double* const w = memory_.At<double>();
    const int count = std::max(last - first + 1, 0);
    for (int k = 0; k < count; ++k) {
      const double t = std::abs(centre - (first + k)) * factor;
      const double u = t < 1 ? 1 - t : 0;
      w[k] = (2 * u * u + u) * (1.0 / 3) * factor;
    }
    int begin = 0;
    int end = count;
    while (begin < end && w[begin] == 0) ++begin;
    while (end > begin && w[end - 1] == 0) --end;
    double sum = 0;
    for (int k = begin; k < end; ++k) sum += w[k];
    taps = {first + begin, end - begin, used};
    for (int k = begin; k < end; ++k) weights_[used + k - begin] = int32_t((sum > 0 ? w[k] / sum : w[k]) * 65536);
    return end - begin;
  }

  double scale_;
  double radius_;
  int widest_;
  int sourceSize_;
  Scratch memory_;
  FilterTaps* taps_ = nullptr;
  int32_t* weights_ = nullptr;
};

// Lines of a surface as words, and words as its pixels.
class WordLines {
 public:
  explicit WordLines(const cSurfaceImpl& surface) : surface_(surface) {
    if (surface.depth == 8) {
      for (size_t i = 0; i < 256; ++i) ofIndex_[i] = SwapRedBlue(surface.PaletteColor(int(i)));
    }
  }
  void Load(int x, int y, int pixels, uint32_t* words) const {
    const uint8_t* line = surface_.PixelAt(x, y);
    if (surface_.depth == 8) {
      for (int i = 0; i < pixels; ++i) words[i] = ofIndex_[line[i]];
    } else {
      surface_.kernels->words[size_t(surface_.depthIndex)](line, reinterpret_cast<uint8_t*>(words), pixels);
    }
  }
  void Store(int x, int y, int pixels, const uint32_t* words) const {
    uint8_t* line = surface_.PixelAt(x, y);
    if (surface_.depth == 8) {
      for (int i = 0; i < pixels; ++i) line[i] = uint8_t(surface_.NearestIndex(SwapRedBlue(words[i])));
    } else if (surface_.depth == 32) {
      std::memcpy(line, words, size_t(pixels) * 4);
    } else {
      surface_.kernels->convert[4][size_t(surface_.depthIndex)](reinterpret_cast<const uint8_t*>(words), line, pixels);
    }
  }

 private:
  const cSurfaceImpl& surface_;
  std::array<uint32_t, 256> ofIndex_;
};

}  // namespace

bool cSurfaceImpl::StretchNearest(cSurfaceImpl& destination, const Stretch& s) const {
  const uint32_t stepX = uint32_t((int64_t{s.from.Width()} << 16) / s.whole.width);
  const uint32_t stepY = uint32_t((int64_t{s.from.Height()} << 16) / s.whole.height);
  const int pixels = s.part.Width();
  const size_t bytes = size_t(bytesPerPixel);
  // The two steps that sprites are most often drawn with need no table.
  const bool isTwice = stepX == 0x8000 && s.part.left % 2 == 0 && pixels % 2 == 0;
  const bool isHalf = stepX == 0x20000;
  const int firstX = int((uint64_t(s.part.left) * stepX) >> 16);
  Scratch memory;
  int32_t* offsets = nullptr;
  if (!isTwice && !isHalf) {
    memory = library->Scratches().Take(uint64_t(pixels) * sizeof(int32_t));
    if (!memory) return false;
    offsets = memory.At<int32_t>();
    for (int i = 0; i < pixels; ++i) {
      offsets[i] = (int32_t((uint64_t(s.part.left + i) * stepX) >> 16) - firstX) * bytesPerPixel;
    }
  }
  int lastLine = -1;
  for (int y = 0; y < s.part.Height(); ++y) {
    const int line = int((uint64_t(s.part.top + y) * stepY) >> 16);
    uint8_t* d = destination.PixelAt(s.to.left, s.to.top + y);
    if (line == lastLine) {
      std::memcpy(d, destination.PixelAt(s.to.left, s.to.top + y - 1), size_t(pixels) * bytes);
      continue;
    }
    lastLine = line;
    const uint8_t* source = PixelAt(s.from.left + firstX, s.from.top + line);
    if (isTwice) {
      kernels->twice[bytes](source, d, pixels / 2);
    } else if (isHalf) {
      kernels->half[bytes](source, d, pixels);
    } else {
      kernels->pick[bytes](source, offsets, d, pixels);
    }
  }
  return true;
}

bool cSurfaceImpl::StretchFiltered(cSurfaceImpl& destination, const Stretch& s) const {
  const int pixels = s.part.Width();
  ScratchPool& scratches = library->Scratches();
  const Filter along(scratches, s.from.Width(), s.whole.width, s.part.left, pixels);
  const Filter across(scratches, s.from.Height(), s.whole.height, s.part.top, s.part.Height());
  if (!along || !across) return false;
  // Lines filtered along stay in a ring until the filter across has passed them.
  const int ring = std::min(across.Widest(), s.from.Height());
  const uint64_t ringBytes = uint64_t(ring) * uint64_t(pixels) * sizeof(uint32_t);
  const uint64_t rowsBytes = uint64_t(ring) * sizeof(uint32_t*);
  const Scratch memory = scratches.Take(rowsBytes + ringBytes + uint64_t(ring) * sizeof(int32_t) +
                                        (uint64_t(s.from.Width()) + uint64_t(pixels)) * sizeof(uint32_t));
  if (!memory) return false;
  const uint32_t** const rows = memory.At<const uint32_t*>();
  uint32_t* const lines = memory.At<uint32_t>(size_t(rowsBytes));
  uint32_t* const source = lines + size_t(ring) * size_t(pixels);
  uint32_t* const out = source + s.from.Width();
  int32_t* const held = reinterpret_cast<int32_t*>(out + pixels);
  std::fill_n(held, ring, -1);
  const WordLines from(*this);
  const WordLines to(destination);
  for (int y = 0; y < s.part.Height(); ++y) {
    const FilterTaps& taps = across.Taps()[y];
    for (int k = 0; k < taps.count; ++k) {
      const int line = taps.first + k;
      const int place = line % ring;
      uint32_t* const row = lines + size_t(place) * size_t(pixels);
      if (held[place] != line) {
        held[place] = line;
        from.Load(s.from.left, s.from.top + line, s.from.Width(), source);
        kernels->filterAlong(source, along.Taps(), along.Weights(), row, pixels);
      }
      rows[k] = row;
    }
    kernels->filterAcross(rows, across.Weights() + taps.weights, taps.count, out, pixels);
    to.Store(s.to.left, s.to.top + y, pixels, out);
  }
  return true;
}

bool cSurfaceImpl::StretchBlit(cSurfaceImpl& destination, int dx, int dy, int dw, int dh, int sx, int sy, int sw,
                               int sh, int mode, int effect, uint32_t param, bool resample) const {
  if (dw == sw && dh == sh) return Blit(destination, dx, dy, sx, sy, dw, dh, mode, effect, param, false);
  if (mode < 0 || mode > 1 || effect < 0 || effect > 9 || !Lock() || !destination.Lock() || !library) return false;
  if (sw <= 0 || sh <= 0 || dw <= 0 || dh <= 0 || sx < 0 || sy < 0 || int64_t{sx} + sw > width ||
      int64_t{sy} + sh > height) {
    return false;
  }
  // What the clip leaves of the destination box, in 64 bits as callers pass anything.
  const int64_t left = std::max<int64_t>(dx, destination.clipLeft);
  const int64_t top = std::max<int64_t>(dy, destination.clipTop);
  const int64_t right = std::min<int64_t>(int64_t{dx} + dw, destination.clipRight);
  const int64_t bottom = std::min<int64_t>(int64_t{dy} + dh, destination.clipBottom);
  if (left >= right || top >= bottom) return false;
  if (depth == 8 && !(palette && palette->EnsureInverseMap())) return false;
  Stretch stretch;
  stretch.from = {sx, sy, sx + sw, sy + sh};
  stretch.whole = {dw, dh};
  stretch.part = {int(left - dx), int(top - dy), int(right - dx), int(bottom - dy)};
  stretch.to = {int(left), int(top), int(right), int(bottom)};
  const auto run = [&](cSurfaceImpl& target) {
    return resample ? StretchFiltered(target, stretch) : StretchNearest(target, stretch);
  };
  // A filtered index is one of the destination's palette when the box is whole, else of the source's.
  const bool isWhole = stretch.part == Rect{0, 0, dw, dh};
  if (depth == destination.depth && mode == 0 && effect == kEffectNone && (isWhole || depth != 8 || !resample) &&
      !SharesPixels(destination, stretch.from, stretch.to)) {
    return run(destination);
  }
  // Only the part that will be seen is made.
  const Rect there = stretch.to;
  const int pitchThere = LineBytes(depth, there.Width());
  const Scratch memory = library->Scratches().Take(uint64_t(pitchThere) * uint64_t(there.Height()));
  if (!memory) return false;
  cWrapSurface stretched(*library, depth, there.Width(), there.Height(), memory.Bytes(), pitchThere, palette);
  stretch.to = {0, 0, there.Width(), there.Height()};
  return stretched.Lock() && run(stretched) &&
         stretched.Blit(destination, there.left, there.top, 0, 0, there.Width(), there.Height(), mode, effect, param,
                        false);
}

}  // namespace vl

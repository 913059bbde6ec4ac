// Scaling and turning: StretchBlit, Rotate.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "gfx2d/pixel_format.h"
#include "gfx2d/surface_impl.h"
#include "gfx2d/surface_library.h"

namespace vl {
namespace {

// The taps of one destination pixel along one axis; weights are 16.16.
struct Taps {
  int first = 0;
  int count = 0;
  size_t weights = 0;  // offset into Filter::weights
};

// The resampling filter of one axis.
struct Filter {
  std::vector<Taps> taps;
  std::vector<int32_t> weights;

  Filter(int sourceSize, int targetSize) : taps(size_t(targetSize)) {
    const double scale = double(targetSize) / sourceSize;
    const double radius = scale >= 1 ? 1 : 1 / scale;
    const double factor = std::min(1.0, scale);
    const int widest = 2 * int(std::ceil(radius)) + 1;
    std::vector<double> w;
    for (int i = 0; i < targetSize; ++i) {
      const double centre = i / scale;
      int first = std::max(0, int(std::floor(centre - radius)));
      int last = std::min(sourceSize - 1, int(std::ceil(centre + radius)));
      if (last - first + 1 > widest) (first < sourceSize) ? void(++first) : void(--last);
      w.clear();
      double sum = 0;
      for (int j = first; j <= last; ++j) {
        const double t = std::abs(centre - j) * factor;
        const double u = t < 1 ? 1 - t : 0;
        w.push_back((2 * u * u + u) * (1.0 / 3) * factor);
      }
      size_t begin = 0;
      size_t end = w.size();
      while (begin < end && w[begin] == 0) ++begin, ++first;
      while (end > begin && w[end - 1] == 0) --end;
      for (size_t k = begin; k < end; ++k) sum += w[k];
      taps[size_t(i)] = {first, int(end - begin), weights.size()};
      for (size_t k = begin; k < end; ++k) weights.push_back(int32_t((sum > 0 ? w[k] / sum : w[k]) * 65536));
    }
  }
};

uint8_t ToChannel(int64_t sum) { return uint8_t(std::clamp<int64_t>(sum + 0x8000, 0, 0xFF0000) >> 16); }

// A line as red, green, blue bytes.
void LoadLine(const cSurfaceImpl& s, int x, int y, int width, uint8_t* out) {
  for (int i = 0; i < width; ++i, out += 3) {
    const uint32_t value = s.ops->GetPixelColor(s, x + i, y);
    const Colour c = s.depth == 8 ? s.PaletteColor(int(value)) : value;
    out[0] = uint8_t(c);
    out[1] = uint8_t(c >> 8);
    out[2] = uint8_t(c >> 16);
  }
}

}  // namespace

void cSurfaceImpl::StretchNearest(cSurfaceImpl& destination, const Rect& to, const Rect& from) const {
  const uint32_t stepX = uint32_t((int64_t{from.Width()} << 16) / to.Width());
  const uint32_t stepY = uint32_t((int64_t{from.Height()} << 16) / to.Height());
  std::vector<int32_t> offsets(size_t(to.Width()));
  for (size_t i = 0; i < offsets.size(); ++i) offsets[i] = int32_t((uint64_t{i} * stepX) >> 16) * bytesPerPixel;
  const size_t lineBytes = size_t(to.Width()) * size_t(bytesPerPixel);
  int lastLine = -1;
  for (int y = 0; y < to.Height(); ++y) {
    const int line = int((uint64_t(y) * stepY) >> 16);
    uint8_t* d = destination.PixelAt(to.left, to.top + y);
    if (line == lastLine) {
      std::memcpy(d, destination.PixelAt(to.left, to.top + y - 1), lineBytes);
      continue;
    }
    lastLine = line;
    const uint8_t* s = PixelAt(from.left, from.top + line);
    switch (bytesPerPixel) {
      case 1:
        for (size_t i = 0; i < offsets.size(); ++i) d[i] = s[offsets[i]];
        break;
      case 2:
        for (size_t i = 0; i < offsets.size(); ++i) StoreWord(d + i * 2, LoadWord<uint16_t>(s + offsets[i]));
        break;
      case 3:
        for (size_t i = 0; i < offsets.size(); ++i) std::memcpy(d + i * 3, s + offsets[i], 3);
        break;
      default:
        for (size_t i = 0; i < offsets.size(); ++i) StoreWord(d + i * 4, LoadWord<uint32_t>(s + offsets[i]));
        break;
    }
  }
}

bool cSurfaceImpl::StretchFiltered(cSurfaceImpl& destination, const Rect& to, const Rect& from) const {
  const int width = to.Width();
  const int height = to.Height();
  const size_t lineBytes = size_t(width) * 3;
  const uint64_t bytes = uint64_t{lineBytes} * uint64_t(from.Height());
  if (!library->Budget().Take(bytes)) return false;
  {
    const Filter across(from.Width(), width);
    const Filter down(from.Height(), height);
    std::vector<uint8_t> source(size_t(from.Width()) * 3);
    std::vector<uint8_t> narrowed(lineBytes * size_t(from.Height()));
    for (int y = 0; y < from.Height(); ++y) {
      LoadLine(*this, from.left, from.top + y, from.Width(), source.data());
      uint8_t* out = narrowed.data() + size_t(y) * lineBytes;
      for (const Taps& taps : across.taps) {
        const uint8_t* s = source.data() + size_t(taps.first) * 3;
        const int32_t* w = across.weights.data() + taps.weights;
        int64_t sum[3] = {0, 0, 0};
        for (int k = 0; k < taps.count; ++k, s += 3) {
          for (int channel = 0; channel < 3; ++channel) sum[channel] += int64_t{w[k]} * s[channel];
        }
        for (int channel = 0; channel < 3; ++channel) *out++ = ToChannel(sum[channel]);
      }
    }
    std::vector<int64_t> sums(lineBytes);
    for (int y = 0; y < height; ++y) {
      const Taps& taps = down.taps[size_t(y)];
      std::fill(sums.begin(), sums.end(), 0);
      for (int k = 0; k < taps.count; ++k) {
        const uint8_t* s = narrowed.data() + size_t(taps.first + k) * lineBytes;
        const int64_t weight = down.weights[taps.weights + size_t(k)];
        for (size_t i = 0; i < lineBytes; ++i) sums[i] += weight * s[i];
      }
      for (int x = 0; x < width; ++x) {
        const int64_t* sum = sums.data() + size_t(x) * 3;
        destination.ops->SetPixelColor(destination, to.left + x, to.top + y,
                                       MakeColour(ToChannel(sum[0]), ToChannel(sum[1]), ToChannel(sum[2])));
      }
    }
  }
  library->Budget().Return(bytes);
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
  const Rect from = {sx, sy, sx + sw, sy + sh};
  const int64_t right = int64_t{dx} + dw;
  const int64_t bottom = int64_t{dy} + dh;
  if (dx >= destination.clipRight || dy >= destination.clipBottom || right <= destination.clipLeft ||
      bottom <= destination.clipTop) {
    return false;
  }
  const bool isWhole = dx >= destination.clipLeft && dy >= destination.clipTop && right <= destination.clipRight &&
                       bottom <= destination.clipBottom;
  if (depth == 8 && !(palette && palette->EnsureInverseMap())) return false;
  const auto stretch = [&](cSurfaceImpl& target, const Rect& to) {
    if (resample) return StretchFiltered(target, to, from);
    StretchNearest(target, to, from);
    return true;
  };
  if (depth == destination.depth && mode == 0 && effect == kEffectNone && isWhole && &destination != this) {
    return stretch(destination, {dx, dy, int(right), int(bottom)});
  }
  const auto stretched = MakeInstance(dw, dh);
  return stretched && stretch(*stretched, {0, 0, dw, dh}) &&
         stretched->Blit(destination, dx, dy, 0, 0, dw, dh, mode, effect, param, false);
}

namespace {

int NormalDegrees(int degrees) {
  const int d = degrees % 360;
  return d < 0 ? d + 360 : d;
}

struct Turn {
  float cosine;
  float sine;
};

Turn TurnOf(int degrees) {
  if (degrees == 90) return {0, 1};
  if (degrees == 270) return {0, -1};
  const double radians = degrees * 0.01745329251993889;
  return {float(std::cos(radians)), float(std::sin(radians))};
}

}  // namespace

Size cSurfaceImpl::RotatedSize(int degrees) const {
  degrees = NormalDegrees(degrees);
  if (degrees % 180 == 0) return {width, height};
  if (degrees % 90 == 0) return {height, width};
  const Turn turn = TurnOf(degrees);
  const float c = std::abs(turn.cosine);
  const float s = std::abs(turn.sine);
  return {int(float(width) * c + float(height) * s), int(float(width) * s + float(height) * c)};
}

bool cSurfaceImpl::Rotate(cSurfaceImpl& destination, int degrees, bool interpolate, Colour background) const {
  if (!Lock() || !destination.Lock() || depth != destination.depth || &destination == this) return false;
  degrees = NormalDegrees(degrees);
  if (degrees % 180 == 0) {
    if (!Blit(destination, 0, 0, 0, 0, width, height, 0, kEffectNone, 0, false)) return false;
    if (degrees == 180) {
      destination.MirrorHorizontal(0, 0, width, height);
      destination.MirrorVertical(0, 0, width, height);
    }
    return true;
  }
  const Turn turn = TurnOf(degrees);
  const float c = turn.cosine;
  const float s = turn.sine;
  const float dstWidth = float(destination.width);
  const float dstHeight = float(destination.height);
  float lineX = float(width) / 2 - dstWidth * c / 2 + dstHeight * s / 2;
  float lineY = float(height) / 2 - dstWidth * s / 2 - dstHeight * c / 2;
  const uint32_t outside = destination.PixelOfColour(background);
  const auto colourAt = [this](int x, int y) {
    const uint32_t value = ops->GetPixelColor(*this, x, y);
    return depth == 8 ? PaletteColor(int(value)) : value;
  };
  const auto isInside = [this](int x, int y) { return x >= 0 && y >= 0 && x < width && y < height; };
  const Rect clip = destination.GetClipRect();
  for (int y = 0; y < destination.height; ++y, lineX -= s, lineY += c) {
    float sx = lineX;
    float sy = lineY;
    for (int x = 0; x < destination.width; ++x, sx += c, sy += s) {
      if (!clip.Contains(x, y)) continue;
      uint32_t pixel = outside;
      if (!interpolate) {
        const int ix = int(std::lrint(sx));
        const int iy = int(std::lrint(sy));
        if (isInside(ix, iy)) {
          pixel = 0;
          std::memcpy(&pixel, PixelAt(ix, iy), size_t(bytesPerPixel));
        }
      } else {
        const int ix = int(sx);
        const int iy = int(sy);
        if (isInside(ix, iy)) {
          const float fx = sx - float(ix);
          const float fy = sy - float(iy);
          const bool hasRight = ix + 1 < width;
          const bool hasBelow = iy + 1 < height;
          const Colour here = colourAt(ix, iy);
          const Colour next = hasRight ? colourAt(ix + 1, iy) : here;
          const Colour below = hasBelow ? colourAt(ix, iy + 1) : here;
          const Colour across = hasRight && hasBelow ? colourAt(ix + 1, iy + 1) : here;
          const float both = fx * fy;
          const float weightBelow = fy - both;
          const float weightNext = fx - both;
          const float weightHere = 1 - fy - weightNext;
          Colour mixed = 0;
          for (int shift = 0; shift < 24; shift += 8) {
            const auto channel = [shift](Colour v) { return float(v >> shift & 0xFF); };
            const float sum = both * channel(across) + weightBelow * channel(below) + weightNext * channel(next) +
                              weightHere * channel(here) + 0.5f;
            mixed |= uint32_t(std::clamp(sum, 0.0f, 255.0f)) << shift;
          }
          pixel = destination.PixelOfColour(mixed);
        }
      }
      FillBoxRaw(destination, x, y, 1, 1, pixel);
    }
  }
  return true;
}

}  // namespace vl

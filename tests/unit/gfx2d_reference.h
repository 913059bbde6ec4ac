// What the pixel operations must do, written pixel by pixel from their formulas and apart from the library: its own
// addressing, colours, palette search and clipping. Slow and plain on purpose.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <vector>

#include "base/rect.h"
#include "gfx2d/palette.h"

namespace vl::reference {

struct Rgb {
  int r = 0;
  int g = 0;
  int b = 0;
  bool operator==(const Rgb&) const = default;
  bool IsBlack() const { return r == 0 && g == 0 && b == 0; }
};

inline Rgb FromColour(uint32_t c) { return {int(c & 255), int(c >> 8 & 255), int(c >> 16 & 255)}; }
inline uint32_t ToColour(Rgb c) { return uint32_t(c.r | c.g << 8 | c.b << 16); }

// A palette with what its inverse map has learnt.
struct Palette {
  int count = 256;
  std::vector<Rgb> entries = std::vector<Rgb>(256);
  std::vector<int> map;  // empty until it is made; 0 is not known

  Rgb At(uint32_t index) const { return int(index) < count ? entries[index] : Rgb{}; }
  static size_t Cell(Rgb c) { return size_t(c.r / 8 * 1024 + c.g / 8 * 32 + c.b / 8); }
  void EnsureMap() {
    if (!map.empty()) return;
    map.assign(32768, 0);
    for (int i = 0; i < count; ++i) map[Cell(entries[size_t(i)])] = i;
  }
  int Search(Rgb c) const {
    if (count == 256 && c.IsBlack()) return 0;
    int best = -1;
    int found = 0;
    for (int i = count == 256 ? 1 : 0; i < count; ++i) {
      const Rgb e = entries[size_t(i)];
      const int d = (e.r - c.r) * (e.r - c.r) + (e.g - c.g) * (e.g - c.g) + (e.b - c.b) * (e.b - c.b);
      if (best < 0 || d <= best) {
        best = d;
        found = i;
      }
      if (d == 0) break;
    }
    return found;
  }
  int Nearest(Rgb c) {
    if (map.empty() || (count == 256 && c.IsBlack())) return Search(c);
    int& cell = map[Cell(c)];
    if (cell == 0) cell = Search(c);
    return cell;
  }
};

// An image over bytes of its own.
struct Image {
  int depth = 0;
  int width = 0;
  int height = 0;
  std::vector<uint8_t> memory;
  int64_t top = 0;    // offset of line 0
  int64_t pitch = 0;  // from line to line
  Rect clip;
  Palette* palette = nullptr;  // depth 8

  int Bytes() const { return depth == 8 ? 1 : depth <= 16 ? 2 : depth / 8; }
  uint32_t Get(int x, int y) const {
    uint32_t pixel = 0;
    for (int i = Bytes() - 1; i >= 0; --i) pixel = pixel << 8 | memory[size_t(top + y * pitch + x * Bytes() + i)];
    return pixel;
  }
  void Put(int x, int y, uint32_t pixel) {
    for (int i = 0; i < Bytes(); ++i) memory[size_t(top + y * pitch + x * Bytes() + i)] = uint8_t(pixel >> (8 * i));
  }
  bool Has(int x, int y) const { return x >= 0 && y >= 0 && x < width && y < height; }

  Rgb Widen(uint32_t p) const {
    switch (depth) {
      case 8:
        return palette->At(p);
      case 15:
        return {int(p / 1024 % 32) * 8, int(p / 32 % 32) * 8, int(p % 32) * 8};
      case 16:
        return {int(p / 2048 % 32) * 8, int(p / 32 % 64) * 4, int(p % 32) * 8};
      default:
        return {int(p >> 16 & 255), int(p >> 8 & 255), int(p & 255)};
    }
  }
  // Depths of channels only; may give 0 for a colour that isn't black.
  uint32_t Narrow(Rgb c) const {
    if (depth == 15) return uint32_t(c.r / 8 * 1024 + c.g / 8 * 32 + c.b / 8);
    if (depth == 16) return uint32_t(c.r / 8 * 2048 + c.g / 4 * 32 + c.b / 8);
    return uint32_t(c.r << 16 | c.g << 8 | c.b);
  }
  Rgb ColourAt(int x, int y) const { return Widen(Get(x, y)); }
  uint32_t PixelOf(Rgb c) const {
    if (depth == 8) return uint32_t(palette->Nearest(c));
    const uint32_t pixel = Narrow(c);
    return pixel == 0 && !c.IsBlack() ? 1 : pixel;
  }
};

// A temporary image without clip or bytes around it.
inline Image Blank(const Image& like, int width, int height) {
  Image image;
  image.depth = like.depth;
  image.width = width;
  image.height = height;
  image.pitch = int64_t{width} * like.Bytes();
  image.memory.resize(size_t(image.pitch * height));
  image.clip = {0, 0, width, height};
  image.palette = like.palette;
  return image;
}

inline uint32_t Convert(const Image& from, const Image& to, uint32_t s) {
  if (s == 0 || from.depth == to.depth) return s;
  const Rgb c = from.Widen(s);
  const uint32_t result = to.depth == 8 ? uint32_t(to.palette->Nearest(c)) : to.Narrow(c);
  return result == 0 ? 1 : result;
}

inline uint32_t Effect(const Image& target, int effect, uint32_t param, uint32_t s, uint32_t d) {
  const uint32_t all = target.Bytes() == 4 ? 0xFFFFFFFF : (1u << target.Bytes() * 8) - 1;
  switch (effect) {
    case 0:
    case 7:
      return s;
    case 2:
      return all & ~s;
    case 3:
      return s ^ d;
    case 4:
      return s & d;
    case 5:
      return s | d;
    case 8:
      return d & ~s;
    default:
      break;
  }
  if (target.depth == 8 && effect == 9) return std::min(s + d, 255u);
  const Rgb a = target.Widen(s);
  Rgb b = target.Widen(d);
  Rgb result;
  if (effect == 9) {
    result = {std::min(a.r + b.r, 255), std::min(a.g + b.g, 255), std::min(a.b + b.b, 255)};
  } else {
    const int c = std::min(effect == 6 ? int(param >> 24) : int(std::min(param, 128u)), 128);
    if (effect == 6 && d == 0) b = FromColour(param);
    const auto mix = [c](int x, int y) { return (x * (128 - c) + y * c) >> 7; };
    result = {mix(a.r, b.r), mix(a.g, b.g), mix(a.b, b.b)};
  }
  if (target.depth == 8) return uint32_t(target.palette->Nearest(result));
  return target.Narrow(result) | (target.depth == 32 ? d & 0xFF000000 : 0);
}

// Source and destination point of every pixel that a blit reaches, in order.
template <class F>
bool ForEach(const Image& to, const Image& from, int dx, int dy, int sx, int sy, int w, int h, F&& f) {
  bool any = false;
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) {
      if (!from.Has(sx + x, sy + y) || !to.clip.Contains(dx + x, dy + y)) continue;
      any = true;
      f(dx + x, dy + y, sx + x, sy + y);
    }
  }
  return any;
}

using Window = std::function<Rgb(const Rgb* destination, const Rgb* source)>;
struct WindowShape {
  int width = 3, height = 3, centreX = 1, centreY = 1, marginX = 1, marginY = 1;
};

inline bool Filter(Image& to, const Image& from, int dx, int dy, int sx, int sy, int w, int h, const WindowShape& shape,
                   const Window& f) {
  // The box that is left of it.
  Rect box = {INT32_MAX, INT32_MAX, INT32_MIN, INT32_MIN};
  if (!ForEach(to, from, dx, dy, sx, sy, w, h, [&](int x, int y, int, int) {
        box = box.Union({x, y, x + 1, y + 1});
      })) {
    return false;
  }
  const int left = box.left - shape.marginX;
  const int top = box.top - shape.marginY;
  const int tw = box.Width() + shape.width + 2 * shape.marginX;
  const int th = box.Height() + shape.height + 2 * shape.marginY;
  std::vector<Rgb> before(size_t(tw * th));
  for (int y = 0; y < th; ++y) {
    for (int x = 0; x < tw; ++x) {
      before[size_t(y * tw + x)] = to.Has(left + x, top + y) ? to.ColourAt(left + x, top + y) : to.Widen(0);
    }
  }
  for (int y = box.top; y < box.bottom; ++y) {
    for (int x = box.left; x < box.right; ++x) {
      std::vector<Rgb> d, s;
      for (int wy = 0; wy < shape.height; ++wy) {
        for (int wx = 0; wx < shape.width; ++wx) {
          const int tx = std::clamp(x - left - shape.centreX + wx, 0, tw - 1);
          const int ty = std::clamp(y - top - shape.centreY + wy, 0, th - 1);
          d.push_back(before[size_t(ty * tw + tx)]);
          const int fx = x - dx + sx - shape.centreX + wx;
          const int fy = y - dy + sy - shape.centreY + wy;
          s.push_back(from.Has(fx, fy) ? from.ColourAt(fx, fy) : Rgb{});
        }
      }
      to.Put(x, y, to.PixelOf(f(d.data(), s.data())));
    }
  }
  return true;
}

inline Rgb EdgeFilter(const Rgb* around, const Rgb* s, Rgb forBlack) {
  Rgb d[9];
  for (int i = 0; i < 9; ++i) d[i] = around[i].IsBlack() ? forBlack : around[i];
  const Rgb c = d[4];
  const auto set = [s](int i) { return !s[i].IsBlack(); };
  if (set(4) || (!set(1) && !set(7)) || (!set(3) && !set(5))) return c;
  Rgb sum = {12 * c.r, 12 * c.g, 12 * c.b};
  for (int i = 0; i < 9; ++i) {
    if (i == 4) continue;
    const int weight = i % 2 == 1 ? 2 : 1;
    const Rgb part = set(i) ? d[i] : c;
    sum = {sum.r + weight * part.r, sum.g + weight * part.g, sum.b + weight * part.b};
  }
  return {sum.r / 24, sum.g / 24, sum.b / 24};
}

inline bool Blit(Image& to, const Image& from, int dx, int dy, int sx, int sy, int w, int h, int mode, int effect,
                 uint32_t param, bool antiAlias) {
  Image same = from;
  int tx = 0, ty = 0;  // where the whole of `same` lies in the destination, for the softening
  if (to.depth != from.depth && (mode != 0 || effect != 0 || antiAlias)) {
    // Through a temporary of the box.
    Rect box = {INT32_MAX, INT32_MAX, INT32_MIN, INT32_MIN};
    int ox = 0, oy = 0;
    if (!ForEach(to, from, dx, dy, sx, sy, w, h, [&](int x, int y, int fx, int fy) {
          if (box.IsEmpty()) ox = fx, oy = fy;
          box = box.Union({x, y, x + 1, y + 1});
        })) {
      return false;
    }
    same = Blank(to, box.Width(), box.Height());
    for (int y = 0; y < same.height; ++y) {
      for (int x = 0; x < same.width; ++x) same.Put(x, y, Convert(from, to, from.Get(ox + x, oy + y)));
    }
    dx = box.left, dy = box.top, sx = sy = 0, w = same.width, h = same.height;
  }
  tx = dx, ty = dy;
  if (to.depth == 8 && (effect == 1 || effect == 6)) to.palette->EnsureMap();
  const bool any = ForEach(to, same, dx, dy, sx, sy, w, h, [&](int x, int y, int fx, int fy) {
    const uint32_t s = same.Get(fx, fy);
    if (mode == 1 && s == 0) return;
    to.Put(x, y, to.depth != same.depth ? Convert(same, to, s) : Effect(to, effect, param, s, to.Get(x, y)));
  });
  if (any && antiAlias) {
    const Rgb forBlack = effect == 6 ? FromColour(param) : Rgb{};
    Filter(to, same, tx, ty, 0, 0, same.width, same.height, WindowShape{},
           [forBlack](const Rgb* d, const Rgb* s) { return EdgeFilter(d, s, forBlack); });
  }
  return any;
}

// The weights of one target pixel, from tap `first` on.
struct Taps {
  int first = 0;
  std::vector<int64_t> weights;
};

inline Taps TapsOf(int n, int m, int i) {
  const double s = double(m) / n;
  const double r = s >= 1 ? 1 : 1 / s;
  const double f = std::min(1.0, s);
  const int widest = 2 * int(std::ceil(r)) + 1;
  const double c = i / s;
  int first = std::max(int(std::floor(c - r)), 0);
  int last = std::min(int(std::ceil(c + r)), n - 1);
  if (last - first + 1 > widest) {
    if (first < n)
      ++first;
    else
      --last;
  }
  std::vector<double> w;
  for (int j = first; j <= last; ++j) {
    const double t = std::abs(c - j) * f;
    const double u = t < 1 ? 1 - t : 0;
    w.push_back((2 * u * u + u) * (1.0 / 3) * f);
  }
  while (!w.empty() && w.front() == 0) w.erase(w.begin()), ++first;
  while (!w.empty() && w.back() == 0) w.pop_back();
  double sum = 0;
  for (const double x : w) sum += x;
  Taps taps{first, {}};
  for (const double x : w) taps.weights.push_back(int64_t((sum > 0 ? x / sum : x) * 65536));
  return taps;
}

// One target pixel of one pass over `get(i)`.
template <class Get>
Rgb Apply(const Taps& taps, Get&& get) {
  int64_t r = 0x8000, g = 0x8000, b = 0x8000;
  for (size_t k = 0; k < taps.weights.size(); ++k) {
    const Rgb c = get(taps.first + int(k));
    r += taps.weights[k] * c.r, g += taps.weights[k] * c.g, b += taps.weights[k] * c.b;
  }
  const auto channel = [](int64_t v) { return int(std::clamp<int64_t>(v, 0, 0xFF0000) >> 16); };
  return {channel(r), channel(g), channel(b)};
}

inline bool Stretch(Image& to, const Image& from, int dx, int dy, int dw, int dh, int sx, int sy, int sw, int sh,
                    int mode, int effect, uint32_t param, bool resample) {
  if (dw == sw && dh == sh) return Blit(to, from, dx, dy, sx, sy, dw, dh, mode, effect, param, false);
  if (dw <= 0 || dh <= 0 || sw <= 0 || sh <= 0 || !from.Has(sx, sy) || !from.Has(sx + sw - 1, sy + sh - 1))
    return false;
  const Rect box = Rect{dx, dy, dx + dw, dy + dh}.Intersect(to.clip);
  if (box.IsEmpty()) return false;
  if (from.depth == 8) from.palette->EnsureMap();
  Image made = Blank(from, box.Width(), box.Height());
  std::vector<Rgb> narrowed(size_t(resample ? made.width * sh : 0));
  for (int y = 0; resample && y < sh; ++y) {
    for (int x = 0; x < made.width; ++x) {
      const Taps taps = TapsOf(sw, dw, box.left - dx + x);
      narrowed[size_t(y * made.width + x)] = Apply(taps, [&](int j) { return from.ColourAt(sx + j, sy + y); });
    }
  }
  // Straight into a destination of the same kind the result is that one's colours.
  const bool isDirect = from.depth == to.depth && mode == 0 && effect == 0 && box.Width() == dw && box.Height() == dh;
  const Image& kind = isDirect ? to : made;
  for (int y = 0; y < made.height; ++y) {
    const Taps down = resample ? TapsOf(sh, dh, box.top - dy + y) : Taps{};
    for (int x = 0; x < made.width; ++x) {
      const int ix = box.left - dx + x;
      const int iy = box.top - dy + y;
      if (resample) {
        const Rgb c = Apply(down, [&](int j) { return narrowed[size_t(j * made.width + x)]; });
        made.Put(x, y, kind.PixelOf(c));
      } else {
        made.Put(x, y,
                 from.Get(sx + int(int64_t{ix} * ((int64_t{sw} << 16) / dw) >> 16),
                          sy + int(int64_t{iy} * ((int64_t{sh} << 16) / dh) >> 16)));
      }
    }
  }
  if (!isDirect) return Blit(to, made, box.left, box.top, 0, 0, made.width, made.height, mode, effect, param, false);
  for (int y = 0; y < made.height; ++y) {
    for (int x = 0; x < made.width; ++x) to.Put(box.left + x, box.top + y, made.Get(x, y));
  }
  return true;
}

// Neither 0 nor 180 degrees.
inline void Rotate(Image& to, const Image& from, int degrees, bool interpolate, Rgb background) {
  float c = float(std::cos(degrees * 0.01745329251993889));
  float s = float(std::sin(degrees * 0.01745329251993889));
  if (degrees % 180 == 90) c = 0, s = degrees == 90 ? 1.0f : -1.0f;
  float lineX = float(from.width) / 2 - float(to.width) * c / 2 + float(to.height) * s / 2;
  float lineY = float(from.height) / 2 - float(to.width) * s / 2 - float(to.height) * c / 2;
  const uint32_t outside = to.PixelOf(background);
  for (int y = 0; y < to.height; ++y) {
    float sx = lineX, sy = lineY;
    for (int x = 0; x < to.width; ++x) {
      uint32_t pixel = outside;
      if (!interpolate) {
        const int ix = int(std::nearbyint(sx)), iy = int(std::nearbyint(sy));
        if (from.Has(ix, iy)) pixel = from.Get(ix, iy);
      } else if (const int ix = int(sx), iy = int(sy); from.Has(ix, iy) && to.clip.Contains(x, y)) {
        const float fx = sx - float(ix), fy = sy - float(iy);
        const Rgb here = from.ColourAt(ix, iy);
        const Rgb next = from.Has(ix + 1, iy) ? from.ColourAt(ix + 1, iy) : here;
        const Rgb below = from.Has(ix, iy + 1) ? from.ColourAt(ix, iy + 1) : here;
        const Rgb across = from.Has(ix + 1, iy + 1) ? from.ColourAt(ix + 1, iy + 1) : here;
        const float a = fx * fy;
        const auto mix = [&](int pa, int pb, int pn, int ph) {
          float sum = a * float(pa);
          sum += (fy - a) * float(pb);
          sum += (fx - a) * float(pn);
          sum += (1 - fy - (fx - a)) * float(ph);
          return int(std::clamp(sum + 0.5f, 0.0f, 255.0f));
        };
        pixel = to.PixelOf({mix(across.r, below.r, next.r, here.r), mix(across.g, below.g, next.g, here.g),
                            mix(across.b, below.b, next.b, here.b)});
      }
      if (to.clip.Contains(x, y)) to.Put(x, y, pixel);
      sx += c;
      sy += s;
    }
    lineX -= s;
    lineY += c;
  }
}

// All that hangs together with the seed across edges. Gives the box of what was painted, empty when nothing was.
inline Rect FloodFill(Image& image, int x, int y, Rgb colour, int tolerance) {
  if (!image.clip.Contains(x, y)) return {};
  const int low = image.depth == 15 || image.depth == 16 ? 0xF8 : 0xFF;
  colour = {colour.r & low, colour.g & (image.depth == 16 ? 0xFC : low), colour.b & low};
  const uint32_t pixel = image.PixelOf(colour);
  const Rgb held = image.Widen(pixel);
  const Rgb seed = image.ColourAt(x, y);
  if (seed == held) return {};
  Rect box = {x, y, x, y};
  std::vector<std::pair<int, int>> open = {{x, y}};
  while (!open.empty()) {
    const auto [px, py] = open.back();
    open.pop_back();
    if (!image.clip.Contains(px, py)) continue;
    const Rgb c = image.ColourAt(px, py);
    if (c == held || std::abs(c.r - seed.r) > tolerance || std::abs(c.g - seed.g) > tolerance ||
        std::abs(c.b - seed.b) > tolerance) {
      continue;
    }
    image.Put(px, py, pixel);
    box = box.Union({px, py, px + 1, py + 1});
    open.insert(open.end(), {{px + 1, py}, {px - 1, py}, {px, py + 1}, {px, py - 1}});
  }
  return box;
}

}  // namespace vl::reference

// cSurface: the handle that callers hold on a surface.
//
// It is never null: an empty handle answers every call with a harmless false. It adds an origin, which its
// drawing and pixel calls subtract from coordinates of this surface.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "gfx2d/cursor_image.h"
#include "gfx2d/surface_impl.h"

namespace vl {

class Pattern;

inline constexpr uint32_t SURF_ERR_NOMEM = 0x40000000;
inline constexpr uint32_t SURF_ERR_UNSUPPORTED = 0x40010000;
inline constexpr uint32_t SURF_ERR_BADDATA = 0x40010002;

// Flags of SaveToDIB and LoadFromDIB.
inline constexpr uint32_t kDibHeaderOnly = 1;   // save: no pixels
inline constexpr uint32_t kDibKeepPalette = 1;  // load, depth 8: the pixels are translated to the surface's palette
inline constexpr uint32_t kDibPaletteAsIs = 4;  // load, depth 8: the bitmap's palette is not put in order

struct Point {
  int x = 0;
  int y = 0;
  bool operator==(const Point&) const = default;
};

class cSurface {
 public:
  cSurface() : impl(NullSurface()) {}
  cSurface(cSurface&& o) noexcept : cSurface() { Swap(o); }
  cSurface& operator=(cSurface&& o) noexcept {
    Swap(o);
    return *this;
  }

  // Sizes below 1 become 1. On failure the handle is empty and lastError tells why.
  bool Create(int width, int height, const cSurfaceImpl* prototype);
  bool IsValid() const { return impl.get() != NullSurface(); }
  void Destroy() { impl.reset(NullSurface()); }
  // Null leaves the handle empty.
  void Adopt(std::unique_ptr<cSurfaceImpl> implementation);
  // A copy; width -1 keeps the size, others stretch.
  bool CloneFrom(const cSurface& source, int width = -1, int height = 0);
  // Everything of the source at 0, 0 of the pixels.
  bool CopyFrom(const cSurface& source);
  void SetOrigin(int x, int y);
  Point GetOrigin() const { return {originX, originY}; }
  // What FindPrototype takes to stay in the same family.
  int GetKindGroup() const;
  int GetFamily() const { return impl->GetKind() == 5 ? 2 : 0; }
  Rect GetClipRect() const;
  void SetClipRect(int x, int y, int width, int height);
  uint8_t* GetBits() { return impl->Lock() ? impl->topLine : nullptr; }
  void ReleaseBits() { impl->Unlock(); }

  bool SetPixel(int x, int y, Colour colour) { return impl->SetPixel(X(x), Y(y), colour); }
  bool SetPixelRaw(int x, int y, uint32_t pixel) { return impl->SetPixelRaw(X(x), Y(y), pixel); }
  bool GetPixel(int x, int y, Colour& colour) const { return impl->GetPixel(X(x), Y(y), colour); }
  bool GetPixelRaw(int x, int y, uint32_t& pixel) const { return impl->GetPixelRaw(X(x), Y(y), pixel); }
  bool Fill(int x, int y, int width, int height, Colour colour) {
    return impl->Fill(X(x), Y(y), width, height, colour);
  }
  bool FillRaw(int x, int y, int width, int height, uint32_t pixel) {
    return impl->FillRaw(X(x), Y(y), width, height, pixel);
  }
  bool Blit(cSurface& destination, int dx, int dy, int sx, int sy, int width, int height, int mode, int effect = 0,
            uint32_t param = 0, bool antiAlias = false) const {
    return impl->Blit(*destination.impl, destination.X(dx), destination.Y(dy), X(sx), Y(sy), width, height, mode,
                      effect, param, antiAlias);
  }
  bool BlitCallback(cSurface& destination, int dx, int dy, int sx, int sy, int width, int height, int mode,
                    PixelCallback f, void* param) const {
    return impl->BlitCallback(*destination.impl, destination.X(dx), destination.Y(dy), X(sx), Y(sy), width, height,
                              mode, f, param);
  }
  bool StretchBlit(cSurface& destination, int dx, int dy, int dw, int dh, int sx, int sy, int sw, int sh, int mode,
                   int effect = 0, uint32_t param = 0, bool resample = false) const {
    return impl->StretchBlit(*destination.impl, destination.X(dx), destination.Y(dy), dw, dh, X(sx), Y(sy), sw, sh,
                             mode, effect, param, resample);
  }
  // Makes `destination` at the size of the turned surface and fills it. Degrees of any size.
  bool RotateInto(cSurface& destination, int degrees, bool interpolate, Colour background) const;
  bool MoveBox(int sx, int sy, int dx, int dy, int width, int height) {
    return impl->MoveBox(X(sx), Y(sy), X(dx), Y(dy), width, height);
  }
  bool MirrorHorizontal(int x, int y, int width, int height) {
    return impl->MirrorHorizontal(X(x), Y(y), width, height);
  }
  bool MirrorVertical(int x, int y, int width, int height) { return impl->MirrorVertical(X(x), Y(y), width, height); }

  // One line; size is the pen's, 1 draws the exact line, ends included.
  bool DrawLine(int x1, int y1, int x2, int y2, int size, Colour colour);
  // Simple shapes. A box excludes its right and bottom; the pen lies inside it. penSize 0 draws no outline.
  bool DrawEllipse(const Rect& box, Colour fillColor, int penSize, Colour penColor, bool fill);
  bool DrawRectangle(const Rect& box, Colour fillColor, int penSize, Colour penColor, bool fill);
  bool DrawPolygonShape(std::span<const Point> points, Colour fillColor, int penSize, Colour penColor, bool fill);
  // Rich shapes: patterns through a mask, with effect and anti-aliasing. A null pattern leaves its part out.
  bool DrawLinePattern(int x1, int y1, int x2, int y2, int size, Pattern& pattern, bool antiAlias, int effect,
                       uint32_t param);
  bool DrawEllipsePattern(const Rect& box, Pattern* fillPattern, int penSize, Pattern* penPattern, bool antiAlias,
                          int effect, uint32_t param);
  bool DrawRectanglePattern(const Rect& box, Pattern* fillPattern, int penSize, Pattern* penPattern, bool antiAlias,
                            int effect, uint32_t param);
  bool DrawPolygonPattern(std::span<const Point> points, Pattern* fillPattern, int penSize, Pattern* penPattern,
                          bool antiAlias, int effect, uint32_t param);
  // Fills from a seed what differs from it by at most `tolerance` a channel; `box` is what was painted.
  bool FloodFill(int x, int y, Rect& box, Colour colour, int tolerance);

  // Bytes of the surface as a bitmap with its header; 0 when it is empty.
  size_t DIBSize() const;
  // Writes a bitmap with bottom-up lines: the header with masks or colour table, and the pixels behind it or into
  // `bits` when that isn't empty. False, with lastError SURF_ERR_BADDATA, when they don't fit.
  bool SaveToDIB(std::span<uint8_t> header, std::span<uint8_t> bits, uint32_t flags);
  // Takes over a bitmap's picture, in the surface's own depth and the bitmap's size. The pixels follow the header, or
  // are `bits` when that isn't empty. In depth 8 the palette is taken over too, in the order of the system colours,
  // unless a flag says otherwise. On failure lastError tells why and the picture stays.
  bool LoadFromDIB(std::span<const uint8_t> dib, std::span<const uint8_t> bits, uint32_t flags);
  // The picture as a pointer of that size (0: the system's), centred, made smaller when it doesn't fit; without a hot
  // spot it is an icon. Pixels of the mask's colour don't show. Nothing when the handle is empty, the size is above
  // CursorImage::kMaxSide or memory is spent.
  std::optional<CursorImage> MakeCursor(int width, int height, Colour maskColour,
                                        const std::optional<Point>& hotSpot) const;

  struct Delete {
    void operator()(cSurfaceImpl* p) const {
      if (p != NullSurface()) delete p;
    }
  };
  std::unique_ptr<cSurfaceImpl, Delete> impl;  // never null
  int32_t originX = 0;
  int32_t originY = 0;
  uint32_t lastError = 0;

 private:
  static cSurfaceImpl* NullSurface();
  // Shape coordinates in the surface: moved by the origin and clamped, boxes with the smaller corner first.
  Rect ShapeBox(const Rect& box) const;
  Point ShapePoint(int x, int y) const;
  std::vector<Point> ShapePoints(std::span<const Point> points) const;
  void Swap(cSurface& o) noexcept;
  // Surface coordinates of handle coordinates; wrapping ones end outside every surface.
  int X(int x) const { return int(uint32_t(x) - uint32_t(originX)); }
  int Y(int y) const { return int(uint32_t(y) - uint32_t(originY)); }
};

}  // namespace vl

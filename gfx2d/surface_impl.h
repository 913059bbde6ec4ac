// cSurfaceImpl: a rectangle of pixels of one of five depths, and what can be done with it.
//
// Pixel (x, y) lies at topLine + y * pitch + x * bytesPerPixel, whatever the line order; every routine
// addresses pixels so. Sides are 1 to limits::kMaxSurfaceSide, and the clip rectangle always lies inside the
// surface (it may be empty). Operations take any coordinates: they clip, and never touch memory outside.
// They give false when nothing was done. Coordinates are pixels of the surface; origins belong to the handle.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>

#include "base/rect.h"
#include "gfx2d/colour.h"
#include "gfx2d/palette.h"
#include "gfx2d/pixel_ops.h"
#include "platform/file_system.h"

namespace vl {

class SurfaceLibrary;
struct RowKernels;

// The result for one pixel from the windows of destination and source around it, row by row; pixels outside
// the source are 0.
using WindowFilter = Colour (*)(const Colour* destination, const Colour* source, uint32_t param);

struct FilterWindow {
  int width = 3;
  int height = 3;
  int centreX = 1;
  int centreY = 1;
  int marginX = 1;
  int marginY = 1;
};

class cSurfaceImpl {
 public:
  explicit cSurfaceImpl(SurfaceLibrary* owner) : library(owner) {}
  virtual ~cSurfaceImpl() = default;
  cSurfaceImpl(const cSurfaceImpl&) = delete;
  cSurfaceImpl& operator=(const cSurfaceImpl&) = delete;

  // A new surface of the same class of memory, depth and palette, all pixels 0. Null when the size is out of
  // range or memory is spent.
  virtual std::unique_ptr<cSurfaceImpl> MakeInstance(int width, int height) const;
  // A new block of that size; the pixels are lost and the clip is the whole surface. On failure nothing changes.
  virtual bool Resize(int width, int height) { return false; }
  // 0 none, 1 memory.
  virtual int GetKind() const = 0;
  bool IsDeviceOnly() const { return false; }
  bool HasOrigin() const { return false; }
  bool HasCapability(int number) const { return topLine && number >= 0 && number <= 5; }
  bool Lock() const { return topLine != nullptr; }
  void Unlock() const {}

  // Clip rectangle: right and bottom exclusive.
  Rect GetClipRect() const { return {clipLeft, clipTop, clipRight, clipBottom}; }
  void SetClipRect(int x, int y, int width, int height);
  void ResetClipRect();

  // Single pixels, inside the clip only.
  bool SetPixelRaw(int x, int y, uint32_t pixel);
  bool SetPixel(int x, int y, Colour colour);
  bool GetPixelRaw(int x, int y, uint32_t& pixel) const;
  bool GetPixel(int x, int y, Colour& colour) const;
  bool FillRaw(int x, int y, int width, int height, uint32_t pixel);
  bool Fill(int x, int y, int width, int height, Colour colour);
  // The pixel that a colour is stored as.
  uint32_t PixelOfColour(Colour colour) const;
  Colour ColourOfPixel(uint32_t pixel) const;

  // Copies a box of this surface to `destination`. mode 1 leaves out pixels of value 0; effect is a DrawEffect.
  // antiAlias softens the edges of what mode 1 shows.
  bool Blit(cSurfaceImpl& destination, int dx, int dy, int sx, int sy, int width, int height, int mode, int effect,
            uint32_t param, bool antiAlias) const;
  // Copies inside this surface, overlaps included. Both boxes wholly inside, or nothing happens.
  bool MoveBox(int sx, int sy, int dx, int dy, int width, int height);
  // Equal depths only.
  bool BlitCallback(cSurfaceImpl& destination, int dx, int dy, int sx, int sy, int width, int height, int mode,
                    PixelCallback f, void* param) const;
  bool BlitFilter(cSurfaceImpl& destination, int dx, int dy, int sx, int sy, int width, int height,
                  const FilterWindow& window, WindowFilter f, uint32_t param) const;
  // The source box must lie inside this surface. resample false: nearest pixel; true: filtered.
  bool StretchBlit(cSurfaceImpl& destination, int dx, int dy, int dw, int dh, int sx, int sy, int sw, int sh, int mode,
                   int effect, uint32_t param, bool resample) const;
  // Turns this surface into `destination`, of the same depth, about their centres.
  bool Rotate(cSurfaceImpl& destination, int degrees, bool interpolate, Colour background) const;
  // Size that holds this surface turned by 0 to 359 degrees.
  Size RotatedSize(int degrees) const;

  // Boxes under 2 pixels across have nothing to mirror and report true.
  bool MirrorHorizontal(int x, int y, int width, int height);
  bool MirrorVertical(int x, int y, int width, int height);
  // Bounding box of the pixels that are not 0; false when there are none, or on surfaces of width and height
  // under 3.
  bool GetContentBox(Rect& box) const;
  bool IsEmpty() const;
  // Over the whole surface.
  bool ReplaceColor(Colour from, Colour to);

  // Palettes: depth 8 only.
  bool SetPalette(const PaletteRef& newPalette, bool remap);
  bool SetPaletteFrom(const cSurfaceImpl& other, bool remap);
  bool SetPaletteRecord(const PaletteRecord& record, bool remap);
  // Copies entries from `first` on and gives how many; a null buffer gives the palette's count.
  int GetPaletteEntries(PaletteEntry* buffer, int first, int count) const;
  const PaletteRef& GetPalette() const { return palette; }
  bool GetPaletteRecord(PaletteRecord& record) const;
  int NearestIndex(Colour colour) const { return palette ? palette->NearestIndex(colour) : 0; }
  Colour PaletteColor(int index) const { return palette ? palette->ColourAt(index) : 0; }
  int GetBlackIndex() const { return palette ? palette->blackIndex : 4; }
  bool RemapFromPalette(const PaletteRecord& current);
  bool ApplyRemap(const RemapTable& table);

  // Raw absPitch * height bytes.
  bool ReadFromFile(File& file);
  bool WriteToFile(File& file) const;

  uint8_t* Line(int y) const { return topLine + ptrdiff_t{y} * pitch; }
  uint8_t* PixelAt(int x, int y) const { return Line(y) + ptrdiff_t{x} * bytesPerPixel; }

  int32_t width = 0;
  int32_t height = 0;
  int32_t clipLeft = 0;
  int32_t clipTop = 0;
  int32_t clipRight = 0;
  int32_t clipBottom = 0;
  int32_t depth = 0;       // 8, 15, 16, 24 or 32; 0 when there are no pixels
  int32_t depthIndex = 0;  // 0 to 4
  PaletteRef palette;      // depth 8, else none
  uint8_t* rawBits = nullptr;
  uint8_t* topLine = nullptr;
  int32_t absPitch = 0;
  int32_t pitch = 0;  // negative when the lines lie bottom-up
  int32_t bytesPerPixel = 0;
  int32_t bottomUp = 0;  // -1 when the lines lie bottom-up
  const cPixelOps* ops = nullptr;
  const RowKernels* kernels = nullptr;  // the library's
  SurfaceLibrary* library;              // outlives the surface; null for cNullSurface

 protected:
  void SetDepth(int bits);
  // Clips a blit to this source, then to the destination's clip rectangle. False when nothing is left.
  bool ClipBlit(const cSurfaceImpl& destination, int dx, int dy, int sx, int sy, int width, int height,
                BlitBox& box) const;

 private:
  // False when nothing is left of the box inside the clip rectangle.
  bool ClipBox(int x, int y, int width, int height, Rect& box) const;
  // The box `to` of the destination shows the part `part` of `from` stretched to `whole`; `part` has the size of `to`.
  struct Stretch {
    Rect from;
    Size whole;
    Rect part;
    Rect to;
  };
  bool StretchNearest(cSurfaceImpl& destination, const Stretch& stretch) const;
  bool StretchFiltered(cSurfaceImpl& destination, const Stretch& stretch) const;
  bool SoftenEdges(cSurfaceImpl& destination, int dx, int dy, bool hasColour, Colour colour) const;
  // Whether writing to a box of the destination could change one of this surface. Boxes lie inside.
  bool SharesPixels(const cSurfaceImpl& destination, const Rect& from, const Rect& to) const;
};

// No pixels: every operation gives false or does nothing. One is shared by all empty handles.
class cNullSurface final : public cSurfaceImpl {
 public:
  cNullSurface() : cSurfaceImpl(nullptr) {}
  std::unique_ptr<cSurfaceImpl> MakeInstance(int, int) const override { return nullptr; }
  int GetKind() const override { return 0; }
};

// Pixels in a block of its own, lines top-down.
class cMemSurface final : public cSurfaceImpl {
 public:
  // A prototype: a depth and its routines without pixels. Depth 8 takes the default palette.
  cMemSurface(SurfaceLibrary& library, int depth);
  ~cMemSurface() override;
  bool Resize(int width, int height) override;
  int GetKind() const override { return 1; }

 private:
  struct Free {
    void operator()(uint8_t* p) const { std::free(p); }
  };
  std::unique_ptr<uint8_t, Free> block_;
  size_t blockBytes_ = 0;
};

}  // namespace vl

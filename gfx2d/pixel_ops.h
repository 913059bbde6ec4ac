// cPixelOps: the pixel routines of one depth.
//
// They are called for whole boxes and never check: the caller has clipped the box to both surfaces and holds
// their locks. Source and destination of the copying ones have the same depth, ConvertFrom apart.
#pragma once

#include <cstdint>

#include "gfx2d/colour.h"

namespace vl {

class cSurfaceImpl;

// What happens to a source pixel on its way to the destination.
enum DrawEffect : int32_t {
  kEffectNone = 0,
  kEffectBlend = 1,   // param: 0 (source alone) to 128 (destination alone)
  kEffectInvert = 2,  // all bits of the source
  kEffectXor = 3,
  kEffectAnd = 4,
  kEffectOr = 5,
  kEffectBlendColour = 6,  // the weight in the top byte of param; its colour stands for pixels of value 0
  kEffectRaster = 7,       // only the plain copy kRasterCopy has a meaning in memory
  kEffectAndNot = 8,       // destination and not source
  kEffectAdd = 9,          // saturating
};
inline constexpr uint32_t kRasterCopy = 0xCC0020;

// A clipped box and where it goes.
struct BlitBox {
  int dx;
  int dy;
  int sx;
  int sy;
  int width;
  int height;
};

// Gives the pixel to store as a colour.
using PixelCallback = Colour (*)(Colour destination, Colour source, void* param);

struct cPixelOps {
  void (*SetPixelColor)(const cSurfaceImpl& surface, int x, int y, Colour colour);
  // In depth 8 the index.
  uint32_t (*GetPixelColor)(const cSurfaceImpl& surface, int x, int y);
  void (*FillBox)(const cSurfaceImpl& surface, int x, int y, int width, int height, Colour colour);
  // The keyed routines skip source pixels of value 0.
  void (*CopyKeyed)(const cSurfaceImpl& destination, const cSurfaceImpl& source, const BlitBox& box);
  void (*EffectKeyed)(const cSurfaceImpl& destination, const cSurfaceImpl& source, const BlitBox& box, int effect,
                      uint32_t param);
  void (*CopyPlain)(const cSurfaceImpl& destination, const cSurfaceImpl& source, const BlitBox& box);
  void (*EffectPlain)(const cSurfaceImpl& destination, const cSurfaceImpl& source, const BlitBox& box, int effect,
                      uint32_t param);
  void (*CallbackKeyed)(const cSurfaceImpl& destination, const cSurfaceImpl& source, const BlitBox& box,
                        PixelCallback f, void* param);
  void (*CallbackPlain)(const cSurfaceImpl& destination, const cSurfaceImpl& source, const BlitBox& box,
                        PixelCallback f, void* param);
  void (*MirrorX)(const cSurfaceImpl& surface, int x, int y, int width, int height);
  void (*ReplaceColor)(const cSurfaceImpl& surface, int x, int y, int width, int height, Colour from, Colour to);
  void (*ConvertFrom)(const cSurfaceImpl& destination, const cSurfaceImpl& source, const BlitBox& box);
};

// The routines of a depth index, 0 to 4.
const cPixelOps& PixelOpsOf(int depthIndex);

// Fills a clipped box with a pixel value.
void FillBoxRaw(const cSurfaceImpl& surface, int x, int y, int width, int height, uint32_t pixel);

}  // namespace vl

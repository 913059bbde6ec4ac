// Plays arbitrary operations on two surfaces, once by each table of row loops: the pixels must be the same.
//
// Three bytes choose the depths and sizes, then each operation is a byte and its arguments, two bytes each.
#include <cstdlib>
#include <cstring>
#include <vector>

#include "gfx2d/pixel_format.h"
#include "gfx2d/surface.h"
#include "gfx2d/surface_library.h"

namespace {

using namespace vl;

class Script {
 public:
  Script(const uint8_t* data, size_t size) : at_(data), end_(data + size) {}
  bool IsAtEnd() const { return at_ == end_; }
  int Byte() { return at_ < end_ ? *at_++ : 0; }
  // Mostly small, and the limits now and then.
  int Number() {
    const int value = Byte() | Byte() << 8;
    return value == 0x7FFF ? INT32_MAX : value == 0x8000 ? INT32_MIN : int16_t(value);
  }

 private:
  const uint8_t* at_;
  const uint8_t* end_;
};

Colour Halve(Colour d, Colour s, void*) { return ((d ^ s) & 0xFEFEFE) >> 1; }

std::vector<uint8_t> Play(const RowKernels& kernels, Script script) {
  MemoryBudget budget(16u << 20);
  SurfaceLibrary library(&budget, kernels);
  cSurface surfaces[2];
  const int depths = script.Byte();
  for (int i = 0; i < 2; ++i) {
    surfaces[i].Create(script.Byte() % 130 + 1, 23 - 7 * i,
                       library.FindPrototype(kDepths[(i ? depths / 5 : depths) % 5]));
    uint32_t pixel = 0;
    for (int y = 0; y < surfaces[i].impl->height; ++y) {
      uint8_t* line = surfaces[i].impl->Line(y);
      for (int k = 0; k < surfaces[i].impl->absPitch; ++k, pixel += 0x9E3779B1) {
        line[k] = pixel >> 28 < 5 ? 0 : uint8_t(pixel >> 20);
      }
    }
  }
  for (int steps = 0; steps < 40 && !script.IsAtEnd(); ++steps) {
    const int op = script.Byte();
    cSurface& a = surfaces[op & 1];
    cSurface& b = surfaces[op >> 1 & 1];
    int n[8];
    for (int& v : n) v = script.Number();
    const int mode = n[6] & 1, effect = n[6] >> 1 & 15;
    const auto param = uint32_t(n[7]) * 0x01020305u;
    Rect box;
    switch (op >> 2 & 15) {
      case 0:
      case 1:
        a.Blit(b, n[0], n[1], n[2], n[3], n[4], n[5], mode, effect, effect == 1 ? uint32_t(n[7]) : param,
               (op & 4) != 0);
        break;
      case 2:
        a.StretchBlit(b, n[0], n[1], n[2] % 300, n[3] % 300, n[4] & 7, n[5] & 7, n[4] >> 3 & 63, n[5] >> 3 & 15, mode,
                      effect, param, (n[6] & 64) != 0);
        break;
      case 3:
        a.impl->Rotate(*b.impl, n[0], (n[1] & 1) != 0, param & kColourMask);
        break;
      case 4:
        a.Fill(n[0], n[1], n[2], n[3], param & kColourMask);
        break;
      case 5:
        a.impl->FillRaw(n[0], n[1], n[2], n[3], param);
        break;
      case 6:
        a.impl->ReplaceColor(param & kColourMask, Colour(n[0]) & kColourMask);
        break;
      case 7:
        a.MirrorHorizontal(n[0], n[1], n[2], n[3]);
        a.MirrorVertical(n[1], n[0], n[3], n[2]);
        break;
      case 8:
        a.MoveBox(n[0], n[1], n[2], n[3], n[4], n[5]);
        break;
      case 9:
        a.SetClipRect(n[0], n[1], n[2], n[3]);
        break;
      case 10:
        a.BlitCallback(b, n[0], n[1], n[2], n[3], n[4], n[5], mode, Halve, nullptr);
        break;
      case 11:
        a.FloodFill(n[0], n[1], box, param & kColourMask, n[2] & 255);
        break;
      case 12:
        a.SetOrigin(n[0], n[1]);
        break;
      default:
        a.impl->ResetClipRect();
        a.SetOrigin(0, 0);
        break;
    }
  }
  std::vector<uint8_t> all;
  for (const cSurface& s : surfaces) {
    all.insert(all.end(), s.impl->rawBits, s.impl->rawBits + size_t(s.impl->absPitch) * size_t(s.impl->height));
  }
  return all;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::vector<uint8_t> plain = Play(PortableRowKernels(), Script(data, size));
  if (WideRowKernels() && Play(*WideRowKernels(), Script(data, size)) != plain) std::abort();
  return 0;
}

// ImageBanks: the pictures of a run's image banks, decoded.
//
// One a run. An element of a bank holds its body as it is stored; here it becomes a surface of the depth that the
// bank is used at, with its mask. Decoded pictures stay until they are unloaded. The banks outlive this object or
// are forgotten before they go. Failures leave their reason in CAppFile::lastBankError: kAppBadStream for a picture
// that no filter reads or a damaged stream, kAppNoPixels for a depth without prototype, kAppOutOfMemory,
// kAppBankHeader for an index outside the palette table.
#pragma once

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

#include "gfx2d/images/image_filter_list.h"
#include "gfx2d/surface.h"
#include "gfx2d/surface_library.h"
#include "host/appfile/bank.h"

namespace vl {

// A decoded element.
struct BankImage {
  cSurface surface;
  std::vector<uint8_t> mask;  // width x height bytes, or empty when there is none
  int16_t hotX = 0;
  int16_t hotY = 0;
};

class ImageBanks {
 public:
  // Both outlive this object. Banks are used at `depth` until SetDepth says otherwise.
  ImageBanks(const ImageFilterList& filters, SurfaceLibrary& library, int depth = 32);
  ~ImageBanks();
  ImageBanks(const ImageBanks&) = delete;
  ImageBanks& operator=(const ImageBanks&) = delete;

  // The depth of the bank's surfaces: 8, 15, 16, 24 or 32; false for others. Pictures that are decoded already keep
  // theirs.
  bool SetDepth(CImageBank& bank, int depth);
  // The palette of the bank, and whether pictures of depth 8 are shown in it. At first those of its part.
  void SetPalette(CImageBank& bank, const PaletteRef& palette, bool use);
  // A record of the bank's palette table, interned; and the same in the order of the screen. Empty on failure.
  PaletteRef GetPalette(CImageBank& bank, int32_t index);
  PaletteRef GetArrangedPalette(CImageBank& bank, int32_t index);

  // The decoded picture of an element, or null. It lives until it is unloaded. The element's stored body is dropped
  // again unless it was loaded before.
  BankImage* Load(CImageBank& bank, uint32_t index);
  // The decoded picture if there is one.
  BankImage* Find(const CImageBank& bank, uint32_t index) const;
  void Unload(const CImageBank& bank, uint32_t index);
  // Drops all that is kept of a bank.
  void Forget(const CImageBank& bank);

  // Decodes an element into the caller's surface, which takes the picture's size and keeps its depth and palette;
  // an empty one gets the bank's. `mask` may be null. Nothing is kept.
  bool LoadInto(CImageBank& bank, uint32_t index, cSurface& surface, std::vector<uint8_t>* mask);

 private:
  struct Bank {
    cSurface prototype;  // 4 by 4
    PaletteRef palette;
    bool usePalette = false;
    std::unordered_map<int32_t, PaletteRef> loadedPalettes;
    std::unordered_map<int32_t, PaletteRef> arrangedPalettes;
    std::unordered_map<uint32_t, std::unique_ptr<BankImage>> images;
  };
  Bank& StateOf(CImageBank& bank);
  void SetPrototype(Bank& state, int depth);
  // The element with its stored body; `unload` tells whether to drop that again.
  CImageElement* LoadStored(CImageBank& bank, uint32_t index, bool& unload);
  // `fixed` is the palette that a surface of depth 8 must end with, if any.
  uint32_t Decode(CImageBank& bank, const CImageElement& element, const cSurfaceImpl& prototype,
                  const PaletteRef& fixed, cSurface& surface, std::vector<uint8_t>* mask);
  uint32_t DecodeFile(const CImageElement& element, const cSurfaceImpl& prototype, cSurface& surface,
                      std::vector<uint8_t>* mask);
  uint32_t DecodeMask(const CImageElement& element, std::vector<uint8_t>& mask);

  const ImageFilterList& filters_;
  SurfaceLibrary& library_;
  int depth_;
  std::unordered_map<const CImageBank*, std::unique_ptr<Bank>> banks_;
};

}  // namespace vl

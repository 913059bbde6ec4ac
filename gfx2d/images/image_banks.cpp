#include "gfx2d/images/image_banks.h"

#include <cstring>
#include <new>

#include "gfx2d/images/load_image.h"
#include "gfx2d/images/stored_palette.h"
#include "gfx2d/pixel_format.h"
#include "host/appfile/app_file.h"
#include "host/appfile/compressed_buffer.h"

namespace vl {
namespace {

constexpr int kPrototypeSide = 4;

// A plane's bytes into the memory they belong to, which they must fill.
uint32_t ReadPlane(const ImagePlane& plane, std::span<uint8_t> to) {
  if (!plane.present || plane.rawSize != to.size()) return kAppNoPixels;
  if (to.empty()) return kAppOk;
  if (plane.packed) {
    CMemoryStream stream(plane.bytes.Data(), plane.bytes.Size());
    return InflateInto(stream, plane.bytes.Size(), to);
  }
  if (plane.bytes.Size() < to.size()) return kAppEndOfFile;
  std::memcpy(to.data(), plane.bytes.Data(), to.size());
  return kAppOk;
}

}  // namespace

ImageBanks::ImageBanks(const ImageFilterList& filters, SurfaceLibrary& library, int depth)
    : filters_(filters), library_(library), depth_(ImageDepthBit(depth) ? depth : 32) {}

ImageBanks::~ImageBanks() = default;

ImageBanks::Bank& ImageBanks::StateOf(CImageBank& bank) {
  std::unique_ptr<Bank>& state = banks_[&bank];
  if (!state) {
    state = std::make_unique<Bank>();
    if (bank.part->hasHeader) state->palette = library_.Palettes().InternPalette(RecordOf(bank.part->palette));
    state->usePalette = bank.part->paletteInUse;
    SetPrototype(*state, depth_);
  }
  return *state;
}

void ImageBanks::SetPrototype(Bank& state, int depth) {
  state.prototype.Create(kPrototypeSide, kPrototypeSide, library_.FindPrototype(depth));
  if (state.usePalette) state.prototype.impl->SetPalette(state.palette, false);
}

bool ImageBanks::SetDepth(CImageBank& bank, int depth) {
  if (!ImageDepthBit(depth)) return false;
  SetPrototype(StateOf(bank), depth);
  return true;
}

void ImageBanks::SetPalette(CImageBank& bank, const PaletteRef& palette, bool use) {
  Bank& state = StateOf(bank);
  state.palette = palette;
  state.usePalette = use;
  state.prototype.impl->SetPalette(palette, false);
}

PaletteRef ImageBanks::GetPalette(CImageBank& bank, int32_t index) {
  Bank& state = StateOf(bank);
  if (const auto found = state.loadedPalettes.find(index); found != state.loadedPalettes.end()) return found->second;
  StoredPalette stored{};
  if (!bank.ReadPalette(uint32_t(index), &stored)) return {};
  PaletteRef palette = library_.Palettes().InternPalette(RecordOf(stored));
  if (!palette) {
    bank.App().lastBankError = kAppOutOfMemory;
  } else {
    state.loadedPalettes.emplace(index, palette);
  }
  return palette;
}

PaletteRef ImageBanks::GetArrangedPalette(CImageBank& bank, int32_t index) {
  Bank& state = StateOf(bank);
  if (const auto found = state.arrangedPalettes.find(index); found != state.arrangedPalettes.end()) {
    return found->second;
  }
  const PaletteRef palette = GetPalette(bank, index);
  if (!palette) return {};
  RemapTable remap;
  PaletteRef arranged = library_.Palettes().ArrangePalette(palette, remap);
  state.arrangedPalettes.emplace(index, arranged);
  return arranged;
}

CImageElement* ImageBanks::LoadStored(CImageBank& bank, uint32_t index, bool& unload) {
  auto* element = static_cast<CImageElement*>(bank.GetElement(index));
  unload = element && !element->IsLoaded();
  // An element without a body loads without one.
  return bank.Load(index) && element->IsLoaded() ? element : nullptr;
}

BankImage* ImageBanks::Find(const CImageBank& bank, uint32_t index) const {
  const auto state = banks_.find(&bank);
  if (state == banks_.end()) return nullptr;
  const auto image = state->second->images.find(index);
  return image == state->second->images.end() ? nullptr : image->second.get();
}

BankImage* ImageBanks::Load(CImageBank& bank, uint32_t index) {
  bank.App().lastBankError = kAppOk;
  if (BankImage* kept = Find(bank, index)) return kept;
  bool unload = false;
  CImageElement* element = LoadStored(bank, index, unload);
  if (!element) return nullptr;
  Bank& state = StateOf(bank);
  auto image = std::make_unique<BankImage>();
  const PaletteRef fixed = state.usePalette ? state.palette : PaletteRef();
  const uint32_t error = Decode(bank, *element, *state.prototype.impl, fixed, image->surface, &image->mask);
  image->hotX = element->hotX;
  image->hotY = element->hotY;
  if (unload) bank.Unload(index);
  bank.App().lastBankError = error;
  if (error) return nullptr;
  return (state.images[index] = std::move(image)).get();
}

bool ImageBanks::LoadInto(CImageBank& bank, uint32_t index, cSurface& surface, std::vector<uint8_t>* mask) {
  bank.App().lastBankError = kAppOk;
  bool unload = false;
  CImageElement* element = LoadStored(bank, index, unload);
  if (!element) return false;
  Bank& state = StateOf(bank);
  cSurface decoded;
  uint32_t error = kAppOk;
  if (surface.IsValid()) {
    error = Decode(bank, *element, *surface.impl, surface.impl->GetPalette(), decoded, mask);
  } else {
    error =
        Decode(bank, *element, *state.prototype.impl, state.usePalette ? state.palette : PaletteRef(), decoded, mask);
  }
  if (unload) bank.Unload(index);
  bank.App().lastBankError = error;
  if (error) return false;
  std::swap(surface.impl, decoded.impl);
  return true;
}

void ImageBanks::Unload(const CImageBank& bank, uint32_t index) {
  const auto state = banks_.find(&bank);
  if (state != banks_.end()) state->second->images.erase(index);
}

void ImageBanks::Forget(const CImageBank& bank) { banks_.erase(&bank); }

uint32_t ImageBanks::DecodeFile(const CImageElement& element, const cSurfaceImpl& prototype, cSurface& surface,
                                std::vector<uint8_t>* mask) {
  // The picture tells its own size.
  if (!surface.Create(1, 1, &prototype)) return kAppOutOfMemory;
  CMemoryStream stream(element.file.Data(), element.file.Size());
  const bool loaded =
      LoadImageIntoSurface(filters_, library_, surface, stream, kLoadKeepDepth | kLoadKeepPalette, mask);
  return loaded ? kAppOk : kAppBadStream;
}

uint32_t ImageBanks::DecodeMask(const CImageElement& element, std::vector<uint8_t>& mask) {
  const size_t bytes = size_t{element.width} * element.height;
  if (!library_.Budget().Take(bytes)) return kAppOutOfMemory;
  library_.Budget().Return(bytes);
  try {
    mask.assign(bytes, 255);
  } catch (const std::bad_alloc&) {
    return kAppOutOfMemory;
  }
  return ReadPlane(element.mask, mask);
}

uint32_t ImageBanks::Decode(CImageBank& bank, const CImageElement& element, const cSurfaceImpl& prototype,
                            const PaletteRef& fixed, cSurface& surface, std::vector<uint8_t>* mask) {
  if (mask) mask->clear();
  if (element.IsImageFile()) return DecodeFile(element, prototype, surface, mask);

  const cSurfaceImpl* stored = library_.FindPrototype(element.depth);
  if (!stored || element.depth == 0) return kAppNoPixels;
  if (!surface.Create(element.width, element.height, &prototype)) return kAppOutOfMemory;
  const bool direct = stored->depth == surface.impl->depth;
  cSurface temporary;
  if (!direct && !temporary.Create(element.width, element.height, stored)) return kAppOutOfMemory;
  cSurface& receiving = direct ? surface : temporary;
  if (!receiving.impl->Lock()) return kAppNoPixels;
  const size_t bytes = size_t(receiving.impl->absPitch) * size_t(receiving.impl->height);
  if (element.width > 0 && element.height > 0) {
    const uint32_t error = ReadPlane(element.pixels, {receiving.impl->rawBits, bytes});
    receiving.impl->Unlock();
    if (error) return error;
  }
  const int32_t index = element.paletteIndex;
  if (index >= 0 && receiving.impl->depth == 8) {
    const PaletteRef palette = GetPalette(bank, index);
    if (!palette) return bank.App().lastBankError;
    receiving.impl->SetPalette(palette, false);
  }
  std::vector<uint8_t> read;
  if (mask && (element.flags & CImageElement::kFlagMask)) {
    if (const uint32_t error = DecodeMask(element, read)) return error;
  }
  if (surface.impl->depth == 8) {
    PaletteRef palette = fixed;
    // What is deeper has no colours of its own to keep to.
    if (!palette && !direct) palette = StateOf(bank).palette;
    if (!palette && index >= 0) palette = GetArrangedPalette(bank, index);
    surface.impl->SetPalette(palette, direct);
  }
  if (!direct) surface.CopyFrom(temporary);
  if (mask) *mask = std::move(read);
  return kAppOk;
}

}  // namespace vl

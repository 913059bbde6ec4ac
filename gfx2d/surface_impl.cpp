#include "gfx2d/surface_impl.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "base/limits.h"
#include "gfx2d/pixel_format.h"
#include "gfx2d/surface_library.h"

namespace vl {
namespace {

int ClampToInt(int64_t value) { return int(std::clamp<int64_t>(value, INT32_MIN, INT32_MAX)); }

}  // namespace

void cSurfaceImpl::SetDepth(int bits) {
  depthIndex = DepthIndexOf(bits);
  depth = kDepths[depthIndex];
  bytesPerPixel = (depth + 7) / 8;
  ops = &PixelOpsOf(depthIndex);
  kernels = &library->Kernels();
}

std::unique_ptr<cSurfaceImpl> cSurfaceImpl::MakeInstance(int newWidth, int newHeight) const {
  if (!library || depth == 0) return nullptr;
  auto surface = std::make_unique<cMemSurface>(*library, depth);
  surface->palette = palette;
  if (!surface->Resize(newWidth, newHeight)) return nullptr;
  return surface;
}

cMemSurface::cMemSurface(SurfaceLibrary& owner, int bits) : cSurfaceImpl(&owner) {
  SetDepth(bits);
  if (depth == 8) palette = owner.Palettes().GetDefaultPalette();
}

cMemSurface::~cMemSurface() { library->Budget().Return(blockBytes_); }

bool cMemSurface::Resize(int newWidth, int newHeight) {
  if (newWidth < 1 || newHeight < 1 || newWidth > limits::kMaxSurfaceSide || newHeight > limits::kMaxSurfaceSide ||
      int64_t{newWidth} * newHeight > limits::kMaxSurfacePixels) {
    return false;
  }
  const int lineBytes = LineBytes(depth, newWidth);
  const size_t bytes = size_t(lineBytes) * size_t(newHeight);
  if (!library->Budget().Take(bytes)) {
    library->Scratches().Trim();
    if (!library->Budget().Take(bytes)) return false;
  }
  std::unique_ptr<uint8_t, Free> block(static_cast<uint8_t*>(std::calloc(bytes, 1)));
  if (!block) {
    library->Budget().Return(bytes);
    return false;
  }
  library->Budget().Return(blockBytes_);
  block_ = std::move(block);
  blockBytes_ = bytes;
  rawBits = topLine = block_.get();
  pitch = absPitch = lineBytes;
  width = newWidth;
  height = newHeight;
  ResetClipRect();
  return true;
}

void cSurfaceImpl::ResetClipRect() {
  if (topLine) SetClipRect(0, 0, width, height);
}

void cSurfaceImpl::SetClipRect(int x, int y, int clipWidth, int clipHeight) {
  if (!topLine) return;
  clipLeft = std::clamp(x, 0, width);
  clipTop = std::clamp(y, 0, height);
  clipRight = std::clamp(ClampToInt(int64_t{x} + clipWidth), clipLeft, width);
  clipBottom = std::clamp(ClampToInt(int64_t{y} + clipHeight), clipTop, height);
}

bool cSurfaceImpl::ClipBox(int x, int y, int boxWidth, int boxHeight, Rect& box) const {
  if (!Lock()) return false;
  box.left = std::max(x, clipLeft);
  box.top = std::max(y, clipTop);
  box.right = std::min(ClampToInt(int64_t{x} + boxWidth), clipRight);
  box.bottom = std::min(ClampToInt(int64_t{y} + boxHeight), clipBottom);
  return !box.IsEmpty();
}

uint32_t cSurfaceImpl::PixelOfColour(Colour colour) const {
  switch (depth) {
    case 8:
      return uint32_t(NearestIndex(colour));
    case 15:
      return PixelFormat<15>::FromColour(colour);
    case 16:
      return PixelFormat<16>::FromColour(colour);
    case 24:
    case 32:
      return SwapRedBlue(colour);
    default:
      return 0;
  }
}

Colour cSurfaceImpl::ColourOfPixel(uint32_t pixel) const {
  switch (depth) {
    case 8:
      return PaletteColor(int(pixel & 0xFF));
    case 15:
      return Widen15(pixel);
    case 16:
      return Widen16(pixel);
    case 24:
    case 32:
      return SwapRedBlue(pixel);
    default:
      return 0;
  }
}

bool cSurfaceImpl::SetPixelRaw(int x, int y, uint32_t pixel) {
  if (!Lock() || !GetClipRect().Contains(x, y)) return false;
  FillBoxRaw(*this, x, y, 1, 1, pixel);
  return true;
}

bool cSurfaceImpl::SetPixel(int x, int y, Colour colour) {
  if (!Lock() || !GetClipRect().Contains(x, y)) return false;
  ops->SetPixelColor(*this, x, y, colour);
  return true;
}

bool cSurfaceImpl::GetPixelRaw(int x, int y, uint32_t& pixel) const {
  if (!Lock() || !GetClipRect().Contains(x, y)) return false;
  pixel = 0;
  std::memcpy(&pixel, PixelAt(x, y), size_t(bytesPerPixel));
  return true;
}

bool cSurfaceImpl::GetPixel(int x, int y, Colour& colour) const {
  if (!Lock() || !GetClipRect().Contains(x, y)) return false;
  const uint32_t value = ops->GetPixelColor(*this, x, y);
  colour = depth == 8 ? PaletteColor(int(value)) : value;
  return true;
}

bool cSurfaceImpl::FillRaw(int x, int y, int boxWidth, int boxHeight, uint32_t pixel) {
  Rect box;
  if (!ClipBox(x, y, boxWidth, boxHeight, box)) return false;
  FillBoxRaw(*this, box.left, box.top, box.Width(), box.Height(), pixel);
  return true;
}

bool cSurfaceImpl::Fill(int x, int y, int boxWidth, int boxHeight, Colour colour) {
  Rect box;
  if (!ClipBox(x, y, boxWidth, boxHeight, box)) return false;
  ops->FillBox(*this, box.left, box.top, box.Width(), box.Height(), colour);
  return true;
}

bool cSurfaceImpl::MirrorHorizontal(int x, int y, int boxWidth, int boxHeight) {
  if (!Lock()) return false;
  Rect box;
  if (ClipBox(x, y, boxWidth, boxHeight, box) && box.Width() > 1) {
    ops->MirrorX(*this, box.left, box.top, box.Width(), box.Height());
  }
  return true;
}

bool cSurfaceImpl::MirrorVertical(int x, int y, int boxWidth, int boxHeight) {
  if (!Lock()) return false;
  Rect box;
  if (!ClipBox(x, y, boxWidth, boxHeight, box)) return true;
  const ptrdiff_t bytes = ptrdiff_t{box.Width()} * bytesPerPixel;
  for (int top = box.top, bottom = box.bottom - 1; top < bottom; ++top, --bottom) {
    uint8_t* line = PixelAt(box.left, top);
    std::swap_ranges(line, line + bytes, PixelAt(box.left, bottom));
  }
  return true;
}

bool cSurfaceImpl::ReplaceColor(Colour from, Colour to) {
  if (!Lock()) return false;
  ops->ReplaceColor(*this, 0, 0, width, height, from, to);
  return true;
}

namespace {

bool IsZero(const uint8_t* bytes, size_t count) {
  return count == 0 || (bytes[0] == 0 && std::memcmp(bytes, bytes + 1, count - 1) == 0);
}

}  // namespace

bool cSurfaceImpl::GetContentBox(Rect& box) const {
  if (!Lock() || (width < 3 && height < 3)) return false;
  const ptrdiff_t bytes = ptrdiff_t{width} * bytesPerPixel;
  int top = 0;
  int bottom = height;
  while (top < height && IsZero(Line(top), size_t(bytes))) ++top;
  if (top == height) return false;
  while (IsZero(Line(bottom - 1), size_t(bytes))) --bottom;
  // Of each line only what lies outside the box so far.
  const auto isSet = [](uint8_t b) { return b != 0; };
  ptrdiff_t first = bytes;
  ptrdiff_t end = 0;
  for (int y = top; y < bottom; ++y) {
    const uint8_t* line = Line(y);
    if (!IsZero(line, size_t(first))) first = std::find_if(line, line + first, isSet) - line;
    if (!IsZero(line + end, size_t(bytes - end))) {
      end = std::find_if(std::reverse_iterator(line + bytes), std::reverse_iterator(line + end), isSet).base() - line;
    }
  }
  box = {int(first / bytesPerPixel), top, int((end - 1) / bytesPerPixel) + 1, bottom};
  return true;
}

bool cSurfaceImpl::IsEmpty() const {
  if (!Lock()) return false;
  for (int y = 0; y < height; ++y) {
    if (!IsZero(Line(y), size_t(width) * size_t(bytesPerPixel))) return false;
  }
  return true;
}

bool cSurfaceImpl::SetPalette(const PaletteRef& newPalette, bool remap) {
  if (depth != 8 || !newPalette) return false;
  if (newPalette == palette) return true;
  if (remap && topLine && palette) {
    RemapTable table;
    if (BuildRemapTable(table, *newPalette.Get(), *palette.Get(), true)) ApplyRemap(table);
  }
  palette = newPalette;
  return true;
}

bool cSurfaceImpl::SetPaletteFrom(const cSurfaceImpl& other, bool remap) {
  return other.depth == 8 && SetPalette(other.palette, remap);
}

bool cSurfaceImpl::SetPaletteRecord(const PaletteRecord& record, bool remap) {
  return depth == 8 && SetPalette(library->Palettes().InternPalette(record), remap);
}

int cSurfaceImpl::GetPaletteEntries(PaletteEntry* buffer, int first, int count) const {
  if (!palette) return 0;
  if (!buffer) return palette->count;
  if (first < 0 || first >= palette->count || count <= 0) return 0;
  const int n = std::min<int>(count, palette->count - first);
  std::copy_n(palette->entries.begin() + first, n, buffer);
  return n;
}

bool cSurfaceImpl::GetPaletteRecord(PaletteRecord& record) const {
  if (!palette) return false;
  record = *palette.Get();
  return true;
}

bool cSurfaceImpl::RemapFromPalette(const PaletteRecord& current) {
  if (depth != 8 || !Lock() || !palette) return false;
  RemapTable table;
  if (!BuildRemapTable(table, *palette.Get(), current, true)) return true;
  table[0] = 0;
  return ApplyRemap(table);
}

bool cSurfaceImpl::ApplyRemap(const RemapTable& table) {
  if (depth != 8 || !Lock()) return false;
  for (int y = 0; y < height; ++y) {
    uint8_t* line = Line(y);
    for (int x = 0; x < width; ++x) line[x] = table[line[x]];
  }
  return true;
}

bool cSurfaceImpl::ReadFromFile(File& file) {
  if (!rawBits) return false;
  const size_t bytes = size_t(absPitch) * size_t(height);
  return file.read(rawBits, bytes) == bytes;
}

bool cSurfaceImpl::WriteToFile(File& file) const {
  if (!rawBits) return false;
  const size_t bytes = size_t(absPitch) * size_t(height);
  return file.write(rawBits, bytes) == bytes;
}

}  // namespace vl

#include "gfx2d/images/png_filter.h"

#include <png.h>
#include <setjmp.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "base/limits.h"
#include "gfx2d/images/image_memory.h"
#include "host/appfile/app_limits.h"

namespace vl {
namespace {

constexpr ImageFilter::Texts kTexts = {2, "PNG", "Portable network graphics", "png"};

constexpr uint32_t kSignatureBytes = 8;

// Chunks that no pixel needs, some of them compressed. They are passed over unread.
constexpr png_byte kIgnoredChunks[] =
    "acTL\0bKGD\0cHRM\0eXIf\0fcTL\0fdAT\0gAMA\0hIST\0iCCP\0iTXt\0oFFs\0pCAL\0pHYs\0sBIT\0sCAL\0sPLT\0sRGB\0sTER\0tEXt\0"
    "tIME\0tRNS\0zTXt";
constexpr int kIgnoredCount = sizeof kIgnoredChunks / 5;

// libpng's memory is counted in the budget. Each block tells its size in front.
constexpr size_t kBlockHead = 16;

png_voidp Allocate(png_structp png, png_alloc_size_t size) {
  auto& budget = *static_cast<MemoryBudget*>(png_get_mem_ptr(png));
  if (size > SIZE_MAX - kBlockHead || !budget.Take(size)) return nullptr;
  auto* block = static_cast<uint8_t*>(std::malloc(size + kBlockHead));
  if (!block) {
    budget.Return(size);
    return nullptr;
  }
  std::memcpy(block, &size, sizeof size);
  return block + kBlockHead;
}

void Deallocate(png_structp png, png_voidp memory) {
  if (!memory) return;
  auto* block = static_cast<uint8_t*>(memory) - kBlockHead;
  png_alloc_size_t size = 0;
  std::memcpy(&size, block, sizeof size);
  static_cast<MemoryBudget*>(png_get_mem_ptr(png))->Return(size);
  std::free(block);
}

[[noreturn]] void OnError(png_structp png, png_const_charp) { png_longjmp(png, 1); }
void OnWarning(png_structp, png_const_charp) {}

void ReadBytes(png_structp png, png_bytep to, size_t size) {
  auto* stream = static_cast<CStream*>(png_get_io_ptr(png));
  if (size > UINT32_MAX || stream->Read(to, uint32_t(size))) png_error(png, "read");
}

void WriteBytes(png_structp png, png_bytep from, size_t size) {
  if (!static_cast<ImageOutput*>(png_get_io_ptr(png))->Write(from, size)) png_error(png, "write");
}

void FlushBytes(png_structp) {}

struct Encoder {
  png_structp png = nullptr;
  png_infop info = nullptr;
  explicit Encoder(MemoryBudget& budget) {
    png = png_create_write_struct_2(PNG_LIBPNG_VER_STRING, nullptr, OnError, OnWarning, &budget, Allocate, Deallocate);
    if (png) info = png_create_info_struct(png);
  }
  Encoder(const Encoder&) = delete;
  Encoder& operator=(const Encoder&) = delete;
  ~Encoder() { png_destroy_write_struct(&png, &info); }
};

bool WriteAll(Encoder& e, ImageOutput& output, const uint8_t* bits, int32_t width, int32_t height, int32_t depth,
              int32_t pitch, const png_color* colours) {
  if (setjmp(png_jmpbuf(e.png))) return false;
  png_set_write_fn(e.png, &output, WriteBytes, FlushBytes);
  png_set_IHDR(e.png, e.info, png_uint_32(width), png_uint_32(height), 8,
               depth == 8 ? PNG_COLOR_TYPE_PALETTE : PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_BASE,
               PNG_FILTER_TYPE_BASE);
  if (colours) png_set_PLTE(e.png, e.info, colours, 256);
  png_write_info(e.png, e.info);
  png_set_bgr(e.png);
  for (int32_t y = 0; y < height; ++y) png_write_row(e.png, bits + ptrdiff_t{y} * pitch);
  png_write_end(e.png, e.info);
  return true;
}

}  // namespace

struct PngFilter::Decoder {
  png_structp png = nullptr;
  png_infop info = nullptr;
  png_uint_32 width = 0;
  png_uint_32 height = 0;
  int bitDepth = 0;
  int colourType = 0;
  bool interlaced = false;
  int passes = 1;
  png_colorp colours = nullptr;
  int colourCount = 0;

  Decoder(MemoryBudget& budget, CStream& stream) {
    png = png_create_read_struct_2(PNG_LIBPNG_VER_STRING, nullptr, OnError, OnWarning, &budget, Allocate, Deallocate);
    if (!png) return;
    info = png_create_info_struct(png);
    png_set_read_fn(png, &stream, ReadBytes);
  }
  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;
  ~Decoder() { png_destroy_read_struct(&png, &info, nullptr); }
};

PngFilter::PngFilter(MemoryBudget& budget) : ImageFilter(budget, kTexts) {}
PngFilter::~PngFilter() = default;

void PngFilter::Close() { decoder_.reset(); }

bool PngFilter::IsValid(CStream& stream, uint32_t) const {
  uint8_t signature[kSignatureBytes];
  return !stream.Read(signature, sizeof signature) && png_sig_cmp(signature, 0, sizeof signature) == 0;
}

bool PngFilter::ReadInfo(Decoder& d) {
  if (setjmp(png_jmpbuf(d.png))) return false;
  png_set_user_limits(d.png, limits::kMaxSurfaceSide, limits::kMaxSurfaceSide);
  png_set_chunk_malloc_max(d.png, 0);  // chunks that are passed over may be long; the budget bounds the rest
  png_set_keep_unknown_chunks(d.png, PNG_HANDLE_CHUNK_NEVER, kIgnoredChunks, kIgnoredCount);
  png_read_info(d.png, d.info);
  int interlace = 0;
  png_get_IHDR(d.png, d.info, &d.width, &d.height, &d.bitDepth, &d.colourType, &interlace, nullptr, nullptr);
  d.interlaced = interlace != PNG_INTERLACE_NONE;
  png_get_PLTE(d.png, d.info, &d.colours, &d.colourCount);
  return true;
}

ImageError PngFilter::Open(CStream& stream) {
  decoder_ = std::make_unique<Decoder>(Budget(), stream);
  Decoder& d = *decoder_;
  if (!d.png || !d.info) return kImageOutOfMemory;
  if (!ReadInfo(d)) return kImageReadFailed;
  if (d.bitDepth < 8) return kImageDepthTooSmall;
  const bool indexed = d.colourType == PNG_COLOR_TYPE_PALETTE;
  const bool alpha = (d.colourType & PNG_COLOR_MASK_ALPHA) != 0;
  if (!SetPicture(d.width, d.height, indexed ? 8 : alpha ? 32 : 24)) return kImageBadData;
  // What deflate can't have packed into the bytes that are left isn't there.
  const uint64_t stored = uint64_t{png_get_rowbytes(d.png, d.info)} * d.height;
  if (stored > uint64_t(stream.Remaining()) * limits::kMaxInflateRatio) {
    depth = 0;
    return kImageBadData;
  }
  if (d.colourCount > 0) {
    palette.emplace();
    for (int i = 0; i < std::min(d.colourCount, 256); ++i) {
      palette->entries[size_t(i)] = {d.colours[i].red, d.colours[i].green, d.colours[i].blue, 0};
    }
  }
  return kImageOk;
}

bool PngFilter::StartPixels(Decoder& d, Order order) {
  if (setjmp(png_jmpbuf(d.png))) return false;
  if (d.bitDepth == 16) png_set_strip_16(d.png);
  if ((d.colourType & ~PNG_COLOR_MASK_ALPHA) == PNG_COLOR_TYPE_GRAY) png_set_gray_to_rgb(d.png);
  if (order != Order::kRgb) png_set_bgr(d.png);
  if (order == Order::kWords) png_set_filler(d.png, 0, PNG_FILLER_AFTER);
  d.passes = png_set_interlace_handling(d.png);
  png_read_update_info(d.png, d.info);
  return true;
}

bool PngFilter::ReadLine(Decoder& d, uint8_t* to) {
  if (setjmp(png_jmpbuf(d.png))) return false;
  png_read_row(d.png, to, nullptr);
  return true;
}

bool PngFilter::ReadLines(Decoder& d, uint8_t* bits, int32_t pitch, int32_t lines) {
  if (setjmp(png_jmpbuf(d.png))) return false;
  for (int pass = 0; pass < d.passes; ++pass) {
    for (int32_t y = 0; y < lines; ++y) png_read_row(d.png, bits + ptrdiff_t{y} * pitch, nullptr);
  }
  return true;
}

ImageError PngFilter::ReadFrame(CStream&, uint8_t* bits, int32_t pitch, uint8_t*) {
  if (depth == 0 || !decoder_) return kImageFilterClosed;
  if (!TakeFrame()) return kImagePastEnd;
  Decoder& d = *decoder_;
  // Lines of three bytes are swapped, filled and narrowed in one go, quicker than libpng does each. Only what must
  // go straight into the target for its passes is made by libpng.
  const bool rgb = mustConvert && depth == 24;
  const bool words = rgb && outputDepth == 32 && d.interlaced;
  if (!StartPixels(d, words ? Order::kWords : rgb ? Order::kRgb : Order::kBgr)) return kImageReadFailed;
  if (!mustConvert || words) return ReadLines(d, bits, pitch, height) ? kImageOk : kImageReadFailed;

  const auto convert = [&](const uint8_t* source, int32_t y) {
    if (rgb) {
      ConvertRgb(source, Row(bits, pitch, y), width);
    } else {
      ConvertLine(source, Row(bits, pitch, y), width);
    }
  };
  // An interlaced picture is whole only after its last pass.
  ImageMemory lines;
  if (!lines.Allocate(Budget(), uint64_t(rowBytes) * uint64_t(d.interlaced ? height : 1))) return kImageOutOfMemory;
  if (d.interlaced) {
    const bool whole = ReadLines(d, lines.Data(), rowBytes, height);
    for (int32_t y = 0; y < height; ++y) convert(Row(lines.Data(), rowBytes, y), y);
    return whole ? kImageOk : kImageReadFailed;
  }
  for (int32_t y = 0; y < height; ++y) {
    if (!ReadLine(d, lines.Data())) return kImageReadFailed;
    convert(lines.Data(), y);
  }
  return kImageOk;
}

ImageError PngFilter::Save(ImageOutput& output, const uint8_t* bits, int32_t saveWidth, int32_t saveHeight,
                           int32_t saveDepth, int32_t pitch, const PaletteRecord* savePalette) {
  if ((ImageDepthBit(saveDepth) & GetWritableDepths()) == 0) return kImageDepthNotWritable;
  png_color colours[256] = {};
  if (saveDepth == 8) {
    if (!savePalette || savePalette->count < 256) return kImageNoPalette;
    for (size_t i = 0; i < 256; ++i) {
      const PaletteEntry& e = savePalette->entries[i];
      colours[i] = {e.red, e.green, e.blue};
    }
  }
  Encoder encoder(Budget());
  if (!encoder.png || !encoder.info) return kImageOutOfMemory;
  if (WriteAll(encoder, output, bits, saveWidth, saveHeight, saveDepth, pitch, saveDepth == 8 ? colours : nullptr)) {
    return kImageOk;
  }
  return output.Failed() ? kImageWriteFailed : kImageReadFailed;
}

}  // namespace vl

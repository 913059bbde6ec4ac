#include "gfx2d/images/jpeg_filter.h"

// libjpeg's header wants <stdio.h> before it.
#include <jpeglib.h>
#include <setjmp.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "gfx2d/images/image_memory.h"
#include "gfx2d/images/line_kernels.h"

namespace vl {
namespace {

constexpr ImageFilter::Texts kTexts = {1, "JPEG", "JPEG picture", "jpg;jpeg;jpe;jfif"};

// What the library takes beside the coefficients of a picture in several scans: tables, and some lines.
constexpr int64_t kWorkBytes = int64_t{1} << 20;
constexpr int64_t kWorkBytesPerColumn = 512;
// A picture in several scans costs its blocks once a scan, however few bytes the scan has. Real ones have about ten.
constexpr int64_t kMaxBlockVisits = int64_t{1} << 26;
constexpr int64_t kLeastScans = 32;
constexpr int64_t kMostScans = 1000;

// The library decodes fast only while some thousand bytes are at hand; at the end of each load it is slow.
constexpr size_t kSourceBytes = size_t{64} << 10;

struct ErrorManager {
  jpeg_error_mgr base;
  jmp_buf jump;
};

[[noreturn]] void OnError(j_common_ptr info) { longjmp(reinterpret_cast<ErrorManager*>(info->err)->jump, 1); }
void OnMessage(j_common_ptr, int) {}
void OnOutput(j_common_ptr) {}

void SetErrors(ErrorManager& errors) {
  jpeg_std_error(&errors.base);
  errors.base.error_exit = OnError;
  errors.base.emit_message = OnMessage;
  errors.base.output_message = OnOutput;
}

struct Source {
  jpeg_source_mgr base;
  CStream* stream;
  bool stopAtEnd;  // the end of the stream is an error; else the picture is taken to end there
  JOCTET buffer[kSourceBytes];
};

void InitSource(j_decompress_ptr) {}
void TermSource(j_decompress_ptr) {}

boolean FillSource(j_decompress_ptr info) {
  auto& source = *reinterpret_cast<Source*>(info->src);
  uint32_t read = 0;
  source.stream->ReadSome(source.buffer, sizeof source.buffer, &read);
  if (read == 0) {
    if (source.stopAtEnd) OnError(reinterpret_cast<j_common_ptr>(info));
    source.buffer[0] = 0xFF;
    source.buffer[1] = JPEG_EOI;
    read = 2;
  }
  source.base.next_input_byte = source.buffer;
  source.base.bytes_in_buffer = read;
  return TRUE;
}

void SkipSource(j_decompress_ptr info, long count) {
  auto& source = *reinterpret_cast<Source*>(info->src);
  if (count <= 0) return;
  const auto bytes = size_t(count);
  if (bytes <= source.base.bytes_in_buffer) {
    source.base.next_input_byte += bytes;
    source.base.bytes_in_buffer -= bytes;
    return;
  }
  source.stream->Skip(int64_t(bytes - source.base.bytes_in_buffer));
  source.base.bytes_in_buffer = 0;
}

struct Progress {
  jpeg_progress_mgr base;
  int maxScans;
};

void OnProgress(j_common_ptr info) {
  const auto* decompress = reinterpret_cast<j_decompress_ptr>(info);
  const auto* progress = reinterpret_cast<const Progress*>(info->progress);
  if (decompress->input_scan_number > progress->maxScans) OnError(info);
}

struct Destination {
  jpeg_destination_mgr base;
  ImageOutput* output;
  JOCTET buffer[ImageOutput::kBufferBytes];
};

void InitDestination(j_compress_ptr info) {
  auto& destination = *reinterpret_cast<Destination*>(info->dest);
  destination.base.next_output_byte = destination.buffer;
  destination.base.free_in_buffer = sizeof destination.buffer;
}

boolean EmptyDestination(j_compress_ptr info) {
  auto& destination = *reinterpret_cast<Destination*>(info->dest);
  if (!destination.output->Write(destination.buffer, sizeof destination.buffer)) {
    OnError(reinterpret_cast<j_common_ptr>(info));
  }
  InitDestination(info);
  return TRUE;
}

void TermDestination(j_compress_ptr info) {
  auto& destination = *reinterpret_cast<Destination*>(info->dest);
  destination.output->Write(destination.buffer, sizeof destination.buffer - destination.base.free_in_buffer);
}

struct Encoder {
  jpeg_compress_struct info{};
  ErrorManager errors;
  Destination destination;
  Encoder() = default;
  Encoder(const Encoder&) = delete;
  Encoder& operator=(const Encoder&) = delete;
  ~Encoder() { jpeg_destroy_compress(&info); }
};

bool WriteAll(Encoder& e, ImageOutput& output, const uint8_t* bits, int32_t width, int32_t height, int32_t pitch) {
  SetErrors(e.errors);
  e.info.err = &e.errors.base;
  if (setjmp(e.errors.jump)) return false;
  jpeg_create_compress(&e.info);
  e.destination.base.init_destination = InitDestination;
  e.destination.base.empty_output_buffer = EmptyDestination;
  e.destination.base.term_destination = TermDestination;
  e.destination.output = &output;
  e.info.dest = &e.destination.base;
  e.info.image_width = JDIMENSION(width);
  e.info.image_height = JDIMENSION(height);
  e.info.input_components = 3;
  e.info.in_color_space = JCS_EXT_BGR;
  jpeg_set_defaults(&e.info);
  jpeg_start_compress(&e.info, TRUE);
  for (int32_t y = 0; y < height; ++y) {
    auto* line = const_cast<JSAMPROW>(bits + ptrdiff_t{y} * pitch);
    jpeg_write_scanlines(&e.info, &line, 1);
  }
  jpeg_finish_compress(&e.info);
  return !output.Failed();
}

}  // namespace

struct JpegFilter::Decoder {
  jpeg_decompress_struct info{};
  ErrorManager errors;
  Source source;
  Progress progress;
  MemoryBudget& budget;
  uint64_t taken = 0;

  explicit Decoder(MemoryBudget& b) : budget(b) {}
  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;
  ~Decoder() {
    jpeg_destroy_decompress(&info);
    budget.Return(taken);
  }
  bool Take(int64_t bytes) {
    if (bytes < 0 || !budget.Take(uint64_t(bytes))) return false;
    taken += uint64_t(bytes);
    info.mem->max_memory_to_use = long(std::min<uint64_t>(taken, INT32_MAX));
    return true;
  }
};

JpegFilter::JpegFilter(MemoryBudget& budget) : ImageFilter(budget, kTexts) {}
JpegFilter::~JpegFilter() = default;

void JpegFilter::Close() { decoder_.reset(); }

bool JpegFilter::IsValid(CStream&, uint32_t firstFourBytes) const {
  return (firstFourBytes & 0xFFFFFF) == 0xFFD8FF && firstFourBytes >> 30 == 3;
}

bool JpegFilter::ReadHeader(Decoder& d, CStream& stream) {
  SetErrors(d.errors);
  d.info.err = &d.errors.base;
  if (setjmp(d.errors.jump)) return false;
  jpeg_create_decompress(&d.info);
  d.source.base.init_source = InitSource;
  d.source.base.fill_input_buffer = FillSource;
  d.source.base.skip_input_data = SkipSource;
  d.source.base.resync_to_restart = jpeg_resync_to_restart;
  d.source.base.term_source = TermSource;
  d.source.base.bytes_in_buffer = 0;
  d.source.stream = &stream;
  d.source.stopAtEnd = true;
  d.info.src = &d.source.base;
  jpeg_read_header(&d.info, TRUE);
  return true;
}

ImageError JpegFilter::Open(CStream& stream) {
  decoder_ = std::make_unique<Decoder>(Budget());
  Decoder& d = *decoder_;
  // A header that the library refuses leaves the filter without a depth, which the reader tells of.
  if (!ReadHeader(d, stream)) return kImageOk;
  const int components = d.info.num_components;
  if (components != 1 && components != 3 && components != 4) return kImageOk;
  if (!SetPicture(d.info.image_width, d.info.image_height, 24)) return kImageBadData;

  int64_t need = kWorkBytes + kWorkBytesPerColumn * width;
  int64_t blocks = 0;
  for (int i = 0; i < components; ++i) {
    const jpeg_component_info& c = d.info.comp_info[i];
    // With the blocks that fill up the last units.
    blocks += (int64_t{c.width_in_blocks} + c.h_samp_factor) * (int64_t{c.height_in_blocks} + c.v_samp_factor);
  }
  const bool several = jpeg_has_multiple_scans(&d.info);
  if (several) need += blocks * int64_t{sizeof(JBLOCK)};
  if (!d.Take(need)) {
    depth = 0;
    return kImageOutOfMemory;
  }
  d.source.stopAtEnd = !several;
  d.progress.base.progress_monitor = OnProgress;
  d.progress.maxScans = int(std::clamp(kMaxBlockVisits / std::max<int64_t>(blocks, 1), kLeastScans, kMostScans));
  if (several) d.info.progress = &d.progress.base;
  return kImageOk;
}

bool JpegFilter::Start(Decoder& d) {
  if (setjmp(d.errors.jump)) return false;
  return jpeg_start_decompress(&d.info) != FALSE;
}

// Lines straight into the target, up to an error. `clear`: the fourth bytes of words, which the library fills, become 0
// while each line is still close at hand.
void JpegFilter::ReadLines(Decoder& d, uint8_t* bits, int32_t pitch, bool clear) {
  if (setjmp(d.errors.jump)) return;
  while (d.info.output_scanline < d.info.output_height) {
    JSAMPROW row = bits + ptrdiff_t(d.info.output_scanline) * pitch;
    if (jpeg_read_scanlines(&d.info, &row, 1) == 0) return;
    if (clear) kernels::ClearHighBytes(row, int32_t(d.info.output_width));
  }
}

// The same by way of `line`, which has room for words.
void JpegFilter::ConvertLines(Decoder& d, uint8_t* line, uint8_t* bits, int32_t pitch) {
  const bool inks = d.info.num_components == 4;
  if (setjmp(d.errors.jump)) return;
  while (d.info.output_scanline < d.info.output_height) {
    uint8_t* target = bits + ptrdiff_t(d.info.output_scanline) * pitch;
    JSAMPROW row = line;
    if (jpeg_read_scanlines(&d.info, &row, 1) == 0) return;
    if (inks) MixInks(line);
    if (mustConvert) {
      ConvertWords(line, target, width);
    } else {
      for (int32_t x = 0; x < width; ++x) std::memcpy(target + x * 3, line + x * 4, 3);
    }
  }
}

ImageError JpegFilter::ReadFrame(CStream&, uint8_t* bits, int32_t pitch, uint8_t*) {
  if (depth == 0 || !decoder_) return kImageFilterClosed;
  if (!TakeFrame()) return kImagePastEnd;
  Decoder& d = *decoder_;
  const bool inks = d.info.num_components == 4;
  const bool words = mustConvert;  // made as fast as three bytes, and quicker to convert
  d.info.out_color_space = inks ? JCS_CMYK : words ? JCS_EXT_BGRX : JCS_EXT_BGR;
  if (!Start(d)) return kImageOk;
  // What the library finds aligned it writes past the cache, and it would have to come back from memory for its next
  // step. So words that are worked on begin at an odd place.
  constexpr size_t kAlignment = 32;
  constexpr size_t kOdd = 4;
  const bool odd = reinterpret_cast<uintptr_t>(bits) % kAlignment != 0 && pitch % int32_t{kAlignment} == 0;
  if (!inks && (!words || (outputDepth == 32 && odd))) {
    ReadLines(d, bits, pitch, words);
    return kImageOk;
  }
  ImageMemory line;
  if (!line.Allocate(Budget(), uint64_t(width) * 4 + kOdd)) return kImageOutOfMemory;
  ConvertLines(d, line.Data() + kOdd, bits, pitch);
  return kImageOk;
}

// Cyan, magenta, yellow and black to blue, green, red and 0, in place. Files of painting programs hold them inverted.
void JpegFilter::MixInks(uint8_t* line) const {
  const unsigned flip = decoder_->info.saw_Adobe_marker ? 0 : 255;
  for (int32_t x = 0; x < width; ++x, line += 4) {
    const unsigned black = line[3] ^ flip;
    const auto mix = [black, flip](uint8_t ink) { return uint8_t(((ink ^ flip) * black + 127) / 255); };
    const uint8_t red = mix(line[0]);
    const uint8_t blue = mix(line[2]);
    line[0] = blue;
    line[1] = mix(line[1]);
    line[2] = red;
    line[3] = 0;
  }
}

ImageError JpegFilter::Save(ImageOutput& output, const uint8_t* bits, int32_t saveWidth, int32_t saveHeight,
                            int32_t saveDepth, int32_t pitch, const PaletteRecord*) {
  if ((ImageDepthBit(saveDepth) & GetWritableDepths()) == 0) return kImageDepthNotWritable;
  const auto encoder = std::make_unique<Encoder>();
  if (WriteAll(*encoder, output, bits, saveWidth, saveHeight, pitch)) return kImageOk;
  return output.Failed() ? kImageWriteFailed : kImageReadFailed;
}

}  // namespace vl

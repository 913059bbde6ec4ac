// The writer of ANMV animations.
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "gfx2d/images/anm_filter.h"
#include "gfx2d/images/anm_format.h"
#include "gfx2d/pixel_format.h"

namespace vl {

struct AnmFilter::Writer {
  AnimationFormat format;
  int32_t rowBytes = 0;
  int32_t bytesPerPixel = 0;
  ImageMemory previous;  // the last frame, lines without padding
  ImageMemory delta;
  ImageMemory packed;
  int64_t start = 0;      // of the file
  int64_t lastFrame = 0;  // position of the last frame's data; 0 before the first
  int32_t lastTime = 0;
  int32_t frames = 0;
  int64_t total = 0;

  const uint8_t* PreviousLine(int32_t y) const { return previous.Data() + ptrdiff_t{y} * rowBytes; }
  int32_t TimeOf(int32_t time) const { return time > 0 ? time : format.frameTime; }
};

void AnmFilter::WriterDelete::operator()(Writer* writer) const { delete writer; }

namespace {

// Codes of a delta frame, in a buffer that is as large as a key frame: beyond that nobody wants the delta.
class DeltaWriter {
 public:
  explicit DeltaWriter(std::span<uint8_t> to) : to_(to) {}
  void Byte(uint8_t value) {
    if (size_ < to_.size()) to_[size_] = value;
    ++size_;
  }
  void Bytes(const uint8_t* from, size_t count) {
    if (size_ <= to_.size() && count <= to_.size() - size_) std::memcpy(to_.data() + size_, from, count);
    size_ += count;
  }
  void Skip(int32_t count) {
    for (; count > 0; count -= anm::kMostAtOnce) Byte(uint8_t(anm::kSkip | std::min(count, anm::kMostAtOnce)));
  }
  bool Fits() const { return size_ <= to_.size(); }
  std::span<const uint8_t> Written() const { return to_.first(size_); }

 private:
  std::span<uint8_t> to_;
  size_t size_ = 0;
};

// The differing pixels of a line: first and behind the last; equal when there are none.
struct Changed {
  int32_t first;
  int32_t last;
};

Changed CompareLines(const uint8_t* a, const uint8_t* b, int32_t pixels, int32_t bytesPerPixel) {
  const auto bytes = size_t(pixels) * size_t(bytesPerPixel);
  if (std::memcmp(a, b, bytes) == 0) return {0, 0};
  size_t first = 0;
  size_t last = bytes;
  while (a[first] == b[first]) ++first;
  while (a[last - 1] == b[last - 1]) --last;
  return {int32_t(first) / bytesPerPixel, int32_t(last - 1) / bytesPerPixel + 1};
}

// A changed line from column `left` on: what differs is written, what stays for three pixels or more is skipped.
void WriteLine(DeltaWriter& out, const uint8_t* now, const uint8_t* before, int32_t left, Changed changed,
               int32_t bytesPerPixel) {
  const auto same = [&](int32_t x) {
    return std::memcmp(now + ptrdiff_t{x} * bytesPerPixel, before + ptrdiff_t{x} * bytesPerPixel,
                       size_t(bytesPerPixel)) == 0;
  };
  constexpr int32_t kWorthASkip = 3;
  out.Skip(changed.first - left);
  for (int32_t x = changed.first; x < changed.last;) {
    int32_t end = x;  // behind the pixels to write
    int32_t next = x;
    while (next < changed.last && next - end < kWorthASkip) {
      if (!same(next++)) end = next;
    }
    while (x < end) {
      const int32_t count = std::min(end - x, anm::kMostAtOnce);
      out.Byte(uint8_t(count));
      out.Bytes(now + ptrdiff_t{x} * bytesPerPixel, size_t(count) * size_t(bytesPerPixel));
      x += count;
    }
    while (next < changed.last && same(next)) ++next;
    if (next < changed.last) out.Skip(next - end);
    x = next;
  }
  out.Byte(0);
}

}  // namespace

ImageError AnmFilter::BeginWrite(ImageOutput& output, const AnimationFormat& format) {
  if (writer_ || depth != 0) return kImageAlreadyOpen;
  if ((ImageDepthBit(format.depth) & GetWritableDepths()) == 0) return kImageDepthNotWritable;
  if (format.depth == 8 && (!format.palette || format.palette->count < 256)) return kImageNoPalette;
  if (!SetPicture(format.width, format.height, format.depth)) return kImageBadArgument;
  std::unique_ptr<Writer, WriterDelete> writer(new Writer);
  writer->format = format;
  writer->format.frameTime = std::max(format.frameTime, 0);
  writer->rowBytes = rowBytes;
  writer->bytesPerPixel = bytesPerPixel;
  writer->start = output.GetPosition();
  depth = 0;  // nothing can be read
  const uint64_t keyBytes = uint64_t(writer->rowBytes) * uint64_t(format.height);
  if (!writer->previous.Allocate(Budget(), keyBytes) || !writer->delta.Allocate(Budget(), keyBytes) ||
      !writer->packed.Allocate(Budget(), compressBound(uLong(keyBytes)))) {
    return kImageOutOfMemory;
  }

  output.WriteDword(anm::kMagic);
  output.WriteZeros(8);
  output.WriteDword(uint32_t(format.width));
  output.WriteDword(uint32_t(format.height));
  output.WriteDword(uint32_t(format.depth));
  output.WriteZeros(8);  // the count of frames comes at the end
  output.WriteDword(uint32_t(writer->format.frameTime));
  output.WriteZeros(4);
  if (format.loopCount != 1) {
    output.WriteWord(anm::kLoop);
    output.WriteWord(0);
    output.WriteDword(8);
    output.WriteDword(uint32_t(format.loopCount));
    output.WriteDword(uint32_t(format.loopStart));
  }
  if (format.depth == 8) {
    output.WriteWord(anm::kPalette);
    output.WriteWord(0);
    output.WriteDword(4 + 256 * 3);
    output.WriteWord(0);
    output.WriteWord(256);
    for (const PaletteEntry& e : format.palette->entries) {
      const uint8_t rgb[3] = {e.red, e.green, e.blue};
      output.Write(rgb, sizeof rgb);
    }
  }
  writer->format.palette = nullptr;  // it is the caller's
  writer_ = std::move(writer);
  return output.Failed() ? kImageWriteFailed : kImageOk;
}

ImageError AnmFilter::WriteFrame(ImageOutput& output, const uint8_t* bits, int32_t pitch, int32_t time,
                                 uint32_t flags) {
  if (!writer_) return kImageFilterClosed;
  if (!bits) return kImageBadArgument;
  Writer& w = *writer_;
  const int32_t pictureHeight = w.format.height;
  const int32_t pictureWidth = w.format.width;
  time = std::max(time, 0);
  const bool first = w.frames == 0;

  Rect box{INT32_MAX, INT32_MAX, 0, 0};
  for (int32_t y = 0; !first && y < pictureHeight; ++y) {
    const Changed c = CompareLines(Row(bits, pitch, y), w.PreviousLine(y), pictureWidth, w.bytesPerPixel);
    if (c.first == c.last) continue;
    box = {std::min(box.left, c.first), std::min(box.top, y), std::max(box.right, c.last), y + 1};
  }
  if (!first && box.bottom == 0) {
    if (flags & 1) return WriteFrameChunk(output, w, false, {}, {}, time);
    // The frame before it shows longer.
    const int64_t longer = int64_t{w.TimeOf(w.lastTime)} + w.TimeOf(time);
    w.lastTime = int32_t(std::min<int64_t>(longer, INT32_MAX));
    w.total += w.TimeOf(time);
    const int64_t end = output.GetPosition();
    output.Seek(w.lastFrame);
    output.WriteDword(uint32_t(w.lastTime));
    output.Seek(end);
    return output.Failed() ? kImageWriteFailed : kImageOk;
  }

  DeltaWriter delta(w.delta.Bytes());
  if (!first) {
    int32_t y = box.top;
    while (y < box.bottom && delta.Fits()) {
      int32_t lines = 0;
      Changed changed[anm::kMostAtOnce];
      while (y + lines < box.bottom && lines < anm::kMostAtOnce) {
        const Changed c =
            CompareLines(Row(bits, pitch, y + lines), w.PreviousLine(y + lines), pictureWidth, w.bytesPerPixel);
        if (c.first == c.last) break;
        changed[lines++] = c;
      }
      if (lines == 0) {
        int32_t skipped = 1;
        while (CompareLines(Row(bits, pitch, y + skipped), w.PreviousLine(y + skipped), pictureWidth, w.bytesPerPixel)
                   .last == 0) {
          ++skipped;
        }
        delta.Skip(skipped);
        y += skipped;
        continue;
      }
      delta.Byte(uint8_t(lines));
      for (int32_t i = 0; i < lines; ++i) {
        WriteLine(delta, Row(bits, pitch, y + i), w.PreviousLine(y + i), box.left, changed[i], w.bytesPerPixel);
      }
      y += lines;
    }
    delta.Byte(0);
  }
  for (int32_t y = 0; y < pictureHeight; ++y) {
    std::memcpy(w.previous.Data() + ptrdiff_t{y} * w.rowBytes, Row(bits, pitch, y), size_t(w.rowBytes));
  }
  const bool key = first || !delta.Fits();
  if (key) return WriteFrameChunk(output, w, true, {0, 0, pictureWidth, pictureHeight}, w.previous.Bytes(), time);
  return WriteFrameChunk(output, w, false, box, delta.Written(), time);
}

// No data: a frame that shows the one before it.
ImageError AnmFilter::WriteFrameChunk(ImageOutput& output, Writer& w, bool key, const Rect& box,
                                      std::span<const uint8_t> data, int32_t time) {
  std::span<const uint8_t> stored = data;
  uint32_t unpacked = 0;
  if (quality_ >= 0 && !data.empty()) {
    uLongf size = uLongf(w.packed.Size());
    if (compress2(w.packed.Data(), &size, data.data(), uLong(data.size()), std::min(quality_ / 10, 9)) == Z_OK &&
        size < data.size()) {
      stored = w.packed.Bytes().first(size);
      unpacked = uint32_t(data.size());
    }
  }
  output.WriteWord(key ? anm::kKeyFrame : anm::kDeltaFrame);
  output.WriteWord(0);
  output.WriteDword(uint32_t(anm::kFrameHeaderBytes + stored.size()));
  w.lastFrame = output.GetPosition();
  w.lastTime = time;
  output.WriteDword(uint32_t(time));
  output.WriteDword(data.empty() ? anm::kNoPicture : 0);
  output.WriteDword(uint32_t(box.left));
  output.WriteDword(uint32_t(box.top));
  output.WriteDword(uint32_t(box.Width()));
  output.WriteDword(uint32_t(box.Height()));
  output.WriteDword(unpacked);
  output.Write(stored.data(), stored.size());
  w.total += w.TimeOf(time);
  ++w.frames;
  return output.Failed() ? kImageWriteFailed : kImageOk;
}

ImageError AnmFilter::FinishWrite(ImageOutput& output) {
  if (!writer_) return kImageFilterClosed;
  const Writer& w = *writer_;
  const int64_t end = output.GetPosition();
  output.Seek(w.start + anm::kFrameCountOffset);
  output.WriteDword(uint32_t(w.frames));
  output.Seek(w.start + anm::kTotalTimeOffset);
  output.WriteDword(uint32_t(std::min<int64_t>(w.total, INT32_MAX)));
  output.Seek(end);
  return output.Failed() ? kImageWriteFailed : kImageOk;
}

void AnmFilter::EndWrite() { writer_.reset(); }

}  // namespace vl

// ImageReader: one open picture or animation: a stream and the filter that reads it.
//
// On the stack for a picture, long-lived for an animation. A reader without a stream can hold a filter to save with.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

#include "gfx2d/images/image_filter_list.h"
#include "platform/file_system.h"

namespace vl {

// Where a frame goes: `width` x `height` pixels, the first line at `bits`, lines `pitch` bytes apart.
struct ImageTarget {
  uint8_t* bits = nullptr;
  int32_t width = 0;
  int32_t height = 0;
  int32_t pitch = 0;                       // below 0 when the lines lie bottom-up
  int32_t depth = 0;                       // 0: the picture's
  const PaletteRecord* palette = nullptr;  // depth 8; null: the picture's
  uint8_t* mask = nullptr;                 // width x height bytes, or null
};

class ImageReader {
 public:
  // The list outlives the reader.
  explicit ImageReader(const ImageFilterList& filters) : list(&filters) {}
  ~ImageReader() { Close(); }
  ImageReader(const ImageReader&) = delete;
  ImageReader& operator=(const ImageReader&) = delete;

  // Opens a file; the reader owns its stream. `filterId` is the filter to ask first, or 0.
  ImageError OpenFile(FileSystem& files, std::string_view name, uint32_t filterId = 0);
  // Opens at the stream's position; the stream outlives the reader and stays the caller's.
  ImageError OpenStream(CStream* source, uint32_t filterId = 0);
  // Only makes an instance of a filter, by id or position, to save with.
  ImageError OpenFilter(uint32_t idOrPosition);
  void Close();
  bool IsOpen() const { return filter != nullptr; }

  // The next frame. The target must be as large as the picture.
  ImageError Read(const ImageTarget& target);
  // Reads on, or from the start again, until `frame` is in the target, which holds what was read last. The frame
  // is clamped to those there are.
  ImageError SeekFrame(int32_t frame, const ImageTarget& target);
  ImageError Save(FileSystem& files, std::string_view name, const uint8_t* bits, int32_t width, int32_t height,
                  int32_t depth, int32_t pitch, const PaletteRecord* palette);

  // The filter's; 0 when closed.
  int32_t GetWidth() const { return filter ? filter->GetWidth() : 0; }
  int32_t GetHeight() const { return filter ? filter->GetHeight() : 0; }
  int32_t GetDepth() const { return filter ? filter->GetDepth() : 0; }
  int32_t GetLineBytes() const { return filter ? filter->GetLineBytes() : 0; }
  int64_t GetImageBytes() const { return filter ? filter->GetImageBytes() : 0; }
  const PaletteRecord* GetPalette() const { return filter ? filter->GetPalette() : nullptr; }
  bool HasAlpha() const { return filter && filter->HasAlpha(); }
  bool IsAnimation() const { return filter && filter->IsAnimation(); }
  int32_t GetFrameCount() const { return filter ? filter->GetFrameCount() : 0; }
  int32_t GetCurrentFrame() const { return filter ? filter->GetCurrentFrame() : 0; }
  int32_t GetTotalTime() const { return filter ? filter->GetTotalTime() : 0; }
  int32_t GetFrameTime(int32_t frame) const { return filter ? filter->GetFrameTime(frame) : 0; }
  int32_t GetLoopCount() const { return filter ? filter->GetLoopCount() : 0; }
  int32_t GetLoopStart() const { return filter ? filter->GetLoopStart() : 0; }
  bool PaletteChanged() const { return filter && filter->paletteChanged; }
  std::span<const uint8_t> GetUserData() const { return filter ? filter->GetUserData() : std::span<const uint8_t>(); }
  void GetFrameBox(Rect& box) const {
    if (filter) filter->GetFrameBox(box);
  }
  void Rewind() {
    if (filter && stream) filter->Rewind(*stream);
  }

  const ImageFilterList* list;
  CStream* stream = nullptr;
  bool ownsStream = false;
  std::unique_ptr<ImageFilter> filter;
  int64_t position = 0;  // of the picture in the stream

 private:
  std::unique_ptr<CStream> owned_;
};

}  // namespace vl

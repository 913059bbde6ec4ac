// ImageFilter: the base of what reads and writes one format of picture or animation.
//
// A prototype stands in the list of filters; CreateInstance makes what one reader uses. An instance turns a stream
// into lines of pixels of a depth and palette that its user chooses, frame by frame. The stream is given to each
// operation and must be the same one, as long as the instance is open. Files are hostile: sizes are checked before
// memory is taken, and nothing is written outside the target's lines.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

#include "base/memory_budget.h"
#include "base/rect.h"
#include "gfx2d/images/image_errors.h"
#include "gfx2d/images/image_memory.h"
#include "gfx2d/images/image_output.h"
#include "gfx2d/line_converters.h"
#include "gfx2d/palette.h"
#include "host/appfile/stream.h"

namespace vl {

// Bits of ImageFilter::GetWritableDepths.
enum ImageDepths : uint32_t { kDepth8 = 4, kDepth15 = 8, kDepth16 = 0x10, kDepth24 = 0x20, kDepth32 = 0x40 };

// The bit of a depth, 0 when it is none of the five.
uint32_t ImageDepthBit(int depth);

// An id of four characters.
constexpr uint32_t ImageFilterId(const char (&name)[5]) {
  return uint32_t(uint8_t(name[0])) | uint32_t(uint8_t(name[1])) << 8 | uint32_t(uint8_t(name[2])) << 16 |
         uint32_t(uint8_t(name[3])) << 24;
}

// Frames for the writer of animations.
struct AnimationFormat {
  int32_t width = 0;
  int32_t height = 0;
  int32_t depth = 0;
  int32_t frameTime = 0;                   // default, milliseconds
  const PaletteRecord* palette = nullptr;  // depth 8
  int32_t loopCount = 1;
  int32_t loopStart = 0;
};

class ImageFilter {
 public:
  // What a filter is called; `number` is its place among the string ids.
  struct Texts {
    uint32_t number = 0;
    std::string_view name;         // "PNG"
    std::string_view description;  // "Portable Network Graphics"
    std::string_view extensions;   // "png", several with ';' between
  };

  // `budget` outlives the filter.
  ImageFilter(MemoryBudget& budget, const Texts& texts);
  virtual ~ImageFilter() = default;
  ImageFilter(const ImageFilter&) = delete;
  ImageFilter& operator=(const ImageFilter&) = delete;

  virtual std::unique_ptr<ImageFilter> CreateInstance() const = 0;
  virtual uint32_t GetId() const = 0;
  virtual std::string_view GetName() const { return texts_.name; }
  virtual std::string_view GetDescription() const { return texts_.description; }
  virtual std::string_view GetExtensions() const { return texts_.extensions; }
  virtual uint32_t GetWritableDepths() const = 0;
  // How hard to compress or how true to stay, in percent; formats without a choice ignore it.
  virtual void SetQuality(int quality) {}
  // Whether the stream, at the start of the picture, looks like this format. Moves the position.
  virtual bool IsValid(CStream& stream, uint32_t firstFourBytes) const = 0;
  virtual bool ReadsStills() const { return false; }
  virtual bool ReadsAnimations() const { return false; }
  virtual bool SavesStills() const { return false; }
  virtual bool SavesAnimations() const { return false; }

  // Reads the headers at the stream's position. On success the fields below hold the picture's.
  virtual ImageError Open(CStream& stream) = 0;
  // The next frame into a target of width x height pixels in the format set before: `bits` is its first line, the
  // lines lie `pitch` bytes apart (below 0 when they lie bottom-up). `mask`, if not null, has width x height bytes
  // and is only written when the picture has alpha. Frames of animations may build on what the target holds.
  // kImagePastEnd when there is no further frame. What was written before a failure stays.
  virtual ImageError ReadFrame(CStream& stream, uint8_t* bits, int32_t pitch, uint8_t* mask) = 0;
  // Writes a still picture. `palette` is needed at depth 8 only.
  virtual ImageError Save(ImageOutput& output, const uint8_t* bits, int32_t width, int32_t height, int32_t depth,
                          int32_t pitch, const PaletteRecord* palette);
  virtual void Close() {}
  virtual ImageError FinishWrite(ImageOutput& output) { return kImageCantDo; }

  virtual int32_t GetWidth() const { return width; }
  virtual int32_t GetHeight() const { return height; }
  virtual int32_t GetLineBytes() const { return lineBytes; }
  virtual int32_t GetDepth() const { return depth; }
  virtual int64_t GetImageBytes() const { return int64_t{lineBytes} * height; }
  // Null when the picture has none.
  virtual const PaletteRecord* GetPalette() const { return palette ? &*palette : nullptr; }
  virtual bool HasAlpha() const { return hasAlpha; }
  // Chooses depth and palette of the target. At depth 8 a palette is needed; it is copied.
  virtual ImageError SetOutputFormat(int32_t newDepth, const PaletteRecord* newPalette);
  virtual bool IsAnimation() const { return ReadsAnimations(); }
  virtual int32_t GetFrameCount() const { return frameCount; }
  virtual int32_t GetCurrentFrame() const { return currentFrame; }
  // What the last frame changed.
  virtual void GetFrameBox(Rect& box) const { box = {0, 0, width, height}; }
  virtual uint32_t GetUserDataSize() const { return 0; }
  virtual std::span<const uint8_t> GetUserData() const { return {}; }
  virtual int32_t GetTotalTime() const { return totalTime; }
  virtual int32_t GetFrameTime(int32_t frame) const { return frameTime; }
  virtual int32_t GetLoopCount() const { return 1; }
  virtual int32_t GetLoopStart() const { return 0; }
  // Makes the first frame the next one. Still pictures do nothing.
  virtual void Rewind(CStream& stream) {}
  virtual ImageError BeginWrite(ImageOutput& output, const AnimationFormat& format) { return kImageCantDo; }
  // `flags` bit 0: a repeat of the same picture is a frame of its own. `time` in milliseconds, 0 for the default.
  virtual ImageError WriteFrame(ImageOutput& output, const uint8_t* bits, int32_t pitch, int32_t time, uint32_t flags) {
    return kImageCantDo;
  }
  virtual void EndWrite() {}

  uint32_t nameStringId;
  uint32_t descriptionStringId;
  uint32_t extensionStringId;
  int32_t width = 0;
  int32_t height = 0;
  int32_t depth = 0;          // of the pixels as the filter gives them; 0 unless open
  int32_t rowBytes = 0;       // of the pixels of one line
  int32_t lineBytes = 0;      // of one stored line with its padding
  int32_t bytesPerPixel = 0;  // of `depth`
  bool hasAlpha = false;
  int32_t frameCount = 0;  // 1 for still pictures
  int32_t currentFrame = 0;
  int32_t frameTime = 0;  // milliseconds
  int32_t totalTime = 0;  // milliseconds
  std::optional<PaletteRecord> palette;
  int32_t outputDepth = 0;
  int32_t outputBytesPerPixel = 0;
  PaletteRecord outputPalette;   // of depth 8, else without entries
  PaletteRecord convertPalette;  // the source's when `paletteRemap` was made
  std::array<uint8_t, 256> paletteRemap{};
  std::unique_ptr<std::array<uint8_t, 65536>> colourCache;  // nearest index by 5-6-5 colour
  bool mustConvert = false;
  bool paletteChanged = false;  // by the last frame

 protected:
  // Sets the fields of size from the file's; the stored lines are padded to `padding` bytes. False for what no
  // surface can hold.
  bool SetPicture(int64_t pictureWidth, int64_t pictureHeight, int32_t pictureDepth, int32_t padding = 1);
  static uint8_t* Row(uint8_t* bits, int32_t pitch, int32_t y) { return bits + ptrdiff_t{y} * pitch; }
  static const uint8_t* Row(const uint8_t* bits, int32_t pitch, int32_t y) { return bits + ptrdiff_t{y} * pitch; }
  // One line of the picture's depth into the target's format. Only when mustConvert is set.
  void ConvertLine(const uint8_t* source, uint8_t* target, int32_t pixels) { convert_(*this, source, target, pixels); }
  // The same for pictures of 24 bits, from words 0xXXRRGGBB, whose high byte doesn't count, or from bytes with red
  // first.
  void ConvertWords(const uint8_t* words, uint8_t* target, int32_t pixels) {
    convertWords_(*this, words, target, pixels);
  }
  void ConvertRgb(const uint8_t* rgb, uint8_t* target, int32_t pixels);
  // Either of the two: converts or copies a line of the picture's depth.
  void PutLine(const uint8_t* source, uint8_t* target, int32_t pixels);
  // The palette of an indexed picture was replaced while it is open.
  void PaletteReplaced();
  // A still picture is read once. False when it was.
  bool TakeFrame();
  MemoryBudget& Budget() const { return budget_; }

 private:
  using Line = void (*)(ImageFilter& filter, const uint8_t* source, uint8_t* target, int32_t pixels);
  struct Lines;
  friend struct Lines;
  ImageError PrepareConversion();
  void FillRemap();
  bool MakeColourCache();
  uint8_t SearchOutput(uint32_t red, uint32_t green, uint32_t blue) const;
  uint8_t SearchAgain(uint32_t red, uint32_t green, uint32_t blue);
  Line LineToIndex(int32_t sourceDepth) const;

  MemoryBudget& budget_;
  const Texts& texts_;
  Line convert_ = nullptr;
  Line convertWords_ = nullptr;
  std::optional<LineConversion> depths_;                    // between depths above 8
  std::unique_ptr<std::array<uint32_t, 256>> indexPixels_;  // of each index, to depths above 8
  uint8_t outputChannels_[3][256] = {};                     // of outputPalette
  std::unique_ptr<std::array<uint32_t, 512>> searched_;     // colours whose index is the mark of the cache
  bool ownPalette_ = false;                                 // the target takes the picture's palette as it is
  bool frameTaken_ = false;
};

// Whether two palettes show the same colours.
bool SameColours(const PaletteRecord& a, const PaletteRecord& b);

}  // namespace vl

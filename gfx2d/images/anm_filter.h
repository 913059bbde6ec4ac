// AnmFilter: the system's own animations, "ANMV": key frames and delta frames, deflated or raw.
//
// A delta frame goes over the frame before it, which the target must still hold. The writer keeps a copy of the
// last frame to find what changed, and decides between key and delta by their size before they are packed.
#pragma once

#include <vector>

#include "gfx2d/images/image_filter.h"
#include "gfx2d/images/image_memory.h"

namespace vl {

class AnmFilter final : public ImageFilter {
 public:
  explicit AnmFilter(MemoryBudget& budget);
  std::unique_ptr<ImageFilter> CreateInstance() const override { return std::make_unique<AnmFilter>(Budget()); }
  uint32_t GetId() const override { return ImageFilterId("ANM "); }
  uint32_t GetWritableDepths() const override { return kDepth8 | kDepth15 | kDepth16 | kDepth24 | kDepth32; }
  bool IsValid(CStream& stream, uint32_t firstFourBytes) const override;
  bool ReadsAnimations() const override { return true; }
  bool SavesAnimations() const override { return true; }

  ImageError Open(CStream& stream) override;
  ImageError ReadFrame(CStream& stream, uint8_t* bits, int32_t pitch, uint8_t* mask) override;
  void Close() override;
  void GetFrameBox(Rect& box) const override { box = box_; }
  uint32_t GetUserDataSize() const override { return uint32_t(userData_.Size()); }
  std::span<const uint8_t> GetUserData() const override { return {userData_.Data(), userData_.Size()}; }
  // Of each frame in the file; the default for frames that it doesn't have.
  int32_t GetFrameTime(int32_t frame) const override;
  int32_t GetLoopCount() const override { return loopCount_; }
  int32_t GetLoopStart() const override { return loopStart_; }
  void Rewind(CStream& stream) override;

  // 0 to 99: how hard to deflate, in tens; below 0 frames are stored raw.
  void SetQuality(int quality) override { quality_ = quality; }
  ImageError BeginWrite(ImageOutput& output, const AnimationFormat& format) override;
  ImageError WriteFrame(ImageOutput& output, const uint8_t* bits, int32_t pitch, int32_t time, uint32_t flags) override;
  // Completes the header. The file is whole after this.
  ImageError FinishWrite(ImageOutput& output) override;
  void EndWrite() override;

 private:
  struct Chunk {
    uint16_t id = 0;
    uint32_t size = 0;  // of the data
    int64_t data = 0;   // its position
    int64_t End() const { return data + size; }
  };
  struct FrameHeader;
  class Data;

  // Reading.
  static bool ReadChunk(CStream& stream, int64_t at, Chunk& chunk);
  static bool ReadFrameHeader(CStream& stream, FrameHeader& header);
  ImageError ReadHeader(CStream& stream);
  ImageError FindFirstFrame(CStream& stream);
  void CollectTimes(CStream& stream);
  bool ReadPalette(CStream& stream, const Chunk& chunk);
  ImageError ReadKey(Data& data, uint8_t* bits, int32_t pitch);
  ImageError ReadDelta(Data& data, const FrameHeader& header, uint8_t* bits, int32_t pitch);

  int64_t firstFrame_ = 0;  // position of its chunk
  int64_t next_ = 0;        // position of the next chunk
  Rect box_;
  ImageMemory userData_;
  ImageMemory times_;  // an i32 a frame, as stored
  std::optional<PaletteRecord> firstPalette_;
  int32_t loopCount_ = 1;
  int32_t loopStart_ = 0;

  // Writing.
  struct Writer;
  ImageError WriteFrameChunk(ImageOutput& output, Writer& writer, bool key, const Rect& box,
                             std::span<const uint8_t> data, int32_t time);
  struct WriterDelete {
    void operator()(Writer* writer) const;
  };
  std::unique_ptr<Writer, WriterDelete> writer_;
  int quality_ = 60;
};

}  // namespace vl

// JpegFilter: JPEG through libjpeg-turbo.
//
// Every picture comes out as 24 bits; grey is spread to three channels, and the inks of printing are mixed down. A
// file that ends early gives the lines that could be read, with success.
#pragma once

#include "gfx2d/images/image_filter.h"

namespace vl {

class JpegFilter final : public ImageFilter {
 public:
  explicit JpegFilter(MemoryBudget& budget);
  ~JpegFilter() override;
  std::unique_ptr<ImageFilter> CreateInstance() const override { return std::make_unique<JpegFilter>(Budget()); }
  uint32_t GetId() const override { return ImageFilterId("JPEG"); }
  uint32_t GetWritableDepths() const override { return kDepth24; }
  bool IsValid(CStream& stream, uint32_t firstFourBytes) const override;
  bool ReadsStills() const override { return true; }
  bool SavesStills() const override { return true; }
  ImageError Open(CStream& stream) override;
  ImageError ReadFrame(CStream& stream, uint8_t* bits, int32_t pitch, uint8_t* mask) override;
  ImageError Save(ImageOutput& output, const uint8_t* bits, int32_t saveWidth, int32_t saveHeight, int32_t saveDepth,
                  int32_t pitch, const PaletteRecord* savePalette) override;
  void Close() override;

 private:
  struct Decoder;
  // These call libjpeg between a setjmp and its longjmp: they hold nothing that has a destructor.
  static bool ReadHeader(Decoder& decoder, CStream& stream);
  static bool Start(Decoder& decoder);
  static void ReadLines(Decoder& decoder, uint8_t* bits, int32_t pitch, bool clear);
  void ConvertLines(Decoder& decoder, uint8_t* line, uint8_t* bits, int32_t pitch);
  void MixInks(uint8_t* line) const;

  std::unique_ptr<Decoder> decoder_;
};

}  // namespace vl

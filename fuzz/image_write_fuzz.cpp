// Writes an animation of arbitrary frames and reads it back; then saves its last picture in every format that can.
//
// Bytes 0 to 4: depth, width, height, quality and default time. Then frames: a byte of flags (bit 0 a frame of its own
// for a repeat, bits 1 to 3 what changes), a byte of time, and bytes that are laid over the picture.
#include "fuzz/image_fuzz_support.h"
#include "gfx2d/pixel_format.h"

namespace {

using namespace vl;
using fuzz::Require;

void SaveEverywhere(const ImageFilterList& filters, const std::vector<uint8_t>& pixels, int width, int height,
                    int depth) {
  const PaletteRecord palette = fuzz::SomePalette();
  const int pitch = width * ((depth + 1) / 8);
  for (const uint32_t id : {ImageFilterId("BMP "), ImageFilterId("PNG "), ImageFilterId("JPEG")}) {
    MemoryFileSystem files;
    ImageReader writer(filters);
    Require(writer.OpenFilter(id) == kImageOk);
    const ImageError error = writer.Save(files, "p", pixels.data(), width, height, depth, pitch, &palette);
    const bool writable = (writer.filter->GetWritableDepths() & ImageDepthBit(depth)) != 0;
    Require(error == (writable ? kImageOk : kImageDepthNotWritable));
    if (error) continue;
    ImageReader reader(filters);
    Require(reader.OpenFile(files, "p") == kImageOk);
    std::vector<uint8_t> back(pixels.size());
    Require(reader.GetDepth() == depth);
    Require(reader.Read({back.data(), width, height, pitch, depth, nullptr, nullptr}) == kImageOk);
    if (id != ImageFilterId("JPEG")) Require(back == pixels);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 5) return 0;
  const int depth = kDepths[data[0] % 5];
  const int width = data[1] + 1 + (data[1] == 255 ? 300 : 0);
  const int height = data[2] + 1;
  const int quality = data[3] - 50;
  const int bytesPerPixel = (depth + 1) / 8;
  const int frameTime = data[4];
  const int pitch = width * bytesPerPixel;
  MemoryBudget budget(64 << 20);
  {
    const ImageFilterList filters(&budget);
    MemoryFileSystem files;
    const PaletteRecord palette = fuzz::SomePalette();
    const auto filter = filters.CreateInstance(ImageFilterId("ANM "));
    ImageOutput output(files.open("a", FileMode::Create));
    filter->SetQuality(quality);
    Require(filter->BeginWrite(output, {width, height, depth, frameTime, &palette, data[4] % 3, data[4] % 5}) ==
            kImageOk);
    std::vector<uint8_t> picture(size_t(pitch) * size_t(height));
    std::vector<std::vector<uint8_t>> written;
    std::vector<int> times;
    size_t at = 5;
    int frames = 0;
    while (frames == 0 || (at + 2 < size && frames < 20)) {
      ++frames;
      const uint8_t flags = at < size ? data[at++] : 0;
      const int time = at < size ? data[at++] : 0;
      const size_t offset = (size_t{flags} >> 1 & 7) * picture.size() / 8;
      const size_t count = std::min<size_t>({size_t{flags} >> 4, size - std::min(at, size), picture.size() - offset});
      std::copy_n(data + std::min(at, size), count, picture.begin() + ptrdiff_t(offset));
      at += count;
      const int effective = time ? time : frameTime;
      Require(filter->WriteFrame(output, picture.data(), pitch, time, flags & 1) == kImageOk);
      if (!written.empty() && written.back() == picture && !(flags & 1)) {
        times.back() += effective;
      } else {
        written.push_back(picture);
        times.push_back(effective);
      }
    }
    Require(filter->FinishWrite(output) == kImageOk && output.Commit());
    filter->EndWrite();

    ImageReader reader(filters);
    Require(reader.OpenFile(files, "a") == kImageOk);
    Require(reader.GetFrameCount() == int(written.size()));
    std::vector<uint8_t> target(picture.size());
    for (size_t i = 0; i < written.size(); ++i) {
      Require(reader.Read({target.data(), width, height, pitch, depth, nullptr, nullptr}) == kImageOk);
      Require(target == written[i]);
      Require(reader.GetFrameTime(int(i)) == times[i]);
    }
    Require(reader.Read({target.data(), width, height, pitch, depth, nullptr, nullptr}) == kImagePastEnd);
    SaveEverywhere(filters, picture, width, height, depth);
  }
  Require(budget.Used() == 0);
  return 0;
}

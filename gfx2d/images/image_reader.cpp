#include "gfx2d/images/image_reader.h"

#include <algorithm>
#include <utility>

namespace vl {

ImageError ImageReader::OpenFile(FileSystem& files, std::string_view name, uint32_t filterId) {
  if (filter) return kImageAlreadyOpen;
  if (name.empty()) return kImageNoName;
  std::unique_ptr<CStream> file = CFileStream::Open(files, name);
  if (!file) return kImageCantOpen;
  const ImageError error = OpenStream(file.get(), filterId);
  if (error) return error;
  owned_ = std::move(file);
  ownsStream = true;
  return kImageOk;
}

ImageError ImageReader::OpenStream(CStream* source, uint32_t filterId) {
  if (filter) return kImageAlreadyOpen;
  if (!source) return kImageNoName;
  const ImageFilter* prototype = list->Detect(*source, filterId);
  if (!prototype) return kImageBadData;
  std::unique_ptr<ImageFilter> instance = prototype->CreateInstance();
  if (!instance) return kImageOutOfMemory;
  const int64_t start = source->GetPosition();
  if (const ImageError error = instance->Open(*source)) return error;
  if (instance->GetDepth() < 8) return kImageDepthTooSmall;
  filter = std::move(instance);
  stream = source;
  position = start;
  return kImageOk;
}

ImageError ImageReader::OpenFilter(uint32_t idOrPosition) {
  if (filter) return kImageAlreadyOpen;
  if (!list->Find(idOrPosition)) return kImageBadArgument;
  filter = list->CreateInstance(idOrPosition);
  return filter ? kImageOk : kImageOutOfMemory;
}

void ImageReader::Close() {
  if (filter) filter->Close();
  filter.reset();
  owned_.reset();
  ownsStream = false;
  stream = nullptr;
}

ImageError ImageReader::Read(const ImageTarget& target) {
  if (!filter || !stream) return kImageReaderClosed;
  if (!target.bits) return kImageBadArgument;
  if (target.width != filter->GetWidth() || target.height != filter->GetHeight()) return kImageWrongSize;
  const int32_t depth = target.depth ? target.depth : filter->GetDepth();
  const PaletteRecord* palette = target.palette ? target.palette : filter->GetPalette();
  if (const ImageError error = filter->SetOutputFormat(depth, depth == 8 ? palette : nullptr)) return error;
  return filter->ReadFrame(*stream, target.bits, target.pitch, target.mask);
}

ImageError ImageReader::SeekFrame(int32_t frame, const ImageTarget& target) {
  if (!filter || !stream) return kImageReaderClosed;
  if (!filter->IsAnimation()) return kImageCantDo;
  frame = std::max(std::min(frame, filter->GetFrameCount() - 1), 0);
  if (frame < filter->GetCurrentFrame()) filter->Rewind(*stream);
  while (filter->GetCurrentFrame() < frame) {
    const int32_t before = filter->GetCurrentFrame();
    if (const ImageError error = Read(target)) return error;
    if (filter->GetCurrentFrame() <= before) return kImagePastEnd;
  }
  return kImageOk;
}

ImageError ImageReader::Save(FileSystem& files, std::string_view name, const uint8_t* bits, int32_t width,
                             int32_t height, int32_t depth, int32_t pitch, const PaletteRecord* palette) {
  if (!filter) return kImageReaderClosed;
  if (name.empty() || !bits || width < 1 || height < 1) return kImageBadArgument;
  if ((ImageDepthBit(depth) & filter->GetWritableDepths()) == 0) return kImageDepthNotWritable;
  if (!filter->SavesStills()) return kImageCantDo;
  std::unique_ptr<File> file = files.open(name, FileMode::Create);
  if (!file) return kImageCantCreate;
  ImageOutput output(std::move(file));
  if (const ImageError error = filter->Save(output, bits, width, height, depth, pitch, palette)) return error;
  return output.Commit() ? kImageOk : kImageWriteFailed;
}

}  // namespace vl

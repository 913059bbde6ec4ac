#include "gfx2d/images/image_filter_list.h"

#include "gfx2d/images/anm_filter.h"
#include "gfx2d/images/bmp_filter.h"
#include "gfx2d/images/fli_filter.h"
#include "gfx2d/images/jpeg_filter.h"
#include "gfx2d/images/pcx_filter.h"
#include "gfx2d/images/png_filter.h"
#include "gfx2d/images/tga_filter.h"

namespace vl {

ImageFilterList::ImageFilterList(MemoryBudget* budget)
    : budget_(budget ? budget : &own_), filters_{std::make_unique<BmpFilter>(*budget_),
                                                 std::make_unique<JpegFilter>(*budget_),
                                                 std::make_unique<PngFilter>(*budget_),
                                                 std::make_unique<TgaFilter>(*budget_),
                                                 std::make_unique<AnmFilter>(*budget_),
                                                 std::make_unique<FliFilter>(*budget_),
                                                 std::make_unique<PcxFilter>(*budget_)} {}

const ImageFilter* ImageFilterList::At(size_t position) const {
  return position < kCount ? filters_[position].get() : nullptr;
}

const ImageFilter* ImageFilterList::Find(uint32_t idOrPosition) const {
  for (const auto& filter : filters_) {
    if (filter->GetId() == idOrPosition) return filter.get();
  }
  return At(idOrPosition);
}

std::unique_ptr<ImageFilter> ImageFilterList::CreateInstance(uint32_t idOrPosition) const {
  const ImageFilter* filter = Find(idOrPosition);
  return filter ? filter->CreateInstance() : nullptr;
}

const ImageFilter* ImageFilterList::Detect(CStream& stream, uint32_t id) const {
  const int64_t start = stream.GetPosition();
  uint32_t first = 0;
  if (stream.ReadDwordLE(&first)) {
    stream.Seek(start);
    return nullptr;
  }
  const auto asks = [&](const ImageFilter& filter) {
    stream.Seek(start);
    const bool valid = filter.IsValid(stream, first);
    stream.Seek(start);
    return valid;
  };
  const ImageFilter* named = id ? Find(id) : nullptr;
  if (named && asks(*named)) return named;
  for (const auto& filter : filters_) {
    if (asks(*filter)) return filter.get();
  }
  return nullptr;
}

}  // namespace vl

// ImageFilterList: the formats that a run reads and writes, in the order in which they are tried.
#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "gfx2d/images/image_filter.h"

namespace vl {

class ImageFilterList {
 public:
  static constexpr size_t kCount = 7;

  // `budget` outlives the list and its filters. Without one the list has its own.
  explicit ImageFilterList(MemoryBudget* budget = nullptr);
  ImageFilterList(const ImageFilterList&) = delete;
  ImageFilterList& operator=(const ImageFilterList&) = delete;

  size_t Count() const { return kCount; }
  // A prototype by its place or its id; null when there is none.
  const ImageFilter* At(size_t position) const;
  const ImageFilter* Find(uint32_t idOrPosition) const;
  // A new instance, or null.
  std::unique_ptr<ImageFilter> CreateInstance(uint32_t idOrPosition) const;
  // The prototype that recognises what lies at the stream's position; that of `id` is asked first when it isn't
  // 0. Null when none does. The position is left where it was.
  const ImageFilter* Detect(CStream& stream, uint32_t id) const;
  MemoryBudget& Budget() const { return *budget_; }

 private:
  MemoryBudget own_;
  MemoryBudget* budget_;
  std::array<std::unique_ptr<ImageFilter>, kCount> filters_;
};

}  // namespace vl

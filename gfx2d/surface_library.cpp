#include "gfx2d/surface_library.h"

#include "gfx2d/pixel_format.h"

namespace vl {

SurfaceLibrary::SurfaceLibrary(MemoryBudget* budget, const RowKernels& kernels)
    : budget_(budget), kernels_(kernels), scratches_(budget), palettes_(budget) {
  for (size_t i = 0; i < prototypes_.size(); ++i) prototypes_[i] = std::make_unique<cMemSurface>(*this, kDepths[i]);
}

const cSurfaceImpl* SurfaceLibrary::FindPrototype(int depth, int kind, int family) const {
  if (kind < 0 || kind > 3 || depth < 0 || depth > 32) return nullptr;
  return prototypes_[size_t(DepthIndexOf(depth))].get();
}

}  // namespace vl

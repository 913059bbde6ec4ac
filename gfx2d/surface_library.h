// SurfaceLibrary: what all surfaces of one run share: the palettes, the prototypes that new surfaces are made
// from, the inner loops and their working memory, and the run's memory budget.
//
// It outlives its surfaces. All of it belongs to one thread.
#pragma once

#include <array>
#include <memory>

#include "base/memory_budget.h"
#include "gfx2d/palette.h"
#include "gfx2d/row_kernels.h"
#include "gfx2d/scratch.h"
#include "gfx2d/surface_impl.h"

namespace vl {

class SurfaceLibrary {
 public:
  // `budget` outlives the library. All tables of kernels give the same pixels.
  explicit SurfaceLibrary(MemoryBudget* budget, const RowKernels& kernels = BestRowKernels());
  SurfaceLibrary(const SurfaceLibrary&) = delete;
  SurfaceLibrary& operator=(const SurfaceLibrary&) = delete;

  PaletteList& Palettes() { return palettes_; }
  MemoryBudget& Budget() { return *budget_; }
  const RowKernels& Kernels() const { return kernels_; }
  ScratchPool& Scratches() { return scratches_; }

  // The prototype for surfaces of a depth, folded to 8, 15, 16, 24 or 32. Every kind from 0 to 3 and every
  // family is plain memory here; other kinds give null.
  const cSurfaceImpl* FindPrototype(int depth, int kind = 0, int family = 0) const;

 private:
  MemoryBudget* budget_;
  const RowKernels& kernels_;
  ScratchPool scratches_;
  PaletteList palettes_;
  std::array<std::unique_ptr<cMemSurface>, 5> prototypes_;
};

}  // namespace vl

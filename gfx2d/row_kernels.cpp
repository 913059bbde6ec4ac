#include "gfx2d/row_kernels.h"

#include "gfx2d/row_loops.h"

namespace vl {

const RowKernels& PortableRowKernels() { return kLoops; }

const RowKernels& BestRowKernels() {
  static const RowKernels* const best = WideRowKernels();
  return best ? *best : PortableRowKernels();
}

}  // namespace vl

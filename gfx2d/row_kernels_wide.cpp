// The same loops for processors with 32-byte vectors. Only what follows the pragma is compiled for them, and it is
// reached only when the processor says that it has them. Fused multiplication is left out: it would round otherwise.
#include "gfx2d/row_kernels.h"

#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))

// What the loops call of these must be compiled for every processor.
#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "gfx2d/pixel_format.h"

#if defined(__clang__)
#pragma clang attribute push(__attribute__((target("avx2"))), apply_to = function)
#else
#pragma GCC push_options
#pragma GCC target("avx2")
#endif

#include "gfx2d/row_loops.h"

#if defined(__clang__)
#pragma clang attribute pop
#else
#pragma GCC pop_options
#endif

namespace vl {

const RowKernels* WideRowKernels() { return __builtin_cpu_supports("avx2") ? &kLoops : nullptr; }

}  // namespace vl

#else

namespace vl {

const RowKernels* WideRowKernels() { return nullptr; }

}  // namespace vl

#endif

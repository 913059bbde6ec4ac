// How handlers hand over to one another.
#pragma once

#include "interpreter/executor/executor.h"
#include "interpreter/executor/handlers.h"

// Slow ways stay out of the handlers, so that these keep everything in registers. What takes the address of a local
// must too, or no jump could be made of a handler's last call.
#if defined(__GNUC__)
#define VL_NOINLINE __attribute__((noinline))
#define VL_ALWAYS_INLINE inline __attribute__((always_inline))
#else
#define VL_NOINLINE
#define VL_ALWAYS_INLINE inline
#endif

#if VL_TAIL_CALLS
#define VL_GO(next)                        \
  do {                                     \
    const Instruction* const go_ = (next); \
    return go_->run(x, go_, S, L);         \
  } while (false)
// S and L have changed.
#define VL_GO_ANEW(next)                   \
  do {                                     \
    const Instruction* const go_ = (next); \
    return go_->run(x, go_, x.S, x.L);     \
  } while (false)
// The same, with both at hand.
#define VL_GO_WITH(next, slots, locals)     \
  do {                                      \
    const Instruction* const go_ = (next);  \
    return go_->run(x, go_, slots, locals); \
  } while (false)
#else
#define VL_GO(next) return (next)
#define VL_GO_ANEW(next) return (next)
#define VL_GO_WITH(next, slots, locals) return (next)
#endif

// The end of a statement, with what comes next.
#define VL_END_STATEMENT(next)                       \
  do {                                               \
    const Instruction* const then_ = (next);         \
    if (--x.fuel < 0) [[unlikely]]                   \
      return handlers::Housekeeping(x, then_, S, L); \
    VL_GO(then_);                                    \
  } while (false)

namespace vl::handlers {

// Does the work between statements and goes on with the instruction.
const Instruction* Housekeeping(CExecutor& x, const Instruction* i, CValue* S, CValue* L);

inline CValue& At(CValue* L, int64_t offset) { return *reinterpret_cast<CValue*>(reinterpret_cast<char*>(L) + offset); }

// What an operand reads. A name that is found nowhere reads as a cell of type VT_NEW_NAME.
template <OperandKind K>
inline CValue* Read(const Operand& operand, int64_t offset, CValue* slot, CValue* L) {
  if constexpr (K == kLocal) {
    return &At(L, offset);
  } else if constexpr (K == kName) {
    CValue* local = &At(L, offset);
    return local->type == VT_NEW_NAME ? *operand.name->cell : local;
  } else if constexpr (K == kConstant) {
    return const_cast<CValue*>(operand.constant);
  } else {
    return slot;
  }
}

inline double RealOf(const CValue& number) { return number.type == VT_FLOAT ? number.data.real : number.data.integer; }

inline void PutInteger(CValue& slot, int32_t v) {
  slot.type = VT_INTEGER;
  slot.data.integer = v;
}
inline void PutReal(CValue& slot, double v) {
  slot.type = VT_FLOAT;
  slot.data.real = v;
}
inline void PutNumber(CValue& slot, const CValue& number) {
  slot.type = number.type;
  slot.data = number.data;
}

// Puts an operand of any kind into a slot, with its variable.
void LoadOperand(CExecutor& x, CValue& slot, OperandKind kind, const Operand& operand, CValue* L);

}  // namespace vl::handlers

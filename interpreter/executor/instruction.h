// What the executor runs: instructions that a compiler prepares once from a stretch of the token stream.
//
// An instruction does what the walker would do with one or several tokens, and leaves the slots of the evaluation
// stack as the walker would: a member without a result may show what a slot held.
//
// `S` is the slot at which the current evaluation starts, so that its first value lies in S[1]; `L` are the local
// variables of the call that runs. A local that doesn't exist has the type VT_NEW_NAME, which no variable can hold.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <unordered_map>
#include <vector>

#include "interpreter/class_base.h"
#include "interpreter/token.h"
#include "interpreter/value.h"

// Handlers call one another at their ends where the compiler makes jumps of that; elsewhere each returns the next
// instruction to a loop. The build sets it; both forms run the same handlers.
#ifndef VL_TAIL_CALLS
#define VL_TAIL_CALLS 0
#endif

namespace vl {

class CExecutor;
struct Instruction;

using Handler = const Instruction* (*)(CExecutor& x, const Instruction* i, CValue* S, CValue* L);

// Where an operand is: a local, a name that may be a local or a global, a constant, or the slot itself.
enum OperandKind : uint8_t { kLocal, kName, kConstant, kSlot, kOperandKinds };

// A name as one function sees it.
struct NameInfo {
  int64_t offset = 0;          // in bytes from L; of a cell that never exists for a name that is no local
  CVariable** cell = nullptr;  // the newest global of that name
  uint32_t nameId = 0;
  uint32_t token = 0;    // a token of that name
  bool isLocal = false;  // may be a variable of a call's frame
  bool sure = false;     // most likely is one: a parameter, or declared somewhere
  bool isParameter = false;
  bool declared = false;  // stands behind Var: only the frame is looked at
};

// A variable of the script object that a name holds.
struct MemberInfo {
  int64_t offset = 0;  // of the name
  CVariable* const* cell = nullptr;
  uint32_t nameId = 0;         // of the member
  mutable uint32_t place = 0;  // where it was the last time
};

// A term of a statement on numbers, beside kName and kConstant.
inline constexpr uint8_t kMemberTerm = kSlot;
enum class TermForm : uint8_t { One, Two, RightFirst, LeftFirst };
// Made: a local that the statement may make. First: the member that is the first term, too.
enum class TermTarget : uint8_t { Name, Made, Member, First };

union Operand {
  int64_t number;
  const NameInfo* name;  // kLocal, kName
  const CValue* constant;
  const MemberInfo* member;
  const Instruction* target;
  uint64_t index;  // of the target, until all instructions are there
  const void* pointer;
};

struct Instruction {
  Handler run = nullptr;
  Operand a{};
  Operand b{};
  Operand target{};
  uint32_t at = 0;      // where the walker stands when this fails: an offset in the stream
  uint16_t k = 0;       // the slot of the result, and of the left side
  uint16_t n = 0;       // a count, an operator with its operand kinds, a level
  int64_t offsetA = 0;  // of kLocal and kName
  int64_t offsetB = 0;
  int64_t offsetTarget = 0;  // of a target that is a name
};

// What an element is wanted for.
enum ElementFlags : uint8_t {
  kAssignFollows = 1,  // `=` stands behind it: it need not exist
  kMemberFollows = 2,
  kPlaceWanted = 4,   // something may assign to it while other code has run
  kPlaceByIndex = 8,  // the statement assigns to it and runs no code: its array and index are enough
};

// Where the value lies whose member comes next.
enum class MemberFrom : uint8_t { Source, This, CurWindow, SlotText, Inner };

// What a program's instructions leave in the slots of the evaluation stack, compared with the walker. All is needed
// where a member may show a slot's rest; objects and the like where a collection may ask who refers to them.
enum Traces : uint8_t { kNoTraces, kObjectTraces, kAllTraces, kTraceKinds };

// What a call is compiled for: the frame and what This is decide how a name is found.
enum class CodeKind : uint8_t {
  Global,    // the frame is the interpreter: the program's top level and event functions
  Function,  // a frame of its own, This is the interpreter
  Method     // a frame of its own, This is another object
};

// A function, or the top level, ready to run.
struct Code {
  CodeKind kind = CodeKind::Global;
  const BlockRecord* block = nullptr;  // null for the top level
  std::vector<Instruction> instructions;
  std::deque<NameInfo> names;
  std::deque<CValue> constants;
  std::deque<MemberInfo> members;
  std::unordered_map<uint32_t, NameInfo*> byName;  // of the locals
  std::deque<std::vector<int64_t>> scopes;         // offsets of the locals that each block may make
  std::vector<int64_t> parameters;                 // offsets
  uint32_t locals = 1;                             // the first one never exists
  uint32_t spare = 1;                              // locals from here on are for expressions that members evaluate
  uint32_t slots = 1;
  uint32_t parameterCount = 0;
  const Instruction* first = nullptr;
  // The function's block, from 1, in which an expression stands that a member evaluates, by its place in the stream.
  std::unordered_map<uint32_t, uint16_t> levelAt;
  int32_t part = 0;  // of the application, that the source belongs to

  Code() = default;
  Code(const Code&) = delete;
  Code& operator=(const Code&) = delete;
};

}  // namespace vl

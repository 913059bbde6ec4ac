// ClassTable: the one description of a runtime class.
//
// Compiler keywords, dispatch, constants, the reference manual and the completeness test all come from its
// rows. A row whose function is null names a member that this player doesn't have yet: the compiler and the
// dispatch report it by name.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "interpreter/class_ids.h"
#include "interpreter/message_source.h"

namespace vl {

class CDownloads;

class CInterpretor;
class CIBaseClassImpl;
class CValue;

enum class MemberKind : uint8_t { Member, Event, Constant };

using MemberFunction = void (*)(CIBaseClassImpl& object);
// The quick way of a member that needs nothing but its arguments. False, with nothing done, for what it doesn't know:
// then the member itself runs. Of a fixed object: on numbers, and the result owns nothing. Of a text: `result` holds
// the text before.
using NumberFunction = bool (*)(const CValue* arguments, int count, CValue& result);

struct MemberRow {
  uint16_t id = 0;
  const char* name = "";
  MemberKind kind = MemberKind::Member;
  MemberFunction function = nullptr;  // null for constants
  uint32_t value = 0;                 // constants
  uint8_t globalKind = 0;             // token kind under which the bare name is known, or 0
  const char* help = "";              // one line: arguments and meaning
  const char* text = nullptr;         // of a constant that is a text
  bool gives = false;                 // always leaves a result when it doesn't fail
  NumberFunction onNumbers = nullptr;
};

// The rows that most tables are made of.
constexpr MemberRow Row(uint16_t id, const char* name, MemberFunction function, const char* help) {
  return {id, name, MemberKind::Member, function, 0, 0, help};
}
constexpr MemberRow Constant(uint16_t id, const char* name, uint32_t value, const char* help) {
  return {id, name, MemberKind::Constant, nullptr, value, 0, help};
}

// The value of a constant.
void SetConstant(CValue& slot, const MemberRow& row);

struct ClassTable {
  uint8_t id = 0;
  std::span<const MemberRow> rows;
  // Makes an object for New; null for a fixed class's (its object is made by `createFixed`).
  CIBaseClassImpl* (*create)(CInterpretor& interpreter) = nullptr;
  const char* help = "";

  const char* Name() const { return FactsOfClass(id).name; }
};

// Turns a method without parameters into a MemberFunction.
template <auto Method>
struct MemberThunk;
template <typename C, void (C::*Method)()>
struct MemberThunk<Method> {
  static void Call(CIBaseClassImpl& object) { (static_cast<C&>(object).*Method)(); }
};
template <auto Method>
inline constexpr MemberFunction kMember = &MemberThunk<Method>::Call;

template <typename C>
CIBaseClassImpl* CreateObject(CInterpretor& interpreter) {
  return new C(interpreter);
}

// What the runtime is made of: handed to the interpreter when it is created.
struct ClassRegistry {
  const ClassTable* tables[kClassCount + 1] = {};
  // Attaches a Window object to the host's window; null in a build without windows.
  void (*attachWindow)(CInterpretor& interpreter) = nullptr;
  // Makes the GameInput object of an application that starts with one; null in a build without game input.
  CIBaseClassImpl* (*makeDefaultGameInput)(CInterpretor& interpreter) = nullptr;
  // Makes what System downloads with; null in a build without a network.
  std::unique_ptr<CDownloads> (*makeDownloads)(CInterpretor& interpreter) = nullptr;
  // Makes the window tree's message queue; null in a build without windows.
  std::unique_ptr<CMessageSource> (*makeMessageSource)(CInterpretor& interpreter) = nullptr;

  void Add(const ClassTable& table) { tables[table.id] = &table; }
};

}  // namespace vl

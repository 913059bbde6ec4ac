// CIChildWindow: the arguments of constructors, sorted by what they are, and attributes.
#include "ui/window_class.h"

namespace vl {

namespace {

constexpr size_t kMaxRest = 7;

}  // namespace

// Finds the word and bit of an attribute constant. `known`: the object has the family; a null result then means
// an index past its table.
uint32_t* CIChildWindow::AttributeWordOf(uint32_t constant, uint32_t& bit, bool& known) {
  known = false;
  for (int32_t f = 0; f < familyCount_; ++f) {
    const AttributeFamily& family = families_[static_cast<size_t>(f)];
    if ((constant & 0xFFF00000) != family.id) continue;
    known = true;
    const uint32_t index = constant & 0xFFFF;
    if (index >= family.bits.size()) return nullptr;
    bit = family.bits[index];
    switch (constant >> 16 & 0xF) {
      case kWordStyle:
        return &style;
      case kWordExStyle:
        return &exStyle;
      case kWordAttrs:
        return &attrs;
      case kWordAttrs2:
        return &attrs2;
      default:
        return nullptr;
    }
  }
  return nullptr;
}

void CIChildWindow::ParseWindowArguments(uint32_t mask, std::vector<CValue*>* rest) {
  const auto spare = [&](CValue* value) {
    if (!rest) interpreter.RaiseError(ERR_BAD_ARGUMENT);
    if (rest->size() >= kMaxRest) interpreter.RaiseError(ERR_TOO_MANY);
    rest->push_back(value);
  };
  bool parentTaken = false;
  for (int i = 0; i < interpreter.GetArgCount(); ++i) {
    CValue* value = interpreter.GetArg(i);
    if (value->IsDefault()) continue;
    if (value->type == VT_OBJECT) {
      if ((mask & kArgParent) && value->IsObjectOfClass(CLASS_WINDOW)) {
        if (parentTaken) interpreter.RaiseError(ERR_BAD_ARGUMENT);
        parent = static_cast<CIWindow*>(value->data.object);
        parentTaken = true;
      } else {
        spare(value);
      }
      continue;
    }
    if (value->type == VT_STRING) {
      if (mask & kArgText) {
        creationText = value->GetString();
        mask &= ~static_cast<uint32_t>(kArgText);
      } else {
        spare(value);
      }
      continue;
    }
    const auto number = static_cast<uint32_t>(value->GetInt());
    uint32_t bit = 0;
    bool known = false;
    uint32_t* word = AttributeWordOf(number, bit, known);
    if (known) {
      const bool allowed = ((word == &style || word == &exStyle) && (mask & kArgStyles)) ||
                           (word == &attrs && (mask & kArgAttrs)) || (word == &attrs2 && (mask & kArgAttrs2));
      if (!word || !allowed) interpreter.RaiseError(ERR_BAD_ARGUMENT);
      *word |= bit;
      continue;
    }
    struct Place {
      uint32_t bit;
      int32_t* field;
    };
    const Place positionFirst[] = {{kArgX, &x}, {kArgY, &y}, {kArgWidth, &width}, {kArgHeight, &height}};
    const Place sizeFirst[] = {{kArgWidth, &width}, {kArgHeight, &height}, {kArgX, &x}, {kArgY, &y}};
    bool placed = false;
    for (const Place& place : (mask & kArgSizeFirst) ? sizeFirst : positionFirst) {
      if (!(mask & place.bit)) continue;
      *place.field = static_cast<int32_t>(number);
      mask &= ~place.bit;
      placed = true;
      break;
    }
    if (!placed) spare(value);
  }
  if ((mask & kArgCurrentWindow) && !parent) {
    if (!interpreter.currentWindow) interpreter.RaiseError(ERR_NO_WINDOW);
    parent = static_cast<CIWindow*>(interpreter.currentWindow);
  }
}

}  // namespace vl

#include "interpreter/value.h"

#include "interpreter/interpretor.h"
#include "interpreter/number_text.h"

namespace vl {

void CValue::SetString(std::string_view bytes) {
  Text text;
  if (!text.Assign(bytes, &owner->budget)) owner->RaiseError(ERR_MEMORY);
  SetTextBlock(text.Detach());
}

void CValue::SetText(const Text& text) {
  Text copy = text;
  SetTextBlock(copy.Detach());
}

void CValue::SetTextBlock(Text::Block* block) {
  Release();
  type = VT_STRING;
  data.text = block;
}

void CValue::SetNullString() {
  Release();
  type = VT_STRING;
  data.text = nullptr;
}

void CValue::SetObject(CIBaseClassImpl* object) {
  Release();
  type = VT_OBJECT;
  data.object = object;
  if (object && !object->destroyed) {
    ++object->refCount;
    referrerIndex = object->referrers.Add(this);
  } else if (object) {
    type = VT_INTEGER;
    data.integer = 0;
  }
}

void CValue::SetFunction(const BlockRecord* block) {
  Release();
  type = VT_FUNCTION;
  data.function = block;
}

void CValue::SetArray(CArrayStore* store) {
  ++store->refcount;
  Release();
  type = VT_ARRAY;
  data.array = store;
}

void CValue::SetNew(ValueType newType, uint32_t tokenOffset) {
  Release();
  type = newType;
  lvalue = nullptr;
  data.token = tokenOffset;
}

void CValue::SetNewOfObject(ValueType newType, uint32_t tokenOffset, CIBaseClassImpl* object) {
  Release();
  if (object->destroyed) {
    // As when it dies before the assignment: there is nothing to assign to.
    type = VT_INTEGER;
    data.integer = 0;
    lvalue = nullptr;
    return;
  }
  type = newType;
  lvalueObject = object;
  data.token = tokenOffset;
  // Registered but not counted: the object's death must reach this value too.
  referrerIndex = object->referrers.Add(this);
}

void CValue::SetNewElement(uint32_t index, CValue* variable) {
  Release();
  type = VT_NEW_ELEMENT;
  lvalue = variable;
  data.token = index;
}

void CValue::AssignSlow(const CValue& other) {
  if (this == &other) return;
  switch (other.type) {
    case VT_INTEGER:
    case VT_FLOAT: {
      // Taken first: the release may empty the array that holds `other`.
      const Data number = other.data;
      const ValueType numberType = other.type;
      Release();
      data = number;
      type = numberType;
      return;
    }
    case VT_STRING:
      Text::Retain(other.data.text);
      SetTextBlock(other.data.text);
      return;
    case VT_OBJECT:
      SetObject(other.data.object);
      return;
    case VT_FUNCTION:
      SetFunction(other.data.function);
      return;
    case VT_ARRAY:
      SetArray(other.data.array);
      return;
    case VT_DEFAULT:
      SetDefault();
      return;
    default:
      owner->RaiseError(ERR_UNDEFINED);
  }
}

void CValue::ReleaseSlow() {
  const ValueType was = type;
  // The value is plain before anything else happens: releasing may run into it again.
  type = VT_INTEGER;
  const Data old = data;
  data.integer = 0;
  switch (was) {
    case VT_STRING:
      Text::ReleaseBlock(old.text);
      return;
    case VT_OBJECT:
      if (CIBaseClassImpl* object = old.object) {
        Unregister(*object);
        if (!owner->terminating) object->Unhold();
      }
      return;
    case VT_ARRAY:
      if (!owner->terminating && --old.array->refcount == 0) owner->DropArray(old.array);
      return;
    case VT_NEW_MEMBER:
    case VT_NEW_MEMBER_ARRAY:
      if (lvalueObject) Unregister(*lvalueObject);
      lvalue = nullptr;
      return;
    default:
      return;
  }
}

void CValue::Unregister(CIBaseClassImpl& object) {
  object.referrers.Remove(referrerIndex)->referrerIndex = referrerIndex;
}

int32_t CValue::GetIntSlow() const {
  switch (type) {
    case VT_INTEGER:
      return data.integer;
    case VT_FLOAT:
      return TruncateToInt(data.real);
    case VT_STRING:
      return ParseInteger(StringView());
    case VT_OBJECT:
    case VT_FUNCTION:
      owner->RaiseError(ERR_OBJECT_VALUE);
    case VT_ARRAY:
      return 0;
    case VT_DEFAULT:
      return kDefaultInt;
    default:
      owner->RaiseError(ERR_UNDEFINED);
  }
}

double CValue::GetDoubleSlow(double ifDefault, bool rejectFunction) const {
  switch (type) {
    case VT_INTEGER:
      return data.integer;
    case VT_FLOAT:
      return data.real;
    case VT_STRING:
      return ParseDouble(StringView());
    case VT_FUNCTION:
      if (!rejectFunction) return 0.0;
      [[fallthrough]];
    case VT_OBJECT:
      owner->RaiseError(ERR_OBJECT_VALUE);
    case VT_ARRAY:
      return 0.0;
    case VT_DEFAULT:
      return ifDefault;
    default:
      owner->RaiseError(ERR_UNDEFINED);
  }
}

const char* CValue::GetString() const {
  switch (type) {
    case VT_INTEGER: {
      char* buffer = owner->TemporaryBuffer();
      FormatInteger(data.integer, {buffer, CInterpretor::kTemporaryBytes});
      return buffer;
    }
    case VT_FLOAT: {
      char* buffer = owner->TemporaryBuffer();
      FormatDouble(data.real, {buffer, CInterpretor::kTemporaryBytes});
      return buffer;
    }
    case VT_STRING:
      return data.text ? data.text->data : "";
    case VT_OBJECT:
    case VT_FUNCTION:
      owner->RaiseError(ERR_OBJECT_VALUE);
    case VT_ARRAY:
      return "";
    case VT_DEFAULT:
      return kDefaultString;
    default:
      owner->RaiseError(ERR_UNDEFINED);
  }
}

Text CValue::GetText() const {
  if (type == VT_STRING) return Text::Share(data.text);
  Text text;
  if (!text.Assign(GetString(), &owner->budget)) owner->RaiseError(ERR_MEMORY);
  return text;
}

CIBaseClassImpl* CValue::GetObject() const {
  if (type == VT_OBJECT) return data.object;
  owner->RaiseError(type >= VT_NEW_NAME ? ERR_UNDEFINED : ERR_OBJECT_VALUE);
}

CIBaseClassImpl* CValue::GetObjectNotNull() const {
  CIBaseClassImpl* object = GetObject();
  if (!object) owner->RaiseError(ERR_NULL_OBJECT);
  return object;
}

const BlockRecord* CValue::GetFunction() const {
  if (type == VT_FUNCTION) return data.function;
  owner->RaiseError(type >= VT_NEW_NAME && type <= VT_NEW_ELEMENT ? ERR_UNDEFINED : ERR_NOT_FUNCTION);
}

int32_t CValue::GetClassId() const {
  if (type != VT_OBJECT || !data.object) return -1;
  return data.object->classId;
}

bool CValue::IsTrue() const {
  switch (type) {
    case VT_INTEGER:
      return data.integer != 0;
    case VT_FLOAT:
      return data.real != 0.0;
    case VT_STRING:
      return data.text && data.text->data[0] != '0';
    case VT_OBJECT:
      return data.object != nullptr;
    case VT_FUNCTION:
      return data.function != nullptr;
    case VT_ARRAY:
      return data.array != nullptr;
    case VT_DEFAULT:
    default:
      owner->RaiseError(ERR_UNDEFINED);
  }
}

}  // namespace vl

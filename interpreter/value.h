// CValue: the tagged value that every datum of a script is.
//
// A value keeps its interpreter (errors are raised through it) and, after a read, `lvalue`: the variable or
// element that it was read from, which the assigning operators write through. It may outlive that variable,
// whose memory stays in the pool: a late write then changes a variable that is no longer in use, or that has
// become another, but never foreign memory. Object values are counted and
// registered on the object, so that a deletion can turn every one of them into the integer 0.
// Types 6 to 10 exist only between the reading of a name and its assignment.
#pragma once

#include <cstdint>

#include "base/text.h"

namespace vl {

class CInterpretor;
class CIBaseClassImpl;
class CArrayStore;
class CVarTable;
struct BlockRecord;

enum ValueType : uint8_t {
  VT_INTEGER = 0,
  VT_FLOAT = 1,
  VT_STRING = 2,
  VT_OBJECT = 3,
  VT_FUNCTION = 4,
  VT_ARRAY = 5,
  VT_NEW_NAME = 6,
  VT_NEW_MEMBER = 7,
  VT_NEW_ARRAY = 8,
  VT_NEW_MEMBER_ARRAY = 9,
  VT_NEW_ELEMENT = 10,
  VT_DEFAULT = 11,
};

// What an omitted argument reads as.
inline constexpr int32_t kDefaultInt = INT32_MIN;
inline constexpr double kDefaultDouble = -9999999999.0;
inline constexpr float kDefaultFloat = -99999.0f;
inline constexpr const char kDefaultString[] = "Default string";

class CValue {
 public:
  explicit CValue(CInterpretor* interpreter) : owner(interpreter) {}
  CValue(const CValue& other) : owner(other.owner) { Assign(other); }
  ~CValue() { Release(); }
  // The copy operation: the content only, not `lvalue`. Types 6 to 10 can't be copied (error 41).
  CValue& operator=(const CValue& other) {
    Assign(other);
    return *this;
  }
  void Assign(const CValue& other) {
    if (other.type <= VT_FLOAT && IsPlain()) {
      type = other.type;
      data = other.data;
    } else {
      AssignSlow(other);
    }
  }

  // Owns nothing: the content may be overwritten as it is.
  bool IsPlain() const { return (kPlainTypes >> type & 1) != 0; }

  void SetInt(int32_t v) {
    Release();
    type = VT_INTEGER;
    data.integer = v;
  }
  void SetFloat(double v) {
    Release();
    type = VT_FLOAT;
    data.real = v;
  }
  void SetString(std::string_view bytes);
  void SetText(const Text& text);
  void SetTextBlock(Text::Block* block);  // takes over one count
  void SetNullString();
  void SetObject(CIBaseClassImpl* object);
  void SetFunction(const BlockRecord* block);
  void SetArray(CArrayStore* store);
  void SetDefault() {
    Release();
    type = VT_DEFAULT;
    data.integer = kDefaultInt;
  }
  // Types 6, 8 (no lvalue), 7, 9 (lvalueObject) and 10 (lvalue and element index).
  void SetNew(ValueType newType, uint32_t tokenOffset);
  void SetNewOfObject(ValueType newType, uint32_t tokenOffset, CIBaseClassImpl* object);
  void SetNewElement(uint32_t index, CValue* variable);

  int32_t GetInt() const { return type == VT_INTEGER ? data.integer : GetIntSlow(); }
  double GetDouble() const { return type == VT_FLOAT ? data.real : GetDoubleSlow(kDefaultDouble, false); }
  double GetFloat() const { return type == VT_FLOAT ? data.real : GetDoubleSlow(kDefaultFloat, true); }
  // Lives until the value changes or, for a formatted number, until the conversion's buffer is reused
  // (256 conversions later at the earliest).
  const char* GetString() const;
  Text GetText() const;
  CIBaseClassImpl* GetObject() const;
  CIBaseClassImpl* GetObjectNotNull() const;
  const BlockRecord* GetFunction() const;
  bool IsDefault() const { return type == VT_DEFAULT; }
  // -1 when this isn't an object or it is null; 0 for a script object.
  int32_t GetClassId() const;
  bool IsObjectOfClass(uint32_t classId) const { return GetClassId() == static_cast<int32_t>(classId); }

  std::string_view StringView() const {
    return data.text ? std::string_view(data.text->data, data.text->length) : std::string_view();
  }

  // Truth for && and ||: an empty string is true, a string that starts with the digit 0 is false.
  bool IsTrue() const;

  void Release() {
    if (!IsPlain()) ReleaseSlow();
  }
  // For a slot that is about to get a value: it names no variable any more. A finished value stays readable.
  void ForgetTarget() {
    if (type == VT_NEW_MEMBER || type == VT_NEW_MEMBER_ARRAY) Release();
    lvalue = nullptr;
  }

  union Data {
    int32_t integer;
    double real;
    Text::Block* text;
    CIBaseClassImpl* object;
    const BlockRecord* function;
    CArrayStore* array;
    uint32_t token;  // types 6 to 10: stream offset of the token, or element index
  };

  CInterpretor* owner;
  union {
    CValue* lvalue = nullptr;
    CIBaseClassImpl* lvalueObject;  // types 7 and 9
  };
  ValueType type = VT_NEW_NAME;
  uint16_t level = 0;          // of a local variable of the executor: the function's block that made it, from 1
  uint32_t referrerIndex = 0;  // types 3, 7 and 9: place in the object's list of referring values
  Data data{};

 private:
  static constexpr uint32_t kPlainTypes = 1u << VT_INTEGER | 1u << VT_FLOAT | 1u << VT_FUNCTION | 1u << VT_NEW_NAME |
                                          1u << VT_NEW_ARRAY | 1u << VT_NEW_ELEMENT | 1u << VT_DEFAULT;
  void AssignSlow(const CValue& other);
  int32_t GetIntSlow() const;
  double GetDoubleSlow(double ifDefault, bool rejectFunction) const;
  void ReleaseSlow();
  void Unregister(CIBaseClassImpl& object);
};

// A variable: a value with the scope level at which it was made and its links in the table.
struct CVariable : CValue {
  explicit CVariable(CInterpretor* interpreter) : CValue(interpreter) {}
  // The table whose Find gives this variable for its name. Null when it is in none or a newer one hides it.
  const CVarTable* home = nullptr;
  int32_t level = 0;
  uint32_t nameId = 0;
  CVariable* next = nullptr;  // older variable of the same bucket
  // Of a scoped one: that which was made before it. A variable has no other use for its `lvalue`.
  CVariable* ScopeBelow() const { return static_cast<CVariable*>(lvalue); }
  void SetScopeBelow(CVariable* below) { lvalue = below; }
};

// The operators' arithmetic. Each leaves its result in `left`; both are in final form when an error is raised.
void ValueAdd(CValue& left, CValue& right);
void ValueSubtract(CValue& left, CValue& right);
void ValueMultiply(CValue& left, CValue& right);
void ValueDivide(CValue& left, CValue& right);
void ValueModulo(CValue& left, CValue& right);
void ValueAnd(CValue& left, CValue& right);
void ValueOr(CValue& left, CValue& right);
void ValueXor(CValue& left, CValue& right);
void ValueShiftLeft(CValue& left, CValue& right);
void ValueShiftRight(CValue& left, CValue& right);
void ValueLess(CValue& left, CValue& right);
void ValueLessEqual(CValue& left, CValue& right);
void ValueGreater(CValue& left, CValue& right);
void ValueGreaterEqual(CValue& left, CValue& right);
void ValueEqual(CValue& left, CValue& right);
void ValueNotEqual(CValue& left, CValue& right);
// The comparison of ==; may convert either side.
bool ValueIsEqual(CValue& left, CValue& right);
void ValueNot(CValue& value);
void ValueNegate(CValue& value);
void ValueComplement(CValue& value);
void ValueIncrement(CValue& variable, int32_t step);

}  // namespace vl

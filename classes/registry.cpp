// Registry: a class whose members exist and refuse. A hosted program has no business in the system's settings.
#include "classes/core_classes.h"
#include "interpreter/interpretor.h"

namespace vl {

namespace {

class CIRegistry : public CIBaseClassImpl {
 public:
  explicit CIRegistry(CInterpretor& interpreter) : CIBaseClassImpl(interpreter, CLASS_REGISTRY, Listing::Listed) {}
  void NotOffered() { interpreter.RaiseError(ERR_NOT_OFFERED); }
};

constexpr uint32_t kValueTypes = 0xABCD0001;
constexpr uint32_t kRoots = 0xABCD1000;
constexpr uint32_t kAccess = 0xABCD2001;  // of reading and of writing

constexpr MemberRow Refuses(uint16_t id, const char* name) {
  return {id, name, MemberKind::Member, kMember<&CIRegistry::NotOffered>, 0, 0, "refused: error 20"};
}

constexpr MemberRow kRows[] = {
    Refuses(1, "CreateKey"),
    Refuses(2, "DeleteKey"),
    Refuses(3, "OpenKey"),
    Refuses(4, "CloseKey"),
    Refuses(5, "GetCurrentKeyRoot"),
    Refuses(6, "GetSubKeyList"),
    Refuses(7, "GetValueList"),
    Refuses(8, "GetCurrentKeyName"),
    Refuses(9, "SetValue"),
    Refuses(10, "GetValue"),
    Refuses(11, "DeleteValue"),
    Refuses(12, "GetValueType"),
    Constant(14, "REG_VALUETYPE_BINARY", kValueTypes, "type of a value"),
    Constant(15, "REG_VALUETYPE_LONG", kValueTypes + 1, "type of a value"),
    Constant(16, "REG_VALUETYPE_STRING", kValueTypes + 2, "type of a value"),
    Constant(17, "REG_VALUETYPE_STRING_EXPAND", kValueTypes + 3, "type of a value"),
    Constant(18, "REG_VALUETYPE_STRINGARRAY", kValueTypes + 4, "type of a value"),
    Constant(19, "REG_VALUETYPE_UNSUPPORTED", kValueTypes + 5, "type of a value"),
    Constant(20, "REG_ACCESS_READ", kAccess, "access to a key"),
    Constant(21, "REG_ACCESS_WRITE", kAccess, "access to a key"),
    Constant(22, "ROOT_HKEY_CLASSES_ROOT", kRoots, "root of keys"),
    Constant(23, "ROOT_HKEY_CURRENT_CONFIG", kRoots + 1, "root of keys"),
    Constant(24, "ROOT_HKEY_CURRENT_USER", kRoots + 2, "root of keys"),
    Constant(25, "ROOT_HKEY_LOCAL_MACHINE", kRoots + 3, "root of keys"),
    Constant(26, "ROOT_HKEY_USERS", kRoots + 4, "root of keys"),
    Constant(27, "ROOT_HKEY_PERFORMANCE_DATA", kRoots + 5, "root of keys"),
    Constant(28, "ROOT_HKEY_DYN_DATA", kRoots + 6, "root of keys"),
    Constant(29, "ROOT_HKEY_UNKNOWN", kRoots + 7, "root of keys"),
};

}  // namespace

const ClassTable kRegistryClass = {CLASS_REGISTRY, kRows, &CreateObject<CIRegistry>,
                                   "The system's settings; a hosted program may not use them"};

}  // namespace vl

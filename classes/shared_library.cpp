// SharedLibrary: a class whose members exist and refuse. A hosted program runs no code of the machine.
#include "classes/core_classes.h"
#include "interpreter/interpretor.h"

namespace vl {

namespace {

class CISharedLibrary : public CIBaseClassImpl {
 public:
  explicit CISharedLibrary(CInterpretor& interpreter)
      : CIBaseClassImpl(interpreter, CLASS_SHAREDLIBRARY, Listing::Listed) {}
  void NotOffered() { interpreter.RaiseError(ERR_NOT_OFFERED); }
};

constexpr MemberRow Refuses(uint16_t id, const char* name) {
  return {id, name, MemberKind::Member, kMember<&CISharedLibrary::NotOffered>, 0, 0, "refused: error 20"};
}

constexpr MemberRow kRows[] = {
    Refuses(1, "Load"),
    Refuses(2, "Unload"),
    Refuses(3, "CallFunction"),
    Refuses(4, "IsLoaded"),
};

}  // namespace

const ClassTable kSharedLibraryClass = {CLASS_SHAREDLIBRARY, kRows, &CreateObject<CISharedLibrary>,
                                        "Libraries of the machine; a hosted program may not use them"};

}  // namespace vl

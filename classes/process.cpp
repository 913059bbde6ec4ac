// Process: a class whose members exist and refuse. A hosted program can't start or end other processes.
#include "classes/core_classes.h"
#include "interpreter/interpretor.h"

namespace vl {

namespace {

class CIProcess : public CIBaseClassImpl {
 public:
  explicit CIProcess(CInterpretor& interpreter) : CIBaseClassImpl(interpreter, CLASS_PROCESS, Listing::Listed) {}
  void BadArgument() { interpreter.RaiseError(ERR_BAD_ARGUMENT); }
  void NotOffered() { interpreter.RaiseError(ERR_NOT_OFFERED); }
};

constexpr MemberRow Refuses(uint16_t id, const char* name, MemberFunction function, const char* help) {
  return {id, name, MemberKind::Member, function, 0, 0, help};
}

constexpr MemberRow kRows[] = {
    Refuses(1, "SetCommandLine", kMember<&CIProcess::BadArgument>, "refused: error 14"),
    Refuses(2, "GetCommandLine", kMember<&CIProcess::BadArgument>, "refused: error 14"),
    Refuses(3, "Restart", kMember<&CIProcess::NotOffered>, "refused: error 20"),
    Refuses(4, "Run", kMember<&CIProcess::NotOffered>, "refused: error 20"),
    Refuses(5, "IsProcessRunning", kMember<&CIProcess::BadArgument>, "refused: error 14"),
    Refuses(6, "GetExitCode", kMember<&CIProcess::BadArgument>, "refused: error 14"),
    Refuses(7, "SendQuitMessage", kMember<&CIProcess::NotOffered>, "refused: error 20"),
    Refuses(8, "Terminate", kMember<&CIProcess::NotOffered>, "refused: error 20"),
};

}  // namespace

const ClassTable kProcessClass = {CLASS_PROCESS, kRows, &CreateObject<CIProcess>,
                                  "Other processes; a hosted program may not use them"};

}  // namespace vl

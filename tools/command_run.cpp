// vorlane run: everything through the embedding interface.
#include "tools/commands.h"
#include "tools/player/play_session.h"

namespace vl {

int RunCommand::Execute() const {
  PlaySession session(*this);
  return session.Run();
}

}  // namespace vl

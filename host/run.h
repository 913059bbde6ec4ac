// Run: one run of one application over the services of a back end.
//
// Holds the parameter block and the interpreter's results. Execute runs on the interpreter's thread; Stop may
// come from any thread; the results are read when Execute has returned.
#pragma once

#include <string>

#include "interpreter/class_table.h"
#include "interpreter/thread_param.h"
#include "platform/services.h"

namespace vl {

enum class RunResult { Ended = 0, Error = 1, Unreadable = 2 };

// Every class of this player.
const ClassRegistry& PlayerClasses();

class Run {
 public:
  Run(const Services& services, bool keepGlobals) : services_(services), keepGlobals_(keepGlobals) {}

  // Never throws. The application is at param.path in services.files.
  RunResult Execute();
  void Stop() { param.stop.store(true); }

  CThreadParam param;
  // Where the files that the program makes outlive the run; null when they go with it. Outlives this.
  FileSystem* keptFiles = nullptr;
  std::string error;        // "TITLE: TEXT" of the error box
  std::string errorDetail;  // source:line:column and an explanation, or why the file can't be read
  std::string globals;      // JSON, with keepGlobals

 private:
  Services services_;
  bool keepGlobals_;
};

}  // namespace vl

// CThreadParam: the block that the host fills for a run and that lives as long as the run's thread.
//
// `stop` is the only field that another thread writes while the interpreter runs.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace vl {

struct CThreadParam {
  std::string commandLine;  // what Program.GetCommandLine gives; empty in the control
  bool detached = false;    // no host window: the program makes its own
  bool designMode = false;
  bool allClasses = false;  // load every class table, whatever the application's list says
  std::atomic<bool> stop{false};
  std::string path;                                             // of the application file, in the run's file tree
  std::vector<std::pair<std::string, std::string>> parameters;  // of the page
  std::string baseUrl;     // the address that the application came from, or empty; what relative downloads count from
  std::string sourceName;  // local path of the application as the host knows it, or empty
  int32_t startDelayMs = -1;  // minimum time for the start picture; below 0: none
  bool startDelayDone = false;
  bool referenceWalker = false;  // the plain walk over the tokens, which says what every program does; for tests
};

}  // namespace vl

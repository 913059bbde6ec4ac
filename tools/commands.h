// The commands of `vorlane`. Each reads its options, does its work and gives the exit status.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vl {

enum ExitStatus { kExitOk = 0, kExitError = 1, kExitUnreadable = 2, kExitUsage = 64 };

struct RunCommand {
  std::string application;
  bool headless = false;
  std::string clock;
  std::vector<std::string> parameters;  // NAME=VALUE
  std::string arguments;
  std::vector<std::string> allowedNet;  // HOST:PORT, HOST:* or all
  bool realNetwork = false;
  bool detached = false;
  std::string size;     // empty: as the settings say
  std::string scaling;  // the same
  bool fullScreen = false;
  bool noShell = false;
  bool noSettings = false;
  bool keepFiles = false;
  std::string printFolder;
  std::string printQueue;
  uint64_t maxTimeMs = 0;
  std::string inputFile;
  std::string recordFile;
  std::string screenshotFile;
  std::string globalsFile;
  std::string walker = "prepared";
  std::string framesFolder;
  bool hasSeed = false;
  uint32_t seed = 0;
  int Execute() const;
};

struct PackCommand {
  std::string folder;
  std::string output;
  bool watch = false;
  int Execute() const;
};

struct InfoCommand {
  std::string application;
  bool json = false;
  bool build = false;
  int Execute() const;
};

struct ExtractCommand {
  std::string application;
  std::string output;
  int Execute() const;
};

struct TokensCommand {
  std::string application;
  int Execute() const;
};

struct CheckCommand {
  std::vector<std::string> sources;
  int Execute() const;
};

struct ReferenceCommand {
  std::vector<std::string> classes;
  bool json = false;
  int Execute() const;
};

struct SavesCommand {
  enum class Action { List, Show, Export, Import, Clear };
  Action action = Action::List;
  std::string application;  // its path, or the name that `list` shows
  std::string folder;       // of Export and Import
  bool all = false;         // Clear
  int Execute() const;
};

// One line on standard error, after "vorlane: ".
void PrintError(const std::string& text);

}  // namespace vl

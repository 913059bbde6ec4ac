// vorlane pack and vorlane extract.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <thread>

#include "tools/commands.h"
#include "tools/project/project.h"

namespace vl {

namespace {

namespace fs = std::filesystem;

// Writes beside the place first: a failed pack leaves the old file as it was.
bool Replace(const fs::path& path, const std::string& bytes) {
  std::error_code failed;
  if (path.has_parent_path()) fs::create_directories(path.parent_path(), failed);
  fs::path temporary = path;
  temporary += ".new";
  {
    std::ofstream file(temporary, std::ios::binary);
    file << bytes;
    if (!file.flush()) return false;
  }
  fs::rename(temporary, path, failed);
  return !failed;
}

bool PackOnce(const std::string& folder, const std::string& output, PackedProject& packed) {
  packed = PackProject(folder);
  if (!packed.error.empty()) {
    PrintError(packed.error);
    return false;
  }
  const fs::path main = output.empty() ? fs::path(packed.mainName) : fs::path(output);
  for (const auto& [name, bytes] : packed.files) {
    const fs::path path = name == packed.mainName ? main : main.parent_path() / name;
    if (!Replace(path, bytes)) {
      PrintError(path.string() + ": can't be written");
      return false;
    }
    std::printf("%s: %zu bytes\n", path.string().c_str(), bytes.size());
  }
  std::fflush(stdout);
  return true;
}

std::map<fs::path, fs::file_time_type> Times(const std::vector<fs::path>& inputs) {
  std::map<fs::path, fs::file_time_type> times;
  for (const fs::path& path : inputs) {
    std::error_code failed;
    times[path] = fs::last_write_time(path, failed);
  }
  return times;
}

}  // namespace

int PackCommand::Execute() const {
  PackedProject packed;
  const bool done = PackOnce(folder, output, packed);
  if (!watch) return done ? kExitOk : kExitError;
  std::printf("watching %s; stop with Control-C\n", folder.c_str());
  std::fflush(stdout);
  for (;;) {
    const auto before = Times(packed.inputs);
    do {
      std::this_thread::sleep_for(std::chrono::milliseconds(300));
    } while (Times(packed.inputs) == before);
    PackOnce(folder, output, packed);
  }
}

int ExtractCommand::Execute() const {
  const ExtractResult result = ExtractApplication(application, output);
  if (!result.error.empty()) {
    PrintError(result.error);
    return kExitUnreadable;
  }
  for (const std::string& problem : result.problems) PrintError(problem);
  std::printf("%s: %zu files\n", output.c_str(), result.files);
  return kExitOk;
}

}  // namespace vl

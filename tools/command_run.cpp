// vorlane run: everything through the embedding interface.
#include <cstdio>
#include <fstream>
#include <memory>

#include "include/vorlane.h"
#include "tools/application_source.h"
#include "tools/commands.h"
#include "tools/input_lines.h"
#include "tools/png_file.h"

namespace vl {

namespace {

struct PlayerDeleter {
  void operator()(vl_player* player) const { vl_destroy(player); }
};

bool ParseSize(const std::string& text, int32_t& width, int32_t& height) {
  char end = 0;
  return std::sscanf(text.c_str(), "%dx%d%c", &width, &height, &end) == 2;
}

bool WriteScreenshot(vl_player* player, const std::string& path) {
  int32_t width = 0;
  int32_t height = 0;
  if (!vl_frame(player, nullptr, 0, &width, &height)) return false;
  std::vector<uint32_t> pixels(static_cast<size_t>(width) * static_cast<size_t>(height));
  if (!vl_frame(player, pixels.data(), pixels.size(), &width, &height)) return false;
  return WritePng(path, pixels, width, height);
}

bool WriteText(const std::string& path, const std::string& text) {
  if (path == "-") return std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
  std::ofstream file(path, std::ios::binary);
  file << text;
  return static_cast<bool>(file.flush());
}

}  // namespace

int RunCommand::Execute() const {
  vl_options options;
  vl_options_init(&options);
  options.backend = headless ? VL_BACKEND_HEADLESS : VL_BACKEND_DESKTOP;
  options.clock = clock == "real" ? VL_CLOCK_REAL : clock == "virtual" ? VL_CLOCK_VIRTUAL : VL_CLOCK_DEFAULT;
  if (!ParseSize(size, options.width, options.height)) {
    PrintError("--size must be WIDTHxHEIGHT, for example 640x480");
    return kExitUsage;
  }
  options.detached = detached;
  options.plain_walker = walker == "reference";
  options.has_seed = hasSeed;
  options.seed = seed;
  options.max_time_ms = maxTimeMs;
  options.keep_globals = !globalsFile.empty();
  options.keep_input = !recordFile.empty();

  ApplicationFiles files = OpenApplication(application);
  if (!files.error.empty()) {
    PrintError(files.error);
    return kExitUnreadable;
  }
  std::vector<TimedInput> input;
  if (!inputFile.empty()) {
    std::string text;
    std::string error;
    if (!ReadWholeFile(inputFile, text, error)) {
      PrintError(error);
      return kExitUsage;
    }
    if (!ParseInputLines(text, input, error)) {
      PrintError(inputFile + ": " + error);
      return kExitUsage;
    }
  }
  const std::string title = files.path.empty() ? files.mainName : files.path;
  const std::string caption = title.substr(title.find_last_of('/') + 1) + " - Vorlane";
  options.title = caption.c_str();

  char reason[256] = "";
  const std::unique_ptr<vl_player, PlayerDeleter> player(vl_create(&options, reason, sizeof reason));
  if (!player) {
    PrintError(reason);
    return kExitUsage;
  }
  bool ready = true;
  if (files.path.empty()) {
    for (const auto& [name, bytes] : files.files) {
      if (name == files.mainName) ready = vl_set_bytes(player.get(), name.c_str(), bytes.data(), bytes.size());
    }
    for (const auto& [name, bytes] : files.files) {
      if (name != files.mainName) ready = ready && vl_add_file(player.get(), name.c_str(), bytes.data(), bytes.size());
    }
  } else {
    ready = vl_set_file(player.get(), files.path.c_str());
  }
  for (const std::string& parameter : parameters) {
    const size_t equals = parameter.find('=');
    if (equals == std::string::npos) {
      PrintError("--param must be NAME=VALUE, not \"" + parameter + "\"");
      return kExitUsage;
    }
    vl_set_parameter(player.get(), parameter.substr(0, equals).c_str(), parameter.substr(equals + 1).c_str());
  }
  vl_set_command_line(player.get(), arguments.c_str());
  for (const TimedInput& event : input) {
    if (!vl_script_input(player.get(), event.atMs, &event.event)) {
      PrintError("--input needs --headless with the virtual clock");
      return kExitUsage;
    }
  }
  if (!ready || !vl_run(player.get())) {
    PrintError(application + ": the run can't be started");
    return kExitUnreadable;
  }
  while (vl_wait(player.get(), 100) == VL_RUNNING) {
  }

  int status = kExitOk;
  if (!screenshotFile.empty() && !WriteScreenshot(player.get(), screenshotFile)) {
    PrintError(screenshotFile + ": no picture was written: the program showed none, or the file can't be made");
    status = kExitUsage;
  }
  if (!globalsFile.empty() && !WriteText(globalsFile, std::string(vl_globals(player.get())) + "\n")) {
    PrintError(globalsFile + ": can't be written");
    status = kExitUsage;
  }
  if (!recordFile.empty()) {
    std::string lines;
    TimedInput event;
    for (size_t i = 0; vl_recorded_input(player.get(), i, &event.atMs, &event.event); ++i) {
      lines += FormatInputLine(event) + "\n";
    }
    if (!WriteText(recordFile, lines)) {
      PrintError(recordFile + ": can't be written");
      status = kExitUsage;
    }
  }
  switch (vl_get_result(player.get())) {
    case VL_OK:
      return status;
    case VL_UNREADABLE:
      PrintError(application + ": " + vl_error_detail(player.get()));
      return kExitUnreadable;
    case VL_ERROR: {
      const std::string detail = vl_error_detail(player.get());
      if (!detail.empty()) std::fprintf(stderr, "%s\n", detail.c_str());
      const std::string text = vl_error(player.get());
      if (!text.empty()) std::fprintf(stderr, "%s\n", text.c_str());
      return kExitError;
    }
  }
  return status;
}

}  // namespace vl

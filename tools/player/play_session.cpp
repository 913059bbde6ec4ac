#include "tools/player/play_session.h"

#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>

#include "tools/player/saves.h"
#include "tools/png_file.h"

namespace vl {

namespace fs = std::filesystem;

namespace {

constexpr int kWaitMs = 100;

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

std::string AbsolutePath(const std::string& path) {
  std::error_code failed;
  const fs::path absolute = fs::weakly_canonical(path, failed);
  return failed ? path : absolute.string();
}

std::string DateAndTime() {
  const std::time_t now = std::time(nullptr);
  char text[32] = "";
  if (const std::tm* parts = std::localtime(&now)) std::strftime(text, sizeof text, "%Y%m%d-%H%M%S", parts);
  return text;
}

}  // namespace

int PlaySession::Run() {
  int status = ReadOptions();
  if (status == kExitOk) status = ReadInput();
  if (status != kExitOk) return status;
  for (;;) {
    files_ = OpenApplication(application_, true);
    if (!files_.error.empty()) {
      PrintError(files_.error);
      return kExitUnreadable;
    }
    path_ = files_.url.empty() ? AbsolutePath(application_) : files_.url;
    status = player_ ? kExitOk : MakePlayer();
    if (status == kExitOk) status = Load();
    if (status != kExitOk) return status;
    const bool isAgain = Play();
    saves_.Close();
    if (!isAgain) break;
    isFirst_ = false;
  }
  RememberView();
  status = WriteResults();
  const int reported = Report();
  return reported != kExitOk ? reported : status;
}

int PlaySession::ReadOptions() {
  if (IsOnDesktop() && !command_.noSettings) {
    std::string error;
    if (!LoadSettings(settings_, error)) {
      PrintError(error);
      return kExitUsage;
    }
    memory_ = LoadMemory();
  }
  if (command_.framesFolder.empty()) return kExitOk;
  std::string error;
  if (frames_.Open(command_.framesFolder, error)) return kExitOk;
  PrintError(error);
  return kExitUsage;
}

int PlaySession::ReadInput() {
  if (command_.inputFile.empty()) return kExitOk;
  std::string text;
  std::string error;
  if (!ReadWholeFile(command_.inputFile, text, error)) {
    PrintError(error);
    return kExitUsage;
  }
  if (ParseInputLines(text, input_, error)) return kExitOk;
  PrintError(command_.inputFile + ": " + error);
  return kExitUsage;
}

// For an application: what the files say, without the command line.
ViewSettings PlaySession::ViewOf(const std::string& path) const {
  ViewSettings view = settings_.view;
  for (const std::string& name : {fs::path(path).filename().string(), path}) {
    const auto found = settings_.applications.find(name);
    if (found != settings_.applications.end()) view.Add(found->second);
  }
  const auto remembered = memory_.views.find(path);
  if (remembered != memory_.views.end()) view.Add(remembered->second);
  return view;
}

int PlaySession::MakePlayer() {
  const ViewSettings view = ViewOf(path_);
  vl_options_init(&options_);
  options_.backend = command_.headless ? VL_BACKEND_HEADLESS : VL_BACKEND_DESKTOP;
  options_.clock = command_.clock == "real"      ? VL_CLOCK_REAL
                   : command_.clock == "virtual" ? VL_CLOCK_VIRTUAL
                                                 : VL_CLOCK_DEFAULT;
  const std::string size = !command_.size.empty() ? command_.size : view.size.value_or("640x480");
  if (!ParseSize(size, options_.width, options_.height)) {
    PrintError("--size must be WIDTHxHEIGHT, for example 640x480");
    return kExitUsage;
  }
  options_.scaling = view.scaling.value_or(VL_SCALE_SMOOTH);
  vl_scaling asked{};
  if (ParseScaling(command_.scaling, asked)) options_.scaling = asked;
  options_.full_screen = command_.fullScreen || view.fullScreen.value_or(false);
  options_.shell = !command_.noShell;
  options_.detached = command_.detached;
  options_.plain_walker = command_.walker == "reference";
  options_.has_seed = command_.hasSeed;
  options_.seed = command_.seed;
  options_.max_time_ms = command_.maxTimeMs;
  options_.keep_globals = !command_.globalsFile.empty();
  options_.real_network = command_.realNetwork;
  options_.keep_input = !command_.recordFile.empty();
  caption_ = fs::path(path_).filename().string() + " - Vorlane";
  options_.title = caption_.c_str();
  char reason[256] = "";
  player_.reset(vl_create(&options_, reason, sizeof reason));
  if (!player_) {
    PrintError(reason);
    return kExitUsage;
  }
  for (const std::string& rule : command_.allowedNet) {
    if (!vl_allow_net(player_.get(), rule.c_str())) {
      PrintError("--allow-net must be HOST:PORT, HOST:* or all, not \"" + rule + "\"");
      return kExitUsage;
    }
  }
  for (const auto& [action, keys] : settings_.keys) vl_set_shell_key(player_.get(), action, keys.code, keys.mods);
  return kExitOk;
}

// Hands the application over and starts it.
int PlaySession::Load() {
  vl_player* const player = player_.get();
  bool ready = true;
  if (!files_.url.empty()) {
    ready = vl_set_url(player, files_.url.c_str(), nullptr);
  } else if (files_.path.empty()) {
    for (const auto& [name, bytes] : files_.files) {
      if (name == files_.mainName) ready = vl_set_bytes(player, name.c_str(), bytes.data(), bytes.size());
    }
    for (const auto& [name, bytes] : files_.files) {
      if (name != files_.mainName) ready = ready && vl_add_file(player, name.c_str(), bytes.data(), bytes.size());
    }
  } else {
    ready = vl_set_file(player, files_.path.c_str());
  }
  if (isFirst_) {
    for (const std::string& parameter : command_.parameters) {
      const size_t equals = parameter.find('=');
      if (equals == std::string::npos) {
        PrintError("--param must be NAME=VALUE, not \"" + parameter + "\"");
        return kExitUsage;
      }
      vl_set_parameter(player, parameter.substr(0, equals).c_str(), parameter.substr(equals + 1).c_str());
    }
    vl_set_command_line(player, command_.arguments.c_str());
    for (const TimedInput& event : input_) {
      const vl_input_event scripted = event.Event();
      if (!vl_script_input(player, event.atMs, &scripted)) {
        PrintError("--input needs --headless with the virtual clock");
        return kExitUsage;
      }
    }
  }
  if (!command_.framesFolder.empty()) {
    vl_on_frame(
        player,
        [](void* frames, uint64_t atMs, const uint32_t* pixels, int32_t width, int32_t height) {
          static_cast<FrameFolder*>(frames)->Take(atMs, pixels, width, height);
        },
        &frames_);
  }
  vl_set_print_folder(player, command_.printFolder.empty() ? nullptr : command_.printFolder.c_str());
  vl_set_print_queue(player, command_.printQueue.empty() ? nullptr : command_.printQueue.c_str());
  if (command_.keepFiles) {
    std::string error;
    if (!saves_.Open(path_, error)) {
      PrintError(error);
      return kExitUsage;
    }
    vl_set_saves_folder(player, saves_.FilesFolder().c_str());
  }
  RememberApplication();
  if (ready && vl_run(player)) return kExitOk;
  PrintError(application_ + ": the run can't be started");
  return kExitUnreadable;
}

void PlaySession::RememberApplication() {
  if (!IsOnDesktop() || command_.noSettings) return;
  std::vector<const char*> others;
  for (const std::string& path : memory_.recent) {
    std::error_code failed;
    if (path != path_ && (path.find("://") != std::string::npos || fs::exists(path, failed)))
      others.push_back(path.c_str());
  }
  vl_set_recent(player_.get(), others.data(), others.size());
  Remember(memory_, path_);
  SaveMemory(memory_);
}

// Only what the person changed; the command line is for this time.
void PlaySession::RememberView() {
  if (!IsOnDesktop() || command_.noSettings) return;
  ViewSettings& view = memory_.views[path_];
  const vl_scaling scaling = vl_get_scaling(player_.get());
  const bool fullScreen = vl_is_full_screen(player_.get()) != 0;
  if (scaling != options_.scaling) view.scaling = scaling;
  if (fullScreen != (options_.full_screen != 0)) view.fullScreen = fullScreen;
  if (!view.scaling && !view.fullScreen) memory_.views.erase(path_);
  SaveMemory(memory_);
}

bool PlaySession::Play() {
  for (;;) {
    const vl_state state = vl_wait(player_.get(), kWaitMs);
    if (Serve()) return true;
    if (state != VL_RUNNING) return false;
  }
}

bool PlaySession::Serve() {
  for (;;) {
    const char* text = nullptr;
    switch (vl_take_request(player_.get(), &text)) {
      case VL_ACTION_SCREENSHOT:
        TakeScreenshot();
        break;
      case VL_ACTION_OPEN:
        RememberView();
        options_.scaling = vl_get_scaling(player_.get());
        options_.full_screen = vl_is_full_screen(player_.get());
        application_ = text;
        vl_clear_parameters(player_.get());
        vl_stop(player_.get());
        vl_set_title(player_.get(), (fs::path(application_).filename().string() + " - Vorlane").c_str());
        return true;
      case VL_ACTION_RELOAD:
        vl_stop(player_.get());
        return true;
      case VL_ACTION_QUIT:
        vl_stop(player_.get());
        return false;
      default:
        return false;
    }
  }
}

void PlaySession::TakeScreenshot() {
  const std::string folder = ScreenshotFolder(settings_);
  std::error_code failed;
  fs::create_directories(folder, failed);
  const std::string name = folder + "/" + fs::path(path_).stem().string() + "-" + DateAndTime();
  std::string path = name + ".png";
  for (int n = 2; fs::exists(path, failed) && n < 1000; ++n) path = name + "-" + std::to_string(n) + ".png";
  const bool isWritten = WriteScreenshot(player_.get(), path);
  vl_show_note(player_.get(), (isWritten ? path : path + " can't be written").c_str());
}

int PlaySession::WriteResults() {
  int status = kExitOk;
  const auto fail = [&](const std::string& text) {
    PrintError(text);
    status = kExitUsage;
  };
  vl_player* const player = player_.get();
  if (!command_.framesFolder.empty() && !frames_.Finish()) fail(command_.framesFolder + ": can't be written to");
  if (!command_.screenshotFile.empty() && !WriteScreenshot(player, command_.screenshotFile)) {
    fail(command_.screenshotFile + ": no picture was written: the program showed none, or the file can't be made");
  }
  if (!command_.globalsFile.empty() && !WriteText(command_.globalsFile, std::string(vl_globals(player)) + "\n")) {
    fail(command_.globalsFile + ": can't be written");
  }
  if (!command_.recordFile.empty()) {
    std::string lines;
    TimedInput event;
    for (size_t i = 0; vl_recorded_input(player, i, &event.atMs, &event.event); ++i) {
      lines += FormatInputLine(event) + "\n";
    }
    if (!WriteText(command_.recordFile, lines)) fail(command_.recordFile + ": can't be written");
  }
  return status;
}

int PlaySession::Report() const {
  switch (vl_get_result(player_.get())) {
    case VL_OK:
      return kExitOk;
    case VL_UNREADABLE:
      PrintError(application_ + ": " + vl_error_detail(player_.get()));
      return kExitUnreadable;
    case VL_ERROR: {
      const std::string detail = vl_error_detail(player_.get());
      if (!detail.empty()) std::fprintf(stderr, "%s\n", detail.c_str());
      const std::string text = vl_error(player_.get());
      if (!text.empty()) std::fprintf(stderr, "%s\n", text.c_str());
      return kExitError;
    }
  }
  return kExitOk;
}

}  // namespace vl

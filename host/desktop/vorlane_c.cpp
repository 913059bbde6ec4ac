// The C interface: argument checks and hand-over to Player. No exception leaves it.
#include <cstring>
#include <new>

#include "host/desktop/player.h"
#include "include/vorlane.h"

struct vl_player {
  explicit vl_player(const vl_options& options) : player(options) {}
  vl::Player player;
};

namespace {

void Report(char* error, size_t size, const char* text) {
  if (!error || size == 0) return;
  std::strncpy(error, text, size - 1);
  error[size - 1] = 0;
}

bool IsFrom(int32_t number, int32_t first, int32_t last) { return number >= first && number <= last; }

bool IsKnown(const vl_input_event* event) {
  vl::Event known;
  return event && vl::ToEvent(*event, known);
}

template <typename F>
auto Guard(F&& f, decltype(f()) failed) noexcept -> decltype(f()) {
  try {
    return f();
  } catch (...) {
    return failed;
  }
}

}  // namespace

extern "C" {

void vl_options_init(vl_options* options) {
  if (!options) return;
  *options = vl_options{};
  options->struct_size = sizeof *options;
  options->width = 640;
  options->height = 480;
}

vl_player* vl_create(const vl_options* options, char* error, size_t error_size) {
  if (!options || options->struct_size != sizeof *options) {
    Report(error, error_size, "vl_options_init was not called for these options");
    return nullptr;
  }
  if (!IsFrom(options->backend, VL_BACKEND_DESKTOP, VL_BACKEND_EMBED)) {
    Report(error, error_size, "unknown back end");
    return nullptr;
  }
  if (!IsFrom(options->clock, VL_CLOCK_DEFAULT, VL_CLOCK_VIRTUAL)) {
    Report(error, error_size, "unknown clock");
    return nullptr;
  }
  if (options->width < 1 || options->height < 1 || options->width > 16384 || options->height > 16384) {
    Report(error, error_size, "the size of the window must be from 1x1 to 16384x16384");
    return nullptr;
  }
  if (options->clock == VL_CLOCK_VIRTUAL && options->backend != VL_BACKEND_HEADLESS) {
    Report(error, error_size, "a virtual clock needs the headless back end");
    return nullptr;
  }
  if (options->clock == VL_CLOCK_VIRTUAL && options->real_network) {
    Report(error, error_size, "the network of the machine needs a real clock");
    return nullptr;
  }
  if (!IsFrom(options->scaling, VL_SCALE_FOLLOW, VL_SCALE_SMOOTH)) {
    Report(error, error_size, "unknown scaling");
    return nullptr;
  }
  return Guard(
      [&]() -> vl_player* {
        auto player = std::make_unique<vl_player>(*options);
        std::string reason;
        if (!player->player.Prepare(reason)) {
          Report(error, error_size, reason.c_str());
          return nullptr;
        }
        return player.release();
      },
      nullptr);
}

void vl_destroy(vl_player* player) { delete player; }

int vl_set_file(vl_player* player, const char* path) {
  if (!player || !path) return 0;
  return Guard([&] { return static_cast<int>(player->player.SetFile(path)); }, 0);
}

int vl_set_bytes(vl_player* player, const char* name, const void* bytes, size_t size) {
  if (!player || !name || (!bytes && size)) return 0;
  return Guard([&] { return static_cast<int>(player->player.SetBytes(name, bytes, size)); }, 0);
}

int vl_set_url(vl_player* player, const char* url, const char* document_url) {
  if (!player || !url) return 0;
  return Guard([&] { return static_cast<int>(player->player.SetUrl(url, document_url ? document_url : "")); }, 0);
}

int vl_add_file(vl_player* player, const char* name, const void* bytes, size_t size) {
  if (!player || !name || (!bytes && size)) return 0;
  return Guard([&] { return static_cast<int>(player->player.AddFile(name, bytes, size)); }, 0);
}

int vl_set_parameter(vl_player* player, const char* name, const char* value) {
  if (!player || !name || !value) return 0;
  return Guard(
      [&] {
        player->player.control.AddParameter(name, value);
        return 1;
      },
      0);
}

int vl_set_command_line(vl_player* player, const char* text) {
  if (!player || !text) return 0;
  return Guard(
      [&] {
        player->player.commandLine = text;
        return 1;
      },
      0);
}

int vl_allow_net(vl_player* player, const char* rule) {
  if (!player || !rule) return 0;
  return Guard([&] { return player->player.AllowNet(rule) ? 1 : 0; }, 0);
}

int vl_set_origin(vl_player* player, const char* host) {
  if (!player || !host) return 0;
  return Guard([&] { return player->player.SetOrigin(host) ? 1 : 0; }, 0);
}

void vl_clear_parameters(vl_player* player) {
  if (!player) return;
  player->player.control.params.clear();
  player->player.commandLine.clear();
}

void vl_set_title(vl_player* player, const char* title) {
  if (!player || !title) return;
  Guard(
      [&] {
        player->player.SetTitle(title);
        return 0;
      },
      0);
}

void vl_set_saves_folder(vl_player* player, const char* path) {
  if (!player) return;
  Guard(
      [&] {
        player->player.savesFolder = path ? path : "";
        return 0;
      },
      0);
}

void vl_set_print_folder(vl_player* player, const char* path) {
  if (!player) return;
  Guard(
      [&] {
        player->player.printFolder = path ? path : "";
        return 0;
      },
      0);
}

void vl_set_print_queue(vl_player* player, const char* queue) {
  if (!player) return;
  Guard(
      [&] {
        player->player.printQueue = queue ? queue : "";
        return 0;
      },
      0);
}

int vl_script_input(vl_player* player, uint64_t at_ms, const vl_input_event* event) {
  if (!player || !IsKnown(event)) return 0;
  return Guard([&] { return static_cast<int>(player->player.ScriptInput(at_ms, *event)); }, 0);
}

int vl_recorded_input(const vl_player* player, size_t index, uint64_t* at_ms, vl_input_event* event) {
  const vl::InputTap* tap = player ? player->player.Recorded() : nullptr;
  if (!tap || index >= tap->Events().size()) return 0;
  if (at_ms) *at_ms = tap->Events()[index].atMs;
  if (event) *event = tap->Events()[index].input;
  return 1;
}

int vl_run(vl_player* player) {
  if (!player) return 0;
  return Guard([&] { return static_cast<int>(player->player.Start()); }, 0);
}

vl_state vl_wait(vl_player* player, int timeout_ms) {
  if (!player) return VL_IDLE;
  return Guard([&] { return player->player.Wait(timeout_ms); }, VL_ENDED);
}

void vl_stop(vl_player* player) {
  if (player) player->player.Stop();
}

vl_result vl_get_result(const vl_player* player) {
  return player ? static_cast<vl_result>(player->player.result) : VL_UNREADABLE;
}

const char* vl_error(const vl_player* player) { return player ? player->player.error.c_str() : ""; }
const char* vl_error_detail(const vl_player* player) { return player ? player->player.errorDetail.c_str() : ""; }
void vl_set_paused(vl_player* player, int paused) {
  vl::RunGate* const gate = player ? player->player.Gate() : nullptr;
  if (gate) gate->SetPaused(paused != 0);
}

int vl_is_paused(const vl_player* player) {
  vl::RunGate* const gate = player ? const_cast<vl_player*>(player)->player.Gate() : nullptr;
  return gate && gate->IsPaused();
}

void vl_step(vl_player* player) {
  vl::RunGate* const gate = player ? player->player.Gate() : nullptr;
  if (gate) gate->Step();
}

vl_action vl_take_request(vl_player* player, const char** text) {
  if (text) *text = "";
  if (!player) return VL_ACTION_NONE;
  return Guard(
      [&] {
        const vl::ShellRequest& request = player->player.TakeRequest();
        if (text) *text = request.path.c_str();
        return static_cast<vl_action>(request.action);
      },
      VL_ACTION_NONE);
}

int vl_set_shell_key(vl_player* player, vl_action action, int32_t code, int32_t mods) {
  if (!player || !player->player.GetShell() || !IsFrom(action, VL_ACTION_MENU, VL_ACTION_QUIT)) return 0;
  player->player.GetShell()->SetKey(static_cast<vl::ShellAction>(action), {code, mods});
  return 1;
}

void vl_set_recent(vl_player* player, const char* const* paths, size_t count) {
  if (!player || !player->player.GetShell() || !paths) return;
  Guard(
      [&] {
        player->player.GetShell()->SetRecent({paths, paths + count});
        return 0;
      },
      0);
}

void vl_show_note(vl_player* player, const char* text) {
  if (!player || !player->player.GetShell() || !text) return;
  Guard(
      [&] {
        player->player.GetShell()->ShowNote(text);
        return 0;
      },
      0);
}

vl_scaling vl_get_scaling(const vl_player* player) {
  return player ? static_cast<vl_scaling>(player->player.CurrentScaling()) : VL_SCALE_FOLLOW;
}

int vl_is_full_screen(const vl_player* player) { return player && player->player.IsFullScreen(); }

void vl_on_frame(vl_player* player, vl_frame_function function, void* user) {
  if (!player) return;
  Guard(
      [&] {
        player->player.onFrame = nullptr;
        if (function) {
          player->player.onFrame = [function, user](uint64_t atMs, const vl::Picture& picture) {
            function(user, atMs, picture.pixels.data(), picture.width, picture.height);
          };
        }
        return 0;
      },
      0);
}

const char* vl_globals(const vl_player* player) { return player ? player->player.globals.c_str() : ""; }

int vl_send_input(vl_player* player, const vl_input_event* event) {
  if (!player || !IsKnown(event)) return 0;
  return Guard([&] { return static_cast<int>(player->player.SendInput(*event)); }, 0);
}

int vl_frame(vl_player* player, uint32_t* pixels, size_t capacity, int32_t* width, int32_t* height) {
  if (!player) return 0;
  return Guard([&] { return static_cast<int>(player->player.Frame(pixels, capacity, width, height)); }, 0);
}

}  // extern "C"

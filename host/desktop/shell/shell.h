// Shell: the player around the program's windows: its keys, its menu, notes over the picture, the error box.
//
// It hears of all input before the program does and keeps what is meant for it, and everything while the menu is
// open or the run is paused. What it can't do itself waits as a request for the embedder. Host's thread only.
#pragma once

#include <array>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/desktop/run_gate.h"
#include "host/desktop/shell/error_panel.h"
#include "host/desktop/shell/shell_menu.h"
#include "host/desktop/shell/shell_painter.h"
#include "platform/posix/posix_clock.h"
#include "platform/posix/posix_font_finder.h"
#include "platform/sdl/sdl_platform.h"
#include "platform/text/freetype_text_engine.h"

namespace vl {

struct ShellKey {
  int32_t code = 0;  // virtual key; 0: none
  int32_t mods = 0;  // kModShift, kModControl, kModAlt
};

struct ShellRequest {
  ShellAction action = ShellAction::None;
  std::string path;  // of Open, UTF-8
};

class Shell final : public SdlListener {
 public:
  Shell(Scaling scaling, bool fullScreen);

  void SetKey(ShellAction action, ShellKey key) { keys_[static_cast<size_t>(action)] = key; }
  // Paths in UTF-8, the newest first.
  void SetRecent(std::vector<std::string> paths) { recent_ = std::move(paths); }
  // For the run that begins; both outlive it.
  void Attach(SdlPlatform* sdl, RunGate* gate);
  std::optional<ShellRequest> TakeRequest();
  // A line over the picture for a moment, UTF-8.
  void ShowNote(const std::string& text);
  // What an error box has to say beyond the error's own text; asked for with each.
  std::function<std::string()> errorDetail;
  bool IsShowingError() const { return isErrorShown_; }
  Scaling CurrentScaling() const { return scaling_; }
  bool IsFullScreen() const { return isFullScreen_; }

  bool OnInput(const Event& event, bool onFrame) override;
  void OnDrop(const std::string& path) override;
  void OnMessage(const std::string& title, const std::string& text) override;
  void OnPumped() override;

 private:
  ShellAction ActionOf(const Event& event) const;
  std::string KeysOf(ShellAction action) const;
  void Do(ShellAction action, const std::string& path = {});
  void OpenMenu(NativeWindow window, int x, int y);
  void CloseMenu();
  bool OnMenuInput(const Event& event);
  void OnErrorInput(const Event& event);
  // Lays over the windows what is to be seen now.
  void Refresh();

  PosixClock clock_{std::nullopt};
  PosixFontFinder fonts_;
  FreeTypeTextEngine text_;
  ShellPainter painter_;
  SdlPlatform* sdl_ = nullptr;
  RunGate* gate_ = nullptr;
  std::array<ShellKey, kShellActions> keys_{};
  std::vector<std::string> recent_;
  std::deque<ShellRequest> requests_;
  Scaling scaling_;
  bool isFullScreen_;

  ShellMenu menu_;
  NativeWindow menuWindow_ = 0;
  std::string note_;  // code page 1252
  uint32_t noteEndMs_ = 0;
  NativeWindow overlaid_ = 0;
  bool isOverlaid_ = false;
  ErrorPanel error_;
  bool isErrorShown_ = false;
};

}  // namespace vl

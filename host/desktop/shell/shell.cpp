#include "host/desktop/shell/shell.h"

#include "platform/keys.h"
#include "platform/text/code_page.h"

namespace vl {
namespace {

constexpr uint32_t kNoteMs = 2000;
constexpr int kNoteMargin = 10;
constexpr size_t kRecentInMenu = 9;
constexpr int32_t kKeyMods = kModShift | kModControl | kModAlt;

const char* NameOf(Scaling scaling) {
  switch (scaling) {
    case Scaling::Integer:
      return "whole multiples";
    case Scaling::Nearest:
      return "sharp";
    case Scaling::Smooth:
      return "smooth";
    case Scaling::Follow:
      break;
  }
  return "none, the program fills the window";
}

std::string FileName(const std::string& path) { return path.substr(path.find_last_of('/') + 1); }

bool IsPersonsInput(EventType type) {
  return type == EventType::KeyDown || type == EventType::Char || type == EventType::MouseMove ||
         type == EventType::MouseDown || type == EventType::MouseUp || type == EventType::MouseWheel;
}

}  // namespace

Shell::Shell(Scaling scaling, bool fullScreen)
    : text_(fonts_), painter_(text_), scaling_(scaling), isFullScreen_(fullScreen) {
  SetKey(ShellAction::Menu, {kKeyF1 + 9, kModControl});
  SetKey(ShellAction::FullScreen, {kKeyReturn, kModAlt});
  SetKey(ShellAction::Scaling, {kKeyF1 + 10, kModControl});
  SetKey(ShellAction::Pause, {kKeyF1 + 7, kModControl});
  SetKey(ShellAction::Step, {kKeyF1 + 8, kModControl});
  SetKey(ShellAction::Screenshot, {kKeyF1 + 11, kModControl});
  SetKey(ShellAction::Reload, {kKeyF1 + 4, kModControl});
}

void Shell::Attach(SdlPlatform* sdl, RunGate* gate) {
  sdl_ = sdl;
  gate_ = gate;
  menu_.Hide();
  if (isErrorShown_) sdl_->closePanel();
  isErrorShown_ = false;
  isOverlaid_ = false;
}

std::optional<ShellRequest> Shell::TakeRequest() {
  if (requests_.empty()) return std::nullopt;
  ShellRequest request = std::move(requests_.front());
  requests_.pop_front();
  return request;
}

void Shell::ShowNote(const std::string& text) {
  note_ = Text1252OfUtf8(text);
  noteEndMs_ = clock_.nowMs() + kNoteMs;
  Refresh();
}

ShellAction Shell::ActionOf(const Event& event) const {
  for (int a = 1; a < kShellActions; ++a) {
    const ShellKey& key = keys_[static_cast<size_t>(a)];
    if (key.code != 0 && key.code == event.code && key.mods == (event.mods & kKeyMods))
      return static_cast<ShellAction>(a);
  }
  return ShellAction::None;
}

std::string Shell::KeysOf(ShellAction action) const {
  const ShellKey& key = keys_[static_cast<size_t>(action)];
  if (key.code == 0) return {};
  std::string text;
  if (key.mods & kModControl) text += "Ctrl+";
  if (key.mods & kModAlt) text += "Alt+";
  if (key.mods & kModShift) text += "Shift+";
  if (key.code >= kKeyF1 && key.code < kKeyF1 + 24) return text + "F" + std::to_string(key.code - kKeyF1 + 1);
  if (key.code == kKeyReturn) return text + "Enter";
  return text + (key.code > ' ' && key.code < 127 ? std::string(1, static_cast<char>(key.code))
                                                  : "key " + std::to_string(key.code));
}

bool Shell::OnInput(const Event& event, bool onFrame) {
  if (event.window == kPanelWindow) {
    if (isErrorShown_) OnErrorInput(event);
    return true;
  }
  if (event.type == EventType::Close) {
    // A paused run must see it.
    if (gate_) gate_->SetPaused(false);
    CloseMenu();
    return false;
  }
  if (event.type == EventType::KeyDown) {
    const ShellAction action = ActionOf(event);
    if (action != ShellAction::None) {
      if (event.x == 0) Do(action);  // a held key acts once
      return true;
    }
  }
  if (menu_.IsShown()) return OnMenuInput(event);
  if (onFrame && event.type == EventType::MouseDown && event.code == kMouseRight) {
    OpenMenu(event.window, event.x, event.y);
    return true;
  }
  return gate_ && gate_->IsPaused() && IsPersonsInput(event.type);
}

void Shell::Do(ShellAction action, const std::string& path) {
  const NativeWindow window = sdl_->focusedWindow();
  switch (action) {
    case ShellAction::None:
      return;
    case ShellAction::Menu:
      if (menu_.IsShown()) {
        CloseMenu();
      } else {
        OpenMenu(window, kNoteMargin, kNoteMargin);
      }
      return;
    case ShellAction::FullScreen:
      isFullScreen_ = !sdl_->isFullScreen(window);
      sdl_->setFullScreen(window, isFullScreen_);
      return;
    case ShellAction::Scaling:
      scaling_ = static_cast<Scaling>((static_cast<int>(scaling_) + 1) % 4);
      sdl_->setScaling(scaling_);
      ShowNote(std::string("Scaling: ") + NameOf(scaling_));
      return;
    case ShellAction::Pause:
      if (!gate_) return;
      gate_->SetPaused(!gate_->IsPaused());
      note_.clear();
      Refresh();
      return;
    case ShellAction::Step:
      if (!gate_) return;
      gate_->Step();
      note_.clear();
      Refresh();
      return;
    case ShellAction::Screenshot:
    case ShellAction::Reload:
    case ShellAction::Open:
    case ShellAction::Quit:
      // The run that is to end must not be held.
      if (gate_ && action != ShellAction::Screenshot) gate_->SetPaused(false);
      requests_.push_back({action, path});
      return;
  }
}

void Shell::OpenMenu(NativeWindow window, int x, int y) {
  const bool isPaused = gate_ && gate_->IsPaused();
  std::vector<ShellMenuItem> items;
  const auto add = [&](ShellAction action, std::string label, bool beginsGroup = false) {
    items.push_back({action, std::move(label), KeysOf(action), beginsGroup, {}});
  };
  add(ShellAction::Pause, isPaused ? "Go on" : "Pause");
  add(ShellAction::Step, "One step");
  add(ShellAction::Reload, "Play again from the start");
  add(ShellAction::FullScreen, sdl_->isFullScreen(window) ? "Back to a window" : "Full screen", true);
  add(ShellAction::Scaling, std::string("Scaling: ") + NameOf(scaling_));
  add(ShellAction::Screenshot, "Take a screenshot");
  for (size_t i = 0; i < recent_.size() && i < kRecentInMenu; ++i) {
    items.push_back({ShellAction::Open, "Play " + Text1252OfUtf8(FileName(recent_[i])), {}, i == 0, recent_[i]});
  }
  add(ShellAction::Quit, "Quit", true);
  menuWindow_ = window;
  menu_.Show(std::move(items), painter_, x, y, sdl_->windowSize(window));
  Refresh();
}

void Shell::CloseMenu() {
  if (!menu_.IsShown()) return;
  menu_.Hide();
  Refresh();
}

bool Shell::OnMenuInput(const Event& event) {
  if (!IsPersonsInput(event.type) || event.window != menuWindow_) return false;
  switch (menu_.OnInput(event)) {
    case ShellMenu::Answer::Nothing:
      break;
    case ShellMenu::Answer::Changed:
      Refresh();
      break;
    case ShellMenu::Answer::Left:
      CloseMenu();
      break;
    case ShellMenu::Answer::Chosen: {
      const ShellMenuItem item = menu_.Marked();
      CloseMenu();
      Do(item.action, item.path);
      break;
    }
  }
  return true;
}

void Shell::OnDrop(const std::string& path) { Do(ShellAction::Open, path); }

void Shell::OnMessage(const std::string& title, const std::string& text) {
  std::string detail = errorDetail ? errorDetail() : "";
  if (detail == text) detail.clear();
  error_.Show(title, text, detail, painter_);
  isErrorShown_ = sdl_->openPanel(error_.WindowSize(), "Vorlane");
  if (isErrorShown_) sdl_->setOverlay(kPanelWindow, error_.Paint(painter_));
}

void Shell::OnErrorInput(const Event& event) {
  switch (error_.OnInput(event)) {
    case ErrorPanel::Answer::Nothing:
      return;
    case ErrorPanel::Answer::Changed:
      sdl_->setOverlay(kPanelWindow, error_.Paint(painter_));
      return;
    case ErrorPanel::Answer::Copy:
      sdl_->setClipboard(Utf8Of1252(error_.Text()));
      return;
    case ErrorPanel::Answer::Reload:
      requests_.push_back({ShellAction::Reload, {}});
      break;
    case ErrorPanel::Answer::Close:
      break;
  }
  isErrorShown_ = false;
  sdl_->closePanel();
}

void Shell::OnPumped() {
  if (!note_.empty() && static_cast<int32_t>(clock_.nowMs() - noteEndMs_) >= 0) {
    note_.clear();
    Refresh();
  }
}

void Shell::Refresh() {
  const NativeWindow window = menu_.IsShown() ? menuWindow_ : sdl_->focusedWindow();
  const bool isPaused = gate_ && gate_->IsPaused();
  const std::string label = !note_.empty() ? note_ : isPaused ? "Paused" : "";
  if (isOverlaid_ && (overlaid_ != window || (!menu_.IsShown() && label.empty()))) sdl_->setOverlay(overlaid_, {});
  isOverlaid_ = true;
  overlaid_ = window;
  if (menu_.IsShown()) {
    sdl_->setOverlay(window, menu_.Paint(painter_));
    return;
  }
  if (label.empty()) {
    isOverlaid_ = false;
    return;
  }
  const int width = painter_.WidthOf(label) + 2 * kNoteMargin;
  const int height = painter_.LineHeight() + kNoteMargin;
  if (!painter_.Begin(width, height)) return;
  painter_.Edge({0, 0, width, height}, true);
  painter_.Text(label, {0, 0, width, height}, shell_colours::kText,
                kTextCentre | kTextVerticalCentre | kTextSingleLine);
  sdl_->setOverlay(window, painter_.Finish(kNoteMargin, kNoteMargin));
}

}  // namespace vl

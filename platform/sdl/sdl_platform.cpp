#include "platform/sdl/sdl_platform.h"

#include <SDL.h>

#include <chrono>
#include <cmath>
#include <utility>

#include "platform/posix/posix_clock.h"
#include "platform/posix/posix_environment.h"
#include "platform/posix/posix_font_finder.h"
#include "platform/posix/threaded_queue.h"
#include "platform/sdl/sdl_clipboard.h"
#include "platform/sdl/sdl_hints.h"
#include "platform/sdl/sdl_input_devices.h"
#include "platform/sdl/sdl_joysticks.h"
#include "platform/sdl/sdl_keys.h"
#include "platform/sdl/sdl_windows.h"
#include "platform/sdl/window_mailbox.h"
#include "platform/text/code_page.h"
#include "platform/text/freetype_text_engine.h"

namespace vl {
namespace {

constexpr NativeWindow kHostWindow = 1;
constexpr int kWheelNotch = 120;

// SDL's video, counted by SDL itself.
class SdlVideo {
 public:
  SdlVideo() : isUp_(SDL_InitSubSystem(SDL_INIT_VIDEO) == 0) {}
  ~SdlVideo() {
    if (isUp_) SDL_QuitSubSystem(SDL_INIT_VIDEO);
  }
  SdlVideo(const SdlVideo&) = delete;
  SdlVideo& operator=(const SdlVideo&) = delete;
  bool IsUp() const { return isUp_; }

 private:
  bool isUp_;
};

constexpr const char* kNoDisplay = "no display (neither X11 nor Wayland can be reached); --headless runs without one";

// The libraries of a display that can't be reached write lines of their own, so it isn't even tried.
bool IsDisplayNamed() {
  return SDL_getenv("DISPLAY") || SDL_getenv("WAYLAND_DISPLAY") || SDL_GetHint(SDL_HINT_VIDEODRIVER);
}

// SDL falls back to drivers that show nothing; a person who asked for none of them must be told.
bool IsShowingNothing() {
  const char* driver = SDL_GetCurrentVideoDriver();
  const bool isAskedFor = SDL_GetHint(SDL_HINT_VIDEODRIVER) != nullptr;
  return !isAskedFor && driver && (SDL_strcmp(driver, "offscreen") == 0 || SDL_strcmp(driver, "dummy") == 0);
}

Event MakeEvent(EventType type, NativeWindow window) {
  Event event;
  event.type = type;
  event.window = window;
  event.mods = CurrentMods();
  return event;
}

int32_t ButtonOf(Uint8 button) {
  switch (button) {
    case SDL_BUTTON_LEFT:
      return kMouseLeft;
    case SDL_BUTTON_MIDDLE:
      return kMouseMiddle;
    case SDL_BUTTON_RIGHT:
      return kMouseRight;
    case SDL_BUTTON_X1:
      return kMouseFourth;
    default:
      return 0;
  }
}

}  // namespace

struct SdlPlatform::Parts {
  explicit Parts(const SdlOptions& o) : options(o), textEngine(fonts) { BeginRun(); }

  // What belongs to one run.
  void BeginRun() {
    clock = std::make_unique<PosixClock>(options.seed);
    queue = std::make_unique<ThreadedQueue>();
    joysticks.Announce(*queue);
    started = std::chrono::steady_clock::now();
    isStopSent = false;
    isCloseAsked = false;
    isFinished = false;
    wheelRest = 0;
  }
  void MakeMailbox(Size hostSize) {
    mailbox =
        std::make_unique<WindowMailbox>(screen, options.attachHost ? kHostWindow : 0, hostSize, [this] { Wake(); });
  }

  void Wake() {
    SDL_Event event{};
    event.type = wakeEvent;
    SDL_PushEvent(&event);
  }
  void Translate(const SDL_Event& e);
  // To the listener first; true when it kept the event.
  bool Offer(const Event& event, bool onFrame = false) {
    return options.listener && options.listener->OnInput(event, onFrame);
  }
  void PushInput(const Event& event) {
    if (!Offer(event)) queue->Push(event);
  }
  void PushMouse(Event event);
  void TellHostSize(Size size);
  void TellScreen();
  void TranslateKey(const SDL_KeyboardEvent& e);
  void TranslateText(const SDL_TextInputEvent& e);
  void TranslateMouse(const SDL_Event& e);
  void TranslateWindow(const SDL_WindowEvent& e);
  void DropFile(const SDL_DropEvent& e);
  void StopWhenDue();

  SdlOptions options;
  ScreenInfo screen;
  std::unique_ptr<PosixClock> clock;
  PosixEnvironment environment;
  PosixFontFinder fonts;
  FreeTypeTextEngine textEngine;
  std::unique_ptr<ThreadedQueue> queue;
  Uint32 wakeEvent = 0;
  std::atomic<bool> isFinished{false};
  std::chrono::steady_clock::time_point started;
  bool isStopSent = false;
  bool isCloseAsked = false;
  // SDL goes up before the windows and down after them.
  SdlVideo video;
  std::unique_ptr<WindowMailbox> mailbox;
  SdlWindows windows;
  SdlInputDevices inputDevices{[this] { Wake(); }};
  SdlJoysticks joysticks;
  SdlClipboard clipboard{[this] { Wake(); }};
  double wheelRest = 0;  // of a notch, in steps
};

std::unique_ptr<SdlPlatform> SdlPlatform::Create(const SdlOptions& options, std::string& reason) {
  // A closed window is an event like others; signals still end the run in order.
  SDL_SetHint(SDL_HINT_QUIT_ON_LAST_WINDOW_CLOSE, "0");
  SDL_SetHint(SDL_HINT_MOUSE_FOCUS_CLICKTHROUGH, "1");
  if (!IsDisplayNamed()) {
    reason = kNoDisplay;
    return nullptr;
  }
  auto parts = std::make_unique<Parts>(options);
  if (!parts->video.IsUp()) {
    reason = std::string("no display (") + SDL_GetError() + "); --headless runs without one";
    return nullptr;
  }
  if (IsShowingNothing()) {
    reason = kNoDisplay;
    return nullptr;
  }
  SDL_EventState(SDL_DROPTEXT, SDL_DISABLE);
  parts->wakeEvent = SDL_RegisterEvents(1);
  parts->screen = CurrentScreen();
  parts->MakeMailbox(options.size);
  parts->windows.SetScaling(options.scaling);
  if (options.attachHost) {
    WindowDescription d;
    d.x = int(SDL_WINDOWPOS_CENTERED);
    d.y = int(SDL_WINDOWPOS_CENTERED);
    d.width = options.size.width;
    d.height = options.size.height;
    d.resizable = true;
    std::string why;
    if (!parts->windows.Create(kHostWindow, d, options.title, why)) {
      reason = "no window: " + why;
      return nullptr;
    }
    parts->windows.MarkHost(kHostWindow);
    if (options.fullScreen) parts->windows.SetFullScreen(kHostWindow, true);
    if (!options.hidden) SDL_ShowWindow(parts->windows.Find(kHostWindow));
    parts->windows.Redraw(kHostWindow);
  }
  SDL_StartTextInput();
  parts->clipboard.Renew();
  return std::unique_ptr<SdlPlatform>(new SdlPlatform(std::move(parts)));
}

SdlPlatform::SdlPlatform(std::unique_ptr<Parts> parts) : parts_(std::move(parts)) {}

SdlPlatform::~SdlPlatform() = default;

Services SdlPlatform::services() {
  Services s;
  s.clock = parts_->clock.get();
  s.events = parts_->queue.get();
  s.windows = parts_->mailbox.get();
  s.text = parts_->options.text ? parts_->options.text : &parts_->textEngine;
  s.files = parts_->options.files;
  s.environment = &parts_->environment;
  s.input = &parts_->inputDevices;
  s.clipboard = &parts_->clipboard;
  return s;
}

void SdlPlatform::renew(std::optional<uint32_t> seed) {
  Parts& p = *parts_;
  p.options.seed = seed;
  p.windows.KeepOnly(kHostWindow);
  p.BeginRun();
  const bool follows = p.options.attachHost && !p.windows.IsScaled(kHostWindow);
  p.MakeMailbox(follows ? p.windows.SizeOf(kHostWindow) : p.options.size);
}

void SdlPlatform::setSleeper(Sleeper& sleeper) { parts_->queue->SetSleeper(sleeper); }

void SdlPlatform::setScaling(Scaling scaling) {
  Parts& p = *parts_;
  p.windows.SetScaling(scaling);
  if (scaling == Scaling::Follow && p.options.attachHost) p.TellHostSize(p.windows.SizeOf(kHostWindow));
}

void SdlPlatform::setTitle(const std::string& title) {
  if (SDL_Window* const window = parts_->windows.Find(kHostWindow)) SDL_SetWindowTitle(window, title.c_str());
}

void SdlPlatform::setFullScreen(NativeWindow window, bool full) {
  parts_->windows.SetFullScreen(window ? window : kHostWindow, full);
}

bool SdlPlatform::isFullScreen(NativeWindow window) const {
  return parts_->windows.IsFullScreen(window ? window : kHostWindow);
}

NativeWindow SdlPlatform::focusedWindow() const {
  SDL_Window* const focused = SDL_GetKeyboardFocus();
  const NativeWindow window = focused ? parts_->windows.WindowOf(SDL_GetWindowID(focused)) : 0;
  return window || !parts_->options.attachHost ? window : kHostWindow;
}

Size SdlPlatform::windowSize(NativeWindow window) const {
  return parts_->windows.SizeOf(window ? window : kHostWindow);
}

void SdlPlatform::setOverlay(NativeWindow window, const WindowOverlay& overlay) {
  parts_->windows.SetOverlay(window ? window : kHostWindow, overlay);
}

bool SdlPlatform::openPanel(Size size, const std::string& title) {
  WindowDescription d;
  d.x = int(SDL_WINDOWPOS_CENTERED);
  d.y = int(SDL_WINDOWPOS_CENTERED);
  d.width = size.width;
  d.height = size.height;
  std::string reason;
  if (!parts_->windows.Create(kPanelWindow, d, title, reason)) return false;
  SDL_Window* const window = parts_->windows.Find(kPanelWindow);
  SDL_ShowWindow(window);
  SDL_RaiseWindow(window);
  return true;
}

void SdlPlatform::closePanel() { parts_->windows.Forget(kPanelWindow); }

void SdlPlatform::setClipboard(const std::string& text) { SDL_SetClipboardText(text.c_str()); }

void SdlPlatform::Parts::StopWhenDue() {
  if (options.maxTimeMs == 0 || isStopSent) return;
  const auto elapsed = std::chrono::steady_clock::now() - started;
  if (elapsed < std::chrono::milliseconds(options.maxTimeMs)) return;
  isStopSent = true;
  queue->Push(MakeEvent(EventType::HostStop, 0));
}

bool SdlPlatform::pumpHost(int timeoutMs) {
  Parts& p = *parts_;
  const bool isLast = p.isFinished;
  SDL_Event event;
  const bool hasPanel = p.windows.Find(kPanelWindow) != nullptr;
  if (SDL_WaitEventTimeout(&event, isLast && !hasPanel ? 0 : timeoutMs)) {
    do {
      p.Translate(event);
    } while (SDL_PollEvent(&event));
  }
  p.StopWhenDue();
  for (const NativeWindow window : p.windows.Apply(*p.mailbox)) p.queue->Push(MakeEvent(EventType::Close, window));
  p.windows.Show(*p.mailbox);
  p.inputDevices.Apply();
  p.clipboard.Apply();
  for (const WindowMessage& message : p.mailbox->TakeMessages()) {
    if (p.options.listener) {
      p.options.listener->OnMessage(message.title, message.text);
      continue;
    }
    SDL_ShowSimpleMessageBox(SDL_MESSAGEBOX_INFORMATION, Utf8Of1252(message.title).c_str(),
                             Utf8Of1252(message.text).c_str(), p.windows.Find(kHostWindow));
  }
  if (p.options.listener) p.options.listener->OnPumped();
  return !isLast;
}

bool SdlPlatform::isCloseAsked() const { return parts_->isCloseAsked; }

void SdlPlatform::finish() {
  parts_->isFinished = true;
  parts_->Wake();
}

void SdlPlatform::requestStop() {
  Event event;
  event.type = EventType::HostStop;
  parts_->queue->Push(event);
}

HostPicture SdlPlatform::hostPicture() {
  HostPicture picture;
  parts_->mailbox->LookAtFrame(kHostWindow, [&](const WindowFrame& frame) {
    picture.pixels = frame.pixels;
    picture.width = frame.width;
    picture.height = frame.height;
  });
  return picture;
}

void SdlPlatform::Parts::Translate(const SDL_Event& e) {
  switch (e.type) {
    case SDL_QUIT:
      // The run may be over, with only its error to be seen.
      if (windows.Find(kPanelWindow)) Offer(MakeEvent(EventType::Close, kPanelWindow));
      isCloseAsked = true;
      queue->Push(MakeEvent(EventType::HostStop, 0));
      break;
    case SDL_KEYDOWN:
    case SDL_KEYUP:
      TranslateKey(e.key);
      break;
    case SDL_TEXTINPUT:
      TranslateText(e.text);
      break;
    case SDL_MOUSEMOTION:
    case SDL_MOUSEBUTTONDOWN:
    case SDL_MOUSEBUTTONUP:
    case SDL_MOUSEWHEEL:
      TranslateMouse(e);
      break;
    case SDL_WINDOWEVENT:
      TranslateWindow(e.window);
      break;
    case SDL_DISPLAYEVENT:
      TellScreen();
      break;
    case SDL_DROPFILE:
      DropFile(e.drop);
      break;
    case SDL_CLIPBOARDUPDATE:
      clipboard.Renew();
      break;
    default:
      joysticks.Handle(e);
      break;
  }
}

void SdlPlatform::Parts::TellScreen() {
  const ScreenInfo now = CurrentScreen();
  const bool changed = now.width != screen.width || now.height != screen.height;
  screen = now;
  mailbox->ReportScreen(screen);
  if (!changed) return;
  Event event = MakeEvent(EventType::DisplayChange, 0);
  event.x = screen.width;
  event.y = screen.height;
  event.code = screen.depth;
  queue->Push(event);
}

void SdlPlatform::Parts::TranslateKey(const SDL_KeyboardEvent& e) {
  const NativeWindow window = windows.WindowOf(e.windowID);
  if (window == 0) return;
  const bool isDown = e.type == SDL_KEYDOWN;
  Event event = MakeEvent(isDown ? EventType::KeyDown : EventType::KeyUp, window);
  event.code = VirtualKeyOf(e.keysym);
  event.mods = ModsOf(e.keysym.mod);
  event.x = e.repeat != 0 ? 1 : 0;
  if (event.code != 0) {
    if (Offer(event)) return;
    queue->Push(event);
  }
  const int32_t character = ControlCharOf(e.keysym);
  if (!isDown || character == 0) return;
  event.type = EventType::Char;
  event.code = 0;
  event.x = 0;
  event.ch = character;
  PushInput(event);
}

void SdlPlatform::Parts::TranslateText(const SDL_TextInputEvent& e) {
  const NativeWindow window = windows.WindowOf(e.windowID);
  // With Alt a letter is a menu's, not text; Alt Gr makes characters.
  const SDL_Keymod keys = SDL_GetModState();
  if (window == 0 || ((keys & KMOD_LALT) && !(keys & (KMOD_RALT | KMOD_MODE)))) return;
  for (const char byte : Text1252OfUtf8(e.text)) {
    Event event = MakeEvent(EventType::Char, window);
    event.ch = uint8_t(byte);
    if (event.ch >= 32) PushInput(event);
  }
}

// Beside the picture only a drag goes on.
void SdlPlatform::Parts::PushMouse(Event event) {
  if (event.window == 0) return;
  int x = event.x;
  int y = event.y;
  const bool onFrame = !windows.ToPicture(event.window, x, y);
  if (Offer(event, onFrame)) return;
  const bool isDrag = (event.mods & (kModLeftButton | kModMiddleButton | kModRightButton)) != 0;
  if (onFrame && (event.type == EventType::MouseDown || (event.type != EventType::MouseUp && !isDrag))) return;
  event.x = x;
  event.y = y;
  queue->Push(event);
}

void SdlPlatform::Parts::TellHostSize(Size size) {
  mailbox->ReportHostSize(size);
  Event event = MakeEvent(EventType::Resize, kHostWindow);
  event.x = size.width;
  event.y = size.height;
  queue->Push(event);
}

void SdlPlatform::Parts::TranslateMouse(const SDL_Event& e) {
  if (e.type == SDL_MOUSEMOTION) {
    Event event = MakeEvent(EventType::MouseMove, windows.WindowOf(e.motion.windowID));
    // A held mouse is the program's alone, and has no place on the picture.
    if (inputDevices.IsHeld()) {
      event.x = e.motion.xrel;
      event.y = e.motion.yrel;
      event.ch = 1;
      if (event.window != 0) queue->Push(event);
      return;
    }
    event.x = e.motion.x;
    event.y = e.motion.y;
    PushMouse(event);
    return;
  }
  if (e.type == SDL_MOUSEWHEEL) {
    Event event = MakeEvent(EventType::MouseWheel, windows.WindowOf(e.wheel.windowID));
    wheelRest += double(e.wheel.preciseY) * kWheelNotch;
    event.code = int32_t(std::trunc(wheelRest));
    wheelRest -= event.code;
    event.x = e.wheel.mouseX;
    event.y = e.wheel.mouseY;
    if (event.code != 0) PushMouse(event);
    return;
  }
  const bool isDown = e.type == SDL_MOUSEBUTTONDOWN;
  Event event = MakeEvent(isDown ? EventType::MouseDown : EventType::MouseUp, windows.WindowOf(e.button.windowID));
  event.code = ButtonOf(e.button.button);
  event.x = e.button.x;
  event.y = e.button.y;
  // The third press begins a new double click.
  if (isDown) event.ch = e.button.clicks % 2 == 0 ? 2 : 1;
  if (event.code != 0) PushMouse(event);
}

void SdlPlatform::Parts::TranslateWindow(const SDL_WindowEvent& e) {
  const NativeWindow window = windows.WindowOf(e.windowID);
  if (window == 0) return;
  if (window == kPanelWindow && e.event != SDL_WINDOWEVENT_CLOSE) {
    windows.Redraw(window);
    return;
  }
  Event event = MakeEvent(EventType::None, window);
  switch (e.event) {
    case SDL_WINDOWEVENT_SIZE_CHANGED:
      windows.Redraw(window);
      // A scaled picture keeps its size.
      if (windows.IsScaled(window)) return;
      if (window == kHostWindow && options.attachHost) {
        TellHostSize({e.data1, e.data2});
        return;
      }
      // The answer to an older wish of the program must not undo its newer one.
      if (mailbox->IsPlacePending(window)) return;
      event.type = EventType::Resize;
      event.x = e.data1;
      event.y = e.data2;
      break;
    case SDL_WINDOWEVENT_MOVED:
      if (mailbox->IsPlacePending(window)) return;
      event.type = EventType::Move;
      event.x = e.data1;
      event.y = e.data2;
      break;
    case SDL_WINDOWEVENT_CLOSE:
      event.type = EventType::Close;
      isCloseAsked = isCloseAsked || window == kHostWindow;
      PushInput(event);
      return;
    case SDL_WINDOWEVENT_FOCUS_GAINED:
      clipboard.Renew();
      event.type = EventType::Focus;
      break;
    case SDL_WINDOWEVENT_FOCUS_LOST:
      event.type = EventType::Blur;
      break;
    case SDL_WINDOWEVENT_EXPOSED:
      event.type = EventType::Expose;
      windows.Redraw(window);
      break;
    case SDL_WINDOWEVENT_ENTER:
      windows.EnterMouse(window);
      return;
    case SDL_WINDOWEVENT_LEAVE:
      event.type = EventType::MouseLeave;
      break;
    case SDL_WINDOWEVENT_MINIMIZED:
      event.type = EventType::Minimize;
      break;
    case SDL_WINDOWEVENT_MAXIMIZED:
      event.type = EventType::Maximize;
      break;
    case SDL_WINDOWEVENT_RESTORED:
      event.type = EventType::Restore;
      break;
    default:
      return;
  }
  queue->Push(event);
}

void SdlPlatform::Parts::DropFile(const SDL_DropEvent& e) {
  const std::unique_ptr<char, decltype(&SDL_free)> path(e.file, SDL_free);
  const NativeWindow window = windows.WindowOf(e.windowID);
  if (window == 0 || !path) return;
  if (options.listener && !windows.AcceptsDrops(window)) {
    options.listener->OnDrop(path.get());
    return;
  }
  Event event = MakeEvent(EventType::DropFile, window);
  SDL_GetMouseState(&event.x, &event.y);
  queue->PushWithBlob(event, path.get());
}

}  // namespace vl

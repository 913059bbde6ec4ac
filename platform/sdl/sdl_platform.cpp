#include "platform/sdl/sdl_platform.h"

#include <SDL.h>

#include <chrono>
#include <cmath>
#include <utility>

#include "platform/posix/posix_clock.h"
#include "platform/posix/posix_environment.h"
#include "platform/posix/posix_font_finder.h"
#include "platform/posix/threaded_queue.h"
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
  explicit Parts(const SdlOptions& o) : options(o), clock(o.seed), textEngine(fonts) {}

  void Wake() {
    SDL_Event event{};
    event.type = wakeEvent;
    SDL_PushEvent(&event);
  }
  void Translate(const SDL_Event& e);
  void TranslateKey(const SDL_KeyboardEvent& e);
  void TranslateText(const SDL_TextInputEvent& e);
  void TranslateMouse(const SDL_Event& e);
  void TranslateWindow(const SDL_WindowEvent& e);
  void DropFile(const SDL_DropEvent& e);
  void StopWhenDue();

  SdlOptions options;
  PosixClock clock;
  PosixEnvironment environment;
  PosixFontFinder fonts;
  FreeTypeTextEngine textEngine;
  ThreadedQueue queue;
  Uint32 wakeEvent = 0;
  std::atomic<bool> isFinished{false};
  std::chrono::steady_clock::time_point started = std::chrono::steady_clock::now();
  bool isStopSent = false;
  // SDL goes up before the windows and down after them.
  SdlVideo video;
  std::unique_ptr<WindowMailbox> mailbox;
  SdlWindows windows;
  SdlInputDevices inputDevices{[this] { Wake(); }};
  SdlJoysticks joysticks{queue};
  double wheelRest = 0;  // of a notch, in steps
};

std::unique_ptr<SdlPlatform> SdlPlatform::Create(const SdlOptions& options, std::string& reason) {
  // A closed window is an event like others; signals still end the run in order.
  SDL_SetHint(SDL_HINT_QUIT_ON_LAST_WINDOW_CLOSE, "0");
  SDL_SetHint(SDL_HINT_MOUSE_FOCUS_CLICKTHROUGH, "1");
  auto parts = std::make_unique<Parts>(options);
  if (!parts->video.IsUp()) {
    reason = std::string("no display: ") + SDL_GetError();
    return nullptr;
  }
  if (IsShowingNothing()) {
    reason = "no display: neither X11 nor Wayland can be reached; --headless runs without one";
    return nullptr;
  }
  SDL_EventState(SDL_DROPTEXT, SDL_DISABLE);
  parts->wakeEvent = SDL_RegisterEvents(1);
  ScreenInfo screen;
  SDL_DisplayMode mode{};
  if (SDL_GetDesktopDisplayMode(0, &mode) == 0) {
    screen.width = mode.w;
    screen.height = mode.h;
  }
  Parts* const raw = parts.get();
  parts->mailbox = std::make_unique<WindowMailbox>(screen, options.attachHost ? kHostWindow : 0, options.size,
                                                   [raw] { raw->Wake(); });
  if (options.attachHost) {
    WindowDescription d;
    d.x = int(SDL_WINDOWPOS_CENTERED);
    d.y = int(SDL_WINDOWPOS_CENTERED);
    d.width = options.size.width;
    d.height = options.size.height;
    d.resizable = true;
    std::string why;
    if (!parts->windows.Create(kHostWindow, d, Utf8Of1252(options.title), why)) {
      reason = "no window: " + why;
      return nullptr;
    }
    if (!options.hidden) SDL_ShowWindow(parts->windows.Find(kHostWindow));
    parts->windows.Redraw(kHostWindow);
  }
  SDL_StartTextInput();
  return std::unique_ptr<SdlPlatform>(new SdlPlatform(std::move(parts)));
}

SdlPlatform::SdlPlatform(std::unique_ptr<Parts> parts) : parts_(std::move(parts)) {}

SdlPlatform::~SdlPlatform() = default;

Services SdlPlatform::services() {
  Services s;
  s.clock = &parts_->clock;
  s.events = &parts_->queue;
  s.windows = parts_->mailbox.get();
  s.text = parts_->options.text ? parts_->options.text : &parts_->textEngine;
  s.files = parts_->options.files;
  s.environment = &parts_->environment;
  s.input = &parts_->inputDevices;
  return s;
}

void SdlPlatform::Parts::StopWhenDue() {
  if (options.maxTimeMs == 0 || isStopSent) return;
  const auto elapsed = std::chrono::steady_clock::now() - started;
  if (elapsed < std::chrono::milliseconds(options.maxTimeMs)) return;
  isStopSent = true;
  queue.Push(MakeEvent(EventType::HostStop, 0));
}

bool SdlPlatform::pumpHost(int timeoutMs) {
  Parts& p = *parts_;
  const bool isLast = p.isFinished;
  SDL_Event event;
  if (SDL_WaitEventTimeout(&event, isLast ? 0 : timeoutMs)) {
    do {
      p.Translate(event);
    } while (SDL_PollEvent(&event));
  }
  p.StopWhenDue();
  for (const NativeWindow window : p.windows.Apply(*p.mailbox)) p.queue.Push(MakeEvent(EventType::Close, window));
  p.windows.Show(*p.mailbox);
  p.inputDevices.Apply();
  for (const WindowMessage& message : p.mailbox->TakeMessages()) {
    SDL_ShowSimpleMessageBox(SDL_MESSAGEBOX_INFORMATION, Utf8Of1252(message.title).c_str(),
                             Utf8Of1252(message.text).c_str(), p.windows.Find(kHostWindow));
  }
  return !isLast;
}

void SdlPlatform::finish() {
  parts_->isFinished = true;
  parts_->Wake();
}

void SdlPlatform::requestStop() {
  Event event;
  event.type = EventType::HostStop;
  parts_->queue.Push(event);
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
      queue.Push(MakeEvent(EventType::HostStop, 0));
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
    case SDL_DROPFILE:
      DropFile(e.drop);
      break;
    default:
      joysticks.Handle(e);
      break;
  }
}

void SdlPlatform::Parts::TranslateKey(const SDL_KeyboardEvent& e) {
  const NativeWindow window = windows.WindowOf(e.windowID);
  if (window == 0) return;
  const bool isDown = e.type == SDL_KEYDOWN;
  Event event = MakeEvent(isDown ? EventType::KeyDown : EventType::KeyUp, window);
  event.code = VirtualKeyOf(e.keysym);
  event.x = e.repeat != 0 ? 1 : 0;
  if (event.code != 0) queue.Push(event);
  const int32_t character = ControlCharOf(e.keysym);
  if (!isDown || character == 0) return;
  event.type = EventType::Char;
  event.code = 0;
  event.x = 0;
  event.ch = character;
  queue.Push(event);
}

void SdlPlatform::Parts::TranslateText(const SDL_TextInputEvent& e) {
  const NativeWindow window = windows.WindowOf(e.windowID);
  // With Alt a letter is a menu's, not text; Alt Gr makes characters.
  const SDL_Keymod keys = SDL_GetModState();
  if (window == 0 || ((keys & KMOD_LALT) && !(keys & (KMOD_RALT | KMOD_MODE)))) return;
  for (const char byte : Text1252OfUtf8(e.text)) {
    Event event = MakeEvent(EventType::Char, window);
    event.ch = uint8_t(byte);
    if (event.ch >= 32) queue.Push(event);
  }
}

void SdlPlatform::Parts::TranslateMouse(const SDL_Event& e) {
  if (e.type == SDL_MOUSEMOTION) {
    Event event = MakeEvent(EventType::MouseMove, windows.WindowOf(e.motion.windowID));
    event.x = inputDevices.IsHeld() ? e.motion.xrel : e.motion.x;
    event.y = inputDevices.IsHeld() ? e.motion.yrel : e.motion.y;
    event.ch = inputDevices.IsHeld() ? 1 : 0;
    if (event.window != 0) queue.Push(event);
    return;
  }
  if (e.type == SDL_MOUSEWHEEL) {
    Event event = MakeEvent(EventType::MouseWheel, windows.WindowOf(e.wheel.windowID));
    wheelRest += double(e.wheel.preciseY) * kWheelNotch;
    event.code = int32_t(std::trunc(wheelRest));
    wheelRest -= event.code;
    event.x = e.wheel.mouseX;
    event.y = e.wheel.mouseY;
    if (event.window != 0 && event.code != 0) queue.Push(event);
    return;
  }
  const bool isDown = e.type == SDL_MOUSEBUTTONDOWN;
  Event event = MakeEvent(isDown ? EventType::MouseDown : EventType::MouseUp, windows.WindowOf(e.button.windowID));
  event.code = ButtonOf(e.button.button);
  event.x = e.button.x;
  event.y = e.button.y;
  // The third press begins a new double click.
  if (isDown) event.ch = e.button.clicks % 2 == 0 ? 2 : 1;
  if (event.window != 0 && event.code != 0) queue.Push(event);
}

void SdlPlatform::Parts::TranslateWindow(const SDL_WindowEvent& e) {
  const NativeWindow window = windows.WindowOf(e.windowID);
  if (window == 0) return;
  Event event = MakeEvent(EventType::None, window);
  switch (e.event) {
    case SDL_WINDOWEVENT_SIZE_CHANGED:
      event.type = EventType::Resize;
      event.x = e.data1;
      event.y = e.data2;
      if (window == kHostWindow && options.attachHost) mailbox->ReportHostSize({e.data1, e.data2});
      windows.Redraw(window);
      break;
    case SDL_WINDOWEVENT_MOVED:
      event.type = EventType::Move;
      event.x = e.data1;
      event.y = e.data2;
      break;
    case SDL_WINDOWEVENT_CLOSE:
      event.type = EventType::Close;
      break;
    case SDL_WINDOWEVENT_FOCUS_GAINED:
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
  queue.Push(event);
}

void SdlPlatform::Parts::DropFile(const SDL_DropEvent& e) {
  const std::unique_ptr<char, decltype(&SDL_free)> path(e.file, SDL_free);
  const NativeWindow window = windows.WindowOf(e.windowID);
  if (window == 0 || !path) return;
  Event event = MakeEvent(EventType::DropFile, window);
  SDL_GetMouseState(&event.x, &event.y);
  queue.PushWithBlob(event, path.get());
}

}  // namespace vl

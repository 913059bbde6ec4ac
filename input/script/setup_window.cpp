#include "input/script/setup_window.h"

#include <algorithm>

#include "gfx2d/script/graphics.h"
#include "input/game_input_library.h"
#include "input/setup_dialog.h"
#include "interpreter/interpretor.h"
#include "platform/device_queue.h"
#include "ui/window_frame.h"
#include "ui/window_tree.h"

namespace vl {

namespace {

constexpr int kDepth = 32;
// Longest sleep of the loop: joysticks and the run's stop must not wait longer.
constexpr int kSliceMs = 50;
constexpr int kFontHeight = -11;
constexpr uint32_t kFrame = WS_CAPTION | WS_SYSMENU;

// What other windows are told while the dialog is open: to paint, and what became of them; no input.
bool IsInput(uint32_t message) {
  return (message >= WM_KEYDOWN && message <= WM_SYSKEYDOWN) || (message >= WM_MOUSEMOVE && message <= WM_MOUSEWHEEL) ||
         message == WM_COMMAND || message == WM_SYSCOMMAND || message == WM_MOUSEACTIVATE;
}

// The dialog's window: its messages become calls of the dialog, its picture goes to the tree. It stands inside the
// host's window when it fits there, as a host may show no other; else it is a window of its own.
class SetupWindow final : public CWindowTarget {
 public:
  SetupWindow(CInterpretor& interpreter, SetupDialog& dialog)
      : interpreter_(interpreter), tree_(WindowTree::Of(interpreter)), dialog_(dialog) {}
  ~SetupWindow() override {
    tree_.ForgetTarget(handle_);
    // A run that is stopped leaves its last picture as it is.
    tree_.Destroy(handle_, interpreter_.param.stop.load(std::memory_order_relaxed));
    if (tree_.Find(capture_)) tree_.SetCapture(capture_);
  }

  bool Open(uint32_t owner, const char* title);
  // Serves all windows until the dialog is answered or the run is to end.
  void Run();
  int32_t WindowProcedure(WindowHandle window, uint32_t message, uint32_t wParam, int32_t lParam) override;

 private:
  void Place(uint32_t owner, WindowCreation& creation);
  const WindowNode* HostOf(uint32_t owner, Size outer);
  void Paint();
  void Serve();

  CInterpretor& interpreter_;
  WindowTree& tree_;
  SetupDialog& dialog_;
  WindowHandle handle_ = 0;
  WindowHandle capture_ = 0;  // of the program
  cSurface picture_;
  std::shared_ptr<TextFont> font_;
};

// The host's window that the owner stands in, when the dialog fits there.
const WindowNode* SetupWindow::HostOf(uint32_t owner, Size outer) {
  const WindowNode* node = tree_.Find(owner);
  while (node && node->parent) node = tree_.Find(node->parent);
  const bool fits = node && node->isHost && node->visible && node->width >= outer.width && node->height >= outer.height;
  return fits ? node : nullptr;
}

void SetupWindow::Place(uint32_t owner, WindowCreation& creation) {
  constexpr Size kSize = SetupDialog::kSize;
  const Rect borders = FrameBorders(WS_CHILD | kFrame, WS_EX_DLGMODALFRAME, false);
  const Size outer = {kSize.width + borders.left + borders.right, kSize.height + borders.top + borders.bottom};
  Rect around;
  if (const WindowNode* host = HostOf(owner, outer)) {
    creation.style = WS_CHILD | WS_CLIPSIBLINGS | kFrame;
    creation.parent = host->handle;
    around = {0, 0, host->width, host->height};
  } else {
    creation.style = WS_POPUP | kFrame;
    const ScreenInfo screen = tree_.Screen();
    around = {0, 0, screen.width, screen.height};
    if (const WindowNode* node = tree_.Find(owner)) {
      const Point origin = tree_.ClientOrigin(owner);
      around = {origin.x, origin.y, origin.x + node->width, origin.y + node->height};
    }
  }
  creation.exStyle = WS_EX_DLGMODALFRAME;
  creation.x = std::max(around.left + (around.Width() - outer.width) / 2, 0);
  creation.y = std::max(around.top + (around.Height() - outer.height) / 2, 0);
  creation.width = outer.width;
  creation.height = outer.height;
}

bool SetupWindow::Open(uint32_t owner, const char* title) {
  if (!interpreter_.services.text || !interpreter_.services.windows) return false;
  WindowCreation creation;
  creation.text = title;
  Place(owner, creation);
  constexpr Size kSize = SetupDialog::kSize;
  const cSurfaceImpl* prototype = CGraphics::Of(interpreter_).library.FindPrototype(kDepth);
  if (!picture_.Create(kSize.width, kSize.height, prototype)) return false;
  FontDescription description;
  description.height = kFontHeight;
  font_ = interpreter_.services.text->openFont(description);
  handle_ = tree_.Create(creation, this);
  if (!handle_) return false;
  capture_ = tree_.Capture();
  tree_.SetCapture(0);
  tree_.Show(handle_, SW_SHOWNORMAL);
  tree_.SetFocus(handle_);
  tree_.Send(handle_, WM_NCACTIVATE, 1);
  Paint();
  return true;
}

void SetupWindow::Paint() {
  dialog_.Paint(picture_, *font_);
  const Rect whole = {0, 0, SetupDialog::kSize.width, SetupDialog::kSize.height};
  tree_.Paint(handle_, picture_, {&whole, 1});
}

void SetupWindow::Run() {
  const auto& stop = interpreter_.param.stop;
  while (dialog_.GetAnswer() == SetupDialog::Answer::None && !stop.load(std::memory_order_relaxed)) {
    if (tree_.HasMessage()) {
      Serve();
    } else if (interpreter_.services.events->isExhausted()) {
      // Nobody is there to answer.
      return;
    } else {
      tree_.WaitForMessage(kSliceMs);
    }
    interpreter_.Poll();
    dialog_.WatchDevices();
    if (!tree_.Find(handle_)) return;
    if (dialog_.IsDirty()) Paint();
  }
}

void SetupWindow::Serve() {
  CMessage message;
  if (!tree_.Get(message) || message.message == WM_QUIT) return;
  if (message.window != handle_ && IsInput(message.message)) return;
  tree_.Dispatch(message);
}

int32_t SetupWindow::WindowProcedure(WindowHandle window, uint32_t message, uint32_t wParam, int32_t lParam) {
  const int x = LowSigned(lParam);
  const int y = HighSigned(lParam);
  const auto buttonOf = [message](uint32_t left) {
    // Down, up and double click of the left, the right and the middle button.
    constexpr int32_t kButtons[] = {kMouseLeft, kMouseRight, kMouseMiddle};
    return kButtons[(message - left) / 3];
  };
  switch (message) {
    case WM_PAINT:
      Paint();
      return 0;
    case WM_KEYDOWN:
    case WM_SYSKEYDOWN:
      dialog_.KeyDown(static_cast<int32_t>(wParam));
      return 0;
    case WM_KEYUP:
      dialog_.KeyUp(static_cast<int32_t>(wParam));
      return 0;
    case WM_CHAR:
      dialog_.Char(static_cast<uint8_t>(wParam));
      return 0;
    case WM_LBUTTONDOWN:
    case WM_RBUTTONDOWN:
    case WM_MBUTTONDOWN:
      dialog_.MouseDown(buttonOf(WM_LBUTTONDOWN), x, y, false);
      return 0;
    case WM_LBUTTONDBLCLK:
    case WM_RBUTTONDBLCLK:
    case WM_MBUTTONDBLCLK:
      dialog_.MouseDown(buttonOf(WM_LBUTTONDOWN), x, y, true);
      return 0;
    case WM_LBUTTONUP:
    case WM_RBUTTONUP:
    case WM_MBUTTONUP:
      dialog_.MouseUp(buttonOf(WM_LBUTTONDOWN), x, y);
      return 0;
    case WM_MOUSEMOVE:
      dialog_.MouseMove(x, y);
      return 0;
    case WM_MOUSEWHEEL:
      dialog_.Wheel(static_cast<int16_t>(wParam >> 16));
      return 0;
    case WM_SYSCOMMAND:
      if ((wParam & 0xFFF0) != SC_CLOSE) return tree_.DefaultProcedure(window, message, wParam, lParam);
      dialog_.Close();
      return 0;
    default:
      return tree_.DefaultProcedure(window, message, wParam, lParam);
  }
}

}  // namespace

bool RunSetupDialog(CInterpretor& interpreter, GameInputLibrary& library, uint32_t owner) {
  DeviceQueue* devices = interpreter.services.devices;
  if (!devices) return false;
  const std::string before = library.WriteSettings();
  SetupDialog dialog(library.settings, devices->State(), interpreter.errorTexts.french ? kFrenchSetup : kEnglishSetup);
  WindowTree& tree = WindowTree::Of(interpreter);
  bool isAccepted = false;
  {
    SetupWindow window(interpreter, dialog);
    if (window.Open(owner, (interpreter.errorTexts.french ? kFrenchSetup : kEnglishSetup).title)) {
      window.Run();
      isAccepted = dialog.GetAnswer() == SetupDialog::Answer::Ok;
    }
  }
  if (tree.Find(owner)) tree.SetFocus(owner);
  if (!isAccepted) {
    library.ClearSettings();
    CMemoryStream text(before.data(), static_cast<uint32_t>(before.size()));
    library.ReadSettings(text);
  }
  return isAccepted;
}

}  // namespace vl

// Window messages, styles and commands, with the numbers that the runtime's programs were written against.
#pragma once

#include <cstdint>

namespace vl {

enum WindowMessage : uint32_t {
  WM_DESTROY = 2,
  WM_MOVE = 3,
  WM_SIZE = 5,
  WM_ACTIVATE = 6,
  WM_SETFOCUS = 7,
  WM_KILLFOCUS = 8,
  WM_PAINT = 15,
  WM_CLOSE = 16,
  WM_QUIT = 18,
  WM_ERASEBKGND = 20,
  WM_SHOWWINDOW = 24,
  WM_SETCURSOR = 32,
  WM_MOUSEACTIVATE = 33,
  WM_NCLBUTTONDOWN = 161,
  WM_NCRBUTTONDOWN = 164,
  WM_NCMBUTTONDOWN = 167,
  WM_KEYDOWN = 256,
  WM_KEYUP = 257,
  WM_CHAR = 258,
  WM_SYSKEYDOWN = 260,
  WM_COMMAND = 273,
  WM_SYSCOMMAND = 274,
  WM_TIMER = 275,
  WM_MOUSEMOVE = 512,
  WM_LBUTTONDOWN = 513,
  WM_LBUTTONUP = 514,
  WM_LBUTTONDBLCLK = 515,
  WM_RBUTTONDOWN = 516,
  WM_RBUTTONUP = 517,
  WM_RBUTTONDBLCLK = 518,
  WM_MBUTTONDOWN = 519,
  WM_MBUTTONUP = 520,
  WM_MBUTTONDBLCLK = 521,
  WM_MOUSEWHEEL = 522,
  WM_DROPFILES = 563,
};

enum SystemCommand : uint32_t { SC_MINIMIZE = 0xF020, SC_MAXIMIZE = 0xF030, SC_CLOSE = 0xF060, SC_RESTORE = 0xF120 };

enum WindowStyle : uint32_t {
  WS_MAXIMIZEBOX = 0x10000,
  WS_TABSTOP = 0x10000,
  WS_MINIMIZEBOX = 0x20000,
  WS_THICKFRAME = 0x40000,
  WS_SYSMENU = 0x80000,
  WS_HSCROLL = 0x100000,
  WS_VSCROLL = 0x200000,
  WS_DLGFRAME = 0x400000,
  WS_BORDER = 0x800000,
  WS_CAPTION = 0xC00000,
  WS_MAXIMIZE = 0x1000000,
  WS_CLIPCHILDREN = 0x2000000,
  WS_CLIPSIBLINGS = 0x4000000,
  WS_DISABLED = 0x8000000,
  WS_VISIBLE = 0x10000000,
  WS_MINIMIZE = 0x20000000,
  WS_CHILD = 0x40000000,
  WS_POPUP = 0x80000000,
};

enum ShowCommand : uint32_t {
  SW_HIDE = 0,
  SW_SHOWNORMAL = 1,
  SW_SHOWMAXIMIZED = 3,
  SW_SHOW = 5,
  SW_MINIMIZE = 6,
  SW_RESTORE = 9,
  kShowCommands = 12,
};

enum PositionFlag : uint32_t {
  SWP_NOSIZE = 1,
  SWP_NOMOVE = 2,
  SWP_NOZORDER = 4,
  SWP_NOACTIVATE = 16,
  kNothingToDo = SWP_NOSIZE | SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE,
};

// Where SetWindowPos puts a window in the Z order.
enum InsertAfter : int32_t { HWND_TOP = 0, HWND_BOTTOM = 1, HWND_TOPMOST = -1 };

constexpr int32_t MakeLParam(int x, int y) {
  return static_cast<int32_t>((static_cast<uint32_t>(y) & 0xFFFF) << 16 | (static_cast<uint32_t>(x) & 0xFFFF));
}
constexpr int LowSigned(int32_t lParam) { return static_cast<int16_t>(lParam & 0xFFFF); }
constexpr int HighSigned(int32_t lParam) { return static_cast<int16_t>(static_cast<uint32_t>(lParam) >> 16); }

}  // namespace vl

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
  WM_ENABLE = 10,
  WM_PAINT = 15,
  WM_CLOSE = 16,
  WM_QUIT = 18,
  WM_ERASEBKGND = 20,
  WM_SYSCOLORCHANGE = 21,
  WM_SHOWWINDOW = 24,
  WM_SETCURSOR = 32,
  WM_MOUSEACTIVATE = 33,
  WM_SETFONT = 48,
  WM_DISPLAYCHANGE = 126,
  WM_NCHITTEST = 132,
  WM_NCACTIVATE = 134,
  WM_NCMOUSEMOVE = 160,
  WM_NCLBUTTONDOWN = 161,
  WM_NCLBUTTONUP = 162,
  WM_NCLBUTTONDBLCLK = 163,
  WM_NCRBUTTONDOWN = 164,
  WM_NCMBUTTONDOWN = 167,
  WM_KEYDOWN = 256,
  WM_KEYUP = 257,
  WM_CHAR = 258,
  WM_SYSKEYDOWN = 260,
  WM_SYSKEYUP = 261,
  WM_COMMAND = 273,
  WM_SYSCOMMAND = 274,
  WM_TIMER = 275,
  WM_HSCROLL = 276,
  WM_VSCROLL = 277,
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
  WM_SIZING = 532,
  WM_DROPFILES = 563,
  WM_QUERYNEWPALETTE = 783,
  WM_PALETTECHANGED = 784,
};

// wParam of WM_SYSCOMMAND, without the four low bits.
enum SystemCommand : uint32_t {
  SC_SIZE = 0xF000,
  SC_MOVE = 0xF010,
  SC_MINIMIZE = 0xF020,
  SC_MAXIMIZE = 0xF030,
  SC_CLOSE = 0xF060,
  SC_RESTORE = 0xF120,
};
// lParam of WM_SYSCOMMAND when the desktop has carried the command out already.
constexpr int32_t kDoneByDesktop = 1;

// What lies under the mouse.
enum HitCode : uint32_t {
  HTNOWHERE = 0,
  HTCLIENT = 1,
  HTCAPTION = 2,
  HTSYSMENU = 3,
  HTHSCROLL = 6,
  HTVSCROLL = 7,
  HTMINBUTTON = 8,
  HTMAXBUTTON = 9,
  HTLEFT = 10,
  HTRIGHT = 11,
  HTTOP = 12,
  HTTOPLEFT = 13,
  HTTOPRIGHT = 14,
  HTBOTTOM = 15,
  HTBOTTOMLEFT = 16,
  HTBOTTOMRIGHT = 17,
  HTBORDER = 18,
  HTCLOSE = 20,
};

// wParam of WM_SIZING: the side or corner that moves.
enum SizingEdge : uint32_t {
  WMSZ_LEFT = 1,
  WMSZ_RIGHT = 2,
  WMSZ_TOP = 3,
  WMSZ_TOPLEFT = 4,
  WMSZ_TOPRIGHT = 5,
  WMSZ_BOTTOM = 6,
  WMSZ_BOTTOMLEFT = 7,
  WMSZ_BOTTOMRIGHT = 8,
};

enum MouseActivation : int32_t { MA_ACTIVATE = 1, MA_ACTIVATEANDEAT = 2, MA_NOACTIVATE = 3, MA_NOACTIVATEANDEAT = 4 };

enum ScrollCode : uint32_t {
  SB_LINEUP = 0,
  SB_LINEDOWN = 1,
  SB_PAGEUP = 2,
  SB_PAGEDOWN = 3,
  SB_THUMBPOSITION = 4,
  SB_THUMBTRACK = 5,
  SB_TOP = 6,
  SB_BOTTOM = 7,
  SB_ENDSCROLL = 8,
};

// A window's bars, and the one that is a control of its own.
enum BarKind : uint32_t { SB_HORZ = 0, SB_VERT = 1, SB_CTL = 2, kBarKinds = 3 };

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

enum WindowExStyle : uint32_t {
  WS_EX_DLGMODALFRAME = 0x1,
  WS_EX_TOPMOST = 0x8,
  WS_EX_TRANSPARENT = 0x20,
  WS_EX_TOOLWINDOW = 0x80,
  WS_EX_CLIENTEDGE = 0x200,
  WS_EX_STATICEDGE = 0x20000,
};

enum ShowCommand : uint32_t {
  SW_HIDE = 0,
  SW_SHOWNORMAL = 1,
  SW_SHOWMINIMIZED = 2,
  SW_SHOWMAXIMIZED = 3,
  SW_SHOW = 5,
  SW_MINIMIZE = 6,
  SW_SHOWMINNOACTIVE = 7,
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
enum InsertAfter : int32_t { HWND_TOP = 0, HWND_BOTTOM = 1, HWND_TOPMOST = -1, HWND_NOTOPMOST = -2 };

constexpr int32_t MakeLParam(int x, int y) {
  return static_cast<int32_t>((static_cast<uint32_t>(y) & 0xFFFF) << 16 | (static_cast<uint32_t>(x) & 0xFFFF));
}
constexpr int LowSigned(int32_t lParam) { return static_cast<int16_t>(lParam & 0xFFFF); }
constexpr int HighSigned(int32_t lParam) { return static_cast<int16_t>(static_cast<uint32_t>(lParam) >> 16); }

}  // namespace vl

// The table of the class Window: the members of its surface under the same ids, the common members of windows and
// controls, its own, and the constants of all three.
#include <array>

#include "gfx2d/script/surface_class.h"
#include "gfx2d/script/surface_constants.h"
#include "ui/window_class.h"

namespace vl {

namespace {

constexpr uint8_t kGlobal = 0x60;  // the bare name means that member of the current window

constexpr MemberRow Drawn(uint16_t id, const char* name) {
  return {id, name, MemberKind::Member, kMember<&CIWindow::ForwardToSurface>, 0, kGlobal, "as in Surface"};
}
constexpr MemberRow Row(uint16_t id, const char* name, MemberFunction function, const char* help) {
  return {id, name, MemberKind::Member, function, 0, kGlobal, help};
}
constexpr MemberRow OnEvent(uint16_t id, const char* name, const char* help) {
  return {id, name, MemberKind::Event, kMember<&CIWindow::SetEvent>, 0, kGlobal, help};
}
// Events that a hosted program isn't offered.
constexpr MemberRow Refused(uint16_t id, const char* name) {
  return {id, name, MemberKind::Event, kMember<&CIWindow::KeyEventsNotOffered>, 0, kGlobal, "refused: error 20"};
}
// Not in this player yet.
constexpr MemberRow Missing(uint16_t id, const char* name, const char* help) {
  return {id, name, MemberKind::Member, nullptr, 0, kGlobal, help};
}
constexpr MemberRow Constant(uint16_t id, const char* name, uint32_t value, const char* help) {
  return {id, name, MemberKind::Constant, nullptr, value, 0, help};
}

constexpr MemberRow kMemberRows[] = {
    Drawn(1, "Write"),
    Drawn(2, "WriteLn"),
    Drawn(3, "MoveTo"),
    Drawn(4, "Line"),
    Drawn(5, "LineTo"),
    Drawn(6, "Ellipse"),
    Drawn(7, "Rectangle"),
    Missing(8, "DrawPolygon", "as in Surface"),
    Drawn(9, "SetPenColor"),
    Drawn(10, "SetFillColor"),
    Drawn(11, "SetFillGradientColor"),
    Drawn(12, "SetFillGradientDir"),
    Drawn(13, "SetPenGradientColor"),
    Drawn(14, "SetPenGradientDir"),
    Drawn(15, "SetPenSize"),
    Drawn(16, "SetFont"),
    Drawn(17, "SetAntiAlias"),
    Drawn(18, "SetDrawMode"),
    Drawn(19, "SetTransparentMode"),
    Drawn(20, "Fill"),
    Drawn(21, "Rotate"),
    Drawn(22, "DrawText"),
    Drawn(23, "SetPixel"),
    Drawn(24, "GetDepth"),
    Drawn(25, "GetPixelWidth"),
    Drawn(26, "GetPixelHeight"),
    Missing(27, "LoadImage", "as in Surface"),
    Missing(28, "SaveImage", "as in Surface"),
    Drawn(29, "GetPixel"),
    Drawn(30, "GetPixelIndex"),
    Drawn(31, "Copy"),
    Drawn(32, "Stretch"),
    Drawn(33, "Scroll"),
    Drawn(34, "ReverseX"),
    Drawn(35, "ReverseY"),
    Drawn(36, "ReplaceColor"),
    Drawn(37, "Clear"),
    Drawn(38, "GetXPos"),
    Drawn(39, "GetYPos"),
    Missing(40, "ClearSprites", "as in Surface"),
    Missing(41, "UpdateSprites", "as in Surface"),
    Missing(42, "DrawSprites", "as in Surface"),
    Missing(43, "ScrollSprites", "as in Surface"),
    Missing(44, "GetFirstSprite", "as in Surface"),
    Missing(45, "GetLastSprite", "as in Surface"),
    Missing(46, "GetNextSprite", "as in Surface"),
    Missing(47, "GetPrevSprite", "as in Surface"),
    Missing(48, "DeleteSprites", "as in Surface"),
    Drawn(49, "SetAutoBack"),
    Drawn(50, "SetAutoRefresh"),
    Drawn(51, "Refresh"),
    Missing(52, "CaptureScreen", "as in Surface"),
    Missing(53, "CaptureWindow", "as in Surface"),
    Drawn(54, "SetBackgroundColor"),
    Drawn(55, "GetBackgroundColor"),
    Drawn(56, "IsAutoBack"),
    Drawn(57, "IsAutoRefresh"),
    Drawn(58, "EraseRect"),
    Drawn(59, "SetWrapping"),
    Drawn(60, "IsWrapping"),
    Drawn(61, "GetFont"),
    Drawn(62, "Lock"),
    Drawn(63, "Unlock"),
    Drawn(64, "GetStringWidth"),
    Drawn(65, "GetStringHeight"),
    Row(66, "GetX", kMember<&CIWindow::GetX>, "GetX(): left edge of the frame"),
    Row(67, "GetY", kMember<&CIWindow::GetY>, "GetY(): top edge of the frame"),
    Row(68, "GetWidth", kMember<&CIWindow::GetWidth>, "GetWidth(): client width"),
    Row(69, "GetHeight", kMember<&CIWindow::GetHeight>, "GetHeight(): client height"),
    Row(70, "Show", kMember<&CIWindow::Show>, "Show(now): shows it, at the next refresh or now (1)"),
    Row(71, "Hide", kMember<&CIWindow::Hide>, "Hide(now): hides it"),
    Row(72, "IsVisible", kMember<&CIWindow::IsVisible>, "IsVisible(): 1 or 0"),
    Row(73, "SetPosition", kMember<&CIWindow::SetPosition>, "SetPosition(x, y, now): a missing one stays"),
    Row(74, "SetSize", kMember<&CIWindow::SetSize>, "SetSize(w, h, now): client size; a missing one stays"),
    Row(75, "ToBack", kMember<&CIWindow::ToBack>, "ToBack(now): below its siblings"),
    Row(76, "SetTopMost", kMember<&CIWindow::SetTopMost>, "SetTopMost(now): above all windows"),
    Row(77, "Enable", kMember<&CIWindow::Enable>, "Enable(): takes input"),
    Row(78, "Disable", kMember<&CIWindow::Disable>, "Disable(): takes no input"),
    Row(79, "IsEnabled", kMember<&CIWindow::IsEnabled>, "IsEnabled(): 1 or 0"),
    Row(80, "SetText", kMember<&CIWindow::SetText>, "SetText(text): the title"),
    Row(81, "GetText", kMember<&CIWindow::GetText>, "GetText(): the title"),
    Row(82, "ToFront", kMember<&CIWindow::ToFront>, "ToFront(now): above its siblings"),
    Row(83, "GetXMouse", kMember<&CIWindow::GetXMouse>, "GetXMouse(): mouse, client coordinates"),
    Row(84, "GetYMouse", kMember<&CIWindow::GetYMouse>, "GetYMouse(): mouse, client coordinates"),
    Row(85, "SetColor", kMember<&CIWindow::SetColor>, "SetColor(r, g, b) or SetColor(0xRRGGBB): text and pen colour"),
    Row(86, "SetBackColor", kMember<&CIWindow::SetBackColor>, "SetBackColor(r, g, b) or SetBackColor(0xRRGGBB)"),
    Row(87, "GetColor", kMember<&CIWindow::GetColor>, "GetColor(): 0xRRGGBB"),
    Row(88, "GetBackColor", kMember<&CIWindow::GetBackColor>, "GetBackColor(): 0xRRGGBB"),
    Row(89, "SetFont", kMember<&CIWindow::SetFont>, "SetFont(font) or SetFont(face, size)"),
    Row(90, "GetFont", kMember<&CIWindow::GetFont>, "GetFont(): its Font"),
    Row(91, "GetParentWindow", kMember<&CIWindow::GetParentWindow>, "GetParentWindow(): the window that holds it"),
    Row(92, "HasAttribute", kMember<&CIWindow::HasAttribute>, "HasAttribute(constant): 1 or 0"),
    Row(93, "SetPrivateData", kMember<&CIWindow::SetPrivateData>, "SetPrivateData(v): keeps any value"),
    Row(94, "GetPrivateData", kMember<&CIWindow::GetPrivateData>, "GetPrivateData(): the value kept"),
    Row(95, "GetXScreen", kMember<&CIWindow::GetXScreen>, "GetXScreen(x): client to screen"),
    Row(96, "GetYScreen", kMember<&CIWindow::GetYScreen>, "GetYScreen(y): client to screen"),
    Row(97, "GetXWindow", kMember<&CIWindow::GetXWindow>, "GetXWindow(x): screen to client"),
    Row(98, "GetYWindow", kMember<&CIWindow::GetYWindow>, "GetYWindow(y): screen to client"),
    Row(99, "SetFocus", kMember<&CIWindow::SetFocus>, "SetFocus(): takes the keyboard"),
    Row(100, "HasFocus", kMember<&CIWindow::HasFocus>, "HasFocus(): 1 or 0"),
    Refused(101, "OnKeyDown"),
    Refused(102, "OnKeyUp"),
    Row(103, "GetSurface", kMember<&CIWindow::GetSurface>, "GetSurface(): the surface behind the window"),
    Row(104, "SetCursor", kMember<&CIWindow::SetCursor>, "SetCursor(number): one of the cursor constants"),
    Row(105, "Input", kMember<&CIWindow::Input>, "Input(prompt): a line that the person types"),
    OnEvent(106, "OnDblClick", "OnDblClick = f: f(window, x, y, button)"),
    OnEvent(107, "OnSetFocus", "OnSetFocus = f: f(window)"),
    OnEvent(108, "OnKillFocus", "OnKillFocus = f: f(window)"),
    OnEvent(109, "OnClose", "OnClose = f: f(window)"),
    OnEvent(110, "OnSize", "OnSize = f: f(window, width, height)"),
    OnEvent(111, "OnMove", "OnMove = f: f(window, x, y)"),
    OnEvent(112, "OnDisplayChange", "OnDisplayChange = f: f(window, depth, width, height)"),
    OnEvent(113, "OnMinimize", "OnMinimize = f: f(window)"),
    OnEvent(114, "OnMaximize", "OnMaximize = f: f(window)"),
    Row(115, "DoModal", kMember<&CIWindow::DoModal>, "DoModal(): keeps other windows quiet; needs FAKECHILD"),
    Row(116, "EndModal", kMember<&CIWindow::EndModal>, "EndModal(): the contrary"),
    Missing(117, "SetIcon", "SetIcon(surface, size): its icon"),
    Missing(118, "EnableCloseBox", "EnableCloseBox(flag): the box in the caption"),
    Row(119, "SetAutoClose", kMember<&CIWindow::SetAutoClose>, "SetAutoClose(flag): 0 leaves the close to OnClose"),
    Row(120, "Center", kMember<&CIWindow::Center>, "Center(window): onto that window, its parent or the screen"),
    Row(121, "Maximize", kMember<&CIWindow::Maximize>, "Maximize()"),
    Row(122, "IsMaximized", kMember<&CIWindow::IsMaximized>, "IsMaximized(): 1 or 0"),
    Row(123, "Minimize", kMember<&CIWindow::Minimize>, "Minimize()"),
    Row(124, "IsMinimized", kMember<&CIWindow::IsMinimized>, "IsMinimized(): 1 or 0"),
    Row(125, "Restore", kMember<&CIWindow::Restore>, "Restore()"),
    Row(126, "SetMinSize", kMember<&CIWindow::SetMinSize>, "SetMinSize(w, h): smallest outer size"),
    Row(127, "SetMaxSize", kMember<&CIWindow::SetMaxSize>, "SetMaxSize(w, h): largest outer size"),
    Missing(128, "EnableDropFile", "EnableDropFile(flag): files may be dropped on it"),
    OnEvent(129, "OnDropFile", "OnDropFile = f: f(window, name, x, y)"),
    Row(130, "SetFullScreenMode", kMember<&CIWindow::NotOffered>, "refused: error 20"),
    Row(131, "SetWindowedMode", kMember<&CIWindow::NotOffered>, "refused: error 20"),
    OnEvent(132, "OnMouseDown", "OnMouseDown = f: f(window, x, y, button)"),
    OnEvent(133, "OnMouseUp", "OnMouseUp = f: f(window, x, y, button)"),
    OnEvent(134, "OnMouseMove", "OnMouseMove = f: f(window, x, y)"),
    Missing(135, "GetHorizontalScrollBar", "GetHorizontalScrollBar(): of a window made with HSCROLL"),
    Missing(136, "GetVerticalScrollBar", "GetVerticalScrollBar(): of a window made with VSCROLL"),
    Row(137, "BeginMouseCapture", kMember<&CIWindow::BeginMouseCapture>,
        "BeginMouseCapture(): the mouse is this window's"),
    Row(138, "EndMouseCapture", kMember<&CIWindow::EndMouseCapture>, "EndMouseCapture()"),
    Row(139, "HasMouseCapture", kMember<&CIWindow::HasMouseCapture>, "HasMouseCapture(): 1 or 0"),
    Missing(140, "Flash", "Flash(flag): draws attention"),
    Row(141, "GetLeftBorderSize", kMember<&CIWindow::GetLeftBorderSize>, "GetLeftBorderSize(): pixels"),
    Row(142, "GetRightBorderSize", kMember<&CIWindow::GetRightBorderSize>, "GetRightBorderSize(): pixels"),
    Row(143, "GetTopBorderSize", kMember<&CIWindow::GetTopBorderSize>, "GetTopBorderSize(): pixels"),
    Row(144, "GetBottomBorderSize", kMember<&CIWindow::GetBottomBorderSize>, "GetBottomBorderSize(): pixels"),
    OnEvent(145, "OnMouseWheel", "OnMouseWheel = f: f(window, delta)"),
    Missing(146, "SetShape", "SetShape(surface): cuts the window to the pixels that aren't 0"),
    Constant(148, "NOBORDER", 0xDEB20000, "attribute"),
    Constant(149, "TABSTOP", 0xDEB00001, "attribute"),
    Constant(150, "STATICEDGE", 0xDEB10002, "attribute"),
    Constant(151, "VSCROLL", 0xDEB00003, "attribute"),
    Constant(152, "HSCROLL", 0xDEB00004, "attribute"),
    Constant(153, "HIDDEN", 0xDEB20005, "attribute"),
    Constant(154, "BORDER", 0xDEB00006, "attribute"),
    Constant(155, "OKF_SHIFT", 0x1, "key state"),
    Constant(156, "OKF_CONTROL", 0x2, "key state"),
    Constant(157, "OKF_ALT", 0x4, "key state"),
    Constant(158, "GAME", 0xAAD20000, "attribute"),
    Constant(159, "DIALOG", 0xAAD20001, "attribute"),
    Constant(160, "RESIZABLE", 0xAAD20002, "attribute"),
    Constant(161, "TOOL", 0xAAD20003, "attribute"),
    Constant(162, "MESSAGEBOX", 0xAAD20004, "attribute"),
    Constant(163, "STANDARD", 0xAAD20005, "attribute"),
    Constant(164, "MAXIMIZED", 0xAAD20006, "attribute"),
    Constant(165, "NOSURFACE", 0xAAD20007, "attribute"),
    Constant(166, "FAKECHILD", 0xAAD20008, "attribute"),
    Constant(167, "NOSYSMENU", 0xAAD20009, "attribute"),
    Constant(168, "NOCAPTION", 0xAAD2000A, "attribute"),
    Constant(169, "MINIMIZEBOX", 0xAAD2000B, "attribute"),
    Constant(170, "MAXIMIZEBOX", 0xAAD2000C, "attribute"),
    Constant(171, "MINIMIZED", 0xAAD2000D, "attribute"),
    Constant(172, "ARROW", 0x0, "cursor"),
    Constant(173, "CROSS", 0x1, "cursor"),
    Constant(174, "IBEAM", 0x2, "cursor"),
    Constant(175, "NO", 0x3, "cursor"),
    Constant(176, "SIZEALL", 0x4, "cursor"),
    Constant(177, "SIZENESW", 0x5, "cursor"),
    Constant(178, "SIZENS", 0x6, "cursor"),
    Constant(179, "SIZENWSE", 0x7, "cursor"),
    Constant(180, "SIZEWE", 0x8, "cursor"),
    Constant(181, "UPARROW", 0x9, "cursor"),
    Constant(182, "WAIT", 0xA, "cursor"),
    Constant(183, "LEFTBUTTON", 0x89AF0001, "mouse button"),
    Constant(184, "MIDDLEBUTTON", 0x89AF0002, "mouse button"),
    Constant(185, "RIGHTBUTTON", 0x89AF0003, "mouse button"),
};

constexpr uint16_t kFirstSurfaceConstant = 186;

constexpr auto MakeRows() {
  std::array<MemberRow, std::size(kMemberRows) + std::size(kSurfaceConstants)> rows{};
  size_t n = 0;
  for (const MemberRow& row : kMemberRows) rows[n++] = row;
  uint16_t id = kFirstSurfaceConstant;
  for (const SurfaceConstant& c : kSurfaceConstants) {
    rows[n++] = {id++, c.name, MemberKind::Constant, nullptr, c.value, c.globalKind, c.help};
  }
  return rows;
}

constexpr auto kRows = MakeRows();

}  // namespace

const ClassTable kWindowClass = {CLASS_WINDOW, kRows, &CreateObject<CIWindow>,
                                 "A window with a surface behind it; its members are global names for the current one"};

}  // namespace vl

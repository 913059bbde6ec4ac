// The table of the class Window: the members of its surface under the same ids, the common members of windows and
// controls, its own, and the constants of all three.
#include "gfx2d/script/surface_class.h"
#include "gfx2d/script/surface_constants.h"
#include "ui/common_rows.h"
#include "ui/window_class.h"

namespace vl {

namespace {

constexpr uint8_t kGlobal = 0x60;  // the bare name means that member of the current window

constexpr MemberRow Drawn(uint16_t id, const char* name) {
  return {id, name, MemberKind::Member, kMember<&CIWindow::ForwardToSurface>, 0, kGlobal, "as in Surface"};
}
constexpr MemberRow WindowRow(uint16_t id, const char* name, MemberFunction function, const char* help) {
  return {id, name, MemberKind::Member, function, 0, kGlobal, help};
}
constexpr MemberRow OnEvent(uint16_t id, const char* name, const char* help) {
  return {id, name, MemberKind::Event, kMember<&CIWindow::SetEvent>, 0, kGlobal, help};
}

constexpr auto kDrawn = std::to_array<MemberRow>({
    Drawn(1, "Write"),
    Drawn(2, "WriteLn"),
    Drawn(3, "MoveTo"),
    Drawn(4, "Line"),
    Drawn(5, "LineTo"),
    Drawn(6, "Ellipse"),
    Drawn(7, "Rectangle"),
    Drawn(8, "DrawPolygon"),
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
    Drawn(27, "LoadImage"),
    Drawn(28, "SaveImage"),
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
    Drawn(40, "ClearSprites"),
    Drawn(41, "UpdateSprites"),
    Drawn(42, "DrawSprites"),
    Drawn(43, "ScrollSprites"),
    Drawn(44, "GetFirstSprite"),
    Drawn(45, "GetLastSprite"),
    Drawn(46, "GetNextSprite"),
    Drawn(47, "GetPrevSprite"),
    Drawn(48, "DeleteSprites"),
    Drawn(49, "SetAutoBack"),
    Drawn(50, "SetAutoRefresh"),
    Drawn(51, "Refresh"),
    Drawn(52, "CaptureScreen"),
    Drawn(53, "CaptureWindow"),
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
});

constexpr auto kOwnMembers = std::to_array<MemberRow>({
    WindowRow(103, "GetSurface", kMember<&CIWindow::GetSurface>, "GetSurface(): the surface behind the window"),
    WindowRow(104, "SetCursor", kMember<&CIWindow::SetCursor>,
              "SetCursor(number) or SetCursor(picture, mask colour, x, y): the pointer over it"),
    WindowRow(105, "Input", kMember<&CIWindow::Input>, "Input(prompt): a line that the person types"),
    OnEvent(106, "OnDblClick", "OnDblClick = f: f(window, x, y, button)"),
    OnEvent(107, "OnSetFocus", "OnSetFocus = f: f(window)"),
    OnEvent(108, "OnKillFocus", "OnKillFocus = f: f(window)"),
    OnEvent(109, "OnClose", "OnClose = f: f(window)"),
    OnEvent(110, "OnSize", "OnSize = f: f(window, width, height)"),
    OnEvent(111, "OnMove", "OnMove = f: f(window, x, y)"),
    OnEvent(112, "OnDisplayChange", "OnDisplayChange = f: f(window, depth, width, height)"),
    OnEvent(113, "OnMinimize", "OnMinimize = f: f(window)"),
    OnEvent(114, "OnMaximize", "OnMaximize = f: f(window)"),
    WindowRow(115, "DoModal", kMember<&CIWindow::DoModal>, "DoModal(): keeps other windows quiet; needs FAKECHILD"),
    WindowRow(116, "EndModal", kMember<&CIWindow::EndModal>, "EndModal(): the contrary"),
    WindowRow(117, "SetIcon", kMember<&CIWindow::SetIcon>, "SetIcon(surface, size): its icon"),
    WindowRow(118, "EnableCloseBox", kMember<&CIWindow::EnableCloseBox>,
              "EnableCloseBox(flag): the box in the caption"),
    WindowRow(119, "SetAutoClose", kMember<&CIWindow::SetAutoClose>,
              "SetAutoClose(flag): 0 leaves the close to OnClose"),
    WindowRow(120, "Center", kMember<&CIWindow::Center>, "Center(window): onto that window, its parent or the screen"),
    WindowRow(121, "Maximize", kMember<&CIWindow::Maximize>, "Maximize()"),
    WindowRow(122, "IsMaximized", kMember<&CIWindow::IsMaximized>, "IsMaximized(): 1 or 0"),
    WindowRow(123, "Minimize", kMember<&CIWindow::Minimize>, "Minimize()"),
    WindowRow(124, "IsMinimized", kMember<&CIWindow::IsMinimized>, "IsMinimized(): 1 or 0"),
    WindowRow(125, "Restore", kMember<&CIWindow::Restore>, "Restore()"),
    WindowRow(126, "SetMinSize", kMember<&CIWindow::SetMinSize>, "SetMinSize(w, h): smallest outer size"),
    WindowRow(127, "SetMaxSize", kMember<&CIWindow::SetMaxSize>, "SetMaxSize(w, h): largest outer size"),
    WindowRow(128, "EnableDropFile", kMember<&CIWindow::EnableDropFile>,
              "EnableDropFile(flag): files may be dropped on it"),
    OnEvent(129, "OnDropFile", "OnDropFile = f: f(window, name, x, y)"),
    WindowRow(130, "SetFullScreenMode", kMember<&CIWindow::NotOffered>, "refused: error 20"),
    WindowRow(131, "SetWindowedMode", kMember<&CIWindow::NotOffered>, "refused: error 20"),
    OnEvent(132, "OnMouseDown", "OnMouseDown = f: f(window, x, y, button)"),
    OnEvent(133, "OnMouseUp", "OnMouseUp = f: f(window, x, y, button)"),
    OnEvent(134, "OnMouseMove", "OnMouseMove = f: f(window, x, y)"),
    WindowRow(135, "GetHorizontalScrollBar", kMember<&CIWindow::GetHorizontalScrollBar>,
              "GetHorizontalScrollBar(): of a window made with HSCROLL"),
    WindowRow(136, "GetVerticalScrollBar", kMember<&CIWindow::GetVerticalScrollBar>,
              "GetVerticalScrollBar(): of a window made with VSCROLL"),
    WindowRow(137, "BeginMouseCapture", kMember<&CIWindow::BeginMouseCapture>,
              "BeginMouseCapture(): the mouse is this window's"),
    WindowRow(138, "EndMouseCapture", kMember<&CIWindow::EndMouseCapture>, "EndMouseCapture()"),
    WindowRow(139, "HasMouseCapture", kMember<&CIWindow::HasMouseCapture>, "HasMouseCapture(): 1 or 0"),
    WindowRow(140, "Flash", kMember<&CIWindow::Flash>, "Flash(flag): draws attention"),
    WindowRow(141, "GetLeftBorderSize", kMember<&CIWindow::GetLeftBorderSize>, "GetLeftBorderSize(): pixels"),
    WindowRow(142, "GetRightBorderSize", kMember<&CIWindow::GetRightBorderSize>, "GetRightBorderSize(): pixels"),
    WindowRow(143, "GetTopBorderSize", kMember<&CIWindow::GetTopBorderSize>, "GetTopBorderSize(): pixels"),
    WindowRow(144, "GetBottomBorderSize", kMember<&CIWindow::GetBottomBorderSize>, "GetBottomBorderSize(): pixels"),
    OnEvent(145, "OnMouseWheel", "OnMouseWheel = f: f(window, delta)"),
    WindowRow(146, "SetShape", kMember<&CIWindow::SetShape>,
              "SetShape(surface): cuts the window to the pixels that aren't 0"),
});

constexpr auto kOwnConstants = std::to_array<MemberRow>({
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
});

constexpr uint16_t kFirstSurfaceConstant = 186;

constexpr auto kRows = WithSurfaceConstants(
    JoinRows(kDrawn, CommonMembers<CIWindow>(66, kGlobal), kOwnMembers, CommonConstants(148), kOwnConstants),
    kFirstSurfaceConstant);

}  // namespace

const ClassTable kWindowClass = {CLASS_WINDOW, kRows, &CreateObject<CIWindow>,
                                 "A window with a surface behind it; its members are global names for the current one"};

}  // namespace vl

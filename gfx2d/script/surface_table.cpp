// The table of the class Surface.
#include "gfx2d/script/gfx2d_classes.h"
#include "gfx2d/script/surface_class.h"
#include "gfx2d/script/surface_constants.h"

namespace vl {

namespace {

constexpr auto kMemberRows = std::to_array<MemberRow>({
    Row(1, "Write", kMember<&CISurface::Write>, "Write(...): its arguments as one text at the pen"),
    Row(2, "WriteLn", kMember<&CISurface::WriteLn>, "WriteLn(...): a line for each argument"),
    Row(3, "MoveTo", kMember<&CISurface::MoveTo>, "MoveTo(x, y): the pen"),
    Row(4, "Line", kMember<&CISurface::Line>, "Line(x1, y1, x2, y2): a missing one is the pen's"),
    Row(5, "LineTo", kMember<&CISurface::LineTo>, "LineTo(x, y): from the pen"),
    Row(6, "Ellipse", kMember<&CISurface::Ellipse>, "Ellipse(x1, y1, x2, y2): right and bottom excluded"),
    Row(7, "Rectangle", kMember<&CISurface::Rectangle>, "Rectangle(x1, y1, x2, y2): right and bottom excluded"),
    Row(8, "DrawPolygon", kMember<&CISurface::DrawPolygon>,
        "DrawPolygon(...): corners as PointArrays of two dimensions or pairs of numbers"),
    Row(9, "SetPenColor", kMember<&CISurface::SetPenColor>, "SetPenColor(color): 0xRRGGBB"),
    Row(10, "SetFillColor", kMember<&CISurface::SetFillColor>, "SetFillColor(color): without one, no filling"),
    Row(11, "SetFillGradientColor", kMember<&CISurface::SetFillGradientColor>, "SetFillGradientColor(c1, c2)"),
    Row(12, "SetFillGradientDir", kMember<&CISurface::SetFillGradientDir>,
        "SetFillGradientDir(d): 0 left to right, else top to bottom"),
    Row(13, "SetPenGradientColor", kMember<&CISurface::SetPenGradientColor>, "SetPenGradientColor(c1, c2)"),
    Row(14, "SetPenGradientDir", kMember<&CISurface::SetPenGradientDir>, "SetPenGradientDir(d)"),
    Row(15, "SetPenSize", kMember<&CISurface::SetPenSize>, "SetPenSize(n): pixels; 0 for no outline"),
    Row(16, "SetFont", kMember<&CISurface::SetFont>, "SetFont(font) or SetFont(face, size)"),
    Row(17, "SetAntiAlias", kMember<&CISurface::SetAntiAlias>, "SetAntiAlias(flag): soft edges"),
    Row(18, "SetDrawMode", kMember<&CISurface::SetDrawMode>, "SetDrawMode(mode, param)"),
    Row(19, "SetTransparentMode", kMember<&CISurface::SetTransparentMode>,
        "SetTransparentMode(flag): Copy skips pixels of value 0"),
    Row(20, "Fill", kMember<&CISurface::Fill>, "Fill(x, y, tolerance): floods with the fill colour"),
    Row(21, "Rotate", kMember<&CISurface::Rotate>, "Rotate(angle, interpolate): radians"),
    Row(22, "DrawText", kMember<&CISurface::DrawText>, "DrawText(text, x, y, w, h, wrap, tab)"),
    Row(23, "SetPixel", kMember<&CISurface::SetPixel>, "SetPixel(x, y, color)"),
    Row(24, "GetDepth", kMember<&CISurface::GetDepth>, "GetDepth(): bits a pixel"),
    Row(25, "GetPixelWidth", kMember<&CISurface::GetPixelWidth>, "GetPixelWidth(): pixels"),
    Row(26, "GetPixelHeight", kMember<&CISurface::GetPixelHeight>, "GetPixelHeight(): pixels"),
    Row(27, "LoadImage", kMember<&CISurface::LoadImage>,
        "LoadImage(source, x, y, w, h, resample): an element, file or Binary, with flags; 1"),
    Row(28, "SaveImage", kMember<&CISurface::SaveImage>, "SaveImage(name, format): BMP, PNG or JPEG; 1 or 0"),
    Row(29, "GetPixel", kMember<&CISurface::GetPixel>, "GetPixel(x, y): 0xRRGGBB"),
    Row(30, "GetPixelIndex", kMember<&CISurface::GetPixelIndex>, "GetPixelIndex(x, y): depth 8 only"),
    Row(31, "Copy", kMember<&CISurface::Copy>, "Copy(source, x, y, sx, sy, w, h)"),
    Row(32, "Stretch", kMember<&CISurface::Stretch>, "Stretch(source, x, y, w, h, sx, sy, sw, sh)"),
    Row(33, "Scroll", kMember<&CISurface::Scroll>, "Scroll(dx, dy, x, y, w, h): moves a box"),
    Row(34, "ReverseX", kMember<&CISurface::ReverseX>, "ReverseX(x1, y1, x2, y2): mirrors left and right"),
    Row(35, "ReverseY", kMember<&CISurface::ReverseY>, "ReverseY(x1, y1, x2, y2): mirrors top and bottom"),
    Row(36, "ReplaceColor", kMember<&CISurface::ReplaceColor>, "ReplaceColor(from, to)"),
    Row(37, "Clear", kMember<&CISurface::Clear>, "Clear(back, pen): everything as at the start"),
    Row(38, "GetXPos", kMember<&CISurface::GetXPos>, "GetXPos(): the pen"),
    Row(39, "GetYPos", kMember<&CISurface::GetYPos>, "GetYPos(): the pen"),
    Row(40, "ClearSprites", kMember<&CISurface::ClearSprites>,
        "ClearSprites(x1, y1, x2, y2): takes them off; error 36 while SetAutoBack is on"),
    Row(41, "UpdateSprites", kMember<&CISurface::UpdateSprites>,
        "UpdateSprites(): what was set counts; error 36 while SetAutoBack is on"),
    Row(42, "DrawSprites", kMember<&CISurface::DrawSprites>,
        "DrawSprites(): draws those that were taken off or changed; error 36 while SetAutoBack is on"),
    Row(43, "ScrollSprites", kMember<&CISurface::ScrollSprites>,
        "ScrollSprites(dx, dy, layer): moves all, or those of a layer"),
    Row(44, "GetFirstSprite", kMember<&CISurface::GetFirstSprite>, "GetFirstSprite(): the one farthest back, or null"),
    Row(45, "GetLastSprite", kMember<&CISurface::GetLastSprite>, "GetLastSprite(): the one in front, or null"),
    Row(46, "GetNextSprite", kMember<&CISurface::GetNextSprite>,
        "GetNextSprite(sprite): the next one to the front, or null"),
    Row(47, "GetPrevSprite", kMember<&CISurface::GetPrevSprite>,
        "GetPrevSprite(sprite): the next one to the back, or null"),
    Row(48, "DeleteSprites", kMember<&CISurface::DeleteSprites>, "DeleteSprites(): they leave the surface"),
    Row(49, "SetAutoBack", kMember<&CISurface::SetAutoBack>, "SetAutoBack(flag): what lies behind sprites is kept"),
    Row(50, "SetAutoRefresh", kMember<&CISurface::SetAutoRefresh>,
        "SetAutoRefresh(flag): changes are shown by themselves"),
    Row(51, "Refresh", kMember<&CISurface::RefreshNow>, "Refresh(): shows what changed; error 37 while automatic"),
    Row(52, "CaptureScreen", kMember<&CISurface::CaptureScreen>,
        "CaptureScreen(x, y, w, h, dx, dy, dw, dh): the program's own windows on the desktop; 1 or 0"),
    Row(53, "CaptureWindow", kMember<&CISurface::CaptureWindow>,
        "CaptureWindow(window, x, y, w, h, dx, dy, dw, dh): without a window, the current one; 1 or 0"),
    Row(54, "SetBackgroundColor", kMember<&CISurface::SetBackgroundColor>, "SetBackgroundColor(color)"),
    Row(55, "GetBackgroundColor", kMember<&CISurface::GetBackgroundColor>, "GetBackgroundColor(): 0xRRGGBB"),
    Row(56, "IsAutoBack", kMember<&CISurface::IsAutoBack>, "IsAutoBack(): 1 or 0"),
    Row(57, "IsAutoRefresh", kMember<&CISurface::IsAutoRefresh>, "IsAutoRefresh(): 1 or 0"),
    Row(58, "EraseRect", kMember<&CISurface::EraseRect>, "EraseRect(x, y, w, h): filled with the background"),
    Row(59, "SetWrapping", kMember<&CISurface::SetWrapping>, "SetWrapping(flag): Write wraps at the right edge"),
    Row(60, "IsWrapping", kMember<&CISurface::IsWrapping>, "IsWrapping(): 1 or 0"),
    Row(61, "GetFont", kMember<&CISurface::GetFont>, "GetFont(): its Font"),
    Row(62, "Lock", kMember<&CISurface::Lock>, "Lock(x, y, w, h): before a long series of changes"),
    Row(63, "Unlock", kMember<&CISurface::Unlock>, "Unlock()"),
    Row(64, "GetStringWidth", kMember<&CISurface::GetStringWidth>, "GetStringWidth(text): in the screen's points"),
    Row(65, "GetStringHeight", kMember<&CISurface::GetStringHeight>, "GetStringHeight(text): in the screen's points"),
});

constexpr uint16_t kFirstConstant = 67;

constexpr auto kRows = WithSurfaceConstants(kMemberRows, kFirstConstant);

}  // namespace

const ClassTable kSurfaceClass = {
    CLASS_SURFACE, kRows, &CreateObject<CISurface>,
    "A picture to draw on: New Surface(width, height, depth) or New Surface(name, flags)"};

}  // namespace vl

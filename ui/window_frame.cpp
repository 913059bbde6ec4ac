#include "ui/window_frame.h"

#include <algorithm>
#include <string>

#include "base/system_colors.h"

namespace vl {

namespace {

constexpr int kCaptionHeight = 19;  // with the line under it
constexpr int kSmallCaptionHeight = 16;
constexpr int kMenuHeight = 19;
// How far along a side its corners are taken hold of.
constexpr int kCorner = 18;
constexpr int kIconSide = 16;

bool IsDialogFrame(uint32_t exStyle) { return (exStyle & WS_EX_DLGMODALFRAME) != 0; }
bool IsTool(uint32_t exStyle) { return (exStyle & WS_EX_TOOLWINDOW) != 0; }

// Width of the outer frame, without caption and inner edge.
int OuterFrame(uint32_t style, uint32_t exStyle) {
  int width = 0;
  if ((exStyle & (WS_EX_STATICEDGE | WS_EX_DLGMODALFRAME)) == WS_EX_STATICEDGE) {
    width = 1;
  } else if (IsDialogFrame(exStyle) || (style & (WS_THICKFRAME | WS_DLGFRAME))) {
    width = 2;
  }
  if (style & WS_THICKFRAME) ++width;
  if ((style & (WS_BORDER | WS_DLGFRAME)) || IsDialogFrame(exStyle)) ++width;
  return width;
}

int CaptionHeight(uint32_t exStyle) { return IsTool(exStyle) ? kSmallCaptionHeight : kCaptionHeight; }

Rect Inside(const Rect& box, int by) { return {box.left + by, box.top + by, box.right - by, box.bottom - by}; }

void DrawBoxSign(Canvas& canvas, const Rect& box, uint32_t hit, const FrameLook& look) {
  const bool pressed = look.pressedBox == hit;
  canvas.PushButton(box, pressed);
  const int dx = pressed ? 1 : 0;
  const auto sign = [&](int x, int y, int width, std::initializer_list<uint32_t> rows) {
    const bool grey = hit == HTCLOSE && !look.closeEnabled;
    if (grey) {
      canvas.Sign(box.left + x + dx + 1, box.top + y + dx + 1, width, rows, SystemColor(kColorButtonHighlight));
    }
    canvas.Sign(box.left + x + dx, box.top + y + dx, width, rows,
                SystemColor(grey ? kColorGreyText : kColorButtonText));
  };
  switch (hit) {
    case HTCLOSE:
      if (IsTool(look.exStyle)) {
        sign(2, 2, 6, {0x33, 0x1E, 0x0C, 0x1E, 0x33});
      } else {
        sign(4, 3, 8, {0xC3, 0x66, 0x3C, 0x18, 0x3C, 0x66, 0xC3});
      }
      break;
    case HTMINBUTTON:
      if (look.minimized) {
        sign(3, 2, 9, {0x07E, 0x07E, 0x042, 0x1FA, 0x1FA, 0x10E, 0x108, 0x108, 0x1F8});
      } else {
        sign(4, 9, 6, {0x3F, 0x3F});
      }
      break;
    default:
      if (look.maximized) {
        sign(3, 2, 9, {0x07E, 0x07E, 0x042, 0x1FA, 0x1FA, 0x10E, 0x108, 0x108, 0x1F8});
      } else {
        sign(3, 2, 9, {0x1FF, 0x1FF, 0x101, 0x101, 0x101, 0x101, 0x101, 0x101, 0x1FF});
      }
      break;
  }
}

// A small window, for a program that set no icon.
void DrawPlainIcon(Canvas& canvas, int x, int y) {
  canvas.Fill({x + 1, y + 2, x + 15, y + 14}, 0x00FFFFFF);
  canvas.Fill({x + 1, y + 2, x + 15, y + 5}, 0x00800000);
  canvas.Outline({x + 1, y + 2, x + 15, y + 14}, 0x00000000);
}

std::string Fitting(TextFont& font, std::string_view title, int width) {
  if (font.measure(title).width <= width) return std::string(title);
  constexpr std::string_view kDots = "...";
  int left = width - font.measure(kDots).width;
  size_t count = 0;
  while (count < title.size() && (left -= font.advance(static_cast<uint8_t>(title[count]))) >= 0) ++count;
  return left < 0 && count == 0 ? std::string() : std::string(title.substr(0, count)) + std::string(kDots);
}

void DrawCaption(Canvas& canvas, Size outer, const FrameLook& look) {
  const Rect bar = CaptionBox(look.style, look.exStyle, outer);
  canvas.Fill({bar.left, bar.top, bar.right, bar.bottom + 1}, SystemColor(kColorButtonFace));
  canvas.Fill(bar, SystemColor(look.active ? kColorActiveCaption : kColorInactiveCaption));
  int left = bar.left + 2;
  int right = bar.right - 2;
  const bool hasMenu = (look.style & WS_SYSMENU) != 0;
  if (hasMenu && !IsTool(look.exStyle) && !IsDialogFrame(look.exStyle)) {
    const int top = bar.top + (bar.Height() - kIconSide) / 2;
    if (look.icon) {
      canvas.Picture(left, top, kIconSide, kIconSide, look.icon, look.iconOpaque);
    } else {
      DrawPlainIcon(canvas, left, top);
    }
    left += kIconSide + 2;
  }
  for (const uint32_t hit : {HTCLOSE, HTMAXBUTTON, HTMINBUTTON}) {
    const Rect box = CaptionButton(look.style, look.exStyle, outer, hit);
    if (box.IsEmpty()) continue;
    DrawBoxSign(canvas, box, hit, look);
    right = std::min(right, box.left - 2);
  }
  if (!look.font || right <= left) return;
  Canvas within = canvas.Within({left, bar.top, right, bar.bottom});
  within.Text(*look.font, left, bar.top + (bar.Height() - look.font->metrics().height) / 2,
              Fitting(*look.font, look.title, right - left),
              SystemColor(look.active ? kColorCaptionText : kColorInactiveCaptionText));
}

}  // namespace

Rect FrameBorders(uint32_t style, uint32_t exStyle, bool hasMenu) {
  const int outer = OuterFrame(style, exStyle);
  const int inner = exStyle & WS_EX_CLIENTEDGE ? 2 : 0;
  int top = outer + inner;
  if (HasCaption(style)) top += CaptionHeight(exStyle);
  if (hasMenu) top += kMenuHeight;
  return {outer + inner, top, outer + inner, outer + inner};
}

Rect CaptionBox(uint32_t style, uint32_t exStyle, Size outer) {
  const int frame = OuterFrame(style, exStyle);
  return {frame, frame, outer.width - frame, frame + CaptionHeight(exStyle) - 1};
}

Rect CaptionButton(uint32_t style, uint32_t exStyle, Size outer, uint32_t hit) {
  if (!HasCaption(style) || !(style & WS_SYSMENU)) return {};
  const Rect bar = CaptionBox(style, exStyle, outer);
  if (IsTool(exStyle)) {
    const Rect close{bar.right - 13, bar.top + 2, bar.right - 2, bar.bottom - 2};
    return hit == HTCLOSE ? close : Rect{};
  }
  const Rect close{bar.right - 18, bar.top + 2, bar.right - 2, bar.bottom - 2};
  if (hit == HTCLOSE) return close;
  const bool hasBoxes = (style & (WS_MINIMIZEBOX | WS_MAXIMIZEBOX)) != 0 && !IsDialogFrame(exStyle);
  if (!hasBoxes) return {};
  const Rect maximize{close.left - 18, close.top, close.left - 2, close.bottom};
  if (hit == HTMAXBUTTON) return (style & WS_MAXIMIZEBOX) ? maximize : Rect{};
  if (!(style & WS_MINIMIZEBOX)) return {};
  const int right = (style & WS_MAXIMIZEBOX) ? maximize.left : close.left - 2;
  return {right - 16, close.top, right, close.bottom};
}

uint32_t HitTestFrame(uint32_t style, uint32_t exStyle, Size outer, Point at) {
  if (!Rect{0, 0, outer.width, outer.height}.Contains(at.x, at.y)) return HTNOWHERE;
  const Rect borders = FrameBorders(style, exStyle, false);
  const int frame = OuterFrame(style, exStyle);
  if (!Inside({0, 0, outer.width, outer.height}, frame).Contains(at.x, at.y)) {
    if (!(style & WS_THICKFRAME)) return HTBORDER;
    const bool left = at.x < frame;
    const bool right = at.x >= outer.width - frame;
    const bool top = at.y < frame;
    const bool bottom = at.y >= outer.height - frame;
    const bool nearLeft = at.x < kCorner;
    const bool nearRight = at.x >= outer.width - kCorner;
    const bool nearTop = at.y < kCorner;
    const bool nearBottom = at.y >= outer.height - kCorner;
    if ((top && nearLeft) || (left && nearTop)) return HTTOPLEFT;
    if ((top && nearRight) || (right && nearTop)) return HTTOPRIGHT;
    if ((bottom && nearLeft) || (left && nearBottom)) return HTBOTTOMLEFT;
    if ((bottom && nearRight) || (right && nearBottom)) return HTBOTTOMRIGHT;
    return left ? HTLEFT : right ? HTRIGHT : top ? HTTOP : HTBOTTOM;
  }
  if (HasCaption(style) && at.y < frame + CaptionHeight(exStyle)) {
    for (const uint32_t hit : {HTCLOSE, HTMAXBUTTON, HTMINBUTTON}) {
      if (CaptionButton(style, exStyle, outer, hit).Contains(at.x, at.y)) return hit;
    }
    const bool hasIcon = (style & WS_SYSMENU) && !IsTool(exStyle) && !IsDialogFrame(exStyle);
    return hasIcon && at.x < frame + kIconSide + 4 ? HTSYSMENU : HTCAPTION;
  }
  const Rect client{borders.left, borders.top, outer.width - borders.right, outer.height - borders.bottom};
  return client.Contains(at.x, at.y) ? HTCLIENT : HTBORDER;
}

void DrawWindowFrame(Canvas& canvas, Size outer, const FrameLook& look) {
  Rect box{0, 0, outer.width, outer.height};
  const int frame = OuterFrame(look.style, look.exStyle);
  if ((look.exStyle & (WS_EX_STATICEDGE | WS_EX_DLGMODALFRAME)) == WS_EX_STATICEDGE) {
    canvas.Edge(box, SystemColor(kColorButtonShadow), SystemColor(kColorButtonHighlight));
    box = Inside(box, 1);
  } else if (IsDialogFrame(look.exStyle) || (look.style & (WS_THICKFRAME | WS_DLGFRAME))) {
    canvas.RaisedFrame(box);
    box = Inside(box, 2);
  }
  const bool plain = frame == 1 && (look.style & WS_BORDER) && !(look.exStyle & WS_EX_STATICEDGE);
  const uint32_t border = plain ? kColorWindowFrame : look.active ? kColorActiveBorder : kColorInactiveBorder;
  for (; box.left < frame && !box.IsEmpty(); box = Inside(box, 1)) canvas.Outline(box, SystemColor(border));
  if (HasCaption(look.style)) {
    DrawCaption(canvas, outer, look);
    box.top += CaptionHeight(look.exStyle);
  }
  if (look.exStyle & WS_EX_CLIENTEDGE) canvas.SunkenFrame(box);
}

}  // namespace vl

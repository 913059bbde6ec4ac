// WindowTree: what a pressed mouse button holds on to: a caption, a side of a frame, a box in a caption, a scroll
// bar. The program runs on meanwhile; each movement is followed as it comes.
#include <algorithm>

#include "ui/window_frame.h"
#include "ui/window_tree.h"

namespace vl {

namespace {

constexpr uint32_t kFirstRepeatMs = 250;
constexpr uint32_t kNextRepeatMs = 50;

constexpr uint32_t CodeOf(BarPart part) {
  switch (part) {
    case BarPart::LineBack:
      return SB_LINEUP;
    case BarPart::LineForward:
      return SB_LINEDOWN;
    case BarPart::PageBack:
      return SB_PAGEUP;
    case BarPart::PageForward:
      return SB_PAGEDOWN;
    default:
      return SB_ENDSCROLL;
  }
}

}  // namespace

int32_t WindowTree::PressFrame(WindowHandle window, uint32_t hit, bool twice) {
  WindowNode* node = Find(window);
  if (!node) return 0;
  const bool canMaximize = (node->style & WS_MAXIMIZEBOX) && HasCaption(node->style);
  switch (hit) {
    case HTCAPTION:
      if (!twice) {
        if (!node->maximized) Send(window, WM_SYSCOMMAND, SC_MOVE | uint32_t{HTCAPTION});
      } else if (node->minimized || node->maximized) {
        Send(window, WM_SYSCOMMAND, SC_RESTORE);
      } else if (canMaximize) {
        Send(window, WM_SYSCOMMAND, SC_MAXIMIZE);
      }
      return 0;
    case HTSYSMENU:
      if (twice && node->closeEnabled) Send(window, WM_SYSCOMMAND, SC_CLOSE);
      return 0;
    case HTCLOSE:
      if (node->closeEnabled) BeginTrack(window, TrackKind::Box, hit);
      return 0;
    case HTMINBUTTON:
    case HTMAXBUTTON:
      BeginTrack(window, TrackKind::Box, hit);
      return 0;
    case HTHSCROLL:
    case HTVSCROLL: {
      const Point origin = ClientOrigin(window);
      TrackBar(window, hit == HTHSCROLL ? SB_HORZ : SB_VERT, {mouse_.x - origin.x, mouse_.y - origin.y});
      return 0;
    }
    default:
      if (hit >= HTLEFT && hit <= HTBOTTOMRIGHT && !node->minimized && !node->maximized) {
        Send(window, WM_SYSCOMMAND, SC_SIZE | (hit - HTLEFT + WMSZ_LEFT));
      }
      return 0;
  }
}

void WindowTree::BeginTrack(WindowHandle window, TrackKind kind, uint32_t hit) {
  WindowNode* node = Find(window);
  if (!node || node->isHost) return;
  track_ = Track{};
  track_.kind = kind;
  track_.window = window;
  track_.hit = hit;
  track_.start = mouse_;
  track_.outer = OuterBox(*node);
  if (kind == TrackKind::Box) RedrawFrame(window);
}

void WindowTree::TrackBar(WindowHandle window, BarKind kind, Point client) {
  WindowNode* node = Find(window);
  if (!node) return;
  const Point at = node->ClientInPicture();
  const ScrollBarLayout layout{BarBox(*node, kind), kind == SB_CTL ? (node->style & 1) != 0 : kind == SB_VERT};
  const ScrollInfo& info = node->bars[kind];
  if (!info.HasRange() || (kind == SB_CTL && !node->barEnabled)) return;
  const Point point{client.x + at.x, client.y + at.y};
  const BarPart part = layout.PartAt(info, point);
  if (part == BarPart::None) return;
  BeginTrack(window, TrackKind::Bar, 0);
  if (track_.kind != TrackKind::Bar) {
    // The host's window has bars too.
    track_ = Track{};
    track_.kind = TrackKind::Bar;
    track_.window = window;
    track_.start = mouse_;
  }
  track_.bar = kind;
  track_.part = part;
  track_.position = info.position;
  const Rect thumb = layout.PartBox(info, BarPart::Thumb);
  track_.grip = layout.vertical ? point.y - thumb.top : point.x - thumb.left;
  RedrawFrame(window);
  if (part == BarPart::Thumb) return;
  track_.repeatMs = services_.clock->nowMs() + kFirstRepeatMs;
  SendScroll(CodeOf(part), 0);
}

void WindowTree::SendScroll(uint32_t code, int32_t position) {
  const WindowNode* node = Find(track_.window);
  if (!node) return;
  const bool isControl = track_.bar == SB_CTL;
  const bool vertical = isControl ? (node->style & 1) != 0 : track_.bar == SB_VERT;
  // The position has 16 bits in a message, as it always had.
  const uint32_t wParam = static_cast<uint32_t>(position) << 16 | code;
  const WindowHandle window = node->handle;
  if (isControl) {
    Send(node->parent, vertical ? WM_VSCROLL : WM_HSCROLL, wParam, static_cast<int32_t>(window));
  } else {
    Send(window, vertical ? WM_VSCROLL : WM_HSCROLL, wParam, 0);
  }
}

void WindowTree::RepeatBar() {
  track_.repeatMs = services_.clock->nowMs() + kNextRepeatMs;
  WindowNode* node = Find(track_.window);
  if (!node || !track_.inside) return;
  if (track_.part == BarPart::PageBack || track_.part == BarPart::PageForward) {
    // It stops where the thumb has come under the mouse.
    const ScrollBarLayout layout{BarBox(*node, track_.bar),
                                 track_.bar == SB_CTL ? (node->style & 1) != 0 : track_.bar == SB_VERT};
    const Point origin = ClientOrigin(track_.window);
    const Point at = node->ClientInPicture();
    const Point mouse{mouse_.x - origin.x + at.x, mouse_.y - origin.y + at.y};
    if (layout.PartAt(node->bars[track_.bar], mouse) != track_.part) return;
  }
  SendScroll(CodeOf(track_.part), 0);
}

void WindowTree::DragBar(Point mouse) {
  WindowNode* node = Find(track_.window);
  const Point origin = ClientOrigin(track_.window);
  const Point at = node->ClientInPicture();
  const Point point{mouse.x - origin.x + at.x, mouse.y - origin.y + at.y};
  const ScrollBarLayout layout{BarBox(*node, track_.bar),
                               track_.bar == SB_CTL ? (node->style & 1) != 0 : track_.bar == SB_VERT};
  const ScrollInfo& info = node->bars[track_.bar];
  if (track_.part == BarPart::Thumb) {
    const Rect track = layout.PartBox(info, BarPart::None);
    const int along = layout.vertical ? point.y - track.top : point.x - track.left;
    const int32_t position = layout.PositionAt(info, along - track_.grip);
    if (position == track_.position) return;
    track_.position = position;
    SendScroll(SB_THUMBTRACK, position);
    return;
  }
  const bool inside = layout.PartBox(info, track_.part).Contains(point.x, point.y);
  if (inside == track_.inside) return;
  track_.inside = inside;
  RedrawFrame(track_.window);
}

// A caption moves its window, a side its size.
void WindowTree::DragFrame() {
  const WindowHandle window = track_.window;
  const int dx = mouse_.x - track_.start.x;
  const int dy = mouse_.y - track_.start.y;
  Rect box = track_.outer;
  if (track_.kind == TrackKind::Move) {
    SetPosition(window, 0, box.left + dx, box.top + dy, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    return;
  }
  const uint32_t edge = track_.hit - HTLEFT + WMSZ_LEFT;
  const bool left = edge == WMSZ_LEFT || edge == WMSZ_TOPLEFT || edge == WMSZ_BOTTOMLEFT;
  const bool right = edge == WMSZ_RIGHT || edge == WMSZ_TOPRIGHT || edge == WMSZ_BOTTOMRIGHT;
  const bool top = edge == WMSZ_TOP || edge == WMSZ_TOPLEFT || edge == WMSZ_TOPRIGHT;
  const bool bottom = edge == WMSZ_BOTTOM || edge == WMSZ_BOTTOMLEFT || edge == WMSZ_BOTTOMRIGHT;
  const WindowNode* node = Find(window);
  const Rect& b = node->borders;
  const int leastWidth = std::max(HasCaption(node->style) ? kMinimumTrack.width : 0, b.left + b.right);
  const int leastHeight = std::max(HasCaption(node->style) ? kMinimumTrack.height : 0, b.top + b.bottom);
  if (left) box.left = std::min(box.left + dx, box.right - leastWidth);
  if (right) box.right = std::max(box.right + dx, box.left + leastWidth);
  if (top) box.top = std::min(box.top + dy, box.bottom - leastHeight);
  if (bottom) box.bottom = std::max(box.bottom + dy, box.top + leastHeight);
  sizingBox = box;
  Send(window, WM_SIZING, edge);
  SetPosition(window, 0, sizingBox.left, sizingBox.top, sizingBox.Width(), sizingBox.Height(),
              SWP_NOZORDER | SWP_NOACTIVATE);
}

bool WindowTree::FollowTrack(const Event& event) {
  if (track_.kind == TrackKind::None) return false;
  WindowNode* node = Find(track_.window);
  if (!node) {
    track_ = Track{};
    return false;
  }
  if (event.type == EventType::MouseUp && event.code == kMouseLeft) {
    EndTrack();
    return true;
  }
  if (event.type != EventType::MouseMove) return event.type != EventType::MouseWheel;
  switch (track_.kind) {
    case TrackKind::Move:
    case TrackKind::Size:
      DragFrame();
      break;
    case TrackKind::Bar:
      DragBar(mouse_);
      break;
    default: {
      const bool inside = HitCodeAt(*node, mouse_) == track_.hit;
      if (inside != track_.inside) {
        track_.inside = inside;
        RedrawFrame(track_.window);
      }
      break;
    }
  }
  return true;
}

void WindowTree::EndTrack() {
  const Track ended = track_;
  if (ended.kind == TrackKind::Bar) {
    if (ended.part == BarPart::Thumb) SendScroll(SB_THUMBPOSITION, ended.position);
    SendScroll(SB_ENDSCROLL, 0);
    track_ = Track{};
    RedrawFrame(ended.window);
    return;
  }
  track_ = Track{};
  if (ended.kind != TrackKind::Box) return;
  RedrawFrame(ended.window);
  WindowNode* node = Find(ended.window);
  if (!node || HitCodeAt(*node, mouse_) != ended.hit) return;
  uint32_t command = SC_CLOSE;
  if (ended.hit == HTMINBUTTON) command = node->minimized ? SC_RESTORE : SC_MINIMIZE;
  if (ended.hit == HTMAXBUTTON) command = node->maximized ? SC_RESTORE : SC_MAXIMIZE;
  Send(ended.window, WM_SYSCOMMAND, command);
}

}  // namespace vl

// WindowTree: what windows paint, their frames and bars, and how all of it becomes what is on the screen.
#include <algorithm>

#include "base/limits.h"
#include "base/system_colors.h"
#include "gfx2d/colour.h"
#include "gfx2d/present.h"
#include "ui/canvas.h"
#include "ui/window_frame.h"
#include "ui/window_tree.h"

namespace vl {

namespace {

constexpr uint32_t kDesktopColor = 1;
constexpr uint32_t kPageWord = 0xFFFFFF;  // what lies behind the host's window
constexpr int kCaptionFontHeight = -11;

uint32_t WordOf(uint32_t colour) { return SwapRedBlue(colour) & 0xFFFFFF; }

Rect Moved(const Rect& box, Point by) { return {box.left + by.x, box.top + by.y, box.right + by.x, box.bottom + by.y}; }

Rect Whole(Size size) { return {0, 0, size.width, size.height}; }

size_t PixelsOf(Size size) { return static_cast<size_t>(size.width) * static_cast<size_t>(size.height); }

struct Words {
  const std::vector<uint32_t>& words;
  Size size;
};

// Copies what `clip` has of a picture that lies at `at`.
void CopyWords(const Words& from, Point at, const Rect& clip, std::vector<uint32_t>& to, Size toSize) {
  const Rect box = Moved(Whole(from.size), at).Intersect(clip).Intersect(Whole(toSize));
  for (int y = box.top; y < box.bottom && box.left < box.right; ++y) {
    const uint32_t* source = from.words.data() + ptrdiff_t{y - at.y} * from.size.width + (box.left - at.x);
    std::copy_n(source, box.Width(), to.data() + ptrdiff_t{y} * toSize.width + box.left);
  }
}

}  // namespace

bool WindowNode::Shows(int pictureX, int pictureY) const {
  if (!isShaped) return true;
  const int sx = pictureX + (drawsFrame ? 0 : borders.left);
  const int sy = pictureY + (drawsFrame ? 0 : borders.top);
  return Whole(shapeSize).Contains(sx, sy) &&
         shapeMask[static_cast<size_t>(sy) * static_cast<size_t>(shapeSize.width) + static_cast<size_t>(sx)] != 0;
}

// --- Pictures ---

void WindowTree::DropPictures(WindowNode& node) {
  pixels_ -= static_cast<int64_t>(node.picture.size());
  node.picture = {};
  node.screen = {};
  node.pictureSize = node.screenSize = {};
}

bool WindowTree::EnsurePicture(WindowNode& node) {
  const Size size = node.PictureSize();
  if (node.pictureSize != size) {
    const auto pixels = static_cast<int64_t>(PixelsOf(size));
    if (pixels_ - static_cast<int64_t>(node.picture.size()) + pixels > limits::kMaxWindowPixels) {
      DropPictures(node);
      return false;
    }
    std::vector<uint32_t> picture(PixelsOf(size), WordOf(node.backColour));
    CopyWords({node.picture, node.pictureSize}, {}, Whole(size), picture, size);
    pixels_ += pixels - static_cast<int64_t>(node.picture.size());
    node.picture = std::move(picture);
    node.pictureSize = size;
    node.frameDirty = true;
  }
  if (node.frameDirty) DrawFrame(node);
  return size.width > 0 && size.height > 0;
}

Rect WindowTree::BarBox(const WindowNode& node, BarKind kind) const {
  const Point at = node.ClientInPicture();
  if (kind == SB_CTL) return {at.x, at.y, at.x + node.width, at.y + node.height};
  if (kind == SB_HORZ) return {at.x, at.y + node.height, at.x + node.width, at.y + node.height + node.BarWidth(kind)};
  return {at.x + node.width, at.y, at.x + node.width + node.BarWidth(kind), at.y + node.height};
}

// The frame, bars and the corner between them.
void WindowTree::DrawFrame(WindowNode& node) {
  node.frameDirty = false;
  if (node.picture.empty()) return;
  Canvas canvas(node.picture.data(), node.pictureSize.width, Whole(node.pictureSize));
  std::shared_ptr<TextFont> font;
  if (node.drawsFrame) {
    FrameLook look;
    look.style = node.style;
    look.exStyle = node.exStyle;
    look.active = node.active;
    look.maximized = node.maximized;
    look.minimized = node.minimized;
    look.closeEnabled = node.closeEnabled;
    look.title = node.text;
    if (track_.kind == TrackKind::Box && track_.window == node.handle && track_.inside) look.pressedBox = track_.hit;
    std::vector<uint8_t> opaque;
    if (node.icon) {
      opaque.reserve(node.icon->words.size());
      for (const uint32_t word : node.icon->words) opaque.push_back(word >> 24 ? 1 : 0);
      look.icon = node.icon->words.data();
      look.iconOpaque = opaque.data();
    }
    if (HasCaption(node.style) && services_.text && !node.text.empty()) {
      FontDescription description;
      description.height = kCaptionFontHeight;
      description.weight = 700;
      font = services_.text->openFont(description);
      look.font = font.get();
    }
    DrawWindowFrame(canvas, node.Outer(), look);
  }
  for (const BarKind kind : {SB_HORZ, SB_VERT}) {
    if (!node.HasBar(kind)) continue;
    ScrollBarLayout{BarBox(node, kind), kind == SB_VERT}.Draw(canvas, node.bars[kind], true,
                                                              PressedPart(node.handle, kind));
  }
  if (node.HasBar(SB_HORZ) && node.HasBar(SB_VERT)) {
    const Rect across = BarBox(node, SB_HORZ);
    canvas.Fill({across.right, across.top, across.right + node.BarWidth(SB_VERT), across.bottom},
                SystemColor(kColorButtonFace));
  }
}

void WindowTree::RedrawFrame(WindowHandle window) {
  WindowNode* node = Find(window);
  if (!node) return;
  node->frameDirty = true;
  if (track_.kind == TrackKind::Bar && track_.bar == SB_CTL && track_.window == window) Invalidate(window);
  DamageOuter(*node);
}

void WindowTree::SetScrollInfo(WindowHandle window, BarKind kind, const ScrollInfo& info) {
  WindowNode* node = Find(window);
  if (!node) return;
  node->bars[kind] = info;
  if (kind == SB_CTL) {
    Invalidate(window);
  } else {
    RedrawFrame(window);
  }
}

// --- Painting ---

void WindowTree::Invalidate(WindowHandle window) {
  WindowNode* node = Find(window);
  if (!node || !node->visible) return;
  node->update = Rect{0, 0, node->width, node->height};
  node->erase = true;
  mayPaint_ = true;
}

Rect WindowTree::BeginPaint(WindowHandle window, bool mayErase) {
  WindowNode* node = Find(window);
  if (!node) return {};
  const Rect box = node->update;
  if (node->erase && mayErase) Send(window, WM_ERASEBKGND);
  node = Find(window);
  if (!node) return {};
  node->erase = false;
  node->update = Rect{};
  return box.Intersect({0, 0, node->width, node->height});
}

void WindowTree::Paint(WindowHandle window, const cSurface& surface, std::span<const Rect> dirty) {
  WindowNode* node = Find(window);
  if (!node || !IsVisible(window) || !EnsurePicture(*node)) return;
  const Rect painted =
      Rect{0, 0, node->width, node->height}.Intersect(Rect{0, 0, surface.impl->width, surface.impl->height});
  const Point at = node->ClientInPicture();
  std::vector<Rect> targets;
  for (const Rect& rect : dirty) {
    const Rect box = rect.Intersect(painted);
    if (box.IsEmpty()) continue;
    const Rect target = Moved(box, at);
    SurfaceToWords(*surface.impl, box,
                   node->picture.data() + ptrdiff_t{target.top} * node->pictureSize.width + target.left,
                   node->pictureSize.width);
    targets.push_back(target);
  }
  Damage(window, targets);
}

void WindowTree::PaintWith(WindowHandle window, const Rect& box, const std::function<void(Canvas&)>& draw) {
  WindowNode* node = Find(window);
  if (!node || !IsVisible(window) || !EnsurePicture(*node)) return;
  const Point at = node->ClientInPicture();
  const Rect clip = Moved(box.Intersect({0, 0, node->width, node->height}), at);
  if (clip.IsEmpty()) return;
  Canvas canvas(node->picture.data(), node->pictureSize.width, clip);
  draw(canvas);
  Damage(window, clip);
}

void WindowTree::FillBackground(WindowHandle window, const Rect& box, uint32_t colour) {
  PaintWith(window, box, [&](Canvas& canvas) { canvas.Fill(canvas.Clip(), colour); });
}

// --- The screen ---

bool WindowTree::VisibleBox(WindowHandle window, WindowHandle& top, Point& offset, Rect& box) {
  WindowNode* node = Find(window);
  offset = Point{};
  for (; node; node = Find(node->parent)) {
    if (!node->visible) return false;
    top = node->handle;
    WindowNode* parent = Find(node->parent);
    if (!parent) break;
    const Point client = parent->ClientInPicture();
    offset.x += node->x + client.x;
    offset.y += node->y + client.y;
    // `box` stays in the first window's picture; each parent's client area cuts it.
    const Rect area{client.x, client.y, client.x + parent->width, client.y + parent->height};
    box = box.Intersect(Moved(area, {-offset.x, -offset.y}));
  }
  return node && !box.IsEmpty();
}

void WindowTree::Damage(WindowHandle window, std::span<const Rect> boxes) {
  WindowNode* node = Find(window);
  if (!node) return;
  WindowHandle topHandle = 0;
  Point offset;
  Rect seen = Whole(node->PictureSize());
  if (!VisibleBox(window, topHandle, offset, seen)) return;
  WindowNode& top = *Find(topHandle);
  if (!EnsurePicture(top)) return;
  std::vector<Rect> shown;
  const std::vector<uint32_t>* words = &top.picture;
  for (const Rect& rect : boxes) {
    const Rect box = Moved(rect.Intersect(seen), offset);
    if (box.IsEmpty()) continue;
    words = &ScreenPicture(top, box);
    shown.push_back(box);
  }
  if (shown.empty()) return;
  services_.windows->present(top.native, words->data(), top.pictureSize.width, top.pictureSize.height,
                             top.pictureSize.width, shown);
}

void WindowTree::DamageOuter(WindowNode& node) {
  if (node.visible) Damage(node.handle, Whole(node.PictureSize()));
}

void WindowTree::DamageParent(WindowHandle parent, const Rect& outer) {
  if (const WindowNode* node = Find(parent)) Damage(parent, Moved(outer, node->ClientInPicture()));
}

bool WindowTree::NeedsComposing(WindowNode& top) {
  if (top.isHost && top.isShaped) return true;
  return std::any_of(top.children.begin(), top.children.end(),
                     [&](WindowHandle child) { return Find(child)->visible; });
}

void WindowTree::Compose(WindowNode& node, Point at, const Rect& clip, std::vector<uint32_t>& out, Size size) {
  const Rect own = Moved(Whole(node.PictureSize()), at).Intersect(clip);
  if (own.IsEmpty() || !EnsurePicture(node)) return;
  // What a shape cuts off, it cuts off the children too: put aside what lies below and bring it back there.
  const bool cut = node.isShaped && (node.parent || node.isHost);
  std::vector<uint32_t> below;
  const Size belowSize{own.Width(), own.Height()};
  if (cut) {
    below.assign(PixelsOf(belowSize), kPageWord);
    if (node.parent) CopyWords({out, size}, {-own.left, -own.top}, Whole(belowSize), below, belowSize);
  }
  CopyWords({node.picture, node.pictureSize}, at, clip, out, size);
  const Point client = node.ClientInPicture();
  const Rect area =
      Rect{at.x + client.x, at.y + client.y, at.x + client.x + node.width, at.y + client.y + node.height}.Intersect(
          clip);
  for (auto it = node.children.rbegin(); it != node.children.rend() && !area.IsEmpty(); ++it) {
    WindowNode* child = Find(*it);
    if (child->visible) Compose(*child, {at.x + client.x + child->x, at.y + client.y + child->y}, area, out, size);
  }
  if (!cut) return;
  for (int y = own.top; y < own.bottom; ++y) {
    for (int x = own.left; x < own.right; ++x) {
      if (node.Shows(x - at.x, y - at.y)) continue;
      out[static_cast<size_t>(y) * static_cast<size_t>(size.width) + static_cast<size_t>(x)] =
          below[static_cast<size_t>(y - own.top) * static_cast<size_t>(belowSize.width) +
                static_cast<size_t>(x - own.left)];
    }
  }
}

const std::vector<uint32_t>& WindowTree::ScreenPicture(WindowNode& top, const Rect& box) {
  if (!NeedsComposing(top)) {
    top.screen = {};
    top.screenSize = {};
    return top.picture;
  }
  if (top.screenSize != top.pictureSize) {
    top.screen.assign(PixelsOf(top.pictureSize), 0);
    top.screenSize = top.pictureSize;
    Compose(top, {}, Whole(top.pictureSize), top.screen, top.screenSize);
  } else if (!box.IsEmpty()) {
    Compose(top, {}, box, top.screen, top.screenSize);
  }
  return top.screen;
}

// --- Shapes ---

void WindowTree::SetShape(WindowHandle window, std::vector<Rect> boxes) {
  WindowNode* node = Find(window);
  if (!node) return;
  Size size;
  for (const Rect& box : boxes) {
    size.width = std::clamp(box.right, size.width, limits::kMaxSurfaceSide);
    size.height = std::clamp(box.bottom, size.height, limits::kMaxSurfaceSide);
  }
  node->isShaped = true;
  node->shapeSize = size;
  node->shapeMask.assign(PixelsOf(size), 0);
  for (const Rect& rect : boxes) {
    const Rect box = rect.Intersect(Whole(size));
    for (int y = std::max(box.top, 0); y < box.bottom; ++y) {
      uint8_t* line = node->shapeMask.data() + static_cast<size_t>(y) * static_cast<size_t>(size.width);
      if (box.left >= 0 && box.left < box.right) std::fill(line + box.left, line + box.right, uint8_t{1});
    }
  }
  if (node->native && !node->isHost) {
    const Point by = node->drawsFrame ? Point{} : Point{-node->borders.left, -node->borders.top};
    std::vector<Rect> inClient;
    inClient.reserve(boxes.size());
    for (const Rect& box : boxes) inClient.push_back(Moved(box, by));
    services_.windows->setShape(node->native, &inClient);
  }
  node->shape = std::move(boxes);
  // Where the window was cut before something else may show now, and the contrary.
  if (!node->visible) return;
  if (node->parent) {
    DamageParent(node->parent, OuterBox(*node));
  } else {
    DamageOuter(*node);
  }
}

// --- Capture ---

namespace {

bool MakePicture(CapturedPicture& picture, int width, int height, uint32_t word) {
  if (width < 1 || height < 1) return false;
  picture.size = {width, height};
  picture.words.assign(PixelsOf(picture.size), word);
  return true;
}

}  // namespace

bool WindowTree::CaptureClient(WindowHandle window, CapturedPicture& picture) {
  WindowNode* node = Find(window);
  if (!node) return false;
  const Point client = node->ClientInPicture();
  Rect box{client.x, client.y, client.x + node->width, client.y + node->height};
  WindowHandle topHandle = 0;
  Point offset;
  if (!VisibleBox(window, topHandle, offset, box)) return false;
  WindowNode& top = *Find(topHandle);
  if (!EnsurePicture(top) || !MakePicture(picture, node->width, node->height, WordOf(node->backColour))) return false;
  CopyWords({ScreenPicture(top, Rect{}), top.pictureSize}, {-offset.x - client.x, -offset.y - client.y},
            Moved(box, {-client.x, -client.y}), picture.words, picture.size);
  return true;
}

bool WindowTree::CaptureScreen(CapturedPicture& picture) {
  const ScreenInfo screen = Screen();
  if (!MakePicture(picture, screen.width, screen.height, WordOf(SystemColor(kDesktopColor)))) return false;
  for (auto it = topLevels_.rbegin(); it != topLevels_.rend(); ++it) {
    WindowNode& top = *Find(*it);
    if (!top.visible || top.minimized || !EnsurePicture(top)) continue;
    const Point at = PictureOrigin(top);
    const std::vector<uint32_t>& words = ScreenPicture(top, Rect{});
    if (!top.isShaped) {
      CopyWords({words, top.pictureSize}, at, Whole(picture.size), picture.words, picture.size);
      continue;
    }
    for (int y = 0; y < top.pictureSize.height; ++y) {
      for (int x = 0; x < top.pictureSize.width; ++x) {
        if (!top.Shows(x, y) || !Whole(picture.size).Contains(at.x + x, at.y + y)) continue;
        picture.words[static_cast<size_t>(at.y + y) * static_cast<size_t>(picture.size.width) +
                      static_cast<size_t>(at.x + x)] =
            words[static_cast<size_t>(y) * static_cast<size_t>(top.pictureSize.width) + static_cast<size_t>(x)];
      }
    }
  }
  return true;
}

}  // namespace vl

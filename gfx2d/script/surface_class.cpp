// Surface: construction, drawing state, refresh. Drawing members are in surface_draw.cpp, text in
// surface_text_layout.cpp.
#include "gfx2d/script/surface_class.h"

#include "gfx2d/colour.h"
#include "gfx2d/images/stored_palette.h"
#include "gfx2d/script/graphics.h"
#include "gfx2d/script/sprite_class.h"
#include "gfx2d/script/surface_constants.h"
#include "host/appfile/app_file.h"

namespace vl {

namespace {

constexpr int kDefaultWidth = 640;
constexpr int kDefaultHeight = 480;
constexpr uint32_t kWhite = 0xFFFFFF;
constexpr int32_t kFillNone = 0;
constexpr int32_t kFillSolid = 4;
constexpr int32_t kGradient = 5;
constexpr int32_t kLastDrawMode = 9;

}  // namespace

namespace {

// What a window of depth 8 shows its pixels in, when the application brings colours of its own.
void TakeApplicationPalette(CInterpretor& interpreter, cSurface& surface) {
  if (surface.impl->depth != 8 || !interpreter.app || !interpreter.app->paletteInUse) return;
  surface.impl->SetPaletteRecord(RecordOf(interpreter.app->palette), false);
}

}  // namespace

CISurface::CISurface(CInterpretor& interpreter)
    : CIBaseClassImpl(interpreter, CLASS_SURFACE, Listing::Listed),
      CIFontContainer(interpreter),
      CIRefresh(interpreter, false) {}

CISurface* CISurface::CreateForWindow(CInterpretor& interpreter, CSurfaceHost& host, int width, int height, int depth) {
  auto* object = new CISurface(interpreter);
  if (!object->CreateSurface(width, height, depth ? depth : CGraphics::Of(interpreter).screenDepth)) {
    interpreter.DestroyObject(object, true);
    return nullptr;
  }
  TakeApplicationPalette(interpreter, object->surface);
  object->parentWindow = &host;
  object->ResetState();
  object->CIBaseClassImpl::Create();
  return object;
}

CISurface* CISurface::CreateAlone(CInterpretor& interpreter, int width, int height, int depth) {
  auto* object = new CISurface(interpreter);
  if (!object->CreateSurface(width, height, depth ? depth : CGraphics::Of(interpreter).screenDepth)) {
    interpreter.DestroyObject(object, true);
    return nullptr;
  }
  object->ResetState();
  object->surface.Fill(0, 0, width, height, object->backColor);
  object->CIBaseClassImpl::Create();
  return object;
}

CISurface* CISurface::CreateFromDib(CInterpretor& interpreter, std::span<const uint8_t> dib) {
  CISurface* const object = CreateAlone(interpreter, 1, 1, 0);
  if (!object) return nullptr;
  if (!object->surface.LoadFromDIB(dib, {}, 0)) {
    interpreter.DestroyObject(object, true);
    return nullptr;
  }
  object->width = object->surface.impl->width;
  object->height = object->surface.impl->height;
  object->ResetState();
  return object;
}

bool CISurface::CreateSurface(int newWidth, int newHeight, int newDepth) {
  const cSurfaceImpl* prototype = CGraphics::Of(interpreter).library.FindPrototype(newDepth, 1, 0);
  if (!prototype || !surface.Create(newWidth, newHeight, prototype)) return false;
  width = surface.impl->width;
  height = surface.impl->height;
  depth = surface.impl->depth;
  return true;
}

void CISurface::Construct() {
  int32_t numbers[3] = {kDefaultInt, kDefaultInt, kDefaultInt};
  int count = 0;
  uint32_t flags = 0;
  const CValue* name = nullptr;
  for (int i = 0; i < interpreter.GetArgCount(); ++i) {
    const CValue& value = *interpreter.GetArg(i);
    if (value.type == VT_STRING) {
      name = &value;
      continue;
    }
    if (value.type == VT_OBJECT) interpreter.RaiseError(ERR_BAD_ARGUMENT);
    const int32_t number = value.GetInt();
    if (TakeFlag(number, flags)) continue;
    if (count >= 3) interpreter.RaiseError(ERR_TOO_MANY);
    numbers[count++] = number;
  }
  if (name) {
    Picture picture;
    const cSurfaceImpl* prototype =
        CGraphics::Of(interpreter).library.FindPrototype(CGraphics::Of(interpreter).screenDepth, 1, 0);
    if (!prototype || !FindPicture(interpreter, *name, flags, *prototype, picture) || !BecomePicture(picture)) {
      interpreter.RaiseError(ERR_NOT_MADE, kNoArgument, "the picture isn't there or can't be read");
    }
    ResetState();
    Create();
    return;
  }
  const int32_t newDepth =
      numbers[2] == kDefaultInt || numbers[2] == 0 ? CGraphics::Of(interpreter).screenDepth : numbers[2];
  switch (newDepth) {
    case 8:
    case 15:
    case 16:
    case 24:
    case 32:
      break;
    default:
      interpreter.RaiseError(ERR_BAD_DEPTH);
  }
  const int newWidth = numbers[0] == kDefaultInt ? kDefaultWidth : numbers[0];
  const int newHeight = numbers[1] == kDefaultInt ? kDefaultHeight : numbers[1];
  if (newWidth > limits::kMaxSurfaceSide || newHeight > limits::kMaxSurfaceSide ||
      !CreateSurface(newWidth, newHeight, newDepth)) {
    interpreter.RaiseError(ERR_NOT_MADE);
  }
  ResetState();
  surface.Fill(0, 0, width, height, backColor);
  Create();
}

void CISurface::Destroy(bool final) {
  fillPattern_.reset();
  penPattern_.reset();
  if (parentWindow) parentWindow->SurfaceIsGone();
  parentWindow = nullptr;
  while (!spritesHere.empty()) (*spritesHere.begin())->LeaveSurface(true);
  sprites.RemoveAll(true);
  LeaveImageUsers();
  surface.Destroy();
  CIBaseClassImpl::Destroy(final);
}

bool CISurface::DependsOn(CIBaseClassImpl* target) {
  auto* owner = dynamic_cast<CSurfaceOwner*>(target);
  return owner && owner->OwnedSurface() == this && MarkDependant();
}

void CISurface::SetFontObject(CIFont* newFont) { CIFontContainer::SetFontObject(newFont); }

void CISurface::ResetState() {
  autoBack_ = autoRefresh_ = true;
  locked_ = false;
  penX = penY = 0;
  penSize_ = 1;
  transparentMode_ = false;
  drawMode_ = drawParam_ = 0;
  antiAlias_ = false;
  fillType_ = kFillNone;
  penType_ = 0;
  fillPattern_.reset();
  penPattern_.reset();
  surface.SetOrigin(0, 0);
  RemoveSprites(true);
  SetFontObject(CGraphics::Of(interpreter).DefaultFont());
  UpdateSimple();
}

// Whether the plain primitives may run: no effect, no softening, nothing but solid colours.
void CISurface::UpdateSimple() {
  simpleDraw_ = drawMode_ == 0 && !antiAlias_ && penType_ == 0 && (fillType_ == kFillNone || fillType_ == kFillSolid);
}

void CISurface::ResizeTo(int newWidth, int newHeight) {
  if (newWidth == width && newHeight == height) return;
  LiftSprites(WholeBox());
  const cSurfaceImpl* prototype = CGraphics::Of(interpreter).library.FindPrototype(depth, 1, 0);
  cSurface resized;
  if (!prototype || !resized.Create(newWidth, newHeight, prototype)) return;
  TakeApplicationPalette(interpreter, resized);
  resized.Fill(0, 0, newWidth, newHeight, backColor);
  surface.Blit(resized, 0, 0, 0, 0, width, height, 0);
  surface = std::move(resized);
  width = surface.impl->width;
  height = surface.impl->height;
  dirty_.Clear();
  MarkAllDirty();
  RequestRefresh();
}

void CISurface::AddDirty(const Rect& box) {
  dirty_.Add(box);
  dirtyPending_ = true;
  if (autoRefresh_) RequestRefresh();
}

void CISurface::NoteChange(int x1, int y1, int x2, int y2) {
  if (locked_) return;
  if (parentWindow) dirty_.Add({x1, y1, x2, y2});
  LiftSprites({x1, y1, x2, y2});
  dirtyPending_ = true;
  if (autoRefresh_) RequestRefresh();
}

// Lines and primitives: one pixel of margin towards the end point, and the pen's width around.
void CISurface::NoteShape(int x1, int y1, int x2, int y2) {
  const auto grown = [](int start, int end) {
    const int64_t v = int64_t{end} + (end >= start ? 1 : -1);
    return static_cast<int>(std::clamp<int64_t>(v, INT32_MIN / 2, INT32_MAX / 2));
  };
  Rect box{x1, y1, grown(x1, x2), grown(y1, y2)};
  if (box.left > box.right) std::swap(box.left, box.right);
  if (box.top > box.bottom) std::swap(box.top, box.bottom);
  const int margin = std::min(penSize_, limits::kMaxSurfaceSide);
  const Rect whole = WholeBox();
  box =
      Rect{std::max(box.left, -limits::kMaxSurfaceSide) - margin, std::max(box.top, -limits::kMaxSurfaceSide) - margin,
           std::min(box.right, 2 * limits::kMaxSurfaceSide) + margin,
           std::min(box.bottom, 2 * limits::kMaxSurfaceSide) + margin}
          .Intersect(whole);
  if (!box.IsEmpty()) NoteChange(box.left, box.top, box.right, box.bottom);
}

void CISurface::Refresh() {
  dirty = false;
  dirtyPending_ = false;
  RunSpritePass();
  if (parentWindow) PresentDirty();
  dirty_.Clear();
  TellImageUsers();
}

void CISurface::PresentDirty() {
  std::vector<Rect> boxes;
  for (const Rect& box : dirty_.Boxes()) {
    const Rect inside = box.Intersect(WholeBox());
    if (!inside.IsEmpty()) boxes.push_back(inside);
  }
  dirty_.Clear();
  if (!boxes.empty()) parentWindow->PresentSurface(surface, boxes);
}

void CISurface::FillWithBackColor() {
  surface.Fill(0, 0, width, height, backColor);
  MarkAllDirty();
}

// --- State members ---

int32_t CISurface::IntOr(int i, int32_t ifMissing) const {
  const int32_t v = interpreter.GetArgInt(i);
  return v == kDefaultInt ? ifMissing : v;
}

uint32_t CISurface::ColourOr(int i, uint32_t ifMissing) const {
  const int32_t v = interpreter.GetArgInt(i);
  return v == kDefaultInt ? ifMissing : SwapRedBlue(static_cast<uint32_t>(v) & 0xFFFFFF);
}

void CISurface::SetPenColorRaw(uint32_t colour) {
  penColor = colour;
  penType_ = 0;
  penPattern_.reset();
  UpdateSimple();
}

void CISurface::SetPenColor() {
  const uint32_t colour = ColourOr(0, 0);
  if (parentWindow) {
    parentWindow->SetTextColorOfWindow(colour);
  } else {
    SetPenColorRaw(colour);
  }
}

void CISurface::SetFillColor() {
  fillPattern_.reset();
  if (interpreter.IsArgDefault(0)) {
    fillType_ = kFillNone;
  } else {
    fillColor_ = ColourOr(0, 0);
    fillPattern_ = std::make_unique<SolidPattern>(fillColor_);
    fillType_ = kFillSolid;
  }
  UpdateSimple();
}

namespace {

// The gradient of a pen or filling, made on first use.
GradientPattern& Gradient(std::unique_ptr<Pattern>& pattern, int32_t& type) {
  if (type != kGradient) {
    pattern = std::make_unique<GradientPattern>(0, kWhite, 0);
    type = kGradient;
  }
  return static_cast<GradientPattern&>(*pattern);
}

}  // namespace

void CISurface::SetFillGradientColor() {
  Gradient(fillPattern_, fillType_).SetColours(ColourOr(0, 0), ColourOr(1, kWhite));
  UpdateSimple();
}
void CISurface::SetFillGradientDir() {
  Gradient(fillPattern_, fillType_).direction = IntOr(0, 0);
  UpdateSimple();
}
void CISurface::SetPenGradientColor() {
  Gradient(penPattern_, penType_).SetColours(ColourOr(0, 0), ColourOr(1, kWhite));
  UpdateSimple();
}
void CISurface::SetPenGradientDir() {
  Gradient(penPattern_, penType_).direction = IntOr(0, 0);
  UpdateSimple();
}

void CISurface::SetPenSize() { penSize_ = std::clamp(IntOr(0, 1), 0, limits::kMaxSurfaceSide); }

void CISurface::SetAntiAlias() {
  antiAlias_ = IntOr(0, 0) != 0;
  UpdateSimple();
}

void CISurface::SetDrawMode() {
  const int32_t mode = IntOr(0, 0);
  int32_t param = IntOr(1, 0);
  if (mode < 0 || mode > kLastDrawMode) interpreter.RaiseError(ERR_DRAW_MODE);
  if (mode == 1) param = (std::clamp(param, 0, 255) + 1) >> 1;
  drawMode_ = mode;
  drawParam_ = param;
  UpdateSimple();
}

void CISurface::SetTransparentMode() { transparentMode_ = IntOr(0, 0) != 0; }

void CISurface::Clear() {
  const uint32_t back = ColourOr(0, kWhite);
  const uint32_t pen = ColourOr(1, 0);
  ResetState();
  if (parentWindow) {
    parentWindow->SetBackColorOfWindow(back);
    parentWindow->SetTextColorOfWindow(pen);
  } else {
    backColor = back;
    SetPenColorRaw(pen);
  }
  FillWithBackColor();
}

void CISurface::SetBackgroundColor() {
  const uint32_t colour = ColourOr(0, kWhite);
  if (parentWindow) {
    parentWindow->SetBackColorOfWindow(colour);
  } else {
    backColor = colour;
  }
}

void CISurface::GetBackgroundColor() { interpreter.GetResult().SetInt(static_cast<int32_t>(SwapRedBlue(backColor))); }
void CISurface::GetDepth() { interpreter.GetResult().SetInt(depth); }
void CISurface::GetPixelWidth() { interpreter.GetResult().SetInt(width); }
void CISurface::GetPixelHeight() { interpreter.GetResult().SetInt(height); }
void CISurface::GetXPos() { interpreter.GetResult().SetInt(penX); }
void CISurface::GetYPos() { interpreter.GetResult().SetInt(penY); }
void CISurface::SetAutoBack() { autoBack_ = IntOr(0, 0) != 0; }
void CISurface::IsAutoBack() { interpreter.GetResult().SetInt(autoBack_); }
void CISurface::IsAutoRefresh() { interpreter.GetResult().SetInt(autoRefresh_); }

void CISurface::SetAutoRefresh() {
  autoRefresh_ = IntOr(0, 0) != 0;
  if (autoRefresh_ && dirtyPending_) RequestRefresh();
}

void CISurface::RefreshNow() {
  if (autoRefresh_) interpreter.RaiseError(ERR_AUTO_REFRESH);
  if (dirtyPending_) Refresh();
}

void CISurface::Lock() {
  if (autoRefresh_) interpreter.RaiseError(ERR_AUTO_REFRESH);
  const int32_t x = IntOr(0, 0);
  const int32_t y = IntOr(1, 0);
  const int64_t w = IntOr(2, width);
  const int64_t h = IntOr(3, height);
  const Rect box = Rect{x, y, static_cast<int>(std::clamp<int64_t>(x + w, INT32_MIN, INT32_MAX)),
                        static_cast<int>(std::clamp<int64_t>(y + h, INT32_MIN, INT32_MAX))}
                       .Intersect(WholeBox());
  if (box.IsEmpty()) return;
  if (parentWindow) dirty_.Add(box);
  LiftSprites(box);
  dirtyPending_ = true;
  locked_ = true;
}

void CISurface::Unlock() {
  locked_ = false;
  if (autoRefresh_) RequestRefresh();
}

}  // namespace vl

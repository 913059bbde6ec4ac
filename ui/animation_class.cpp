#include "ui/animation_class.h"

#include "gfx2d/script/graphics.h"
#include "host/appfile/app_file.h"
#include "ui/common_rows.h"
#include "ui/window_class.h"

namespace vl {

namespace {

constexpr uint32_t kAnimationArguments = kArgCurrentWindow | 0xFFFF;
constexpr uint32_t kAttributeFamily = 0xDEB00000;
constexpr uint32_t kFamilyBits = 0xFFF00000;

}  // namespace

CIAnimation::CIAnimation(CInterpretor& interpreter)
    : CIChildWindow(interpreter, CLASS_ANIMATION), CFramePlayer(interpreter), target_(&interpreter) {
  target_.SetInt(0);
}

// A text, wherever it stands, or else the first number that is no attribute.
void CIAnimation::TakeName(CValue& name) {
  name.SetDefault();
  int number = -1;
  for (int i = 0; i < interpreter.GetArgCount(); ++i) {
    const CValue& value = *interpreter.GetArg(i);
    if (value.type == VT_STRING) {
      name.Assign(value);
      return;
    }
    const bool isNumber = value.type == VT_INTEGER || value.type == VT_FLOAT;
    if (number < 0 && isNumber && (static_cast<uint32_t>(value.GetInt()) & kFamilyBits) != kAttributeFamily) number = i;
  }
  if (number < 0) return;
  name.Assign(*interpreter.GetArg(number));
  interpreter.GetArg(number)->SetDefault();
}

void CIAnimation::Construct() {
  CValue name(&interpreter);
  TakeName(name);
  x = y = 0;
  width = height = kDefaultInt;
  style = WS_CHILD;
  std::vector<CValue*> rest;
  ParseWindowArguments(kAnimationArguments, &rest);
  creationText.clear();
  for (const CValue* value : rest) {
    if (!value->IsObjectOfClass(CLASS_SURFACE) || target_.type == VT_OBJECT) interpreter.RaiseError(ERR_BAD_ARGUMENT);
    target_.SetObject(value->data.object);
  }
  CElement* element = interpreter.GetElement(name, kBankAnimation, true);
  std::unique_ptr<CStream> source;
  if (element) {
    source = element->OpenStream(0);
  } else if (name.type == VT_STRING && interpreter.app) {
    source = interpreter.app->OpenResource(name.StringView(), true, 0);
  }
  if (!source) interpreter.RaiseError(ERR_BAD_ARGUMENT, kNoArgument, "there is no such animation");
  if (!OpenFrames(std::move(source), element)) {
    interpreter.RaiseError(ERR_ANIMATION, kNoArgument, "the animation can't be read");
  }
  const cSurfaceImpl* prototype = CGraphics::Of(interpreter).library.FindPrototype(reader->GetDepth());
  if (!prototype) interpreter.RaiseError(ERR_ANIMATION, kNoArgument, "no surface has the depth of the animation");
  if (!MakeFrameSurface(*prototype, PaletteRef())) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  if (x == kDefaultInt) x = 0;
  if (y == kDefaultInt) y = 0;
  if (width == kDefaultInt) width = reader->GetWidth();
  if (height == kDefaultInt) height = reader->GetHeight();
  width = std::clamp(width, 0, limits::kMaxSurfaceSide);
  height = std::clamp(height, 0, limits::kMaxSurfaceSide);
  if (target_.type != VT_OBJECT && !CreateChild(kCreateInParent | kCreateLinked))
    interpreter.RaiseError(ERR_SECOND_WINDOW);
  Create();
}

void CIAnimation::Destroy(bool final) {
  CloseFrames();
  scaled_.Destroy();
  target_.SetInt(0);
  CIChildWindow::Destroy(final);
}

bool CIAnimation::DependsOn(CIBaseClassImpl* other) {
  if (target_.type == VT_OBJECT && target_.data.object == other) return MarkDependant();
  return CIChildWindow::DependsOn(other);
}

CISurface* CIAnimation::TargetSurface() const {
  return target_.type == VT_OBJECT ? static_cast<CISurface*>(target_.data.object) : nullptr;
}

void CIAnimation::Refresh() {
  dirty = false;
  if (!frameSurface) return;
  UpdateFrame();
  const cSurfaceImpl& frame = *frameSurface->impl;
  if (CISurface* target = TargetSurface()) {
    target->NoteChange(0, 0, target->width, target->height);
    frame.StretchBlit(*target->surface.impl, 0, 0, target->width, target->height, 0, 0, frame.width, frame.height, 0, 0,
                      0, false);
    return;
  }
  CIChildWindow::Refresh();
  const Rect whole{0, 0, width, height};
  Paint({&whole, 1});
}

void CIAnimation::Paint(std::span<const Rect> boxes) {
  if (!frameSurface || !Handle()) return;
  const cSurfaceImpl& frame = *frameSurface->impl;
  if (frame.width == width && frame.height == height) {
    Tree().Paint(hwnd, *frameSurface, boxes);
    return;
  }
  if (width <= 0 || height <= 0) return;
  if (scaled_.impl->width != width || scaled_.impl->height != height) {
    scaled_.Destroy();
    if (!scaled_.Create(width, height, &frame)) return;
  }
  frame.StretchBlit(*scaled_.impl, 0, 0, width, height, 0, 0, frame.width, frame.height, 0, 0, 0, false);
  Tree().Paint(hwnd, scaled_, boxes);
}

int32_t CIAnimation::WindowProcedure(WindowHandle window, uint32_t message, uint32_t wParam, int32_t lParam) {
  if (message != WM_PAINT || interpreter.terminating || destroyed) {
    return CIChildWindow::WindowProcedure(window, message, wParam, lParam);
  }
  const Rect box = Tree().BeginPaint(window, false);
  UpdateFrame();
  Paint({&box, 1});
  return 0;
}

// --- The table ---

namespace {

template <void (CFramePlayer::*Method)()>
constexpr MemberRow Played(uint16_t id, const char* name, const char* help) {
  return Row(id, name, &PlayerMember<CIAnimation, Method>, help);
}

constexpr auto kMembers = std::to_array<MemberRow>({
    Played<&CFramePlayer::Play>(38, "Play", "Play(loops, loopStart, flags): missing ones stay; loops counts repeats"),
    Played<&CFramePlayer::Stop>(39, "Stop", "Stop(): stays on its frame"),
    Played<&CFramePlayer::Pause>(40, "Pause", "Pause(): until Resume; the time is lost"),
    Played<&CFramePlayer::SetFrame>(41, "SetFrame", "SetFrame(frame): from 0; nothing when there is none"),
    Played<&CFramePlayer::GetFrame>(42, "GetFrame", "GetFrame(): from 0"),
    Played<&CFramePlayer::Resume>(43, "Resume", "Resume(): after Pause"),
    Played<&CFramePlayer::IsPlaying>(44, "IsPlaying", "IsPlaying(): 1 or 0, 1 also while paused"),
    Played<&CFramePlayer::IsPausedMember>(45, "IsPaused", "IsPaused(): 1 or 0"),
    Played<&CFramePlayer::GetNFrames>(46, "GetNFrames", "GetNFrames(): how many frames it has"),
    Played<&CFramePlayer::NextFrame>(47, "NextFrame", "NextFrame(): one in its direction"),
    Played<&CFramePlayer::PrevFrame>(48, "PrevFrame", "PrevFrame(): one against its direction"),
    Played<&CFramePlayer::SetSpeedFactor>(49, "SetSpeedFactor", "SetSpeedFactor(percent): without one, 100"),
    Played<&CFramePlayer::GetSpeedFactor>(50, "GetSpeedFactor", "GetSpeedFactor(): percent"),
});

constexpr auto kConstants = std::to_array<MemberRow>({
    Constant(62, "REVERSE", kPlayReverse, "flag of Play: backwards, from now on"),
    Constant(63, "LOOP_INFINITE", 0xFFFFFFFF, "loops of Play: for ever"),
});

constexpr auto kRows = JoinRows(CommonMembers<CIAnimation>(1), kMembers, CommonConstants(52), kConstants);

}  // namespace

const ClassTable kAnimationClass = {
    CLASS_ANIMATION, kRows, &CreateObject<CIAnimation>,
    "Frames that run over time: New Animation(name, x, y, width, height, window) or New Animation(name, surface)"};

}  // namespace vl

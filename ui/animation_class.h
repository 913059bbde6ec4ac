// CIAnimation: the runtime class Animation: a film of frames, in a window of its own, or drawn onto a Surface.
#pragma once

#include "gfx2d/script/frame_player.h"
#include "gfx2d/script/surface_class.h"
#include "ui/child_window.h"

namespace vl {

class CIAnimation final : public CIChildWindow, public CFramePlayer {
 public:
  explicit CIAnimation(CInterpretor& interpreter);
  void Construct() override;
  void Destroy(bool final) override;
  bool DependsOn(CIBaseClassImpl* target) override;
  void Refresh() override;
  void FrameShown(uint32_t user) override { RequestRefresh(); }

  // CWindowTarget.
  int32_t WindowProcedure(WindowHandle window, uint32_t message, uint32_t wParam, int32_t lParam) override;

 protected:
  void OnFrameWanted() override { RequestRefresh(); }

 private:
  // Leaves the name's number out of the values that the window takes.
  void TakeName(CValue& name);
  // Null when it draws into its own window, or the target is gone.
  CISurface* TargetSurface() const;
  // The current frame into boxes of the window.
  void Paint(std::span<const Rect> boxes);

  CValue target_;    // a Surface, counted; 0 for none
  cSurface scaled_;  // the frame in the window's size, when that isn't the frame's own
};

extern const ClassTable kAnimationClass;

}  // namespace vl

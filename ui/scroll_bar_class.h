// CIScrollBar: the runtime class ScrollBar: a control, or one of the bars of a window.
#pragma once

#include "ui/child_window.h"

namespace vl {

class CIScrollBar final : public CIChildWindow {
 public:
  explicit CIScrollBar(CInterpretor& interpreter);
  // The object for a window's own bar. It belongs to the window, which destroys it, and isn't among its children.
  static CIScrollBar* ForWindow(CIWindow& window, BarKind kind);
  void Construct() override;
  void Destroy(bool final) override;

  // CWindowTarget.
  int32_t WindowProcedure(WindowHandle window, uint32_t message, uint32_t wParam, int32_t lParam) override;

  void GetPos();
  void SetRange();
  void SetPos();
  void SetPageSize();
  void OnScroll() { onScroll_ = interpreter.GetEventFunction(); }

 private:
  static int32_t Hook(CIWindow& window, bool& handled, uint32_t message, uint32_t wParam, int32_t lParam);
  void Scrolled(uint32_t code, uint32_t highWord);
  void Paint();
  bool OnKey(uint32_t key);
  // What it shows; null when its window is gone.
  ScrollInfo* Info();
  void ShowInfo(const ScrollInfo& info) { Tree().SetScrollInfo(bound_, kind_, info); }

  WindowHandle bound_ = 0;  // whose bar it is
  BarKind kind_ = SB_CTL;
  const BlockRecord* onScroll_ = nullptr;
};

extern const ClassTable kScrollBarClass;

}  // namespace vl

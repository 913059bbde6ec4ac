#include "ui/ui_classes.h"

#include "interpreter/interpretor.h"
#include "ui/animation_class.h"
#include "ui/scroll_bar_class.h"
#include "ui/window_class.h"
#include "ui/window_tree.h"

namespace vl {

namespace {

// What shows the surface under it follows each refresh.
void RedrawOverlays(CInterpretor& interpreter) {
  WindowTree& tree = WindowTree::Of(interpreter);
  for (const uint32_t id : {CLASS_GROUPBOX, CLASS_STATICTEXT}) {
    uint32_t cursor = interpreter.ObjectsOfClass(id).First();
    while (CIBaseClassImpl* object = interpreter.ObjectsOfClass(id).Step(cursor)) {
      const WindowHandle window = static_cast<CIChildWindow*>(object)->hwnd;
      if (!tree.IsVisible(window)) continue;
      tree.Invalidate(window);
      tree.Send(window, WM_PAINT);
    }
  }
}

}  // namespace

void RegisterUiClasses(ClassRegistry& registry) {
  registry.Add(kAnimationClass);
  registry.Add(kScrollBarClass);
  registry.Add(kWindowClass);
  registry.attachWindow = [](CInterpretor& interpreter) {
    if (interpreter.services.windows && interpreter.services.windows->hostWindow()) CIWindow::AttachToHost(interpreter);
  };
  registry.makeMessageSource = [](CInterpretor& interpreter) -> std::unique_ptr<CMessageSource> {
    interpreter.redrawOverlays = [&interpreter] { RedrawOverlays(interpreter); };
    return std::make_unique<WindowTree>(interpreter.services, interpreter.param);
  };
}

}  // namespace vl

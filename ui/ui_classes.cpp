#include "ui/ui_classes.h"

#include "interpreter/interpretor.h"
#include "ui/animation_class.h"
#include "ui/scroll_bar_class.h"
#include "ui/window_class.h"
#include "ui/window_tree.h"

namespace vl {

void RegisterUiClasses(ClassRegistry& registry) {
  registry.Add(kAnimationClass);
  registry.Add(kScrollBarClass);
  registry.Add(kWindowClass);
  registry.attachWindow = [](CInterpretor& interpreter) {
    if (interpreter.services.windows && interpreter.services.windows->hostWindow()) CIWindow::AttachToHost(interpreter);
  };
  registry.makeMessageSource = [](CInterpretor& interpreter) -> std::unique_ptr<CMessageSource> {
    return std::make_unique<WindowTree>(interpreter.services, interpreter.param);
  };
}

}  // namespace vl

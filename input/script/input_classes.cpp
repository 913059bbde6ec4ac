#include "input/script/input_classes.h"

#include "input/script/game_input_class.h"

namespace vl {

void RegisterInputClasses(ClassRegistry& registry) {
  registry.Add(kKeyboardClass);
  registry.Add(kGameInputClass);
  registry.makeDefaultGameInput = &CIGameInput::MakeDefault;
}

}  // namespace vl

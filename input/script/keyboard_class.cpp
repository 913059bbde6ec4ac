// Keyboard: the fixed object that asks for the state of a key.
#include "input/script/input_classes.h"
#include "interpreter/interpretor.h"
#include "platform/device_queue.h"
#include "platform/keys.h"

namespace vl {

namespace {

constexpr int32_t kKeys = 255;  // that "any key" looks at

class CIKeyboard : public CIBaseClassImpl {
 public:
  explicit CIKeyboard(CInterpretor& interpreter) : CIBaseClassImpl(interpreter, CLASS_KEYBOARD, Listing::Listed) {}

  void IsKeyDown();

 private:
  static bool IsAnyDown(const DeviceState& state);
};

bool CIKeyboard::IsAnyDown(const DeviceState& state) {
  if (!state.hasFocus) return false;
  for (int32_t key = 0; key < kKeys; ++key) {
    if (state.IsKeyDown(key)) return true;
  }
  return false;
}

void CIKeyboard::IsKeyDown() {
  DeviceQueue* devices = interpreter.services.devices;
  const DeviceState none;
  if (devices) devices->Update();
  const DeviceState& state = devices ? devices->State() : none;
  bool isDown = false;
  if (interpreter.IsArgDefault(0)) {
    isDown = IsAnyDown(state);
  } else if (const CValue& key = *interpreter.GetArg(0); key.type == VT_STRING) {
    if (!key.data.text) interpreter.RaiseError(ERR_OBJECT_MISSING);
    const std::string_view text = key.StringView();
    isDown = state.IsKeyDown(KeyOfCharacter(text.empty() ? 0 : static_cast<uint8_t>(text[0])));
  } else {
    isDown = state.IsKeyDown(interpreter.GetArgInt(0));
  }
  interpreter.GetResult().SetInt(isDown);
}

constexpr MemberRow Key(uint16_t id, const char* name, int32_t key) {
  return {id, name, MemberKind::Constant, nullptr, static_cast<uint32_t>(key), 0, "for IsKeyDown"};
}

constexpr MemberRow kRows[] = {
    {1, "IsKeyDown", MemberKind::Member, kMember<&CIKeyboard::IsKeyDown>, 0, 4,
     "IsKeyDown(key): 1 while it is down; a constant, a virtual key number or a character; without one, any key"},
    Key(3, "CONTROL", kKeyControl),
    Key(4, "LSHIFT", kKeyLeftShift),
    Key(5, "RSHIFT", kKeyRightShift),
    Key(6, "ALT", kKeyMenu),
    Key(7, "LBUTTON", kKeyLeftButton),
    Key(8, "RBUTTON", kKeyRightButton),
    Key(9, "MBUTTON", kKeyMiddleButton),
    Key(10, "BACK", kKeyBack),
    Key(11, "TAB", kKeyTab),
    Key(12, "CLEAR", kKeyClear),
    Key(13, "RETURN", kKeyReturn),
    Key(14, "ESCAPE", kKeyEscape),
    Key(15, "PAGEUP", kKeyPrior),
    Key(16, "PAGEDOWN", kKeyNext),
    Key(17, "END", kKeyEnd),
    Key(18, "HOME", kKeyHome),
    Key(19, "LEFT", kKeyLeft),
    Key(20, "RIGHT", kKeyRight),
    Key(21, "UP", kKeyUp),
    Key(22, "DOWN", kKeyDown),
    Key(23, "INSERT", kKeyInsert),
    Key(24, "DELETE", kKeyDelete),
    Key(25, "HELP", kKeyHelp),
    Key(26, "CAPSLOCK", kKeyCapital),
    Key(27, "F1", kKeyF1),
    Key(28, "F2", kKeyF1 + 1),
    Key(29, "F3", kKeyF1 + 2),
    Key(30, "F4", kKeyF1 + 3),
    Key(31, "F5", kKeyF1 + 4),
    Key(32, "F6", kKeyF1 + 5),
    Key(33, "F7", kKeyF1 + 6),
    Key(34, "F8", kKeyF1 + 7),
    Key(35, "F9", kKeyF1 + 8),
    Key(36, "F10", kKeyF1 + 9),
    Key(37, "F11", kKeyF1 + 10),
    Key(38, "F12", kKeyF1 + 11),
    Key(39, "NUM0", kKeyNumpad0),
    Key(40, "NUM1", kKeyNumpad0 + 1),
    Key(41, "NUM2", kKeyNumpad0 + 2),
    Key(42, "NUM3", kKeyNumpad0 + 3),
    Key(43, "NUM4", kKeyNumpad0 + 4),
    Key(44, "NUM5", kKeyNumpad0 + 5),
    Key(45, "NUM6", kKeyNumpad0 + 6),
    Key(46, "NUM7", kKeyNumpad0 + 7),
    Key(47, "NUM8", kKeyNumpad0 + 8),
    Key(48, "NUM9", kKeyNumpad0 + 9),
    Key(49, "MULTIPLY", kKeyMultiply),
    Key(50, "ADD", kKeyAdd),
    Key(51, "SUBTRACT", kKeySubtract),
    Key(52, "DECIMAL", kKeyDecimal),
    Key(53, "DIVIDE", kKeyDivide),
    Key(54, "LWIN", kKeyLeftWindows),
    Key(55, "RWIN", kKeyRightWindows),
    Key(56, "NUMLOCK", kKeyNumLock),
    Key(57, "SCROLL", kKeyScroll),
    Key(59, "SHIFT", kKeyShift),
};

}  // namespace

const ClassTable kKeyboardClass = {CLASS_KEYBOARD, kRows, &CreateObject<CIKeyboard>,
                                   "The fixed object for the state of the keys, mouse buttons among them"};

}  // namespace vl

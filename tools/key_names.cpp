#include "tools/key_names.h"

#include <algorithm>
#include <cctype>

#include "platform/keys.h"

namespace vl {

namespace {

constexpr int kFunctionKeys = 24;

struct KeyName {
  const char* name;
  int32_t code;
};
constexpr KeyName kKeyNames[] = {
    {"BACKSPACE", kKeyBack},
    {"TAB", kKeyTab},
    {"ENTER", kKeyReturn},
    {"RETURN", kKeyReturn},
    {"SHIFT", kKeyShift},
    {"CONTROL", kKeyControl},
    {"ALT", kKeyMenu},
    {"PAUSE", kKeyPause},
    {"ESCAPE", kKeyEscape},
    {"SPACE", kKeySpace},
    {"PAGEUP", kKeyPrior},
    {"PAGEDOWN", kKeyNext},
    {"END", kKeyEnd},
    {"HOME", kKeyHome},
    {"LEFT", kKeyLeft},
    {"UP", kKeyUp},
    {"RIGHT", kKeyRight},
    {"DOWN", kKeyDown},
    {"PRINT", kKeySnapshot},
    {"INSERT", kKeyInsert},
    {"DELETE", kKeyDelete},
    {"LSHIFT", kKeyLeftShift},
    {"RSHIFT", kKeyRightShift},
    {"LCONTROL", kKeyLeftControl},
    {"RCONTROL", kKeyRightControl},
    {"LALT", kKeyLeftMenu},
    {"RALT", kKeyRightMenu},
};

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

bool KeyOfName(const std::string& name, int32_t& code) {
  std::string upper = name;
  for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  if (upper.size() == 1) {
    code = upper[0];
    return IsDigit(upper[0]) || (upper[0] >= 'A' && upper[0] <= 'Z');
  }
  if ((upper.size() == 2 || upper.size() == 3) && upper[0] == 'F' &&
      std::all_of(upper.begin() + 1, upper.end(), IsDigit)) {
    const int number = std::stoi(upper.substr(1));
    code = kKeyF1 + number - 1;
    return number >= 1 && number <= kFunctionKeys;
  }
  for (const KeyName& key : kKeyNames) {
    if (upper != key.name) continue;
    code = key.code;
    return true;
  }
  return false;
}

}  // namespace vl

#include "input/input_table.h"

#include <algorithm>
#include <array>

#include "host/appfile/names.h"

namespace vl {
namespace {

constexpr size_t kJoystickRows = 150;
constexpr size_t kMouseRows = 10;
constexpr size_t kKeyboardRows = 117;
constexpr size_t kRows = kJoystickRows + kMouseRows + kKeyboardRows;

struct Table {
  std::array<InputRow, kRows> rows{};
  size_t count = 0;
  DeviceKind kind = DeviceKind::None;
  uint8_t id = 0;

  constexpr void Begin(DeviceKind k) {
    kind = k;
    id = 0;
  }
  constexpr void Add(std::string_view name, InputGroup group, int index) {
    InputRow& row = rows[count++];
    row.kind = kind;
    std::copy(name.begin(), name.end(), row.name);
    row.length = static_cast<uint8_t>(name.size());
    row.id = ++id;
    row.group = group;
    row.index = static_cast<uint8_t>(index);
  }
  // NAME<first> and on, for indices from `index`.
  constexpr void AddNumbered(std::string_view name, int first, int last, InputGroup group, int index) {
    for (int number = first; number <= last; ++number, ++index) {
      char text[24] = {};
      auto length = static_cast<size_t>(std::copy(name.begin(), name.end(), text) - text);
      if (number >= 100) text[length++] = static_cast<char>('0' + number / 100);
      if (number >= 10) text[length++] = static_cast<char>('0' + number / 10 % 10);
      text[length++] = static_cast<char>('0' + number % 10);
      Add({text, length}, group, index);
    }
  }
  constexpr void Key(std::string_view name, int virtualKey) { Add(name, InputGroup::Button, virtualKey); }
};

constexpr void AddJoystick(Table& t) {
  using enum InputGroup;
  constexpr std::string_view kPositive[] = {"JOY_ROT_X_POS", "JOY_ROT_Y_POS", "JOY_ROT_Z_POS", "JOY_ROT_U_POS",
                                            "JOY_ROT_V_POS"};
  constexpr std::string_view kNegative[] = {"JOY_ROT_X_NEG", "JOY_ROT_Y_NEG", "JOY_ROT_Z_NEG", "JOY_ROT_U_NEG",
                                            "JOY_ROT_V_NEG"};
  t.Begin(DeviceKind::Joystick);
  t.Add("JOY_LEFT", AxisNegative, 0);
  t.Add("JOY_TOP", AxisNegative, 1);
  t.Add("JOY_RIGHT", AxisPositive, 0);
  t.Add("JOY_BOTTOM", AxisPositive, 1);
  t.Add("JOY_U_AXIS_POS", AxisPositive, 2);
  t.Add("JOY_V_AXIS_POS", AxisPositive, 3);
  for (int i = 0; i < 5; ++i) t.Add(kPositive[i], RotationPositive, i);
  t.Add("JOY_U_AXIS_NEG", AxisNegative, 2);
  t.Add("JOY_V_AXIS_NEG", AxisNegative, 3);
  for (int i = 0; i < 5; ++i) t.Add(kNegative[i], RotationNegative, i);
  t.AddNumbered("JOY_POV", 1, 4, Hat, 0);
  t.AddNumbered("JOY_BUTTON", 1, 128, Button, 0);
}

constexpr void AddMouse(Table& t) {
  using enum InputGroup;
  t.Begin(DeviceKind::Mouse);
  t.Add("MOUSE_LEFT", AxisNegative, 0);
  t.Add("MOUSE_TOP", AxisNegative, 1);
  t.Add("MOUSE_RIGHT", AxisPositive, 0);
  t.Add("MOUSE_BOTTOM", AxisPositive, 1);
  t.Add("MOUSE_WHEELBACK", AxisNegative, 2);
  t.Add("MOUSE_WHEELFORWARD", AxisPositive, 2);
  t.AddNumbered("MOUSE_BUTTON", 1, 4, Button, 0);
}

constexpr void AddKeyboard(Table& t) {
  struct Key {
    std::string_view name;
    int key;
  };
  constexpr Key kFirst[] = {
      {"KEY_VK_BACK", 8},       {"KEY_VK_TAB", 9},         {"KEY_VK_CLEAR", 12},    {"KEY_VK_RETURN", 13},
      {"KEY_VK_SHIFT", 16},     {"KEY_VK_CONTROL", 17},    {"KEY_VK_MENU", 18},     {"KEY_VK_LSHIFT", 160},
      {"KEY_VK_LCONTROL", 162}, {"KEY_VK_LMENU", 164},     {"KEY_VK_LWIN", 91},     {"KEY_VK_RSHIFT", 161},
      {"KEY_VK_RCONTROL", 163}, {"KEY_VK_RMENU", 165},     {"KEY_VK_RWIN", 92},     {"KEY_VK_PAUSE", 19},
      {"KEY_VK_CAPITAL", 20},   {"KEY_VK_ESCAPE", 27},     {"KEY_VK_CONVERT", 28},  {"KEY_VK_NONCONVERT", 29},
      {"KEY_VK_ACCEPT", 30},    {"KEY_VK_MODECHANGE", 31}, {"KEY_VK_SPACE", 32},    {"KEY_VK_PRIOR", 33},
      {"KEY_VK_NEXT", 34},      {"KEY_VK_END", 35},        {"KEY_VK_HOME", 36},     {"KEY_VK_LEFT", 37},
      {"KEY_VK_UP", 38},        {"KEY_VK_RIGHT", 39},      {"KEY_VK_DOWN", 40},     {"KEY_VK_SELECT", 41},
      {"KEY_VK_PRINT", 42},     {"KEY_VK_EXECUTE", 43},    {"KEY_VK_SNAPSHOT", 44}, {"KEY_VK_INSERT", 45},
      {"KEY_VK_DELETE", 46},    {"KEY_VK_HELP", 47},
  };
  constexpr Key kPad[] = {
      {"KEY_VK_MULTIPLY", 106}, {"KEY_VK_ADD", 107},     {"KEY_VK_SEPARATOR", 108},
      {"KEY_VK_SUBTRACT", 109}, {"KEY_VK_DECIMAL", 110}, {"KEY_VK_DIVIDE", 111},
  };
  t.Begin(DeviceKind::Keyboard);
  for (const Key& key : kFirst) t.Key(key.name, key.key);
  t.AddNumbered("KEY_VK_", 0, 9, InputGroup::Button, '0');
  for (char letter = 'A'; letter <= 'Z'; ++letter) {
    const char name[] = {'K', 'E', 'Y', '_', 'V', 'K', '_', letter};
    t.Key({name, sizeof(name)}, letter);
  }
  t.Key("KEY_VK_APPS", 93);
  t.AddNumbered("KEY_VK_NUMPAD", 0, 9, InputGroup::Button, 96);
  for (const Key& key : kPad) t.Key(key.name, key.key);
  t.AddNumbered("KEY_VK_F", 1, 24, InputGroup::Button, 112);
  t.Key("KEY_VK_NUMLOCK", 144);
  t.Key("KEY_VK_SCROLL", 145);
}

constexpr Table MakeTable() {
  Table t;
  AddJoystick(t);
  AddMouse(t);
  AddKeyboard(t);
  return t;
}

constexpr Table kTable = MakeTable();
static_assert(kTable.count == kRows);

// Row numbers in the order of their names, which are all in capitals.
constexpr std::array<uint16_t, kRows> kByName = [] {
  std::array<uint16_t, kRows> order{};
  for (size_t i = 0; i < kRows; ++i) order[i] = static_cast<uint16_t>(i);
  std::sort(order.begin(), order.end(),
            [](uint16_t a, uint16_t b) { return kTable.rows[a].Name() < kTable.rows[b].Name(); });
  return order;
}();

char Capital(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

constexpr std::string_view kKindNames[] = {"", "Mouse", "Joystick", "Keyboard"};

}  // namespace

std::string_view NameOfKind(DeviceKind kind) { return kKindNames[static_cast<size_t>(kind)]; }

DeviceKind KindOfName(std::string_view name) {
  for (const DeviceKind kind : {DeviceKind::Mouse, DeviceKind::Joystick, DeviceKind::Keyboard}) {
    if (EqualsIgnoringCase(name, NameOfKind(kind))) return kind;
  }
  return DeviceKind::None;
}

std::span<const InputRow> InputTable() { return kTable.rows; }

int FindInput(std::string_view name) {
  if (name.size() > sizeof(InputRow::name)) return kUnknownInput;
  char capitals[sizeof(InputRow::name)];
  std::transform(name.begin(), name.end(), capitals, Capital);
  const std::string_view wanted(capitals, name.size());
  const auto nameOf = [](uint16_t row) { return kTable.rows[row].Name(); };
  const auto found = std::lower_bound(kByName.begin(), kByName.end(), wanted,
                                      [&](uint16_t row, std::string_view text) { return nameOf(row) < text; });
  return found != kByName.end() && nameOf(*found) == wanted ? *found : kUnknownInput;
}

int FindInput(DeviceKind kind, InputGroup group, int index) {
  const auto found = std::find_if(kTable.rows.begin(), kTable.rows.end(), [&](const InputRow& row) {
    return row.kind == kind && row.group == group && row.index == index;
  });
  return found == kTable.rows.end() ? kUnknownInput : static_cast<int>(found - kTable.rows.begin());
}

}  // namespace vl

#include "tools/input_lines.h"

#include <nlohmann/json.hpp>
#include <sstream>

#include "platform/keys.h"

namespace vl {

namespace {

using nlohmann::json;

struct KeyName {
  const char* name;
  int32_t code;
};
constexpr KeyName kKeyNames[] = {
    {"BACKSPACE", kKeyBack},  {"TAB", kKeyTab},   {"ENTER", kKeyReturn},  {"RETURN", kKeyReturn}, {"SHIFT", kKeyShift},
    {"CONTROL", kKeyControl}, {"ALT", kKeyMenu},  {"ESCAPE", kKeyEscape}, {"SPACE", kKeySpace},   {"PAGEUP", kKeyPrior},
    {"PAGEDOWN", kKeyNext},   {"END", kKeyEnd},   {"HOME", kKeyHome},     {"LEFT", kKeyLeft},     {"UP", kKeyUp},
    {"RIGHT", kKeyRight},     {"DOWN", kKeyDown}, {"INSERT", kKeyInsert}, {"DELETE", kKeyDelete},
};

int32_t KeyCode(const json& line) {
  if (line.contains("code")) return line.at("code").get<int32_t>();
  std::string name = line.at("key").get<std::string>();
  for (char& c : name) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  if (name.size() == 1) return static_cast<unsigned char>(name[0]);
  for (const KeyName& key : kKeyNames) {
    if (name == key.name) return key.code;
  }
  if (name.size() > 1 && name[0] == 'F') return kKeyF1 + std::stoi(name.substr(1)) - 1;
  throw std::runtime_error("unknown key \"" + name + "\"");
}

int32_t CharCode(const json& line) {
  if (line.contains("code")) return line.at("code").get<int32_t>();
  const std::string text = line.at("char").get<std::string>();
  if (text.size() == 1) return static_cast<unsigned char>(text[0]);
  // Two bytes of UTF-8 cover the upper half of the code page that Latin-1 shares.
  if (text.size() == 2 && (text[0] & 0xFC) == 0xC0) return (text[0] & 3) << 6 | (text[1] & 0x3F);
  throw std::runtime_error("\"char\" must be one character of code page 1252");
}

int32_t Button(const std::string& name) {
  if (name == "left") return 1;
  if (name == "middle") return 2;
  if (name == "right") return 3;
  throw std::runtime_error("\"button\" must be left, middle or right");
}

TimedInput ParseLine(const json& line) {
  TimedInput input;
  input.atMs = line.at("at").get<uint64_t>();
  vl_input_event& e = input.event;
  const std::string type = line.at("type").get<std::string>();
  if (line.contains("mods")) {
    for (const auto& mod : line.at("mods")) {
      const std::string name = mod.get<std::string>();
      e.mods |= name == "shift" ? 1 : name == "control" ? 2 : name == "alt" ? 4 : 0;
    }
  }
  e.x = line.value("x", 0);
  e.y = line.value("y", 0);
  if (type == "key") {
    e.type = VL_INPUT_KEY;
    e.code = KeyCode(line);
    e.down = line.value("down", true);
  } else if (type == "char") {
    e.type = VL_INPUT_CHAR;
    e.code = CharCode(line);
  } else if (type == "mouse") {
    e.type = VL_INPUT_MOUSE;
    if (line.contains("button")) {
      e.code = Button(line.at("button").get<std::string>());
      e.down = line.value("double", false) ? 2 : line.value("down", true) ? 1 : 0;
    }
  } else if (type == "wheel") {
    e.type = VL_INPUT_WHEEL;
    e.code = line.at("delta").get<int32_t>();
  } else if (type == "close") {
    e.type = VL_INPUT_CLOSE;
  } else if (type == "resize") {
    e.type = VL_INPUT_RESIZE;
    e.x = line.at("width").get<int32_t>();
    e.y = line.at("height").get<int32_t>();
  } else if (type == "focus") {
    e.type = VL_INPUT_FOCUS;
    e.down = line.value("down", true);
  } else if (type == "minimize") {
    e.type = VL_INPUT_MINIMIZE;
  } else if (type == "maximize") {
    e.type = VL_INPUT_MAXIMIZE;
  } else if (type == "restore") {
    e.type = VL_INPUT_RESTORE;
  } else if (type == "move") {
    e.type = VL_INPUT_MOVE;
  } else if (type == "display") {
    e.type = VL_INPUT_DISPLAY;
    e.x = line.at("width").get<int32_t>();
    e.y = line.at("height").get<int32_t>();
    e.code = line.value("depth", 32);
  } else {
    throw std::runtime_error("unknown type \"" + type + "\"");
  }
  return input;
}

}  // namespace

bool ParseInputLines(const std::string& text, std::vector<TimedInput>& input, std::string& error) {
  std::istringstream lines(text);
  std::string line;
  for (int number = 1; std::getline(lines, line); ++number) {
    if (line.find_first_not_of(" \t\r") == std::string::npos) continue;
    try {
      input.push_back(ParseLine(json::parse(line)));
    } catch (const std::exception& e) {
      error = "line " + std::to_string(number) + ": " + e.what();
      return false;
    }
  }
  return true;
}

std::string FormatInputLine(const TimedInput& input) {
  const vl_input_event& e = input.event;
  json line;
  line["at"] = input.atMs;
  switch (e.type) {
    case VL_INPUT_KEY:
      line["type"] = "key";
      line["code"] = e.code;
      line["down"] = e.down != 0;
      break;
    case VL_INPUT_CHAR:
      line["type"] = "char";
      line["code"] = e.code;
      break;
    case VL_INPUT_MOUSE:
      line["type"] = "mouse";
      line["x"] = e.x;
      line["y"] = e.y;
      if (e.code) {
        line["button"] = e.code == 1 ? "left" : e.code == 2 ? "middle" : "right";
        line["down"] = e.down != 0;
        if (e.down == 2) line["double"] = true;
      }
      break;
    case VL_INPUT_WHEEL:
      line["type"] = "wheel";
      line["delta"] = e.code;
      line["x"] = e.x;
      line["y"] = e.y;
      break;
    case VL_INPUT_CLOSE:
      line["type"] = "close";
      break;
    case VL_INPUT_RESIZE:
      line["type"] = "resize";
      line["width"] = e.x;
      line["height"] = e.y;
      break;
    case VL_INPUT_FOCUS:
      line["type"] = "focus";
      line["down"] = e.down != 0;
      break;
    case VL_INPUT_MINIMIZE:
      line["type"] = "minimize";
      break;
    case VL_INPUT_MAXIMIZE:
      line["type"] = "maximize";
      break;
    case VL_INPUT_RESTORE:
      line["type"] = "restore";
      break;
    case VL_INPUT_MOVE:
      line["type"] = "move";
      line["x"] = e.x;
      line["y"] = e.y;
      break;
    case VL_INPUT_DISPLAY:
      line["type"] = "display";
      line["width"] = e.x;
      line["height"] = e.y;
      line["depth"] = e.code;
      break;
  }
  if (e.mods) {
    json mods = json::array();
    if (e.mods & 1) mods.push_back("shift");
    if (e.mods & 2) mods.push_back("control");
    if (e.mods & 4) mods.push_back("alt");
    line["mods"] = mods;
  }
  return line.dump();
}

}  // namespace vl

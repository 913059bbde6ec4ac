#include "tools/input_lines.h"

#include <nlohmann/json.hpp>
#include <sstream>

#include "tools/key_names.h"

namespace vl {

namespace {

using nlohmann::json;

// A number of a line, which must be whole and in range: JSON has larger ones.
int64_t Number(const json& line, const char* name, int64_t least, int64_t most) {
  const json& value = line.at(name);
  const auto refuse = [name] {
    throw std::runtime_error(std::string("\"") + name + "\" is not a number in its range");
  };
  if (!value.is_number()) refuse();
  // All that is allowed here is exact in a double too.
  const double number = value.get<double>();
  if (!(number >= static_cast<double>(least) && number <= static_cast<double>(most))) refuse();
  const auto whole = static_cast<int64_t>(number);
  if (static_cast<double>(whole) != number) refuse();
  return whole;
}

int32_t Int(const json& line, const char* name) {
  return static_cast<int32_t>(Number(line, name, INT32_MIN, INT32_MAX));
}

int32_t Int(const json& line, const char* name, int32_t ifMissing) {
  return line.contains(name) ? Int(line, name) : ifMissing;
}

int32_t KeyCode(const json& line) {
  if (line.contains("code")) return Int(line, "code");
  const std::string name = line.at("key").get<std::string>();
  int32_t code = 0;
  if (!KeyOfName(name, code)) throw std::runtime_error("unknown key \"" + name + "\"");
  return code;
}

int32_t CharCode(const json& line) {
  if (line.contains("code")) return Int(line, "code");
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
  if (name == "fourth") return 4;
  throw std::runtime_error("\"button\" must be left, middle, right or fourth");
}

const char* ButtonName(int32_t button) {
  constexpr const char* kNames[] = {"", "left", "middle", "right", "fourth"};
  return button >= 1 && button <= 4 ? kNames[button] : "";
}

void ParseJoystick(const json& line, TimedInput& input) {
  vl_input_event& e = input.event;
  e.code = Int(line, "joystick", 0);
  const auto position = [&](const char* what, int32_t type) {
    e.type = type;
    e.x = Int(line, what);
    e.y = Int(line, "value");
  };
  if (line.contains("attach")) {
    e.type = VL_INPUT_JOYSTICK_ATTACH;
    for (const char* count : {"axes", "rotations", "buttons", "hats"}) {
      input.text += std::to_string(Int(line, count, 0)) + " ";
    }
    input.text += line.at("attach").get<std::string>();
  } else if (line.contains("detach")) {
    e.type = VL_INPUT_JOYSTICK_DETACH;
  } else if (line.contains("axis")) {
    position("axis", VL_INPUT_JOYSTICK_AXIS);
  } else if (line.contains("rotation")) {
    position("rotation", VL_INPUT_JOYSTICK_ROTATION);
  } else if (line.contains("hat")) {
    position("hat", VL_INPUT_JOYSTICK_HAT);
  } else if (line.contains("button")) {
    e.type = VL_INPUT_JOYSTICK_BUTTON;
    e.x = Int(line, "button");
    e.down = line.value("down", true);
  } else {
    throw std::runtime_error("a joystick line needs attach, detach, axis, rotation, button or hat");
  }
}

void FormatJoystick(const vl_input_event& e, const std::string& text, json& line) {
  line["type"] = "joystick";
  line["joystick"] = e.code;
  switch (e.type) {
    case VL_INPUT_JOYSTICK_ATTACH: {
      std::istringstream words(text);
      for (const char* count : {"axes", "rotations", "buttons", "hats"}) {
        int value = 0;
        words >> value;
        line[count] = value;
      }
      std::string name;
      words.get();
      std::getline(words, name);
      line["attach"] = name;
      break;
    }
    case VL_INPUT_JOYSTICK_DETACH:
      line["detach"] = true;
      break;
    case VL_INPUT_JOYSTICK_BUTTON:
      line["button"] = e.x;
      line["down"] = e.down != 0;
      break;
    default:
      line[e.type == VL_INPUT_JOYSTICK_AXIS ? "axis" : e.type == VL_INPUT_JOYSTICK_ROTATION ? "rotation" : "hat"] = e.x;
      line["value"] = e.y;
      break;
  }
}

TimedInput ParseLine(const json& line) {
  TimedInput input;
  constexpr int64_t kLongestMs = int64_t{1} << 53;
  input.atMs = static_cast<uint64_t>(Number(line, "at", 0, kLongestMs));
  vl_input_event& e = input.event;
  const std::string type = line.at("type").get<std::string>();
  if (line.contains("mods")) {
    for (const auto& mod : line.at("mods")) {
      const std::string name = mod.get<std::string>();
      e.mods |= name == "shift" ? 1 : name == "control" ? 2 : name == "alt" ? 4 : 0;
    }
  }
  e.x = Int(line, "x", 0);
  e.y = Int(line, "y", 0);
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
    } else if (line.contains("dx") || line.contains("dy")) {
      e.down = 1;
      e.x = Int(line, "dx", 0);
      e.y = Int(line, "dy", 0);
    }
  } else if (type == "wheel") {
    e.type = VL_INPUT_WHEEL;
    e.code = Int(line, "delta");
  } else if (type == "close") {
    e.type = VL_INPUT_CLOSE;
  } else if (type == "resize") {
    e.type = VL_INPUT_RESIZE;
    e.x = Int(line, "width");
    e.y = Int(line, "height");
  } else if (type == "focus") {
    e.type = VL_INPUT_FOCUS;
    e.down = line.value("down", true);
  } else if (type == "joystick") {
    ParseJoystick(line, input);
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
      line[e.code == 0 && e.down == 1 ? "dx" : "x"] = e.x;
      line[e.code == 0 && e.down == 1 ? "dy" : "y"] = e.y;
      if (e.code) {
        line["button"] = ButtonName(e.code);
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
    case VL_INPUT_JOYSTICK_ATTACH:
    case VL_INPUT_JOYSTICK_DETACH:
    case VL_INPUT_JOYSTICK_AXIS:
    case VL_INPUT_JOYSTICK_ROTATION:
    case VL_INPUT_JOYSTICK_BUTTON:
    case VL_INPUT_JOYSTICK_HAT:
      FormatJoystick(e, e.text ? e.text : input.text, line);
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
  // A joystick may have any bytes for a name.
  return line.dump(-1, ' ', false, json::error_handler_t::replace);
}

}  // namespace vl

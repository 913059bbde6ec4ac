#include "tools/player/settings.h"

#include <toml++/toml.h>

#include <algorithm>

#include "tools/key_names.h"

namespace vl {

namespace {

constexpr const char* kScalings[] = {"follow", "integer", "nearest", "smooth"};

struct ActionName {
  const char* name;
  vl_action action;
};
constexpr ActionName kActions[] = {
    {"menu", VL_ACTION_MENU},       {"full-screen", VL_ACTION_FULL_SCREEN},
    {"scaling", VL_ACTION_SCALING}, {"pause", VL_ACTION_PAUSE},
    {"step", VL_ACTION_STEP},       {"screenshot", VL_ACTION_SCREENSHOT},
    {"reload", VL_ACTION_RELOAD},   {"quit", VL_ACTION_QUIT},
};

struct Wrong {
  uint32_t line;
  std::string text;
};

[[noreturn]] void Fail(const toml::node& node, const std::string& text) { throw Wrong{node.source().begin.line, text}; }

std::string Lower(std::string text) {
  for (char& c : text) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
  return text;
}

std::string TextOf(const toml::node& node, const std::string& key) {
  const auto text = node.value_exact<std::string>();
  if (!text) Fail(node, key + " must be a text");
  return *text;
}

// True when the key is one of a view.
bool ReadViewKey(ViewSettings& view, const std::string& key, const toml::node& node) {
  if (key == "scaling") {
    vl_scaling scaling{};
    if (!ParseScaling(TextOf(node, key), scaling)) Fail(node, "scaling must be follow, integer, nearest or smooth");
    view.scaling = scaling;
  } else if (key == "full-screen") {
    view.fullScreen = node.value_exact<bool>();
    if (!view.fullScreen) Fail(node, "full-screen must be true or false");
  } else if (key == "size") {
    view.size = TextOf(node, key);
  } else {
    return false;
  }
  return true;
}

void ReadApplication(Settings& settings, const toml::node& node) {
  const toml::table* table = node.as_table();
  if (!table) Fail(node, "application must be a table: [[application]]");
  std::string file;
  ViewSettings view;
  for (const auto& [k, value] : *table) {
    const std::string key(k.str());
    if (key == "file") {
      file = TextOf(value, key);
    } else if (!ReadViewKey(view, key, value)) {
      Fail(value, "unknown key \"" + key + "\"");
    }
  }
  if (file.empty()) Fail(node, "an [[application]] needs file = \"NAME.vlp\"");
  settings.applications[file].Add(view);
}

void ReadKeys(Settings& settings, const toml::node& node) {
  const toml::table* table = node.as_table();
  if (!table) Fail(node, "keys must be a table: [keys]");
  for (const auto& [k, value] : *table) {
    const std::string key(k.str());
    const auto* action =
        std::find_if(std::begin(kActions), std::end(kActions), [&](const ActionName& a) { return key == a.name; });
    if (action == std::end(kActions)) Fail(value, "unknown action \"" + key + "\"");
    KeyCombination keys;
    if (!ParseKeyCombination(TextOf(value, key), keys)) Fail(value, "\"" + TextOf(value, key) + "\" names no key");
    settings.keys[action->action] = keys;
  }
}

void ReadSettings(Settings& settings, const toml::table& root) {
  for (const auto& [k, value] : root) {
    const std::string key(k.str());
    if (ReadViewKey(settings.view, key, value)) continue;
    if (key == "screenshots") {
      settings.screenshots = TextOf(value, key);
    } else if (key == "keys") {
      ReadKeys(settings, value);
    } else if (key == "application") {
      const toml::array* list = value.as_array();
      if (!list) Fail(value, "application must be a list of tables: [[application]]");
      for (const auto& entry : *list) ReadApplication(settings, entry);
    } else {
      Fail(value, "unknown key \"" + key + "\"");
    }
  }
}

}  // namespace

void ViewSettings::Add(const ViewSettings& other) {
  if (other.scaling) scaling = other.scaling;
  if (other.fullScreen) fullScreen = other.fullScreen;
  if (other.size) size = other.size;
}

bool ParseScaling(const std::string& text, vl_scaling& scaling) {
  for (int i = 0; i < 4; ++i) {
    if (text == kScalings[i]) {
      scaling = static_cast<vl_scaling>(i);
      return true;
    }
  }
  return false;
}

const char* NameOfScaling(vl_scaling scaling) { return kScalings[scaling]; }

bool ParseKeyCombination(const std::string& text, KeyCombination& keys) {
  keys = {};
  std::string rest = Lower(text);
  if (rest == "none") return true;
  for (;;) {
    const size_t plus = rest.find('+');
    if (plus == std::string::npos) break;
    const std::string mod = rest.substr(0, plus);
    const int32_t bit = mod == "shift" ? 1 : mod == "ctrl" || mod == "control" ? 2 : mod == "alt" ? 4 : 0;
    if (bit == 0) return false;
    keys.mods |= bit;
    rest = rest.substr(plus + 1);
  }
  return KeyOfName(rest, keys.code);
}

bool ParseSettings(const std::string& text, Settings& settings, std::string& error) {
  try {
    ReadSettings(settings, toml::parse(text));
    return true;
  } catch (const Wrong& wrong) {
    error = "line " + std::to_string(wrong.line) + ": " + wrong.text;
  } catch (const toml::parse_error& wrong) {
    error = "line " + std::to_string(wrong.source().begin.line) + ": " + std::string(wrong.description());
  }
  return false;
}

Memory ParseMemory(const std::string& text) {
  Memory memory;
  toml::table root;
  try {
    root = toml::parse(text);
  } catch (const toml::parse_error&) {
    return memory;
  }
  if (const toml::array* recent = root["recent"].as_array()) {
    for (const auto& entry : *recent) {
      const auto path = entry.value_exact<std::string>();
      if (path && memory.recent.size() < kMaxRecent) memory.recent.push_back(*path);
    }
  }
  if (const toml::array* views = root["view"].as_array()) {
    for (const auto& entry : *views) {
      const toml::table* table = entry.as_table();
      const auto path = table ? (*table)["path"].value<std::string>() : std::nullopt;
      if (!path) continue;
      ViewSettings view;
      vl_scaling scaling{};
      if (ParseScaling((*table)["scaling"].value_or(std::string()), scaling)) view.scaling = scaling;
      view.fullScreen = (*table)["full-screen"].value_exact<bool>();
      memory.views[*path] = view;
    }
  }
  return memory;
}

std::string FormatMemory(const Memory& memory) {
  toml::table root;
  toml::array recent;
  for (const std::string& path : memory.recent) recent.push_back(path);
  root.insert("recent", std::move(recent));
  toml::array views;
  for (const auto& [path, view] : memory.views) {
    toml::table table;
    table.insert("path", path);
    if (view.scaling) table.insert("scaling", NameOfScaling(*view.scaling));
    if (view.fullScreen) table.insert("full-screen", *view.fullScreen);
    views.push_back(std::move(table));
  }
  root.insert("view", std::move(views));
  std::ostringstream text;
  text << root << "\n";
  return text.str();
}

void Remember(Memory& memory, const std::string& path) {
  std::erase(memory.recent, path);
  memory.recent.insert(memory.recent.begin(), path);
  if (memory.recent.size() > kMaxRecent) memory.recent.resize(kMaxRecent);
}

}  // namespace vl

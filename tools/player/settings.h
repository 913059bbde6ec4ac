// Settings of `vorlane run`: what a person wrote down, what is remembered of each application, and where both lie.
//
// The order is: command line, remembered for the application, [[application]] of the file, the file, the defaults.
// The settings file is the person's: it is read and never written. What is remembered is written as a whole file of
// its own.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "include/vorlane.h"

namespace vl {

struct KeyCombination {
  int32_t code = 0;  // virtual key; 0: none
  int32_t mods = 0;  // as in vl_input_event
};

// What may be set for all applications and for one.
struct ViewSettings {
  std::optional<vl_scaling> scaling;
  std::optional<bool> fullScreen;
  std::optional<std::string> size;  // WIDTHxHEIGHT
  // What is set in `other` wins.
  void Add(const ViewSettings& other);
};

struct Settings {
  ViewSettings view;
  std::map<std::string, ViewSettings> applications;  // by file name or absolute path
  std::string screenshots;                           // folder
  std::map<vl_action, KeyCombination> keys;
};

// Reads the text of a settings file. False with "line N: what is wrong".
bool ParseSettings(const std::string& text, Settings& settings, std::string& error);
// "Ctrl+F10", "Alt+Enter", "none". False when it names no key.
bool ParseKeyCombination(const std::string& text, KeyCombination& keys);
bool ParseScaling(const std::string& text, vl_scaling& scaling);
const char* NameOfScaling(vl_scaling scaling);

struct Memory {
  std::vector<std::string> recent;            // absolute paths, the newest first
  std::map<std::string, ViewSettings> views;  // by absolute path
};

inline constexpr size_t kMaxRecent = 20;

// Unreadable or strange text gives what could be understood of it.
Memory ParseMemory(const std::string& text);
std::string FormatMemory(const Memory& memory);
// Puts a path in front.
void Remember(Memory& memory, const std::string& path);

// By XDG_CONFIG_HOME, XDG_STATE_HOME, XDG_PICTURES_DIR and HOME; empty when there is no home.
std::string SettingsPath();
std::string MemoryPath();
std::string ScreenshotFolder(const Settings& settings);

// A settings file that is there and wrong is an error: one line.
bool LoadSettings(Settings& settings, std::string& error);
Memory LoadMemory();
// Replaces the file in one step. False when it can't be written.
bool SaveMemory(const Memory& memory);

}  // namespace vl

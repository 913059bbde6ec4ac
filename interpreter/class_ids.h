// The 75 runtime classes: ids, names and what the frame knows of each.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace vl {

enum ClassId : uint8_t {
  CLASS_NONE = 0,
  CLASS_SPRITE = 1,
  CLASS_MATH = 2,
  CLASS_DISK = 3,
  CLASS_KEYBOARD = 4,
  CLASS_PRINTER = 5,
  CLASS_FILE = 6,
  CLASS_FONT = 7,
  CLASS_STRING = 8,
  CLASS_SURFACE = 9,
  CLASS_POINTARRAY = 10,
  CLASS_VIDEO = 11,
  CLASS_ANIMATION = 12,
  CLASS_SOUND = 13,
  CLASS_MUSIC = 14,
  CLASS_BUTTON = 15,
  CLASS_EDIT = 16,
  CLASS_COMBOBOX = 17,
  CLASS_SELECTOR = 18,
  CLASS_LISTBOX = 19,
  CLASS_RADIOBUTTON = 20,
  CLASS_CHECKBOX = 21,
  CLASS_QTIME = 22,
  CLASS_CDAUDIO = 23,
  CLASS_INI = 24,
  CLASS_VEX = 25,
  CLASS_VEXPLAYER = 26,
  CLASS_VEXCHANNEL = 27,
  CLASS_VEXUSER = 28,
  CLASS_VEXSERVER = 29,
  CLASS_VEXCONNECTION = 30,
  CLASS_VEXSESSION = 31,
  CLASS_VEXSOCKET = 32,
  CLASS_VEXSTATS = 33,
  CLASS_SCROLLBAR = 34,
  CLASS_MESSAGEBOX = 35,
  CLASS_MENU = 36,
  CLASS_TIMER = 37,
  CLASS_GAMEINPUT = 38,
  CLASS_SYSTEM = 39,
  CLASS_SHAREDLIBRARY = 40,
  CLASS_BINARY = 41,
  CLASS_REGISTRY = 42,
  CLASS_PROGRESSBAR = 43,
  CLASS_SLIDER = 44,
  CLASS_SPIN = 45,
  CLASS_GROUPBOX = 46,
  CLASS_RICHEDIT = 47,
  CLASS_STATICTEXT = 48,
  CLASS_FFDEVICE = 49,
  CLASS_CLIPBOARD = 50,
  CLASS_MODPLAYER = 51,
  CLASS_PROCESS = 52,
  CLASS_VOICE = 53,
  CLASS_SERIAL = 54,
  CLASS_TRAYICON = 55,
  CLASS_PROGRAM = 56,
  CLASS_DISPLAY = 57,
  CLASS_WINDOW = 58,
  CLASS_EDITOR = 59,
  CLASS_BANK = 60,
  CLASS_CAMERA = 61,
  CLASS_OBJECT = 62,
  CLASS_LIGHT = 63,
  CLASS_POSITION = 64,
  CLASS_TEXTURE = 65,
  CLASS_ZONE = 66,
  CLASS_SPEAKER = 67,
  CLASS_BLOB = 68,
  CLASS_WORLD = 69,
  CLASS_MATERIAL = 70,
  CLASS_VECTOR = 71,
  CLASS_MATRIX = 72,
  CLASS_QUATERNION = 73,
  CLASS_POLYGON = 74,
  CLASS_POINT3D = 75,
};
inline constexpr uint32_t kClassCount = 75;
// Lists are indexed by class id; 76 is spare.
inline constexpr uint32_t kClassLists = 77;

struct ClassFacts {
  const char* name;
  uint16_t constantBase;                // one above the last ordinary member id
  bool fixed;                           // one object a run, never made by New
  bool kept;                            // the collection always leaves its objects alone
  std::span<const uint8_t> dependants;  // classes whose objects may hang on an object of this one
};

// id 1 to 75.
const ClassFacts& FactsOfClass(uint32_t id);
// 0 when there is no such class; ignores case.
uint32_t ClassIdByName(std::string_view name);

}  // namespace vl

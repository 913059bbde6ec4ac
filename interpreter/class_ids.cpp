#include "interpreter/class_ids.h"

#include "interpreter/name_pool.h"

namespace vl {

namespace {

constexpr uint8_t kSpriteDependants[] = {CLASS_SURFACE};
constexpr uint8_t kSurfaceDependants[] = {CLASS_SPRITE, CLASS_CAMERA, CLASS_TEXTURE, CLASS_MATERIAL, CLASS_BUTTON,
                                          CLASS_WINDOW, CLASS_VIDEO,  CLASS_QTIME,   CLASS_TRAYICON, CLASS_ANIMATION};
constexpr uint8_t kEditDependants[] = {CLASS_SPIN};
constexpr uint8_t kSelectorDependants[] = {CLASS_PRINTER};
constexpr uint8_t kMenuDependants[] = {CLASS_MENU};
constexpr uint8_t kGameInputDependants[] = {CLASS_FFDEVICE, CLASS_WINDOW};
constexpr uint8_t kWindowDependants[] = {
    CLASS_SURFACE,   CLASS_SPRITE,      CLASS_CAMERA,     CLASS_VIDEO,       CLASS_ANIMATION,
    CLASS_BUTTON,    CLASS_CHECKBOX,    CLASS_COMBOBOX,   CLASS_EDIT,        CLASS_GROUPBOX,
    CLASS_LISTBOX,   CLASS_PROGRESSBAR, CLASS_QTIME,      CLASS_RADIOBUTTON, CLASS_RICHEDIT,
    CLASS_SCROLLBAR, CLASS_SLIDER,      CLASS_SPIN,       CLASS_STATICTEXT,  CLASS_TRAYICON,
    CLASS_FONT,      CLASS_WINDOW,      CLASS_MESSAGEBOX, CLASS_GAMEINPUT,   CLASS_MENU};
constexpr uint8_t kCameraDependants[] = {CLASS_SURFACE, CLASS_SPRITE, CLASS_OBJECT, CLASS_LIGHT, CLASS_ZONE,
                                         CLASS_SPEAKER, CLASS_WORLD,  CLASS_CAMERA, CLASS_BLOB,  CLASS_POSITION};
constexpr uint8_t kObjectDependants[] = {CLASS_POINT3D};
constexpr uint8_t kTextureDependants[] = {CLASS_VIDEO, CLASS_QTIME, CLASS_ANIMATION};
constexpr uint8_t kWorldDependants[] = {CLASS_SURFACE, CLASS_POINT3D};

// In the order of the ids.
constexpr ClassFacts kFacts[kClassCount] = {
    {"Sprite", 57, false, false, kSpriteDependants},
    {"Math", 25, true, true, {}},
    {"Disk", 30, true, true, {}},
    {"Keyboard", 2, true, true, {}},
    {"Printer", 15, false, false, {}},
    {"File", 13, false, false, {}},
    {"Font", 7, false, false, {}},
    {"String", 22, false, true, {}},
    {"Surface", 66, false, false, kSurfaceDependants},
    {"PointArray", 7, false, false, {}},
    {"Video", 56, false, true, {}},
    {"Animation", 51, false, false, {}},
    {"Sound", 22, false, false, {}},
    {"Music", 11, false, false, {}},
    {"Button", 42, false, true, {}},
    {"Edit", 81, false, true, kEditDependants},
    {"ComboBox", 71, false, true, {}},
    {"Selector", 19, false, false, kSelectorDependants},
    {"ListBox", 74, false, true, {}},
    {"RadioButton", 47, false, true, {}},
    {"CheckBox", 45, false, true, {}},
    {"QTime", 117, false, true, {}},
    {"CDAudio", 21, false, false, {}},
    {"Ini", 7, false, false, {}},
    {"Vex", 10, false, false, {}},
    {"VexPlayer", 25, false, false, {}},
    {"VexChannel", 16, false, false, {}},
    {"VexUser", 10, false, false, {}},
    {"VexServer", 19, false, false, {}},
    {"VexConnection", 18, false, false, {}},
    {"VexSession", 11, false, false, {}},
    {"VexSocket", 21, false, false, {}},
    {"VexStats", 35, false, false, {}},
    {"ScrollBar", 43, false, true, {}},
    {"MessageBox", 9, false, false, {}},
    {"Menu", 17, false, false, kMenuDependants},
    {"Timer", 9, false, false, {}},
    {"GameInput", 16, false, false, kGameInputDependants},
    {"System", 36, true, true, {}},
    {"SharedLibrary", 5, false, false, {}},
    {"Binary", 34, false, false, {}},
    {"Registry", 13, false, false, {}},
    {"ProgressBar", 46, false, false, {}},
    {"Slider", 60, false, false, {}},
    {"Spin", 52, false, false, {}},
    {"GroupBox", 38, false, true, {}},
    {"RichEdit", 115, false, true, {}},
    {"StaticText", 40, false, true, {}},
    {"FFDevice", 23, false, false, {}},
    {"Clipboard", 11, false, false, {}},
    {"MODPlayer", 11, false, false, {}},
    {"Process", 9, false, false, {}},
    {"Voice", 5, false, true, {}},
    {"Serial", 16, false, false, {}},
    {"TrayIcon", 7, false, true, {}},
    {"Program", 61, true, true, {}},
    {"Display", 24, true, true, {}},
    {"Window", 147, false, true, kWindowDependants},
    {"Editor", 11, true, false, {}},
    {"Bank", 5, false, false, {}},
    {"Camera", 101, false, true, kCameraDependants},
    {"Object", 128, false, true, kObjectDependants},
    {"Light", 77, false, true, {}},
    {"Position", 68, false, true, {}},
    {"Texture", 12, false, true, kTextureDependants},
    {"Zone", 73, false, true, {}},
    {"Speaker", 88, false, true, {}},
    {"Blob", 79, false, true, {}},
    {"World", 64, false, false, kWorldDependants},
    {"Material", 41, false, true, {}},
    {"Vector", 27, false, false, {}},
    {"Matrix", 19, false, false, {}},
    {"Quaternion", 38, false, false, {}},
    {"Polygon", 12, false, false, {}},
    {"Point3D", 26, false, false, {}},
};

}  // namespace

const ClassFacts& FactsOfClass(uint32_t id) { return kFacts[id - 1]; }

uint32_t ClassIdByName(std::string_view name) {
  for (uint32_t id = 1; id <= kClassCount; ++id) {
    if (EqualNoCase(kFacts[id - 1].name, name)) return id;
  }
  return 0;
}

}  // namespace vl

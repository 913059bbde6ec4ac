#include "host/appfile/class_names.h"

namespace vl {

namespace {
constexpr std::string_view kClassNames[] = {
    "Sprite",   "Math",       "Disk",        "Keyboard",    "Printer",   "File",          "Font",       "String",
    "Surface",  "PointArray", "Video",       "Animation",   "Sound",     "Music",         "Button",     "Edit",
    "ComboBox", "Selector",   "ListBox",     "RadioButton", "CheckBox",  "QTime",         "CDAudio",    "Ini",
    "Vex",      "VexPlayer",  "VexChannel",  "VexUser",     "VexServer", "VexConnection", "VexSession", "VexSocket",
    "VexStats", "ScrollBar",  "MessageBox",  "Menu",        "Timer",     "GameInput",     "System",     "SharedLibrary",
    "Binary",   "Registry",   "ProgressBar", "Slider",      "Spin",      "GroupBox",      "RichEdit",   "StaticText",
    "FFDevice", "Clipboard",  "MODPlayer",   "Process",     "Voice",     "Serial",        "TrayIcon",   "Program",
    "Display",  "Window",     "Editor",      "Camera",      "Object",    "Light",         "Position",   "Texture",
    "Zone",     "Speaker",    "Blob",        "World",       "Material",  "Vector",        "Matrix",     "Quaternion",
    "Polygon",  "Point3D",
};
static_assert(sizeof(kClassNames) / sizeof(kClassNames[0]) == 74);
}  // namespace

std::span<const std::string_view> DefaultClassNames() { return kClassNames; }

}  // namespace vl

// Services: the seam to the machine, handed in when a run is made. Owned by the back end, which outlives
// the run. A back end that lacks a service leaves the pointer null; the classes over it then answer as
// their members say for a missing service.
#pragma once

#include "platform/clock.h"
#include "platform/environment.h"
#include "platform/events.h"
#include "platform/file_system.h"
#include "platform/input_devices.h"
#include "platform/sockets.h"
#include "platform/text_engine.h"
#include "platform/transfers.h"
#include "platform/window_system.h"

namespace vl {

class Clipboard;
class DeviceQueue;
class Printers;
class RunFiles;
class SerialPorts;

struct Services {
  Clock* clock = nullptr;
  EventQueue* events = nullptr;
  WindowSystem* windows = nullptr;
  TextEngine* text = nullptr;
  FileSystem* files = nullptr;
  RunFiles* disk = nullptr;  // the run's drive, over `files`; back ends leave it null
  Environment* environment = nullptr;
  Sockets* sockets = nullptr;
  Transfers* transfers = nullptr;
  InputDevices* input = nullptr;  // the back end's
  Clipboard* clipboard = nullptr;
  Printers* printers = nullptr;
  SerialPorts* serialPorts = nullptr;
  DeviceQueue* devices = nullptr;  // the run's, over `events`; back ends leave it null
};

}  // namespace vl

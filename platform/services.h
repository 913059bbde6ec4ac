// Services: the seam to the machine, handed in when a run is made. Owned by the back end, which outlives
// the run. A back end that lacks a service leaves the pointer null; the classes over it then answer as
// their members say for a missing service.
#pragma once

#include "platform/clock.h"
#include "platform/environment.h"
#include "platform/events.h"
#include "platform/file_system.h"
#include "platform/input_devices.h"
#include "platform/text_engine.h"
#include "platform/transfers.h"
#include "platform/window_system.h"

namespace vl {

class DeviceQueue;

struct Services {
  Clock* clock = nullptr;
  EventQueue* events = nullptr;
  WindowSystem* windows = nullptr;
  TextEngine* text = nullptr;
  FileSystem* files = nullptr;
  Environment* environment = nullptr;
  Transfers* transfers = nullptr;
  InputDevices* input = nullptr;   // the back end's
  DeviceQueue* devices = nullptr;  // the run's, over `events`; back ends leave it null
};

}  // namespace vl

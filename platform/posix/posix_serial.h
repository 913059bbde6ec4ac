// PosixSerialPorts: serial ports through termios.
//
// COMn is the device that the environment variable VORLANE_COMn names, else the n-th of /dev/ttyS, /dev/ttyUSB,
// /dev/ttyACM that can be opened. A program can't name a device itself.
#pragma once

#include "platform/serial.h"

namespace vl {

class PosixSerialPorts final : public SerialPorts {
 public:
  std::unique_ptr<SerialPort> open(std::string_view name) override;
};

}  // namespace vl

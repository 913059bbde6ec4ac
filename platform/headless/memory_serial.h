// MemorySerialPorts: COM1 hears what it says; COM2 and COM3 are joined by a cable. There are no others.
#pragma once

#include <array>
#include <deque>
#include <memory>

#include "platform/serial.h"

namespace vl {

class MemorySerialPorts final : public SerialPorts {
 public:
  static constexpr size_t kPorts = 3;
  static constexpr size_t kMaxWaiting = size_t{1} << 20;  // bytes on a line

  MemorySerialPorts();
  std::unique_ptr<SerialPort> open(std::string_view name) override;

 private:
  struct Line {
    std::deque<uint8_t> bytes;
  };
  struct State {
    std::array<Line, kPorts> arriving;
    std::array<bool, kPorts> isOpen{};
  };
  class Port;

  std::shared_ptr<State> state_;
};

}  // namespace vl

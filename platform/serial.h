// SerialPorts: the machine's serial ports. Calls return at once; who waits for bytes waits for events meanwhile.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace vl {

class SerialPort {
 public:
  virtual ~SerialPort() = default;
  // What is there, at most `size` bytes: 0 for nothing yet, -1 when the port is gone.
  virtual int64_t read(void* buffer, size_t size) = 0;
  // What the port takes now; the same answers.
  virtual int64_t write(const void* buffer, size_t size) = 0;
  // In bits per second; the line has 8 bits, no parity, one stop bit. False when the port refuses.
  virtual bool setRate(uint32_t rate) = 0;
  virtual uint32_t rate() = 0;
};

class SerialPorts {
 public:
  virtual ~SerialPorts() = default;
  // By a name of the period, as "COM1". Null when there is none, or another has it open.
  virtual std::unique_ptr<SerialPort> open(std::string_view name) = 0;
};

// The number in "COM1", ignoring case, with or without a colon behind it; 0 for another name.
inline uint32_t SerialPortNumber(std::string_view name) {
  if (name.ends_with(':')) name.remove_suffix(1);
  if (name.size() < 4 || name.size() > 6) return 0;
  for (int i = 0; i < 3; ++i) {
    if ((name[static_cast<size_t>(i)] | 0x20) != "com"[i]) return 0;
  }
  uint32_t number = 0;
  for (const char c : name.substr(3)) {
    if (c < '0' || c > '9') return 0;
    number = number * 10 + static_cast<uint32_t>(c - '0');
  }
  return number;
}

}  // namespace vl

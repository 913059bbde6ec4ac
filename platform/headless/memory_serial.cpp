#include "platform/headless/memory_serial.h"

#include <algorithm>

namespace vl {

class MemorySerialPorts::Port final : public SerialPort {
 public:
  Port(std::shared_ptr<State> state, size_t here, size_t there) : state_(std::move(state)), here_(here), there_(there) {
    state_->isOpen[here_] = true;
    state_->arriving[here_].bytes.clear();
  }
  ~Port() override { state_->isOpen[here_] = false; }

  int64_t read(void* buffer, size_t size) override {
    auto& bytes = state_->arriving[here_].bytes;
    const size_t count = std::min(size, bytes.size());
    std::copy_n(bytes.begin(), count, static_cast<uint8_t*>(buffer));
    bytes.erase(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count));
    return static_cast<int64_t>(count);
  }
  int64_t write(const void* buffer, size_t size) override {
    auto& bytes = state_->arriving[there_].bytes;
    const size_t count = std::min(size, kMaxWaiting - std::min(kMaxWaiting, bytes.size()));
    const auto* from = static_cast<const uint8_t*>(buffer);
    bytes.insert(bytes.end(), from, from + count);
    return static_cast<int64_t>(count);
  }
  bool setRate(uint32_t rate) override {
    rate_ = rate;
    return true;
  }
  uint32_t rate() override { return rate_; }

 private:
  std::shared_ptr<State> state_;
  size_t here_;
  size_t there_;
  uint32_t rate_ = 9600;
};

MemorySerialPorts::MemorySerialPorts() : state_(std::make_shared<State>()) {}

std::unique_ptr<SerialPort> MemorySerialPorts::open(std::string_view name) {
  const uint32_t number = SerialPortNumber(name);
  if (number == 0 || number > kPorts || state_->isOpen[number - 1]) return nullptr;
  const size_t here = number - 1;
  return std::make_unique<Port>(state_, here, here == 0 ? 0 : kPorts - here);
}

}  // namespace vl

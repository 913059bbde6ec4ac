// What the fuzz targets of the network layer share: the input as a row of steps, messages made of it, and a machine
// whose handlers delete what the input says.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "base/limits.h"
#include "net/vex_api.h"
#include "net/vex_player.h"
#include "net/vex_server.h"
#include "net/vex_socket.h"
#include "platform/headless/memory_network.h"
#include "platform/headless/virtual_clock.h"

namespace vl {

// Reads beyond the end give 0.
class FuzzSteps {
 public:
  FuzzSteps(const uint8_t* data, size_t size) : at_(data), left_(size) {}
  bool IsEmpty() const { return left_ == 0; }
  uint8_t Byte() {
    if (left_ == 0) return 0;
    --left_;
    return *at_++;
  }
  std::string Bytes(size_t count) {
    count = std::min(count, left_);
    std::string bytes(reinterpret_cast<const char*>(at_), count);
    at_ += count;
    left_ -= count;
    return bytes;
  }

 private:
  const uint8_t* at_;
  size_t left_;
};

inline std::span<const uint8_t> AsBytes(std::string_view text) {
  return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

// Ids and names are few, so that they meet; a text is now and then larger than a receive, or than anybody takes.
inline uint32_t FuzzId(FuzzSteps& steps) {
  const uint8_t b = steps.Byte();
  return b < 250 ? b % 16 : 0xFFFFFFFF - b;
}
inline std::string FuzzText(FuzzSteps& steps) {
  const uint8_t b = steps.Byte();
  if (b < 200) return std::string(1, static_cast<char>('a' + b % 6));
  if (b < 240) return steps.Bytes(b - 199);
  return std::string(b == 255 ? limits::kMaxNetMessageBytes - 20 : size_t{b - 239u} * 600, 'x');
}

// A message whose layout is right; the fields behind the type by kind, as in net/wire.cpp.
inline std::string FuzzMessage(FuzzSteps& steps, std::string_view fields, uint8_t type) {
  WireWriter writer(type);
  for (const char field : fields) {
    if (field == 'h') {
      writer.Half(steps.Byte());
    } else if (field == 'w') {
      writer.Word(FuzzId(steps));
    } else {
      writer.Text(FuzzText(steps));
    }
  }
  const auto bytes = writer.Bytes();
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

inline std::string FuzzDatagram(FuzzSteps& steps) {
  const uint8_t kind = steps.Byte();
  if (kind % 3 == 0) return steps.Bytes(kind / 3);
  WireWriter writer(kind % 3 == 1 ? kDatagramBlast : kDatagramServerBlast);
  writer.Half(steps.Byte());
  for (int i = 0; i < (kind % 3 == 1 ? 3 : 1); ++i) writer.Word(FuzzId(steps));
  writer.Rest(FuzzText(steps));
  const auto bytes = writer.Bytes();
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// The machine under test. After `deleteIn` more events the handler deletes: 1 the first object, 2 the second.
struct FuzzMachine {
  FuzzMachine(MemoryNetwork& network, NetAddress address) : sockets(network, address), api(sockets, clock) {
    api.owner = this;
    api.hasRoom = [this] { return hasRoom; };
    api.events.fill([](VexApi& a, const VexEvent& event) {
      auto& self = *static_cast<FuzzMachine*>(a.owner);
      for (const char c : event.text) self.sum += static_cast<uint8_t>(c);
      if (self.deleteWhat == 0 || self.deleteIn-- > 0) return;
      VexObject* const object = self.deleteWhat == 1 ? event.first : event.second;
      self.deleteWhat = 0;
      if (object) object->Delete();
    });
  }
  void Poll(int times) {
    for (int i = 0; i < times; ++i) {
      clock.Advance(1);
      api.Poll();
      if (api.queuedBytes > limits::kMaxNetQueuedBytes) std::abort();
    }
  }
  void PlanDeletion(FuzzSteps& steps) {
    deleteWhat = steps.Byte() % 3;
    deleteIn = steps.Byte() % 8;
  }

  VirtualClock clock;
  MemorySockets sockets;
  bool hasRoom = true;
  int deleteWhat = 0;
  int deleteIn = 0;
  uint64_t sum = 0;  // reads every text to its end
  VexApi api;        // its end makes events
};

inline void Require(bool holds) {
  if (!holds) std::abort();
}

}  // namespace vl

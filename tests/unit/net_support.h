// A network layer over machines in memory.
#pragma once

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "net/vex_api.h"
#include "net/vex_player.h"
#include "net/vex_server.h"
#include "net/vex_socket.h"
#include "platform/headless/memory_network.h"
#include "platform/headless/virtual_clock.h"

namespace vl {

// One machine with a layer of its own. Notes events as "NUMBER text" and calls onEvent.
struct NetMachine {
  NetMachine(MemoryNetwork& network, NetAddress address) : sockets(network, address), api(sockets, clock) {
    api.owner = this;
    api.idle = [this] {
      clock.Advance(1);
      return true;
    };
    api.events.fill([](VexApi& a, const VexEvent& event) {
      auto& self = *static_cast<NetMachine*>(a.owner);
      self.events.push_back(std::to_string(event.number) + " " + std::string(event.text));
      if (self.onEvent) self.onEvent(event);
    });
  }
  void Poll(int times = 1) {
    for (int i = 0; i < times; ++i) {
      clock.Advance(1);
      api.Poll();
    }
  }
  size_t Count(const std::string& event) const {
    return static_cast<size_t>(std::count(events.begin(), events.end(), event));
  }

  VirtualClock clock;
  MemorySockets sockets;
  std::vector<std::string> events;
  std::function<void(const VexEvent&)> onEvent;
  VexApi api;  // its end makes events
};

// A socket that sends any bytes it likes.
struct RawPeer {
  RawPeer(MemoryNetwork& network, NetAddress address, const char* server, uint16_t port)
      : sockets(network, address), tcp(sockets.connectTcp(server, port)) {}
  void Send(std::string_view bytes) {
    sockets.send(tcp, {reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()});
  }
  std::string Received() {
    std::string all;
    uint8_t bytes[4096];
    for (;;) {
      const int64_t count = sockets.receive(tcp, bytes, false);
      if (count <= 0) return all;
      all.append(reinterpret_cast<const char*>(bytes), static_cast<size_t>(count));
    }
  }
  bool IsEnded() {
    uint8_t byte[1];
    const int64_t count = sockets.receive(tcp, byte, true);
    return count == kSocketEnd || count == kSocketError;
  }

  MemorySockets sockets;
  SocketId tcp;
};

}  // namespace vl

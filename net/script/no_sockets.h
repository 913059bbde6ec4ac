// NoSockets: the network of a back end that has none. Nothing can be reached, and nobody comes.
#pragma once

#include "platform/sockets.h"

namespace vl {

class NoSockets final : public Sockets {
 public:
  SocketId connectTcp(std::string_view, uint16_t) override { return 0; }
  SocketId listenTcp(uint16_t) override { return 0; }
  SocketId acceptTcp(SocketId) override { return 0; }
  SocketId openUdp(uint16_t) override { return 0; }
  void close(SocketId) override {}
  void update() override {}
  bool hasNews(SocketId) override { return false; }
  bool hasConnected(SocketId) override { return false; }
  bool hasFailed(SocketId) override { return true; }
  int64_t send(SocketId, std::span<const uint8_t>) override { return kSocketError; }
  int64_t receive(SocketId, std::span<uint8_t>, bool) override { return kSocketError; }
  int64_t sendTo(SocketId, NetAddress, uint16_t, std::span<const uint8_t>) override { return kSocketError; }
  int64_t receiveFrom(SocketId, std::span<uint8_t>, NetAddress&) override { return kSocketError; }
  NetAddress localAddress(SocketId) override { return 0; }
  NetAddress remoteAddress(SocketId) override { return 0; }
  NetAddress hostAddress() override { return kLoopbackAddress; }
};

}  // namespace vl

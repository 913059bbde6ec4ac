// NetPolicy: which hosts a program may reach; PolicedSockets: the network within it.
//
// Loopback and the host that the application came from are always allowed. A host that isn't can't be told from one
// that doesn't answer: connections to it fail, what is sent there is lost, and nothing that comes from it arrives.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/sockets.h"

namespace vl {

class NetPolicy {
 public:
  // "all", "HOST:PORT" or "HOST:*", where HOST is a name or an address. False, and unchanged, for anything else.
  bool Allow(std::string_view rule);
  // Where the application came from: all its ports. In place of the one before; "" for none.
  void SetOrigin(std::string_view host);

  // By the text that a program gave; names are compared without case, not looked up.
  bool MayConnect(std::string_view host, uint16_t port) const;
  bool MaySend(NetAddress to, uint16_t port) const;
  // For what comes in, whose port says nothing.
  bool MayReceive(NetAddress from) const;

 private:
  static constexpr int kAnyPort = -1;
  struct Rule {
    std::string host;  // lower case
    NetAddress address = 0;
    int port = kAnyPort;
  };
  bool Matches(std::string_view host, NetAddress address, int port) const;

  std::vector<Rule> rules_;
  std::optional<Rule> origin_;
  bool isOpen_ = false;
};

class PolicedSockets final : public Sockets {
 public:
  // Both outlive it.
  PolicedSockets(Sockets& inner, const NetPolicy& policy) : inner_(inner), policy_(policy) {}

  SocketId connectTcp(std::string_view host, uint16_t port) override;
  SocketId listenTcp(uint16_t port) override { return inner_.listenTcp(port); }
  SocketId acceptTcp(SocketId listener) override;
  SocketId openUdp(uint16_t port) override { return inner_.openUdp(port); }
  void close(SocketId socket) override { inner_.close(socket); }
  void update() override { inner_.update(); }
  bool wakesWaits() override { return inner_.wakesWaits(); }
  void endNextWait() override { inner_.endNextWait(); }
  bool hasNews(SocketId socket) override { return inner_.hasNews(socket); }
  bool hasConnected(SocketId socket) override { return inner_.hasConnected(socket); }
  bool hasFailed(SocketId socket) override { return inner_.hasFailed(socket); }
  int64_t send(SocketId socket, std::span<const uint8_t> bytes) override { return inner_.send(socket, bytes); }
  int64_t receive(SocketId socket, std::span<uint8_t> bytes, bool peek) override {
    return inner_.receive(socket, bytes, peek);
  }
  int64_t sendTo(SocketId socket, NetAddress to, uint16_t port, std::span<const uint8_t> bytes) override;
  int64_t receiveFrom(SocketId socket, std::span<uint8_t> bytes, NetAddress& from) override;
  NetAddress localAddress(SocketId socket) override { return inner_.localAddress(socket); }
  NetAddress remoteAddress(SocketId socket) override { return inner_.remoteAddress(socket); }
  NetAddress hostAddress() override { return inner_.hostAddress(); }

 private:
  // By the policy, or because a connection that was allowed by name goes there.
  bool MayReach(NetAddress address, int port);
  void NoteReached();

  static constexpr size_t kMaxReached = 4096;

  Sockets& inner_;
  const NetPolicy& policy_;
  std::vector<SocketId> named_;  // allowed by name, address not known yet
  std::set<NetAddress> reached_;
};

}  // namespace vl

// MemoryNetwork: a network in memory; MemorySockets: one machine on it. Deterministic, for tests and headless runs.
//
// Several machines, of one thread, may share a network, which outlives them. A connection stands as soon as the other
// side listens. Datagrams can be lost and delivered out of order, by rules that a test sets.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/sockets.h"

namespace vl {

class MemorySockets;

class MemoryNetwork {
 public:
  // What waits at a machine: bytes of one direction of a connection before its sender must wait, connections of a
  // listening socket, datagrams of a socket.
  static constexpr size_t kPipeBytes = 64 * 1024;
  static constexpr size_t kBacklog = 128;
  static constexpr size_t kMaxDatagrams = 1024;
  static constexpr size_t kMaxDatagramBytes = 65507;

  // Asked for each datagram, counted from 0: how many later ones of the same socket overtake it; below 0 it is lost.
  std::function<int(uint64_t number)> delay;
  // Bytes that one send takes and one receive gives at most; 0: no limit.
  size_t sliceBytes = 0;

  void SetName(const std::string& name, NetAddress address) { names_[name] = address; }

 private:
  friend class MemorySockets;
  struct Pipe {
    std::deque<uint8_t> bytes;
    bool isClosed = false;  // by its writer
    bool isDead = false;    // its reader is gone
  };
  MemorySockets* Machine(NetAddress address);

  std::map<NetAddress, MemorySockets*> machines_;
  std::map<std::string, NetAddress> names_;
  uint64_t datagrams_ = 0;
};

class MemorySockets final : public Sockets {
 public:
  static constexpr size_t kMaxSockets = 4096;

  MemorySockets(MemoryNetwork& network, NetAddress address);
  ~MemorySockets() override;
  MemorySockets(const MemorySockets&) = delete;
  MemorySockets& operator=(const MemorySockets&) = delete;

  SocketId connectTcp(std::string_view host, uint16_t port) override;
  SocketId listenTcp(uint16_t port) override;
  SocketId acceptTcp(SocketId listener) override;
  SocketId openUdp(uint16_t port) override;
  void close(SocketId socket) override;
  void update() override {}
  bool hasNews(SocketId socket) override;
  bool hasConnected(SocketId socket) override;
  bool hasFailed(SocketId socket) override;
  int64_t send(SocketId socket, std::span<const uint8_t> bytes) override;
  int64_t receive(SocketId socket, std::span<uint8_t> bytes, bool peek) override;
  int64_t sendTo(SocketId socket, NetAddress to, uint16_t port, std::span<const uint8_t> bytes) override;
  int64_t receiveFrom(SocketId socket, std::span<uint8_t> bytes, NetAddress& from) override;
  NetAddress localAddress(SocketId socket) override;
  NetAddress remoteAddress(SocketId socket) override;
  NetAddress hostAddress() override { return address_; }

 private:
  enum class Kind { Connection, Listener, Datagrams };
  struct Datagram {
    std::vector<uint8_t> bytes;
    NetAddress from = 0;
    int overtaken = 0;  // how many later ones still go first
  };
  struct Pending {
    std::shared_ptr<MemoryNetwork::Pipe> in, out;
    NetAddress local = 0, remote = 0;
  };
  struct Socket {
    Kind kind = Kind::Connection;
    uint16_t port = 0;
    std::shared_ptr<MemoryNetwork::Pipe> in, out;  // null: the connection failed
    NetAddress local = 0, remote = 0;
    std::deque<Pending> pending;
    std::deque<Datagram> datagrams;
  };
  Socket* Find(SocketId socket);
  SocketId Add(Socket socket);
  Socket* Listener(uint16_t port);
  bool IsOwn(NetAddress address) const { return address == address_ || address >> 24 == 127; }
  void Deliver(uint16_t port, Datagram datagram);

  MemoryNetwork& network_;
  NetAddress address_;
  std::map<SocketId, Socket> sockets_;
  SocketId last_ = 0;
};

}  // namespace vl

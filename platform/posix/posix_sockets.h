// PosixSockets: the network of the machine, watched by epoll.
//
// Used by one thread. Host names are looked up by a thread of its own, which shares nothing but the list of names and
// answers; a look-up that hangs doesn't hold up the end of a run.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/sockets.h"

namespace vl {

class PosixSockets final : public Sockets {
 public:
  static constexpr size_t kMaxSockets = 4096;

  PosixSockets();
  ~PosixSockets() override;
  PosixSockets(const PosixSockets&) = delete;
  PosixSockets& operator=(const PosixSockets&) = delete;

  SocketId connectTcp(std::string_view host, uint16_t port) override;
  SocketId listenTcp(uint16_t port) override;
  SocketId acceptTcp(SocketId listener) override;
  SocketId openUdp(uint16_t port) override;
  void close(SocketId socket) override;
  void update() override { Watch(0); }
  bool hasNews(SocketId socket) override;
  bool hasConnected(SocketId socket) override;
  bool hasFailed(SocketId socket) override;
  int64_t send(SocketId socket, std::span<const uint8_t> bytes) override;
  int64_t receive(SocketId socket, std::span<uint8_t> bytes, bool peek) override;
  int64_t sendTo(SocketId socket, NetAddress to, uint16_t port, std::span<const uint8_t> bytes) override;
  int64_t receiveFrom(SocketId socket, std::span<uint8_t> bytes, NetAddress& from) override;
  NetAddress localAddress(SocketId socket) override;
  NetAddress remoteAddress(SocketId socket) override;
  NetAddress hostAddress() override;

  // As update, but waits up to timeoutMs for the first news. Not for a run, whose waits are the event queue's.
  void Watch(int timeoutMs);
  // The port of a listening socket; for one that was opened with port 0.
  uint16_t LocalPort(SocketId socket);

 private:
  struct Socket {
    int fd = -1;  // -1: the name is looked up, or the connection failed
    uint16_t port = 0;
    bool isStream = true;
    bool isListener = false;
    bool isConnected = false;
    bool isFailed = false;
    bool hasNews = false;
  };
  class Resolver;

  Socket* Find(SocketId socket);
  SocketId Add(const Socket& socket, uint32_t events);
  void Connect(SocketId id, Socket& socket, NetAddress address);
  void TakeAnswers();

  int epoll_;
  std::unordered_map<SocketId, Socket> sockets_;
  std::vector<SocketId> ready_;
  SocketId last_ = 0;
  std::shared_ptr<Resolver> resolver_;
  size_t lookups_ = 0;
};

}  // namespace vl

// PosixSockets: the network of the machine, watched by epoll; also what a run's wait sleeps on, so that one poll over
// all sockets and the queue ends it.
//
// Each change is told of once and noted at the socket until it is taken, so a socket that nobody reads ends one wait
// and no more. Used by one thread, but for wake(). Host names are looked up by a thread of its own, which shares
// nothing but the list of names and answers; a look-up that hangs doesn't hold up the end of a run.
#pragma once

#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "platform/posix/threaded_queue.h"
#include "platform/sockets.h"

namespace vl {

class PosixSockets final : public Sockets, public Sleeper {
 public:
  static constexpr size_t kMaxSockets = 4096;

  // `own`: the machine's address that all its sockets have; 0: whichever fits.
  explicit PosixSockets(NetAddress own = 0);
  ~PosixSockets() override;
  PosixSockets(const PosixSockets&) = delete;
  PosixSockets& operator=(const PosixSockets&) = delete;

  SocketId connectTcp(std::string_view host, uint16_t port) override;
  SocketId listenTcp(uint16_t port) override;
  SocketId acceptTcp(SocketId listener) override;
  SocketId openUdp(uint16_t port) override;
  void close(SocketId socket) override;
  void update() override;
  bool wakesWaits() override { return newsLeft_ == 0; }
  void endNextWait() override { isWaitOver_ = true; }
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

  // What it finds saves the next update() its look.
  void sleep(int timeoutMs) override;
  void wake() override;

  // The port of a listening socket; for one that was opened with port 0.
  uint16_t LocalPort(SocketId socket);

 private:
  struct Socket {
    SocketId id = 0;     // 0: free
    uint32_t round = 0;  // how often its place was given out
    int fd = -1;         // -1: the name is looked up, or the connection failed
    uint16_t port = 0;
    bool isStream = true;
    bool isListener = false;
    bool isConnected = false;
    bool isFailed = false;
    bool hasNews = false;
    bool isEnding = false;  // the end stands behind what a receive gives
  };
  class Resolver;
  class WakeUp;

  Socket* Find(SocketId socket);
  SocketId Add(Socket socket, uint32_t events);
  bool Register(SocketId id, int fd, uint32_t events, int operation);
  void Look(int timeoutMs);
  void Take(SocketId id, uint32_t events);
  void SetNews(Socket& socket, bool hasNews);
  void Connect(SocketId id, Socket& socket, NetAddress address);
  void TakeAnswers();

  bool Bind(int fd, uint16_t port) const;

  NetAddress own_;
  int epoll_;
  // A socket's place is in the low bits of its id, above them how often a place was given out.
  static constexpr uint32_t kPlaceBits = 12;
  static constexpr uint32_t kMaxRounds = (1u << (32 - kPlaceBits)) - 1;
  static_assert(kMaxSockets == 1 << kPlaceBits);
  std::vector<Socket> sockets_;
  std::deque<uint32_t> free_;  // places, the longest free first
  size_t newsLeft_ = 0;        // sockets with news
  bool isFresh_ = false;       // looked since the last update
  bool isWaitOver_ = false;    // the next sleep isn't one
  std::shared_ptr<WakeUp> wakeUp_;
  std::shared_ptr<Resolver> resolver_;
  size_t lookups_ = 0;
};

}  // namespace vl

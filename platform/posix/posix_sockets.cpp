#include "platform/posix/posix_sockets.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace vl {

namespace {

// More than a listening program asks for: those who connect at the same moment shouldn't wait for a second attempt.
constexpr int kBacklog = 128;
constexpr int kNewsAtOnce = 128;
constexpr size_t kMaxLookups = 64;
// Edges: each change ends one wait. Room to send is asked for from the start, as it costs nothing while there is some.
constexpr uint32_t kStreamEvents = EPOLLIN | EPOLLOUT | EPOLLRDHUP | EPOLLET;
constexpr uint32_t kInEvents = EPOLLIN | EPOLLET;
constexpr uint32_t kEndEvents = EPOLLRDHUP | EPOLLERR | EPOLLHUP;

sockaddr_in SocketAddress(NetAddress address, uint16_t port) {
  sockaddr_in a{};
  a.sin_family = AF_INET;
  a.sin_addr.s_addr = htonl(address);
  a.sin_port = htons(port);
  return a;
}

void Set(int fd, int level, int option) {
  const int on = 1;
  setsockopt(fd, level, option, &on, sizeof on);
}

int64_t Result(ssize_t count) {
  if (count >= 0) return count;
  return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR ? kSocketNothing : kSocketError;
}

NetAddress LookUp(const std::string& name) {
  addrinfo hints{};
  hints.ai_family = AF_INET;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  if (getaddrinfo(name.c_str(), nullptr, &hints, &found) != 0 || !found) return 0;
  sockaddr_in first{};
  std::copy_n(reinterpret_cast<const char*>(found->ai_addr), sizeof first, reinterpret_cast<char*>(&first));
  freeaddrinfo(found);
  return ntohl(first.sin_addr.s_addr);
}

}  // namespace

// A descriptor that any thread makes readable.
class PosixSockets::WakeUp {
 public:
  WakeUp() : fd_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {}
  ~WakeUp() {
    if (fd_ >= 0) ::close(fd_);
  }
  WakeUp(const WakeUp&) = delete;
  WakeUp& operator=(const WakeUp&) = delete;
  int Descriptor() const { return fd_; }
  void Set() {
    const uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(fd_, &one, sizeof one);
  }
  void Clear() {
    uint64_t count = 0;
    [[maybe_unused]] const ssize_t size = ::read(fd_, &count, sizeof count);
  }

 private:
  int fd_;
};

// What the thread of the look-ups shares; it lives as long as either side.
class PosixSockets::Resolver {
 public:
  struct Answer {
    SocketId socket;
    NetAddress address;
  };

  explicit Resolver(std::shared_ptr<WakeUp> wakeUp) : wakeUp_(std::move(wakeUp)) {}
  static std::shared_ptr<Resolver> Start(std::shared_ptr<WakeUp> wakeUp) {
    auto resolver = std::make_shared<Resolver>(std::move(wakeUp));
    std::thread([resolver] { resolver->Serve(); }).detach();
    return resolver;
  }
  void Ask(SocketId socket, std::string name) {
    const std::lock_guard lock(mutex_);
    names_.emplace_back(socket, std::move(name));
    changed_.notify_one();
  }
  std::vector<Answer> Take() {
    const std::lock_guard lock(mutex_);
    return std::exchange(answers_, {});
  }
  void End() {
    const std::lock_guard lock(mutex_);
    isOver_ = true;
    changed_.notify_one();
  }

 private:
  void Serve() {
    std::unique_lock lock(mutex_);
    for (;;) {
      changed_.wait(lock, [this] { return isOver_ || !names_.empty(); });
      if (isOver_) return;
      const auto [socket, name] = std::move(names_.front());
      names_.pop_front();
      lock.unlock();
      const NetAddress address = LookUp(name);
      lock.lock();
      answers_.push_back({socket, address});
      wakeUp_->Set();
    }
  }

  std::shared_ptr<WakeUp> wakeUp_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::pair<SocketId, std::string>> names_;
  std::vector<Answer> answers_;
  bool isOver_ = false;
};

PosixSockets::PosixSockets(NetAddress own)
    : own_(own), epoll_(epoll_create1(EPOLL_CLOEXEC)), wakeUp_(std::make_shared<WakeUp>()) {
  // Of no socket.
  Register(0, wakeUp_->Descriptor(), EPOLLIN, EPOLL_CTL_ADD);
}

PosixSockets::~PosixSockets() {
  if (resolver_) resolver_->End();
  for (const Socket& socket : sockets_) {
    if (socket.id != 0 && socket.fd >= 0) ::close(socket.fd);
  }
  ::close(epoll_);
}

PosixSockets::Socket* PosixSockets::Find(SocketId socket) {
  const size_t place = socket & (kMaxSockets - 1);
  return socket != 0 && place < sockets_.size() && sockets_[place].id == socket ? &sockets_[place] : nullptr;
}

SocketId PosixSockets::Add(Socket socket, uint32_t events) {
  if (free_.empty() && sockets_.size() >= kMaxSockets) {
    if (socket.fd >= 0) ::close(socket.fd);
    return 0;
  }
  // Fresh places first, then the one that is free for longest: an id comes again after millions of sockets.
  const uint32_t place = sockets_.size() < kMaxSockets ? static_cast<uint32_t>(sockets_.size()) : free_.front();
  const uint32_t rounds = place < sockets_.size() ? sockets_[place].round : 0;
  socket.round = rounds % kMaxRounds + 1;
  const SocketId id = socket.round << kPlaceBits | place;
  if (socket.fd >= 0 && !Register(id, socket.fd, events, EPOLL_CTL_ADD)) {
    ::close(socket.fd);
    return 0;
  }
  socket.id = id;
  if (place == sockets_.size()) {
    sockets_.push_back(socket);
  } else {
    free_.pop_front();
    sockets_[place] = socket;
  }
  return id;
}

bool PosixSockets::Bind(int fd, uint16_t port) const {
  const sockaddr_in address = SocketAddress(own_, port);
  return bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

bool PosixSockets::Register(SocketId id, int fd, uint32_t events, int operation) {
  epoll_event event{};
  event.events = events;
  event.data.u32 = id;
  return epoll_ctl(epoll_, operation, fd, &event) == 0;
}

void PosixSockets::SetNews(Socket& socket, bool hasNews) {
  if (socket.hasNews == hasNews) return;
  socket.hasNews = hasNews;
  newsLeft_ += hasNews ? 1 : size_t(-1);
}

void PosixSockets::Connect(SocketId id, Socket& socket, NetAddress address) {
  socket.isFailed = true;
  // The system would take address 0 for this machine.
  if (address == 0) return;
  const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, IPPROTO_TCP);
  if (fd < 0) return;
  Set(fd, IPPROTO_TCP, TCP_NODELAY);
  if (own_ != 0) Bind(fd, 0);
  const sockaddr_in to = SocketAddress(address, socket.port);
  if (connect(fd, reinterpret_cast<const sockaddr*>(&to), sizeof to) != 0 && errno != EINPROGRESS) {
    ::close(fd);
    return;
  }
  socket.fd = fd;
  socket.isFailed = !Register(id, fd, kStreamEvents, EPOLL_CTL_ADD);
}

SocketId PosixSockets::connectTcp(std::string_view host, uint16_t port) {
  Socket socket;
  socket.port = port;
  const SocketId id = Add(socket, 0);
  if (id == 0) return 0;
  const NetAddress address = ParseNetAddress(host);
  if (address != 0 || host == "0.0.0.0" || host.empty()) {
    Connect(id, *Find(id), address);
  } else if (lookups_ >= kMaxLookups) {
    Find(id)->isFailed = true;
  } else {
    if (!resolver_) resolver_ = Resolver::Start(wakeUp_);
    ++lookups_;
    resolver_->Ask(id, std::string(host));
  }
  return id;
}

SocketId PosixSockets::listenTcp(uint16_t port) {
  Socket socket;
  socket.port = port;
  socket.isListener = true;
  socket.fd = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, IPPROTO_TCP);
  if (socket.fd < 0) return 0;
  // A port whose last connections still linger can be had again at once.
  Set(socket.fd, SOL_SOCKET, SO_REUSEADDR);
  if (!Bind(socket.fd, port) || listen(socket.fd, kBacklog) != 0) {
    ::close(socket.fd);
    return 0;
  }
  return Add(socket, kInEvents);
}

SocketId PosixSockets::acceptTcp(SocketId listener) {
  Socket* from = Find(listener);
  if (!from || !from->isListener) return 0;
  Socket socket;
  socket.port = from->port;
  socket.fd = accept4(from->fd, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
  if (socket.fd < 0) {
    if (Result(-1) == kSocketNothing) SetNews(*from, false);
    return 0;
  }
  Set(socket.fd, IPPROTO_TCP, TCP_NODELAY);
  socket.isConnected = true;
  return Add(socket, kStreamEvents);
}

SocketId PosixSockets::openUdp(uint16_t port) {
  Socket socket;
  socket.port = port;
  socket.isStream = false;
  socket.fd = ::socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, IPPROTO_UDP);
  if (socket.fd < 0) return 0;
  Set(socket.fd, SOL_SOCKET, SO_REUSEADDR);
  if (!Bind(socket.fd, port)) {
    ::close(socket.fd);
    return 0;
  }
  return Add(socket, kInEvents);
}

void PosixSockets::close(SocketId socket) {
  Socket* s = Find(socket);
  if (!s) return;
  SetNews(*s, false);
  if (s->fd >= 0) ::close(s->fd);
  const uint32_t round = s->round;
  *s = Socket{};
  s->round = round;
  free_.push_back(socket & (kMaxSockets - 1));
}

void PosixSockets::TakeAnswers() {
  for (const auto& [id, address] : resolver_->Take()) {
    --lookups_;
    if (Socket* socket = Find(id)) Connect(id, *socket, address);
  }
}

void PosixSockets::wake() { wakeUp_->Set(); }

void PosixSockets::update() {
  isWaitOver_ = false;
  if (!isFresh_) Look(0);
  isFresh_ = false;
}

void PosixSockets::sleep(int timeoutMs) {
  Look(isWaitOver_ ? 0 : timeoutMs);
  isWaitOver_ = false;
  isFresh_ = true;
}

void PosixSockets::Look(int timeoutMs) {
  epoll_event events[kNewsAtOnce];
  const int count = epoll_wait(epoll_, events, kNewsAtOnce, timeoutMs);
  for (int i = 0; i < count; ++i) Take(events[i].data.u32, events[i].events);
}

void PosixSockets::Take(SocketId id, uint32_t events) {
  if (id == 0) {
    wakeUp_->Clear();
    if (lookups_ > 0) TakeAnswers();
    return;
  }
  Socket* socket = Find(id);
  if (!socket) return;
  if (socket->isStream && !socket->isListener && !socket->isConnected) {
    if (events & (EPOLLERR | EPOLLHUP)) {
      socket->isFailed = true;
      return;
    }
    socket->isConnected = true;
  }
  if (events & kEndEvents) socket->isEnding = true;
  if (events & (EPOLLIN | kEndEvents)) SetNews(*socket, true);
}

bool PosixSockets::hasNews(SocketId socket) {
  const Socket* s = Find(socket);
  return s && s->hasNews;
}

bool PosixSockets::hasConnected(SocketId socket) {
  const Socket* s = Find(socket);
  return s && s->isConnected;
}

bool PosixSockets::hasFailed(SocketId socket) {
  const Socket* s = Find(socket);
  return !s || s->isFailed;
}

int64_t PosixSockets::send(SocketId socket, std::span<const uint8_t> bytes) {
  const Socket* s = Find(socket);
  if (!s || s->isFailed) return kSocketError;
  if (!s->isConnected || bytes.empty()) return kSocketNothing;
  return Result(::send(s->fd, bytes.data(), bytes.size(), MSG_NOSIGNAL));
}

int64_t PosixSockets::receive(SocketId socket, std::span<uint8_t> bytes, bool peek) {
  Socket* s = Find(socket);
  if (!s || s->isFailed) return kSocketError;
  if (!s->isConnected || bytes.empty()) return kSocketNothing;
  const int64_t count = Result(recv(s->fd, bytes.data(), bytes.size(), peek ? MSG_PEEK : 0));
  // Less than there was room for: that was all but the end. What comes from now on is told of anew.
  if (count <= 0 || (!peek && !s->isEnding && static_cast<size_t>(count) < bytes.size())) SetNews(*s, false);
  return count;
}

int64_t PosixSockets::sendTo(SocketId socket, NetAddress to, uint16_t port, std::span<const uint8_t> bytes) {
  const Socket* s = Find(socket);
  if (!s || s->isStream || to == 0) return kSocketError;
  const sockaddr_in address = SocketAddress(to, port);
  return Result(sendto(s->fd, bytes.data(), bytes.size(), MSG_NOSIGNAL, reinterpret_cast<const sockaddr*>(&address),
                       sizeof address));
}

int64_t PosixSockets::receiveFrom(SocketId socket, std::span<uint8_t> bytes, NetAddress& from) {
  Socket* s = Find(socket);
  if (!s || s->isStream) return kSocketError;
  sockaddr_in address{};
  socklen_t size = sizeof address;
  const ssize_t count =
      recvfrom(s->fd, bytes.data(), bytes.size(), MSG_TRUNC, reinterpret_cast<sockaddr*>(&address), &size);
  if (count < 0) {
    SetNews(*s, false);
    return Result(count);
  }
  from = ntohl(address.sin_addr.s_addr);
  return static_cast<size_t>(count) > bytes.size() ? kSocketTooLarge : count;
}

NetAddress PosixSockets::localAddress(SocketId socket) {
  const Socket* s = Find(socket);
  sockaddr_in address{};
  socklen_t size = sizeof address;
  if (!s || s->fd < 0 || getsockname(s->fd, reinterpret_cast<sockaddr*>(&address), &size) != 0) return 0;
  return ntohl(address.sin_addr.s_addr);
}

NetAddress PosixSockets::remoteAddress(SocketId socket) {
  const Socket* s = Find(socket);
  sockaddr_in address{};
  socklen_t size = sizeof address;
  if (!s || s->fd < 0 || getpeername(s->fd, reinterpret_cast<sockaddr*>(&address), &size) != 0) return 0;
  return ntohl(address.sin_addr.s_addr);
}

NetAddress PosixSockets::hostAddress() {
  ifaddrs* all = nullptr;
  NetAddress best = kLoopbackAddress;
  if (getifaddrs(&all) != 0) return best;
  for (const ifaddrs* i = all; i; i = i->ifa_next) {
    if (!i->ifa_addr || i->ifa_addr->sa_family != AF_INET || (i->ifa_flags & IFF_LOOPBACK) ||
        !(i->ifa_flags & IFF_UP)) {
      continue;
    }
    best = ntohl(reinterpret_cast<const sockaddr_in*>(i->ifa_addr)->sin_addr.s_addr);
    break;
  }
  freeifaddrs(all);
  return best;
}

uint16_t PosixSockets::LocalPort(SocketId socket) {
  const Socket* s = Find(socket);
  sockaddr_in address{};
  socklen_t size = sizeof address;
  if (!s || s->fd < 0 || getsockname(s->fd, reinterpret_cast<sockaddr*>(&address), &size) != 0) return 0;
  return ntohs(address.sin_port);
}

}  // namespace vl

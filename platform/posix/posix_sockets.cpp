#include "platform/posix/posix_sockets.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace vl {

namespace {

// More than a listening program asks for: those who connect at the same moment shouldn't wait for a second attempt.
constexpr int kBacklog = 128;
constexpr int kNewsAtOnce = 512;
constexpr size_t kMaxLookups = 64;

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

// What the thread of the look-ups shares; it lives as long as either side.
class PosixSockets::Resolver {
 public:
  struct Answer {
    SocketId socket;
    NetAddress address;
  };

  static std::shared_ptr<Resolver> Start() {
    auto resolver = std::make_shared<Resolver>();
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
    }
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::pair<SocketId, std::string>> names_;
  std::vector<Answer> answers_;
  bool isOver_ = false;
};

PosixSockets::PosixSockets() : epoll_(epoll_create1(EPOLL_CLOEXEC)) {}

PosixSockets::~PosixSockets() {
  if (resolver_) resolver_->End();
  while (!sockets_.empty()) close(sockets_.begin()->first);
  ::close(epoll_);
}

PosixSockets::Socket* PosixSockets::Find(SocketId socket) {
  const auto found = sockets_.find(socket);
  return found == sockets_.end() ? nullptr : &found->second;
}

SocketId PosixSockets::Add(const Socket& socket, uint32_t events) {
  if (sockets_.size() >= kMaxSockets) {
    if (socket.fd >= 0) ::close(socket.fd);
    return 0;
  }
  const SocketId id = ++last_;
  if (socket.fd >= 0) {
    epoll_event event{};
    event.events = events;
    event.data.u32 = id;
    epoll_ctl(epoll_, EPOLL_CTL_ADD, socket.fd, &event);
  }
  sockets_.emplace(id, socket);
  return id;
}

void PosixSockets::Connect(SocketId id, Socket& socket, NetAddress address) {
  socket.isFailed = true;
  // The system would take address 0 for this machine.
  if (address == 0) return;
  const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, IPPROTO_TCP);
  if (fd < 0) return;
  Set(fd, IPPROTO_TCP, TCP_NODELAY);
  const sockaddr_in to = SocketAddress(address, socket.port);
  if (connect(fd, reinterpret_cast<const sockaddr*>(&to), sizeof to) != 0 && errno != EINPROGRESS) {
    ::close(fd);
    return;
  }
  socket.isFailed = false;
  socket.fd = fd;
  epoll_event event{};
  event.events = EPOLLIN | EPOLLOUT;
  event.data.u32 = id;
  epoll_ctl(epoll_, EPOLL_CTL_ADD, fd, &event);
}

SocketId PosixSockets::connectTcp(std::string_view host, uint16_t port) {
  Socket socket;
  socket.port = port;
  const SocketId id = Add(socket, 0);
  if (id == 0) return 0;
  const NetAddress address = ParseNetAddress(host);
  if (address != 0 || host == "0.0.0.0" || host.empty()) {
    Connect(id, sockets_.at(id), address);
  } else if (lookups_ >= kMaxLookups) {
    sockets_.at(id).isFailed = true;
  } else {
    if (!resolver_) resolver_ = Resolver::Start();
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
  const sockaddr_in any = SocketAddress(0, port);
  if (bind(socket.fd, reinterpret_cast<const sockaddr*>(&any), sizeof any) != 0 || listen(socket.fd, kBacklog) != 0) {
    ::close(socket.fd);
    return 0;
  }
  return Add(socket, EPOLLIN);
}

SocketId PosixSockets::acceptTcp(SocketId listener) {
  const Socket* from = Find(listener);
  if (!from || !from->isListener) return 0;
  Socket socket;
  socket.port = from->port;
  socket.fd = accept4(from->fd, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
  if (socket.fd < 0) return 0;
  Set(socket.fd, IPPROTO_TCP, TCP_NODELAY);
  socket.isConnected = true;
  return Add(socket, EPOLLIN);
}

SocketId PosixSockets::openUdp(uint16_t port) {
  Socket socket;
  socket.port = port;
  socket.isStream = false;
  socket.fd = ::socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, IPPROTO_UDP);
  if (socket.fd < 0) return 0;
  Set(socket.fd, SOL_SOCKET, SO_REUSEADDR);
  const sockaddr_in any = SocketAddress(0, port);
  if (bind(socket.fd, reinterpret_cast<const sockaddr*>(&any), sizeof any) != 0) {
    ::close(socket.fd);
    return 0;
  }
  return Add(socket, EPOLLIN);
}

void PosixSockets::close(SocketId socket) {
  const Socket* s = Find(socket);
  if (!s) return;
  if (s->fd >= 0) ::close(s->fd);
  sockets_.erase(socket);
}

void PosixSockets::TakeAnswers() {
  for (const auto& [id, address] : resolver_->Take()) {
    --lookups_;
    if (Socket* socket = Find(id)) Connect(id, *socket, address);
  }
}

void PosixSockets::Watch(int timeoutMs) {
  for (const SocketId id : ready_) {
    if (Socket* socket = Find(id)) socket->hasNews = false;
  }
  ready_.clear();
  if (lookups_ > 0) TakeAnswers();
  epoll_event events[kNewsAtOnce];
  const int count = epoll_wait(epoll_, events, kNewsAtOnce, timeoutMs);
  for (int i = 0; i < count; ++i) {
    const SocketId id = events[i].data.u32;
    Socket* socket = Find(id);
    if (!socket) continue;
    if (socket->isStream && !socket->isListener && !socket->isConnected) {
      if (events[i].events & (EPOLLERR | EPOLLHUP)) {
        // Broken before it stood; watched no longer, since it would be told of for ever.
        epoll_ctl(epoll_, EPOLL_CTL_DEL, socket->fd, nullptr);
        socket->isFailed = true;
        continue;
      }
      socket->isConnected = true;
      epoll_event reading{};
      reading.events = EPOLLIN;
      reading.data.u32 = id;
      epoll_ctl(epoll_, EPOLL_CTL_MOD, socket->fd, &reading);
    }
    if ((events[i].events & (EPOLLIN | EPOLLERR | EPOLLHUP)) == 0) continue;
    socket->hasNews = true;
    ready_.push_back(id);
  }
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
  const Socket* s = Find(socket);
  if (!s || s->isFailed) return kSocketError;
  if (!s->isConnected || bytes.empty()) return kSocketNothing;
  return Result(recv(s->fd, bytes.data(), bytes.size(), peek ? MSG_PEEK : 0));
}

int64_t PosixSockets::sendTo(SocketId socket, NetAddress to, uint16_t port, std::span<const uint8_t> bytes) {
  const Socket* s = Find(socket);
  if (!s || s->isStream || to == 0) return kSocketError;
  const sockaddr_in address = SocketAddress(to, port);
  return Result(sendto(s->fd, bytes.data(), bytes.size(), MSG_NOSIGNAL, reinterpret_cast<const sockaddr*>(&address),
                       sizeof address));
}

int64_t PosixSockets::receiveFrom(SocketId socket, std::span<uint8_t> bytes, NetAddress& from) {
  const Socket* s = Find(socket);
  if (!s || s->isStream) return kSocketError;
  sockaddr_in address{};
  socklen_t size = sizeof address;
  const ssize_t count =
      recvfrom(s->fd, bytes.data(), bytes.size(), MSG_TRUNC, reinterpret_cast<sockaddr*>(&address), &size);
  if (count < 0) return Result(count);
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

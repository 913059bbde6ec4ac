// Plain sockets and epoll, as one writes them by hand: no protocol, fixed sizes.
#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "bench/net/ends.h"

namespace {

sockaddr_in Address(const char* text, uint16_t port) {
  sockaddr_in a{};
  a.sin_family = AF_INET;
  a.sin_port = htons(port);
  inet_pton(AF_INET, text, &a.sin_addr);
  return a;
}

void Bound(int fd, const char* text, uint16_t port) {
  const int on = 1;
  setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  const sockaddr_in a = Address(text, port);
  if (bind(fd, reinterpret_cast<const sockaddr*>(&a), sizeof a) != 0) std::abort();
}

void Watch(int epoll, int fd) {
  const int on = 1;
  setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  epoll_event event{};
  event.events = EPOLLIN;
  event.data.fd = fd;
  epoll_ctl(epoll, EPOLL_CTL_ADD, fd, &event);
}

int Udp(const char* own, uint16_t port) {
  const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK, 0);
  Bound(fd, own, port);
  return fd;
}

void SendTo(int fd, const char* bytes, size_t size, const sockaddr_in& to) {
  [[maybe_unused]] const ssize_t sent =
      sendto(fd, bytes, size, MSG_NOSIGNAL, reinterpret_cast<const sockaddr*>(&to), sizeof to);
}

void Serve(Case what, uint16_t port) {
  const int epoll = epoll_create1(0);
  const int listener = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
  Bound(listener, kServerAddress, port);
  listen(listener, 256);
  Watch(epoll, listener);
  const int udp = Udp(kServerAddress, static_cast<uint16_t>(port + 1));
  Watch(epoll, udp);
  const sockaddr_in client = Address(kClientAddress, static_cast<uint16_t>(port + 1));
  char bytes[4096];
  uint64_t received = 0;
  epoll_event events[256];
  for (;;) {
    const int count = epoll_wait(epoll, events, 256, -1);
    for (int i = 0; i < count; ++i) {
      const int fd = events[i].data.fd;
      if (fd == listener) {
        Watch(epoll, accept4(listener, nullptr, nullptr, SOCK_NONBLOCK));
      } else if (fd == udp) {
        ssize_t size = 0;
        sockaddr_in from{};
        socklen_t length = sizeof from;
        while ((size = recvfrom(udp, bytes, sizeof bytes, 0, reinterpret_cast<sockaddr*>(&from), &length)) > 0) {
          if (bytes[0] == 4) SendTo(udp, "got", 3, client);
        }
      } else {
        const ssize_t size = recv(fd, bytes, sizeof bytes, 0);
        if (size <= 0) {
          close(fd);
        } else if (what == Case::Stream) {
          const uint64_t before = received / (kStreamPart * kTextBytes);
          received += static_cast<uint64_t>(size);
          if (received / (kStreamPart * kTextBytes) != before) send(fd, "g", 1, MSG_NOSIGNAL);
        } else {
          send(fd, bytes, static_cast<size_t>(size), MSG_NOSIGNAL);
        }
      }
    }
  }
}

double Measure(Case what, uint16_t port, double seconds) {
  const int epoll = epoll_create1(0);
  const sockaddr_in server = Address(kServerAddress, port);
  std::vector<int> clients;
  for (int i = 0; i < ClientsOf(what); ++i) {
    const int fd = socket(AF_INET, SOCK_STREAM, 0);
    if (connect(fd, reinterpret_cast<const sockaddr*>(&server), sizeof server) != 0) std::abort();
    Watch(epoll, fd);
    clients.push_back(fd);
  }
  const int udp = Udp(kClientAddress, static_cast<uint16_t>(port + 1));
  Watch(epoll, udp);
  const sockaddr_in serverUdp = Address(kServerAddress, static_cast<uint16_t>(port + 1));
  std::string text = SomeText();
  char bytes[4096];
  epoll_event events[256];
  Rate rate(seconds);
  uint64_t parts = 0;
  uint64_t answers = 0;
  if (what == Case::RoundTrip || what == Case::Crowd) {
    for (const int fd : clients) send(fd, text.data(), text.size(), MSG_NOSIGNAL);
    uint64_t done = 0;
    do {
      done = 0;
      for (int i = 0; i < 64; ++i) {
        const int count = epoll_wait(epoll, events, 256, -1);
        for (int e = 0; e < count; ++e) {
          const ssize_t size = recv(events[e].data.fd, bytes, sizeof bytes, MSG_DONTWAIT);
          if (size <= 0) continue;
          ++done;
          send(events[e].data.fd, bytes, static_cast<size_t>(size), MSG_NOSIGNAL);
        }
      }
    } while (rate.Add(done));
    return rate.ASecond();
  }
  do {
    if (what == Case::Stream) {
      for (int i = 0; i < kStreamPart; ++i) send(clients[0], text.data(), text.size(), MSG_NOSIGNAL);
      ++parts;
      while (answers + 2 <= parts) {
        epoll_wait(epoll, events, 256, -1);
        answers += static_cast<uint64_t>(std::max<ssize_t>(recv(clients[0], bytes, sizeof bytes, MSG_DONTWAIT), 0));
      }
    } else {
      for (int i = 1; i <= kBurst; ++i) {
        text[0] = i == kBurst ? 4 : 3;
        SendTo(udp, text.data(), text.size(), serverUdp);
      }
      epoll_wait(epoll, events, 256, 100);
      while (recv(udp, bytes, sizeof bytes, MSG_DONTWAIT) > 0) {
      }
    }
  } while (rate.Add(what == Case::Stream ? kStreamPart : kBurst));
  return rate.ASecond();
}

}  // namespace

const Ends kPlainEnds = {"plain", &Serve, &Measure};

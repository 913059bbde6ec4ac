// Sockets: TCP and UDP over IPv4, as a run sees them. No call waits.
//
// What a socket has is found out by update(), once a poll; hasNews, hasConnected and hasFailed answer as of then. News
// stay until they are taken: by a receive that empties the socket or meets its end, by an accept that finds nobody.
// Host names are looked up behind connect. An address is a number with the first part of its text in the highest byte;
// 0 means none.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace vl {

using SocketId = uint32_t;  // 0: none; ids of closed sockets aren't used again
using NetAddress = uint32_t;

inline constexpr NetAddress kLoopbackAddress = 0x7F000001;

// Results of a transfer that moved nothing.
inline constexpr int64_t kSocketEnd = 0;        // receive: the peer has ended the connection
inline constexpr int64_t kSocketError = -1;     // it is broken
inline constexpr int64_t kSocketNothing = -2;   // not now
inline constexpr int64_t kSocketTooLarge = -3;  // receiveFrom: a datagram that didn't fit is gone

class Sockets {
 public:
  virtual ~Sockets() = default;

  // Starts a connection to a name or an address. An unknown name and a refusal show as hasFailed. 0 when there is no
  // socket to be had.
  virtual SocketId connectTcp(std::string_view host, uint16_t port) = 0;
  // On all addresses of the machine. 0 when the port is taken.
  virtual SocketId listenTcp(uint16_t port) = 0;
  // The next connection that waits at a listening socket; 0 when none does.
  virtual SocketId acceptTcp(SocketId listener) = 0;
  // On all addresses; several sockets may share a port. 0 when it can't be had.
  virtual SocketId openUdp(uint16_t port) = 0;
  // Unknown ids are ignored.
  virtual void close(SocketId socket) = 0;

  virtual void update() = 0;
  // True when a wait of the event queue ends with whatever may happen next. Else somebody must look every millisecond
  // or so: also while news of the last update() aren't taken.
  virtual bool wakesWaits() { return false; }
  // Something is to be sent at the next poll: the next wait of the event queue ends at once.
  virtual void endNextWait() {}
  // Bytes, a datagram, a connection or an end may wait.
  virtual bool hasNews(SocketId socket) = 0;
  // TCP: the connection stands or stood.
  virtual bool hasConnected(SocketId socket) = 0;
  // TCP: it could not be made, or is broken.
  virtual bool hasFailed(SocketId socket) = 0;

  // The count of bytes taken, above 0, or kSocketNothing or kSocketError.
  virtual int64_t send(SocketId socket, std::span<const uint8_t> bytes) = 0;
  // The count of bytes, above 0, or one of the results above. `peek` leaves them there.
  virtual int64_t receive(SocketId socket, std::span<uint8_t> bytes, bool peek) = 0;
  virtual int64_t sendTo(SocketId socket, NetAddress to, uint16_t port, std::span<const uint8_t> bytes) = 0;
  virtual int64_t receiveFrom(SocketId socket, std::span<uint8_t> bytes, NetAddress& from) = 0;

  // Of a TCP connection's two ends; 0 while there is none.
  virtual NetAddress localAddress(SocketId socket) = 0;
  virtual NetAddress remoteAddress(SocketId socket) = 0;
  // Under which others reach this machine; loopback when there is no network.
  virtual NetAddress hostAddress() = 0;
};

// "a.b.c.d". 0 for other texts.
NetAddress ParseNetAddress(std::string_view text);
// "" for 0.
std::string NetAddressText(NetAddress address);

}  // namespace vl

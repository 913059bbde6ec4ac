#include "net/vex_socket.h"

#include <array>

#include "base/limits.h"

namespace vl {

template <typename F>
void VexSocket::Try(F&& attempt) {
  const uint32_t start = api.NowMs();
  while (!attempt()) {
    if (!blocking || !api.idle || api.NowMs() - start >= timeoutMs || !api.idle()) return;
    api.sockets.update();
  }
}

void VexSocket::OnDelete() {
  api.plainSockets.Take(this);
  Replace(0);
}

void VexSocket::Replace(SocketId socket) {
  if (socket_ != 0) api.sockets.close(socket_);
  socket_ = socket;
  connected = false;
  api.queuedBytes -= queue_.Size();
  queue_ = {};
  localIp_.clear();
  remoteIp_.clear();
}

VexSocket::Peek VexSocket::Look() {
  if (socket_ == 0 || api.sockets.hasFailed(socket_)) return Peek::Ended;
  std::array<uint8_t, 2> bytes;
  const int64_t count = api.sockets.receive(socket_, bytes, true);
  if (count > 0) return Peek::Bytes;
  return count == kSocketNothing ? Peek::Nothing : Peek::Ended;
}

void VexSocket::Process() {
  if (!api.HasRoom()) return;
  const auto fire = [&](uint32_t number) {
    api.Fire({number, this, nullptr, {}, 0});
    return !IsDeleted();
  };
  if (role == Role::Listening) {
    if (api.sockets.hasNews(socket_)) fire(kVexSocketAccepted);
    return;
  }
  if (connected) {
    const Peek seen = Look();
    if (seen == Peek::Bytes && !fire(kVexSocketReceived)) return;
    if (seen == Peek::Ended) {
      connected = false;
      fire(kVexSocketDisconnected);
      return;
    }
    if (!blocking) PumpQueue();
  } else if (socket_ != 0 && api.sockets.hasConnected(socket_) && Look() != Peek::Ended) {
    connected = true;
    fire(kVexSocketConnected);
  }
}

void VexSocket::Connect(std::string_view host, uint16_t port) {
  Replace(api.sockets.connectTcp(host, port));
  role = Role::Client;
  if (!blocking) return;
  Try([&] {
    connected = api.sockets.hasConnected(socket_);
    return connected || api.sockets.hasFailed(socket_);
  });
  if (connected) api.Fire({kVexSocketConnected, this, nullptr, {}, 0});
}

void VexSocket::Disconnect() { Replace(0); }

void VexSocket::Listen(uint16_t port) {
  Replace(0);
  socket_ = api.sockets.listenTcp(port);
  role = Role::Listening;
}

VexSocket* VexSocket::Accept() {
  VexSocket* accepted = api.MakeSocket();
  accepted->role = Role::Accepted;
  accepted->connected = true;
  if (role == Role::Listening) accepted->socket_ = api.sockets.acceptTcp(socket_);
  return accepted;
}

void VexSocket::Send(std::span<const uint8_t> bytes) {
  if (role == Role::Listening || bytes.empty()) return;
  if (!blocking) {
    if (socket_ == 0 || queue_.Size() + bytes.size() > limits::kMaxNetQueueBytes ||
        api.queuedBytes + bytes.size() > limits::kMaxNetQueuedBytes) {
      return;
    }
    if (queue_.IsEmpty()) api.sockets.endNextWait();
    queue_.Add(bytes);
    api.queuedBytes += bytes.size();
    return;
  }
  Try([&] {
    const int64_t count = api.sockets.send(socket_, bytes);
    if (count == kSocketError) return true;
    if (count > 0) {
      VexTraffic(&stats, &api.stats).Out(static_cast<size_t>(count));
      bytes = bytes.subspan(static_cast<size_t>(count));
    }
    return bytes.empty();
  });
}

void VexSocket::PumpQueue() {
  while (!queue_.IsEmpty()) {
    const size_t size = queue_.Size();
    const int64_t count = api.sockets.send(socket_, queue_.Waiting());
    if (count <= 0) return;
    api.queuedBytes -= static_cast<size_t>(count);
    queue_.Drop(static_cast<size_t>(count), [&](size_t part) { VexTraffic(&stats, &api.stats).Out(part); });
    if (static_cast<size_t>(count) < size) return;
  }
}

size_t VexSocket::Receive(std::span<uint8_t> bytes) {
  if (role == Role::Listening || bytes.empty()) return 0;
  int64_t count = 0;
  Try([&] {
    count = api.sockets.receive(socket_, bytes, false);
    return count != kSocketNothing;
  });
  if (count <= 0) return 0;
  VexTraffic(&stats, &api.stats).In(static_cast<size_t>(count));
  return static_cast<size_t>(count);
}

void VexSocket::SendLine(std::string_view line) {
  std::vector<uint8_t> bytes(line.begin(), line.end());
  bytes.push_back(13);
  bytes.push_back(10);
  Send(bytes);
}

std::string VexSocket::ReceiveLine() {
  std::string line;
  if (role == Role::Listening) return line;
  Try([&] {
    for (;;) {
      uint8_t byte = 0;
      const int64_t count = api.sockets.receive(socket_, std::span(&byte, 1), false);
      if (count == kSocketNothing) return false;
      if (count <= 0) return true;
      VexTraffic(&stats, &api.stats).In(1);
      if (byte == 13) continue;
      if (byte != 10) {
        line.push_back(static_cast<char>(byte));
        if (line.size() >= limits::kMaxNetMessageBytes) return true;
      } else if (!line.empty()) {
        return true;
      }
    }
  });
  return line;
}

const std::string& VexSocket::LocalIp() {
  if (localIp_.empty()) localIp_ = NetAddressText(api.sockets.localAddress(socket_));
  return localIp_;
}

const std::string& VexSocket::RemoteIp() {
  if (remoteIp_.empty()) remoteIp_ = NetAddressText(api.sockets.remoteAddress(socket_));
  return remoteIp_;
}

}  // namespace vl

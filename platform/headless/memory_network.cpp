#include "platform/headless/memory_network.h"

#include <algorithm>
#include <utility>

namespace vl {

MemorySockets* MemoryNetwork::Machine(NetAddress address) {
  const auto found = machines_.find(address);
  return found == machines_.end() ? nullptr : found->second;
}

MemorySockets::MemorySockets(MemoryNetwork& network, NetAddress address) : network_(network), address_(address) {
  network_.machines_[address] = this;
}

MemorySockets::~MemorySockets() {
  while (!sockets_.empty()) close(sockets_.begin()->first);
  network_.machines_.erase(address_);
}

MemorySockets::Socket* MemorySockets::Find(SocketId socket) {
  const auto found = sockets_.find(socket);
  return found == sockets_.end() ? nullptr : &found->second;
}

SocketId MemorySockets::Add(Socket socket) {
  if (sockets_.size() >= kMaxSockets) return 0;
  sockets_.emplace(++last_, std::move(socket));
  return last_;
}

MemorySockets::Socket* MemorySockets::Listener(uint16_t port) {
  for (auto& [id, socket] : sockets_) {
    if (socket.kind == Kind::Listener && socket.port == port) return &socket;
  }
  return nullptr;
}

SocketId MemorySockets::connectTcp(std::string_view host, uint16_t port) {
  NetAddress to = ParseNetAddress(host);
  if (to == 0) {
    const auto named = network_.names_.find(std::string(host));
    if (named != network_.names_.end()) to = named->second;
    if (host == "localhost") to = kLoopbackAddress;
  }
  Socket socket;
  MemorySockets* machine = IsOwn(to) ? this : network_.Machine(to);
  Socket* listener = machine ? machine->Listener(port) : nullptr;
  if (listener && listener->pending.size() < MemoryNetwork::kBacklog) {
    socket.in = std::make_shared<MemoryNetwork::Pipe>();
    socket.out = std::make_shared<MemoryNetwork::Pipe>();
    socket.remote = to;
    socket.local = to >> 24 == 127 ? to : address_;
    listener->pending.push_back({socket.out, socket.in, socket.remote, socket.local});
  }
  return Add(std::move(socket));
}

SocketId MemorySockets::listenTcp(uint16_t port) {
  if (Listener(port)) return 0;
  Socket socket;
  socket.kind = Kind::Listener;
  socket.port = port;
  return Add(std::move(socket));
}

SocketId MemorySockets::acceptTcp(SocketId listener) {
  Socket* from = Find(listener);
  if (!from || from->pending.empty() || sockets_.size() >= kMaxSockets) return 0;
  Socket socket;
  Pending& pending = from->pending.front();
  socket.port = from->port;
  socket.in = pending.in;
  socket.out = pending.out;
  socket.local = pending.local;
  socket.remote = pending.remote;
  from->pending.pop_front();
  return Add(std::move(socket));
}

SocketId MemorySockets::openUdp(uint16_t port) {
  Socket socket;
  socket.kind = Kind::Datagrams;
  socket.port = port;
  return Add(std::move(socket));
}

void MemorySockets::close(SocketId socket) {
  Socket* s = Find(socket);
  if (!s) return;
  const auto end = [](const Pending& pending) {
    if (pending.in) pending.in->isDead = true;
    if (pending.out) pending.out->isClosed = true;
  };
  end({s->in, s->out});
  for (const Pending& pending : s->pending) end(pending);
  sockets_.erase(socket);
}

bool MemorySockets::hasNews(SocketId socket) {
  const Socket* s = Find(socket);
  if (!s) return false;
  if (s->kind == Kind::Listener) return !s->pending.empty();
  if (s->kind == Kind::Datagrams) return !s->datagrams.empty();
  return s->in && (!s->in->bytes.empty() || s->in->isClosed);
}

bool MemorySockets::hasConnected(SocketId socket) {
  const Socket* s = Find(socket);
  return s && s->in != nullptr;
}

bool MemorySockets::hasFailed(SocketId socket) {
  const Socket* s = Find(socket);
  return !s || (s->kind == Kind::Connection && !s->in);
}

int64_t MemorySockets::send(SocketId socket, std::span<const uint8_t> bytes) {
  const Socket* s = Find(socket);
  if (!s || !s->out || s->out->isDead) return kSocketError;
  const size_t room = MemoryNetwork::kPipeBytes - s->out->bytes.size();
  size_t count = std::min(bytes.size(), room);
  if (network_.sliceBytes) count = std::min(count, network_.sliceBytes);
  if (count == 0) return kSocketNothing;
  s->out->bytes.insert(s->out->bytes.end(), bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(count));
  return static_cast<int64_t>(count);
}

int64_t MemorySockets::receive(SocketId socket, std::span<uint8_t> bytes, bool peek) {
  const Socket* s = Find(socket);
  if (!s || !s->in) return kSocketError;
  auto& waiting = s->in->bytes;
  if (waiting.empty()) return s->in->isClosed ? kSocketEnd : kSocketNothing;
  size_t count = std::min(bytes.size(), waiting.size());
  if (network_.sliceBytes) count = std::min(count, network_.sliceBytes);
  const auto end = waiting.begin() + static_cast<ptrdiff_t>(count);
  std::copy(waiting.begin(), end, bytes.begin());
  if (!peek) waiting.erase(waiting.begin(), end);
  return static_cast<int64_t>(count);
}

void MemorySockets::Deliver(uint16_t port, Datagram datagram) {
  for (auto& [id, socket] : sockets_) {
    if (socket.kind != Kind::Datagrams || socket.port != port) continue;
    if (socket.datagrams.size() >= MemoryNetwork::kMaxDatagrams) return;
    // In front of those that are to be overtaken.
    auto at = socket.datagrams.end();
    while (at != socket.datagrams.begin() && std::prev(at)->overtaken > 0) {
      --at;
      --at->overtaken;
    }
    socket.datagrams.insert(at, std::move(datagram));
    return;
  }
}

int64_t MemorySockets::sendTo(SocketId socket, NetAddress to, uint16_t port, std::span<const uint8_t> bytes) {
  const Socket* s = Find(socket);
  if (!s || s->kind != Kind::Datagrams || to == 0 || bytes.size() > MemoryNetwork::kMaxDatagramBytes) {
    return kSocketError;
  }
  const int overtaken = network_.delay ? network_.delay(network_.datagrams_) : 0;
  ++network_.datagrams_;
  MemorySockets* machine = IsOwn(to) ? this : network_.Machine(to);
  if (machine && overtaken >= 0) {
    const NetAddress from = to >> 24 == 127 ? to : address_;
    machine->Deliver(port, {std::vector<uint8_t>(bytes.begin(), bytes.end()), from, overtaken});
  }
  return static_cast<int64_t>(bytes.size());
}

int64_t MemorySockets::receiveFrom(SocketId socket, std::span<uint8_t> bytes, NetAddress& from) {
  Socket* s = Find(socket);
  if (!s || s->kind != Kind::Datagrams) return kSocketError;
  if (s->datagrams.empty()) return kSocketNothing;
  const Datagram datagram = std::move(s->datagrams.front());
  s->datagrams.pop_front();
  from = datagram.from;
  if (datagram.bytes.size() > bytes.size()) return kSocketTooLarge;
  std::copy(datagram.bytes.begin(), datagram.bytes.end(), bytes.begin());
  return static_cast<int64_t>(datagram.bytes.size());
}

NetAddress MemorySockets::localAddress(SocketId socket) {
  const Socket* s = Find(socket);
  return s ? s->local : 0;
}

NetAddress MemorySockets::remoteAddress(SocketId socket) {
  const Socket* s = Find(socket);
  return s ? s->remote : 0;
}

}  // namespace vl

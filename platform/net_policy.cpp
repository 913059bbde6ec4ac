#include "platform/net_policy.h"

#include <algorithm>

namespace vl {

namespace {

std::string Lower(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

bool IsLoopback(NetAddress address) { return address >> 24 == 127; }

}  // namespace

bool NetPolicy::Allow(std::string_view rule) {
  if (rule == "all") {
    isOpen_ = true;
    return true;
  }
  const size_t colon = rule.rfind(':');
  if (colon == std::string_view::npos || colon == 0) return false;
  const std::string_view port = rule.substr(colon + 1);
  Rule made;
  made.host = Lower(rule.substr(0, colon));
  made.address = ParseNetAddress(made.host);
  if (port != "*") {
    if (port.empty() || port.size() > 5) return false;
    made.port = 0;
    for (const char c : port) {
      if (c < '0' || c > '9') return false;
      made.port = made.port * 10 + (c - '0');
    }
    if (made.port == 0 || made.port > 65535) return false;
  }
  rules_.push_back(std::move(made));
  return true;
}

void NetPolicy::SetOrigin(std::string_view host) {
  origin_.reset();
  if (!host.empty()) origin_ = Rule{Lower(host), ParseNetAddress(host), kAnyPort};
}

bool NetPolicy::Matches(std::string_view host, NetAddress address, int port) const {
  if (isOpen_ || IsLoopback(address)) return true;
  const auto fits = [&](const Rule& rule) {
    if (rule.port != kAnyPort && port != kAnyPort && rule.port != port) return false;
    return address != 0 ? rule.address == address : rule.host == host;
  };
  return (origin_ && fits(*origin_)) || std::any_of(rules_.begin(), rules_.end(), fits);
}

bool NetPolicy::MayConnect(std::string_view host, uint16_t port) const {
  const std::string lower = Lower(host);
  return lower == "localhost" || Matches(lower, ParseNetAddress(lower), port);
}

bool NetPolicy::MaySend(NetAddress to, uint16_t port) const { return Matches({}, to, port); }

bool NetPolicy::MayReceive(NetAddress from) const { return Matches({}, from, kAnyPort); }

SocketId PolicedSockets::connectTcp(std::string_view host, uint16_t port) {
  // The address 0 never answers.
  if (!policy_.MayConnect(host, port)) return inner_.connectTcp("0.0.0.0", port);
  const SocketId socket = inner_.connectTcp(host, port);
  if (socket != 0 && ParseNetAddress(host) == 0 && named_.size() < kMaxReached) named_.push_back(socket);
  return socket;
}

void PolicedSockets::NoteReached() {
  std::erase_if(named_, [&](SocketId socket) {
    const NetAddress address = inner_.remoteAddress(socket);
    if (address != 0 && reached_.size() < kMaxReached) reached_.insert(address);
    return address != 0 || inner_.hasFailed(socket);
  });
}

bool PolicedSockets::MayReach(NetAddress address, int port) {
  if (port < 0 ? policy_.MayReceive(address) : policy_.MaySend(address, static_cast<uint16_t>(port))) return true;
  if (!named_.empty()) NoteReached();
  return reached_.count(address) != 0;
}

SocketId PolicedSockets::acceptTcp(SocketId listener) {
  // One from a host that isn't allowed goes, and the next one may stand behind it.
  while (const SocketId socket = inner_.acceptTcp(listener)) {
    if (MayReach(inner_.remoteAddress(socket), -1)) return socket;
    inner_.close(socket);
  }
  return 0;
}

int64_t PolicedSockets::sendTo(SocketId socket, NetAddress to, uint16_t port, std::span<const uint8_t> bytes) {
  if (!MayReach(to, port)) return static_cast<int64_t>(bytes.size());
  return inner_.sendTo(socket, to, port, bytes);
}

int64_t PolicedSockets::receiveFrom(SocketId socket, std::span<uint8_t> bytes, NetAddress& from) {
  const int64_t count = inner_.receiveFrom(socket, bytes, from);
  if (count >= 0 && !MayReach(from, -1)) return kSocketTooLarge;
  return count;
}

}  // namespace vl

#include "net/vex_player.h"

#include <array>
#include <utility>

#include "base/limits.h"
#include "net/vex_server.h"

namespace vl {

namespace {

constexpr size_t kMaxIpText = 16;

uint16_t UdpPort(uint16_t tcpPort) { return static_cast<uint16_t>(tcpPort + 1); }

}  // namespace

VexPlayer::VexPlayer(VexNode& node, std::string_view host, uint16_t port, std::string_view name)
    : api(node.api),
      node(node),
      port(port),
      name(name.substr(0, limits::kMaxNetNameBytes)),
      stats(api.NowMs()),
      stream(api, api.sockets.connectTcp(host, port), WireDirection::ToPlayer,
             VexTraffic(&stats, &node.stats, &api.stats)),
      udp_(api.sockets.openUdp(UdpPort(port))) {}

void VexPlayer::OnDelete() {
  api.Fire({kVexPlayerDisconnected, this, nullptr, {}, 0});
  // What was queued before the end leaves with it.
  stream.Pump();
  node.players.Take(this);
  channels.DeleteAll();
  stream.Close();
  api.sockets.close(udp_);
}

bool VexPlayer::Process() {
  if (!connected && api.sockets.hasConnected(stream.Socket())) connected = true;
  if (api.HasRoom()) {
    if (!stream.Receive()) {
      connected = false;
      return false;
    }
    if (const VexMessage* message = stream.Message()) {
      Handle(*message);
      if (IsDeleted()) return false;
      stream.Drop();
    }
  }
  if (!connected) {
    stream.Defer();
  } else if (!stream.Pump()) {
    return false;
  }
  ReceiveDatagrams();
  return !IsDeleted();
}

void VexPlayer::ReceiveDatagrams() {
  std::array<uint8_t, 4096> scratch;
  for (int n = 0; n < limits::kMaxNetDatagrams && api.HasRoom() && api.sockets.hasNews(udp_); ++n) {
    NetAddress from = 0;
    const int64_t size = api.sockets.receiveFrom(udp_, scratch, from);
    if (size == kSocketTooLarge) continue;
    if (size < 0) return;
    stats.AddIn(static_cast<size_t>(size));
    node.stats.AddIn(static_cast<size_t>(size));
    api.stats.AddIn(static_cast<size_t>(size));
    HandleBlast(std::span(scratch).first(static_cast<size_t>(size)));
    if (IsDeleted()) return;
  }
}

void VexPlayer::Handle(const VexMessage& message) {
  switch (message.type) {
    case kToPlayerText:
      return OnText(message);
    case kToPlayerUserLeft:
      return OnUserLeft(message);
    case kToPlayerUserJoined:
    case kToPlayerUserIsOn:
      return OnUserCame(message);
    case kToPlayerJoined:
      return OnJoined(message);
    case kToPlayerMotd:
      motd = message.texts[0];
      return;
    case kToPlayerUserNameChanged:
      return OnNameChanged(message);
    default:
      return OnWelcome(message);
  }
}

void VexPlayer::OnText(const VexMessage& message) {
  const auto [channelId, sender, unused] = message.words;
  if (sender == 0) {
    api.Fire({kVexServerMessage, this, nullptr, message.texts[0], message.half});
    return;
  }
  const VexChannel* channel = ChannelWithId(channelId);
  VexUser* user = channel ? channel->UserWithId(sender) : nullptr;
  if (user) api.Fire({kVexUserMessage, this, user, message.texts[0], message.half});
}

void VexPlayer::OnUserLeft(const VexMessage& message) {
  const auto [userId, channelId, masterId] = message.words;
  VexChannel* channel = ChannelWithId(channelId);
  if (!channel) return;
  channel->master = channel->UserWithId(masterId);
  VexUser* user = channel->UserWithId(userId);
  if (!user) return;
  if (userId == id) {
    channel->Delete();
    return;
  }
  const auto keep = user->weak_from_this().lock();
  api.Fire({kVexUserLeft, channel, user, {}, 0});
  user->Delete();
}

void VexPlayer::OnUserCame(const VexMessage& message) {
  const auto [userId, channelId, masterId] = message.words;
  VexChannel* channel = ChannelWithId(channelId);
  VexUser* user = channel ? channel->AddUser(userId, message.texts[0], message.texts[1]) : nullptr;
  if (!user) return;
  channel->master = channel->UserWithId(masterId);
  api.Fire({message.type == kToPlayerUserIsOn ? kVexUserIsOn : kVexUserJoined, channel, user, {}, 0});
}

void VexPlayer::OnJoined(const VexMessage& message) {
  const auto [userId, channelId, masterId] = message.words;
  VexChannel* channel = channels.Find([&](const VexChannel& c) { return c.name == message.texts[2]; });
  if (!channel) return;
  channel->id = channelId;
  if (!channel->AddUser(userId, message.texts[0], message.texts[1])) return;
  channel->master = channel->UserWithId(masterId);
  api.Fire({kVexChannelJoined, this, channel, {}, 0});
}

void VexPlayer::OnNameChanged(const VexMessage& message) {
  // The text is the stream's, which a handler may close.
  const std::string newName(message.texts[0]);
  const uint32_t userId = message.words[0];
  channels.ForEach([&](VexChannel& channel) {
    if (IsDeleted()) return;
    channel.users.ForEach([&](VexUser& user) {
      if (user.id != userId || user.IsDeleted()) return;
      const std::string oldName = std::exchange(user.name, newName);
      api.Fire({kVexUserNameChanged, &channel, &user, oldName, 0});
    });
  });
}

void VexPlayer::OnWelcome(const VexMessage& message) {
  serverVersion = message.half;
  id = message.words[0];
  stream.Queue(WireWriter(kToServerHello).Half(kVexProtocol).Text(name));
  api.Fire({kVexPlayerConnected, this, nullptr, {}, 0});
}

VexChannel* VexPlayer::ChannelWithId(uint32_t channelId) const {
  return channels.Find([&](const VexChannel& channel) { return channel.id == channelId; });
}

VexChannel* VexPlayer::SignOn(std::string_view channelName) {
  const std::string_view kept = channelName.substr(0, limits::kMaxNetNameBytes);
  VexChannel* channel = channels.Add(std::make_shared<VexChannel>(*this, kept));
  stream.Queue(WireWriter(kToServerJoin).Text(kept));
  return channel;
}

void VexPlayer::SendText(std::string_view text, uint16_t type) {
  stream.Queue(WireWriter(kToServerText).Half(type).Text(text));
}

void VexPlayer::BlastText(std::string_view text, uint16_t type) {
  WireWriter datagram(kDatagramServerBlast);
  datagram.Half(type).Word(id).Rest(text);
  if (VexServer* server = node.ServerWithConnection(id)) {
    server->HandleServerBlast(datagram.Bytes());
    return;
  }
  SendDatagram(datagram.Bytes(), ParseNetAddress(ServerIp()));
}

void VexPlayer::SendBlast(const VexBlast& blast, NetAddress ip) {
  const WireWriter datagram = WriteBlast(blast);
  if (blast.target == 0) {
    if (VexServer* server = node.ServerWithConnection(id)) return server->HandleBlast(datagram.Bytes());
  } else if (VexPlayer* player = node.PlayerWithId(blast.target)) {
    return player->HandleBlast(datagram.Bytes());
  }
  SendDatagram(datagram.Bytes(), ip);
}

void VexPlayer::SendDatagram(std::span<const uint8_t> datagram, NetAddress ip) {
  const int64_t sent = api.sockets.sendTo(udp_, ip, UdpPort(port), datagram);
  if (sent < 0) return;
  VexTraffic(&stats, &node.stats, &api.stats).Out(static_cast<size_t>(sent));
}

void VexPlayer::HandleBlast(std::span<const uint8_t> datagram) {
  const auto blast = ParseBlast(datagram);
  if (!blast) return;
  if (blast->target != id) {
    if (blast->target != 0) {
      if (VexPlayer* player = node.PlayerWithId(blast->target)) player->HandleBlast(datagram);
    } else if (VexServer* server = node.ServerWithConnection(id)) {
      server->HandleBlast(datagram);
    }
    return;
  }
  if (blast->sender == 0) {
    api.Fire({kVexServerMessage, this, nullptr, blast->text, blast->type});
    return;
  }
  const VexChannel* channel = ChannelWithId(blast->channel);
  VexUser* user = channel ? channel->UserWithId(blast->sender) : nullptr;
  if (user) api.Fire({kVexUserMessage, this, user, blast->text, blast->type});
}

const std::string& VexPlayer::LocalIp() {
  if (connected && localIp_.empty()) localIp_ = NetAddressText(api.sockets.localAddress(stream.Socket()));
  return localIp_;
}

const std::string& VexPlayer::ServerIp() {
  if (connected && serverIp_.empty()) serverIp_ = NetAddressText(api.sockets.remoteAddress(stream.Socket()));
  return serverIp_;
}

void VexChannel::OnDelete() {
  player.api.Fire({kVexChannelLeft, &player, this, {}, 0});
  player.stream.Queue(WireWriter(kToServerLeave).Word(id));
  player.channels.Take(this);
  master = nullptr;
  users.DeleteAll();
}

void VexChannel::SendText(std::string_view text, uint16_t type) {
  player.stream.Queue(WireWriter(kToServerSessionText).Half(type).Word(id).Text(text));
}

void VexChannel::BlastText(std::string_view text, uint16_t type) {
  player.SendBlast({type, id, player.id, 0, text}, ParseNetAddress(player.ServerIp()));
}

VexUser* VexChannel::UserWithId(uint32_t userId) const {
  return users.Find([&](const VexUser& user) { return user.id == userId; });
}

VexUser* VexChannel::AddUser(uint32_t userId, std::string_view userName, std::string_view ip) {
  if (users.Count() >= limits::kMaxNetUsers) return nullptr;
  // A user on the server's machine is reached where the server is.
  const std::string& serverIp = player.ServerIp();
  if (ip == "127.0.0.1") ip = serverIp;
  return users.Add(
      std::make_shared<VexUser>(*this, userId, userName.substr(0, limits::kMaxNetNameBytes), ip.substr(0, kMaxIpText)));
}

void VexUser::OnDelete() {
  if (channel.master == this) channel.master = nullptr;
  channel.users.Take(this);
}

void VexUser::SendText(std::string_view text, uint16_t type) {
  channel.player.stream.Queue(WireWriter(kToServerUserText).Half(type).Word(channel.id).Word(id).Text(text));
}

void VexUser::BlastText(std::string_view text, uint16_t type) {
  channel.player.SendBlast({type, channel.id, channel.player.id, id, text}, ParseNetAddress(ip));
}

}  // namespace vl

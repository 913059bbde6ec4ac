#include "net/vex_server.h"

#include <array>

#include "base/limits.h"
#include "net/vex_player.h"

namespace vl {

namespace {

WireWriter WriteText(uint16_t type, uint32_t channel, uint32_t sender, std::string_view text) {
  WireWriter writer(kToPlayerText);
  writer.Half(type).Word(channel).Word(sender).Text(text);
  return writer;
}

}  // namespace

VexServer::VexServer(VexNode& node, uint16_t port)
    : api(node.api),
      node(node),
      port(port),
      localIp(NetAddressText(api.sockets.hostAddress())),
      stats(api.NowMs()),
      tcp_(api.sockets.listenTcp(port)),
      udp_(api.sockets.openUdp(static_cast<uint16_t>(port + 1))) {}

void VexServer::OnDelete() {
  node.servers.Take(this);
  sessions.DeleteAll();
  connections.DeleteAll();
  api.sockets.close(tcp_);
  api.sockets.close(udp_);
}

void VexServer::Process() {
  if (api.sockets.hasNews(tcp_)) {
    if (const SocketId accepted = api.sockets.acceptTcp(tcp_)) {
      if (api.sockets.hasNews(tcp_)) api.hasWork = true;
      if (connections.Count() < limits::kMaxNetConnections) {
        connections.Add(std::make_shared<VexConnection>(*this, accepted));
      } else {
        api.sockets.close(accepted);
      }
    }
  }
  ReceiveDatagrams();
}

void VexServer::ReceiveDatagrams() {
  std::array<uint8_t, 4096> scratch;
  for (int n = 0; n < limits::kMaxNetDatagrams && api.HasRoom() && api.sockets.hasNews(udp_); ++n) {
    NetAddress from = 0;
    const int64_t size = api.sockets.receiveFrom(udp_, scratch, from);
    if (size == kSocketTooLarge) continue;
    if (size < 0) return;
    VexTraffic(&stats, &node.stats, &api.stats).In(static_cast<size_t>(size));
    const auto datagram = std::span<const uint8_t>(scratch).first(static_cast<size_t>(size));
    HandleBlast(datagram);
    HandleServerBlast(datagram);
    if (IsDeleted()) return;
  }
}

void VexServer::HandleBlast(std::span<const uint8_t> datagram) {
  auto blast = ParseBlast(datagram);
  if (!blast) return;
  if (blast->target != 0) {
    if (VexPlayer* player = node.PlayerWithId(blast->target)) player->HandleBlast(datagram);
    return;
  }
  VexSession* session = SessionWithId(blast->channel);
  if (!session) return;
  const VexKept kept(session);
  for (size_t i = 0; i < session->connections.Count() && !IsDeleted(); ++i) {
    const VexConnection& member = *session->connections.At(static_cast<int64_t>(i));
    if (member.id == blast->sender) continue;
    blast->target = member.id;
    SendBlast(*blast, member);
  }
}

void VexServer::HandleServerBlast(std::span<const uint8_t> datagram) {
  const auto blast = ParseServerBlast(datagram);
  VexConnection* connection = blast ? ConnectionWithId(blast->sender) : nullptr;
  if (connection) api.Fire({kVexClientMessage, connection, nullptr, blast->text, blast->type});
}

void VexServer::SendBlast(const VexBlast& blast, const VexConnection& target) {
  const WireWriter datagram = WriteBlast(blast);
  if (VexPlayer* player = node.PlayerWithId(target.id)) return player->HandleBlast(datagram.Bytes());
  const int64_t sent =
      api.sockets.sendTo(udp_, ParseNetAddress(target.clientIp), static_cast<uint16_t>(port + 1), datagram.Bytes());
  if (sent >= 0) VexTraffic(&stats, &node.stats, &api.stats).Out(static_cast<size_t>(sent));
}

void VexServer::SendText(std::string_view text, uint16_t type) {
  const WireWriter message = WriteText(type, 0, 0, text);
  connections.ForEach([&](VexConnection& connection) { connection.stream.Queue(message); });
}

void VexServer::BlastText(std::string_view text, uint16_t type) {
  const VexKept kept(this);
  connections.ForEach([&](VexConnection& connection) { connection.BlastText(text, type); });
}

VexConnection* VexServer::ConnectionWithId(uint32_t id) const {
  return connections.Find([&](const VexConnection& connection) { return connection.id == id; });
}

VexSession* VexServer::SessionWithId(uint32_t id) const {
  return sessions.Find([&](const VexSession& session) { return session.id == id; });
}

VexConnection::VexConnection(VexServer& server, SocketId socket)
    : api(server.api),
      server(server),
      id(server.node.NextId()),
      clientIp(NetAddressText(api.sockets.remoteAddress(socket))),
      createdMs(api.NowMs()),
      stats(api.NowMs()),
      stream(api, socket, WireDirection::ToServer, VexTraffic(&stats, &server.stats, &server.node.stats, &api.stats)) {}

void VexConnection::OnDelete() {
  api.Fire({kVexDeadConnection, &server, this, {}, 0});
  // What was queued before the end leaves with it.
  stream.Pump();
  server.connections.Take(this);
  while (VexSession* session = sessions.At(0)) Leave(*session);
  stream.Close();
}

bool VexConnection::Process() {
  if (!connected) {
    if (api.sockets.hasFailed(stream.Socket()) || api.NowMs() - createdMs > limits::kNetPatienceMs) return false;
    if (api.sockets.hasConnected(stream.Socket())) {
      connected = true;
      stream.Queue(WireWriter(kToPlayerMotd).Text(server.motd));
      stream.Queue(WireWriter(kToPlayerWelcome).Half(kVexProtocol).Word(id));
    }
  }
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
  return stream.Pump();
}

void VexConnection::Handle(const VexMessage& message) {
  switch (message.type) {
    case kToServerSessionText:
      return OnSessionText(message);
    case kToServerText:
      return api.Fire({kVexClientMessage, this, nullptr, message.texts[0], message.half});
    case kToServerUserText:
      return OnUserText(message);
    case kToServerJoin:
      return OnJoin(message.texts[0]);
    case kToServerLeave:
      if (VexSession* session = sessions.Find(message.words[0])) Leave(*session);
      return;
    case kToServerNameChange:
      return OnNameChange(message.texts[0]);
    default:
      name = message.texts[0].substr(0, limits::kMaxNetNameBytes);
      clientVersion = message.half;
      api.Fire({kVexNewConnection, &server, this, {}, 0});
      return;
  }
}

void VexConnection::OnSessionText(const VexMessage& message) {
  VexSession* session = sessions.Find(message.words[0]);
  if (session) session->QueueToAll(WriteText(message.half, session->id, id, message.texts[0]), this);
}

void VexConnection::OnUserText(const VexMessage& message) {
  const VexSession* session = sessions.Find(message.words[0]);
  VexConnection* target = session ? session->connections.Find(message.words[1]) : nullptr;
  if (target) target->stream.Queue(WriteText(message.half, session->id, id, message.texts[0]));
}

void VexConnection::OnJoin(std::string_view sessionName) {
  if (sessionName.size() > limits::kMaxNetNameBytes || sessions.Count() >= limits::kMaxNetSessionsEach) return;
  VexSession* session = server.sessions.Find([&](const VexSession& s) { return s.name == sessionName; });
  if (!session) {
    if (server.sessions.Count() >= limits::kMaxNetSessions) return;
    session = server.sessions.Add(std::make_shared<VexSession>(server, sessionName));
    session->master = this;
    const auto keep = session->weak_from_this().lock();
    api.Fire({kVexSessionCreated, &server, session, {}, 0});
    if (IsDeleted() || session->IsDeleted()) return;
    session->Join(*this);
    return;
  }
  session->Join(*this);
}

void VexConnection::OnNameChange(std::string_view newName) {
  name = newName.substr(0, limits::kMaxNetNameBytes);
  const WireWriter message = WireWriter(kToPlayerUserNameChanged).Word(id).Text(name);
  for (size_t i = 0; i < sessions.Count(); ++i) sessions.At(static_cast<int64_t>(i))->QueueToAll(message, nullptr);
}

void VexConnection::SendText(std::string_view text, uint16_t type) { stream.Queue(WriteText(type, 0, 0, text)); }

void VexConnection::BlastText(std::string_view text, uint16_t type) { server.SendBlast({type, 0, 0, id, text}, *this); }

void VexConnection::SignOff(int64_t index) {
  if (VexSession* session = sessions.At(index)) Leave(*session);
}

void VexConnection::Leave(VexSession& session) {
  const VexKept kept(&session);
  session.Leave(*this);
  session.DeleteIfEmpty();
}

void VexSession::OnDelete() {
  while (VexConnection* member = connections.At(0)) Leave(*member);
  server.api.Fire({kVexSessionDestroyed, &server, this, {}, 0});
  server.sessions.Take(this);
}

WireWriter VexSession::UserMessage(uint8_t type, const VexConnection& user) const {
  WireWriter writer(type);
  writer.Word(user.id).Word(id).Word(MasterId()).Text(user.name).Text(user.clientIp);
  return writer;
}

void VexSession::Join(VexConnection& connection) {
  if (!connections.Add(&connection, connection.id)) return;
  master = connections.At(0);
  // Before the event: whatever its handler deletes finds the two together.
  connection.sessions.Add(this, id);
  connection.stream.Queue(UserMessage(kToPlayerJoined, connection).Text(name));
  QueueToAll(UserMessage(kToPlayerUserJoined, connection), &connection);
  for (size_t i = 0; i < connections.Count(); ++i) {
    const VexConnection* other = connections.At(static_cast<int64_t>(i));
    if (other != &connection) connection.stream.Queue(UserMessage(kToPlayerUserIsOn, *other));
  }
  server.api.Fire({kVexSessionJoined, &connection, this, {}, 0});
}

void VexSession::Leave(VexConnection& connection) {
  const auto userLeft = [&](uint32_t masterId) {
    WireWriter writer(kToPlayerUserLeft);
    writer.Word(connection.id).Word(id).Word(masterId);
    return writer;
  };
  connection.stream.Queue(userLeft(MasterId()));
  connections.Remove(connection.id);
  connection.sessions.Remove(id);
  master = connections.At(0);
  // Those who stay learn here who is the master now.
  QueueToAll(userLeft(MasterId()), nullptr);
  server.api.Fire({kVexSessionLeft, &connection, this, {}, 0});
}

void VexSession::QueueToAll(const WireWriter& message, const VexConnection* but) {
  for (size_t i = 0; i < connections.Count(); ++i) {
    VexConnection* member = connections.At(static_cast<int64_t>(i));
    if (member != but) member->stream.Queue(message);
  }
}

void VexSession::SendText(std::string_view text, uint16_t type) { QueueToAll(WriteText(type, id, 0, text), nullptr); }

void VexSession::BlastText(std::string_view text, uint16_t type) {
  const VexKept kept(this);
  for (size_t i = 0; i < connections.Count() && !server.IsDeleted(); ++i) {
    const VexConnection& member = *connections.At(static_cast<int64_t>(i));
    server.SendBlast({type, id, 0, member.id, text}, member);
  }
}

void VexSession::SignOff(int64_t index) {
  if (VexConnection* connection = connections.At(index)) connection->Leave(*this);
}

}  // namespace vl

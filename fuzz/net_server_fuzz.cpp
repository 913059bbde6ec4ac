// A server with several peers that send what they like, whole or in pieces, connect, stay silent and go, while the
// program at the server sends, signs off and deletes. A byte for each step, and what it needs.
#include <array>
#include <memory>
#include <optional>

#include "fuzz/net_fuzz_support.h"

using namespace vl;

namespace {

constexpr NetAddress kServer = 0x0A000001;
constexpr uint16_t kPort = 5000;
constexpr int kMaxSteps = 400;

constexpr struct {
  uint8_t type;
  std::string_view fields;
} kMessages[] = {{kToServerSessionText, "hwt"}, {kToServerText, "ht"}, {kToServerUserText, "hwwt"},
                 {kToServerJoin, "t"},          {kToServerLeave, "w"}, {kToServerNameChange, "t"},
                 {kToServerHello, "ht"},        {kToServerJoin, "t"}};

struct Peer {
  Peer(MemoryNetwork& network, uint32_t number)
      : sockets(network, kServer + 1 + number),
        tcp(sockets.connectTcp("10.0.0.1", kPort)),
        udp(sockets.openUdp(kPort + 1)) {}
  void Read() {
    uint8_t bytes[4096];
    NetAddress from = 0;
    while (sockets.receive(tcp, bytes, false) > 0) {
    }
    while (sockets.receiveFrom(udp, bytes, from) >= 0) {
    }
  }
  MemorySockets sockets;
  SocketId tcp;
  SocketId udp;
};

// Members and sessions name each other, and a master is the first of them.
void Check(const VexNode& node) {
  for (size_t s = 0; s < node.servers.Count(); ++s) {
    const VexServer& server = *node.servers.At(static_cast<int64_t>(s));
    Require(server.connections.Count() <= limits::kMaxNetConnections);
    Require(server.sessions.Count() <= limits::kMaxNetSessions);
    for (size_t i = 0; i < server.sessions.Count(); ++i) {
      const VexSession& session = *server.sessions.At(static_cast<int64_t>(i));
      Require(session.master == session.connections.At(0));
      for (size_t m = 0; m < session.connections.Count(); ++m) {
        const VexConnection& member = *session.connections.At(static_cast<int64_t>(m));
        Require(server.ConnectionWithId(member.id) == &member && member.sessions.Find(session.id) == &session);
      }
    }
    for (size_t i = 0; i < server.connections.Count(); ++i) {
      const VexConnection& connection = *server.connections.At(static_cast<int64_t>(i));
      for (size_t m = 0; m < connection.sessions.Count(); ++m) {
        const VexSession* session = connection.sessions.At(static_cast<int64_t>(m));
        Require(server.SessionWithId(session->id) == session && session->connections.Find(connection.id));
      }
    }
  }
}

// What a program does at its server.
void Act(VexNode& node, FuzzSteps& steps) {
  VexServer* server = node.servers.At(0);
  const uint8_t what = steps.Byte();
  if (!server) {
    if (what < 64) node.HostServer(kPort);
    return;
  }
  const int64_t which = steps.Byte() % 8;
  VexConnection* connection = server->connections.At(which);
  VexSession* session = server->sessions.At(which);
  switch (what % 12) {
    case 0:
      return server->SendText(FuzzText(steps), 1);
    case 1:
      return server->BlastText(FuzzText(steps), 2);
    case 2:
      return session ? session->SendText(FuzzText(steps), 3) : void();
    case 3:
      return session ? session->BlastText(FuzzText(steps), 4) : void();
    case 4:
      return session ? session->SignOff(steps.Byte() % 8) : void();
    case 5:
      return connection ? connection->SignOff(steps.Byte() % 8) : void();
    case 6:
      return connection ? connection->Delete() : void();
    case 7:
      return session ? session->Delete() : void();
    case 8:
      return connection ? connection->BlastText(FuzzText(steps), 5) : void();
    case 9:
      if (node.players.Count() < 4) node.Connect("127.0.0.1", kPort, "own");
      return;
    case 10:
      if (VexPlayer* player = node.players.At(which % 4)) {
        if (VexChannel* channel = player->channels.At(0)) {
          channel->BlastText(FuzzText(steps), 6);
        } else {
          player->SignOn("a");
        }
      }
      return;
    default:
      return which == 7 ? server->Delete() : void();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzSteps steps(data, size);
  MemoryNetwork network;
  std::array<std::unique_ptr<Peer>, 6> peers;
  std::optional<FuzzMachine> machine(std::in_place, network, kServer);
  VexNode* node = machine->api.MakeNode();
  node->HostServer(kPort);
  for (int step = 0; step < kMaxSteps && !steps.IsEmpty(); ++step) {
    const uint8_t op = steps.Byte();
    const uint32_t number = op / 16u % peers.size();
    std::unique_ptr<Peer>& peer = peers[number];
    switch (op % 16) {
      case 0:
        peer.reset();
        peer = std::make_unique<Peer>(network, number);
        break;
      case 1:
        peer.reset();
        break;
      case 2:
      case 3: {
        const std::string bytes = steps.Bytes(steps.Byte());
        if (peer) peer->sockets.send(peer->tcp, AsBytes(bytes));
        break;
      }
      case 4:
      case 5:
      case 6: {
        const auto& message = kMessages[steps.Byte() % std::size(kMessages)];
        std::string bytes = FuzzMessage(steps, message.fields, message.type);
        // In two pieces, or never whole.
        if (op % 16 == 6) {
          const size_t cut = steps.Byte() % bytes.size();
          if (peer) peer->sockets.send(peer->tcp, AsBytes(bytes).first(cut));
          machine->Poll(2);
          bytes = steps.Byte() < 200 ? bytes.substr(cut) : std::string();
        }
        if (peer) peer->sockets.send(peer->tcp, AsBytes(bytes));
        break;
      }
      case 7:
      case 8: {
        const std::string datagram = FuzzDatagram(steps);
        if (peer) peer->sockets.sendTo(peer->udp, kServer, kPort + 1, AsBytes(datagram));
        break;
      }
      case 9:
      case 10:
        machine->Poll(op / 16 + 1);
        break;
      case 11:
        machine->clock.Advance(size_t{steps.Byte()} << (steps.Byte() % 10));
        break;
      case 12:
        if (peer) peer->Read();
        break;
      case 13:
        Act(*node, steps);
        break;
      case 14:
        machine->PlanDeletion(steps);
        break;
      default:
        network.sliceBytes = op / 16u < 8 ? 0 : op / 16u - 7;
        machine->hasRoom = steps.Byte() < 240;
        break;
    }
    if (node->IsDeleted() || machine->api.nodes.Count() == 0) return 0;
    if (step % 8 == 7) Check(*node);
  }
  machine->hasRoom = true;
  machine->Poll(8);
  Check(*node);
  node->Delete();
  Require(machine->api.queuedBytes == 0 && machine->api.unsent == 0);
  return 0;
}

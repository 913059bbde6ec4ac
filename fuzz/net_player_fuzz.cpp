// Players at a server that answers what it likes, whole or in pieces, and breaks off, while strangers send datagrams
// and the program signs on, sends and deletes. One server of their own stands in the same node.
#include <array>
#include <vector>

#include "fuzz/net_fuzz_support.h"

using namespace vl;

namespace {

constexpr NetAddress kMachine = 0x0A000001;
constexpr NetAddress kHostile = 0x0A000002;
constexpr uint16_t kPort = 5000;
constexpr uint16_t kOwnPort = 6000;
constexpr int kMaxSteps = 400;
constexpr size_t kMaxPlayers = 6;

constexpr struct {
  uint8_t type;
  std::string_view fields;
} kMessages[] = {{kToPlayerText, "hwwt"},          {kToPlayerUserLeft, "www"},  {kToPlayerUserJoined, "wwwtt"},
                 {kToPlayerUserIsOn, "wwwtt"},     {kToPlayerJoined, "wwwttt"}, {kToPlayerMotd, "t"},
                 {kToPlayerUserNameChanged, "wt"}, {kToPlayerWelcome, "hw"}};

// The master of a channel, if it has one, is one of its users.
void Check(const VexNode& node) {
  for (size_t p = 0; p < node.players.Count(); ++p) {
    const VexPlayer& player = *node.players.At(static_cast<int64_t>(p));
    for (size_t i = 0; i < player.channels.Count(); ++i) {
      const VexChannel& channel = *player.channels.At(static_cast<int64_t>(i));
      Require(&channel.player == &player && channel.users.Count() <= limits::kMaxNetUsers);
      Require(!channel.master || channel.users.Find([&](const VexUser& user) { return &user == channel.master; }));
    }
  }
}

void Act(VexNode& node, FuzzSteps& steps) {
  const uint8_t what = steps.Byte();
  const uint8_t which = steps.Byte();
  VexPlayer* player = node.players.At(which % 4);
  if (what % 10 == 0 || !player) {
    if (node.players.Count() < kMaxPlayers) {
      node.Connect(which % 4 == 0 ? "127.0.0.1" : "10.0.0.2", which % 4 == 0 ? kOwnPort : kPort, FuzzText(steps));
    }
    return;
  }
  VexChannel* channel = player->channels.At(which / 4 % 4);
  VexUser* user = channel ? channel->users.At(which / 16 % 4) : nullptr;
  switch (what % 10) {
    case 1:
    case 2:
      if (player->channels.Count() < 16) player->SignOn(FuzzText(steps));
      return;
    case 3:
      return player->SendText(FuzzText(steps), 1);
    case 4:
      return player->BlastText(FuzzText(steps), 2);
    case 5:
      return channel ? channel->SendText(FuzzText(steps), 3) : void();
    case 6:
      return channel ? channel->BlastText(FuzzText(steps), 4) : void();
    case 7:
      return user ? user->SendText(FuzzText(steps), 5) : void();
    case 8:
      return user ? user->BlastText(FuzzText(steps), 6) : void();
    default:
      if (which & 128) return player->Delete();
      return channel ? channel->Delete() : void();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzSteps steps(data, size);
  MemoryNetwork network;
  MemorySockets hostile(network, kHostile);
  const SocketId listener = hostile.listenTcp(kPort);
  const SocketId udp = hostile.openUdp(kPort + 1);
  std::vector<SocketId> accepted;
  FuzzMachine machine(network, kMachine);
  VexNode* node = machine.api.MakeNode();
  node->HostServer(kOwnPort);
  node->Connect("10.0.0.2", kPort, "Ann");
  for (int step = 0; step < kMaxSteps && !steps.IsEmpty(); ++step) {
    while (const SocketId socket = hostile.acceptTcp(listener)) accepted.push_back(socket);
    const uint8_t op = steps.Byte();
    const SocketId tcp = accepted.empty() ? 0 : accepted[op / 16u % accepted.size()];
    switch (op % 16) {
      case 0:
      case 1: {
        const std::string bytes = steps.Bytes(steps.Byte());
        hostile.send(tcp, AsBytes(bytes));
        break;
      }
      case 2:
      case 3:
      case 4:
      case 5: {
        const auto& message = kMessages[steps.Byte() % std::size(kMessages)];
        std::string bytes = FuzzMessage(steps, message.fields, message.type);
        if (op % 16 == 5) {
          const size_t cut = steps.Byte() % bytes.size();
          hostile.send(tcp, AsBytes(bytes).first(cut));
          machine.Poll(2);
          bytes = steps.Byte() < 200 ? bytes.substr(cut) : std::string();
        }
        hostile.send(tcp, AsBytes(bytes));
        break;
      }
      case 6:
      case 7: {
        const std::string datagram = FuzzDatagram(steps);
        hostile.sendTo(udp, kMachine, op & 128 ? kOwnPort + 1 : kPort + 1, AsBytes(datagram));
        break;
      }
      case 8:
      case 9:
        machine.Poll(op / 16 + 1);
        break;
      case 10:
        hostile.close(tcp);
        std::erase(accepted, tcp);
        break;
      case 11:
      case 12:
        Act(*node, steps);
        break;
      case 13: {
        uint8_t bytes[4096];
        while (hostile.receive(tcp, bytes, false) > 0) {
        }
        break;
      }
      case 14:
        machine.PlanDeletion(steps);
        break;
      default:
        network.sliceBytes = op / 16u < 8 ? 0 : op / 16u - 7;
        machine.hasRoom = steps.Byte() < 240;
        if (op / 16u == 7) machine.clock.Advance(limits::kNetPatienceMs + 1);
        break;
    }
    if (machine.api.nodes.Count() == 0) return 0;
    if (step % 8 == 7) Check(*node);
  }
  machine.hasRoom = true;
  machine.Poll(8);
  Check(*node);
  node->Delete();
  Require(machine.api.queuedBytes == 0 && machine.api.unsent == 0);
  return 0;
}

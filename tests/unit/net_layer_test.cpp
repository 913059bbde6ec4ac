// What a program can't reach of the network layer: bytes on the wire, hostile peers, loss, handlers that delete.
#include "base/limits.h"
#include "tests/unit/net_support.h"

namespace vl {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

constexpr NetAddress kServer = 0x0A000001;
constexpr NetAddress kOther = 0x0A000002;

std::string Text(std::string_view text) {
  std::string bytes(4, '\0');
  for (size_t i = 0; i < 4; ++i) bytes[i] = static_cast<char>(text.size() >> 8 * i);
  return bytes + std::string(text);
}

TEST(NetBuffer, ReadsBeyondTheEndGiveNothing) {
  VexBuffer b;
  b.AppendU8(1);
  b.AppendU16(0x0302);
  b.AppendU32(0x07060504);
  b.AppendText("xy");
  EXPECT_EQ(b.Size(), 9u);
  EXPECT_EQ(b.ReadU32(3), 0x07060504u);
  EXPECT_EQ(b.ReadU16(8), 0u);
  EXPECT_EQ(b.ReadU8(9), 0u);
  EXPECT_EQ(b.ReadU32(SIZE_MAX), 0u);
  EXPECT_EQ(b.CopyOut(7, 100), (std::vector<char>{'x', 'y', 0}));
  b.Erase(1, 2);
  EXPECT_EQ(b.ReadU32(1), 0x07060504u);
  b.Erase(0, 1);
  EXPECT_EQ(b.ReadU8(0), 4);
  b.Erase(2, SIZE_MAX);
  EXPECT_EQ(b.Size(), 2u);
}

TEST(NetBuffer, AQueueTellsTheMessagesThatASendTook) {
  VexQueue queue;
  const uint8_t bytes[5] = {};
  queue.Add(std::span(bytes).first(2));
  queue.Add(std::span(bytes).first(5));
  queue.Add(std::span(bytes).first(1));
  std::vector<size_t> parts;
  const auto note = [&](size_t part) { parts.push_back(part); };
  queue.Drop(4, note);
  EXPECT_EQ(parts, (std::vector<size_t>{2, 2}));
  queue.Drop(4, note);
  EXPECT_EQ(parts, (std::vector<size_t>{2, 2, 3, 1}));
  EXPECT_TRUE(queue.IsEmpty());
}

TEST(NetStats, ReadingsComeASecondApart) {
  VexStats s(1000);
  s.AddIn(500);
  s.Read(2000);
  EXPECT_EQ(s.lastInThroughput, 0u);
  s.Read(3000);  // two seconds for the first reading
  EXPECT_EQ(s.lastInThroughput, 250u);
  EXPECT_EQ(s.inSinceReading, 0u);
  s.AddIn(100);
  s.Read(3001);
  EXPECT_EQ(s.lastInThroughput, 100000u);  // within one millisecond
  EXPECT_EQ(s.lowestIn, 250);
  EXPECT_EQ(s.InThroughput(1999), 0.0f);
  EXPECT_EQ(s.InThroughput(3999), 300.0f);
}

TEST(NetWire, AServerSpeaksToTheByte) {
  MemoryNetwork network;
  NetMachine machine(network, kServer);
  machine.api.MakeNode()->HostServer(5000);
  RawPeer peer(network, kOther, "10.0.0.1", 5000);
  machine.Poll(2);
  EXPECT_EQ(peer.Received(), "\x0a"s + Text("VexAPI Version 1.22") + "\x0c\x03\0\x01\0\0\0"s);
  // A message that comes in pieces is handled with its last one.
  peer.Send("\x0c\x03"sv);
  machine.Poll(2);
  peer.Send("\0\x03\0\0\0An"sv);
  machine.Poll(2);
  EXPECT_EQ(machine.Count("9 "), 0u);
  peer.Send("n"sv);
  machine.Poll();
  EXPECT_EQ(machine.Count("9 "), 1u);
  peer.Send("\x04" + Text("hall"));
  machine.Poll(2);
  const std::string ann = Text("Ann") + Text("10.0.0.2");
  EXPECT_EQ(peer.Received(), "\x08\x01\0\0\0\x02\0\0\0\x01\0\0\0"s + ann + Text("hall"));
  RawPeer second(network, 0x0A000003, "10.0.0.1", 5000);
  second.Send("\x0c\x03\0"s + Text("Bo") + "\x04" + Text("hall"));
  machine.Poll(4);
  second.Received();
  EXPECT_EQ(peer.Received(), "\x06\x03\0\0\0\x02\0\0\0\x01\0\0\0"s + Text("Bo") + Text("10.0.0.3"));
  second.Send("\x01\x07\0\x02\0\0\0"s + Text("hi"));                   // to the session
  second.Send("\x03\x08\0\x02\0\0\0\x01\0\0\0"s + Text("you"));        // to one
  second.Send("\x02\x09\0"s + Text("server") + "\x0b" + Text("Bob"));  // to the server; a new name
  machine.Poll(5);
  EXPECT_EQ(peer.Received(), "\x01\x07\0\x02\0\0\0\x03\0\0\0"s + Text("hi") + "\x01\x08\0\x02\0\0\0\x03\0\0\0"s +
                                 Text("you") + "\x0b\x03\0\0\0"s + Text("Bob"));
  EXPECT_EQ(machine.Count("13 server"), 1u);
  // The master leaves: it hears the old one, those who stay the new one. A second time nothing happens.
  second.Received();
  peer.Send("\x05\x02\0\0\0\x05\x02\0\0\0"sv);
  machine.Poll(3);
  EXPECT_EQ(peer.Received(), "\x05\x01\0\0\0\x02\0\0\0\x01\0\0\0"s);
  EXPECT_EQ(second.Received(), "\x05\x01\0\0\0\x02\0\0\0\x03\0\0\0"s);
}

TEST(NetWire, HostilePeersAreLetGo) {
  const struct {
    const char* name;
    std::string bytes;
    bool ends;
  } cases[] = {
      {"no type", "\x63", true},
      {"huge text", "\x04\xff\xff\xff\xff"s, true},
      {"just too large", "\x04\x01\0\x10\0"s, true},
      {"no length, which never is complete", "\x04\0\0\0\0\x0b\x01\0\0\0x"s, false},
      {"unknown session", "\x01\0\0\x63\0\0\0"s + Text("x") + "\x05\x63\0\0\0"s, false},
      {"a name without end", "\x04" + Text(std::string(limits::kMaxNetNameBytes + 1, 'n')), false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    MemoryNetwork network;
    NetMachine machine(network, kServer);
    VexServer* server = machine.api.MakeNode()->HostServer(5000);
    RawPeer peer(network, kOther, "10.0.0.1", 5000);
    machine.Poll(2);
    peer.Received();
    peer.Send(c.bytes);
    machine.Poll(10);
    EXPECT_EQ(peer.IsEnded(), c.ends);
    EXPECT_EQ(server->connections.Count(), c.ends ? 0u : 1u);
    EXPECT_EQ(server->sessions.Count(), 0u);
  }
}

TEST(NetLayer, AThousandConnectsInARowLeaveTheServerServing) {
  MemoryNetwork network;
  NetMachine machine(network, kServer);
  VexServer* server = machine.api.MakeNode()->HostServer(5000);
  for (int i = 0; i < 1000; ++i) {
    RawPeer peer(network, kOther, "10.0.0.1", 5000);
    if (i % 3 == 0) peer.Send("\x0c\x03"sv);
    machine.Poll();
  }
  RawPeer last(network, kOther, "10.0.0.1", 5000);
  last.Send("\x0c\x03\0"s + Text("Last"));
  machine.Poll(4);
  EXPECT_EQ(server->connections.Count(), 1u);
  EXPECT_EQ(machine.Count("9 "), 1u);
}

TEST(NetLayer, APeerThatReadsNothingIsLetGoAndNothingGrows) {
  MemoryNetwork network;
  NetMachine machine(network, kServer);
  VexServer* server = machine.api.MakeNode()->HostServer(5000);
  RawPeer peer(network, kOther, "10.0.0.1", 5000);
  machine.Poll(2);
  const std::string text(100000, 'x');
  for (int i = 0; i < 200; ++i) server->SendText(text, 0);
  EXPECT_LE(machine.api.queuedBytes, limits::kMaxNetQueueBytes);
  machine.Poll(2);
  EXPECT_EQ(server->connections.Count(), 0u);
  EXPECT_EQ(machine.api.queuedBytes, 0u);

  // One that is within its share has a minute.
  RawPeer slow(network, kOther, "10.0.0.1", 5000);
  machine.Poll(2);
  for (int i = 0; i < 10; ++i) server->SendText(text, 0);
  machine.Poll(3);
  machine.clock.Advance(limits::kNetPatienceMs - 10);
  machine.Poll();
  EXPECT_EQ(server->connections.Count(), 1u);
  machine.clock.Advance(20);
  machine.Poll();
  EXPECT_EQ(server->connections.Count(), 0u);
}

struct Pair {
  explicit Pair(size_t slice = 0) : server(network, kServer), client(network, kOther) {
    network.sliceBytes = slice;
    host = server.api.MakeNode()->HostServer(5000);
    player = client.api.MakeNode()->Connect("10.0.0.1", 5000, "Ann");
    Poll(200);
  }
  void Poll(int times) {
    for (int i = 0; i < times; ++i) {
      server.Poll();
      client.Poll();
    }
  }
  MemoryNetwork network;
  NetMachine server, client;
  VexServer* host;
  VexPlayer* player;
};

TEST(NetLayer, NothingIsLostOnTcpWhateverThePieces) {
  Pair pair(7);
  for (int i = 0; i < 300; ++i) pair.player->SendText(std::string(static_cast<size_t>(i % 40) + 1, 'a'), 0);
  // The player ends with all of it on its way.
  pair.Poll(2000);
  pair.player->Delete();
  pair.Poll(2000);
  size_t bytes = 0;
  size_t texts = 0;
  for (const std::string& event : pair.server.events) {
    if (event.rfind("13 ", 0) != 0) continue;
    ++texts;
    bytes += event.size() - 3;
  }
  EXPECT_EQ(texts, 300u);
  EXPECT_EQ(bytes, 300u / 40 * 820 + 20 * 21 / 2);
  EXPECT_EQ(pair.server.Count("10 "), 1u);
}

TEST(NetLayer, QueuedMessagesLeaveInOneSendAndCountAsMessages) {
  Pair pair;
  const uint32_t before = pair.player->stats.outPackets;
  for (int i = 0; i < 5; ++i) pair.player->SendText("12345", 0);
  pair.client.Poll();
  EXPECT_EQ(pair.player->stats.outPackets, before + 5);
  EXPECT_EQ(pair.player->stats.biggestOut, 12);
  const uint32_t received = pair.host->stats.inPackets;
  pair.Poll(10);
  EXPECT_EQ(pair.host->stats.inPackets, received + 1);
  EXPECT_EQ(pair.server.Count("13 12345"), 5u);
}

TEST(NetLayer, WhatAHandlerSendsToThoseWhoseTurnIsOverAsksForAnotherPoll) {
  MemoryNetwork network;
  NetMachine machine(network, kServer);
  VexServer* server = machine.api.MakeNode()->HostServer(5000);
  RawPeer first(network, kOther, "10.0.0.1", 5000);
  RawPeer second(network, 0x0A000003, "10.0.0.1", 5000);
  machine.Poll(3);
  first.Received();
  EXPECT_FALSE(machine.api.hasWork);
  EXPECT_EQ(machine.api.unsent, 0u);
  machine.onEvent = [&](const VexEvent& event) {
    if (event.number == kVexClientMessage) server->SendText("all", 0);
  };
  second.Send("\x02\0\0"s + Text("x"));
  machine.Poll();
  EXPECT_EQ(first.Received(), "");
  EXPECT_TRUE(machine.api.hasWork);
  machine.Poll();
  EXPECT_EQ(first.Received(), "\x01\0\0\0\0\0\0\0\0\0\0"s + Text("all"));
  EXPECT_FALSE(machine.api.hasWork);
  EXPECT_EQ(machine.api.unsent, 0u);
}

TEST(NetLayer, BlastsAreLostAndOvertakenAsTheyCome) {
  Pair pair;
  // The second is lost, the third overtaken by two.
  pair.network.delay = [](uint64_t number) { return number == 1 ? -1 : number == 2 ? 2 : 0; };
  for (const char* text : {"a", "b", "c", "d", "e", "f"}) pair.player->BlastText(text, 0);
  pair.server.events.clear();
  pair.Poll(2);
  EXPECT_EQ(pair.server.events, (std::vector<std::string>{"13 a", "13 d", "13 e", "13 c", "13 f"}));
}

TEST(NetLayer, DatagramsOfOtherKindsAndPiecesAreDropped) {
  Pair pair;
  RawPeer stranger(pair.network, 0x0A000009, "10.0.0.1", 1);
  const SocketId udp = stranger.sockets.openUdp(1234);
  const std::string bytes = "\x02\0\0\x01\0\0\0ok"s;
  for (const std::string& datagram :
       {""s, "\x02"s, "\x01\0\0"s, "\x07\x07"s, bytes.substr(0, 6), std::string(4097, '\x02'), bytes}) {
    stranger.sockets.sendTo(udp, kServer, 5001, {reinterpret_cast<const uint8_t*>(datagram.data()), datagram.size()});
  }
  pair.server.events.clear();
  pair.Poll(2);
  EXPECT_EQ(pair.server.events, (std::vector<std::string>{"13 ok"}));
}

TEST(NetLayer, AHandlerMayDeleteAnything) {
  // For each event number that comes, each object that can be deleted from its handler.
  for (uint32_t number = 1; number <= kVexSessionDestroyed; ++number) {
    for (int what = 0; what < 4; ++what) {
      SCOPED_TRACE(number * 10 + static_cast<uint32_t>(what));
      // The end of the machine makes events too.
      VexNode* node = nullptr;
      std::shared_ptr<VexObject> keepNode;
      MemoryNetwork network;
      NetMachine machine(network, kServer);
      node = machine.api.MakeNode();
      keepNode = node->weak_from_this().lock();
      machine.onEvent = [&, left = 1](const VexEvent& event) mutable {
        if (event.number != number || left-- <= 0) return;
        if (what == 0 && event.first) event.first->Delete();
        if (what == 1 && event.second) event.second->Delete();
        if (what == 2 && !node->IsDeleted()) node->Delete();
        if (what == 3 && node->servers.At(0)) node->servers.At(0)->Delete();
      };
      node->HostServer(5000);
      VexPlayer* a = node->Connect("127.0.0.1", 5000, "A");
      VexPlayer* b = node->Connect("127.0.0.1", 5000, "B");
      const auto keepA = a->weak_from_this().lock();
      const auto keepB = b->weak_from_this().lock();
      machine.Poll(10);
      for (VexPlayer* player : {a, b}) {
        if (player->IsDeleted()) continue;
        player->SignOn("room")->BlastText("x", 0);
        machine.Poll(10);
      }
      if (!node->IsDeleted() && node->servers.At(0)) node->servers.At(0)->SendText("y", 0);
      for (VexPlayer* player : {a, b}) {
        if (player->IsDeleted()) continue;
        if (VexChannel* channel = player->channels.At(0)) channel->SendText("z", 0);
        if (!player->IsDeleted()) player->BlastText("w", 0);
      }
      machine.Poll(10);
      if (!b->IsDeleted()) b->Delete();
      machine.Poll(10);
      EXPECT_LE(machine.api.nodes.Count(), 1u);
    }
  }
}

}  // namespace
}  // namespace vl

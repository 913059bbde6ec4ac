#include "platform/headless/memory_network.h"
#include "platform/net_policy.h"

namespace vl {
namespace {

TEST(NetPolicy, RulesSayWhichHosts) {
  NetPolicy policy;
  for (const char* bad : {"", "host", ":80", "host:", "host:0", "host:65536", "host:8x", "ALL"}) {
    EXPECT_FALSE(policy.Allow(bad)) << bad;
  }
  EXPECT_TRUE(policy.Allow("Games.example.org:5000"));
  EXPECT_TRUE(policy.Allow("10.0.0.2:*"));
  EXPECT_TRUE(policy.Allow("10.0.0.3:7000"));
  policy.SetOrigin("home.example.org");
  const struct {
    const char* host;
    uint16_t port;
    bool may;
  } cases[] = {
      {"127.0.0.1", 1, true},
      {"127.9.9.9", 1, true},
      {"localhost", 1, true},
      {"games.EXAMPLE.org", 5000, true},
      {"games.example.org", 5001, false},
      {"example.org", 5000, false},
      {"10.0.0.2", 9, true},
      {"10.0.0.3", 7000, true},
      {"10.0.0.3", 7001, false},
      {"10.0.0.4", 7000, false},
      {"home.example.org", 1234, true},
      {"0.0.0.0", 80, false},
  };
  for (const auto& c : cases) EXPECT_EQ(policy.MayConnect(c.host, c.port), c.may) << c.host << ":" << c.port;
  EXPECT_TRUE(policy.MaySend(0x0A000003, 7000));
  EXPECT_FALSE(policy.MaySend(0x0A000003, 7001));
  EXPECT_TRUE(policy.MayReceive(0x0A000003));
  EXPECT_FALSE(policy.MayReceive(0x0A000004));
  policy.Allow("all");
  EXPECT_TRUE(policy.MaySend(0x0A000004, 1));
}

TEST(NetPolicy, ARefusedHostSeemsNotToAnswer) {
  MemoryNetwork network;
  network.SetName("other", 0x0A000002);
  MemorySockets other(network, 0x0A000002);
  MemorySockets machine(network, 0x0A000001);
  NetPolicy policy;
  PolicedSockets policed(machine, policy);
  other.listenTcp(5000);
  const SocketId there = other.openUdp(5001);
  const SocketId refused = policed.connectTcp("10.0.0.2", 5000);
  EXPECT_TRUE(policed.hasFailed(refused));
  EXPECT_FALSE(policed.hasConnected(refused));
  const SocketId udp = policed.openUdp(6001);
  const uint8_t byte[1] = {7};
  EXPECT_EQ(policed.sendTo(udp, 0x0A000002, 5001, byte), 1);
  EXPECT_FALSE(other.hasNews(there));
  // Nor does it get in.
  const SocketId listener = policed.listenTcp(6000);
  other.connectTcp("10.0.0.1", 6000);
  EXPECT_EQ(policed.acceptTcp(listener), 0u);
  other.sendTo(there, 0x0A000001, 6001, byte);
  NetAddress from = 0;
  uint8_t buffer[4];
  EXPECT_LT(policed.receiveFrom(udp, buffer, from), 0);
  // What is allowed by name is allowed for datagrams once it was reached.
  policy.Allow("other:5000");
  EXPECT_TRUE(policed.hasConnected(policed.connectTcp("other", 5000)));
  policed.sendTo(udp, 0x0A000002, 5001, byte);
  EXPECT_TRUE(other.hasNews(there));
}

TEST(NetAddress, TextsThatAreAddresses) {
  EXPECT_EQ(ParseNetAddress("1.2.3.4"), 0x01020304u);
  EXPECT_EQ(ParseNetAddress("255.255.255.255"), 0xFFFFFFFFu);
  for (const char* bad : {"", "1.2.3", "1.2.3.4.5", "1.2.3.256", "1..2.3", "a.b.c.d", "1.2.3.4 ", "1.2.3.0004"}) {
    EXPECT_EQ(ParseNetAddress(bad), 0u) << bad;
  }
  EXPECT_EQ(NetAddressText(0x0A000001), "10.0.0.1");
  EXPECT_EQ(NetAddressText(0), "");
}

}  // namespace
}  // namespace vl

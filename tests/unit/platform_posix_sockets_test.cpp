// The machine's sockets over loopback: news that end a wait, once each, and stay until they are taken.
#include <gtest/gtest.h>

#include <chrono>
#include <set>
#include <thread>
#include <vector>

#include "platform/posix/posix_sockets.h"

namespace vl {
namespace {

constexpr int kLongMs = 20000;  // a wait that would be noticed

std::span<const uint8_t> Bytes(std::string_view text) {
  return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

struct Loopback : ::testing::Test {
  Loopback() : listener(sockets.listenTcp(0)), client(sockets.connectTcp("127.0.0.1", sockets.LocalPort(listener))) {
    SleepUntil([this] { return sockets.hasNews(listener) && sockets.hasConnected(client); });
    server = sockets.acceptTcp(listener);
    EXPECT_EQ(sockets.acceptTcp(listener), 0u);
    Drain();
  }
  // What isn't there yet ends the next sleep.
  template <typename F>
  void SleepUntil(F&& isTrue) {
    for (int i = 0; i < 100 && !isTrue(); ++i) {
      sockets.sleep(kLongMs);
      sockets.update();
    }
    ASSERT_TRUE(isTrue());
  }
  // Edges of the beginning: room to send at each new socket.
  void Drain() { sockets.update(), sockets.update(); }
  // True when the whole time passed.
  bool SleepsThrough(int ms) {
    const auto start = std::chrono::steady_clock::now();
    sockets.sleep(ms);
    sockets.update();
    return std::chrono::steady_clock::now() - start >= std::chrono::milliseconds(ms);
  }
  std::string Receive(SocketId socket, size_t most = 100) {
    std::vector<uint8_t> bytes(most);
    const int64_t count = sockets.receive(socket, bytes, false);
    return count > 0 ? std::string(bytes.begin(), bytes.begin() + count) : std::string();
  }
  PosixSockets sockets;
  SocketId listener, client, server = 0;
};

TEST_F(Loopback, NewsEndOneWaitAndStayUntilTheyAreTaken) {
  EXPECT_TRUE(sockets.wakesWaits());
  sockets.send(client, Bytes("hello"));
  SleepUntil([this] { return sockets.hasNews(server); });
  EXPECT_FALSE(sockets.wakesWaits()) << "somebody must look while news are left";
  EXPECT_TRUE(SleepsThrough(5)) << "told of once";
  EXPECT_TRUE(sockets.hasNews(server));
  uint8_t bytes[5];
  EXPECT_EQ(sockets.receive(server, bytes, true), 5);
  EXPECT_EQ(Receive(server, 5), "hello");
  EXPECT_TRUE(sockets.hasNews(server)) << "a full read tells nothing";
  EXPECT_EQ(Receive(server), "");
  EXPECT_FALSE(sockets.hasNews(server));
  EXPECT_TRUE(sockets.wakesWaits());
  sockets.send(client, Bytes("more"));
  SleepUntil([this] { return sockets.hasNews(server); });
  EXPECT_EQ(Receive(server), "more");
  EXPECT_FALSE(sockets.hasNews(server)) << "less than there was room for is all";
}

TEST_F(Loopback, AnEndBehindBytesIsNotLost) {
  sockets.send(client, Bytes("last"));
  sockets.close(client);
  SleepUntil([this] { return sockets.hasNews(server); });
  // Both have come by now, or the end comes as news of its own.
  EXPECT_EQ(Receive(server), "last");
  SleepUntil([this] { return sockets.hasNews(server); });
  uint8_t byte = 0;
  EXPECT_EQ(sockets.receive(server, {&byte, 1}, false), kSocketEnd);
  EXPECT_FALSE(sockets.hasNews(server));
  EXPECT_TRUE(SleepsThrough(5)) << "an end that nobody closes keeps no one awake";
}

TEST_F(Loopback, RoomToSendIsNews) {
  const std::vector<uint8_t> block(1 << 16);
  while (sockets.send(client, block) > 0) {
  }
  EXPECT_EQ(sockets.send(client, block), kSocketNothing);
  Drain();
  // Each wait ends with bytes at the one end or room at the other.
  size_t taken = 0;
  for (int round = 0; round < 1000 && sockets.send(client, block) == kSocketNothing; ++round) {
    for (size_t count = 1; count > 0; taken += count) count = Receive(server, 1 << 16).size();
    sockets.sleep(kLongMs / 1000);
    sockets.update();
  }
  EXPECT_GT(taken, 0u);
  EXPECT_GT(sockets.send(client, block), 0);
}

TEST_F(Loopback, AWaitEndsByAnotherThreadAndByWhatIsToBeSent) {
  std::thread other([this] { sockets.wake(); });
  sockets.sleep(kLongMs);
  other.join();
  sockets.update();
  sockets.endNextWait();
  sockets.sleep(kLongMs);
  EXPECT_TRUE(SleepsThrough(5)) << "only the next one";
}

TEST_F(Loopback, AQueueSleepsOnIt) {
  ThreadedQueue queue;
  queue.SetSleeper(sockets);
  Event event;
  EXPECT_FALSE(queue.waitEvent(event, 0));
  std::thread host([&] { queue.Push({EventType::Close, 7}); });
  while (!queue.waitEvent(event, kLongMs)) {
  }
  host.join();
  EXPECT_EQ(event.window, 7u);
  sockets.send(client, Bytes("x"));
  EXPECT_FALSE(queue.waitEvent(event, kLongMs)) << "without an event";
}

TEST_F(Loopback, IdsOfClosedSocketsAreNotUsedAgain) {
  std::set<SocketId> seen{listener, client, server};
  const size_t held = seen.size();
  for (int i = 0; i < 10000; ++i) {
    const SocketId socket = sockets.openUdp(0);
    ASSERT_NE(socket, 0u);
    seen.insert(socket);
    sockets.close(socket);
    ASSERT_EQ(sockets.sendTo(socket, kLoopbackAddress, 9, Bytes("x")), kSocketError);
  }
  EXPECT_EQ(seen.size(), held + 10000);
  sockets.send(client, Bytes("still"));
  SleepUntil([this] { return sockets.hasNews(server); });
}

TEST(PosixSocketsNames, AreLookedUpBehindTheConnect) {
  PosixSockets sockets;
  const SocketId listener = sockets.listenTcp(0);
  const SocketId named = sockets.connectTcp("localhost", sockets.LocalPort(listener));
  const SocketId unknown = sockets.connectTcp("no-such-host.invalid", 80);
  for (int i = 0; i < 1000 && !(sockets.hasConnected(named) && sockets.hasFailed(unknown)); ++i) {
    sockets.sleep(kLongMs / 100);
    sockets.update();
  }
  EXPECT_TRUE(sockets.hasConnected(named));
  EXPECT_TRUE(sockets.hasFailed(unknown));
}

TEST(PosixSocketsAddress, SocketsOfTwoAddressesShareAPort) {
  PosixSockets one(kLoopbackAddress);
  PosixSockets two(kLoopbackAddress + 1);
  const SocketId listener = one.listenTcp(0);
  const uint16_t port = one.LocalPort(listener);
  ASSERT_NE(two.listenTcp(port), 0u);
  const SocketId client = two.connectTcp("127.0.0.1", port);
  for (int i = 0; i < 100 && !one.hasNews(listener); ++i) {
    one.sleep(kLongMs / 100);
    one.update();
  }
  EXPECT_EQ(NetAddressText(one.remoteAddress(one.acceptTcp(listener))), "127.0.0.2");
  two.close(client);
}

}  // namespace
}  // namespace vl

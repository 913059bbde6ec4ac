// VexApi: the network layer of one interpreter: its nodes and plain sockets. It does nothing by itself: Poll is called
// from the tick of the run loop.
//
// A node holds servers and players. What goes between a player and a server of the same node as a datagram is handed
// over in memory.
#pragma once

#include <array>
#include <functional>
#include <string>
#include <string_view>

#include "net/vex_object.h"
#include "net/vex_stats.h"
#include "platform/clock.h"
#include "platform/sockets.h"

namespace vl {

class VexApi;
class VexNode;
class VexPlayer;
class VexChannel;
class VexUser;
class VexServer;
class VexConnection;
class VexSession;
class VexSocket;

inline constexpr std::string_view kVexBanner = "VexAPI Version 1.22";

enum VexEventNumber : uint32_t {
  kVexUserMessage = 1,
  kVexUserIsOn = 2,
  kVexUserJoined = 3,
  kVexUserLeft = 4,
  kVexPlayerConnected = 5,
  kVexPlayerDisconnected = 6,
  kVexChannelJoined = 7,
  kVexChannelLeft = 8,
  kVexNewConnection = 9,
  kVexDeadConnection = 10,
  kVexSessionJoined = 11,
  kVexSessionLeft = 12,
  kVexClientMessage = 13,
  kVexUserNameChanged = 14,
  kVexServerMessage = 15,
  kVexSessionCreated = 16,
  kVexSessionDestroyed = 17,
  kVexSocketConnected = 18,
  kVexSocketDisconnected = 19,
  kVexSocketReceived = 20,
  kVexSocketAccepted = 21,
};
inline constexpr size_t kVexEvents = 22;

// What happened; the objects that the event names, in its order, others are null.
struct VexEvent {
  uint32_t number = 0;
  VexObject* first = nullptr;   // player, channel, server, connection or socket
  VexObject* second = nullptr;  // user, channel, connection or session
  std::string_view text;        // valid during the call
  uint16_t type = 0;            // of a text
};

using VexEventFunction = void (*)(VexApi& api, const VexEvent& event);

class VexApi {
 public:
  // Both outlive it.
  VexApi(Sockets& sockets, Clock& clock) : sockets(sockets), stats(clock.nowMs()), clock_(clock) {}
  ~VexApi();
  VexApi(const VexApi&) = delete;
  VexApi& operator=(const VexApi&) = delete;

  void Poll();
  VexNode* MakeNode();
  VexSocket* MakeSocket();
  void Fire(const VexEvent& event) {
    if (const VexEventFunction function = events[event.number]) function(*this, event);
  }
  uint32_t NowMs() const { return clock_.nowMs(); }
  // False when what arrives must wait, since the owner can't take more events now.
  bool HasRoom() const { return !hasRoom || hasRoom(); }

  Sockets& sockets;
  std::array<VexEventFunction, kVexEvents> events{};  // by number; null: no call
  void* owner = nullptr;                              // for the event functions
  std::function<bool()> hasRoom;
  // Sleeps for about a millisecond in an operation that waits; false when it must end. Without one nothing waits.
  std::function<bool()> idle;
  VexList<VexNode> nodes;
  VexList<VexSocket> plainSockets;
  VexStats stats;
  size_t queuedBytes = 0;  // that wait in all streams
  size_t unsent = 0;       // streams with something that they haven't tried to send
  bool hasWork = false;    // after a Poll: another one has something to do without new news
  bool isPolling = false;

 private:
  static constexpr int kPollsAnUpdate = 16;
  Clock& clock_;
  int pollsSinceUpdate_ = 0;
};

class VexNode final : public VexObject {
 public:
  explicit VexNode(VexApi& api) : api(api), stats(api.NowMs()) {}

  // `host` is a name or an address.
  VexPlayer* Connect(std::string_view host, uint16_t port, std::string_view name);
  VexServer* HostServer(uint16_t port);
  // First 1.
  uint32_t NextId() { return ++nextId; }
  // Null when this node has none.
  VexPlayer* PlayerWithId(uint32_t id) const;
  VexServer* ServerWithConnection(uint32_t id) const;

  VexApi& api;
  uint32_t nextId = 0;
  VexList<VexServer> servers;
  VexList<VexPlayer> players;
  VexStats stats;

 protected:
  void OnDelete() override;
};

}  // namespace vl

// Our network layer, as the run loop drives it: asleep until there is news, then polled until nothing is at hand.
#include <vector>

#include "bench/net/ends.h"
#include "net/vex_api.h"
#include "net/vex_player.h"
#include "net/vex_server.h"
#include "platform/posix/posix_clock.h"
#include "platform/posix/posix_sockets.h"

using namespace vl;

namespace {

struct End {
  explicit End(const char* address) : sockets(ParseNetAddress(address)), api(sockets, clock) {
    api.owner = this;
    node = api.MakeNode();
  }
  void Step() {
    if (!api.hasWork) sockets.sleep(100);
    api.Poll();
  }
  PosixClock clock;
  PosixSockets sockets;
  VexApi api;
  VexNode* node;
  uint64_t count = 0;
  bool isTold = false;
};

void OnClientMessage(VexApi& api, const VexEvent& event) {
  auto& self = *static_cast<End*>(api.owner);
  auto& connection = *static_cast<VexConnection*>(event.first);
  // 1: echo; 2: count and answer each so many; 3: a blast, whose last of a burst is answered.
  if (event.type == 1) connection.SendText(event.text, 1);
  if (event.type == 2 && ++self.count % kStreamPart == 0) connection.SendText("got", 2);
  if (event.type == 4) connection.BlastText("got", 4);
}

void Serve(Case, uint16_t port) {
  End end(kServerAddress);
  end.api.events[kVexClientMessage] = &OnClientMessage;
  end.node->HostServer(port);
  for (;;) end.Step();
}

double Measure(Case what, uint16_t port, double seconds) {
  End end(kClientAddress);
  std::vector<VexPlayer*> players;
  for (int i = 0; i < ClientsOf(what); ++i) players.push_back(end.node->Connect(kServerAddress, port, "bench"));
  const auto isReady = [&] {
    for (const VexPlayer* player : players) {
      if (player->id == 0) return false;
    }
    return true;
  };
  while (!isReady()) end.Step();
  const std::string text = SomeText();
  Rate rate(seconds);
  if (what == Case::RoundTrip || what == Case::Crowd) {
    end.api.events[kVexServerMessage] = [](VexApi& api, const VexEvent& event) {
      ++static_cast<End*>(api.owner)->count;
      static_cast<VexPlayer*>(event.first)->SendText(event.text, 1);
    };
    for (VexPlayer* player : players) player->SendText(text, 1);
    do {
      end.count = 0;
      for (int i = 0; i < 64; ++i) end.Step();
    } while (rate.Add(end.count));
    return rate.ASecond();
  }
  end.api.events[kVexServerMessage] = [](VexApi& api, const VexEvent&) { ++static_cast<End*>(api.owner)->count; };
  uint64_t parts = 0;
  do {
    if (what == Case::Stream) {
      // At most two parts are on their way.
      for (int i = 0; i < kStreamPart; ++i) {
        players[0]->SendText(text, 2);
        if (i % 100 == 99) end.api.Poll();
      }
      ++parts;
      while (end.count + 2 <= parts) end.Step();
    } else {
      const uint64_t before = end.count;
      for (int i = 1; i <= kBurst; ++i) players[0]->BlastText(text, i == kBurst ? 4 : 3);
      // A lost answer isn't waited for.
      for (int i = 0; i < 4 && end.count == before; ++i) end.Step();
    }
  } while (rate.Add(what == Case::Stream ? kStreamPart : kBurst));
  return rate.ASecond();
}

}  // namespace

const Ends kVorlaneEnds = {"vorlane", &Serve, &Measure};

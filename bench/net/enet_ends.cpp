// ENet: reliable packets for texts, unsequenced ones for blasts.
#include <enet/enet.h>

#include <cstdlib>

#include "bench/net/ends.h"

namespace {

void Send(ENetPeer* peer, const void* bytes, size_t size, bool isReliable = true) {
  enet_peer_send(
      peer, 0, enet_packet_create(bytes, size, isReliable ? ENET_PACKET_FLAG_RELIABLE : ENET_PACKET_FLAG_UNSEQUENCED));
}

void Serve(Case what, uint16_t port) {
  enet_initialize();
  ENetAddress address{};
  enet_address_set_host(&address, kServerAddress);
  address.port = port;
  ENetHost* host = enet_host_create(&address, kCrowd + 8, 1, 0, 0);
  if (!host) std::abort();
  uint64_t received = 0;
  ENetEvent event;
  for (;;) {
    // One call waits, the others take what it brought; what was sent leaves together.
    int has = enet_host_service(host, &event, 100);
    while (has > 0) {
      if (event.type == ENET_EVENT_TYPE_RECEIVE) {
        const bool isLast = event.packet->data[0] == 4;
        if (what == Case::Stream) {
          if (++received % kStreamPart == 0) Send(event.peer, "got", 3);
        } else if (what == Case::Blast) {
          if (isLast) Send(event.peer, "got", 3, false);
        } else {
          Send(event.peer, event.packet->data, event.packet->dataLength);
        }
        enet_packet_destroy(event.packet);
      }
      has = enet_host_check_events(host, &event);
    }
    enet_host_flush(host);
  }
}

double Measure(Case what, uint16_t port, double seconds) {
  enet_initialize();
  ENetHost* host = enet_host_create(nullptr, kCrowd + 8, 1, 0, 0);
  ENetAddress address{};
  enet_address_set_host(&address, kServerAddress);
  address.port = port;
  const int clients = ClientsOf(what);
  ENetPeer* first = nullptr;
  for (int i = 0; i < clients; ++i) {
    ENetPeer* peer = enet_host_connect(host, &address, 1, 0);
    if (!peer) std::abort();
    if (!first) first = peer;
  }
  std::string text = SomeText();
  int connected = 0;
  ENetEvent event;
  while (connected < clients) {
    if (enet_host_service(host, &event, 100) > 0 && event.type == ENET_EVENT_TYPE_CONNECT) ++connected;
  }
  const bool isTrips = what == Case::RoundTrip || what == Case::Crowd;
  if (isTrips) {
    for (size_t i = 0; i < host->peerCount; ++i) {
      if (host->peers[i].state == ENET_PEER_STATE_CONNECTED) Send(&host->peers[i], text.data(), text.size());
    }
  }
  Rate rate(seconds);
  uint64_t parts = 0;
  uint64_t answers = 0;
  // Takes what has come; the answers among it.
  const auto serve = [&](uint32_t timeoutMs) {
    uint64_t got = 0;
    int has = enet_host_service(host, &event, timeoutMs);
    while (has > 0) {
      if (event.type == ENET_EVENT_TYPE_RECEIVE) {
        ++got;
        if (isTrips) Send(event.peer, event.packet->data, event.packet->dataLength);
        enet_packet_destroy(event.packet);
      }
      has = enet_host_check_events(host, &event);
    }
    enet_host_flush(host);
    return got;
  };
  uint64_t done = 0;
  do {
    done = 0;
    if (isTrips) {
      for (int i = 0; i < 64; ++i) done += serve(100);
    } else if (what == Case::Stream) {
      for (int i = 0; i < kStreamPart; ++i) {
        Send(first, text.data(), text.size());
        if (i % 100 == 99) answers += serve(0);
      }
      ++parts;
      while (answers + 2 <= parts) answers += serve(100);
      done = kStreamPart;
    } else {
      for (int i = 1; i <= kBurst; ++i) {
        text[0] = i == kBurst ? 4 : 3;
        Send(first, text.data(), text.size(), false);
      }
      serve(0);
      serve(100);
      done = kBurst;
    }
  } while (rate.Add(done));
  return rate.ASecond();
}

}  // namespace

const Ends kEnetEnds = {"enet", &Serve, &Measure};

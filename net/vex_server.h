// VexServer, a listening TCP port and the UDP port above it; VexConnection, its view of one player; VexSession, a named
// group of connections, which lives from the first join of its name until the last member has left.
#pragma once

#include <string>

#include "net/vex_api.h"
#include "net/vex_stream.h"

namespace vl {

class VexServer final : public VexObject {
 public:
  VexServer(VexNode& node, uint16_t port);

  // Accepts and takes datagrams; the connections have a Process of their own.
  void Process();
  void SendText(std::string_view text, uint16_t type);
  void BlastText(std::string_view text, uint16_t type);
  // Sends, or hands over within the node.
  void SendBlast(const VexBlast& blast, const VexConnection& target);
  void HandleBlast(std::span<const uint8_t> datagram);
  void HandleServerBlast(std::span<const uint8_t> datagram);

  VexConnection* ConnectionWithId(uint32_t id) const;
  VexSession* SessionWithId(uint32_t id) const;

  VexApi& api;
  VexNode& node;
  uint16_t port;
  std::string motd{kVexBanner};
  std::string localIp;
  VexList<VexConnection> connections;
  VexList<VexSession> sessions;
  VexStats stats;

 protected:
  void OnDelete() override;
  const VexObject* Owner() const override { return &node; }

 private:
  void ReceiveDatagrams();

  SocketId tcp_;
  SocketId udp_;
};

class VexConnection final : public VexObject {
 public:
  VexConnection(VexServer& server, SocketId socket);

  // False when the connection is over.
  bool Process();
  void SendText(std::string_view text, uint16_t type);
  void BlastText(std::string_view text, uint16_t type);
  // Takes it off a session by its place in `sessions`.
  void SignOff(int64_t index);
  void Leave(VexSession& session);

  VexApi& api;
  VexServer& server;
  uint32_t id;
  std::string clientIp;
  uint16_t clientVersion = 0;
  std::string name;
  bool connected = false;
  uint32_t createdMs;
  VexIdList<VexSession> sessions;
  VexStats stats;
  VexStream stream;

 protected:
  void OnDelete() override;
  const VexObject* Owner() const override { return &server; }

 private:
  void Handle(const VexMessage& message);
  void OnSessionText(const VexMessage& message);
  void OnUserText(const VexMessage& message);
  void OnJoin(std::string_view sessionName);
  void OnNameChange(std::string_view newName);
};

class VexSession final : public VexObject {
 public:
  VexSession(VexServer& server, std::string_view name) : server(server), id(server.node.NextId()), name(name) {}

  void SendText(std::string_view text, uint16_t type);
  void BlastText(std::string_view text, uint16_t type);
  // Takes the connection at that place off.
  void SignOff(int64_t index);
  void Join(VexConnection& connection);
  // The session stays, empty or not.
  void Leave(VexConnection& connection);
  void DeleteIfEmpty() {
    if (connections.Count() == 0) Delete();
  }
  void QueueToAll(const WireWriter& message, const VexConnection* but);

  VexServer& server;
  uint32_t id;
  std::string name;
  VexConnection* master = nullptr;
  VexIdList<VexConnection> connections;

 protected:
  void OnDelete() override;
  const VexObject* Owner() const override { return &server; }

 private:
  uint32_t MasterId() const { return master ? master->id : 0; }
  WireWriter UserMessage(uint8_t type, const VexConnection& user) const;
};

}  // namespace vl

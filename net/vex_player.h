// VexPlayer, the client; VexChannel, its view of a session; VexUser, a member of that session.
//
// A player is connected once its connection stands, and welcomed when the server has given it an id. It ends with its
// connection; it never connects again.
#pragma once

#include <string>

#include "net/vex_api.h"
#include "net/vex_stream.h"

namespace vl {

class VexPlayer final : public VexObject {
 public:
  VexPlayer(VexNode& node, std::string_view host, uint16_t port, std::string_view name);

  // False when the connection is over.
  bool Process();
  // Joins the session of that name.
  VexChannel* SignOn(std::string_view name);
  void SendText(std::string_view text, uint16_t type);
  void BlastText(std::string_view text, uint16_t type);
  // Sends, or hands over within the node. `ip` is used without such a way.
  void SendBlast(const VexBlast& blast, NetAddress ip);
  void HandleBlast(std::span<const uint8_t> datagram);

  VexChannel* ChannelWithId(uint32_t id) const;
  // "" until connected.
  const std::string& LocalIp();
  const std::string& ServerIp();

  VexApi& api;
  VexNode& node;
  uint16_t port;
  std::string name;
  bool connected = false;
  uint16_t serverVersion = 0;
  std::string motd;
  uint32_t id = 0;
  VexList<VexChannel> channels;
  VexStats stats;
  VexStream stream;

 protected:
  void OnDelete() override;
  const VexObject* Owner() const override { return &node; }

 private:
  // Messages of the server; what names an unknown channel or user is dropped.
  void Handle(const VexMessage& message);
  void OnText(const VexMessage& message);
  void OnUserLeft(const VexMessage& message);
  void OnUserCame(const VexMessage& message);
  void OnJoined(const VexMessage& message);
  void OnNameChanged(const VexMessage& message);
  void OnWelcome(const VexMessage& message);
  void ReceiveDatagrams();
  void SendDatagram(std::span<const uint8_t> datagram, NetAddress ip);

  SocketId udp_;
  std::string localIp_;
  std::string serverIp_;
};

class VexChannel final : public VexObject {
 public:
  VexChannel(VexPlayer& player, std::string_view name) : player(player), name(name) {}

  void SendText(std::string_view text, uint16_t type);
  void BlastText(std::string_view text, uint16_t type);
  VexUser* UserWithId(uint32_t userId) const;
  // Null when there are too many.
  VexUser* AddUser(uint32_t userId, std::string_view userName, std::string_view ip);

  VexPlayer& player;
  uint32_t id = 0;  // 0 until the server has answered
  std::string name;
  VexUser* master = nullptr;
  VexList<VexUser> users;

 protected:
  void OnDelete() override;
  const VexObject* Owner() const override { return &player; }
};

class VexUser final : public VexObject {
 public:
  VexUser(VexChannel& channel, uint32_t id, std::string_view name, std::string_view ip)
      : channel(channel), id(id), name(name), ip(ip) {}

  void SendText(std::string_view text, uint16_t type);
  void BlastText(std::string_view text, uint16_t type);

  VexChannel& channel;
  uint32_t id;
  std::string name;
  std::string ip;

 protected:
  void OnDelete() override;
  const VexObject* Owner() const override { return &channel; }
};

}  // namespace vl

#include "net/vex_api.h"

#include "net/vex_player.h"
#include "net/vex_server.h"
#include "net/vex_socket.h"

namespace vl {

VexApi::~VexApi() {
  nodes.DeleteAll();
  plainSockets.DeleteAll();
}

VexNode* VexApi::MakeNode() { return nodes.Add(std::make_shared<VexNode>(*this)); }

VexSocket* VexApi::MakeSocket() { return plainSockets.Add(std::make_shared<VexSocket>(*this)); }

void VexApi::Poll() {
  // While messages are at hand the machine needn't be asked each time.
  if (!hasWork || ++pollsSinceUpdate_ >= kPollsAnUpdate) {
    sockets.update();
    pollsSinceUpdate_ = 0;
  }
  hasWork = false;
  isPolling = true;
  const uint32_t now = NowMs();
  nodes.ForEach([&](VexNode& node) {
    node.players.ForEach([&](VexPlayer& player) {
      if (!player.Process()) {
        player.Delete();
      } else {
        player.stats.Read(now);
      }
    });
    node.servers.ForEach([&](VexServer& server) {
      server.Process();
      if (server.IsDeleted()) return;
      server.stats.Read(now);
      server.connections.ForEach([&](VexConnection& connection) {
        if (!connection.Process()) {
          connection.Delete();
        } else {
          connection.stats.Read(now);
        }
      });
    });
    node.stats.Read(now);
  });
  plainSockets.ForEach([&](VexSocket& socket) {
    socket.Process();
    socket.stats.Read(now);
  });
  stats.Read(now);
  isPolling = false;
  // Handlers wrote to streams whose turn was over.
  if (unsent > 0) hasWork = true;
}

VexPlayer* VexNode::Connect(std::string_view host, uint16_t port, std::string_view name) {
  return players.Add(std::make_shared<VexPlayer>(*this, host, port, name));
}

VexServer* VexNode::HostServer(uint16_t port) { return servers.Add(std::make_shared<VexServer>(*this, port)); }

VexPlayer* VexNode::PlayerWithId(uint32_t id) const {
  return players.Find([&](const VexPlayer& player) { return player.id == id; });
}

VexServer* VexNode::ServerWithConnection(uint32_t id) const {
  return servers.Find([&](const VexServer& server) { return server.ConnectionWithId(id) != nullptr; });
}

void VexNode::OnDelete() {
  api.nodes.Take(this);
  servers.DeleteAll();
  players.DeleteAll();
}

}  // namespace vl

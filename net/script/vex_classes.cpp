#include "net/script/vex_classes.h"

#include "net/script/downloads.h"
#include "net/script/vex_wrapper.h"
#include "net/vex_player.h"
#include "net/vex_server.h"

namespace vl {

namespace {

// Vex: a node of the network, which holds servers and players.
class CIVex : public CIVEXClassImpl {
 public:
  explicit CIVex(CInterpretor& interpreter) : CIVEXClassImpl(interpreter, CLASS_VEX) {}
  void Construct() override {
    Attach(*CVexNetwork::Of(interpreter).api.MakeNode(), false);
    Create();
  }

  void Connect();
  void HostServer();
  void GetPlayerCount() { Result().SetInt(node() ? static_cast<int32_t>(node()->players.Count()) : 0); }
  void GetServerCount() { Result().SetInt(node() ? static_cast<int32_t>(node()->servers.Count()) : 0); }
  void GetPlayer() { GiveWrapper(node() ? node()->players.At(Number(0)) : nullptr, CLASS_VEXPLAYER); }
  void GetServer() { GiveWrapper(node() ? node()->servers.At(Number(0)) : nullptr, CLASS_VEXSERVER); }
  void GetStats() { GiveStats(node() ? &node()->stats : nullptr); }

 private:
  VexNode* node() const { return static_cast<VexNode*>(Core()); }
};

void CIVex::Connect() {
  const std::string host = String(0);
  VexPlayer* player = nullptr;
  if (node() && !host.empty() && !IsMissing(1)) player = node()->Connect(host, Short(1), String(2));
  GiveWrapper(player, CLASS_VEXPLAYER);
}

void CIVex::HostServer() {
  GiveWrapper(node() && !IsMissing(0) ? node()->HostServer(Short(0)) : nullptr, CLASS_VEXSERVER);
}

// VexServer.
class CIVexServer : public CIVexOf<VexServer> {
 public:
  explicit CIVexServer(CInterpretor& interpreter) : CIVexOf(interpreter, CLASS_VEXSERVER) {}

  void GetConnectionCount() {
    GiveNumber([](VexServer& s) { return s.connections.Count(); });
  }
  void GetConnection() { GiveWrapper(core() ? core()->connections.At(Number(0)) : nullptr, CLASS_VEXCONNECTION); }
  void GetServerIP() { GiveText(core() ? core()->localIp : std::string_view()); }
  void GetPort() {
    GiveNumber([](VexServer& s) { return s.port; });
  }
  void SetMOTD() {
    const std::string text = String(0);
    if (core() && !text.empty()) core()->motd = text;
  }
  void GetSession() { GiveWrapper(core() ? core()->sessions.At(Number(0)) : nullptr, CLASS_VEXSESSION); }
  void GetSessionCount() {
    GiveNumber([](VexServer& s) { return s.sessions.Count(); });
  }
  void Disconnect() {
    if (core()) core()->Delete();
  }
  void GetStats() { GiveStats(core() ? &core()->stats : nullptr); }
};

// VexConnection.
class CIVexConnection : public CIVexOf<VexConnection> {
 public:
  explicit CIVexConnection(CInterpretor& interpreter) : CIVexOf(interpreter, CLASS_VEXCONNECTION) {}

  void GetSessionCount() {
    GiveNumber([](VexConnection& c) { return c.sessions.Count(); });
  }
  void GetSession() { GiveWrapper(core() ? core()->sessions.At(Number(0)) : nullptr, CLASS_VEXSESSION); }
  void GetName() { GiveName(); }
  void GetClientIP() { GiveText(core() ? core()->clientIp : std::string_view()); }
  void GetVersion() {
    GiveNumber([](VexConnection& c) { return c.clientVersion; });
  }
  void GetServer() { GiveWrapper(core() ? &core()->server : nullptr, CLASS_VEXSERVER); }
  void SignOff() {
    if (core()) core()->SignOff(Number(0));
  }
  void GetId() {
    GiveNumber([](VexConnection& c) { return c.id; });
  }
  void GetStats() { GiveStats(core() ? &core()->stats : nullptr); }
};

// VexSession.
class CIVexSession : public CIVexOf<VexSession> {
 public:
  explicit CIVexSession(CInterpretor& interpreter) : CIVexOf(interpreter, CLASS_VEXSESSION) {}

  void GetConnectionCount() {
    GiveNumber([](VexSession& s) { return s.connections.Count(); });
  }
  void GetConnection() { GiveWrapper(core() ? core()->connections.At(Number(0)) : nullptr, CLASS_VEXCONNECTION); }
  void SignOff() {
    if (core()) core()->SignOff(Number(0));
  }
  void GetName() { GiveName(); }
  void GetId() {
    GiveNumber([](VexSession& s) { return s.id; });
  }
};

constexpr MemberRow Member(uint16_t id, const char* name, MemberFunction function, const char* help) {
  return {id, name, MemberKind::Member, function, 0, 0, help};
}

constexpr MemberRow Event(uint16_t id, const char* name, MemberFunction function, const char* help) {
  return {id, name, MemberKind::Event, function, 0, 0, help};
}

constexpr MemberRow kVexRows[] = {
    Member(1, "Connect", kMember<&CIVex::Connect>,
           "Connect(host, port, name = \"\"): a new VexPlayer; 0 without a host or port"),
    Member(2, "HostServer", kMember<&CIVex::HostServer>,
           "HostServer(port): a new VexServer at the port and, for blasts, the port above it; 0 without a port"),
    Member(3, "GetPlayerCount", kMember<&CIVex::GetPlayerCount>, "the number of players"),
    Member(4, "GetServerCount", kMember<&CIVex::GetServerCount>, "the number of servers"),
    Member(5, "GetPlayer", kMember<&CIVex::GetPlayer>, "GetPlayer(index = 0): a player; 0 when there is none"),
    Member(6, "GetServer", kMember<&CIVex::GetServer>, "GetServer(index = 0): a server; 0 when there is none"),
    Member(7, "SetPrivateData", kMember<&CIVex::SetPrivateData>, "SetPrivateData(value): anything, for the program"),
    Member(8, "GetPrivateData", kMember<&CIVex::GetPrivateData>, "what SetPrivateData kept; 0 at first"),
    Member(9, "GetStats", kMember<&CIVex::GetStats>, "a new VexStats of all servers and players"),
};

using Server = CIVexServer;
constexpr MemberRow kServerRows[] = {
    Member(1, "GetConnectionCount", kMember<&Server::GetConnectionCount>, "the number of connections"),
    Member(2, "GetConnection", kMember<&Server::GetConnection>, "GetConnection(index): 0 when there is none"),
    Member(3, "GetServerIP", kMember<&Server::GetServerIP>, "the address under which others reach this machine"),
    Member(4, "GetPort", kMember<&Server::GetPort>, "the port"),
    Member(5, "SetMOTD", kMember<&Server::SetMOTD>, "SetMOTD(text): the message of the day; empty is ignored"),
    Member(6, "SendText", kMember<&Server::SendText>, "SendText(text, type = 0): to all connections, in order"),
    Event(7, "OnNewConnection", kMember<&Server::OnEvent<kVexNewConnection>>, "= function(server, connection)"),
    Event(8, "OnDeadConnection", kMember<&Server::OnEvent<kVexDeadConnection>>, "= function(server, connection)"),
    Member(9, "BlastText", kMember<&Server::BlastText>, "BlastText(text, type = 0): to all, as a datagram each"),
    Member(10, "GetSession", kMember<&Server::GetSession>, "GetSession(index): 0 when there is none"),
    Member(11, "GetSessionCount", kMember<&Server::GetSessionCount>, "the number of sessions"),
    Member(12, "Disconnect", kMember<&Server::Disconnect>, "ends the server with its connections"),
    Member(13, "IsValid", kMember<&Server::IsValid>, "1 until it has ended"),
    Member(14, "SetPrivateData", kMember<&Server::SetPrivateData>, "SetPrivateData(value): anything, for the program"),
    Member(15, "GetPrivateData", kMember<&Server::GetPrivateData>, "what SetPrivateData kept; 0 at first"),
    Member(16, "GetStats", kMember<&Server::GetStats>, "a new VexStats"),
    Event(17, "OnSessionCreated", kMember<&Server::OnEvent<kVexSessionCreated>>, "= function(server, session)"),
    Event(18, "OnSessionDestroyed", kMember<&Server::OnEvent<kVexSessionDestroyed>>, "= function(server, session)"),
};

using Connection = CIVexConnection;
constexpr MemberRow kConnectionRows[] = {
    Member(1, "GetSessionCount", kMember<&Connection::GetSessionCount>, "how many sessions it has joined"),
    Member(2, "GetSession", kMember<&Connection::GetSession>, "GetSession(index): 0 when there is none"),
    Member(3, "GetName", kMember<&Connection::GetName>, "the player's name"),
    Member(4, "GetClientIP", kMember<&Connection::GetClientIP>, "the player's address"),
    Member(5, "GetVersion", kMember<&Connection::GetVersion>, "the player's protocol version; 0 until it is known"),
    Member(6, "GetServer", kMember<&Connection::GetServer>, "the server"),
    Member(7, "SignOff", kMember<&Connection::SignOff>, "SignOff(index): takes it off the session of that index"),
    Member(8, "SendText", kMember<&Connection::SendText>, "SendText(text, type = 0): in order"),
    Event(9, "OnMsgFromClient", kMember<&Connection::OnEvent<kVexClientMessage>>, "= function(connection, text, type)"),
    Event(10, "OnSessionLeft", kMember<&Connection::OnEvent<kVexSessionLeft>>, "= function(connection, session)"),
    Member(11, "BlastText", kMember<&Connection::BlastText>, "BlastText(text, type = 0): as a datagram"),
    Event(12, "OnSessionJoined", kMember<&Connection::OnEvent<kVexSessionJoined>>, "= function(connection, session)"),
    Member(13, "IsValid", kMember<&Connection::IsValid>, "1 until it has ended"),
    Member(14, "GetId", kMember<&Connection::GetId>, "its id, by which users know it"),
    Member(15, "SetPrivateData", kMember<&Connection::SetPrivateData>,
           "SetPrivateData(value): anything, for the program"),
    Member(16, "GetPrivateData", kMember<&Connection::GetPrivateData>, "what SetPrivateData kept; 0 at first"),
    Member(17, "GetStats", kMember<&Connection::GetStats>, "a new VexStats"),
};

using Session = CIVexSession;
constexpr MemberRow kSessionRows[] = {
    Member(1, "GetConnectionCount", kMember<&Session::GetConnectionCount>, "the number of members"),
    Member(2, "GetConnection", kMember<&Session::GetConnection>, "GetConnection(index): 0 when there is none"),
    Member(3, "SignOff", kMember<&Session::SignOff>, "SignOff(index = 0): takes the member of that index off"),
    Member(4, "SendText", kMember<&Session::SendText>, "SendText(text, type = 0): to all members, in order"),
    Member(5, "BlastText", kMember<&Session::BlastText>,
           "BlastText(text, type = 0): to all members, as a datagram each"),
    Member(6, "GetName", kMember<&Session::GetName>, "its name"),
    Member(7, "IsValid", kMember<&Session::IsValid>, "1 until the last member has left"),
    Member(8, "GetId", kMember<&Session::GetId>, "its id, the same as the channel's"),
    Member(9, "SetPrivateData", kMember<&Session::SetPrivateData>, "SetPrivateData(value): anything, for the program"),
    Member(10, "GetPrivateData", kMember<&Session::GetPrivateData>, "what SetPrivateData kept; 0 at first"),
};

}  // namespace

const ClassTable kVexClass = {CLASS_VEX, kVexRows, &CreateObject<CIVex>, "Servers and players of a network game"};
const ClassTable kVexServerClass = {CLASS_VEXSERVER, kServerRows, &CreateObject<CIVexServer>,
                                    "A server; made by Vex.HostServer"};
const ClassTable kVexConnectionClass = {CLASS_VEXCONNECTION, kConnectionRows, &CreateObject<CIVexConnection>,
                                        "A player as the server sees it"};
const ClassTable kVexSessionClass = {CLASS_VEXSESSION, kSessionRows, &CreateObject<CIVexSession>,
                                     "A named group of connections; players see it as a channel"};

void RegisterNetClasses(ClassRegistry& registry) {
  registry.makeDownloads = &Downloads::Make;
  for (const ClassTable* table : {&kVexClass, &kVexPlayerClass, &kVexChannelClass, &kVexUserClass, &kVexServerClass,
                                  &kVexConnectionClass, &kVexSessionClass, &kVexSocketClass, &kVexStatsClass}) {
    registry.Add(*table);
  }
}

}  // namespace vl

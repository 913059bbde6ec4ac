// VexPlayer, VexChannel and VexUser: the client's side.
#include "net/script/vex_classes.h"
#include "net/script/vex_wrapper.h"
#include "net/vex_player.h"

namespace vl {

VexObject* PlayerOfChannel(VexObject& channel) { return &static_cast<VexChannel&>(channel).player; }

namespace {

class CIVexPlayer : public CIVexOf<VexPlayer> {
 public:
  explicit CIVexPlayer(CInterpretor& interpreter) : CIVexOf(interpreter, CLASS_VEXPLAYER) {}

  void GetName() { GiveName(); }
  void GetChannelCount() {
    GiveNumber([](VexPlayer& p) { return p.channels.Count(); });
  }
  void GetChannel() { GiveWrapper(core() ? core()->channels.At(Number(0)) : nullptr, CLASS_VEXCHANNEL); }
  void GetIP() { GiveText(core() ? core()->LocalIp() : std::string_view()); }
  void GetPort() {
    GiveNumber([](VexPlayer& p) { return p.port; });
  }
  void GetServerIP() { GiveText(core() ? core()->ServerIp() : std::string_view()); }
  void SignOn() {
    const std::string name = String(0);
    GiveWrapper(core() && !name.empty() ? core()->SignOn(name) : nullptr, CLASS_VEXCHANNEL);
  }
  void SetName() {}
  void GetMOTD() { GiveText(core() ? core()->motd : std::string_view()); }
  void IsConnected() {
    GiveNumber([](VexPlayer& p) { return p.connected; });
  }
  void GetId() {
    GiveNumber([](VexPlayer& p) { return p.id; });
  }
  void GetStats() { GiveStats(core() ? &core()->stats : nullptr); }
};

class CIVexChannel : public CIVexOf<VexChannel> {
 public:
  explicit CIVexChannel(CInterpretor& interpreter) : CIVexOf(interpreter, CLASS_VEXCHANNEL) {}

  void GetUserCount() {
    GiveNumber([](VexChannel& c) { return c.users.Count(); });
  }
  void GetUser() { GiveWrapper(core() ? core()->users.At(Number(0)) : nullptr, CLASS_VEXUSER); }
  void IsMaster() {
    GiveNumber([](VexChannel& c) { return c.master && c.master->id == c.player.id; });
  }
  void GetMaster() { GiveWrapper(core() ? core()->master : nullptr, CLASS_VEXUSER); }
  void GetPlayer() { GiveWrapper(core() ? &core()->player : nullptr, CLASS_VEXPLAYER); }
  void GetName() { GiveName(); }
  void GetId() {
    GiveNumber([](VexChannel& c) { return c.id; });
  }
};

class CIVexUser : public CIVexOf<VexUser> {
 public:
  explicit CIVexUser(CInterpretor& interpreter) : CIVexOf(interpreter, CLASS_VEXUSER) {}

  void GetName() { GiveName(); }
  void GetIP() { GiveText(core() ? core()->ip : std::string_view()); }
  void GetChannel() { GiveWrapper(core() ? &core()->channel : nullptr, CLASS_VEXCHANNEL); }
  void GetId() {
    GiveNumber([](VexUser& u) { return u.id; });
  }
};

constexpr MemberRow Member(uint16_t id, const char* name, MemberFunction function, const char* help) {
  return {id, name, MemberKind::Member, function, 0, 0, help};
}

constexpr MemberRow Event(uint16_t id, const char* name, MemberFunction function, const char* help) {
  return {id, name, MemberKind::Event, function, 0, 0, help};
}

using Player = CIVexPlayer;
constexpr MemberRow kPlayerRows[] = {
    Member(1, "GetName", kMember<&Player::GetName>, "the name that was given to Connect"),
    Member(2, "GetChannelCount", kMember<&Player::GetChannelCount>, "the number of channels"),
    Member(3, "GetChannel", kMember<&Player::GetChannel>, "GetChannel(index): 0 when there is none"),
    Member(4, "GetIP", kMember<&Player::GetIP>, "its own address; \"\" until connected"),
    Member(5, "GetPort", kMember<&Player::GetPort>, "the server's port"),
    Member(6, "GetServerIP", kMember<&Player::GetServerIP>, "the server's address; \"\" until connected"),
    Member(7, "SignOn", kMember<&Player::SignOn>, "SignOn(name): joins a session; a new VexChannel, 0 without a name"),
    Event(8, "OnConnected", kMember<&Player::OnEvent<kVexPlayerConnected>>,
          "= function(player): the server greeted it"),
    Event(9, "OnDisconnected", kMember<&Player::OnEvent<kVexPlayerDisconnected>>, "= function(player)"),
    Event(10, "OnSignedOn", kMember<&Player::OnEvent<kVexChannelJoined>>, "= function(player, channel)"),
    Event(11, "OnSignedOff", kMember<&Player::OnEvent<kVexChannelLeft>>, "= function(player, channel)"),
    Event(12, "OnMsgFromServer", kMember<&Player::OnEvent<kVexServerMessage>>, "= function(player, text, type)"),
    Event(13, "OnNameChanged", kMember<&Player::OnEvent<kVexUserNameChanged>>,
          "= function(player, user, old name, channel)"),
    Event(14, "OnMessage", kMember<&Player::OnEvent<kVexUserMessage>>, "= function(player, user, text, type)"),
    Member(15, "SetName", kMember<&Player::SetName>, "does nothing: a name is for the whole connection"),
    Member(16, "GetMOTD", kMember<&Player::GetMOTD>, "the server's message of the day; \"\" until it came"),
    Member(17, "IsValid", kMember<&Player::IsValid>, "1 until it has ended"),
    Member(18, "IsConnected", kMember<&Player::IsConnected>, "1 while the connection stands"),
    Member(19, "SendText", kMember<&Player::SendText>, "SendText(text, type = 0): to the server, in order"),
    Member(20, "BlastText", kMember<&Player::BlastText>, "BlastText(text, type = 0): to the server, as a datagram"),
    Member(21, "GetId", kMember<&Player::GetId>, "the id that the server gave; 0 until then"),
    Member(22, "SetPrivateData", kMember<&Player::SetPrivateData>, "SetPrivateData(value): anything, for the program"),
    Member(23, "GetPrivateData", kMember<&Player::GetPrivateData>, "what SetPrivateData kept; 0 at first"),
    Member(24, "GetStats", kMember<&Player::GetStats>, "a new VexStats"),
};

using Channel = CIVexChannel;
constexpr MemberRow kChannelRows[] = {
    Member(1, "BlastText", kMember<&Channel::BlastText>,
           "BlastText(text, type = 0): to the other members, as datagrams through the server"),
    Member(2, "GetUserCount", kMember<&Channel::GetUserCount>, "the number of members, the player itself included"),
    Member(3, "GetUser", kMember<&Channel::GetUser>, "GetUser(index): 0 when there is none"),
    Member(4, "IsMaster", kMember<&Channel::IsMaster>, "1 when the player is the session's first member"),
    Member(5, "GetMaster", kMember<&Channel::GetMaster>, "the session's first member"),
    Member(6, "SendText", kMember<&Channel::SendText>, "SendText(text, type = 0): to the other members, in order"),
    Member(7, "GetPlayer", kMember<&Channel::GetPlayer>, "the player"),
    Event(8, "OnUserIsOn", kMember<&Channel::OnEvent<kVexUserIsOn>>, "= function(channel, user): was there before"),
    Event(9, "OnUserJoined", kMember<&Channel::OnEvent<kVexUserJoined>>, "= function(channel, user)"),
    Event(10, "OnUserLeft", kMember<&Channel::OnEvent<kVexUserLeft>>, "= function(channel, user)"),
    Member(11, "GetName", kMember<&Channel::GetName>, "the session's name"),
    Member(12, "IsValid", kMember<&Channel::IsValid>, "1 until it has ended"),
    Member(13, "GetId", kMember<&Channel::GetId>, "the session's id; 0 until joined"),
    Member(14, "SetPrivateData", kMember<&Channel::SetPrivateData>, "SetPrivateData(value): anything, for the program"),
    Member(15, "GetPrivateData", kMember<&Channel::GetPrivateData>, "what SetPrivateData kept; 0 at first"),
};

using User = CIVexUser;
constexpr MemberRow kUserRows[] = {
    Member(1, "BlastText", kMember<&User::BlastText>, "BlastText(text, type = 0): straight to it, as a datagram"),
    Member(2, "GetName", kMember<&User::GetName>, "its name"),
    Member(3, "GetIP", kMember<&User::GetIP>, "its address"),
    Member(4, "SendText", kMember<&User::SendText>, "SendText(text, type = 0): to it through the server, in order"),
    Member(5, "GetChannel", kMember<&User::GetChannel>, "the channel"),
    Member(6, "IsValid", kMember<&User::IsValid>, "1 until it has left"),
    Member(7, "GetId", kMember<&User::GetId>, "the id of its connection"),
    Member(8, "SetPrivateData", kMember<&User::SetPrivateData>, "SetPrivateData(value): anything, for the program"),
    Member(9, "GetPrivateData", kMember<&User::GetPrivateData>, "what SetPrivateData kept; 0 at first"),
};

}  // namespace

const ClassTable kVexPlayerClass = {CLASS_VEXPLAYER, kPlayerRows, &CreateObject<CIVexPlayer>,
                                    "A client of a server; made by Vex.Connect"};
const ClassTable kVexChannelClass = {CLASS_VEXCHANNEL, kChannelRows, &CreateObject<CIVexChannel>,
                                     "A player's view of a session; made by VexPlayer.SignOn"};
const ClassTable kVexUserClass = {CLASS_VEXUSER, kUserRows, &CreateObject<CIVexUser>, "A member of a channel"};

}  // namespace vl

// VexSocket: a plain socket for any protocol.
#include <algorithm>
#include <bit>

#include "interpreter/data_source.h"
#include "net/script/vex_classes.h"
#include "net/script/vex_wrapper.h"
#include "net/vex_socket.h"

namespace vl {

namespace {

class CIVexSocket : public CIVEXClassImpl {
 public:
  explicit CIVexSocket(CInterpretor& interpreter) : CIVEXClassImpl(interpreter, CLASS_VEXSOCKET) {}
  void Construct() override {
    Attach(*CVexNetwork::Of(interpreter).api.MakeSocket(), false);
    Create();
  }

  void SetMode() {
    if (core()) core()->blocking = Number(0) == 1;
  }
  void Connect();
  void Disconnect() {
    if (core()) core()->Disconnect();
  }
  void Listen() {
    if (core() && !IsMissing(0)) core()->Listen(Short(0));
  }
  void Accept();
  void GetLocalIP() { Result().SetString(core() ? core()->LocalIp() : std::string_view()); }
  void GetRemoteIP() { Result().SetString(core() ? core()->RemoteIp() : std::string_view()); }
  void Send();
  void Recv();
  void SendLine() {
    if (core()) core()->SendLine(String(0));
  }
  void RecvLine() { Result().SetString(core() ? core()->ReceiveLine() : std::string()); }
  void IsConnected() { Result().SetInt(core() && core()->connected); }
  void SetTimeOut() {
    if (core()) core()->timeoutMs = IsMissing(0) ? 5000u : static_cast<uint32_t>(std::max(Number(0), 0));
  }
  void GetStats() { GiveStats(core() ? &core()->stats : nullptr); }

 private:
  VexSocket* core() const { return static_cast<VexSocket*>(Core()); }
};

void CIVexSocket::Connect() {
  const std::string host = String(0);
  if (core() && !host.empty() && !IsMissing(1)) core()->Connect(host, Short(1));
}

void CIVexSocket::Accept() {
  if (!core()) {
    Result().SetInt(0);
    return;
  }
  auto* object = new CIVexSocket(interpreter);  // its class list owns it
  object->Create();
  object->Attach(*core()->Accept(), false);
  Result().SetObject(object);
  ++interpreter.newsSinceCollection;
}

void CIVexSocket::Send() {
  if (interpreter.GetArgCount() != 1) interpreter.RaiseError(ERR_ARGUMENT_COUNT);
  if (!core()) return;
  const CValue& value = *interpreter.GetArg(0);
  const auto sendNumber = [&](uint32_t bits) {
    const uint8_t bytes[4] = {static_cast<uint8_t>(bits), static_cast<uint8_t>(bits >> 8),
                              static_cast<uint8_t>(bits >> 16), static_cast<uint8_t>(bits >> 24)};
    core()->Send(bytes);
  };
  if (value.type == VT_INTEGER) return sendNumber(static_cast<uint32_t>(value.data.integer));
  if (value.type == VT_FLOAT) return sendNumber(std::bit_cast<uint32_t>(static_cast<float>(value.data.real)));
  if (value.type == VT_STRING) {
    const std::string_view text = value.StringView();
    std::vector<uint8_t> bytes(text.begin(), text.end());
    bytes.push_back(0);
    return core()->Send(bytes);
  }
  const auto* bytes = value.IsObjectOfClass(CLASS_BINARY) ? dynamic_cast<CByteSource*>(value.data.object) : nullptr;
  if (!bytes) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  core()->Send(bytes->Bytes());
}

void CIVexSocket::Recv() {
  const int32_t size = IsMissing(0) ? 4096 : Number(0);
  const int32_t trim = Number(1);
  if (trim < 0 || trim > 1 || size < 0) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  const CIClassInfo* info = interpreter.ClassInfo(CLASS_BINARY);
  if (!core() || !info || !info->table) {
    Result().SetInt(0);
    return;
  }
  CIBaseClassImpl* object = info->table->create(interpreter);  // its class list owns it
  object->Create();
  ++interpreter.newsSinceCollection;
  auto& target = dynamic_cast<CByteSource&>(*object);
  if (!target.ResizeBytes(size)) interpreter.RaiseError(ERR_MEMORY);
  const size_t count = core()->Receive(target.WritableBytes());
  if (trim == 1 && !target.ResizeBytes(static_cast<int64_t>(count))) interpreter.RaiseError(ERR_MEMORY);
  Result().SetObject(object);
}

constexpr MemberRow Member(uint16_t id, const char* name, MemberFunction function, const char* help) {
  return {id, name, MemberKind::Member, function, 0, 0, help};
}

constexpr MemberRow Event(uint16_t id, const char* name, MemberFunction function, const char* help) {
  return {id, name, MemberKind::Event, function, 0, 0, help};
}

using Self = CIVexSocket;
constexpr MemberRow kRows[] = {
    Member(1, "SetMode", kMember<&Self::SetMode>,
           "SetMode(mode = 0): 1 waits up to the time-out, as at first; 0 doesn't"),
    Member(2, "Connect", kMember<&Self::Connect>, "Connect(host, port)"),
    Member(3, "Disconnect", kMember<&Self::Disconnect>, "closes the socket"),
    Member(4, "Listen", kMember<&Self::Listen>, "Listen(port): others may connect"),
    Member(5, "Accept", kMember<&Self::Accept>, "a new VexSocket with the connection that waits"),
    Member(6, "GetLocalIP", kMember<&Self::GetLocalIP>, "its own address; \"\" without a connection"),
    Member(7, "GetRemoteIP", kMember<&Self::GetRemoteIP>, "the other's address; \"\" without a connection"),
    Member(8, "Send", kMember<&Self::Send>, "Send(value): a number as 4 bytes, a text with its NUL, a Binary"),
    Member(9, "Recv", kMember<&Self::Recv>, "Recv(size = 4096, trim = 0): a new Binary; trim 1 cuts it to what came"),
    Member(10, "SendLine", kMember<&Self::SendLine>, "SendLine(text): with carriage return and line feed"),
    Member(11, "RecvLine", kMember<&Self::RecvLine>, "the next line that isn't empty, without its end"),
    Event(12, "OnConnected", kMember<&Self::OnEvent<kVexSocketConnected>>, "= function(socket)"),
    Event(13, "OnDisconnected", kMember<&Self::OnEvent<kVexSocketDisconnected>>, "= function(socket)"),
    Event(14, "OnAccepted", kMember<&Self::OnEvent<kVexSocketAccepted>>, "= function(socket): a connection waits"),
    Event(15, "OnReceived", kMember<&Self::OnEvent<kVexSocketReceived>>, "= function(socket): bytes wait"),
    Member(16, "IsConnected", kMember<&Self::IsConnected>, "1 while the connection stands"),
    Member(17, "SetTimeOut", kMember<&Self::SetTimeOut>, "SetTimeOut(ms = 5000)"),
    Member(18, "SetPrivateData", kMember<&Self::SetPrivateData>, "SetPrivateData(value): anything, for the program"),
    Member(19, "GetPrivateData", kMember<&Self::GetPrivateData>, "what SetPrivateData kept; 0 at first"),
    Member(20, "GetStats", kMember<&Self::GetStats>, "a new VexStats"),
};

}  // namespace

const ClassTable kVexSocketClass = {CLASS_VEXSOCKET, kRows, &CreateObject<CIVexSocket>,
                                    "A plain socket for any protocol"};

}  // namespace vl

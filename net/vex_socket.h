// VexSocket: a plain TCP socket for any protocol.
//
// Blocking, its operations wait up to the time-out, which only holds up the program; else they do what can be done now,
// and what is sent waits in a queue.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "net/vex_api.h"
#include "net/vex_buffer.h"

namespace vl {

class VexSocket final : public VexObject {
 public:
  enum class Role : uint16_t { Client, Listening, Accepted };

  explicit VexSocket(VexApi& api) : api(api), stats(api.NowMs()) {}

  void Process();
  void Connect(std::string_view host, uint16_t port);
  void Disconnect();
  void Listen(uint16_t port);
  // A socket in any case; without a connection that waited it will find itself disconnected.
  VexSocket* Accept();
  void Send(std::span<const uint8_t> bytes);
  // The count of bytes read, 0 when none came.
  size_t Receive(std::span<uint8_t> bytes);
  void SendLine(std::string_view line);
  // Without its end; empty lines are skipped. What there is when the time, the connection or the bytes end.
  std::string ReceiveLine();

  const std::string& LocalIp();
  const std::string& RemoteIp();

  VexApi& api;
  Role role = Role::Client;
  bool blocking = true;
  bool connected = false;
  uint32_t timeoutMs = 5000;
  VexStats stats;

 protected:
  void OnDelete() override;

 private:
  // Alive: the connection stands. Bytes that wait keep it alive.
  enum class Peek { Nothing, Bytes, Ended };
  Peek Look();
  // One attempt after another until `attempt` gives true, the time-out has passed, or the run must end.
  template <typename F>
  void Try(F&& attempt);
  void Replace(SocketId socket);
  void PumpQueue();

  SocketId socket_ = 0;
  VexQueue queue_;
  std::string localIp_;
  std::string remoteIp_;
};

}  // namespace vl

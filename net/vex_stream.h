// VexStream: one TCP connection of the layer with its queue and its buffer; the same at both ends.
//
// It reads only when no whole message is at hand: what a fast peer sends waits at the machine, which holds the peer
// back.
#pragma once

#include "net/vex_buffer.h"
#include "net/vex_stats.h"
#include "net/wire.h"
#include "platform/sockets.h"

namespace vl {

class VexApi;

class VexStream {
 public:
  VexStream(VexApi& api, SocketId socket, WireDirection incoming, VexTraffic traffic);
  ~VexStream() { Close(); }
  VexStream(const VexStream&) = delete;
  VexStream& operator=(const VexStream&) = delete;

  // Dropped when it is larger than a peer takes. The queue's end is dropped with a peer that reads too slowly.
  void Queue(const WireWriter& message);
  // Takes in what is there. False when the connection is over and all that came before its end was taken.
  bool Receive();
  // The message to handle, valid until Drop; null when there is none.
  const VexMessage* Message() const { return state_ == Parsed::Complete ? &message_ : nullptr; }
  void Drop();
  // Sends what the connection takes. False when the peer must be let go.
  bool Pump();
  // Not connected yet: what waits needs no poll of its own.
  void Defer() { SetUnsent(false); }
  void Close();

  SocketId Socket() const { return socket_; }

 private:
  static constexpr size_t kReceiveBytes = 4096;
  static constexpr size_t kSendBytes = 65536;
  void SetUnsent(bool isUnsent);
  void Parse() { state_ = ParseMessage(incoming_, in_.Bytes(), message_); }

  VexApi& api_;
  SocketId socket_;
  WireDirection incoming_;
  VexTraffic traffic_;
  VexBuffer in_;
  VexQueue out_;
  VexMessage message_;
  Parsed state_ = Parsed::Incomplete;
  uint32_t stalledSinceMs_ = 0;
  bool isStalled_ = false;
  bool isOverfull_ = false;
  bool isUnsent_ = false;  // something waits that no Pump has tried to send
};

}  // namespace vl

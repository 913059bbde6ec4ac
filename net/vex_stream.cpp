#include "net/vex_stream.h"

#include <algorithm>

#include "base/limits.h"
#include "net/vex_api.h"

namespace vl {

VexStream::VexStream(VexApi& api, SocketId socket, WireDirection incoming, VexTraffic traffic)
    : api_(api), socket_(socket), incoming_(incoming), traffic_(traffic) {}

void VexStream::SetUnsent(bool isUnsent) {
  if (isUnsent_ == isUnsent) return;
  isUnsent_ = isUnsent;
  if (!isUnsent) {
    --api_.unsent;
  } else if (++api_.unsent == 1 && !api_.isPolling) {
    api_.sockets.endNextWait();
  }
}

void VexStream::Close() {
  SetUnsent(false);
  if (socket_ == 0) return;
  api_.sockets.close(socket_);
  socket_ = 0;
  api_.queuedBytes -= out_.Size();
  out_ = {};
}

void VexStream::Queue(const WireWriter& message) {
  const auto bytes = message.Bytes();
  if (socket_ == 0 || isOverfull_ || bytes.size() > limits::kMaxNetMessageBytes) return;
  if (out_.Size() + bytes.size() > limits::kMaxNetQueueBytes ||
      api_.queuedBytes + bytes.size() > limits::kMaxNetQueuedBytes) {
    isOverfull_ = true;
    return;
  }
  SetUnsent(true);
  out_.Add(bytes);
  api_.queuedBytes += bytes.size();
}

bool VexStream::Receive() {
  if (state_ == Parsed::Complete || !api_.sockets.hasNews(socket_)) return true;
  const int64_t count = api_.sockets.receive(socket_, in_.Room(kReceiveBytes), false);
  if (count == kSocketNothing) return true;
  if (count <= 0) return false;
  in_.Grow(static_cast<size_t>(count));
  traffic_.In(static_cast<size_t>(count));
  Parse();
  if (api_.sockets.hasNews(socket_)) api_.hasWork = true;
  // What can't become a message: nothing behind it could be understood.
  if (state_ == Parsed::Unknown || state_ == Parsed::TooLarge) return false;
  return state_ == Parsed::Complete || in_.Size() <= 4 * limits::kMaxNetMessageBytes;
}

void VexStream::Drop() {
  in_.Erase(0, message_.size);
  Parse();
  if (state_ == Parsed::Complete || api_.sockets.hasNews(socket_)) api_.hasWork = true;
}

bool VexStream::Pump() {
  // What the machine doesn't take now is tried again when it has room, which is news.
  SetUnsent(false);
  if (isOverfull_ || state_ == Parsed::Unknown || state_ == Parsed::TooLarge) return false;
  while (!out_.IsEmpty()) {
    const auto waiting = out_.Waiting().first(std::min(out_.Size(), kSendBytes));
    const int64_t count = api_.sockets.send(socket_, waiting);
    if (count <= 0) {
      const uint32_t nowMs = api_.NowMs();
      if (!isStalled_) stalledSinceMs_ = nowMs;
      isStalled_ = true;
      return nowMs - stalledSinceMs_ <= limits::kNetPatienceMs;
    }
    isStalled_ = false;
    api_.queuedBytes -= static_cast<size_t>(count);
    // Counted as the messages that they were, although they went together.
    out_.Drop(static_cast<size_t>(count), [&](size_t bytes) { traffic_.Out(bytes); });
    if (static_cast<size_t>(count) < waiting.size()) break;
  }
  return true;
}

}  // namespace vl

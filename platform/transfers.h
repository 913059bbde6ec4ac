// Transfers: files fetched from addresses (HTTP, HTTPS, FTP), as a run sees them. No call waits.
//
// A transfer is started, read bit by bit, and forgotten with cancel. Statuses of 400 and above, and hosts that the run
// may not reach, are failures like a server that doesn't answer.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vl {

using TransferId = uint32_t;  // 0: none

enum class TransferState {
  Opening,    // nothing has come yet
  Receiving,  // the server has answered well
  Done,       // all of it was read
  Failed
};

struct TransferProgress {
  TransferState state = TransferState::Failed;
  uint64_t total = 0;  // bytes, as the server says; 0 when it doesn't
};

class Transfers {
 public:
  virtual ~Transfers() = default;
  // 0 for an address of another kind. `agent` names the program to the server.
  virtual TransferId start(const std::string& url, const std::string& agent) = 0;
  // Appends at most `most` bytes of what has come to `bytes`. Done only when everything was read; an unknown id has
  // failed.
  virtual TransferProgress read(TransferId id, std::string& bytes, size_t most) = 0;
  virtual void cancel(TransferId id) = 0;
  // The address that a relative one means beside `base`; "" when there is none.
  virtual std::string resolve(std::string_view base, std::string_view url) = 0;
};

}  // namespace vl

// CurlTransfers: transfers by libcurl's multi interface. All of it runs in the calls; one thread owns it.
//
// Redirects are followed by hand, at most ten, so that each host is asked for. What has come and wasn't read is
// bounded: a transfer that is too far ahead waits.
#pragma once

#include <functional>
#include <map>
#include <memory>

#include "platform/transfers.h"

namespace vl {

class CurlTransfers final : public Transfers {
 public:
  // Whether the run may reach a host; null allows all.
  using MayReach = std::function<bool(std::string_view host, uint16_t port)>;
  explicit CurlTransfers(MayReach mayReach);
  ~CurlTransfers() override;

  TransferId start(const std::string& url, const std::string& agent) override;
  TransferProgress read(TransferId id, std::string& bytes, size_t most) override;
  void cancel(TransferId id) override;
  std::string resolve(std::string_view base, std::string_view url) override;

 private:
  struct Transfer;
  struct Multi;

  bool Begin(Transfer& transfer, const std::string& url);
  void Finish(Transfer& transfer, int result);
  void Work();

  MayReach mayReach_;
  std::unique_ptr<Multi> multi_;
  std::map<TransferId, std::unique_ptr<Transfer>> transfers_;
  TransferId next_ = 1;
};

}  // namespace vl

// CupsQueue: documents to a print queue of CUPS, as the machine (or CUPS_SERVER) has it.
#pragma once

#include "platform/posix/pdf_printers.h"

namespace vl {

class CupsQueue final : public PdfDestination {
 public:
  // UTF-8. "default" is the user's default queue.
  explicit CupsQueue(std::string name) : name_(std::move(name)) {}
  // False when the server can't be reached or has no such queue.
  bool isReady() override;
  bool take(std::string_view title, std::span<const uint8_t> pdf) override;

 private:
  std::string name_;
};

}  // namespace vl

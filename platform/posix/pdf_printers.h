// PdfPrinters: a printer that makes a PDF file of each document, in a folder that is given.
//
// A page is A4 at 300 dots per inch and becomes one picture. The file has its name when it is whole.
#pragma once

#include <string>

#include "platform/printers.h"

namespace vl {

class PdfPrinters final : public Printers {
 public:
  static constexpr size_t kMaxDocumentBytes = size_t{256} << 20;
  static constexpr int kMaxDocuments = 1000;  // of a run

  explicit PdfPrinters(std::string folder) : folder_(std::move(folder)) {}
  PrinterInfo info() override;
  std::unique_ptr<PrintJob> start(std::string_view title) override;

 private:
  std::string folder_;
  int documents_ = 0;
};

}  // namespace vl

// PdfPrinters: a printer whose documents are PDF files, handed over when they are whole.
//
// A page is A4 at 300 dots per inch and becomes one picture.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "platform/printers.h"

namespace vl {

// Where documents go.
class PdfDestination {
 public:
  virtual ~PdfDestination() = default;
  // Asked before each document.
  virtual bool isReady() = 0;
  // `title` is of code page 1252. False when it was not taken.
  virtual bool take(std::string_view title, std::span<const uint8_t> pdf) = 0;
};

// A file each, named by its title, in a folder that is made when it isn't there. UTF-8.
class PdfFolder final : public PdfDestination {
 public:
  explicit PdfFolder(std::string folder) : folder_(std::move(folder)) {}
  bool isReady() override;
  bool take(std::string_view title, std::span<const uint8_t> pdf) override;

 private:
  std::string folder_;
};

class PdfPrinters final : public Printers {
 public:
  static constexpr size_t kMaxDocumentBytes = size_t{256} << 20;
  static constexpr int kMaxDocuments = 1000;  // of a run

  explicit PdfPrinters(std::unique_ptr<PdfDestination> destination) : destination_(std::move(destination)) {}
  PrinterInfo info() override;
  // The job must not outlive the printer.
  std::unique_ptr<PrintJob> start(std::string_view title) override;

 private:
  std::unique_ptr<PdfDestination> destination_;
  int documents_ = 0;
};

}  // namespace vl

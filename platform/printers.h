// Printers: the machine's default printer, as documents of pages that are pictures.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

namespace vl {

struct PrinterInfo {
  int width = 0;  // pixels of a page
  int height = 0;
  int dotsPerInchX = 0;
  int dotsPerInchY = 0;
};

// One document. Without finish() nothing is printed.
class PrintJob {
 public:
  virtual ~PrintJob() = default;
  // A page of the printer's size: words 0x00RRGGBB, the top line first. Copies. False when it is too much.
  virtual bool page(const uint32_t* pixels, int width, int height) = 0;
  virtual bool finish() = 0;
};

class Printers {
 public:
  virtual ~Printers() = default;
  virtual PrinterInfo info() = 0;
  // `title` is of code page 1252. Null when the printer takes no document.
  virtual std::unique_ptr<PrintJob> start(std::string_view title) = 0;
};

}  // namespace vl

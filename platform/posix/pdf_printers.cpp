#include "platform/posix/pdf_printers.h"

#include <cairo-pdf.h>

#include <vector>

#include "platform/posix/posix_file_system.h"
#include "platform/posix/user_folder.h"
#include "platform/text/code_page.h"

namespace vl {
namespace {

constexpr int kDotsPerInch = 300;
constexpr double kPointsPerDot = 72.0 / kDotsPerInch;
constexpr PrinterInfo kA4{2480, 3508, kDotsPerInch, kDotsPerInch};

// A title as the name of a file.
std::string FileNameOf(std::string_view title) {
  std::string name = Utf8Of1252(title.substr(0, 60));
  for (char& c : name) {
    if (static_cast<uint8_t>(c) < 0x20 || std::string_view("/\\:*?\"<>|").find(c) != std::string_view::npos) c = '-';
  }
  while (name.starts_with('.') || name.starts_with(' ')) name.erase(0, 1);
  return name.empty() ? "document" : name;
}

using SurfacePtr = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;
using ContextPtr = std::unique_ptr<cairo_t, decltype(&cairo_destroy)>;

class PdfJob final : public PrintJob {
 public:
  PdfJob(PdfDestination& destination, std::string_view title)
      : destination_(destination),
        title_(title),
        pdf_(cairo_pdf_surface_create_for_stream(Write, this, kA4.width * kPointsPerDot, kA4.height * kPointsPerDot),
             cairo_surface_destroy) {
    cairo_pdf_surface_set_metadata(pdf_.get(), CAIRO_PDF_METADATA_TITLE, Utf8Of1252(title).c_str());
  }

  bool page(const uint32_t* pixels, int width, int height) override {
    const SurfacePtr picture(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height), cairo_surface_destroy);
    if (cairo_surface_status(picture.get()) != CAIRO_STATUS_SUCCESS) return false;
    uint8_t* line = cairo_image_surface_get_data(picture.get());
    for (int y = 0; y < height; ++y, line += cairo_image_surface_get_stride(picture.get())) {
      const uint32_t* const from = pixels + static_cast<size_t>(y) * static_cast<size_t>(width);
      std::copy(from, from + width, reinterpret_cast<uint32_t*>(line));
    }
    cairo_surface_mark_dirty(picture.get());
    cairo_pdf_surface_set_size(pdf_.get(), width * kPointsPerDot, height * kPointsPerDot);
    const ContextPtr context(cairo_create(pdf_.get()), cairo_destroy);
    cairo_scale(context.get(), kPointsPerDot, kPointsPerDot);
    cairo_set_source_surface(context.get(), picture.get(), 0, 0);
    cairo_pattern_set_filter(cairo_get_source(context.get()), CAIRO_FILTER_NEAREST);
    cairo_paint(context.get());
    cairo_show_page(context.get());
    return cairo_status(context.get()) == CAIRO_STATUS_SUCCESS;
  }

  bool finish() override {
    cairo_surface_finish(pdf_.get());
    return cairo_surface_status(pdf_.get()) == CAIRO_STATUS_SUCCESS && destination_.take(title_, bytes_);
  }

 private:
  static cairo_status_t Write(void* self, const unsigned char* bytes, unsigned size) {
    std::vector<uint8_t>& all = static_cast<PdfJob*>(self)->bytes_;
    if (all.size() + size > PdfPrinters::kMaxDocumentBytes) return CAIRO_STATUS_WRITE_ERROR;
    all.insert(all.end(), bytes, bytes + size);
    return CAIRO_STATUS_SUCCESS;
  }

  PdfDestination& destination_;
  std::string title_;
  std::vector<uint8_t> bytes_;
  SurfacePtr pdf_;  // writes into bytes_ until its end
};

}  // namespace

bool PdfFolder::isReady() { return MakeFolder(folder_); }

bool PdfFolder::take(std::string_view title, std::span<const uint8_t> pdf) {
  PosixFileSystem files(folder_);
  const std::string wanted = FileNameOf(title);
  std::string name = wanted + ".pdf";
  for (int n = 2; files.exists(name) && n < 100000; ++n) name = wanted + "-" + std::to_string(n) + ".pdf";
  return files.replace(name, pdf);
}

PrinterInfo PdfPrinters::info() { return kA4; }

std::unique_ptr<PrintJob> PdfPrinters::start(std::string_view title) {
  if (++documents_ > kMaxDocuments || !destination_->isReady()) return nullptr;
  return std::make_unique<PdfJob>(*destination_, title);
}

}  // namespace vl

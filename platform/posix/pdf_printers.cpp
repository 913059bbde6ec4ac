#include "platform/posix/pdf_printers.h"

#include <zlib.h>

#include <cstdio>
#include <span>
#include <vector>

#include "platform/posix/posix_file_system.h"
#include "platform/posix/user_folder.h"
#include "platform/text/code_page.h"

namespace vl {
namespace {

constexpr int kDotsPerInch = 300;
constexpr int kPointsPerInch = 72;
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

class PdfJob final : public PrintJob {
 public:
  PdfJob(std::string folder, std::string_view title) : folder_(std::move(folder)), name_(FileNameOf(title)) {
    text_ = "%PDF-1.4\n";
  }

  bool page(const uint32_t* pixels, int width, int height) override {
    const size_t count = static_cast<size_t>(width) * static_cast<size_t>(height);
    std::vector<uint8_t> colours(count * 3);
    for (size_t i = 0; i < count; ++i) {
      colours[i * 3] = static_cast<uint8_t>(pixels[i] >> 16);
      colours[i * 3 + 1] = static_cast<uint8_t>(pixels[i] >> 8);
      colours[i * 3 + 2] = static_cast<uint8_t>(pixels[i]);
    }
    uLongf size = compressBound(static_cast<uLong>(colours.size()));
    std::string packed(size, '\0');
    constexpr int kFast = 1;
    if (compress2(reinterpret_cast<Bytef*>(packed.data()), &size, colours.data(), static_cast<uLong>(colours.size()),
                  kFast) != Z_OK) {
      return false;
    }
    packed.resize(size);
    if (text_.size() + packed.size() > PdfPrinters::kMaxDocumentBytes) return false;
    const std::string w = std::to_string(width * kPointsPerInch / kDotsPerInch);
    const std::string h = std::to_string(height * kPointsPerInch / kDotsPerInch);
    const int image = Add("<< /Type /XObject /Subtype /Image /Width " + std::to_string(width) + " /Height " +
                          std::to_string(height) + " /ColorSpace /DeviceRGB /BitsPerComponent 8 /Filter /FlateDecode" +
                          " /Length " + std::to_string(packed.size()) + " >>\nstream\n" + packed + "\nendstream");
    const std::string drawing = "q " + w + " 0 0 " + h + " 0 0 cm /P Do Q";
    const int content = Add("<< /Length " + std::to_string(drawing.size()) + " >>\nstream\n" + drawing + "\nendstream");
    pages_.push_back(Add("<< /Type /Page /Parent 1 0 R /MediaBox [0 0 " + w + " " + h +
                         "] /Resources << /XObject << /P " + Reference(image) + " >> >> /Contents " +
                         Reference(content) + " >>"));
    return true;
  }

  bool finish() override {
    std::string kids;
    for (const int page : pages_) kids += Reference(page) + " ";
    const int catalog = Add("<< /Type /Catalog /Pages 1 0 R >>");
    Put(0, "<< /Type /Pages /Count " + std::to_string(pages_.size()) + " /Kids [" + kids + "] >>");
    const size_t table = text_.size();
    text_ += "xref\n0 " + std::to_string(offsets_.size() + 1) + "\n0000000000 65535 f \n";
    for (const size_t offset : offsets_) {
      char line[32];
      std::snprintf(line, sizeof line, "%010zu 00000 n \n", offset);
      text_ += line;
    }
    text_ += "trailer\n<< /Size " + std::to_string(offsets_.size() + 1) + " /Root " + Reference(catalog) +
             " >>\nstartxref\n" + std::to_string(table) + "\n%%EOF\n";
    PosixFileSystem files(folder_);
    std::string name = name_ + ".pdf";
    for (int n = 2; files.exists(name) && n < 100000; ++n) name = name_ + "-" + std::to_string(n) + ".pdf";
    return files.replace(name, {reinterpret_cast<const uint8_t*>(text_.data()), text_.size()});
  }

 private:
  static std::string Reference(int object) { return std::to_string(object) + " 0 R"; }
  // The list of pages is object 1.
  int Add(const std::string& body) {
    offsets_.push_back(0);
    Put(offsets_.size() - 1, body);
    return static_cast<int>(offsets_.size());
  }
  void Put(size_t place, const std::string& body) {
    offsets_[place] = text_.size();
    text_ += std::to_string(place + 1) + " 0 obj\n" + body + "\nendobj\n";
  }

  std::string folder_;
  std::string name_;
  std::string text_;
  std::vector<size_t> offsets_{0};
  std::vector<int> pages_;
};

}  // namespace

PrinterInfo PdfPrinters::info() { return kA4; }

std::unique_ptr<PrintJob> PdfPrinters::start(std::string_view title) {
  if (++documents_ > kMaxDocuments || !MakeFolder(folder_)) return nullptr;
  return std::make_unique<PdfJob>(folder_, title);
}

}  // namespace vl

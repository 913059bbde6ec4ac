// Printer: a document of pages drawn on a surface.
#include <algorithm>

#include "gfx2d/script/font_class.h"
#include "gfx2d/script/gfx2d_classes.h"
#include "gfx2d/script/graphics.h"
#include "gfx2d/script/surface_class.h"
#include "gfx2d/surface_text.h"
#include "gfx2d/wrap_surface.h"
#include "interpreter/interpretor.h"
#include "platform/printers.h"

namespace vl {

namespace {

constexpr std::string_view kDefaultTitle = "Vorlane document";
constexpr int kLeftMargin = 8;  // pixels
constexpr uint32_t kTextFlags = kTextEditControl | kTextTabStop | kTextExpandTabs | kTextWordBreak;
constexpr Colour kWhite = 0xFFFFFF;

class CIPrinter : public CIBaseClassImpl, public CIFontContainer {
 public:
  explicit CIPrinter(CInterpretor& interpreter)
      : CIBaseClassImpl(interpreter, CLASS_PRINTER, Listing::Listed), CIFontContainer(interpreter) {}

  void Destroy(bool final) override {
    job_.reset();
    isInPage_ = false;
    ForgetSurface();
    CIBaseClassImpl::Destroy(final);
  }

  bool DependsOn(CIBaseClassImpl* target) override { return target == selector_ && target && MarkDependant(); }

  void InitDocument() {
    const CValue* title = nullptr;
    CIBaseClassImpl* selector = nullptr;
    for (int i = 0; i < interpreter.GetArgCount(); ++i) {
      const CValue& value = *interpreter.GetArg(i);
      if (value.type == VT_STRING && !title) {
        title = &value;
      } else if (value.IsObjectOfClass(CLASS_SELECTOR) && !selector) {
        selector = value.data.object;
      } else {
        interpreter.RaiseError(ERR_BAD_ARGUMENT);
      }
    }
    StartDocument(title ? title->StringView() : kDefaultTitle);
    if (job_ && depth_ == 1) selector_ = selector;
  }

  void NewPage() {
    if (job_) isInPage_ = true;
  }

  void EndPage() {
    if (!isInPage_) return;
    isInPage_ = false;
    cSurface page;
    if (!MakePage(page)) return;
    if (surface_) {
      surface_->surface.StretchBlit(page, 0, 0, info_.width, info_.height, 0, 0, surface_->width, surface_->height, 0);
    }
    SendPage(page);
  }

  void GetPrinterSurface() {
    interpreter.GetResult().SetInt(0);
    if (!job_) return;
    if (!surface_) {
      surface_ = CISurface::CreateAlone(interpreter, info_.width, info_.height, 0);
      if (!surface_) return;
      keptSurface_.SetObject(surface_);
    }
    interpreter.GetResult().SetObject(surface_);
  }

  // With a page open the document goes on.
  void SendDocument() {
    if (!job_ || isInPage_) return;
    if (--depth_ > 0) return;
    job_->finish();
    EndDocument();
  }

  void AbortDocument() {
    if (job_) EndDocument();
  }

  void GetScreenDotPerInchX() { Result(ScreenDots()); }
  void GetScreenDotPerInchY() { Result(ScreenDots()); }
  void GetPrinterDotPerInchX() { Result(job_ ? info_.dotsPerInchX : 0); }
  void GetPrinterDotPerInchY() { Result(job_ ? info_.dotsPerInchY : 0); }
  void GetPrinterWidth() { Result(job_ ? info_.width : 0); }
  void GetPrinterHeight() { Result(job_ ? info_.height : 0); }

  void PrintScreen() {
    CapturedPicture picture;
    auto* const screen = dynamic_cast<CScreen*>(interpreter.messages.get());
    if (isInPage_ || !screen || !screen->CaptureScreen(picture)) return;
    StartDocument(kDefaultTitle);
    PrintPicture(picture, info_.width, info_.height);
    SendDocument();
  }

  void Print() {
    std::string title(kDefaultTitle);
    if (!interpreter.IsArgDefault(0)) {
      if (interpreter.GetArg(0)->type != VT_STRING) interpreter.RaiseError(ERR_BAD_ARGUMENT);
      title = interpreter.GetArg(0)->StringView();
    }
    const CValue& value = *interpreter.GetArg(1);
    const bool isText = value.type == VT_STRING;
    const bool isSurface = value.IsObjectOfClass(CLASS_SURFACE);
    const bool isWindow = value.IsObjectOfClass(CLASS_WINDOW);
    if (!isText && !isSurface && !isWindow) interpreter.RaiseError(ERR_BAD_ARGUMENT);
    const int32_t scale = interpreter.IsArgDefault(2) ? 0 : interpreter.GetArgInt(2);
    if (isInPage_) return;
    StartDocument(title);
    if (!job_) return;
    if (isText) {
      PrintText(value.StringView());
    } else if (isSurface) {
      const auto& source = *static_cast<CISurface*>(value.data.object);
      cSurface page;
      const Size size = SizeOnPaper({source.width, source.height}, scale);
      if (MakePage(page) &&
          source.surface.StretchBlit(page, 0, 0, size.width, size.height, 0, 0, source.width, source.height, 0)) {
        SendPage(page);
      }
    } else {
      CapturedPicture picture;
      auto* const owner = dynamic_cast<CSurfaceOwner*>(value.data.object);
      if (owner && owner->CaptureClient(picture)) {
        const Size size = SizeOnPaper(picture.size, scale);
        PrintPicture(picture, size.width, size.height);
      }
    }
    SendDocument();
  }

 private:
  void Result(int32_t v) { interpreter.GetResult().SetInt(v); }
  int ScreenDots() { return interpreter.services.windows ? interpreter.services.windows->screen().dotsPerInch : 96; }

  // Documents may be started inside one another; only the first counts.
  void StartDocument(std::string_view title) {
    if (job_) {
      ++depth_;
      return;
    }
    Printers* const printers = interpreter.services.printers;
    job_ = printers ? printers->start(title) : nullptr;
    if (!job_) return;
    info_ = printers->info();
    depth_ = 1;
  }

  void EndDocument() {
    job_.reset();
    isInPage_ = false;
    depth_ = 0;
    selector_ = nullptr;
    ForgetSurface();
    interpreter.Collect();
  }

  void ForgetSurface() {
    surface_ = nullptr;
    keptSurface_.SetInt(0);
  }

  // The same size in inches, or the whole page.
  Size SizeOnPaper(Size size, int32_t scale) {
    if (scale != 0) return {info_.width, info_.height};
    const auto scaled = [&](int pixels, int dots) {
      return static_cast<int>(std::clamp<int64_t>(int64_t{pixels} * dots / ScreenDots(), 1, limits::kMaxSurfaceSide));
    };
    return {scaled(size.width, info_.dotsPerInchX), scaled(size.height, info_.dotsPerInchY)};
  }

  bool MakePage(cSurface& page) {
    const cSurfaceImpl* prototype = CGraphics::Of(interpreter).library.FindPrototype(32);
    return job_ && prototype && page.Create(info_.width, info_.height, prototype) &&
           page.Fill(0, 0, info_.width, info_.height, kWhite);
  }

  void SendPage(cSurface& page) {
    if (!page.impl->Lock()) return;
    std::vector<uint32_t> words(static_cast<size_t>(info_.width) * static_cast<size_t>(info_.height));
    for (int y = 0; y < info_.height; ++y) {
      const auto* line = reinterpret_cast<const uint32_t*>(page.impl->topLine + std::ptrdiff_t{page.impl->pitch} * y);
      std::transform(line, line + info_.width, words.begin() + std::ptrdiff_t{info_.width} * y,
                     [](uint32_t word) { return word & 0xFFFFFF; });
    }
    page.impl->Unlock();
    job_->page(words.data(), info_.width, info_.height);
  }

  void PrintPicture(CapturedPicture& picture, int width, int height) {
    auto* bytes = reinterpret_cast<uint8_t*>(picture.words.data());
    const cWrapSurface source(CGraphics::Of(interpreter).library, 32, picture.size.width, picture.size.height,
                              {bytes, picture.words.size() * sizeof(uint32_t)}, picture.size.width * 4, PaletteRef());
    cSurface page;
    if (source.depth == 0 || !MakePage(page)) return;
    source.StretchBlit(*page.impl, 0, 0, width, height, 0, 0, picture.size.width, picture.size.height, 0, kEffectNone,
                       0, false);
    SendPage(page);
  }

  void PrintText(std::string_view text) {
    cSurface page;
    if (!MakePage(page) || !interpreter.services.text) return;
    // As large on paper as on the screen.
    FontDescription description = font->description;
    description.height = static_cast<int>(int64_t{description.height} * info_.dotsPerInchY / ScreenDots());
    const auto paperFont = interpreter.services.text->openFont(description);
    if (!paperFont) return;
    Rect box{kLeftMargin, 0, info_.width, info_.height};
    TextPaint paint;
    paint.colour = TextColour(*page.impl, 0);
    DrawTextEx(page, *paperFont, text, box, kTextFlags, paint, TextMargins());
    SendPage(page);
  }

  std::unique_ptr<PrintJob> job_;  // of the document; null outside one
  PrinterInfo info_;
  int depth_ = 0;
  bool isInPage_ = false;
  CIBaseClassImpl* selector_ = nullptr;
  CISurface* surface_ = nullptr;
  CValue keptSurface_{&interpreter};  // holds the surface while the document is open
};

constexpr MemberRow kRows[] = {
    Row(1, "GetPrinterSurface", kMember<&CIPrinter::GetPrinterSurface>, "GetPrinterSurface(): of a page, or 0"),
    Row(2, "NewPage", kMember<&CIPrinter::NewPage>, "NewPage(): begins a page of the document"),
    Row(3, "EndPage", kMember<&CIPrinter::EndPage>, "EndPage(): the surface becomes the page"),
    Row(4, "InitDocument", kMember<&CIPrinter::InitDocument>, "InitDocument(selector, title): begins a document"),
    Row(5, "SendDocument", kMember<&CIPrinter::SendDocument>, "SendDocument(): prints it"),
    Row(6, "GetScreenDotPerInchX", kMember<&CIPrinter::GetScreenDotPerInchX>, "GetScreenDotPerInchX()"),
    Row(7, "GetScreenDotPerInchY", kMember<&CIPrinter::GetScreenDotPerInchY>, "GetScreenDotPerInchY()"),
    Row(8, "GetPrinterDotPerInchX", kMember<&CIPrinter::GetPrinterDotPerInchX>, "GetPrinterDotPerInchX()"),
    Row(9, "GetPrinterDotPerInchY", kMember<&CIPrinter::GetPrinterDotPerInchY>, "GetPrinterDotPerInchY()"),
    Row(10, "GetPrinterWidth", kMember<&CIPrinter::GetPrinterWidth>, "GetPrinterWidth(): pixels of a page"),
    Row(11, "GetPrinterHeight", kMember<&CIPrinter::GetPrinterHeight>, "GetPrinterHeight(): pixels of a page"),
    Row(12, "AbortDocument", kMember<&CIPrinter::AbortDocument>, "AbortDocument(): nothing is printed"),
    Row(13, "PrintScreen", kMember<&CIPrinter::PrintScreen>, "PrintScreen(): a page with the screen"),
    Row(14, "Print", kMember<&CIPrinter::Print>, "Print(title, value, scale): a text, Surface or Window on a page"),
};

}  // namespace

const ClassTable kPrinterClass = {CLASS_PRINTER, kRows, &CreateObject<CIPrinter>, "Documents on paper"};

}  // namespace vl

// Arbitrary bytes as the animation element of a bank, played as Animation and as Sprite by a program.
//
// The first byte picks the variant: bit 0 a compressed body, bit 1 a surface as target.
#include <cstdlib>

#include "fuzz/program_fuzz_support.h"
#include "gfx2d/images/image_reader.h"
#include "host/appfile/writer.h"

using namespace vl;

namespace {

constexpr uint64_t kTicks = 2000;
constexpr uint64_t kMaxTimeMs = 3000;

constexpr std::string_view kOnWindow = R"(
a = New Animation("film", 2, 3);
n = a.GetNFrames();
a.Play(Animation.LOOP_INFINITE);
Wait(120);
a.SetFrame(n - 1); a.NextFrame(); a.PrevFrame(); a.SetSpeedFactor(400);
Wait(60);
a.SetSize(20, 17);
a.Play(1, 0, Animation.REVERSE);
Wait(60);
s = New Sprite(10, 12, "film");
s.Play(); s.SetAngle(30);
Wait(120);
s.SetFrame(n); s.SetFrame(0);
Delete a;
Wait(60);
)";
constexpr std::string_view kOnSurface = R"(
t = New Surface(24, 20);
a = New Animation("film", t);
a.SetFrame(1); a.SetFrame(0); a.SetFrame(a.GetNFrames() - 1);
a.Play(2, 1);
Wait(200);
)";

TextEngine& Fonts() {
  static PosixFontFinder finder;
  static FreeTypeTextEngine engine(finder);
  return engine;
}

std::string ApplicationOf(std::string film, bool isCompressed, std::string_view source) {
  ApplicationModel model;
  model.version = kVersionNewest;
  model.settings.emplace();
  model.settings->hasClassTable = true;
  model.settings->classNames = AllClassNames();
  PartModel part;
  part.header.hasHeader = true;
  part.header.name = "fuzz";
  const auto addBank = [&](uint32_t type, const char* name, std::string body) {
    BankModel bank;
    bank.type = type;
    bank.name = name;
    bank.version = kBankVersion2;
    ElementModel element;
    element.name = type == kBankSource ? "main" : "film";
    element.body.form = isCompressed && type != kBankSource ? BodyModel::Form::Compressed : BodyModel::Form::Plain;
    element.body.bytes = std::move(body);
    bank.elements.push_back(std::move(element));
    part.banks.push_back(std::move(bank));
  };
  addBank(kBankSource, "source", std::string(source) + '\0');
  addBank(kBankAnimation, "films", std::move(film));
  model.parts.push_back(std::move(part));
  WrittenApplication written = WriteApplication(model, "fuzz.vlp");
  if (!written.error.empty()) std::abort();
  return std::move(written.files["fuzz.vlp"]);
}

// Larger pictures only cost time: turning a sprite as long as a surface may be takes seconds.
bool IsTooLarge(const uint8_t* data, size_t size) {
  constexpr int kMostSide = 512;
  const ImageFilterList filters;
  ImageReader reader(filters);
  CMemoryStream stream(data, uint32_t(size));
  if (reader.OpenStream(&stream)) return false;
  return reader.GetWidth() > kMostSide || reader.GetHeight() > kMostSide;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1 || IsTooLarge(data + 1, size - 1)) return 0;
  const std::string application = ApplicationOf(std::string(reinterpret_cast<const char*>(data + 1), size - 1),
                                                (data[0] & 1) != 0, (data[0] & 2) ? kOnSurface : kOnWindow);
  HeadlessOptions options;
  options.hostSize = {64, 48};
  options.maxTimeMs = kMaxTimeMs;
  options.text = &Fonts();
  HeadlessPlatform platform(options);
  MemoryFileSystem files;
  files.Add("fuzz.vlp", std::span(reinterpret_cast<const uint8_t*>(application.data()), application.size()));
  Services services = platform.services();
  services.files = &files;
  CThreadParam param;
  param.path = "fuzz.vlp";
  CInterpretor interpreter(param, services, PlayerClasses());
  if (!interpreter.Init()) return 0;
  interpreter.tickLimit = kTicks;
  interpreter.Start();
  return 0;
}

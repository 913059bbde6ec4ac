// Opens arbitrary bytes as an application, uses everything in it, reads its model and writes that again.
//
// The first byte picks the variant: bit 0 design mode, bits 1 to 3 an offset to start at. The application can name
// itself as an external file ("a.vlp") and a copy of its second half ("b.vlb").
#include <algorithm>
#include <cstdlib>
#include <memory>

#include "host/appfile/model_reader.h"
#include "host/appfile/writer.h"
#include "platform/memory_files.h"

namespace {

using namespace vl;

constexpr uint64_t kModelBytes = 16u << 20;

void Require(bool condition) {
  if (!condition) std::abort();
}

void UseElement(CAppFile& app, CBank& bank, uint32_t index) {
  CElement& element = *bank.elements[index];
  for (const uint32_t option : {0u, 1u}) {
    if (const auto stream = element.OpenStream(option)) {
      char line[80];
      while (stream->ReadLine(line, sizeof line)) {
      }
    }
  }
  bank.Load(index);
  bank.Lock(index);
  if (bank.type == kBankImage) {
    const auto& image = static_cast<const CImageElement&>(element);
    ByteBlock block;
    if (image.pixels.rawSize < kModelBytes) image.Unpack(image.pixels, &block);
    if (image.mask.rawSize < kModelBytes) image.Unpack(image.mask, &block);
    StoredPalette record;
    static_cast<CImageBank&>(bank).ReadPalette(static_cast<uint32_t>(image.paletteIndex), &record);
  } else if (bank.type == kBankString) {
    static_cast<const CStringElement&>(element).GetText();
  }
  bank.Unlock(index);
  Require(app.GetElementByPath(element.GetPath()) != nullptr);
  bank.Unload(index);
}

void Use(CAppFile& app) {
  uint32_t used = 0;
  for (const auto& part : app.parts) {
    app.SetCurrentPart(part.get());
    Require(app.GetPartByName(part->name) != nullptr);
    for (const auto& bank : part->banks) {
      Require(app.GetBankByPath(bank->GetPath()) != nullptr);
      for (uint32_t i = 0; i < bank->elements.size() && used < 200; ++i) {
        if (!bank->elements[i]) continue;
        UseElement(app, *bank, i);
        ++used;
      }
      if (!bank->elements.empty()) bank->DeleteElement(static_cast<uint32_t>(bank->elements.size() - 1));
    }
  }
  app.SetCurrentPart(nullptr);
}

ModelResult Read(std::string_view path, FileSystem& files) {
  MemoryBudget budget(kModelBytes);
  CAppFile app(&budget);
  ModelResult result;
  result.status = app.Open({}, path, files, true);
  return result.status ? result : ReadModel(app, kModelBytes);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const std::span<const uint8_t> bytes(data + 1, size - 1);
  MemoryFileSystem files;
  files.Add("a.vlp", bytes);
  files.Add("b.vlb", bytes.subspan(bytes.size() / 2));
  MemoryBudget budget(64u << 20);
  {
    CAppFile app(&budget);
    app.Open("fuzz", "a.vlp", files, data[0] & 1, data[0] >> 1 & 7);
    app.CollectSources(true);
    Use(app);
  }
  Require(budget.Used() == 0);

  const ModelResult model = Read("a.vlp", files);
  if (model.status) return 0;
  const WrittenApplication written = WriteApplication(model.model, "a.vlp");
  if (!written.error.empty()) {
    // A part or bank may name the application, or claim another's file; whatever else is read can be written.
    Require(written.error.find("of the application itself") != std::string::npos ||
            written.error.find("in one file") != std::string::npos);
    return 0;
  }
  MemoryFileSystem again;
  for (const auto& [name, content] : written.files) again.Add(name, content);
  const ModelResult second = Read("a.vlp", again);
  Require(second.status == kAppOk || second.status == kAppNotRecognised || second.status == kAppOutOfMemory);
  if (second.status) return 0;
  if (model.problems.empty()) Require(second.problems.empty() && second.model == model.model);
  Require(WriteApplication(second.model, "a.vlp").files == written.files || !model.problems.empty());
  return 0;
}

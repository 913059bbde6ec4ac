#include <utility>

#include "host/appfile/errors.h"
#include "host/appfile/writer.h"
#include "tools/project/code_page.h"
#include "tools/project/default_palette.h"
#include "tools/project/project.h"

namespace vl {

PackedProject PackProject(const std::filesystem::path& folder) {
  LoadedProject project = LoadProject(folder);
  PackedProject packed;
  packed.inputs = std::move(project.inputs);
  packed.error = std::move(project.error);
  if (!packed.error.empty()) return packed;
  WrittenApplication written = WriteApplication(project.model, project.output);
  packed.mainName = std::move(project.output);
  packed.files = std::move(written.files);
  if (!written.error.empty()) packed.error = (folder / kManifestName).string() + ": " + written.error;
  return packed;
}

bool SourceFromFile(std::string_view text, std::string_view fileName, std::string* bytes, std::string* error) {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  CodePageText converted = CodePageFromUtf8(text.starts_with(kMark) ? text.substr(kMark.size()) : text);
  if (!converted.validUtf8) {
    bytes->assign(text);
    return true;
  }
  if (converted.unknownAt) {
    const size_t at = *converted.unknownAt + (text.starts_with(kMark) ? kMark.size() : 0);
    TextPosition place = PositionOf(text, at);
    if (text.starts_with(kMark) && place.line == 1) --place.column;
    *error = std::string(fileName) + ":" + std::to_string(place.line) + ":" + std::to_string(place.column) +
             ": a character that code page 1252 doesn't have (programs and texts are 8 bits a character)";
    return false;
  }
  *bytes = std::move(converted.bytes);
  return true;
}

std::string SingleSourceApplication(std::string_view text, std::string_view fileName, std::string* error) {
  std::string ignored;
  if (!error) error = &ignored;
  error->clear();
  ElementModel element;
  if (!SourceFromFile(text, fileName, &element.body.bytes, error)) return {};
  const std::string stem = std::filesystem::path(fileName).stem().string();
  const CodePageText name = CodePageFromUtf8(stem);
  element.name = name.validUtf8 && !name.unknownAt ? name.bytes : stem;
  if (element.name.empty()) element.name = "main";
  ApplicationModel model;
  model.version = kVersionNewest;
  model.settings.emplace();
  model.settings->hasClassTable = true;
  model.settings->classNames = AllClassNames();
  PartModel part;
  part.header.hasHeader = true;
  part.header.name = element.name;
  part.header.palette = DefaultPartPalette();
  BankModel bank;
  bank.type = kBankSource;
  bank.name = "source";
  bank.version = kBankVersion2;
  bank.elements.push_back(std::move(element));
  part.banks.push_back(std::move(bank));
  model.parts.push_back(std::move(part));
  WrittenApplication written = WriteApplication(model, "main");
  *error = std::move(written.error);
  return error->empty() ? std::move(written.files["main"]) : std::string();
}

std::string_view BankTypeWord(uint32_t type) {
  constexpr std::string_view kWords[] = {"source", "image", "animation", "sound", "music", "string", "3d", "binary"};
  return type < std::size(kWords) ? kWords[type] : std::string_view();
}

}  // namespace vl

#include <algorithm>
#include <set>
#include <system_error>

#include "host/appfile/app_part.h"
#include "host/appfile/errors.h"
#include "host/appfile/model_reader.h"
#include "tools/project/code_page.h"
#include "tools/project/default_palette.h"
#include "tools/project/disk_files.h"
#include "tools/project/file_kind.h"
#include "tools/project/project.h"

namespace vl {

namespace {

namespace fs = std::filesystem;

constexpr size_t kMaxNameInPath = 60;

// A TOML basic string of bytes of code page 1252.
std::string Quote(std::string_view bytes) {
  constexpr char kHex[] = "0123456789ABCDEF";
  std::string out = "\"";
  for (size_t i = 0; i < bytes.size(); ++i) {
    const auto b = static_cast<uint8_t>(bytes[i]);
    // Bytes that stand for no character are told by their number, as control characters are.
    const bool open = b == 0x81 || b == 0x8D || b == 0x8F || b == 0x90 || b == 0x9D;
    if (b == '"' || b == '\\') {
      out.append(1, '\\').append(1, bytes[i]);
    } else if (b == '\n' || b == '\r' || b == '\t') {
      out.append(1, '\\').append(1, b == '\n' ? 'n' : b == '\r' ? 'r' : 't');
    } else if (b < 0x20 || b == 0x7F || open) {
      out.append("\\u00").append(1, kHex[b >> 4]).append(1, kHex[b & 15]);
    } else {
      out += Utf8FromCodePage(bytes.substr(i, 1));
    }
  }
  return out + '"';
}

std::string Hex(uint32_t value) {
  constexpr char kHex[] = "0123456789ABCDEF";
  std::string digits;
  do {
    digits.insert(digits.begin(), kHex[value & 15]);
    value >>= 4;
  } while (value);
  return "0x" + digits;
}

std::string_view Word(bool value) { return value ? "true" : "false"; }

class Extractor {
 public:
  Extractor(const ApplicationModel& model, const fs::path& folder) : model_(model), folder_(folder) {}

  ExtractResult Run(const fs::path& application) {
    std::string name = application.filename().string();
    Line("name", Quote(model_.parts.empty() ? std::string_view("application") : model_.parts[0].header.name));
    const CodePageText output = CodePageFromUtf8(name);
    if (output.validUtf8 && !output.unknownAt) Line("output", Quote(output.bytes));
    Application();
    if (result_.error.empty()) Write(fs::path(kManifestName), toml_);
    return std::move(result_);
  }

 private:
  void Write(const fs::path& relative, std::string_view bytes) {
    if (!result_.error.empty()) return;
    const fs::path path = folder_ / relative;
    if (WriteDiskFile(path, bytes)) {
      ++result_.files;
    } else {
      result_.error = path.string() + ": the file can't be written";
    }
  }

  void Line(std::string_view key, std::string_view value) {
    toml_.append(key).append(" = ").append(value).append("\n");
  }
  void Number(std::string_view key, int64_t value, int64_t normal) {
    if (value != normal) Line(key, std::to_string(value));
  }

  // A name for a path: plain characters, and never one that was used before, whatever the case.
  std::string Unique(const std::string& directory, std::string_view name, std::string_view extension) {
    std::string plain;
    for (const char c : name.substr(0, kMaxNameInPath)) {
      const bool keep =
          (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '-' || c == '_';
      plain += keep ? c : '_';
    }
    if (plain.empty()) plain = "unnamed";
    for (int n = 1;; ++n) {
      std::string candidate = directory + plain + (n > 1 ? "-" + std::to_string(n) : "");
      candidate += extension;
      std::string key = candidate;
      std::transform(key.begin(), key.end(), key.begin(), [](unsigned char c) { return std::tolower(c); });
      if (used_.insert(key).second) return candidate;
    }
  }

  // Writes a file and gives its name, for a line.
  std::string File(const std::string& directory, std::string_view name, std::string_view extension,
                   std::string_view bytes) {
    const std::string path = Unique(directory, name, extension);
    Write(fs::path(path), bytes);
    return path;
  }

  void Application() {
    if (!model_.version) {
      Line("version", "\"none\"");
    } else if (*model_.version >= kVersionReleaseFlags2 && *model_.version <= kVersionNewest) {
      Line("version", std::to_string(*model_.version - kVersionReleaseFlags2));
    } else {
      Line("versionWord", Hex(*model_.version));
    }
    if (!model_.settings) {
      Line("settings", "false");
    } else {
      const AppSettings& s = *model_.settings;
      Number("settingsWord", s.firstWord, 0);
      Number("applicationKind", s.applicationKind, 1);
      if (s.tableCompressed) Line("compressClasses", "true");
      if (s.hasClassTable && s.classNames != AllClassNames()) {
        std::string list = "[";
        for (size_t i = 0; i < s.classNames.size(); ++i) list.append(i ? ", " : "").append(Quote(s.classNames[i]));
        Line("classes", list + "]");
      }
    }
    if (model_.signature) Line("signature", Quote(File("chunks/", "signature", ".bin", *model_.signature)));
    if (model_.parts.empty()) Line("part", "[]");
    Chunks(model_.unknownChunks, "chunk");
    for (const PartModel& part : model_.parts) Part(part);
  }

  void Chunks(const std::vector<UnknownChunk>& chunks, std::string_view key) {
    for (const UnknownChunk& chunk : chunks) {
      toml_.append("\n[[").append(key).append("]]\n");
      Line("id", Hex(chunk.id));
      if (!chunk.bytes.empty()) Line("file", Quote(File("chunks/", Hex(chunk.id), ".bin", chunk.bytes)));
    }
  }

  void Part(const PartModel& part) {
    const PartHeader& h = part.header;
    toml_ += "\n[[part]]\n";
    if (h.hasHeader || !h.name.empty()) Line("name", Quote(h.name));
    if (!h.hasHeader) Line("header", "false");
    if (part.kind == CAppPart::kDesign) Line("kind", "\"design\"");
    if (!part.externalFile.empty()) Line("file", Quote(part.externalFile));
    if (part.versionLow) Line("versionLow", std::to_string(*part.versionLow));
    Number("flags", h.flags, 0);
    const std::string directory = model_.parts.size() > 1 ? Unique("", h.name, "") + "/" : "";
    if (h.hasHeader && h.palette != DefaultPartPalette()) {
      const std::string_view palette(reinterpret_cast<const char*>(h.palette.data()), h.palette.size());
      Line("palette", Quote(File(directory, "palette", ".bin", palette)));
    }
    if (!h.initSource.empty()) {
      Line("initSourceFile", Quote(File(directory, "init", ".vlq", Utf8FromCodePage(h.initSource))));
    }
    Number("reserved", h.reserved, 0);
    Number("gameInputReserved", h.gameInputReserved, 0);
    Number("gameInputUsed", h.gameInputUsed, 0);
    Number("gameInputPlayer", h.gameInputPlayer, 0);
    if (!h.gameInputData.empty()) Line("gameInputData", Quote(File(directory, "gameinput", ".txt", h.gameInputData)));
    Number("speedPercent", h.speedPercent, 100);
    if (h.backColor != 0xFFFFFF) Line("backColor", Hex(h.backColor));
    Number("releaseFlag", h.releaseFlag, 1);
    Number("sound3D", h.sound3D, 1);
    Number("releaseFlags", h.releaseFlags, 1);
    Number("releaseFlags2", h.releaseFlags2, 1);
    const uint32_t version = model_.PartVersion(part);
    const bool buffers = !h.initSource.empty() || !h.gameInputData.empty();
    if (h.buffersCompressed != (buffers && version >= kVersionOwnChunks)) {
      Line("compressBuffers", Word(h.buffersCompressed));
    }
    const auto isSource = [](const BankModel& bank) { return bank.type == kBankSource; };
    if (std::none_of(part.banks.begin(), part.banks.end(), isSource)) Line("sources", "false");
    Chunks(part.unknownChunks, "part.chunk");
    for (const BankModel& bank : part.banks) Bank(bank, directory, version);
  }

  void Bank(const BankModel& bank, const std::string& partDirectory, uint32_t partVersion) {
    toml_ += "\n[[part.bank]]\n";
    const std::string_view word = BankTypeWord(bank.type);
    Line("type", word.empty() ? std::to_string(bank.type) : "\"" + std::string(word) + "\"");
    Line("name", Quote(bank.name));
    const uint32_t usual = partVersion >= kVersionBankVersion ? kBankVersion2 : kBankVersion1;
    if (bank.version == kBankVersion1 || bank.version == kBankVersion2) {
      if (bank.version != usual) Line("version", std::to_string(bank.version - kBankVersion1 + 1));
    } else {
      Line("versionWord", Hex(bank.version));
    }
    if (!bank.externalFile.empty()) Line("file", Quote(bank.externalFile));
    const std::string directory = Unique(partDirectory, bank.name, "") + "/";
    if (bank.palettes) {
      std::string bytes;
      for (const StoredPalette& record : *bank.palettes) bytes.append(record.begin(), record.end());
      Line("palettes", Quote(File(directory, "palettes", ".bin", bytes)));
    }
    if (bank.elements.empty()) return;
    toml_ += "elements = [\n";
    for (const ElementModel& element : bank.elements) toml_ += "  { " + Element(bank, element, directory) + " },\n";
    toml_ += "]\n";
  }

  std::string Element(const BankModel& bank, const ElementModel& element, const std::string& directory) {
    if (element.empty) return "empty = true";
    std::string out = "name = " + Quote(element.name);
    const auto add = [&](std::string_view key, std::string_view value) {
      out.append(", ").append(key).append(" = ").append(value);
    };
    const auto number = [&](std::string_view key, int64_t value) {
      if (value) add(key, std::to_string(value));
    };
    const auto file = [&](std::string_view key, std::string_view extension, std::string_view bytes) {
      add(key, Quote(File(directory, element.name, extension, bytes)));
    };
    if (!element.group.empty()) add("group", Quote(element.group));
    if (bank.type == kBankImage) {
      number("hotX", static_cast<int16_t>(element.hotX));
      number("hotY", static_cast<int16_t>(element.hotY));
      const ImageModel& image = element.image;
      if (image.paletteIndex != -1) add("paletteIndex", std::to_string(image.paletteIndex));
      add("width", std::to_string(image.width));
      add("height", std::to_string(image.height));
      add("depth", std::to_string(image.depth));
      number("flags", image.flags);
      if (image.marker == CImageElement::kImageFile) {
        file("file", ExtensionFor(bank.type, image.file), image.file);
        return out;
      }
      number("marker", image.marker);
      file("pixels", ".pixels", image.pixels.bytes);
      if (image.pixels.packed) add("pixelsPacked", "true");
      if (bank.version > kBankVersion1 && (image.flags & CImageElement::kFlagMask)) {
        file("mask", ".mask", image.mask.bytes);
        if (image.mask.packed) add("maskPacked", "true");
      }
      return out;
    }
    if (bank.type == kBankAnimation && bank.version >= kBankVersion2) {
      number("hotX", element.hotX);
      number("hotY", element.hotY);
    }
    const BodyModel& body = element.body;
    std::string_view bytes = body.bytes;
    const bool damaged = body.form == BodyModel::Form::Damaged;
    if (damaged) {
      add("damagedSize", std::to_string(body.claimedSize));
      if (bank.type == kBankString || bank.type == kBankSource) add("encoding", "\"raw\"");
    }
    if (bank.type == kBankString) {
      const bool nul = bytes.ends_with('\0');
      if (nul) bytes.remove_suffix(1);
      if (!nul) add("nul", "false");
    }
    if (!bytes.empty()) {
      const bool text = !damaged && (bank.type == kBankString || bank.type == kBankSource);
      file("file", damaged ? ".damaged" : ExtensionFor(bank.type, bytes), text ? Utf8FromCodePage(bytes) : bytes);
    }
    // Always told: what isn't is compressed where it helps.
    if (!damaged && !body.bytes.empty()) add("compress", Word(body.form == BodyModel::Form::Compressed));
    return out;
  }

  const ApplicationModel& model_;
  fs::path folder_;
  std::string toml_;
  std::set<std::string> used_{std::string(kManifestName)};
  ExtractResult result_;
};

}  // namespace

ExtractResult ExtractApplication(const fs::path& application, const fs::path& outFolder) {
  ExtractResult result;
  std::error_code error;
  if (fs::exists(outFolder, error) && !(fs::is_directory(outFolder, error) && fs::is_empty(outFolder, error))) {
    result.error = outFolder.string() + ": the folder must be new or empty";
    return result;
  }
  try {
    DiskFiles files(application.parent_path());
    ModelResult read = ReadModel(application.filename().string(), files);
    if (read.status) {
      result.error = application.string() + ": " + std::string(StatusText(read.status));
      return result;
    }
    result = Extractor(read.model, outFolder).Run(application);
    for (std::string& problem : read.problems) result.problems.push_back(Utf8FromCodePage(problem));
  } catch (const std::exception& e) {
    result.error = application.string() + ": " + e.what();
  }
  return result;
}

}  // namespace vl

#include <cstdio>
#include <nlohmann/json.hpp>

#include "host/appfile/app_file.h"
#include "tools/project/code_page.h"
#include "tools/project/disk_files.h"
#include "tools/project/project.h"

namespace vl {

namespace {

using Json = nlohmann::ordered_json;

std::string Hex(uint32_t value) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%X", static_cast<unsigned>(value));
  return text;
}

std::string_view ChunkName(uint32_t id) {
  switch (id) {
    case kChunkPartHeader:
      return "part header";
    case kChunkSignature:
      return "release signature";
    case kChunkBank:
      return "bank";
    case kChunkPart:
      return "application part";
    case kChunkSettings:
      return "settings";
    case kChunkVersion:
      return "version";
    case kChunkInitSource:
      return "init source";
    case kChunkGameInput:
      return "game input";
    case kChunkDesignPart:
      return "design part";
    default:
      return "unknown";
  }
}

Json Chunks(const std::vector<ChunkRecord>& records) {
  Json list = Json::array();
  for (const ChunkRecord& chunk : records) {
    list.push_back({{"offset", chunk.position}, {"id", chunk.id}, {"name", ChunkName(chunk.id)}, {"size", chunk.size}});
  }
  return list;
}

Json Element(CBank& bank, uint32_t index) {
  const CElement* element = bank.elements[index].get();
  if (!element) return {{"empty", true}};
  const int64_t position = bank.positions[index];
  Json json = {{"name", Utf8FromCodePage(element->name)}};
  if (!element->group.empty()) json["group"] = Utf8FromCodePage(element->group);
  json["path"] = Utf8FromCodePage(element->GetPath());
  json["offset"] = position;
  CFileStream stream(bank.file);
  stream.Seek(position);
  if (bank.type != kBankImage) {
    if (bank.type == kBankAnimation && bank.version >= kBankVersion2) {
      const auto& animation = static_cast<const CAnimElement&>(*element);
      json["hotSpot"] = {animation.hotX, animation.hotY};
    }
    BufferSizes sizes;
    uint32_t status = stream.ReadDwordLE(&sizes.size);
    if (!status) status = stream.ReadDwordLE(&sizes.compressedSize);
    json["size"] = sizes.size;
    json["compressedSize"] = sizes.compressedSize;
    if (status || (sizes.size && sizes.StoredSize() > stream.Remaining())) json["damaged"] = true;
    return json;
  }
  uint16_t x = 0, y = 0, marker = 0, width = 0, height = 0, depth = 0;
  uint32_t palette = 0;
  uint32_t status = stream.ReadWordLE(&x);
  if (!status) status = stream.ReadWordLE(&y);
  if (!status) status = stream.ReadDwordLE(&palette);
  for (uint16_t* field : {&marker, &width, &height, &depth}) {
    if (!status) status = stream.ReadWordLE(field);
  }
  if (status) {
    json["damaged"] = true;
    return json;
  }
  json["form"] = marker == CImageElement::kImageFile ? "image file" : "stored pixels";
  json["width"] = width;
  json["height"] = height;
  json["depth"] = depth;
  json["hotSpot"] = {static_cast<int16_t>(x), static_cast<int16_t>(y)};
  json["palette"] = static_cast<int32_t>(palette);
  return json;
}

Json Bank(CBank& bank) {
  Json json = {{"type", bank.type},
               {"kind", BankTypeWord(bank.type).empty() ? "other" : BankTypeWord(bank.type)},
               {"name", Utf8FromCodePage(bank.name)},
               {"path", Utf8FromCodePage(bank.GetPath())},
               {"version", bank.version}};
  if (!bank.externalName.empty()) json["file"] = Utf8FromCodePage(bank.externalName);
  if (bank.type == kBankImage) json["palettes"] = static_cast<CImageBank&>(bank).tableCount;
  Json elements = Json::array();
  for (uint32_t i = 0; i < bank.elements.size(); ++i) elements.push_back(Element(bank, i));
  json["elements"] = std::move(elements);
  return json;
}

Json Part(const CAppPart& part) {
  Json json = {{"name", Utf8FromCodePage(part.name)},
               {"kind", part.kind == CAppPart::kDesign ? "design" : "normal"},
               {"version", part.version},
               {"flags", part.flags},
               {"speedPercent", part.speedPercent},
               {"backColor", part.backColor},
               {"releaseFlag", part.releaseFlag},
               {"sound3D", part.sound3D},
               {"initSourceBytes", part.initSource.size()},
               {"gameInputUsed", part.gameInputUsed != 0}};
  if (!part.externalName.empty()) json["file"] = Utf8FromCodePage(part.externalName);
  json["chunks"] = Chunks(part.chunks);
  Json banks = Json::array();
  for (const auto& bank : part.banks) banks.push_back(Bank(*bank));
  json["banks"] = std::move(banks);
  return json;
}

// The text is made from the JSON, so that both tell the same.
class TextWriter {
 public:
  std::string Write(const Json& app) {
    Add("file            ", Str(app["file"]), "\n");
    Add("status          ", Str(app["statusText"]), "\n");
    Add("version         ", Hex(app["version"]), "\n");
    Add("kind            ", Num(app["applicationKind"]), "\n");
    Add("classes         ", Num(Json(app["classes"].size())), app["classTable"] ? "" : " (no class table: all)", "\n");
    if (app["classTable"]) {
      out_ += "  ";
      for (const Json& name : app["classes"]) Add(Str(name), " ");
      out_ += "\n";
    }
    ChunkList(app["chunks"], "");
    for (const Json& part : app["parts"]) WritePart(part);
    return std::move(out_);
  }

 private:
  template <class... Pieces>
  void Add(const Pieces&... pieces) {
    (out_.append(pieces), ...);
  }
  static std::string Str(const Json& json) { return Printable(json.get<std::string>()); }
  static std::string Num(const Json& json) { return json.dump(); }
  // Names come from the file; a terminal must not obey them.
  static std::string Printable(std::string_view text) {
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
      const auto c = static_cast<uint8_t>(text[i]);
      const bool c1 = c == 0xC2 && i + 1 < text.size() && static_cast<uint8_t>(text[i + 1]) < 0xA0;
      if (c < 0x20 || c == 0x7F || c1) {
        out += '?';
        i += c1;
      } else {
        out += text[i];
      }
    }
    return out;
  }

  void ChunkList(const Json& chunks, std::string_view indent) {
    Add(indent, "chunks\n");
    for (const Json& chunk : chunks) {
      char line[96];
      std::snprintf(line, sizeof line, "  %10lld  0x%04X  %10u  ", chunk["offset"].get<long long>(),
                    chunk["id"].get<unsigned>(), chunk["size"].get<unsigned>());
      Add(indent, line, Str(chunk["name"]), "\n");
    }
  }

  void WritePart(const Json& part) {
    Add("\npart ", Str(part["name"]), part.contains("file") ? "  in " + Str(part["file"]) : "",
        part["kind"] == "design" ? "  (design)" : "", "\n");
    Add("  version ", Hex(part["version"]), ", speed ", Num(part["speedPercent"]), "%, background ",
        Hex(part["backColor"]), part["releaseFlag"] != 0 ? ", release" : ", debug", "\n");
    if (part["initSourceBytes"] != 0) Add("  init source ", Num(part["initSourceBytes"]), " bytes\n");
    if (part["gameInputUsed"]) Add("  starts with a GameInput object\n");
    ChunkList(part["chunks"], "  ");
    for (const Json& bank : part["banks"]) {
      Add("  bank ", Str(bank["name"]), "  ", Str(bank["kind"]), " (", Num(bank["type"]), "), version ",
          Hex(bank["version"]), bank.contains("file") ? ", in " + Str(bank["file"]) : "",
          bank.contains("palettes") ? ", palettes " + Num(bank["palettes"]) : "", "\n");
      size_t index = 0;
      for (const Json& element : bank["elements"]) WriteElement(index++, element);
    }
  }

  void WriteElement(size_t index, const Json& element) {
    Add("    ", std::to_string(index), "  ");
    if (element.contains("empty")) return Add("(empty)\n");
    Add(element.contains("group") ? Str(element["group"]) + "/" : "", Str(element["name"]));
    if (element.contains("width")) {
      Add("  ", Num(element["width"]), " x ", Num(element["height"]), " x ", Num(element["depth"]), ", ",
          Str(element["form"]));
    } else if (element.contains("size")) {
      Add("  ", Num(element["size"]), " bytes");
      if (element["compressedSize"] != 0) Add(", packed ", Num(element["compressedSize"]));
    }
    if (element.contains("hotSpot")) Add(", hot spot ", Num(element["hotSpot"][0]), " ", Num(element["hotSpot"][1]));
    Add(element.contains("damaged") ? ", damaged\n" : "\n");
  }

  std::string out_;
};

}  // namespace

Description DescribeApplication(const std::filesystem::path& application) {
  Description result;
  try {
    DiskFiles files(application.parent_path());
    CAppFile app;
    result.status = app.Open({}, application.filename().string(), files, true);
    if (!app.file) {
      result.error = application.string() + ": " + std::string(StatusText(result.status));
      return result;
    }
    Json json = {{"file", application.string()},
                 {"status", result.status},
                 {"statusText", StatusText(result.status)},
                 {"version", app.version},
                 {"applicationKind", app.applicationKind},
                 {"classTable", app.hasClassTable}};
    Json classes = Json::array();
    for (const std::string& name : app.classNames) classes.push_back(Utf8FromCodePage(name));
    json["classes"] = std::move(classes);
    json["chunks"] = Chunks(app.chunks);
    Json parts = Json::array();
    for (const auto& part : app.parts) parts.push_back(Part(*part));
    json["parts"] = std::move(parts);
    result.text = TextWriter().Write(json);
    result.json = json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
  } catch (const std::exception& e) {
    result.error = application.string() + ": " + e.what();
  }
  return result;
}

}  // namespace vl

#include <algorithm>
#include <charconv>
#include <set>
#include <system_error>
#include <utility>

#include "host/appfile/app_part.h"
#include "host/appfile/compressed_buffer.h"
#include "tools/project/code_page.h"
#include "tools/project/default_palette.h"
#include "tools/project/disk_files.h"
#include "tools/project/file_kind.h"
#include "tools/project/manifest_table.h"
#include "tools/project/pictures.h"
#include "tools/project/project.h"

namespace vl {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kSourceExtension = ".vlq";
constexpr std::string_view kMainSource = "main.vlq";

bool MatchesPattern(std::string_view name, std::string_view pattern) {
  size_t n = 0;
  size_t p = 0;
  size_t star = std::string_view::npos;
  size_t starName = 0;
  while (n < name.size()) {
    if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == name[n])) {
      ++n, ++p;
    } else if (p < pattern.size() && pattern[p] == '*') {
      star = p++;
      starName = n;
    } else if (star != std::string_view::npos) {
      p = star + 1;
      n = ++starName;
    } else {
      return false;
    }
  }
  while (p < pattern.size() && pattern[p] == '*') ++p;
  return p == pattern.size();
}

// Sounds and music play from the file when they are plain, and animations are packed in themselves.
bool CompressedByDefault(uint32_t bankType) {
  return bankType != kBankSound && bankType != kBankMusic && bankType != kBankAnimation;
}

std::string FileNameFor(std::string_view name) {
  std::string file;
  for (const char c : name) {
    const bool plain = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || c == '-' || c == '_';
    const bool upper = c >= 'A' && c <= 'Z';
    if (plain || upper) file += static_cast<char>(upper ? c | 0x20 : c);
    if (c == ' ' && !file.empty() && file.back() != '-') file += '-';
  }
  return (file.empty() ? "application" : file) + ".vlp";
}

class ProjectLoader {
 public:
  explicit ProjectLoader(const fs::path& folder) : folder_(folder), manifest_(folder / kManifestName) {}

  LoadedProject Run() {
    try {
      std::string text = ReadInput(manifest_, nullptr);
      const toml::table root = toml::parse(text, manifest_.string());
      Application(root);
    } catch (const toml::parse_error& e) {
      try {
        FaultAt(manifest_, e.source(), std::string(e.description()));
      } catch (const ProjectFault& fault) {
        result_.error = fault.text;
      }
    } catch (const ProjectFault& fault) {
      result_.error = fault.text;
    } catch (const std::exception& e) {
      result_.error = manifest_.string() + ": " + e.what();
    }
    return std::move(result_);
  }

 private:
  ApplicationModel& Model() { return result_.model; }

  // `node` is what names the file in the manifest.
  std::string ReadInput(const fs::path& path, const toml::node* node) {
    result_.inputs.push_back(path);
    std::string bytes;
    if (ReadDiskFile(path, &bytes)) return bytes;
    if (!node) throw ProjectFault{path.string() + ": the file can't be read"};
    FaultAt(manifest_, node->source(), "the file " + path.string() + " can't be read");
  }

  std::string ReadNamed(ManifestTable& table, std::string_view key, const fs::path& folder) {
    const auto name = table.RawText(key);
    return name ? ReadInput(folder / *name, table.Table().get(key)) : std::string();
  }

  // A text file in the encoding that the manifest tells.
  std::string ReadTextFile(const fs::path& path, const toml::node* node, bool raw) {
    std::string text = ReadInput(path, node);
    if (raw) return text;
    std::string bytes;
    std::string error;
    if (!SourceFromFile(text, path.string(), &bytes, &error)) throw ProjectFault{error};
    return bytes;
  }

  bool IsRaw(ManifestTable& table, bool inherited) {
    const auto encoding = table.RawText("encoding");
    if (!encoding) return inherited;
    if (*encoding == "raw") return true;
    if (*encoding != "auto") table.Fault("encoding", "'encoding' must be \"auto\" or \"raw\"");
    return false;
  }

  void Application(const toml::table& root) {
    ManifestTable table(manifest_, root);
    const auto name = table.Text("name");
    if (!name) table.Fault("name", "a project needs a name", "write name = \"My program\"");
    result_.name = *name;
    result_.output = table.RawText("output").value_or(FileNameFor(*name));
    if (result_.output.empty() || result_.output.find_first_of("/\\") != std::string::npos) {
      table.Fault("output", "'output' must be a plain file name");
    }
    Version(table);
    raw_ = IsRaw(table, false);
    compress_ = table.Bool("compress");
    Settings(table);
    if (table.Has("signature")) {
      Model().signature = ReadNamed(table, "signature", folder_);
    } else {
      table.Find("signature");
    }
    Chunks(table, folder_, &Model().unknownChunks);
    table.Find("part");
    table.Finish();
    Parts(table);
  }

  void Version(ManifestTable& table) {
    Model().version = kVersionNewest;
    const toml::node* node = table.Find("version");
    const auto word = table.Integer("versionWord", 0, UINT32_MAX);
    if (word) {
      if (node) table.Fault("versionWord", "either 'version' or 'versionWord'");
      Model().version = static_cast<uint32_t>(*word);
    } else if (node && node->value_exact<std::string>() == "none") {
      Model().version.reset();
    } else if (node) {
      const auto number = node->value_exact<int64_t>();
      if (!number || *number < 0 || *number > 6) {
        table.Fault("version", "'version' must be a number from 0 to 6, or \"none\"",
                    "the newest is 6; use versionWord for any other word");
      }
      Model().version = kVersionReleaseFlags2 + static_cast<uint32_t>(*number);
    }
  }

  void Settings(ManifestTable& table) {
    const uint32_t version = Model().version.value_or(0);
    AppSettings settings;
    const bool wanted = table.Bool("settings").value_or(true);
    table.Into("settingsWord", &settings.firstWord);
    table.Into("applicationKind", &settings.applicationKind);
    settings.tableCompressed = table.Bool("compressClasses").value_or(false);
    const toml::node* classes = table.Find("classes");
    if (version >= kVersionClassTable) {
      settings.hasClassTable = true;
      settings.classNames = AllClassNames();
    }
    if (classes) {
      settings.hasClassTable = true;
      const toml::array* list = classes->as_array();
      if (list) {
        settings.classNames.clear();
        for (const toml::node& node : *list) settings.classNames.push_back(ManifestTable::TextOf(manifest_, node));
      } else if (classes->value_exact<std::string>() != "all") {
        table.Fault("classes", "'classes' must be a list of class names, or \"all\"");
      }
    }
    if (wanted) Model().settings = std::move(settings);
  }

  void Chunks(ManifestTable& table, const fs::path& folder, std::vector<UnknownChunk>* chunks) {
    for (const toml::table* entry : Tables(table, "chunk")) {
      ManifestTable chunk(manifest_, *entry);
      UnknownChunk unknown;
      const auto id = chunk.Integer("id", 0, UINT32_MAX);
      if (!id) chunk.Fault("id", "a chunk needs an id");
      unknown.id = static_cast<uint32_t>(*id);
      unknown.bytes = ReadNamed(chunk, "file", folder);
      chunk.Finish();
      chunks->push_back(std::move(unknown));
    }
  }

  // The tables of [[key]], or none.
  std::vector<const toml::table*> Tables(ManifestTable& table, std::string_view key) {
    std::vector<const toml::table*> tables;
    const toml::node* node = table.Find(key);
    if (!node) return tables;
    const toml::array* array = node->as_array();
    if (!array)
      table.Fault(key, "'" + std::string(key) + "' must be a list of tables", "write [[" + std::string(key) + "]]");
    for (const toml::node& entry : *array) {
      if (!entry.is_table()) FaultAt(manifest_, entry.source(), "a table is expected here");
      tables.push_back(entry.as_table());
    }
    return tables;
  }

  void Parts(ManifestTable& table) {
    const auto entries = Tables(table, "part");
    if (entries.empty() && !table.Has("part")) {
      const toml::table none;
      Part(none, true);
    }
    for (const toml::table* entry : entries) Part(*entry, entry == entries.front());
  }

  void Part(const toml::table& entry, bool first) {
    ManifestTable table(manifest_, entry);
    PartModel part;
    PartHeader& h = part.header;
    const fs::path folder = folder_ / table.RawText("folder").value_or("");
    part.externalFile = table.Text("file").value_or("");
    const auto kind = table.RawText("kind");
    if (kind && *kind != "normal" && *kind != "design") table.Fault("kind", "'kind' must be \"normal\" or \"design\"");
    part.kind = kind == "design" ? CAppPart::kDesign : CAppPart::kNormal;
    if (table.Has("versionLow")) part.versionLow = static_cast<uint16_t>(*table.Integer("versionLow", 0, 0xFFFF));
    table.Find("versionLow");
    const uint32_t version = Model().PartVersion(part);

    h.hasHeader = table.Bool("header").value_or(true);
    h.name = table.Text("name").value_or(h.hasHeader ? result_.name : "");
    table.Into("flags", &h.flags);
    if (table.Has("palette")) {
      const std::string palette = ReadNamed(table, "palette", folder);
      if (palette.size() != h.palette.size()) {
        table.Fault("palette", "a palette file has 1024 bytes", "256 times red, green, blue, flags");
      }
      std::copy(palette.begin(), palette.end(), h.palette.begin());
    } else if (h.hasHeader) {
      h.palette = DefaultPartPalette();
    }
    table.Find("palette");
    h.initSource = table.Text("initSource").value_or("");
    if (const auto file = table.RawText("initSourceFile")) {
      h.initSource = ReadTextFile(folder / *file, entry.get("initSourceFile"), raw_);
    }
    table.Into("reserved", &h.reserved);
    table.Into("gameInputReserved", &h.gameInputReserved);
    table.Into("gameInputUsed", &h.gameInputUsed);
    table.Into("gameInputPlayer", &h.gameInputPlayer);
    h.gameInputData = ReadNamed(table, "gameInputData", folder);
    table.Into("speedPercent", &h.speedPercent);
    table.Into("backColor", &h.backColor);
    table.Into("releaseFlag", &h.releaseFlag);
    table.Into("sound3D", &h.sound3D);
    table.Into("releaseFlags", &h.releaseFlags);
    table.Into("releaseFlags2", &h.releaseFlags2);
    const bool buffers = !h.initSource.empty() || !h.gameInputData.empty();
    h.buffersCompressed =
        table.Bool("compressBuffers").value_or(compress_.value_or(true) && buffers && version >= kVersionOwnChunks);
    Chunks(table, folder, &part.unknownChunks);

    bool hasSource = false;
    for (const toml::table* bank : Tables(table, "bank")) {
      part.banks.push_back(Bank(*bank, folder, version));
      hasSource |= part.banks.back().type == kBankSource;
    }
    const bool ownFolder = table.Has("folder");
    const auto sources = table.Bool("sources");
    if (!hasSource && sources.value_or(first || ownFolder)) {
      if (auto bank = SourceBank(folder, version)) {
        part.banks.insert(part.banks.begin(), std::move(*bank));
      } else if (sources || !table.Has("bank")) {
        FaultAt(manifest_, entry.source(), "there is no source file in " + folder.string(),
                "sources have the extension .vlq; the main one is main.vlq");
      }
    }
    table.Finish();
    Model().parts.push_back(std::move(part));
  }

  // What a part without a bank of type source gets: its folder's sources, main.vlq first.
  std::optional<BankModel> SourceBank(const fs::path& folder, uint32_t version) {
    const auto files = Glob(folder, "*.vlq", nullptr);
    if (files.empty()) return std::nullopt;
    BankModel bank;
    bank.type = kBankSource;
    bank.name = "source";
    bank.version = version >= kVersionBankVersion ? kBankVersion2 : kBankVersion1;
    for (const fs::path& file : files) {
      ElementModel element;
      element.name = StemOf(file, nullptr);
      element.body.bytes = ReadTextFile(file, nullptr, raw_);
      SetForm(&element, compress_.value_or(true));
      bank.elements.push_back(std::move(element));
    }
    return bank;
  }

  std::string StemOf(const fs::path& file, const toml::node* node) {
    const CodePageText name = CodePageFromUtf8(file.stem().string());
    if (name.validUtf8 && !name.unknownAt) return name.bytes;
    const std::string what = "the name of " + file.string() + " has a character that code page 1252 doesn't have";
    if (!node) throw ProjectFault{what + " (rename it, or give the element a name)"};
    FaultAt(manifest_, node->source(), what, "give the element a name");
  }

  // Files below a folder by a pattern with * and ? in its last component, in the order of their names.
  std::vector<fs::path> Glob(const fs::path& folder, const std::string& pattern, const toml::node* node) {
    const fs::path wanted = folder / pattern;
    std::vector<fs::path> files;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(wanted.parent_path(), error)) {
      if (entry.is_regular_file() && MatchesPattern(entry.path().filename().string(), wanted.filename().string())) {
        files.push_back(entry.path());
      }
    }
    std::sort(files.begin(), files.end(), [](const fs::path& a, const fs::path& b) {
      const bool mainA = a.filename() == kMainSource;
      const bool mainB = b.filename() == kMainSource;
      return mainA != mainB ? mainA : a.filename().string() < b.filename().string();
    });
    if (files.empty() && node) {
      FaultAt(manifest_, node->source(), "no file matches " + wanted.string());
    }
    return files;
  }

  uint32_t TypeOf(ManifestTable& table) {
    const toml::node* node = table.Find("type");
    const std::string words = "source, image, animation, sound, music, string, 3d or binary";
    if (!node) table.Fault("type", "a bank needs a type", words);
    if (const auto number = node->value_exact<int64_t>(); number && *number >= 0 && *number <= UINT32_MAX) {
      return static_cast<uint32_t>(*number);
    }
    const auto word = node->value_exact<std::string>();
    for (uint32_t type = 0; word && type < 8; ++type) {
      if (*word == BankTypeWord(type)) return type;
    }
    table.Fault("type", "unknown bank type", words);
  }

  struct BankOptions {
    BankModel* bank;
    fs::path folder;
    bool raw;
    bool compress;
  };

  BankModel Bank(const toml::table& entry, const fs::path& partFolder, uint32_t version) {
    ManifestTable table(manifest_, entry);
    BankModel bank;
    bank.type = TypeOf(table);
    const std::string_view word = BankTypeWord(bank.type);
    bank.name = table.Text("name").value_or(word.empty() ? "bank" : std::string(word));
    if (version >= kVersionBankVersion) bank.version = kBankVersion2;
    if (const auto number = table.Integer("version", 1, 2))
      bank.version = kBankVersion1 - 1 + static_cast<uint32_t>(*number);
    table.Into("versionWord", &bank.version);
    bank.externalFile = table.Text("file").value_or("");
    BankOptions options{&bank, partFolder / table.RawText("folder").value_or(""), IsRaw(table, raw_), false};
    options.compress = table.Bool("compress").value_or(compress_.value_or(CompressedByDefault(bank.type)));
    if (bank.type == kBankImage) Palettes(table, partFolder, &bank);
    if (const toml::node* files = table.Find("files")) {
      const toml::array one{files->is_string() ? *files->value_exact<std::string>() : std::string()};
      const toml::array* patterns = files->is_array() ? files->as_array() : &one;
      for (const toml::node& node : *patterns) {
        const auto pattern = node.value_exact<std::string>();
        if (!pattern || pattern->empty()) table.Fault("files", "'files' must be a pattern or a list of patterns");
        for (const fs::path& file : Glob(options.folder, *pattern, files)) {
          toml::table element;
          element.insert("file", file.lexically_relative(options.folder).string());
          bank.elements.push_back(Element(element, options, files));
        }
      }
    }
    if (const toml::node* elements = table.Find("elements")) {
      const toml::array* list = elements->as_array();
      if (!list) table.Fault("elements", "'elements' must be a list of tables or file names");
      for (const toml::node& node : *list) {
        if (const auto file = node.value_exact<std::string>()) {
          toml::table element;
          element.insert("file", *file);
          bank.elements.push_back(Element(element, options, &node));
        } else if (const toml::table* element = node.as_table()) {
          bank.elements.push_back(Element(*element, options, element));
        } else {
          FaultAt(manifest_, node.source(), "an element is a table or a file name");
        }
      }
    }
    table.Finish();
    return bank;
  }

  void Palettes(ManifestTable& table, const fs::path& folder, BankModel* bank) {
    const toml::node* node = table.Find("palettes");
    if (!node) return;
    const std::string bytes = ReadNamed(table, "palettes", folder);
    if (bytes.size() % sizeof(StoredPalette)) table.Fault("palettes", "a palette table is a multiple of 1024 bytes");
    bank->palettes.emplace(bytes.size() / sizeof(StoredPalette));
    for (size_t i = 0; i < bytes.size(); ++i) (*bank->palettes)[i / 1024][i % 1024] = static_cast<uint8_t>(bytes[i]);
  }

  // `exact` is what the element itself tells; otherwise a body is compressed where that makes it smaller.
  static void SetForm(ElementModel* element, bool compress, std::optional<bool> exact = std::nullopt) {
    BodyModel& body = element->body;
    bool packed = exact.value_or(compress) && !body.bytes.empty();
    if (packed && !exact) {
      const auto* bytes = reinterpret_cast<const uint8_t*>(body.bytes.data());
      packed = DeflateBytes({bytes, body.bytes.size()}).size() < body.bytes.size();
    }
    body.form = packed ? BodyModel::Form::Compressed : BodyModel::Form::Plain;
  }

  // `where` is what faults about the files point at.
  ElementModel Element(const toml::table& entry, const BankOptions& options, const toml::node* where) {
    ManifestTable table(manifest_, entry);
    ElementModel element;
    element.empty = table.Bool("empty").value_or(false);
    if (element.empty) {
      table.Finish();
      return element;
    }
    const uint32_t type = options.bank->type;
    const auto file = table.RawText("file");
    const auto name = table.Text("name");
    const bool isText = type == kBankString || type == kBankSource;
    const auto text = isText ? table.Text("text") : std::nullopt;
    element.name = name ? *name : file ? StemOf(*file, where) : std::string();
    if (!name && !file) FaultAt(manifest_, where->source(), "an element needs a file or a name");
    element.group = table.Text("group").value_or("");
    if (type == kBankImage) {
      int16_t x = 0;
      int16_t y = 0;
      table.Into("hotX", &x);
      table.Into("hotY", &y);
      element.hotX = static_cast<uint16_t>(x);
      element.hotY = static_cast<uint16_t>(y);
      Image(table, options, file, where, &element.image);
      table.Finish();
      return element;
    }
    if (type == kBankAnimation && options.bank->version >= kBankVersion2) {
      table.Into("hotX", &element.hotX);
      table.Into("hotY", &element.hotY);
    }
    const bool raw = IsRaw(table, options.raw);
    if (type == kBankAnimation && table.Has("frames")) {
      Animation(table, options, &element.body.bytes);
      SetForm(&element, options.compress, table.Bool("compress"));
      table.Finish();
      return element;
    }
    if (type == kBankAnimation) table.Find("frames");
    if (file && text) table.Fault("text", "either 'file' or 'text'");
    if (file) {
      const fs::path path = options.folder / *file;
      element.body.bytes = isText ? ReadTextFile(path, where, raw) : ReadInput(path, where);
    } else {
      element.body.bytes = text.value_or("");
    }
    if (type == kBankString && table.Bool("nul").value_or(true)) element.body.bytes += '\0';
    SetForm(&element, options.compress, table.Bool("compress"));
    if (const auto size = table.Integer("damagedSize", 1, UINT32_MAX)) {
      element.body.form = BodyModel::Form::Damaged;
      element.body.claimedSize = static_cast<uint32_t>(*size);
    }
    table.Finish();
    return element;
  }

  void Image(ManifestTable& table, const BankOptions& options, const std::optional<std::string>& file,
             const toml::node* where, ImageModel* image) {
    table.Into("paletteIndex", &image->paletteIndex);
    if (options.bank->version > kBankVersion1) table.Into("flags", &image->flags);
    const bool stored = table.Has("pixels");
    table.Into("width", &image->width);
    table.Into("height", &image->height);
    table.Into("depth", &image->depth);
    if (stored) {
      image->marker = 0;
      table.Into("marker", &image->marker);
      if (image->marker == CImageElement::kImageFile) table.Fault("marker", "65535 stands for a complete image file");
      image->pixels.bytes = ReadNamed(table, "pixels", options.folder);
      image->pixels.packed = table.Bool("pixelsPacked").value_or(false);
      if (image->flags & CImageElement::kFlagMask) {
        image->mask.bytes = ReadNamed(table, "mask", options.folder);
        image->mask.packed = table.Bool("maskPacked").value_or(false);
      }
      return;
    }
    table.Find("pixels");
    if (!file) FaultAt(manifest_, where->source(), "a picture needs a file");
    std::string bytes = ReadInput(options.folder / *file, where);
    if (table.Has("store")) {
      Store(table, options, bytes, image);
      return;
    }
    table.Find("store");
    image->file = std::move(bytes);
    PictureSize size;
    const bool given = table.Has("width") && table.Has("height") && table.Has("depth");
    if (given) return;
    if (!MeasurePicture(image->file, &size)) {
      FaultAt(manifest_, where->source(), *file + " is no picture that the runtime reads",
              "BMP, JPEG, PNG, TGA and PCX are; or give width, height and depth");
    }
    if (!table.Has("width")) image->width = size.width;
    if (!table.Has("height")) image->height = size.height;
    if (!table.Has("depth")) image->depth = size.depth;
  }

  // What becomes of the pixels of a picture: store, transparent, keepAlpha.
  PictureOptions Pixels(ManifestTable& table, std::string_view depthKey) {
    PictureOptions picture;
    const toml::node* depth = table.Find(depthKey);
    if (depth && !depth->value_exact<bool>().value_or(false)) {
      const int64_t bits = depth->value_exact<int64_t>().value_or(0);
      if (bits != 8 && bits != 15 && bits != 16 && bits != 24 && bits != 32) {
        table.Fault(depthKey, "'" + std::string(depthKey) + "' must be a depth: 8, 15, 16, 24 or 32",
                    depthKey == "store" ? "or true, for the picture's own" : "");
      }
      picture.depth = static_cast<int>(bits);
    }
    if (const auto transparent = table.RawText("transparent")) {
      uint32_t colour = 0;
      const char* first = transparent->data() + 1;
      if (*transparent == "alpha") {
        picture.transparentAlpha = true;
      } else if (transparent->size() == 7 && (*transparent)[0] == '#' &&
                 std::from_chars(first, first + 6, colour, 16).ptr == first + 6) {
        picture.transparentColour = colour;
      } else {
        table.Fault("transparent", "'transparent' must be \"alpha\" or a colour like \"#FF00FF\"");
      }
    }
    picture.mask = table.Bool("keepAlpha").value_or(false);
    return picture;
  }

  // A picture file as stored pixels. At depth 8 its colours join the bank's palettes.
  void Store(ManifestTable& table, const BankOptions& options, const std::string& bytes, ImageModel* image) {
    const PictureOptions picture = Pixels(table, "store");
    if (picture.mask && options.bank->version <= kBankVersion1) {
      table.Fault("keepAlpha", "only banks of version 2 keep alpha channels");
    }
    std::optional<StoredPalette> palette;
    std::string error;
    if (!StorePicture(bytes, picture, image, &palette, &error)) table.Fault("store", error);
    for (PlaneModel* plane : {&image->pixels, &image->mask}) {
      if (!options.compress || plane->bytes.empty()) continue;
      const auto* first = reinterpret_cast<const uint8_t*>(plane->bytes.data());
      const auto packed = DeflateBytes({first, plane->bytes.size()});
      if (packed.size() >= plane->bytes.size()) continue;
      plane->bytes.assign(packed.begin(), packed.end());
      plane->packed = true;
    }
    if (!palette || table.Has("paletteIndex")) return;
    if (!options.bank->palettes) options.bank->palettes.emplace();
    auto& palettes = *options.bank->palettes;
    const auto known = std::find(palettes.begin(), palettes.end(), *palette);
    image->paletteIndex = static_cast<int32_t>(known - palettes.begin());
    if (known == palettes.end()) palettes.push_back(*palette);
  }

  // An animation file made of pictures: a pattern or a list of files.
  void Animation(ManifestTable& table, const BankOptions& options, std::string* bytes) {
    const toml::node* frames = table.Find("frames");
    const toml::array one{frames->is_string() ? *frames->value_exact<std::string>() : std::string()};
    const toml::array* patterns = frames->is_array() ? frames->as_array() : &one;
    std::vector<std::string> pictures;
    for (const toml::node& node : *patterns) {
      const auto pattern = node.value_exact<std::string>();
      if (!pattern || pattern->empty()) table.Fault("frames", "'frames' must be a pattern or a list of files");
      for (const fs::path& file : Glob(options.folder, *pattern, frames)) pictures.push_back(ReadInput(file, frames));
    }
    AnimationOptions animation;
    animation.picture = Pixels(table, "depth");
    animation.frameTimeMs = static_cast<int>(table.Integer("frameTime", 1, 1 << 20).value_or(animation.frameTimeMs));
    animation.loopCount = static_cast<int>(table.Integer("loopCount", 0, INT32_MAX).value_or(animation.loopCount));
    animation.loopStart = static_cast<int>(table.Integer("loopStart", 0, INT32_MAX).value_or(animation.loopStart));
    animation.quality = static_cast<int>(table.Integer("quality", -1, 99).value_or(animation.quality));
    std::string error;
    if (!MakeAnimation(pictures, animation, bytes, &error)) table.Fault("frames", error);
  }

  fs::path folder_;
  fs::path manifest_;
  bool raw_ = false;
  std::optional<bool> compress_;
  LoadedProject result_;
};

}  // namespace

LoadedProject LoadProject(const fs::path& folder) { return ProjectLoader(folder).Run(); }

}  // namespace vl

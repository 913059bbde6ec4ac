#include "host/appfile/writer.h"

#include <utility>

#include "host/appfile/app_part.h"
#include "host/appfile/compressed_buffer.h"
#include "host/appfile/names.h"

namespace vl {

namespace {

// What a chunk header, an offset or a length can tell.
constexpr size_t kMaxFileBytes = 0xFFFFFFFFu;
constexpr size_t kMaxShortText = 0xFFFF;

class ByteWriter {
 public:
  void U16(uint32_t value) {
    out_ += static_cast<char>(value);
    out_ += static_cast<char>(value >> 8);
  }
  void U32(uint32_t value) {
    U16(value);
    U16(value >> 16);
  }
  void Raw(std::string_view bytes) { out_ += bytes; }
  void ShortText(std::string_view text) {
    U16(static_cast<uint32_t>(text.size()));
    out_ += text;
  }
  void Patch32(size_t position, size_t value) {
    for (int i = 0; i < 4; ++i) out_[position + i] = static_cast<char>(value >> (8 * i));
  }
  size_t Size() const { return out_.size(); }
  std::string Take() { return std::move(out_); }

 private:
  std::string out_;
};

std::string_view View(const StoredPalette& record) {
  return {reinterpret_cast<const char*>(record.data()), record.size()};
}

class ApplicationWriter {
 public:
  ApplicationWriter(const ApplicationModel& model, std::string_view mainName) : model_(model), mainName_(mainName) {}

  WrittenApplication Run() {
    ByteWriter out;
    if (model_.signature) Chunk(out, kChunkSignature, *model_.signature);
    if (model_.version) {
      ByteWriter payload;
      payload.U32(*model_.version);
      Chunk(out, kChunkVersion, payload.Take());
    }
    if (model_.settings) Chunk(out, kChunkSettings, Settings(*model_.settings));
    for (const PartModel& part : model_.parts) Part(out, part);
    for (const UnknownChunk& chunk : model_.unknownChunks) Chunk(out, chunk.id, chunk.bytes);
    Chunk(out, kChunkEnd, {});
    AddFile(mainName_, out.Take());
    if (!result_.error.empty()) result_.files.clear();
    return std::move(result_);
  }

 private:
  void Fail(std::string message) {
    if (result_.error.empty()) result_.error = std::move(message);
  }

  void AddFile(const std::string& name, std::string bytes) {
    if (bytes.size() > kMaxFileBytes) return Fail("the file " + name + " would pass 4 GB");
    const auto [it, added] = result_.files.try_emplace(name, std::move(bytes));
    if (!added && it->second != bytes) Fail("two different things are to be stored in one file, " + name);
  }

  void AddExternal(const std::string& name, std::string bytes) {
    std::string relative;
    if (!ConfineName(name, &relative)) return Fail("the file name \"" + name + "\" leaves the application's directory");
    if (relative == mainName_) return Fail("the file name \"" + name + "\" is that of the application itself");
    AddFile(relative, std::move(bytes));
  }

  void Chunk(ByteWriter& out, uint32_t id, std::string_view payload) {
    if (payload.size() > kMaxFileBytes) return Fail("a chunk would pass 4 GB");
    out.U32(id);
    out.U32(static_cast<uint32_t>(payload.size()));
    out.Raw(payload);
  }

  void Name(ByteWriter& out, std::string_view name, const char* what) {
    if (name.size() > kMaxShortText) return Fail(std::string(what) + " is longer than 65535 bytes");
    out.ShortText(name);
  }

  void Buffer(ByteWriter& out, std::string_view bytes, bool compressed) {
    if (bytes.size() > limits::kMaxBodyBytes) return Fail("a body is larger than 1 GB");
    out.U32(static_cast<uint32_t>(bytes.size()));
    if (bytes.empty() || !compressed) {
      out.U32(0);
      out.Raw(bytes);
      return;
    }
    const auto packed = DeflateBytes({reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()});
    if (packed.empty()) return Fail("out of memory");
    out.U32(static_cast<uint32_t>(packed.size()));
    out.Raw({reinterpret_cast<const char*>(packed.data()), packed.size()});
  }

  std::string Settings(const AppSettings& settings) {
    const uint32_t version = model_.version.value_or(0);
    ByteWriter out;
    out.U32(settings.firstWord);
    if (version <= kVersionReleaseFlags2) {
      if (settings.applicationKind != 1) Fail("a file of this version can't store an application kind");
    } else if (version >= kVersionPlainKind) {
      out.U32(settings.applicationKind);
    } else {
      if (settings.applicationKind - 1 > 1) Fail("a file of this version only stores the application kinds 1 and 2");
      out.U32(settings.applicationKind - 1);
    }
    if (version >= kVersionReserved) out.U32(0);
    if (version < kVersionClassTable) {
      if (settings.hasClassTable) Fail("a file of this version can't store a class table");
    } else if (!settings.hasClassTable) {
      Fail("a file of this version needs a class table");
    } else {
      ByteWriter table;
      table.U32(static_cast<uint32_t>(settings.classNames.size()));
      for (const std::string& name : settings.classNames) {
        if (name.find('\0') != std::string::npos) Fail("a class name holds a NUL");
        table.Raw({name.c_str(), name.size() + 1});
      }
      if (table.Size() > limits::kMaxClassTableBytes) Fail("the class table is too large");
      Buffer(out, table.Take(), settings.tableCompressed);
    }
    return out.Take();
  }

  void Part(ByteWriter& out, const PartModel& part) {
    ByteWriter payload;
    Name(payload, part.externalFile, "the file name of a part");
    std::string content = PartContent(part);
    if (part.externalFile.empty()) {
      payload.Raw(content);
    } else {
      AddExternal(part.externalFile, std::move(content));
    }
    Chunk(out, part.kind == CAppPart::kDesign ? kChunkDesignPart : kChunkPart, payload.Take());
  }

  std::string PartContent(const PartModel& part) {
    const uint32_t version = model_.PartVersion(part);
    const PartHeader& header = part.header;
    ByteWriter out;
    if (part.versionLow) {
      ByteWriter payload;
      payload.U16(*part.versionLow);
      Chunk(out, kChunkVersion, payload.Take());
    }
    const bool ownChunks = version >= kVersionOwnChunks;
    // A text that the header's 16-bit length can't tell goes into the chunk also in old files.
    const bool initInHeader = !ownChunks && header.hasHeader && header.initSource.size() <= kMaxShortText;
    if (header.hasHeader) {
      Chunk(out, kChunkPartHeader, FullHeader(header, version, initInHeader));
    } else if (!header.name.empty() || header.flags) {
      // Cut off in front of the palette, as it was read.
      ByteWriter payload;
      Name(payload, header.name, "the name of a part");
      payload.U32(header.flags);
      Chunk(out, kChunkPartHeader, payload.Take());
    }
    if (!initInHeader && !header.initSource.empty()) {
      ByteWriter payload;
      Buffer(payload, header.initSource, header.buffersCompressed);
      Chunk(out, kChunkInitSource, payload.Take());
    }
    const bool gameInput =
        header.gameInputReserved || header.gameInputUsed || header.gameInputPlayer || !header.gameInputData.empty();
    if (ownChunks && gameInput) {
      ByteWriter payload;
      payload.U16(header.gameInputReserved);
      payload.U16(header.gameInputUsed);
      payload.U32(header.gameInputPlayer);
      Buffer(payload, header.gameInputData, header.buffersCompressed);
      Chunk(out, kChunkGameInput, payload.Take());
    } else if (gameInput && !header.hasHeader) {
      Fail("an old file stores the game input set-up in the part header, and this part has none");
    }
    for (const BankModel& bank : part.banks) Bank(out, bank, version);
    for (const UnknownChunk& chunk : part.unknownChunks) Chunk(out, chunk.id, chunk.bytes);
    Chunk(out, kChunkEnd, {});
    return out.Take();
  }

  std::string FullHeader(const PartHeader& header, uint32_t version, bool initInHeader) {
    const bool ownChunks = version >= kVersionOwnChunks;
    ByteWriter out;
    Name(out, header.name, "the name of a part");
    out.U32(header.flags);
    out.Raw(View(header.palette));
    if (!ownChunks) out.ShortText(initInHeader ? header.initSource : std::string());
    out.U32(header.reserved);
    if (!ownChunks) {
      out.U16(header.gameInputReserved);
      out.U16(header.gameInputUsed);
      out.U32(header.gameInputPlayer);
      if (header.gameInputData.size() > limits::kMaxBodyBytes) Fail("a game input set-up is larger than 1 GB");
      out.U32(static_cast<uint32_t>(header.gameInputData.size()));
      out.Raw(header.gameInputData);
    }
    out.U16(header.speedPercent);
    if (!ownChunks) out.U16(0);
    out.U32(header.backColor);
    out.U16(header.releaseFlag);
    out.U16(header.sound3D);
    out.U16(header.releaseFlags);
    if (version >= kVersionReleaseFlags2) {
      out.U16(header.releaseFlags2);
    } else if (header.releaseFlags2 != 1) {
      Fail("a file of this version can't store releaseFlags2");
    }
    return out.Take();
  }

  void Bank(ByteWriter& out, const BankModel& bank, uint32_t partVersion) {
    ByteWriter payload;
    Name(payload, bank.externalFile, "the file name of a bank");
    std::string content = BankContent(bank, partVersion);
    if (bank.externalFile.empty()) {
      payload.Raw(content);
    } else {
      AddExternal(bank.externalFile, std::move(content));
    }
    Chunk(out, kChunkBank, payload.Take());
  }

  std::string BankContent(const BankModel& bank, uint32_t partVersion) {
    ByteWriter out;
    out.U32(bank.type);
    Name(out, bank.name, "the name of a bank");
    if (partVersion >= kVersionBankVersion) {
      out.U32(bank.version);
    } else if (bank.version != kBankVersion1) {
      Fail("a file of this version can't store the bank version 2");
    }
    const size_t tableField = out.Size();
    if (bank.type == kBankImage) out.U32(0);
    if (bank.elements.size() > limits::kMaxElements) Fail("a bank has too many elements");
    out.U32(static_cast<uint32_t>(bank.elements.size()));
    const size_t offsets = out.Size();
    for (size_t i = 0; i < bank.elements.size(); ++i) out.U32(0);
    for (size_t i = 0; i < bank.elements.size() && result_.error.empty(); ++i) {
      const ElementModel& element = bank.elements[i];
      if (element.empty) continue;
      out.Patch32(offsets + 4 * i, out.Size());
      Element(out, bank, element);
      if (out.Size() > kMaxFileBytes) Fail("a bank would pass 4 GB");
    }
    if (bank.type == kBankImage && bank.palettes) {
      out.Patch32(tableField, out.Size() - tableField);
      out.U32(static_cast<uint32_t>(bank.palettes->size()));
      for (const StoredPalette& record : *bank.palettes) out.Raw(View(record));
    }
    return out.Take();
  }

  void Element(ByteWriter& out, const BankModel& bank, const ElementModel& element) {
    Name(out, element.name, "the name of an element");
    Name(out, element.group, "the group of an element");
    if (bank.type == kBankImage) return Image(out, bank, element);
    if (bank.type == kBankAnimation && bank.version >= kBankVersion2) {
      out.U16(element.hotX);
      out.U16(element.hotY);
    }
    const BodyModel& body = element.body;
    if (body.form != BodyModel::Form::Damaged) {
      return Buffer(out, body.bytes, body.form == BodyModel::Form::Compressed);
    }
    if (body.bytes.size() > limits::kMaxBodyBytes) Fail("a body is larger than 1 GB");
    out.U32(body.claimedSize);
    out.U32(static_cast<uint32_t>(body.bytes.size()));
    out.Raw(body.bytes);
  }

  void Image(ByteWriter& out, const BankModel& bank, const ElementModel& element) {
    const ImageModel& image = element.image;
    out.U16(element.hotX);
    out.U16(element.hotY);
    out.U32(static_cast<uint32_t>(image.paletteIndex));
    out.U16(image.marker);
    out.U16(image.width);
    out.U16(image.height);
    out.U16(image.depth);
    const bool hasFlags = bank.version > kBankVersion1;
    if (hasFlags) out.U32(image.flags);
    if (image.marker == CImageElement::kImageFile) return out.Raw(image.file);
    Plane(out, image.pixels, CImageElement::StoredPitch(image.width, image.depth) * image.height);
    if (hasFlags && (image.flags & CImageElement::kFlagMask)) {
      Plane(out, image.mask, uint64_t{image.width} * image.height);
    }
  }

  void Plane(ByteWriter& out, const PlaneModel& plane, uint64_t rawSize) {
    if (plane.packed ? plane.bytes.empty() : plane.bytes.size() != rawSize) {
      Fail("the stored pixels of a picture don't have the size that its fields tell");
    }
    out.U32(plane.packed ? static_cast<uint32_t>(plane.bytes.size()) : 0);
    out.Raw(plane.bytes);
  }

  const ApplicationModel& model_;
  std::string mainName_;
  WrittenApplication result_;
};

}  // namespace

WrittenApplication WriteApplication(const ApplicationModel& model, std::string_view mainName) {
  return ApplicationWriter(model, mainName).Run();
}

}  // namespace vl

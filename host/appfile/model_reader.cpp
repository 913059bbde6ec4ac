#include "host/appfile/model_reader.h"

#include <algorithm>
#include <utility>

#include "host/appfile/class_names.h"

namespace vl {

std::vector<std::string> AllClassNames() {
  std::vector<std::string> names(DefaultClassNames().begin(), DefaultClassNames().end());
  names.emplace_back("Bank");
  return names;
}

namespace {

bool IsKnown(const CAppPart& part, uint32_t id) {
  switch (id) {
    case kChunkPartHeader:
    case kChunkBank:
    case kChunkVersion:
    case kChunkInitSource:
      return true;
    case kChunkGameInput:
      return part.version >= kVersionOwnChunks;
    default:
      return false;
  }
}

bool IsKnown(uint32_t id) {
  return id == kChunkSignature || id == kChunkPart || id == kChunkSettings || id == kChunkVersion ||
         id == kChunkDesignPart;
}

class ModelReader {
 public:
  ModelReader(CAppFile& app, uint64_t maxBytes) : app_(app), left_(maxBytes) {}

  ModelResult Run() {
    ApplicationModel& model = result_.model;
    if (app_.hasVersion) model.version = app_.version;
    if (app_.hasSettings) model.settings = Settings();
    size_t parts = 0;
    for (const ChunkRecord& chunk : app_.chunks) {
      parts += chunk.size && (chunk.id == kChunkPart || chunk.id == kChunkDesignPart);
      if (chunk.id == kChunkSignature && chunk.size) model.signature = Payload(app_.file, chunk);
      if (!IsKnown(chunk.id)) model.unknownChunks.push_back({chunk.id, Payload(app_.file, chunk)});
    }
    if (parts != app_.parts.size()) Problem("an application part can't be read and is left out");
    for (const auto& part : app_.parts) {
      if (result_.status) break;
      model.parts.push_back(Part(*part));
    }
    return std::move(result_);
  }

 private:
  void Problem(std::string text) { result_.problems.push_back(std::move(text)); }

  // Counts what the model is about to hold. False when that is too much, and from then on.
  bool Take(uint64_t bytes) {
    if (result_.status == kAppOk && bytes > left_) result_.status = kAppOutOfMemory;
    if (result_.status) return false;
    left_ -= bytes;
    return true;
  }

  std::string Payload(const std::shared_ptr<File>& file, const ChunkRecord& chunk) {
    CFileStream stream(file, chunk.position + 8, chunk.size);
    return Rest(stream, static_cast<uint32_t>(std::min<int64_t>(stream.GetLength(), UINT32_MAX)));
  }

  std::string Rest(CStream& stream, uint32_t size) {
    std::string bytes;
    if (!Take(size)) return bytes;
    bytes.resize(size);
    if (stream.Read(bytes.data(), size)) bytes.clear();
    return bytes;
  }

  AppSettings Settings() {
    AppSettings settings = app_.settings;
    // A table that is missing where there must be one counts as the full list.
    if (app_.version >= kVersionClassTable && !settings.hasClassTable) {
      settings.hasClassTable = true;
      settings.classNames = app_.classNames;
    }
    return settings;
  }

  PartModel Part(CAppPart& part) {
    PartModel model;
    model.kind = part.kind;
    model.externalFile = part.externalName;
    if (part.versionReplaced) model.versionLow = static_cast<uint16_t>(part.version);
    model.header = part;
    Take(part.initSource.size() + part.gameInputData.size() + sizeof(PartModel));
    const std::string where = "part \"" + part.name + "\"";
    size_t banks = 0;
    bool versioned = false;
    bool late = result_.model.PartVersion(model) != part.version;
    for (const ChunkRecord& chunk : part.chunks) {
      if (chunk.size) {
        banks += chunk.id == kChunkBank;
        late |= chunk.id == kChunkVersion && versioned;
        versioned |= IsKnown(part, chunk.id);
      }
      if (!IsKnown(part, chunk.id)) model.unknownChunks.push_back({chunk.id, Payload(part.file, chunk)});
    }
    if (late) {
      Problem(where + ": its version is told behind what depends on it; it is taken as that of the whole part");
      Adapt(model);
    }
    // Told by what will be written: in an old file both buffers lie plain in the header.
    const PartHeader& h = model.header;
    const bool ownChunks = result_.model.PartVersion(model) >= kVersionOwnChunks;
    const bool initInHeader = !ownChunks && h.hasHeader && h.initSource.size() <= 0xFFFF;
    const bool stored = (!initInHeader && !h.initSource.empty()) || (ownChunks && !h.gameInputData.empty());
    model.header.buffersCompressed &= stored;
    if (banks != part.banks.size()) Problem(where + ": a bank can't be read and is left out");
    const bool bankVersions = result_.model.PartVersion(model) >= kVersionBankVersion;
    for (const auto& bank : part.banks) {
      if (result_.status) break;
      model.banks.push_back(Bank(*bank, bankVersions));
    }
    return model;
  }

  // Drops what a file of the part's version can't hold.
  void Adapt(PartModel& model) {
    const uint32_t version = result_.model.PartVersion(model);
    PartHeader& header = model.header;
    if (version < kVersionReleaseFlags2) header.releaseFlags2 = 1;
    if (version < kVersionOwnChunks && !header.hasHeader) {
      header.gameInputReserved = header.gameInputUsed = 0;
      header.gameInputPlayer = 0;
      header.gameInputData.clear();
    }
  }

  BankModel Bank(CBank& bank, bool withVersion) {
    BankModel model;
    model.type = bank.type;
    model.name = bank.name;
    model.version = withVersion ? bank.version : kBankVersion1;
    model.externalFile = bank.externalName;
    Take(sizeof(BankModel) + bank.name.size() + bank.externalName.size());
    if (bank.type == kBankImage) Palettes(static_cast<CImageBank&>(bank), &model);
    for (uint32_t i = 0; i < bank.elements.size(); ++i) {
      if (!Take(sizeof(ElementModel))) break;
      model.elements.push_back(Element(bank, i, model.version));
    }
    return model;
  }

  void Palettes(CImageBank& bank, BankModel* model) {
    if (!bank.HasPaletteTable()) return;
    model->palettes.emplace();
    for (uint32_t i = 0; i < bank.tableCount && Take(sizeof(StoredPalette)); ++i) {
      StoredPalette record{};
      bank.ReadPalette(i, &record);
      model->palettes->push_back(record);
    }
  }

  ElementModel Element(CBank& bank, uint32_t index, uint32_t bankVersion) {
    ElementModel model;
    CElement* element = bank.elements[index].get();
    if (!element) {
      model.empty = true;
      return model;
    }
    model.name = element->name;
    model.group = element->group;
    if (!Take(element->name.size() + element->group.size())) return model;
    if (bank.type == kBankImage) {
      Image(bank, index, bankVersion, &model);
      return model;
    }
    if (bank.type == kBankAnimation && bankVersion >= kBankVersion2) {
      const auto& animation = static_cast<const CAnimElement&>(*element);
      model.hotX = animation.hotX;
      model.hotY = animation.hotY;
    }
    Body(bank, index, &model.body);
    return model;
  }

  void Body(CBank& bank, uint32_t index, BodyModel* body) {
    CFileStream stream(bank.file);
    stream.Seek(bank.positions[index]);
    BufferSizes sizes;
    uint32_t status = stream.ReadDwordLE(&sizes.size);
    if (!status) status = stream.ReadDwordLE(&sizes.compressedSize);
    if (!status && sizes.size == 0) return;
    if (status || sizes.StoredSize() > stream.Remaining()) {
      Problem(bank.elements[index]->GetPath() + ": the body is cut off and is left out");
      return;
    }
    if (sizes.compressedSize == 0) {
      body->bytes = Rest(stream, sizes.size);
      return;
    }
    // The work is counted as well as the result, so that damaged streams don't cost more than good ones.
    if (!Take(std::min(sizes.size, limits::kMaxBodyBytes))) return;
    if (bank.Load(index) && bank.elements[index]->IsLoaded()) {
      body->form = BodyModel::Form::Compressed;
      body->bytes = static_cast<CBinaryElement*>(bank.elements[index].get())->data.View();
      bank.Unload(index);
      return;
    }
    if (app_.lastBankError == kAppOutOfMemory) {
      result_.status = kAppOutOfMemory;
      return;
    }
    body->form = BodyModel::Form::Damaged;
    body->claimedSize = sizes.size;
    body->bytes = Rest(stream, sizes.compressedSize);
  }

  void Image(CBank& bank, uint32_t index, uint32_t bankVersion, ElementModel* model) {
    auto& element = static_cast<CImageElement&>(*bank.elements[index]);
    if (!bank.Load(index) || !element.IsLoaded()) {
      if (app_.lastBankError == kAppOutOfMemory) result_.status = kAppOutOfMemory;
      Problem(element.GetPath() + ": the picture is cut off and is left out");
      return;
    }
    ImageModel& image = model->image;
    model->hotX = static_cast<uint16_t>(element.hotX);
    model->hotY = static_cast<uint16_t>(element.hotY);
    image.paletteIndex = element.paletteIndex;
    image.marker = element.marker;
    image.width = element.width;
    image.height = element.height;
    image.depth = element.depth;
    if (bankVersion > kBankVersion1) image.flags = element.flags;
    if (Take(uint64_t{element.file.Size()} + element.pixels.bytes.Size() + element.mask.bytes.Size())) {
      image.file = element.file.View();
      Plane(element.pixels, &image.pixels);
      if (image.flags & CImageElement::kFlagMask) Plane(element.mask, &image.mask);
    }
    bank.Unload(index);
  }

  static void Plane(const ImagePlane& plane, PlaneModel* model) {
    model->packed = plane.packed;
    model->bytes = plane.bytes.View();
  }

  CAppFile& app_;
  uint64_t left_;
  ModelResult result_;
};

}  // namespace

ModelResult ReadModel(CAppFile& app, uint64_t maxBytes) { return ModelReader(app, maxBytes).Run(); }

ModelResult ReadModel(std::string_view path, FileSystem& files, uint64_t maxBytes) {
  CAppFile app;
  ModelResult result;
  result.status = app.Open({}, path, files, true);
  return result.status ? result : ReadModel(app, maxBytes);
}

}  // namespace vl

#include "host/appfile/app_file.h"

#include <algorithm>
#include <utility>

#include "base/limits.h"
#include "host/appfile/chunk_run.h"
#include "host/appfile/class_names.h"
#include "host/appfile/names.h"
#include "platform/drive_paths.h"

namespace vl {

CAppFile::CAppFile(MemoryBudget* budget) : budget_(budget ? budget : &ownBudget_) {}

CAppFile::~CAppFile() { Close(); }

void CAppFile::Close() {
  partsByName.Clear();
  banksByName.Clear();
  elementsByName.Clear();
  currentPart = nullptr;
  parts.clear();
  file.reset();
  if (deleteOnClose && ownsFile && files_) files_->remove(path);
  files_ = nullptr;
  ownsFile = deleteOnClose = false;
  structure_ = {};
  counted_.clear();
  recognised_ = 0;
  classNames.clear();
  title.clear();
  path.clear();
  signaturePosition = 0;
  applicationKind = 1;
  version = 0;
  palette = {};
  paletteInUse = hasClassTable = hasVersion = hasSettings = false;
  settings = {};
  chunks.clear();
  lastBankError = kAppOk;
}

uint32_t CAppFile::Open(std::string_view displayTitle, std::string_view filePath, FileSystem& files, bool designMode,
                        int64_t startOffset) {
  const bool remove = deleteOnClose;
  deleteOnClose = false;
  Close();
  deleteOnClose = remove;
  title = displayTitle;
  path = filePath;
  files_ = &files;
  for (const std::string_view name : DefaultClassNames()) classNames.emplace_back(name);
  if (path.empty()) return kAppNoApplication;
  file = files.open(path, FileMode::Read);
  if (!file) return kAppCantOpen;
  ownsFile = true;
  CFileStream stream(file);
  structure_.AddFile(static_cast<uint64_t>(stream.GetLength()));
  counted_.insert(path);
  uint32_t status = stream.Seek(startOffset);
  if (!status) {
    status = ReadChunks(stream, structure_, [&](const ChunkRecord& chunk) { ReadChunk(stream, chunk, designMode); });
  }
  if (recognised_ == 0) return kAppNotRecognised;
  if (status) return status;
  SetCurrentPart(nullptr);
  if (currentPart) {
    palette = currentPart->palette;
    paletteInUse = currentPart->paletteInUse;
  }
  return kAppOk;
}

uint32_t CAppFile::ReadChunk(CFileStream& stream, const ChunkRecord& chunk, bool designMode) {
  chunks.push_back(chunk);
  if (chunk.size == 0) return kAppOk;
  switch (chunk.id) {
    case kChunkSignature:
      ++recognised_;
      signaturePosition = chunk.position;
      return kAppOk;
    case kChunkPart:
      ++recognised_;
      return ReadPart(stream, CAppPart::kNormal);
    case kChunkDesignPart:
      if (!designMode) return kAppOk;
      ++recognised_;
      return ReadPart(stream, CAppPart::kDesign);
    case kChunkVersion: {
      ++recognised_;
      if (std::exchange(hasVersion, true)) return kAppOk;
      CWindowStream payload(stream, chunk.size);
      return payload.ReadDwordLE(&version);
    }
    case kChunkSettings: {
      ++recognised_;
      if (std::exchange(hasSettings, true)) return kAppOk;
      CWindowStream payload(stream, chunk.size);
      const uint32_t status = settings.Read(payload, version);
      applicationKind = settings.applicationKind;
      hasClassTable = settings.hasClassTable;
      if (hasClassTable) classNames = settings.classNames;
      return status;
    }
  }
  return kAppOk;
}

uint32_t CAppFile::ReadPart(CFileStream& stream, uint32_t kind) {
  std::string externalName;
  if (const uint32_t status = stream.ReadShortText(&externalName)) return status;
  if (!structure_.Spend(ReadBudget::kPartFee + externalName.size())) return kAppOutOfMemory;
  auto part = std::make_unique<CAppPart>(*this, kind);
  if (const uint32_t status = part->Read(stream, externalName)) return status;
  for (const auto& bank : part->banks) bank->RegisterNames();
  RegisterPart(*part);
  parts.push_back(std::move(part));
  return kAppOk;
}

std::shared_ptr<File> CAppFile::OpenBeside(std::string_view name, std::string* openedPath) {
  std::string relative;
  if (!files_ || !ConfineName(name, &relative) || !structure_.Spend(ReadBudget::kOpenFee)) return nullptr;
  const std::string directory(DirectoryOf(path));
  std::shared_ptr<File> opened = files_->open(directory + relative, FileMode::Read);
  if (!opened) {
    // Names of the period ignore case; packers of today mostly write lower case.
    for (char& c : relative) c = static_cast<char>(FoldByte(static_cast<uint8_t>(c)));
    opened = files_->open(directory + relative, FileMode::Read);
  }
  if (!opened) return nullptr;
  *openedPath = directory + relative;
  if (counted_.insert(*openedPath).second)
    structure_.AddFile(static_cast<uint64_t>(std::max<int64_t>(opened->size(), 0)));
  return opened;
}

CAppPart* CAppFile::SetCurrentPart(CAppPart* part) {
  if (!part && !parts.empty()) part = parts.front().get();
  return std::exchange(currentPart, part);
}

CAppPart* CAppFile::GetPartByName(std::string_view name) const {
  return partsByName.Find(HashName(name), [&](const CAppPart& part) { return EqualsIgnoringCase(part.name, name); });
}

CAppPart* CAppFile::GetPartByNumber(uint32_t number) const {
  return number >= 1 && number <= parts.size() ? parts[number - 1].get() : nullptr;
}

CBank* CAppFile::GetBank(uint32_t type) const { return currentPart ? currentPart->GetBank(type) : nullptr; }

CBank* CAppFile::GetBankByPath(std::string_view bankPath) const {
  return banksByName.Find(HashName(bankPath), [&](const CBank& bank) { return bank.HasPath(bankPath); });
}

CBank* CAppFile::GetBankByName(std::string_view name) const {
  if (name.find(':') != std::string_view::npos) return GetBankByPath(name);
  if (!currentPart) return nullptr;
  std::string full = currentPart->name;
  return GetBankByPath(full.append("://").append(name));
}

CElement* CAppFile::GetElementByPath(std::string_view elementPath, bool mustBeTyped) const {
  return elementsByName.Find(HashName(elementPath), [&](const CElement& element) {
    return !(mustBeTyped && element.bank->type == kBankSource) && element.HasPath(elementPath);
  });
}

CElement* CAppFile::GetElement(std::string_view name, uint32_t type, bool mustBeTyped) const {
  if (name.find(':') != std::string_view::npos) return GetElementByPath(name, mustBeTyped);
  const CBank* bank = mustBeTyped && type == kBankSource ? nullptr : GetBank(type);
  if (!bank) return nullptr;
  std::string full = bank->GetPath();
  return GetElementByPath(full.append(1, '/').append(name), mustBeTyped);
}

CElement* CAppFile::GetElementByIndex(uint32_t index, uint32_t type, bool mustBeTyped) const {
  const CBank* bank = mustBeTyped && type == kBankSource ? nullptr : GetBank(type);
  return bank ? bank->GetElement(index) : nullptr;
}

std::unique_ptr<CStream> CAppFile::OpenResource(std::string_view name, bool mustBeTyped, uint32_t option) {
  if (CElement* element = GetElementByPath(name, mustBeTyped)) return element->OpenStream(option);
  std::string filePath;
  return files_ && PathOfFile(name, &filePath) ? CFileStream::Open(*files_, filePath) : nullptr;
}

bool CAppFile::PathOfFile(std::string_view name, std::string* filePath) const {
  std::string relative;
  if (ConfineName(name, &relative)) {
    *filePath = MakePath(relative);
    return true;
  }
  const bool isFromRoot = name.starts_with('\\') || name.starts_with('/') || name.substr(0, 2).ends_with(':');
  return isFromRoot && MakeFullPath(name, kHomeFolder, filePath) == SYS_SUCCESS;
}

std::string CAppFile::MakePath(std::string_view name) const {
  if (name.find(':') != std::string_view::npos) return std::string(name);
  return std::string(DirectoryOf(path)).append(name);
}

void CAppFile::ForEachSource(bool withInitSource, const std::function<bool(SourceEntry&&)>& add) {
  if (withInitSource && currentPart && !currentPart->initSource.empty()) {
    const auto here = [&](const auto& part) { return part.get() == currentPart; };
    const auto place = std::find_if(parts.begin(), parts.end(), here) - parts.begin();
    add({"InitSource", currentPart->initSource, static_cast<uint32_t>(place + 1),
         SourceEntry::kFlagInit | SourceEntry::kFlagCopy});
  }
  bool first = true;
  uint64_t work = 0;
  for (size_t p = 0; p < parts.size(); ++p) {
    CBank* bank = parts[p]->GetBank(kBankSource);
    if (!bank) continue;
    for (uint32_t i = 0; i < bank->elements.size(); ++i) {
      // A bank of type 0 is a binary bank: CBank::Read makes no other.
      auto* element = static_cast<CBinaryElement*>(bank->elements[i].get());
      if (!element) continue;
      // Slots may share one body, so what loading costs is bounded as well as what it gives.
      const uint32_t size = element->StoredBodySize();
      if (size > limits::kMaxSourceBytes) break;
      work += size;
      if (work > limits::kMaxSourceWorkBytes) return;
      if (!bank->Load(i) || !element->IsLoaded()) continue;
      SourceEntry entry{element->GetPath(), std::string(element->data.View()), static_cast<uint32_t>(p + 1),
                        SourceEntry::kFlagCopy | (first ? SourceEntry::kFlagMain : 0)};
      bank->Unload(i);
      first = false;
      if (!add(std::move(entry))) break;
    }
  }
}

std::vector<SourceEntry> CAppFile::CollectSources(bool withInitSource) {
  std::vector<SourceEntry> sources;
  uint64_t total = 0;
  ForEachSource(withInitSource, [&](SourceEntry&& entry) {
    const uint64_t size = entry.text.size() + entry.path.size();
    if (sources.size() == limits::kMaxSources || entry.text.size() >= limits::kMaxSourceBytes ||
        size > limits::kMaxAllSourceBytes - total) {
      return false;
    }
    total += size;
    sources.push_back(std::move(entry));
    return true;
  });
  return sources;
}

void CAppFile::RegisterPart(CAppPart& part) { partsByName.Add(part, HashName(part.name)); }
void CAppFile::RegisterBank(CBank& bank) { banksByName.Add(bank, bank.PathHash()); }
void CAppFile::RegisterElement(CElement& element) { elementsByName.Add(element, element.PathHash()); }
void CAppFile::ForgetElement(CElement& element) { elementsByName.Remove(element, element.PathHash()); }

}  // namespace vl

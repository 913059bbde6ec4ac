#include "host/appfile/bank.h"

#include <algorithm>
#include <utility>

#include "host/appfile/app_file.h"
#include "host/appfile/names.h"

namespace vl {

namespace {

std::unique_ptr<CBank> MakeBank(CAppPart& part, uint32_t type) {
  switch (type) {
    case kBankImage:
      return std::make_unique<CImageBank>(part, type);
    case kBankAnimation:
      return std::make_unique<CAnimBank>(part, type);
    case kBankString:
      return std::make_unique<CStringBank>(part, type);
    default:
      return std::make_unique<CBinaryBank>(part, type);
  }
}

constexpr std::string_view kPartSeparator = "://";

}  // namespace

CAppFile& CBank::App() const { return *part->app; }

std::unique_ptr<CBank> CBank::Read(CAppPart& part, std::shared_ptr<File> file, CStream& stream, int64_t end,
                                   uint32_t* status) {
  const int64_t start = stream.GetPosition();
  uint32_t type = 0;
  std::string name;
  uint32_t version = kBankVersion1;
  *status = stream.ReadDwordLE(&type);
  if (!*status) *status = stream.ReadShortText(&name);
  if (!*status && part.version >= kVersionBankVersion) *status = stream.ReadDwordLE(&version);
  if (!*status && !part.app->Structure().Spend(ReadBudget::kBankFee + name.size())) *status = kAppOutOfMemory;
  if (*status) return nullptr;
  std::unique_ptr<CBank> bank = MakeBank(part, type);
  bank->name = std::move(name);
  bank->version = version;
  bank->file = std::move(file);
  bank->end_ = end;
  if (bank->ReadHeader(stream)) {
    *status = bank->ReadElements(stream, start);
  } else {
    *status = kAppBankHeader;
  }
  if (*status) bank.reset();
  return bank;
}

uint32_t CBank::ReadElements(CStream& stream, int64_t start) {
  ReadBudget& budget = App().Structure();
  uint32_t count = 0;
  if (const uint32_t status = stream.ReadDwordLE(&count)) return status;
  if (count > static_cast<uint64_t>(stream.Remaining()) / 4) return kAppEndOfFile;
  if (!budget.Spend(uint64_t{count} * 4)) return kAppOutOfMemory;
  positions.resize(count);
  for (uint32_t& position : positions) {
    if (const uint32_t status = stream.ReadDwordLE(&position)) return status;
    if (position == 0) continue;
    if (start + position > UINT32_MAX) return kAppElementHeader;
    position += static_cast<uint32_t>(start);
  }
  if (type == kBankImage) {
    starts_.insert(starts_.end(), positions.begin(), positions.end());
    std::sort(starts_.begin(), starts_.end());
  }
  elements.resize(count);
  for (uint32_t i = 0; i < count; ++i) {
    if (positions[i] == 0) continue;
    if (!budget.AddElement()) return kAppOutOfMemory;
    std::unique_ptr<CElement> element = NewElement(i);
    if (stream.Seek(positions[i]) || !element->ReadHeader(stream)) return kAppElementHeader;
    positions[i] = static_cast<uint32_t>(std::min<int64_t>(stream.GetPosition(), UINT32_MAX));
    elements[i] = std::move(element);
  }
  return kAppOk;
}

bool CBank::Load(uint32_t index, uint32_t option) {
  CAppFile& app = App();
  app.lastBankError = kAppOk;
  CElement* element = GetElement(index);
  if (!element) return false;
  if (element->IsLoaded() || positions[index] == 0) return true;
  CFileStream stream(file);
  stream.Seek(positions[index]);
  return element->LoadBody(stream, option) > 0;
}

void CBank::Unload(uint32_t index) {
  CElement* element = GetElement(index);
  if (element && element->lockCount == 0) element->Unload();
}

const void* CBank::Lock(uint32_t index) {
  CElement* element = GetElement(index);
  if (!element || !element->IsLoaded()) return nullptr;
  ++element->lockCount;
  return element->GetData();
}

void CBank::Unlock(uint32_t index) {
  CElement* element = GetElement(index);
  if (element && element->lockCount > 0) --element->lockCount;
}

void CBank::DeleteElement(uint32_t index) {
  CElement* element = GetElement(index);
  if (!element) return;
  App().ForgetElement(*element);
  elements[index].reset();
  positions[index] = 0;
}

CElement* CBank::GetElement(uint32_t index) const { return index < elements.size() ? elements[index].get() : nullptr; }

int32_t CBank::FindByName(std::string_view elementName) const {
  for (size_t i = 0; i < elements.size(); ++i) {
    if (elements[i] && EqualsIgnoringCase(elements[i]->name, elementName)) return static_cast<int32_t>(i);
  }
  return -1;
}

std::string CBank::GetPath() const {
  std::string result = part->name;
  return result.append(kPartSeparator).append(name);
}

bool CBank::HasPath(std::string_view path) const {
  const std::string& partName = part->name;
  return path.size() == partName.size() + kPartSeparator.size() + name.size() &&
         EqualsIgnoringCase(path.substr(path.size() - name.size()), name) &&
         path.substr(partName.size(), kPartSeparator.size()) == kPartSeparator &&
         EqualsIgnoringCase(path.substr(0, partName.size()), partName);
}

int64_t CBank::GetBodyEnd(uint32_t index) const {
  const int64_t position = positions[index];
  int64_t end = end_ > position ? end_ : INT64_MAX;
  const auto next = std::upper_bound(starts_.begin(), starts_.end(), positions[index]);
  return next == starts_.end() ? end : std::min<int64_t>(end, *next);
}

void CBank::RegisterNames() {
  CAppFile& app = App();
  pathHash_ = HashName(part->name) + HashName(kPartSeparator) + HashName(name);
  for (const auto& element : elements) {
    if (element) app.RegisterElement(*element);
  }
  app.RegisterBank(*this);
}

std::unique_ptr<CElement> CBinaryBank::NewElement(uint32_t index) {
  return std::make_unique<CBinaryElement>(*this, index);
}

std::unique_ptr<CElement> CStringBank::NewElement(uint32_t index) {
  return std::make_unique<CStringElement>(*this, index);
}

std::unique_ptr<CElement> CAnimBank::NewElement(uint32_t index) { return std::make_unique<CAnimElement>(*this, index); }

std::unique_ptr<CElement> CImageBank::NewElement(uint32_t index) {
  return std::make_unique<CImageElement>(*this, index);
}

bool CImageBank::ReadHeader(CStream& stream) {
  CAppFile& app = App();
  const int64_t start = stream.GetPosition();
  uint32_t offset = 0;
  uint32_t status = stream.ReadDwordLE(&offset);
  const int64_t behind = stream.GetPosition();
  if (!status && offset) {
    const int64_t table = start + offset;
    status = stream.Seek(table);
    if (!status) status = stream.ReadDwordLE(&tableCount);
    if (!status) {
      tablePosition = stream.GetPosition();
      // A table that the file doesn't hold whole still serves the pictures that use its first records.
      tableCount = static_cast<uint32_t>(
          std::min<uint64_t>(tableCount, static_cast<uint64_t>(stream.Remaining()) / sizeof(StoredPalette)));
      if (table <= UINT32_MAX) starts_.push_back(static_cast<uint32_t>(table));
    }
    if (!status) status = stream.Seek(behind);
  }
  if (!status) return true;
  app.lastBankError = status;
  return false;
}

bool CImageBank::ReadPalette(uint32_t index, StoredPalette* record) {
  CAppFile& app = App();
  app.lastBankError = kAppBankHeader;
  if (index >= tableCount) return false;
  CFileStream stream(file);
  stream.Seek(tablePosition + int64_t{index} * static_cast<int64_t>(sizeof(StoredPalette)));
  app.lastBankError = stream.Read(record->data(), static_cast<uint32_t>(record->size()));
  return app.lastBankError == kAppOk;
}

}  // namespace vl

#include "host/appfile/app_part.h"

#include <utility>

#include "host/appfile/app_file.h"
#include "host/appfile/chunk_run.h"

namespace vl {

CAppPart::CAppPart(CAppFile& owner, uint32_t partKind) : app(&owner), kind(partKind), version(owner.version) {}

uint32_t CAppPart::Read(CFileStream& stream, std::string_view nameOfFile) {
  externalName = nameOfFile;
  if (nameOfFile.empty()) {
    path = app->path;
    file = app->file;
    return ReadChunks(stream, app->Structure(), [&](const ChunkRecord& chunk) { ReadChunk(stream, chunk); });
  }
  file = app->OpenBeside(nameOfFile, &path);
  if (!file) return kAppCantOpen;
  ownsFile = true;
  CFileStream own(file);
  return ReadChunks(own, app->Structure(), [&](const ChunkRecord& chunk) { ReadChunk(own, chunk); });
}

uint32_t CAppPart::ReadChunk(CFileStream& stream, const ChunkRecord& chunk) {
  chunks.push_back(chunk);
  if (chunk.size == 0) return kAppOk;
  if (chunk.id == kChunkBank) return ReadBank(stream, chunk);
  ReadBudget& budget = app->Structure();
  CWindowStream payload(stream, chunk.size);
  uint32_t status = kAppOk;
  switch (chunk.id) {
    case kChunkPartHeader:
      if (!budget.Spend(chunk.size)) return kAppOutOfMemory;
      status = ReadHeader(payload, version);
      paletteInUse = flags & 1;
      break;
    case kChunkVersion: {
      uint16_t low = 0;
      status = payload.ReadWordLE(&low);
      if (status) break;
      version = (version & 0xFFFF0000u) | low;
      versionReplaced = true;
      break;
    }
    case kChunkInitSource:
      status = ReadInitSource(payload);
      if (!budget.Spend(payload.GetPosition() + initSource.size() / 16)) return kAppOutOfMemory;
      break;
    case kChunkGameInput:
      if (version < kVersionOwnChunks) break;
      status = ReadGameInput(payload);
      if (!budget.Spend(payload.GetPosition() + gameInputData.size() / 16)) return kAppOutOfMemory;
      break;
  }
  return status;
}

uint32_t CAppPart::ReadBank(CFileStream& stream, const ChunkRecord& chunk) {
  const int64_t end = stream.GetPosition() + chunk.size;
  std::string bankFileName;
  uint32_t status = stream.ReadShortText(&bankFileName);
  if (status) return status;
  std::unique_ptr<CBank> bank;
  if (bankFileName.empty()) {
    bank = CBank::Read(*this, file, stream, end, &status);
    if (bank) bank->path = path;
  } else {
    std::string bankPath;
    std::shared_ptr<File> bankFile = app->OpenBeside(bankFileName, &bankPath);
    if (!bankFile) return app->lastBankError = kAppCantOpen;
    CFileStream own(bankFile);
    bank = CBank::Read(*this, std::move(bankFile), own, own.GetLength(), &status);
    if (bank) {
      bank->path = std::move(bankPath);
      bank->externalName = std::move(bankFileName);
      bank->ownsFile = true;
    }
  }
  if (!bank) return app->lastBankError = status;
  banks.push_back(std::move(bank));
  return kAppOk;
}

CBank* CAppPart::GetBank(uint32_t type) const {
  for (const auto& bank : banks) {
    if (bank->type == type) return bank.get();
  }
  return nullptr;
}

}  // namespace vl

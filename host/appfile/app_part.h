// CAppPart: one application part, with its header, its palette and its banks.
//
// Belongs to its CAppFile, and lives as long as the file is open.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/appfile/bank.h"
#include "host/appfile/part_header.h"

namespace vl {

class CAppFile;

// Where a chunk was found.
struct ChunkRecord {
  uint32_t id = 0;
  uint32_t size = 0;     // of the payload, as the file tells it
  int64_t position = 0;  // of the id in the file
};

class CAppPart : public PartHeader {
 public:
  static constexpr uint32_t kNormal = 0;
  static constexpr uint32_t kDesign = 1;

  CAppPart(CAppFile& owner, uint32_t partKind);
  CAppPart(const CAppPart&) = delete;
  CAppPart& operator=(const CAppPart&) = delete;

  // Reads the part whose content starts at the stream's position, or the external file named `externalName`.
  uint32_t Read(CFileStream& stream, std::string_view nameOfFile);

  // The first bank of that type, or null.
  CBank* GetBank(uint32_t type) const;

  CAppFile* app;
  uint32_t kind;
  std::string path;  // of the file that holds the part
  std::shared_ptr<File> file;
  bool ownsFile = false;
  std::string externalName;  // as the application file tells it; empty for a part inside it
  uint32_t version;          // the file's, with the low half that the part may replace
  bool versionReplaced = false;
  bool paletteInUse = false;
  std::vector<std::unique_ptr<CBank>> banks;
  std::vector<ChunkRecord> chunks;
  CAppPart* nextByName = nullptr;

 private:
  uint32_t ReadChunk(CFileStream& stream, const ChunkRecord& chunk);
  uint32_t ReadBank(CFileStream& stream, const ChunkRecord& chunk);
};

}  // namespace vl

// The parts of the file that are plain records: the header of an application part and the settings.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "host/appfile/bank.h"
#include "host/appfile/stream.h"

namespace vl {

// File versions: each name says what came with it.
inline constexpr uint32_t kVersionReleaseFlags2 = 0x44550000;
inline constexpr uint32_t kVersionBankVersion = 0x44550002;
inline constexpr uint32_t kVersionReserved = 0x44550003;
inline constexpr uint32_t kVersionOwnChunks = 0x44550004;  // init source and game input leave the part header
inline constexpr uint32_t kVersionPlainKind = 0x44550005;
inline constexpr uint32_t kVersionClassTable = 0x44550006;
inline constexpr uint32_t kVersionNewest = kVersionClassTable;

enum ChunkId : uint32_t {
  kChunkPartHeader = 0x1000,
  kChunkSignature = 0x1001,
  kChunkBank = 0x1100,
  kChunkPart = 0x1200,
  kChunkSettings = 0x1300,
  kChunkVersion = 0x1400,
  kChunkInitSource = 0x1500,
  kChunkGameInput = 0x1600,
  kChunkDesignPart = 0x1800,
  kChunkEnd = 0x7F7F,
};

struct PartHeader {
  bool hasHeader = false;  // a part without header has no palette of its own
  std::string name;
  uint32_t flags = 0;  // bit 0: the palette is to be used as the display palette
  StoredPalette palette{};
  std::string initSource;
  uint32_t reserved = 0;           // kept, without effect
  uint16_t gameInputReserved = 0;  // kept, without effect
  uint16_t gameInputUsed = 0;      // not 0: the program starts with a default GameInput object
  uint32_t gameInputPlayer = 0;
  std::string gameInputData;
  uint16_t speedPercent = 100;  // share of the processor, 100 is all
  uint32_t backColor = 0xFFFFFF;
  uint16_t releaseFlag = 1;
  uint16_t sound3D = 1;
  uint16_t releaseFlags = 1;
  uint16_t releaseFlags2 = 1;
  // Whether the init source and the game input data are stored compressed.
  bool buffersCompressed = false;

  bool operator==(const PartHeader&) const = default;

  // Reads the payload of kChunkPartHeader. A short one keeps the defaults of the fields it lacks, and the status
  // says so.
  uint32_t ReadHeader(CStream& payload, uint32_t version);
  uint32_t ReadInitSource(CStream& payload);
  uint32_t ReadGameInput(CStream& payload);
};

// The payload of kChunkSettings.
struct AppSettings {
  uint32_t firstWord = 0;  // kept, without effect
  uint32_t applicationKind = 1;
  bool hasClassTable = false;
  bool tableCompressed = false;
  std::vector<std::string> classNames;

  bool operator==(const AppSettings&) const = default;

  // What was read before a failure stays.
  uint32_t Read(CStream& payload, uint32_t version);
};

}  // namespace vl

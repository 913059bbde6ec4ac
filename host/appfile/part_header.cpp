#include "host/appfile/part_header.h"

#include <algorithm>
#include <utility>

#include "base/limits.h"
#include "host/appfile/compressed_buffer.h"

namespace vl {

namespace {

// Reads a compressed buffer into a text.
uint32_t ReadBufferText(CStream& stream, uint32_t maxSize, std::string* text, bool* compressed) {
  BufferSizes sizes;
  ByteBlock block;
  uint32_t status = ReadBufferSizes(stream, &sizes, maxSize);
  if (!status) status = ReadBufferBytes(stream, sizes, &block);
  if (status) return status;
  text->assign(block.View());
  *compressed |= sizes.size && sizes.compressedSize;
  return kAppOk;
}

}  // namespace

uint32_t PartHeader::ReadHeader(CStream& payload, uint32_t version) {
  const bool ownChunks = version >= kVersionOwnChunks;
  uint32_t gameInputSize = 0;
  StoredPalette colours;
  uint32_t status = payload.ReadShortText(&name);
  if (!status) status = payload.ReadDwordLE(&flags);
  if (!status) status = payload.Read(colours.data(), static_cast<uint32_t>(colours.size()));
  if (status) return status;
  palette = colours;
  hasHeader = true;
  if (!ownChunks) status = payload.ReadShortText(&initSource);
  if (!status) status = payload.ReadDwordLE(&reserved);
  if (!ownChunks) {
    if (!status) status = payload.ReadWordLE(&gameInputReserved);
    if (!status) status = payload.ReadWordLE(&gameInputUsed);
    if (!status) status = payload.ReadDwordLE(&gameInputPlayer);
    if (!status) status = payload.ReadDwordLE(&gameInputSize);
    if (!status && gameInputSize > payload.Remaining()) status = kAppEndOfFile;
    if (!status) {
      gameInputData.resize(gameInputSize);
      status = payload.Read(gameInputData.data(), gameInputSize);
    }
  }
  if (!status) status = payload.ReadWordLE(&speedPercent);
  uint16_t padding = 0;
  if (!status && !ownChunks) status = payload.ReadWordLE(&padding);
  if (!status) status = payload.ReadDwordLE(&backColor);
  if (!status) status = payload.ReadWordLE(&releaseFlag);
  if (!status) status = payload.ReadWordLE(&sound3D);
  if (!status) status = payload.ReadWordLE(&releaseFlags);
  if (!status && version >= kVersionReleaseFlags2) status = payload.ReadWordLE(&releaseFlags2);
  return status;
}

uint32_t PartHeader::ReadInitSource(CStream& payload) {
  return ReadBufferText(payload, limits::kMaxSourceBytes, &initSource, &buffersCompressed);
}

uint32_t PartHeader::ReadGameInput(CStream& payload) {
  uint32_t status = payload.ReadWordLE(&gameInputReserved);
  if (!status) status = payload.ReadWordLE(&gameInputUsed);
  if (!status) status = payload.ReadDwordLE(&gameInputPlayer);
  if (!status) status = ReadBufferText(payload, limits::kMaxSourceBytes, &gameInputData, &buffersCompressed);
  return status;
}

uint32_t AppSettings::Read(CStream& payload, uint32_t version) {
  uint32_t status = payload.ReadDwordLE(&firstWord);
  if (!status && version > kVersionReleaseFlags2) {
    uint32_t kind = 0;
    status = payload.ReadDwordLE(&kind);
    if (status) return status;
    if (version < kVersionPlainKind) {
      if (kind > 1) return kAppNotRecognised;
      ++kind;
    }
    applicationKind = kind;
  }
  if (!status && version >= kVersionReserved) {
    uint32_t reserved = 0;
    status = payload.ReadDwordLE(&reserved);
    if (!status && reserved != 0) return kAppNotRecognised;
  }
  if (status || version < kVersionClassTable) return status;
  std::string table;
  status = ReadBufferText(payload, limits::kMaxClassTableBytes, &table, &tableCompressed);
  CMemoryStream stream(table.data(), static_cast<uint32_t>(table.size()));
  uint32_t count = 0;
  if (!status) status = stream.ReadDwordLE(&count);
  if (status) return status;
  std::string_view rest(table);
  rest.remove_prefix(4);
  // The last name may lack its NUL: the buffer has one behind it.
  while (count-- > 0 && !rest.empty()) {
    const size_t length = std::min(rest.find('\0'), rest.size());
    classNames.emplace_back(rest.substr(0, length));
    rest.remove_prefix(std::min(length + 1, rest.size()));
  }
  hasClassTable = true;
  return kAppOk;
}

}  // namespace vl

// Hand-made application files for the tests: the bytes are spelled out here, apart from the writer.
#pragma once

#include <zlib.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/appfile/app_file.h"
#include "platform/memory_files.h"

namespace vl::test {

inline std::string U16(uint32_t v) { return {static_cast<char>(v), static_cast<char>(v >> 8)}; }
inline std::string U32(uint32_t v) { return U16(v) + U16(v >> 16); }
inline std::string Short(std::string_view text) { return U16(static_cast<uint32_t>(text.size())).append(text); }
inline std::string Chunk(uint32_t id, std::string_view payload) {
  return (U32(id) + U32(static_cast<uint32_t>(payload.size()))).append(payload);
}
inline std::string End() { return Chunk(0x7F7F, ""); }
inline std::string Version(uint32_t v) { return Chunk(0x1400, U32(v)); }

inline std::string Deflate(std::string_view plain) {
  uLongf size = compressBound(plain.size());
  std::string packed(size, '\0');
  compress(reinterpret_cast<Bytef*>(packed.data()), &size, reinterpret_cast<const Bytef*>(plain.data()), plain.size());
  packed.resize(size);
  return packed;
}
inline std::string Plain(std::string_view bytes) {
  return (U32(static_cast<uint32_t>(bytes.size())) + U32(0)).append(bytes);
}
inline std::string Packed(std::string_view bytes) {
  const std::string packed = Deflate(bytes);
  return U32(static_cast<uint32_t>(bytes.size())) + U32(static_cast<uint32_t>(packed.size())) + packed;
}

// Newest layout of the part header.
inline std::string Header(std::string_view name, uint32_t flags = 0) {
  return Short(name) + U32(flags) + std::string(1024, '\x07') + U32(0) + U16(100) + U32(0xFFFFFF) + U16(1) + U16(1) +
         U16(1) + U16(1);
}

struct Slot {
  std::string name;
  std::string body = {};  // with what stands between header and body
  std::string group = {};
  bool empty = false;
};

// A bank of the newest layout; `typeHeader` for image banks.
inline std::string Bank(uint32_t type, std::string_view name, const std::vector<Slot>& slots,
                        std::string_view typeHeader = {}, uint32_t version = 0x16740002) {
  std::string head = U32(type) + Short(name) + U32(version);
  head.append(typeHeader).append(U32(static_cast<uint32_t>(slots.size())));
  std::string offsets;
  std::string bodies;
  const size_t base = head.size() + slots.size() * 4;
  for (const Slot& slot : slots) {
    offsets += U32(slot.empty ? 0 : static_cast<uint32_t>(base + bodies.size()));
    if (!slot.empty) bodies += Short(slot.name) + Short(slot.group) + slot.body;
  }
  return head + offsets + bodies;
}
inline std::string InlineBank(std::string_view bank) { return Chunk(0x1100, U16(0).append(bank)); }
inline std::string Part(std::string_view chunks, uint32_t id = 0x1200) {
  return Chunk(id, U16(0).append(chunks).append(End()));
}

// A file of the newest version with these chunks behind the version, in memory and open.
struct OpenApp {
  explicit OpenApp(std::string_view bytes, bool designMode = false, std::string_view path = "dir/app.vlp") {
    files.Add(path, bytes);
    status = app.Open("title", path, files, designMode);
  }
  MemoryFileSystem files;
  CAppFile app;
  uint32_t status;
};

inline std::string Newest(std::string_view chunks) { return Version(0x44550006).append(chunks).append(End()); }

inline std::string ReadAll(CStream& stream) {
  std::string bytes(static_cast<size_t>(stream.Remaining()), '\0');
  EXPECT_EQ(stream.Read(bytes.data(), static_cast<uint32_t>(bytes.size())), kAppOk);
  return bytes;
}

}  // namespace vl::test

// The loop over a run of chunks, which the file level and the part level share.
#pragma once

#include "host/appfile/app_part.h"
#include "host/appfile/read_budget.h"
#include "host/appfile/stream.h"

namespace vl {

// Calls `handle(chunk)` for each chunk up to the end chunk, with the stream at the payload; the next chunk starts
// behind the payload whatever was made of it. The status is that of the last chunk header.
template <class Handle>
uint32_t ReadChunks(CStream& stream, ReadBudget& budget, Handle handle) {
  for (;;) {
    ChunkRecord chunk;
    chunk.position = stream.GetPosition();
    uint32_t status = stream.ReadDwordLE(&chunk.id);
    if (!status) status = stream.ReadDwordLE(&chunk.size);
    if (!status && !budget.Spend(8)) status = kAppOutOfMemory;
    if (status || chunk.id == kChunkEnd) return status;
    const int64_t payload = stream.GetPosition();
    handle(chunk);
    stream.Seek(payload + chunk.size);
  }
}

}  // namespace vl

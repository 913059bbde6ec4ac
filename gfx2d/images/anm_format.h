// The numbers of the ANMV format, shared by its reader and its writer. All values are little-endian.
#pragma once

#include <cstdint>

namespace vl::anm {

inline constexpr uint32_t kMagic = 0x564D4E41;  // "ANMV"
inline constexpr uint32_t kHeaderBytes = 40;
inline constexpr int64_t kFrameCountOffset = 28;  // in the file header; the total time is at 36
inline constexpr int64_t kTotalTimeOffset = 36;
inline constexpr uint32_t kChunkHeaderBytes = 8;  // u16 id, u16 0, u32 size of the data
inline constexpr uint32_t kFrameHeaderBytes = 28;

inline constexpr uint16_t kUserData = 0x4570;
inline constexpr uint16_t kPalette = 0x4571;
inline constexpr uint16_t kKeyFrame = 0x4572;
inline constexpr uint16_t kDeltaFrame = 0x4573;
inline constexpr uint16_t kLoop = 0x4574;

inline constexpr uint32_t kNoPicture = 1;  // flag of a frame that shows the one before it

// In the codes of a delta frame: the low seven bits are skipped; clear, they are a count of what follows.
inline constexpr uint8_t kSkip = 0x80;
inline constexpr int32_t kMostAtOnce = 127;

}  // namespace vl::anm

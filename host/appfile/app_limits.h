// Limits of reading an application file, with their reasons.
#pragma once

#include <cstdint>

namespace vl::limits {

// Deflate can't expand further than 1032 to 1; a size that claims more is a lie. The constant covers tiny streams.
inline constexpr uint64_t kMaxInflateRatio = 1032;
inline constexpr uint64_t kInflateSlackBytes = 64;
// One body or buffer.
inline constexpr uint32_t kMaxBodyBytes = uint32_t{1} << 30;
// The class table names a hundred classes at most.
inline constexpr uint32_t kMaxClassTableBytes = uint32_t{64} << 10;
// Element slots of all banks together; real applications have some thousands.
inline constexpr uint32_t kMaxElements = uint32_t{1} << 20;
// All program text of an application.
inline constexpr uint64_t kMaxAllSourceBytes = uint64_t{64} << 20;
// What may be inflated while collecting it, damaged and refused texts included.
inline constexpr uint64_t kMaxSourceWorkBytes = 4 * kMaxAllSourceBytes;

// Slots and chunks may overlap, so a small file can describe very many large things. What is read while opening
// (names, tables, headers, plus a fee for each object that is made) may add up to this many times the size of
// the files, and the slack for tiny ones. In a file whose pieces don't overlap it stays below that.
inline constexpr uint64_t kStructureRatio = 8;
inline constexpr uint64_t kStructureSlackBytes = 256u << 10;

}  // namespace vl::limits

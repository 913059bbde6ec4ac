// Status values of everything that reads an application file. 0 is success.
#pragma once

#include <cstdint>
#include <string_view>

namespace vl {

inline constexpr uint32_t kAppOk = 0;
// No chunk was recognised, or a field of the settings chunk has a value that isn't allowed.
inline constexpr uint32_t kAppNotRecognised = 0xFFFFFFFFu;
inline constexpr uint32_t kAppOutOfMemory = 0x40000000u;
inline constexpr uint32_t kAppReadFailed = 0x40000001u;
// End of file, or fewer bytes than asked for.
inline constexpr uint32_t kAppEndOfFile = 0x40000002u;
inline constexpr uint32_t kAppCantOpen = 0x40000005u;
// A zlib stream is damaged or doesn't hold what its sizes say; also a picture that no filter reads.
inline constexpr uint32_t kAppBadStream = 0x40000009u;
// A surface that can't be locked, or a stored depth without prototype.
inline constexpr uint32_t kAppNoPixels = 0x40010002u;
// The type's part of a bank header, or an index into its palette table.
inline constexpr uint32_t kAppBankHeader = 10000;
// No path given, and no application appended to the runtime.
inline constexpr uint32_t kAppNoApplication = 10002;
inline constexpr uint32_t kAppElementHeader = 10004;

// What a status means, in words.
std::string_view StatusText(uint32_t status);

}  // namespace vl

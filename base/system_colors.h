// The 27 system colours of the classic look, as 0x00BBGGRR, by the system's colour index.
#pragma once

#include <array>
#include <cstdint>

namespace vl {

inline constexpr std::array<uint32_t, 29> kSystemColors = {
    0x00C8D0D4,  // 0 scroll bar
    0x00A56E3A,  // 1 desktop
    0x006A240A,  // 2 active caption
    0x00808080,  // 3 inactive caption
    0x00C8D0D4,  // 4 menu
    0x00FFFFFF,  // 5 window
    0x00000000,  // 6 window frame
    0x00000000,  // 7 menu text
    0x00000000,  // 8 window text
    0x00FFFFFF,  // 9 caption text
    0x00C8D0D4,  // 10 active border
    0x00C8D0D4,  // 11 inactive border
    0x00808080,  // 12 application workspace
    0x006A240A,  // 13 highlight
    0x00FFFFFF,  // 14 highlight text
    0x00C8D0D4,  // 15 button face
    0x00808080,  // 16 button shadow
    0x00808080,  // 17 grey text
    0x00000000,  // 18 button text
    0x00C8D0D4,  // 19 inactive caption text
    0x00FFFFFF,  // 20 button highlight
    0x00404040,  // 21 dark shadow
    0x00C8D0D4,  // 22 light
    0x00000000,  // 23 tip text
    0x00E1FFFF,  // 24 tip background
    0x00B5B5B5,  // 25 (unused by the language)
    0x00800000,  // 26 hot light
    0x00F0CAA6,  // 27 gradient active caption
    0x00C0C0C0,  // 28 gradient inactive caption
};

// 0 for an index outside.
inline uint32_t SystemColor(uint32_t index) { return index < kSystemColors.size() ? kSystemColors[index] : 0; }

}  // namespace vl

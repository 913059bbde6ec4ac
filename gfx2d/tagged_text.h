// Tagged text: plain text with tags for style, face, colour and size, as one token after the other.
//
// What can't be read as a tag is text, so every text can be read. Whether a tag stands at a place depends only on the
// bytes from there to its end, which are at most kMaxTagBytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "gfx2d/colour.h"

namespace vl {

enum TagCode : int32_t {
  kTagEnd = 1,  // the end of the text, and what a tag of an unknown name gives
  kTagText = 2,
  kTagUnderline = 3,
  kTagBold = 4,
  kTagItalic = 5,
  kTagStrike = 6,
  kTagFont = 9,
  kTagTypewriter = 10,
  kTagSmall = 11,
  kTagBig = 12,
  kTagSuperscript = 13,
  kTagSubscript = 14,
  kTagClosing = 0x1000,  // added to the code of what is closed
};

// A longer tag is text. Faces have 31 bytes, so no tag that means something comes near; and a place is never looked
// at from further away than that.
inline constexpr size_t kMaxTagBytes = 512;

struct TagToken {
  int32_t code = kTagEnd;
  std::string_view text;  // of kTagText: the bytes as they stand, references and all
  // Of kTagFont, valid with their flag.
  bool hasFace = false;
  bool hasColor = false;
  bool hasSize = false;
  bool isSizeRelative = false;
  std::string face;  // upper case; may be empty
  Colour color = 0;  // the library's order
  int32_t size = 0;  // pixels, or the difference to the current height; never 0 when absolute
};

// Reads the token at `position` and moves behind it. At the end of the text the code is kTagEnd and nothing moves.
TagToken ReadToken(std::string_view text, size_t& position);
// Where the tag that starts at `position` ends, behind its '>'; `position` itself when there is text.
size_t EndOfTag(std::string_view text, size_t position);

}  // namespace vl

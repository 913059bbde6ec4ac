#include "gfx2d/text_layout.h"

#include <algorithm>

namespace vl {
namespace {

constexpr size_t kNone = std::string::npos;

// A logical line without its prefixes, and where the underlined character is.
struct PlainLine {
  std::string text;
  size_t underline = kNone;
};

PlainLine TakePrefixes(std::string_view text, bool keep) {
  PlainLine line;
  if (keep) {
    line.text = text;
    return line;
  }
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '&') {
      if (++i == text.size()) break;
      if (text[i] != '&') line.underline = line.text.size();
    }
    line.text += text[i];
  }
  return line;
}

class LineMaker {
 public:
  LineMaker(TextFont& font, uint32_t format, const TextMargins& margins)
      : font_(font), expandTabs_((format & kTextExpandTabs) != 0) {
    const int length = (format & kTextTabStop) ? margins.tabLength : 8;
    tabWidth_ = std::max<int64_t>(1, int64_t{std::clamp(length, 1, 1 << 16)} * font.metrics().averageWidth);
  }

  TextLine Make(std::string_view text, size_t underline) const {
    TextLine line;
    int64_t x = 0;
    size_t start = 0;
    while (start <= text.size()) {
      const size_t tab = expandTabs_ ? std::min(text.find('\t', start), text.size()) : text.size();
      const std::string_view piece = text.substr(start, tab - start);
      if (!piece.empty()) {
        if (underline >= start && underline < tab) {
          line.underlineX = int(x) + font_.measure(piece.substr(0, underline - start)).width;
          line.underlineWidth = font_.measure(piece.substr(underline - start, 1)).width;
        }
        line.pieces.push_back({std::string(piece), int(x)});
        x = std::min<int64_t>(x + font_.measure(piece).width, kWidest);
      }
      if (tab < text.size()) x = std::min((x / tabWidth_ + 1) * tabWidth_, kWidest);
      start = tab + 1;
    }
    line.width = int(x);
    return line;
  }

 private:
  static constexpr int64_t kWidest = 1 << 28;
  TextFont& font_;
  bool expandTabs_;
  int64_t tabWidth_;
};

// Bytes of `text` that fit in `width`, at least one; widths grow with the count.
size_t FittingBytes(const LineMaker& maker, std::string_view text, int width) {
  size_t low = 1;
  size_t high = text.size();
  while (low < high) {
    const size_t middle = low + (high - low + 1) / 2;
    if (maker.Make(text.substr(0, middle), kNone).width <= width) {
      low = middle;
    } else {
      high = middle - 1;
    }
  }
  return low;
}

}  // namespace

std::vector<TextLine> LayOutText(TextFont& font, std::string_view text, int width, uint32_t format,
                                 const TextMargins& margins) {
  const LineMaker maker(font, format, margins);
  std::vector<TextLine> lines;
  const bool single = (format & kTextSingleLine) != 0;
  const bool breakWords = !single && (format & kTextWordBreak);
  size_t start = 0;
  while (start <= text.size()) {
    size_t end = single ? text.size() : std::min(text.find_first_of("\r\n", start), text.size());
    const PlainLine plain = TakePrefixes(text.substr(start, end - start), (format & kTextNoPrefix) != 0);
    std::string_view rest = plain.text;
    size_t done = 0;
    while (breakWords && !rest.empty()) {
      // Few characters are narrower than a pixel; looking at more would measure long texts again for each line.
      const std::string_view near = rest.substr(0, size_t(std::max(width, 0)) + 64);
      if (near.size() == rest.size() && maker.Make(rest, kNone).width <= width) break;
      const size_t fits = FittingBytes(maker, near, width);
      // Break behind the last blank that fits; blanks at the break hang over the edge.
      size_t cut = fits < rest.size() && rest[fits] == ' ' ? fits : rest.substr(0, fits).find_last_of(" \t");
      if (cut == kNone || cut == 0) {
        if (format & kTextEditControl) {
          cut = fits;
        } else {
          cut = std::min(rest.find_first_of(" \t", 1), rest.size());
        }
      }
      const size_t underline = plain.underline != kNone && plain.underline >= done ? plain.underline - done : kNone;
      size_t last = cut;
      while (last > 0 && rest[last - 1] == ' ') --last;
      lines.push_back(maker.Make(rest.substr(0, last), underline));
      size_t next = cut;
      while (next < rest.size() && rest[next] == ' ') ++next;
      done += next;
      rest.remove_prefix(next);
      if (rest.empty()) break;
    }
    if (!rest.empty() || done == 0) {
      const size_t underline = plain.underline != kNone && plain.underline >= done ? plain.underline - done : kNone;
      lines.push_back(maker.Make(rest, underline));
    }
    if (end + 1 < text.size() && text[end] == '\r' && text[end + 1] == '\n') ++end;
    start = end + 1;
    if (start == text.size()) break;  // a break at the very end starts no line
  }
  return lines;
}

}  // namespace vl

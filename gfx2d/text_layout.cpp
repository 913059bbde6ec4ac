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

  // Bytes of `text` that fit in `width`, at least one.
  size_t Fit(std::string_view text, int width) const {
    int64_t x = 0;
    for (size_t i = 0; i < text.size(); ++i) {
      if (expandTabs_ && text[i] == '\t') {
        x = (x / tabWidth_ + 1) * tabWidth_;
      } else {
        x += font_.advance(uint8_t(text[i]));
      }
      if (x > width) return std::max<size_t>(i, 1);
    }
    return text.size();
  }

 private:
  static constexpr int64_t kWidest = TextFont::kMaxWidth;
  TextFont& font_;
  bool expandTabs_;
  int64_t tabWidth_;
};

}  // namespace

std::vector<TextLine> LayOutText(TextFont& font, std::string_view text, int width, uint32_t format,
                                 const TextMargins& margins) {
  const LineMaker maker(font, format, margins);
  std::vector<TextLine> lines;
  const bool single = (format & kTextSingleLine) != 0;
  const bool breakWords = !single && (format & kTextWordBreak);
  size_t start = 0;
  while (start <= text.size() && lines.size() < kMaxTextLines) {
    size_t end = single ? text.size() : std::min(text.find_first_of("\r\n", start), text.size());
    const PlainLine plain = TakePrefixes(text.substr(start, end - start), (format & kTextNoPrefix) != 0);
    std::string_view rest = plain.text;
    size_t done = 0;
    while (breakWords && !rest.empty() && lines.size() < kMaxTextLines) {
      const size_t fits = maker.Fit(rest, width);
      if (fits == rest.size() && maker.Make(rest, kNone).width <= width) break;
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

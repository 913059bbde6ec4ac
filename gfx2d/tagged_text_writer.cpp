#include "gfx2d/tagged_text_writer.h"

#include <algorithm>
#include <cstdlib>

namespace vl {
namespace {

constexpr double kSmallFactor = 0.5714285714285714;
constexpr double kBigFactor = 1.75;
constexpr std::string_view kTypewriterFace = "Courier New";
constexpr size_t kFaceBytes = 31;
// Heights stay in a range in which sums are harmless; fonts are cut far below.
constexpr int32_t kMaxHeight = 1 << 20;
// No ink reaches that far to the left of its place.
constexpr int kFarRight = 1 << 13;
// Characters or tokens between two questions whether to go on.
constexpr size_t kQuestionInterval = 4096;

int32_t Limited(int64_t v) { return int32_t(std::clamp<int64_t>(v, INT32_MIN, INT32_MAX)); }

char Lower(char c) { return c >= 'A' && c <= 'Z' ? char(c + ('a' - 'A')) : c; }

bool EqualFaces(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return Lower(x) == Lower(y); });
}

std::string_view UpToNul(std::string_view text) { return text.substr(0, text.find('\0')); }

}  // namespace

TaggedTextWriter::TaggedTextWriter(cSurface& surface, TextEngine& engine, TextTarget& target, TextPen& pen)
    : surface_(surface), engine_(engine), target_(target), pen_(pen) {
  fonts_.push_back({pen.description, pen.font});
}

// --- Styles ---

TaggedTextWriter::Style TaggedTextWriter::StartOfLine() const {
  const FontDescription& d = pen_.description;
  Style style;
  style.underline = d.underline;
  style.italic = d.italic;
  style.strikeOut = d.strikeOut;
  style.weight = d.weight;
  style.height = d.height;
  style.face = &d.face;
  style.color = pen_.paint.colour;
  style.font = pen_.font.get();
  return style;
}

const std::string* TaggedTextWriter::FaceNamed(std::string_view face) {
  face = face.substr(0, kFaceBytes);
  const auto found = faces_.find(face);
  return &*(found != faces_.end() ? found : faces_.emplace(face).first);
}

void TaggedTextWriter::ChooseFont(Style& style) {
  const FontDescription& own = pen_.description;
  for (const FontEntry& entry : fonts_) {
    const FontDescription& d = entry.description;
    if (d.height == style.height && d.weight == style.weight && d.italic == style.italic &&
        d.underline == style.underline && d.strikeOut == style.strikeOut && EqualFaces(d.face, *style.face)) {
      style.font = entry.font.get();
      return;
    }
  }
  if (fonts_.size() >= kMaxFonts) return;
  FontDescription d = own;
  d.height = style.height;
  d.weight = style.weight;
  d.italic = style.italic;
  d.underline = style.underline;
  d.strikeOut = style.strikeOut;
  d.face = *style.face;
  fonts_.push_back({d, engine_.openFont(d)});
  style.font = fonts_.back().font.get();
}

void TaggedTextWriter::Open(const TagToken& token, Style& style, States& states) {
  int32_t& top = style.top[token.code - kTagFont];
  if (states.size() < kMaxStates) {
    states.push_back(
        {token.code, style.color, style.isColorTagged, style.height, style.face, style.baselineShift, top});
    top = int32_t(states.size() - 1);
  }
  const FontMetrics& metrics = style.font->metrics();
  switch (token.code) {
    case kTagFont:
      if (token.hasFace && !token.face.empty()) style.face = FaceNamed(token.face);
      if (token.hasColor) {
        style.color = token.color;
        style.isColorTagged = true;
      }
      if (token.hasSize) {
        const int32_t current = std::clamp(-std::max(style.height, -kMaxHeight), -kMaxHeight, kMaxHeight);
        const int32_t size = token.isSizeRelative ? std::max(current + token.size, 0) : token.size;
        if (size != 0) style.height = -std::min(size, kMaxHeight);
      }
      break;
    case kTagTypewriter:
      style.face = FaceNamed(kTypewriterFace);
      break;
    case kTagSmall:
    case kTagBig: {
      const double height = style.height * (token.code == kTagBig ? kBigFactor : kSmallFactor);
      style.height = int32_t(std::clamp(height, -double{kMaxHeight}, double{kMaxHeight}));
      break;
    }
    case kTagSuperscript:
      if (!metrics.hasOutline) break;
      style.baselineShift = -metrics.superscriptOffset;
      style.height = -metrics.superscriptSize;
      break;
    case kTagSubscript:
      if (!metrics.hasOutline) break;
      style.baselineShift = metrics.subscriptOffset;
      style.height = -metrics.subscriptSize;
      break;
    default:
      break;
  }
}

// Each kind closes the newest of its own kind, so each has a stack of its own.
void TaggedTextWriter::Close(int32_t code, Style& style, const States& states) {
  int32_t& top = style.top[code - kTagFont];
  if (top < 0) return;
  const CTextState& state = states[size_t(top)];
  switch (code) {
    case kTagFont:
      style.color = state.color;
      style.isColorTagged = state.isColorTagged;
      style.height = state.fontHeight;
      style.face = state.face;
      break;
    case kTagTypewriter:
      style.face = state.face;
      break;
    case kTagSmall:
    case kTagBig:
      style.height = state.fontHeight;
      break;
    default:
      style.height = state.fontHeight;
      style.baselineShift = state.baselineShift;
      break;
  }
  top = state.below;
}

void TaggedTextWriter::Apply(const TagToken& token, Style& style, States& states) {
  const bool isClosing = token.code >= kTagClosing;
  const int32_t code = isClosing ? token.code - kTagClosing : token.code;
  switch (code) {
    case kTagUnderline:
      style.underline = !isClosing;
      break;
    case kTagBold:
      style.weight = isClosing ? 400 : 700;
      break;
    case kTagItalic:
      style.italic = !isClosing;
      break;
    case kTagStrike:
      style.strikeOut = !isClosing;
      break;
    default:
      if (code < kTagFont || code > kTagSubscript) return;
      if (isClosing) {
        Close(code, style, states);
      } else {
        Open(token, style, states);
      }
      break;
  }
  ChooseFont(style);
}

// --- One line ---

template <class Visit>
void TaggedTextWriter::Walk(std::string_view line, Visit&& visit) {
  Style style = StartOfLine();
  states_.clear();
  size_t position = 0;
  for (size_t tokens = 1; position < line.size(); ++tokens) {
    if (tokens % kQuestionInterval == 0 && !target_.MayGoOn()) return;
    const TagToken token = ReadToken(line, position);
    if (token.code == kTagText) {
      if (!visit(style, ReplaceReferences(token.text, references_))) return;
    } else {
      Apply(token, style, states_);
    }
  }
}

TextExtent TaggedTextWriter::MeasureText(std::string_view text) {
  int64_t width = 0;
  TextExtent extent;
  Walk(UpToNul(text), [&](const Style& style, std::string_view piece) {
    const Size size = style.font->measure(piece);
    const int shift = std::abs(style.baselineShift);
    width = std::min<int64_t>(width + size.width, TextFont::kMaxWidth);
    extent.height = std::max(extent.height, shift + size.height);
    extent.ascent = std::max(extent.ascent, shift + style.font->metrics().ascent);
    return true;
  });
  extent.width = int32_t(width);
  return extent;
}

void TaggedTextWriter::DrawMeasured(std::string_view text, int x, int y, const TextExtent& extent) {
  const cSurfaceImpl& s = *surface_.impl;
  const Rect clip = {x, y, int(std::min<int64_t>(s.width, int64_t{x} + extent.width)),
                     int(std::min<int64_t>(s.height, int64_t{y} + extent.height))};
  if (clip.IsEmpty()) return;
  bool isNoted = false;
  int64_t at = x;
  const int baseline = Limited(int64_t{y} + extent.ascent);
  Walk(UpToNul(text), [&](const Style& style, std::string_view piece) {
    if (!isNoted) target_.NoteTextChange(clip);
    isNoted = true;
    TextPaint paint = pen_.paint;
    paint.colour = style.color;
    if (style.isColorTagged) paint.pattern = nullptr;
    vl::DrawText(surface_, *style.font, piece, int(at), Limited(int64_t{baseline} + style.baselineShift),
                 kAlignBaseline, clip, paint);
    at += style.font->measure(piece).width;
    return at < int64_t{clip.right} + kFarRight;
  });
}

void TaggedTextWriter::ScrollFor(int32_t lineHeight) {
  const cSurfaceImpl& s = *surface_.impl;
  const int64_t excess = int64_t{pen_.penY} + lineHeight - s.height;
  if (pen_.penY <= 0 || excess <= 0) return;
  const int width = s.width;
  const int height = s.height;
  target_.NoteTextChange({0, 0, width, height});
  const int rows = int(std::min<int64_t>(excess, height));
  if (rows < height) surface_.MoveBox(0, rows, 0, 0, width, height - rows);
  surface_.Fill(0, height - rows, width, rows, pen_.backColor);
  pen_.penY = int32_t(std::max<int64_t>(pen_.penY - excess, 0));
}

TextExtent TaggedTextWriter::DrawLine(std::string_view line) {
  const TextExtent extent = MeasureText(line);
  ScrollFor(extent.height);
  DrawMeasured(line, pen_.penX, pen_.penY, extent);
  return extent;
}

// --- Wrapping ---

// A line that grows by one character of a text at a time and knows how wide it is, as if all of it were measured anew.
//
// A tag is text until its '>' is there. So for each tag that has begun, what was before it is kept, and the line goes
// back to there when the tag is whole. Whether and where that is, is known in advance.
class TaggedTextWriter::GrowingLine {
 public:
  GrowingLine(TaggedTextWriter& writer, std::string_view text) : writer_(writer), text_(text) {}

  void Start(size_t at) {
    end_ = at;
    style_ = writer_.StartOfLine();
    states_.clear();
    open_.clear();
    width_ = 0;
    StartToken();
  }

  int64_t Append() {
    const char c = text_[end_++];
    if (c == '<') {
      StartToken();
      const size_t end = EndOfTag(text_, end_ - 1);
      if (end != end_ - 1) open_.push_back({end_ - 1, end, style_, width_});
    }
    AddCharacter(c);
    if (c == '>') FinishTag();
    return width_;
  }

 private:
  struct OpenTag {
    size_t start;
    size_t end;
    Style style;
    int64_t width;
  };

  void StartToken() {
    hasReferences_ = false;
    references_.Clear();
  }

  void AddCharacter(char c) {
    if (!hasReferences_ && c == '&') {
      hasReferences_ = true;
      widths_.clear();
    }
    if (!hasReferences_) {
      width_ += style_.font->advance(uint8_t(c));
    } else {
      const int64_t old = widths_.empty() ? 0 : widths_.back();
      references_.Append(c);
      const std::string& text = references_.Text();
      const size_t size = text.size();
      widths_.resize(size);
      if (size > 0) {
        widths_.back() = (size > 1 ? widths_[size - 2] : 0) + style_.font->advance(uint8_t(text.back()));
      }
      width_ += (size > 0 ? widths_.back() : 0) - old;
      // Behind such a character nothing is joined to what is before it.
      if (!CanBeInReference(c)) StartToken();
    }
  }

  // The outermost tag that ends here takes the place of all that was read since its '<'.
  void FinishTag() {
    const auto done = std::find_if(open_.begin(), open_.end(), [&](const OpenTag& t) { return t.end == end_; });
    if (done == open_.end()) return;
    style_ = done->style;
    width_ = done->width;
    size_t position = done->start;
    open_.erase(done, open_.end());
    writer_.Apply(ReadToken(text_, position), style_, states_);
    StartToken();
  }

  TaggedTextWriter& writer_;
  std::string_view text_;
  size_t end_ = 0;
  Style style_;
  int64_t width_ = 0;
  States states_;
  std::vector<OpenTag> open_;  // by start
  ReferenceText references_;   // of the token
  bool hasReferences_ = false;
  std::vector<int64_t> widths_;  // up to each character of the references' text
};

// Gives the lines of a text one by one.
class TaggedTextWriter::LineCutter {
 public:
  LineCutter(TaggedTextWriter& writer, std::string_view text)
      : writer_(writer), text_(UpToNul(text)), line_(writer, text_), x_(writer.pen_.penX) {
    line_.Start(0);
  }

  // False behind the last line, and when the write is to end.
  bool Next(std::string_view& line) {
    if (isDone_) return false;
    if (!writer_.pen_.wrapping) {
      line = text_;
      isDone_ = true;
      return true;
    }
    const int surfaceWidth = writer_.surface_.impl->width;
    while (at_ < text_.size()) {
      if (at_ % kQuestionInterval == 0 && !writer_.target_.MayGoOn()) {
        isDone_ = true;
        return false;
      }
      const int64_t width = line_.Append();
      const size_t last = at_++;
      if (text_[last] == ' ' || text_[last] == '\t') blank_ = last;
      if (width + x_ <= surfaceWidth) continue;
      // Behind the last blank, or before the last character.
      const size_t next = blank_ != kNone ? blank_ + 1 : last;
      line = next > start_ ? text_.substr(start_, next - start_) : writer_.Blanks();
      x_ = 0;
      start_ = next;
      blank_ = kNone;
      line_.Start(start_);
      for (size_t i = start_; i < at_; ++i) line_.Append();
      return true;
    }
    line = text_.substr(start_);
    isDone_ = true;
    return true;
  }
  bool IsDone() const { return isDone_; }

 private:
  static constexpr size_t kNone = std::string_view::npos;
  TaggedTextWriter& writer_;
  std::string_view text_;
  GrowingLine line_;
  int64_t x_;
  size_t start_ = 0;      // of the line
  size_t at_ = 0;         // behind its last character
  size_t blank_ = kNone;  // the last one of the line
  bool isDone_ = false;
};

// An empty line can't be drawn as one: blanks over the whole width stand for it.
std::string_view TaggedTextWriter::Blanks() {
  if (blanks_.empty()) blanks_.assign(size_t(std::max(surface_.impl->width, 1)), ' ');
  return blanks_;
}

std::vector<std::string_view> TaggedTextWriter::WrapText(std::string_view text) {
  std::vector<std::string_view> lines;
  LineCutter cutter(*this, text);
  for (std::string_view line; cutter.Next(line);) lines.push_back(line);
  return lines;
}

// --- Writing ---

void TaggedTextWriter::NextLine(int32_t lineHeight) {
  pen_.penX = 0;
  pen_.penY = int32_t(std::min<int64_t>(int64_t{pen_.penY} + lineHeight, surface_.impl->height));
}

void TaggedTextWriter::WriteText(std::string_view text, TextExtent& extent) {
  extent = {};
  LineCutter cutter(*this, text);
  for (std::string_view line; cutter.Next(line);) {
    if (!target_.MayGoOn()) return;
    const TextExtent size = DrawLine(line);
    extent.width = std::max(extent.width, size.width);
    extent.height = Limited(int64_t{extent.height} + size.height);
    if (!cutter.IsDone()) {
      NextLine(size.height);
      continue;
    }
    const int width = surface_.impl->width;
    const int64_t x = int64_t{pen_.penX} + size.width;
    if (pen_.wrapping && x >= width) {
      NextLine(size.height);
    } else {
      pen_.penX = int32_t(std::min<int64_t>(x, width));
    }
  }
}

void TaggedTextWriter::WriteTextLine(std::string_view text) {
  if (UpToNul(text).empty()) {
    const int32_t height = pen_.font->metrics().height;
    ScrollFor(height);
    NextLine(height);
    return;
  }
  LineCutter cutter(*this, text);
  for (std::string_view line; cutter.Next(line);) {
    if (!target_.MayGoOn()) return;
    NextLine(DrawLine(line).height);
  }
}

}  // namespace vl

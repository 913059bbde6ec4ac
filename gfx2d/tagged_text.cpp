#include "gfx2d/tagged_text.h"

#include <algorithm>
#include <cstdlib>

namespace vl {
namespace {

struct TagName {
  std::string_view name;
  int32_t code;
};

constexpr TagName kTagNames[] = {
    {"U", kTagUnderline}, {"B", kTagBold},          {"STRONG", kTagBold},   {"I", kTagItalic},
    {"EM", kTagItalic},   {"STRIKE", kTagStrike},   {"TT", kTagTypewriter}, {"SMALL", kTagSmall},
    {"BIG", kTagBig},     {"SUP", kTagSuperscript}, {"SUB", kTagSubscript}, {"FONT", kTagFont},
};

int32_t CodeOf(std::string_view name) {
  const bool isClosing = !name.empty() && name[0] == '/';
  if (isClosing) name.remove_prefix(1);
  for (const TagName& known : kTagNames) {
    if (known.name == name) return known.code + (isClosing ? kTagClosing : 0);
  }
  return kTagEnd;
}

// Reads words. A word is a piece of the text; it counts as upper case.
class WordReader {
 public:
  WordReader(std::string_view text, size_t position) : text_(text), at_(position) {}

  bool IsAt(char c) const { return at_ < text_.size() && text_[at_] == c; }
  bool IsAtEnd() const { return at_ >= text_.size(); }
  size_t Position() const { return at_; }
  void Step() { ++at_; }

  std::string_view Word() {
    while (IsAt(' ') || IsAt('\t') || IsAt('\n')) Step();
    if (IsAt('"')) {
      Step();
      const size_t start = at_;
      at_ = std::min(text_.find('"', at_), text_.size());
      const std::string_view word = text_.substr(start, at_ - start);
      if (!IsAtEnd()) Step();
      return word;
    }
    const size_t start = at_;
    while (!IsAtEnd() && !IsAt('>') && !IsAt('=') && !IsAt(' ') && !IsAt('\t')) Step();
    return text_.substr(start, at_ - start);
  }

 private:
  std::string_view text_;
  size_t at_;
};

std::string UpperCase(std::string_view word) {
  std::string upper(word);
  for (char& c : upper) {
    if (c >= 'a' && c <= 'z') c = char(c - ('a' - 'A'));
  }
  return upper;
}

// Longer words are no name.
constexpr size_t kLongestName = 7;
std::string UpperName(std::string_view word) { return word.size() > kLongestName ? std::string() : UpperCase(word); }

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

void ReadColor(std::string_view value, TagToken& token) {
  if (!value.empty() && value[0] == '#') value.remove_prefix(1);
  uint32_t channel[3] = {};
  size_t at = 0;
  // Each channel is one or two digits.
  for (uint32_t& c : channel) {
    while (at < value.size() && (value[at] == ' ' || value[at] == '\t')) ++at;
    if (at >= value.size() || HexDigit(value[at]) < 0) return;
    c = uint32_t(HexDigit(value[at++]));
    if (at < value.size() && HexDigit(value[at]) >= 0) c = c * 16 + uint32_t(HexDigit(value[at++]));
  }
  token.hasColor = true;
  token.color = MakeColour(channel[0], channel[1], channel[2]);
}

void ReadSize(std::string_view value, TagToken& token) {
  constexpr int32_t kHighest = 1 << 20;
  size_t at = 0;
  while (at < value.size() && (value[at] == ' ' || value[at] == '\t')) ++at;
  const char sign = at < value.size() ? value[at] : '\0';
  const bool isRelative = sign == '+' || sign == '-';
  if (isRelative) ++at;
  int32_t number = 0;
  for (; at < value.size() && value[at] >= '0' && value[at] <= '9'; ++at) {
    number = std::min(number * 10 + (value[at] - '0'), kHighest);
  }
  if (!isRelative && number == 0) return;
  token.hasSize = true;
  token.isSizeRelative = isRelative;
  token.size = sign == '-' ? -number : number;
}

// Attributes up to the '>' or where they can't be read any more.
void ReadAttributes(WordReader& reader, TagToken* token) {
  while (!reader.IsAtEnd() && !reader.IsAt('>')) {
    const size_t before = reader.Position();
    const std::string name = UpperName(reader.Word());
    const bool isFace = name == "FACE";
    const bool isColor = name == "COLOR";
    if (!isFace && !isColor && name != "SIZE") {
      // A '=' of an attribute that isn't known.
      if (reader.Position() == before) reader.Step();
      continue;
    }
    if (!reader.IsAt('=')) return;
    reader.Step();
    const std::string_view value = reader.Word();
    if (!token) continue;
    if (isFace) {
      token->hasFace = true;
      token->face = UpperCase(value);
    } else if (isColor) {
      ReadColor(value, *token);
    } else {
      ReadSize(value, *token);
    }
  }
}

// Reads the tag at `position`, which stands on '<'. False when there is none; then nothing moves.
bool ReadTag(std::string_view text, size_t& position, TagToken* token, int32_t& code) {
  const std::string_view near = text.substr(0, position + std::min(text.size() - position, kMaxTagBytes));
  WordReader reader(near, position + 1);
  code = CodeOf(UpperName(reader.Word()));
  if (code == kTagFont) ReadAttributes(reader, token);
  if (!reader.IsAt('>')) return false;
  position = reader.Position() + 1;
  return true;
}

}  // namespace

TagToken ReadToken(std::string_view text, size_t& position) {
  TagToken token;
  if (position >= text.size()) return token;
  size_t from = position;
  if (text[position] == '<') {
    if (ReadTag(text, position, &token, token.code)) return token;
    token = {};
    ++from;
  }
  const size_t end = std::min(text.find('<', from), text.size());
  token.code = kTagText;
  token.text = text.substr(position, end - position);
  position = end;
  return token;
}

size_t EndOfTag(std::string_view text, size_t position) {
  int32_t code = 0;
  if (position < text.size() && text[position] == '<') ReadTag(text, position, nullptr, code);
  return position;
}

}  // namespace vl

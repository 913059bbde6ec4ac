#include "classes/ini_text.h"

#include <algorithm>

#include "classes/code_page.h"

namespace vl {

namespace {

std::string_view Trim(std::string_view text) {
  const auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  return text;
}

bool IsSame(std::string_view a, std::string_view b) { return CompareIgnoringCase(a, b) == 0; }

// Goes through the lines of a text.
class Lines {
 public:
  explicit Lines(std::string_view text) : text_(text) {}
  bool Next() {
    begin = end_;
    if (begin >= text_.size()) return false;
    const size_t lineEnd = std::min(text_.find_first_of("\r\n", begin), text_.size());
    end_ = lineEnd;
    if (end_ < text_.size()) ++end_;
    if (end_ < text_.size() && text_[lineEnd] == '\r' && text_[end_] == '\n') ++end_;
    line = Trim(text_.substr(begin, lineEnd - begin));
    return true;
  }
  bool IsSection() const { return line.starts_with('['); }
  std::string_view Section() const { return Trim(line.substr(1, std::min(line.find(']'), line.size()) - 1)); }
  bool IsComment() const { return line.starts_with(';'); }
  std::string_view Key() const { return Trim(line.substr(0, line.find('='))); }
  std::string_view Value() const {
    const size_t equals = line.find('=');
    return equals == std::string_view::npos ? std::string_view() : Trim(line.substr(equals + 1));
  }
  size_t End() const { return end_; }

  size_t begin = 0;
  std::string_view line;

 private:
  std::string_view text_;
  size_t end_ = 0;
};

std::string Replaced(std::string_view text, size_t begin, size_t end, std::string_view with) {
  return std::string(text.substr(0, begin)).append(with).append(text.substr(end));
}

// A line break in a name or value would make lines of its own.
std::string OneLine(std::string_view text) { return std::string(text.substr(0, text.find_first_of("\r\n"))); }

}  // namespace

std::optional<std::string> ReadIniValue(std::string_view text, std::string_view section, std::string_view key) {
  const std::string_view wanted = Trim(section);
  const std::string_view wantedKey = Trim(key);
  bool isInside = false;
  for (Lines lines(text); lines.Next();) {
    if (lines.IsSection()) {
      if (isInside) break;
      isInside = IsSame(lines.Section(), wanted);
    } else if (isInside && !lines.IsComment() && !lines.line.empty() && IsSame(lines.Key(), wantedKey)) {
      std::string_view value = lines.Value();
      const char quote = value.empty() ? '\0' : value.front();
      if (value.size() >= 2 && (quote == '"' || quote == '\'') && value.back() == quote) {
        value = value.substr(1, value.size() - 2);
      }
      return std::string(value);
    }
  }
  return std::nullopt;
}

std::string WithIniValue(std::string_view text, std::string_view section, std::string_view key,
                         std::optional<std::string_view> value) {
  const std::string wanted = OneLine(Trim(section));
  const std::string wantedKey = OneLine(Trim(key));
  const std::string line = value ? wantedKey + "=" + OneLine(*value) + "\r\n" : std::string();
  bool isInside = false;
  size_t insertAt = std::string_view::npos;
  for (Lines lines(text); lines.Next();) {
    if (lines.IsSection()) {
      if (isInside) break;
      isInside = IsSame(lines.Section(), wanted);
      if (isInside) insertAt = lines.End();
    } else if (isInside && !lines.line.empty()) {
      if (!lines.IsComment() && IsSame(lines.Key(), wantedKey)) return Replaced(text, lines.begin, lines.End(), line);
      insertAt = lines.End();
    }
  }
  if (!value) return std::string(text);
  const auto endsLine = [](std::string_view before) {
    return before.empty() || before.back() == '\n' || before.back() == '\r';
  };
  if (insertAt == std::string_view::npos) {
    std::string result(text);
    if (!endsLine(result)) result += "\r\n";
    return result.append("[").append(wanted).append("]\r\n").append(line);
  }
  const std::string_view gap = endsLine(text.substr(0, insertAt)) ? "" : "\r\n";
  return Replaced(text, insertAt, insertAt, std::string(gap) + line);
}

std::string WithoutIniSection(std::string_view text, std::string_view section) {
  const std::string_view wanted = Trim(section);
  size_t begin = std::string_view::npos;
  for (Lines lines(text); lines.Next();) {
    if (!lines.IsSection()) continue;
    if (begin != std::string_view::npos) return Replaced(text, begin, lines.begin, "");
    if (IsSame(lines.Section(), wanted)) begin = lines.begin;
  }
  return begin == std::string_view::npos ? std::string(text) : std::string(text.substr(0, begin));
}

}  // namespace vl

#include "platform/drive_paths.h"

#include <algorithm>
#include <vector>

namespace vl {

namespace {

constexpr size_t kMaxComponentBytes = 255;

bool IsSeparator(char c) { return c == '\\' || c == '/'; }
bool IsLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

char UpperLetter(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 0x20) : c; }

bool CanBeInName(char c) {
  return static_cast<uint8_t>(c) >= 0x20 && std::string_view("<>:\"/\\|?*").find(c) == std::string_view::npos;
}

// Where the extension's dot is; the end when there is none.
size_t LastDot(std::string_view name) {
  const size_t dot = name.rfind('.');
  return dot == std::string_view::npos || dot == 0 ? name.size() : dot;
}

bool IsBasicShortByte(char c) {
  return IsLetter(c) || (c >= '0' && c <= '9') || static_cast<uint8_t>(c) >= 0x80 ||
         std::string_view("!#$%&'()-@^_`{}~").find(c) != std::string_view::npos;
}

}  // namespace

char FoldNameByte(char c) {
  const auto u = static_cast<uint8_t>(c);
  if ((u >= 'A' && u <= 'Z') || (u >= 0xC0 && u <= 0xDE && u != 0xD7)) return static_cast<char>(u + 0x20);
  if (u == 0x8A || u == 0x8C || u == 0x8E) return static_cast<char>(u + 0x10);
  return u == 0x9F ? static_cast<char>(0xFF) : c;
}

std::string FoldName(std::string_view name) {
  std::string folded(name);
  for (char& c : folded) c = FoldNameByte(c);
  return folded;
}

bool IsDeviceName(std::string_view component) {
  std::string_view stem = component.substr(0, component.find_first_of(".:"));
  while (stem.ends_with(' ')) stem.remove_suffix(1);
  const std::string name = FoldName(stem);
  if (name == "con" || name == "prn" || name == "aux" || name == "nul" || name == "conin$" || name == "conout$" ||
      name == "clock$") {
    return true;
  }
  return name.size() == 4 && (name.starts_with("com") || name.starts_with("lpt")) && name[3] >= '0' && name[3] <= '9';
}

uint32_t MakeFullPath(std::string_view text, std::string_view folder, std::string* full) {
  if (text.empty()) return SYS_PATH_NOT_FOUND;
  if (text.size() >= 2 && IsSeparator(text[0]) && IsSeparator(text[1])) return SYS_BAD_NETPATH;
  bool fromRoot = false;
  if (text.size() >= 2 && text[1] == ':' && IsLetter(text[0])) {
    if (UpperLetter(text[0]) != kDriveLetter) return SYS_PATH_NOT_FOUND;
    text.remove_prefix(2);
  }
  if (!text.empty() && IsSeparator(text[0])) fromRoot = true;
  std::vector<std::string_view> parts;
  // Null when a part can't be a name.
  const auto add = [&](std::string_view path) -> uint32_t {
    for (size_t at = 0; at <= path.size();) {
      const size_t end = std::min(path.find_first_of("\\/", at), path.size());
      std::string_view part = path.substr(at, end - at);
      at = end + 1;
      if (part.empty() || part == ".") continue;
      if (part == "..") {
        if (!parts.empty()) parts.pop_back();
        continue;
      }
      if (!std::all_of(part.begin(), part.end(), CanBeInName)) return SYS_INVALID_NAME;
      while (part.ends_with('.') || part.ends_with(' ')) part.remove_suffix(1);
      if (part.empty()) return SYS_INVALID_NAME;
      if (IsDeviceName(part)) return SYS_ACCESS_DENIED;
      if (part.size() > kMaxComponentBytes) return SYS_FILENAME_TOO_LONG;
      parts.push_back(part);
    }
    return SYS_SUCCESS;
  };
  if (!fromRoot) add(folder.substr(2));
  if (const uint32_t error = add(text)) return error;
  std::string path(kDriveRoot.substr(0, 2));
  for (const std::string_view part : parts) path.append(1, '\\').append(part);
  if (parts.empty()) path += '\\';
  if (path.size() > kMaxPathBytes) return SYS_FILENAME_TOO_LONG;
  *full = std::move(path);
  return SYS_SUCCESS;
}

bool MatchesWildcard(std::string_view name, std::string_view pattern) {
  if (pattern == "*.*" || pattern == "*") return true;
  std::string text = FoldName(name);
  // "*." and "a.*" count a name without an extension as one with an empty one.
  if (text.find('.') == std::string::npos && pattern.find('.') != std::string_view::npos) text += '.';
  const std::string wanted = FoldName(pattern);
  size_t t = 0;
  size_t p = 0;
  size_t star = std::string::npos;
  size_t mark = 0;
  while (t < text.size()) {
    if (p < wanted.size() && wanted[p] != '*' && (wanted[p] == '?' || wanted[p] == text[t])) {
      ++t;
      ++p;
    } else if (p < wanted.size() && wanted[p] == '*') {
      star = p++;
      mark = t;
    } else if (star != std::string::npos) {
      p = star + 1;
      t = ++mark;
    } else {
      return false;
    }
  }
  while (p < wanted.size() && wanted[p] == '*') ++p;
  return p == wanted.size();
}

bool IsShortName(std::string_view name) {
  const size_t dot = LastDot(name);
  const std::string_view stem = name.substr(0, dot);
  const std::string_view extension = dot < name.size() ? name.substr(dot + 1) : std::string_view();
  const auto isBasic = [](std::string_view s) { return std::all_of(s.begin(), s.end(), IsBasicShortByte); };
  if (dot < name.size() && extension.empty()) return false;
  return !stem.empty() && stem.size() <= 8 && extension.size() <= 3 && isBasic(stem) && isBasic(extension);
}

std::string MakeShortName(std::string_view name, std::set<std::string>& taken) {
  const auto reduce = [](std::string_view part, size_t limit) {
    std::string result;
    for (const char c : part) {
      if (c == ' ' || c == '.' || result.size() == limit) continue;
      result += IsBasicShortByte(c) ? UpperLetter(c) : '_';
    }
    return result;
  };
  const size_t dot = LastDot(name);
  const std::string stem = reduce(name.substr(0, dot), 6);
  const std::string extension = dot < name.size() ? reduce(name.substr(dot + 1), 3) : std::string();
  for (uint32_t n = 1;; ++n) {
    const std::string tail = "~" + std::to_string(n);
    std::string result = stem.substr(0, std::min<size_t>(6, 8 - tail.size())) + tail;
    if (!extension.empty()) result += "." + extension;
    if (taken.insert(FoldName(result)).second) return result;
  }
}

PathParts SplitPath(std::string_view path) {
  constexpr size_t kMaxPartBytes = 255;
  PathParts parts;
  if (path.size() >= 2 && path[1] == ':') {
    parts.drive = path.substr(0, 2);
    path.remove_prefix(2);
  }
  const size_t slash = path.find_last_of("\\/");
  const size_t nameAt = slash == std::string_view::npos ? 0 : slash + 1;
  const std::string_view last = path.substr(nameAt);
  const size_t dot = std::min(last.rfind('.'), last.size());
  parts.dir = path.substr(0, std::min(nameAt, kMaxPartBytes));
  parts.name = last.substr(0, std::min(dot, kMaxPartBytes));
  parts.extension = last.substr(dot).substr(0, kMaxPartBytes);
  return parts;
}

std::string JoinPath(const PathParts& parts) {
  std::string path;
  if (!parts.drive.empty()) path.append(1, parts.drive[0]).append(1, ':');
  if (!parts.dir.empty()) {
    path += parts.dir;
    if (!IsSeparator(path.back())) path += '\\';
  }
  path += parts.name;
  if (!parts.extension.empty()) {
    if (parts.extension[0] != '.') path += '.';
    path += parts.extension;
  }
  return path;
}

}  // namespace vl

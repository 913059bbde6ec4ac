#include "host/control.h"

#include <algorithm>

namespace vl {
namespace {

constexpr std::string_view kFileScheme = "file://";

std::string Lower(std::string_view text) {
  std::string result(text);
  for (char& c : result) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
  return result;
}

int HexOf(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  const char lower = static_cast<char>(c | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

}  // namespace

void CVorlane::AddParameter(const std::string& name, const std::string& value) {
  params.emplace_back(name, value);
  const std::string lower = Lower(name);
  if (lower == "src" || lower == "urlvlpsource") url = value;
}

int32_t CVorlane::StartDelayMs(uint32_t nowMs) {
  const auto left = static_cast<int32_t>(firstDraw - nowMs + static_cast<uint32_t>(kStartPictureMs));
  if (left >= 1) return left;
  delayDone = true;
  return 0;
}

Rect PlaceOfStartPicture(Size picture, Size bounds) {
  if (picture.width < 1 || picture.height < 1 || bounds.width < 1 || bounds.height < 1) return {};
  Size size = picture;
  if (picture.width > bounds.width || picture.height > bounds.height) {
    const int byHeight = picture.height * 256 / bounds.height;
    const int byWidth = picture.width * 256 / bounds.width;
    if (byHeight > byWidth) {
      size = {picture.width * bounds.height / picture.height, bounds.height};
    } else {
      size = {bounds.width, picture.height * bounds.width / picture.width};
    }
    size = {std::max(size.width, 1), std::max(size.height, 1)};
  }
  const int left = (bounds.width - size.width) / 2;
  const int top = (bounds.height - size.height) / 2;
  return {left, top, left + size.width, top + size.height};
}

bool IsFetched(const std::string& url) {
  return url.find("://") != std::string::npos && Lower(url.substr(0, kFileScheme.size())) != kFileScheme;
}

std::string PathOfFileUrl(const std::string& url) {
  if (Lower(url.substr(0, kFileScheme.size())) != kFileScheme) return {};
  const size_t slash = url.find('/', kFileScheme.size());
  if (slash == std::string::npos) return {};
  const std::string host = Lower(url.substr(kFileScheme.size(), slash - kFileScheme.size()));
  if (!host.empty() && host != "localhost") return {};
  std::string path;
  for (size_t i = slash; i < url.size(); ++i) {
    const int high = url[i] == '%' && i + 2 < url.size() ? HexOf(url[i + 1]) : -1;
    const int low = high >= 0 ? HexOf(url[i + 2]) : -1;
    if (low < 0) {
      path += url[i];
      continue;
    }
    const char byte = static_cast<char>(high * 16 + low);
    if (byte == 0) return {};
    path += byte;
    i += 2;
  }
  return path;
}

std::string NameOfUrl(const std::string& url) {
  const std::string bare = url.substr(0, url.find_first_of("?#"));
  return bare.substr(bare.find_last_of('/') + 1);
}

std::string HostOfUrl(const std::string& url) {
  const size_t scheme = url.find("://");
  if (scheme == std::string::npos) return {};
  std::string host = url.substr(scheme + 3);
  host = host.substr(0, host.find_first_of("/?#"));
  const size_t user = host.rfind('@');
  if (user != std::string::npos) host = host.substr(user + 1);
  if (!host.empty() && host[0] == '[') return host.substr(0, host.find(']') + 1);
  return host.substr(0, host.find(':'));
}

}  // namespace vl

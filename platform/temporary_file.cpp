#include "platform/temporary_file.h"

namespace vl {
namespace {

constexpr int kMostNames = 200000;

}  // namespace

std::string MakeTemporaryFile(FileSystem& files, std::string_view folder, std::string_view prefix,
                              std::string_view extension) {
  if (extension.starts_with('.')) extension.remove_prefix(1);
  std::string clean(extension);
  std::erase_if(clean, [](char c) { return std::string_view("\\/:*?<>|\"").find(c) != std::string_view::npos; });
  for (int number = 1; number <= kMostNames; ++number) {
    std::string path(folder);
    path.append("\\").append(prefix).append(std::to_string(number)).append(".").append(clean);
    if (files.exists(path)) continue;
    // A name that is free and can't be made won't be any better with another number.
    return files.open(path, FileMode::Create) ? path : std::string();
  }
  return {};
}

}  // namespace vl

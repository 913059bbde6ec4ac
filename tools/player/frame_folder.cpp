#include "tools/player/frame_folder.h"

#include <cstdio>
#include <filesystem>
#include <utility>

#include "tools/png_file.h"

namespace vl {

namespace fs = std::filesystem;

bool FrameFolder::Open(const std::string& folder, std::string& error) {
  std::error_code failed;
  fs::create_directories(folder, failed);
  if (failed || !fs::is_directory(folder)) {
    error = folder + ": " + (failed ? failed.message() : "is no folder");
    return false;
  }
  if (!fs::is_empty(folder, failed)) {
    error = folder + ": isn't empty, and frames are never mixed with other files";
    return false;
  }
  folder_ = folder;
  return true;
}

void FrameFolder::Take(uint64_t atMs, const uint32_t* pixels, int width, int height) {
  if (isWaiting_ && waiting_.atMs != atMs) Write();
  waiting_.atMs = atMs;
  waiting_.width = width;
  waiting_.height = height;
  waiting_.pixels.assign(pixels, pixels + static_cast<size_t>(width) * static_cast<size_t>(height));
  isWaiting_ = true;
}

void FrameFolder::Write() {
  isWaiting_ = false;
  if (waiting_.width == writtenWidth_ && waiting_.pixels == written_) return;
  char name[64];
  std::snprintf(name, sizeof name, "/%06zu-%08llu.png", ++count_, static_cast<unsigned long long>(waiting_.atMs));
  hasFailed_ = !WritePng(folder_ + name, waiting_.pixels, waiting_.width, waiting_.height) || hasFailed_;
  std::swap(written_, waiting_.pixels);
  writtenWidth_ = waiting_.width;
}

bool FrameFolder::Finish() {
  if (isWaiting_) Write();
  return !hasFailed_;
}

}  // namespace vl

// FrameFolder: writes each refreshed picture of a run as a PNG file, named by its number and its time.
//
// Take is called on the run's thread, Finish when the run has ended. Of several pictures of one millisecond the last
// counts, since a refresh may show its windows one by one; a picture that equals the one before isn't written.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vl {

class FrameFolder {
 public:
  // Makes the folder. False, with one line, when it can't be made or isn't empty.
  bool Open(const std::string& folder, std::string& error);
  void Take(uint64_t atMs, const uint32_t* pixels, int width, int height);
  // False when a file couldn't be written.
  bool Finish();
  size_t Count() const { return count_; }

 private:
  struct Frame {
    uint64_t atMs = 0;
    std::vector<uint32_t> pixels;
    int width = 0;
    int height = 0;
  };
  void Write();

  std::string folder_;
  Frame waiting_;
  std::vector<uint32_t> written_;
  int writtenWidth_ = 0;
  bool isWaiting_ = false;
  bool hasFailed_ = false;
  size_t count_ = 0;
};

}  // namespace vl

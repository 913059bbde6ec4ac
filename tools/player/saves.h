// Saves: the folder of an application for the files that outlive its runs, among the person's data.
//
// saves/NAME-HASH below the data folder: the hash is of the application's absolute path, the file `application` holds
// that path, and `files` is the application's drive.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vl {

class Saves {
 public:
  // Makes the folder. False with a line of explanation.
  bool Open(const std::string& applicationPath, std::string& error);
  // Without files in it the folder goes again.
  void Close();
  std::string FilesFolder() const { return folder_ + "/files"; }

 private:
  std::string folder_;
};

struct SavesEntry {
  std::string name;         // of the folder
  std::string folder;       // its path
  std::string application;  // absolute path as it was played
  uint64_t files = 0;
  uint64_t bytes = 0;
};

// Sorted by name.
std::vector<SavesEntry> ListSaves();
// By the application's path or the folder's name. False when nothing is kept for it; then `entry` has the place where
// it would be, or no name when `application` is no file.
bool FindSaves(const std::string& application, SavesEntry& entry);

}  // namespace vl

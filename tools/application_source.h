// Where an application comes from: a .vlp file, a project folder or one source file.
#pragma once

#include <map>
#include <string>

namespace vl {

struct ApplicationFiles {
  std::string error;                         // empty on success: one line
  std::string path;                          // a file on the disk, or empty when `files` holds it
  std::string url;                           // an address, or empty
  std::string mainName;                      // key of the application in `files`
  std::map<std::string, std::string> files;  // packed in memory
};

// Packs what isn't packed yet. An address isn't fetched: it is handed on where it may be one.
ApplicationFiles OpenApplication(const std::string& application, bool mayBeAddress = false);

// The whole content of a file. False with a line of explanation.
bool ReadWholeFile(const std::string& path, std::string& content, std::string& error);

}  // namespace vl

#include "tools/application_source.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "tools/project/project.h"

namespace vl {

namespace fs = std::filesystem;

bool ReadWholeFile(const std::string& path, std::string& content, std::string& error) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    error = path + ": " + std::strerror(errno);
    return false;
  }
  std::ostringstream bytes;
  bytes << file.rdbuf();
  content = std::move(bytes).str();
  return true;
}

ApplicationFiles OpenApplication(const std::string& application, bool mayBeAddress) {
  ApplicationFiles result;
  std::error_code failed;
  if (mayBeAddress && application.find("://") != std::string::npos) {
    result.url = application;
    return result;
  }
  if (fs::is_directory(application, failed)) {
    PackedProject packed = PackProject(application);
    result.error = std::move(packed.error);
    result.mainName = std::move(packed.mainName);
    result.files = std::move(packed.files);
    return result;
  }
  if (!fs::exists(application, failed)) {
    result.error = application + ": no such file or folder";
    return result;
  }
  const std::string extension = fs::path(application).extension().string();
  if (extension == ".vlq" || extension == ".txt") {
    std::string text;
    if (!ReadWholeFile(application, text, result.error)) return result;
    const std::string name = fs::path(application).filename().string();
    std::string bytes = SingleSourceApplication(text, name, &result.error);
    if (!result.error.empty()) return result;
    result.mainName = fs::path(application).stem().string() + ".vlp";
    result.files.emplace(result.mainName, std::move(bytes));
    return result;
  }
  result.path = application;
  return result;
}

}  // namespace vl

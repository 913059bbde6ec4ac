#include "tools/project/disk_files.h"

#include <fstream>
#include <system_error>

namespace vl {

namespace {

class DiskFile final : public File {
 public:
  DiskFile(std::ifstream stream, int64_t size) : stream_(std::move(stream)), size_(size) {}

  size_t read(void* buffer, size_t size) override {
    stream_.clear();
    stream_.read(static_cast<char*>(buffer), static_cast<std::streamsize>(size));
    failed_ |= stream_.bad();
    return static_cast<size_t>(stream_.gcount());
  }
  size_t write(const void* buffer, size_t size) override { return 0; }
  bool seek(int64_t position) override {
    stream_.clear();
    return position >= 0 && stream_.seekg(position).good();
  }
  int64_t position() override { return static_cast<int64_t>(stream_.tellg()); }
  int64_t size() override { return size_; }
  bool failed() const override { return failed_; }

 private:
  std::ifstream stream_;
  int64_t size_;
  bool failed_ = false;
};

}  // namespace

std::unique_ptr<File> DiskFiles::open(std::string_view path, FileMode mode) {
  if (mode != FileMode::Read) return nullptr;
  const std::filesystem::path full = root_ / std::filesystem::path(path);
  std::error_code error;
  if (!std::filesystem::is_regular_file(full, error)) return nullptr;
  const auto size = std::filesystem::file_size(full, error);
  std::ifstream stream(full, std::ios::binary);
  if (error || !stream) return nullptr;
  return std::make_unique<DiskFile>(std::move(stream), static_cast<int64_t>(size));
}

bool DiskFiles::exists(std::string_view path) {
  std::error_code error;
  return std::filesystem::exists(root_ / std::filesystem::path(path), error);
}

bool ReadDiskFile(const std::filesystem::path& path, std::string* bytes) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return false;
  const auto size = std::filesystem::file_size(path, error);
  std::ifstream stream(path, std::ios::binary);
  if (error || !stream) return false;
  bytes->resize(size);
  stream.read(bytes->data(), static_cast<std::streamsize>(size));
  return static_cast<uintmax_t>(stream.gcount()) == size;
}

bool WriteDiskFile(const std::filesystem::path& path, std::string_view bytes) {
  std::error_code error;
  if (path.has_parent_path()) std::filesystem::create_directories(path.parent_path(), error);
  std::ofstream stream(path, std::ios::binary | std::ios::trunc);
  stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  return stream.flush().good();
}

}  // namespace vl

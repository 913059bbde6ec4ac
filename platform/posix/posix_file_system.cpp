#include "platform/posix/posix_file_system.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <utility>
#include <vector>

#include "platform/text/code_page.h"

namespace vl {
namespace {

constexpr int kMaxLinks = 40;
constexpr size_t kMaxComponents = 256;

class PosixFile final : public File {
 public:
  explicit PosixFile(FileHandle handle) : handle_(std::move(handle)) {}

  size_t read(void* buffer, size_t size) override {
    return Transfer(size, [&](size_t done) {
      return pread(handle_.Get(), static_cast<char*>(buffer) + done, size - done, position_);
    });
  }
  size_t write(const void* buffer, size_t size) override {
    const size_t done = Transfer(size, [&](size_t sent) {
      return pwrite(handle_.Get(), static_cast<const char*>(buffer) + sent, size - sent, position_);
    });
    if (done < size) failed_ = true;
    return done;
  }
  bool seek(int64_t position) override {
    if (position < 0) return false;
    position_ = position;
    return true;
  }
  int64_t position() override { return position_; }
  int64_t size() override {
    struct stat status {};
    return fstat(handle_.Get(), &status) == 0 ? int64_t{status.st_size} : 0;
  }
  bool failed() const override { return failed_; }
  bool flush() override { return fdatasync(handle_.Get()) == 0; }

 private:
  template <class Call>
  size_t Transfer(size_t size, Call&& call) {
    size_t done = 0;
    while (done < size) {
      const ssize_t n = call(done);
      if (n < 0 && errno == EINTR) continue;
      if (n < 0) failed_ = true;
      if (n <= 0) break;
      done += size_t(n);
      position_ += n;
    }
    return done;
  }

  FileHandle handle_;
  int64_t position_ = 0;
  bool failed_ = false;
};

bool IsAscii(std::string_view name) {
  return std::all_of(name.begin(), name.end(), [](char c) { return static_cast<uint8_t>(c) < 0x80; });
}

// What a name is called in that folder.
std::string NativeName(int folder, std::string name) {
  struct stat status {};
  if (IsAscii(name) || fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0) return name;
  return Utf8Of1252(name);
}

// The components of a path onto the front of a stack, so that the first is on top. False when there are too many
// or one can't be a name.
bool PushComponents(std::vector<std::string>& stack, std::string_view path) {
  std::vector<std::string> parts;
  size_t start = 0;
  while (start < path.size()) {
    const size_t end = std::min(path.find('/', start), path.size());
    const std::string_view part = path.substr(start, end - start);
    if (part.size() > NAME_MAX || part.find('\0') != std::string_view::npos) return false;
    if (!part.empty() && part != ".") parts.emplace_back(part);
    start = end + 1;
  }
  if (parts.size() + stack.size() > kMaxComponents) return false;
  stack.insert(stack.end(), parts.rbegin(), parts.rend());
  return true;
}

int OpenFolder(int parent, const char* name) {
  return openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
}

// The target of a link; empty when `name` is none.
std::string LinkTarget(int folder, const std::string& name) {
  std::array<char, PATH_MAX> target;
  const ssize_t n = readlinkat(folder, name.c_str(), target.data(), target.size());
  return n > 0 && size_t(n) < target.size() ? std::string(target.data(), size_t(n)) : std::string();
}

}  // namespace

FileHandle::~FileHandle() {
  if (fd_ >= 0) close(fd_);
}

PosixFileSystem::PosixFileSystem(const std::string& folder)
    : root_(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {}

PosixFileSystem::Place PosixFileSystem::Resolve(std::string_view path, bool followLast) const {
  std::vector<std::string> left;
  if (!root_.IsOpen() || path.starts_with('/') || !PushComponents(left, path)) return Place();
  std::vector<FileHandle> folders;  // below the root, down to where the walk is
  const auto here = [&] { return folders.empty() ? root_.Get() : folders.back().Get(); };
  int links = 0;
  while (!left.empty()) {
    const std::string name = NativeName(here(), std::move(left.back()));
    left.pop_back();
    if (name == "..") {
      if (folders.empty()) return Place();
      folders.pop_back();
      continue;
    }
    const bool isLast = left.empty();
    if (!isLast || followLast) {
      const std::string target = LinkTarget(here(), name);
      if (!target.empty()) {
        if (++links > kMaxLinks || target.front() == '/' || !PushComponents(left, target)) return Place();
        continue;
      }
    }
    if (isLast) return {FileHandle(fcntl(here(), F_DUPFD_CLOEXEC, 0)), name};
    FileHandle next(OpenFolder(here(), name.c_str()));
    if (!next.IsOpen()) return Place();
    folders.push_back(std::move(next));
  }
  return {FileHandle(fcntl(here(), F_DUPFD_CLOEXEC, 0)), std::string()};
}

std::unique_ptr<File> PosixFileSystem::open(std::string_view path, FileMode mode) {
  const Place place = Resolve(path, true);
  if (!place.folder.IsOpen() || place.name.empty()) return nullptr;
  int flags = O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;  // a pipe must not hang the run
  switch (mode) {
    case FileMode::Read:
      flags |= O_RDONLY;
      break;
    case FileMode::Create:
      flags |= O_RDWR | O_CREAT;
      break;
    case FileMode::ReadWrite:
      flags |= O_RDWR;
      break;
  }
  FileHandle handle(openat(place.folder.Get(), place.name.c_str(), flags, 0644));
  struct stat status {};
  if (!handle.IsOpen() || fstat(handle.Get(), &status) != 0 || !S_ISREG(status.st_mode)) return nullptr;
  // Cut only what is known to be a regular file.
  if (mode == FileMode::Create && ftruncate(handle.Get(), 0) != 0) return nullptr;
  return std::make_unique<PosixFile>(std::move(handle));
}

bool PosixFileSystem::exists(std::string_view path) {
  const Place place = Resolve(path, true);
  if (!place.folder.IsOpen() || place.name.empty()) return false;
  struct stat status {};
  return fstatat(place.folder.Get(), place.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(status.st_mode);
}

bool PosixFileSystem::remove(std::string_view path) {
  const Place place = Resolve(path, false);
  return place.folder.IsOpen() && !place.name.empty() && unlinkat(place.folder.Get(), place.name.c_str(), 0) == 0;
}

bool PosixFileSystem::status(std::string_view path, FileStatus& result) {
  const Place place = Resolve(path, true);
  if (!place.folder.IsOpen()) return false;
  struct stat status {};
  const char* name = place.name.empty() ? "." : place.name.c_str();
  if (fstatat(place.folder.Get(), name, &status, AT_SYMLINK_NOFOLLOW) != 0) return false;
  if (!S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode)) return false;
  result.isFolder = S_ISDIR(status.st_mode);
  result.size = result.isFolder ? 0 : static_cast<uint64_t>(status.st_size);
  return true;
}

std::vector<FileEntry> PosixFileSystem::list(std::string_view folder) {
  std::vector<FileEntry> entries;
  const Place place = Resolve(folder, true);
  if (!place.folder.IsOpen()) return entries;
  const int handle = OpenFolder(place.folder.Get(), place.name.empty() ? "." : place.name.c_str());
  DIR* const names = handle < 0 ? nullptr : fdopendir(handle);
  if (!names) {
    if (handle >= 0) close(handle);
    return entries;
  }
  const std::string base = folder.empty() ? std::string() : std::string(folder) + '/';
  while (const dirent* entry = readdir(names)) {
    const std::string_view native = entry->d_name;
    if (native == "." || native == "..") continue;
    if (entries.size() >= kMaxListed) break;
    FileEntry found;
    found.name = IsAscii(native) ? std::string(native) : Text1252OfUtf8(native);
    if (!IsAscii(native) && Utf8Of1252(found.name) != native) continue;
    // Through the walk, as a link may lead out. A link to a folder may lead to one above it; it isn't listed.
    if (!status(base + std::string(native), found.status)) continue;
    struct stat own {};
    const bool isLink = fstatat(dirfd(names), entry->d_name, &own, AT_SYMLINK_NOFOLLOW) != 0 || S_ISLNK(own.st_mode);
    if (!isLink || !found.status.isFolder) entries.push_back(std::move(found));
  }
  closedir(names);
  return entries;
}

bool PosixFileSystem::rename(std::string_view from, std::string_view to) {
  const Place old = Resolve(from, false);
  const Place target = Resolve(to, false);
  if (!old.folder.IsOpen() || old.name.empty() || !target.folder.IsOpen() || target.name.empty()) return false;
  struct stat status {};
  if (fstatat(target.folder.Get(), target.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0) return false;
  return renameat(old.folder.Get(), old.name.c_str(), target.folder.Get(), target.name.c_str()) == 0;
}

bool PosixFileSystem::makeFolder(std::string_view path) {
  for (size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
    const std::string_view part = path.substr(0, end);
    const Place place = Resolve(part, true);
    if (!place.folder.IsOpen()) return false;
    if (!place.name.empty() && mkdirat(place.folder.Get(), place.name.c_str(), 0755) != 0 && errno != EEXIST) {
      return false;
    }
    if (end == std::string_view::npos) break;
  }
  FileStatus made;
  return status(path, made) && made.isFolder;
}

bool PosixFileSystem::replace(std::string_view path, std::span<const uint8_t> bytes) {
  const Place place = Resolve(path, true);
  if (!place.folder.IsOpen() || place.name.empty()) return false;
  const int folder = place.folder.Get();
  struct stat status {};
  if (fstatat(folder, place.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 && !S_ISREG(status.st_mode)) return false;
  const std::string fresh = ".vl-new-" + std::to_string(getpid());
  unlinkat(folder, fresh.c_str(), 0);
  const int flags = O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW;
  bool written = false;
  if (FileHandle handle(openat(folder, fresh.c_str(), flags, 0644)); handle.IsOpen()) {
    PosixFile file(std::move(handle));
    written = file.write(bytes.data(), bytes.size()) == bytes.size() && file.flush();
  }
  if (written && renameat(folder, fresh.c_str(), folder, place.name.c_str()) == 0) {
    fsync(folder);
    return true;
  }
  unlinkat(folder, fresh.c_str(), 0);
  return false;
}

}  // namespace vl

// RunFiles: opening, making, removing and renaming. Looking things up is in run_files_lookup.cpp.
#include "platform/run_files.h"

#include <algorithm>

namespace vl {

// A file of the tree that lasts: bounded as the ones in memory are, and on the disk when it is closed.
class RunFiles::KeptFile final : public File {
 public:
  KeptFile(std::unique_ptr<File> file, std::shared_ptr<Meter> meter)
      : file_(std::move(file)), meter_(std::move(meter)) {}
  ~KeptFile() override {
    if (isChanged_) file_->flush();
  }

  size_t read(void* buffer, size_t size) override { return file_->read(buffer, size); }
  size_t write(const void* buffer, size_t size) override {
    const auto length = static_cast<uint64_t>(file_->size());
    const uint64_t end = static_cast<uint64_t>(file_->position()) + size;
    const uint64_t growth = end > length ? end - length : 0;
    if (meter_->used + growth > kMaxBytes) {
      isFull_ = true;
      return 0;
    }
    const size_t written = file_->write(buffer, size);
    const auto now = static_cast<uint64_t>(file_->size());
    meter_->used += now > length ? now - length : 0;
    isChanged_ = true;
    return written;
  }
  bool seek(int64_t position) override { return file_->seek(position); }
  int64_t position() override { return file_->position(); }
  int64_t size() override { return file_->size(); }
  bool failed() const override { return isFull_ || file_->failed(); }
  bool flush() override { return file_->flush(); }

 private:
  std::unique_ptr<File> file_;
  std::shared_ptr<Meter> meter_;
  bool isChanged_ = false;
  bool isFull_ = false;
};

RunFiles::RunFiles(FileSystem* below, FileSystem* kept)
    : below_(below), kept_(kept), memory_(kMaxBytes), meter_(std::make_shared<Meter>()) {
  if (kept_) ScanKept("", 0);
}

FileSystem& RunFiles::StoreOf(const std::string& folded) {
  if (kept_ && !IsTemporary(folded)) return *kept_;
  return memory_;
}

std::unique_ptr<File> RunFiles::OpenOwn(const std::string& full, FileMode mode) {
  const std::string folded = FoldName(full);
  FileSystem& store = StoreOf(folded);
  const std::string path = StorePath(full);
  if (&store == &memory_) return memory_.open(path, mode);
  FileStatus old;
  const bool wasThere = store.status(path, old);
  if (!wasThere && mode == FileMode::Create) {
    const size_t slash = path.rfind('/');
    if (slash != std::string::npos && !store.makeFolder(path.substr(0, slash))) return nullptr;
  }
  auto file = store.open(path, mode);
  if (!file) return nullptr;
  if (wasThere && mode == FileMode::Create) meter_->used -= std::min(meter_->used, old.size);
  return mode == FileMode::Read ? std::move(file) : std::make_unique<KeptFile>(std::move(file), meter_);
}

bool RunFiles::AddOwn(const std::string& full) {
  const std::string folded = FoldName(full);
  if (own_.size() >= kMaxFiles) return Fail(SYS_DISK_FULL);
  own_[folded] = {full};
  return true;
}

void RunFiles::Forget(const std::string& folded) { own_.erase(folded); }

std::unique_ptr<File> RunFiles::open(std::string_view path, FileMode mode) {
  Found found;
  if (!FindFull(path, found)) {
    // An application may lie under a name that the period didn't have.
    const bool isOfBelow = (error == SYS_INVALID_NAME || error == SYS_FILENAME_TOO_LONG) && !path.starts_with('/') &&
                           path.find("..") == std::string_view::npos;
    return isOfBelow && below_ && mode == FileMode::Read ? below_->open(path, mode) : nullptr;
  }
  std::unique_ptr<File> file;
  switch (found.kind) {
    case Found::Folder:
      Fail(SYS_ACCESS_DENIED);
      return nullptr;
    case Found::OwnFile:
      file = OpenOwn(found.full, mode);
      break;
    case Found::BelowFile:
      if (mode == FileMode::Read) {
        file = below_->open(found.below, mode);
        break;
      }
      if (mode == FileMode::ReadWrite) {
        found.full = InSpelledFolder(found.full);
        if (!CopyUp(found.below, found.full)) return nullptr;
        file = OpenOwn(found.full, mode);
        break;
      }
      [[fallthrough]];
    case Found::Nothing:
      if (mode != FileMode::Create) {
        Fail(HasFolder(found.full) ? SYS_FILE_NOT_FOUND : SYS_PATH_NOT_FOUND);
        return nullptr;
      }
      if (!HasFolder(found.full)) {
        Fail(SYS_PATH_NOT_FOUND);
        return nullptr;
      }
      found.full = InSpelledFolder(found.full);
      if (!AddOwn(found.full)) return nullptr;
      file = OpenOwn(found.full, mode);
      if (!file) Forget(FoldName(found.full));
      break;
  }
  if (!file) Fail(SYS_ACCESS_DENIED);
  return file;
}

bool RunFiles::CopyUp(const std::string& belowPath, const std::string& full) {
  const auto source = below_->open(belowPath, FileMode::Read);
  if (!source) return Fail(SYS_ACCESS_DENIED);
  if (static_cast<uint64_t>(source->size()) > FreeBytes()) return Fail(SYS_DISK_FULL);
  if (!AddOwn(full)) return false;
  const auto target = OpenOwn(full, FileMode::Create);
  std::vector<uint8_t> block(size_t{64} << 10);
  bool copied = target != nullptr;
  while (copied) {
    const size_t n = source->read(block.data(), block.size());
    if (n == 0) break;
    copied = target->write(block.data(), n) == n;
  }
  if (copied && !source->failed()) return true;
  remove(full);
  return Fail(SYS_DISK_FULL);
}

bool RunFiles::replace(std::string_view path, std::span<const uint8_t> bytes) {
  Found found;
  if (!FindFull(path, found)) return false;
  if (&StoreOf(FoldName(found.full)) == &memory_) {
    return FileSystem::replace(path, bytes) || Fail(error == SYS_SUCCESS ? SYS_DISK_FULL : error);
  }
  // Made first, so that all the checks of a new file hold.
  if (found.kind != Found::OwnFile && !open(path, FileMode::Create)) return false;
  if (!FindFull(path, found) || found.kind != Found::OwnFile) return false;
  const std::string stored = StorePath(found.full);
  FileStatus old;
  kept_->status(stored, old);
  const uint64_t others = meter_->used - std::min(meter_->used, old.size);
  if (others + bytes.size() > kMaxBytes) return Fail(SYS_DISK_FULL);
  if (!kept_->replace(stored, bytes)) return Fail(SYS_ACCESS_DENIED);
  meter_->used = others + bytes.size();
  return true;
}

bool RunFiles::remove(std::string_view path) {
  Found found;
  if (!FindFull(path, found)) return false;
  if (found.kind != Found::OwnFile) return Fail(found.kind == Found::Nothing ? SYS_FILE_NOT_FOUND : SYS_ACCESS_DENIED);
  const std::string folded = FoldName(found.full);
  FileSystem& store = StoreOf(folded);
  const std::string stored = StorePath(found.full);
  FileStatus old;
  if (&store == kept_ && store.status(stored, old)) meter_->used -= std::min(meter_->used, old.size);
  if (!store.remove(stored)) return Fail(SYS_ACCESS_DENIED);
  Forget(folded);
  return true;
}

bool RunFiles::rename(std::string_view from, std::string_view to) {
  Found old;
  Found target;
  if (!FindFull(from, old)) return false;
  if (old.kind != Found::OwnFile) return Fail(old.kind == Found::Nothing ? SYS_FILE_NOT_FOUND : SYS_ACCESS_DENIED);
  if (!FindFull(to, target)) return false;
  const std::string oldFolded = FoldName(old.full);
  if (target.kind == Found::Folder || target.kind == Found::BelowFile) return Fail(SYS_ALREADY_EXISTS);
  std::string full = target.full;
  if (target.kind == Found::OwnFile) {
    // Only the spelling of the same file may change.
    std::string spelled;
    if (FoldName(target.full) != oldFolded || !GetFullPath(to, &spelled)) return Fail(SYS_ALREADY_EXISTS);
    full.replace(full.rfind('\\'), std::string::npos, spelled, spelled.rfind('\\'), std::string::npos);
    if (FoldName(full) != oldFolded) return Fail(SYS_ALREADY_EXISTS);
  } else if (!HasFolder(full)) {
    return Fail(SYS_PATH_NOT_FOUND);
  } else {
    full = InSpelledFolder(full);
  }
  const std::string folded = FoldName(full);
  FileSystem& store = StoreOf(oldFolded);
  if (&store != &StoreOf(folded)) return RenameAcross(old.full, full);
  const std::string stored = StorePath(full);
  if (stored != StorePath(old.full)) {
    const size_t slash = stored.rfind('/');
    if (slash != std::string::npos) store.makeFolder(stored.substr(0, slash));
    if (!store.rename(StorePath(old.full), stored)) return Fail(SYS_ACCESS_DENIED);
  }
  Forget(oldFolded);
  own_[folded] = {full};
  return true;
}

// Between what goes with the run and what is kept.
bool RunFiles::RenameAcross(const std::string& from, const std::string& to) {
  const auto source = open(from, FileMode::Read);
  if (!source) return false;
  std::vector<uint8_t> content(static_cast<size_t>(source->size()));
  if (source->read(content.data(), content.size()) != content.size()) return Fail(SYS_ACCESS_DENIED);
  return replace(to, content) && remove(from);
}

}  // namespace vl

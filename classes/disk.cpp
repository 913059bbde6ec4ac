// Disk: its members other than ListFiles, and its table.
#include "classes/disk.h"

#include <algorithm>

#include "classes/core_classes.h"
#include "interpreter/system_errors.h"
#include "platform/temporary_file.h"

namespace vl {

namespace {

constexpr uint32_t kFixedDrive = 0xABCD0020;
constexpr uint32_t kUnknownDrive = 0xABCD0400;
constexpr size_t kCopyBlockBytes = 32768;
// Of a temporary file's names.
constexpr const char* kTemporaryPrefix = "vl";

}  // namespace

void NoteDiskError(CInterpretor& interpreter, uint32_t error) {
  auto* disk = static_cast<CIDisk*>(interpreter.FixedObject(CLASS_DISK));
  if (disk) disk->lastError = error;
}

std::string CIDisk::TextArgument(int i) {
  return interpreter.IsArgDefault(i) ? std::string() : std::string(interpreter.GetArgString(i));
}

std::string CIDisk::PathArgument(int i) {
  if (interpreter.IsArgDefault(i)) interpreter.RaiseError(ERR_NO_FILE_NAME);
  return TextArgument(i);
}

void CIDisk::Result(bool worked) {
  if (!worked) lastError = Files().error;
  interpreter.GetResult().SetInt(worked);
}

// --- Names ---

void CIDisk::GetCurrentDirectory() { Result(Files().CurrentFolder()); }
void CIDisk::SetCurrentDirectory() { Result(Files().SetCurrentFolder(TextArgument(0))); }
void CIDisk::GetNFilenames() { interpreter.GetResult().SetInt(fileCount_); }

void CIDisk::MakePath() { Result(JoinPath({TextArgument(0), TextArgument(1), TextArgument(2), TextArgument(3)})); }

void CIDisk::GetDrive() { Result(SplitPath(TextArgument(0)).drive); }
void CIDisk::GetDir() { Result(SplitPath(TextArgument(0)).dir); }
void CIDisk::GetName() { Result(SplitPath(TextArgument(0)).name); }
void CIDisk::GetExtension() { Result(SplitPath(TextArgument(0)).extension); }

void CIDisk::SetDrive() {
  PathParts parts = SplitPath(TextArgument(0));
  parts.drive = TextArgument(1);
  Result(JoinPath(parts));
}

void CIDisk::SetDir() {
  PathParts parts = SplitPath(TextArgument(0));
  parts.dir = TextArgument(1);
  Result(JoinPath(parts));
}

void CIDisk::SetName() {
  PathParts parts = SplitPath(TextArgument(0));
  parts.name = TextArgument(1);
  Result(JoinPath(parts));
}

void CIDisk::SetExtension() {
  PathParts parts = SplitPath(TextArgument(0));
  parts.extension = TextArgument(1);
  Result(JoinPath(parts));
}

void CIDisk::GetLongPathName() {
  std::string path;
  if (!Files().GetLongPath(TextArgument(0), &path)) lastError = Files().error;
  Result(path);
}

void CIDisk::GetShortPathName() {
  std::string path;
  if (!Files().GetShortPath(TextArgument(0), &path)) lastError = Files().error;
  Result(path);
}

// --- Files ---

bool CIDisk::Status(int i, FileStatus& result) {
  std::string full;
  return Files().GetFullPath(TextArgument(i), &full) && Files().status(full, result);
}

void CIDisk::IsDirectory() {
  FileStatus found;
  interpreter.GetResult().SetInt(Status(0, found) && found.isFolder);
}

void CIDisk::Exist() {
  FileStatus found;
  interpreter.GetResult().SetInt(Status(0, found));
}

void CIDisk::GetFileSize() {
  FileStatus found;
  bool worked = Status(0, found);
  if (worked && found.isFolder) {
    Files().error = SYS_ACCESS_DENIED;
    worked = false;
  }
  if (!worked) lastError = Files().error;
  interpreter.GetResult().SetInt(worked ? static_cast<int32_t>(std::min<uint64_t>(found.size, INT32_MAX)) : -1);
}

void CIDisk::Delete() {
  const std::string path = PathArgument(0);
  interpreter.RequireOwnFile(path);
  std::string full;
  Result(Files().GetFullPath(path, &full) && Files().remove(full));
}

void CIDisk::Rename() {
  const std::string from = PathArgument(0);
  const std::string to = PathArgument(1);
  interpreter.RequireOwnFile(from);
  interpreter.RequireOwnFile(to);
  std::string fullFrom;
  std::string fullTo;
  Result(Files().GetFullPath(from, &fullFrom) && Files().GetFullPath(to, &fullTo) && Files().rename(fullFrom, fullTo));
}

void CIDisk::MakeDirectory() { interpreter.RaiseError(ERR_NOT_OFFERED); }

bool CIDisk::CopyBytes(const std::string& target, const std::string& source, FileMode mode) {
  RunFiles& files = Files();
  std::string from;
  std::string to;
  if (!files.GetFullPath(source, &from) || !files.GetFullPath(target, &to)) return false;
  const auto input = files.open(from, FileMode::Read);
  if (!input) return false;
  // A file that is copied onto itself would be empty before it is read.
  std::string longFrom;
  std::string longTo;
  const bool isSame = files.GetLongPath(from, &longFrom) && files.GetLongPath(to, &longTo) && longFrom == longTo;
  if (isSame && mode == FileMode::Create) {
    files.error = SYS_SHARING_VIOLATION;
    return false;
  }
  const auto output = files.open(to, mode);
  if (!output) return false;
  if (mode == FileMode::ReadWrite && !output->seek(output->size())) return false;
  // Appended to itself, it is the file as it was.
  int64_t left = input->size();
  std::vector<uint8_t> block(kCopyBlockBytes);
  while (left > 0) {
    const size_t n = input->read(block.data(), static_cast<size_t>(std::min<int64_t>(left, kCopyBlockBytes)));
    if (n == 0) break;
    left -= static_cast<int64_t>(n);
    if (output->write(block.data(), n) != n) {
      files.error = SYS_DISK_FULL;
      return false;
    }
  }
  if (!input->failed()) return true;
  files.error = SYS_ACCESS_DENIED;
  return false;
}

void CIDisk::Copy(FileMode mode) {
  const std::string target = PathArgument(0);
  const std::string source = PathArgument(1);
  interpreter.RequireOwnFile(target);
  Result(CopyBytes(target, source, mode));
}

void CIDisk::CreateTemporaryFile() {
  std::string extension = "tmp";
  if (!interpreter.IsArgDefault(0)) {
    const CValue& given = *interpreter.GetArg(0);
    if (given.type != VT_STRING) interpreter.RaiseError(ERR_BAD_ARGUMENT, 1);
    extension = given.StringView();
  }
  RunFiles& files = Files();
  const std::string path =
      MakeTemporaryFile(files, interpreter.services.environment->tempDirectory(), kTemporaryPrefix, extension);
  std::string full;
  if (!path.empty() && files.GetFullPath(path, &full)) {
    interpreter.AddTempFile(full);
    Result(full);
    return;
  }
  lastError = files.error;
  Result(std::string());
}

// --- Drives ---

void CIDisk::ListDrives() {
  fileCount_ = 1;
  interpreter.SetResultNames({std::string(kDriveRoot), ""});
}

void CIDisk::GetDriveType() {
  std::string full;
  const std::string root = SplitPath(TextArgument(0)).drive;
  const bool isOurs = root.empty() || MakeFullPath(root + "\\", kDriveRoot, &full) == SYS_SUCCESS;
  interpreter.GetResult().SetInt(static_cast<int32_t>(isOurs ? kFixedDrive : kUnknownDrive));
}

void CIDisk::GetDiskFreeSpace() {
  FileStatus found;
  const bool isThere = interpreter.IsArgDefault(0) || Status(0, found);
  if (!isThere) lastError = Files().error;
  interpreter.GetResult().SetInt(isThere ? static_cast<int32_t>(Files().FreeBytes() / 1024) : 0);
}

void CIDisk::GetLastDiskErrorCode() { interpreter.GetResult().SetInt(static_cast<int32_t>(lastError)); }

void CIDisk::GetLastDiskErrorString() {
  std::string text = SystemErrorText(lastError, interpreter.services.environment->isFrench());
  if (text.ends_with('.')) text.pop_back();
  Result(text);
}

namespace {

constexpr MemberRow kRows[] = {
    Row(1, "GetCurrentDirectory", kMember<&CIDisk::GetCurrentDirectory>, "GetCurrentDirectory()"),
    Row(2, "GetNFilenames", kMember<&CIDisk::GetNFilenames>, "GetNFilenames(): entries that the last list gave"),
    Row(3, "MakePath", kMember<&CIDisk::MakePath>, "MakePath(drive, dir, name, extension): the parts joined"),
    Row(4, "GetDrive", kMember<&CIDisk::GetDrive>, "GetDrive(path): as \"c:\""),
    Row(5, "GetDir", kMember<&CIDisk::GetDir>, "GetDir(path): as \"\\a\\b\\\""),
    Row(6, "GetName", kMember<&CIDisk::GetName>, "GetName(path): without the extension"),
    Row(7, "GetExtension", kMember<&CIDisk::GetExtension>, "GetExtension(path): with its dot"),
    Row(8, "SetCurrentDirectory", kMember<&CIDisk::SetCurrentDirectory>, "SetCurrentDirectory(path): 1 or 0"),
    Row(9, "SetName", kMember<&CIDisk::SetName>, "SetName(path, name): the path with another name"),
    Row(10, "SetDir", kMember<&CIDisk::SetDir>, "SetDir(path, dir): the path with another directory"),
    Row(11, "SetDrive", kMember<&CIDisk::SetDrive>, "SetDrive(path, drive): the path with another drive"),
    Row(12, "SetExtension", kMember<&CIDisk::SetExtension>, "SetExtension(path, extension): with another extension"),
    Row(13, "ListFiles", kMember<&CIDisk::ListFiles>,
        "ListFiles(directory, include, exclude, flags...): an array of names, the last \"\""),
    Row(14, "Delete", kMember<&CIDisk::Delete>, "Delete(path): 1 or 0"),
    Row(15, "Rename", kMember<&CIDisk::Rename>, "Rename(old, new): 1 or 0"),
    Row(16, "GetFileSize", kMember<&CIDisk::GetFileSize>, "GetFileSize(path): bytes, or -1"),
    Row(17, "MakeDirectory", kMember<&CIDisk::MakeDirectory>, "refused: error 20"),
    Row(18, "CopyFile", kMember<&CIDisk::CopyFile>, "CopyFile(destination, source): 1 or 0"),
    Row(19, "AppendFile", kMember<&CIDisk::AppendFile>, "AppendFile(destination, source): 1 or 0"),
    Row(20, "IsDirectory", kMember<&CIDisk::IsDirectory>, "IsDirectory(path): 1 or 0"),
    Row(21, "Exist", kMember<&CIDisk::Exist>, "Exist(path): 1 or 0, also of a directory"),
    Row(22, "ListDrives", kMember<&CIDisk::ListDrives>, "ListDrives(): an array of roots, the last \"\""),
    Row(23, "GetDriveType", kMember<&CIDisk::GetDriveType>, "GetDriveType(path): FIXED, UNKNOWN..."),
    Row(24, "CreateTemporaryFile", kMember<&CIDisk::CreateTemporaryFile>,
        "CreateTemporaryFile(extension): the path of a new file, which goes with the run"),
    Row(25, "GetDiskFreeSpace", kMember<&CIDisk::GetDiskFreeSpace>, "GetDiskFreeSpace(path): in KB"),
    Row(26, "GetLastDiskErrorCode", kMember<&CIDisk::GetLastDiskErrorCode>,
        "GetLastDiskErrorCode(): the system's number of the last failure"),
    Row(27, "GetLastDiskErrorString", kMember<&CIDisk::GetLastDiskErrorString>,
        "GetLastDiskErrorString(): the system's text of it"),
    Row(28, "GetLongPathName", kMember<&CIDisk::GetLongPathName>, "GetLongPathName(path): with the names in full"),
    Row(29, "GetShortPathName", kMember<&CIDisk::GetShortPathName>, "GetShortPathName(path): names of 8 and 3"),
    Constant(31, "NOFILES", 0xABCD0001, "ListFiles: directories only"),
    Constant(32, "NODIRS", 0xABCD0002, "ListFiles: files only"),
    Constant(33, "SORT", 0xABCD0004, "ListFiles: sorted"),
    Constant(34, "SUBDIRS", 0xABCD0008, "ListFiles: what lies in the directories too"),
    Constant(35, "SHORTNAMES", 0xABCD0010, "ListFiles: names of 8 and 3"),
    Constant(36, "FIXED", kFixedDrive, "kind of a drive"),
    Constant(37, "REMOVABLE", 0xABCD0040, "kind of a drive"),
    Constant(38, "REMOTE", 0xABCD0080, "kind of a drive"),
    Constant(39, "CDROM", 0xABCD0100, "kind of a drive"),
    Constant(40, "RAMDISK", 0xABCD0200, "kind of a drive"),
    Constant(41, "UNKNOWN", kUnknownDrive, "kind of a drive"),
    {42, "DIRECTORY_SEPARATOR", MemberKind::Constant, nullptr, 0, 0, "between the parts of a path", "\\"},
};

}  // namespace

const ClassTable kDiskClass = {CLASS_DISK, kRows, &CreateObject<CIDisk>, "Names and lists of the disk"};

}  // namespace vl

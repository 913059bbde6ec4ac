// CIDisk: the fixed object Disk, names and lists of the run's drive.
#pragma once

#include <string>

#include "interpreter/interpretor.h"

namespace vl {

class CIDisk : public CIBaseClassImpl {
 public:
  explicit CIDisk(CInterpretor& interpreter) : CIBaseClassImpl(interpreter, CLASS_DISK, Listing::Listed) {}

  void GetCurrentDirectory();
  void GetNFilenames();
  void MakePath();
  void GetDrive();
  void GetDir();
  void GetName();
  void GetExtension();
  void SetCurrentDirectory();
  void SetName();
  void SetDir();
  void SetDrive();
  void SetExtension();
  void ListFiles();
  void Delete();
  void Rename();
  void GetFileSize();
  void MakeDirectory();
  void CopyFile() { Copy(FileMode::Create); }
  void AppendFile() { Copy(FileMode::ReadWrite); }
  void IsDirectory();
  void Exist();
  void ListDrives();
  void GetDriveType();
  void CreateTemporaryFile();
  void GetDiskFreeSpace();
  void GetLastDiskErrorCode();
  void GetLastDiskErrorString();
  void GetLongPathName();
  void GetShortPathName();

  uint32_t lastError = SYS_SUCCESS;  // of the last failure

 private:
  RunFiles& Files() { return *interpreter.services.disk; }
  // "" when absent.
  std::string TextArgument(int i);
  // A path that must be there, else error 29.
  std::string PathArgument(int i);
  // Result 1, or 0 with the reason noted.
  void Result(bool worked);
  void Result(const std::string& text) { interpreter.GetResult().SetString(text); }
  bool Status(int i, FileStatus& result);
  bool CopyBytes(const std::string& target, const std::string& source, FileMode mode);
  void Copy(FileMode mode);

  int32_t fileCount_ = 0;  // entries that the last list gave
};

// A failure of File and Disk, where a program can read it.
void NoteDiskError(CInterpretor& interpreter, uint32_t error);

}  // namespace vl

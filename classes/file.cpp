#include "classes/file.h"

#include <algorithm>
#include <new>

#include "classes/core_classes.h"
#include "classes/disk.h"

namespace vl {

namespace {

constexpr uint32_t kModeReadWrite = 0xABCD0000;
constexpr uint32_t kModeReadOnly = 0xABCD0001;
constexpr uint32_t kModeWriteOnly = 0xABCD0002;
constexpr uint32_t kSkipSpaces = 0xABCD0003;
constexpr uint32_t kHandleQuotes = 0xABCD0004;
constexpr uint32_t kReturnQuotes = 0xABCD0005;
constexpr size_t kMaxPathCharacters = 258;

bool IsLineEnd(int c) { return c == '\r' || c == '\n'; }
bool IsBlank(int c) { return c == ' ' || c == '\t'; }

}  // namespace

void CIFile::Construct() {
  if (interpreter.GetArgCount() > 0) {
    TakeArguments();
    RunFiles& disk = *interpreter.services.disk;
    const bool isThere = disk.exists(path_);
    if (!OpenAt(isThere ? FileMode::ReadWrite : FileMode::Create)) interpreter.RaiseSystemError(disk.error);
  }
  Create();
}

void CIFile::Destroy(bool final) {
  file_.reset();
  CIBaseClassImpl::Destroy(final);
}

void CIFile::TakeArguments() {
  Close();
  std::string named;
  if (!interpreter.IsArgDefault(0)) named = interpreter.GetArgText(0).View().substr(0, kMaxPathCharacters);
  if (named.empty()) interpreter.RaiseError(ERR_NO_FILE_NAME);
  interpreter.RequireOwnFile(named);
  mode_ = kReadWrite;
  if (interpreter.GetArgCount() == 2) {
    const CValue& mode = *interpreter.GetArg(1);
    const auto number = static_cast<uint32_t>(mode.type == VT_INTEGER ? mode.GetInt() : 0);
    if (number != kModeReadWrite && number != kModeReadOnly && number != kModeWriteOnly) {
      interpreter.RaiseError(ERR_BAD_ARGUMENT, 1);
    }
    mode_ = number == kModeReadOnly ? kRead : number == kModeWriteOnly ? kWrite : kReadWrite;
  }
  path_ = named;
}

bool CIFile::OpenAt(FileMode mode) {
  RunFiles& disk = *interpreter.services.disk;
  std::string full;
  if (disk.GetFullPath(path_, &full)) {
    const bool onlyReads = mode == FileMode::ReadWrite && mode_ == kRead;
    file_ = disk.open(full, onlyReads ? FileMode::Read : mode);
  }
  if (!file_) {
    NoteDiskError(interpreter, disk.error);
    return false;
  }
  position_ = 0;
  length_ = static_cast<int32_t>(std::min<int64_t>(file_->size(), INT32_MAX));
  return true;
}

void CIFile::Open() {
  TakeArguments();
  interpreter.GetResult().SetInt(OpenAt(FileMode::ReadWrite));
}

void CIFile::CreateFile() {
  TakeArguments();
  interpreter.GetResult().SetInt(OpenAt(FileMode::Create));
}

void CIFile::Close() {
  file_.reset();
  path_.clear();
}

void CIFile::RequireOpen() {
  if (!file_) interpreter.RaiseError(ERR_FILE_CLOSED);
}

// --- Reading ---

void CIFile::StartReading() {
  RequireOpen();
  if (!readBuffer_) {
    readBuffer_.reset(new (std::nothrow) std::array<char, kBlockBytes>);
    if (!readBuffer_) interpreter.RaiseError(ERR_MEMORY);
  }
  // It may have been written to meanwhile.
  bufferFill_ = 0;
}

int CIFile::ByteAt(int32_t at) {
  if (at < bufferAt_ || at - bufferAt_ >= bufferFill_) {
    bufferFill_ = 0;
    if (mode_ == kWrite) {
      NoteDiskError(interpreter, SYS_ACCESS_DENIED);
      return -1;
    }
    if (!file_->seek(at)) return -1;
    bufferAt_ = at;
    bufferFill_ = static_cast<int32_t>(file_->read(readBuffer_->data(), kBlockBytes));
    if (bufferFill_ == 0) return -1;
  }
  return static_cast<uint8_t>((*readBuffer_)[static_cast<size_t>(at - bufferAt_)]);
}

void CIFile::ReadLn() {
  StartReading();
  std::string line;
  int32_t at = position_;
  int c = ByteAt(at);
  while (c > 0 && !IsLineEnd(c)) {
    line += static_cast<char>(c);
    c = ByteAt(++at);
  }
  if (c >= 0 && IsLineEnd(ByteAt(++at))) ++at;
  position_ = at;
  interpreter.GetResult().SetString(line);
}

int32_t CIFile::BehindLineEnd(int32_t at) {
  const int first = ByteAt(at);
  const int second = ByteAt(at + 1);
  return at + (IsLineEnd(second) && second != first ? 2 : 1);
}

void CIFile::Read() {
  std::string delimiters;
  bool skipSpaces = false;
  bool handleQuotes = false;
  bool returnQuotes = false;
  for (int i = 0; i < interpreter.GetArgCount(); ++i) {
    const CValue& argument = *interpreter.GetArg(i);
    if (argument.type == VT_STRING) {
      delimiters += argument.StringView();
      continue;
    }
    switch (argument.type == VT_INTEGER ? static_cast<uint32_t>(argument.GetInt()) : 0) {
      case kSkipSpaces:
        skipSpaces = true;
        break;
      case kHandleQuotes:
        handleQuotes = true;
        break;
      case kReturnQuotes:
        returnQuotes = true;
        break;
      default:
        interpreter.RaiseError(ERR_BAD_ARGUMENT);
    }
  }
  if (delimiters.empty()) delimiters = ",";
  StartReading();
  const auto isDelimiter = [&](int c) { return c > 0 && delimiters.find(static_cast<char>(c)) != std::string::npos; };
  const auto endsText = [](int c) { return c <= 0 || IsLineEnd(c); };
  int32_t at = position_;
  const auto skipBlanks = [&] {
    while (skipSpaces && IsBlank(ByteAt(at)) && !isDelimiter(ByteAt(at))) ++at;
  };
  skipBlanks();
  std::string field;
  for (int c = ByteAt(at); !endsText(c) && !isDelimiter(c); c = ByteAt(at)) {
    ++at;
    if (!handleQuotes || c != '"') {
      field += static_cast<char>(c);
      continue;
    }
    if (returnQuotes) field += '"';
    for (c = ByteAt(at); !endsText(c) && c != '"'; c = ByteAt(++at)) field += static_cast<char>(c);
    if (c == '"') {
      if (returnQuotes) field += '"';
      ++at;
    }
    skipBlanks();
    break;
  }
  // What ended the field goes with it.
  const int end = ByteAt(at);
  if (IsLineEnd(end)) {
    at = BehindLineEnd(at);
  } else if (end == 0 || isDelimiter(end)) {
    ++at;
  }
  while (skipSpaces && field.size() > 1 && IsBlank(field.back())) field.pop_back();
  position_ = at;
  interpreter.GetResult().SetString(field);
}

// --- Writing ---

bool CIFile::WriteBytes(std::string_view bytes) {
  if (bytes.empty()) return true;
  if (mode_ == kRead) {
    NoteDiskError(interpreter, SYS_ACCESS_DENIED);
    return false;
  }
  const size_t written = file_->seek(position_) ? file_->write(bytes.data(), bytes.size()) : 0;
  position_ += static_cast<int32_t>(written);
  length_ = std::max(length_, position_);
  if (written == bytes.size()) return true;
  NoteDiskError(interpreter, SYS_DISK_FULL);
  return false;
}

void CIFile::WriteArguments(std::string_view end) {
  RequireOpen();
  std::string bytes;
  for (int i = 0; i < interpreter.GetArgCount(); ++i) bytes += interpreter.GetArgText(i).View();
  bytes += end;
  interpreter.GetResult().SetInt(WriteBytes(bytes));
}

void CIFile::WriteLn() { WriteArguments("\r\n"); }
void CIFile::Write() { WriteArguments({}); }

// --- Position and state ---

void CIFile::SetPosition() {
  if (interpreter.IsArgDefault(0) || interpreter.GetArgInt(0) < 0) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  RequireOpen();
  position_ = std::min(interpreter.GetArgInt(0), length_);
}

void CIFile::GetPosition() {
  RequireOpen();
  interpreter.GetResult().SetInt(position_);
}

void CIFile::GetLength() { interpreter.GetResult().SetInt(length_); }
void CIFile::GetFilePath() { interpreter.GetResult().SetString(path_); }
void CIFile::IsOpened() { interpreter.GetResult().SetInt(file_ != nullptr); }

namespace {

constexpr MemberRow kRows[] = {
    Row(1, "Open", kMember<&CIFile::Open>, "Open(path, mode): opens a file that is there; 1 or 0"),
    Row(2, "Create", kMember<&CIFile::CreateFile>, "Create(path, mode): makes a file or empties it; 1 or 0"),
    Row(3, "Close", kMember<&CIFile::Close>, "Close()"),
    Row(4, "ReadLn", kMember<&CIFile::ReadLn>, "ReadLn(): the next line"),
    Row(5, "WriteLn", kMember<&CIFile::WriteLn>, "WriteLn(...): the arguments as text, then a line end; 1 or 0"),
    Row(6, "SetPosition", kMember<&CIFile::SetPosition>, "SetPosition(n): at most the file's length"),
    Row(7, "GetPosition", kMember<&CIFile::GetPosition>, "GetPosition(): in bytes from the start"),
    Row(8, "GetLength", kMember<&CIFile::GetLength>, "GetLength(): in bytes"),
    Row(9, "Read", kMember<&CIFile::Read>, "Read(...): the next field; delimiters and options in any order"),
    Row(10, "Write", kMember<&CIFile::Write>, "Write(...): the arguments as text; 1 or 0"),
    Row(11, "GetFilePath", kMember<&CIFile::GetFilePath>, "GetFilePath(): as it was given to Open"),
    Row(12, "IsOpened", kMember<&CIFile::IsOpened>, "IsOpened(): 1 or 0"),
    Constant(14, "READWRITE", kModeReadWrite, "mode"),
    Constant(15, "READONLY", kModeReadOnly, "mode"),
    Constant(16, "WRITEONLY", kModeWriteOnly, "mode"),
    Constant(17, "SKIPSPACES", kSkipSpaces, "Read: blanks around a field don't count"),
    Constant(18, "HANDLEQUOTES", kHandleQuotes, "Read: delimiters inside quotes don't count"),
    Constant(19, "RETURNQUOTES", kReturnQuotes, "Read: the quotes stay"),
};

}  // namespace

const ClassTable kFileClass = {CLASS_FILE, kRows, &CreateObject<CIFile>, "Texts and positions in one file"};

}  // namespace vl

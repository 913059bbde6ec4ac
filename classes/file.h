// CIFile: the runtime class File, texts and positions in one file of the run's drive.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <string_view>

#include "interpreter/interpretor.h"

namespace vl {

class CIFile : public CIBaseClassImpl {
 public:
  explicit CIFile(CInterpretor& interpreter) : CIBaseClassImpl(interpreter, CLASS_FILE, Listing::Listed) {}
  void Construct() override;
  void Destroy(bool final) override;

  void Open();
  void CreateFile();
  void Close();
  void ReadLn();
  void Read();
  void WriteLn();
  void Write();
  void SetPosition();
  void GetPosition();
  void GetLength();
  void GetFilePath();
  void IsOpened();

 private:
  enum Mode : int32_t { kRead, kWrite, kReadWrite };
  // A block of the file, as far as it is read.
  static constexpr size_t kBlockBytes = 255;

  // Path and mode of Open, Create and New, with their errors.
  void TakeArguments();
  bool OpenAt(FileMode mode);
  void RequireOpen();
  void WriteArguments(std::string_view end);
  bool WriteBytes(std::string_view bytes);
  // The byte at a position, -1 at the end; reads the block around it when it must.
  int ByteAt(int32_t at);
  void StartReading();
  int32_t BehindLineEnd(int32_t at);

  std::unique_ptr<File> file_;
  Mode mode_ = kReadWrite;
  std::string path_;
  int32_t position_ = 0;
  int32_t length_ = 0;
  std::unique_ptr<std::array<char, kBlockBytes>> readBuffer_;
  int32_t bufferAt_ = 0;
  int32_t bufferFill_ = 0;
};

}  // namespace vl

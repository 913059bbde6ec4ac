// Binary: the block itself, loading and saving.
#include "classes/binary.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "host/appfile/app_file.h"
#include "host/appfile/element.h"
#include "interpreter/interpretor.h"

namespace vl {

namespace {
constexpr uint32_t kBinaryBank = 7;
}

void CIBinary::Construct() {
  if (interpreter.GetArgCount() > 0) LoadData();
  Create();
}

void CIBinary::Destroy(bool final) {
  Allocate(0);
  CIBaseClassImpl::Destroy(final);
}

bool CIBinary::Allocate(int64_t size, int64_t keep) {
  if (size < 0 || size > INT32_MAX) return false;
  std::unique_ptr<uint8_t[]> block;
  if (size > 0) {
    if (!interpreter.budget.Take(static_cast<uint64_t>(size))) return false;
    block.reset(new (std::nothrow) uint8_t[static_cast<size_t>(size)]());
    if (!block) {
      interpreter.budget.Return(static_cast<uint64_t>(size));
      return false;
    }
    const int64_t kept = std::min({keep, size, int64_t{size_}});
    if (kept > 0) std::memcpy(block.get(), data_.get(), static_cast<size_t>(kept));
  }
  interpreter.budget.Return(static_cast<uint64_t>(size_));
  data_ = std::move(block);
  size_ = static_cast<int32_t>(size);
  return true;
}

bool CIBinary::LoadFrom(CStream& stream) {
  const int64_t length = stream.GetLength();
  const int32_t from = interpreter.GetArgInt(1);
  const int32_t wanted = interpreter.GetArgInt(2);
  const int64_t offset = from == kDefaultInt ? 0 : std::clamp<int64_t>(from, 0, length);
  const int64_t left = length - offset;
  const int64_t count = wanted == kDefaultInt ? left : std::clamp<int64_t>(wanted, 0, left);
  if (!Allocate(count)) return false;
  return stream.Seek(offset) == kAppOk && stream.Read(data_.get(), static_cast<uint32_t>(count)) == kAppOk;
}

void CIBinary::LoadData() {
  if (interpreter.GetArgCount() == 0) interpreter.RaiseError(ERR_ARGUMENT_COUNT);
  const CValue& source = *interpreter.GetArg(0);
  std::unique_ptr<CStream> stream;
  CElement* element = interpreter.GetElement(source, kBinaryBank, true);
  if (element) {
    stream = element->OpenStream(0);
  } else if (source.type == VT_STRING) {
    if (interpreter.app) stream = interpreter.app->OpenResource(source.StringView(), true, 0);
  } else {
    interpreter.RaiseError(ERR_BAD_ARGUMENT);
  }
  interpreter.GetResult().SetInt(stream && LoadFrom(*stream));
  // A compressed body was unpacked for the stream; what is kept is the copy.
  stream.reset();
  if (element) element->bank->Unload(element->index);
}

void CIBinary::SaveData() {
  if (interpreter.GetArgCount() == 0) interpreter.RaiseError(ERR_ARGUMENT_COUNT);
  const CValue& path = *interpreter.GetArg(0);
  if (path.type != VT_STRING) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  if (size_ == 0) interpreter.RaiseError(ERR_NO_DATA);
  interpreter.RequireOwnFile(path.StringView());
  const auto number = [&](int i, int64_t ifMissing) {
    const int32_t v = interpreter.GetArgInt(i);
    return v == kDefaultInt ? ifMissing : int64_t{v};
  };
  const bool append = number(1, 0) != 0;
  const int64_t offset = std::clamp<int64_t>(number(3, 0), 0, size_ - 1);
  const int64_t length = std::clamp<int64_t>(number(4, size_), 0, size_ - offset);
  RunFiles& disk = *interpreter.services.disk;
  std::string filePath;
  bool saved = disk.GetFullPath(path.StringView(), &filePath);
  if (saved) {
    std::unique_ptr<File> file;
    const std::span bytes(data_.get() + offset, static_cast<size_t>(length));
    if (append) file = disk.open(filePath, FileMode::ReadWrite);
    if (file) {
      const int64_t at = std::clamp<int64_t>(number(2, 0), 0, file->size());
      saved = file->seek(at) && file->write(bytes.data(), bytes.size()) == bytes.size();
    } else {
      saved = disk.replace(filePath, bytes);
    }
  }
  interpreter.GetResult().SetInt(saved);
}

void CIBinary::AllocateData() {
  RequireCount(1);
  interpreter.GetResult().SetInt(Allocate(NumberArgument(0)));
}

void CIBinary::FreeData() { Allocate(0); }

void CIBinary::ReSizeData() {
  RequireCount(1);
  interpreter.GetResult().SetInt(Allocate(NumberArgument(0), size_));
}

void CIBinary::GetDataSize() { interpreter.GetResult().SetInt(size_); }

}  // namespace vl

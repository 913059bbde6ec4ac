// CIBinary: the runtime class Binary, a block of bytes with typed access in a chosen byte order.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

#include "classes/byte_order.h"
#include "interpreter/class_base.h"
#include "interpreter/data_source.h"

namespace vl {

class CStream;

class CIBinary : public CIBaseClassImpl, public CByteSource {
 public:
  explicit CIBinary(CInterpretor& interpreter) : CIBaseClassImpl(interpreter, CLASS_BINARY, Listing::Listed) {}
  void Construct() override;
  void Destroy(bool final) override;

  std::span<const uint8_t> Bytes() const override { return {data_.get(), static_cast<size_t>(size_)}; }
  std::span<uint8_t> WritableBytes() override { return {data_.get(), static_cast<size_t>(size_)}; }
  bool ResizeBytes(int64_t size) override { return Allocate(size, size); }
  uint8_t* Data() { return data_.get(); }
  int32_t ByteOrder() const { return byteOrder_; }
  // Of a block that came from elsewhere; a number that is no order counts as the machine's.
  void SetByteOrderOf(uint32_t order) {
    byteOrder_ = order >= 1 && order <= 3 ? static_cast<int32_t>(order) : kMachineOrder;
  }
  // A block of `size` bytes, 0 to 2^31 - 1; the first `keep` bytes of the old one stay, the rest is 0. False, and
  // unchanged, when the memory is spent.
  bool Allocate(int64_t size, int64_t keep = 0);

  void LoadData();
  void SaveData();
  void AllocateData();
  void FreeData();
  void ReSizeData();
  void GetDataSize();
  void GetWord();
  void GetLong();
  void GetByte();
  void GetChar();
  void GetDouble();
  void GetFloat();
  void GetString();
  void SetWord();
  void SetLong();
  void SetByte();
  void SetChar();
  void SetDouble();
  void SetFloat();
  void SetString();
  void SetByteOrdering();
  void GetByteOrdering();
  void MoveData();
  void CopyData();
  void GetByteSize();
  void GetWordSize();
  void GetLongSize();
  void GetCharSize();
  void GetDoubleSize();
  void GetStringSize();
  void GetFloatSize();
  void IsEqual();
  void Find();

 private:
  bool LoadFrom(CStream& stream);
  void RequireCount(int count);
  int32_t NumberArgument(int i);
  // The place of a Get: null when `size` bytes don't fit behind argument 0.
  const uint8_t* ReadPlace(int size);
  // The place of a Set; error 14 when they don't.
  uint8_t* WritePlace(int size);
  template <typename T>
  T Read();
  template <typename T>
  void Write(T value);
  std::string_view TextArgument(int i);
  CIBinary& BinaryArgument(int i);
  bool IsOneOf(int64_t position) const { return position >= 0 && position < size_; }

  std::unique_ptr<uint8_t[]> data_;
  int32_t size_ = 0;
  int32_t byteOrder_ = kMachineOrder;
};

}  // namespace vl

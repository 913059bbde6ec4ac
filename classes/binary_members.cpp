// Binary: typed access, copies, comparison, and the table of the class.
#include <algorithm>
#include <cstring>
#include <functional>

#include "classes/binary.h"
#include "classes/core_classes.h"
#include "interpreter/interpretor.h"

namespace vl {

void CIBinary::RequireCount(int count) {
  if (interpreter.GetArgCount() != count) interpreter.RaiseError(ERR_ARGUMENT_COUNT);
}

int32_t CIBinary::NumberArgument(int i) {
  const CValue& value = *interpreter.GetArg(i);
  if (value.type != VT_INTEGER && value.type != VT_FLOAT) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  return value.GetInt();
}

const uint8_t* CIBinary::ReadPlace(int size) {
  RequireCount(1);
  const int64_t at = NumberArgument(0);
  return at >= 0 && at + size <= size_ ? data_.get() + at : nullptr;
}

uint8_t* CIBinary::WritePlace(int size) {
  RequireCount(2);
  const int64_t at = NumberArgument(0);
  if (at < 0 || at + size > size_) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  return data_.get() + at;
}

template <typename T>
T CIBinary::Read() {
  T value{};
  if (const uint8_t* place = ReadPlace(sizeof(T))) {
    uint8_t bytes[sizeof(T)];
    std::memcpy(bytes, place, sizeof(T));
    if constexpr (sizeof(T) > 1) ConvertByteOrder(bytes, sizeof(T), byteOrder_, kMachineOrder);
    std::memcpy(&value, bytes, sizeof(T));
  }
  return value;
}

template <typename T>
void CIBinary::Write(T value) {
  uint8_t* place = WritePlace(sizeof(T));
  std::memcpy(place, &value, sizeof(T));
  if constexpr (sizeof(T) > 1) ConvertByteOrder(place, sizeof(T), kMachineOrder, byteOrder_);
}

std::string_view CIBinary::TextArgument(int i) {
  const CValue& value = *interpreter.GetArg(i);
  if (value.type != VT_STRING) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  return value.StringView();
}

CIBinary& CIBinary::BinaryArgument(int i) {
  const CValue& value = *interpreter.GetArg(i);
  if (!value.IsObjectOfClass(CLASS_BINARY)) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  return static_cast<CIBinary&>(*value.data.object);
}

void CIBinary::GetByte() { interpreter.GetResult().SetInt(Read<uint8_t>()); }
void CIBinary::GetWord() { interpreter.GetResult().SetInt(Read<uint16_t>()); }
void CIBinary::GetLong() { interpreter.GetResult().SetInt(Read<int32_t>()); }
void CIBinary::GetFloat() { interpreter.GetResult().SetFloat(static_cast<double>(Read<float>())); }
void CIBinary::GetDouble() { interpreter.GetResult().SetFloat(Read<double>()); }

void CIBinary::GetChar() {
  const char c = Read<char>();
  interpreter.GetResult().SetString(std::string_view(&c, c != 0));
}

void CIBinary::GetString() {
  const uint8_t* place = ReadPlace(1);
  if (!place) {
    interpreter.GetResult().SetString("");
    return;
  }
  const std::string_view rest(reinterpret_cast<const char*>(place), static_cast<size_t>(data_.get() + size_ - place));
  interpreter.GetResult().SetString(rest.substr(0, rest.find('\0')));
}

void CIBinary::SetByte() {
  RequireCount(2);
  Write(static_cast<uint8_t>(NumberArgument(1)));
}
void CIBinary::SetWord() {
  RequireCount(2);
  Write(static_cast<uint16_t>(NumberArgument(1)));
}
void CIBinary::SetLong() {
  RequireCount(2);
  Write(NumberArgument(1));
}

void CIBinary::SetFloat() {
  RequireCount(2);
  if (interpreter.GetArg(1)->type != VT_FLOAT) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  Write(static_cast<float>(interpreter.GetArgDouble(1)));
}
void CIBinary::SetDouble() {
  RequireCount(2);
  if (interpreter.GetArg(1)->type != VT_FLOAT) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  Write(interpreter.GetArgDouble(1));
}

void CIBinary::SetChar() {
  RequireCount(2);
  const std::string_view text = TextArgument(1);
  uint8_t* place = WritePlace(1);
  if (!text.empty()) *place = static_cast<uint8_t>(text[0]);
}

void CIBinary::SetString() {
  RequireCount(2);
  const std::string_view text = TextArgument(1);
  uint8_t* place = WritePlace(1);
  if (text.empty()) return;
  const size_t room = static_cast<size_t>(data_.get() + size_ - place) - 1;
  const size_t length = std::min(text.size(), room);
  std::memcpy(place, text.data(), length);
  place[length] = 0;
}

void CIBinary::SetByteOrdering() {
  if (interpreter.GetArgCount() == 0) {
    byteOrder_ = kMachineOrder;
    return;
  }
  const int32_t order = interpreter.GetArgInt(0);
  if (order < kBigEndian || order > kPdpEndian) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  byteOrder_ = order;
}

void CIBinary::GetByteOrdering() { interpreter.GetResult().SetInt(byteOrder_); }

void CIBinary::MoveData() {
  const int64_t from = NumberArgument(0);
  const int64_t to = NumberArgument(1);
  const int64_t length = NumberArgument(2);
  const bool fits = IsOneOf(from) && IsOneOf(to) && length >= 0 && from + length <= size_ && to + length <= size_;
  if (fits) std::memmove(data_.get() + to, data_.get() + from, static_cast<size_t>(length));
  interpreter.GetResult().SetInt(fits);
}

void CIBinary::CopyData() {
  CIBinary& target = BinaryArgument(0);
  const auto number = [&](int i, int64_t ifMissing) {
    return interpreter.IsArgDefault(i) ? ifMissing : int64_t{NumberArgument(i)};
  };
  const int64_t from = number(1, 0);
  const int64_t to = number(2, 0);
  interpreter.GetResult().SetInt(0);
  if (!IsOneOf(from) || to < 0) return;
  const int64_t length = std::clamp<int64_t>(number(3, size_), 0, size_ - from);
  if (to + length > target.size_ && !target.Allocate(to + length, target.size_)) return;
  if (length > 0) std::memmove(target.data_.get() + to, data_.get() + from, static_cast<size_t>(length));
  interpreter.GetResult().SetInt(1);
}

void CIBinary::GetByteSize() { interpreter.GetResult().SetInt(1); }
void CIBinary::GetCharSize() { interpreter.GetResult().SetInt(1); }
void CIBinary::GetWordSize() { interpreter.GetResult().SetInt(2); }
void CIBinary::GetLongSize() { interpreter.GetResult().SetInt(4); }
void CIBinary::GetFloatSize() { interpreter.GetResult().SetInt(4); }
void CIBinary::GetDoubleSize() { interpreter.GetResult().SetInt(8); }
void CIBinary::GetStringSize() { interpreter.GetResult().SetInt(static_cast<int32_t>(TextArgument(0).size() + 1)); }

void CIBinary::IsEqual() {
  const CIBinary& other = BinaryArgument(0);
  interpreter.GetResult().SetInt(size_ == other.size_ &&
                                 std::equal(data_.get(), data_.get() + size_, other.data_.get()));
}

void CIBinary::Find() {
  const CIBinary& other = BinaryArgument(0);
  const int64_t start = interpreter.IsArgDefault(1) ? 0 : NumberArgument(1);
  int64_t found = -1;
  if (other.size_ > 0 && IsOneOf(start)) {
    // Never the product of both lengths, whatever the bytes.
    const uint8_t* begin = data_.get();
    const uint8_t* end = begin + size_;
    const uint8_t* wanted = other.data_.get();
    const uint8_t* hit = std::search(begin + start, end, std::boyer_moore_searcher(wanted, wanted + other.size_));
    if (hit != end) found = hit - begin;
  }
  interpreter.GetResult().SetInt(static_cast<int32_t>(found));
}

namespace {

constexpr MemberRow Order(uint16_t id, const char* name, uint32_t value) {
  return {id, name, MemberKind::Constant, nullptr, value, 0, "for SetByteOrdering"};
}

constexpr MemberRow kRows[] = {
    Row(1, "LoadData", kMember<&CIBinary::LoadData>, "LoadData(source, offset, length): an element or a file; 1 or 0"),
    Row(2, "SaveData", kMember<&CIBinary::SaveData>, "SaveData(path, append, fileOffset, offset, length): 1 or 0"),
    Row(3, "AllocateData", kMember<&CIBinary::AllocateData>, "AllocateData(size): a new block of zeros; 1 or 0"),
    Row(4, "FreeData", kMember<&CIBinary::FreeData>, "FreeData()"),
    Row(5, "ReSizeData", kMember<&CIBinary::ReSizeData>, "ReSizeData(size): keeps what fits; 1 or 0"),
    Row(6, "GetDataSize", kMember<&CIBinary::GetDataSize>, "GetDataSize(): bytes"),
    Row(7, "GetWord", kMember<&CIBinary::GetWord>, "GetWord(i): 0 to 65535"),
    Row(8, "GetLong", kMember<&CIBinary::GetLong>, "GetLong(i): 32 bits"),
    Row(9, "GetByte", kMember<&CIBinary::GetByte>, "GetByte(i): 0 to 255"),
    Row(10, "GetChar", kMember<&CIBinary::GetChar>, "GetChar(i): a text of one character"),
    Row(11, "GetDouble", kMember<&CIBinary::GetDouble>, "GetDouble(i): a float of 8 bytes"),
    Row(12, "GetFloat", kMember<&CIBinary::GetFloat>, "GetFloat(i): a float of 4 bytes"),
    Row(13, "GetString", kMember<&CIBinary::GetString>, "GetString(i): up to a NUL or the end"),
    Row(14, "SetWord", kMember<&CIBinary::SetWord>, "SetWord(i, v)"),
    Row(15, "SetLong", kMember<&CIBinary::SetLong>, "SetLong(i, v)"),
    Row(16, "SetByte", kMember<&CIBinary::SetByte>, "SetByte(i, v)"),
    Row(17, "SetChar", kMember<&CIBinary::SetChar>, "SetChar(i, text): its first character"),
    Row(18, "SetDouble", kMember<&CIBinary::SetDouble>, "SetDouble(i, v): v must be a float"),
    Row(19, "SetFloat", kMember<&CIBinary::SetFloat>, "SetFloat(i, v): v must be a float"),
    Row(20, "SetString", kMember<&CIBinary::SetString>, "SetString(i, text): with its NUL, cut at the end"),
    Row(21, "SetByteOrdering", kMember<&CIBinary::SetByteOrdering>,
        "SetByteOrdering(order): without one, the machine's"),
    Row(22, "GetByteOrdering", kMember<&CIBinary::GetByteOrdering>, "GetByteOrdering(): of the numbers in the block"),
    Row(23, "MoveData", kMember<&CIBinary::MoveData>, "MoveData(from, to, length): inside the block; 1 or 0"),
    Row(24, "CopyData", kMember<&CIBinary::CopyData>, "CopyData(target, from, to, length): to another Binary; 1 or 0"),
    Row(25, "GetByteSize", kMember<&CIBinary::GetByteSize>, "GetByteSize(): 1"),
    Row(26, "GetWordSize", kMember<&CIBinary::GetWordSize>, "GetWordSize(): 2"),
    Row(27, "GetLongSize", kMember<&CIBinary::GetLongSize>, "GetLongSize(): 4"),
    Row(28, "GetCharSize", kMember<&CIBinary::GetCharSize>, "GetCharSize(): 1"),
    Row(29, "GetDoubleSize", kMember<&CIBinary::GetDoubleSize>, "GetDoubleSize(): 8"),
    Row(30, "GetStringSize", kMember<&CIBinary::GetStringSize>, "GetStringSize(text): with its NUL"),
    Row(31, "GetFloatSize", kMember<&CIBinary::GetFloatSize>, "GetFloatSize(): 4"),
    Row(32, "IsEqual", kMember<&CIBinary::IsEqual>, "IsEqual(other): 1 or 0"),
    Row(33, "Find", kMember<&CIBinary::Find>, "Find(other, start): position of its bytes, or -1"),
    Order(35, "LITTLE_ENDIAN", kLittleEndian),
    Order(36, "BIG_ENDIAN", kBigEndian),
    Order(37, "PDP_ENDIAN", kPdpEndian),
};

}  // namespace

const ClassTable kBinaryClass = {CLASS_BINARY, kRows, &CreateObject<CIBinary>,
                                 "A block of bytes: New Binary(source, offset, length)"};

}  // namespace vl

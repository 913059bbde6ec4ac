#include "host/appfile/element.h"

#include <algorithm>
#include <utility>

#include "host/appfile/app_file.h"
#include "host/appfile/bank.h"
#include "host/appfile/names.h"

namespace vl {

namespace {

// Takes `suffix` off the end of `text`. False when it doesn't stand there, ignoring case.
bool TakeSuffix(std::string_view* text, std::string_view suffix) {
  if (text->size() < suffix.size()) return false;
  const size_t cut = text->size() - suffix.size();
  if (!EqualsIgnoringCase(text->substr(cut), suffix)) return false;
  text->remove_suffix(suffix.size());
  return true;
}

}  // namespace

bool CElement::ReadHeader(CStream& stream) {
  CAppFile& app = bank->App();
  uint32_t status = stream.ReadShortText(&name);
  if (!status) status = stream.ReadShortText(&group);
  if (!status && !app.Structure().Spend(4 + name.size() + group.size())) status = kAppOutOfMemory;
  if (!status) return true;
  app.lastBankError = status;
  return false;
}

std::string CElement::GetPath() const {
  std::string path = bank->GetPath();
  path += '/';
  if (!group.empty()) path.append(group).append(1, '/');
  return path += name;
}

uint32_t CElement::PathHash() const {
  uint32_t hash = bank->PathHash() + HashName("/") + HashName(name);
  if (!group.empty()) hash += HashName(group) + HashName("/");
  return hash;
}

bool CElement::HasPath(std::string_view path) const {
  // From the end, where names differ: many elements share the front.
  if (!TakeSuffix(&path, name) || !TakeSuffix(&path, "/")) return false;
  if (!group.empty() && (!TakeSuffix(&path, group) || !TakeSuffix(&path, "/"))) return false;
  return bank->HasPath(path);
}

int CBinaryElement::LoadBody(CStream& stream, uint32_t option) {
  Drop();
  BufferSizes sizes;
  uint32_t status = ReadBufferSizes(stream, &sizes);
  if (!status && sizes.size) status = ReadBody(stream, sizes);
  if (!status) return 1;
  bank->App().lastBankError = status;
  return 0;
}

uint32_t CBinaryElement::ReadBody(CStream& stream, const BufferSizes& sizes) {
  MemoryBudget& budget = bank->App().Budget();
  if (!budget.Take(sizes.size)) return kAppOutOfMemory;
  if (const uint32_t status = ReadBufferBytes(stream, sizes, &data)) {
    budget.Return(sizes.size);
    return status;
  }
  size = sizes.size;
  return kAppOk;
}

uint32_t CBinaryElement::StoredBodySize() const {
  CFileStream stream(bank->file);
  BufferSizes sizes;
  stream.Seek(bank->positions[index]);
  return ReadBufferSizes(stream, &sizes) ? 0 : sizes.size;
}

void CBinaryElement::Drop() {
  if (size) bank->App().Budget().Return(size);
  data.Clear();
  size = 0;
}

std::unique_ptr<CStream> CBinaryElement::OpenStream(uint32_t option) {
  if (data && size) return std::make_unique<CMemoryStream>(data.Data(), size);
  const uint32_t position = bank->positions[index];
  if (!bank->file || position == 0) return nullptr;
  CAppFile& app = bank->App();
  CFileStream stream(bank->file);
  stream.Seek(position);
  BufferSizes sizes;
  uint32_t status = ReadBufferSizes(stream, &sizes);
  if (!status && sizes.size && sizes.compressedSize) {
    status = ReadBody(stream, sizes);
    if (!status) return std::make_unique<CMemoryStream>(data.Data(), size);
  }
  if (status) {
    app.lastBankError = status;
    return nullptr;
  }
  std::shared_ptr<File> file = bank->file;
  if (option == 1) file = app.Files()->open(bank->path, FileMode::Read);
  if (!file) {
    app.lastBankError = kAppCantOpen;
    return nullptr;
  }
  return std::make_unique<CFileStream>(std::move(file), stream.GetPosition(), sizes.size);
}

std::unique_ptr<CStream> CStringElement::OpenStream(uint32_t option) {
  if (!data) return nullptr;
  // A text that was stored without its NUL has one behind the block.
  const bool stored = size > 0 && data.Data()[size - 1] == 0;
  return std::make_unique<CMemoryStream>(data.Data(), stored ? size : size + 1);
}

std::string_view CStringElement::GetText() const {
  const std::string_view all = data ? data.View() : std::string_view();
  return all.substr(0, all.find('\0'));
}

bool CAnimElement::ReadHeader(CStream& stream) {
  if (!CBinaryElement::ReadHeader(stream)) return false;
  if (bank->version < kBankVersion2) return true;
  uint32_t status = stream.ReadWordLE(&hotX);
  if (!status) status = stream.ReadWordLE(&hotY);
  if (!status) return true;
  bank->App().lastBankError = status;
  return false;
}

int CImageElement::LoadBody(CStream& stream, uint32_t option) {
  Drop();
  const uint32_t status = ReadBody(stream);
  if (status) {
    Drop();
    bank->App().lastBankError = status;
    return 0;
  }
  loaded_ = true;
  return 1;
}

uint32_t CImageElement::ReadBody(CStream& stream) {
  uint16_t x = 0;
  uint16_t y = 0;
  uint32_t palette = 0;
  uint32_t status = stream.ReadWordLE(&x);
  if (!status) status = stream.ReadWordLE(&y);
  if (!status) status = stream.ReadDwordLE(&palette);
  if (!status) status = stream.ReadWordLE(&marker);
  if (!status) status = stream.ReadWordLE(&width);
  if (!status) status = stream.ReadWordLE(&height);
  if (!status) status = stream.ReadWordLE(&depth);
  flags = 0;
  if (!status && bank->version > kBankVersion1) status = stream.ReadDwordLE(&flags);
  if (status) return status;
  hotX = static_cast<int16_t>(x);
  hotY = static_cast<int16_t>(y);
  paletteIndex = static_cast<int32_t>(palette);
  if (IsImageFile()) {
    const int64_t left = std::min(bank->GetBodyEnd(index) - stream.GetPosition(), stream.Remaining());
    if (left < 0) return kAppEndOfFile;
    if (left > limits::kMaxBodyBytes) return kAppOutOfMemory;
    if (!Allocate(&file, static_cast<uint32_t>(left))) return kAppOutOfMemory;
    return stream.Read(file.Data(), file.Size());
  }
  status = ReadPlane(stream, StoredPitch(width, depth) * height, &pixels);
  if (!status && (flags & kFlagMask)) status = ReadPlane(stream, uint64_t{width} * height, &mask);
  return status;
}

uint32_t CImageElement::ReadPlane(CStream& stream, uint64_t rawSize, ImagePlane* plane) {
  uint32_t packedSize = 0;
  if (const uint32_t status = stream.ReadDwordLE(&packedSize)) return status;
  const uint64_t stored = packedSize ? packedSize : rawSize;
  if (stored > static_cast<uint64_t>(stream.Remaining())) return kAppEndOfFile;
  if (rawSize > limits::kMaxBodyBytes || stored > limits::kMaxBodyBytes) return kAppOutOfMemory;
  if (packedSize && rawSize > packedSize * limits::kMaxInflateRatio + limits::kInflateSlackBytes) return kAppBadStream;
  if (!Allocate(&plane->bytes, static_cast<uint32_t>(stored))) return kAppOutOfMemory;
  plane->present = true;
  plane->packed = packedSize != 0;
  plane->rawSize = static_cast<uint32_t>(rawSize);
  return stream.Read(plane->bytes.Data(), plane->bytes.Size());
}

bool CImageElement::Unpack(const ImagePlane& plane, ByteBlock* out) const {
  if (!plane.present || !out->Allocate(plane.rawSize)) return false;
  if (!plane.packed) {
    if (plane.rawSize) std::memcpy(out->Data(), plane.bytes.Data(), plane.rawSize);
    return true;
  }
  CMemoryStream stream(plane.bytes.Data(), plane.bytes.Size());
  if (InflateInto(stream, plane.bytes.Size(), {out->Data(), out->Size()}) == kAppOk) return true;
  out->Clear();
  return false;
}

bool CImageElement::Allocate(ByteBlock* block, uint32_t size) {
  MemoryBudget& budget = bank->App().Budget();
  if (!budget.Take(size)) return false;
  budgeted_ += size;
  return block->Allocate(size);
}

void CImageElement::Drop() {
  bank->App().Budget().Return(budgeted_);
  budgeted_ = 0;
  file.Clear();
  pixels = {};
  mask = {};
  loaded_ = false;
}

}  // namespace vl

// CElement and its kinds: one resource of a bank.
//
// Made with its header when the file is opened; the body is read when it is asked for, and its memory is taken
// from the application's budget. An element belongs to its bank and knows its place in it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "host/appfile/byte_block.h"
#include "host/appfile/compressed_buffer.h"
#include "host/appfile/stream.h"

namespace vl {

class CBank;

class CElement {
 public:
  CElement(CBank& owner, uint32_t slot) : bank(&owner), index(slot) {}
  virtual ~CElement() = default;
  CElement(const CElement&) = delete;
  CElement& operator=(const CElement&) = delete;

  // Reads the body at the stream's position. Above 0 on success; otherwise the error is in `lastBankError`.
  virtual int LoadBody(CStream& stream, uint32_t option) = 0;
  // Reads name, group and the fields of the type. False leaves the error in `lastBankError`.
  virtual bool ReadHeader(CStream& stream);
  // Frees the body whether it is locked or not; CBank::Unload minds the locks.
  virtual void Unload() = 0;
  virtual bool IsLoaded() const = 0;
  // A stream on the body, or null. It must not outlive the element, nor, when the body is loaded, its body.
  virtual std::unique_ptr<CStream> OpenStream(uint32_t option) { return nullptr; }
  // What Lock gives: the body's bytes, null when it isn't loaded.
  virtual const void* GetData() const = 0;

  // part://bank/element or part://bank/group/element
  std::string GetPath() const;
  uint32_t PathHash() const;
  // Whether `path` is that of this element, ignoring case.
  bool HasPath(std::string_view path) const;

  CBank* bank;
  uint32_t index;
  uint32_t lockCount = 0;
  std::string name;
  std::string group;
  CElement* nextByName = nullptr;  // link of the application's table
};

// Plain bytes: sources, sounds, music, 3D scenes and everything else.
class CBinaryElement : public CElement {
 public:
  using CElement::CElement;
  ~CBinaryElement() override { Drop(); }

  int LoadBody(CStream& stream, uint32_t option) override;
  void Unload() override { Drop(); }
  bool IsLoaded() const override { return static_cast<bool>(data); }
  // A loaded body is read from memory, a plain one straight from the file, a compressed one is loaded first.
  // Option 1: the stream opens the bank's file by itself, so that it is independent of the shared handle.
  std::unique_ptr<CStream> OpenStream(uint32_t option) override;
  const void* GetData() const override { return data.Data(); }
  // The size of the plain body as the file tells it; 0 when that can't be read or can't be true.
  uint32_t StoredBodySize() const;

  ByteBlock data;     // false until loaded; a 0 stands behind it
  uint32_t size = 0;  // of data

 protected:
  uint32_t ReadBody(CStream& stream, const BufferSizes& sizes);
  void Drop();
};

// A text of code page 1252, normally stored with its final NUL.
class CStringElement : public CBinaryElement {
 public:
  using CBinaryElement::CBinaryElement;

  // Null unless the body is loaded. The final NUL counts in the stream's size.
  std::unique_ptr<CStream> OpenStream(uint32_t option) override;
  // The text up to its NUL; "" unless loaded.
  std::string_view GetText() const;
};

// An animation file with a hot spot (banks of version 0x16740002 on; 0, 0 before).
class CAnimElement : public CBinaryElement {
 public:
  using CBinaryElement::CBinaryElement;

  bool ReadHeader(CStream& stream) override;

  uint16_t hotX = 0;
  uint16_t hotY = 0;
};

// A run of stored bytes of an image body: the pixels or the mask.
struct ImagePlane {
  bool present = false;
  bool packed = false;   // a zlib stream, else raw bytes
  uint32_t rawSize = 0;  // bytes once unpacked
  ByteBlock bytes;       // as stored
};

// A picture. Holds the body as it is stored; the image layer makes the surface of it.
class CImageElement : public CElement {
 public:
  // Marker that says a complete image file follows.
  static constexpr uint16_t kImageFile = 0xFFFF;
  static constexpr uint32_t kFlagMask = 1;

  using CElement::CElement;
  ~CImageElement() override { Drop(); }

  int LoadBody(CStream& stream, uint32_t option) override;
  void Unload() override { Drop(); }
  bool IsLoaded() const override { return loaded_; }
  const void* GetData() const override { return loaded_ ? this : nullptr; }

  bool IsImageFile() const { return marker == kImageFile; }
  // Stored pixels or mask, unpacked. False when the plane isn't there or its stream is damaged.
  bool Unpack(const ImagePlane& plane, ByteBlock* out) const;
  // Bytes of one stored line: whole 32-bit words.
  static uint64_t StoredPitch(uint32_t width, uint32_t depth) {
    return (uint64_t{width} * ((depth + 7) / 8) + 3) & ~3ull;
  }

  int16_t hotX = 0;
  int16_t hotY = 0;
  int32_t paletteIndex = -1;  // in the bank's palette table, -1 for none
  uint16_t marker = 0;
  uint16_t width = 0;
  uint16_t height = 0;
  uint16_t depth = 0;
  uint32_t flags = 0;
  ByteBlock file;  // the complete image file; may be longer than it, up to what follows in the bank
  ImagePlane pixels;
  ImagePlane mask;

 private:
  uint32_t ReadBody(CStream& stream);
  uint32_t ReadPlane(CStream& stream, uint64_t rawSize, ImagePlane* plane);
  bool Allocate(ByteBlock* block, uint32_t size);
  void Drop();

  bool loaded_ = false;
  uint64_t budgeted_ = 0;
};

}  // namespace vl

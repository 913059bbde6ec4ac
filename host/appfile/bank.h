// CBank and its kinds: a typed table of elements.
//
// Lives as long as its part. `positions` and `elements` have one entry a slot; an empty slot has position 0 and
// no element. Bank operations raise no errors: they return false or null and leave the reason in
// CAppFile::lastBankError.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/appfile/element.h"
#include "host/appfile/stream.h"

namespace vl {

class CAppFile;
class CAppPart;

enum BankType : uint32_t {
  kBankSource = 0,
  kBankImage = 1,
  kBankAnimation = 2,
  kBankSound = 3,
  kBankMusic = 4,
  kBankString = 5,
  kBank3D = 6,
  kBankBinary = 7,
};

inline constexpr uint32_t kBankVersion1 = 0x16740001;
// Adds the hot spot of animations and the flags of images.
inline constexpr uint32_t kBankVersion2 = 0x16740002;

using StoredPalette = std::array<uint8_t, 1024>;  // 256 times red, green, blue, flags

class CBank {
 public:
  CBank(CAppPart& owner, uint32_t bankType) : part(&owner), type(bankType) {}
  virtual ~CBank() = default;
  CBank(const CBank&) = delete;
  CBank& operator=(const CBank&) = delete;

  // Reads the bank at the stream's position. `end` is where its chunk or file ends; it only bounds the last
  // image file. On failure `*status` says why and the result is null.
  static std::unique_ptr<CBank> Read(CAppPart& part, std::shared_ptr<File> file, CStream& stream, int64_t end,
                                     uint32_t* status);

  // Makes an element's body available. True when it already was, or could be read.
  virtual bool Load(uint32_t index, uint32_t option = 0);
  // Drops the body unless the element is locked.
  virtual void Unload(uint32_t index);
  virtual std::unique_ptr<CElement> NewElement(uint32_t index) = 0;
  // The type's part of the bank header.
  virtual bool ReadHeader(CStream& stream) { return true; }

  // Keeps a loaded body from being dropped, and gives it; null when it isn't loaded.
  const void* Lock(uint32_t index);
  void Unlock(uint32_t index);
  // Frees an element; its slot becomes empty.
  void DeleteElement(uint32_t index);
  // Null for an empty slot or an index outside the table.
  CElement* GetElement(uint32_t index) const;
  // Index of the first element of that name, ignoring case, or -1.
  int32_t FindByName(std::string_view elementName) const;
  // part://bank
  std::string GetPath() const;
  uint32_t PathHash() const { return pathHash_; }
  bool HasPath(std::string_view path) const;
  // Where the bytes of an element must end, at the latest: where something else of the bank starts.
  int64_t GetBodyEnd(uint32_t index) const;
  CAppFile& App() const;
  // Called once when the part is complete: from now on names are found.
  void RegisterNames();

  CAppPart* part;
  uint32_t type;
  std::string name;
  std::shared_ptr<File> file;
  bool ownsFile = false;
  std::string path;          // of the file
  std::string externalName;  // as the file tells it; empty for a bank inside the part's file
  uint32_t version = kBankVersion1;
  std::vector<uint32_t> positions;  // of the bodies in the file
  std::vector<std::unique_ptr<CElement>> elements;
  CBank* nextByName = nullptr;

 protected:
  std::vector<uint32_t> starts_;  // sorted: where elements and tables start; image banks only
  int64_t end_ = 0;

 private:
  uint32_t ReadElements(CStream& stream, int64_t start);

  uint32_t pathHash_ = 0;
};

class CBinaryBank final : public CBank {
 public:
  using CBank::CBank;
  std::unique_ptr<CElement> NewElement(uint32_t index) override;
};

class CStringBank final : public CBank {
 public:
  using CBank::CBank;
  std::unique_ptr<CElement> NewElement(uint32_t index) override;
};

class CAnimBank final : public CBank {
 public:
  using CBank::CBank;
  std::unique_ptr<CElement> NewElement(uint32_t index) override;
};

// A bank of pictures, with a table of palettes that they share.
class CImageBank final : public CBank {
 public:
  using CBank::CBank;
  std::unique_ptr<CElement> NewElement(uint32_t index) override;
  bool ReadHeader(CStream& stream) override;

  bool HasPaletteTable() const { return tablePosition != 0; }
  // A record of the table. A bad index gives `lastBankError` kAppBankHeader.
  bool ReadPalette(uint32_t index, StoredPalette* record);

  int64_t tablePosition = 0;  // of the first record in the file; 0 when there is no table
  uint32_t tableCount = 0;    // records that the file really holds
};

}  // namespace vl

// ApplicationModel: an application as plain values, for tools that make, take apart or compare one.
//
// Two applications are equal when their models are: chunk order, padding and bytes that nothing refers to don't
// count. Names and texts are bytes of code page 1252 and may hold anything; byte runs are std::string.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/appfile/bank.h"
#include "host/appfile/part_header.h"

namespace vl {

// The body of a binary, string or animation element.
struct BodyModel {
  enum class Form {
    Plain,
    Compressed,
    Damaged,  // a stream that doesn't inflate; `bytes` are as stored
  };
  Form form = Form::Plain;
  std::string bytes;
  uint32_t claimedSize = 0;  // Damaged only: the plain size that the file tells

  bool operator==(const BodyModel&) const = default;
};

// Stored pixels or mask, as they lie in the file.
struct PlaneModel {
  bool packed = false;
  std::string bytes;

  bool operator==(const PlaneModel&) const = default;
};

struct ImageModel {
  int32_t paletteIndex = -1;
  uint16_t marker = CImageElement::kImageFile;
  uint16_t width = 0;
  uint16_t height = 0;
  uint16_t depth = 0;
  uint32_t flags = 0;  // stored with kBankVersion2 only
  std::string file;    // with the marker kImageFile
  PlaneModel pixels;   // with any other
  PlaneModel mask;     // the same, and flag kFlagMask

  bool operator==(const ImageModel&) const = default;
};

struct ElementModel {
  bool empty = false;  // an empty slot; the rest is without meaning
  std::string name;
  std::string group;
  uint16_t hotX = 0;  // animations from kBankVersion2 on, and images (there signed)
  uint16_t hotY = 0;
  BodyModel body;    // all but images
  ImageModel image;  // images

  bool operator==(const ElementModel&) const = default;
};

struct BankModel {
  uint32_t type = kBankBinary;
  std::string name;
  uint32_t version = kBankVersion1;
  std::string externalFile;                            // empty: inside the part's file
  std::optional<std::vector<StoredPalette>> palettes;  // image banks
  std::vector<ElementModel> elements;

  bool operator==(const BankModel&) const = default;
};

struct UnknownChunk {
  uint32_t id = 0;
  std::string bytes;

  bool operator==(const UnknownChunk&) const = default;
};

struct PartModel {
  uint32_t kind = 0;                   // CAppPart::kNormal or kDesign
  std::string externalFile;            // empty: inside the application file
  std::optional<uint16_t> versionLow;  // replaces the low half of the file's version
  PartHeader header;
  std::vector<BankModel> banks;
  std::vector<UnknownChunk> unknownChunks;

  bool operator==(const PartModel&) const = default;
};

struct ApplicationModel {
  std::optional<uint32_t> version;  // absent counts as 0
  std::optional<AppSettings> settings;
  std::optional<std::string> signature;
  std::vector<PartModel> parts;
  std::vector<UnknownChunk> unknownChunks;

  bool operator==(const ApplicationModel&) const = default;

  uint32_t PartVersion(const PartModel& part) const {
    const uint32_t file = version.value_or(0);
    return part.versionLow ? (file & 0xFFFF0000u) | *part.versionLow : file;
  }
};

// All class names that a program can use, for a model with a class table.
std::vector<std::string> AllClassNames();

}  // namespace vl

// Models that use everything a file of their version can hold.
#pragma once

#include <string>

#include "host/appfile/app_part.h"
#include "host/appfile/model.h"

namespace vl::test {

inline constexpr uint32_t kVersions[] = {0,          0x4454FFFF, 0x44550000, 0x44550001, 0x44550002,
                                         0x44550003, 0x44550004, 0x44550005, 0x44550006};

// Everything that a file of that version can hold. `external`: banks and parts in files of their own.
inline ApplicationModel FullModel(uint32_t version, bool compressed, bool external) {
  const bool bankVersions = version >= kVersionBankVersion;
  const std::string strange("a\0\xE9/:\n", 6);
  ApplicationModel model;
  model.version = version;
  model.signature = std::string("\0sig", 4);
  model.unknownChunks = {{0x4242, "file level"}, {0x4242, ""}, {0xFFFFFFFF, strange}};
  AppSettings settings;
  settings.firstWord = 77;
  if (version > kVersionReleaseFlags2) settings.applicationKind = version >= kVersionPlainKind ? 4 : 2;
  if (version >= kVersionClassTable) {
    settings.hasClassTable = true;
    settings.classNames = {"Math", "Bank", "", "Window"};
    settings.tableCompressed = compressed;
  }
  model.settings = settings;

  PartModel part;
  part.externalFile = external ? "sub/part.vla" : "";
  PartHeader& h = part.header;
  h.hasHeader = true;
  h.name = strange;
  h.flags = 1;
  for (size_t i = 0; i < h.palette.size(); ++i) h.palette[i] = static_cast<uint8_t>(i * 7);
  h.initSource = "init()\r\n";
  h.reserved = 5;
  h.gameInputReserved = 6;
  h.gameInputUsed = 7;
  h.gameInputPlayer = 8;
  h.gameInputData = std::string("g\0i", 3);
  h.speedPercent = 50;
  h.backColor = 0x102030;
  h.releaseFlag = 0;
  h.sound3D = 0;
  h.releaseFlags = 0xAAAA;
  h.releaseFlags2 = version >= kVersionReleaseFlags2 ? 0xBBBB : 1;
  h.buffersCompressed = compressed && version >= kVersionOwnChunks;
  part.unknownChunks = {{0x1001, "in a part"}, {9, ""}};

  for (uint32_t type = 0; type <= 8; ++type) {
    for (const uint32_t bankVersion : {kBankVersion1, kBankVersion2}) {
      if (bankVersion == kBankVersion2 && !bankVersions) continue;
      BankModel bank;
      bank.type = type;
      bank.name = "bank" + std::to_string(type) + (bankVersion == kBankVersion2 ? strange : "");
      bank.version = bankVersion;
      if (external) bank.externalFile = "b" + std::to_string(type) + std::to_string(bankVersion & 3) + ".vlb";
      ElementModel e;
      e.name = "one";
      e.group = strange;
      if (type == kBankImage) {
        bank.palettes.emplace(2);
        (*bank.palettes)[1].fill(3);
        e.hotX = 0xFFFF;
        e.hotY = 2;
        e.image.paletteIndex = 1;
        e.image.file = "GIF89a not really";
        bank.elements.push_back(e);
        e.name = "pixels";
        e.image.marker = 0;
        e.image.width = 3;
        e.image.height = 2;
        e.image.depth = 8;
        e.image.file.clear();
        e.image.pixels = {compressed, compressed ? "not checked until it is drawn" : "12345678"};
        if (bankVersion == kBankVersion2) {
          e.image.flags = 0x81;
          e.image.mask = {!compressed, compressed ? "123456" : "zip"};
        }
        bank.elements.push_back(e);
      } else {
        if (type == kBankAnimation && bankVersion == kBankVersion2) e.hotX = 9, e.hotY = 0xFFF0;
        e.body.bytes = std::string(3000, 'b') + std::string("\0\1\2", 3);
        e.body.form = compressed ? BodyModel::Form::Compressed : BodyModel::Form::Plain;
        bank.elements.push_back(e);
        e.body = {};
        bank.elements.push_back(e);  // the same name again, without a body
        e.body = {BodyModel::Form::Damaged, "no zlib stream", 99};
        bank.elements.push_back(e);
      }
      ElementModel empty;
      empty.empty = true;
      bank.elements.insert(bank.elements.begin() + 1, empty);
      bank.elements.push_back(empty);
      part.banks.push_back(bank);
    }
  }
  BankModel none;
  none.name = "no slots";
  part.banks.push_back(none);
  model.parts.push_back(part);

  PartModel design;
  design.kind = CAppPart::kDesign;
  design.header.name = "cut off";  // a header without palette
  design.header.flags = 2;
  model.parts.push_back(design);
  model.parts.emplace_back();  // nothing at all
  if (version >= kVersionReleaseFlags2) {
    PartModel old;  // a part that says it is older
    old.versionLow = 1;
    old.header = h;
    old.header.buffersCompressed = false;
    if ((version | 1) < kVersionReleaseFlags2) old.header.releaseFlags2 = 1;
    BankModel bank;
    bank.name = "old";
    old.banks.push_back(bank);
    model.parts.push_back(old);
  }
  return model;
}

}  // namespace vl::test

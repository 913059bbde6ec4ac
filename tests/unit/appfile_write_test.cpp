#include <gtest/gtest.h>

#include "host/appfile/class_names.h"
#include "host/appfile/model_reader.h"
#include "host/appfile/writer.h"
#include "tests/unit/appfile_bytes.h"
#include "tests/unit/appfile_models.h"

namespace vl {
namespace {

using namespace vl::test;

ModelResult ReadBack(const WrittenApplication& written, const std::string& mainName = "app.vlp") {
  MemoryFileSystem files;
  for (const auto& [name, bytes] : written.files) files.Add("d/" + name, bytes);
  return ReadModel("d/" + mainName, files);
}

TEST(AppFileWrite, EveryVersionComesBackEqual) {
  for (const uint32_t version : kVersions) {
    for (const bool compressed : {false, true}) {
      for (const bool external : {false, true}) {
        SCOPED_TRACE(testing::Message() << std::hex << version << ' ' << compressed << ' ' << external);
        const ApplicationModel model = FullModel(version, compressed, external);
        const WrittenApplication written = WriteApplication(model, "app.vlp");
        ASSERT_EQ(written.error, "");
        EXPECT_EQ(written.files.size() > 1, external);
        const ModelResult back = ReadBack(written);
        ASSERT_EQ(back.status, kAppOk);
        EXPECT_EQ(back.problems, std::vector<std::string>());
        ASSERT_EQ(back.model.parts.size(), model.parts.size());
        for (size_t p = 0; p < model.parts.size(); ++p) {
          EXPECT_EQ(back.model.parts[p].header, model.parts[p].header) << p;
          ASSERT_EQ(back.model.parts[p].banks.size(), model.parts[p].banks.size());
          for (size_t b = 0; b < model.parts[p].banks.size(); ++b) {
            EXPECT_EQ(back.model.parts[p].banks[b], model.parts[p].banks[b]) << p << ' ' << b;
          }
        }
        EXPECT_EQ(back.model.settings, model.settings);
        EXPECT_EQ(back.model, model);
        EXPECT_EQ(WriteApplication(back.model, "app.vlp").files, written.files) << "byte for byte";
      }
    }
  }
}

// The bytes themselves, against ones that are spelled out.
TEST(AppFileWrite, BytesOfASmallApplication) {
  ApplicationModel model;
  model.version = 0x44550006;
  PartModel part;
  part.header.hasHeader = true;
  part.header.name = "P";
  part.header.palette.fill(7);
  BankModel bank;
  bank.type = 0;
  bank.name = "source";
  bank.version = kBankVersion2;
  ElementModel element;
  element.name = "main";
  element.body.bytes = "x=1";
  bank.elements.push_back(element);
  part.banks.push_back(bank);
  model.parts.push_back(part);
  EXPECT_EQ(WriteApplication(model, "m").files.at("m"),
            Newest(Part(Chunk(0x1000, Header("P")) + InlineBank(Bank(0, "source", {{"main", Plain("x=1")}})))));
}

TEST(AppFileWrite, WhatAVersionCantHoldIsAnError) {
  const auto error = [](uint32_t version, const std::function<void(ApplicationModel&)>& change) {
    ApplicationModel model;
    model.version = version;
    model.settings.emplace();
    if (version >= kVersionClassTable) model.settings->hasClassTable = true;
    PartModel part;
    part.header.hasHeader = true;
    part.banks.emplace_back();
    part.banks[0].elements.emplace_back();
    model.parts.push_back(part);
    EXPECT_EQ(WriteApplication(model, "m").error, "");
    change(model);
    const WrittenApplication written = WriteApplication(model, "m");
    EXPECT_EQ(written.files.empty(), !written.error.empty());
    return written.error;
  };
  using M = ApplicationModel;
  const std::string big(70000, 'n');
  EXPECT_NE(error(0x44550000, [](M& m) { m.settings->applicationKind = 2; }), "");
  EXPECT_EQ(error(0x44550001, [](M& m) { m.settings->applicationKind = 2; }), "");
  EXPECT_NE(error(0x44550004, [](M& m) { m.settings->applicationKind = 3; }), "");
  EXPECT_NE(error(0x44550004, [](M& m) { m.settings->applicationKind = 0; }), "");
  EXPECT_EQ(error(0x44550005, [](M& m) { m.settings->applicationKind = 3; }), "");
  EXPECT_NE(error(0x44550005, [](M& m) { m.settings->hasClassTable = true; }), "");
  EXPECT_NE(error(0x44550006, [](M& m) { m.settings->hasClassTable = false; }), "");
  EXPECT_NE(error(0x44550001, [](M& m) { m.parts[0].banks[0].version = kBankVersion2; }), "");
  EXPECT_NE(error(0x4454FFFF, [](M& m) { m.parts[0].header.releaseFlags2 = 2; }), "");
  EXPECT_NE(error(0x44550003,
                  [](M& m) {
                    m.parts[0].header.hasHeader = false;
                    m.parts[0].header.gameInputUsed = 1;
                  }),
            "");
  EXPECT_NE(error(0x44550006, [&](M& m) { m.parts[0].header.name = big; }), "");
  EXPECT_NE(error(0x44550006, [&](M& m) { m.parts[0].banks[0].elements[0].group = big; }), "");
  EXPECT_NE(error(0x44550006, [](M& m) { m.parts[0].externalFile = "../x"; }), "");
  EXPECT_NE(error(0x44550006, [](M& m) { m.parts[0].externalFile = "m"; }), "");
  EXPECT_NE(error(0x44550006,
                  [](M& m) {
                    m.parts[0].banks[0].externalFile = "b";
                    m.parts.push_back(m.parts[0]);
                    m.parts[1].banks[0].name = "another";
                  }),
            "");
  EXPECT_EQ(error(0x44550006,
                  [](M& m) {
                    m.parts[0].banks[0].externalFile = "b";  // one bank that two parts share
                    m.parts.push_back(m.parts[0]);
                  }),
            "");
  EXPECT_NE(error(0x44550006,
                  [](M& m) {
                    BankModel& bank = m.parts[0].banks[0];
                    bank.type = kBankImage;
                    bank.elements[0].image.marker = 0;
                    bank.elements[0].image.width = 4;
                    bank.elements[0].image.height = 4;
                    bank.elements[0].image.depth = 8;
                    bank.elements[0].image.pixels.bytes = "too few";
                  }),
            "");
}

TEST(AppFileWrite, LongInitSourceOfAnOldFileGetsItsChunk) {
  ApplicationModel model;
  model.version = 0x44550003;
  model.parts.emplace_back();
  model.parts[0].header.hasHeader = true;
  model.parts[0].header.initSource = std::string(70000, ' ');
  const ModelResult back = ReadBack(WriteApplication(model, "app.vlp"));
  EXPECT_EQ(back.model, model);
}

TEST(AppFileWrite, FilesThatCantBeKeptWholeSayWhy) {
  const std::string header = Chunk(0x1000, Header("P"));
  struct Case {
    const char* what;
    std::string bytes;
    size_t problems;
  } cases[] = {
      {"all well", Newest(Part(header)), 0},
      {"external part that isn't there", Newest(Chunk(0x1200, Short("x.vla")) + Part(header)), 1},
      {"bank that doesn't read", Newest(Part(header + InlineBank("\1"))), 1},
      {"body larger than the file", Newest(Part(header + InlineBank(Bank(7, "b", {{"e", U32(9999) + U32(0)}})))), 1},
      {"version behind the header", Newest(Part(header + Chunk(0x1400, U16(1)))), 1},
      {"part in front of the version", Part(header) + Version(0x44550006) + End(), 1},
  };
  for (const Case& c : cases) {
    MemoryFileSystem files;
    files.Add("a", c.bytes);
    const ModelResult result = ReadModel("a", files);
    EXPECT_EQ(result.status, kAppOk) << c.what;
    EXPECT_EQ(result.problems.size(), c.problems) << c.what;
    const WrittenApplication written = WriteApplication(result.model, "app.vlp");
    EXPECT_EQ(written.error, "") << c.what;
    EXPECT_EQ(ReadBack(written).model, result.model) << c.what << ": what was kept is stable";
  }
}

TEST(AppFileWrite, ModelIsBounded) {
  std::vector<Slot> slots(1);
  slots[0] = {"e", Packed(std::string(100000, 'z'))};
  const std::string bytes = Newest(Part(Chunk(0x1000, Header("P")) + InlineBank(Bank(7, "b", slots))));
  MemoryFileSystem files;
  files.Add("a", bytes);
  EXPECT_EQ(ReadModel("a", files, 90000).status, kAppOutOfMemory);
  EXPECT_EQ(ReadModel("a", files, 110000).status, kAppOk);
}

}  // namespace
}  // namespace vl

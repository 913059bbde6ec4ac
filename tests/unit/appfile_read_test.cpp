#include <gtest/gtest.h>

#include "host/appfile/app_file.h"
#include "tests/unit/appfile_bytes.h"

namespace vl {
namespace {

using namespace vl::test;

TEST(AppFileRead, ChunkRun) {
  const std::string part = Part(Chunk(0x1000, Header("P")));
  const std::string settings5 = Chunk(0x1300, U32(9) + U32(4) + U32(0));
  struct Case {
    const char* what;
    std::string bytes;
    uint32_t status;
    size_t parts;
    uint32_t version;
    uint32_t kind;
  } cases[] = {
      {"empty file", "", kAppNotRecognised, 0, 0, 1},
      {"only the end", End(), kAppNotRecognised, 0, 0, 1},
      {"only unknown chunks", Chunk(0x9999, "abc") + Chunk(1, "") + End(), kAppNotRecognised, 0, 0, 1},
      {"known chunk of size 0", Chunk(0x1200, "") + End(), kAppNotRecognised, 0, 0, 1},
      {"version only", Version(7) + End(), kAppOk, 0, 7, 1},
      {"no end chunk", Version(7), kAppEndOfFile, 0, 7, 1},
      {"one part", Newest(part), kAppOk, 1, 0x44550006, 1},
      {"unknown ids skipped", Newest(Chunk(0xFFFFFFFF, "12345678") + part + Chunk(0x1111, "")), kAppOk, 1, 0x44550006,
       1},
      {"second version ignored", Newest(Version(3) + part), kAppOk, 1, 0x44550006, 1},
      {"first settings count", Version(0x44550005) + settings5 + Chunk(0x1300, U32(9) + U32(2) + U32(0)) + End(),
       kAppOk, 0, 0x44550005, 4},
      {"settings in front of the version", settings5 + Version(0x44550005) + End(), kAppOk, 0, 0x44550005, 1},
      {"kind by 0 or 1", Version(0x44550004) + Chunk(0x1300, U32(0) + U32(1) + U32(0)) + End(), kAppOk, 0, 0x44550004,
       2},
      {"kind 0", Version(0x44550002) + Chunk(0x1300, U32(0) + U32(0)) + End(), kAppOk, 0, 0x44550002, 1},
      {"bad kind", Version(0x44550002) + Chunk(0x1300, U32(0) + U32(2)) + End(), kAppOk, 0, 0x44550002, 1},
      {"no kind at the first version", Version(0x44550000) + Chunk(0x1300, U32(0) + U32(1)) + End(), kAppOk, 0,
       0x44550000, 1},
      {"bad reserved word", Version(0x44550005) + Chunk(0x1300, U32(0) + U32(3) + U32(1)) + End(), kAppOk, 0,
       0x44550005, 3},
      {"design part in a normal run", Newest(part + Part(Chunk(0x1000, Header("D")), 0x1800)), kAppOk, 1, 0x44550006,
       1},
      {"size beyond the end", Version(7) + U32(0x4242) + U32(0xFFFFFFFF), kAppEndOfFile, 0, 7, 1},
      {"damaged part is dropped", Newest(Chunk(0x1200, U16(9) + "missing.x") + part), kAppOk, 1, 0x44550006, 1},
  };
  for (const Case& c : cases) {
    OpenApp open(c.bytes);
    EXPECT_EQ(open.status, c.status) << c.what;
    EXPECT_EQ(open.app.parts.size(), c.parts) << c.what;
    EXPECT_EQ(open.app.version, c.version) << c.what;
    EXPECT_EQ(open.app.applicationKind, c.kind) << c.what;
    EXPECT_EQ(open.app.currentPart, c.parts ? open.app.parts[0].get() : nullptr) << c.what;
  }
}

TEST(AppFileRead, CannotOpen) {
  MemoryFileSystem files;
  CAppFile app;
  EXPECT_EQ(app.Open("", "nothing.vlp", files, false), kAppCantOpen);
  EXPECT_EQ(app.Open("", "", files, false), kAppNoApplication);
}

TEST(AppFileRead, AppendedToAnotherFile) {
  MemoryFileSystem files;
  const std::string front = "#!/bin/sh not chunks at all";
  const std::string source = Bank(0, "source", {{"main", Plain("x=1")}});
  files.Add("all", front + Newest(Part(Chunk(0x1000, Header("P")) + InlineBank(source))));
  CAppFile app;
  EXPECT_EQ(app.Open("", "all", files, false, static_cast<int64_t>(front.size())), kAppOk);
  ASSERT_EQ(app.CollectSources(false).size(), 1u);
  EXPECT_EQ(app.CollectSources(false)[0].text, "x=1");
}

TEST(AppFileRead, ClassTable) {
  const auto open = [](std::string_view table) {
    return std::make_unique<OpenApp>(Newest(Chunk(0x1300, U32(0) + U32(1) + U32(0) + std::string(table))));
  };
  const std::string names("Math\0Bank\0Wind", 14);
  EXPECT_EQ(open(Plain(U32(3) + names))->app.classNames, (std::vector<std::string>{"Math", "Bank", "Wind"}));
  EXPECT_EQ(open(Packed(U32(2) + names))->app.classNames, (std::vector<std::string>{"Math", "Bank"}));
  EXPECT_EQ(open(Plain(U32(0xFFFFFFFF) + names))->app.classNames.size(), 3u);
  EXPECT_EQ(open(Plain(U32(0)))->app.classNames.size(), 0u);
  // Absent or damaged: all of them, in the order of their ids.
  for (const char* bad : {"", "\1", "\3\0\0\0\0\0\0\0abc"}) {
    const auto app = open(std::string_view(bad, *bad == 3 ? 11 : strlen(bad)));
    ASSERT_EQ(app->app.classNames.size(), 74u);
    EXPECT_EQ(app->app.classNames[0], "Sprite");
    EXPECT_EQ(app->app.classNames[57], "Window");
    EXPECT_EQ(app->app.classNames[73], "Point3D");
    EXPECT_FALSE(app->app.hasClassTable);
  }
}

// Every version's header layout, spelled out; each field has a value of its own.
TEST(AppFileRead, PartHeaderOfEveryVersion) {
  const uint32_t versions[] = {0,          0x4454FFFF, 0x44550000, 0x44550001, 0x44550002,
                               0x44550003, 0x44550004, 0x44550005, 0x44550006};
  for (const uint32_t version : versions) {
    const bool old = version < 0x44550004;
    std::string palette(1024, '\0');
    for (size_t i = 0; i < palette.size(); ++i) palette[i] = static_cast<char>(i * 3);
    std::string header = Short("Main") + U32(3) + palette;
    if (old) header += Short("init()");
    header += U32(0x11);
    if (old) header += U16(0x22) + U16(0x33) + U32(0x44) + U32(3) + "GIN";
    header += U16(55);
    if (old) header += U16(0xDEAD);
    header += U32(0x123456) + U16(0) + U16(7) + U16(8);
    if (version >= 0x44550000) header += U16(9);
    std::string chunks = Chunk(0x1000, header);
    if (!old) {
      chunks += Chunk(0x1500, Packed("init()"));
      chunks += Chunk(0x1600, U16(0x22) + U16(0x33) + U32(0x44) + Plain("GIN"));
    }
    OpenApp open(Version(version) + Part(chunks) + End());
    ASSERT_EQ(open.status, kAppOk);
    ASSERT_EQ(open.app.parts.size(), 1u);
    const CAppPart& p = *open.app.parts[0];
    EXPECT_EQ(p.name, "Main");
    EXPECT_EQ(p.flags, 3u);
    EXPECT_TRUE(p.paletteInUse && open.app.paletteInUse);
    EXPECT_EQ(std::string(p.palette.begin(), p.palette.end()), palette);
    EXPECT_EQ(open.app.palette, p.palette);
    EXPECT_EQ(p.initSource, "init()");
    EXPECT_EQ(p.reserved, 0x11u);
    EXPECT_EQ(p.gameInputReserved, 0x22);
    EXPECT_EQ(p.gameInputUsed, 0x33);
    EXPECT_EQ(p.gameInputPlayer, 0x44u);
    EXPECT_EQ(p.gameInputData, "GIN");
    EXPECT_EQ(p.speedPercent, 55);
    EXPECT_EQ(p.backColor, 0x123456u);
    EXPECT_EQ(p.releaseFlag, 0);
    EXPECT_EQ(p.sound3D, 7);
    EXPECT_EQ(p.releaseFlags, 8);
    EXPECT_EQ(p.releaseFlags2, version >= 0x44550000 ? 9 : 1) << std::hex << version;
    EXPECT_EQ(p.version, version);
  }
}

TEST(AppFileRead, ShortOrAbsentHeaderKeepsDefaults) {
  const std::string full = Header("Name", 1);
  for (size_t cut = 0; cut <= full.size(); ++cut) {
    const std::string chunk = cut ? Chunk(0x1000, full.substr(0, cut)) : std::string();
    OpenApp open(Newest(Part(chunk)));
    ASSERT_EQ(open.status, kAppOk);
    ASSERT_EQ(open.app.parts.size(), 1u) << "a failed chunk ends only itself";
    const CAppPart& p = *open.app.parts[0];
    ASSERT_EQ(p.hasHeader, cut >= 6 + 4 + 1024);
    ASSERT_EQ(p.speedPercent, 100);
    ASSERT_EQ(p.backColor, 0xFFFFFFu);
    ASSERT_TRUE(p.releaseFlag == 1 && p.sound3D == 1 && p.releaseFlags == 1 && p.releaseFlags2 == 1);
  }
}

TEST(AppFileRead, PartReplacesTheLowHalfOfItsVersion) {
  // With version word 1 the bank has no version and the header carries the init source.
  const std::string bank = U32(0) + Short("b") + U32(1) + U32(15) + Short("e") + Short("") + Plain("text");
  const std::string header = Short("P") + U32(0) + std::string(1024, 'p') + Short("init") + U32(0) + U16(0) + U16(0) +
                             U32(0) + U32(0) + U16(60);
  OpenApp open(
      Newest(Part(Chunk(0x1400, U16(1)) + Chunk(0x1000, header) + InlineBank(bank) + Chunk(0x1600, "ignored"))));
  ASSERT_EQ(open.status, kAppOk);
  EXPECT_EQ(open.app.parts[0]->version, 0x44550001u);
  EXPECT_EQ(open.app.parts[0]->speedPercent, 60);
  const auto sources = open.app.CollectSources(true);
  ASSERT_EQ(sources.size(), 2u);
  EXPECT_EQ(sources[0].text, "init");
  EXPECT_EQ(sources[1].text, "text");
}

TEST(AppFileRead, DesignPartsAndSignature) {
  const std::string bytes =
      Newest(Chunk(0x1001, "release") + Part(Chunk(0x1000, Header("D")), 0x1800) + Part(Chunk(0x1000, Header("P"))));
  OpenApp design(bytes, true);
  ASSERT_EQ(design.app.parts.size(), 2u);
  EXPECT_EQ(design.app.parts[0]->kind, CAppPart::kDesign);
  EXPECT_EQ(design.app.parts[1]->kind, CAppPart::kNormal);
  EXPECT_EQ(design.app.signaturePosition, 12);
}

TEST(AppFileRead, BanksThatDontReadAreLeftOut) {
  const std::string good = InlineBank(Bank(5, "good", {{"a", Plain("hello")}}));
  struct Case {
    const char* what;
    std::string bank;
    uint32_t error;
  } cases[] = {
      {"offset outside", U32(7) + Short("x") + U32(0x16740002) + U32(1) + U32(0x7FFFFFFF), kAppElementHeader},
      {"offset that overflows", U32(7) + Short("x") + U32(0x16740002) + U32(1) + U32(0xFFFFFFFF), kAppElementHeader},
      {"more slots than bytes", U32(7) + Short("x") + U32(0x16740002) + U32(0x40000000), kAppEndOfFile},
      {"palette table outside", U32(1) + Short("x") + U32(0x16740002) + U32(0x7FFFFFFF) + U32(0), kAppBankHeader},
  };
  for (const Case& c : cases) {
    OpenApp open(Newest(Part(Chunk(0x1000, Header("P")) + InlineBank(c.bank) + good)));
    EXPECT_EQ(open.status, kAppOk) << c.what;
    EXPECT_EQ(open.app.lastBankError, c.error) << c.what;
    ASSERT_EQ(open.app.parts.size(), 1u) << c.what;
    ASSERT_EQ(open.app.parts[0]->banks.size(), 1u) << c.what;
    EXPECT_NE(open.app.GetElementByPath("P://good/a"), nullptr) << c.what;
  }
  // A failed bank leaves no name behind.
  const std::string half = U32(5) + Short("half") + U32(0x16740002) + U32(2) + U32(22) + U32(0x7FFFFFFF) + Short("e") +
                           Short("") + Plain("");
  OpenApp open(Newest(Part(Chunk(0x1000, Header("P")) + InlineBank(half))));
  EXPECT_EQ(open.app.GetElementByPath("P://half/e"), nullptr);
  EXPECT_EQ(open.app.GetBankByPath("P://half"), nullptr);
}

TEST(AppFileRead, ExternalPartsAndBanks) {
  const std::string external =
      Chunk(0x1000, Header("Ext")) + Chunk(0x1100, Short("..\\dir\\deep.vlb").substr(0, 2) + "..\\dir\\deep.vlb") +
      Chunk(0x1100, Short("Sub\\Bank.VLB")) + InlineBank(Bank(5, "here", {{"t", Plain("inside")}})) + End();
  MemoryFileSystem files;
  files.Add("dir/app.vlp", Newest(Chunk(0x1200, Short("part.vla")) + Chunk(0x1200, Short("/dir/part.vla")) +
                                  Chunk(0x1200, Short("C:\\part.vla")) + Chunk(0x1200, Short("../dir/part.vla"))));
  files.Add("dir/part.vla", external);
  files.Add("dir/sub/bank.vlb", Bank(5, "out", {{"t", Plain("outside")}}));
  files.Add("dir/dir/deep.vlb", Bank(5, "wrong", {}));
  CAppFile app;
  ASSERT_EQ(app.Open("", "dir/app.vlp", files, false), kAppOk);
  ASSERT_EQ(app.parts.size(), 1u) << "only the name that stays in the directory";
  const CAppPart& part = *app.parts[0];
  EXPECT_TRUE(part.ownsFile);
  EXPECT_EQ(part.path, "dir/part.vla");
  EXPECT_EQ(part.externalName, "part.vla");
  ASSERT_EQ(part.banks.size(), 2u);
  EXPECT_EQ(part.banks[0]->path, "dir/sub/bank.vlb") << "backslashes, and lower case when the name isn't found";
  EXPECT_EQ(part.banks[0]->externalName, "Sub\\Bank.VLB");
  for (const char* name : {"Ext://out/t", "Ext://here/t"}) {
    CElement* element = app.GetElementByPath(name);
    ASSERT_NE(element, nullptr) << name;
    ASSERT_TRUE(element->bank->Load(0));
    EXPECT_EQ(static_cast<CStringElement*>(element)->GetText(), name[6] == 'o' ? "outside" : "inside");
  }
}

TEST(AppFileRead, DeletesADownloadedFileWhenClosed) {
  for (const bool remove : {false, true}) {
    MemoryFileSystem files;
    files.Add("tmp", Newest(""));
    {
      CAppFile app;
      app.deleteOnClose = remove;
      ASSERT_EQ(app.Open("", "tmp", files, false), kAppOk);
    }
    EXPECT_EQ(files.exists("tmp"), !remove);
  }
}

struct SourceSummary {
  std::string path, text;
  uint32_t part, flags;
  bool operator==(const SourceSummary&) const = default;
};

std::vector<SourceSummary> Summarise(const std::vector<SourceEntry>& entries) {
  std::vector<SourceSummary> result;
  for (const SourceEntry& e : entries) result.push_back({e.path, e.text, e.part, e.flags});
  return result;
}

TEST(AppFileRead, SourcesInOrder) {
  const std::string one = Part(Chunk(0x1000, Header("One")) + Chunk(0x1500, Plain("start")) +
                               InlineBank(Bank(5, "texts", {{"t", Plain("no source")}})));
  const std::string two = Part(Chunk(0x1000, Header("Two")) +
                               InlineBank(Bank(0, "src",
                                               {{"none", {}, {}, true},
                                                {"empty", Plain("")},
                                                {"bad", U32(5) + U32(3) + "abc"},
                                                {"main", Packed("main text")},
                                                {"more", Plain("more text"), "grp"}})) +
                               InlineBank(Bank(0, "second", {{"unused", Plain("not the part's bank")}})));
  const std::string three = Part(Chunk(0x1000, Header("Three")) + InlineBank(Bank(0, "src", {{"lib", Plain("lib")}})));
  OpenApp open(Newest(one + two + three));
  const std::vector<SourceSummary> banks = {{"Two://src/main", "main text", 2, 10},
                                            {"Two://src/grp/more", "more text", 2, 2},
                                            {"Three://src/lib", "lib", 3, 2}};
  EXPECT_EQ(Summarise(open.app.CollectSources(false)), banks);
  auto all = banks;
  all.insert(all.begin(), {"InitSource", "start", 1, 6});
  EXPECT_EQ(Summarise(open.app.CollectSources(true)), all);
  EXPECT_EQ(open.app.Budget().Used(), 0u) << "bodies are dropped again";

  // The compiler refuses one: the rest of its bank is skipped.
  std::vector<std::string> seen;
  open.app.ForEachSource(false, [&](SourceEntry&& e) {
    seen.push_back(e.path);
    return e.path != "Two://src/main";
  });
  EXPECT_EQ(seen, (std::vector<std::string>{"Two://src/main", "Three://src/lib"}));
  // The init source is that of the current part.
  open.app.SetCurrentPart(open.app.parts[1].get());
  EXPECT_EQ(Summarise(open.app.CollectSources(true)), banks);
}

TEST(AppFileRead, MoreSourcesThanTheCompilerTakes) {
  std::vector<Slot> slots;
  for (int i = 0; i < 300; ++i) slots.push_back({"s" + std::to_string(i), Plain("x")});
  OpenApp open(Newest(Part(Chunk(0x1000, Header("P")) + InlineBank(Bank(0, "src", slots)))));
  const auto sources = open.app.CollectSources(false);
  ASSERT_EQ(sources.size(), 256u);
  EXPECT_EQ(sources.back().path, "P://src/s255");
}

}  // namespace
}  // namespace vl

#include "tools/project/project.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "host/appfile/model_reader.h"
#include "host/appfile/writer.h"
#include "tests/unit/appfile_bytes.h"
#include "tests/unit/appfile_models.h"
#include "tools/project/code_page.h"
#include "tools/project/disk_files.h"
#include "tools/project/file_kind.h"

namespace vl {
namespace {

namespace fs = std::filesystem;
using namespace vl::test;

// A folder of its own for each test, removed behind it.
class ProjectTest : public testing::Test {
 protected:
  void SetUp() override {
    const auto* info = testing::UnitTest::GetInstance()->current_test_info();
    root_ = fs::temp_directory_path() / ("vl-project-" + std::to_string(getpid()) + "-" + info->name());
    fs::remove_all(root_);
  }
  void TearDown() override { fs::remove_all(root_); }

  void Put(const std::string& name, std::string_view bytes) { ASSERT_TRUE(WriteDiskFile(root_ / name, bytes)); }
  void PutManifest(std::string_view text) { Put("p/vorlane.toml", text); }
  fs::path Project() const { return root_ / "p"; }

  fs::path root_;
};

std::string BodyOf(const ApplicationModel& model, size_t part, size_t bank, size_t element) {
  return model.parts.at(part).banks.at(bank).elements.at(element).body.bytes;
}

TEST_F(ProjectTest, SmallestProjectRuns) {
  PutManifest("name = \"Hello World\"\n");
  Put("p/main.vlq", "Window w = New Window\n");
  Put("p/a.vlq", "Function F\n");
  const PackedProject packed = PackProject(Project());
  ASSERT_EQ(packed.error, "");
  EXPECT_EQ(packed.mainName, "hello-world.vlp");
  ASSERT_EQ(packed.files.size(), 1u);
  EXPECT_EQ(packed.inputs,
            (std::vector<fs::path>{Project() / "vorlane.toml", Project() / "main.vlq", Project() / "a.vlq"}));
  OpenApp open(packed.files.at("hello-world.vlp"));
  ASSERT_EQ(open.status, kAppOk);
  EXPECT_EQ(open.app.version, 0x44550006u);
  EXPECT_EQ(open.app.classNames.size(), 75u) << "with Bank";
  const auto sources = open.app.CollectSources(true);
  ASSERT_EQ(sources.size(), 2u);
  EXPECT_EQ(sources[0].path, "Hello World://source/main");
  EXPECT_EQ(sources[0].text, "Window w = New Window\n");
  EXPECT_EQ(sources[0].flags, 10u);
  EXPECT_EQ(sources[1].path, "Hello World://source/a");
}

TEST_F(ProjectTest, EverythingInTheManifest) {
  PutManifest(R"(
name = "Größe"
output = "out.vlp"
version = 5
applicationKind = 4
compress = false

[[part]]
name = "First"
flags = 1
initSource = "Debug = 1"
speedPercent = 80
backColor = 0x00FF00
releaseFlag = 0
gameInputUsed = 1
gameInputPlayer = 3
palette = "pal.bin"

  [[part.bank]]
  type = "string"
  elements = [
    { file = "texts/hello.txt", group = "greetings" },
    { name = "inline", text = "été €" },
    { empty = true },
    { name = "bare", text = "x", nul = false, compress = true },
  ]

  [[part.bank]]
  type = "image"
  name = "Pictures"
  version = 1
  palettes = "pal.bin"
  files = "pics/*.bmp"
  elements = [{ file = "pics/a.bmp", name = "again", hotX = -3, hotY = 4, paletteIndex = 0, width = 7 }]

  [[part.bank]]
  type = 99
  file = "data\\extra.vlb"
  compress = true
  elements = ["raw.dat", "long.dat", { file = "long.dat", name = "plain", compress = false }]

  [[part.bank]]
  type = "sound"
  folder = "snd"
  files = ["*.wav", "?.mp3"]

[[part]]
name = "Second"
file = "second.vla"
folder = "lib"

[[chunk]]
id = 0x7777
file = "raw.dat"
)");
  const std::string bmp = std::string("BM") + std::string(12, '\0') + U32(40) + U32(16) + U32(8) + U16(1) + U16(24);
  Put("p/main.vlq",
      "\xEF\xBB\xBF"
      "s = \"\xC3\xA9\"\r\n");
  Put("p/old.vlq", "s = \"\xE9\"\r\n");  // already code page 1252
  Put("p/lib/more.vlq", "Function More\n");
  Put("p/pal.bin", std::string(1024, '\5'));
  Put("p/texts/hello.txt", "Hello");
  Put("p/pics/b.bmp", bmp);
  Put("p/pics/a.bmp", bmp);
  Put("p/pics/a.txt", "no picture");
  Put("p/long.dat", std::string(500, 'z'));
  Put("p/raw.dat", std::string("\0\1\2", 3));
  Put("p/snd/b.mp3", "2");
  Put("p/snd/long.mp3", "no match");
  Put("p/snd/a.wav", "1");
  const LoadedProject project = LoadProject(Project());
  ASSERT_EQ(project.error, "");
  EXPECT_EQ(project.name,
            "Gr\xF6\xDF"
            "e");
  const ApplicationModel& m = project.model;
  EXPECT_EQ(m.version, 0x44550005u);
  EXPECT_EQ(m.settings->applicationKind, 4u);
  EXPECT_FALSE(m.settings->hasClassTable);
  EXPECT_EQ(m.unknownChunks, (std::vector<UnknownChunk>{{0x7777, std::string("\0\1\2", 3)}}));
  ASSERT_EQ(m.parts.size(), 2u);
  const PartHeader& h = m.parts[0].header;
  EXPECT_EQ(h.initSource, "Debug = 1");
  EXPECT_EQ(h.speedPercent, 80);
  EXPECT_EQ(h.backColor, 0xFF00u);
  EXPECT_EQ(h.palette[0], 5);
  EXPECT_EQ(h.gameInputPlayer, 3u);
  ASSERT_EQ(m.parts[0].banks.size(), 5u) << "the sources come first by themselves";
  EXPECT_EQ(BodyOf(m, 0, 0, 0), "s = \"\xE9\"\r\n");
  EXPECT_EQ(BodyOf(m, 0, 0, 1), "s = \"\xE9\"\r\n");
  const BankModel& texts = m.parts[0].banks[1];
  EXPECT_EQ(texts.name, "string");
  EXPECT_EQ(texts.version, kBankVersion2);
  EXPECT_EQ(texts.elements[0].name, "hello");
  EXPECT_EQ(texts.elements[0].group, "greetings");
  EXPECT_EQ(texts.elements[0].body.bytes, std::string("Hello\0", 6));
  EXPECT_EQ(texts.elements[1].body.bytes, std::string("\xE9t\xE9 \x80\0", 6));
  EXPECT_TRUE(texts.elements[2].empty);
  EXPECT_EQ(texts.elements[3].body.bytes, "x");
  EXPECT_EQ(texts.elements[3].body.form, BodyModel::Form::Compressed);
  EXPECT_EQ(texts.elements[1].body.form, BodyModel::Form::Plain);
  const BankModel& pictures = m.parts[0].banks[2];
  EXPECT_EQ(pictures.version, kBankVersion1);
  ASSERT_EQ(pictures.elements.size(), 3u);
  EXPECT_EQ(pictures.elements[0].name, "a");
  EXPECT_EQ(pictures.elements[0].image.width, 16);
  EXPECT_EQ(pictures.elements[0].image.height, 8);
  EXPECT_EQ(pictures.elements[0].image.depth, 24);
  EXPECT_EQ(pictures.elements[2].hotX, 0xFFFD);
  EXPECT_EQ(pictures.elements[2].image.width, 7);
  EXPECT_EQ(m.parts[0].banks[3].type, 99u);
  EXPECT_EQ(m.parts[0].banks[3].elements[0].body.form, BodyModel::Form::Plain) << "it wouldn't get smaller";
  EXPECT_EQ(m.parts[0].banks[3].elements[1].body.form, BodyModel::Form::Compressed);
  EXPECT_EQ(m.parts[0].banks[3].elements[2].body.form, BodyModel::Form::Plain);
  const BankModel& sounds = m.parts[0].banks[4];
  ASSERT_EQ(sounds.elements.size(), 2u);
  EXPECT_EQ(sounds.elements[0].body.bytes, "1");
  EXPECT_EQ(sounds.elements[1].name, "b");
  EXPECT_EQ(BodyOf(m, 1, 0, 0), "Function More\n");

  const PackedProject packed = PackProject(Project());
  EXPECT_EQ(packed.error, "");
  std::vector<std::string> names;
  for (const auto& [name, bytes] : packed.files) names.push_back(name);
  EXPECT_EQ(names, (std::vector<std::string>{"data/extra.vlb", "out.vlp", "second.vla"}));
}

TEST_F(ProjectTest, FaultsTellPlaceAndHint) {
  Put("p/main.vlq", "x = 1\ny = \xE2\x82\xAC \xE2\x86\x92\n");
  Put("p/good.vlq", "");
  struct Case {
    const char* manifest;
    const char* error;  // behind the manifest's path
  } cases[] = {
      {"", ":1:1: a project needs a name (write name = \"My program\")"},
      {"name = \"A\"\nspeed = 3\n", ":2:1: unknown key 'speed' (known here: "},
      {"name = \"A\"\nversoin = 3\n", ":2:1: unknown key 'versoin' (did you mean 'version'?)"},
      {"name = \"A\"\nversion = 7\n", ":2:11: 'version' must be a number from 0 to 6, or \"none\""},
      {"name = \"A\"\n  output = 5\n", ":2:12: 'output' must be a text"},
      {"name = \"A\"\noutput = \"a/b\"\n", ":2:10: 'output' must be a plain file name"},
      {"name = \"A\xE2\x86\x92\"\n", ":1:8: a character that code page 1252 doesn't have"},
      {"name = \"A\"\n[[part]]\nspeedPercent = 70000\n", ":3:16: 'speedPercent' must lie between 0 and 65535"},
      {"name = \"A\"\n[[part]]\n[[part.bank]]\n", ":3:1: a bank needs a type (source, image,"},
      {"name = \"A\"\n[[part]]\n[[part.bank]]\ntype = \"pics\"\n", ":4:8: unknown bank type (source, image,"},
      {"name = \"A\"\n[[part]]\n[[part.bank]]\ntype = \"sound\"\nfiles = \"*.wav\"\n", ":5:9: no file matches "},
      {"name = \"A\"\n[[part]]\n[[part.bank]]\ntype = \"sound\"\nelements = [{file = \"no.wav\"}]\n",
       ":5:13: the file "},
      {"name = \"A\"\n[[part]]\n[[part.bank]]\ntype = \"binary\"\nelements = [{file = \"good.vlq\", hotX = 1}]\n",
       ":5:33: unknown key 'hotX'"},
      {"name = \"A\"\n[[part]]\n[[part.bank]]\ntype = \"image\"\nelements = [\"good.vlq\"]\n",
       ":5:13: good.vlq is no picture that the runtime reads"},
      {"name = \"A\"\n[[part]]\npalette = \"good.vlq\"\n", ":3:11: a palette file has 1024 bytes"},
      {"name = \"A\"\n[part]\n", ":2:1: 'part' must be a list of tables (write [[part]])"},
      {"name = \"A\"\n[[part]]\nfolder = \"nowhere\"\n", ":2:1: there is no source file in "},
      {"name = \"A\"\nx = = 2\n", ":2:"},
      {"name = \"A\"\nclasses = 3\n", ":2:11: 'classes' must be"},
  };
  for (const Case& c : cases) {
    PutManifest(c.manifest);
    const std::string error = LoadProject(Project()).error;
    const std::string expected = (Project() / "vorlane.toml").string() + c.error;
    EXPECT_EQ(error.substr(0, expected.size()), expected) << error;
  }
  PutManifest("name = \"A\"\n");
  EXPECT_EQ(LoadProject(Project()).error.substr(0, (Project() / "main.vlq:2:7:").string().size()),
            (Project() / "main.vlq:2:7:").string());
  PutManifest("name = \"A\"\nencoding = \"raw\"\n");
  EXPECT_EQ(LoadProject(Project()).error, "");
  EXPECT_NE(LoadProject(root_ / "nowhere").error, "");
  // What only the writer finds.
  PutManifest("name = \"A\"\nencoding = \"raw\"\nversion = 0\napplicationKind = 2\n");
  EXPECT_NE(PackProject(Project()).error.find("application kind"), std::string::npos);
}

TEST_F(ProjectTest, ExtractedFoldersPackToAnEqualApplication) {
  int n = 0;
  for (const uint32_t version : kVersions) {
    for (const bool variant : {false, true}) {
      SCOPED_TRACE(testing::Message() << std::hex << version << ' ' << variant);
      ApplicationModel model = FullModel(version, variant, !variant);
      ElementModel text;
      text.body.bytes = std::string("A\xE9\r\n\0B\x81\0", 8);
      for (BankModel& bank : model.parts[0].banks) {
        if (bank.type == kBankSource || bank.type == kBankString) bank.elements.push_back(text);
      }
      const std::string folder = std::to_string(n++);
      const WrittenApplication written = WriteApplication(model, "My app.VLP");
      ASSERT_EQ(written.error, "");
      for (const auto& [name, bytes] : written.files) Put(folder + "/in/" + name, bytes);
      const ExtractResult extracted = ExtractApplication(root_ / folder / "in/My app.VLP", root_ / folder / "out");
      ASSERT_EQ(extracted.error, "");
      EXPECT_EQ(extracted.problems, std::vector<std::string>());
      const PackedProject packed = PackProject(root_ / folder / "out");
      ASSERT_EQ(packed.error, "");
      EXPECT_EQ(packed.mainName, "My app.VLP");
      EXPECT_EQ(packed.files, written.files);
      EXPECT_EQ(LoadProject(root_ / folder / "out").model, model);
    }
  }
}

TEST_F(ProjectTest, ExtractedFilesAreOnesToWorkWith) {
  PutManifest(
      "name = \"App\"\n[[part]]\n[[part.bank]]\ntype = \"string\"\n"
      "elements = [{ name = \"../../evil\", text = \"a\" }, { name = \"con:\\u0000\", text = \"b\" },"
      " { name = \"T\", text = \"1\" }, { name = \"t\", text = \"2\" }]\n"
      "[[part.bank]]\ntype = \"sound\"\nelements = [{ file = \"a.dat\", name = \"beep\" }]\n");
  Put("p/main.vlq", "s = \"\xC3\xA9\"\n");
  Put("p/a.dat", "RIFF1234WAVEfmt ");
  const PackedProject packed = PackProject(Project());
  ASSERT_EQ(packed.error, "");
  Put("app.vlp", packed.files.at("app.vlp"));
  const ExtractResult result = ExtractApplication(root_ / "app.vlp", root_ / "out");
  ASSERT_EQ(result.error, "");
  std::string bytes;
  ASSERT_TRUE(ReadDiskFile(root_ / "out/source/main.vlq", &bytes));
  EXPECT_EQ(bytes, "s = \"\xC3\xA9\"\n") << "sources are UTF-8 again";
  EXPECT_TRUE(ReadDiskFile(root_ / "out/sound/beep.wav", &bytes));
  EXPECT_TRUE(ReadDiskFile(root_ / "out/string/______evil.txt", &bytes)) << "nothing leaves the folder";
  EXPECT_TRUE(ReadDiskFile(root_ / "out/string/t-2.txt", &bytes)) << "names differ in more than case";
  size_t files = 0;
  for (const auto& entry : fs::recursive_directory_iterator(root_ / "out")) files += entry.is_regular_file();
  EXPECT_EQ(files, result.files);

  EXPECT_NE(ExtractApplication(root_ / "app.vlp", root_ / "out").error, "") << "not over other files";
  EXPECT_NE(ExtractApplication(root_ / "none.vlp", root_ / "out2").error, "");
  Put("junk.vlp", "this is no application at all");
  EXPECT_NE(ExtractApplication(root_ / "junk.vlp", root_ / "out2").error.find("no application file"),
            std::string::npos);
  EXPECT_FALSE(fs::exists(root_ / "out2"));
}

TEST_F(ProjectTest, SingleSource) {
  std::string error = "old";
  OpenApp open(SingleSourceApplication("a = \"\xC3\xBC\"", "dir/demo.vlq", &error));
  EXPECT_EQ(error, "");
  ASSERT_EQ(open.status, kAppOk);
  const auto sources = open.app.CollectSources(true);
  ASSERT_EQ(sources.size(), 1u);
  EXPECT_EQ(sources[0].path, "demo://source/demo");
  EXPECT_EQ(sources[0].text, "a = \"\xFC\"");
  EXPECT_EQ(open.app.classNames.back(), "Bank");
  EXPECT_EQ(SingleSourceApplication("ok\n \xE2\x86\x92", "x.vlq", &error), "");
  EXPECT_EQ(error.substr(0, 10), "x.vlq:2:2:");
}

TEST_F(ProjectTest, Description) {
  const std::string image = U16(1) + U16(0xFFFE) + U32(0) + U16(0xFFFF) + U16(32) + U16(16) + U16(24) + U32(0) + "BM";
  const std::string bytes =
      Newest(Chunk(0x9999, "??") +
             Part(Chunk(0x1000, Header("Part\x1B[31m\xE9")) +
                  InlineBank(Bank(0, "src", {{"main", Packed("code code code"), "g"}, {"", {}, {}, true}})) +
                  InlineBank(Bank(1, "pics", {{"pic", image}}, U32(0))) +
                  InlineBank(Bank(7, "bad", {{"cut", U32(999) + U32(0)}}))));
  Put("a.vlp", bytes);
  const Description d = DescribeApplication(root_ / "a.vlp");
  ASSERT_EQ(d.error, "");
  const auto json = nlohmann::json::parse(d.json);
  EXPECT_EQ(json["status"], 0);
  EXPECT_EQ(json["version"], 0x44550006);
  EXPECT_EQ(json["classes"].size(), 74u);
  EXPECT_EQ(json["classTable"], false);
  ASSERT_EQ(json["chunks"].size(), 3u);
  EXPECT_EQ(json["chunks"][1]["id"], 0x9999);
  EXPECT_EQ(json["chunks"][1]["offset"], 12);
  EXPECT_EQ(json["chunks"][1]["size"], 2);
  const auto& banks = json["parts"][0]["banks"];
  const auto& source = banks[0]["elements"][0];
  EXPECT_EQ(source["path"], "Part\x1B[31m\xC3\xA9://src/g/main");
  EXPECT_EQ(source["size"], 14);
  EXPECT_EQ(source["compressedSize"], Deflate("code code code").size());
  EXPECT_EQ(bytes.substr(source["offset"], 4), U32(14));
  EXPECT_EQ(banks[0]["elements"][1]["empty"], true);
  EXPECT_EQ(banks[1]["elements"][0]["width"], 32);
  EXPECT_EQ(banks[1]["elements"][0]["hotSpot"][1], -2);
  EXPECT_EQ(banks[2]["elements"][0]["damaged"], true);
  EXPECT_EQ(d.text.find('\x1B'), std::string::npos) << "names don't command the terminal";
  for (const char* piece : {"Part?[31m\xC3\xA9", "g/main  14 bytes, packed", "pic  32 x 16 x 24, image file", "(empty)",
                            "999 bytes, damaged", "0x44550006"}) {
    EXPECT_NE(d.text.find(piece), std::string::npos) << piece << "\n" << d.text;
  }
  Put("cut.vlp", bytes.substr(0, bytes.size() - 3));
  EXPECT_EQ(DescribeApplication(root_ / "cut.vlp").status, kAppEndOfFile);
  EXPECT_NE(DescribeApplication(root_ / "none.vlp").error, "");
}

TEST(ProjectCodePage, EveryByteComesBack) {
  std::string all;
  for (int i = 0; i < 256; ++i) all += static_cast<char>(i);
  const CodePageText back = CodePageFromUtf8(Utf8FromCodePage(all));
  EXPECT_TRUE(back.validUtf8);
  EXPECT_FALSE(back.unknownAt);
  EXPECT_EQ(back.bytes, all);
  EXPECT_EQ(Utf8FromCodePage("\x80\x92\xE9"), "\xE2\x82\xAC\xE2\x80\x99\xC3\xA9");
}

TEST(ProjectCodePage, WhatIsNoUtf8) {
  for (const char* bad :
       {"\x80", "\xC0\x80", "\xC3", "\xC3(", "\xE0\x80\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xFF"}) {
    EXPECT_FALSE(CodePageFromUtf8(bad).validUtf8) << testing::PrintToString(bad);
  }
  const CodePageText unknown = CodePageFromUtf8("ab\xF0\x9F\x98\x80");
  EXPECT_TRUE(unknown.validUtf8);
  EXPECT_EQ(unknown.unknownAt, 2u);
}

TEST(ProjectFileKind, Pictures) {
  const std::string zero(128, '\0');
  struct Case {
    const char* what;
    std::string bytes;
    int width, height, depth;  // 0: no picture
  } cases[] = {
      {"bmp", "BM" + zero.substr(0, 12) + U32(40) + U32(10) + U32(0xFFFFFFF6) + U16(1) + U16(8), 10, 10, 8},
      {"old bmp", "BM" + zero.substr(0, 12) + U32(12) + U16(10) + U16(20) + U16(1) + U16(24), 10, 20, 24},
      {"png", std::string("\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\1\0\0\0\0\2\x08\x06", 26), 256, 2, 32},
      {"jpeg", std::string("\xFF\xD8\xFF\xE0\0\4ab\xFF\xC2\0\x0B\x08\0\x10\0\x20\3", 18), 32, 16, 24},
      {"jpeg cut off", std::string("\xFF\xD8\xFF\xE0\0\4ab\xFF", 9), 0, 0, 0},
      {"tga", std::string("\0\0\2\0\0\0\0\0\0\0\0\0\5\0\6\0\x18\0zz", 20), 5, 6, 24},
      {"pcx", std::string("\x0A\5\1\x08\0\0\0\0\x3F\0\x1F\0", 12) + zero.substr(0, 53) + "\3" + zero, 64, 32, 24},
      {"text", "Hello, this is no picture", 0, 0, 0},
      {"nothing", "", 0, 0, 0},
  };
  for (const Case& c : cases) {
    PictureSize size;
    EXPECT_EQ(MeasurePicture(c.bytes, &size), c.width != 0) << c.what;
    EXPECT_EQ(size.width, c.width) << c.what;
    EXPECT_EQ(size.height, c.height) << c.what;
    EXPECT_EQ(size.depth, c.depth) << c.what;
  }
}

}  // namespace
}  // namespace vl

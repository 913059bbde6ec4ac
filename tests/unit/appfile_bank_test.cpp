#include <gtest/gtest.h>

#include "host/appfile/app_file.h"
#include "tests/unit/appfile_bytes.h"

namespace vl {
namespace {

using namespace vl::test;

std::string TwoParts() {
  const std::string main =
      Chunk(0x1000, Header("Main")) + InlineBank(Bank(0, "src", {{"main", Plain("code")}, {"twin", Plain("code2")}})) +
      InlineBank(Bank(5, "texts",
                      {{"hello", Packed(std::string("Hello\0", 6))},
                       {"twin", Plain("first")},
                       {"gap", {}, {}, true},
                       {"TWIN", Plain("second")},
                       {"hello", Plain("grouped"), "grp"},
                       {"none", Plain("")}})) +
      InlineBank(
          Bank(7, "data", {{"plain", Plain("0123456789")}, {"packed", Packed("abcabcabc")}, {"nil", Plain("")}})) +
      InlineBank(Bank(7, "later", {{"only", Plain("x")}}));
  const std::string other = Chunk(0x1000, Header("Other")) + InlineBank(Bank(5, "texts", {{"hello", Plain("other")}}));
  return Newest(Part(main) + Part(other));
}

std::string TextOf(CElement* element) {
  if (!element) return "(none)";
  element->bank->Load(element->index);
  return std::string(static_cast<CStringElement*>(element)->GetText());
}

TEST(AppFileBanks, NamesAndPaths) {
  OpenApp open(TwoParts());
  CAppFile& app = open.app;
  ASSERT_EQ(open.status, kAppOk);
  struct Case {
    const char* name;
    uint32_t type;
    bool typed;
    const char* text;
  } cases[] = {
      {"hello", 5, true, "Hello"},
      {"HELLO", 5, true, "Hello"},
      {"grp/hello", 5, true, "grouped"},
      {"main://TEXTS/Hello", 7, true, "Hello"},
      {"Main://texts/GRP/hello", 5, true, "grouped"},
      {"Other://texts/hello", 5, true, "other"},
      {"twin", 5, true, "second"},  // the newest
      {"Main://texts/twin", 5, true, "second"},
      {"hell", 5, true, "(none)"},
      {"Main://texts/", 5, true, "(none)"},
      {"Main:/texts/hello", 5, true, "(none)"},
      {"hello", 3, true, "(none)"},  // no bank of that type
      {"main", 0, true, "(none)"},   // a script can't reach the sources
      {"main", 0, false, "code"},
      {"Main://src/main", 5, true, "(none)"},
      {"Main://src/main", 5, false, "code"},
  };
  for (const Case& c : cases) {
    CElement* element = app.GetElement(c.name, c.type, c.typed);
    if (element && element->bank->type != 5) {
      ASSERT_TRUE(element->bank->Load(element->index));
      EXPECT_EQ(static_cast<CBinaryElement*>(element)->data.View(), c.text) << c.name;
    } else {
      EXPECT_EQ(TextOf(element), c.text) << c.name;
    }
  }
  CBank* texts = app.GetBank(5);
  ASSERT_NE(texts, nullptr);
  EXPECT_EQ(texts->FindByName("tWIN"), 1) << "the first";
  EXPECT_EQ(texts->FindByName("gap"), -1);
  EXPECT_EQ(texts->GetPath(), "Main://texts");
  EXPECT_EQ(texts->elements[4]->GetPath(), "Main://texts/grp/hello");
  EXPECT_EQ(app.GetElementByIndex(1, 5, true), texts->elements[1].get());
  EXPECT_EQ(app.GetElementByIndex(2, 5, true), nullptr);
  EXPECT_EQ(app.GetElementByIndex(6, 5, true), nullptr);
  EXPECT_EQ(app.GetElementByIndex(0xFFFFFFFF, 5, true), nullptr);
  EXPECT_EQ(app.GetElementByIndex(0, 0, true), nullptr);
  EXPECT_EQ(app.GetBank(7)->name, "data") << "the first of its type";
}

TEST(AppFileBanks, PartsAndCurrentPart) {
  OpenApp open(TwoParts());
  CAppFile& app = open.app;
  CAppPart* main = app.GetPartByName("MAIN");
  CAppPart* other = app.GetPartByName("other");
  ASSERT_TRUE(main && other);
  EXPECT_EQ(app.GetPartByName("non"), nullptr);
  EXPECT_EQ(app.GetPartByNumber(2), other);
  EXPECT_EQ(app.GetPartByNumber(0), nullptr);
  EXPECT_EQ(app.GetPartByNumber(3), nullptr);
  EXPECT_EQ(app.GetBankByName("texts"), main->GetBank(5));
  EXPECT_EQ(app.SetCurrentPart(other), main);
  EXPECT_EQ(app.GetBankByName("texts"), other->GetBank(5));
  EXPECT_EQ(app.GetBankByName("MAIN://data"), main->GetBank(7));
  EXPECT_EQ(app.GetBankByName("data"), nullptr);
  EXPECT_EQ(TextOf(app.GetElement("hello", 5, true)), "other");
  EXPECT_EQ(app.SetCurrentPart(nullptr), other);
  EXPECT_EQ(app.currentPart, main);
}

TEST(AppFileBanks, LoadLockAndUnload) {
  OpenApp open(TwoParts());
  CBank& bank = *open.app.GetBank(5);
  const uint64_t before = open.app.Budget().Used();
  EXPECT_EQ(bank.Lock(0), nullptr) << "not loaded";
  EXPECT_EQ(bank.elements[0]->lockCount, 0u);
  ASSERT_TRUE(bank.Load(0));
  EXPECT_EQ(open.app.Budget().Used(), before + 6);
  EXPECT_STREQ(static_cast<const char*>(bank.Lock(0)), "Hello");
  bank.Lock(0);
  bank.Unload(0);
  bank.Unlock(0);
  bank.Unload(0);
  EXPECT_TRUE(bank.elements[0]->IsLoaded()) << "one lock left";
  bank.Unlock(0);
  bank.Unlock(0);
  EXPECT_EQ(bank.elements[0]->lockCount, 0u);
  bank.Unload(0);
  EXPECT_FALSE(bank.elements[0]->IsLoaded());
  EXPECT_EQ(open.app.Budget().Used(), before);

  open.app.lastBankError = 5;
  EXPECT_FALSE(bank.Load(2)) << "empty slot";
  EXPECT_EQ(open.app.lastBankError, kAppOk);
  EXPECT_FALSE(bank.Load(100));
  EXPECT_TRUE(bank.Load(5)) << "a body of size 0 loads, and isn't there";
  EXPECT_FALSE(bank.elements[5]->IsLoaded());
  bank.Unload(100);
  bank.Unlock(2);

  CElement* twin = open.app.GetElement("twin", 5, true);
  bank.DeleteElement(twin->index);
  EXPECT_EQ(open.app.GetElement("twin", 5, true), bank.elements[1].get()) << "the older one shows again";
  EXPECT_EQ(bank.GetElement(3), nullptr);
}

TEST(AppFileBanks, BodiesCountInTheBudgetOfTheRun) {
  MemoryFileSystem files;
  files.Add("a", TwoParts());
  MemoryBudget budget(12);
  CAppFile app(&budget);
  ASSERT_EQ(app.Open("", "a", files, false), kAppOk);
  CBank& data = *app.GetBank(7);
  EXPECT_TRUE(data.Load(0));
  EXPECT_FALSE(data.Load(1));
  EXPECT_EQ(app.lastBankError, kAppOutOfMemory);
  EXPECT_EQ(budget.Used(), 10u);
  data.Unload(0);
  EXPECT_TRUE(data.Load(1));
  app.Close();
  EXPECT_EQ(budget.Used(), 0u);
}

TEST(AppFileBanks, StreamsOnBodies) {
  OpenApp open(TwoParts());
  CAppFile& app = open.app;
  CBank& data = *app.GetBank(7);
  for (const uint32_t option : {0u, 1u}) {
    auto plain = app.OpenResource("Main://data/plain", true, option);
    ASSERT_TRUE(plain);
    EXPECT_EQ(ReadAll(*plain), "0123456789");
    EXPECT_FALSE(data.elements[0]->IsLoaded()) << "read from the file";
    auto empty = app.OpenResource("Main://data/nil", true, option);
    ASSERT_TRUE(empty);
    EXPECT_EQ(empty->GetLength(), 0);
    auto packed = app.OpenResource("Main://data/packed", true, option);
    ASSERT_TRUE(packed);
    EXPECT_EQ(ReadAll(*packed), "abcabcabc");
    EXPECT_TRUE(data.elements[1]->IsLoaded());
  }
  // A text needs its body, and its final NUL counts, stored or not.
  EXPECT_EQ(app.OpenResource("Main://texts/hello", true, 0), nullptr);
  for (const auto& [index, bytes] : {std::pair<uint32_t, std::string>{0, {"Hello\0", 6}}, {1, {"first\0", 6}}}) {
    ASSERT_TRUE(app.GetBank(5)->Load(index));
    EXPECT_EQ(ReadAll(*app.GetBank(5)->elements[index]->OpenStream(0)), bytes);
  }
  // Sources only for those who may; otherwise the name is one of a file.
  EXPECT_EQ(app.OpenResource("Main://src/main", true, 0), nullptr);
  EXPECT_NE(app.OpenResource("Main://src/main", false, 0), nullptr);
  open.files.Add("dir/pic/a.bmp", "BM");
  open.files.Add("secret", "no");
  auto file = app.OpenResource("pic\\a.bmp", true, 1);
  ASSERT_TRUE(file);
  EXPECT_EQ(ReadAll(*file), "BM");
  EXPECT_EQ(app.OpenResource("..\\secret", true, 0), nullptr);
  EXPECT_EQ(app.OpenResource("nothing", true, 0), nullptr);
  EXPECT_EQ(app.MakePath("a\\b"), "dir/a\\b");
  EXPECT_EQ(app.MakePath("C:\\b"), "C:\\b");
}

TEST(AppFileBanks, AnimationsHaveAHotSpotFromTheSecondBankVersion) {
  for (const uint32_t version : {kBankVersion1, kBankVersion2}) {
    const std::string spot = version == kBankVersion2 ? U16(3) + U16(0xFFFE) : "";
    OpenApp open(Newest(
        Part(Chunk(0x1000, Header("P")) + InlineBank(Bank(2, "anims", {{"a", spot + Plain("ANMV")}}, {}, version)))));
    auto* element = static_cast<CAnimElement*>(open.app.GetElement("a", 2, true));
    ASSERT_NE(element, nullptr);
    EXPECT_EQ(element->hotX, version == kBankVersion2 ? 3 : 0);
    EXPECT_EQ(element->hotY, version == kBankVersion2 ? 0xFFFE : 0);
    ASSERT_TRUE(element->bank->Load(0));
    EXPECT_EQ(element->data.View(), "ANMV");
  }
}

std::string ImageHead(uint32_t version, uint32_t marker, uint32_t w, uint32_t h, uint32_t depth, uint32_t flags) {
  return U16(0xFFFF) + U16(5) + U32(1) + U16(marker) + U16(w) + U16(h) + U16(depth) +
         (version == kBankVersion2 ? U32(flags) : "");
}

TEST(AppFileBanks, Images) {
  const std::string raw("abc\0def\0", 8);  // 3 by 2 at depth 8: lines of whole words
  const std::string mask("\xFF\0\xFF\0\xFF\0", 6);
  for (const uint32_t version : {kBankVersion1, kBankVersion2}) {
    const bool flags = version == kBankVersion2;
    std::vector<Slot> slots = {
        {"file", ImageHead(version, 0xFFFF, 9, 9, 24, 0) + "BM picture file"},
        {"raw", ImageHead(version, 0, 3, 2, 8, 0) + U32(0) + raw},
        {"packed", ImageHead(version, 1, 3, 2, 8, 1) + U32(Deflate(raw).size()) + Deflate(raw) +
                       (flags ? U32(Deflate(mask).size()) + Deflate(mask) : "")},
        {"rawmask", ImageHead(version, 0, 3, 2, 8, 1) + U32(0) + raw + (flags ? U32(0) + mask : "")},
        {"none", ImageHead(version, 0, 0, 7, 8, 0) + U32(0)},
        {"liar", ImageHead(version, 0, 10000, 10000, 32, 0) + U32(Deflate(raw).size()) + Deflate(raw)},
        {"last", ImageHead(version, 0xFFFF, 1, 1, 8, 0) + "PCX"},
    };
    // The table comes right behind the bank: its position counts from the field itself.
    const std::string measured = Bank(1, "pics", slots, U32(0), version);
    const uint32_t field = 4 + 2 + 4 + 4;
    std::string bank = Bank(1, "pics", slots, U32(static_cast<uint32_t>(measured.size()) - field), version);
    bank += U32(3) + std::string(1024, 'r') + std::string(1024, 's');  // tells three, holds two
    OpenApp whole(Newest(Part(Chunk(0x1000, Header("P")) + InlineBank(bank))));
    ASSERT_EQ(whole.status, kAppOk);
    auto* images = static_cast<CImageBank*>(whole.app.GetBank(1));
    ASSERT_NE(images, nullptr);
    StoredPalette record{};
    EXPECT_TRUE(images->ReadPalette(1, &record));
    EXPECT_EQ(record[1023], 's');
    EXPECT_FALSE(images->ReadPalette(3, &record));
    EXPECT_EQ(whole.app.lastBankError, kAppBankHeader);

    const auto load = [&](const char* name) {
      auto* element = static_cast<CImageElement*>(whole.app.GetElement(name, 1, true));
      return element && images->Load(element->index) && element->IsLoaded() ? element : nullptr;
    };
    CImageElement* file = load("file");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->file.View(), "BM picture file") << "up to the next element";
    EXPECT_EQ(file->hotX, -1);
    EXPECT_EQ(file->hotY, 5);
    EXPECT_EQ(file->paletteIndex, 1);
    EXPECT_EQ(load("last")->file.View(), "PCX") << "up to the palette table";
    for (const char* name : {"raw", "packed", "rawmask"}) {
      CImageElement* element = load(name);
      ASSERT_NE(element, nullptr) << name;
      ByteBlock out;
      ASSERT_TRUE(element->Unpack(element->pixels, &out)) << name;
      EXPECT_EQ(out.View(), raw) << name;
      out.Clear();
      const bool masked = flags && std::string_view(name) != "raw";
      EXPECT_EQ(element->Unpack(element->mask, &out), masked) << name;
      EXPECT_EQ(out.View(), masked ? mask : std::string_view()) << name;
    }
    EXPECT_NE(load("none"), nullptr);
    EXPECT_EQ(load("liar"), nullptr);
    EXPECT_EQ(whole.app.lastBankError, kAppBadStream);
    const uint64_t used = whole.app.Budget().Used();
    EXPECT_GT(used, 0u);
    for (uint32_t i = 0; i < slots.size(); ++i) images->Unload(i);
    EXPECT_EQ(whole.app.Budget().Used(), 0u);
  }
}

}  // namespace
}  // namespace vl

// Damaged and absurd files: whatever comes, the reader returns, and memory stays in proportion.
#include <gtest/gtest.h>

#include "host/appfile/model_reader.h"
#include "host/appfile/writer.h"
#include "tests/unit/appfile_bytes.h"

namespace vl {
namespace {

using namespace vl::test;

// Uses every call that touches content.
void Exercise(CAppFile& app) {
  for (const auto& part : app.parts) {
    app.SetCurrentPart(part.get());
    for (const auto& bank : part->banks) {
      for (uint32_t i = 0; i < bank->elements.size(); ++i) {
        if (!bank->elements[i]) continue;
        if (auto stream = bank->elements[i]->OpenStream(0)) {
          char buffer[64];
          while (stream->ReadLine(buffer, sizeof buffer)) {
          }
        }
        bank->Load(i);
        EXPECT_NE(app.GetElementByPath(bank->elements[i]->GetPath()), nullptr);
        bank->Unload(i);
      }
      EXPECT_NE(app.GetBankByPath(bank->GetPath()), nullptr);
    }
  }
  app.SetCurrentPart(nullptr);
  app.CollectSources(true);
}

void OpenAndExercise(std::string_view bytes) {
  OpenApp open(bytes, true);
  Exercise(open.app);
  if (open.status == kAppOk) {
    const ModelResult result = ReadModel(open.app, 1u << 20);
    if (result.status == kAppOk && result.problems.empty()) {
      const WrittenApplication written = WriteApplication(result.model, "app.vlp");
      EXPECT_EQ(written.error, "");
    }
  }
  open.app.Close();
  EXPECT_EQ(open.app.Budget().Used(), 0u);
}

std::string SmallFile() {
  const std::string image = U16(1) + U16(2) + U32(0) + U16(0) + U16(2) + U16(2) + U16(8) + U32(1) + U32(0) +
                            "12345678" + U32(Deflate("mask").size()) + Deflate("mask");
  const std::string images =
      Bank(1, "i", {{"p", image}, {"f", image.substr(0, 8) + U16(0xFFFF) + image.substr(10, 10)}}, U32(200));
  return Version(0x44550006) + Chunk(0x1001, "s") +
         Chunk(0x1300, U32(0) + U32(1) + U32(0) + Packed(U32(2) + std::string("Math\0Bank\0", 10))) + Chunk(0x77, "u") +
         Part(Chunk(0x1000, Header("P")) + Chunk(0x1500, Packed("a=1")) +
              Chunk(0x1600, U16(0) + U16(1) + U32(2) + Plain("gi")) +
              InlineBank(Bank(0, "s", {{"m", Packed("code")}, {"n", Plain("more"), "g"}})) +
              InlineBank(Bank(2, "a", {{"x", U16(1) + U16(2) + Plain("anm")}})) + InlineBank(images) +
              InlineBank(Bank(5, "t", {{"y", Plain("text")}, {"", {}, {}, true}}))) +
         End();
}

TEST(AppFileHostile, CutOffAnywhere) {
  const std::string bytes = SmallFile();
  for (size_t size = 0; size <= bytes.size(); ++size) OpenAndExercise(std::string_view(bytes).substr(0, size));
}

TEST(AppFileHostile, AnyBitFlipped) {
  std::string bytes = SmallFile();
  for (size_t i = 0; i < bytes.size(); ++i) {
    if (i > 300 && i < 1250 && i % 100) continue;  // inside the palette
    for (int bit = 0; bit < 8; ++bit) {
      bytes[i] = static_cast<char>(bytes[i] ^ (1 << bit));
      OpenAndExercise(bytes);
      bytes[i] = static_cast<char>(bytes[i] ^ (1 << bit));
    }
  }
}

TEST(AppFileHostile, AnyWordAllOnes) {
  const std::string good = SmallFile();
  for (size_t i = 0; i + 4 <= good.size(); ++i) {
    std::string bytes = good;
    bytes.replace(i, 4, 4, '\xFF');
    OpenAndExercise(bytes);
  }
}

// Many slots that share one header with a long name: what they hold would be 65535 bytes each.
TEST(AppFileHostile, SlotsThatShareALongName) {
  const uint32_t slots = 10000;
  std::string bank = U32(7) + Short("b") + U32(0x16740002) + U32(slots);
  const auto offset = static_cast<uint32_t>(bank.size() + 4 * slots);
  for (uint32_t i = 0; i < slots; ++i) bank += U32(offset);
  bank += Short(std::string(60000, 'n')) + Short("") + Plain("x");
  OpenApp open(Newest(Part(Chunk(0x1000, Header("P")) + InlineBank(bank))));
  ASSERT_EQ(open.app.parts.size(), 1u);
  EXPECT_EQ(open.app.parts[0]->banks.size(), 0u);
  EXPECT_EQ(open.app.lastBankError, kAppElementHeader);
}

// Part chunks of ten bytes whose content runs on through all the others: the square of the file to read.
TEST(AppFileHostile, PartsInsideParts) {
  std::string chunks;
  for (int i = 0; i < 200000; ++i) chunks += Chunk(0x1200, U16(0));
  OpenApp open(Version(0x44550006) + chunks + End() + End());
  EXPECT_NE(open.status, kAppOk);
  EXPECT_LT(open.app.parts.size(), 200u);
}

TEST(AppFileHostile, BankFileThatIsTheApplication) {
  MemoryFileSystem files;
  const std::string self = Short("self.vlp");
  std::string chunks;
  for (int i = 0; i < 50000; ++i) chunks += Chunk(0x1200, self) + Chunk(0x1100, self);
  files.Add("self.vlp", Newest(chunks));
  CAppFile app;
  app.Open("", "self.vlp", files, false);
  size_t banks = 0;
  for (const auto& part : app.parts) banks += part->banks.size();
  EXPECT_LT(app.parts.size() + banks, 20000u);
}

// One damaged stream of a megabyte behind thousands of source slots: collecting must give up in time.
TEST(AppFileHostile, DamagedSourcesDontAddUp) {
  std::string packed = Deflate(std::string(8 << 20, 'a'));
  packed.back() = static_cast<char>(packed.back() ^ 1);
  const uint32_t slots = 4000;
  std::string bank = U32(0) + Short("b") + U32(0x16740002) + U32(slots);
  const auto offset = static_cast<uint32_t>(bank.size() + 4 * slots);
  for (uint32_t i = 0; i < slots; ++i) bank += U32(offset);
  bank += Short("n") + Short("") + U32(8 << 20) + U32(static_cast<uint32_t>(packed.size())) + packed;
  OpenApp open(Newest(Part(Chunk(0x1000, Header("P")) + InlineBank(bank))));
  ASSERT_EQ(open.app.parts.at(0)->banks.size(), 1u);
  EXPECT_EQ(open.app.CollectSources(false).size(), 0u);
}

}  // namespace
}  // namespace vl

#include <gtest/gtest.h>

#include <random>

#include "host/appfile/compressed_buffer.h"
#include "host/appfile/names.h"
#include "host/appfile/stream.h"
#include "platform/memory_files.h"
#include "tests/unit/appfile_bytes.h"

namespace vl {
namespace {

using test::U32;

std::shared_ptr<File> MemoryFileOf(std::string_view bytes) {
  MemoryFileSystem files;
  files.Add("f", bytes);
  return files.open("f", FileMode::Read);
}

TEST(AppFileStream, ReadsBothByteOrders) {
  const std::string bytes("\x01\x02\x03\x04\x00\x00\x80\xBF\x3F\xF0\x00\x00\x00\x00\x00\x00", 16);
  CMemoryStream s(bytes.data(), 16);
  uint16_t w = 0;
  uint32_t d = 0;
  float f = 0;
  double real = 0;
  EXPECT_EQ(s.ReadWordBE(&w), kAppOk);
  EXPECT_EQ(w, 0x0102);
  EXPECT_EQ(s.ReadWordLE(&w), kAppOk);
  EXPECT_EQ(w, 0x0403);
  EXPECT_EQ(s.ReadFloatLE(&f), kAppOk);
  EXPECT_EQ(f, -1.0f);
  EXPECT_EQ(s.ReadDoubleBE(&real), kAppOk);
  EXPECT_EQ(real, 1.0);
  EXPECT_EQ(s.ReadDwordLE(&d), kAppEndOfFile);
  s.Seek(0);
  EXPECT_EQ(s.ReadDwordBE(&d), kAppOk);
  EXPECT_EQ(d, 0x01020304u);
  s.Seek(0);
  EXPECT_EQ(s.ReadDwordLE(&d), kAppOk);
  EXPECT_EQ(d, 0x04030201u);
}

TEST(AppFileStream, LineEnds) {
  struct Case {
    std::string text;
    std::vector<std::string> lines;
  } cases[] = {
      {"", {}},
      {"a", {"a"}},
      {"a\n", {"a\n"}},
      {"a\rb\nc\r\nd\n\re", {"a\n", "b\n", "c\n", "d\n", "e"}},
      {"\r\r\n\n", {"\n", "\n", "\n"}},
      {"\n\n", {"\n", "\n"}},
      {"\n\r\n\r", {"\n", "\n"}},
      {"1234567890", {"1234567", "890"}},
  };
  for (const Case& c : cases) {
    CMemoryStream memory(c.text.data(), static_cast<uint32_t>(c.text.size()));
    CFileStream file(MemoryFileOf(c.text));
    for (CStream* stream : {static_cast<CStream*>(&memory), static_cast<CStream*>(&file)}) {
      std::vector<std::string> lines;
      char buffer[8];
      while (const uint32_t n = stream->ReadLine(buffer, sizeof buffer)) {
        EXPECT_EQ(buffer[n], '\0');
        lines.emplace_back(buffer, n);
      }
      EXPECT_EQ(lines, c.lines) << testing::PrintToString(c.text);
    }
  }
}

TEST(AppFileStream, WindowEndsInsideTheFile) {
  auto file = MemoryFileOf("0123456789");
  struct Case {
    int64_t start, length;
    std::string content;
  } cases[] = {{2, 3, "234"}, {8, 100, "89"}, {10, 5, ""}, {50, 5, ""}, {-3, 2, "01"}, {0, -1, ""}};
  for (const Case& c : cases) {
    CFileStream s(file, c.start, c.length);
    EXPECT_EQ(s.GetLength(), static_cast<int64_t>(c.content.size()));
    EXPECT_EQ(test::ReadAll(s), c.content);
    uint8_t b = 0;
    EXPECT_EQ(s.ReadByte(&b), kAppEndOfFile);
    EXPECT_EQ(s.Seek(-1), kAppReadFailed);
    EXPECT_EQ(s.Seek(INT64_MAX), kAppOk);
    EXPECT_EQ(s.ReadByte(&b), kAppEndOfFile);
    EXPECT_EQ(s.Skip(INT64_MAX), kAppReadFailed);
  }
}

TEST(AppFileStream, ShortReadTellsHowMuchCame) {
  CFileStream s(MemoryFileOf("abc"));
  char buffer[8] = {};
  uint32_t read = 99;
  EXPECT_EQ(s.ReadSome(buffer, 8, &read), kAppEndOfFile);
  EXPECT_EQ(read, 3u);
  EXPECT_EQ(std::string(buffer, 3), "abc");
}

// Two streams on one handle, random jumps and sizes around the buffer's: always the bytes of the file.
TEST(AppFileStream, StreamsShareAHandleWithoutDisturbance) {
  std::mt19937 random(7);
  std::string bytes(70000, '\0');
  for (char& c : bytes) c = static_cast<char>(random());
  auto file = MemoryFileOf(bytes);
  CFileStream a(file);
  CFileStream b(file, 1000, 60000);
  for (int i = 0; i < 2000; ++i) {
    CFileStream& s = i & 1 ? a : b;
    const int64_t base = i & 1 ? 0 : 1000;
    if (random() % 3 == 0) s.Seek(static_cast<int64_t>(random() % s.GetLength()));
    const uint32_t want = random() % (i % 7 == 0 ? 40000 : 700);
    const int64_t at = s.GetPosition();
    std::string got(want, '\0');
    uint32_t read = 0;
    const uint32_t status = s.ReadSome(got.data(), want, &read);
    const auto left = static_cast<uint32_t>(s.GetLength() - at);
    ASSERT_EQ(read, std::min(want, left));
    ASSERT_EQ(status, want <= left ? kAppOk : kAppEndOfFile);
    ASSERT_EQ(got.substr(0, read), bytes.substr(static_cast<size_t>(base + at), read));
    if (status) s.Seek(0);
  }
}

TEST(AppFileBuffer, CompressedBuffer) {
  const std::string text(20000, 'x');
  const std::string packed = test::Deflate(text);
  std::string flipped = packed;
  flipped[flipped.size() - 1] ^= 1;
  const std::string longer = test::Deflate(text + "y");
  struct Case {
    const char* what;
    std::string bytes;
    uint32_t status;
    std::string content;
  } cases[] = {
      {"empty", U32(0) + U32(0), kAppOk, ""},
      {"empty with a stream", U32(0) + U32(5) + "abcde", kAppOk, ""},
      {"plain", U32(3) + U32(0) + "abcd", kAppOk, "abc"},
      {"packed", U32(20000) + U32(packed.size()) + packed, kAppOk, text},
      {"packed with bytes behind the stream", U32(20000) + U32(packed.size() + 2) + packed + "zz", kAppOk, text},
      {"sizes cut off", U32(3) + "\1\1", kAppEndOfFile, ""},
      {"plain cut off", U32(4) + U32(0) + "abc", kAppEndOfFile, ""},
      {"packed cut off", U32(20000) + U32(packed.size() + 1) + packed, kAppEndOfFile, ""},
      {"wrong check sum", U32(20000) + U32(packed.size()) + flipped, kAppBadStream, ""},
      {"stream ends early", U32(20000) + U32(packed.size() - 1) + packed, kAppBadStream, ""},
      {"holds less than told", U32(20001) + U32(packed.size()) + packed, kAppBadStream, ""},
      {"holds more than told", U32(20000) + U32(longer.size()) + longer, kAppBadStream, ""},
      {"no stream at all", U32(9) + U32(9) + "123456789", kAppBadStream, ""},
      {"more than deflate can do", U32(1u << 29) + U32(packed.size()) + packed, kAppBadStream, ""},
      {"more than fits", U32(0xFFFFFFFF) + U32(0), kAppEndOfFile, ""},
  };
  for (const Case& c : cases) {
    CMemoryStream s(c.bytes.data(), static_cast<uint32_t>(c.bytes.size()));
    ByteBlock block;
    uint32_t size = 77;
    EXPECT_EQ(ReadCompressedBuffer(s, &block, &size), c.status) << c.what;
    EXPECT_EQ(size, c.content.size()) << c.what;
    EXPECT_EQ(block.View(), c.content) << c.what;
    EXPECT_EQ(static_cast<bool>(block), c.status == kAppOk) << c.what;
    EXPECT_TRUE(!block || block.Data()[size] == 0) << c.what;
  }
}

TEST(AppFileNames, FileNamesStayInTheDirectory) {
  struct Case {
    std::string name;
    std::string relative;  // empty: refused
  } cases[] = {
      {"a.vlb", "a.vlb"},
      {"data\\a.vlb", "data/a.vlb"},
      {"data//./a", "data/a"},
      {"x/../a", "a"},
      {"a/..b", "a/..b"},
      {"", ""},
      {"/a", ""},
      {"\\a", ""},
      {"c:a", ""},
      {"C:\\a", ""},
      {"..", ""},
      {"../a", ""},
      {"x/../../a", ""},
      {"a\\..\\..\\b", ""},
      {".", ""},
      {"x/..", ""},
      {std::string("a\0b", 3), ""},
      {"a\nb", ""},
  };
  for (const Case& c : cases) {
    std::string relative;
    EXPECT_EQ(ConfineName(c.name, &relative), !c.relative.empty()) << c.name;
    EXPECT_EQ(relative, c.relative);
  }
}

TEST(AppFileNames, FoldingAgreesWithTheHash) {
  for (int a = 0; a < 256; ++a) {
    for (int b = 0; b < 256; ++b) {
      const std::string x(1, static_cast<char>(a));
      const std::string y(1, static_cast<char>(b));
      ASSERT_TRUE(!EqualsIgnoringCase(x, y) || HashName(x) == HashName(y)) << a << ' ' << b;
    }
  }
  EXPECT_TRUE(EqualsIgnoringCase("\xC9t\xE9", "\xE9T\xC9"));
  EXPECT_FALSE(EqualsIgnoringCase("\xD7", "\xF7"));
  EXPECT_FALSE(EqualsIgnoringCase("[", "{"));
}

TEST(AppFileMemoryFiles, TreeOfFiles) {
  MemoryFileSystem files(100);
  EXPECT_TRUE(files.Add("/a//b/../c.txt", "hello"));
  EXPECT_FALSE(files.Add("..", "x"));
  EXPECT_TRUE(files.exists("a/c.txt"));
  EXPECT_FALSE(files.exists("A/c.txt"));
  EXPECT_EQ(files.open("none", FileMode::Read), nullptr);
  EXPECT_EQ(files.open("none", FileMode::ReadWrite), nullptr);

  auto file = files.open("../a/c.txt", FileMode::ReadWrite);
  ASSERT_TRUE(file);
  ASSERT_TRUE(file->seek(8));
  EXPECT_EQ(file->write("!", 1), 1u);
  EXPECT_EQ(files.Content("a/c.txt"), (std::vector<uint8_t>{'h', 'e', 'l', 'l', 'o', 0, 0, 0, '!'}));
  EXPECT_FALSE(file->seek(-1));
  EXPECT_EQ(files.open("a/c.txt", FileMode::Read)->write("x", 1), 0u);

  // The bound counts all files and is given back.
  auto big = files.open("big", FileMode::Create);
  ASSERT_TRUE(big->seek(90));
  EXPECT_EQ(big->write("12", 2), 0u);
  EXPECT_TRUE(big->failed());
  EXPECT_TRUE(files.remove("a/c.txt"));
  char b = 0;
  ASSERT_TRUE(file->seek(0));
  EXPECT_EQ(file->read(&b, 1), 1u) << "an open file outlives its name";
  file.reset();
  EXPECT_EQ(big->write("12", 2), 2u);
  EXPECT_EQ(files.Paths(), std::vector<std::string>{"big"});
}

}  // namespace
}  // namespace vl

// The files of a run: its own in memory over a tree that it only reads.
#include <gtest/gtest.h>

#include "platform/run_files.h"

namespace vl {
namespace {

std::string ReadAll(FileSystem& files, std::string_view path) {
  const auto file = files.open(path, FileMode::Read);
  std::string text(file ? static_cast<size_t>(file->size()) : 0, '\0');
  if (file) text.resize(file->read(text.data(), text.size()));
  return text;
}

TEST(RunFilesTest, WritingNeverTouchesTheTreeBelow) {
  MemoryFileSystem below;
  ASSERT_TRUE(below.Add("data/scores.txt", "abc"));
  RunFiles files(&below);
  EXPECT_EQ(ReadAll(files, "data/scores.txt"), "abc");

  const auto changed = files.open("data/Scores.txt", FileMode::ReadWrite);
  EXPECT_EQ(changed, nullptr) << "below, names are those of the tree";
  const auto file = files.open("data/scores.txt", FileMode::ReadWrite);
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(file->write("X", 1), 1u);
  EXPECT_EQ(ReadAll(files, "DATA/SCORES.TXT"), "Xbc") << "its own names ignore case";
  EXPECT_EQ(ReadAll(below, "data/scores.txt"), "abc");

  EXPECT_TRUE(files.remove("Data/scores.txt"));
  EXPECT_EQ(ReadAll(files, "data/scores.txt"), "abc") << "what lies below stays";
  EXPECT_FALSE(files.remove("data/scores.txt"));
  EXPECT_TRUE(files.exists("data/scores.txt"));
}

TEST(RunFilesTest, TheNumberOfFilesIsBounded) {
  RunFiles files(nullptr);
  EXPECT_EQ(files.open("x", FileMode::Read), nullptr);
  EXPECT_EQ(files.open("x", FileMode::ReadWrite), nullptr);
  for (size_t i = 0; i < RunFiles::kMaxFiles; ++i) {
    ASSERT_NE(files.open("f" + std::to_string(i), FileMode::Create), nullptr);
  }
  EXPECT_EQ(files.open("one more", FileMode::Create), nullptr);
  EXPECT_NE(files.open("F0", FileMode::Create), nullptr) << "an old one can be made anew";
  EXPECT_TRUE(files.remove("f1"));
  EXPECT_NE(files.open("one more", FileMode::Create), nullptr);
}

}  // namespace
}  // namespace vl

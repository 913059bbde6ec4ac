// The files of a run: its own in memory over a tree that it only reads.
#include <gtest/gtest.h>

#include <tuple>

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

  const auto file = files.open("DATA/Scores.txt", FileMode::ReadWrite);
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(file->write("X", 1), 1u);
  EXPECT_EQ(ReadAll(files, "DATA/SCORES.TXT"), "Xbc") << "names ignore case";
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

TEST(RunFilesTest, ADriveOfThePeriodOverTheApplicationsFolder) {
  MemoryFileSystem below;
  ASSERT_TRUE(below.Add("Data/Long Name.text", "abc"));
  ASSERT_TRUE(below.Add("Data/long name.texture", "abcd"));
  ASSERT_TRUE(below.Add("what?.vlp", "app"));
  RunFiles files(&below);
  const std::pair<const char*, const char*> paths[] = {
      {"C:\\VORLANE\\Data\\Long Name.text", "abc"},
      {"c:/vorlane/DATA/LONG NAME.TEXT", "abc"},
      {"\\vorlane\\data\\longna~1.tex", "abc"},
      {"Data\\LONGNA~2.TEX", "abcd"},
      {"C:data/long name.text", "abc"},
      {"C:\\..\\VORLANE\\x\\..\\data\\long name.text. .", "abc"},
      {"what?.vlp", "app"},
  };
  for (const auto& [path, content] : paths) EXPECT_EQ(ReadAll(files, path), content) << path;
  std::string name;
  EXPECT_TRUE(files.GetShortPath("data/long name.texture", &name));
  EXPECT_EQ(name, "C:\\VORLANE\\Data\\LONGNA~2.TEX");
  // A file of the run's own goes into the folder as it is spelled, and is listed with what lies below.
  ASSERT_NE(files.open("DATA/New.txt", FileMode::Create), nullptr);
  std::string names;
  for (const FileEntry& entry : files.list("data")) names += entry.name + ";";
  EXPECT_EQ(names, "Long Name.text;long name.texture;New.txt;");
  EXPECT_EQ(files.open("nowhere/New.txt", FileMode::Create), nullptr);
  EXPECT_EQ(files.error, SYS_PATH_NOT_FOUND);
  EXPECT_EQ(files.open("DATA", FileMode::Create), nullptr);
  EXPECT_EQ(files.error, SYS_ACCESS_DENIED);
}

TEST(RunFilesTest, Wildcards) {
  const std::tuple<const char*, const char*, bool> cases[] = {
      {"a.txt", "*.*", true},  {"a", "*.*", true},       {"a", "*.", true},        {"a.b", "*.", false},
      {"A.TXT", "?.t*", true}, {"ab.txt", "?.*", false}, {"abcabd", "*ab?", true}, {"abc", "", false},
      {"a.b.c", "*.c", true},  {"a", "a*", true},        {"a", "a.*", true},       {"", "*", true},
  };
  for (const auto& [name, pattern, matches] : cases) {
    EXPECT_EQ(MatchesWildcard(name, pattern), matches) << name << " " << pattern;
  }
}

TEST(RunFilesTest, ShortNames) {
  std::set<std::string> taken;
  const std::pair<const char*, const char*> cases[] = {
      {"long file.name.html", "LONGFI~1.HTM"},
      {"long filX", "LONGFI~1"},
      {"long file 2.htm", "LONGFI~2.HTM"},
      {"a+b", "A_B~1"},
      {".profile", "PROFIL~1"},
  };
  for (const auto& [name, wanted] : cases) {
    EXPECT_FALSE(IsShortName(name)) << name;
    EXPECT_EQ(MakeShortName(name, taken), wanted) << name;
  }
  for (const char* name : {"a", "ABCDEFGH.TXT", "x~1.y"}) EXPECT_TRUE(IsShortName(name)) << name;
}

}  // namespace
}  // namespace vl

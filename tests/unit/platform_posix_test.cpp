// The POSIX back end: the thread-safe queue, the confined folder, addresses that may be opened.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <thread>

#include "platform/posix/posix_clock.h"
#include "platform/posix/posix_environment.h"
#include "platform/posix/posix_file_system.h"
#include "platform/posix/posix_serial.h"
#include "platform/posix/threaded_queue.h"
#include "platform/run_files.h"

namespace vl {
namespace {

TEST(ThreadedQueue, WakesTheWaiter) {
  ThreadedQueue queue;
  Event e;
  EXPECT_FALSE(queue.waitEvent(e, 0));
  EXPECT_FALSE(queue.waitEvent(e, 1));
  std::thread host([&] {
    for (int i = 0; i < 1000; ++i) {
      Event pushed;
      pushed.type = EventType::KeyDown;
      pushed.code = i;
      queue.Push(pushed);
    }
    queue.PushWithBlob({}, "content");
  });
  for (int i = 0; i < 1000; ++i) {
    ASSERT_TRUE(queue.waitEvent(e, -1));
    EXPECT_EQ(e.code, i);
  }
  ASSERT_TRUE(queue.waitEvent(e, -1));
  host.join();
  EXPECT_EQ(queue.takeBlob(e.id), "content");
  EXPECT_EQ(queue.takeBlob(e.id), "");
}

TEST(ThreadedQueue, FloodsDropWhatCanBeMissed) {
  ThreadedQueue queue;
  Event move;
  move.type = EventType::MouseMove;
  Event key;
  key.type = EventType::KeyDown;
  for (size_t i = 0; i < 2 * ThreadedQueue::kMaxEvents; ++i) queue.Push(move);
  for (size_t i = 0; i < 2 * ThreadedQueue::kMaxEvents; ++i) queue.Push(key);
  Event stop;
  stop.type = EventType::HostStop;
  queue.Push(stop);
  size_t count = 0;
  size_t keys = 0;
  Event e;
  Event last;
  while (queue.waitEvent(e, 0)) {
    ++count;
    keys += e.type == EventType::KeyDown;
    last = e;
  }
  EXPECT_LE(count, ThreadedQueue::kMaxEvents + 1);
  EXPECT_GE(keys, ThreadedQueue::kMaxEvents / 2) << "moves leave room for keys";
  EXPECT_EQ(last.type, EventType::HostStop) << "the end always arrives";
}

TEST(ThreadedQueue, AFloodOfAJoystickEndsWhereItIs) {
  ThreadedQueue queue;
  Event axis;
  axis.type = EventType::JoystickAxis;
  Event button;
  button.type = EventType::JoystickButton;
  for (int i = 0; i < 20000; ++i) {
    axis.x = i % 2;
    axis.y = i;
    queue.Push(axis);
  }
  button.y = 1;
  queue.Push(button);
  button.y = 0;
  queue.Push(button);
  std::map<int32_t, int32_t> last;
  size_t buttons = 0;
  Event e;
  while (queue.waitEvent(e, 0)) {
    if (e.type == EventType::JoystickAxis) last[e.x] = e.y;
    buttons += e.type == EventType::JoystickButton;
  }
  EXPECT_EQ(last, (std::map<int32_t, int32_t>{{0, 19998}, {1, 19999}}));
  EXPECT_EQ(buttons, 2u);
}

TEST(PosixSerial, APortIsADeviceThatThePersonNames) {
  const int far = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
  ASSERT_GE(far, 0);
  ASSERT_EQ(grantpt(far), 0);
  ASSERT_EQ(unlockpt(far), 0);
  setenv("VORLANE_COM7", ptsname(far), 1);
  setenv("VORLANE_COM8", "/dev/null", 1);
  PosixSerialPorts ports;
  EXPECT_EQ(ports.open("COM8"), nullptr) << "no terminal";
  EXPECT_EQ(ports.open(ptsname(far)), nullptr) << "a program names no device";
  const auto port = ports.open("com7");
  ASSERT_NE(port, nullptr);
  if (getuid() != 0) {
    EXPECT_EQ(ports.open("COM7"), nullptr) << "not shared";
  }
  char bytes[8] = {};
  EXPECT_EQ(port->read(bytes, sizeof bytes), 0) << "nothing yet";
  ASSERT_EQ(write(far, "\r\n\x03x", 4), 4);
  EXPECT_EQ(port->read(bytes, sizeof bytes), 4);
  EXPECT_EQ(std::string(bytes, 4), "\r\n\x03x") << "the line changes no byte";
  EXPECT_EQ(port->write("\n\0y", 3), 3);
  EXPECT_EQ(read(far, bytes, sizeof bytes), 3);
  EXPECT_EQ(std::string(bytes, 3), std::string("\n\0y", 3));
  EXPECT_TRUE(port->setRate(19200));
  EXPECT_EQ(port->rate(), 19200u);
  EXPECT_FALSE(port->setRate(14400));
  close(far);
  EXPECT_EQ(port->write("x", 1), -1) << "the other end is gone";
  unsetenv("VORLANE_COM7");
  unsetenv("VORLANE_COM8");
}

class Folder : public ::testing::Test {
 protected:
  void SetUp() override {
    char name[] = "/tmp/vl_posix_XXXXXX";
    ASSERT_NE(mkdtemp(name), nullptr);
    base = name;
    root = base / "root";
    std::filesystem::create_directories(root / "sub" / "deep");
    std::ofstream(base / "secret.txt") << "secret";
    std::ofstream(root / "a.txt") << "alpha";
    std::ofstream(root / "sub" / "b.txt") << "beta";
    std::filesystem::create_symlink("../secret.txt", root / "out.txt");
    std::filesystem::create_symlink(base / "secret.txt", root / "absolute.txt");
    std::filesystem::create_directory_symlink("..", root / "up");
    std::filesystem::create_symlink("sub/b.txt", root / "inside.txt");
    std::filesystem::create_directory_symlink("../../sub", root / "sub" / "deep" / "back");
    std::filesystem::create_symlink("loop.txt", root / "loop.txt");
    std::filesystem::create_symlink("../new.txt", root / "create.txt");
  }
  void TearDown() override { std::filesystem::remove_all(base); }

  std::string Read(FileSystem& files, std::string_view path) {
    const auto file = files.open(path, FileMode::Read);
    if (!file) return "(none)";
    std::string text(size_t(file->size()), '\0');
    EXPECT_EQ(file->read(text.data(), text.size()), text.size());
    return text;
  }

  std::filesystem::path base;
  std::filesystem::path root;
};

TEST_F(Folder, NothingOutsideCanBeReached) {
  PosixFileSystem files(root.string());
  const std::pair<const char*, const char*> cases[] = {
      {"a.txt", "alpha"},
      {"./sub//b.txt", "beta"},
      {"sub/../a.txt", "alpha"},
      {"inside.txt", "beta"},
      {"sub/deep/back/b.txt", "beta"},
      {"../secret.txt", "(none)"},
      {"sub/../../secret.txt", "(none)"},
      {"up/secret.txt", "(none)"},
      {"up/root/a.txt", "(none)"},
      {"out.txt", "(none)"},
      {"absolute.txt", "(none)"},
      {"loop.txt", "(none)"},
      {"/etc/passwd", "(none)"},
      {"sub", "(none)"},
      {"", "(none)"},
      {".", "(none)"},
      {"..", "(none)"},
      {"a.txt/b", "(none)"},
      {"A.TXT", "(none)"},
  };
  for (const auto& [path, content] : cases) {
    EXPECT_EQ(Read(files, path), content) << path;
    EXPECT_EQ(files.exists(path), std::string(content) != "(none)") << path;
  }
  EXPECT_EQ(Read(files, std::string("a.txt\0x", 7)), "(none)");
  EXPECT_EQ(Read(files, std::string(5000, 'x')), "(none)");
  std::string deep;
  for (int i = 0; i < 5000; ++i) deep += "sub/";
  EXPECT_EQ(Read(files, deep + "b.txt"), "(none)");
  EXPECT_EQ(files.open("create.txt", FileMode::Create), nullptr);
  EXPECT_FALSE(std::filesystem::exists(base / "new.txt"));
  EXPECT_FALSE(files.remove("up/secret.txt"));
  EXPECT_TRUE(files.remove("out.txt")) << "the link, not what it points to";
  EXPECT_TRUE(std::filesystem::exists(base / "secret.txt"));
  PosixFileSystem none((base / "missing").string());
  EXPECT_FALSE(none.IsOpen());
  EXPECT_EQ(Read(none, "a.txt"), "(none)");
}

TEST_F(Folder, KeptFilesNeverLeaveTheirFolder) {
  std::filesystem::create_directories(root / "VORLANE");
  std::filesystem::create_symlink(base / "secret.txt", root / "VORLANE" / "absolute.txt");
  std::filesystem::create_symlink("../../secret.txt", root / "VORLANE" / "out.txt");
  std::filesystem::create_directory_symlink("../..", root / "VORLANE" / "up");
  std::ofstream(root / "VORLANE" / "nul.txt") << "device";
  std::ofstream(root / "VORLANE" / "Dot.") << "dot";
  std::ofstream(root / "VORLANE" / "kept.txt") << "kept";
  std::ofstream(root / "VORLANE" / "KEPT.TXT") << "twin";
  std::ofstream(root / "VORLANE" / ".vl-new-1") << "unfinished";
  PosixFileSystem kept(root.string());
  {
    RunFiles files(nullptr, &kept);
    const uint64_t free = files.FreeBytes();
    const char* const unreachable[] = {
        "absolute.txt",
        "out.txt",
        "up/secret.txt",
        "up\\root\\a.txt",
        "../../secret.txt",
        "..\\..\\..\\secret.txt",
        "/etc/passwd",
        "C:\\..\\..\\secret.txt",
        "\\\\server\\share\\x",
        "//server/share/x",
        "\\\\?\\C:\\a.txt",
        "\\\\.\\COM1",
        "nul.txt",
        "NUL",
        "con",
        "COM1",
        "lpt9.x",
        "aux .txt",
        "D:\\x",
        "a.txt:stream",
        "Dot.",
        ".vl-new-1",
        "x|y",
        "C:\\VORLANE\\up\\new.txt",
    };
    for (const char* path : unreachable) {
      EXPECT_EQ(Read(files, path), "(none)") << path;
      EXPECT_EQ(files.open(path, FileMode::ReadWrite), nullptr) << path;
      EXPECT_FALSE(files.remove(path)) << path;
    }
    const std::string withNul("a.txt\0b", 7);
    EXPECT_EQ(files.open(withNul, FileMode::Create), nullptr);
    for (const char* path : {"NUL", "up/new.txt", "\\\\.\\x", "D:x", "nowhere/x", "com1.txt"}) {
      EXPECT_EQ(files.open(path, FileMode::Create), nullptr) << path;
    }
    const std::string either = Read(files, "Kept.txt");
    EXPECT_TRUE(either == "kept" || either == "twin") << "one of the two, whichever is listed first";
    EXPECT_EQ(files.list("C:\\VORLANE").size(), 1u);
    // What a program makes over a link replaces the link, never what it points to.
    EXPECT_FALSE(files.replace("out.txt", {}));
    EXPECT_FALSE(std::filesystem::exists(base / "new.txt"));
    ASSERT_NE(files.open("new.txt. ", FileMode::Create), nullptr);
    ASSERT_NE(files.open("NEW.TXT", FileMode::Create), nullptr) << "the same file";
    const std::vector<uint8_t> bytes{'u', 'm', 'l'};
    EXPECT_TRUE(files.replace("C:\\WINDOWS\\\xFC.ini", bytes));
    EXPECT_TRUE(files.replace("C:\\WINDOWS\\TEMP\\gone.tmp", bytes));
    EXPECT_TRUE(files.replace("second.dat", bytes));
    EXPECT_TRUE(files.rename("SECOND.DAT", "Second.Dat"));
    EXPECT_EQ(files.FreeBytes(), free - 9) << "three files of three bytes";
  }
  std::ifstream secret(base / "secret.txt");
  std::string content;
  secret >> content;
  EXPECT_EQ(content, "secret");
  EXPECT_TRUE(std::filesystem::exists(root / "VORLANE" / "new.txt"));
  EXPECT_TRUE(std::filesystem::exists(root / "VORLANE" / "Second.Dat"));
  EXPECT_TRUE(std::filesystem::exists(root / "WINDOWS" / "\xC3\xBC.ini"));
  EXPECT_FALSE(std::filesystem::exists(root / "WINDOWS" / "TEMP"));
  RunFiles again(nullptr, &kept);
  EXPECT_EQ(Read(again, "c:\\windows\\\xDC.INI"), "uml");
  EXPECT_EQ(Read(again, "second.dat"), "uml");
  EXPECT_TRUE(again.remove("second.dat"));
  EXPECT_FALSE(std::filesystem::exists(root / "VORLANE" / "Second.Dat"));
}

TEST_F(Folder, FilesReadAndWrite) {
  PosixFileSystem files(root.string());
  {
    const auto file = files.open("sub/new.bin", FileMode::Create);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->write("0123456789", 10), 10u);
    EXPECT_EQ(std::filesystem::file_size(root / "sub" / "new.bin"), 10u) << "written when it is written";
    EXPECT_TRUE(file->seek(4));
    char c[3];
    EXPECT_EQ(file->read(c, 3), 3u);
    EXPECT_EQ(std::string(c, 3), "456");
    EXPECT_EQ(file->position(), 7);
    EXPECT_TRUE(file->seek(9));
    EXPECT_EQ(file->read(c, 3), 1u);
    EXPECT_FALSE(file->failed()) << "the end is no failure";
    EXPECT_FALSE(file->seek(-1));
  }
  const auto file = files.open("sub/new.bin", FileMode::ReadWrite);
  file->write("AB", 2);
  EXPECT_EQ(Read(files, "sub/new.bin"), "AB23456789");
  files.open("sub/new.bin", FileMode::Create);
  EXPECT_EQ(Read(files, "sub/new.bin"), "");
  const auto readOnly = files.open("a.txt", FileMode::Read);
  EXPECT_EQ(readOnly->write("x", 1), 0u);
  EXPECT_TRUE(readOnly->failed());
  EXPECT_TRUE(files.remove("sub/new.bin"));
  EXPECT_FALSE(files.remove("sub/new.bin"));
  EXPECT_FALSE(files.remove("sub"));
  EXPECT_EQ(files.open("no/such/place.txt", FileMode::Create), nullptr);
  ASSERT_EQ(mkfifo((root / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(files.open("pipe", FileMode::Read), nullptr) << "a pipe would never answer";
}

TEST(PosixEnvironment, OpensAddressesOnly) {
  const std::pair<const char*, bool> cases[] = {{"http://example.com/", true},
                                                {"HTTPS://example.com", true},
                                                {"mailto:a@b.c", true},
                                                {"http://", false},
                                                {"file:///etc/passwd", false},
                                                {"--help", false},
                                                {"/usr/bin/true", false},
                                                {"javascript:x", false},
                                                {"http://a b", false},
                                                {"http://a\nb", false},
                                                {"", false}};
  for (const auto& [url, allowed] : cases) EXPECT_EQ(IsBrowsableUrl(url), allowed) << url;
}

TEST(PosixEnvironment, LanguageComesFromTheLocale) {
  PosixEnvironment environment;
  const auto with = [&](const char* all, const char* lang) {
    setenv("LC_ALL", all, 1);
    setenv("LANG", lang, 1);
    unsetenv("LC_MESSAGES");
    return environment.isFrench();
  };
  EXPECT_TRUE(with("", "fr_CA.UTF-8"));
  EXPECT_FALSE(with("", "en_US.UTF-8"));
  EXPECT_FALSE(with("C", "fr_FR"));
  unsetenv("LC_ALL");
  unsetenv("LANG");
  EXPECT_FALSE(environment.isFrench());
}

TEST(PosixClock, RunsForward) {
  PosixClock clock(7);
  EXPECT_EQ(clock.seed(), 7u);
  const uint32_t first = clock.nowMs();
  EXPECT_GE(clock.nowMs(), first);
  EXPECT_LT(first, 10000u) << "counts from the start of the run";
  EXPECT_GE(clock.localTime().year, 2024);
}

}  // namespace
}  // namespace vl

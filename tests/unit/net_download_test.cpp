// The download queue over a double of the network: one at a time, block by block, stops, failures and local files.
#include <gtest/gtest.h>

#include <map>

#include "net/download.h"
#include "platform/memory_files.h"
#include "platform/temporary_file.h"

namespace vl {
namespace {

// Serves what it was given, in pieces; "" is a server that fails at once.
class FakeTransfers final : public Transfers {
 public:
  std::map<std::string, std::string> pages;
  std::vector<std::string> started;
  bool failsBehindFirstBlock = false;
  int open = 0;

  TransferId start(const std::string& url, const std::string&) override {
    started.push_back(url);
    const auto page = pages.find(url);
    if (page == pages.end()) return 0;
    running_[++next_] = page->second;
    ++open;
    return next_;
  }
  TransferProgress read(TransferId id, std::string& bytes, size_t most) override {
    std::string& rest = running_[id];
    if (rest.empty()) return {failsBehindFirstBlock ? TransferState::Failed : TransferState::Done, 0};
    bytes = rest.substr(0, most);
    rest.erase(0, most);
    if (failsBehindFirstBlock) rest.clear();
    return {TransferState::Receiving, 20000};
  }
  void cancel(TransferId id) override { open -= static_cast<int>(running_.erase(id)); }
  std::string resolve(std::string_view, std::string_view url) override { return std::string(url); }

 private:
  std::map<TransferId, std::string> running_;
  TransferId next_ = 0;
};

class DownloadTest : public ::testing::Test {
 protected:
  struct Told {
    std::string cookie;
    uint32_t done;
    DownloadState state;
  };
  DownloadTest() {
    downloader.callback = [this](const std::string& cookie, uint32_t, uint32_t done, DownloadState state) {
      told.push_back({cookie, done, state});
    };
  }
  void Finish() {
    while (downloader.Step()) {
    }
  }
  std::string Content(const char* path) {
    const auto bytes = files.Content(path);
    return {bytes.begin(), bytes.end()};
  }
  FakeTransfers net;
  MemoryFileSystem files;
  std::vector<Told> told;
  Downloader downloader{&net, files, "T", "agent"};
};

TEST_F(DownloadTest, BlocksInOrderAndTheFileInTheEnd) {
  net.pages = {{"http://a/1.bin", std::string(20000, 'a')}, {"http://a/2", "second"}};
  ASSERT_TRUE(downloader.Start("http://a/1.bin", "one"));
  ASSERT_TRUE(downloader.Start("HTTP://A\\1.BIN", "first")) << "the same, with another cookie";
  ASSERT_TRUE(downloader.Start("http://a/2", "second"));
  downloader.Step();
  EXPECT_EQ(net.started.size(), 1u) << "one transfer at a time";
  uint32_t total = 0;
  uint32_t done = 0;
  EXPECT_TRUE(downloader.GetProgress("http://a/1.bin", total, done));
  EXPECT_EQ(total, 20000u);
  EXPECT_EQ(done, 8192u);
  EXPECT_TRUE(files.exists("T\\cfc1.bin"));
  EXPECT_TRUE(files.exists("T\\cfc1.tmp")) << "an extension of its own only when it is short";
  Finish();
  ASSERT_EQ(told.size(), 6u);
  EXPECT_EQ(told[2].done, 20000u);
  EXPECT_EQ(told[3].state, DownloadState::Downloaded);
  EXPECT_EQ(Content("first").size(), 20000u);
  EXPECT_EQ(Content("second"), "second");
  EXPECT_FALSE(files.exists("one"));
  EXPECT_EQ(net.open, 0);
  // Asked for again, it is fetched again.
  ASSERT_TRUE(downloader.Start("http://a/2", "third"));
  Finish();
  EXPECT_EQ(Content("third"), "second");
}

TEST_F(DownloadTest, FailuresAndStops) {
  net.pages = {{"http://a/1", std::string(30000, 'a')}, {"http://a/2", std::string(30000, 'b')}};
  downloader.Start("http://a/absent", "x");
  downloader.Start("http://a/1", "one");
  downloader.Start("http://a/2", "two");
  downloader.Step();
  ASSERT_FALSE(told.empty());
  EXPECT_EQ(told[0].state, DownloadState::Aborted);
  downloader.Stop("http://a/1");
  downloader.Stop("http://a/2");  // still waits its turn
  Finish();
  for (const Told& t : told) EXPECT_NE(t.state, DownloadState::Downloaded);
  EXPECT_FALSE(files.exists("one"));
  EXPECT_FALSE(files.exists("two"));
  EXPECT_EQ(net.open, 0);
  net.failsBehindFirstBlock = true;
  told.clear();
  downloader.Start("http://a/1", "one");
  Finish();
  EXPECT_EQ(told.back().state, DownloadState::Aborted);
  EXPECT_FALSE(files.exists("T\\cfc2.tmp")) << "nothing half is left";
}

TEST_F(DownloadTest, LocalAddresses) {
  struct Case {
    const char* url;
    bool isLocal;
    bool exists;
    const char* path;
  };
  files.Add("C:\\x.bin", "x");
  const Case cases[] = {
      {"file:///C:/x.bin", true, true, "C:\\x.bin"},
      {"file://C:/x.bin", true, true, "C:\\x.bin"},
      {"file:///junk/C:/x.bin", true, true, "C:\\x.bin"},
      {"file:///C:/y.bin", true, false, "C:\\y.bin"},
      {"file:///nothing", true, false, ""},
      {"C:/x.bin", true, true, "C:\\x.bin"},
      {"C:\\y.bin", false, false, ""},
      {"x", false, false, ""},
      {"http://a/x", false, false, ""},
  };
  for (const Case& c : cases) {
    std::string path;
    bool exists = false;
    EXPECT_EQ(downloader.ResolveLocal(c.url, path, exists), c.isLocal) << c.url;
    EXPECT_EQ(exists, c.exists) << c.url;
    EXPECT_EQ(path, c.path) << c.url;
  }
  EXPECT_TRUE(downloader.Start("file:///C:/x.bin", "copy"));
  ASSERT_EQ(told.size(), 1u) << "at once";
  EXPECT_EQ(told[0].state, DownloadState::Downloaded);
  EXPECT_EQ(Content("copy"), "x");
  EXPECT_FALSE(downloader.Start("file:///C:/y.bin", "copy"));
}

TEST(TemporaryFiles, FreeNames) {
  MemoryFileSystem files;
  files.Add("T\\vrl1.dwn", "");
  EXPECT_EQ(MakeTemporaryFile(files, "T", "vrl", ".d?w/n"), "T\\vrl2.dwn");
  EXPECT_EQ(MakeTemporaryFile(files, "T", "vrl", "dwn"), "T\\vrl3.dwn");
}

TEST(BlockingDownload, WaitsAndGivesUp) {
  FakeTransfers net;
  net.pages = {{"http://a/1", std::string(30000, 'a')}};
  MemoryFileSystem files;
  {
    BlockingDownloader downloader(&net, files, "T", "agent");
    EXPECT_TRUE(downloader.StartAndWait("http://a/1", "out", [] { return true; }));
    EXPECT_EQ(files.Content("out").size(), 30000u);
    EXPECT_FALSE(downloader.StartAndWait("http://a/2", "none", [] { return true; }));
    EXPECT_FALSE(downloader.StartAndWait("http://a/1", "stopped", [] { return false; })) << "the run is stopped";
  }
  EXPECT_EQ(files.Paths(), std::vector<std::string>{"out"}) << "its temporary files go with it";
  EXPECT_EQ(net.open, 0);
}

}  // namespace
}  // namespace vl

// Downloader: fetches files to temporary files, one after the other, and tells of their progress.
//
// Its queue is served by Step, which the pump calls: one block of at most kBlock bytes a call, so that a stop takes
// effect within a block. Addresses on the local disk are there at once. It deletes the temporary files that it made
// when it goes.
#pragma once

#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/file_system.h"
#include "platform/transfers.h"

namespace vl {

class Downloader;

enum class DownloadState : uint32_t { Pending = 0, Downloading = 1, Downloaded = 2, Aborted = 3 };
enum class DownloadResult : uint32_t { Good = 0, Local = 1, Server = 2 };  // Local: a local failure, or a stop

// One transfer.
struct DownloadItem {
  std::string url;
  std::string localPath;  // the temporary file
  std::unique_ptr<File> file;
  TransferId connection = 0;
  DownloadState state = DownloadState::Pending;
  std::string cookie;  // path of the file that the caller wants in the end; may be empty
  DownloadResult result = DownloadResult::Good;
  bool stopRequested = false;
  uint32_t total = 0;  // bytes; 0 when unknown
  uint32_t done = 0;   // bytes written
};

struct DownloadQueue {
  std::list<DownloadItem> pending;  // in order of arrival; the first is `current` once it is taken
  std::list<DownloadItem> done;
  DownloadItem* current = nullptr;  // in `pending`
};

class Downloader {
 public:
  static constexpr size_t kBlock = 8192;
  static constexpr size_t kMaxItems = 1024;

  // `transfers` may be null: then only local addresses are found. Both outlive it. `tempFolder` is without a final
  // separator; `agent` names the program to servers.
  Downloader(Transfers* transfers, FileSystem& files, std::string tempFolder, std::string agent)
      : transfers_(transfers), files_(files), tempFolder_(std::move(tempFolder)), agent_(std::move(agent)) {}
  virtual ~Downloader();
  Downloader(const Downloader&) = delete;
  Downloader& operator=(const Downloader&) = delete;

  // False when nothing begins. A file that is there at once is told of before the call returns.
  virtual bool Start(const std::string& url, const std::string& cookie);
  virtual void Stop(const std::string& url);
  // False for an address that isn't waiting and wasn't fetched.
  virtual bool GetProgress(const std::string& url, uint32_t& total, uint32_t& done);
  // True when the address is on the local disk; `exists` tells whether the file is there.
  virtual bool ResolveLocal(const std::string& url, std::string& path, bool& exists);
  virtual void Notify(DownloadItem& item);
  // A round of the queue. True when there is more to do.
  bool Step();

  // Cookie, total, done, state. May start and stop downloads.
  std::function<void(const std::string& cookie, uint32_t total, uint32_t done, DownloadState state)> callback;

 private:
  DownloadItem* Find(std::list<DownloadItem>& items, const std::string& url);
  void TakeNext();
  void Open(DownloadItem& item);
  void ReadBlock(DownloadItem& item);
  void Abort(DownloadItem& item);
  void Close(DownloadItem& item);

  Transfers* transfers_;
  FileSystem& files_;
  std::string tempFolder_;
  std::string agent_;
  std::vector<std::string> tempFiles_;
  DownloadQueue queue_;
};

// For a download that the caller waits for.
class BlockingDownloader final : public Downloader {
 public:
  using Downloader::Downloader;
  // Starts, and calls `pump` again and again until the download has ended or `pump` gives false. True when the file
  // lies at `path`.
  bool StartAndWait(const std::string& url, const std::string& path, const std::function<bool()>& pump);
  void Notify(DownloadItem& item) override;

 private:
  bool done_ = false;
  std::string resultPath_;
};

// Ignoring case, and which slash it is.
bool IsSameAddress(std::string_view a, std::string_view b);

}  // namespace vl

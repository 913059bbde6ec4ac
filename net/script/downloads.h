// The downloads of a run: the records that System keeps, their events, and the form that waits.
#pragma once

#include <list>
#include <memory>

#include "interpreter/downloads.h"
#include "interpreter/interpretor.h"
#include "net/download.h"

namespace vl {

class Downloads final : public CDownloads {
 public:
  explicit Downloads(CInterpretor& interpreter);
  static std::unique_ptr<CDownloads> Make(CInterpretor& interpreter) {
    return std::make_unique<Downloads>(interpreter);
  }

  std::string DownloadFile(const std::string& url, bool inBackground) override;
  void StopFileDownload(const std::string& url) override;

 private:
  struct DownloadRecord {
    std::string url;
    std::string localPath;
    uint32_t total = 0;
    uint32_t done = 0;
    DownloadState status = DownloadState::Pending;
    bool changed = false;  // an event is due
  };

  // The whole address that a program's text means.
  std::string AddressOf(const std::string& url) const;
  std::string InBackground(const std::string& url);
  std::string Waited(const std::string& url);
  void OnProgress(const std::string& localPath, uint32_t total, uint32_t done, DownloadState state);
  PollNeed Poll();
  void PostEvents();

  CInterpretor& interpreter_;
  std::list<DownloadRecord> records_;
  std::unique_ptr<Downloader> downloader_;
};

}  // namespace vl

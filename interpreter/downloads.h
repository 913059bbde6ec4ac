// CDownloads: what System has of downloads. Made on first use, by the library that can fetch; it goes with the run.
#pragma once

#include <string>

namespace vl {

struct BlockRecord;

class CDownloads {
 public:
  virtual ~CDownloads() = default;
  // The path of the local file; "" when it failed. With `inBackground` the transfer only begins.
  virtual std::string DownloadFile(const std::string& url, bool inBackground) = 0;
  virtual void StopFileDownload(const std::string& url) = 0;

  const BlockRecord* onDownload = nullptr;
};

}  // namespace vl

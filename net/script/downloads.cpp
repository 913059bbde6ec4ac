#include "net/script/downloads.h"

#include <algorithm>

#include "platform/temporary_file.h"

namespace vl {
namespace {

constexpr uint32_t kStatusFamily = 0xBCBC0000;
constexpr const char* kAgent = "Vorlane Pro";
constexpr const char* kPrefix = "vrl";
constexpr const char* kExtension = ".dwn";
// Longest sleep of the form that waits; the transfer is looked at between two.
constexpr int kWaitMs = 5;
// Blocks in one poll, so that a fast server doesn't hold the program up.
constexpr int kBlocksOfPoll = 32;

std::string Trimmed(const std::string& text) {
  const size_t first = text.find_first_not_of(' ');
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

}  // namespace

Downloads::Downloads(CInterpretor& interpreter) : interpreter_(interpreter) {
  interpreter.AddPoll([this] { return Poll(); });
}

std::string Downloads::AddressOf(const std::string& url) const {
  std::string address = url;
  const std::string& base = interpreter_.param.baseUrl;
  if (!base.empty() && url.find(':') == std::string::npos) {
    const bool hasSlash = base.find('/') != std::string::npos;
    size_t last = base.rfind('\\');
    if (last == std::string::npos) last = base.rfind('/');
    address = (last == std::string::npos ? std::string() : base.substr(0, last + 1)) + url;
    if (hasSlash) std::replace(address.begin(), address.end(), '\\', '/');
  }
  address = Trimmed(address);
  Transfers* const transfers = interpreter_.services.transfers;
  // Local names stay as they are.
  if (!transfers || address.find("://") == std::string::npos || address.find("file:") == 0) return address;
  const std::string whole = transfers->resolve({}, address);
  return whole.empty() ? address : whole;
}

std::string Downloads::DownloadFile(const std::string& url, bool inBackground) {
  if (!interpreter_.services.files || !interpreter_.services.environment) return {};
  const std::string address = AddressOf(url);
  return inBackground ? InBackground(address) : Waited(address);
}

std::string Downloads::InBackground(const std::string& url) {
  FileSystem& files = *interpreter_.services.files;
  const std::string folder = interpreter_.services.environment->tempDirectory();
  if (!downloader_) {
    downloader_ = std::make_unique<Downloader>(interpreter_.services.transfers, files, folder, kAgent);
    downloader_->callback = [this](const std::string& cookie, uint32_t total, uint32_t done, DownloadState state) {
      OnProgress(cookie, total, done, state);
    };
  }
  for (const DownloadRecord& record : records_) {
    if (IsSameAddress(record.url, url)) return record.localPath;
  }
  DownloadRecord& record = records_.emplace_back();
  record.url = url;
  record.localPath = MakeTemporaryFile(files, folder, kPrefix, kExtension);
  const std::string path = record.localPath;
  if (!path.empty() && downloader_->Start(url, path)) {
    interpreter_.AddTempFile(path);
    return path;
  }
  records_.pop_back();
  if (!path.empty()) files.remove(path);
  return {};
}

std::string Downloads::Waited(const std::string& url) {
  FileSystem& files = *interpreter_.services.files;
  const std::string folder = interpreter_.services.environment->tempDirectory();
  const std::string path = MakeTemporaryFile(files, folder, kPrefix, kExtension);
  if (path.empty()) return {};
  BlockingDownloader downloader(interpreter_.services.transfers, files, folder, kAgent);
  const bool isThere = downloader.StartAndWait(url, path, [this] {
    interpreter_.messages->WaitForMessage(kWaitMs);
    interpreter_.PumpMessages();
    return !interpreter_.param.stop.load(std::memory_order_relaxed);
  });
  if (!isThere) {
    files.remove(path);
    return {};
  }
  interpreter_.AddTempFile(path);
  return path;
}

void Downloads::StopFileDownload(const std::string& url) {
  if (downloader_) downloader_->Stop(AddressOf(url));
}

void Downloads::OnProgress(const std::string& localPath, uint32_t total, uint32_t done, DownloadState state) {
  for (DownloadRecord& record : records_) {
    if (!IsSameAddress(record.localPath, localPath)) continue;
    record.changed = record.changed || record.total != total || record.done != done || record.status != state;
    record.total = total;
    record.done = done;
    record.status = state;
  }
}

PollNeed Downloads::Poll() {
  if (!downloader_) return PollNeed::None;
  bool isBusy = true;
  for (int block = 0; block < kBlocksOfPoll && isBusy; ++block) isBusy = downloader_->Step();
  PostEvents();
  return isBusy ? PollNeed::Soon : PollNeed::None;
}

// A record whose end was told goes a round later.
void Downloads::PostEvents() {
  for (auto record = records_.begin(); record != records_.end();) {
    if (record->changed) {
      record->changed = false;
      if (onDownload) {
        std::vector<CValue> arguments;
        arguments.reserve(5);
        arguments.push_back(interpreter_.MakeValue(std::string_view(record->url)));
        arguments.push_back(interpreter_.MakeValue(std::string_view(record->localPath)));
        arguments.push_back(interpreter_.MakeValue(static_cast<int32_t>(record->done)));
        arguments.push_back(interpreter_.MakeValue(static_cast<int32_t>(record->total)));
        arguments.push_back(
            interpreter_.MakeValue(static_cast<int32_t>(kStatusFamily + static_cast<uint32_t>(record->status))));
        interpreter_.PostEvent(onDownload, std::move(arguments));
      }
      ++record;
    } else if (record->status == DownloadState::Downloaded || record->status == DownloadState::Aborted) {
      record = records_.erase(record);
    } else {
      ++record;
    }
  }
}

}  // namespace vl

#include "net/download.h"

#include <algorithm>
#include <cctype>

#include "platform/temporary_file.h"

namespace vl {
namespace {

constexpr size_t kLongestExtension = 5;
constexpr std::string_view kFileScheme = "file://";

bool StartsWith(std::string_view text, std::string_view start) {
  return text.size() >= start.size() && std::equal(start.begin(), start.end(), text.begin(), [](char a, char b) {
           return a == std::tolower(static_cast<unsigned char>(b));
         });
}

std::string Backslashed(std::string_view text) {
  std::string result(text);
  std::replace(result.begin(), result.end(), '/', '\\');
  return result;
}

std::string ExtensionOf(const std::string& url) {
  const size_t dot = url.rfind('.');
  if (dot == std::string::npos || url.size() - dot > kLongestExtension) return ".tmp";
  return url.substr(dot);
}

bool CopyFile(FileSystem& files, const std::string& from, const std::string& to) {
  const auto source = files.open(from, FileMode::Read);
  const auto target = source ? files.open(to, FileMode::Create) : nullptr;
  if (!target) return false;
  std::vector<char> block(Downloader::kBlock);
  for (;;) {
    const size_t size = source->read(block.data(), block.size());
    if (size == 0) return !source->failed();
    if (target->write(block.data(), size) != size) return false;
  }
}

}  // namespace

bool IsSameAddress(std::string_view a, std::string_view b) {
  const auto fold = [](char c) {
    return c == '\\' ? '/' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  };
  return a.size() == b.size() &&
         std::equal(a.begin(), a.end(), b.begin(), [&](char x, char y) { return fold(x) == fold(y); });
}

Downloader::~Downloader() {
  for (DownloadItem& item : queue_.pending) Close(item);
  queue_.pending.clear();
  queue_.done.clear();
  for (const std::string& path : tempFiles_) files_.remove(path);
}

DownloadItem* Downloader::Find(std::list<DownloadItem>& items, const std::string& url) {
  const auto found =
      std::find_if(items.begin(), items.end(), [&](const DownloadItem& item) { return IsSameAddress(item.url, url); });
  return found == items.end() ? nullptr : &*found;
}

bool Downloader::ResolveLocal(const std::string& url, std::string& path, bool& exists) {
  exists = false;
  if (StartsWith(url, kFileScheme)) {
    std::string rest = url.substr(StartsWith(url, "file:///") ? kFileScheme.size() + 1 : kFileScheme.size());
    rest = Backslashed(rest);
    const size_t colon = rest.find(":\\");
    if (colon == std::string::npos || colon == 0) return true;
    path = colon > 1 ? rest.substr(colon - 1) : rest;
    exists = files_.exists(path);
    return true;
  }
  if (url.size() < 3) return false;
  const std::string text = Backslashed(url);
  const bool isShare = text[0] == '\\' && text[1] == '\\';
  const bool isDrive = std::isalpha(static_cast<unsigned char>(text[0])) && text[1] == ':' && text[2] == '\\';
  if ((!isShare && !isDrive) || !files_.exists(text)) return false;
  path = text;
  exists = true;
  return true;
}

bool Downloader::Start(const std::string& url, const std::string& cookie) {
  std::string local;
  bool exists = false;
  if (ResolveLocal(url, local, exists)) {
    if (!exists) return false;
    if (!cookie.empty()) {
      DownloadItem item;
      item.url = url;
      item.localPath = local;
      item.cookie = cookie;
      item.state = DownloadState::Downloaded;
      Notify(item);
    }
    return true;
  }
  if (!transfers_) return false;
  for (auto item = queue_.done.begin(); item != queue_.done.end(); ++item) {
    if (!IsSameAddress(item->url, url)) continue;
    item->cookie = cookie;
    item->state = DownloadState::Pending;
    item->stopRequested = false;
    queue_.pending.splice(queue_.pending.end(), queue_.done, item);
    return true;
  }
  if (DownloadItem* waiting = Find(queue_.pending, url)) {
    waiting->cookie = cookie;
    return true;
  }
  if (queue_.pending.size() + queue_.done.size() >= kMaxItems) return false;
  DownloadItem item;
  item.url = url;
  item.cookie = cookie;
  item.localPath = MakeTemporaryFile(files_, tempFolder_, "cfc", ExtensionOf(url));
  if (item.localPath.empty()) return false;
  tempFiles_.push_back(item.localPath);
  queue_.pending.push_back(std::move(item));
  return true;
}

void Downloader::Stop(const std::string& url) {
  DownloadItem* item = Find(queue_.pending, url);
  if (!item) return;
  // One that hasn't been taken yet is stopped as it is opened.
  if (item->state != DownloadState::Downloaded && item->state != DownloadState::Aborted) item->stopRequested = true;
  if (callback) callback(item->cookie, item->total, item->done, item->state);
}

bool Downloader::GetProgress(const std::string& url, uint32_t& total, uint32_t& done) {
  const DownloadItem* item = Find(queue_.pending, url);
  if (!item) item = Find(queue_.done, url);
  if (!item) return false;
  total = item->total;
  done = item->done;
  return true;
}

void Downloader::Notify(DownloadItem& item) {
  if (item.state == DownloadState::Downloaded && !item.cookie.empty()) CopyFile(files_, item.localPath, item.cookie);
  if (callback) callback(item.cookie, item.total, item.done, item.state);
}

void Downloader::TakeNext() {
  if (queue_.current) queue_.done.splice(queue_.done.end(), queue_.pending, queue_.pending.begin());
  queue_.current = queue_.pending.empty() ? nullptr : &queue_.pending.front();
  if (!queue_.current) return;
  Open(*queue_.current);
  if (queue_.current->state != DownloadState::Downloading) Notify(*queue_.current);
}

bool Downloader::Step() {
  const auto isOver = [this] {
    return queue_.current &&
           (queue_.current->state == DownloadState::Downloaded || queue_.current->state == DownloadState::Aborted);
  };
  if (!queue_.current) TakeNext();
  if (queue_.current && !isOver()) {
    DownloadItem& item = *queue_.current;
    if (item.stopRequested) {
      Abort(item);
      Notify(item);
    } else {
      ReadBlock(item);
    }
  }
  while (isOver()) TakeNext();
  return queue_.current != nullptr;
}

void Downloader::Open(DownloadItem& item) {
  item.result = DownloadResult::Server;
  item.state = DownloadState::Aborted;
  item.total = 0;
  item.done = 0;
  item.connection = transfers_->start(item.url, agent_);
  if (!item.connection) return;
  item.file = files_.open(item.localPath, FileMode::Create);
  if (!item.file) {
    item.result = DownloadResult::Local;
    Close(item);
    return;
  }
  item.result = DownloadResult::Good;
  item.state = DownloadState::Downloading;
}

void Downloader::ReadBlock(DownloadItem& item) {
  std::string bytes;
  const TransferProgress progress = transfers_->read(item.connection, bytes, kBlock);
  item.total = static_cast<uint32_t>(std::min<uint64_t>(progress.total, UINT32_MAX));
  if (!bytes.empty()) {
    if (item.file->write(bytes.data(), bytes.size()) != bytes.size()) {
      Abort(item);
    } else {
      item.done += static_cast<uint32_t>(bytes.size());
    }
    Notify(item);
    return;
  }
  if (progress.state == TransferState::Done) {
    item.state = DownloadState::Downloaded;
    Close(item);
    Notify(item);
  } else if (progress.state == TransferState::Failed) {
    // Before the first byte it is the server that failed, behind it the reading.
    item.result = item.done == 0 ? DownloadResult::Server : DownloadResult::Local;
    item.state = DownloadState::Aborted;
    Close(item);
    Notify(item);
  }
}

void Downloader::Abort(DownloadItem& item) {
  item.result = DownloadResult::Local;
  item.state = DownloadState::Aborted;
  Close(item);
}

void Downloader::Close(DownloadItem& item) {
  item.file.reset();
  if (item.state != DownloadState::Downloaded) files_.remove(item.localPath);
  if (item.connection && transfers_) transfers_->cancel(item.connection);
  item.connection = 0;
}

void BlockingDownloader::Notify(DownloadItem& item) {
  if (item.state == DownloadState::Downloaded) resultPath_ = item.localPath;
  Downloader::Notify(item);
  done_ = done_ || item.state == DownloadState::Downloaded || item.state == DownloadState::Aborted;
}

bool BlockingDownloader::StartAndWait(const std::string& url, const std::string& path,
                                      const std::function<bool()>& pump) {
  done_ = false;
  resultPath_.clear();
  if (!Start(url, path)) return false;
  while (!done_) {
    Step();
    if (!done_ && !pump()) return false;
  }
  return !resultPath_.empty();
}

}  // namespace vl

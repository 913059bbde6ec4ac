#include "platform/posix/curl_transfers.h"

#include <curl/curl.h>

#include <algorithm>
#include <cstring>
#include <mutex>

namespace vl {
namespace {

constexpr size_t kMaxWaiting = 256 * 1024;
constexpr int kMaxRedirects = 10;
constexpr size_t kMaxTransfers = 64;
constexpr long kConnectSeconds = 30;
// A server that sends less than a byte a second for so long has gone.
constexpr long kStalledSeconds = 60;
constexpr long kBadStatus = 400;
constexpr const char* kProtocols = "http,https,ftp";

struct Free {
  void operator()(CURLU* u) const { curl_url_cleanup(u); }
  void operator()(CURL* c) const { curl_easy_cleanup(c); }
  void operator()(char* text) const { curl_free(text); }
};
using Url = std::unique_ptr<CURLU, Free>;

std::string PartOf(CURLU* url, CURLUPart part, unsigned flags = 0) {
  char* text = nullptr;
  if (curl_url_get(url, part, &text, flags) != CURLUE_OK) return {};
  const std::unique_ptr<char, Free> owned(text);
  return text;
}

Url Parse(const std::string& text) {
  Url url(curl_url());
  // "www.name" without a scheme counts as HTTP.
  if (url && curl_url_set(url.get(), CURLUPART_URL, text.c_str(), CURLU_GUESS_SCHEME) != CURLUE_OK) url.reset();
  return url;
}

void StartCurl() {
  static std::once_flag once;
  std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
}

}  // namespace

struct CurlTransfers::Transfer {
  std::unique_ptr<CURL, Free> easy;
  std::string agent;
  std::string waiting;  // came and wasn't read
  std::string location;
  TransferState state = TransferState::Opening;
  uint64_t total = 0;
  int redirects = 0;
  bool isPaused = false;
  bool isOver = false;  // all has come

  static size_t Write(char* bytes, size_t size, size_t count, void* self) {
    auto& t = *static_cast<Transfer*>(self);
    long status = 0;
    curl_easy_getinfo(t.easy.get(), CURLINFO_RESPONSE_CODE, &status);
    // The body of a redirect or an error is nobody's.
    if (status >= 300 && status < 1000 && t.IsHttp()) return size * count;
    if (t.waiting.size() >= kMaxWaiting) {
      t.isPaused = true;
      return CURL_WRITEFUNC_PAUSE;
    }
    curl_off_t length = -1;
    curl_easy_getinfo(t.easy.get(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
    t.total = length > 0 ? static_cast<uint64_t>(length) : 0;
    t.state = TransferState::Receiving;
    t.waiting.append(bytes, size * count);
    return size * count;
  }
  bool IsHttp() const {
    char* scheme = nullptr;
    curl_easy_getinfo(easy.get(), CURLINFO_SCHEME, &scheme);
    return scheme && (scheme[0] == 'h' || scheme[0] == 'H');
  }
};

struct CurlTransfers::Multi {
  CURLM* handle = curl_multi_init();
  ~Multi() { curl_multi_cleanup(handle); }
};

CurlTransfers::CurlTransfers(MayReach mayReach) : mayReach_(std::move(mayReach)) {
  StartCurl();
  multi_ = std::make_unique<Multi>();
}

CurlTransfers::~CurlTransfers() {
  while (!transfers_.empty()) cancel(transfers_.begin()->first);
}

bool CurlTransfers::Begin(Transfer& transfer, const std::string& text) {
  const Url url = Parse(text);
  if (!url) return false;
  const std::string scheme = PartOf(url.get(), CURLUPART_SCHEME);
  if (scheme != "http" && scheme != "https" && scheme != "ftp") return false;
  const std::string port = PartOf(url.get(), CURLUPART_PORT, CURLU_DEFAULT_PORT);
  const std::string host = PartOf(url.get(), CURLUPART_HOST);
  if (mayReach_ && !mayReach_(host, static_cast<uint16_t>(std::strtoul(port.c_str(), nullptr, 10)))) return false;
  transfer.easy.reset(curl_easy_init());
  CURL* const easy = transfer.easy.get();
  if (!easy) return false;
  const std::string whole = PartOf(url.get(), CURLUPART_URL);
  curl_easy_setopt(easy, CURLOPT_URL, whole.c_str());
  curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, kProtocols);
  curl_easy_setopt(easy, CURLOPT_USERAGENT, transfer.agent.c_str());
  curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(easy, CURLOPT_NOPROXY, "*");
  curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT, kConnectSeconds);
  curl_easy_setopt(easy, CURLOPT_LOW_SPEED_LIMIT, 1L);
  curl_easy_setopt(easy, CURLOPT_LOW_SPEED_TIME, kStalledSeconds);
  curl_easy_setopt(easy, CURLOPT_ACCEPT_ENCODING, nullptr);
  curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &Transfer::Write);
  curl_easy_setopt(easy, CURLOPT_WRITEDATA, &transfer);
  curl_easy_setopt(easy, CURLOPT_PRIVATE, &transfer);
  return curl_multi_add_handle(multi_->handle, easy) == CURLM_OK;
}

TransferId CurlTransfers::start(const std::string& url, const std::string& agent) {
  if (transfers_.size() >= kMaxTransfers) return 0;
  auto transfer = std::make_unique<Transfer>();
  transfer->agent = agent;
  if (!Begin(*transfer, url)) return 0;
  const TransferId id = next_++;
  transfers_[id] = std::move(transfer);
  return id;
}

void CurlTransfers::Finish(Transfer& transfer, int result) {
  long status = 0;
  curl_easy_getinfo(transfer.easy.get(), CURLINFO_RESPONSE_CODE, &status);
  const bool isHttp = transfer.IsHttp();
  char* location = nullptr;
  curl_easy_getinfo(transfer.easy.get(), CURLINFO_REDIRECT_URL, &location);
  transfer.location = location ? location : "";
  curl_multi_remove_handle(multi_->handle, transfer.easy.get());
  if (result == CURLE_OK && isHttp && !transfer.location.empty()) {
    const std::string next = transfer.location;
    if (++transfer.redirects > kMaxRedirects || !Begin(transfer, next)) {
      transfer.easy.reset();
      transfer.state = TransferState::Failed;
    }
    return;
  }
  transfer.easy.reset();
  if (result != CURLE_OK || (isHttp && (status >= kBadStatus || status == 0))) {
    transfer.state = TransferState::Failed;
    return;
  }
  transfer.state = TransferState::Receiving;
  transfer.isOver = true;
}

void CurlTransfers::Work() {
  int running = 0;
  curl_multi_perform(multi_->handle, &running);
  int left = 0;
  while (const CURLMsg* message = curl_multi_info_read(multi_->handle, &left)) {
    if (message->msg != CURLMSG_DONE) continue;
    Transfer* transfer = nullptr;
    curl_easy_getinfo(message->easy_handle, CURLINFO_PRIVATE, &transfer);
    Finish(*transfer, message->data.result);
  }
}

TransferProgress CurlTransfers::read(TransferId id, std::string& bytes, size_t most) {
  const auto found = transfers_.find(id);
  if (found == transfers_.end()) return {};
  Transfer& transfer = *found->second;
  Work();
  const size_t size = std::min(most, transfer.waiting.size());
  bytes.append(transfer.waiting, 0, size);
  transfer.waiting.erase(0, size);
  if (transfer.isPaused && transfer.waiting.size() < kMaxWaiting / 2 && transfer.easy) {
    transfer.isPaused = false;
    curl_easy_pause(transfer.easy.get(), CURLPAUSE_CONT);
  }
  if (transfer.isOver && transfer.waiting.empty()) transfer.state = TransferState::Done;
  return {transfer.state, transfer.total};
}

void CurlTransfers::cancel(TransferId id) {
  const auto found = transfers_.find(id);
  if (found == transfers_.end()) return;
  if (found->second->easy) curl_multi_remove_handle(multi_->handle, found->second->easy.get());
  transfers_.erase(found);
}

std::string CurlTransfers::resolve(std::string_view base, std::string_view text) {
  Url url(curl_url());
  if (!url) return {};
  if (!base.empty() && curl_url_set(url.get(), CURLUPART_URL, std::string(base).c_str(), 0) != CURLUE_OK) return {};
  if (curl_url_set(url.get(), CURLUPART_URL, std::string(text).c_str(), CURLU_URLENCODE) != CURLUE_OK) return {};
  return PartOf(url.get(), CURLUPART_URL);
}

}  // namespace vl

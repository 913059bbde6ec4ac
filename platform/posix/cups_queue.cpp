#include "platform/posix/cups_queue.h"

#include <cups/cups.h>
#include <dlfcn.h>

#include "platform/text/code_page.h"

namespace vl {
namespace {

constexpr int kConnectMs = 5000;
constexpr double kAnswerSeconds = 5;
constexpr std::string_view kDefaultQueue = "default";

// The library is loaded when something is printed first: it brings others with it, which every start would wait for.
class Cups {
  void* library_ = dlopen("libcups.so.2", RTLD_NOW | RTLD_LOCAL);
  bool isWhole_ = true;

 public:
  // Null when the machine has none.
  static const Cups* Get() {
    static const Cups cups;
    return cups.isWhole_ ? &cups : nullptr;
  }
#define VL_CUPS(function) decltype(&::function) function = Find<decltype(&::function)>(#function)
  VL_CUPS(cupsCancelJob2);
  VL_CUPS(cupsCreateJob);
  VL_CUPS(cupsEncryption);
  VL_CUPS(cupsFinishDocument);
  VL_CUPS(cupsFreeDests);
  VL_CUPS(cupsGetNamedDest);
  VL_CUPS(cupsGetResponse);
  VL_CUPS(cupsSendRequest);
  VL_CUPS(cupsServer);
  VL_CUPS(cupsStartDocument);
  VL_CUPS(cupsWriteRequestData);
  VL_CUPS(httpClose);
  VL_CUPS(httpConnect2);
  VL_CUPS(httpSetTimeout);
  VL_CUPS(ippDelete);
  VL_CUPS(ippLength);
  VL_CUPS(ippNewRequest);
  VL_CUPS(ippPort);
#undef VL_CUPS

 private:
  Cups() = default;
  template <typename F>
  F Find(const char* name) {
    void* const found = library_ ? dlsym(library_, name) : nullptr;
    isWhole_ = isWhole_ && found;
    return reinterpret_cast<F>(found);
  }
};

using Server = std::unique_ptr<http_t, void (*)(http_t*)>;
using Message = std::unique_ptr<ipp_t, void (*)(ipp_t*)>;

// Whether the server answers at all: the library's own requests begin anew for ever where one accepts and is silent.
bool Answers(const Cups& cups, http_t* server) {
  const auto giveUp = [](http_t*, void*) { return 0; };
  cups.httpSetTimeout(server, kAnswerSeconds, giveUp, nullptr);
  const Message question(cups.ippNewRequest(IPP_OP_CUPS_GET_DEFAULT), cups.ippDelete);
  const http_status_t sent = cups.cupsSendRequest(server, question.get(), "/", cups.ippLength(question.get()));
  if (sent != HTTP_STATUS_CONTINUE) return false;
  const Message answer(cups.cupsGetResponse(server, "/"), cups.ippDelete);
  return answer != nullptr;
}

Server Connect(const Cups& cups) {
  Server server(cups.httpConnect2(cups.cupsServer(), cups.ippPort(), nullptr, AF_UNSPEC, cups.cupsEncryption(), 1,
                                  kConnectMs, nullptr),
                cups.httpClose);
  if (server && !Answers(cups, server.get())) server.reset();
  return server;
}

// "" when there is no such queue.
std::string FindQueue(const Cups& cups, http_t* server, const std::string& name) {
  cups_dest_t* const queue = cups.cupsGetNamedDest(server, name == kDefaultQueue ? nullptr : name.c_str(), nullptr);
  if (!queue) return "";
  std::string found = queue->name;
  cups.cupsFreeDests(1, queue);
  return found;
}

}  // namespace

bool CupsQueue::isReady() {
  const Cups* const cups = Cups::Get();
  if (!cups) return false;
  const Server server = Connect(*cups);
  return server && !FindQueue(*cups, server.get(), name_).empty();
}

bool CupsQueue::take(std::string_view title, std::span<const uint8_t> pdf) {
  const Cups* const cups = Cups::Get();
  if (!cups) return false;
  const Server server = Connect(*cups);
  if (!server) return false;
  const std::string queue = FindQueue(*cups, server.get(), name_);
  const std::string shown = Utf8Of1252(title);
  const int job = queue.empty() ? 0 : cups->cupsCreateJob(server.get(), queue.c_str(), shown.c_str(), 0, nullptr);
  if (job == 0) return false;
  const bool isSent = cups->cupsStartDocument(server.get(), queue.c_str(), job, shown.c_str(), CUPS_FORMAT_PDF, 1) ==
                          HTTP_STATUS_CONTINUE &&
                      cups->cupsWriteRequestData(server.get(), reinterpret_cast<const char*>(pdf.data()), pdf.size()) ==
                          HTTP_STATUS_CONTINUE;
  // Ends the request in any case.
  const bool isTaken = cups->cupsFinishDocument(server.get(), queue.c_str()) <= IPP_STATUS_OK_CONFLICTING;
  if (isSent && isTaken) return true;
  cups->cupsCancelJob2(server.get(), queue.c_str(), job, 0);
  return false;
}

}  // namespace vl

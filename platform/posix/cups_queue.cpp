#include "platform/posix/cups_queue.h"

#include <cups/cups.h>

#include "platform/text/code_page.h"

namespace vl {
namespace {

constexpr int kConnectMs = 5000;
constexpr double kAnswerSeconds = 5;
constexpr std::string_view kDefaultQueue = "default";

using ServerPtr = std::unique_ptr<http_t, decltype(&httpClose)>;

// Whether the server answers at all: the library's own requests begin anew for ever where one accepts and is silent.
bool Answers(http_t* server) {
  const auto giveUp = [](http_t*, void*) { return 0; };
  httpSetTimeout(server, kAnswerSeconds, giveUp, nullptr);
  const std::unique_ptr<ipp_t, decltype(&ippDelete)> question(ippNewRequest(IPP_OP_CUPS_GET_DEFAULT), ippDelete);
  const http_status_t sent = cupsSendRequest(server, question.get(), "/", ippLength(question.get()));
  if (sent != HTTP_STATUS_CONTINUE) return false;
  const std::unique_ptr<ipp_t, decltype(&ippDelete)> answer(cupsGetResponse(server, "/"), ippDelete);
  return answer != nullptr;
}

ServerPtr Connect() {
  ServerPtr server(httpConnect2(cupsServer(), ippPort(), nullptr, AF_UNSPEC, cupsEncryption(), 1, kConnectMs, nullptr),
                   httpClose);
  if (server && !Answers(server.get())) server.reset();
  return server;
}

// "" when there is no such queue.
std::string FindQueue(http_t* server, const std::string& name) {
  cups_dest_t* const queue = cupsGetNamedDest(server, name == kDefaultQueue ? nullptr : name.c_str(), nullptr);
  if (!queue) return "";
  std::string found = queue->name;
  cupsFreeDests(1, queue);
  return found;
}

}  // namespace

bool CupsQueue::isReady() {
  const ServerPtr server = Connect();
  return server && !FindQueue(server.get(), name_).empty();
}

bool CupsQueue::take(std::string_view title, std::span<const uint8_t> pdf) {
  const ServerPtr server = Connect();
  if (!server) return false;
  const std::string queue = FindQueue(server.get(), name_);
  const std::string shown = Utf8Of1252(title);
  const int job = queue.empty() ? 0 : cupsCreateJob(server.get(), queue.c_str(), shown.c_str(), 0, nullptr);
  if (job == 0) return false;
  const bool isSent =
      cupsStartDocument(server.get(), queue.c_str(), job, shown.c_str(), CUPS_FORMAT_PDF, 1) == HTTP_STATUS_CONTINUE &&
      cupsWriteRequestData(server.get(), reinterpret_cast<const char*>(pdf.data()), pdf.size()) == HTTP_STATUS_CONTINUE;
  // Ends the request in any case.
  const bool isTaken = cupsFinishDocument(server.get(), queue.c_str()) <= IPP_STATUS_OK_CONFLICTING;
  if (isSent && isTaken) return true;
  cupsCancelJob2(server.get(), queue.c_str(), job, 0);
  return false;
}

}  // namespace vl

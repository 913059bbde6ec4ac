// SdlPlatform: the desktop back end, with a face for each of two threads.
//
// SDL belongs to the thread that made the platform, the host's: it calls pumpHost in a loop. The interpreter runs
// on a thread of its own and uses services() there; its calls only note what is wanted, and events reach it
// through a queue.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/rect.h"
#include "platform/services.h"

namespace vl {

struct SdlOptions {
  Size size = {640, 480};         // of the host's window
  std::string title = "Vorlane";  // code page 1252
  bool attachHost = true;         // false: detached, the program makes its windows itself
  bool hidden = false;            // the host's window is not shown (tests)
  uint64_t maxTimeMs = 0;         // HostStop arrives after so much real time; 0 never
  std::optional<uint32_t> seed;   // of the random generator; else by the time
  TextEngine* text = nullptr;     // instead of the installed fonts; outlives the platform
  FileSystem* files = nullptr;    // outlives the platform
};

struct HostPicture {
  std::vector<uint32_t> pixels;  // words 0x00RRGGBB, line after line
  int width = 0;
  int height = 0;
};

class SdlPlatform {
 public:
  // On the host's thread. Null, and one line that tells why, when there is no display.
  static std::unique_ptr<SdlPlatform> Create(const SdlOptions& options, std::string& reason);
  ~SdlPlatform();
  SdlPlatform(const SdlPlatform&) = delete;
  SdlPlatform& operator=(const SdlPlatform&) = delete;

  // For the interpreter's thread. The pointers stay valid while the platform lives.
  Services services();

  // On the host's thread: waits at most timeoutMs for something to do, passes events on, does what the program
  // asked for and shows its newest pictures. False once finish() was called and all of that is done.
  bool pumpHost(int timeoutMs);

  // From any thread: the run has ended, or is to end.
  void finish();
  void requestStop();

  // The newest picture of the host's window; empty when there is none. From any thread.
  HostPicture hostPicture();

 private:
  struct Parts;
  explicit SdlPlatform(std::unique_ptr<Parts> parts);

  std::unique_ptr<Parts> parts_;
};

}  // namespace vl

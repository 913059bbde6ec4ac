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
#include "platform/sdl/picture_view.h"
#include "platform/services.h"

namespace vl {

// What the player itself does with a person's input and with boxes. Called on the host's thread.
class SdlListener {
 public:
  virtual ~SdlListener() = default;
  // Before the program gets it; the mouse is in pixels of the window, and onFrame tells that it is beside the
  // picture. True keeps it from the program.
  virtual bool OnInput(const Event& event, bool onFrame) = 0;
  // A file was dropped on a window whose program doesn't take it. UTF-8.
  virtual void OnDrop(const std::string& path) = 0;
  // The program's error box: code page 1252.
  virtual void OnMessage(const std::string& title, const std::string& text) = 0;
  // After each round.
  virtual void OnPumped() = 0;
};

class Sleeper;
struct WindowOverlay;

// A window of the player itself, filled by its overlay.
inline constexpr NativeWindow kPanelWindow = 0xFFFFFFFF;

struct SdlOptions {
  Size size = {640, 480};         // of the host's window
  std::string title = "Vorlane";  // UTF-8
  bool attachHost = true;         // false: detached, the program makes its windows itself
  bool hidden = false;            // the host's window is not shown (tests)
  uint64_t maxTimeMs = 0;         // HostStop arrives after so much real time; 0 never
  std::optional<uint32_t> seed;   // of the random generator; else by the time
  TextEngine* text = nullptr;     // instead of the installed fonts; outlives the platform
  FileSystem* files = nullptr;    // outlives the platform
  Scaling scaling = Scaling::Follow;
  bool fullScreen = false;
  SdlListener* listener = nullptr;  // outlives the platform
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

  // On the host's thread, between two runs: as if made anew, with the host's window where it is.
  void renew(std::optional<uint32_t> seed);

  // Between two runs: what the waits of the next one sleep on; outlives that run.
  void setSleeper(Sleeper& sleeper);

  // For the interpreter's thread. The pointers stay valid while the platform lives.
  Services services();

  // On the host's thread: waits at most timeoutMs for something to do, passes events on, does what the program
  // asked for and shows its newest pictures. False once finish() was called and all of that is done.
  bool pumpHost(int timeoutMs);

  // On the host's thread: since the run began a person asked for its end. Its events tell the program as well.
  bool isCloseAsked() const;

  // From any thread: the run has ended, or is to end.
  void finish();
  void requestStop();

  // The newest picture of the host's window; empty when there is none. From any thread.
  HostPicture hostPicture();

  // On the host's thread: what a person may change. 0 stands for the host's window.
  void setTitle(const std::string& title);  // of the host's window, UTF-8
  void setScaling(Scaling scaling);
  void setFullScreen(NativeWindow window, bool full);
  bool isFullScreen(NativeWindow window) const;
  // The window that has the keyboard, else the host's; 0 when there is none.
  NativeWindow focusedWindow() const;
  Size windowSize(NativeWindow window) const;
  void setOverlay(NativeWindow window, const WindowOverlay& overlay);
  // One at a time. False when the display gives none.
  bool openPanel(Size size, const std::string& title);
  void closePanel();
  // UTF-8.
  void setClipboard(const std::string& text);

 private:
  struct Parts;
  explicit SdlPlatform(std::unique_ptr<Parts> parts);

  std::unique_ptr<Parts> parts_;
};

}  // namespace vl

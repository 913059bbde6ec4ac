// Player: what stands behind vl_player, the C interface's handle.
//
// One back end per player, chosen at creation and made anew for each run, so that a second run starts as the
// first did. The host's thread calls everything here; the run has a thread of its own.
#pragma once

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "host/control.h"
#include "host/desktop/frame_tap.h"
#include "host/desktop/input_tap.h"
#include "host/desktop/run_gate.h"
#include "host/desktop/shell/shell.h"
#include "host/run.h"
#include "include/vorlane.h"
#include "platform/headless/headless_platform.h"
#include "platform/memory_files.h"
#include "platform/net_policy.h"
#include "platform/posix/curl_transfers.h"
#include "platform/posix/deep_thread.h"
#include "platform/posix/pdf_printers.h"
#include "platform/posix/posix_clock.h"
#include "platform/posix/posix_file_system.h"
#include "platform/posix/posix_font_finder.h"
#include "platform/posix/posix_serial.h"
#include "platform/posix/posix_sockets.h"
#include "platform/posix/threaded_queue.h"
#include "platform/sdl/sdl_platform.h"
#include "platform/text/freetype_text_engine.h"

namespace vl {

class Player {
 public:
  explicit Player(const vl_options& options);
  ~Player();

  // Makes the desktop's window, so that a missing display is told at once.
  bool Prepare(std::string& reason);
  bool SetFile(const std::string& path);
  bool SetBytes(const std::string& name, const void* bytes, size_t size);
  // An address, fetched at each start; relative ones count from `documentUrl`.
  bool SetUrl(const std::string& url, const std::string& documentUrl);
  bool AddFile(const std::string& name, const void* bytes, size_t size);
  void SetTitle(const std::string& title);
  bool AllowNet(const std::string& rule) { return !running_ && policy_.Allow(rule); }
  bool SetOrigin(const std::string& host);
  bool ScriptInput(uint64_t atMs, const vl_input_event& input);
  bool SendInput(const vl_input_event& input);
  bool Start();
  vl_state Wait(int timeoutMs);
  void Stop();
  bool Frame(uint32_t* pixels, size_t capacity, int32_t* width, int32_t* height);

  // Null when a virtual clock can't be held.
  RunGate* Gate() { return running_ ? gate_.get() : nullptr; }
  // Null without one.
  Shell* GetShell() { return shell_.get(); }
  // Valid until the next call.
  ShellRequest& TakeRequest();
  Scaling CurrentScaling() const;
  bool IsFullScreen() const;
  std::function<void(uint64_t atMs, const Picture&)> onFrame;

  // Null unless the input of the last run was kept.
  const InputTap* Recorded() const { return running_ ? nullptr : inputTap_.get(); }

  CVorlane control;
  std::string commandLine;
  std::string savesFolder;  // empty: files go with the run
  std::string printFolder;  // these two empty: no printer
  std::string printQueue;   // counts before the folder

  RunResult result = RunResult::Ended;
  std::string error;
  std::string errorDetail;
  std::string globals;

 private:
  bool IsVirtual() const;
  bool MakePlatform(std::string& reason);
  std::optional<uint32_t> Seed() const;
  // The application of control.url. False, with errorDetail, when it can't be had.
  bool FetchApplication();
  bool Fetch(const std::string& address, std::string& bytes);
  void ShowStartPicture(WindowSystem& windows);
  void Finish();

  vl_options options_;
  std::string title_;
  PosixFontFinder fonts_;
  std::unique_ptr<FreeTypeTextEngine> text_;
  std::unique_ptr<FileSystem> files_;
  std::unique_ptr<PosixFileSystem> kept_;
  std::unique_ptr<PdfPrinters> printers_;
  PosixSerialPorts serialPorts_;
  MemoryClipboard clipboard_;
  MemoryFileSystem* memoryFiles_ = nullptr;  // files_ when it is one
  std::string application_;                  // path in files_
  bool isByUrl_ = true;                      // nothing else was given
  std::string baseUrl_;                      // where the application was fetched
  std::vector<TimedEvent> script_;
  NetPolicy policy_;
  std::string origin_;  // as the embedder says; a fetched application has its own

  PosixClock hostClock_{std::nullopt};  // of the start picture; runs have their own
  std::unique_ptr<PosixClock> clock_;
  std::unique_ptr<ThreadedQueue> queue_;
  std::unique_ptr<HeadlessPlatform> headless_;
  std::unique_ptr<PosixSockets> sockets_;  // of the machine
  std::unique_ptr<PolicedSockets> policedSockets_;
  std::unique_ptr<Shell> shell_;
  std::unique_ptr<SdlPlatform> sdl_;
  std::unique_ptr<FrameTap> tap_;
  std::unique_ptr<RunGate> gate_;
  std::unique_ptr<CurlTransfers> transfers_;
  std::unique_ptr<InputTap> inputTap_;
  ShellRequest request_;
  std::unique_ptr<Run> run_;
  DeepThread thread_;
  bool running_ = false;

  // Between the two threads.
  std::mutex mutex_;
  std::condition_variable ended_;
  bool hasEnded_ = false;
};

}  // namespace vl

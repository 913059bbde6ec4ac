#include "host/desktop/player.h"

#include <chrono>
#include <cstdlib>

#include "host/desktop/start_picture.h"
#include "platform/drive_paths.h"
#include "platform/posix/cups_queue.h"
#include "platform/posix/user_folder.h"

namespace vl {

namespace {

constexpr size_t kMaxFetchedBytes = size_t{1} << 30;
constexpr size_t kFetchBlock = 0x1000;
constexpr int kFetchWaitMs = 5;
constexpr const char* kFetchAgent = "Vorlane ActiveX Control";

}  // namespace

Player::Player(const vl_options& options) : options_(options), title_(options.title ? options.title : "Vorlane") {
  options_.title = nullptr;
  text_ = std::make_unique<FreeTypeTextEngine>(fonts_);
  if (options_.backend == VL_BACKEND_DESKTOP && options_.shell) {
    shell_ = std::make_unique<Shell>(static_cast<Scaling>(options_.scaling), options_.full_screen != 0);
  }
}

Player::~Player() { Stop(); }

bool Player::IsVirtual() const {
  if (options_.backend != VL_BACKEND_HEADLESS) return false;
  // With a real network a program would wait for minutes of a virtual clock in an instant.
  return options_.clock != VL_CLOCK_REAL && !options_.real_network;
}

std::optional<uint32_t> Player::Seed() const {
  return options_.has_seed ? std::optional<uint32_t>(options_.seed) : std::nullopt;
}

bool Player::Prepare(std::string& reason) {
  if (options_.backend != VL_BACKEND_DESKTOP) return true;
  return MakePlatform(reason);
}

bool Player::MakePlatform(std::string& reason) {
  tap_.reset();
  headless_.reset();
  if (options_.backend == VL_BACKEND_DESKTOP) {
    // The window that Prepare made serves all runs.
    if (sdl_ && hasEnded_) {
      sdl_->renew(Seed());
    } else if (!sdl_) {
      SdlOptions sdl;
      sdl.size = {options_.width, options_.height};
      sdl.title = title_;
      sdl.attachHost = !options_.detached;
      sdl.maxTimeMs = options_.max_time_ms;
      sdl.seed = Seed();
      sdl.text = text_.get();
      sdl.scaling = static_cast<Scaling>(options_.scaling);
      sdl.fullScreen = options_.full_screen != 0;
      sdl.listener = shell_.get();
      sdl_ = SdlPlatform::Create(sdl, reason);
    }
    return sdl_ != nullptr;
  }
  HeadlessOptions headless;
  headless.hostSize = {options_.width, options_.height};
  headless.attachHost = !options_.detached;
  headless.maxTimeMs = options_.max_time_ms;
  if (options_.has_seed) headless.seed = options_.seed;
  headless.input = script_;
  headless.text = text_.get();
  headless.files = files_.get();
  if (!IsVirtual()) {
    clock_ = std::make_unique<PosixClock>(Seed());
    queue_ = std::make_unique<ThreadedQueue>();
    headless.clock = clock_.get();
    headless.events = queue_.get();
  }
  headless_ = std::make_unique<HeadlessPlatform>(headless);
  return true;
}

bool Player::SetFile(const std::string& path) {
  if (running_) return false;
  isByUrl_ = false;
  baseUrl_.clear();
  const size_t slash = path.rfind('/');
  const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
  memoryFiles_ = nullptr;
  files_ = std::make_unique<PosixFileSystem>(folder);
  application_ = path.substr(slash == std::string::npos ? 0 : slash + 1);
  return true;
}

bool Player::SetBytes(const std::string& name, const void* bytes, size_t size) {
  if (running_) return false;
  isByUrl_ = false;
  baseUrl_.clear();
  auto files = std::make_unique<MemoryFileSystem>(uint64_t{1} << 31);
  memoryFiles_ = files.get();
  files_ = std::move(files);
  application_ = name;
  return AddFile(name, bytes, size);
}

bool Player::SetUrl(const std::string& url, const std::string& documentUrl) {
  if (running_) return false;
  isByUrl_ = true;
  control.url = url;
  control.documentUrl = documentUrl;
  return true;
}

// A host that is tested without a display shows no picture that the program didn't draw.
void Player::ShowStartPicture(WindowSystem& windows) {
  if (options_.backend == VL_BACKEND_HEADLESS || options_.detached) return;
  const Size size = windows.hostSize();
  const std::vector<uint32_t> picture = MakeStartPicture(size, *text_);
  if (picture.empty()) return;
  const Rect all{0, 0, size.width, size.height};
  windows.present(windows.hostWindow(), picture.data(), size.width, size.height, size.width, {&all, 1});
  control.PictureDrawn(hostClock_.nowMs());
}

bool Player::FetchApplication() {
  std::string address = control.url;
  control.sourceName.clear();
  if (address.find("://") == std::string::npos && !control.documentUrl.empty()) {
    address = CurlTransfers(nullptr).resolve(control.documentUrl, address);
  }
  if (!IsFetched(address)) {
    const bool isPlain = address.find("://") == std::string::npos;
    const std::string path = isPlain ? address : PathOfFileUrl(address);
    char* const whole = path.empty() ? nullptr : realpath(path.c_str(), nullptr);
    if (!whole) {
      errorDetail = "no such file";
      return false;
    }
    const std::string full = whole;
    std::free(whole);
    SetFile(full);
    if (isPlain) control.sourceName = full;
    isByUrl_ = true;
    return true;
  }
  std::string bytes;
  if (!Fetch(address, bytes)) return false;
  const std::string name = NameOfUrl(address);
  SetBytes(name.empty() ? "application.vlp" : name, bytes.data(), bytes.size());
  isByUrl_ = true;
  baseUrl_ = address;
  return true;
}

// On the caller's thread, with the window served meanwhile.
bool Player::Fetch(const std::string& address, std::string& bytes) {
  CurlTransfers transfers(nullptr);
  const TransferId id = transfers.start(address, kFetchAgent);
  for (;;) {
    const size_t before = bytes.size();
    const TransferProgress progress = transfers.read(id, bytes, kFetchBlock);
    if (progress.state == TransferState::Done) return true;
    if (progress.state == TransferState::Failed) {
      errorDetail = "can't be fetched";
      return false;
    }
    if (bytes.size() > kMaxFetchedBytes) {
      errorDetail = "is too large";
      return false;
    }
    const bool hasCome = bytes.size() > before;
    if (sdl_) {
      sdl_->pumpHost(hasCome ? 0 : kFetchWaitMs);
      if (sdl_->isCloseAsked()) {
        errorDetail = "was given up";
        return false;
      }
    } else if (!hasCome) {
      std::unique_lock lock(mutex_);
      ended_.wait_for(lock, std::chrono::milliseconds(kFetchWaitMs));
    }
  }
}

bool Player::AddFile(const std::string& name, const void* bytes, size_t size) {
  if (running_ || !memoryFiles_) return false;
  return memoryFiles_->Add(name, std::span(static_cast<const uint8_t*>(bytes), size));
}

bool Player::SetOrigin(const std::string& host) {
  if (running_ || host.empty()) return false;
  origin_ = host;
  return true;
}

void Player::SetTitle(const std::string& title) {
  title_ = title;
  if (sdl_) sdl_->setTitle(title);
}

bool Player::ScriptInput(uint64_t atMs, const vl_input_event& input) {
  TimedEvent timed;
  timed.atMs = atMs;
  if (running_ || !IsVirtual() || !ToEvent(input, timed.event)) return false;
  if (input.text) timed.blob = input.text;
  script_.push_back(std::move(timed));
  return true;
}

bool Player::SendInput(const vl_input_event& input) {
  Event event;
  if (!queue_ || !running_ || !ToEvent(input, event)) return false;
  if (input.text) {
    queue_->PushWithBlob(event, input.text);
  } else {
    queue_->Push(event);
  }
  return true;
}

bool Player::Start() {
  if (running_ || (!files_ && control.url.empty())) return false;
  kept_.reset();
  if (!savesFolder.empty()) {
    if (!MakeFolder(savesFolder)) return false;
    kept_ = std::make_unique<PosixFileSystem>(savesFolder);
    if (!kept_->IsOpen()) return false;
  }
  std::string reason;
  if (!MakePlatform(reason)) return false;
  Services services = sdl_ ? sdl_->services() : headless_->services();
  printers_.reset();
  if (!printQueue.empty()) {
    printers_ = std::make_unique<PdfPrinters>(std::make_unique<CupsQueue>(printQueue));
  } else if (!printFolder.empty()) {
    printers_ = std::make_unique<PdfPrinters>(std::make_unique<PdfFolder>(printFolder));
  }
  services.printers = printers_.get();
  if (!services.clipboard) services.clipboard = &clipboard_;
  if (!IsVirtual()) services.serialPorts = &serialPorts_;
  policedSockets_.reset();
  sockets_.reset();
  if (options_.backend != VL_BACKEND_HEADLESS || options_.real_network) {
    sockets_ = std::make_unique<PosixSockets>();
    services.sockets = sockets_.get();
    if (sdl_) {
      sdl_->setSleeper(*sockets_);
    } else {
      queue_->SetSleeper(*sockets_);
    }
  }
  if (services.sockets) {
    policedSockets_ = std::make_unique<PolicedSockets>(*services.sockets, policy_);
    services.sockets = policedSockets_.get();
  }
  tap_ = std::make_unique<FrameTap>(*services.windows, !sdl_ || options_.detached || onFrame);
  services.windows = tap_.get();
  ShowStartPicture(*tap_);
  if (isByUrl_ && !FetchApplication()) {
    // The picture stays.
    result = RunResult::Unreadable;
    hasEnded_ = true;
    return true;
  }
  services.files = files_.get();
  inputTap_.reset();
  gate_.reset();
  if (!IsVirtual()) {
    // The desktop's back end counts by itself.
    gate_ = std::make_unique<RunGate>(*services.clock, *services.events, sdl_ ? 0 : options_.max_time_ms);
    services.clock = gate_.get();
    services.events = gate_.get();
    tap_->onPresent = [gate = gate_.get()] { gate->OnPresent(); };
  }
  if (onFrame) {
    tap_->onPicture = [this, clock = services.clock, startMs = services.clock->nowMs()](const Picture& picture) {
      onFrame(clock->nowMs() - startMs, picture);
    };
  }
  policy_.SetOrigin(baseUrl_.empty() ? origin_ : HostOfUrl(baseUrl_));
  transfers_ = std::make_unique<CurlTransfers>(
      [this](std::string_view host, uint16_t port) { return policy_.MayConnect(host, port); });
  services.transfers = transfers_.get();
  if (shell_) {
    shell_->Attach(sdl_.get(), gate_.get());
    // The box is taken behind the mailbox's lock, which the run passed after it wrote the detail.
    shell_->errorDetail = [this] { return run_->errorDetail; };
  }
  if (options_.keep_input) {
    inputTap_ = std::make_unique<InputTap>(*services.events, *services.clock);
    services.events = inputTap_.get();
  }
  run_ = std::make_unique<Run>(services, options_.keep_globals != 0);
  if (kept_) run_->keptFiles = kept_.get();
  run_->param.path = application_;
  // One from the network has no place on the drive.
  if (baseUrl_.empty()) {
    run_->param.sourceName = std::string(kHomeFolder).append(1, '\\').append(application_);
  }
  run_->param.detached = options_.detached != 0;
  run_->param.parameters = control.params;
  run_->param.baseUrl = baseUrl_;
  // A picture of the time before the program belongs to a host that shows one.
  if (!IsVirtual()) {
    run_->param.startDelayMs = control.StartDelayMs(hostClock_.nowMs());
    run_->param.startDelayDone = control.delayDone;
  }
  run_->param.referenceWalker = options_.plain_walker != 0;
  run_->param.commandLine = commandLine;
  hasEnded_ = false;
  running_ = thread_.Start([this] {
    const RunResult ended = run_->Execute();
    control.delayDone = control.delayDone || run_->param.startDelayDone;
    const std::lock_guard lock(mutex_);
    result = ended;
    hasEnded_ = true;
    if (sdl_) sdl_->finish();
    ended_.notify_all();
  });
  return running_;
}

vl_state Player::Wait(int timeoutMs) {
  if (!running_) return hasEnded_ ? VL_ENDED : VL_IDLE;
  if (sdl_) {
    if (sdl_->pumpHost(timeoutMs) || (shell_ && shell_->IsShowingError())) return VL_RUNNING;
  } else {
    std::unique_lock lock(mutex_);
    const auto ended = [this] { return hasEnded_; };
    if (timeoutMs < 0) {
      ended_.wait(lock, ended);
    } else if (!ended_.wait_for(lock, std::chrono::milliseconds(timeoutMs), ended)) {
      return VL_RUNNING;
    }
  }
  Finish();
  return VL_ENDED;
}

void Player::Finish() {
  thread_.Join();
  running_ = false;
  error = run_->error;
  errorDetail = run_->errorDetail;
  globals = run_->globals;
}

ShellRequest& Player::TakeRequest() {
  request_ = {};
  if (!shell_) return request_;
  if (auto request = shell_->TakeRequest()) request_ = std::move(*request);
  return request_;
}

Scaling Player::CurrentScaling() const {
  return shell_ ? shell_->CurrentScaling() : static_cast<Scaling>(options_.scaling);
}

bool Player::IsFullScreen() const { return shell_ ? shell_->IsFullScreen() : options_.full_screen != 0; }

void Player::Stop() {
  if (!running_) return;
  if (gate_) gate_->OpenForGood();
  // The orderly close reaches the program through its queue; the flag ends one that doesn't look there.
  if (sdl_) {
    sdl_->requestStop();
  } else if (queue_) {
    Event event;
    event.type = EventType::HostStop;
    queue_->Push(event);
  }
  run_->Stop();
  while (Wait(-1) == VL_RUNNING) {
  }
}

bool Player::Frame(uint32_t* pixels, size_t capacity, int32_t* width, int32_t* height) {
  Picture picture;
  if (sdl_ && !options_.detached) {
    HostPicture shown = sdl_->hostPicture();
    picture = {std::move(shown.pixels), shown.width, shown.height};
  } else if (tap_) {
    picture = tap_->NewestPicture();
  }
  if (width) *width = picture.width;
  if (height) *height = picture.height;
  if (picture.pixels.empty()) return false;
  if (pixels && capacity >= picture.pixels.size()) std::copy(picture.pixels.begin(), picture.pixels.end(), pixels);
  return true;
}

}  // namespace vl

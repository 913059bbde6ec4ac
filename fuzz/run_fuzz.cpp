// Compiles and runs arbitrary text in a hosted window, with some input, for a limited number of ticks.
//
// The first byte picks the variant: bit 0 a run without the host's window, bit 1 without input.
#include "fuzz/program_fuzz_support.h"

using namespace vl;

namespace {

constexpr uint64_t kTicks = 400;
constexpr uint64_t kMaxTimeMs = 3000;

// One engine for all runs: opening fonts is slow and no part of what is tried here.
TextEngine& Fonts() {
  static PosixFontFinder finder;
  static FreeTypeTextEngine engine(finder);
  return engine;
}

void AddInput(HeadlessOptions& options, uint64_t atMs, EventType type, int32_t code, int32_t x, int32_t y) {
  TimedEvent timed;
  timed.atMs = atMs;
  timed.event.type = type;
  timed.event.code = timed.event.ch = code;
  timed.event.x = x;
  timed.event.y = y;
  options.input.push_back(timed);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1) return 0;
  HeadlessOptions options;
  options.hostSize = {96, 64};
  options.attachHost = !(data[0] & 1);
  options.maxTimeMs = kMaxTimeMs;
  options.text = &Fonts();
  if (!(data[0] & 2)) {
    AddInput(options, 20, EventType::MouseMove, 0, 10, 20);
    AddInput(options, 30, EventType::MouseDown, kMouseLeft, 10, 20);
    AddInput(options, 40, EventType::MouseUp, kMouseLeft, 10, 20);
    AddInput(options, 60, EventType::Char, 'a', 0, 0);
    AddInput(options, 70, EventType::Char, 8, 0, 0);
    AddInput(options, 80, EventType::Char, 13, 0, 0);
    AddInput(options, 100, EventType::Resize, 0, 64, 80);
    AddInput(options, 200, EventType::MouseWheel, 120, 5, 5);
    AddInput(options, 900, EventType::Close, 0, 0, 0);
  }
  FuzzProgram program(data + 1, size - 1, options);
  CInterpretor& interpreter = program.Interpreter();
  if (!interpreter.Init()) return 0;
  interpreter.tickLimit = kTicks;
  interpreter.Start();
  return 0;
}

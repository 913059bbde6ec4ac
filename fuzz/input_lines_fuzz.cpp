// Reads arbitrary bytes as recorded input, hands the events to the state of the devices, and writes them: what is
// written reads back as the same events.
#include <cstdlib>

#include "host/desktop/input_tap.h"
#include "platform/device_queue.h"
#include "platform/headless/headless_platform.h"
#include "tools/input_lines.h"

namespace {

using namespace vl;

void Replay(const std::vector<TimedInput>& input) {
  HeadlessOptions options;
  options.maxTimeMs = 1000;
  for (const TimedInput& line : input) {
    TimedEvent timed;
    timed.atMs = line.atMs;
    timed.blob = line.text;
    if (ToEvent(line.Event(), timed.event)) options.input.push_back(timed);
  }
  HeadlessPlatform platform(options);
  const Services services = platform.services();
  InputTap tap(*services.events, *services.clock);
  DeviceQueue queue(tap, services.windows, services.input);
  Event event;
  for (size_t i = 0; i < 2 * input.size() + 8 && !queue.isExhausted(); ++i) queue.waitEvent(event, 100);
  for (const InputTap::Recorded& recorded : tap.Events()) FormatInputLine({recorded.atMs, recorded.input, {}});
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::vector<TimedInput> input;
  std::string error;
  if (!ParseInputLines(std::string(reinterpret_cast<const char*>(data), size), input, error)) {
    if (error.empty()) std::abort();
    return 0;
  }
  Replay(input);
  std::string lines;
  for (const TimedInput& line : input) lines += FormatInputLine(line) + "\n";
  std::vector<TimedInput> again;
  if (!ParseInputLines(lines, again, error) || again.size() != input.size()) std::abort();
  std::string linesAgain;
  for (const TimedInput& line : again) linesAgain += FormatInputLine(line) + "\n";
  if (lines != linesAgain) std::abort();
  return 0;
}

// The gate that holds a run: time stands still, a step ends with a picture or after its time.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "host/desktop/run_gate.h"

namespace vl {
namespace {

struct HandClock final : Clock {
  std::atomic<uint32_t> now{1000};
  std::atomic<int> ticks{0};
  uint32_t nowMs() override { return now; }
  LocalTime localTime() override { return {}; }
  uint32_t seed() override { return 3; }
  void tick() override { ++ticks; }
};

struct NoEvents final : EventQueue {
  int waitedMs = 0;
  bool waitEvent(Event&, int timeoutMs) override {
    waitedMs = timeoutMs;
    return false;
  }
  std::string takeBlob(uint32_t) override { return {}; }
};

// A run that does nothing but tick and tell how far it came.
struct Runner {
  explicit Runner(RunGate& gate)
      : thread([this, &gate] {
          while (!stop) {
            gate.tick();
            if (isPresenting.exchange(false)) gate.OnPresent();
            seen = gate.nowMs();
            ++rounds;
          }
        }) {}
  ~Runner() {
    stop = true;
    thread.join();
  }
  void WaitForRounds(int more) {
    const int wanted = rounds + more;
    while (rounds < wanted) std::this_thread::yield();
  }
  std::atomic<bool> stop{false};
  std::atomic<bool> isPresenting{false};
  std::atomic<uint32_t> seen{0};
  std::atomic<int> rounds{0};
  std::thread thread;
};

TEST(RunGate, TimeStandsStillWhileHeld) {
  HandClock clock;
  NoEvents events;
  RunGate gate(clock, events);
  gate.SetPaused(true);
  {
    Runner runner(gate);
    // Held at its first tick, at 1000; the step goes on from there, whatever the machine's clock says.
    clock.now = 1000;
    gate.Step();
    runner.WaitForRounds(3);
    EXPECT_LE(runner.seen, 1000u);
    const int before = runner.rounds;
    clock.now = clock.now + 40;
    runner.WaitForRounds(2);
    EXPECT_EQ(runner.seen, 1040u) << "time passes in a step";
    runner.isPresenting = true;
    while (runner.isPresenting) std::this_thread::yield();
    // The picture ends the step; only the next one brings the run on.
    gate.Step();
    runner.WaitForRounds(2);
    EXPECT_GT(runner.rounds, before);
    EXPECT_TRUE(gate.IsPaused());
    gate.OpenForGood();
    runner.WaitForRounds(2);
    gate.SetPaused(true);
    EXPECT_FALSE(gate.IsPaused()) << "a run that is to end is never held";
    runner.WaitForRounds(2);
  }
  EXPECT_EQ(gate.seed(), 3u);
}

TEST(RunGate, AWaitDoesNotOutlastItsStep) {
  HandClock clock;
  NoEvents events;
  RunGate gate(clock, events);
  Event event;
  gate.waitEvent(event, 5000);
  EXPECT_EQ(events.waitedMs, 5000);
  gate.Step();
  gate.waitEvent(event, 5000);
  EXPECT_EQ(events.waitedMs, static_cast<int>(RunGate::kStepMs));
  gate.waitEvent(event, 0);
  EXPECT_EQ(events.waitedMs, 0);
  clock.now = clock.now + 45;
  gate.waitEvent(event, -1);
  EXPECT_EQ(events.waitedMs, 5);
}

TEST(RunGate, TellsTheHostsStopOnceAfterTheProgramsTime) {
  HandClock clock;
  NoEvents events;
  RunGate gate(clock, events, 300);
  Event event;
  EXPECT_FALSE(gate.waitEvent(event, 50));
  EXPECT_EQ(events.waitedMs, 50);
  clock.now = clock.now + 299;
  EXPECT_FALSE(gate.waitEvent(event, -1));
  EXPECT_EQ(events.waitedMs, 1) << "no wait goes beyond it";
  clock.now = clock.now + 1;
  ASSERT_TRUE(gate.waitEvent(event, 0));
  EXPECT_EQ(event.type, EventType::HostStop);
  EXPECT_FALSE(gate.waitEvent(event, 50));
  EXPECT_EQ(events.waitedMs, 50);
}

}  // namespace
}  // namespace vl

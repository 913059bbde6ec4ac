// AnimationTimer: which frames are shown when, forward and backward, through loops, late and paused.
#include "gfx2d/animation_timer.h"

namespace vl {
namespace {

struct Film : CAnimatedObject {
  AnimationTimer timer;
  int32_t frame = 0;
  int32_t last = 4;
  int32_t loopStart = 0;
  int32_t frameTime = 10;
  bool paused = false;
  bool finished = false;
  std::string shown;

  int32_t GetCurrentFrame(uint32_t) override { return frame; }
  void ShowFrame(int32_t f, uint32_t) override {
    frame = f;
    shown += std::to_string(f);
  }
  void Finished(uint32_t) override { finished = true; }
  int32_t GetFrameTime(int32_t, uint32_t) override { return frameTime; }
  int32_t GetFirstFrame(uint32_t) override { return 0; }
  int32_t GetLastFrame(uint32_t) override { return last; }
  int32_t GetLoopStart(uint32_t) override { return loopStart; }
  bool IsPaused(uint32_t) override { return paused; }
};

struct Case {
  const char* name;
  uint32_t flags;
  int32_t loops;
  int32_t loopStart;
  int32_t start;
  const char* shown;  // one step a frame time
  bool finished;
};

class AnimationRuns : public ::testing::TestWithParam<Case> {};

TEST_P(AnimationRuns, ShowTheirFrames) {
  const Case& run = GetParam();
  Film film;
  film.timer.Init(film, 1000, 0);
  film.timer.flags = run.flags;
  film.timer.loopsLeft = film.timer.loopsTotal = run.loops;
  film.loopStart = run.loopStart;
  film.frame = run.start;
  uint32_t now = 1000;
  for (int i = 0; i < 14 && !film.finished; ++i) film.timer.Step(now += 10);
  EXPECT_EQ(film.shown, run.shown) << run.name;
  EXPECT_EQ(film.finished, run.finished) << run.name;
}

constexpr uint32_t kBack = AnimationTimer::kReverse;
constexpr uint32_t kTurn = AnimationTimer::kLoopReverse;

INSTANTIATE_TEST_SUITE_P(All, AnimationRuns,
                         ::testing::Values(Case{"once", 0, 0, 0, 0, "1234", true},
                                           Case{"twice more from 3", 0, 2, 3, 0, "12343434", true},
                                           Case{"for ever", 0, -1, 2, 0, "12342342342342", false},
                                           Case{"backward once", kBack, 0, 0, 4, "3210", true},
                                           Case{"backward for ever", kBack, -1, 2, 4, "32432432432432", false},
                                           Case{"back and forth", kTurn, -1, 0, 0, "123432101234", false},
                                           Case{"a film of a negative loop", 0, 1, -5, 4, "-5-4-3-2-101234", true}),
                         [](const auto& info) { return "Run" + std::to_string(info.index); });

TEST(AnimationTimer, ALateStepShowsOnlyWhereItLandsAndKeepsTheTimeLeftOver) {
  Film film;
  film.last = 200;
  film.timer.Init(film, 0, 0);
  film.timer.Step(1004);
  EXPECT_EQ(film.shown, "100");
  EXPECT_EQ(film.timer.lastTime, 1000u);
  film.timer.Step(1009);
  EXPECT_EQ(film.shown, "100");
  film.timer.Step(1010);
  EXPECT_EQ(film.shown, "100101");
}

TEST(AnimationTimer, PausedTimeIsLost) {
  Film film;
  film.timer.Init(film, 0, 0);
  film.paused = true;
  film.timer.Step(60000);
  film.paused = false;
  film.timer.Step(60009);
  EXPECT_EQ(film.shown, "");
  film.timer.Step(60010);
  EXPECT_EQ(film.shown, "1");
}

TEST(AnimationTimer, AClockThatJumpedByWeeksEndsSoon) {
  Film film;
  film.frameTime = 0;
  film.timer.Init(film, 0, 0);
  film.timer.loopsLeft = film.timer.loopsTotal = AnimationTimer::kForEver;
  film.timer.Step(0x7FFFFFFF);
  EXPECT_EQ(film.timer.lastTime, 0x7FFFFFFFu);
}

TEST(AnimationTimer, TicksAddUpPercentOfAFrame) {
  Film film;
  film.timer.Init(film, 0, 1);
  film.frameTime = 30;
  std::string at;
  for (uint32_t now = 20; now <= 200; now += 20) {
    film.timer.Step(now);
    at += std::to_string(film.frame);
  }
  EXPECT_EQ(at, "0001112223");
}

TEST(AnimationTimer, JumpsAndSingleSteps) {
  Film film;
  film.timer.Init(film, 0, 0);
  film.timer.Jump(7, 3);
  film.timer.Jump(8, 5);
  film.timer.Jump(9, -1);
  EXPECT_EQ(film.shown, "3");
  EXPECT_EQ(film.timer.lastTime, 9u);
  film.timer.PrevFrame(10);
  film.timer.NextFrame(11);
  film.timer.NextFrame(12);
  EXPECT_EQ(film.shown, "3234");
  EXPECT_FALSE(film.finished);
  film.timer.NextFrame(13);
  EXPECT_TRUE(film.finished);
  EXPECT_EQ(film.timer.lastTime, 12u);
}

}  // namespace
}  // namespace vl

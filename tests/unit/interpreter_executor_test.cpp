// What a program can't see of the executor: that it needs no more of the machine's stack the longer a program runs or
// the deeper it calls, and which form of instructions a program gets.
#include <gtest/gtest.h>

#include <algorithm>

#include "classes/core_classes.h"
#include "interpreter/interpretor.h"
#include "platform/headless/headless_platform.h"
#include "platform/memory_files.h"
#include "tools/project/project.h"

namespace vl {
namespace {

// Notes how far down the machine's stack a tick is.
class CDepthClock final : public Clock {
 public:
  uint32_t nowMs() override { return now_; }
  LocalTime localTime() override { return {}; }
  uint32_t seed() override { return 1; }
  void tick() override {
    ++now_;
    const auto here = reinterpret_cast<uintptr_t>(__builtin_frame_address(0));
    lowest_ = std::min(lowest_, here);
    highest_ = std::max(highest_, here);
  }
  size_t Spread() const { return highest_ - lowest_; }
  uint32_t Ticks() const { return now_; }

 private:
  uint32_t now_ = 0;
  uintptr_t lowest_ = UINTPTR_MAX;
  uintptr_t highest_ = 0;
};

class ExecutorTest : public testing::Test {
 protected:
  // False when the program fails.
  bool RunSource(const std::string& source) {
    files_.Add("executor.vlp", SingleSourceApplication(source, "executor.vlq"));
    HeadlessOptions options;
    options.files = &files_;
    options.attachHost = false;
    HeadlessPlatform platform(options);
    Services services = platform.services();
    services.clock = &clock;
    CThreadParam param;
    param.path = "executor.vlp";
    param.detached = true;
    static const ClassRegistry registry = [] {
      ClassRegistry r;
      RegisterCoreClasses(r);
      return r;
    }();
    CInterpretor interpreter(param, services, registry);
    interpreter.onEnd = [&] {
      prepared = interpreter.IsPrepared();
      keepsSlots = interpreter.KeepsSlots();
    };
    if (!interpreter.Init()) return false;
    const bool ended = interpreter.Start();
    error = ended ? 0 : interpreter.lastError.code;
    return ended;
  }

  CDepthClock clock;
  bool prepared = false;
  bool keepsSlots = false;
  uint32_t error = 0;

 private:
  MemoryFileSystem files_;
};

constexpr const char* kEverything = R"q(
o = New Thing(1); a[3] = 0; a[0] = 1; b[1, 1] = 2; b[0, 0] = 1; t = "abc"; n = 0;
For (i = 0; i < 3000; i++) {
  n = Add(i, Add(1, 2)) + o.Get(2) - (t.Length()) + Abs(-3) * a[i & 3 & 0];
  If (n > 5 && i != 7 || !n) { a[i % 4] = n; } Else n = n + 1;
  Switch (i % 4) { Case 0: n++; Case 1: n = n - 1; Break; Default: n += 2; }
  b[i & 1 & 0, 0] = (n ? 1 : 2); o.v = o.v + 1; u = t + i; Var q = New Thing(i); Delete q;
  While (n > 100) { n = n / 2; If (n == 60) Continue; If (n < 0) Break; }
  Nothing(); t = (u).SubString(0, 3); k = -n; k = k + (o).Get(1);
}
Function Add(x, y) { z = x; Return z + y; }
Function Thing(v) { This.v = v; This.Get = GetV; }
Function GetV(x) { Return v + x; }
Function Nothing { }
)q";

TEST_F(ExecutorTest, ALongRunStaysWhereItIsOnTheStack) {
  ASSERT_TRUE(RunSource(kEverything)) << error;
  EXPECT_TRUE(prepared);
  EXPECT_GT(clock.Ticks(), 3000u) << "more than one slice";
  EXPECT_LT(clock.Spread(), 4096u) << "a handler called the next one instead of jumping to it";
}

TEST_F(ExecutorTest, DeepCallsTakeNoStack) {
  ASSERT_TRUE(RunSource(
      "r = F(3900); Function F(n) { a = 1; b = 2; c = 3; d = 4; If (n < 1) Return 0; Return F(n - 1) + 1; }"));
  EXPECT_TRUE(prepared);
  EXPECT_LT(clock.Spread(), 4096u);
  EXPECT_FALSE(RunSource("F(); Function F { F(); }"));
  EXPECT_EQ(error, uint32_t{ERR_MEMORY});
}

struct FormCase {
  const char* source;
  bool prepared;
  bool keepsSlots;
};

TEST_F(ExecutorTest, ProgramsGetTheFormThatTheyNeed) {
  constexpr FormCase kCases[] = {
      {"x = 1; x = Max(x, 2); t = \"a\"; n = t.Length(); Flush(); o = New F(); o.Run(); Function F { This.Run = G; } "
       "Function G { }",
       true, false},
      {"a = 3; r = 0; If (a < 7) r = EnableEvents();", true, true},     // may show what the slot held
      {"Program.OnError = F; x = Abs(1); Function F { }", true, true},  // so may any member then
      {"x = 1; If (x > 2) y = x++ * 2;", false, true},                  // can only fail: by the walk
      {"Function F(x) { Return x++ * 2; }", false, true},               // also where nobody calls it
      {"x = 1; Function F(x) { y = x++; Return (x); }", true, false},
  };
  for (const FormCase& c : kCases) {
    EXPECT_TRUE(RunSource(c.source)) << c.source;
    EXPECT_EQ(prepared, c.prepared) << c.source;
    EXPECT_EQ(keepsSlots, c.keepsSlots) << c.source;
  }
}

}  // namespace
}  // namespace vl

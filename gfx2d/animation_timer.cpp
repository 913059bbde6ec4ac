#include "gfx2d/animation_timer.h"

#include <algorithm>

namespace vl {

namespace {

// Frames that one step passes over, at most: the clock of a machine that slept may jump by weeks.
constexpr int kMaxFramesAStep = 1 << 20;
constexpr uint32_t kTickMs = 20;
constexpr uint32_t kWholeFrame = 100;

// Loop counts and frame numbers come from programs and files and may wrap.
int32_t Plus(int32_t v, int32_t by) {
  return static_cast<int32_t>(static_cast<uint32_t>(v) + static_cast<uint32_t>(by));
}

}  // namespace

void AnimationTimer::Init(CAnimatedObject& newOwner, uint32_t nowMs, int32_t newTickMode) {
  owner = &newOwner;
  lastTime = nowMs;
  tickMode = newTickMode;
  accumulator = 0;
}

int32_t AnimationTimer::Next(int32_t frame, bool& finished) {
  finished = false;
  const int32_t first = owner->GetFirstFrame(user);
  const int32_t last = owner->GetLastFrame(user);
  const int32_t loopStart = owner->GetLoopStart(user);
  const bool turns = (flags & kLoopReverse) != 0;
  if (!(flags & kReverse)) {
    if (frame < last) return frame + 1;
    if (loopsLeft == 0) {
      finished = true;
      return frame;
    }
    if (loopsLeft != kForEver) loopsLeft = Plus(loopsLeft, -1);
    if (!turns) return loopStart;
    flags ^= kReverse;
    return last;
  }
  if (loopsTotal == 0 || (loopsLeft != kForEver && loopsLeft == loopsTotal)) {
    finished = frame <= first;
    return finished ? frame : frame - 1;
  }
  if (loopsLeft == kForEver) {
    if (frame != loopStart && frame > first) return frame - 1;
    if (!turns) return last;
    flags ^= kReverse;
    return frame == loopStart ? frame : first;
  }
  // A finite run counts up to where it started, and ends there.
  if (frame > loopStart) return frame - 1;
  loopsLeft = Plus(loopsLeft, 1);
  if (!turns) return last;
  flags ^= kReverse;
  return loopStart;
}

void AnimationTimer::Show(int32_t frame) {
  owner->ShowFrame(frame, user);
  owner->FrameShown(user);
}

void AnimationTimer::Step(uint32_t nowMs) {
  int32_t frame = owner->GetCurrentFrame(user);
  uint32_t base = lastTime;
  auto elapsed = static_cast<int32_t>(nowMs - lastTime);
  bool finished = false;
  if (owner->IsPaused(user)) {
    base = nowMs;
  } else if (tickMode == 0) {
    int passed = 0;
    while (!finished) {
      const int32_t d = std::max(owner->GetFrameTime(frame, user), 1);
      if (elapsed < d) break;
      if (++passed > kMaxFramesAStep) {
        base = nowMs;
        break;
      }
      elapsed -= d;
      base += static_cast<uint32_t>(d);
      frame = Next(frame, finished);
    }
  } else {
    const auto rate = static_cast<uint32_t>(std::clamp<int32_t>(owner->GetFrameTime(frame, user), 0, 1 << 20));
    for (int passed = 0; lastTime < nowMs && !finished && passed < kMaxFramesAStep; ++passed) {
      accumulator += rate;
      if (accumulator >= kWholeFrame) {
        accumulator -= kWholeFrame;
        frame = Next(frame, finished);
        if (finished) break;
      }
      lastTime += kTickMs;
    }
    base = nowMs;
  }
  if (frame != owner->GetCurrentFrame(user)) Show(frame);
  if (finished) owner->Finished(user);
  lastTime = base;
}

void AnimationTimer::MoveOn(uint32_t nowMs, int32_t frame, bool finished) {
  if (frame != owner->GetCurrentFrame(user)) Show(frame);
  if (finished) {
    owner->Finished(user);
  } else {
    lastTime = nowMs;
  }
}

void AnimationTimer::NextFrame(uint32_t nowMs) {
  bool finished = false;
  const int32_t frame = Next(owner->GetCurrentFrame(user), finished);
  MoveOn(nowMs, frame, finished);
}

void AnimationTimer::PrevFrame(uint32_t nowMs) {
  bool finished = false;
  flags ^= kReverse;
  const int32_t frame = Next(owner->GetCurrentFrame(user), finished);
  flags ^= kReverse;
  MoveOn(nowMs, frame, finished);
}

void AnimationTimer::Jump(uint32_t nowMs, int32_t frame) {
  if (frame != owner->GetCurrentFrame(user) && frame >= owner->GetFirstFrame(user) &&
      frame <= owner->GetLastFrame(user)) {
    Show(frame);
  }
  lastTime = nowMs;
}

}  // namespace vl

// AnimationTimer: runs through frames over time. It knows time, loops and direction, and asks its owner for the rest.
//
// Three owners share it: Animation, Sprite and the 3D object. Times are milliseconds of the run's clock. Owners may
// give any frame numbers; nothing here allocates.
#pragma once

#include <cstdint>

namespace vl {

// What a timer asks of its owner; `user` is the timer's field of that name.
class CAnimatedObject {
 public:
  virtual ~CAnimatedObject() = default;
  virtual int32_t GetCurrentFrame(uint32_t user) = 0;
  virtual void ShowFrame(int32_t frame, uint32_t user) = 0;
  // Follows ShowFrame.
  virtual void FrameShown(uint32_t user) {}
  // The last loop has ended.
  virtual void Finished(uint32_t user) = 0;
  // Milliseconds in time mode, 0 counts as 1; in tick mode percent of a frame for each 20 ms.
  virtual int32_t GetFrameTime(int32_t frame, uint32_t user) = 0;
  virtual int32_t GetFirstFrame(uint32_t user) = 0;
  virtual int32_t GetLastFrame(uint32_t user) = 0;
  virtual int32_t GetLoopStart(uint32_t user) = 0;
  virtual bool IsPaused(uint32_t user) = 0;
};

struct AnimationTimer {
  static constexpr uint32_t kReverse = 1;
  static constexpr uint32_t kLoopReverse = 4;  // at the end of a loop the direction turns instead of jumping
  static constexpr int32_t kForEver = -1;

  void Init(CAnimatedObject& newOwner, uint32_t nowMs, int32_t newTickMode);
  // Shows a frame if it is one of the owner's.
  void Jump(uint32_t nowMs, int32_t frame);
  void NextFrame(uint32_t nowMs);
  void PrevFrame(uint32_t nowMs);
  // A late step passes over frames without showing them.
  void Step(uint32_t nowMs);

  CAnimatedObject* owner = nullptr;
  uint32_t user = 0;
  uint32_t lastTime = 0;   // of the last step
  int32_t loopsLeft = 0;   // -1 for ever
  int32_t loopsTotal = 0;  // at the start
  uint32_t flags = 0;
  uint32_t accumulator = 0;  // tick mode: percent of a frame
  int32_t tickMode = 0;      // 0 time mode, 1 tick mode

 private:
  int32_t Next(int32_t frame, bool& finished);
  void Show(int32_t frame);
  void MoveOn(uint32_t nowMs, int32_t frame, bool finished);
};

}  // namespace vl

// CFramePlayer: what Animation and Sprite share: an animation read frame by frame into a surface, and its playing over
// time with the members for it.
//
// The reader's current frame is the one in `frameSurface`; `wantedFrame` may be ahead of it until UpdateFrame runs, so
// that only frames that are seen get decoded.
#pragma once

#include <cstdint>
#include <memory>

#include "gfx2d/animation_timer.h"
#include "gfx2d/images/image_reader.h"
#include "gfx2d/surface.h"
#include "interpreter/interpretor.h"

namespace vl {

class CElement;

inline constexpr uint32_t kPlayReverse = 0xABCD0001;

class CFramePlayer : public CAnimatedObject, public CTimed {
 public:
  explicit CFramePlayer(CInterpretor& interpreter);
  ~CFramePlayer() override;

  // Opens a stream as animation, or an element's; what was open is closed. False when no filter reads it.
  bool OpenFrames(std::unique_ptr<CStream> source, CElement* element);
  // The surface for the frames, in the reader's size. Depth 8 and less takes `palette` or else the reader's.
  bool MakeFrameSurface(const cSurfaceImpl& prototype, const PaletteRef& palette);
  // Stops, and lets go of everything.
  void CloseFrames();
  // Brings `wantedFrame` into the surface. A frame that can't be read leaves it as it was.
  void UpdateFrame();
  void StopPlaying();

  // CAnimatedObject and CTimed.
  int32_t GetCurrentFrame(uint32_t user) override { return reader ? reader->GetCurrentFrame() : 0; }
  void ShowFrame(int32_t frame, uint32_t user) override;
  void Finished(uint32_t user) override { StopPlaying(); }
  int32_t GetFrameTime(int32_t frame, uint32_t user) override;
  int32_t GetFirstFrame(uint32_t user) override { return 0; }
  int32_t GetLastFrame(uint32_t user) override { return FrameCount() - 1; }
  int32_t GetLoopStart(uint32_t user) override { return loopStart; }
  bool IsPaused(uint32_t user) override { return paused; }
  void Step(uint32_t nowMs) override { timer.Step(nowMs); }

  // Members.
  void Play();
  void Stop() { StopPlaying(); }
  void Pause();
  void SetFrame();
  void GetFrame();
  void Resume();
  void IsPlaying();
  void IsPausedMember();
  void GetNFrames();
  void NextFrame();
  void PrevFrame();
  void SetSpeedFactor();
  void GetSpeedFactor();

  std::unique_ptr<ImageReader> reader;
  std::shared_ptr<cSurface> frameSurface;
  std::unique_ptr<CStream> stream;
  uint32_t timerEntry = 0;
  int32_t loopCount = 0;
  int32_t loopStart = 0;
  int32_t wantedFrame = 0;
  bool playing = false;
  bool paused = false;
  int32_t speedFactor = 100;  // percent
  AnimationTimer timer;

 protected:
  // `wantedFrame` has changed.
  virtual void OnFrameWanted() = 0;
  int32_t FrameCount() const { return reader ? reader->GetFrameCount() : 0; }

 private:
  CInterpretor& playerInterpreter_;
  CElement* lockedElement_ = nullptr;
};

// A member of the player, in the table of the runtime class `Owner` that holds one.
template <class Owner, void (CFramePlayer::*Method)()>
void PlayerMember(CIBaseClassImpl& object) {
  (static_cast<Owner&>(object).*Method)();
}

}  // namespace vl

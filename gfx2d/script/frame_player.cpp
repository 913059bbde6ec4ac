#include "gfx2d/script/frame_player.h"

#include <algorithm>

#include "gfx2d/script/graphics.h"
#include "host/appfile/bank.h"
#include "host/appfile/element.h"

namespace vl {

namespace {

constexpr int32_t kFrameTimeWithoutReader = 20;
constexpr uint32_t kFlagFamily = 0xABCD0000;
constexpr uint32_t kFlagBits = 0xFFFF;

}  // namespace

CFramePlayer::CFramePlayer(CInterpretor& interpreter) : playerInterpreter_(interpreter) {
  timer.Init(*this, interpreter.NowMs(), 0);
}

CFramePlayer::~CFramePlayer() { CloseFrames(); }

bool CFramePlayer::OpenFrames(std::unique_ptr<CStream> source, CElement* element) {
  CloseFrames();
  auto opened = std::make_unique<ImageReader>(CGraphics::Of(playerInterpreter_).filters);
  if (!source || opened->OpenStream(source.get())) return false;
  stream = std::move(source);
  reader = std::move(opened);
  // The stream may read the loaded body.
  if (element && element->IsLoaded()) {
    element->bank->Lock(element->index);
    lockedElement_ = element;
  }
  loopCount = reader->GetLoopCount() - (reader->GetLoopCount() > INT32_MIN ? 1 : 0);
  loopStart = reader->GetLoopStart();
  wantedFrame = GetFirstFrame(0);
  timer.loopsLeft = timer.loopsTotal = loopCount;
  timer.flags = 0;
  return true;
}

bool CFramePlayer::MakeFrameSurface(const cSurfaceImpl& prototype, const PaletteRef& palette) {
  if (!reader) return false;
  auto made = std::make_shared<cSurface>();
  if (!made->Create(reader->GetWidth(), reader->GetHeight(), &prototype)) return false;
  if (made->impl->depth <= 8) {
    if (palette) {
      made->impl->SetPalette(palette, false);
    } else if (const PaletteRecord* own = reader->GetPalette()) {
      made->impl->SetPaletteRecord(*own, false);
    }
  }
  frameSurface = std::move(made);
  return true;
}

void CFramePlayer::CloseFrames() {
  StopPlaying();
  reader.reset();
  stream.reset();
  frameSurface.reset();
  if (lockedElement_) lockedElement_->bank->Unlock(lockedElement_->index);
  lockedElement_ = nullptr;
}

void CFramePlayer::UpdateFrame() {
  if (!reader || !frameSurface || wantedFrame == reader->GetCurrentFrame()) return;
  const cSurfaceImpl& pixels = *frameSurface->impl;
  if (!pixels.Lock()) return;
  ImageTarget target;
  target.bits = pixels.topLine;
  target.width = pixels.width;
  target.height = pixels.height;
  target.pitch = pixels.pitch;
  target.depth = pixels.depth;
  target.palette = pixels.palette.Get();
  bool seek = true;
  if (reader->GetCurrentFrame() == -1) {
    reader->Rewind();
    seek = !reader->Read(target) && wantedFrame != 0;
  }
  if (seek) reader->SeekFrame(wantedFrame, target);
  pixels.Unlock();
}

void CFramePlayer::StopPlaying() {
  if (!playing) return;
  paused = playing = false;
  playerInterpreter_.RemoveTimed(timerEntry);
  timerEntry = 0;
}

void CFramePlayer::ShowFrame(int32_t frame, uint32_t user) {
  wantedFrame = std::clamp(frame, 0, std::max(FrameCount() - 1, 0));
  OnFrameWanted();
}

int32_t CFramePlayer::GetFrameTime(int32_t frame, uint32_t user) {
  int64_t time = reader ? reader->GetFrameTime(frame) : kFrameTimeWithoutReader;
  if (speedFactor != 100) time = time * 100 / speedFactor;
  return static_cast<int32_t>(std::clamp<int64_t>(time, 1, INT32_MAX));
}

void CFramePlayer::Play() {
  StopPlaying();
  for (int place = 0; place < playerInterpreter_.GetArgCount(); ++place) {
    const CValue& value = *playerInterpreter_.GetArg(place);
    if (value.type != VT_INTEGER && value.type != VT_FLOAT) continue;
    const int32_t number = value.GetInt();
    if (number == kDefaultInt) continue;
    switch (place) {
      case 0:
        loopCount = number;
        break;
      case 1:
        loopStart = reader ? std::min(number, FrameCount() - 1) : number;
        break;
      case 2:
        if ((static_cast<uint32_t>(number) & ~kFlagBits) != kFlagFamily) {
          playerInterpreter_.RaiseError(ERR_BAD_ARGUMENT);
        }
        timer.flags |= static_cast<uint32_t>(number) & kFlagBits;
        break;
      default:
        break;
    }
  }
  const int32_t start = (timer.flags & AnimationTimer::kReverse) ? GetLastFrame(0) : GetFirstFrame(0);
  wantedFrame = start;
  timer.loopsLeft = timer.loopsTotal = loopCount;
  const uint32_t now = playerInterpreter_.NowMs();
  timer.Jump(now, start);
  timerEntry = playerInterpreter_.AddTimed(this);
  timer.lastTime = now;
  playing = true;
}

void CFramePlayer::Pause() {
  if (playing) paused = true;
}

void CFramePlayer::Resume() {
  if (playing) paused = false;
}

void CFramePlayer::SetFrame() {
  const int32_t frame = playerInterpreter_.GetArgInt(0);
  if (frame != kDefaultInt) timer.Jump(playerInterpreter_.NowMs(), frame);
}

void CFramePlayer::GetFrame() { playerInterpreter_.GetResult().SetInt(wantedFrame); }
void CFramePlayer::IsPlaying() { playerInterpreter_.GetResult().SetInt(playing); }
void CFramePlayer::IsPausedMember() { playerInterpreter_.GetResult().SetInt(paused); }
void CFramePlayer::GetNFrames() { playerInterpreter_.GetResult().SetInt(FrameCount()); }

void CFramePlayer::NextFrame() {
  if (reader) timer.NextFrame(playerInterpreter_.NowMs());
}

void CFramePlayer::PrevFrame() {
  if (reader) timer.PrevFrame(playerInterpreter_.NowMs());
}

void CFramePlayer::SetSpeedFactor() {
  const int32_t percent = playerInterpreter_.GetArgInt(0);
  speedFactor = percent == kDefaultInt ? 100 : std::max(percent, 1);
}

void CFramePlayer::GetSpeedFactor() { playerInterpreter_.GetResult().SetInt(speedFactor); }

}  // namespace vl

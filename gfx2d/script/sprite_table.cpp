// The table of the class Sprite.
#include "gfx2d/script/sprite_class.h"

namespace vl {

namespace {

template <void (CFramePlayer::*Method)()>
constexpr MemberRow Played(uint16_t id, const char* name, const char* help) {
  return Row(id, name, &PlayerMember<CISprite, Method>, help);
}

constexpr MemberRow kRows[] = {
    Row(1, "Set", kMember<&CISprite::Set>, "Set(x, y, image): a picture, animation or Surface; a missing one stays"),
    Row(2, "GetX", kMember<&CISprite::GetX>, "GetX(): of its hot spot"),
    Row(3, "GetY", kMember<&CISprite::GetY>, "GetY(): of its hot spot"),
    Row(4, "GetLeft", kMember<&CISprite::GetLeft>, "GetLeft(): of its box"),
    Row(5, "GetTop", kMember<&CISprite::GetTop>, "GetTop(): of its box"),
    Row(6, "GetRight", kMember<&CISprite::GetRight>, "GetRight(): of its box, excluded"),
    Row(7, "GetBottom", kMember<&CISprite::GetBottom>, "GetBottom(): of its box, excluded"),
    Row(8, "SetCollision", kMember<&CISprite::SetCollision>, "SetCollision(mode): CMNONE, CMBOX or CMFINE"),
    Row(9, "SetDrawEffect", kMember<&CISprite::SetDrawEffect>,
        "SetDrawEffect(effect, param): one of DE..., the parameter from 0 to 255"),
    Row(10, "Show", kMember<&CISprite::Show>, "Show()"),
    Row(11, "Hide", kMember<&CISprite::Hide>, "Hide()"),
    Row(12, "IsPointIn", kMember<&CISprite::IsPointInMember>, "IsPointIn(x, y): on a pixel that shows; 1 or 0"),
    Row(13, "IsColliding", kMember<&CISprite::IsColliding>, "IsColliding(sprite): 1 or 0"),
    Row(14, "GetFirstCollidingSprite", kMember<&CISprite::GetFirstCollidingSprite>,
        "GetFirstCollidingSprite(): null when there is none"),
    Row(15, "GetNextCollidingSprite", kMember<&CISprite::GetNextCollidingSprite>,
        "GetNextCollidingSprite(sprite): behind that one"),
    Row(16, "SetTransparent", kMember<&CISprite::SetTransparent>, "SetTransparent(flag): pixels of value 0 don't show"),
    Row(17, "SetAntiAliasing", kMember<&CISprite::SetAntiAliasing>, "SetAntiAliasing(flag): soft edges"),
    Row(18, "SetLayer", kMember<&CISprite::SetLayer>, "SetLayer(n): higher ones lie in front"),
    Row(19, "GetLayer", kMember<&CISprite::GetLayer>, "GetLayer()"),
    Row(20, "MoveToBack", kMember<&CISprite::MoveToBack>, "MoveToBack(): of its layer"),
    Row(21, "MoveToFront", kMember<&CISprite::MoveToFront>, "MoveToFront(): of its layer"),
    Row(22, "MoveBackward", kMember<&CISprite::MoveBackward>, "MoveBackward(): by one in its layer"),
    Row(23, "MoveForward", kMember<&CISprite::MoveForward>, "MoveForward(): by one in its layer"),
    Row(24, "MoveBefore", kMember<&CISprite::MoveBefore>, "MoveBefore(sprite): drawn before one of its layer"),
    Row(25, "MoveAfter", kMember<&CISprite::MoveAfter>, "MoveAfter(sprite): drawn after one of its layer"),
    Row(26, "IsIn", kMember<&CISprite::IsIn>, "IsIn(x1, y1, x2, y2): wholly inside; without a box, the surface's"),
    Row(27, "IsOut", kMember<&CISprite::IsOut>, "IsOut(x1, y1, x2, y2): wholly outside"),
    Row(28, "IsLeaving", kMember<&CISprite::IsLeaving>, "IsLeaving(x1, y1, x2, y2): out since it was last drawn"),
    Row(29, "IsEntering", kMember<&CISprite::IsEntering>, "IsEntering(x1, y1, x2, y2): in since it was last drawn"),
    Row(30, "SetScale", kMember<&CISprite::SetScale>, "SetScale(x, y): without y the same as x"),
    Row(31, "GetScaleX", kMember<&CISprite::GetScaleX>, "GetScaleX()"),
    Row(32, "GetScaleY", kMember<&CISprite::GetScaleY>, "GetScaleY()"),
    Row(33, "SetAngle", kMember<&CISprite::SetAngle>, "SetAngle(degrees, interpolate): around its hot spot"),
    Row(34, "GetAngle", kMember<&CISprite::GetAngle>, "GetAngle(): 0 to 359 degrees"),
    Row(35, "SetHotSpot", kMember<&CISprite::SetHotSpot>, "SetHotSpot(x, y): in the picture; a missing one stays"),
    Row(36, "GetHotSpotX", kMember<&CISprite::GetHotSpotX>, "GetHotSpotX()"),
    Row(37, "GetHotSpotY", kMember<&CISprite::GetHotSpotY>, "GetHotSpotY()"),
    Row(38, "GetWidth", kMember<&CISprite::GetWidth>, "GetWidth(): of its picture, not scaled"),
    Row(39, "GetHeight", kMember<&CISprite::GetHeight>, "GetHeight(): of its picture, not scaled"),
    Row(40, "SetClipRect", kMember<&CISprite::SetClipRect>, "SetClipRect(x, y, w, h): shows only there"),
    Row(41, "IsVisible", kMember<&CISprite::IsVisible>, "IsVisible(): 1 or 0"),
    Played<&CFramePlayer::Play>(42, "Play", "Play(loops, loopStart, flags): missing ones stay; loops counts repeats"),
    Played<&CFramePlayer::Stop>(43, "Stop", "Stop(): stays on its frame"),
    Played<&CFramePlayer::Pause>(44, "Pause", "Pause(): until Resume; the time is lost"),
    Played<&CFramePlayer::SetFrame>(45, "SetFrame", "SetFrame(frame): from 0; nothing when there is none"),
    Played<&CFramePlayer::GetFrame>(46, "GetFrame", "GetFrame(): from 0"),
    Played<&CFramePlayer::Resume>(47, "Resume", "Resume(): after Pause"),
    Played<&CFramePlayer::IsPlaying>(48, "IsPlaying", "IsPlaying(): 1 or 0, 1 also while paused"),
    Played<&CFramePlayer::IsPausedMember>(49, "IsPaused", "IsPaused(): 1 or 0"),
    Played<&CFramePlayer::GetNFrames>(50, "GetNFrames", "GetNFrames(): how many frames it has"),
    Played<&CFramePlayer::NextFrame>(51, "NextFrame", "NextFrame(): one in its direction"),
    Played<&CFramePlayer::PrevFrame>(52, "PrevFrame", "PrevFrame(): one against its direction"),
    Played<&CFramePlayer::SetSpeedFactor>(53, "SetSpeedFactor", "SetSpeedFactor(percent): without one, 100"),
    Played<&CFramePlayer::GetSpeedFactor>(54, "GetSpeedFactor", "GetSpeedFactor(): percent"),
    Row(55, "SetPrivateData", kMember<&CISprite::SetPrivateData>, "SetPrivateData(v): keeps any value"),
    Row(56, "GetPrivateData", kMember<&CISprite::GetPrivateData>, "GetPrivateData(): the value kept"),
    Constant(58, "CMNONE", 2, "collision mode: never"),
    Constant(59, "CMBOX", 3, "collision mode: by boxes"),
    Constant(60, "CMFINE", 4, "collision mode: by pixels"),
    Constant(61, "DENONE", 0, "draw effect: the picture as it is"),
    Constant(62, "DESEMITRANSP", 1, "draw effect: mixed, the parameter from 0 to 255"),
    Constant(63, "DEINVERTED", 2, "draw effect: the picture inverted"),
    Constant(64, "DEXOR", 3, "draw effect"),
    Constant(65, "DEAND", 4, "draw effect"),
    Constant(66, "DEOR", 5, "draw effect"),
    Constant(67, "DEADD", 9, "draw effect: added, at most 255"),
    Constant(68, "REVERSE", kPlayReverse, "flag of Play: backwards, from now on"),
    Constant(69, "LOOP_INFINITE", 0xFFFFFFFF, "loops of Play: for ever"),
};

}  // namespace

const ClassTable kSpriteClass = {CLASS_SPRITE, kRows, &CreateObject<CISprite>,
                                 "A picture that moves: New Sprite(surface, x, y, image), all of them optional"};

}  // namespace vl

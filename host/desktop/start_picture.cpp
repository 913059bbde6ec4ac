#include "host/desktop/start_picture.h"

#include "base/memory_budget.h"
#include "gfx2d/present.h"
#include "gfx2d/surface.h"
#include "gfx2d/surface_library.h"
#include "gfx2d/surface_text.h"
#include "host/control.h"

namespace vl {
namespace {

constexpr Size kPicture = {320, 240};
constexpr Colour kGround = MakeColour(20, 26, 66);
constexpr Colour kBand = MakeColour(34, 44, 108);
constexpr Colour kMark = MakeColour(255, 210, 60);
constexpr Colour kDot = MakeColour(255, 90, 60);
constexpr Colour kName = MakeColour(230, 234, 250);
constexpr int kNameHeight = -28;
constexpr int kBold = 700;

// The mark of the player: a V that throws a ball.
void Paint(cSurface& surface, TextEngine& text) {
  surface.Fill(0, 0, kPicture.width, kPicture.height, kGround);
  surface.Fill(0, 30, kPicture.width, 130, kBand);
  const Point mark[] = {{110, 58}, {136, 58}, {160, 110}, {184, 58}, {210, 58}, {173, 142}, {147, 142}};
  surface.DrawPolygonShape(mark, kMark, 0, kMark, true);
  surface.DrawEllipse({150, 52, 171, 73}, kDot, 0, kDot, true);
  FontDescription description;
  description.height = kNameHeight;
  description.weight = kBold;
  const auto font = text.openFont(description);
  if (!font) return;
  Rect box{0, 176, kPicture.width, 220};
  TextPaint paint;
  paint.colour = kName;
  DrawTextEx(surface, *font, "Vorlane", box, kTextCentre | kTextVerticalCentre | kTextSingleLine, paint, {});
}

}  // namespace

std::vector<uint32_t> MakeStartPicture(Size bounds, TextEngine& text) {
  MemoryBudget budget;
  SurfaceLibrary library(&budget);
  const cSurfaceImpl* const prototype = library.FindPrototype(32);
  cSurface picture;
  cSurface control;
  if (!picture.Create(kPicture.width, kPicture.height, prototype)) return {};
  if (!control.Create(bounds.width, bounds.height, prototype)) return {};
  Paint(picture, text);
  control.Fill(0, 0, bounds.width, bounds.height, kGround);
  const Rect place = PlaceOfStartPicture(kPicture, bounds);
  picture.StretchBlit(control, place.left, place.top, place.Width(), place.Height(), 0, 0, kPicture.width,
                      kPicture.height, 0, 0, 0, true);
  std::vector<uint32_t> words(static_cast<size_t>(bounds.width) * static_cast<size_t>(bounds.height));
  SurfaceToWords(*control.impl, {0, 0, bounds.width, bounds.height}, words.data(), bounds.width);
  return words;
}

}  // namespace vl

// Turns of 640 x 480, by 33 degrees and by a quarter, plain and interpolated.
#include "bench/graphics/pictures.h"

namespace vl::bench {
namespace {

void PixmanTurn(Pair& p, int degrees, pixman_filter_t filter) {
  const double radians = degrees * 0.01745329251993889;
  pixman_f_transform_t turn;
  pixman_f_transform_init_translate(&turn, -p.to->width / 2.0, -p.to->height / 2.0);
  pixman_f_transform_rotate(&turn, nullptr, std::cos(radians), std::sin(radians));
  pixman_f_transform_translate(&turn, nullptr, kWidth / 2.0, kHeight / 2.0);
  pixman_transform_t fixed;
  pixman_transform_from_pixman_f_transform(&fixed, &turn);
  pixman_image_set_transform(p.pixmanFrom.get(), &fixed);
  pixman_image_set_filter(p.pixmanFrom.get(), filter, nullptr, 0);
  pixman_image_composite32(PIXMAN_OP_SRC, p.pixmanFrom.get(), nullptr, p.pixmanTo.get(), 0, 0, 0, 0, 0, 0, p.to->width,
                           p.to->height);
}

void Turn(int depth, int degrees, bool interpolate) {
  const std::string name = std::string(interpolate ? "rotateinterp/" : "rotate/") + std::to_string(depth) +
                           (degrees == 90 ? "quarter/" : "/");
  const Size size = degrees == 90 ? Size{kHeight, kWidth} : Size{798, 751};
  const auto make = [depth, size] {
    return std::make_unique<Pictures>(depth, Content::kSprites, size.width, size.height);
  };
  Register(name + "vorlane", make,
           [degrees, interpolate](Pair& p) { p.from->Rotate(*p.to, degrees, interpolate, 0x123456); });
  if (depth == 8) return;
  Register(name + "pixman", make, [degrees, interpolate](Pair& p) {
    PixmanTurn(p, degrees, interpolate ? PIXMAN_FILTER_BILINEAR : PIXMAN_FILTER_NEAREST);
  });
}

const bool registered = [] {
  for (const bool interpolate : {false, true}) {
    for (const int depth : {32, 24, 16, 15, 8}) Turn(depth, 33, interpolate);
    for (const int depth : {32, 16}) Turn(depth, 90, interpolate);
  }
  return true;
}();

}  // namespace
}  // namespace vl::bench

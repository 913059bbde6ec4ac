// Stretches of 640 x 480: nearest by 2 and by an odd ratio, and filtered, larger and smaller.
#include "bench/graphics/pictures.h"

namespace vl::bench {
namespace {

struct Target {
  const char* name;
  int width;
  int height;
};

void OurStretch(Pair& p, bool resample) {
  p.from->StretchBlit(*p.to, 0, 0, p.to->width, p.to->height, 0, 0, kWidth, kHeight, 0, kEffectNone, 0, resample);
}

void PixmanScale(Pair& p, pixman_filter_t filter, const pixman_fixed_t* params, int count) {
  pixman_transform_t transform;
  const double x = double(kWidth) / p.to->width;
  const double y = double(kHeight) / p.to->height;
  pixman_transform_init_scale(&transform, pixman_double_to_fixed(x), pixman_double_to_fixed(y));
  pixman_image_set_transform(p.pixmanFrom.get(), &transform);
  pixman_image_set_filter(p.pixmanFrom.get(), filter, params, count);
  pixman_image_set_repeat(p.pixmanFrom.get(), PIXMAN_REPEAT_PAD);
  pixman_image_composite32(PIXMAN_OP_SRC, p.pixmanFrom.get(), nullptr, p.pixmanTo.get(), 0, 0, 0, 0, 0, 0, p.to->width,
                           p.to->height);
}

void Nearest(int depth, const Target& t) {
  const std::string name = "nearest/" + std::to_string(depth) + t.name + "/";
  const auto make = [depth, t] { return std::make_unique<Pictures>(depth, Content::kSprites, t.width, t.height); };
  Register(name + "vorlane", make, [](Pair& p) { OurStretch(p, false); });
  Register(name + "SDL2", make, [](Pair& p) { SDL_SoftStretch(p.sdlFrom.get(), nullptr, p.sdlTo.get(), nullptr); });
  if (depth == 8) return;
  Register(name + "pixman", make, [](Pair& p) { PixmanScale(p, PIXMAN_FILTER_NEAREST, nullptr, 0); });
}

void Resample(int depth, const Target& t) {
  const std::string name = "resample/" + std::to_string(depth) + t.name + "/";
  const auto make = [depth, t] { return std::make_unique<Pictures>(depth, Content::kSprites, t.width, t.height); };
  Register(name + "vorlane", make, [](Pair& p) { OurStretch(p, true); });
  if (depth == 32) {
    Register(name + "SDL2linear", make,
             [](Pair& p) { SDL_SoftStretchLinear(p.sdlFrom.get(), nullptr, p.sdlTo.get(), nullptr); });
  }
  Register(name + "pixmanbilinear", make, [](Pair& p) { PixmanScale(p, PIXMAN_FILTER_BILINEAR, nullptr, 0); });
  int count = 0;
  const std::shared_ptr<pixman_fixed_t> params(
      pixman_filter_create_separable_convolution(
          &count, pixman_double_to_fixed(double(kWidth) / t.width), pixman_double_to_fixed(double(kHeight) / t.height),
          PIXMAN_KERNEL_LINEAR, PIXMAN_KERNEL_LINEAR, PIXMAN_KERNEL_BOX, PIXMAN_KERNEL_BOX, 4, 4),
      std::free);
  Register(name + "pixmanfilter", make,
           [params, count](Pair& p) { PixmanScale(p, PIXMAN_FILTER_SEPARABLE_CONVOLUTION, params.get(), count); });
}

const bool registered = [] {
  for (const int depth : {32, 24, 16, 15, 8}) Nearest(depth, {"", 2 * kWidth, 2 * kHeight});
  for (const int depth : {32, 24, 16, 8}) Nearest(depth, {"odd", 877, 658});
  Nearest(32, {"half", kWidth / 2, kHeight / 2});
  for (const int depth : {32, 24, 16}) {
    Resample(depth, {"larger", 1000, 750});
    Resample(depth, {"smaller", 277, 208});
  }
  return true;
}();

}  // namespace
}  // namespace vl::bench

// Fills of 640 x 480 with one colour.
#include "bench/graphics/pictures.h"

namespace vl::bench {
namespace {

constexpr Colour kColour = MakeColour(200, 90, 33);

const bool registered = [] {
  for (const int depth : {32, 24, 16, 15, 8}) {
    const std::string name = "fill/" + std::to_string(depth) + "/";
    const auto make = [depth] { return std::make_unique<Pictures>(depth, Content::kNoise); };
    Register(name + "vorlane", make, [](Pair& p) { p.to->Fill(0, 0, kWidth, kHeight, kColour); });
    Register(name + "memset", make,
             [](Pair& p) { std::memset(p.destination.bytes.data(), 0x55, p.destination.Bytes()); });
    Register(name + "SDL2", make, [](Pair& p) { SDL_FillRect(p.sdlTo.get(), nullptr, 0x5A21); });
    if (depth == 8) continue;
    Register(name + "pixman", make, [](Pair& p) {
      pixman_color_t colour = {0xC8C8, 0x5A5A, 0x2121, 0xFFFF};
      const pixman_rectangle16_t box = {0, 0, kWidth, kHeight};
      pixman_image_fill_rectangles(PIXMAN_OP_SRC, p.pixmanTo.get(), &colour, 1, &box);
    });
  }
  return true;
}();

}  // namespace
}  // namespace vl::bench

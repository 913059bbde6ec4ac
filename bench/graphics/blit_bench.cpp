// Blits of 640 x 480: plain, keyed, blended and from one depth to another.
#include "bench/graphics/pictures.h"

namespace vl::bench {
namespace {

constexpr uint32_t kWeight = 48;       // of the destination, out of 128
constexpr uint8_t kSourceAlpha = 159;  // the same for those that count in 255
constexpr uint16_t kSourceAlpha16 = 0x9F9F;

void OurBlit(Pair& p, int mode, int effect, uint32_t param) {
  p.from->Blit(*p.to, 0, 0, 0, 0, kWidth, kHeight, mode, effect, param, false);
}

void SdlBlit(Pair& p) { SDL_BlitSurface(p.sdlFrom.get(), nullptr, p.sdlTo.get(), nullptr); }

void Opaque(int depth) {
  const std::string name = "opaque/" + std::to_string(depth) + "/";
  const auto make = [depth] { return std::make_unique<Pictures>(depth, Content::kNoise); };
  Register(name + "vorlane", make, [](Pair& p) { OurBlit(p, 0, kEffectNone, 0); });
  Register(name + "memcpy", make,
           [](Pair& p) { std::memcpy(p.destination.bytes.data(), p.source.bytes.data(), p.source.Bytes()); });
  Register(name + "SDL2", make, SdlBlit);
  if (depth == 8) return;
  Register(name + "pixman", make, [](Pair& p) {
    pixman_image_composite32(PIXMAN_OP_SRC, p.pixmanFrom.get(), nullptr, p.pixmanTo.get(), 0, 0, 0, 0, 0, 0, kWidth,
                             kHeight);
  });
}

void Keyed(int depth, Content content) {
  const std::string name =
      "keyed/" + std::to_string(depth) + (content == Content::kNoise ? "noise" : "") + std::string("/");
  const auto make = [depth, content] { return std::make_unique<Pictures>(depth, content); };
  Register(name + "vorlane", make, [](Pair& p) { OurBlit(p, 1, kEffectNone, 0); });
  Register(name + "memcpy", make,
           [](Pair& p) { std::memcpy(p.destination.bytes.data(), p.source.bytes.data(), p.source.Bytes()); });
  Register(
      name + "SDL2",
      [make] {
        auto pictures = make();
        for (auto& pair : pictures->All()) SDL_SetColorKey(pair->sdlFrom.get(), SDL_TRUE, 0);
        return pictures;
      },
      SdlBlit);
  if (depth != 32) return;
  // The nearest thing it has: alpha of all or nothing.
  Register(
      name + "pixman",
      [make] {
        auto pictures = make();
        for (auto& pair : pictures->All()) {
          for (size_t i = 0; i < pair->source.Bytes(); i += 4) {
            const uint32_t pixel = LoadWord<uint32_t>(&pair->source.bytes[i]);
            StoreWord<uint32_t>(&pair->source.bytes[i], pixel == 0 ? 0 : pixel | 0xFF000000);
          }
          pair->pixmanFrom = ForPixman(pair->source, true);
        }
        return pictures;
      },
      [](Pair& p) {
        pixman_image_composite32(PIXMAN_OP_OVER, p.pixmanFrom.get(), nullptr, p.pixmanTo.get(), 0, 0, 0, 0, 0, 0,
                                 kWidth, kHeight);
      });
}

void Blended(int depth, bool isKeyed) {
  const std::string name = "blended/" + std::to_string(depth) + (isKeyed ? "keyed/" : "/");
  const auto make = [depth] { return std::make_unique<Pictures>(depth, Content::kSprites); };
  Register(name + "vorlane", make, [isKeyed](Pair& p) { OurBlit(p, isKeyed, kEffectBlend, kWeight); });
  Register(
      name + "SDL2",
      [make, isKeyed] {
        auto pictures = make();
        for (auto& pair : pictures->All()) {
          SDL_SetSurfaceBlendMode(pair->sdlFrom.get(), SDL_BLENDMODE_BLEND);
          SDL_SetSurfaceAlphaMod(pair->sdlFrom.get(), kSourceAlpha);
          if (isKeyed) SDL_SetColorKey(pair->sdlFrom.get(), SDL_TRUE, 0);
        }
        return pictures;
      },
      SdlBlit);
  if (isKeyed) return;
  const pixman_color_t colour = {0, 0, 0, kSourceAlpha16};
  const std::shared_ptr<pixman_image_t> mask(pixman_image_create_solid_fill(&colour), pixman_image_unref);
  Register(name + "pixman", make, [mask](Pair& p) {
    pixman_image_composite32(PIXMAN_OP_OVER, p.pixmanFrom.get(), mask.get(), p.pixmanTo.get(), 0, 0, 0, 0, 0, 0, kWidth,
                             kHeight);
  });
}

// A keyed blit with softened edges; no peer has one, so a copy stands in.
void Softened(int depth) {
  const std::string name = "softened/" + std::to_string(depth) + "/";
  const auto make = [depth] { return std::make_unique<Pictures>(depth, Content::kSprites); };
  Register(name + "vorlane", make,
           [](Pair& p) { p.from->Blit(*p.to, 0, 0, 0, 0, kWidth, kHeight, 1, kEffectNone, 0, true); });
  Register(name + "memcpy", make,
           [](Pair& p) { std::memcpy(p.destination.bytes.data(), p.source.bytes.data(), p.source.Bytes()); });
}

void Convert(int from, int to) {
  const std::string name = "convert/" + std::to_string(from) + "to" + std::to_string(to) + "/";
  const auto make = [from, to] { return std::make_unique<Pictures>(from, Content::kNoise, to); };
  Register(name + "vorlane", make, [](Pair& p) { OurBlit(p, 0, kEffectNone, 0); });
  Register(name + "SDL2", make, SdlBlit);
  if (from == 8) return;
  Register(name + "pixman", make, [](Pair& p) {
    pixman_image_composite32(PIXMAN_OP_SRC, p.pixmanFrom.get(), nullptr, p.pixmanTo.get(), 0, 0, 0, 0, 0, 0, kWidth,
                             kHeight);
  });
}

const bool registered = [] {
  for (const auto& [from, to] :
       {std::pair{24, 16}, std::pair{32, 16}, std::pair{16, 32}, std::pair{24, 32}, std::pair{32, 24},
        std::pair{15, 16}, std::pair{16, 24}, std::pair{8, 16}, std::pair{8, 24}, std::pair{8, 32}}) {
    Convert(from, to);
  }
  for (const int depth : {32, 24, 16, 15, 8}) {
    Opaque(depth);
    Keyed(depth, Content::kSprites);
    Keyed(depth, Content::kNoise);
    Softened(depth);
    if (depth > 8) Blended(depth, false);
    if (depth > 8) Blended(depth, true);
  }
  return true;
}();

}  // namespace
}  // namespace vl::bench

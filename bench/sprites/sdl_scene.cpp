// The scene of scene.vlq with plain SDL2 surfaces: the background is copied back, then every sprite is drawn.
#include <SDL.h>

#include <cstdlib>
#include <vector>

namespace {

constexpr int kWidth = 800;
constexpr int kHeight = 600;
constexpr int kSide = 32;

struct Mover {
  int x, y, dx, dy;
};

bool Touches(const std::vector<Mover>& movers, size_t own) {
  for (size_t k = 0; k < movers.size(); ++k) {
    if (k != own && std::abs(movers[k].x - movers[own].x) < kSide && std::abs(movers[k].y - movers[own].y) < kSide) {
      return true;
    }
  }
  return false;
}

void Move(Mover& m) {
  m.x += m.dx;
  m.y += m.dy;
  if (m.x < 16 || m.x > 784) {
    m.dx = -m.dx;
    m.x += m.dx;
  }
  if (m.y < 16 || m.y > 584) {
    m.dy = -m.dy;
    m.y += m.dy;
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3 || SDL_Init(SDL_INIT_VIDEO) != 0) return 1;
  const int count = std::atoi(argv[1]);
  const int last = std::atoi(argv[2]);
  SDL_Window* window = SDL_CreateWindow("sprites", 0, 0, kWidth, kHeight, SDL_WINDOW_SHOWN);
  SDL_Surface* screen = window ? SDL_GetWindowSurface(window) : nullptr;
  if (!screen) return 1;
  SDL_Surface* background = SDL_CreateRGBSurfaceWithFormat(0, kWidth, kHeight, 32, screen->format->format);
  SDL_Surface* art = SDL_CreateRGBSurfaceWithFormat(0, kSide, kSide, 32, screen->format->format);
  for (int y = 0; y < kHeight; ++y) {
    const SDL_Rect line = {0, y, kWidth, 1};
    SDL_FillRect(background, &line, SDL_MapRGB(screen->format, Uint8(y / 3), 40, 160));
  }
  for (int y = 0; y < kSide; ++y) {
    for (int x = 0; x < kSide; ++x) {
      const bool inside = (x - 16) * (x - 16) + (y - 16) * (y - 16) < 15 * 15;
      const SDL_Rect pixel = {x, y, 1, 1};
      SDL_FillRect(art, &pixel, inside ? SDL_MapRGB(screen->format, 255, 192, 0) : 0);
    }
  }
  SDL_SetColorKey(art, SDL_TRUE, 0);
  std::vector<Mover> movers;
  for (int i = 0; i < count; ++i) movers.push_back({16 + i * 7919 % 752, 16 + i * 104729 % 552, i % 7 - 3, i % 5 - 2});
  long touching = 0;
  for (int frame = 0; frame < last; ++frame) {
    SDL_PumpEvents();
    for (size_t i = 0; i < movers.size(); ++i) {
      Move(movers[i]);
      touching += Touches(movers, i);
    }
    SDL_BlitSurface(background, nullptr, screen, nullptr);
    for (const Mover& m : movers) {
      SDL_Rect place = {m.x - 16, m.y - 16, 0, 0};
      SDL_BlitSurface(art, nullptr, screen, &place);
    }
    SDL_UpdateWindowSurface(window);
  }
  SDL_Quit();
  return touching < 0;
}

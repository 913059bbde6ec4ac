/* Two players side by side in one window of another program, in plain C with SDL2 for the window.
 *
 *     two_players LEFT [RIGHT]       files, or addresses (file, http, https, ftp)
 *
 * F1 starts and stops the left one, F2 the right one; both start by themselves. The mouse plays where it is, the keys
 * where the mouse last pressed. What a player says when it ends stands on standard error.
 *
 *     cc two_players.c $(pkg-config --cflags --libs vorlane sdl2) -o two_players
 */
#include <SDL.h>
#include <stdio.h>
#include <vorlane.h>

enum { kWidth = 400, kHeight = 300, kPlayers = 2, kFrameMs = 15 };

typedef struct {
  vl_player* player;
  const char* address;
  SDL_Texture* texture;
  uint32_t pixels[kWidth * kHeight];
  int running; /* a run was started and its end not yet told */
} Side;

static Side sides[kPlayers];

static void Start(Side* side) {
  side->running = vl_run(side->player);
  if (!side->running) fprintf(stderr, "two_players: %s can't be started\n", side->address);
}

/* Also of a run that ended by itself: it frees the application, and lets it run again. */
static void Stop(Side* side) {
  vl_stop(side->player);
  side->running = 0;
}

static void TellEnd(Side* side) {
  side->running = 0;
  if (vl_get_result(side->player) == VL_OK) return;
  fprintf(stderr, "two_players: %s: %s %s\n", side->address, vl_error(side->player), vl_error_detail(side->player));
}

/* Virtual key numbers: letters and digits are their upper-case ASCII codes, the others as below; 0 for no such key. */
static int KeyOf(SDL_Keycode key) {
  static const struct {
    SDL_Keycode sdl;
    int code;
  } kKeys[] = {{SDLK_BACKSPACE, 0x08}, {SDLK_TAB, 0x09},    {SDLK_RETURN, 0x0D},   {SDLK_LSHIFT, 0x10},
               {SDLK_RSHIFT, 0x10},    {SDLK_LCTRL, 0x11},  {SDLK_RCTRL, 0x11},    {SDLK_ESCAPE, 0x1B},
               {SDLK_SPACE, 0x20},     {SDLK_PAGEUP, 0x21}, {SDLK_PAGEDOWN, 0x22}, {SDLK_END, 0x23},
               {SDLK_HOME, 0x24},      {SDLK_LEFT, 0x25},   {SDLK_UP, 0x26},       {SDLK_RIGHT, 0x27},
               {SDLK_DOWN, 0x28},      {SDLK_INSERT, 0x2D}, {SDLK_DELETE, 0x2E}};
  size_t i;
  if (key >= SDLK_a && key <= SDLK_z) return key - SDLK_a + 'A';
  if (key >= SDLK_0 && key <= SDLK_9) return key;
  for (i = 0; i < sizeof kKeys / sizeof *kKeys; ++i) {
    if (kKeys[i].sdl == key) return kKeys[i].code;
  }
  return 0;
}

static int ModsOf(SDL_Keymod mods) {
  return (mods & KMOD_SHIFT ? 1 : 0) | (mods & KMOD_CTRL ? 2 : 0) | (mods & KMOD_ALT ? 4 : 0);
}

static void SendMouse(int x, int y, int button, int down, vl_input_type type) {
  vl_input_event event = {0};
  const int side = x < kWidth ? 0 : 1;
  event.type = type;
  event.code = button;
  event.down = down;
  event.x = x - side * kWidth;
  event.y = y;
  event.mods = ModsOf(SDL_GetModState());
  vl_send_input(sides[side].player, &event);
}

/* SDL's buttons are left 1, middle 2, right 3; ours too. The fourth is SDL's fifth or sixth, as the mouse has it. */
static int ButtonOf(int sdl_button) { return sdl_button <= 3 ? sdl_button : 4; }

static void SendKey(int side, int code, int down, vl_input_type type) {
  vl_input_event event = {0};
  if (code == 0) return;
  event.type = type;
  event.code = code;
  event.down = down;
  event.mods = ModsOf(SDL_GetModState());
  vl_send_input(sides[side].player, &event);
}

/* 0 when the window was closed. */
static int Serve(const SDL_Event* event, int* keys_to) {
  int side;
  const char* c;
  switch (event->type) {
    case SDL_QUIT:
      return 0;
    case SDL_KEYDOWN:
    case SDL_KEYUP:
      side = event->key.keysym.sym == SDLK_F1 ? 0 : event->key.keysym.sym == SDLK_F2 ? 1 : -1;
      if (side < 0) {
        SendKey(*keys_to, KeyOf(event->key.keysym.sym), event->type == SDL_KEYDOWN, VL_INPUT_KEY);
      } else if (event->type == SDL_KEYDOWN && !event->key.repeat) {
        if (sides[side].running) {
          Stop(&sides[side]);
        } else {
          Start(&sides[side]);
        }
      }
      break;
    case SDL_TEXTINPUT:
      for (c = event->text.text; *c; ++c) {
        if ((unsigned char)*c < 0x80) SendKey(*keys_to, *c, 0, VL_INPUT_CHAR);
      }
      break;
    case SDL_MOUSEMOTION:
      SendMouse(event->motion.x, event->motion.y, 0, 0, VL_INPUT_MOUSE);
      break;
    case SDL_MOUSEBUTTONDOWN:
      *keys_to = event->button.x < kWidth ? 0 : 1;
      SendMouse(event->button.x, event->button.y, ButtonOf(event->button.button), event->button.clicks == 2 ? 2 : 1,
                VL_INPUT_MOUSE);
      break;
    case SDL_MOUSEBUTTONUP:
      SendMouse(event->button.x, event->button.y, ButtonOf(event->button.button), 0, VL_INPUT_MOUSE);
      break;
    default:
      break;
  }
  return 1;
}

static void Draw(SDL_Window* window, SDL_Renderer* renderer) {
  char title[80];
  int i;
  SDL_SetRenderDrawColor(renderer, 64, 64, 64, 255);
  SDL_RenderClear(renderer);
  for (i = 0; i < kPlayers; ++i) {
    const SDL_Rect place = {i * kWidth, 0, kWidth, kHeight};
    int32_t width, height;
    if (!sides[i].running) continue;
    if (vl_wait(sides[i].player, 0) == VL_ENDED) TellEnd(&sides[i]);
    if (!vl_frame(sides[i].player, sides[i].pixels, kWidth * kHeight, &width, &height)) continue;
    if (width > kWidth || height > kHeight) continue;
    SDL_UpdateTexture(sides[i].texture, &(SDL_Rect){0, 0, width, height}, sides[i].pixels, width * 4);
    SDL_RenderCopy(renderer, sides[i].texture, NULL, &place);
  }
  SDL_RenderPresent(renderer);
  snprintf(title, sizeof title, "Two players: F1 %s, F2 %s", sides[0].running ? "stops" : "starts",
           sides[1].running ? "stops" : "starts");
  SDL_SetWindowTitle(window, title);
}

static int Make(Side* side, const char* address, SDL_Renderer* renderer) {
  char error[200];
  vl_options options;
  vl_options_init(&options);
  options.backend = VL_BACKEND_EMBED;
  options.width = kWidth;
  options.height = kHeight;
  side->player = vl_create(&options, error, sizeof error);
  if (!side->player) {
    fprintf(stderr, "two_players: %s\n", error);
    return 0;
  }
  side->address = address;
  vl_set_url(side->player, address, NULL);
  side->texture = SDL_CreateTexture(renderer, SDL_PIXELFORMAT_XRGB8888, SDL_TEXTUREACCESS_STREAMING, kWidth, kHeight);
  return side->texture != NULL;
}

int main(int argc, char** argv) {
  SDL_Window* window;
  SDL_Renderer* renderer;
  SDL_Event event;
  int i, open = 1, keys_to = 0;
  if (argc < 2 || argc > 3 || argv[1][0] == '-') {
    fprintf(stderr, "usage: two_players LEFT [RIGHT]\n");
    return 64;
  }
  if (SDL_Init(SDL_INIT_VIDEO) != 0 ||
      SDL_CreateWindowAndRenderer(kPlayers * kWidth, kHeight, 0, &window, &renderer) != 0) {
    fprintf(stderr, "two_players: %s\n", SDL_GetError());
    return 1;
  }
  for (i = 0; i < kPlayers; ++i) {
    if (!Make(&sides[i], argv[argc == 3 ? i + 1 : 1], renderer)) return 1;
    Start(&sides[i]);
  }
  while (open) {
    Draw(window, renderer);
    if (SDL_WaitEventTimeout(&event, kFrameMs)) {
      do {
        open = open && Serve(&event, &keys_to);
      } while (SDL_PollEvent(&event));
    }
  }
  for (i = 0; i < kPlayers; ++i) vl_destroy(sides[i].player);
  SDL_Quit();
  return 0;
}

// Text beside SDL_ttf: the same face and size, one bit a pixel, fonts open and glyphs known.
//
// SDL_ttf renders a surface of 8 bits for each line (TTF_RenderText_Solid), which is then blitted with its key. A
// paragraph with tags is for SDL_ttf a row of pieces in ready fonts; reading the tags, cutting the lines and scrolling
// are ours alone.
#include <SDL.h>
#include <SDL_ttf.h>
#include <benchmark/benchmark.h>

#include <map>
#include <memory>
#include <string>
#include <utility>

#include "gfx2d/surface_library.h"
#include "gfx2d/tagged_text_writer.h"
#include "platform/posix/posix_font_finder.h"
#include "platform/text/freetype_text_engine.h"

namespace {

using namespace vl;

constexpr int kWidth = 640;
constexpr int kHeight = 480;
// 60 glyphs.
constexpr const char* kLine = "The quick brown fox jumps over the lazy dog, 0123456789 (all";

TextEngine& Engine() {
  static PosixFontFinder finder;
  static FreeTypeTextEngine engine(finder);
  return engine;
}

// The bytes of the face that ours uses, so that both draw the same glyphs.
TTF_Font* PeerFont(bool isBold, bool isItalic, int size) {
  static PosixFontFinder finder;
  static std::map<std::pair<int, int>, TTF_Font*> fonts;  // live as long as the process
  if (!TTF_WasInit()) TTF_Init();
  TTF_Font*& font = fonts[{size, isBold * 2 + isItalic}];
  if (!font) {
    FaceRequest request;
    request.face = "Arial";
    request.bold = isBold;
    request.italic = isItalic;
    static std::map<int, std::shared_ptr<const std::string>> bytes;
    std::shared_ptr<const std::string>& data = bytes[isBold * 2 + isItalic];
    data = finder.Find(request).bytes;
    // Their size is in points of 72 a inch, which makes it pixels.
    font = TTF_OpenFontRW(SDL_RWFromConstMem(data->data(), int(data->size())), 1, size);
    TTF_SetFontHinting(font, TTF_HINTING_MONO);
  }
  return font;
}

SDL_Surface* PeerSurface(int depth) {
  static std::map<int, SDL_Surface*> surfaces;
  SDL_Surface*& surface = surfaces[depth];
  if (!surface) {
    const Uint32 format = depth == 8    ? SDL_PIXELFORMAT_INDEX8
                          : depth == 16 ? SDL_PIXELFORMAT_RGB565
                                        : SDL_PIXELFORMAT_RGB888;
    surface = SDL_CreateRGBSurfaceWithFormat(0, kWidth, kHeight, depth, format);
  }
  return surface;
}

int PeerDraw(SDL_Surface* screen, TTF_Font* font, const char* text, int x, int y) {
  SDL_Surface* line = TTF_RenderText_Solid(font, text, {200, 40, 40, 255});
  SDL_Rect at = {x, y, 0, 0};
  SDL_BlitSurface(line, nullptr, screen, &at);
  const int width = line->w;
  SDL_FreeSurface(line);
  return width;
}

struct Screen {
  explicit Screen(int depth) { surface.Create(kWidth, kHeight, library.FindPrototype(depth)); }
  MemoryBudget budget{uint64_t{64} << 20};
  SurfaceLibrary library{&budget};
  cSurface surface;
};

class NoTarget final : public TextTarget {
 public:
  void NoteTextChange(const Rect&) override {}
  bool MayGoOn() override { return true; }
};

void LineOurs(benchmark::State& state, int depth, int size) {
  Screen screen(depth);
  FontDescription description;
  description.height = -size;
  const auto font = Engine().openFont(description);
  const TextPaint paint{MakeColour(200, 40, 40)};
  for (auto _ : state) {
    const int width = font->measure(kLine).width;
    DrawText(screen.surface, *font, kLine, 4, 100, kAlignBaseline, {4, 0, 4 + width, kHeight}, paint);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * 60);
}

void LinePeer(benchmark::State& state, int depth, int size) {
  SDL_Surface* screen = PeerSurface(depth);
  TTF_Font* font = PeerFont(false, false, size);
  for (auto _ : state) {
    PeerDraw(screen, font, kLine, 4, 100 - size);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * 60);
}

constexpr const char* kParagraph =
    "A paragraph <B>with bold words</B> and <I>slanted ones</I>, in <FONT COLOR=#0000C0>blue</FONT> and "
    "<FONT SIZE=20>larger</FONT>, that is long enough to need <B>several lines</B> &amp; a few references, until "
    "it comes to <I>its end</I> at last.";

void ParagraphOurs(benchmark::State& state) {
  Screen screen(32);
  TextPen pen;
  pen.font = Engine().openFont(pen.description);
  NoTarget target;
  for (auto _ : state) {
    pen.penX = 0;
    pen.penY = 10;
    TextExtent extent;
    TaggedTextWriter(screen.surface, Engine(), target, pen).WriteText(kParagraph, extent);
    benchmark::ClobberMemory();
  }
}

// The lines as they come out of ours, piece by piece.
void ParagraphPeer(benchmark::State& state) {
  struct Piece {
    bool isBold, isItalic;
    int size;
    const char* text;
    bool endsLine;
  };
  const Piece pieces[] = {
      {false, false, 16, "A paragraph ", false},
      {true, false, 16, "with bold words", false},
      {false, false, 16, " and ", false},
      {false, true, 16, "slanted ones", false},
      {false, false, 16, ", in ", false},
      {false, false, 16, "blue", false},
      {false, false, 16, " and ", false},
      {false, false, 20, "larger", false},
      {false, false, 16, ", that is long enough to need", true},
      {true, false, 16, "several lines", false},
      {false, false, 16, " & a few references, until it comes to ", false},
      {false, true, 16, "its end", false},
      {false, false, 16, " at last.", true},
  };
  SDL_Surface* screen = PeerSurface(32);
  for (auto _ : state) {
    int x = 0;
    int y = 10;
    for (const Piece& p : pieces) {
      x += PeerDraw(screen, PeerFont(p.isBold, p.isItalic, p.size), p.text, x, y);
      if (p.endsLine) {
        x = 0;
        y += 20;
      }
    }
    benchmark::ClobberMemory();
  }
}

const bool kRegistered = [] {
  for (const int depth : {32, 16, 8}) {
    for (const auto& [name, size] : {std::pair{"small", 12}, std::pair{"line", 16}, std::pair{"large", 40}}) {
      const std::string prefix = "text/" + std::string(name) + std::to_string(depth) + "/";
      benchmark::RegisterBenchmark((prefix + "vorlane").c_str(), LineOurs, depth, size);
      benchmark::RegisterBenchmark((prefix + "SDL_ttf").c_str(), LinePeer, depth, size);
    }
  }
  benchmark::RegisterBenchmark("text/paragraph/vorlane", ParagraphOurs);
  benchmark::RegisterBenchmark("text/paragraph/SDL_ttf", ParagraphPeer);
  return true;
}();

}  // namespace

// Animations: FLI and FLC as they are read, ANMV as it is read and written.
#include <random>

#include "gfx2d/images/anm_filter.h"
#include "tests/unit/images_support.h"

namespace vl {
namespace {

using namespace testing;

std::string FliChunk(uint32_t id, std::string_view data) {
  return U32(uint32_t(data.size() + 6)) + U16(id) + std::string(data);
}
std::string FliFrame(const std::vector<std::string>& chunks) {
  std::string all = U16(uint32_t(chunks.size())) + std::string(8, '\0');
  for (const std::string& c : chunks) all += c;
  return FliChunk(0xF1FA, all);
}
struct FliForm {
  uint32_t magic = 0xAF12;
  int width = 4;
  int height = 2;
  int depth = 8;
  uint32_t speed = 40;
  bool offsets = false;  // of the first two frames
};
// `frames` with the ring frame, if any, as the last one; `count` is what the header tells.
std::string Fli(const FliForm& f, int count, const std::vector<std::string>& frames) {
  std::string h = U32(0) + U16(f.magic) + U16(uint32_t(count)) + U16(uint32_t(f.width)) + U16(uint32_t(f.height)) +
                  U16(uint32_t(f.depth)) + U16(3) + U32(f.speed);
  h.resize(80);
  const size_t first = frames.empty() ? 0 : frames[0].size();
  h += f.offsets ? U32(128) + U32(uint32_t(128 + first)) : U32(0) + U32(0);
  h.resize(128);
  for (const std::string& frame : frames) h += frame;
  return h;
}
std::string Copy(const std::string& pixels) { return FliChunk(16, pixels); }

// An open animation with a target that frames build on.
struct Player {
  explicit Player(std::string bytes, int depth = 0)
      : file(std::move(bytes)), stream(file.data(), uint32_t(file.size())) {
    error = reader.OpenStream(&stream);
    if (error == kImageOk) {
      target = std::make_unique<Target>(reader.GetWidth(), reader.GetHeight(), depth ? depth : reader.GetDepth(), true);
    }
  }
  std::string Read() {
    error = reader.Read(target->target);
    return target->Pixels();
  }
  std::string Seek(int frame) {
    error = reader.SeekFrame(frame, target->target);
    return target->Pixels();
  }
  Rect Box() const {
    Rect box;
    reader.GetFrameBox(box);
    return box;
  }
  std::string file;
  CMemoryStream stream;
  Images images;
  ImageReader reader{images.filters};
  std::unique_ptr<Target> target;
  ImageError error;
};

TEST(ImagesFli, SubChunks) {
  struct Case {
    const char* name;
    std::string chunk;
    const char* pixels;  // over "abcdefgh", 4 by 2; null for an error
    Rect box;
  } const cases[] = {
      {"copy", Copy("12345678"), "12345678", {0, 0, 4, 2}},
      {"black", FliChunk(13, ""), "........", {0, 0, 4, 2}},
      {"runs", FliChunk(15, Bytes({1, 4, 'x', 9, 1, 'y', 0xFD, 'p', 'q', 'r'})), "xxxxypqr", {0, 0, 4, 2}},
      {"runs past the line",
       FliChunk(15, Bytes({1, 9, 'x', 1, 0xFB, 'p', 'q', 'r', 's', 't'})),
       "xxxxpqrs",
       {0, 0, 4, 2}},
      {"fli delta", FliChunk(12, U16(1) + U16(1) + Bytes({2, 1, 1, 'X', 0, 0xFE, 'z'})), "abcdeXzz", {1, 1, 4, 2}},
      {"fli delta below the picture",
       FliChunk(12, U16(1) + U16(2) + Bytes({0, 1, 0, 4, 'w', 'w', 'w', 'w'})),
       "abcdefgh",
       {}},
      {"flc delta",
       FliChunk(7, U16(1) + U16(0xFFFF) + U16(0x8000 | 'L') + U16(1) + Bytes({0, 1, 'U', 'V'})),
       "abcdUVgL",
       {0, 1, 4, 2}},
      {"flc pairs",
       FliChunk(7, U16(2) + U16(1) + Bytes({0, 0xFE, 'm', 'n'}) + U16(1) + Bytes({3, 1, 'o', 'o'})),
       "mnmnefgo",
       {0, 0, 4, 2}},
      {"flc lines past the end",
       FliChunk(7, U16(2) + U16(0xC000) + U16(1) + Bytes({0, 1, 'w', 'w'}) + U16(0)),
       "abcdefgh",
       {}},
      {"a palette and a stamp change nothing",
       FliChunk(4, U16(1) + Bytes({0, 1, 9, 9, 9})) + FliChunk(18, "stamp"),
       "abcdefgh",
       {}},
      {"copy cut short", FliChunk(16, "12345"), nullptr, {}},
      {"runs cut short", FliChunk(15, Bytes({1, 4})), nullptr, {}},
      {"delta cut short", FliChunk(12, U16(0) + U16(1) + Bytes({1, 0, 9, 'x'})), nullptr, {}},
      {"words cut short", FliChunk(7, U16(1) + U16(0xFFFF)), nullptr, {}},
  };
  for (const Case& c : cases) {
    const int chunks = std::string_view(c.name).starts_with("a palette") ? 2 : 1;
    const std::string second = FliChunk(0xF1FA, U16(uint32_t(chunks)) + std::string(8, '\0') + c.chunk);
    Player p(Fli({}, 2, {FliFrame({Copy("abcdefgh")}), second}));
    ASSERT_EQ(p.error, kImageOk) << c.name;
    EXPECT_EQ(p.Read(), "abcdefgh");
    std::string pixels = p.Read();
    std::replace(pixels.begin(), pixels.end(), '\0', '.');
    EXPECT_EQ(p.error, c.pixels ? kImageOk : kImageReadFailed) << c.name;
    if (!c.pixels) continue;
    EXPECT_EQ(pixels, c.pixels) << c.name;
    EXPECT_EQ(p.Box(), c.box) << c.name;
  }
}

TEST(ImagesFli, HeaderPaletteAndTimes) {
  const std::string palette6 = FliChunk(11, U16(2) + Bytes({1, 1, 1, 2, 63, 2, 1, 5, 6, 7}));
  const std::string palette8 = FliChunk(4, U16(1) + Bytes({0, 1, 9, 8, 7}));
  {
    Player p(Fli({.magic = 0xAF11, .speed = 5}, 3, {FliFrame({Copy("abcdefgh"), palette6}), FliFrame({palette8})}));
    ASSERT_EQ(p.error, kImageOk);
    EXPECT_EQ(p.reader.GetFrameTime(0), 71) << "five seventieths of a second";
    EXPECT_EQ(p.reader.GetTotalTime(), 213);
    EXPECT_EQ(p.reader.GetCurrentFrame(), -1);
    EXPECT_EQ(p.reader.GetFrameCount(), 3);
    const auto& e = p.reader.GetPalette()->entries;
    EXPECT_EQ(e[1].ToColour(), MakeColour(4, 8, 252));
    EXPECT_EQ(e[4].ToColour(), MakeColour(20, 24, 28));
    EXPECT_EQ(e[0].ToColour(), 0u) << "the first palette counts";
  }
  {
    // The first frame has no palette; a chunk of another kind comes first.
    Player p(Fli({.speed = 33}, 2, {FliChunk(0xF100, "prefix"), FliFrame({Copy("abcdefgh")}), FliFrame({palette8})}));
    ASSERT_EQ(p.error, kImageOk);
    EXPECT_EQ(p.reader.GetFrameTime(1), 33);
    EXPECT_EQ(p.reader.GetPalette()->entries[0].ToColour(), MakeColour(9, 8, 7));
    EXPECT_EQ(p.Read(), "abcdefgh");
    const std::string wide = [&] {
      Player w(Fli({}, 2, {FliFrame({Copy(Bytes({0, 1, 0, 0, 0, 0, 0, 0}))}), FliFrame({palette8})}), 24);
      return w.Read();
    }();
    EXPECT_EQ(Hex(wide.substr(0, 6)), "07 08 09 00 00 00") << "frames convert";
  }
  {
    Player p(Fli({}, 1, {FliFrame({Copy("abcdefgh")}), FliFrame({palette8})}));
    EXPECT_EQ(p.reader.GetPalette()->entries[0].ToColour(), 0u) << "one frame: no later one is looked at";
  }
  for (const FliForm& f : {FliForm{.depth = 16}, FliForm{.width = 0}, FliForm{.magic = 0xAF44}}) {
    EXPECT_NE(Player(Fli(f, 1, {FliFrame({Copy("abcdefgh")})})).error, kImageOk);
  }
  EXPECT_EQ(Player(Fli({}, 1, {})).error, kImageBadData) << "no frame";
}

TEST(ImagesFli, RingFrameAndSeeking) {
  const auto delta = [](char c) { return FliFrame({FliChunk(12, U16(0) + U16(1) + Bytes({1, 0, 1, c}))}); };
  for (const bool offsets : {false, true}) {
    // Three frames and the ring: a, b, c, and a again. They differ in their first pixel.
    Player p(Fli({.offsets = offsets}, 3, {FliFrame({Copy("a-------")}), delta('b'), delta('c'), delta('a')}));
    ASSERT_EQ(p.error, kImageOk);
    std::string seen;
    std::string frames;
    for (int i = 0; i < 8; ++i) {
      seen += p.Read()[0];
      frames += char('0' + p.reader.GetCurrentFrame());
    }
    EXPECT_EQ(seen, "abcabcab") << "the ring frame is the first picture again";
    EXPECT_EQ(frames, offsets ? "01211211" : "01201201");

    EXPECT_EQ(p.Seek(2)[0], 'c');
    EXPECT_EQ(p.reader.GetCurrentFrame(), 2);
    EXPECT_EQ(p.Seek(1)[0], 'b') << "back by way of the start";
    EXPECT_EQ(p.Seek(99)[0], 'c');
    EXPECT_EQ(p.reader.GetCurrentFrame(), 2);
    EXPECT_EQ(p.Seek(-5)[0], 'a');
    EXPECT_EQ(p.reader.GetCurrentFrame(), 0);
    p.reader.Rewind();
    EXPECT_EQ(p.reader.GetCurrentFrame(), -1);
    EXPECT_EQ(p.Read()[0], 'a');
  }
  Player noRing(Fli({}, 2, {FliFrame({Copy("a-------")}), delta('b')}));
  noRing.Seek(1);
  noRing.Read();
  EXPECT_EQ(noRing.error, kImagePastEnd);
}

TEST(ImagesFli, BlackFramesCostTheirBytes) {
  // Sixty thousand times black in one large picture, with a pixel between: done at once when only what isn't black is
  // painted.
  std::vector<std::string> chunks;
  for (int i = 0; i < 30000; ++i) {
    chunks.push_back(FliChunk(13, ""));
    chunks.push_back(FliChunk(12, U16(uint32_t(i % 4000)) + U16(1) + Bytes({1, 5, 1, 'x'})));
  }
  chunks.push_back(FliChunk(13, ""));
  Player p(Fli({.width = 4000, .height = 4000}, 1, {FliFrame(chunks)}));
  ASSERT_EQ(p.error, kImageOk);
  const std::string pixels = p.Read();
  EXPECT_EQ(p.error, kImageOk);
  EXPECT_EQ(pixels.find_first_not_of('\0'), std::string::npos);
}

// Pictures for the writer: without padding, `depth` bits.
using Pictures = std::vector<std::string>;

struct WriterForm {
  int width = 4;
  int height = 3;
  int depth = 8;
  int frameTime = 50;
  int quality = 60;
  int loopCount = 1;
  int loopStart = 0;
};

struct FrameForm {
  std::string pixels;
  int time = 0;
  uint32_t flags = 0;
};

std::string WriteAnm(const WriterForm& form, const std::vector<FrameForm>& frames) {
  Images images;
  MemoryFileSystem files;
  ImageOutput output(files.open("a.anm", FileMode::Create));
  const auto filter = images.filters.CreateInstance(ImageFilterId("ANM "));
  filter->SetQuality(form.quality);
  const PaletteRecord greys = Greys();
  EXPECT_EQ(filter->WriteFrame(output, nullptr, 0, 0, 0), kImageFilterClosed);
  EXPECT_EQ(filter->BeginWrite(output, {form.width, form.height, form.depth, form.frameTime,
                                        form.depth == 8 ? &greys : nullptr, form.loopCount, form.loopStart}),
            kImageOk);
  const int row = form.width * ((form.depth + 1) / 8);
  for (const FrameForm& f : frames) {
    EXPECT_EQ(filter->WriteFrame(output, reinterpret_cast<const uint8_t*>(f.pixels.data()), row, f.time, f.flags),
              kImageOk);
  }
  EXPECT_EQ(filter->FinishWrite(output), kImageOk);
  filter->EndWrite();
  EXPECT_TRUE(output.Commit());
  EXPECT_EQ(images.budget.Used(), 0u);
  const std::vector<uint8_t> content = files.Content("a.anm");
  return {content.begin(), content.end()};
}

struct AnmChunk {
  uint32_t id;
  std::string data;
};
std::vector<AnmChunk> Chunks(const std::string& file) {
  std::vector<AnmChunk> chunks;
  const auto* p = reinterpret_cast<const uint8_t*>(file.data());
  for (size_t at = 40; at + 8 <= file.size();) {
    const uint32_t size = LoadWord<uint32_t>(p + at + 4);
    chunks.push_back({LoadWord<uint32_t>(p + at), file.substr(at + 8, size)});
    at += 8 + size;
  }
  return chunks;
}
std::string FrameHead(int time, uint32_t flags, int x, int y, int w, int h, uint32_t unpacked) {
  return U32(uint32_t(time)) + U32(flags) + U32(uint32_t(x)) + U32(uint32_t(y)) + U32(uint32_t(w)) + U32(uint32_t(h)) +
         U32(unpacked);
}
std::string AnmHeader(int width, int height, int depth, int frames, int time = 50, int total = 0) {
  return "ANMV" + U32(0) + U32(0) + U32(uint32_t(width)) + U32(uint32_t(height)) + U32(uint32_t(depth)) + U32(0) +
         U32(uint32_t(frames)) + U32(uint32_t(time)) + U32(uint32_t(total));
}
std::string Chunk(uint32_t id, std::string_view data) {
  return U16(id) + U16(0) + U32(uint32_t(data.size())) + std::string(data);
}

TEST(ImagesAnm, FileByteByByte) {
  const std::string file = WriteAnm({.quality = -1, .loopCount = 3, .loopStart = 1},
                                    {{"aaaabbbbcccc", 0}, {"aaaabXYbcccZ", 70}, {"aaaabXYbcccZ", 5, 1}});
  EXPECT_EQ(Hex(file.substr(0, 40)), Hex(AnmHeader(4, 3, 8, 3, 50, 125)));
  const auto chunks = Chunks(file);
  ASSERT_EQ(chunks.size(), 5u);
  EXPECT_EQ(chunks[0].id, 0x4574u);
  EXPECT_EQ(Hex(chunks[0].data), Hex(U32(3) + U32(1)));
  EXPECT_EQ(chunks[1].id, 0x4571u);
  EXPECT_EQ(chunks[1].data.size(), 0x304u);
  EXPECT_EQ(Hex(chunks[1].data.substr(0, 10)), "00 00 00 01 00 00 00 01 01 01");
  EXPECT_EQ(chunks[2].id, 0x4572u);
  EXPECT_EQ(Hex(chunks[2].data), Hex(FrameHead(0, 0, 0, 0, 4, 3, 0) + "aaaabbbbcccc"));
  EXPECT_EQ(chunks[3].id, 0x4573u);
  // The box is columns 1 to 3 of lines 1 and 2: two lines; in the second, two pixels are skipped.
  EXPECT_EQ(Hex(chunks[3].data), Hex(FrameHead(70, 0, 1, 1, 3, 2, 0) + Bytes({2, 2, 'X', 'Y', 0, 0x82, 1, 'Z', 0, 0})));
  EXPECT_EQ(chunks[4].id, 0x4573u);
  EXPECT_EQ(Hex(chunks[4].data), Hex(FrameHead(5, 1, 0, 0, 0, 0, 0)));
  EXPECT_EQ(Chunks(WriteAnm({}, {{"aaaabbbbcccc", 0}})).size(), 2u) << "no loop chunk for one loop";
}

TEST(ImagesAnm, Timing) {
  const std::string a = "aaaabbbbcccc";
  const std::string b = "aaaabbbbccc!";
  struct Case {
    const char* name;
    std::vector<FrameForm> frames;
    std::vector<int> times;
    int total;
  } const cases[] = {
      {"defaults", {{a, 0}, {b, 20}}, {50, 20}, 70},
      {"a repeat lengthens", {{a, 10}, {a, 20}, {b, 5}}, {30, 5}, 35},
      {"a repeat of the default", {{a, 0}, {a, 0}, {a, 7}}, {107}, 107},
      {"a repeat of its own", {{a, 10}, {a, 20, 1}, {b, 5}}, {10, 20, 5}, 35},
      {"lengthening an empty frame", {{a, 10}, {a, 20, 1}, {a, 5}}, {10, 25}, 35},
  };
  for (const Case& c : cases) {
    Player p(WriteAnm({.quality = 0}, c.frames));
    ASSERT_EQ(p.error, kImageOk) << c.name;
    EXPECT_EQ(p.reader.GetFrameCount(), int(c.times.size())) << c.name;
    EXPECT_EQ(p.reader.GetTotalTime(), c.total) << c.name;
    for (size_t i = 0; i < c.times.size(); ++i) EXPECT_EQ(p.reader.GetFrameTime(int(i)), c.times[i]) << c.name << i;
    EXPECT_EQ(p.reader.GetFrameTime(99), 50) << c.name;
  }
}

TEST(ImagesAnm, KeyOrDelta) {
  // 20 by 1 at depth 8: a key frame has 20 bytes. A delta of n single pixels, each apart from the next, has 3 + 3n - 1.
  const auto dotted = [](int n) {
    std::string s(20, '-');
    for (int i = 0; i < n; ++i) s[size_t(i) * 4] = '*';
    return s;
  };
  for (const auto& [pixels, id] :
       {std::pair{dotted(5), 0x4573u}, {std::string(16, '*') + "----", 0x4573u}, {std::string(20, '*'), 0x4572u}}) {
    const auto chunks = Chunks(WriteAnm({.width = 20, .height = 1}, {{std::string(20, '-')}, {pixels}}));
    ASSERT_EQ(chunks.size(), 3u);
    EXPECT_EQ(chunks[2].id, id) << pixels;
  }
}

TEST(ImagesAnm, RoundTrips) {
  std::mt19937 random(11);
  for (const int depth : {8, 15, 16, 24, 32}) {
    for (const int quality : {-1, 0, 50, 1000}) {
      const WriterForm form{.width = 300, .height = 20, .depth = depth, .quality = quality};
      const int pixelBytes = (depth + 1) / 8;
      std::vector<FrameForm> frames;
      std::string picture(size_t(form.width * form.height * pixelBytes), '\0');
      for (int i = 0; i < 12; ++i) {
        // Noise, one pixel, boxes, and everything from the left of one line to the right of another.
        const int x = int(random() % 300);
        const int w = i == 0 ? 300 : int(random() % (300 - unsigned(x)) + 1);
        const int y = int(random() % 20);
        const int h = i == 0 ? 20 : int(random() % (20 - unsigned(y)) + 1);
        const auto density = i % 3 == 0 ? 1u : i % 3 == 1 ? 5u : 40u;
        for (int dy = i == 0 ? 0 : y; dy < (i == 0 ? 20 : y + h); ++dy) {
          for (int dx = i == 0 ? 0 : x; dx < (i == 0 ? 300 : x + w); ++dx) {
            if (random() % density) continue;
            for (int k = 0; k < pixelBytes; ++k) picture[size_t((dy * 300 + dx) * pixelBytes + k)] = char(random());
            if (depth == 15) picture[size_t((dy * 300 + dx) * 2 + 1)] &= 0x7F;
          }
        }
        frames.push_back({picture, i + 1, 1});
      }
      Player p(WriteAnm(form, frames));
      ASSERT_EQ(p.error, kImageOk);
      EXPECT_EQ(p.reader.GetFrameCount(), 12);
      for (size_t i = 0; i < frames.size(); ++i) {
        ASSERT_EQ(p.Read(), frames[i].pixels) << depth << " frame " << i;
        ASSERT_EQ(p.error, kImageOk);
      }
      p.Read();
      EXPECT_EQ(p.error, kImagePastEnd);
      for (const int frame : {3, 11, 0, 7}) EXPECT_EQ(p.Seek(frame), frames[size_t(frame)].pixels);
    }
  }
}

TEST(ImagesAnm, ReadingChunks) {
  const std::string key = Chunk(0x4572, FrameHead(0, 0, 0, 0, 3, 2, 0) + "abcdef");
  const std::string palette = Chunk(0x4571, U16(1) + U16(2) + Bytes({1, 2, 3, 4, 5, 6}));
  {
    Player p(AnmHeader(3, 2, 8, 2) + Chunk(0x4570, "mine") + Chunk(0x9999, "skipped") + palette +
             Chunk(0x4574, U32(uint32_t(-1)) + U32(1)) + key + Chunk(0x1111, "") +
             Chunk(0x4573, FrameHead(9, 0, 1, 0, 9, 9, 0) + Bytes({0x81, 1, 0x81, 1, 'Z', 0, 0, 'j', 'u', 'n', 'k'})));
    ASSERT_EQ(p.error, kImageOk);
    const auto data = p.reader.GetUserData();
    EXPECT_EQ(std::string(data.begin(), data.end()), "mine");
    EXPECT_EQ(p.reader.GetLoopCount(), -1);
    EXPECT_EQ(p.reader.GetLoopStart(), 1);
    EXPECT_EQ(p.reader.GetPalette()->entries[2].ToColour(), MakeColour(4, 5, 6));
    EXPECT_EQ(p.Read(), "abcdef");
    EXPECT_EQ(p.Read(), "abcdeZ");
    EXPECT_EQ(p.Box(), (Rect{1, 0, 3, 2})) << "cut to the picture";
  }
  {
    // Lines of whole words are told by their size.
    Player p(AnmHeader(3, 2, 8, 1) + Chunk(0x4572, FrameHead(0, 0, 0, 0, 3, 2, 0) + "abc.def."));
    EXPECT_EQ(p.Read(), "abcdef");
  }
  {
    // A palette on the way: what comes later is in its colours. Going back to the start brings the first one back.
    const std::string red = Chunk(0x4571, U16('a') + U16(1) + Bytes({255, 0, 0}));
    const std::string blue = Chunk(0x4571, U16('a') + U16(1) + Bytes({0, 0, 255}));
    const std::string one = Chunk(0x4572, FrameHead(0, 0, 0, 0, 1, 1, 0) + "a");
    Player p(AnmHeader(1, 1, 8, 2) + red + one + blue + one, 32);
    EXPECT_EQ(Hex(p.Read()), "00 00 ff 00");
    EXPECT_FALSE(p.reader.PaletteChanged());
    EXPECT_EQ(Hex(p.Read()), "ff 00 00 00");
    EXPECT_TRUE(p.reader.PaletteChanged());
    EXPECT_EQ(Hex(p.Seek(0)), "00 00 ff 00");
  }
  // A writer that didn't finish leaves a count of 0: the frames are counted.
  EXPECT_EQ(Player(AnmHeader(3, 2, 8, 0) + key + key).reader.GetFrameCount(), 2);

  const auto frame = [&](const std::string& chunk) {
    Player p(AnmHeader(3, 2, 8, 9) + key + chunk);
    EXPECT_EQ(p.error, kImageOk);
    p.Read();
    EXPECT_EQ(p.error, kImageOk);
    p.Read();
    return p.error;
  };
  const auto delta = [&](int x, int y, const std::string& data) {
    return frame(Chunk(0x4573, FrameHead(0, 0, x, y, 1, 1, 0) + data));
  };
  EXPECT_EQ(frame(""), kImagePastEnd);
  EXPECT_EQ(frame(Chunk(0x4572, "short")), kImageReadFailed);
  EXPECT_EQ(frame(Chunk(0x4572, FrameHead(0, 0, 0, 0, 3, 2, 0) + "abcde")), kImageReadFailed);
  EXPECT_EQ(frame(Chunk(0x4572, FrameHead(0, 0, 0, 0, 3, 2, 6) + "not deflated")), kImageReadFailed);
  EXPECT_EQ(frame(Chunk(0x4572, FrameHead(0, 0, 0, 0, 3, 2, 0x7FFFFFFF) + "tiny")), kImageReadFailed);
  EXPECT_EQ(delta(-1, 0, Bytes({0})), kImageReadFailed);
  EXPECT_EQ(delta(0, 3, Bytes({0})), kImageReadFailed);
  EXPECT_EQ(delta(0, 0, Bytes({0})), kImageOk);
  EXPECT_EQ(delta(3, 0, Bytes({1, 1, 'x', 0, 0})), kImageReadFailed) << "right of the picture";
  EXPECT_EQ(delta(0, 0, Bytes({1, 0x84, 0, 0})), kImageReadFailed) << "skips past the line";
  EXPECT_EQ(delta(0, 2, Bytes({1, 1, 'x', 0, 0})), kImageReadFailed) << "below the picture";
  EXPECT_EQ(delta(0, 0, Bytes({0xFF, 0xFF, 1, 1, 'x', 0})), kImageReadFailed);
  EXPECT_EQ(delta(0, 0, Bytes({1, 3, 'x'})), kImageReadFailed) << "cut";

  EXPECT_EQ(Player(AnmHeader(3, 2, 4, 1) + key).error, kImageDepthTooSmall);
  EXPECT_EQ(Player(AnmHeader(3, 2, 12, 1) + key).error, kImageBadData);
  EXPECT_EQ(Player(AnmHeader(-3, 2, 8, 1) + key).error, kImageBadData);
  EXPECT_EQ(Player(AnmHeader(3, 2, 8, 1) + palette).error, kImageBadData) << "no key frame";
}

TEST(ImagesAnm, WriterRefusals) {
  Images images;
  MemoryFileSystem files;
  ImageOutput output(files.open("a", FileMode::Create));
  const auto filter = images.filters.CreateInstance(ImageFilterId("ANM "));
  const PaletteRecord few = Colours({}, 255);
  EXPECT_EQ(filter->BeginWrite(output, {4, 4, 12, 0, nullptr, 1, 0}), kImageDepthNotWritable);
  EXPECT_EQ(filter->BeginWrite(output, {4, 4, 8, 0, &few, 1, 0}), kImageNoPalette);
  EXPECT_EQ(filter->BeginWrite(output, {0, 4, 24, 0, nullptr, 1, 0}), kImageBadArgument);
  EXPECT_EQ(filter->FinishWrite(output), kImageFilterClosed);
  const auto bmp = images.filters.CreateInstance(ImageFilterId("BMP "));
  EXPECT_EQ(bmp->BeginWrite(output, {4, 4, 24, 0, nullptr, 1, 0}), kImageCantDo);
  EXPECT_EQ(bmp->WriteFrame(output, nullptr, 0, 0, 0), kImageCantDo);
}

}  // namespace
}  // namespace vl

// Decodes picture files with our filters, for comparison with other decoders.
//
//   vl_decode_picture [--depth N] [--frames] [--ppm] FILE...
//
// For each file one line on standard output: its name, the format, size, depth, frames, and the hash of its pixels
// as red, green, blue (of every frame with --frames); or its name and "error N". --ppm writes the picture itself, as
// PPM, in place of the line.
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "gfx2d/images/image_reader.h"
#include "gfx2d/pixel_format.h"
#include "gfx2d/surface.h"
#include "gfx2d/surface_library.h"

namespace {

using namespace vl;

uint64_t Hash(uint64_t hash, const std::vector<uint8_t>& bytes) {
  for (const uint8_t b : bytes) hash = (hash ^ b) * 0x100000001B3u;
  return hash;
}

bool ReadFile(const char* path, std::vector<uint8_t>& bytes) {
  FILE* file = std::fopen(path, "rb");
  if (!file) return false;
  uint8_t block[65536];
  for (size_t n = 0; (n = std::fread(block, 1, sizeof block, file)) > 0;) bytes.insert(bytes.end(), block, block + n);
  std::fclose(file);
  return true;
}

std::vector<uint8_t> Rgb(const cSurfaceImpl& s) {
  std::vector<uint8_t> rgb;
  rgb.reserve(size_t(s.width) * size_t(s.height) * 3);
  for (int y = 0; y < s.height; ++y) {
    for (int x = 0; x < s.width; ++x) {
      uint32_t pixel = 0;
      s.GetPixelRaw(x, y, pixel);
      const Colour c = s.ColourOfPixel(pixel);
      rgb.insert(rgb.end(), {uint8_t(RedOf(c)), uint8_t(GreenOf(c)), uint8_t(BlueOf(c))});
    }
  }
  return rgb;
}

struct Options {
  int depth = 0;
  bool frames = false;
  bool ppm = false;
};

int Decode(const char* path, const Options& options) {
  std::vector<uint8_t> bytes;
  if (!ReadFile(path, bytes)) {
    std::printf("%s unreadable\n", path);
    return 1;
  }
  MemoryBudget budget;
  SurfaceLibrary library(&budget);
  const ImageFilterList filters(&budget);
  CMemoryStream stream(bytes.data(), uint32_t(bytes.size()));
  ImageReader reader(filters);
  int error = reader.OpenStream(&stream);
  uint64_t hash = 0xCBF29CE484222325u;
  std::string ppm;
  if (!error) {
    const int depth = options.depth ? options.depth : reader.GetDepth();
    cSurface surface;
    surface.Create(reader.GetWidth(), reader.GetHeight(), library.FindPrototype(depth));
    if (!surface.IsValid()) error = kImageOutOfMemory;
    const int frames = options.frames ? reader.GetFrameCount() : 1;
    for (int i = 0; i < frames && !error; ++i) {
      if (depth == 8 && reader.GetPalette()) {
        surface.impl->SetPaletteRecord(*reader.GetPalette(), false);
      }
      error = reader.Read(
          {surface.impl->topLine, reader.GetWidth(), reader.GetHeight(), surface.impl->pitch, depth, nullptr, nullptr});
      std::vector<uint8_t> rgb;
      if (depth == 8 && reader.GetPalette()) {
        const PaletteRecord& palette = *reader.GetPalette();
        for (int y = 0; y < surface.impl->height; ++y) {
          for (int x = 0; x < surface.impl->width; ++x) {
            const PaletteEntry& e = palette.entries[*surface.impl->PixelAt(x, y)];
            rgb.insert(rgb.end(), {e.red, e.green, e.blue});
          }
        }
      } else {
        rgb = Rgb(*surface.impl);
      }
      hash = Hash(hash, rgb);
      if (options.ppm) {
        ppm += "P6\n" + std::to_string(reader.GetWidth()) + " " + std::to_string(reader.GetHeight()) + "\n255\n";
        ppm.append(rgb.begin(), rgb.end());
      }
    }
  }
  if (options.ppm) {
    std::fwrite(ppm.data(), 1, ppm.size(), stdout);
    if (error) std::fprintf(stderr, "%s error %d\n", path, error);
  } else if (error) {
    std::printf("%s error %d\n", path, error);
  } else {
    std::printf("%s %s %dx%d %d bits %d frames %016llx\n", path, std::string(reader.filter->GetName()).c_str(),
                reader.GetWidth(), reader.GetHeight(), reader.GetDepth(), reader.GetFrameCount(),
                static_cast<unsigned long long>(hash));
  }
  return error ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  int status = 0;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument == "--frames") {
      options.frames = true;
    } else if (argument == "--ppm") {
      options.ppm = true;
    } else if (argument == "--depth" && i + 1 < argc) {
      options.depth = std::atoi(argv[++i]);
    } else {
      status |= Decode(argv[i], options);
    }
  }
  return status;
}

// Picture files into surfaces, beside the raw libraries.
//
// The peer decodes the same bytes into a plain buffer: of the same format at 32 bits, of 24 bits where we convert on
// the way. Reading from memory to the last line is measured, with the making and freeing of the decoder.
#include <benchmark/benchmark.h>
#include <png.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

// Wants <cstdio> before it.
#include <jpeglib.h>

#include "gfx2d/images/image_reader.h"
#include "gfx2d/surface.h"
#include "gfx2d/surface_library.h"

namespace {

using namespace vl;

constexpr int kWidth = 1024;
constexpr int kHeight = 768;

// Smooth shades with texture and a little noise, as a camera sees the world. Red first.
std::vector<uint8_t> Photo() {
  std::vector<uint8_t> rgb(size_t{kWidth} * kHeight * 3);
  uint32_t noise = 1;
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      noise = noise * 1664525 + 1013904223;
      const double grain = double(noise >> 24) / 32;
      const double fx = x / 97.0;
      const double fy = y / 61.0;
      const double hills =
          40 * std::sin(fx + std::cos(fy)) + 25 * std::sin(3.1 * fy - fx) + 12 * std::sin(0.7 * x + 0.3 * y);
      const double base[3] = {140 + hills, 120 + 0.8 * hills + 30 * std::cos(fy / 2), 100 - 0.6 * hills + y / 12.0};
      for (int c = 0; c < 3; ++c) {
        const double v = base[c] + grain;
        rgb[(size_t(y) * kWidth + size_t(x)) * 3 + size_t(c)] = uint8_t(v < 0 ? 0 : v > 255 ? 255 : v);
      }
    }
  }
  return rgb;
}

// Flat boxes and lines, as a program's pictures are drawn.
std::vector<uint8_t> Drawing() {
  std::vector<uint8_t> rgb(size_t{kWidth} * kHeight * 3, 240);
  uint32_t random = 7;
  const auto next = [&random](uint32_t below) {
    random = random * 1664525 + 1013904223;
    return int((random >> 8) % below);
  };
  for (int i = 0; i < 400; ++i) {
    const int x = next(kWidth);
    const int y = next(kHeight);
    const int w = i % 4 ? next(120) + 1 : next(600) + 1;
    const int h = i % 4 ? next(90) + 1 : 2;
    const uint8_t colour[3] = {uint8_t(next(8) * 36), uint8_t(next(8) * 36), uint8_t(next(8) * 36)};
    for (int py = y; py < std::min(y + h, kHeight); ++py) {
      for (int px = x; px < std::min(x + w, kWidth); ++px) {
        std::memcpy(&rgb[(size_t(py) * kWidth + size_t(px)) * 3], colour, 3);
      }
    }
  }
  return rgb;
}

std::string EncodePng(const std::vector<uint8_t>& rgb) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = kWidth;
  image.height = kHeight;
  image.format = PNG_FORMAT_RGB;
  png_alloc_size_t size = 0;
  png_image_write_get_memory_size(image, size, 0, rgb.data(), 0, nullptr);
  std::string file(size, '\0');
  png_image_write_to_memory(&image, file.data(), &size, 0, rgb.data(), 0, nullptr);
  file.resize(size);
  return file;
}

std::string EncodeJpeg(const std::vector<uint8_t>& rgb) {
  jpeg_compress_struct info{};
  jpeg_error_mgr errors;
  info.err = jpeg_std_error(&errors);
  jpeg_create_compress(&info);
  unsigned char* memory = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&info, &memory, &size);
  info.image_width = kWidth;
  info.image_height = kHeight;
  info.in_color_space = JCS_RGB;
  info.input_components = 3;
  jpeg_set_defaults(&info);
  jpeg_set_quality(&info, 90, TRUE);
  jpeg_start_compress(&info, TRUE);
  for (int y = 0; y < kHeight; ++y) {
    auto* row = const_cast<JSAMPROW>(&rgb[size_t(y) * kWidth * 3]);
    jpeg_write_scanlines(&info, &row, 1);
  }
  jpeg_finish_compress(&info);
  std::string file(reinterpret_cast<char*>(memory), size);
  jpeg_destroy_compress(&info);
  std::free(memory);
  return file;
}

const std::string& File(const std::string& format, bool drawing) {
  static const std::string files[2][2] = {{EncodePng(Photo()), EncodePng(Drawing())},
                                          {EncodeJpeg(Photo()), EncodeJpeg(Drawing())}};
  return files[format == "jpeg"][drawing];
}

void Ours(benchmark::State& state, const std::string& format, int depth, bool drawing) {
  const std::string& file = File(format, drawing);
  MemoryBudget budget;
  SurfaceLibrary library(&budget);
  const ImageFilterList filters(&budget);
  cSurface surface;
  surface.Create(kWidth, kHeight, library.FindPrototype(depth));
  for (auto _ : state) {
    CMemoryStream stream(file.data(), uint32_t(file.size()));
    ImageReader reader(filters);
    const bool failed =
        reader.OpenStream(&stream) || reader.Read({surface.impl->topLine, kWidth, kHeight, surface.impl->pitch, depth,
                                                   surface.impl->GetPalette().Get(), nullptr});
    if (failed) state.SkipWithError("decode");
    benchmark::DoNotOptimize(surface.impl->topLine);
    benchmark::ClobberMemory();
  }
}

struct Memory {
  const char* at;
  size_t left;
};

void RawPng(benchmark::State& state, int bytesPerPixel, bool drawing) {
  const std::string& file = File("png", drawing);
  std::vector<uint8_t> pixels(size_t{kWidth} * kHeight * size_t(bytesPerPixel));
  std::vector<png_bytep> rows;
  for (int y = 0; y < kHeight; ++y) rows.push_back(&pixels[size_t(y) * kWidth * size_t(bytesPerPixel)]);
  for (auto _ : state) {
    Memory memory{file.data(), file.size()};
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_read_fn(png, &memory, [](png_structp p, png_bytep to, size_t size) {
      auto& m = *static_cast<Memory*>(png_get_io_ptr(p));
      if (size > m.left) png_error(p, "end");
      std::memcpy(to, m.at, size);
      m.at += size;
      m.left -= size;
    });
    png_read_info(png, info);
    png_set_bgr(png);
    if (bytesPerPixel == 4) png_set_filler(png, 0, PNG_FILLER_AFTER);
    png_read_update_info(png, info);
    png_read_image(png, rows.data());
    png_destroy_read_struct(&png, &info, nullptr);
    benchmark::DoNotOptimize(pixels.data());
    benchmark::ClobberMemory();
  }
}

void RawJpeg(benchmark::State& state, J_COLOR_SPACE space, int bytesPerPixel, bool dither, bool drawing) {
  const std::string& file = File("jpeg", drawing);
  std::vector<uint8_t> pixels(size_t{kWidth} * kHeight * size_t(bytesPerPixel));
  for (auto _ : state) {
    jpeg_decompress_struct info{};
    jpeg_error_mgr errors;
    info.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&info);
    jpeg_mem_src(&info, reinterpret_cast<const unsigned char*>(file.data()), static_cast<unsigned long>(file.size()));
    jpeg_read_header(&info, TRUE);
    info.out_color_space = space;
    info.dither_mode = dither ? JDITHER_ORDERED : JDITHER_NONE;
    jpeg_start_decompress(&info);
    while (info.output_scanline < info.output_height) {
      JSAMPROW row = &pixels[size_t(info.output_scanline) * kWidth * size_t(bytesPerPixel)];
      jpeg_read_scanlines(&info, &row, 1);
    }
    jpeg_destroy_decompress(&info);
    benchmark::DoNotOptimize(pixels.data());
    benchmark::ClobberMemory();
  }
}

// As a static object: the names are known before the main function of the benchmark library runs.
const bool kRegistered = [] {
  const auto add = [](const std::string& name, auto run) { benchmark::RegisterBenchmark(name.c_str(), run); };
  for (const bool drawing : {false, true}) {
    const std::string suffix = drawing ? "-drawing" : "";
    for (const int depth : {32, 16, 8}) {
      const std::string name = std::to_string(depth) + suffix + "/";
      for (const std::string format : {"png", "jpeg"}) {
        add(format + "/" + name + "vorlane", [=](benchmark::State& state) { Ours(state, format, depth, drawing); });
      }
      const int bytes = depth == 32 ? 4 : 3;
      add("png/" + name + "libpng", [=](benchmark::State& state) { RawPng(state, bytes, drawing); });
      add("jpeg/" + name + "libjpeg", [=](benchmark::State& state) {
        RawJpeg(state, bytes == 4 ? JCS_EXT_BGRX : JCS_EXT_BGR, bytes, true, drawing);
      });
    }
    add("jpeg/16" + suffix + "/libjpeg565",
        [=](benchmark::State& state) { RawJpeg(state, JCS_RGB565, 2, false, drawing); });
    add("jpeg/16" + suffix + "/libjpeg565dithered",
        [=](benchmark::State& state) { RawJpeg(state, JCS_RGB565, 2, true, drawing); });
  }
  return true;
}();

}  // namespace

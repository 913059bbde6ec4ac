// RowKernels: the inner loops of the pixel routines, each working on one row.
//
// There is one table of plain loops for every machine and one for processors with wider vectors; both give the same
// bytes, so which one a library of surfaces uses can't be seen in its pixels. A row has 0 or more pixels and may
// start at any address. Rows of one call share no memory unless they are told to be the same.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "gfx2d/row_effects.h"

namespace vl {

// The taps of one pixel along one axis of the resampling filter.
struct FilterTaps {
  int32_t first = 0;    // source pixel of the first one
  int32_t count = 0;    // at least 0
  int32_t weights = 0;  // where its weights begin
};

// A block of a turn: columns of a few rows of the destination at once, whose source points advance in step.
struct TurnBlock {
  static constexpr int kRows = 8;
  static constexpr int kColumns = 64;

  // Set by the caller.
  float stepX = 0;
  float stepY = 0;
  int32_t width = 0;   // of the source
  int32_t height = 0;  // of the source
  int32_t pitch = 0;   // of the source; its memory spans less than 2 GB
  int32_t bytesPerPixel = 0;
  // The source point of each row; moved to behind the block.
  std::array<float, kRows> x{};
  std::array<float, kRows> y{};
  // Of each row: columns before the first one whose point lies inside the source, and how many lie inside. They are
  // neighbours, as a straight line leaves a rectangle once.
  std::array<int32_t, kRows> before{};
  std::array<int32_t, kRows> inside{};
  // By column, then row. Where a pixel lies from line 0; past the pixel the point lies at, in parts of one; whether
  // there is a pixel to the right (1) and below (2). The last two only for interpolated turns.
  std::array<int32_t, kRows * kColumns> offset{};
  std::array<float, kRows * kColumns> partX{};
  std::array<float, kRows * kColumns> partY{};
  std::array<int32_t, kRows * kColumns> neighbours{};
};

// The four pixels around each of some points, as words, and the points' places between them.
struct TurnSamples {
  std::array<uint32_t, TurnBlock::kColumns> here;
  std::array<uint32_t, TurnBlock::kColumns> next;
  std::array<uint32_t, TurnBlock::kColumns> below;
  std::array<uint32_t, TurnBlock::kColumns> across;
  std::array<float, TurnBlock::kColumns> partX;
  std::array<float, TurnBlock::kColumns> partY;
};

struct RowKernels {
  using Line = void (*)(const uint8_t* source, uint8_t* target, int pixels);

  // Tables by bytes a pixel, 1 to 4.
  // Copies the source's pixels where the key's is not 0; the key may be the source.
  using Keyed = void (*)(const uint8_t* key, const uint8_t* source, uint8_t* destination, int pixels);
  std::array<Keyed, 5> keyed;
  std::array<void (*)(uint8_t* row, uint32_t pixel, int64_t pixels), 5> fill;
  std::array<void (*)(uint8_t* row, int pixels, uint32_t from, uint32_t to), 5> replace;
  // Each source pixel twice, and every second one; the number is that of the smaller row.
  std::array<Line, 5> twice;
  std::array<Line, 5> half;
  // The pixels at some offsets in bytes, which never fall and all lie in one row.
  std::array<void (*)(const uint8_t* source, const int32_t* offsets, uint8_t* target, int pixels), 5> pick;
  // Eight rows of the target from eight columns of as many rows of the source as the target has pixels.
  using Transpose = void (*)(const uint8_t* source, ptrdiff_t sourcePitch, uint8_t* target, ptrdiff_t targetPitch,
                             int pixels);
  std::array<Transpose, 5> transpose;

  // Tables by depth index.
  std::array<std::array<RowEffect, 10>, 5> effects;  // depth 8 has no row for effects 1 and 6, none for 0 and 7
  std::array<std::array<Line, 5>, 5> convert;        // from, to; none from or to depth 8
  std::array<Line, 5> words;                         // to 0x00RRGGBB; none for depth 8

  // Which pixels the edge filter softens: 1 where `row` is 0 and has neighbours that are not 0 both above or below
  // and left or right. The row can be read one pixel past either end.
  void (*edges)(const uint32_t* above, const uint32_t* row, const uint32_t* below, uint8_t* out, int pixels);
  // One pass of the resampling filter over words: along a row, and across `count` rows.
  void (*filterAlong)(const uint32_t* row, const FilterTaps* taps, const int32_t* weights, uint32_t* out, int pixels);
  void (*filterAcross)(const uint32_t* const* rows, const int32_t* weights, int count, uint32_t* out, int pixels);
  // Fills the block's tables for up to kColumns columns, for points rounded or truncated.
  void (*turnNearest)(TurnBlock& block, int columns);
  void (*turnBetween)(TurnBlock& block, int columns);
  // The mix of each point's four pixels.
  void (*mixSamples)(const TurnSamples& samples, uint32_t* out, int points);
};

// Plain loops, the same on every machine.
const RowKernels& PortableRowKernels();
// For wider vectors; null where the build or this processor lacks them.
const RowKernels* WideRowKernels();
// The fastest that this processor runs.
const RowKernels& BestRowKernels();

}  // namespace vl

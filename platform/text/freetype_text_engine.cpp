#include "platform/text/freetype_text_engine.h"

#include <ft2build.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <vector>

#include FT_FREETYPE_H
#include FT_OUTLINE_H
#include FT_SIZES_H
#include FT_TRUETYPE_TABLES_H

#include "platform/text/code_page.h"

namespace vl {

// FreeType's library object and the faces opened with it; fonts keep it alive.
struct FreeTypeTextEngine::Library {
  struct Face {
    ~Face() {
      if (face) FT_Done_Face(face);
    }
    std::shared_ptr<Library> library;
    std::shared_ptr<const std::string> bytes;  // FreeType reads from them while the face lives
    FT_Face face = nullptr;
  };

  Library() {
    if (FT_Init_FreeType(&handle) != 0) handle = nullptr;
  }
  ~Library() {
    if (handle) FT_Done_FreeType(handle);
  }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  FT_Library handle = nullptr;
  std::map<std::pair<const std::string*, int>, std::weak_ptr<Face>> faces;
};

namespace {

constexpr int kMaxHeight = 1024;
constexpr int kDefaultHeight = -16;
constexpr int kBoldWeight = 600;
constexpr size_t kRecentFonts = 32;

int RoundToInt(double v) { return int(std::floor(v + 0.5)); }

bool HasGlyph(uint8_t byte) { return byte >= 0x20 && byte != 0x7F; }

// Runs that leave the range of their fields are no ink that anybody sees.
void AddRun(Glyph& glyph, int x, int y, int width) {
  constexpr int kFar = INT16_MAX;
  if (x < -kFar || x > kFar || y < -kFar || y > kFar || width > kFar) return;
  glyph.runs.push_back({int16_t(x), int16_t(y), int16_t(width)});
}

// One font: a face at a size.
template <class Face>
class FreeTypeFont final : public TextFont {
 public:
  FreeTypeFont(std::shared_ptr<Face> face, const FontDescription& description, bool makeBold, bool makeItalic)
      : face_(std::move(face)), makeBold_(makeBold), makeItalic_(makeItalic) {
    ChooseSize(description);
  }
  ~FreeTypeFont() override {
    if (size_) FT_Done_Size(size_);
  }
  bool IsReady() const { return size_ != nullptr; }

 protected:
  int loadAdvance(uint8_t character) override {
    if (!HasGlyph(character)) return 0;
    if (!LoadOutline(character)) return metrics_.averageWidth;
    return std::max(0, int((face_->face->glyph->advance.x + 32) >> 6)) + (makeBold_ ? 1 : 0);
  }

  void loadGlyph(uint8_t character, Glyph& glyph) override {
    if (!HasGlyph(character) || !LoadOutline(character)) return;
    FT_GlyphSlot slot = face_->face->glyph;
    if (makeItalic_ && slot->format == FT_GLYPH_FORMAT_OUTLINE) {
      const FT_Matrix slant = {0x10000, 0x3333, 0, 0x10000};  // one fifth
      FT_Outline_Transform(&slot->outline, &slant);
    }
    if (FT_Render_Glyph(slot, FT_RENDER_MODE_MONO) != 0) return;
    const FT_Bitmap& bitmap = slot->bitmap;
    if (bitmap.pixel_mode != FT_PIXEL_MODE_MONO) return;
    for (int y = 0; y < int(bitmap.rows); ++y) {
      const uint8_t* line = bitmap.buffer + ptrdiff_t{y} * bitmap.pitch;
      const auto isInked = [&](int x) { return (line[x >> 3] >> (7 - (x & 7)) & 1) != 0; };
      for (int x = 0; x < int(bitmap.width);) {
        if (!isInked(x)) {
          ++x;
          continue;
        }
        const int first = x;
        while (x < int(bitmap.width) && isInked(x)) ++x;
        AddRun(glyph, slot->bitmap_left + first, y - slot->bitmap_top, x - first + (makeBold_ ? 1 : 0));
      }
    }
    glyph.runs.shrink_to_fit();
  }

 private:
  double Scaled(double units) const { return units * ppem_ / face_->face->units_per_EM; }

  void ChooseSize(const FontDescription& description) {
    int height = description.height;
    FT_Face face = face_->face;
    if (FT_New_Size(face, &size_) != 0) {
      size_ = nullptr;
      return;
    }
    const auto* os2 = static_cast<const TT_OS2*>(FT_Get_Sfnt_Table(face, FT_SFNT_OS2));
    const bool hasOs2 = os2 && os2->version != 0xFFFF && os2->usWinAscent + os2->usWinDescent > 0;
    const int ascent = hasOs2 ? os2->usWinAscent : face->ascender;
    const int descent = hasOs2 ? os2->usWinDescent : -face->descender;
    const int cell = std::max(1, ascent + descent);
    if (height == 0) height = kDefaultHeight;
    height = std::clamp(height, -kMaxHeight, kMaxHeight);
    ppem_ = height < 0 ? -height : std::max(1, RoundToInt(double(height) * face->units_per_EM / cell));
    FT_Activate_Size(size_);
    FT_Set_Pixel_Sizes(face, 0, FT_UInt(ppem_));

    FontMetrics& m = metrics_;
    m.ascent = RoundToInt(Scaled(ascent));
    m.descent = RoundToInt(Scaled(descent));
    // A cell height is what the program counts on, so the two roundings must add up to it.
    if (height > 0) m.descent = std::max(0, height - m.ascent);
    m.height = m.ascent + m.descent;
    m.internalLeading = std::max(0, m.height - ppem_);
    const auto* hhea = static_cast<const TT_HoriHeader*>(FT_Get_Sfnt_Table(face, FT_SFNT_HHEA));
    if (hhea) {
      m.externalLeading = std::max(0, RoundToInt(Scaled(hhea->Line_Gap - (cell - (hhea->Ascender - hhea->Descender)))));
    }
    m.averageWidth = std::max(1, AverageWidth());
    m.hasOutline = hasOs2;
    if (hasOs2) {
      m.subscriptSize = RoundToInt(Scaled(os2->ySubscriptYSize));
      m.subscriptOffset = RoundToInt(Scaled(std::abs(os2->ySubscriptYOffset)));
      m.superscriptSize = RoundToInt(Scaled(os2->ySuperscriptYSize));
      m.superscriptOffset = RoundToInt(Scaled(std::abs(os2->ySuperscriptYOffset)));
    }
    if (description.underline) {
      const int thickness = std::max(1, RoundToInt(Scaled(face->underline_thickness)));
      // The line's middle is at the position; its top row counts from the baseline down.
      bars_.push_back({std::max(1, RoundToInt(Scaled(-face->underline_position)) - thickness / 2), thickness});
    }
    if (description.strikeOut) {
      bars_.push_back({-RoundToInt(hasOs2 ? Scaled(os2->yStrikeoutPosition) : ppem_ * 0.3),
                       hasOs2 ? std::max(1, RoundToInt(Scaled(os2->yStrikeoutSize))) : 1});
    }
  }

  // The average that fonts of the period stored: of the small letters and the blank by how often they come.
  int AverageWidth() const {
    static constexpr int kFrequencies[26] = {64, 14, 27, 35, 100, 20, 14, 42, 63, 3,  6, 35, 20,
                                             56, 56, 17, 4,  49,  56, 71, 31, 10, 18, 3, 18, 2};
    double sum = 166 * UnhintedAdvance(' ');
    for (int i = 0; i < 26; ++i) sum += kFrequencies[i] * UnhintedAdvance(char32_t('a' + i));
    return RoundToInt(Scaled(sum / 1000));
  }

  double UnhintedAdvance(char32_t c) const {
    FT_Face face = face_->face;
    if (FT_Load_Glyph(face, GlyphIndex(c), FT_LOAD_NO_SCALE) != 0) return face->units_per_EM / 2.0;
    return double(face->glyph->advance.x);
  }

  FT_UInt GlyphIndex(char32_t c) const {
    FT_Face face = face_->face;
    // Symbol fonts keep their characters in the private area.
    if (face->charmap && face->charmap->encoding == FT_ENCODING_MS_SYMBOL && c < 0x100) c += 0xF000;
    return FT_Get_Char_Index(face, c);
  }

  // Into the face's slot, hinted for one bit a pixel.
  bool LoadOutline(uint8_t character) {
    FT_Activate_Size(size_);
    return FT_Load_Glyph(face_->face, GlyphIndex(UnicodeOf1252(character)), FT_LOAD_TARGET_MONO | FT_LOAD_NO_BITMAP) ==
           0;
  }

  std::shared_ptr<Face> face_;
  FT_Size size_ = nullptr;
  int ppem_ = 0;
  bool makeBold_;
  bool makeItalic_;
};

// What text looks like on a machine without any font: hollow boxes of the right size.
class BoxFont final : public TextFont {
 public:
  explicit BoxFont(const FontDescription& description) {
    const int height =
        std::clamp(description.height == 0 ? kDefaultHeight : description.height, -kMaxHeight, kMaxHeight);
    metrics_.height = std::max(1, std::abs(height));
    metrics_.descent = metrics_.height / 5;
    metrics_.ascent = metrics_.height - metrics_.descent;
    metrics_.averageWidth = metrics_.height / 2 + 1;
  }

 protected:
  int loadAdvance(uint8_t character) override { return HasGlyph(character) ? metrics_.averageWidth : 0; }
  void loadGlyph(uint8_t character, Glyph& glyph) override {
    if (!HasGlyph(character) || character == ' ') return;
    const int width = std::max(1, metrics_.averageWidth - 1);
    const int top = -metrics_.ascent + 1;
    for (int y = top; y <= 0; ++y) {
      if (y == 0 || y == top) {
        AddRun(glyph, 0, y, width);
      } else {
        AddRun(glyph, 0, y, 1);
        AddRun(glyph, width - 1, y, 1);
      }
    }
  }
};

}  // namespace

FreeTypeTextEngine::FreeTypeTextEngine(FontFinder& finder) : finder_(finder), library_(std::make_shared<Library>()) {}

FreeTypeTextEngine::~FreeTypeTextEngine() = default;

// What makes no difference to the glyphs is levelled, so that such fonts are one.
FontDescription FreeTypeTextEngine::Levelled(FontDescription description) {
  for (char& c : description.face) {
    if (c >= 'A' && c <= 'Z') c = char(c + ('a' - 'A'));
  }
  description.weight = description.weight >= kBoldWeight ? 700 : 400;
  description.quality = 0;
  return description;
}

std::shared_ptr<TextFont> FreeTypeTextEngine::openFont(const FontDescription& wanted) {
  const FontDescription description = Levelled(wanted);
  const auto found =
      std::find_if(recent_.begin(), recent_.end(), [&](const Opened& o) { return o.description == description; });
  if (found != recent_.end()) {
    recent_.splice(recent_.begin(), recent_, found);
    return recent_.front().font;
  }
  recent_.push_front({description, Make(description)});
  if (recent_.size() > kRecentFonts) recent_.pop_back();
  return recent_.front().font;
}

std::shared_ptr<TextFont> FreeTypeTextEngine::Make(const FontDescription& description) {
  FaceRequest request;
  request.face = description.face;
  request.bold = description.weight >= kBoldWeight;
  request.italic = description.italic;
  request.fixedPitch = description.fixedPitch;
  const FontFile file = finder_.Find(request);
  if (file.bytes && library_->handle) {
    std::weak_ptr<Library::Face>& known = library_->faces[{file.bytes.get(), file.faceIndex}];
    std::shared_ptr<Library::Face> face = known.lock();
    if (!face) {
      face = std::make_shared<Library::Face>();
      face->library = library_;
      face->bytes = file.bytes;
      const auto* bytes = reinterpret_cast<const FT_Byte*>(file.bytes->data());
      if (FT_New_Memory_Face(library_->handle, bytes, FT_Long(file.bytes->size()), file.faceIndex, &face->face) != 0) {
        face->face = nullptr;
      } else if (!face->face->charmap) {
        FT_Select_Charmap(face->face, FT_ENCODING_MS_SYMBOL);
      }
      known = face;
    }
    if (face->face && FT_IS_SCALABLE(face->face) && face->face->units_per_EM > 0) {
      auto font = std::make_shared<FreeTypeFont<Library::Face>>(face, description, request.bold && !file.isBold,
                                                                request.italic && !file.isItalic);
      if (font->IsReady()) return font;
    }
  }
  return std::make_shared<BoxFont>(description);
}

}  // namespace vl

// TaggedTextWriter: lays tagged text out at a pen and draws it: one object for one write.
//
// A write takes time in proportion to its text, bounds the fonts it makes (kMaxFonts) and the states it keeps for a
// line (kMaxStates), and asks its target between lines and every few thousand characters whether to go on.
#pragma once

#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "gfx2d/surface_text.h"
#include "gfx2d/tagged_text.h"
#include "gfx2d/tagged_text_references.h"
#include "platform/text_engine.h"

namespace vl {

// What the write needs of the object whose surface it changes.
class TextTarget {
 public:
  virtual ~TextTarget() = default;
  // The box of the surface is about to change.
  virtual void NoteTextChange(const Rect& box) = 0;
  // False ends the write: what is drawn stays, the rest is left out.
  virtual bool MayGoOn() = 0;
};

// Where and how to write; the pen is moved by writing.
struct TextPen {
  int32_t penX = 0;
  int32_t penY = 0;
  bool wrapping = true;
  Colour backColor = 0xFFFFFF;  // of the rows that scrolling brings in
  TextPaint paint;              // with the pen's colour; the pattern gives way to a colour tag
  FontDescription description;
  std::shared_ptr<TextFont> font;  // of the description; not null
};

struct TextExtent {
  int32_t width = 0;
  int32_t height = 0;
  int32_t ascent = 0;
};

// What an open tag changed, to be put back when it closes.
struct CTextState {
  int32_t tag = 0;
  Colour color = 0;
  bool isColorTagged = false;
  int32_t fontHeight = 0;
  const std::string* face = nullptr;
  int32_t baselineShift = 0;
  int32_t below = -1;  // the state that was on top of its kind before, -1 for none
};

class TaggedTextWriter {
 public:
  // Different fonts of one write; further ones can't be made, and the font in force stays.
  static constexpr size_t kMaxFonts = 256;
  // Tags opened in one line; further ones work but can't be closed.
  static constexpr size_t kMaxStates = 1 << 18;

  // All outlive the writer.
  TaggedTextWriter(cSurface& surface, TextEngine& engine, TextTarget& target, TextPen& pen);

  // The pen stays behind the text. `extent` gets the width of the widest line and the height of all.
  void WriteText(std::string_view text, TextExtent& extent);
  // The pen goes to the start of the next line.
  void WriteTextLine(std::string_view text);

  TextExtent MeasureText(std::string_view text);
  // Draws a line whose extent is known.
  void DrawMeasured(std::string_view text, int x, int y, const TextExtent& extent);
  // Measures and draws at the pen, scrolling when it must.
  TextExtent DrawLine(std::string_view line);
  // Cuts the text into lines by the surface's width, from the pen on. Valid as long as text and writer.
  std::vector<std::string_view> WrapText(std::string_view text);

 private:
  class GrowingLine;
  class LineCutter;

  struct FontEntry {
    FontDescription description;
    std::shared_ptr<TextFont> font;
  };

  // What is in force at a place of a line.
  struct Style {
    bool underline = false;
    bool italic = false;
    bool strikeOut = false;
    int32_t weight = 400;
    int32_t height = 0;
    const std::string* face = nullptr;
    Colour color = 0;
    bool isColorTagged = false;
    int32_t baselineShift = 0;
    TextFont* font = nullptr;
    int32_t top[kTagSubscript - kTagFont + 1] = {-1, -1, -1, -1, -1, -1};  // newest state of each kind
  };

  // The states of one line in the order they were opened; a style knows those that are open.
  using States = std::vector<CTextState>;

  Style StartOfLine() const;
  void Apply(const TagToken& token, Style& style, States& states);
  void Open(const TagToken& token, Style& style, States& states);
  void Close(int32_t code, Style& style, const States& states);
  void ChooseFont(Style& style);
  const std::string* FaceNamed(std::string_view face);
  // Calls visit(style, text) for each piece of text, references replaced, until it gives false.
  template <class Visit>
  void Walk(std::string_view line, Visit&& visit);
  std::string_view Blanks();
  void ScrollFor(int32_t lineHeight);
  void NextLine(int32_t lineHeight);

  cSurface& surface_;
  TextEngine& engine_;
  TextTarget& target_;
  TextPen& pen_;
  std::vector<FontEntry> fonts_;
  std::set<std::string, std::less<>> faces_;
  States states_;             // of the line that is measured or drawn
  ReferenceText references_;  // of its token
  std::string blanks_;        // as many as the surface is wide
};

}  // namespace vl

// CISurface: the runtime class Surface, what a script draws on. A window owns one for its client area; scripts make
// others that nothing shows.
//
// Colours here are the library's (0x00BBGGRR); scripts give and get 0xRRGGBB.
#pragma once

#include <cstdint>
#include <memory>
#include <unordered_set>
#include <vector>

#include "gfx2d/pattern.h"
#include "gfx2d/script/dirty_list.h"
#include "gfx2d/script/font_class.h"
#include "gfx2d/script/surface_host.h"
#include "gfx2d/sprite_layer.h"
#include "gfx2d/surface.h"
#include "gfx2d/surface_text.h"
#include "interpreter/class_base.h"
#include "interpreter/interpretor.h"

namespace vl {

class CISprite;
struct CSurfaceImage;

class CISurface : public CIBaseClassImpl, public CIFontContainer, public CIRefresh, public SpriteLayerHost {
 public:
  explicit CISurface(CInterpretor& interpreter);
  // The surface behind a window's client area: `depth` 0 takes the screen's. Null when it can't be made.
  // One for a member's result: white, of the screen's depth when `depth` is 0. Null when it can't be made.
  static CISurface* CreateAlone(CInterpretor& interpreter, int width, int height, int depth);
  static CISurface* CreateFromDib(CInterpretor& interpreter, std::span<const uint8_t> dib);
  // Not constructed by a script; the window destroys it with DestroyObject.
  static CISurface* CreateForWindow(CInterpretor& interpreter, CSurfaceHost& host, int width, int height, int depth);

  void Construct() override;
  void Destroy(bool final) override;
  bool DependsOn(CIBaseClassImpl* target) override;
  void SetFontObject(CIFont* newFont) override;
  // CIRefresh.
  void Refresh() override;
  bool IsWindowBound() const override { return parentWindow != nullptr; }
  bool IsSurface() const override { return true; }

  // For the window.
  // New size, pixels kept at 0, 0; a failure leaves the old surface.
  void ResizeTo(int newWidth, int newHeight);
  void AddDirty(const Rect& box);
  void MarkAllDirty() { AddDirty({0, 0, width, height}); }
  void SetPenColorRaw(uint32_t colour);
  void SetBackColorRaw(uint32_t colour) { backColor = colour; }
  void FillWithBackColor();
  // The pen's text output, for Input: width and height of what was written go to the out values.
  void WriteText(std::string_view text, int& writtenWidth, int& writtenHeight);
  void WriteTextLine(std::string_view text);
  void EraseBox(int x, int y, int boxWidth, int boxHeight);
  // Runs before a change: adds to the dirty list, lifts sprites, asks for a refresh.
  void NoteChange(int x1, int y1, int x2, int y2);

  // SpriteLayerHost.
  cSurfaceImpl& SpritePixels() override { return *surface.impl; }
  void SpriteBoxChanged(const Rect& box) override;
  void RequestSpriteRefresh() override;

  // Pictures, in surface_images.cpp: one that a bank keeps, or one read for the moment.
  struct Picture {
    cSurface own;
    const cSurface* pixels = nullptr;
  };
  // Finds an element of the image bank, a file or the bytes of a Binary. `prototype` tells the depth and palette in
  // which files are read. False when there is none or it can't be read.
  static bool FindPicture(CInterpretor& interpreter, const CValue& source, uint32_t flags,
                          const cSurfaceImpl& prototype, Picture& picture);

  CSurfaceHost* parentWindow = nullptr;
  cSurface surface;
  int32_t width = 0;
  int32_t height = 0;
  int32_t depth = 0;
  SpriteLayer sprites{*this};
  std::unordered_set<CISprite*> spritesHere;      // that live on it, in its list or not
  std::unordered_set<CSurfaceImage*> imageUsers;  // that show it as their picture
  int32_t penX = 0;
  int32_t penY = 0;
  uint32_t backColor = 0xFFFFFF;
  uint32_t penColor = 0;

  // Members, one method each.
  void Write();
  void WriteLn();
  void MoveTo();
  void Line();
  void LineTo();
  void Ellipse();
  void Rectangle();
  void DrawPolygon();
  void SetPenColor();
  void SetFillColor();
  void SetFillGradientColor();
  void SetFillGradientDir();
  void SetPenGradientColor();
  void SetPenGradientDir();
  void SetPenSize();
  void SetFont();
  void SetAntiAlias();
  void SetDrawMode();
  void SetTransparentMode();
  void Fill();
  void Rotate();
  void DrawText();
  void SetPixel();
  void GetDepth();
  void GetPixelWidth();
  void GetPixelHeight();
  void GetPixel();
  void GetPixelIndex();
  void Copy();
  void Stretch();
  void Scroll();
  void ReverseX();
  void ReverseY();
  void ReplaceColor();
  void Clear();
  void GetXPos();
  void GetYPos();
  void ClearSprites();
  void UpdateSprites();
  void DrawSprites();
  void ScrollSprites();
  void GetFirstSprite();
  void GetLastSprite();
  void GetNextSprite();
  void GetPrevSprite();
  void DeleteSprites();
  void SetAutoBack();
  void SetAutoRefresh();
  void RefreshNow();
  void SetBackgroundColor();
  void GetBackgroundColor();
  void IsAutoBack();
  void IsAutoRefresh();
  void EraseRect();
  void SetWrapping();
  void IsWrapping();
  void GetFont();
  void Lock();
  void Unlock();
  void GetStringWidth();
  void GetStringHeight();
  void LoadImage();
  void SaveImage();
  void CaptureScreen();
  void CaptureWindow();

 private:
  bool CreateSurface(int newWidth, int newHeight, int newDepth);
  void ResetState();
  void UpdateSimple();
  void NoteShape(int x1, int y1, int x2, int y2);
  void DrawLineTo(int x1, int y1, int x2, int y2);
  // Argument i, or a default when it is left out.
  int32_t IntOr(int i, int32_t ifMissing) const;
  // A script's colour as the library's.
  uint32_t ColourOr(int i, uint32_t ifMissing) const;
  void BoxArguments(Rect& box) const;
  std::vector<Point> CornerArguments();
  // A number of the flag family joins `flags` and is no argument.
  static bool TakeFlag(int32_t number, uint32_t& flags);
  // The surface becomes the picture, size and depth included.
  bool BecomePicture(Picture& picture);
  // Brings a box of the picture here; the boxes are the arguments from `first` on. False when it shows nothing.
  bool TakeCapture(CapturedPicture& picture, int first);
  // Sprites, in surface_sprites.cpp: takes them off a box, when they are drawn by themselves.
  void LiftSprites(const Rect& box);
  void RunSpritePass();
  void PresentDirty();
  void TellImageUsers();
  void LeaveImageUsers();
  // Every sprite leaves the surface.
  void RemoveSprites(bool immediate);
  // Error 36 while sprites are drawn by themselves.
  void RequireOwnDrawing();
  // Of argument 0.
  CISprite* SpriteHere();
  Pattern* PenPattern();
  CISurface* SourceArgument();
  Rect WholeBox() const { return {0, 0, width, height}; }
  Size StringSize();
  // Text, in surface_text_layout.cpp.
  class WriteTarget;
  TextPaint PaintOfText() const;
  // Runs `write` on a writer at the pen.
  template <class F>
  void WriteAtPen(F&& write);

  bool autoBack_ = true;
  bool autoRefresh_ = true;
  bool dirtyPending_ = false;
  bool locked_ = false;
  bool inSpritePass_ = false;
  bool wrapping_ = true;
  bool transparentMode_ = false;
  int32_t drawMode_ = 0;
  int32_t drawParam_ = 0;
  int32_t penSize_ = 1;
  bool antiAlias_ = false;
  uint32_t fillColor_ = 0xFFFFFF;
  int32_t fillType_ = 0;
  int32_t penType_ = 0;
  std::unique_ptr<Pattern> fillPattern_;
  std::unique_ptr<Pattern> penPattern_;
  SolidPattern solidPen_{0};
  bool simpleDraw_ = true;
  DirtyList dirty_;
};

}  // namespace vl

#include "input/setup_frame.h"

#include "input/classic_paint.h"

namespace vl {

using namespace classic;

void PaintSetupFrame(cSurface& surface, TextFont& boldFont, std::string_view title) {
  Raised(surface, {0, 0, kFramedSetup.width, kFramedSetup.height});
  const Rect caption = {kSetupBorder, kSetupBorder, kFramedSetup.width - kSetupBorder,
                        kSetupBorder + kSetupCaption - 1};
  Fill(surface, caption, kActiveCaption);
  Text(surface, boldFont, title, {caption.left + 3, caption.top, kSetupCloseBox.left - 2, caption.bottom},
       kTextSingleLine | kTextVerticalCentre, kCaptionText);
  Raised(surface, kSetupCloseBox);
  // The cross, two pixels wide.
  const int left = kSetupCloseBox.left + 4;
  const int top = kSetupCloseBox.top + 3;
  for (int i = 0; i < 7; ++i) {
    Fill(surface, {left + i, top + i, left + i + 2, top + i + 1}, kButtonText);
    Fill(surface, {left + 6 - i, top + i, left + 8 - i, top + i + 1}, kButtonText);
  }
}

}  // namespace vl

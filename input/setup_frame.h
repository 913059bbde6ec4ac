// The frame that the set-up dialog draws around itself where no desktop gives it one: inside another window.
#pragma once

#include <string_view>

#include "gfx2d/surface.h"
#include "input/setup_dialog.h"
#include "platform/text_engine.h"

namespace vl {

inline constexpr int kSetupBorder = 3;
inline constexpr int kSetupCaption = 19;
inline constexpr Size kFramedSetup = {SetupDialog::kSize.width + 2 * kSetupBorder,
                                      SetupDialog::kSize.height + 2 * kSetupBorder + kSetupCaption};
// Where the dialog stands in it.
inline constexpr Point kSetupClient = {kSetupBorder, kSetupBorder + kSetupCaption};
inline constexpr Rect kSetupCloseBox = {kFramedSetup.width - 21, 5, kFramedSetup.width - 5, 19};

// All but the dialog's own picture, on a surface of kFramedSetup.
void PaintSetupFrame(cSurface& surface, TextFont& boldFont, std::string_view title);

}  // namespace vl

// Loading a picture of any format into a surface.
#pragma once

#include <cstdint>
#include <vector>

#include "gfx2d/images/image_filter_list.h"
#include "gfx2d/surface.h"
#include "gfx2d/surface_library.h"
#include "host/appfile/stream.h"

namespace vl {

// Flags of LoadImageIntoSurface.
inline constexpr uint32_t kLoadKeepDepth = 1;    // the surface's depth stays
inline constexpr uint32_t kLoadKeepPalette = 2;  // a surface of depth 8 takes the picture in its own colours

// Reads the picture at the stream's position into the surface that `holder` holds. The surface takes the
// picture's size, and its depth and palette unless the flags keep them; an empty holder gets one. `mask`, if not
// null, gets the alpha of each pixel, line by line, or is left empty when the picture has none. On failure the
// result is false, and the surface may hold part of the picture.
bool LoadImageIntoSurface(const ImageFilterList& filters, SurfaceLibrary& library, cSurface& holder, CStream& stream,
                          uint32_t flags, std::vector<uint8_t>* mask);

}  // namespace vl

// ImageError: what every operation on picture files answers. 0 is success.
#pragma once

#include <cstdint>

namespace vl {

enum ImageError : int32_t {
  kImageOk = 0,
  kImageOutOfMemory = 1,
  kImageCantOpen = 2,
  kImageCantCreate = 3,
  kImageWriteFailed = 4,
  kImageBadData = 5,    // no filter recognises the data, or they are damaged
  kImageBadPlanes = 6,  // planes or masks that the format doesn't allow
  kImageNoName = 7,     // no name or no stream given
  kImageCantDo = 8,     // the filter can't do this, or the picture is no animation
  kImageFilterClosed = 9,
  kImageDepthNotWritable = 10,
  kImageReadFailed = 11,  // in the pixels
  kImageDepthTooSmall = 12,
  kImageWrongSize = 13,  // the target isn't as large as the picture
  kImageBadArgument = 14,
  kImageReaderClosed = 15,
  kImageNoPalette = 16,  // missing or too short when saving
  kImageAlreadyOpen = 17,
  kImagePastEnd = 18,  // no further frame
};

}  // namespace vl

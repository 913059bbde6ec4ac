#include "host/appfile/errors.h"

namespace vl {

std::string_view StatusText(uint32_t status) {
  switch (status) {
    case kAppOk:
      return "no error";
    case kAppNotRecognised:
      return "this is no application file";
    case kAppOutOfMemory:
      return "out of memory, or sizes that can't be true";
    case kAppReadFailed:
      return "reading failed";
    case kAppEndOfFile:
      return "the file ends too early";
    case kAppCantOpen:
      return "the file can't be opened";
    case kAppBadStream:
      return "compressed data is damaged";
    case kAppBankHeader:
      return "the header of a bank is damaged";
    case kAppNoPixels:
      return "a picture has no pixels";
    case kAppNoApplication:
      return "no application given";
    case kAppElementHeader:
      return "the header of an element is damaged";
    default:
      return "unknown error";
  }
}

}  // namespace vl

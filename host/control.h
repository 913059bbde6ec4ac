// CVorlane: the control that a page or another host places: its address, its parameters, and the time of its start
// picture. What is particular to a desktop (windows, threads, the network) is the player's.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "base/rect.h"

namespace vl {

class CVorlane {
 public:
  // How long the start picture stays at least after it was last drawn, for applications of kind 4.
  static constexpr int32_t kStartPictureMs = 3500;

  // A parameter of the page. "Src" and "URLVLPSource", in any case, set the address as well.
  void AddParameter(const std::string& name, const std::string& value);

  void PictureDrawn(uint32_t nowMs) { firstDraw = nowMs; }
  // What is left of that time, never below 0. When nothing is left, no later run waits either.
  int32_t StartDelayMs(uint32_t nowMs);

  std::string url;          // the property URLVLPSource
  std::string documentUrl;  // of the page, from which a relative address counts; may be empty
  uint32_t firstDraw = 0;   // of the start picture, ms
  bool delayDone = false;   // the start picture has had its time
  std::vector<std::pair<std::string, std::string>> params;
  std::string sourceName;  // full path of the application when its address was a plain local path, else empty
};

// Where the start picture lies in the control: centred, made smaller in its proportions when it doesn't fit.
Rect PlaceOfStartPicture(Size picture, Size bounds);

// True for an address with a scheme that is fetched; a file:// address and a plain path are not.
bool IsFetched(const std::string& url);
// The path of a file:// address; "" when it holds none.
std::string PathOfFileUrl(const std::string& url);
// The name of what an address points to, for a title: behind the last slash, without a query.
std::string NameOfUrl(const std::string& url);
// The host of an address, without user and port.
std::string HostOfUrl(const std::string& url);

}  // namespace vl

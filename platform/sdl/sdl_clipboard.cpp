#include "platform/sdl/sdl_clipboard.h"

#include <SDL.h>

#include <memory>

#include "platform/text/code_page.h"

namespace vl {

bool SdlClipboard::has(std::string_view format) {
  const std::lock_guard lock(mutex_);
  return content_.has(format);
}

std::optional<std::vector<uint8_t>> SdlClipboard::get(std::string_view format) {
  const std::lock_guard lock(mutex_);
  return content_.get(format);
}

void SdlClipboard::clear() {
  {
    const std::lock_guard lock(mutex_);
    content_.clear();
    outgoing_ = "";
  }
  wake_();
}

bool SdlClipboard::put(std::string_view format, std::span<const uint8_t> bytes) {
  {
    const std::lock_guard lock(mutex_);
    if (!content_.put(format, bytes)) return false;
    if (format != kClipboardText) return true;
    outgoing_ = Utf8Of1252({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  }
  wake_();
  return true;
}

void SdlClipboard::Apply() {
  std::optional<std::string> text;
  {
    const std::lock_guard lock(mutex_);
    text.swap(outgoing_);
  }
  if (!text || *text == desktop_) return;
  desktop_ = std::move(*text);
  SDL_SetClipboardText(desktop_.c_str());
}

void SdlClipboard::Renew() {
  const std::unique_ptr<char, decltype(&SDL_free)> text(SDL_HasClipboardText() ? SDL_GetClipboardText() : nullptr,
                                                        SDL_free);
  std::string now = text ? text.get() : "";
  if (now == desktop_) return;
  desktop_ = std::move(now);
  const std::string bytes = Text1252OfUtf8(desktop_);
  const std::lock_guard lock(mutex_);
  // The program's own text is newer.
  if (outgoing_) return;
  content_.clear();
  if (bytes.empty()) return;
  content_.put(kClipboardText, {reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()});
}

}  // namespace vl

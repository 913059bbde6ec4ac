#include "interpreter/error.h"

#include "interpreter/system_errors.h"

namespace vl {

namespace {

// Buffers of the box: texts that don't fit are cut at the size less 2.
constexpr size_t kTextBuffer = 256;
constexpr size_t kTitleBuffer = 150;
constexpr size_t kSystemTextBytes = 190;

std::string Cut(std::string text, size_t bufferSize) {
  if (text.size() > bufferSize - 2) text.resize(bufferSize - 2);
  return text;
}

}  // namespace

std::string FormatError(uint32_t code, const uint32_t* line, const ErrorTexts& texts) {
  std::string text;
  if (code & kSystemError) {
    text = SystemErrorText(code & ~kSystemError, texts.french);
    if (text.size() > kSystemTextBytes) text.resize(kSystemTextBytes);
    if (!text.empty() && text.back() == '.') text.pop_back();
  } else {
    text = (texts.french ? "Erreur #" : "Error #") + std::to_string(static_cast<int32_t>(code));
  }
  if (!line) return Cut(text + ".", kTextBuffer);
  const std::string number = std::to_string(static_cast<int32_t>(*line + 1));
  return Cut(text + (texts.french ? " ligne " : " at line ") + number + ".", kTextBuffer);
}

std::string FormatErrorTitle(std::string_view sourceName) {
  std::string title(sourceName.substr(0, sourceName.find(':')));
  const size_t slash = sourceName.rfind('/');
  std::string_view name = slash == std::string_view::npos ? sourceName : sourceName.substr(slash + 1);
  name = name.substr(0, name.find('.'));
  title += " - ";
  title += name;
  return Cut(title, kTitleBuffer);
}

}  // namespace vl

// ErrorPanel: the box that shows a program's error, with its text to copy. It fills a window of its own.
#pragma once

#include <array>
#include <string>

#include "host/desktop/shell/shell_painter.h"
#include "platform/events.h"

namespace vl {

class ErrorPanel {
 public:
  enum class Answer { Nothing, Changed, Copy, Reload, Close };

  // Texts are code page 1252; the detail may be empty.
  void Show(std::string title, std::string text, std::string detail, const ShellPainter& painter);
  Size WindowSize() const { return size_; }
  // What Copy gives.
  std::string Text() const;
  Answer OnInput(const Event& event);
  WindowOverlay Paint(ShellPainter& painter) const;

 private:
  static constexpr int kButtons = 3;
  Rect BoxOf(int button) const;
  Answer Press(int button) const;

  std::string title_;
  std::string text_;
  std::string detail_;
  Size size_;
  int textHeight_ = 0;
  int focused_ = kButtons - 1;
  int pressed_ = -1;
};

}  // namespace vl

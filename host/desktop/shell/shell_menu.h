// ShellMenu: the player's own menu. It knows its items, where they lie and which one is marked; what they do is the
// shell's.
#pragma once

#include <string>
#include <vector>

#include "host/desktop/shell/shell_painter.h"
#include "platform/events.h"

namespace vl {

// With the numbers of vl_action.
enum class ShellAction { None, Menu, FullScreen, Scaling, Pause, Step, Screenshot, Reload, Open, Quit };
inline constexpr int kShellActions = static_cast<int>(ShellAction::Quit) + 1;

struct ShellMenuItem {
  ShellAction action = ShellAction::None;
  std::string label;  // code page 1252
  std::string keys;
  bool beginsGroup = false;
  std::string path;  // of Open, UTF-8
};

class ShellMenu {
 public:
  enum class Answer {
    Nothing,
    Changed,  // another item is marked: paint it again
    Chosen,   // the marked item
    Left,     // the person went elsewhere
  };

  // Puts it at a place of a window, moved so far that it is seen whole.
  void Show(std::vector<ShellMenuItem> items, const ShellPainter& painter, int x, int y, Size window);
  void Hide() { items_.clear(); }
  bool IsShown() const { return !items_.empty(); }
  Answer OnInput(const Event& event);
  const ShellMenuItem& Marked() const { return items_[static_cast<size_t>(marked_)]; }
  WindowOverlay Paint(ShellPainter& painter) const;

 private:
  Rect BoxOf(size_t item) const;  // inside the menu
  int ItemAt(int x, int y) const;
  void Mark(int step);

  std::vector<ShellMenuItem> items_;
  int marked_ = -1;
  int x_ = 0;
  int y_ = 0;
  int width_ = 0;
  int height_ = 0;
  int rowHeight_ = 0;
};

}  // namespace vl

// SetupDialog: the dialog in which a person changes the settings of game input, in the classic look.
//
// It knows neither windows nor the interpreter: whoever shows it hands in what happens and takes the picture. The
// settings change at once; keeping a copy for Cancel is the caller's.
#pragma once

#include <array>
#include <optional>
#include <string>

#include "gfx2d/surface.h"
#include "input/setup_capture.h"
#include "input/setup_texts.h"
#include "input/setup_tree.h"
#include "platform/text_engine.h"

namespace vl {

class SetupDialog {
 public:
  static constexpr Size kSize = {420, 330};  // of the client area
  enum class Answer { None, Ok, Cancel };

  // The settings, the texts and the devices' state outlive the dialog.
  SetupDialog(GameSettings& settings, const DeviceState& devices, const SetupTexts& texts);

  // What happens in the window. Positions are of the client area; keys are virtual keys.
  void KeyDown(int32_t key);
  void KeyUp(int32_t key);
  void Char(uint8_t character);
  void MouseDown(int32_t button, int x, int y, bool isDouble);
  void MouseUp(int32_t button, int x, int y);
  void MouseMove(int x, int y);
  void Wheel(int32_t delta);
  void Close() { answer_ = Answer::Cancel; }
  // To be called whenever devices may have changed.
  void WatchDevices();

  Answer GetAnswer() const { return answer_; }
  // True when the picture has changed since it was taken last.
  bool IsDirty() const { return isDirty_; }
  // Paints all of it on a surface of kSize.
  void Paint(cSurface& surface, TextFont& font);

 private:
  enum Button : int { kAdd, kRename, kDelete, kInput, kPrefer, kOk, kCancel, kButtons, kList = -1 };

  // setup_dialog.cpp
  bool IsEnabled(int button) const;
  void Press(int button);
  void Select(const SetupPlace& place);
  void MoveSelection(int rows);
  void ListKey(int32_t key);
  void OpenOrClose(bool open);
  void StartRename();
  void EndRename(bool keep);
  void StartCapture(bool isNew);
  void Capture(std::optional<int> row);
  void NextFocus();
  void ScrollTo(size_t row);
  void ScrollBy(int64_t rows);
  bool HasScrollBar() const { return tree_.Rows().size() > static_cast<size_t>(kVisibleRows); }
  size_t SelectedRow() const { return tree_.RowOf(selected_); }
  static Rect ButtonBox(int button);
  static int ButtonAt(int x, int y);

  // setup_paint.cpp
  void PaintList(cSurface& surface, TextFont& font);
  void PaintRow(cSurface& surface, TextFont& font, const SetupRow& row, int y);
  void PaintScrollBar(cSurface& surface);
  void PaintButton(cSurface& surface, TextFont& font, int button);
  void PaintHint(cSurface& surface, TextFont& font);
  const char* Hint() const;

  static constexpr Rect kListBox = {10, 10, 310, 280};
  static constexpr Rect kHintBox = {10, 286, 410, 324};
  static constexpr int kRowHeight = 16;
  static constexpr int kIndent = 16;
  static constexpr int kScrollWidth = 16;
  static constexpr int kVisibleRows = (kListBox.bottom - kListBox.top - 4) / kRowHeight;

  const DeviceState& devices_;
  const SetupTexts& texts_;
  SetupTree tree_;
  SetupPlace selected_;
  size_t firstRow_ = 0;
  int focus_ = kList;
  int pressed_ = kList;  // the button that the mouse holds; kList for none
  bool isPressedInside_ = false;
  std::optional<std::string> newName_;  // while a name is typed
  std::optional<SetupCapture> capture_;
  bool isCaptureNew_ = false;
  int32_t heldKey_ = 0;  // started the capture, and doesn't count before it was let go
  Answer answer_ = Answer::None;
  bool isDirty_ = true;
};

}  // namespace vl

// The rows that windows and controls have in common, for their class tables.
#pragma once

#include <array>
#include <span>

#include "ui/child_window.h"

namespace vl {

// The 37 common members, with the ids from `first` on.
template <typename C>
constexpr std::array<MemberRow, 37> CommonMembers(uint16_t first, uint8_t globalKind = 0) {
  uint16_t id = first;
  const auto row = [&](const char* name, MemberFunction function, const char* help) {
    return MemberRow{id++, name, MemberKind::Member, function, 0, globalKind, help};
  };
  const auto refused = [&](const char* name) {
    return MemberRow{id++, name,       MemberKind::Event,  kMember<&C::KeyEventsNotOffered>,
                     0,    globalKind, "refused: error 20"};
  };
  return {row("GetX", kMember<&C::GetX>, "GetX(): left edge of the frame"),
          row("GetY", kMember<&C::GetY>, "GetY(): top edge of the frame"),
          row("GetWidth", kMember<&C::GetWidth>, "GetWidth(): client width"),
          row("GetHeight", kMember<&C::GetHeight>, "GetHeight(): client height"),
          row("Show", kMember<&C::Show>, "Show(now): shows it, at the next refresh or now (1)"),
          row("Hide", kMember<&C::Hide>, "Hide(now): hides it"),
          row("IsVisible", kMember<&C::IsVisible>, "IsVisible(): 1 or 0"),
          row("SetPosition", kMember<&C::SetPosition>, "SetPosition(x, y, now): a missing one stays"),
          row("SetSize", kMember<&C::SetSize>, "SetSize(w, h, now): client size; a missing one stays"),
          row("ToBack", kMember<&C::ToBack>, "ToBack(now): below its siblings"),
          row("SetTopMost", kMember<&C::SetTopMost>, "SetTopMost(now): above all windows"),
          row("Enable", kMember<&C::Enable>, "Enable(): takes input"),
          row("Disable", kMember<&C::Disable>, "Disable(): takes no input"),
          row("IsEnabled", kMember<&C::IsEnabled>, "IsEnabled(): 1 or 0"),
          row("SetText", kMember<&C::SetText>, "SetText(text): its title or text"),
          row("GetText", kMember<&C::GetText>, "GetText(): its title or text"),
          row("ToFront", kMember<&C::ToFront>, "ToFront(now): above its siblings"),
          row("GetXMouse", kMember<&C::GetXMouse>, "GetXMouse(): mouse, client coordinates"),
          row("GetYMouse", kMember<&C::GetYMouse>, "GetYMouse(): mouse, client coordinates"),
          row("SetColor", kMember<&C::SetColor>, "SetColor(r, g, b) or SetColor(0xRRGGBB): text and pen colour"),
          row("SetBackColor", kMember<&C::SetBackColor>, "SetBackColor(r, g, b) or SetBackColor(0xRRGGBB)"),
          row("GetColor", kMember<&C::GetColor>, "GetColor(): 0xRRGGBB"),
          row("GetBackColor", kMember<&C::GetBackColor>, "GetBackColor(): 0xRRGGBB"),
          row("SetFont", kMember<&C::SetFont>, "SetFont(font) or SetFont(face, size)"),
          row("GetFont", kMember<&C::GetFont>, "GetFont(): its Font"),
          row("GetParentWindow", kMember<&C::GetParentWindow>, "GetParentWindow(): the window that holds it"),
          row("HasAttribute", kMember<&C::HasAttribute>, "HasAttribute(constant): 1 or 0"),
          row("SetPrivateData", kMember<&C::SetPrivateData>, "SetPrivateData(v): keeps any value"),
          row("GetPrivateData", kMember<&C::GetPrivateData>, "GetPrivateData(): the value kept"),
          row("GetXScreen", kMember<&C::GetXScreen>, "GetXScreen(x): client to screen"),
          row("GetYScreen", kMember<&C::GetYScreen>, "GetYScreen(y): client to screen"),
          row("GetXWindow", kMember<&C::GetXWindow>, "GetXWindow(x): screen to client"),
          row("GetYWindow", kMember<&C::GetYWindow>, "GetYWindow(y): screen to client"),
          row("SetFocus", kMember<&C::SetFocus>, "SetFocus(): takes the keyboard"),
          row("HasFocus", kMember<&C::HasFocus>, "HasFocus(): 1 or 0"),
          refused("OnKeyDown"),
          refused("OnKeyUp")};
}

// The constants that come first in each of these classes.
constexpr std::array<MemberRow, 10> CommonConstants(uint16_t first) {
  const auto row = [&](const char* name, uint32_t value, const char* help) {
    return MemberRow{first++, name, MemberKind::Constant, nullptr, value, 0, help};
  };
  return {row("NOBORDER", 0xDEB20000, "attribute"),   row("TABSTOP", 0xDEB00001, "attribute: Tab reaches it"),
          row("STATICEDGE", 0xDEB10002, "attribute"), row("VSCROLL", 0xDEB00003, "attribute"),
          row("HSCROLL", 0xDEB00004, "attribute"),    row("HIDDEN", 0xDEB20005, "attribute"),
          row("BORDER", 0xDEB00006, "attribute"),     row("OKF_SHIFT", 0x1, "key state"),
          row("OKF_CONTROL", 0x2, "key state"),       row("OKF_ALT", 0x4, "key state")};
}

// Several lists of rows, one behind the other.
template <size_t... Counts>
constexpr auto JoinRows(const std::array<MemberRow, Counts>&... lists) {
  std::array<MemberRow, (Counts + ...)> all{};
  size_t at = 0;
  const auto append = [&](const auto& list) {
    for (const MemberRow& row : list) all[at++] = row;
  };
  (append(lists), ...);
  return all;
}

}  // namespace vl

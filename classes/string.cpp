#include "classes/string.h"

#include <algorithm>

#include "classes/code_page.h"
#include "classes/core_classes.h"
#include "host/appfile/app_file.h"
#include "host/appfile/element.h"
#include "interpreter/number_text.h"

namespace vl {

namespace {
constexpr uint32_t kStringBank = 5;

std::string_view CharacterAt(std::string_view text, int32_t i) {
  return i >= 0 && static_cast<size_t>(i) < text.size() ? text.substr(static_cast<size_t>(i), 1) : std::string_view();
}

int32_t IndexIn(std::string_view text, std::string_view what, int32_t start) {
  if (start < 0 || static_cast<size_t>(start) >= text.size()) return -1;
  const size_t hit = text.find(what, static_cast<size_t>(start));
  return hit == std::string_view::npos ? -1 : static_cast<int32_t>(hit);
}

std::string_view Piece(std::string_view text, int32_t start, int32_t length) {
  if (start < 0 || static_cast<size_t>(start) >= text.size() || length <= 0) return {};
  return text.substr(static_cast<size_t>(start), static_cast<size_t>(length));
}

int32_t CodeAt(std::string_view text, int32_t i) {
  const bool isInside = i >= 0 && static_cast<size_t>(i) < text.size();
  return isInside ? static_cast<unsigned char>(text[static_cast<size_t>(i)]) : 0;
}
}  // namespace

Text LoadStringElement(CInterpretor& interpreter, const CValue& which) {
  CElement* element = interpreter.GetElement(which, kStringBank, true);
  auto* string = dynamic_cast<CStringElement*>(element);
  if (!string || !string->bank->Load(string->index, 0)) {
    interpreter.RaiseError(ERR_NO_STRING, kNoArgument, "no such text in the string bank");
  }
  Text text;
  const bool fits = text.Assign(string->GetText(), &interpreter.budget);
  string->bank->Unload(string->index);
  if (!fits) interpreter.RaiseError(ERR_MEMORY);
  return text;
}

void CIString::Construct() {
  if (interpreter.GetArgCount() == 1) {
    text_ = LoadStringElement(interpreter, *interpreter.GetArg(0));
  } else {
    text_.Assign("", &interpreter.budget);
  }
  Create();
}

void CIString::Tagged(std::string_view tag) {
  std::string text;
  text.reserve(text_.Length() + 2 * tag.size() + 5);
  text.append("<").append(tag).append(">").append(text_.View()).append("</").append(tag).append(">");
  Result(text);
}

void CIString::Big() { Tagged("BIG"); }
void CIString::Bold() { Tagged("B"); }
void CIString::Italics() { Tagged("I"); }
void CIString::Small() { Tagged("SMALL"); }
void CIString::Strike() { Tagged("STRIKE"); }
void CIString::Sub() { Tagged("SUB"); }
void CIString::Sup() { Tagged("SUP"); }

void CIString::FontColor() {
  const uint32_t color = static_cast<uint32_t>(interpreter.GetArgInt(0)) & 0xFFFFFF;
  std::string text = "<FONT COLOR=#";
  for (int shift = 20; shift >= 0; shift -= 4) text += "0123456789ABCDEF"[(color >> shift) & 15];
  text.append(">").append(text_.View()).append("</FONT>");
  Result(text);
}

void CIString::FontSize() {
  std::string text = "<FONT SIZE=" + std::to_string(interpreter.GetArgInt(0)) + ">";
  text.append(text_.View()).append("</FONT>");
  Result(text);
}

void CIString::ToLowerCase() {
  std::string text(text_.View());
  std::transform(text.begin(), text.end(), text.begin(), LowerCase);
  Result(text);
}

void CIString::ToUpperCase() {
  std::string text(text_.View());
  std::transform(text.begin(), text.end(), text.begin(), UpperCase);
  Result(text);
}

void CIString::CharAt() { Result(CharacterAt(text_.View(), interpreter.GetArgInt(0))); }

void CIString::IndexOf() {
  const std::string_view what = interpreter.GetArgString(0);
  const int32_t start = interpreter.IsArgDefault(1) ? 0 : interpreter.GetArgInt(1);
  interpreter.GetResult().SetInt(IndexIn(text_.View(), what, start));
}

void CIString::LastIndexOf() {
  const std::string_view text = text_.View();
  const std::string_view what = interpreter.GetArgString(0);
  int32_t found = -1;
  if (!text.empty() && !what.empty()) {
    for (size_t hit = text.find(what); hit != std::string_view::npos; hit = text.find(what, hit + what.size())) {
      found = static_cast<int32_t>(hit);
    }
  }
  interpreter.GetResult().SetInt(found);
}

void CIString::SubString() {
  const std::string_view text = text_.View();
  const int32_t start = interpreter.IsArgDefault(0) ? 0 : interpreter.GetArgInt(0);
  const int32_t length = interpreter.IsArgDefault(1) ? static_cast<int32_t>(text.size()) : interpreter.GetArgInt(1);
  Result(Piece(text, start, length));
}

void CIString::Length() { interpreter.GetResult().SetInt(static_cast<int32_t>(text_.Length())); }
void CIString::GetFloat() { interpreter.GetResult().SetFloat(ParsePrefixedNumber(text_.View())); }
void CIString::GetInt() { interpreter.GetResult().SetInt(TruncateToInt(ParsePrefixedNumber(text_.View()))); }

void CIString::GetAscii() {
  const int32_t i = interpreter.IsArgDefault(0) ? 0 : interpreter.GetArgInt(0);
  interpreter.GetResult().SetInt(CodeAt(text_.View(), i));
}

void CIString::CompareNoCase() {
  if (interpreter.IsArgDefault(0)) interpreter.RaiseError(ERR_STRING_ARGUMENT);
  const std::string_view other = interpreter.GetArgString(0);
  interpreter.GetResult().SetInt(text_.IsNull() ? 0 : CompareIgnoringCase(text_.View(), other));
}

void CIString::Replace() {
  if (interpreter.IsArgDefault(0) || interpreter.IsArgDefault(1)) interpreter.RaiseError(ERR_STRING_ARGUMENT);
  const int32_t caseSensitive = interpreter.IsArgDefault(2) ? 1 : interpreter.GetArgInt(2);
  if (caseSensitive != 0 && caseSensitive != 1) interpreter.RaiseError(ERR_STRING_ARGUMENT);
  const std::string_view text = text_.View();
  const std::string_view what = interpreter.GetArgString(0);
  const std::string_view with = interpreter.GetArgString(1);
  if (what.empty()) {
    interpreter.GetResult().SetText(text_);
    return;
  }
  // Searched in a folded copy, so that a long text costs one pass and not one per position.
  std::string foldedText;
  std::string foldedWhat;
  std::string_view searched = text;
  std::string_view wanted = what;
  if (!caseSensitive) {
    foldedText.assign(text);
    foldedWhat.assign(what);
    std::transform(foldedText.begin(), foldedText.end(), foldedText.begin(), LowerCase);
    std::transform(foldedWhat.begin(), foldedWhat.end(), foldedWhat.begin(), LowerCase);
    searched = foldedText;
    wanted = foldedWhat;
  }
  std::string result;
  size_t at = 0;
  for (size_t hit = searched.find(wanted); hit != std::string_view::npos; hit = searched.find(wanted, at)) {
    result.append(text.substr(at, hit - at)).append(with);
    if (result.size() > limits::kMaxTextBytes) interpreter.RaiseError(ERR_MEMORY);
    at = hit + wanted.size();
  }
  result.append(text.substr(at));
  Result(result);
}

namespace {

// The quick ways of the common members, on arguments of the types that they mostly have.

bool ReadInteger(const CValue* arguments, int count, int i, int32_t ifAbsent, int32_t& value) {
  if (i >= count || arguments[i].type == VT_DEFAULT) {
    value = ifAbsent;
    return true;
  }
  value = arguments[i].data.integer;
  return arguments[i].type == VT_INTEGER;
}

bool PutText(CValue& result, std::string_view text) {
  Text made;
  if (!made.Assign(text, &result.owner->budget)) return false;
  result.SetTextBlock(made.Detach());
  return true;
}

bool QuickCharAt(const CValue* arguments, int count, CValue& result) {
  int32_t i;
  return ReadInteger(arguments, count, 0, kDefaultInt, i) && PutText(result, CharacterAt(result.StringView(), i));
}

bool QuickIndexOf(const CValue* arguments, int count, CValue& result) {
  int32_t start;
  if (count < 1 || arguments[0].type != VT_STRING || !ReadInteger(arguments, count, 1, 0, start)) return false;
  result.SetInt(IndexIn(result.StringView(), arguments[0].StringView(), start));
  return true;
}

bool QuickSubString(const CValue* arguments, int count, CValue& result) {
  const std::string_view text = result.StringView();
  int32_t start;
  int32_t length;
  return ReadInteger(arguments, count, 0, 0, start) &&
         ReadInteger(arguments, count, 1, static_cast<int32_t>(text.size()), length) &&
         PutText(result, Piece(text, start, length));
}

bool QuickLength(const CValue*, int, CValue& result) {
  result.SetInt(static_cast<int32_t>(result.StringView().size()));
  return true;
}

bool QuickGetInt(const CValue*, int, CValue& result) {
  result.SetInt(TruncateToInt(ParsePrefixedNumber(result.StringView())));
  return true;
}

bool QuickGetAscii(const CValue* arguments, int count, CValue& result) {
  int32_t i;
  if (!ReadInteger(arguments, count, 0, 0, i)) return false;
  result.SetInt(CodeAt(result.StringView(), i));
  return true;
}

template <char (*Change)(char)>
bool QuickCase(const CValue*, int, CValue& result) {
  Text changed;
  if (!changed.Assign(result.StringView(), &result.owner->budget)) return false;
  result.SetTextBlock(changed.Detach());
  // Nothing else holds it yet.
  for (char* c = result.data.text->data; *c; ++c) *c = Change(*c);
  return true;
}

constexpr MemberRow GivingRow(uint16_t id, const char* name, MemberFunction function, const char* help,
                              NumberFunction quick = nullptr) {
  return {id, name, MemberKind::Member, function, 0, 0, help, nullptr, true, quick};
}

constexpr MemberRow kRows[] = {
    GivingRow(1, "Big", kMember<&CIString::Big>, "Big(): the text in <BIG> tags"),
    GivingRow(2, "Bold", kMember<&CIString::Bold>, "Bold(): the text in <B> tags"),
    GivingRow(3, "FontColor", kMember<&CIString::FontColor>, "FontColor(color): the text in a <FONT COLOR> tag"),
    GivingRow(4, "FontSize", kMember<&CIString::FontSize>, "FontSize(size): the text in a <FONT SIZE> tag"),
    GivingRow(5, "Italics", kMember<&CIString::Italics>, "Italics(): the text in <I> tags"),
    GivingRow(6, "Small", kMember<&CIString::Small>, "Small(): the text in <SMALL> tags"),
    GivingRow(7, "Strike", kMember<&CIString::Strike>, "Strike(): the text in <STRIKE> tags"),
    GivingRow(8, "Sub", kMember<&CIString::Sub>, "Sub(): the text in <SUB> tags"),
    GivingRow(9, "Sup", kMember<&CIString::Sup>, "Sup(): the text in <SUP> tags"),
    GivingRow(10, "ToLowerCase", kMember<&CIString::ToLowerCase>, "ToLowerCase(): a copy in lower case",
              &QuickCase<LowerCase>),
    GivingRow(11, "ToUpperCase", kMember<&CIString::ToUpperCase>, "ToUpperCase(): a copy in upper case",
              &QuickCase<UpperCase>),
    GivingRow(12, "CharAt", kMember<&CIString::CharAt>, "CharAt(i): the character at i, \"\" outside", &QuickCharAt),
    GivingRow(13, "IndexOf", kMember<&CIString::IndexOf>,
              "IndexOf(text, start): first place of text from start on, or -1", &QuickIndexOf),
    GivingRow(14, "LastIndexOf", kMember<&CIString::LastIndexOf>,
              "LastIndexOf(text): last of the hits that don't overlap, or -1"),
    GivingRow(15, "SubString", kMember<&CIString::SubString>, "SubString(start, length): a piece, cut at the end",
              &QuickSubString),
    GivingRow(16, "Length", kMember<&CIString::Length>, "Length(): number of characters", &QuickLength),
    GivingRow(17, "GetFloat", kMember<&CIString::GetFloat>,
              "GetFloat(): the number in the text; 0x and 0b are read too"),
    GivingRow(18, "GetInt", kMember<&CIString::GetInt>, "GetInt(): GetFloat without its fraction", &QuickGetInt),
    GivingRow(19, "GetAscii", kMember<&CIString::GetAscii>, "GetAscii(i): code of the character at i, 0 past the end",
              &QuickGetAscii),
    GivingRow(20, "CompareNoCase", kMember<&CIString::CompareNoCase>,
              "CompareNoCase(text): below 0, 0 or above 0, case ignored"),
    GivingRow(21, "Replace", kMember<&CIString::Replace>,
              "Replace(what, with, caseSensitive): every occurrence replaced"),
};

}  // namespace

const ClassTable kStringClass = {CLASS_STRING, kRows, &CreateObject<CIString>,
                                 "Members of every text; New String(name) reads one from the string bank"};

}  // namespace vl

// CIString: the temporary that gives a text its members. Its results are new texts.
#pragma once

#include "interpreter/interpretor.h"

namespace vl {

class CIString : public CIBaseClassImpl, public CITextHolder {
 public:
  explicit CIString(CInterpretor& interpreter) : CIBaseClassImpl(interpreter, CLASS_STRING, Listing::None) {}
  void Construct() override;
  void SetHeldText(const Text& text) override { text_ = text; }
  const Text& HeldText() const override { return text_; }

  void Big();
  void Bold();
  void FontColor();
  void FontSize();
  void Italics();
  void Small();
  void Strike();
  void Sub();
  void Sup();
  void ToLowerCase();
  void ToUpperCase();
  void CharAt();
  void IndexOf();
  void LastIndexOf();
  void SubString();
  void Length();
  void GetFloat();
  void GetInt();
  void GetAscii();
  void CompareNoCase();
  void Replace();

 private:
  void Tagged(std::string_view tag);
  void Result(std::string_view text) { interpreter.GetResult().SetString(text); }
  Text text_;
};

// Text of an element of the string bank: by index for a number, else by name. Raises 79.
Text LoadStringElement(CInterpretor& interpreter, const CValue& which);

}  // namespace vl

#include "gfx2d/script/font_class.h"

#include <algorithm>

#include "gfx2d/script/gfx2d_classes.h"
#include "gfx2d/script/graphics.h"

namespace vl {

namespace {

constexpr uint32_t kWeightBit = 0x80000000;
constexpr size_t kFaceBytes = 31;
constexpr uint8_t kSmoothQuality = 4;

enum FontFlag : uint32_t {
  kItalic = 1,
  kUnderline = 2,
  kStrikeOut = 4,
  kFixedPitch = 8,
  kVariablePitch = 16,
  kSmooth = 32
};

}  // namespace

CIFont::CIFont(CInterpretor& interpreter) : CIBaseClassImpl(interpreter, CLASS_FONT, Listing::Listed) {}

CIFont::CIFont(CInterpretor& interpreter, const FontDescription& description)
    : CIBaseClassImpl(interpreter, CLASS_FONT, Listing::Listed), description(description) {
  this->description.face.resize(std::min(description.face.size(), kFaceBytes));
  Create();
}

void CIFont::Construct() {
  for (int i = 0; i < interpreter.GetArgCount(); ++i) {
    CValue* value = interpreter.GetArg(i);
    if (value->IsDefault()) continue;
    if (value->type == VT_OBJECT) {
      if (i == 0 && value->IsObjectOfClass(CLASS_FONT)) {
        description = static_cast<CIFont*>(value->data.object)->description;
      }
      continue;
    }
    if (value->type == VT_STRING) {
      description.face = std::string(value->StringView().substr(0, kFaceBytes));
      continue;
    }
    const auto number = static_cast<uint32_t>(value->GetInt());
    switch (number >> 30) {
      case 0:
        description.height = -static_cast<int32_t>(number);
        break;
      case 3:
        if (number & kItalic) description.italic = true;
        if (number & kUnderline) description.underline = true;
        if (number & kStrikeOut) description.strikeOut = true;
        if (number & kFixedPitch) description.fixedPitch = true;
        if (number & kVariablePitch) description.fixedPitch = false;
        if (number & kSmooth) description.quality = kSmoothQuality;
        break;
      default:
        description.weight = static_cast<int>(number & 0x3FFFFFFF);
        break;
    }
  }
  Create();
}

void CIFont::Destroy(bool final) {
  CGraphics::Of(interpreter).Forget(this);
  CIBaseClassImpl::Destroy(final);
}

std::shared_ptr<TextFont> CIFont::SharedHandle() {
  std::shared_ptr<TextFont> handle = handle_.lock();
  if (!handle) handle_ = handle = interpreter.services.text->openFont(description);
  return handle;
}

// The text engine keeps the fonts that were opened last.
TextFont& CIFont::Handle() { return *SharedHandle(); }

void CIFont::GetFaceName() { interpreter.GetResult().SetString(description.face); }
void CIFont::GetHeight() {
  interpreter.GetResult().SetInt(static_cast<int32_t>(0u - static_cast<uint32_t>(description.height)));
}
void CIFont::GetWeight() {
  interpreter.GetResult().SetInt(static_cast<int32_t>(static_cast<uint32_t>(description.weight) | kWeightBit));
}
void CIFont::IsItalic() { interpreter.GetResult().SetInt(description.italic); }
void CIFont::IsUnderline() { interpreter.GetResult().SetInt(description.underline); }
void CIFont::IsStrikeOut() { interpreter.GetResult().SetInt(description.strikeOut); }

CIFontContainer::CIFontContainer(CInterpretor& interpreter) : fontInterpreter_(interpreter) {
  CGraphics& graphics = CGraphics::Of(interpreter);
  graphics.containers.push_back(this);
  font = graphics.DefaultFont();
  font->Hold();
}

CIFontContainer::~CIFontContainer() {
  std::erase(CGraphics::Of(fontInterpreter_).containers, this);
  if (font && !fontInterpreter_.terminating) font->Unhold();
}

void CIFontContainer::SetFontObject(CIFont* newFont) {
  newFont->Hold();
  if (font) font->Unhold();
  font = newFont;
}

namespace {

constexpr MemberRow Constant(uint16_t id, const char* name, uint32_t value) {
  return {id, name, MemberKind::Constant, nullptr, value, 0, "for New Font"};
}

constexpr MemberRow kRows[] = {
    Row(1, "GetFaceName", kMember<&CIFont::GetFaceName>, "GetFaceName(): the face"),
    Row(2, "GetHeight", kMember<&CIFont::GetHeight>, "GetHeight(): pixels"),
    Row(3, "GetWeight", kMember<&CIFont::GetWeight>, "GetWeight(): a weight constant"),
    Row(4, "IsItalic", kMember<&CIFont::IsItalic>, "IsItalic(): 1 or 0"),
    Row(5, "IsUnderline", kMember<&CIFont::IsUnderline>, "IsUnderline(): 1 or 0"),
    Row(6, "IsStrikeOut", kMember<&CIFont::IsStrikeOut>, "IsStrikeOut(): 1 or 0"),
    Constant(8, "THIN", 0x80000064),
    Constant(9, "EXTRALIGHT", 0x800000C8),
    Constant(10, "LIGHT", 0x8000012C),
    Constant(11, "NORMAL", 0x80000190),
    Constant(12, "MEDIUM", 0x800001F4),
    Constant(13, "SEMIBOLD", 0x80000258),
    Constant(14, "BOLD", 0x800002BC),
    Constant(15, "EXTRABOLD", 0x80000320),
    Constant(16, "HEAVY", 0x80000384),
    Constant(17, "ITALIC", 0xC0000001),
    Constant(18, "UNDERLINE", 0xC0000002),
    Constant(19, "STRIKEOUT", 0xC0000004),
    Constant(20, "FIXEDPITCH", 0xC0000008),
    Constant(21, "VARIABLEPITCH", 0xC0000010),
};

}  // namespace

const ClassTable kFontClass = {CLASS_FONT, kRows, &CreateObject<CIFont>,
                               "A font: New Font(font, face, size, weight, flags) in any order"};

}  // namespace vl

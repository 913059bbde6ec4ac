// Clipboard: texts, pictures, sounds and blocks that programs hand to one another.
#include "gfx2d/script/gfx2d_classes.h"
#include "gfx2d/script/surface_class.h"
#include "interpreter/data_source.h"
#include "interpreter/interpretor.h"
#include "platform/clipboard.h"

namespace vl {

namespace {

class CIClipboard : public CIBaseClassImpl {
 public:
  explicit CIClipboard(CInterpretor& interpreter) : CIBaseClassImpl(interpreter, CLASS_CLIPBOARD, Listing::Listed) {}

  void HasText() { Result(Has(kClipboardText)); }
  void HasImage() { Result(Has(kClipboardDib)); }
  void HasSound() { Result(Has(kClipboardWave)); }
  void HasBinary() { Result(Has(OwnFormat(0))); }
  void Cleanup() {
    if (Board()) Board()->clear();
  }

  void GetText() {
    const auto bytes = Get(kClipboardText);
    std::string text;
    if (bytes) text.assign(bytes->begin(), std::find(bytes->begin(), bytes->end(), uint8_t{0}));
    interpreter.GetResult().SetString(text);
  }

  void GetImage() {
    const auto dib = Get(kClipboardDib);
    Result(0);
    if (!dib) return;
    CISurface* const picture = CISurface::CreateFromDib(interpreter, *dib);
    if (!picture) interpreter.RaiseError(ERR_MEMORY);
    interpreter.GetResult().SetObject(picture);
  }

  void GetSound() { MakeFrom(CLASS_SOUND, Get(kClipboardWave)); }
  void GetBinary() { MakeFrom(CLASS_BINARY, Get(OwnFormat(0))); }

  void PutData() {
    const int count = interpreter.GetArgCount();
    if (count < 1 || count > 2) interpreter.RaiseError(ERR_ARGUMENT_COUNT);
    const CValue& value = *interpreter.GetArg(0);
    if (value.type == VT_STRING) {
      const std::string_view text = value.StringView();
      Put(kClipboardText, {reinterpret_cast<const uint8_t*>(text.data()), text.size()});
    } else if (value.IsObjectOfClass(CLASS_SURFACE)) {
      cSurface& surface = static_cast<CISurface*>(value.data.object)->surface;
      std::vector<uint8_t> dib(surface.DIBSize());
      if (surface.SaveToDIB(dib, {}, 0)) Put(kClipboardDib, dib);
    } else if (value.IsObjectOfClass(CLASS_BINARY)) {
      const std::string format = OwnFormat(1);
      Put(format, dynamic_cast<const CByteSource&>(*value.data.object).Bytes());
    } else if (const auto* sound =
                   value.IsObjectOfClass(CLASS_SOUND) ? dynamic_cast<const CByteSource*>(value.data.object) : nullptr) {
      Put(kClipboardWave, sound->Bytes());
    } else {
      interpreter.RaiseError(ERR_BAD_ARGUMENT);
    }
  }

 private:
  Clipboard* Board() { return interpreter.services.clipboard; }
  void Result(bool v) { interpreter.GetResult().SetInt(v); }
  bool Has(std::string_view format) { return Board() && Board()->has(format); }
  std::optional<std::vector<uint8_t>> Get(std::string_view format) {
    return Board() ? Board()->get(format) : std::nullopt;
  }

  // The name of a program's own format, which ignores case.
  std::string OwnFormat(int i) {
    const CValue& name = *interpreter.GetArg(i);
    if (name.type != VT_STRING || name.StringView().empty()) interpreter.RaiseError(ERR_BAD_ARGUMENT);
    return std::string(kClipboardOwn) + FoldName(name.StringView());
  }

  void Put(std::string_view format, std::span<const uint8_t> bytes) {
    if (!Board()) return;
    Board()->clear();
    Board()->put(format, bytes);
  }

  void MakeFrom(uint32_t wanted, const std::optional<std::vector<uint8_t>>& bytes) {
    Result(false);
    const ClassTable* const table = interpreter.registry.tables[wanted];
    if (!bytes || !table || !table->create) return;
    CIBaseClassImpl* const object = table->create(interpreter);
    auto* const target = dynamic_cast<CByteSource*>(object);
    if (!target || !target->SetBytes(*bytes)) {
      interpreter.DestroyObject(object, true);
      if (target) interpreter.RaiseError(ERR_MEMORY);
      return;
    }
    object->Create();
    interpreter.GetResult().SetObject(object);
  }
};

constexpr MemberRow kRows[] = {
    Row(1, "HasText", kMember<&CIClipboard::HasText>, "HasText(): 1 or 0"),
    Row(2, "HasImage", kMember<&CIClipboard::HasImage>, "HasImage(): 1 or 0"),
    Row(3, "GetText", kMember<&CIClipboard::GetText>, "GetText(): the text, or \"\""),
    Row(4, "GetImage", kMember<&CIClipboard::GetImage>, "GetImage(): a new Surface, or 0"),
    Row(5, "PutData", kMember<&CIClipboard::PutData>, "PutData(value, format): a text, Surface, Sound or Binary"),
    Row(6, "HasSound", kMember<&CIClipboard::HasSound>, "HasSound(): 1 or 0"),
    Row(7, "GetSound", kMember<&CIClipboard::GetSound>, "GetSound(): a new Sound, or 0"),
    Row(8, "HasBinary", kMember<&CIClipboard::HasBinary>, "HasBinary(format): 1 or 0"),
    Row(9, "GetBinary", kMember<&CIClipboard::GetBinary>, "GetBinary(format): a new Binary, or 0"),
    Row(10, "Cleanup", kMember<&CIClipboard::Cleanup>, "Cleanup(): nothing is left on it"),
};

}  // namespace

const ClassTable kClipboardClass = {CLASS_CLIPBOARD, kRows, &CreateObject<CIClipboard>,
                                    "What programs hand to one another"};

}  // namespace vl

// Ini: settings of a program in a text file of sections and keys.
#include <string>

#include "classes/core_classes.h"
#include "classes/ini_text.h"
#include "interpreter/interpretor.h"

namespace vl {

namespace {

// The period's systems stopped at 64 KB.
constexpr int64_t kMaxFileBytes = int64_t{1} << 20;
constexpr size_t kMaxValueBytes = 4095;

class CIIni : public CIBaseClassImpl {
 public:
  explicit CIIni(CInterpretor& interpreter) : CIBaseClassImpl(interpreter, CLASS_INI, Listing::Listed) {}

  void Construct() override {
    if (interpreter.GetArgCount() > 0) OpenFile();
    Create();
  }

  void OpenFile() {
    path_.clear();
    const std::string name = interpreter.IsArgDefault(0) ? std::string() : interpreter.GetArgString(0);
    if (name.empty()) return;
    if (name.find('\\') != std::string::npos) {
      interpreter.RequireOwnFile(name);
      interpreter.services.disk->GetFullPath(name, &path_);
    } else {
      path_ = OwnPath();
    }
  }

  void CloseFile() { path_.clear(); }

  void SetValue() {
    const std::string section = Argument(0);
    const std::string key = Argument(1);
    if (path_.empty() || section.empty() || key.empty() || interpreter.IsArgDefault(2)) return;
    Store(WithIniValue(Load(), section, key, Argument(2)));
  }

  void GetStrValue() { interpreter.GetResult().SetString(Value("")); }

  void GetIntValue() { interpreter.GetResult().SetInt(Atoi(Value("0"))); }

  void DeleteItem() {
    const std::string section = Argument(0);
    const std::string key = Argument(1);
    if (path_.empty() || section.empty()) return;
    const std::string text = Load();
    Store(key.empty() ? WithoutIniSection(text, section) : WithIniValue(text, section, key, std::nullopt));
  }

 private:
  std::string Argument(int i) {
    return interpreter.IsArgDefault(i) ? std::string() : std::string(interpreter.GetArgString(i));
  }

  // The file of the application, whose name the script can't choose.
  std::string OwnPath() const {
    std::string name = interpreter.param.sourceName;
    const size_t slash = name.find_last_of("/\\");
    if (slash != std::string::npos) name.erase(0, slash + 1);
    if (name.empty()) return {};
    const size_t dot = name.find('.');
    if (dot == std::string::npos) {
      name += "_vlp";
    } else {
      name[dot] = '_';
    }
    return interpreter.services.environment->osDirectory() + "\\" + name + ".ini";
  }

  std::string Load() const {
    const auto file = interpreter.services.disk->open(path_, FileMode::Read);
    std::string text;
    if (!file || file->size() > kMaxFileBytes) return text;
    text.resize(static_cast<size_t>(file->size()));
    text.resize(file->read(text.data(), text.size()));
    return text;
  }

  void Store(const std::string& text) const {
    if (static_cast<int64_t>(text.size()) > kMaxFileBytes) return;
    interpreter.services.disk->replace(path_, {reinterpret_cast<const uint8_t*>(text.data()), text.size()});
  }

  std::string Value(const char* ifMissing) {
    const std::string section = Argument(0);
    const std::string key = Argument(1);
    const std::string otherwise = interpreter.IsArgDefault(2) ? std::string(ifMissing) : Argument(2);
    if (path_.empty() || section.empty() || key.empty()) return otherwise;
    return ReadIniValue(Load(), section, key).value_or(otherwise).substr(0, kMaxValueBytes);
  }

  // As the C library reads it: blanks, a sign, digits.
  static int32_t Atoi(const std::string& text) {
    size_t at = text.find_first_not_of(" \t\r\n\v\f");
    if (at == std::string::npos) return 0;
    const bool negative = text[at] == '-';
    if (negative || text[at] == '+') ++at;
    uint32_t value = 0;
    for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at) {
      value = value * 10 + static_cast<uint32_t>(text[at] - '0');
    }
    return static_cast<int32_t>(negative ? 0u - value : value);
  }

  std::string path_;  // full; empty while no file is open
};

constexpr MemberRow kRows[] = {
    Row(1, "OpenFile", kMember<&CIIni::OpenFile>, "OpenFile(name): a bare name stands for the application's own file"),
    Row(2, "CloseFile", kMember<&CIIni::CloseFile>, "CloseFile()"),
    Row(3, "SetValue", kMember<&CIIni::SetValue>, "SetValue(section, key, value)"),
    Row(4, "GetStrValue", kMember<&CIIni::GetStrValue>, "GetStrValue(section, key, default): a text"),
    Row(5, "GetIntValue", kMember<&CIIni::GetIntValue>, "GetIntValue(section, key, default): a number"),
    Row(6, "DeleteItem", kMember<&CIIni::DeleteItem>, "DeleteItem(section, key): without a key the whole section"),
};

}  // namespace

const ClassTable kIniClass = {CLASS_INI, kRows, &CreateObject<CIIni>, "Settings in a file of sections and keys"};

}  // namespace vl

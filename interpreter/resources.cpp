// What a program reaches beside its code: elements of the application and files of its own.
#include <algorithm>

#include "host/appfile/app_file.h"
#include "host/appfile/names.h"
#include "interpreter/interpretor.h"

namespace vl {

CElement* CInterpretor::GetElement(const CValue& value, uint32_t type, bool mustBeTyped) {
  if (!app) return nullptr;
  if (value.type == VT_STRING) return app->GetElement(value.StringView(), type, mustBeTyped);
  if (value.type != VT_INTEGER && value.type != VT_FLOAT) return nullptr;
  return app->GetElementByIndex(static_cast<uint32_t>(value.GetInt()), type, mustBeTyped);
}

void CInterpretor::RequireOwnFile(std::string_view path) {
  if (services.disk->IsKept()) return;
  std::string full;
  services.disk->GetFullPath(path, &full);
  const bool isOwn = std::any_of(tempFiles.begin(), tempFiles.end(), [&](const std::string& file) {
    return EqualsIgnoringCase(file, path) || EqualsIgnoringCase(file, full);
  });
  if (!isOwn) RaiseError(ERR_FILE_LIMIT);
}

void CInterpretor::SetResultNames(const std::vector<std::string>& names) {
  CArrayStore* store = NewArray();
  GetResult().SetArray(store);
  CValue name(this);
  for (size_t i = 0; i < names.size(); ++i) {
    const auto subscript = static_cast<int32_t>(i);
    name.SetString(names[i]);
    store->Store(store->Address(&subscript, 1), name);
  }
}

}  // namespace vl

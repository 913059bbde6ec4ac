// Writes a model as an application: the main file, and a file for each part and bank that lies outside it.
//
// The same model always gives the same bytes, and what is written reads back as an equal model.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "host/appfile/model.h"

namespace vl {

struct WrittenApplication {
  std::string error;  // why the model can't be written, in plain words; empty on success
  // Name to bytes. Names of external files are relative to the main file's directory, '/' between components.
  std::map<std::string, std::string> files;
};

WrittenApplication WriteApplication(const ApplicationModel& model, std::string_view mainName);

}  // namespace vl

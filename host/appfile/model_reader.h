// Reads an application into a model.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/limits.h"
#include "host/appfile/app_file.h"
#include "host/appfile/model.h"

namespace vl {

struct ModelResult {
  uint32_t status = kAppOk;
  // What couldn't be kept: banks that don't read, bodies that are cut off, an order of chunks that can't be
  // written again. One line of plain words each.
  std::vector<std::string> problems;
  ApplicationModel model;
};

// The application must have been opened in design mode and with success. kAppOutOfMemory when the model would
// hold more than `maxBytes`.
ModelResult ReadModel(CAppFile& app, uint64_t maxBytes = limits::kRunMemoryBytes);
ModelResult ReadModel(std::string_view path, FileSystem& files, uint64_t maxBytes = limits::kRunMemoryBytes);

}  // namespace vl

// Names for temporary files: one rule for all that make them.
#pragma once

#include <string>
#include <string_view>

#include "platform/file_system.h"

namespace vl {

// Makes an empty file of a name that is free: folder, separator, prefix, number, dot, extension. The folder has no
// final separator; an extension loses its leading dot and what no name may hold. "" when it can't be made or 200000
// names are taken.
std::string MakeTemporaryFile(FileSystem& files, std::string_view folder, std::string_view prefix,
                              std::string_view extension);

}  // namespace vl

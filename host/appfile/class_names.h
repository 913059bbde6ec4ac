// The runtime classes that an application without a class table uses.
#pragma once

#include <span>
#include <string_view>

namespace vl {

// 74 names in the order of their ids. "Bank" isn't among them: only a class table can name it.
std::span<const std::string_view> DefaultClassNames();

}  // namespace vl

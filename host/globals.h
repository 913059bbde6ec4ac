// The program's global variables as JSON, for tests and tools.
#pragma once

#include <string>

namespace vl {

class CInterpretor;

// One object: keys lower case and sorted; functions left out; strings one code point a byte; arrays as
// {"sizes":[...],"elements":[...]} in linear order with null where never assigned; objects as
// {"object":"ClassName"}, "" for a script object; a null reference, and an array inside itself, as null.
std::string GlobalsToJson(const CInterpretor& interpreter);

}  // namespace vl

#include "host/globals.h"

#include <charconv>
#include <cmath>
#include <map>

#include "interpreter/interpretor.h"

namespace vl {

namespace {

// Arrays may hold one another to any depth, and themselves.
constexpr int kMaxDepth = 64;

void PutString(std::string& out, std::string_view text) {
  out += '"';
  for (const char c : text) {
    const auto u = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') {
      out += '\\';
      out += c;
    } else if (u < 0x20) {
      constexpr char kHex[] = "0123456789abcdef";
      out += "\\u00";
      out += kHex[u >> 4];
      out += kHex[u & 15];
    } else if (u < 0x80) {
      out += c;
    } else {
      out += static_cast<char>(0xC0 | u >> 6);
      out += static_cast<char>(0x80 | (u & 0x3F));
    }
  }
  out += '"';
}

void PutFloat(std::string& out, double value) {
  if (std::isnan(value)) {
    out += "\"nan\"";
  } else if (std::isinf(value)) {
    out += value > 0 ? "\"inf\"" : "\"-inf\"";
  } else {
    char buffer[40];
    const auto end = std::to_chars(buffer, buffer + sizeof buffer, value).ptr;
    const std::string_view number(buffer, static_cast<size_t>(end - buffer));
    out += number;
    // A float stays a float for the reader.
    if (number.find_first_of(".e") == std::string_view::npos) out += ".0";
  }
}

void PutValue(std::string& out, const CValue& value, int depth) {
  switch (value.type) {
    case VT_INTEGER:
      out += std::to_string(value.data.integer);
      return;
    case VT_FLOAT:
      PutFloat(out, value.data.real);
      return;
    case VT_STRING:
      PutString(out, value.StringView());
      return;
    case VT_OBJECT:
      if (!value.data.object) break;
      out += "{\"object\":";
      PutString(out, value.data.object->classInfo ? value.data.object->classInfo->name : "");
      out += '}';
      return;
    case VT_ARRAY: {
      if (depth >= kMaxDepth) break;
      const CArrayStore& store = *value.data.array;
      out += "{\"sizes\":[";
      for (uint32_t d = 0; d < store.dimensions; ++d) {
        if (d) out += ',';
        out += std::to_string(store.sizes[d]);
      }
      out += "],\"elements\":[";
      for (uint32_t i = 0; i < store.ElementCount(); ++i) {
        if (i) out += ',';
        CValue number(value.owner);
        const CValue* element = store.Element(i, number);
        if (element && element->type == VT_ARRAY && element->data.array == &store) element = nullptr;
        if (element && element->type != VT_FUNCTION) {
          PutValue(out, *element, depth + 1);
        } else {
          out += "null";
        }
      }
      out += "]}";
      return;
    }
    default:
      break;
  }
  out += "null";
}

}  // namespace

std::string GlobalsToJson(const CInterpretor& interpreter) {
  std::map<std::string, const CValue*> sorted;
  interpreter.variables.ForEach([&](const CVariable& variable) {
    std::string name = interpreter.namePool->Name(variable.nameId);
    for (char& c : name) {
      if (c >= 'A' && c <= 'Z') c = static_cast<char>(c | 0x20);
    }
    // The newest of two like-named variables comes first in its bucket.
    if (variable.type != VT_FUNCTION) sorted.emplace(std::move(name), &variable);
  });
  std::string out = "{";
  for (const auto& [name, value] : sorted) {
    if (out.size() > 1) out += ',';
    PutString(out, name);
    out += ':';
    PutValue(out, *value, 0);
  }
  return out + "}";
}

}  // namespace vl

// Arbitrary calls of Binary's members on two blocks: a byte for the member, two for each of three arguments.
#include <cstdint>
#include <string>

#include "fuzz/program_fuzz_support.h"

namespace {

constexpr const char* kMembers[] = {
    "AllocateData", "FreeData",  "ReSizeData", "GetDataSize", "GetWord",        "GetLong",  "GetByte",
    "GetChar",      "GetDouble", "GetFloat",   "GetString",   "SetWord",        "SetLong",  "SetByte",
    "SetChar",      "SetDouble", "SetFloat",   "SetString",   "MoveData",       "CopyData", "GetStringSize",
    "IsEqual",      "Find",      "SaveData",   "LoadData",    "SetByteOrdering"};

// Mostly small, and the limits now and then.
std::string ArgumentOf(int low, int high) {
  switch (high) {
    case 0:
      return "\"text\"";
    case 1:
      return "a";
    case 2:
      return "b";
    case 3:
      return std::to_string(low) + ".5";
    case 4:
      return "0x7FFFFFF" + std::string(1, "0123456789ABCDEF"[low & 15]);
    case 5:
      return "t";
    default:
      return std::to_string(high < 128 ? low : low - 128);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  constexpr size_t kCall = 7;
  std::string text =
      "Function E() { }\nOnError = E;\nt = Disk.CreateTemporaryFile();\na = New Binary();\nb = New Binary();\n";
  for (size_t at = 0; at + kCall <= size && at < 60 * kCall; at += kCall) {
    const uint8_t* call = data + at;
    const int count = call[0] >> 6;
    text += call[0] & 1 ? "x = a." : "x = b.";
    text += std::string(kMembers[(call[0] >> 1 & 31) % std::size(kMembers)]) + "(";
    for (int i = 0; i < count; ++i) text += (i ? ", " : "") + ArgumentOf(call[1 + 2 * i], call[2 + 2 * i]);
    text += ");\n";
  }
  vl::HeadlessOptions options;
  options.maxTimeMs = 1000;
  vl::FuzzProgram program(reinterpret_cast<const uint8_t*>(text.data()), text.size(), options);
  vl::CInterpretor& interpreter = program.Interpreter();
  interpreter.tickLimit = 2000;
  if (interpreter.Init()) interpreter.Start();
  return 0;
}

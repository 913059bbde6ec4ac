// Compiles arbitrary text. What compiles must be a stream that can be walked record by record to its end, with every
// jump inside it.
#include <cstdlib>

#include "fuzz/program_fuzz_support.h"

using namespace vl;

static void Require(bool condition) {
  if (!condition) std::abort();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzProgram program(data, size, HeadlessOptions{});
  CInterpretor& interpreter = program.Interpreter();
  if (!interpreter.Init()) return 0;
  if (!interpreter.CompileSources(false)) {
    Require(interpreter.lastError.code != ERR_END);
    interpreter.FormatLastError();
    return 0;
  }
  const uint8_t* end = interpreter.tokens.data() + interpreter.tokens.size();
  Token t = interpreter.tokens.data();
  while (TokenKindOf(t) != TK_END) {
    Require(TokenSize(t) >= 4 && t + TokenSize(t) < end);
    const uint16_t kind = TokenKindOf(t);
    if (kind == TK_IF || kind == TK_ELSE || kind == TK_FOR || kind == TK_WHILE) {
      Require(TokenWord(t) < interpreter.tokens.size());
    }
    t = TokenNext(t);
  }
  for (size_t b = 1; b < interpreter.blocks.size(); ++b) {
    const BlockRecord& block = interpreter.blocks[b];
    Require(block.bodyStart < block.bodyEnd && block.bodyEnd < interpreter.tokens.size());
    Require(TokenKindOf(interpreter.At(block.bodyStart)) == TK_BRACE_OPEN);
    Require(TokenKindOf(interpreter.At(block.bodyEnd)) == TK_BRACE_CLOSE);
  }
  return 0;
}

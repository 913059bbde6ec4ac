// vorlane tokens: the compiled stream, a record a line.
#include <cstdio>
#include <filesystem>

#include "platform/posix/posix_file_system.h"
#include "tools/application_source.h"
#include "tools/commands.h"
#include "tools/compile_source.h"

namespace vl {

namespace {

std::string Operands(const CInterpretor& program, Token t) {
  char text[96] = "";
  switch (TokenKindOf(t)) {
    case TK_CALL:
    case TK_NAME:
    case TK_ELEMENT:
    case TK_MEMBER_CALL:
    case TK_MEMBER:
    case TK_MEMBER_ELEMENT:
      return program.namePool->Name(TokenNameId(t));
    case TK_FOR:
    case TK_WHILE:
    case TK_SWITCH:
    case TK_BRACE_OPEN:
    case TK_BRACE_CLOSE:
      std::snprintf(text, sizeof text, "-> %u block %u", TokenWord(t), TokenWord2(t));
      return text;
    case TK_FUNCTION: {
      const BlockRecord& block = program.blocks[TokenWord2(t)];
      return program.namePool->Name(block.test) + " block " + std::to_string(TokenWord2(t));
    }
    case TK_IF:
    case TK_ELSE:
    case TK_CASE:
    case TK_DEFAULT:
      std::snprintf(text, sizeof text, "-> %u", TokenWord(t));
      return text;
    case TK_MAIN_START:
      std::snprintf(text, sizeof text, "part %u", TokenWord(t));
      return text;
    case TK_DECIMAL:
    case TK_INTEGER:
      std::snprintf(text, sizeof text, "%d", static_cast<int32_t>(TokenWord(t)));
      return text;
    case TK_BASED:
      std::snprintf(text, sizeof text, "0x%X", TokenWord(t));
      return text;
    case TK_FLOAT:
      std::snprintf(text, sizeof text, "%.17g", TokenFloat(t));
      return text;
    case TK_TEXT:
      return std::string("\"") + TokenText(t) + "\"";
    default:
      return "";
  }
}

const char* KindText(uint16_t kind) {
  switch (kind) {
    case TK_END:
      return "end";
    case TK_CALL:
      return "call";
    case TK_NAME:
      return "name";
    case TK_ELEMENT:
      return "element";
    case TK_MEMBER_CALL:
      return "member call";
    case TK_MEMBER:
      return "member";
    case TK_MEMBER_ELEMENT:
      return "member element";
    case TK_MAIN_START:
      return "main";
    case TK_MAIN_END:
      return "main end";
    case TK_DECIMAL:
    case TK_BASED:
    case TK_INTEGER:
      return "integer";
    case TK_FLOAT:
      return "float";
    case TK_TEXT:
      return "text";
    default:
      break;
  }
  if (kind >= TK_CLASS_FIRST && kind <= TK_CLASS_LAST) return FactsOfClass(kind).name;
  return TokenSourceForm(kind);
}

}  // namespace

int TokensCommand::Execute() const {
  ApplicationFiles files = OpenApplication(application);
  if (!files.error.empty()) {
    PrintError(files.error);
    return kExitUnreadable;
  }
  Compiler compiler;
  MemoryFileSystem memory;
  std::unique_ptr<PosixFileSystem> disk;
  bool opened = false;
  if (files.path.empty()) {
    for (const auto& [name, bytes] : files.files) memory.Add(name, bytes);
    opened = compiler.Open(memory, files.mainName);
  } else {
    const std::filesystem::path path = std::filesystem::absolute(files.path);
    disk = std::make_unique<PosixFileSystem>(path.parent_path().string());
    opened = compiler.Open(*disk, path.filename().string());
  }
  if (!opened) {
    PrintError(application + ": can't be read as an application");
    return kExitUnreadable;
  }
  CInterpretor& program = *compiler.interpreter;
  if (!compiler.Compile()) {
    std::fprintf(stderr, "%s: %s\n", program.GetSourceTitle().c_str(), program.FormatLastError().c_str());
    return kExitError;
  }
  const uint8_t* end = program.tokens.data() + program.tokens.size();
  for (Token t = program.tokens.data(); t < end; t = TokenNext(t)) {
    uint32_t position = 0;
    TokenPosition(t, position);
    const uint32_t source = position >> 24;
    uint32_t line = 0;
    uint32_t column = 0;
    if (source < program.sources.size()) {
      LineAndColumn(program.sources[source].text, position & 0xFFFFFF, line, column);
    }
    std::printf("%8u  %3u  %-16s %-28s %u:%u:%u\n", program.OffsetOf(t), TokenKindOf(t), KindText(TokenKindOf(t)),
                Operands(program, t).c_str(), source, line + 1, column + 1);
  }
  return kExitOk;
}

}  // namespace vl

#include "interpreter/token_infos.h"

#include "base/limits.h"
#include "interpreter/first_pass.h"
#include "interpreter/second_pass.h"

namespace vl {

void BuildKeywordTables(KeywordTables& tables, const ClassRegistry& registry, const std::vector<uint32_t>& classIds) {
  AddLanguageKeywords(tables.language);
  for (uint32_t id : classIds) {
    if (id == 0 || id > kClassCount || tables.members[id]) continue;
    tables.language.Add({id, FactsOfClass(id).name, 0, 0});
    tables.members[id] = std::make_unique<CKeywordTable>();
    tables.tables[id] = registry.tables[id];
    if (!registry.tables[id]) continue;
    for (const MemberRow& row : registry.tables[id]->rows) {
      tables.members[id]->Add({row.id, row.name, row.globalKind, row.kind == MemberKind::Constant ? 0x80000000u : 0u});
    }
  }
  // The first class that knows a bare name has it.
  for (uint32_t id = 1; id <= kClassCount; ++id) {
    if (!tables.members[id] || !tables.tables[id]) continue;
    for (const MemberRow& row : tables.tables[id]->rows) {
      if (!row.globalKind || !tables.members[id]->Find(row.name)->field3 || tables.globals.Find(row.name)) continue;
      tables.globals.Add({id, row.name, 0, 0});
    }
  }
}

bool CTokenInfos::AddSource(std::string_view text, uint32_t flags, std::string_view name, uint32_t part) {
  if (sources.size() >= limits::kMaxSources || text.size() >= limits::kMaxSourceBytes) return false;
  // A NUL inside ends the text, as it does for a reader of NUL-terminated text.
  sources.push_back({std::string(name), std::string(text.substr(0, text.find('\0'))), flags, part});
  return true;
}

bool CTokenInfos::Compile() {
  if (!namePool) namePool = std::make_unique<CNamePool>();
  try {
    stage = Stage::FirstPass;
    CFirstPass(*this).Run();
    stage = Stage::SecondPass;
    CSecondPass(*this).Run();
  } catch (CIError& error) {
    lastError = std::move(error);
    stage = Stage::Loading;
    readCursor = nullptr;
    return false;
  } catch (const std::bad_alloc&) {
    lastError = CIError(ERR_MEMORY, kNoArgument, "", 0, 0);
    stage = Stage::Loading;
    readCursor = nullptr;
    return false;
  }
  stage = Stage::Loading;
  readCursor = nullptr;
  return true;
}

void CTokenInfos::Raise(uint32_t code, uint32_t argument, std::string detail) const {
  if (code == ERR_END) throw CIError(ERR_END, argument, "", 0, 0);
  CIError error(code, argument, "", 0xFFFFFFFF, 0xFFFFFFFF);
  error.detail = std::move(detail);
  if (stage == Stage::Loading) throw error;
  uint32_t source = currentSource;
  uint32_t offset = textCursor;
  if (stage != Stage::FirstPass) {
    const std::vector<uint8_t>& stream = stage == Stage::SecondPass ? pass1Buffer : tokens;
    uint32_t position = 0;
    const uint8_t* end = stream.data() + stream.size();
    for (Token t = stream.data(); t < end && t <= readCursor; t = TokenNext(t)) {
      TokenPosition(t, position);
      if (TokenKindOf(t) == TK_END) break;
    }
    source = position >> 24;
    offset = position & 0xFFFFFF;
  }
  if (source < sources.size()) {
    error.sourceName = sources[source].name;
    LineAndColumn(sources[source].text, offset, error.line, error.column);
  }
  throw error;
}

std::string CTokenInfos::GetErrorText(const ErrorTexts& texts, bool withLine) const {
  return FormatError(lastError.code, withLine ? &lastError.line : nullptr, texts);
}

void LineAndColumn(std::string_view text, uint32_t offset, uint32_t& line, uint32_t& column) {
  line = 0;
  size_t start = 0;
  size_t i = 0;
  const size_t end = std::min<size_t>(offset, text.size());
  while (i < end) {
    const char c = text[i];
    if (c != '\r' && c != '\n') {
      ++i;
      continue;
    }
    const bool pair = i + 1 < text.size() && (text[i + 1] == '\r' || text[i + 1] == '\n') && text[i + 1] != c;
    i += pair ? 2 : 1;
    if (i > end) break;
    ++line;
    start = i;
  }
  column = static_cast<uint32_t>(end - start);
}

}  // namespace vl

// CTokenInfos: the compiled program and the compiler's state.
//
// Two passes turn source texts into one stream of token records. The first writes a record a word; the second
// checks the structure, resolves blocks and jumps and writes the final stream. The walker runs that stream
// directly and caches resolved members in it.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "interpreter/class_table.h"
#include "interpreter/error.h"
#include "interpreter/keyword_table.h"
#include "interpreter/name_pool.h"
#include "interpreter/token.h"

namespace vl {

enum class Stage { Loading = 1, FirstPass = 2, SecondPass = 3, Running = 4 };

enum SourceFlags : uint32_t {
  kSourceControlEnds = 1,  // a control character ends the text
  kSourceCopied = 2,       // the text isn't NUL-terminated and is copied
  kSourceInit = 4,
  kSourceMain = 8,  // the source whose statements run
};

// The words that a program may use: the language's and those of the classes that the application names.
struct KeywordTables {
  CKeywordTable language;  // with a row for each class in use
  CKeywordTable globals;   // members known by their bare name: id is the class
  std::array<std::unique_ptr<CKeywordTable>, kClassCount + 1> members;  // null: class not in use
  std::array<const ClassTable*, kClassCount + 1> tables{};              // null: not in use, or not in this player
};

// Loads the tables of the named classes from the registry.
void BuildKeywordTables(KeywordTables& tables, const ClassRegistry& registry, const std::vector<uint32_t>& classIds);

class CTokenInfos {
 public:
  struct Source {
    std::string name;
    std::string text;
    uint32_t flags = 0;
    uint32_t part = 0;
  };

  CTokenInfos() = default;
  explicit CTokenInfos(const KeywordTables* keywords) : keywords(keywords) {}
  CTokenInfos(CTokenInfos&&) = default;
  CTokenInfos& operator=(CTokenInfos&&) = default;

  // False when there are too many sources or the text is too long.
  bool AddSource(std::string_view text, uint32_t flags, std::string_view name, uint32_t part);
  // False with lastError set.
  bool Compile();
  // Throws a CIError with the position that the stage gives.
  [[noreturn]] void Raise(uint32_t code, uint32_t argument = kNoArgument, std::string detail = {}) const;
  std::string GetErrorText(const ErrorTexts& texts, bool withLine) const;
  std::string GetSourceTitle() const { return FormatErrorTitle(lastError.sourceName); }

  uint32_t OffsetOf(Token token) const { return static_cast<uint32_t>(token - tokens.data()); }
  Token At(uint32_t offset) const { return tokens.data() + offset; }
  uint8_t* Writable(Token token) { return tokens.data() + OffsetOf(token); }

  const KeywordTables* keywords = nullptr;
  std::vector<uint8_t> tokens;  // the final stream, a 0 token at its end
  bool newSeen = false;
  bool commentSeen = false;
  std::vector<BlockRecord> blocks;
  CIError lastError;
  Token readCursor = nullptr;  // second pass: current record of the first pass; running: the walker's record
  std::unique_ptr<CNamePool> namePool;
  std::vector<uint8_t> pass1Buffer;
  Stage stage = Stage::Loading;
  std::vector<Source> sources;

 private:
  friend class CFirstPass;
  friend class CSecondPass;
  // Where an error of the first pass stands.
  uint32_t currentSource = 0;
  uint32_t textCursor = 0;
};

// Line and column, both 0-based, of an offset: CR, LF, CR-LF and LF-CR each end one line.
void LineAndColumn(std::string_view text, uint32_t offset, uint32_t& line, uint32_t& column);

}  // namespace vl

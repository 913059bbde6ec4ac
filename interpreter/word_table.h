// CWordTable: what each word of the source texts means, looked up once for all its occurrences.
//
// Case doesn't matter. It keeps views into the texts, which must stay.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "interpreter/token_infos.h"

namespace vl {

struct CWord {
  static constexpr uint32_t kNoName = 0xFFFFFFFF;
  std::string_view text;
  uint32_t hash = 0;
  uint32_t nameId = kNoName;             // in the pool, once it is there
  const KeywordRow* language = nullptr;  // the language's own word or a class, or null
  uint32_t globalClass = 0;              // else the class whose member the bare word means, or 0
};

class CWordTable {
 public:
  explicit CWordTable(const KeywordTables& keywords) : keywords_(keywords), places_(kFirstPlaces, 0) {}
  // Stays where it is until the next call.
  CWord& Find(std::string_view text);

 private:
  static constexpr size_t kFirstPlaces = 1024;
  void Grow();

  const KeywordTables& keywords_;
  std::vector<uint32_t> places_;  // of a word in `words_`, from 1; a power of two of them
  std::vector<CWord> words_;
};

}  // namespace vl

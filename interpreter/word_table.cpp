#include "interpreter/word_table.h"

#include "interpreter/name_pool.h"

namespace vl {

namespace {

// As EqualNoCase sees it: letters alike, whatever their case.
uint32_t HashOf(std::string_view text) {
  uint32_t hash = 2166136261u;
  for (const char c : text) hash = (hash ^ (static_cast<uint8_t>(c) & 0xDFu)) * 16777619u;
  return hash ^ hash >> 15;
}

}  // namespace

CWord& CWordTable::Find(std::string_view text) {
  const uint32_t hash = HashOf(text);
  size_t place = hash & (places_.size() - 1);
  while (const uint32_t number = places_[place]) {
    CWord& word = words_[number - 1];
    if (word.hash == hash && (word.text == text || EqualNoCase(word.text, text))) return word;
    place = (place + 1) & (places_.size() - 1);
  }
  CWord& word = words_.emplace_back();
  word.text = text;
  word.hash = hash;
  word.language = keywords_.language.Find(text);
  if (!word.language) {
    if (const KeywordRow* global = keywords_.globals.Find(text)) word.globalClass = global->id;
  }
  places_[place] = static_cast<uint32_t>(words_.size());
  if (words_.size() * 2 > places_.size()) Grow();
  return words_.back();
}

void CWordTable::Grow() {
  places_.assign(places_.size() * 2, 0);
  for (size_t w = 0; w < words_.size(); ++w) {
    size_t place = words_[w].hash & (places_.size() - 1);
    while (places_[place]) place = (place + 1) & (places_.size() - 1);
    places_[place] = static_cast<uint32_t>(w + 1);
  }
}

}  // namespace vl

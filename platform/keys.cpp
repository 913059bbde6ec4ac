#include "platform/keys.h"

#include <string_view>

namespace vl {

int32_t KeyOfCharacter(uint8_t character) {
  constexpr int32_t kNoKey = 0xFF;
  const auto c = static_cast<char>(character);
  if (c >= 'a' && c <= 'z') return c - 'a' + 'A';
  if ((c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')) return c;
  struct Key {
    std::string_view characters;
    int32_t key;
  };
  constexpr Key kKeys[] = {{")", '0'},           {"!", '1'},           {"@", '2'},
                           {"#", '3'},           {"$", '4'},           {"%", '5'},
                           {"^", '6'},           {"&", '7'},           {"*", '8'},
                           {"(", '9'},           {" ", kKeySpace},     {"\b", kKeyBack},
                           {"\t", kKeyTab},      {"\r", kKeyReturn},   {"\n", kKeyReturn},
                           {"\x1B", kKeyEscape}, {";:", kKeyOem1},     {"=+", kKeyOemPlus},
                           {",<", kKeyOemComma}, {"-_", kKeyOemMinus}, {".>", kKeyOemPeriod},
                           {"/?", kKeyOem2},     {"`~", kKeyOem3},     {"[{", kKeyOem4},
                           {"\\|", kKeyOem5},    {"]}", kKeyOem6},     {"'\"", kKeyOem7}};
  for (const Key& key : kKeys) {
    if (key.characters.find(c) != std::string_view::npos) return key.key;
  }
  // What is left below the blank is typed with Control and a letter.
  if (character >= 1 && character <= 26) return 'A' + character - 1;
  return kNoKey;
}

}  // namespace vl

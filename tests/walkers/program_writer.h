// Writes a random program of the language from a seed: one that mostly runs well, with errors now and then.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace vl {

class CProgramWriter {
 public:
  explicit CProgramWriter(uint64_t seed) : random_(seed) {}
  std::string Write();

 private:
  uint32_t Below(uint32_t n) { return static_cast<uint32_t>(random_() % n); }
  bool Chance(uint32_t percent) { return Below(100) < percent; }
  std::string Pick(const std::vector<std::string>& list) { return list[Below(static_cast<uint32_t>(list.size()))]; }

  void Line(const std::string& text);
  void Function(int n);
  void Constructor(int n);
  void Block(int statements);
  void Statement();
  void Loop();
  void Choice();
  void Assignment();
  void ElementStatement();
  std::string Name();
  std::string Target();
  std::string Expression(int depth);
  std::string Primary(int depth);
  std::string Condition();
  std::string Call(int depth);
  std::string Arguments(int depth);
  std::string ObjectExpression();
  std::string TextExpression(int depth);

  std::mt19937_64 random_;
  std::string out_;
  int indent_ = 0;
  int budget_ = 0;
  int loops_ = 0;
  int blocks_ = 0;
  bool inFunction_ = false;
  bool inSwitch_ = false;
  std::vector<std::string> locals_;
  uint32_t wild_ = 0;  // percent of the places where something odd may stand
};

}  // namespace vl

// Runs random programs by both ways of running a program and stops at the first that differ.
//     vl_compare_walkers [--seed N] [--count N] [--show] [FILE...]
// --show prints the program of the seed and what both left. FILEs are compared instead of random programs.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tests/walkers/program_writer.h"
#include "tests/walkers/run_compared.h"

namespace {

// Leaves out lines of a program as long as it still differs.
std::string Shrink(std::string program) {
  for (bool smaller = true; smaller;) {
    smaller = false;
    std::vector<std::string> lines;
    for (size_t at = 0; at < program.size();) {
      const size_t end = program.find('\n', at);
      lines.push_back(program.substr(at, end - at + 1));
      at = end + 1;
    }
    for (size_t piece = lines.size() / 2; piece > 0; piece /= 2) {
      for (size_t at = 0; at + piece <= lines.size();) {
        std::string without;
        for (size_t l = 0; l < lines.size(); ++l) {
          if (l < at || l >= at + piece) without += lines[l];
        }
        if (!vl::CompareRuns(without).empty()) {
          lines.erase(lines.begin() + static_cast<long>(at), lines.begin() + static_cast<long>(at + piece));
          smaller = true;
        } else {
          at += piece;
        }
      }
    }
    program.clear();
    for (const std::string& line : lines) program += line;
  }
  return program;
}

int Report(const std::string& what, const std::string& program, const std::string& difference) {
  std::printf("FAILED %s\n%s\nthe smallest of its kind:\n", what.c_str(), difference.c_str());
  const std::string small = Shrink(program);
  std::printf("%s\n%s\n", small.c_str(), vl::CompareRuns(small).c_str());
  return 1;
}

}  // namespace

int main(int count, char** arguments) {
  uint64_t seed = 1;
  uint64_t programs = 1000;
  bool show = false;
  std::vector<std::string> files;
  for (int i = 1; i < count; ++i) {
    const std::string argument = arguments[i];
    if (argument == "--show") {
      show = true;
    } else if (argument == "--seed" && i + 1 < count) {
      seed = std::strtoull(arguments[++i], nullptr, 10);
    } else if (argument == "--count" && i + 1 < count) {
      programs = std::strtoull(arguments[++i], nullptr, 10);
    } else {
      files.push_back(argument);
    }
  }
  for (const std::string& file : files) {
    std::ifstream in(file, std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(in)), {});
    const std::string difference = vl::CompareRuns(text);
    if (!difference.empty()) return Report(file, text, difference);
  }
  if (!files.empty()) programs = 0;
  uint64_t prepared = 0;
  for (uint64_t s = seed; s < seed + programs; ++s) {
    const std::string program = vl::CProgramWriter(s).Write();
    if (show) {
      const vl::RunTrace trace = vl::TraceRun(program, true);
      std::printf("%s\n%s\n%s\n%s\n", program.c_str(), trace.error.c_str(), trace.globals.c_str(), trace.rest.c_str());
    }
    bool wasPrepared = false;
    const std::string difference = vl::CompareRuns(program, &wasPrepared);
    prepared += wasPrepared;
    if (!difference.empty()) return Report("seed " + std::to_string(s), program, difference);
  }
  std::printf("%llu programs alike, %llu of them prepared\n", static_cast<unsigned long long>(programs),
              static_cast<unsigned long long>(prepared));
  return 0;
}

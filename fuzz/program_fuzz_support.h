// What the fuzz targets of the language share: a program text as an application in memory, and a run of it that
// ends.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "host/run.h"
#include "interpreter/interpretor.h"
#include "platform/headless/headless_platform.h"
#include "platform/memory_files.h"
#include "platform/posix/posix_font_finder.h"
#include "platform/text/freetype_text_engine.h"
#include "tools/project/project.h"

namespace vl {

class FuzzProgram {
 public:
  // The bytes as code page 1252; a NUL would end the text and is made a blank.
  FuzzProgram(const uint8_t* data, size_t size, const HeadlessOptions& options) : platform_(options) {
    std::string text(reinterpret_cast<const char*>(data), size);
    for (char& c : text) {
      if (c == 0) c = ' ';
    }
    files_.Add("fuzz.vlp", SingleSourceApplication(text, "fuzz.vlq"));
    Services services = platform_.services();
    services.files = &files_;
    param_.path = "fuzz.vlp";
    interpreter_ = std::make_unique<CInterpretor>(param_, services, PlayerClasses());
  }

  CInterpretor& Interpreter() { return *interpreter_; }

 private:
  HeadlessPlatform platform_;
  MemoryFileSystem files_;
  CThreadParam param_;
  std::unique_ptr<CInterpretor> interpreter_;
};

}  // namespace vl

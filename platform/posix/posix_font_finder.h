// PosixFontFinder: fonts of the machine.
//
// The stand-ins for the faces of the period are pinned to the Liberation files, so that the same pixels come out
// on every machine that has them. fontconfig is asked only for other faces, and for Liberation where it lies
// in none of the known folders.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/text/font_finder.h"

namespace vl {

class PosixFontFinder final : public FontFinder {
 public:
  // `folder` is searched for the Liberation files before the machine's own folders; may be empty.
  explicit PosixFontFinder(std::string folder = {});
  ~PosixFontFinder() override;
  FontFile Find(const FaceRequest& request) override;

 private:
  struct Fontconfig;
  FontFile FindPinned(StandInFamily family, bool bold, bool italic);
  // With exact, only a font whose family has that name.
  FontFile Ask(const std::string& family, const FaceRequest& request, bool exact);
  std::shared_ptr<const std::string> Load(const std::string& path);

  std::vector<std::string> folders_;
  std::map<std::string, std::shared_ptr<const std::string>> files_;  // by path; null for what can't be read
  std::unique_ptr<Fontconfig> fontconfig_;                           // made when first asked
};

}  // namespace vl

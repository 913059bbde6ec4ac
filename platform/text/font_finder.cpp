#include "platform/text/font_finder.h"

#include <utility>

namespace vl {
namespace {

struct KnownFace {
  std::string_view name;  // lower case
  StandInFamily family;
};

constexpr KnownFace kKnownFaces[] = {
    {"arial", StandInFamily::Sans},
    {"helvetica", StandInFamily::Sans},
    {"ms sans serif", StandInFamily::Sans},
    {"ms shell dlg", StandInFamily::Sans},
    {"ms shell dlg 2", StandInFamily::Sans},
    {"system", StandInFamily::Sans},
    {"tahoma", StandInFamily::Sans},
    {"verdana", StandInFamily::Sans},
    {"liberation sans", StandInFamily::Sans},
    {"times new roman", StandInFamily::Serif},
    {"times", StandInFamily::Serif},
    {"ms serif", StandInFamily::Serif},
    {"liberation serif", StandInFamily::Serif},
    {"courier new", StandInFamily::Mono},
    {"courier", StandInFamily::Mono},
    {"fixedsys", StandInFamily::Mono},
    {"terminal", StandInFamily::Mono},
    {"liberation mono", StandInFamily::Mono},
};

bool EqualFaces(std::string_view face, std::string_view lower) {
  if (face.size() != lower.size()) return false;
  for (size_t i = 0; i < face.size(); ++i) {
    const char c = face[i] >= 'A' && face[i] <= 'Z' ? char(face[i] + 32) : face[i];
    if (c != lower[i]) return false;
  }
  return true;
}

}  // namespace

StandIn StandInFor(const FaceRequest& request) {
  for (const KnownFace& known : kKnownFaces) {
    if (EqualFaces(request.face, known.name)) return {known.family, true};
  }
  return {request.fixedPitch ? StandInFamily::Mono : StandInFamily::Sans, false};
}

void TableFontFinder::Add(StandInFamily family, bool bold, bool italic, std::string bytes) {
  files_[KeyOf(family, bold, italic)] = {std::make_shared<const std::string>(std::move(bytes)), 0, bold, italic};
}

FontFile TableFontFinder::Find(const FaceRequest& request) {
  const StandInFamily family = StandInFor(request).family;
  const std::pair<bool, bool> styles[] = {
      {request.bold, request.italic}, {request.bold, false}, {false, request.italic}, {false, false}};
  for (const auto& [bold, italic] : styles) {
    const auto found = files_.find(KeyOf(family, bold, italic));
    if (found != files_.end()) return found->second;
  }
  return files_.empty() ? FontFile{} : files_.begin()->second;
}

}  // namespace vl

#include "platform/text/font_finder.h"

#include <utility>

namespace vl {
namespace {

struct KnownFace {
  std::string_view name;  // lower case
  StandInFamily family;
  bool isPinned;
};

// The faces that came with every machine of the period are pinned; of others the machine's own are taken where it has
// them, else the family that looks most like them.
constexpr KnownFace kKnownFaces[] = {
    {"arial", StandInFamily::Sans, true},
    {"arial black", StandInFamily::Sans, false},
    {"arial narrow", StandInFamily::Sans, false},
    {"arial rounded mt bold", StandInFamily::Sans, false},
    {"avant garde", StandInFamily::Sans, false},
    {"century gothic", StandInFamily::Sans, false},
    {"comic sans ms", StandInFamily::Sans, false},
    {"copperplate gothic bold", StandInFamily::Sans, false},
    {"eras", StandInFamily::Sans, false},
    {"franklin gothic medium", StandInFamily::Sans, false},
    {"futura", StandInFamily::Sans, false},
    {"gill sans", StandInFamily::Sans, false},
    {"gill sans mt", StandInFamily::Sans, false},
    {"helv", StandInFamily::Sans, true},
    {"helvetica", StandInFamily::Sans, true},
    {"impact", StandInFamily::Sans, false},
    {"liberation sans", StandInFamily::Sans, true},
    {"lucida sans", StandInFamily::Sans, false},
    {"lucida sans unicode", StandInFamily::Sans, false},
    {"microsoft sans serif", StandInFamily::Sans, true},
    {"ms dialog", StandInFamily::Sans, true},
    {"ms sans serif", StandInFamily::Sans, true},
    {"ms shell dlg", StandInFamily::Sans, true},
    {"ms shell dlg 2", StandInFamily::Sans, true},
    {"small fonts", StandInFamily::Sans, true},
    {"swiss", StandInFamily::Sans, false},
    {"system", StandInFamily::Sans, true},
    {"tahoma", StandInFamily::Sans, true},
    {"trebuchet ms", StandInFamily::Sans, false},
    {"univers", StandInFamily::Sans, false},
    {"verdana", StandInFamily::Sans, true},
    {"antiqua", StandInFamily::Serif, false},
    {"baskerville old face", StandInFamily::Serif, false},
    {"bodoni mt", StandInFamily::Serif, false},
    {"book antiqua", StandInFamily::Serif, false},
    {"bookman old style", StandInFamily::Serif, false},
    {"century", StandInFamily::Serif, false},
    {"century schoolbook", StandInFamily::Serif, false},
    {"garamond", StandInFamily::Serif, false},
    {"georgia", StandInFamily::Serif, false},
    {"goudy old style", StandInFamily::Serif, false},
    {"liberation serif", StandInFamily::Serif, true},
    {"ms serif", StandInFamily::Serif, true},
    {"new york", StandInFamily::Serif, false},
    {"palatino", StandInFamily::Serif, false},
    {"palatino linotype", StandInFamily::Serif, false},
    {"perpetua", StandInFamily::Serif, false},
    {"rockwell", StandInFamily::Serif, false},
    {"roman", StandInFamily::Serif, true},
    {"sylfaen", StandInFamily::Serif, false},
    {"times", StandInFamily::Serif, true},
    {"times new roman", StandInFamily::Serif, true},
    {"tms rmn", StandInFamily::Serif, true},
    {"andale mono", StandInFamily::Mono, false},
    {"consolas", StandInFamily::Mono, false},
    {"courier", StandInFamily::Mono, true},
    {"courier new", StandInFamily::Mono, true},
    {"fixedsys", StandInFamily::Mono, true},
    {"letter gothic", StandInFamily::Mono, false},
    {"liberation mono", StandInFamily::Mono, true},
    {"lucida console", StandInFamily::Mono, false},
    {"lucida sans typewriter", StandInFamily::Mono, false},
    {"monaco", StandInFamily::Mono, false},
    {"ocr a extended", StandInFamily::Mono, false},
    {"terminal", StandInFamily::Mono, true},
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
    if (EqualFaces(request.face, known.name)) return {known.family, known.isPinned};
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

#include "platform/posix/posix_font_finder.h"

#include <fcntl.h>
#include <fontconfig/fontconfig.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "platform/posix/posix_file_system.h"
#include "platform/text/code_page.h"

namespace vl {
namespace {

constexpr int64_t kMaxFontBytes = int64_t{64} << 20;

const char* FamilyName(StandInFamily family) {
  switch (family) {
    case StandInFamily::Serif:
      return "Serif";
    case StandInFamily::Mono:
      return "Mono";
    default:
      return "Sans";
  }
}

const char* StyleName(bool bold, bool italic) {
  if (bold) return italic ? "BoldItalic" : "Bold";
  return italic ? "Italic" : "Regular";
}

struct PatternDelete {
  void operator()(FcPattern* p) const { FcPatternDestroy(p); }
};
using PatternPtr = std::unique_ptr<FcPattern, PatternDelete>;

}  // namespace

struct PosixFontFinder::Fontconfig {
  Fontconfig() : config(FcInitLoadConfigAndFonts()) {}
  ~Fontconfig() {
    if (config) FcConfigDestroy(config);
  }
  Fontconfig(const Fontconfig&) = delete;
  Fontconfig& operator=(const Fontconfig&) = delete;
  FcConfig* config;
};

PosixFontFinder::PosixFontFinder(std::string folder) {
  if (!folder.empty()) folders_.push_back(std::move(folder));
  for (const char* known :
       {"/usr/share/fonts/truetype/liberation", "/usr/share/fonts/truetype/liberation2", "/usr/share/fonts/liberation",
        "/usr/share/fonts/liberation-fonts", "/usr/share/fonts/liberation-sans", "/usr/share/fonts/liberation-serif",
        "/usr/share/fonts/liberation-mono", "/usr/share/fonts/TTF"}) {
    folders_.emplace_back(known);
  }
}

PosixFontFinder::~PosixFontFinder() = default;

std::shared_ptr<const std::string> PosixFontFinder::Load(const std::string& path) {
  const auto known = files_.find(path);
  if (known != files_.end()) return known->second;
  std::shared_ptr<const std::string>& entry = files_[path];
  const FileHandle handle(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat status {};
  if (!handle.IsOpen() || fstat(handle.Get(), &status) != 0 || !S_ISREG(status.st_mode)) return entry;
  if (status.st_size <= 0 || status.st_size > kMaxFontBytes) return entry;
  std::string bytes(size_t(status.st_size), '\0');
  size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t n = read(handle.Get(), bytes.data() + done, bytes.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return entry;
    done += size_t(n);
  }
  entry = std::make_shared<const std::string>(std::move(bytes));
  return entry;
}

FontFile PosixFontFinder::FindPinned(StandInFamily family, bool bold, bool italic) {
  const std::string name = std::string("/Liberation") + FamilyName(family) + "-" + StyleName(bold, italic) + ".ttf";
  for (const std::string& folder : folders_) {
    if (auto bytes = Load(folder + name)) return {std::move(bytes), 0, bold, italic};
  }
  return {};
}

FontFile PosixFontFinder::Ask(const std::string& family, const FaceRequest& request, bool exact) {
  if (!fontconfig_) fontconfig_ = std::make_unique<Fontconfig>();
  if (!fontconfig_->config) return {};
  const PatternPtr pattern(FcPatternCreate());
  const auto* wanted = reinterpret_cast<const FcChar8*>(family.c_str());
  FcPatternAddString(pattern.get(), FC_FAMILY, wanted);
  FcPatternAddInteger(pattern.get(), FC_WEIGHT, request.bold ? FC_WEIGHT_BOLD : FC_WEIGHT_NORMAL);
  FcPatternAddInteger(pattern.get(), FC_SLANT, request.italic ? FC_SLANT_ITALIC : FC_SLANT_ROMAN);
  FcPatternAddBool(pattern.get(), FC_SCALABLE, FcTrue);
  FcConfigSubstitute(fontconfig_->config, pattern.get(), FcMatchPattern);
  FcDefaultSubstitute(pattern.get());
  FcResult result;
  const PatternPtr match(FcFontMatch(fontconfig_->config, pattern.get(), &result));
  if (!match) return {};
  bool isWanted = !exact;
  FcChar8* name = nullptr;
  for (int i = 0; !isWanted && FcPatternGetString(match.get(), FC_FAMILY, i, &name) == FcResultMatch; ++i) {
    isWanted = strcasecmp(reinterpret_cast<const char*>(name), family.c_str()) == 0;
  }
  FcChar8* path = nullptr;
  if (!isWanted || FcPatternGetString(match.get(), FC_FILE, 0, &path) != FcResultMatch) return {};
  int index = 0;
  int weight = FC_WEIGHT_NORMAL;
  int slant = FC_SLANT_ROMAN;
  FcPatternGetInteger(match.get(), FC_INDEX, 0, &index);
  FcPatternGetInteger(match.get(), FC_WEIGHT, 0, &weight);
  FcPatternGetInteger(match.get(), FC_SLANT, 0, &slant);
  // The upper half of the index names an instance of a variable font.
  return {Load(reinterpret_cast<const char*>(path)), index & 0xFFFF, weight >= FC_WEIGHT_DEMIBOLD,
          slant != FC_SLANT_ROMAN};
}

FontFile PosixFontFinder::Find(const FaceRequest& request) {
  const StandIn standIn = StandInFor(request);
  if (!standIn.isPinned && !request.face.empty()) {
    FontFile file = Ask(Utf8Of1252(request.face), request, true);
    if (file.bytes) return file;
  }
  for (const auto& [bold, italic] : {std::pair{request.bold, request.italic}, std::pair{request.bold, false},
                                     std::pair{false, request.italic}, std::pair{false, false}}) {
    FontFile file = FindPinned(standIn.family, bold, italic);
    if (file.bytes) return file;
  }
  return Ask(std::string("Liberation ") + FamilyName(standIn.family), request, false);
}

}  // namespace vl

// FontFinder: where the bytes of a font come from.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace vl {

// The faces that stand in for what programs of the period ask for, metric-compatible with it.
enum class StandInFamily { Sans, Serif, Mono };

struct FaceRequest {
  std::string_view face;
  bool bold = false;
  bool italic = false;
  bool fixedPitch = false;
};

struct FontFile {
  std::shared_ptr<const std::string> bytes;  // null when nothing was found
  int faceIndex = 0;
  // What the file is, which may be less than what was asked for.
  bool isBold = false;
  bool isItalic = false;
};

class FontFinder {
 public:
  virtual ~FontFinder() = default;
  // Equal requests give the same block of bytes.
  virtual FontFile Find(const FaceRequest& request) = 0;
};

// The family that stands in for a face, upper and lower case alike; isPinned: it does so
// always, whatever the machine has. A face that no rule names gets Sans, or Mono when it has a fixed pitch.
struct StandIn {
  StandInFamily family;
  bool isPinned;
};
StandIn StandInFor(const FaceRequest& request);

// A finder over a table of fonts in memory, for a page and for tests.
class TableFontFinder final : public FontFinder {
 public:
  // What is missing falls back to the regular file of the family, then to any.
  void Add(StandInFamily family, bool bold, bool italic, std::string bytes);
  FontFile Find(const FaceRequest& request) override;

 private:
  static int KeyOf(StandInFamily family, bool bold, bool italic) {
    return int(family) * 4 + (bold ? 2 : 0) + (italic ? 1 : 0);
  }
  std::map<int, FontFile> files_;
};

}  // namespace vl

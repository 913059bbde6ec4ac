// Paths of the period: drive letters, both separators, names that ignore case, short forms, wildcards.
//
// Only texts; what is behind them is platform/run_files. A full path has the form "C:\A\B.TXT": a drive in upper case,
// one backslash between components, none at the end except for the root "C:\", no '.' and '..'.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <string_view>

#include "base/system_error.h"

namespace vl {

// The one drive of a program, and the folder of its application there.
inline constexpr char kDriveLetter = 'C';
inline constexpr std::string_view kDriveRoot = "C:\\";
inline constexpr std::string_view kHomeFolder = "C:\\VORLANE";
inline constexpr std::string_view kSystemFolder = "C:\\WINDOWS";
inline constexpr std::string_view kTempFolder = "C:\\WINDOWS\\TEMP";
inline constexpr size_t kMaxPathBytes = 259;

// Lower case by code page 1252, as file names are compared.
char FoldNameByte(char c);
std::string FoldName(std::string_view name);

// SYS_SUCCESS, or why the text is no path on the drive: another drive, a name of the network or of a device, characters
// that no name has. Relative texts count from `folder`, which is a full path.
uint32_t MakeFullPath(std::string_view text, std::string_view folder, std::string* full);
// CON, NUL, COM1 and the like, with any extension.
bool IsDeviceName(std::string_view component);

// '*' and '?' of the period, ignoring case: "*.*" matches every name, "*." those without an extension.
bool MatchesWildcard(std::string_view name, std::string_view pattern);

// True for a name that is its own short form: 8 and 3 characters.
bool IsShortName(std::string_view name);
// The short form of a name that isn't; `taken` holds the folded short names of the folder and gets this one.
std::string MakeShortName(std::string_view name, std::set<std::string>& taken);

// The parts as the period's C library splits and joins them: "c:", "\a\", "b", ".txt".
struct PathParts {
  std::string drive;
  std::string dir;
  std::string name;
  std::string extension;
};
PathParts SplitPath(std::string_view path);
std::string JoinPath(const PathParts& parts);

}  // namespace vl

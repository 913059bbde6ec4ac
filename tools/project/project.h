// Projects: folders that are packed into applications, and the way back.
//
// Errors are text for a person, "file:line:column: what (hint)" where a place is known; nothing here throws.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "host/appfile/model.h"

namespace vl {

inline constexpr std::string_view kManifestName = "vorlane.toml";

struct LoadedProject {
  std::string error;  // empty on success
  ApplicationModel model;
  std::string name;
  std::string output;                         // file name of the application, for example hello.vlp
  std::vector<std::filesystem::path> inputs;  // every file that was read, for a watcher; also after an error
};
// Reads vorlane.toml and all it names.
LoadedProject LoadProject(const std::filesystem::path& folder);

struct PackedProject {
  std::string error;
  std::string mainName;                      // key of the application in `files`
  std::map<std::string, std::string> files;  // paths relative to the output's folder
  std::vector<std::filesystem::path> inputs;
};
PackedProject PackProject(const std::filesystem::path& folder);

// The bytes of an application of one source: part, bank "source" and element, named by the file name without its
// extension. The text may be UTF-8 or code page 1252. "" and an error when it holds a character that the code
// page lacks.
std::string SingleSourceApplication(std::string_view text, std::string_view fileName, std::string* error = nullptr);

// A source as the language takes it: UTF-8 becomes code page 1252, anything else passes through as it is. False
// and an error when a character is missing in the code page.
bool SourceFromFile(std::string_view text, std::string_view fileName, std::string* bytes, std::string* error);

struct ExtractResult {
  std::string error;
  std::vector<std::string> problems;  // what couldn't be kept
  size_t files = 0;                   // written
};
// Writes a folder that packs to an equal application. The folder must be absent or empty.
ExtractResult ExtractApplication(const std::filesystem::path& application, const std::filesystem::path& outFolder);

struct Description {
  std::string error;
  uint32_t status = 0;  // of opening; the description tells what could be read also when it isn't 0
  std::string text;
  std::string json;
};
// Chunks, parts, banks, elements, versions and classes.
Description DescribeApplication(const std::filesystem::path& application);

// The word for a bank type in vorlane.toml; empty for a type without one.
std::string_view BankTypeWord(uint32_t type);

}  // namespace vl

// CAppFile: the open application, with its parts, their banks and everything that is found by name.
//
// One per interpreter, and on its thread only. The file stays open as long as the object lives, since bodies are
// read on demand. Parts, banks and elements belong to it, pointers to them live until Close. Content is hostile:
// every size is checked against the bytes that are left, and what is made while opening stays in proportion to
// the size of the files (ReadBudget); bodies take their memory from the budget of the run.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "base/memory_budget.h"
#include "host/appfile/app_part.h"
#include "host/appfile/bank.h"
#include "host/appfile/name_table.h"
#include "host/appfile/read_budget.h"
#include "platform/file_system.h"

namespace vl {

// A source of the program, as it goes to the compiler.
struct SourceEntry {
  static constexpr uint32_t kFlagCopy = 2;  // the text isn't ended by NUL
  static constexpr uint32_t kFlagInit = 4;  // the init source
  static constexpr uint32_t kFlagMain = 8;  // the main source

  std::string path;   // of the element; "InitSource" for the init source
  std::string text;   // code page 1252
  uint32_t part = 0;  // place of the part in `parts`, from 1
  uint32_t flags = 0;
};

class CAppFile {
 public:
  // `budget` is what bodies are counted in; it must outlive this object. Without one the file has its own.
  explicit CAppFile(MemoryBudget* budget = nullptr);
  ~CAppFile();
  CAppFile(const CAppFile&) = delete;
  CAppFile& operator=(const CAppFile&) = delete;

  // Opens the application at `filePath`, in `files`, which must outlive this object. `startOffset` is where the
  // chunks start when the application is appended to another file. Design mode also reads the parts meant for
  // it. External parts and banks are found below the directory of the file. Returns a status of errors.h; on
  // failure the object still holds what could be read. The wait that applications of kind 4 ask for is the
  // caller's: see applicationKind.
  uint32_t Open(std::string_view displayTitle, std::string_view filePath, FileSystem& files, bool designMode,
                int64_t startOffset = 0);
  void Close();

  // Returns the old one. Null selects the first part.
  CAppPart* SetCurrentPart(CAppPart* part);
  CAppPart* GetPartByName(std::string_view name) const;
  // The part at a place of `parts`, from 1, as SourceEntry::part has it; null outside.
  CAppPart* GetPartByNumber(uint32_t number) const;

  // The current part's bank of that type, or null.
  CBank* GetBank(uint32_t type) const;
  CBank* GetBankByPath(std::string_view path) const;
  // A name without ':' counts inside the current part.
  CBank* GetBankByName(std::string_view name) const;

  // By part://bank/element or part://bank/group/element. `mustBeTyped` skips the sources.
  CElement* GetElementByPath(std::string_view path, bool mustBeTyped = false) const;
  // By full name, or by short name in the current part's bank of `type`. With `mustBeTyped`, sources aren't
  // found. Null when there is none.
  CElement* GetElement(std::string_view name, uint32_t type, bool mustBeTyped) const;
  CElement* GetElementByIndex(uint32_t index, uint32_t type, bool mustBeTyped) const;

  // A stream on the element of that full name, or else on a file of that name below the application's directory;
  // null when neither is there. Option 1: the stream has a file handle of its own.
  std::unique_ptr<CStream> OpenResource(std::string_view name, bool mustBeTyped, uint32_t option);
  // A name with a ':' unchanged, any other behind the directory of the application file.
  std::string MakePath(std::string_view name) const;

  // The path of a file that the program names: a full one of the run's drive, or below the application's directory, as
  // OpenResource reads it. False for a name that leads elsewhere.
  bool PathOfFile(std::string_view name, std::string* filePath) const;

  // Hands the program's sources to `add` in the order of compiling. When `add` returns false, the rest of that
  // bank is skipped. Bodies are loaded one at a time and dropped again.
  void ForEachSource(bool withInitSource, const std::function<bool(SourceEntry&&)>& add);
  // All of them, within the limits of the compiler (limits::kMaxSources, kMaxSourceBytes).
  std::vector<SourceEntry> CollectSources(bool withInitSource);

  // For banks and elements.
  FileSystem* Files() const { return files_; }
  MemoryBudget& Budget() const { return *budget_; }
  ReadBudget& Structure() { return structure_; }
  // Opens a part or bank file named in this file. Null for a name that leaves the directory.
  std::shared_ptr<File> OpenBeside(std::string_view name, std::string* openedPath);
  void RegisterPart(CAppPart& part);
  void RegisterBank(CBank& bank);
  void RegisterElement(CElement& element);
  void ForgetElement(CElement& element);

  std::vector<std::string> classNames;  // what the compiler knows
  bool hasClassTable = false;           // classNames come from the file
  std::string title;
  std::string path;
  std::shared_ptr<File> file;
  bool ownsFile = false;
  bool deleteOnClose = false;     // for a downloaded temporary
  int64_t signaturePosition = 0;  // of the signature chunk, 0 when there is none
  uint32_t applicationKind = 1;
  uint32_t version = 0;
  StoredPalette palette{};  // of the first part; defined when it has a header
  bool paletteInUse = false;
  std::vector<std::unique_ptr<CAppPart>> parts;  // in file order
  CAppPart* currentPart = nullptr;
  AppSettings settings;
  bool hasVersion = false;
  bool hasSettings = false;
  std::vector<ChunkRecord> chunks;  // of the file level, in file order
  // The error of the last failed bank operation. A field and not a value of the process, so that two runs don't
  // see each other's.
  uint32_t lastBankError = kAppOk;

 private:
  uint32_t ReadChunk(CFileStream& stream, const ChunkRecord& chunk, bool designMode);
  uint32_t ReadPart(CFileStream& stream, uint32_t kind);

  FileSystem* files_ = nullptr;
  MemoryBudget ownBudget_;
  MemoryBudget* budget_;
  ReadBudget structure_;
  std::set<std::string, std::less<>> counted_;  // files whose size is in structure_
  uint32_t recognised_ = 0;
  NameTable<CAppPart, 64> partsByName;
  NameTable<CBank, 64> banksByName;
  NameTable<CElement, 512> elementsByName;
};

}  // namespace vl

// What must hold for the table of every runtime class: the compiler, the dispatch and the manual all read it.
#include <cctype>
#include <map>
#include <set>

#include "host/run.h"
#include "interpreter/class_table.h"
#include "interpreter/token.h"

namespace vl {
namespace {

std::string Lower(std::string_view name) {
  std::string lower(name);
  for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return lower;
}

std::vector<const ClassTable*> Tables() {
  std::vector<const ClassTable*> tables;
  for (const ClassTable* table : PlayerClasses().tables) {
    if (table) tables.push_back(table);
  }
  return tables;
}

const ClassTable& Table(uint32_t id) { return *PlayerClasses().tables[id]; }

// How many members, events and constants are global names of a kind.
std::map<int, int> GlobalKinds(uint32_t id) {
  std::map<int, int> kinds;
  for (const MemberRow& row : Table(id).rows) ++kinds[row.globalKind];
  return kinds;
}

TEST(ClassTables, TheClassesOfThisPlayerAreThere) {
  for (const uint32_t id :
       {CLASS_MATH,    CLASS_FONT,      CLASS_STRING,        CLASS_SURFACE,    CLASS_SYSTEM,        CLASS_PROCESS,
        CLASS_PROGRAM, CLASS_WINDOW,    CLASS_BANK,          CLASS_BINARY,     CLASS_POINTARRAY,    CLASS_ANIMATION,
        CLASS_SPRITE,  CLASS_VECTOR,    CLASS_MATRIX,        CLASS_QUATERNION, CLASS_KEYBOARD,      CLASS_GAMEINPUT,
        CLASS_FILE,    CLASS_DISK,      CLASS_INI,           CLASS_REGISTRY,   CLASS_SHAREDLIBRARY, CLASS_TIMER,
        CLASS_SERIAL,  CLASS_CLIPBOARD, CLASS_PRINTER,       CLASS_VEX,        CLASS_VEXPLAYER,     CLASS_VEXCHANNEL,
        CLASS_VEXUSER, CLASS_VEXSERVER, CLASS_VEXCONNECTION, CLASS_VEXSESSION, CLASS_VEXSOCKET,     CLASS_VEXSTATS}) {
    ASSERT_NE(PlayerClasses().tables[id], nullptr) << FactsOfClass(id).name;
    EXPECT_EQ(Table(id).id, id);
  }
}

TEST(ClassTables, MemberIdsAreOneToConstantBaseAndConstantsFollow) {
  for (const ClassTable* table : Tables()) {
    const uint32_t base = FactsOfClass(table->id).constantBase;
    std::set<uint32_t> members;
    std::set<uint32_t> constants;
    for (const MemberRow& row : table->rows) {
      std::set<uint32_t>& ids = row.kind == MemberKind::Constant ? constants : members;
      EXPECT_TRUE(ids.insert(row.id).second) << table->Name() << "." << row.name << ": id twice";
    }
    ASSERT_EQ(members.size(), base - 1) << table->Name();
    EXPECT_EQ(*members.begin(), 1u) << table->Name();
    EXPECT_EQ(*members.rbegin(), base - 1) << table->Name();
    if (constants.empty()) continue;
    // The ids of constants have no gap either, but for one of the keyboard.
    const size_t gaps = table->id == CLASS_KEYBOARD ? 1 : 0;
    EXPECT_EQ(*constants.begin(), base + 1) << table->Name();
    EXPECT_EQ(*constants.rbegin(), base + constants.size() + gaps) << table->Name();
  }
}

TEST(ClassTables, NamesAreIdentifiersAndUniqueInTheirClass) {
  for (const ClassTable* table : Tables()) {
    std::set<std::string> names;
    for (const MemberRow& row : table->rows) {
      const std::string name = row.name;
      ASSERT_FALSE(name.empty()) << table->Name() << " id " << row.id;
      // SetFont and GetFont are members of surfaces and of windows, and the window has both.
      const bool twice = table->id == CLASS_WINDOW && (name == "SetFont" || name == "GetFont");
      EXPECT_TRUE(names.insert(Lower(name)).second || twice) << table->Name() << "." << name << ": name twice";
      EXPECT_FALSE(std::isdigit(static_cast<unsigned char>(name[0]))) << name;
      for (const char c : name) EXPECT_TRUE(std::isalnum(static_cast<unsigned char>(c)) || c == '_') << name;
    }
  }
}

TEST(ClassTables, EveryRowIsExplained) {
  for (const ClassTable* table : Tables()) {
    EXPECT_STRNE(table->help, "") << table->Name();
    for (const MemberRow& row : table->rows) {
      EXPECT_STRNE(row.help, "") << table->Name() << "." << row.name;
      EXPECT_EQ(std::string(row.help).find('\n'), std::string::npos) << table->Name() << "." << row.name;
    }
  }
}

TEST(ClassTables, KindsFit) {
  for (const ClassTable* table : Tables()) {
    for (const MemberRow& row : table->rows) {
      const std::string name = row.name;
      if (row.kind == MemberKind::Event) {
        EXPECT_EQ(name.substr(0, 2), "On") << table->Name() << "." << name;
      }
      if (row.kind == MemberKind::Constant) {
        EXPECT_EQ(row.function, nullptr) << table->Name() << "." << name;
        EXPECT_EQ(name, [&] {
          std::string upper = name;
          for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
          return upper;
        }()) << table->Name();
      } else {
        EXPECT_EQ(row.value, 0u) << table->Name() << "." << name;
      }
    }
  }
}

// Fixed classes and the classes that New serves both need a maker.
TEST(ClassTables, EveryClassCanBeMade) {
  for (const ClassTable* table : Tables()) EXPECT_NE(table->create, nullptr) << table->Name();
}

TEST(ClassTables, GlobalNames) {
  const auto all = [](uint32_t id, int kind) {
    EXPECT_EQ(GlobalKinds(id), (std::map<int, int>{{kind, static_cast<int>(Table(id).rows.size())}}))
        << FactsOfClass(id).name;
  };
  all(CLASS_MATH, 2);
  all(CLASS_PROGRAM, 0x38);
  EXPECT_EQ(GlobalKinds(CLASS_SYSTEM)[0x27], 1);
  EXPECT_EQ(GlobalKinds(CLASS_SYSTEM).size(), 2u);
  EXPECT_EQ(GlobalKinds(CLASS_SURFACE)[9], 7);
  EXPECT_EQ(GlobalKinds(CLASS_SURFACE).size(), 2u);
  EXPECT_EQ(GlobalKinds(CLASS_WINDOW)[9], 7);
  for (const MemberRow& row : Table(CLASS_WINDOW).rows) {
    if (row.kind != MemberKind::Constant) {
      EXPECT_EQ(row.globalKind, TK_CURWINDOW) << row.name;
    }
  }
  for (const ClassTable* table : Tables()) {
    switch (table->id) {
      case CLASS_MATH:
      case CLASS_KEYBOARD:
      case CLASS_PROGRAM:
      case CLASS_DISPLAY:
      case CLASS_EDITOR:
      case CLASS_SYSTEM:
      case CLASS_SURFACE:
      case CLASS_WINDOW:
        break;
      default:
        EXPECT_EQ(GlobalKinds(table->id)[0], static_cast<int>(table->rows.size())) << table->Name();
    }
  }
}

// A bare word means one thing: only the colours, which the window repeats with the same values, and the two font
// members of the window stand in the tables twice.
TEST(ClassTables, GlobalNamesHaveOneMeaning) {
  std::map<std::string, const MemberRow*> seen;
  for (const ClassTable* table : Tables()) {
    for (const MemberRow& row : table->rows) {
      if (!row.globalKind) continue;
      const auto [at, fresh] = seen.emplace(Lower(row.name), &row);
      if (fresh) continue;
      EXPECT_EQ(at->second->globalKind, row.globalKind) << row.name;
      EXPECT_EQ(at->second->value, row.value) << row.name;
      const std::string name = row.name;
      EXPECT_TRUE(row.kind == MemberKind::Constant || name == "SetFont" || name == "GetFont") << name;
    }
  }
}

TEST(ClassTables, TheWindowRepeatsTheSurface) {
  std::map<std::string, const MemberRow*> window;
  for (const MemberRow& row : Table(CLASS_WINDOW).rows) window.emplace(row.name, &row);
  for (const MemberRow& row : Table(CLASS_SURFACE).rows) {
    ASSERT_TRUE(window.count(row.name)) << row.name;
    const MemberRow& repeated = *window[row.name];
    EXPECT_EQ(repeated.kind, row.kind) << row.name;
    EXPECT_EQ(repeated.value, row.value) << row.name;
    if (row.kind == MemberKind::Constant) continue;
    EXPECT_EQ(repeated.id, row.id) << row.name;
    EXPECT_EQ(repeated.function != nullptr, row.function != nullptr) << row.name;
  }
}

struct Constant {
  uint32_t classId;
  const char* name;
  uint32_t value;
};

TEST(ClassTables, ValuesOfConstants) {
  constexpr Constant kConstants[] = {
      {CLASS_SURFACE, "COPYALL", 0},
      {CLASS_SURFACE, "ADD", 9},
      {CLASS_SURFACE, "USEIMAGEPALETTE", 0xABCD0020},
      {CLASS_SURFACE, "USEIMAGEDEPTH", 0xABCD0010},
      {CLASS_SURFACE, "AUTOSIZE", 0xABCD0040},
      {CLASS_SURFACE, "BMP", 0x20504D42},
      {CLASS_SURFACE, "JPEG", 0x4745504A},
      {CLASS_SURFACE, "PNG", 0x20474E50},
      {CLASS_SURFACE, "RED", 0xFF0000},
      {CLASS_SURFACE, "BLUE", 0x0000FF},
      {CLASS_SURFACE, "LIGHTGRAY", 0xC0C0C0},
      {CLASS_SURFACE, "DARKGRAY", 0x808080},
      {CLASS_SYSTEM, "LITTLE_ENDIAN", 2},
      {CLASS_SYSTEM, "OS_LINUX", 5},
      {CLASS_SYSTEM, "OS_WINDOWS_XP", 10},
      {CLASS_SYSTEM, "DOWNLOADSTATUS_ABORTED", 0xBCBC0003},
      {CLASS_SYSTEM, "SYSCOLOR_3DDARKSHADOW", 0xBABC0000},
      {CLASS_SYSTEM, "SYSCOLOR_GRAYTEXT", 0xBABC000D},
      {CLASS_SYSTEM, "SYSCOLOR_WINDOWTEXT", 0xBABC001B},
      {CLASS_WINDOW, "NOBORDER", 0xDEB20000},
      {CLASS_WINDOW, "TABSTOP", 0xDEB00001},
      {CLASS_WINDOW, "STATICEDGE", 0xDEB10002},
      {CLASS_WINDOW, "BORDER", 0xDEB00006},
      {CLASS_WINDOW, "OKF_ALT", 4},
      {CLASS_WINDOW, "GAME", 0xAAD20000},
      {CLASS_WINDOW, "FAKECHILD", 0xAAD20008},
      {CLASS_WINDOW, "MINIMIZED", 0xAAD2000D},
      {CLASS_WINDOW, "SIZENESW", 5},
      {CLASS_WINDOW, "WAIT", 10},
      {CLASS_WINDOW, "MIDDLEBUTTON", 0x89AF0002},
      {CLASS_WINDOW, "RIGHTBUTTON", 0x89AF0003},
  };
  for (const Constant& wanted : kConstants) {
    const MemberRow* found = nullptr;
    for (const MemberRow& row : Table(wanted.classId).rows) {
      if (std::string(row.name) == wanted.name) found = &row;
    }
    ASSERT_NE(found, nullptr) << wanted.name;
    EXPECT_EQ(found->kind, MemberKind::Constant) << wanted.name;
    EXPECT_EQ(found->value, wanted.value) << wanted.name;
  }
}

TEST(ClassFactsTest, NamesLeadBackToIds) {
  std::set<std::string> names;
  for (uint32_t id = 1; id <= kClassCount; ++id) {
    const ClassFacts& facts = FactsOfClass(id);
    EXPECT_TRUE(names.insert(Lower(facts.name)).second) << facts.name;
    EXPECT_EQ(ClassIdByName(facts.name), id);
    EXPECT_EQ(ClassIdByName(Lower(facts.name)), id);
  }
  EXPECT_EQ(ClassIdByName("Nothing"), 0u);
  EXPECT_EQ(ClassIdByName(""), 0u);
}

TEST(ClassFactsTest, ConstantBases) {
  constexpr uint16_t kBases[] = {57,  25, 30,  2,   15,  13, 7,  22, 66,  7,  56, 51, 22, 11, 42, 81, 71, 19, 74,
                                 47,  45, 117, 21,  7,   10, 25, 16, 10,  19, 18, 11, 21, 35, 43, 9,  17, 9,  16,
                                 36,  5,  34,  13,  46,  60, 52, 38, 115, 40, 23, 11, 11, 9,  5,  16, 7,  61, 24,
                                 147, 11, 5,   101, 128, 77, 68, 12, 73,  88, 79, 64, 41, 27, 19, 38, 12, 26};
  static_assert(std::size(kBases) == kClassCount);
  for (uint32_t id = 1; id <= kClassCount; ++id) {
    EXPECT_EQ(FactsOfClass(id).constantBase, kBases[id - 1]) << FactsOfClass(id).name;
  }
}

TEST(ClassFactsTest, FixedAndKeptClasses) {
  const std::set<std::string> fixed = {"Math", "Disk", "Keyboard", "System", "Program", "Display", "Editor"};
  const std::set<std::string> kept = {
      "Blob",     "Button",   "Camera",      "CheckBox", "ComboBox",  "Disk",    "Display",    "Edit",
      "GroupBox", "Keyboard", "Light",       "ListBox",  "Material",  "Math",    "Object",     "Position",
      "Program",  "QTime",    "RadioButton", "RichEdit", "ScrollBar", "Speaker", "StaticText", "String",
      "System",   "Texture",  "TrayIcon",    "Video",    "Voice",     "Window",  "Zone"};
  ASSERT_EQ(kept.size(), 31u);
  for (uint32_t id = 1; id <= kClassCount; ++id) {
    const ClassFacts& facts = FactsOfClass(id);
    EXPECT_EQ(facts.fixed, fixed.count(facts.name) == 1) << facts.name;
    EXPECT_EQ(facts.kept, kept.count(facts.name) == 1) << facts.name;
  }
}

}  // namespace
}  // namespace vl

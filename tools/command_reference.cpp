// vorlane reference: the classes as built, from their tables.
#include <cstdio>
#include <nlohmann/json.hpp>

#include "host/run.h"
#include "tools/commands.h"

namespace vl {

namespace {

const char* KindWord(MemberKind kind) {
  switch (kind) {
    case MemberKind::Event:
      return "event";
    case MemberKind::Constant:
      return "constant";
    default:
      return "member";
  }
}

// A member that this player doesn't have yet is no part of the reference.
bool IsBuilt(const MemberRow& row) { return row.kind == MemberKind::Constant || row.function; }

nlohmann::ordered_json ToJson(const ClassTable& table) {
  nlohmann::ordered_json object;
  object["class"] = table.Name();
  object["id"] = table.id;
  object["members"] = nlohmann::ordered_json::array();
  for (const MemberRow& row : table.rows) {
    if (!IsBuilt(row)) continue;
    nlohmann::ordered_json member;
    member["id"] = row.id;
    member["name"] = row.name;
    member["kind"] = KindWord(row.kind);
    if (row.text) {
      member["value"] = row.text;
    } else if (row.kind == MemberKind::Constant) {
      member["value"] = static_cast<int32_t>(row.value);
    }
    object["members"].push_back(member);
  }
  return object;
}

void Print(const ClassTable& table) {
  std::printf("%s (class %u)\n  %s\n", table.Name(), table.id, table.help);
  for (const MemberRow& row : table.rows) {
    if (!IsBuilt(row)) continue;
    if (row.text) {
      std::printf("  %5u  %-28s \"%s\"  %s\n", row.id, row.name, row.text, row.help);
    } else if (row.kind == MemberKind::Constant) {
      std::printf("  %5u  %-28s 0x%X  %s\n", row.id, row.name, row.value, row.help);
    } else {
      std::printf("  %5u  %-28s %s\n", row.id, row.name, row.help);
    }
  }
  std::printf("\n");
}

}  // namespace

int ReferenceCommand::Execute() const {
  std::vector<uint32_t> ids;
  for (const std::string& name : classes) {
    const uint32_t id = ClassIdByName(name);
    if (!id) {
      PrintError("there is no class \"" + name + "\"");
      return kExitUsage;
    }
    if (!PlayerClasses().tables[id]) {
      PrintError(std::string("the class ") + FactsOfClass(id).name + " isn't part of this player yet");
      return kExitError;
    }
    ids.push_back(id);
  }
  if (ids.empty()) {
    for (uint32_t id = 1; id <= kClassCount; ++id) {
      if (PlayerClasses().tables[id]) ids.push_back(id);
    }
  }
  nlohmann::ordered_json all = nlohmann::ordered_json::array();
  for (const uint32_t id : ids) {
    if (json) {
      all.push_back(ToJson(*PlayerClasses().tables[id]));
    } else {
      Print(*PlayerClasses().tables[id]);
    }
  }
  if (json) std::printf("%s\n", all.dump(2).c_str());
  return kExitOk;
}

}  // namespace vl

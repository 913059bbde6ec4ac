// The runtime classes of the network.
#pragma once

#include "interpreter/class_table.h"

namespace vl {

class VexObject;

extern const ClassTable kVexClass;
extern const ClassTable kVexPlayerClass;
extern const ClassTable kVexChannelClass;
extern const ClassTable kVexUserClass;
extern const ClassTable kVexServerClass;
extern const ClassTable kVexConnectionClass;
extern const ClassTable kVexSessionClass;
extern const ClassTable kVexSocketClass;
extern const ClassTable kVexStatsClass;

void RegisterNetClasses(ClassRegistry& registry);

// The player that a channel belongs to.
VexObject* PlayerOfChannel(VexObject& channel);

}  // namespace vl

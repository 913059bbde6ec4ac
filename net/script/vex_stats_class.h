// CIVexStats: the runtime class VexStats, a copy of the statistics of a network object.
#pragma once

#include "interpreter/interpretor.h"
#include "net/vex_stats.h"

namespace vl {

class CIVexStats : public CIBaseClassImpl {
 public:
  explicit CIVexStats(CInterpretor& interpreter)
      : CIBaseClassImpl(interpreter, CLASS_VEXSTATS, Listing::Listed), stats(interpreter.NowMs()) {}

  VexStats stats;
};

}  // namespace vl

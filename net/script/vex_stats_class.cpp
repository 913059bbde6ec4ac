#include "net/script/vex_stats_class.h"

#include <algorithm>

#include "net/script/vex_classes.h"

namespace vl {

namespace {

using Self = CIVexStats;

float Average(uint64_t bytes, uint64_t packets) {
  return packets == 0 ? 0.0f : static_cast<float>(bytes) / static_cast<float>(packets);
}

// The value of one getter, of the copy and the time of the call.
template <auto Value>
void Give(CIBaseClassImpl& object) {
  auto& self = static_cast<Self&>(object);
  const auto value = Value(self.stats, self.interpreter.NowMs());
  if constexpr (std::is_same_v<decltype(Value(self.stats, 0u)), float>) {
    self.interpreter.GetResult().SetFloat(static_cast<double>(value));
  } else {
    self.interpreter.GetResult().SetInt(static_cast<int32_t>(value));
  }
}

#define VL_STAT(expression) \
  &Give<+[]([[maybe_unused]] const VexStats& s, [[maybe_unused]] uint32_t now) { return expression; }>

constexpr MemberRow Get(uint16_t id, const char* name, MemberFunction function, const char* help) {
  return {id, name, MemberKind::Member, function, 0, 0, help};
}

constexpr MemberRow kRows[] = {
    Get(1, "GetInPacketCount", VL_STAT(s.inPackets), "receives so far"),
    Get(2, "GetOutPacketCount", VL_STAT(s.outPackets), "sends so far"),
    Get(3, "GetPacketCount", VL_STAT(s.inPackets + s.outPackets), "both"),
    Get(4, "GetInBytes", VL_STAT(s.inBytes), "bytes received"),
    Get(5, "GetOutBytes", VL_STAT(s.outBytes), "bytes sent"),
    Get(6, "GetTotalBytes", VL_STAT(s.inBytes + s.outBytes), "both"),
    Get(7, "GetLastInPacketSize", VL_STAT(s.lastInSize), "bytes of the last receive"),
    Get(8, "GetLastOutPacketSize", VL_STAT(s.lastOutSize), "bytes of the last send"),
    Get(9, "GetLastPacketSize", VL_STAT(s.lastDirection == 1 ? s.lastInSize : s.lastOutSize),
        "of the later of the two"),
    Get(10, "GetBiggestInPacket", VL_STAT(s.biggestIn), "bytes; -1 without any"),
    Get(11, "GetBiggestOutPacket", VL_STAT(s.biggestOut), "bytes; -1 without any"),
    Get(12, "GetBiggestPacket", VL_STAT(std::max(s.biggestIn, s.biggestOut)), "the larger of the two"),
    Get(13, "GetSmallestInPacket", VL_STAT(s.smallestIn), "bytes; -1 without any"),
    Get(14, "GetSmallestOutPacket", VL_STAT(s.smallestOut), "bytes; -1 without any"),
    Get(15, "GetSmallestPacket", VL_STAT(std::min(s.smallestIn, s.smallestOut)), "the smaller of the two"),
    Get(16, "GetInThroughput", VL_STAT(s.InThroughput(now)), "bytes a second since the start"),
    Get(17, "GetOutThroughput", VL_STAT(s.OutThroughput(now)), "bytes a second since the start"),
    Get(18, "GetThroughput", VL_STAT(s.Throughput(now)), "both"),
    Get(19, "GetHighestInThroughput", VL_STAT(s.highestIn), "of all readings; -1 without any"),
    Get(20, "GetHighestOutThroughput", VL_STAT(s.highestOut), "of all readings; -1 without any"),
    Get(21, "GetHighestThroughput", VL_STAT(s.highestOut), "as GetHighestOutThroughput"),
    Get(22, "GetLowestInThroughput", VL_STAT(s.lowestIn), "of all readings; -1 without any"),
    Get(23, "GetLowestOutThroughput", VL_STAT(s.lowestOut), "of all readings; -1 without any"),
    Get(24, "GetLowestThroughput", VL_STAT(s.lowestOut), "as GetLowestOutThroughput"),
    Get(25, "GetLastInThroughputReading", VL_STAT(s.lastInThroughput), "bytes a second of the last full second"),
    Get(26, "GetLastOutThroughputReading", VL_STAT(s.lastOutThroughput), "bytes a second of the last full second"),
    Get(27, "GetLastThroughputReading", VL_STAT(s.lastInThroughput + s.lastOutThroughput), "both"),
    Get(28, "GetCurrentInThroughputReading", VL_STAT(s.CurrentIn(now)), "bytes a second since the last reading"),
    Get(29, "GetCurrentOutThroughputReading", VL_STAT(s.CurrentOut(now)), "bytes a second since the last reading"),
    Get(30, "GetCurrentThroughputReading", VL_STAT(s.CurrentIn(now) + s.CurrentOut(now)), "both"),
    Get(31, "GetRuntime", VL_STAT(static_cast<float>((now - s.started) / 1000)), "whole seconds since the start"),
    Get(32, "GetAverageInPacketSize", VL_STAT(Average(s.inBytes, s.inPackets)), "bytes a receive"),
    Get(33, "GetAverageOutPacketSize", VL_STAT(Average(s.outBytes, s.outPackets)), "bytes a send"),
    Get(34, "GetAveragePacketSize", VL_STAT(Average(s.inBytes + s.outBytes, uint64_t{s.inPackets} + s.outPackets)),
        "bytes a packet"),
};

#undef VL_STAT

}  // namespace

const ClassTable kVexStatsClass = {CLASS_VEXSTATS, kRows, &CreateObject<CIVexStats>,
                                   "A copy of what went through a network object until GetStats was called"};

}  // namespace vl

// VexStats: what went through a network object. Bytes, milliseconds; throughputs in bytes per second. -1: none yet.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace vl {

struct VexStats {
  explicit VexStats(uint32_t nowMs) : started(nowMs), lastReading(nowMs) {}

  // One receive or one send.
  void AddIn(size_t bytes);
  void AddOut(size_t bytes);
  // Takes a reading when one is due, every second.
  void Read(uint32_t nowMs);

  float InThroughput(uint32_t nowMs) const { return Rate(inBytes, nowMs - started); }
  float OutThroughput(uint32_t nowMs) const { return Rate(outBytes, nowMs - started); }
  float Throughput(uint32_t nowMs) const { return Rate(inBytes + outBytes, nowMs - started); }
  float CurrentIn(uint32_t nowMs) const { return Rate(inSinceReading, nowMs - lastReading); }
  float CurrentOut(uint32_t nowMs) const { return Rate(outSinceReading, nowMs - lastReading); }
  // Bytes by the whole seconds of a time; 0 when there are none.
  static float Rate(uint64_t bytes, uint32_t ms);

  uint32_t started;
  uint32_t lastReading;
  uint32_t readingNumber = 1;
  uint64_t inSinceReading = 0, outSinceReading = 0;
  uint32_t lastInSize = 0, lastOutSize = 0;
  uint32_t lastInThroughput = 0, lastOutThroughput = 0;
  uint32_t inPackets = 0, outPackets = 0;
  int32_t lastDirection = -1;  // 1 in, 2 out
  uint64_t inBytes = 0, outBytes = 0;
  int64_t biggestIn = -1, smallestIn = -1, biggestOut = -1, smallestOut = -1;
  int64_t highestIn = -1, lowestIn = -1, highestOut = -1, lowestOut = -1;
};

// An object's own record and those of its parents.
class VexTraffic {
 public:
  VexTraffic(VexStats* own, VexStats* a = nullptr, VexStats* b = nullptr, VexStats* c = nullptr)
      : chain_{own, a, b, c} {}
  void In(size_t bytes) const {
    for (VexStats* s : chain_) {
      if (s) s->AddIn(bytes);
    }
  }
  void Out(size_t bytes) const {
    for (VexStats* s : chain_) {
      if (s) s->AddOut(bytes);
    }
  }

 private:
  std::array<VexStats*, 4> chain_;
};

}  // namespace vl

#include "net/vex_stats.h"

namespace vl {

namespace {

void Widen(int64_t& biggest, int64_t& smallest, int64_t value) {
  if (biggest == -1 || value > biggest) biggest = value;
  if (smallest == -1 || value < smallest) smallest = value;
}

}  // namespace

void VexStats::AddIn(size_t bytes) {
  lastInSize = static_cast<uint32_t>(bytes);
  lastDirection = 1;
  ++inPackets;
  inBytes += bytes;
  inSinceReading += bytes;
  Widen(biggestIn, smallestIn, static_cast<int64_t>(bytes));
}

void VexStats::AddOut(size_t bytes) {
  lastOutSize = static_cast<uint32_t>(bytes);
  lastDirection = 2;
  ++outPackets;
  outBytes += bytes;
  outSinceReading += bytes;
  Widen(biggestOut, smallestOut, static_cast<int64_t>(bytes));
}

float VexStats::Rate(uint64_t bytes, uint32_t ms) {
  const uint32_t seconds = ms / 1000;
  return seconds == 0 ? 0.0f : static_cast<float>(bytes) / static_cast<float>(seconds);
}

void VexStats::Read(uint32_t nowMs) {
  if (static_cast<uint64_t>(nowMs - started) <= static_cast<uint64_t>(readingNumber) * 1000) return;
  // A reading that comes late covers more than a second; one that comes soon after it covers less, by the exact time.
  const uint32_t passed = nowMs - lastReading;
  lastInThroughput = passed ? static_cast<uint32_t>(inSinceReading * 1000 / passed) : 0;
  lastOutThroughput = passed ? static_cast<uint32_t>(outSinceReading * 1000 / passed) : 0;
  inSinceReading = outSinceReading = 0;
  Widen(highestIn, lowestIn, lastInThroughput);
  Widen(highestOut, lowestOut, lastOutThroughput);
  ++readingNumber;
  lastReading = nowMs;
}

}  // namespace vl

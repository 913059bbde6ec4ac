// The two ends of a measurement, in two processes on one machine: a server, which runs until it is killed, and a
// client, which gives its rate a second. Each peer has both.
#pragma once

#include <time.h>

#include <cstddef>
#include <cstdint>
#include <string>

enum class Case {
  RoundTrip,  // a text to the server and back, one at a time
  Stream,     // texts to the server as fast as it takes them
  Blast,      // datagrams to the server, of which it answers the last of each burst
  Crowd,      // round trips of kCrowd clients at once
};

constexpr size_t kTextBytes = 64;
constexpr int kCrowd = 200;
constexpr int kBurst = 50;
// Texts of a stream between two answers of the server.
constexpr int kStreamPart = 10000;
constexpr const char* kServerAddress = "127.0.0.1";
constexpr const char* kClientAddress = "127.0.0.2";  // both may then have the same port of datagrams

struct Ends {
  const char* peer;
  void (*serve)(Case what, uint16_t port);
  double (*measure)(Case what, uint16_t port, double seconds);
};

extern const Ends kVorlaneEnds;
extern const Ends kPlainEnds;
extern const Ends kEnetEnds;

inline int ClientsOf(Case what) { return what == Case::Crowd ? kCrowd : 1; }

extern clockid_t serverClock;  // processor time of the server's process

// Counts from the end of the warming up. The rate is by the processor time of both ends: on one core, of which nobody
// else takes anything, that is the time that passes.
class Rate {
 public:
  explicit Rate(double seconds) : seconds_(seconds), start_(Now()) {}
  // `count` more; false when the time is over.
  bool Add(uint64_t count) {
    if (isWarm_) count_ += count;
    passed_ = Now() - start_;
    if (!isWarm_ && passed_ > kWarmUpSeconds) {
      isWarm_ = true;
      start_ += passed_;
      return true;
    }
    return !isWarm_ || passed_ < seconds_;
  }
  double ASecond() const { return passed_ > 0 ? static_cast<double>(count_) / passed_ : 0; }

 private:
  static constexpr double kWarmUpSeconds = 0.1;
  static double Now() {
    double sum = 0;
    for (const clockid_t clock : {clockid_t{CLOCK_PROCESS_CPUTIME_ID}, serverClock}) {
      timespec time{};
      clock_gettime(clock, &time);
      sum += static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
    }
    return sum;
  }
  double seconds_;
  double start_;
  double passed_ = 0;
  uint64_t count_ = 0;
  bool isWarm_ = false;
};

inline std::string SomeText() { return std::string(kTextBytes, 'v'); }

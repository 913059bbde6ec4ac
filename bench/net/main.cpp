// vl_bench_net PEER CASE [SECONDS]: one measurement; prints the rate a second. bench/net/run starts it and compares.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "bench/net/ends.h"

clockid_t serverClock = CLOCK_PROCESS_CPUTIME_ID;

int main(int argc, char** argv) {
  constexpr const char* kCases[] = {"round_trip", "stream", "blast", "crowd"};
  const Ends* ends = nullptr;
  for (const Ends* candidate : {&kVorlaneEnds, &kPlainEnds, &kEnetEnds}) {
    if (argc > 2 && std::strcmp(argv[1], candidate->peer) == 0) ends = candidate;
  }
  int what = -1;
  for (int i = 0; i < 4; ++i) {
    if (argc > 2 && std::strcmp(argv[2], kCases[i]) == 0) what = i;
  }
  if (!ends || what < 0) {
    std::fprintf(stderr, "usage: vl_bench_net vorlane|plain|enet round_trip|stream|blast|crowd [SECONDS]\n");
    return 64;
  }
  const double seconds = argc > 3 ? std::atof(argv[3]) : 1;
  const auto port = static_cast<uint16_t>(20000 + getpid() % 20000);
  const pid_t server = fork();
  if (server == 0) {
    ends->serve(static_cast<Case>(what), port);
    _exit(1);
  }
  clock_getcpuclockid(server, &serverClock);
  usleep(100000);
  std::printf("%.0f\n", ends->measure(static_cast<Case>(what), port, seconds));
  kill(server, SIGKILL);
  waitpid(server, nullptr, 0);
  return 0;
}

// What every benchmark needs: processor time of this process (the machine
// running them is shared, so wall time would measure the neighbours), the
// best of a few runs, the one-line report of a goal, and a stop on an
// engine error in a peer loop.
#pragma once

#include <sqlite3.h>
#include <time.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>

namespace bench {

inline double CpuSeconds() {
  timespec t;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
}

inline double Seconds(const std::function<void()>& work) {
  const double start = CpuSeconds();
  work();
  return CpuSeconds() - start;
}

inline double Best(int runs, const std::function<void()>& work) {
  double best = 1e300;
  for (int i = 0; i < runs; ++i) best = std::min(best, Seconds(work));
  return best;
}

// "ratio NAME MEASURED goal<=LIMIT"; op is "<=" or ">=".
inline void Report(const char* name, double measured, const char* op, double limit) {
  std::printf("ratio %s %.4f goal%s%g\n", name, measured, op, limit);
  std::fflush(stdout);
}

inline void CheckSqlite(int rc, sqlite3* db) {
  if (rc != SQLITE_OK && rc != SQLITE_DONE && rc != SQLITE_ROW) {
    std::fprintf(stderr, "sqlite: %s\n", sqlite3_errmsg(db));
    std::exit(1);
  }
}

}  // namespace bench

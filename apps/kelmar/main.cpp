// kelmar: the terminal application of the kit.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

#include "apps/kelmar/commands.h"
#include "apps/kelmar/querycmd.h"

namespace {

const char* kUsage =
    "usage: kelmar [--version] [--help]\n"
    "       kelmar demo --db FILE [--rows N]\n"
    "                                     create the sample database (when missing) and list its tables;\n"
    "                                     --rows adds the benchmark table BENCH_ROWS of N rows\n"
    "       kelmar sql --db FILE \"SQL\"    run one statement and print its rows as a table\n"
    "       kelmar query --db FILE --table T [options]\n"
    "                                     compose a query from a table and print its rows and summaries\n";

// The values after "--db" and "--rows" among the arguments from `first` on,
// and the one other argument (the statement), if any.
bool ParseDbArgs(int argc, char** argv, int first, std::string& db, int& rows, std::string& rest, int& extra) {
  extra = 0;
  for (int i = first; i < argc; ++i) {
    if (std::strcmp(argv[i], "--db") == 0) {
      if (i + 1 >= argc) return false;
      db = argv[++i];
    } else if (std::strcmp(argv[i], "--rows") == 0) {
      if (i + 1 >= argc) return false;
      char* end = nullptr;
      long n = std::strtol(argv[++i], &end, 10);
      if (*end != '\0' || n < 1 || n > 100000000) return false;
      rows = static_cast<int>(n);
    } else {
      rest = argv[i];
      ++extra;
    }
  }
  return !db.empty();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 1 && std::strcmp(argv[1], "--version") == 0) {
    std::printf("kelmar %s\n", KELMAR_VERSION);
    return 0;
  }
  if (argc > 1 && (std::strcmp(argv[1], "demo") == 0 || std::strcmp(argv[1], "sql") == 0)) {
    bool demo = std::strcmp(argv[1], "demo") == 0;
    std::string db, sql;
    int extra = 0, rows = 0;
    if (!ParseDbArgs(argc, argv, 2, db, rows, sql, extra) || extra != (demo ? 0 : 1) || (!demo && rows != 0)) {
      std::fputs(kUsage, stderr);
      return 2;
    }
    return demo ? RunDemo(db, rows, std::cout, std::cerr) : RunSql(db, sql, std::cout, std::cerr);
  }
  if (argc > 1 && std::strcmp(argv[1], "query") == 0)
    return RunQueryCommand(std::vector<std::string>(argv + 2, argv + argc), std::cout, std::cerr);
  bool help = argc == 1 || std::strcmp(argv[1], "--help") == 0;
  std::fputs(kUsage, help ? stdout : stderr);
  return help ? 0 : 2;
}

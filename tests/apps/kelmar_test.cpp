// The command line of the terminal application, run as a separate process
// from the build tree (apps/kelmar/kelmar beside tests/).
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;

fs::path Kelmar() { return fs::read_symlink("/proc/self/exe").parent_path().parent_path() / "apps/kelmar/kelmar"; }

struct Outcome {
  int code = -1;
  std::string out;  // stdout and stderr together
};

std::string Quote(const std::string& s) {
  std::string q = "'";
  for (char c : s) q += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return q + "'";
}

Outcome Kelmar(const std::string& args) {
  Outcome run;
  std::string command = Quote(Kelmar().string()) + " " + args + " 2>&1";
  FILE* pipe = popen(command.c_str(), "r");
  if (!pipe) return run;
  std::array<char, 4096> buf;
  size_t n;
  while ((n = fread(buf.data(), 1, buf.size(), pipe)) > 0) run.out.append(buf.data(), n);
  int status = pclose(pipe);
  run.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return run;
}

class KelmarApp : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!fs::exists(Kelmar())) GTEST_SKIP() << "the kelmar executable is not built";
    dir_ = fs::temp_directory_path() / ("kelmar_app_" + std::to_string(getpid()));
    fs::create_directories(dir_);
    db_ = (dir_ / "demo.db").string();
  }
  void TearDown() override {
    std::error_code ec;
    fs::remove_all(dir_, ec);
  }
  fs::path dir_;
  std::string db_;
};

TEST_F(KelmarApp, VersionHelpAndBadArguments) {
  Outcome version = Kelmar("--version");
  EXPECT_EQ(version.code, 0);
  EXPECT_EQ(version.out.rfind("kelmar ", 0), 0u);
  Outcome help = Kelmar("--help");
  EXPECT_EQ(help.code, 0);
  EXPECT_NE(help.out.find("kelmar sql --db FILE"), std::string::npos);
  EXPECT_EQ(Kelmar("sql --db").code, 2);
  EXPECT_EQ(Kelmar("demo").code, 2);
  EXPECT_EQ(Kelmar("sql --db " + Quote(db_)).code, 2);
  EXPECT_EQ(Kelmar("frobnicate").code, 2);
}

TEST_F(KelmarApp, DemoCreatesTheSampleDatabaseOnce) {
  Outcome first = Kelmar("demo --db " + Quote(db_));
  ASSERT_EQ(first.code, 0) << first.out;
  EXPECT_NE(first.out.find("DOCS"), std::string::npos);
  EXPECT_NE(first.out.find("DOC_LINES"), std::string::npos);
  Outcome second = Kelmar("demo --db " + Quote(db_));
  EXPECT_EQ(second.code, 0);
  EXPECT_EQ(second.out, first.out);
}

TEST_F(KelmarApp, DemoRowsAddsTheBenchmarkTable) {
  Outcome run = Kelmar("demo --db " + Quote(db_) + " --rows 250");
  ASSERT_EQ(run.code, 0) << run.out;
  EXPECT_NE(run.out.find("BENCH_ROWS 250 rows"), std::string::npos) << run.out;
  Outcome count = Kelmar("sql --db " + Quote(db_) + " " + Quote("SELECT COUNT(*) AS N FROM BENCH_ROWS"));
  EXPECT_NE(count.out.find("250"), std::string::npos) << count.out;
  EXPECT_EQ(Kelmar("demo --db " + Quote(db_) + " --rows 0").code, 2);
  EXPECT_EQ(Kelmar("demo --db " + Quote(db_) + " --rows x").code, 2);
  EXPECT_EQ(Kelmar("sql --db " + Quote(db_) + " --rows 5 " + Quote("SELECT 1 FROM DUAL")).code, 2);
}

TEST_F(KelmarApp, SqlPrintsAnAlignedTable) {
  ASSERT_EQ(Kelmar("demo --db " + Quote(db_)).code, 0);
  Outcome r = Kelmar("sql --db " + Quote(db_) + " " +
                 Quote("SELECT ID, NAME FROM PARTNERS WHERE ID IN (1, 2, 10) ORDER BY ID"));
  ASSERT_EQ(r.code, 0) << r.out;
  // Header, rule, three rows and the count; the separators line up.
  std::vector<std::string> lines;
  size_t start = 0;
  for (size_t nl; (nl = r.out.find('\n', start)) != std::string::npos; start = nl + 1)
    lines.push_back(r.out.substr(start, nl - start));
  ASSERT_EQ(lines.size(), 6u) << r.out;
  EXPECT_EQ(lines[0].substr(0, 7), "ID | NA");
  EXPECT_EQ(lines[1].substr(0, 5), "---+-");
  EXPECT_EQ(lines[2].substr(0, 5), " 1 | ");
  EXPECT_EQ(lines[4].substr(0, 5), "10 | ");
  EXPECT_EQ(lines[5], "(3 rows)");
  Outcome count = Kelmar("sql --db " + Quote(db_) + " " + Quote("SELECT COUNT(*) AS N FROM DOCS WHERE 1 = 0"));
  EXPECT_NE(count.out.find("(1 row)"), std::string::npos);
}

TEST_F(KelmarApp, SqlChangesAndErrors) {
  ASSERT_EQ(Kelmar("demo --db " + Quote(db_)).code, 0);
  Outcome update = Kelmar("sql --db " + Quote(db_) + " " + Quote("UPDATE GOODS SET NAME = 'x' WHERE ID <= 2"));
  EXPECT_EQ(update.code, 0);
  EXPECT_EQ(update.out, "2 rows affected\n");
  Outcome missing = Kelmar("sql --db " + Quote(db_) + " " + Quote("SELECT * FROM NOWHERE"));
  EXPECT_EQ(missing.code, 1);
  EXPECT_EQ(missing.out.rfind("kelmar: ORA-00942: ", 0), 0u) << missing.out;
  Outcome params = Kelmar("sql --db " + Quote(db_) + " " + Quote("SELECT * FROM DOCS WHERE ID = :ID"));
  EXPECT_EQ(params.code, 1);
  EXPECT_NE(params.out.find(":ID"), std::string::npos);
  Outcome noFile = Kelmar("sql --db " + Quote((dir_ / "none.db").string()) + " " + Quote("SELECT 1 FROM DUAL"));
  EXPECT_EQ(noFile.code, 1);
  EXPECT_FALSE(fs::exists(dir_ / "none.db"));
}

}  // namespace

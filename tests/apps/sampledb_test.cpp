// The sample database, built on the embedded engine.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "apps/kelmar/sampledb.h"
#include "drivers/sqlite/sqlitedriver.h"

namespace {

std::unique_ptr<TDbConnection> OpenMemory() {
  RegisterSQLiteDriver();
  TDbConnectParams params;
  params.Server = u":memory:";
  std::unique_ptr<TDbConnection> db;
  EXPECT_TRUE(ConnectDb(params, db));
  return db;
}

std::vector<std::string> Column(TDbConnection& db, const String& sql) {
  std::unique_ptr<TDbStatement> s;
  std::vector<std::string> values;
  TDbStatus status = db.Prepare(sql, s);
  if (status) status = s->Execute();
  bool row = true;
  while (status && (status = s->Fetch(row)) && row) values.emplace_back(s->AsUtf8(0));
  EXPECT_TRUE(status) << status.Message() << " in " << sql;
  return values;
}

std::string One(TDbConnection& db, const String& sql) {
  const auto values = Column(db, sql);
  return values.empty() ? std::string() : values[0];
}

}  // namespace

TEST(SampleDatabase, HoldsTheBusinessTablesWithMasterAndDetail) {
  auto db = OpenMemory();
  ASSERT_TRUE(CreateSampleDatabase(*db));
  EXPECT_EQ(One(*db, u"SELECT COUNT(*) FROM ACCOUNTS"), "60");
  EXPECT_EQ(One(*db, u"SELECT COUNT(*) FROM PARTNERS"), "300");
  EXPECT_EQ(One(*db, u"SELECT COUNT(*) FROM GOODS"), "400");
  EXPECT_EQ(One(*db, u"SELECT COUNT(*) FROM DOCS"), "1000");
  EXPECT_GT(std::stoi(One(*db, u"SELECT COUNT(*) FROM DOC_LINES")), 2000);
  // Account codes are six digits each.
  EXPECT_EQ(One(*db, u"SELECT COUNT(*) FROM ACCOUNTS WHERE LENGTH(CODE) <> 6 OR CODE GLOB '*[^0-9]*'"), "0");
  // Every line belongs to a document and every total adds up its lines.
  EXPECT_EQ(One(*db, u"SELECT COUNT(*) FROM DOC_LINES L WHERE NOT EXISTS (SELECT 1 FROM DOCS D WHERE D.ID = L.DOC_ID)"),
            "0");
  EXPECT_EQ(One(*db, u"SELECT COUNT(*) FROM DOCS D WHERE ABS(D.TOTAL - (SELECT SUM(AMOUNT) FROM DOC_LINES L "
                     u"WHERE L.DOC_ID = D.ID)) > 0.005"),
            "0");
  // Romanian and Russian names, which the Unicode UPPER folds.
  EXPECT_NE(One(*db, u"SELECT COUNT(*) FROM GOODS WHERE UPPER(NAME) LIKE '%BRÂNZĂ%'"), "0");
  EXPECT_NE(One(*db, u"SELECT COUNT(*) FROM GOODS WHERE UPPER(NAME) LIKE '%МЁД%'"), "0");
  EXPECT_NE(One(*db, u"SELECT COUNT(*) FROM PARTNERS WHERE NAME LIKE '%Ț%' OR NAME LIKE '%Ș%'"), "0");
  EXPECT_EQ(One(*db, u"SELECT MIN(TO_CHAR(DOC_DATE, 'YYYY')) FROM DOCS"), "2024");
  EXPECT_EQ(One(*db, u"SELECT ID_TMDB_CM.NEXTVAL FROM DUAL"), "100000");
}

TEST(SampleDatabase, IsTheSameOnEveryRunAndKeptWhenPresent) {
  auto first = OpenMemory();
  auto second = OpenMemory();
  ASSERT_TRUE(CreateSampleDatabase(*first));
  ASSERT_TRUE(CreateSampleDatabase(*second));
  const String digest = u"SELECT ID || NAME || CITY || FISCAL_CODE FROM PARTNERS ORDER BY ID";
  EXPECT_EQ(Column(*first, digest), Column(*second, digest));
  const String lines = u"SELECT DOC_ID || ':' || GOODS_ID || ':' || QTY || ':' || AMOUNT FROM DOC_LINES ORDER BY ID";
  EXPECT_EQ(Column(*first, lines), Column(*second, lines));
  // A second call finds the tables and leaves them as they are.
  ASSERT_TRUE(first->ExecuteDirect(u"DELETE FROM DOC_LINES WHERE DOC_ID = 1"));
  ASSERT_TRUE(CreateSampleDatabase(*first));
  EXPECT_EQ(One(*first, u"SELECT COUNT(*) FROM DOC_LINES WHERE DOC_ID = 1"), "0");
}

TEST(SampleDatabase, BenchmarkRowsHaveSevenColumnsAndTheAskedCount) {
  auto db = OpenMemory();
  ASSERT_TRUE(CreateSampleDatabase(*db, 250));
  EXPECT_EQ(One(*db, u"SELECT COUNT(*) FROM BENCH_ROWS"), "250");
  std::unique_ptr<TDbStatement> s;
  ASSERT_TRUE(db->Prepare(u"SELECT * FROM BENCH_ROWS WHERE ID = 123", s));
  ASSERT_TRUE(s->Execute());
  ASSERT_EQ(s->ColumnCount(), 7);
  const TDbColumnType expected[] = {dcInteger, dcText, dcText, dcFloat, dcInteger, dcDateTime, dcText};
  for (int i = 0; i < 7; ++i) EXPECT_EQ(s->Column(i).Type, expected[i]) << i;
  bool row = false;
  ASSERT_TRUE(s->Fetch(row));
  ASSERT_TRUE(row);
  EXPECT_EQ(String::FromUtf8(s->AsUtf8(6)).Length(), 40);
  EXPECT_EQ(s->AsUtf8(1), "R123");
  // Asking for another count rebuilds the table (no statement may still read it).
  s.reset();
  ASSERT_TRUE(CreateSampleDatabase(*db, 100));
  EXPECT_EQ(One(*db, u"SELECT COUNT(*) FROM BENCH_ROWS"), "100");
}

#include "tests/drivers/sqlite/enginefixture.h"

class ErrorsTest : public EngineTest {
 protected:
  void SetUp() override {
    EngineTest::SetUp();
    Exec(u"CREATE TABLE parent (id NUMBER(10) PRIMARY KEY, code VARCHAR2(5) UNIQUE)");
    Exec(u"CREATE TABLE child (id NUMBER(10) PRIMARY KEY, parent_id NUMBER(10) REFERENCES parent (id), "
         u"name VARCHAR2(20) NOT NULL, qty NUMBER(10) CONSTRAINT qty_positive CHECK (qty > 0))");
    Exec(u"INSERT INTO parent VALUES (1, 'A')");
    Exec(u"INSERT INTO child VALUES (1, 1, 'x', 1)");
  }
};

TEST_F(ErrorsTest, ConstraintsMapToOracleNumbers) {
  TDbStatus status = Run(u"INSERT INTO parent VALUES (2, 'A')");
  EXPECT_EQ(status.OraCode, 1);
  EXPECT_EQ(status.Message().ToUtf8(), "ORA-00001: unique constraint (PARENT.CODE) violated (UNIQUE constraint failed: parent.code)");
  EXPECT_EQ(ErrorOf(u"INSERT INTO parent VALUES (1, 'B')"), 1);
  status = Run(u"INSERT INTO child (id, parent_id, qty) VALUES (2, 1, 1)");
  EXPECT_EQ(status.OraCode, 1400);
  EXPECT_NE(status.Text.ToUtf8().find("cannot insert NULL into (\"CHILD\".\"NAME\")"), std::string::npos);
  EXPECT_EQ(ErrorOf(u"INSERT INTO child VALUES (3, 1, 'y', 0)"), 2290);
  EXPECT_EQ(ErrorOf(u"INSERT INTO child VALUES (4, 9, 'y', 1)"), 2291);
  EXPECT_EQ(ErrorOf(u"DELETE FROM parent WHERE id = 1"), 2292);
  EXPECT_EQ(Value(u"SELECT COUNT(*) FROM child"), "1");
}

TEST_F(ErrorsTest, NamesAndSyntaxMapToOracleNumbers) {
  TDbStatus status = Run(u"SELECT nope FROM parent");
  EXPECT_EQ(status.OraCode, 904);
  EXPECT_EQ(status.Message().ToUtf8(), "ORA-00904: \"NOPE\": invalid identifier (no such column: nope)");
  EXPECT_EQ(ErrorOf(u"SELECT NO_SUCH_FUNCTION(1) FROM dual"), 904);
  EXPECT_EQ(ErrorOf(u"SELECT * FROM nowhere"), 942);
  EXPECT_EQ(ErrorOf(u"SELEC * FROM parent"), 900);
  EXPECT_EQ(ErrorOf(u"SELECT FROM parent"), 936);
  EXPECT_EQ(ErrorOf(u"SELECT * FROM parent WHERE id = 1 1"), 933);
  EXPECT_EQ(ErrorOf(u""), 900);
  EXPECT_EQ(ErrorOf(u"SELECT 'open FROM parent"), 1756);
  EXPECT_EQ(ErrorOf(u"SELECT \"open FROM parent"), 1740);
  EXPECT_EQ(ErrorOf(u"SELECT @x FROM parent"), 911);
  EXPECT_EQ(ErrorOf(u"SELECT 1 FROM parent /* open"), 1742);
  EXPECT_EQ(ErrorOf(u"CREATE TABLE parent (a NUMBER)"), 955);
  EXPECT_EQ(ErrorOf(u"INSERT INTO parent (id, code) VALUES (5)"), 947);
}

TEST_F(ErrorsTest, ValuesAndSequencesMapToOracleNumbers) {
  EXPECT_EQ(ErrorOf(u"SELECT TO_NUMBER('1x') FROM dual"), 1722);
  EXPECT_EQ(ErrorOf(u"SELECT x.NEXTVAL FROM dual"), 2289);
  EXPECT_EQ(ErrorOf(u"CREATE SEQUENCE s INCREMENT BY 0"), 4002);
  EXPECT_EQ(ErrorOf(u"CREATE SEQUENCE s CYCLE"), 4002);
  Exec(u"CREATE SEQUENCE s");
  EXPECT_EQ(ErrorOf(u"SELECT s.CURRVAL FROM dual"), 8002);
  EXPECT_EQ(ErrorOf(u"SELECT DECODE(1, 2) FROM dual"), 938);
}

TEST(ErrorsOfFiles, ABusyDatabaseIsResourceBusy) {
  RegisterSQLiteDriver();
  TempDatabase file;
  auto first = EngineTest::Connect(file.Path());
  auto second = EngineTest::Connect(file.Path());
  ASSERT_TRUE(first->ExecuteDirect(u"CREATE TABLE t (a NUMBER(10))"));
  ASSERT_TRUE(first->StartTransaction());
  ASSERT_TRUE(first->ExecuteDirect(u"INSERT INTO t VALUES (1)"));
  ASSERT_TRUE(second->ExecuteDirect(u"PRAGMA busy_timeout = 50"));
  EXPECT_EQ(second->ExecuteDirect(u"INSERT INTO t VALUES (2)").OraCode, 54);
  ASSERT_TRUE(first->Commit());
  EXPECT_TRUE(second->ExecuteDirect(u"INSERT INTO t VALUES (2)"));
}

TEST(ErrorsOfFiles, AFileThatIsNoDatabaseFailsClearly) {
  RegisterSQLiteDriver();
  TempDatabase file;
  {
    std::FILE* f = std::fopen(file.Path().ToUtf8().c_str(), "wb");
    ASSERT_NE(f, nullptr);
    std::fputs("this is not a database, just text that is long enough to be read as a header block", f);
    std::fclose(f);
  }
  TDbConnectParams params;
  params.Server = file.Path();
  std::unique_ptr<TDbConnection> connection;
  TDbStatus status = ConnectDb(params, connection);
  if (status) status = connection->ExecuteDirect(u"SELECT * FROM t");
  EXPECT_EQ(status.OraCode, 1578);
}

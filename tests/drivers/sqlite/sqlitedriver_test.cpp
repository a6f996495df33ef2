#include <ctime>

#include "drivers/sqlite/datetext.h"
#include "platform/rtl/sysutils.h"
#include "tests/drivers/sqlite/enginefixture.h"

TEST_F(EngineTest, ReportsItsVersionAndRunsOnAMemoryDatabase) {
  EXPECT_EQ(db->ServerVersion().ToUtf8().rfind("SQLite 3.", 0), 0u);
  Exec(u"CREATE TABLE t (a NUMBER(10))");
  Exec(u"INSERT INTO t VALUES (1)");
  EXPECT_EQ(Value(u"SELECT COUNT(*) FROM t"), "1");
  // Each ":memory:" connection is a database of its own.
  auto other = Connect(u":memory:");
  EXPECT_EQ(Rows(*other, u"SELECT * FROM t")[0][0].substr(0, 9), "ORA-00942");
}

TEST_F(EngineTest, ParametersAreOnePerNameWhateverTheCase) {
  std::unique_ptr<TDbStatement> s;
  ASSERT_TRUE(db->Prepare(u"SELECT :id + :ID * 10 + :Id * 100, :OLD_NAME || :\"Quoted\" FROM dual", s));
  ASSERT_EQ(s->ParamCount(), 3);
  EXPECT_EQ(s->ParamName(0), u"id");
  EXPECT_EQ(s->ParamName(1), u"OLD_NAME");
  EXPECT_EQ(s->ParamName(2), u"Quoted");
  ASSERT_TRUE(s->Bind(u"ID", TDbValue::Integer(2)));
  ASSERT_TRUE(s->Bind(u"old_name", TDbValue::TextValue(u"a")));
  ASSERT_TRUE(s->Bind(u"QUOTED", TDbValue::TextValue(u"b")));
  EXPECT_EQ(s->Bind(u"missing", TDbValue::Integer(1)).OraCode, 1036);
  ASSERT_TRUE(s->Execute());
  bool row = false;
  ASSERT_TRUE(s->Fetch(row));
  ASSERT_TRUE(row);
  EXPECT_EQ(s->AsInteger(0), 222);
  EXPECT_EQ(s->AsUtf8(1), "ab");
  // Running again takes the values bound at that moment.
  ASSERT_TRUE(s->Bind(u"Id", TDbValue::Integer(1)));
  ASSERT_TRUE(s->Execute());
  ASSERT_TRUE(s->Fetch(row));
  EXPECT_EQ(s->AsInteger(0), 111);
  // Colons inside literals and comments are no parameters.
  EXPECT_EQ(Value(u"SELECT '12:30' /* :x */ FROM dual -- :y"), "12:30");
}

TEST_F(EngineTest, OracleDeclarationsAreReportedInColumns) {
  Exec(u"CREATE TABLE goods (id NUMBER(10) NOT NULL PRIMARY KEY, price NUMBER(12,2), name VARCHAR2(40), "
       u"code CHAR(3), made DATE, notes CLOB, photo BLOB, qty INTEGER, weight FLOAT, ratio NUMBER)");
  std::unique_ptr<TDbStatement> s;
  ASSERT_TRUE(db->Prepare(u"SELECT g.*, price * 2 AS double_price FROM goods g", s));
  ASSERT_TRUE(s->Execute());
  ASSERT_EQ(s->ColumnCount(), 11);
  const TDbColumn& id = s->Column(0);
  EXPECT_EQ(id.Name, u"ID");
  EXPECT_EQ(id.Type, dcInteger);
  EXPECT_EQ(id.Precision, 10);
  EXPECT_FALSE(id.Nullable);
  EXPECT_EQ(id.TableName, u"GOODS");
  EXPECT_EQ(id.OriginName, u"ID");
  EXPECT_EQ(s->Column(1).Type, dcNumber);
  EXPECT_EQ(s->Column(1).Precision, 12);
  EXPECT_EQ(s->Column(1).Scale, 2);
  EXPECT_TRUE(s->Column(1).Nullable);
  EXPECT_EQ(s->Column(2).Type, dcText);
  EXPECT_EQ(s->Column(2).Size, 40);
  EXPECT_EQ(s->Column(3).Type, dcFixedText);
  EXPECT_EQ(s->Column(3).Size, 3);
  EXPECT_EQ(s->Column(4).Type, dcDateTime);
  EXPECT_EQ(s->Column(5).Type, dcClob);
  EXPECT_EQ(s->Column(6).Type, dcBlob);
  EXPECT_EQ(s->Column(7).Type, dcInteger);
  EXPECT_EQ(s->Column(8).Type, dcFloat);
  EXPECT_EQ(s->Column(9).Type, dcFloat);
  EXPECT_EQ(s->Column(10).Name, u"DOUBLE_PRICE");
  EXPECT_TRUE(s->Column(10).TableName.IsEmpty());
}

TEST_F(EngineTest, ExpressionColumnsTakeTheKindOfTheFirstRow) {
  std::unique_ptr<TDbStatement> s;
  ASSERT_TRUE(db->Prepare(u"SELECT 7 AS n, 1.5 AS f, 'x' AS t, TO_DATE('01.02.2015', 'DD.MM.YYYY') AS d, "
                          u"NULL AS z, 1 AS \"Mixed\" FROM dual",
                          s));
  ASSERT_TRUE(s->Execute());
  EXPECT_EQ(s->Column(0).Type, dcInteger);
  EXPECT_EQ(s->Column(1).Type, dcFloat);
  EXPECT_EQ(s->Column(2).Type, dcText);
  EXPECT_EQ(s->Column(3).Type, dcDateTime);
  EXPECT_EQ(s->Column(4).Type, dcText);
  EXPECT_EQ(s->Column(5).Name, u"Mixed");
  // The row stepped ahead to learn the kinds is handed out first.
  bool row = false;
  ASSERT_TRUE(s->Fetch(row));
  ASSERT_TRUE(row);
  EXPECT_EQ(s->AsInteger(0), 7);
  EXPECT_EQ(s->Kind(3), dkDate);
  EXPECT_DOUBLE_EQ(s->AsFloat(3), 42036.0);
  EXPECT_EQ(s->Kind(4), dkNull);
  ASSERT_TRUE(s->Fetch(row));
  EXPECT_FALSE(row);
  ASSERT_TRUE(s->Fetch(row));  // past the end stays at the end
  EXPECT_FALSE(row);
}

TEST_F(EngineTest, DatesRoundTripThroughBindStorageComparisonAndFetch) {
  Exec(u"CREATE TABLE docs (id NUMBER(10), made DATE)");
  TCivilTime t;
  t.Year = 2015, t.Month = 2, t.Day = 1, t.Hour = 10, t.Minute = 20, t.Second = 30;
  const double when = CivilToDays(t);
  Exec(u"INSERT INTO docs VALUES (1, :d)", {{u"d", TDbValue::Date(when)}});
  Exec(u"INSERT INTO docs VALUES (2, TO_DATE('15.03.2015', 'DD.MM.YYYY'))");
  Exec(u"INSERT INTO docs VALUES (3, :d)", {{u"d", TDbValue::Date(-1.25)}});  // 1899-12-29 06:00
  EXPECT_EQ(Rows(u"SELECT made FROM docs ORDER BY id"),
            (TRows{{"2015-02-01 10:20:30"}, {"2015-03-15 00:00:00"}, {"1899-12-29 06:00:00"}}));
  EXPECT_EQ(Value(u"SELECT id FROM docs WHERE made > TO_DATE('01.02.2015 10:00', 'DD.MM.YYYY HH24:MI') "
                  u"AND made < TO_DATE('2015-03-01', 'YYYY-MM-DD')"),
            "1");
  EXPECT_EQ(Rows(u"SELECT id FROM docs WHERE made >= :d ORDER BY made", {{u"d", TDbValue::Date(when)}}),
            (TRows{{"1"}, {"2"}}));
  std::unique_ptr<TDbStatement> s;
  ASSERT_TRUE(Run(*db, u"SELECT made FROM docs ORDER BY id", {}, &s));
  bool row = false;
  ASSERT_TRUE(s->Fetch(row));
  EXPECT_EQ(s->Kind(0), dkDate);
  EXPECT_NEAR(s->AsFloat(0), when, 1e-9);
  EXPECT_EQ(s->AsInteger(0), 42036);
  ASSERT_TRUE(s->Fetch(row));
  ASSERT_TRUE(s->Fetch(row));
  EXPECT_NEAR(s->AsFloat(0), -1.25, 1e-9);
  // A literal in the session's format, written as it stands, still reads as a date.
  Exec(u"INSERT INTO docs VALUES (4, '15.03.2015 12:00')");
  ASSERT_TRUE(Run(*db, u"SELECT made FROM docs WHERE id = 4", {}, &s));
  ASSERT_TRUE(s->Fetch(row));
  EXPECT_DOUBLE_EQ(s->AsFloat(0), 42078.5);
}

TEST_F(EngineTest, EmptyTextBindsAsNullAsInOracle) {
  Exec(u"CREATE TABLE t (a VARCHAR2(10))");
  Exec(u"INSERT INTO t VALUES (:a)", {{u"a", TDbValue::TextValue(u"")}});
  EXPECT_EQ(Value(u"SELECT COUNT(*) FROM t WHERE a IS NULL"), "1");
}

TEST_F(EngineTest, BlobsAndUnicodeTextRoundTrip) {
  Exec(u"CREATE TABLE t (name VARCHAR2(40), photo BLOB)");
  Exec(u"INSERT INTO t VALUES (:n, :p)",
       {{u"n", TDbValue::TextValue(u"Ștefan ёлка")}, {u"p", TDbValue::Blob(std::string("\0\1\2", 3))}});
  std::unique_ptr<TDbStatement> s;
  ASSERT_TRUE(Run(*db, u"SELECT name, photo FROM t", {}, &s));
  bool row = false;
  ASSERT_TRUE(s->Fetch(row));
  EXPECT_EQ(String::FromUtf8(s->AsUtf8(0)), u"Ștefan ёлка");
  EXPECT_EQ(s->Kind(1), dkBlob);
  EXPECT_EQ(s->AsBytes(1), std::string_view("\0\1\2", 3));
}

TEST_F(EngineTest, StatementsCommitThemselvesOutsideATransaction) {
  Exec(u"CREATE TABLE t (a NUMBER(10))");
  EXPECT_FALSE(db->InTransaction());
  ASSERT_TRUE(db->StartTransaction());
  EXPECT_TRUE(db->InTransaction());
  Exec(u"INSERT INTO t VALUES (1)");
  ASSERT_TRUE(db->Rollback());
  EXPECT_FALSE(db->InTransaction());
  EXPECT_EQ(Value(u"SELECT COUNT(*) FROM t"), "0");
  ASSERT_TRUE(db->StartTransaction());
  Exec(u"INSERT INTO t VALUES (2)");
  ASSERT_TRUE(db->Commit());
  Exec(u"INSERT INTO t VALUES (3)");
  ASSERT_TRUE(db->Rollback());  // nothing open: the insert stays
  EXPECT_EQ(Rows(u"SELECT a FROM t ORDER BY a"), (TRows{{"2"}, {"3"}}));
  // COMMIT and ROLLBACK as statements reach the same transaction.
  ASSERT_TRUE(db->StartTransaction());
  Exec(u"DELETE FROM t");
  Exec(u"ROLLBACK");
  EXPECT_FALSE(db->InTransaction());
  EXPECT_EQ(Value(u"SELECT COUNT(*) FROM t"), "2");
}

TEST_F(EngineTest, RowsAffectedCountsTheChangedRows) {
  Exec(u"CREATE TABLE t (a NUMBER(10))");
  std::unique_ptr<TDbStatement> s;
  ASSERT_TRUE(Run(*db, u"INSERT INTO t SELECT 1 FROM dual UNION ALL SELECT 2 FROM dual", {}, &s));
  EXPECT_FALSE(s->ReturnsRows());
  EXPECT_EQ(s->RowsAffected(), 2);
  ASSERT_TRUE(Run(*db, u"UPDATE t SET a = a + 1 WHERE a > 1", {}, &s));
  EXPECT_EQ(s->RowsAffected(), 1);
}

TEST_F(EngineTest, FetchingOutOfSequenceFails) {
  Exec(u"CREATE TABLE t (a NUMBER(10))");
  Exec(u"INSERT INTO t VALUES (1)");
  Exec(u"INSERT INTO t VALUES (2)");
  std::unique_ptr<TDbStatement> s;
  ASSERT_TRUE(db->Prepare(u"SELECT a FROM t", s));
  bool row = false;
  EXPECT_EQ(s->Fetch(row).OraCode, 1002);  // not executed yet
  ASSERT_TRUE(db->StartTransaction());
  ASSERT_TRUE(s->Execute());
  ASSERT_TRUE(s->Fetch(row));
  ASSERT_TRUE(db->Rollback());
  EXPECT_EQ(s->Fetch(row).OraCode, 1002);
  ASSERT_TRUE(s->Execute());  // a new execution starts over
  ASSERT_TRUE(s->Fetch(row));
  EXPECT_TRUE(row);
}

TEST_F(EngineTest, StatementsOfAClosedConnectionAreNotConnected) {
  std::unique_ptr<TDbStatement> s;
  ASSERT_TRUE(db->Prepare(u"SELECT 1 FROM dual", s));
  db.reset();
  bool row = false;
  EXPECT_EQ(s->Execute().OraCode, 3114);
  EXPECT_EQ(s->Fetch(row).OraCode, 3114);
  EXPECT_EQ(s->AsInteger(0), 0);
}

TEST_F(EngineTest, RegisteredFunctionsConvertArgumentsAndResults) {
  ASSERT_TRUE(db->RegisterFunction(u"ZE$G$CMP.PREP", 1, [](std::span<const TDbValue> args) {
    return args[0].IsNull() ? TDbValue::Null() : TDbValue::TextValue(UpperCase(args[0].Text) + u"!");
  }));
  ASSERT_TRUE(db->RegisterFunction(u"KINDS", -1, [](std::span<const TDbValue> args) {
    String kinds;
    for (const TDbValue& v : args) kinds += String(std::to_string(static_cast<int>(v.Kind)));
    return TDbValue::TextValue(kinds);
  }));
  ASSERT_TRUE(db->RegisterFunction(u"HALF", 1, [](std::span<const TDbValue> args) {
    if (args[0].Kind != dkInteger) throw Exception(u"HALF takes an integer");
    return TDbValue::FloatValue(args[0].Int / 2.0);
  }));
  EXPECT_EQ(Value(u"SELECT ZE$G$CMP.PREP('ștefan') FROM dual"), "ȘTEFAN!");
  EXPECT_EQ(Value(u"SELECT PREP(NULL) FROM dual"), "<null>");
  EXPECT_EQ(Value(u"SELECT KINDS(1, 2.5, 'a', NULL, TO_DATE('01.01.2020','DD.MM.YYYY')) FROM dual"), "12304");
  EXPECT_EQ(Value(u"SELECT HALF(3) FROM dual"), "1.5");
  EXPECT_EQ(Value(u"SELECT HALF('x') FROM dual"), "ORA-20000: HALF takes an integer");
}

TEST_F(EngineTest, QuotedNamesAndCarriageReturnLineEnds) {
  Exec(u"CREATE TABLE \"T\" (\"ID\" NUMBER(10), \"NAME\" VARCHAR2(20))");
  Exec(u"INSERT INTO T\r  (\"ID\", \"NAME\")\rVALUES\r   (:\"ID\", :\"NAME\")",
       {{u"ID", TDbValue::Integer(5)}, {u"NAME", TDbValue::TextValue(u"five")}});
  EXPECT_EQ(Value(u"SELECT \"NAME\" -- a comment closed by a lone CR\rFROM t WHERE id = 5"), "five");
  // A double-quoted name is never taken for a string.
  EXPECT_EQ(ErrorOf(u"SELECT \"NOPE\" FROM t"), 904);
}

TEST_F(EngineTest, RowidWorksInSelectListsAndWhereClauses) {
  Exec(u"CREATE TABLE t (name VARCHAR2(20))");
  Exec(u"INSERT INTO t VALUES ('a')");
  Exec(u"INSERT INTO t VALUES ('b')");
  const std::string id = Value(u"SELECT ROWID FROM t WHERE name = 'b'");
  EXPECT_EQ(Value(u"SELECT \"ROWID\" FROM t WHERE name = 'b'"), id);
  Exec(u"UPDATE t\rSET\r   NAME = :NAME \rWHERE\r   \"ROWID\" = :OLD_ROWID ",
       {{u"NAME", TDbValue::TextValue(u"c")}, {u"OLD_ROWID", TDbValue::Integer(std::stoll(id))}});
  EXPECT_EQ(Rows(u"SELECT t.rowid, name FROM t ORDER BY name"), (TRows{{"1", "a"}, {id, "c"}}));
}

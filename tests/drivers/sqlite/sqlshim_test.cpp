#include <ctime>

#include "tests/drivers/sqlite/enginefixture.h"

namespace {

const char16_t* const kDictionaryQuery =
    u"Select cols.column_name as Name,nullable,data_type as Type,Decode(data_type,'NUMBER',data_precision,"
    u"data_length)Length,data_precision Precision, data_scale Scale, data_length dlength FROM all_tab_columns cols "
    u"where (owner = sys_context ('USERENV', 'SESSION_USER') or (owner, table_name) in (select table_owner, "
    u"table_name from user_synonyms)) and cols.table_name = :TABNAME order by column_id";

}  // namespace

class ShimTest : public EngineTest {
 protected:
  void SetUp() override {
    EngineTest::SetUp();
    Exec(u"CREATE TABLE goods (id NUMBER(10) PRIMARY KEY, name VARCHAR2(40) NOT NULL, price NUMBER(12,2), "
         u"made DATE, code CHAR(3))");
    Exec(u"INSERT INTO goods VALUES (1, 'ștefan', 10.5, TO_DATE('01.02.2015', 'DD.MM.YYYY'), 'A01')");
    Exec(u"INSERT INTO goods VALUES (2, 'ёлка', NULL, TO_DATE('15.03.2015 08:30', 'DD.MM.YYYY HH24:MI'), 'B02')");
    Exec(u"INSERT INTO goods VALUES (3, 'Masă', 7, NULL, NULL)");
  }
};

TEST_F(ShimTest, DualIsAOneRowTable) {
  EXPECT_EQ(Rows(u"SELECT dummy FROM dual"), (TRows{{"X"}}));
  EXPECT_EQ(Rows(u"select 1 + 1 from DUAL"), (TRows{{"2"}}));
}

TEST_F(ShimTest, SysdateIsTheLocalTimeNow) {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  EXPECT_EQ(Value(u"SELECT TO_CHAR(SYSDATE, 'YYYY') FROM dual"), std::to_string(local.tm_year + 1900));
  EXPECT_EQ(Value(u"SELECT COUNT(*) FROM goods WHERE made < sysdate"), "2");
  EXPECT_EQ(Value(u"SELECT TRUNC(SYSDATE) <= SYSDATE FROM dual"), "1");
  // Standing alone in the select list it is labelled as Oracle labels it.
  Exec(u"CREATE SEQUENCE s");
  std::unique_ptr<TDbStatement> s;
  ASSERT_TRUE(Run(*db, u"SELECT sysdate, s.NEXTVAL, s.currval, SYSDATE - 0 AS d FROM dual ORDER BY 1, sysdate", {}, &s));
  EXPECT_EQ(s->Column(0).Name, u"SYSDATE");
  EXPECT_EQ(s->Column(0).Type, dcDateTime);
  EXPECT_EQ(s->Column(1).Name, u"NEXTVAL");
  EXPECT_EQ(s->Column(2).Name, u"CURRVAL");
  EXPECT_EQ(s->Column(3).Name, u"D");
}

TEST_F(ShimTest, MinusIsExcept) {
  EXPECT_EQ(Rows(u"SELECT id FROM goods MINUS SELECT id FROM goods WHERE id = 2 ORDER BY 1"),
            (TRows{{"1"}, {"3"}}));
}

TEST_F(ShimTest, ForUpdateIsAccepted) {
  EXPECT_EQ(Rows(u"SELECT id FROM goods WHERE id = 1 FOR UPDATE"), (TRows{{"1"}}));
  EXPECT_EQ(Rows(u"SELECT id FROM goods g WHERE id < 3 ORDER BY id FOR UPDATE OF g.name, price NOWAIT"),
            (TRows{{"1"}, {"2"}}));
  EXPECT_EQ(Rows(u"SELECT * FROM \r goods\rWHERE id = 3 FOR UPDATE WAIT 5"), (TRows{{"3", "Masă", "7", "<null>", "<null>"}}));
}

TEST_F(ShimTest, SequencesGiveValuesAcrossStatements) {
  Exec(u"CREATE SEQUENCE id_tmdb_cm START WITH 10 INCREMENT BY 5 NOCACHE");
  EXPECT_EQ(Value(u"SELECT ID_TMDB_CM.NEXTVAL FROM dual"), "10");
  EXPECT_EQ(Value(u"SELECT id_tmdb_cm.nextval FROM dual"), "15");
  EXPECT_EQ(Value(u"SELECT ID_TMDB_CM.CURRVAL FROM dual"), "15");
  Exec(u"INSERT INTO goods (id, name) VALUES (kelmar.id_tmdb_cm.NEXTVAL, 'seq')");
  EXPECT_EQ(Value(u"SELECT id FROM goods WHERE name = 'seq'"), "20");
  Exec(u"CREATE SEQUENCE plain");
  EXPECT_EQ(Value(u"SELECT plain.nextval FROM dual"), "1");
  EXPECT_EQ(ErrorOf(u"CREATE SEQUENCE plain"), 955);
  // CURRVAL belongs to the session; another one has not asked NEXTVAL yet.
  Exec(u"CREATE TABLE t (a NUMBER(10))");
  EXPECT_EQ(ErrorOf(u"DROP SEQUENCE nope"), 2289);
  Exec(u"DROP SEQUENCE plain");
  EXPECT_EQ(ErrorOf(u"SELECT plain.NEXTVAL FROM dual"), 2289);
}

TEST(ShimSessions, CurrvalBeforeNextvalFailsInEachSession) {
  RegisterSQLiteDriver();
  TempDatabase file;
  auto first = EngineTest::Connect(file.Path());
  auto second = EngineTest::Connect(file.Path());
  ASSERT_TRUE(first->ExecuteDirect(u"CREATE SEQUENCE s"));
  EXPECT_EQ(first->ExecuteDirect(u"SELECT s.CURRVAL FROM dual").OraCode, 8002);
  ASSERT_TRUE(first->ExecuteDirect(u"SELECT s.NEXTVAL FROM dual"));
  EXPECT_EQ(EngineTest::Rows(*first, u"SELECT s.CURRVAL FROM dual"), (TRows{{"1"}}));
  EXPECT_EQ(second->ExecuteDirect(u"SELECT s.CURRVAL FROM dual").OraCode, 8002);
  EXPECT_EQ(EngineTest::Rows(*second, u"SELECT s.NEXTVAL FROM dual"), (TRows{{"2"}}));
}

TEST_F(ShimTest, ReturningIntoHandsBackTheValues) {
  std::unique_ptr<TDbStatement> s;
  ASSERT_TRUE(Run(*db,
                  u"INSERT INTO goods\r  (id, name, price)\rVALUES\r   (:ID, :NAME, :PRICE)RETURNING\r   id, "
                  u"UPPER(name), price * 2 \rINTO\r   :ID, :NAME, :PRICE",
                  {{u"ID", TDbValue::Integer(4)}, {u"NAME", TDbValue::TextValue(u"țară")},
                   {u"PRICE", TDbValue::FloatValue(1.25)}},
                  &s));
  EXPECT_FALSE(s->ReturnsRows());
  EXPECT_EQ(s->RowsAffected(), 1);
  EXPECT_EQ(s->OutValue(u"id").Int, 4);
  EXPECT_EQ(s->OutValue(u"NAME").Text, u"ȚARĂ");
  EXPECT_DOUBLE_EQ(s->OutValue(u"Price").Float, 2.5);
  ASSERT_TRUE(Run(*db, u"UPDATE goods SET price = price + 1 WHERE id = :id RETURN made INTO :m",
                  {{u"id", TDbValue::Integer(1)}}, &s));
  EXPECT_EQ(s->OutValue(u"m").Kind, dkDate);
  EXPECT_DOUBLE_EQ(s->OutValue(u"m").Float, 42036.0);
  // More than one row into single values fails and changes nothing.
  EXPECT_EQ(ErrorOf(u"UPDATE goods SET price = 0 RETURNING id INTO :x"), 1422);
  EXPECT_EQ(Value(u"SELECT COUNT(*) FROM goods WHERE price = 0"), "0");
  EXPECT_EQ(ErrorOf(u"DELETE FROM goods RETURNING id, name INTO :x"), 913);
}

TEST_F(ShimTest, GeneratedInsertBlockTakesItsKeyFromTheSequence) {
  Exec(u"CREATE SEQUENCE ID_TMDB_CM START WITH 100");
  std::unique_ptr<TDbStatement> s;
  const String block =
      u"BEGIN\nSELECT ID_TMDB_CM.NEXTVAL INTO :ID FROM DUAL;\nINSERT INTO GOODS\r  (ID, NAME)\rVALUES\r   (:ID, "
      u":NAME);\nEND;";
  ASSERT_TRUE(Run(*db, block, {{u"NAME", TDbValue::TextValue(u"first")}}, &s));
  EXPECT_EQ(s->OutValue(u"ID").Int, 100);
  EXPECT_EQ(s->RowsAffected(), 1);
  ASSERT_TRUE(s->Bind(u"NAME", TDbValue::TextValue(u"second")));
  ASSERT_TRUE(s->Execute());
  EXPECT_EQ(s->OutValue(u"ID").Int, 101);
  EXPECT_EQ(Rows(u"SELECT id, name FROM goods WHERE id >= 100 ORDER BY id"),
            (TRows{{"100", "first"}, {"101", "second"}}));
  // Several INTO lines, then several statements; the values feed them all.
  ASSERT_TRUE(Run(*db,
                  u"begin\n select max(id), count(*) into :top, :n from goods;\n"
                  u" update goods set price = :n where id = :top;\n delete from goods where id = 100;\nend;",
                  {}, &s));
  EXPECT_EQ(s->OutValue(u"TOP").Int, 101);
  EXPECT_EQ(s->OutValue(u"N").Int, 5);
  EXPECT_EQ(s->RowsAffected(), 2);
  EXPECT_EQ(Rows(u"SELECT id, price FROM goods WHERE id >= 100"), (TRows{{"101", "5"}}));
}

TEST_F(ShimTest, ABlockIsAllOrNothing) {
  EXPECT_EQ(ErrorOf(u"BEGIN\nUPDATE goods SET price = 99 WHERE id = 1;\nINSERT INTO goods (id, name) VALUES (1, 'dup');\nEND;"),
            1);
  EXPECT_EQ(Value(u"SELECT price FROM goods WHERE id = 1"), "10.5");
  EXPECT_EQ(ErrorOf(u"BEGIN SELECT id INTO :x FROM goods WHERE id = 42; END;"), 1403);
  EXPECT_EQ(ErrorOf(u"BEGIN SELECT id INTO :x FROM goods; END;"), 1422);
  // Parameters come in the order they are written, INTO targets included.
  std::unique_ptr<TDbStatement> s;
  ASSERT_TRUE(db->Prepare(u"BEGIN SELECT :a + 1 INTO :x FROM dual; UPDATE goods SET price = :x WHERE id = :B; END;", s));
  ASSERT_EQ(s->ParamCount(), 3);
  EXPECT_EQ(s->ParamName(0), u"a");
  EXPECT_EQ(s->ParamName(1), u"x");
  EXPECT_EQ(s->ParamName(2), u"B");
  ASSERT_TRUE(s->Bind(u"A", TDbValue::Integer(41)));
  ASSERT_TRUE(s->Bind(u"b", TDbValue::Integer(3)));
  ASSERT_TRUE(s->Execute());
  EXPECT_EQ(s->OutValue(u"X").Int, 42);
  EXPECT_EQ(Value(u"SELECT price FROM goods WHERE id = 3"), "42");
}

TEST_F(ShimTest, OtherPlsqlFailsClearly) {
  EXPECT_EQ(ErrorOf(u"BEGIN :x := 1; END;"), 6550);
  EXPECT_EQ(ErrorOf(u"BEGIN NULL; END;"), 6550);
  EXPECT_EQ(ErrorOf(u"BEGIN SELECT 1 FROM dual; END;"), 6550);
  EXPECT_EQ(ErrorOf(u"DECLARE v NUMBER; BEGIN UPDATE goods SET price = 1; END;"), 6550);
  EXPECT_EQ(ErrorOf(u"declare PRAGMA AUTONOMOUS_TRANSACTION;begin update goods set price = 1; end;"), 6550);
  EXPECT_EQ(ErrorOf(u"BEGIN UPDATE goods SET price = 1;"), 6550);
  EXPECT_EQ(ErrorOf(u"SELECT id INTO :x FROM goods"), 905);
  EXPECT_EQ(Value(u"SELECT COUNT(*) FROM goods WHERE price = 1"), "0");
}

TEST_F(ShimTest, AutonomousBlockCommitsOnItsOwn) {
  Exec(u"declare PRAGMA AUTONOMOUS_TRANSACTION;begin UPDATE goods SET price = 1 WHERE id = 3;commit;end;");
  EXPECT_EQ(Value(u"SELECT price FROM goods WHERE id = 3"), "1");
  // Keywords in any case, blanks anywhere, and the generated insert block inside.
  Exec(u"CREATE SEQUENCE ID_TMDB_CM START WITH 7");
  std::unique_ptr<TDbStatement> s;
  ASSERT_TRUE(Run(*db,
                  u"DECLARE  pragma  autonomous_transaction ;\n BEGIN BEGIN\nSELECT ID_TMDB_CM.NEXTVAL INTO :ID "
                  u"FROM DUAL;\nINSERT INTO goods (id, name) VALUES (:ID, :NAME);\nEND; COMMIT ; END ;",
                  {{u"name", TDbValue::TextValue(u"auto")}}, &s));
  EXPECT_EQ(s->OutValue(u"ID").Int, 7);
  EXPECT_EQ(Value(u"SELECT name FROM goods WHERE id = 7"), "auto");
}

TEST(ShimFiles, AutonomousUpdateSurvivesARollbackOfTheSession) {
  RegisterSQLiteDriver();
  TempDatabase file;
  auto db = EngineTest::Connect(file.Path());
  ASSERT_TRUE(db->ExecuteDirect(u"CREATE TABLE t (id NUMBER(10), a NUMBER(10))"));
  ASSERT_TRUE(db->ExecuteDirect(u"INSERT INTO t VALUES (1, 0)"));
  ASSERT_TRUE(db->StartTransaction());
  EXPECT_EQ(EngineTest::Rows(*db, u"SELECT a FROM t"), (TRows{{"0"}}));
  ASSERT_TRUE(db->ExecuteDirect(
      u"declare PRAGMA AUTONOMOUS_TRANSACTION;begin update t set a = 5 where id = 1;commit;end;"));
  ASSERT_TRUE(db->Rollback());
  EXPECT_EQ(EngineTest::Rows(*db, u"SELECT a FROM t"), (TRows{{"5"}}));
  // Another connection to the file sees it too.
  auto other = EngineTest::Connect(file.Path());
  EXPECT_EQ(EngineTest::Rows(*other, u"SELECT a FROM t"), (TRows{{"5"}}));
  // While the session holds changes of its own, an autonomous writer would
  // wait for it forever: it fails at once instead.
  ASSERT_TRUE(db->StartTransaction());
  ASSERT_TRUE(db->ExecuteDirect(u"INSERT INTO t VALUES (2, 0)"));
  EXPECT_EQ(db->ExecuteDirect(u"declare PRAGMA AUTONOMOUS_TRANSACTION;begin update t set a = 6;commit;end;").OraCode, 54);
  ASSERT_TRUE(db->Commit());
  EXPECT_EQ(EngineTest::Rows(*db, u"SELECT a FROM t ORDER BY id"), (TRows{{"5"}, {"0"}}));
}

TEST_F(ShimTest, DictionaryQueryOfTheQueryEditorRuns) {
  const TRows rows = Rows(kDictionaryQuery, {{u"TABNAME", TDbValue::TextValue(u"GOODS")}});
  EXPECT_EQ(rows, (TRows{{"ID", "N", "NUMBER", "10", "10", "0", "22"},
                         {"NAME", "N", "VARCHAR2", "40", "<null>", "<null>", "40"},
                         {"PRICE", "Y", "NUMBER", "12", "12", "2", "22"},
                         {"MADE", "Y", "DATE", "7", "<null>", "<null>", "7"},
                         {"CODE", "Y", "CHAR", "3", "<null>", "<null>", "3"}}));
  std::unique_ptr<TDbStatement> s;
  ASSERT_TRUE(Run(*db, kDictionaryQuery, {{u"TABNAME", TDbValue::TextValue(u"GOODS")}}, &s));
  EXPECT_EQ(s->Column(0).Name, u"NAME");
  EXPECT_EQ(s->Column(2).Name, u"TYPE");
  EXPECT_EQ(s->Column(3).Name, u"LENGTH");
  EXPECT_EQ(Rows(kDictionaryQuery, {{u"TABNAME", TDbValue::TextValue(u"NOPE")}}), TRows{});
}

TEST_F(ShimTest, DictionaryOwnerIsTheSessionUser) {
  EXPECT_EQ(Value(u"SELECT sys_context('USERENV', 'SESSION_USER') FROM dual"), "KELMAR");
  EXPECT_EQ(Value(u"SELECT DISTINCT owner FROM all_tab_columns"), "KELMAR");
  auto named = Connect(u":memory:", u"ana");
  EXPECT_EQ(Rows(*named, u"SELECT SYS_CONTEXT('userenv', 'session_user') FROM dual"), (TRows{{"ANA"}}));
}

TEST_F(ShimTest, SynonymsAreListedOnceCreated) {
  EXPECT_EQ(Rows(u"SELECT * FROM user_synonyms"), TRows{});
  Exec(u"CREATE SYNONYM wares FOR kelmar.goods");
  EXPECT_EQ(Rows(u"SELECT synonym_name, table_owner, table_name, db_link FROM user_synonyms"),
            (TRows{{"WARES", "KELMAR", "GOODS", "<null>"}}));
  EXPECT_EQ(Value(u"SELECT name FROM wares WHERE id = 3"), "Masă");
  EXPECT_EQ(ErrorOf(u"CREATE SYNONYM wares FOR goods"), 955);
  Exec(u"CREATE OR REPLACE SYNONYM wares FOR goods");
  Exec(u"DROP SYNONYM wares");
  EXPECT_EQ(Rows(u"SELECT * FROM user_synonyms"), TRows{});
  EXPECT_EQ(ErrorOf(u"DROP SYNONYM wares"), 1434);
}

TEST_F(ShimTest, DateLiteralsOfTheFilterDialogueCompareAsDates) {
  EXPECT_EQ(Rows(u"SELECT id FROM goods g WHERE (g.made>='01.02.2015') ORDER BY id"), (TRows{{"1"}, {"2"}}));
  EXPECT_EQ(Rows(u"SELECT id FROM goods WHERE (made = '01.02.2015')"), (TRows{{"1"}}));
  EXPECT_EQ(Rows(u"SELECT id FROM goods WHERE (made>'1.3.2015 08:00')"), (TRows{{"2"}}));
  // A text column compares as text.
  Exec(u"UPDATE goods SET code = '01.02.2015' WHERE id = 3");
  EXPECT_EQ(Rows(u"SELECT id FROM goods WHERE ( code = '01.02.2015' )"), (TRows{{"3"}}));
}

TEST_F(ShimTest, PackageFunctionsAndLikeAsOracleHasThem) {
  ASSERT_TRUE(db->RegisterFunction(u"INTEXT", -1, [](std::span<const TDbValue> args) {
    return TDbValue::FloatValue(args[0].Text == args[1].Text ? 1.0 : 0.0);
  }));
  ASSERT_TRUE(db->RegisterFunction(u"PREP", 1, [](std::span<const TDbValue> args) { return args[0]; }));
  EXPECT_EQ(Value(u"SELECT id FROM goods WHERE ( ZE$G$CMP.INTEXT(ZE$G$CMP.PREP(name),(SELECT ZE$G$CMP.PREP('Masă')"
                  u"FROM DUAL))>=0.7 )"),
            "3");
  // LIKE is case sensitive; UPPER on both sides makes it not.
  EXPECT_EQ(Rows(u"SELECT id FROM goods WHERE ( name LIKE 'mas%')"), TRows{});
  EXPECT_EQ(Rows(u"SELECT id FROM goods WHERE ( UPPER(name) LIKE UPPER('%ȘTE%'))"), (TRows{{"1"}}));
}

TEST_F(ShimTest, OneStatementAtATime) {
  EXPECT_EQ(ErrorOf(u"DELETE FROM goods; DELETE FROM goods"), 911);
  EXPECT_EQ(Value(u"SELECT COUNT(*) FROM goods"), "3");
  Exec(u"DELETE FROM goods WHERE id = 3;");  // one trailing ";" is fine
  EXPECT_EQ(Value(u"SELECT COUNT(*) FROM goods"), "2");
}

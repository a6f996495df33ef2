// Oracle date arithmetic on the embedded engine, whose dates are text.
#include "tests/drivers/sqlite/enginefixture.h"

class DateArithTest : public EngineTest {
 protected:
  void SetUp() override {
    EngineTest::SetUp();
    Exec(u"CREATE TABLE docs (id NUMBER(10) PRIMARY KEY, doc_date DATE, due DATE, days NUMBER(5), note VARCHAR2(20))");
    Exec(u"INSERT INTO docs VALUES (1, TO_DATE('28.02.2024 10:00', 'DD.MM.YYYY HH24:MI'), "
         u"TO_DATE('01.03.2024 22:00', 'DD.MM.YYYY HH24:MI'), 7, 'x')");
    Exec(u"INSERT INTO docs VALUES (2, TO_DATE('31.12.2025', 'DD.MM.YYYY'), TO_DATE('31.12.2025', 'DD.MM.YYYY'), "
         u"-1, '12')");
    Exec(u"INSERT INTO docs VALUES (3, NULL, TO_DATE('01.01.2026', 'DD.MM.YYYY'), NULL, NULL)");
  }
};

TEST_F(DateArithTest, DaysAddToAndSubtractFromDates) {
  // Across a leap day and a year end, with the time of day kept.
  EXPECT_EQ(Rows(u"SELECT doc_date + 7, doc_date - 1, 2 + doc_date FROM docs ORDER BY id"),
            (TRows{{"2024-03-06 10:00:00", "2024-02-27 10:00:00", "2024-03-01 10:00:00"},
                   {"2026-01-07 00:00:00", "2025-12-30 00:00:00", "2026-01-02 00:00:00"},
                   {"<null>", "<null>", "<null>"}}));
  // Fractions of a day are hours and minutes; a column holds the days.
  EXPECT_EQ(Value(u"SELECT doc_date + 1/24 + 30/1440 FROM docs WHERE id = 1"), "2024-02-28 11:30:00");
  EXPECT_EQ(Rows(u"SELECT doc_date + days FROM docs ORDER BY id"),
            (TRows{{"2024-03-06 10:00:00"}, {"2025-12-30 00:00:00"}, {"<null>"}}));
  // Left to right: (date - 1) + 3.
  EXPECT_EQ(Value(u"SELECT doc_date - 1 + 3 FROM docs WHERE id = 2"), "2026-01-02 00:00:00");
  // A CASE that gives a date is a date operand as a whole.
  EXPECT_EQ(Value(u"SELECT CASE WHEN id = 1 THEN doc_date ELSE due END + 1 FROM docs WHERE id = 1"),
            "2024-02-29 10:00:00");
  // A bound date parameter is a date as well.
  EXPECT_EQ(Value(u"SELECT :D + 1 FROM dual", {{u"D", TDbValue::Date(45000.5)}}), "2023-03-16 12:00:00");
}

TEST_F(DateArithTest, DatesSubtractToDays) {
  EXPECT_EQ(Rows(u"SELECT due - doc_date FROM docs ORDER BY id"), (TRows{{"2.5"}, {"0.0"}, {"<null>"}}));
  EXPECT_EQ(Value(u"SELECT TRUNC(due) - TRUNC(doc_date) FROM docs WHERE id = 1"), "2.0");
  EXPECT_EQ(Value(u"SELECT (due - doc_date) * 24 FROM docs WHERE id = 1"), "60.0");
}

TEST_F(DateArithTest, ConditionsAndUpdatesCompareAsDates) {
  EXPECT_EQ(Rows(u"SELECT id FROM docs WHERE doc_date + 7 > due ORDER BY id"), (TRows{{"1"}, {"2"}}));
  EXPECT_EQ(Rows(u"SELECT id FROM docs WHERE due - doc_date BETWEEN 1 AND 3"), (TRows{{"1"}}));
  EXPECT_EQ(Rows(u"SELECT id FROM docs WHERE doc_date > SYSDATE - 100000 ORDER BY id"), (TRows{{"1"}, {"2"}}));
  EXPECT_EQ(Value(u"SELECT COUNT(*) FROM docs WHERE SYSDATE - 1 < SYSDATE AND SYSDATE + 1 > SYSDATE"), "3");
  EXPECT_EQ(Value(u"SELECT COUNT(*) FROM docs WHERE doc_date IN (SELECT due - 2.5 FROM docs)"), "1");
  // The filter dialogue's date literal against a sum reads as a date too.
  EXPECT_EQ(Rows(u"SELECT id FROM docs WHERE doc_date + 2 > '01.03.2024 12:00' ORDER BY id"), (TRows{{"2"}}));
  EXPECT_EQ(Rows(u"SELECT id FROM docs WHERE (doc_date - 1 < '1.1.2026')"), (TRows{{"1"}, {"2"}}));
  Exec(u"UPDATE docs SET due = due + days, days = days - 1 WHERE id = 1");
  EXPECT_EQ(Rows(u"SELECT due, days FROM docs WHERE id = 1"), (TRows{{"2024-03-08 22:00:00", "6"}}));
}

TEST_F(DateArithTest, NumbersStillAddAsNumbers) {
  EXPECT_EQ(Rows(u"SELECT 1 + 2, 7 - 10, 1.5 + 1, -3 - -4 FROM dual"), (TRows{{"3", "-3", "2.5", "1"}}));
  // Past the integer range the sum goes on as a float.
  EXPECT_EQ(Value(u"SELECT 9223372036854775807 + 1 > 9223372036854775807 FROM dual"), "1");
  EXPECT_EQ(Value(u"SELECT note + 1 FROM docs WHERE id = 2"), "13");
  EXPECT_EQ(Value(u"SELECT SUBSTR('abcdef', 2, LENGTH('abc') - 1) FROM dual"), "bc");
  // Division is exact, as Oracle's NUMBER divides: not the engine's
  // integer division.
  EXPECT_EQ(Rows(u"SELECT 7 / 2, 1 / 4 * 2, 2 * 3 / 4, -7 / 2 FROM dual"), (TRows{{"3.5", "0.5", "1.5", "-3.5"}}));
  EXPECT_EQ(Rows(u"SELECT 12 / -NVL(days, 1) / (days - 3), 1 / days FROM docs ORDER BY id"),
            (TRows{{"-0.428571428571429", "0.142857142857143"}, {"-3.0", "-1.0"}, {"<null>", "<null>"}}));
  // Oracle refuses to divide by zero, where the engine would give NULL.
  EXPECT_EQ(ErrorOf(u"SELECT 1 / (days + 1) FROM docs WHERE id = 2"), 1476);
  EXPECT_EQ(ErrorOf(u"SELECT 1 / 0.0 FROM dual"), 1476);
  EXPECT_EQ(ErrorOf(u"SELECT id / CASE WHEN id > 0 THEN 0 END FROM docs"), 1476);
  EXPECT_EQ(Value(u"SELECT CASE WHEN days > 0 THEN days + 100 ELSE days - 100 END FROM docs WHERE id = 2"), "-101");
  EXPECT_EQ(Value(u"SELECT NVL(days, 0) + 1 FROM docs WHERE id = 3"), "1");
  EXPECT_EQ(Rows(u"SELECT days * 2, -days, 3 * -days, -(days + 1), days * days * 2, note * 2 FROM docs WHERE id = 2"),
            (TRows{{"-2", "1", "3", "0", "2", "24"}}));
  EXPECT_EQ(Value(u"SELECT COUNT(*) FROM docs WHERE days * 2 > -5"), "2");
  // Negative defaults stay constants the engine takes in a table definition.
  Exec(u"CREATE TABLE defaults (a NUMBER DEFAULT -1, b NUMBER DEFAULT +2.5, c NUMBER)");
  Exec(u"INSERT INTO defaults (c) VALUES (3)");
  EXPECT_EQ(Rows(u"SELECT a, b, c FROM defaults"), (TRows{{"-1", "2.5", "3"}}));
  EXPECT_EQ(Rows(u"SELECT ROW_NUMBER() OVER (ORDER BY id DESC) - 1 FROM docs ORDER BY id"),
            (TRows{{"2"}, {"1"}, {"0"}}));
}

TEST_F(DateArithTest, OracleLabelsAndAliasesOfTheResult) {
  std::unique_ptr<TDbStatement> s;
  ASSERT_TRUE(Run(*db, u"SELECT doc_date + 1, due - doc_date span, id - 1 AS prev, doc_date FROM docs", {}, &s));
  EXPECT_EQ(s->Column(0).Name, u"DOC_DATE+1");
  EXPECT_EQ(s->Column(1).Name, u"SPAN");
  EXPECT_EQ(s->Column(2).Name, u"PREV");
  EXPECT_EQ(s->Column(3).Name, u"DOC_DATE");
  bool row = false;
  ASSERT_TRUE(s->Fetch(row));
  ASSERT_TRUE(row);
  EXPECT_EQ(s->Kind(0), dkDate);
  EXPECT_EQ(s->Kind(1), dkFloat);
}

TEST_F(DateArithTest, WhatOracleRefusesFailsWithItsNumber) {
  EXPECT_EQ(ErrorOf(u"SELECT doc_date + due FROM docs"), 975);
  EXPECT_EQ(ErrorOf(u"SELECT 1 - doc_date FROM docs WHERE id = 1"), 932);
  EXPECT_EQ(ErrorOf(u"SELECT note + 1 FROM docs WHERE id = 1"), 1722);
  EXPECT_EQ(ErrorOf(u"SELECT doc_date + 1e9 FROM docs WHERE id = 1"), 1841);
  EXPECT_EQ(ErrorOf(u"SELECT doc_date - 800000 FROM docs WHERE id = 1"), 1841);
  // Products and signs take no dates.
  EXPECT_EQ(ErrorOf(u"SELECT doc_date * 2 FROM docs WHERE id = 1"), 932);
  EXPECT_EQ(ErrorOf(u"SELECT 2 * doc_date FROM docs WHERE id = 1"), 932);
  EXPECT_EQ(ErrorOf(u"SELECT days / doc_date FROM docs WHERE id = 1"), 932);
  EXPECT_EQ(ErrorOf(u"SELECT -doc_date FROM docs WHERE id = 1"), 932);
  EXPECT_EQ(ErrorOf(u"SELECT days * -(due) FROM docs WHERE id = 1"), 932);
  EXPECT_EQ(ErrorOf(u"SELECT note * 2 FROM docs WHERE id = 1"), 1722);
  const std::string message = Value(u"SELECT doc_date + due FROM docs");
  EXPECT_EQ(message.rfind("ORA-00975: ", 0), 0u) << message;
}

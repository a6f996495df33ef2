#include "tests/drivers/sqlite/enginefixture.h"

class FunctionsTest : public EngineTest {
 protected:
  // The value of one expression.
  std::string Of(const std::u16string& expression) { return Value(u"SELECT " + String(expression) + u" FROM dual"); }
};

TEST_F(FunctionsTest, NullHandlingAndChoice) {
  EXPECT_EQ(Of(u"NVL(NULL, 'b')"), "b");
  EXPECT_EQ(Of(u"NVL('a', 'b')"), "a");
  EXPECT_EQ(Of(u"NVL2(NULL, 'set', 'unset')"), "unset");
  EXPECT_EQ(Of(u"NVL2(0, 'set', 'unset')"), "set");
  EXPECT_EQ(Of(u"DECODE(2, 1, 'one', 2, 'two', 'many')"), "two");
  EXPECT_EQ(Of(u"DECODE(5, 1, 'one', 2, 'two', 'many')"), "many");
  EXPECT_EQ(Of(u"DECODE(5, 1, 'one')"), "<null>");
  EXPECT_EQ(Of(u"DECODE(NULL, NULL, 'null matches', 'no')"), "null matches");
  EXPECT_EQ(Of(u"DECODE(10, '10', 'as number')"), "as number");
  EXPECT_EQ(Of(u"GREATEST(3, 10, 7)"), "10");
  EXPECT_EQ(Of(u"LEAST('pear', 'apple', 'plum')"), "apple");
  EXPECT_EQ(Of(u"GREATEST(1, NULL)"), "<null>");
}

TEST_F(FunctionsTest, DatesInAndOut) {
  EXPECT_EQ(Of(u"TO_DATE('01.02.2015', 'DD.MM.YYYY')"), "2015-02-01 00:00:00");
  EXPECT_EQ(Of(u"TO_DATE('2015-02-01', 'YYYY-MM-DD')"), "2015-02-01 00:00:00");
  EXPECT_EQ(Of(u"TO_DATE('01.02.2015 13:14:15', 'DD.MM.YYYY HH24:MI:SS')"), "2015-02-01 13:14:15");
  EXPECT_EQ(Of(u"TO_DATE('07-MAR-99 02:05 PM', 'DD-MON-RR HH:MI AM')"), "1999-03-07 14:05:00");
  EXPECT_EQ(Of(u"TO_DATE('01.02.2015')"), "2015-02-01 00:00:00");
  EXPECT_EQ(Of(u"TO_DATE('31.02.2015', 'DD.MM.YYYY')"), "ORA-01847: day of month must be between 1 and last day of month");
  EXPECT_EQ(Of(u"TO_DATE('01.13.2015', 'DD.MM.YYYY')"), "ORA-01843: not a valid month");
  EXPECT_EQ(Of(u"TO_DATE('01.02.2015 x', 'DD.MM.YYYY')").substr(0, 9), "ORA-01830");
  EXPECT_EQ(Of(u"TO_DATE('ab.02.2015', 'DD.MM.YYYY')").substr(0, 9), "ORA-01858");
  const std::u16string d = u"TO_DATE('2015-02-01 13:04:05', 'YYYY-MM-DD HH24:MI:SS')";
  EXPECT_EQ(Of(u"TO_CHAR(" + d + u", 'DD.MM.YYYY')"), "01.02.2015");
  EXPECT_EQ(Of(u"TO_CHAR(" + d + u", 'YYYY-MM-DD')"), "2015-02-01");
  EXPECT_EQ(Of(u"TO_CHAR(" + d + u", 'HH24:MI:SS')"), "13:04:05");
  EXPECT_EQ(Of(u"TO_CHAR(" + d + u", 'DD.MM.YYYY HH24:MI:SS')"), "01.02.2015 13:04:05");
  EXPECT_EQ(Of(u"TO_CHAR(" + d + u", 'Dy DD Mon YY HH:MI PM')"), "Sun 01 Feb 15 01:04 PM");
  EXPECT_EQ(Of(u"TO_CHAR(" + d + u")"), "01.02.2015");
  EXPECT_EQ(Of(u"TRUNC(" + d + u")"), "2015-02-01 00:00:00");
  EXPECT_EQ(Of(u"TRUNC(" + d + u", 'MM')"), "2015-02-01 00:00:00");
  EXPECT_EQ(Of(u"TRUNC(" + d + u", 'YYYY')"), "2015-01-01 00:00:00");
  EXPECT_EQ(Of(u"TRUNC(" + d + u", 'HH24')"), "2015-02-01 13:00:00");
  EXPECT_EQ(Of(u"ROUND(" + d + u")"), "2015-02-02 00:00:00");
  EXPECT_EQ(Of(u"ADD_MONTHS(TO_DATE('31.01.2015', 'DD.MM.YYYY'), 1)"), "2015-02-28 00:00:00");
  EXPECT_EQ(Of(u"ADD_MONTHS(TO_DATE('28.02.2015', 'DD.MM.YYYY'), 1)"), "2015-03-31 00:00:00");
  EXPECT_EQ(Of(u"ADD_MONTHS(TO_DATE('15.03.2015', 'DD.MM.YYYY'), -14)"), "2014-01-15 00:00:00");
}

TEST_F(FunctionsTest, NumbersInAndOut) {
  EXPECT_EQ(Of(u"TO_NUMBER('  42 ')"), "42");
  EXPECT_EQ(Of(u"TO_NUMBER('-1.5e2')"), "-150.0");
  EXPECT_EQ(Of(u"TO_NUMBER('1,234.5', '9G999D9')"), "1234.5");
  EXPECT_EQ(Of(u"TO_NUMBER('12a')"), "ORA-01722: invalid number");
  EXPECT_EQ(Of(u"TO_CHAR(1234.5, '999G990D00')"), "   1,234.50");
  EXPECT_EQ(Of(u"TO_CHAR(-0.5, '990.99')"), "  -0.50");
  EXPECT_EQ(Of(u"TO_CHAR(7, '0000')"), " 0007");
  EXPECT_EQ(Of(u"TO_CHAR(7, 'FM999')"), "7");
  EXPECT_EQ(Of(u"TO_CHAR(0, '999')"), "   0");
  EXPECT_EQ(Of(u"TO_CHAR(12345, '999')"), "####");
  EXPECT_EQ(Of(u"TO_CHAR(1.005, 'FM0.00')"), "1.01");
  EXPECT_EQ(Of(u"TO_CHAR(0.25)"), ".25");
  EXPECT_EQ(Of(u"TO_CHAR(42)"), "42");
  EXPECT_EQ(Of(u"TRUNC(15.79, 1)"), "15.7");
  EXPECT_EQ(Of(u"TRUNC(-15.79)"), "-15");
  EXPECT_EQ(Of(u"TRUNC(1234, -2)"), "1200");
  EXPECT_EQ(Of(u"ROUND(2.5)"), "3");
  EXPECT_EQ(Of(u"ROUND(-2.5)"), "-3");
  EXPECT_EQ(Of(u"ROUND(1.005, 2)"), "1.01");
  EXPECT_EQ(Of(u"ROUND(1250, -2)"), "1300");
  EXPECT_EQ(Of(u"MOD(11, 4)"), "3");
  EXPECT_EQ(Of(u"MOD(-11, 4)"), "-3");
  EXPECT_EQ(Of(u"MOD(5, 0)"), "5");
  EXPECT_EQ(Of(u"MOD(5.5, 2)"), "1.5");
  EXPECT_EQ(Of(u"ABS(-3)"), "3");
  EXPECT_EQ(Of(u"SIGN(-0.1)"), "-1");
  EXPECT_EQ(Of(u"FLOOR(-1.5)"), "-2");
  EXPECT_EQ(Of(u"CEIL(1.2)"), "2");
  EXPECT_EQ(Of(u"POWER(2, 10)"), "1024");
  EXPECT_EQ(Of(u"POWER(4, 0.5)"), "2");
  EXPECT_EQ(Of(u"MOD('x', 2)"), "ORA-01722: invalid number");
}

TEST_F(FunctionsTest, TextByCharacters) {
  EXPECT_EQ(Of(u"UPPER('ștefan')"), "ȘTEFAN");
  EXPECT_EQ(Of(u"UPPER('ёлка')"), "ЁЛКА");
  EXPECT_EQ(Of(u"LOWER('ĂÂÎȘȚ ЁЛКА Abc')"), "ăâîșț ёлка abc");
  EXPECT_EQ(Of(u"UPPER(NULL)"), "<null>");
  EXPECT_EQ(Of(u"LPAD('7', 3, '0')"), "007");
  EXPECT_EQ(Of(u"LPAD('ёлка', 6)"), "  ёлка");
  EXPECT_EQ(Of(u"LPAD('abcdef', 3)"), "abc");
  EXPECT_EQ(Of(u"RPAD('ă', 4, 'xy')"), "ăxyx");
  EXPECT_EQ(Of(u"RPAD('a', 0)"), "<null>");
  EXPECT_EQ(Of(u"INSTR('ștefan ștefan', 'fan')"), "4");
  EXPECT_EQ(Of(u"INSTR('ștefan ștefan', 'fan', 5)"), "11");
  EXPECT_EQ(Of(u"INSTR('ștefan ștefan', 'ș', 1, 2)"), "8");
  EXPECT_EQ(Of(u"INSTR('abcabc', 'b', -1)"), "5");
  EXPECT_EQ(Of(u"INSTR('abcabc', 'z')"), "0");
  EXPECT_EQ(Of(u"SUBSTR('ёлочка', 2, 3)"), "лоч");
  EXPECT_EQ(Of(u"SUBSTR('abc', 0, 2)"), "ab");
  EXPECT_EQ(Of(u"SUBSTR('abcdef', -3)"), "def");
  EXPECT_EQ(Of(u"SUBSTR('abc', 5)"), "<null>");
  EXPECT_EQ(Of(u"LENGTH('țară')"), "4");
  EXPECT_EQ(Of(u"CHR(65) || CHR(537)"), "Aș");
}

#include <gtest/gtest.h>

#include "platform/db/editmask.h"
#include "platform/db/params.h"
#include "platform/db/sqlscan.h"

namespace {

std::string Names(const String& sql, TSqlPlace::TKind kind) {
  std::string out;
  for (const String& n : SqlPlaceNames(ScanSqlPlaces(sql), kind)) out += (out.empty() ? "" : ",") + n.ToUtf8();
  return out;
}

TEST(SqlScan, FindsParametersAndMacrosOutsideLiteralsAndComments) {
  String sql = u"SELECT a, ':no' x, \"&no\" FROM t -- :nor\n WHERE a = :A AND b = :b_2 /* :never */ AND c = :a &ORD";
  EXPECT_EQ(Names(sql, TSqlPlace::Param), "A,b_2");
  EXPECT_EQ(Names(sql, TSqlPlace::Macro), "ORD");
  EXPECT_EQ(Names(u"x := :y; a::int; :\"Quoted Name\"", TSqlPlace::Param), "y,Quoted Name");
  EXPECT_EQ(Names(u"SELECT 'unterminated :x", TSqlPlace::Param), "");
  EXPECT_EQ(Names(u"a = :", TSqlPlace::Param), "");
}

TEST(SqlScan, ExpandsMacrosOnly) {
  String out = ExpandSqlMacros(u"SELECT * FROM &TAB WHERE x = :X &ORDER '&no'", [](const String& name) {
    return name == u"TAB" ? String(u"people") : String();
  });
  EXPECT_EQ(out, u"SELECT * FROM people WHERE x = :X  '&no'");
}

TEST(SqlScan, TellsAWhereClauseAlone) {
  EXPECT_TRUE(IsWhereClauseOnly(u"  where ID = :ID"));
  EXPECT_TRUE(IsWhereClauseOnly(u"WHERE\nID = :ID"));
  EXPECT_FALSE(IsWhereClauseOnly(u"WHEREVER"));
  EXPECT_FALSE(IsWhereClauseOnly(u"SELECT * FROM t WHERE ID = :ID"));
}

TEST(Params, UpdateKeepsValuesOfNamesThatStay) {
  TOraParams params;
  params.Update({u"A", u"B"});
  params.ParamByName(u"a")->SetAsInteger(7);
  params.ParamByName(u"B")->SetAsString(u"x");
  params.Update({u"C", u"A"});
  ASSERT_EQ(params.Count(), 2);
  EXPECT_EQ(params[0]->Name(), u"C");
  EXPECT_TRUE(params[0]->IsNull());
  EXPECT_EQ(params[1]->AsInteger(), 7);
  EXPECT_EQ(params.FindParam(u"B"), nullptr);
  try {
    params.ParamByName(u"B");
    FAIL();
  } catch (const EDatabaseError& e) {
    EXPECT_EQ(e.Message, u"Parameter 'B' not found");
  }
}

TEST(Params, ValuesTypesAndCopies) {
  TParams a, b;
  a.Update({u"X", u"Y"});
  b.Update({u"Y", u"Z"});
  TParam* x = a.ParamByName(u"X");
  x->SetValue(Variant(2.5));
  EXPECT_EQ(x->DataType(), ftFloat);
  x->SetAsDateTime(EncodeDate(2024, 5, 6));
  EXPECT_EQ(x->DataType(), ftDateTime);
  a.ParamByName(u"Y")->SetAsString(u"why");
  b.AssignValues(&a);
  EXPECT_EQ(b.ParamByName(u"Y")->AsString(), u"why");
  EXPECT_TRUE(b.ParamByName(u"Z")->IsNull());
  a.SetParamValues(u"X;Y", VarArrayOf({1, u"two"}));
  Variant both = a.ParamValues(u"X;Y");
  EXPECT_EQ(both.GetElement(1).AsString(), u"two");
  a.ParamByName(u"X")->Clear();
  EXPECT_TRUE(a.ParamByName(u"X")->IsNull());
  EXPECT_TRUE(a.ParamByName(u"X")->Bound());
}

TEST(Macros, FoundByNameAndKeptAcrossUpdates) {
  TMacros macros;
  macros.Update({u"WHERE", u"ORD"});
  macros.MacroByName(u"ord")->SetValue(u"ORDER BY 1");
  macros.Update({u"ORD"});
  EXPECT_EQ(macros.Count(), 1);
  EXPECT_EQ(macros[0]->AsString(), u"ORDER BY 1");
  EXPECT_THROW(macros.MacroByName(u"WHERE"), EDatabaseError);
}

TEST(EditMask, LaysValuesOutWithLiterals) {
  EXPECT_EQ(FormatMaskText(u"99.99.9999;1;_", u"21.11.2026"), u"21.11.2026");
  EXPECT_EQ(FormatMaskText(u"99.99.9999;0;_", u"21112026"), u"21.11.2026");
  EXPECT_EQ(FormatMaskText(u"00\\.00;1;_", u"12"), u"12.  ");
  EXPECT_EQ(FormatMaskText(u">LL", u"ab"), u"AB");
  EXPECT_EQ(FormatMaskText(u"", u"abc"), u"");
}

}  // namespace

namespace {

TEST(SqlScan, PlacesOfArbitraryTextStayInsideIt) {
  const char16_t* pieces[] = {u":", u"&", u"a", u"'", u"\"", u"--", u"/*", u"*/", u"\n", u"::", u":=", u" ", u"_1", u"\u0103"};
  uint32_t state = 99;
  auto next = [&](uint32_t bound) {
    state = state * 1664525u + 1013904223u;
    return (state >> 8) % bound;
  };
  for (int round = 0; round < 5000; ++round) {
    String sql;
    for (uint32_t n = next(16); n > 0; --n) sql += pieces[next(sizeof pieces / sizeof pieces[0])];
    for (const TSqlPlace& p : ScanSqlPlaces(sql)) {
      ASSERT_GE(p.Start, 1);
      ASSERT_LE(p.Start + p.Length - 1, sql.Length()) << sql;
      ASSERT_FALSE(p.Name.IsEmpty());
    }
    // Expanding keeps every parameter: macros give plain text only.
    String expanded = ExpandSqlMacros(sql, [](const String&) { return String(u" "); });
    EXPECT_EQ(SqlPlaceNames(ScanSqlPlaces(expanded), TSqlPlace::Param).size(),
              SqlPlaceNames(ScanSqlPlaces(sql), TSqlPlace::Param).size())
        << sql;
  }
}

}  // namespace

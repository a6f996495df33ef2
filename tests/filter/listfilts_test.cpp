#include "filter/listfilts.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "platform/db/bdedataset.h"
#include "tests/support/dbfixture.h"

// A query that publishes VeskAlias, as the family's members do.
class TAliasedQuery : public TOraQuery {
  KELMAR_CLASS(TAliasedQuery, TOraQuery)
 public:
  explicit TAliasedQuery(TComponent* AOwner) : TOraQuery(AOwner) {}
  const String& VeskAlias() const { return alias_; }
  void SetVeskAlias(const String& value) { alias_ = value; }

 private:
  String alias_;
};

KELMAR_PUBLISH(TAliasedQuery) { r.Prop(u"VeskAlias", &TAliasedQuery::VeskAlias, &TAliasedQuery::SetVeskAlias); }

namespace {

using C = TListFilts::TColumn;

// The columns a row fills; the reserved one stays empty.
constexpr C kRowColumns[] = {TListFilts::lfField,         TListFilts::lfExpression, TListFilts::lfType,
                             TListFilts::lfExpressionBackup, TListFilts::lfRealFieldName, TListFilts::lfConfig,
                             TListFilts::lfConfigBackup, TListFilts::lfTableName, TListFilts::lfKeyField,
                             TListFilts::lfLResField,    TListFilts::lfLKeyField,  TListFilts::lfFieldKind,
                             TListFilts::lfCodText};

void ExpectAligned(const TListFilts& list, int rows) {
  for (C c : kRowColumns) EXPECT_EQ(list.Column(c)->Count(), rows) << "column " << int(c);
  EXPECT_EQ(list.Column(TListFilts::lfReserved)->Count(), 0);
}

String Cell(const TListFilts& list, C column, int row) { return list.Column(column)->Strings(row); }

class ListFiltsTest : public DbTest {
 protected:
  void SetUp() override {
    DbTest::SetUp();
    Exec(u"CREATE TABLE T (S VARCHAR2(10), I NUMBER(5), F NUMBER(8,2), FL FLOAT, D DATE, B BLOB, C CHAR(3), "
         u"L CLOB)");
    Exec(u"INSERT INTO T (S, I) VALUES ('a', 1)");
    query_ = new TAliasedQuery(owner_.get());
    query_->SetSession(session_);
    query_->SQL()->SetText(u"SELECT T.*, I + 1 AS X FROM T");
    query_->Open();
    list_ = std::make_unique<TListFilts>(query_);
  }
  void TearDown() override {
    list_.reset();
    DbTest::TearDown();
  }

  TAliasedQuery* query_ = nullptr;
  std::unique_ptr<TListFilts> list_;
};

TEST_F(ListFiltsTest, DefaultsOfTheDialogueSettings) {
  EXPECT_EQ(list_->TextOption(), 1);
  EXPECT_EQ(list_->Limit(), 7);
  EXPECT_FALSE(list_->CaseSensitive());
  EXPECT_TRUE(list_->Number());
  EXPECT_EQ(list_->FilterText(), u"");
  EXPECT_EQ(list_->Count(), 0);
  EXPECT_EQ(list_->DataSet(), query_);
}

TEST_F(ListFiltsTest, AddFieldsClassifiesByDataType) {
  query_->FieldByName(u"I")->SetDisplayLabel(u"Cantitatea");
  list_->AddFields(query_->Fields());
  // The blob and the memo get no row.
  ASSERT_EQ(list_->Count(), 7);
  ExpectAligned(*list_, 7);
  const char16_t* names[] = {u"S", u"I", u"F", u"FL", u"D", u"C", u"X"};
  const char16_t* types[] = {u"S", u"I", u"I", u"I", u"D", u"S", u"I"};
  for (int i = 0; i < 7; ++i) {
    EXPECT_EQ(Cell(*list_, TListFilts::lfRealFieldName, i), names[i]);
    EXPECT_EQ(Cell(*list_, TListFilts::lfType, i), types[i]) << String(names[i]);
    for (C c : {TListFilts::lfExpression, TListFilts::lfExpressionBackup, TListFilts::lfConfig,
                TListFilts::lfConfigBackup, TListFilts::lfTableName, TListFilts::lfKeyField,
                TListFilts::lfLResField, TListFilts::lfLKeyField, TListFilts::lfFieldKind, TListFilts::lfCodText})
      EXPECT_EQ(Cell(*list_, c, i), u" ") << String(names[i]) << " column " << int(c);
  }
  EXPECT_EQ(Cell(*list_, TListFilts::lfField, 0), u"S");
  EXPECT_EQ(Cell(*list_, TListFilts::lfField, 1), u"Cantitatea");
}

TEST_F(ListFiltsTest, AliasPrefixesRealNamesAndLookups) {
  query_->SetVeskAlias(u"q");
  list_->AddFields(query_->Fields());
  EXPECT_EQ(Cell(*list_, TListFilts::lfRealFieldName, 0), u"q.S");
  EXPECT_EQ(list_->GetFieldIndex(u"s"), 0);
  EXPECT_EQ(list_->GetFieldIndex(u"FL"), 3);
  EXPECT_EQ(list_->GetFieldIndex(u"q.S"), -1);  // the alias is always put in front
  EXPECT_EQ(list_->GetFieldIndex(u"B"), -1);
  query_->SetVeskAlias(String());
  EXPECT_EQ(list_->GetFieldIndex(u"q.s"), 0);
  EXPECT_EQ(list_->GetFieldIndex(u"S"), -1);
}

TEST_F(ListFiltsTest, LookupFieldsNeedATableClass) {
  TTable table(nullptr);
  table.SetTableName(u"PARTNERS");
  TOraQuery other(nullptr);
  std::vector<std::unique_ptr<TField>> owned;
  TFields fields(nullptr);
  auto add = [&](const char16_t* name, TDataSet* lookup, TFieldKind kind) {
    auto* f = new TStringField(nullptr);
    owned.emplace_back(f);
    f->SetFieldName(name);
    f->SetFieldKind(kind);
    f->SetLookupDataSet(lookup);
    f->SetKeyFields(u"PARTNER_ID");
    f->SetLookupKeyFields(u"ID");
    f->SetLookupResultField(u"NAME");
    fields.Add(f);
  };
  add(u"PARTNER", &table, fkLookup);
  add(u"OTHER", &other, fkLookup);      // a query class: no table name, no row
  add(u"DATA", &table, fkData);         // a data field with a lookup dataset counts as a lookup
  add(u"NOLOOKUP", nullptr, fkLookup);  // a lookup without dataset: no table, no row
  list_->AddFields(&fields);
  ASSERT_EQ(list_->Count(), 2);
  ExpectAligned(*list_, 2);
  for (int row = 0; row < 2; ++row) {
    EXPECT_EQ(Cell(*list_, TListFilts::lfTableName, row), u"PARTNERS");
    EXPECT_EQ(Cell(*list_, TListFilts::lfKeyField, row), u"PARTNER_ID");
    EXPECT_EQ(Cell(*list_, TListFilts::lfLResField, row), u"NAME");
    EXPECT_EQ(Cell(*list_, TListFilts::lfLKeyField, row), u"ID");
    EXPECT_EQ(Cell(*list_, TListFilts::lfFieldKind, row), u"2");
    EXPECT_EQ(Cell(*list_, TListFilts::lfType, row), u"S");
    EXPECT_EQ(Cell(*list_, TListFilts::lfCodText, row), u" ");
  }
  EXPECT_EQ(Cell(*list_, TListFilts::lfRealFieldName, 1), u"DATA");
}

TEST_F(ListFiltsTest, AddRecordPutsEachValueInItsColumn) {
  list_->AddRecord(u"Field", u"I", u"A.F", u"TAB", u"K", u"R", u"LK", u"2");
  ExpectAligned(*list_, 1);
  EXPECT_EQ(Cell(*list_, TListFilts::lfField, 0), u"Field");
  EXPECT_EQ(Cell(*list_, TListFilts::lfType, 0), u"I");
  EXPECT_EQ(Cell(*list_, TListFilts::lfRealFieldName, 0), u"A.F");
  EXPECT_EQ(Cell(*list_, TListFilts::lfTableName, 0), u"TAB");
  EXPECT_EQ(Cell(*list_, TListFilts::lfKeyField, 0), u"K");
  EXPECT_EQ(Cell(*list_, TListFilts::lfLResField, 0), u"R");
  EXPECT_EQ(Cell(*list_, TListFilts::lfLKeyField, 0), u"LK");
  EXPECT_EQ(Cell(*list_, TListFilts::lfFieldKind, 0), u"2");
}

TEST_F(ListFiltsTest, ExpressionsByName) {
  list_->AddFields(query_->Fields());
  EXPECT_FALSE(list_->GetIsFiltered(u"S"));  // the placeholder is no expression
  EXPECT_EQ(list_->GetFieldExpr(u"S"), u" ");
  list_->SetFieldExpr(u"s", u">5");
  EXPECT_EQ(list_->GetFieldExpr(u"S"), u">5");
  EXPECT_TRUE(list_->GetIsFiltered(u"S"));
  list_->SetFieldExpr(u"S", u"   ");
  EXPECT_FALSE(list_->GetIsFiltered(u"S"));
  list_->SetFieldExpr(u"NOPE", u"1");
  EXPECT_EQ(list_->GetFieldExpr(u"NOPE"), u"");
  EXPECT_FALSE(list_->GetIsFiltered(u"NOPE"));
  ExpectAligned(*list_, 7);
}

TEST_F(ListFiltsTest, ClearValuesEmptiesTheValueColumnsOnly) {
  list_->AddFields(query_->Fields());
  list_->SetFieldExpr(u"I", u"3");
  list_->SetFilterText(u"(I=3)");
  list_->ClearValues();
  for (C c : {TListFilts::lfExpression, TListFilts::lfExpressionBackup, TListFilts::lfConfig,
              TListFilts::lfConfigBackup, TListFilts::lfCodText})
    EXPECT_EQ(list_->Column(c)->Count(), 0) << int(c);
  for (C c : {TListFilts::lfField, TListFilts::lfType, TListFilts::lfRealFieldName, TListFilts::lfTableName,
              TListFilts::lfFieldKind})
    EXPECT_EQ(list_->Column(c)->Count(), 7) << int(c);
  EXPECT_EQ(list_->FilterText(), u"");
  // The rows are still found, but hold no expression.
  EXPECT_EQ(list_->GetFieldIndex(u"I"), 1);
  EXPECT_FALSE(list_->GetIsFiltered(u"I"));
  EXPECT_EQ(list_->GetFieldExpr(u"I"), u"");
  // Setting one puts placeholders back in front of it.
  list_->SetFieldExpr(u"F", u"<2");
  ASSERT_EQ(list_->Column(TListFilts::lfExpression)->Count(), 3);
  EXPECT_EQ(list_->GetFieldExpr(u"S"), u" ");
  EXPECT_TRUE(list_->GetIsFiltered(u"F"));
  list_->ClearAll();
  for (int c = 0; c < static_cast<int>(TListFilts::lfColumnCount); ++c) EXPECT_EQ(list_->Column(C(c))->Count(), 0);
}

TEST_F(ListFiltsTest, StateRestoresTheExpressionsOnly) {
  list_->AddFields(query_->Fields());
  list_->SetFieldExpr(u"S", u"abc");
  list_->SetFieldExpr(u"D", u"01.01.2024");
  list_->Column(TListFilts::lfConfig)->SetStrings(0, u"01");
  list_->Column(TListFilts::lfCodText)->SetStrings(0, u"1");
  String state = list_->GetState();
  EXPECT_EQ(state, u"abc\n \n \n \n01.01.2024\n \n \n"  // expressions
                   u" \n \n \n \n \n \n \n"              // their backups
                   u"01\n \n \n \n \n \n \n"             // configs
                   u" \n \n \n \n \n \n \n"              // config backups
                   u"1\n \n \n \n \n \n \n");            // lookup modes
  list_->SetFieldExpr(u"S", u"changed");
  list_->SetFilterText(u"(S='changed')");
  list_->SetState(state);
  EXPECT_EQ(list_->GetFieldExpr(u"S"), u"abc");
  EXPECT_EQ(list_->GetFieldExpr(u"D"), u"01.01.2024");
  EXPECT_EQ(list_->GetFieldExpr(u"I"), u" ");
  EXPECT_EQ(list_->Column(TListFilts::lfExpression)->Count(), 7);
  for (C c : {TListFilts::lfExpressionBackup, TListFilts::lfConfig, TListFilts::lfConfigBackup,
              TListFilts::lfCodText})
    EXPECT_EQ(list_->Column(c)->Count(), 0) << int(c);
  EXPECT_EQ(list_->FilterText(), u"");
}

TEST_F(ListFiltsTest, StateOfAnotherShapeChangesNothing) {
  list_->AddFields(query_->Fields());
  list_->SetFieldExpr(u"S", u"x");
  list_->SetFilterText(u"(S='x')");
  list_->SetState(u"a\nb\nc\n");
  EXPECT_EQ(list_->GetFieldExpr(u"S"), u"x");
  EXPECT_EQ(list_->FilterText(), u"(S='x')");
  ExpectAligned(*list_, 7);
  // No lines at all is a multiple of five: everything is cleared.
  list_->SetState(u"");
  EXPECT_EQ(list_->Column(TListFilts::lfExpression)->Count(), 0);
  EXPECT_EQ(list_->FilterText(), u"");
}

TEST(ListFiltsPlainTest, DatasetWithoutAliasOrNone) {
  TListFilts detached(nullptr);
  detached.AddRecord(u"A", u"S", u"A", u" ", u" ", u" ", u" ", u" ");
  EXPECT_EQ(detached.GetFieldIndex(u"a"), 0);
  detached.AddFields(nullptr);
  EXPECT_EQ(detached.Count(), 1);
}

}  // namespace

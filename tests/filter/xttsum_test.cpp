#include "filter/xttsum.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "platform/rtl/stringlist.h"
#include "platform/rtl/sysutils.h"
#include "platform/ui/extctrls.h"
#include "tests/support/dbfixture.h"

namespace {

// ---- Text form ------------------------------------------------------------------

struct TGoldenLine {
  int Line;
  String Input, AsString, Format;
  int Function;
};

std::vector<TGoldenLine> ReadGolden(const char* name) {
  TStringList file;
  file.LoadFromFile(String(KELMAR_GOLDEN) + u"/" + name, TEncoding::UTF8);
  std::vector<TGoldenLine> lines;
  for (int i = 0; i < file.Count(); ++i) {
    String line = file.Strings(i);
    if (line.IsEmpty() || line[1] == u'#') continue;
    TStringList cells;
    cells.SetDelimiter(u'\t');
    cells.SetStrictDelimiter(true);
    cells.SetQuoteChar(u'\0');
    cells.SetDelimitedText(line);
    EXPECT_EQ(cells.Count(), 4) << name << ":" << i + 1 << ": " << line;
    if (cells.Count() != 4) continue;
    String asString = cells.Strings(1) == u"(empty)" ? String() : cells.Strings(1);
    lines.push_back({i + 1, cells.Strings(0), asString, cells.Strings(2), StrToInt(cells.Strings(3))});
  }
  return lines;
}

TEST(SummaryTextTest, GoldenLines) {
  std::vector<TGoldenLine> lines = ReadGolden("summaries.txt");
  ASSERT_GT(lines.size(), 30u);
  XTTTSummaryCollection summaries(nullptr);
  for (const TGoldenLine& g : lines) {
    XTTTSummaryCollectionItem* item = summaries.Add();
    item->SetAsString(g.Input);
    EXPECT_EQ(item->Format(), g.Format) << "line " << g.Line << ": " << g.Input;
    EXPECT_EQ(item->TypeofFunction(), g.Function) << "line " << g.Line << ": " << g.Input;
    EXPECT_EQ(item->GetAsString(), g.AsString) << "line " << g.Line << ": " << g.Input;
  }
}

TEST(SummaryTextTest, SettingResetsFormatAndFunctionButNotWidth) {
  XTTTSummaryCollection summaries(nullptr);
  XTTTSummaryCollectionItem* item = summaries.Add();
  item->SetWidth(120);
  item->SetAsString(u"A=5,max");
  item->SetAsString(u"b");
  EXPECT_EQ(item->FieldName(), u"B");
  EXPECT_EQ(item->Format(), u"%.2f");
  EXPECT_EQ(item->TypeofFunction(), smfSum);
  EXPECT_EQ(item->Width(), 120);
}

TEST(SummaryTextTest, FieldNameKeepsItsCaseUnlessSetByText) {
  XTTTSummaryCollection summaries(nullptr);
  XTTTSummaryCollectionItem* item = summaries.Add();
  item->SetFieldName(u"Suma");
  EXPECT_EQ(item->FieldName(), u"Suma");
  EXPECT_EQ(item->GetAsString(), u"SUMA");
  item->SetFieldName(String());
  item->SetTypeofFunction(smfMax);
  EXPECT_EQ(item->GetAsString(), u"");
}

TEST(SummaryTextTest, CollectionTextSkipsEmptyLinesBothWays) {
  XTTTSummaryCollection summaries(nullptr);
  summaries.SetAsText(u"suma=3\r\n\r\nprice=0,avg\n=7\nqty,\n");
  ASSERT_EQ(summaries.Count(), 4);
  EXPECT_EQ(summaries.GetItem(0)->FieldName(), u"SUMA");
  EXPECT_EQ(summaries.GetItem(1)->TypeofFunction(), smfAvg);
  EXPECT_EQ(summaries.GetItem(2)->FieldName(), u"");  // kept as an item, written as nothing
  EXPECT_EQ(summaries.GetItem(3)->FieldName(), u"QTY,");
  EXPECT_EQ(summaries.GetAsText(), u"SUMA=3\nPRICE=0,4\nQTY,\n");
  summaries.SetAsText(u"");
  EXPECT_EQ(summaries.Count(), 0);
  EXPECT_EQ(summaries.GetAsText(), u"");
}

TEST(SummaryTextTest, ItemTextGoesThroughItsFormat) {
  XTTTSummaryCollection summaries(nullptr);
  XTTTSummaryCollectionItem* item = summaries.Add();
  EXPECT_EQ(item->GetText(), u"0.00");
  item->SetValue(1234.5);
  item->SetFormat(u"%.1n lei");
  EXPECT_EQ(item->GetText(), u"1,234.5 lei");
  EXPECT_DOUBLE_EQ(item->GetValue(), 1234.5);
  item->SetFormat(u"%d");
  EXPECT_THROW(item->GetText(), EConvertError);
}

TEST(SummaryCollectionTest, ItemsByNameAndFunction) {
  XTTTSummaryCollection summaries(nullptr);
  summaries.SetAsText(u"suma\nsuma=,max\nqty=,count");
  summaries.GetItem(0)->SetFieldName(u"Suma");
  EXPECT_EQ(summaries.GetItemByName(u"sUMA"), summaries.GetItem(0));
  EXPECT_EQ(summaries.GetItemByName(smfMax, u"suma"), summaries.GetItem(1));
  EXPECT_EQ(summaries.GetItemByName(smfCount, u"QTY"), summaries.GetItem(2));
  EXPECT_EQ(summaries.GetItemByName(smfMin, u"suma"), nullptr);
  EXPECT_EQ(summaries.GetItemByName(u"price"), nullptr);
}

TEST(SummaryCollectionTest, SetItemCopiesTheDescriptionNotTheValue) {
  XTTTSummaryCollection a(nullptr), b(nullptr);
  a.SetAsText(u"X=4,min");
  a.GetItem(0)->SetWidth(70);
  a.GetItem(0)->SetValue(9);
  b.SetAsText(u"Y");
  b.SetItem(0, a.GetItem(0));
  EXPECT_EQ(b.GetItem(0)->GetAsString(), u"X=4,1");
  EXPECT_EQ(b.GetItem(0)->Width(), 70);
  EXPECT_EQ(b.GetItem(0)->Value(), 0);
  EXPECT_THROW(b.SetItem(3, a.GetItem(0)), EListError);
}

TEST(SummaryCollectionTest, AttributesForTableEditing) {
  XTTTSummaryCollection summaries(nullptr);
  summaries.SetAsText(u"suma=\"%.3n\",avg\nqty");
  summaries.GetItem(1)->SetTypeofFunction(7);
  summaries.GetItem(1)->SetWidth(55);
  ASSERT_EQ(summaries.GetAttrCount(), 4);
  EXPECT_EQ(summaries.GetAttr(0), u"FieldName");
  EXPECT_EQ(summaries.GetAttr(1), u"TypeofFunction");
  EXPECT_EQ(summaries.GetAttr(2), u"Format");
  EXPECT_EQ(summaries.GetAttr(3), u"Width");
  EXPECT_EQ(summaries.GetAttr(4), u"");
  EXPECT_EQ(summaries.GetAttr(-1), u"");
  EXPECT_EQ(summaries.GetItemAttr(0, 0), u"SUMA");
  EXPECT_EQ(summaries.GetItemAttr(1, 0), u"smfAvg");
  EXPECT_EQ(summaries.GetItemAttr(2, 0), u"%.3n");
  EXPECT_EQ(summaries.GetItemAttr(3, 0), u"0");
  EXPECT_EQ(summaries.GetItemAttr(1, 1), u"7");
  EXPECT_EQ(summaries.GetItemAttr(3, 1), u"55");
  EXPECT_EQ(summaries.GetItemAttr(9, 1), u"");
}

// ---- Binary form ------------------------------------------------------------------

std::vector<uint8_t> BytesOf(TMemoryStream& stream) {
  auto* p = static_cast<const uint8_t*>(stream.Memory());
  return std::vector<uint8_t>(p, p + stream.Size());
}

// Count 2; "SUMA", "%.3f", width 80, max; "Q", "", width -1, function 7.
const std::vector<uint8_t> kTwoItems = {
    2,   0,   0,   0,                                             // count
    'S', 'U', 'M', 'A', 0,   '%', '.', '3', 'f', 0,             // name, format
    80,  0,   0,   0,   2,   0,   0,   0,                        // width, function
    'Q', 0,   0,                                                 // name, empty format
    255, 255, 255, 255, 7,   0,   0,   0};                       // width -1, function 7

TEST(SummaryStreamTest, WritesTheHistoricalLayout) {
  XTTTSummaryCollection summaries(nullptr);
  summaries.SetAsText(u"suma=3,max\nq");
  summaries.GetItem(0)->SetWidth(80);
  summaries.GetItem(1)->SetFormat(String());
  summaries.GetItem(1)->SetWidth(-1);
  summaries.GetItem(1)->SetTypeofFunction(7);
  TMemoryStream stream;
  summaries.SaveToStream(&stream);
  EXPECT_EQ(BytesOf(stream), kTwoItems);
}

TEST(SummaryStreamTest, ReadsHandAssembledBytes) {
  XTTTSummaryCollection summaries(nullptr);
  summaries.RealCalcSummaries();
  ASSERT_FALSE(summaries.Dirty());
  TMemoryStream stream;
  stream.WriteBuffer(kTwoItems.data(), static_cast<int64_t>(kTwoItems.size()));
  stream.SetPosition(0);
  summaries.LoadFromStream(&stream);
  EXPECT_TRUE(summaries.Dirty());
  ASSERT_EQ(summaries.Count(), 2);
  EXPECT_EQ(summaries.GetItem(0)->GetAsString(), u"SUMA=3,2");
  EXPECT_EQ(summaries.GetItem(0)->Width(), 80);
  EXPECT_EQ(summaries.GetItem(1)->FieldName(), u"Q");
  EXPECT_EQ(summaries.GetItem(1)->Format(), u"");
  EXPECT_EQ(summaries.GetItem(1)->Width(), -1);
  EXPECT_EQ(summaries.GetItem(1)->TypeofFunction(), 7);
  EXPECT_EQ(stream.Position(), stream.Size());
}

TEST(SummaryStreamTest, RoundTripInTheSystemCodePage) {
  int saved = SystemCodePage();
  SetSystemCodePage(1251);
  XTTTSummaryCollection a(nullptr), b(nullptr);
  a.SetAsText(u"цена=\"%.1f руб\",avg\nКОЛ=0,count");
  a.GetItem(1)->SetWidth(33);
  TMemoryStream stream;
  a.SaveToStream(&stream);
  std::vector<uint8_t> bytes = BytesOf(stream);
  // One byte per Cyrillic letter: "ЦЕНА" is four bytes before its zero.
  EXPECT_EQ(bytes[4], 0xD6);
  EXPECT_EQ(bytes[8], 0);
  stream.SetPosition(0);
  b.LoadFromStream(&stream);
  SetSystemCodePage(saved);
  EXPECT_EQ(b.GetAsText(), a.GetAsText());
  EXPECT_EQ(b.GetItem(1)->Width(), 33);
}

TEST(SummaryStreamTest, BrokenStreamsRaiseAndKeepTheItems) {
  XTTTSummaryCollection summaries(nullptr);
  summaries.SetAsText(u"KEEP=1,min");
  for (size_t cut : {size_t(0), size_t(3), size_t(6), size_t(14), size_t(20), kTwoItems.size() - 1}) {
    TMemoryStream stream;
    stream.WriteBuffer(kTwoItems.data(), static_cast<int64_t>(cut));
    stream.SetPosition(0);
    EXPECT_THROW(summaries.LoadFromStream(&stream), EReadError) << "cut at " << cut;
    ASSERT_EQ(summaries.Count(), 1);
    EXPECT_EQ(summaries.GetAsText(), u"KEEP=1,1\n");
  }
  const uint8_t negative[] = {0xFE, 0xFF, 0xFF, 0xFF};
  TMemoryStream stream;
  stream.WriteBuffer(negative, 4);
  stream.SetPosition(0);
  EXPECT_THROW(summaries.LoadFromStream(&stream), EReadError);
  EXPECT_EQ(summaries.Count(), 1);
  // A huge count with no items behind it ends at the stream's end.
  const uint8_t huge[] = {0xFF, 0xFF, 0xFF, 0x7F, 'A', 0};
  TMemoryStream stream2;
  stream2.WriteBuffer(huge, 6);
  stream2.SetPosition(0);
  EXPECT_THROW(summaries.LoadFromStream(&stream2), EReadError);
  EXPECT_EQ(summaries.Count(), 1);
}

TEST(SummaryStreamTest, EmptyCollection) {
  XTTTSummaryCollection a(nullptr), b(nullptr);
  b.SetAsText(u"X");
  TMemoryStream stream;
  a.SaveToStream(&stream);
  EXPECT_EQ(BytesOf(stream), (std::vector<uint8_t>{0, 0, 0, 0}));
  stream.SetPosition(0);
  b.LoadFromStream(&stream);
  EXPECT_EQ(b.Count(), 0);
}

// ---- Scans over a real table ---------------------------------------------------------

class SummaryScanTest : public DbTest {
 protected:
  void SetUp() override {
    DbTest::SetUp();
    Exec(u"CREATE TABLE T (ID NUMBER(5), AMOUNT NUMBER(10,2), QTY NUMBER(5), NAME VARCHAR2(20), MADE DATE)");
    Exec(u"INSERT INTO T VALUES (1, 10.5, 3, 'a', TO_DATE('2024-01-02', 'YYYY-MM-DD'))");
    Exec(u"INSERT INTO T VALUES (2, NULL, 5, '7', NULL)");
    Exec(u"INSERT INTO T VALUES (3, 4.25, NULL, 'x', TO_DATE('2024-01-05', 'YYYY-MM-DD'))");
    Exec(u"INSERT INTO T VALUES (4, 20, 1, NULL, NULL)");
    query_ = Query(u"SELECT * FROM T ORDER BY ID");
    query_->SetSQLUpdate(Lines(u"UPDATE T SET AMOUNT = :AMOUNT, QTY = :QTY WHERE ID = :OLD_ID"));
    query_->Open();
    summaries_ = std::make_unique<XTTTSummaryCollection>(query_);
  }
  void TearDown() override {
    summaries_.reset();
    DbTest::TearDown();
  }
  TStrings* Lines(const String& text) {
    lines_.SetText(text);
    return &lines_;
  }
  double ValueOf(int i) { return summaries_->GetItem(i)->Value(); }

  TOraQuery* query_ = nullptr;
  std::unique_ptr<XTTTSummaryCollection> summaries_;
  TStringList lines_;
};

TEST_F(SummaryScanTest, EveryFunctionWithNullsAndNonNumericFields) {
  summaries_->SetAsText(
      u"amount\namount=,min\namount=,max\nqty=,avg\nname=,count\nname\nmade\nmissing\nid=,max");
  EXPECT_TRUE(summaries_->Dirty());
  summaries_->CheckSummaries();
  EXPECT_FALSE(summaries_->Dirty());
  EXPECT_DOUBLE_EQ(ValueOf(0), 34.75);
  EXPECT_DOUBLE_EQ(ValueOf(1), 0);  // the null counts as 0
  EXPECT_DOUBLE_EQ(ValueOf(2), 20);
  EXPECT_DOUBLE_EQ(ValueOf(3), 2.25);  // (3 + 5 + 0 + 1) / 4
  EXPECT_DOUBLE_EQ(ValueOf(4), 4);     // every record, nulls too
  EXPECT_DOUBLE_EQ(ValueOf(5), 0);     // text is not summed, even "7"
  EXPECT_DOUBLE_EQ(ValueOf(6), 0);     // neither are dates
  EXPECT_DOUBLE_EQ(ValueOf(7), 0);
  EXPECT_DOUBLE_EQ(ValueOf(8), 4);
}

TEST_F(SummaryScanTest, MinimumStartsFromTheFirstRecord) {
  // Every value is above 10, but the first record's null starts the minimum
  // at 0; a maximum of negative values likewise stays at the first's 0.
  Exec(u"DELETE FROM T");
  Exec(u"INSERT INTO T (ID, AMOUNT, QTY) VALUES (1, NULL, -4)");
  Exec(u"INSERT INTO T (ID, AMOUNT, QTY) VALUES (2, 15, -2)");
  Exec(u"INSERT INTO T (ID, AMOUNT, QTY) VALUES (3, 12, -9)");
  query_->Refresh();
  summaries_->SetAsText(u"amount=,min\nqty=,max\nqty=,min");
  summaries_->CheckSummaries();
  EXPECT_DOUBLE_EQ(ValueOf(0), 0);
  EXPECT_DOUBLE_EQ(ValueOf(1), -2);
  EXPECT_DOUBLE_EQ(ValueOf(2), -9);
}

TEST_F(SummaryScanTest, ComesBackToTheRecordAndLeavesControlsEnabled) {
  summaries_->SetAsText(u"amount");
  query_->Next();
  query_->Next();
  ASSERT_EQ(query_->FieldByName(u"ID")->AsInteger(), 3);
  summaries_->RealCalcSummaries();
  EXPECT_EQ(query_->FieldByName(u"ID")->AsInteger(), 3);
  EXPECT_FALSE(query_->ControlsDisabled());
  EXPECT_FALSE(query_->Eof());
}

TEST_F(SummaryScanTest, CleanSummariesAreNotScannedAgain) {
  summaries_->SetAsText(u"amount");
  summaries_->CheckSummaries();
  Exec(u"UPDATE T SET AMOUNT = 1");
  query_->Refresh();
  summaries_->CheckSummaries();
  EXPECT_DOUBLE_EQ(ValueOf(0), 34.75);
  summaries_->CalcSummaries();
  EXPECT_TRUE(summaries_->Dirty());
  summaries_->CheckSummaries();
  EXPECT_DOUBLE_EQ(ValueOf(0), 4);
}

TEST_F(SummaryScanTest, EmptyOrClosedDatasetGivesZeros) {
  summaries_->SetAsText(u"amount=0\nqty=,avg\nid=,min");
  summaries_->GetItem(0)->SetValue(5);
  Exec(u"DELETE FROM T");
  query_->Refresh();
  summaries_->CheckSummaries();
  EXPECT_EQ(summaries_->GetItem(0)->GetText(), u"0");
  EXPECT_EQ(summaries_->GetItem(1)->GetText(), u"0.00");
  EXPECT_EQ(summaries_->GetItem(2)->GetText(), u"0.00");
  query_->Close();
  summaries_->CalcSummaries();
  EXPECT_NO_THROW(summaries_->CheckSummaries());
  EXPECT_FALSE(summaries_->Dirty());
}

TEST_F(SummaryScanTest, IncludeCurrentRecordFollowsAnEditOfSumsAndCounts) {
  summaries_->SetAsText(u"amount\nqty\nname=,count");
  summaries_->CheckSummaries();
  query_->First();  // ID 1: AMOUNT 10.5, QTY 3
  summaries_->IncludeCurrentRecord(false);
  EXPECT_DOUBLE_EQ(ValueOf(0), 24.25);
  EXPECT_DOUBLE_EQ(ValueOf(1), 6);
  EXPECT_DOUBLE_EQ(ValueOf(2), 3);
  query_->Edit();
  query_->FieldByName(u"AMOUNT")->SetAsFloat(100);
  query_->FieldByName(u"QTY")->Clear();
  query_->Post();
  summaries_->IncludeCurrentRecord(true);
  EXPECT_FALSE(summaries_->Dirty());
  std::vector<double> incremental = {ValueOf(0), ValueOf(1), ValueOf(2)};
  EXPECT_DOUBLE_EQ(incremental[0], 124.25);
  summaries_->CalcSummaries();
  summaries_->CheckSummaries();
  EXPECT_DOUBLE_EQ(ValueOf(0), incremental[0]);
  EXPECT_DOUBLE_EQ(ValueOf(1), incremental[1]);
  EXPECT_DOUBLE_EQ(ValueOf(2), incremental[2]);
}

TEST_F(SummaryScanTest, IncludeCurrentRecordWithAMinimumOnlyMarksDirtyOnAdd) {
  summaries_->SetAsText(u"amount\namount=,min");
  summaries_->CheckSummaries();
  summaries_->IncludeCurrentRecord(false);
  EXPECT_FALSE(summaries_->Dirty());
  EXPECT_DOUBLE_EQ(ValueOf(0), 34.75);  // the sum is left alone too
  summaries_->IncludeCurrentRecord(true);
  EXPECT_TRUE(summaries_->Dirty());
  EXPECT_DOUBLE_EQ(ValueOf(0), 34.75);
}

TEST_F(SummaryScanTest, FieldValueOnlyForNumbers) {
  summaries_->SetAsText(u"amount\nqty\nname\nmade\nnope");
  query_->Next();  // ID 2: AMOUNT null, QTY 5, NAME "7"
  EXPECT_DOUBLE_EQ(summaries_->GetItem(0)->GetFieldValue(), 0);
  EXPECT_DOUBLE_EQ(summaries_->GetItem(1)->GetFieldValue(), 5);
  EXPECT_DOUBLE_EQ(summaries_->GetItem(2)->GetFieldValue(), 0);
  query_->First();
  EXPECT_DOUBLE_EQ(summaries_->GetItem(0)->GetFieldValue(), 10.5);
  EXPECT_DOUBLE_EQ(summaries_->GetItem(3)->GetFieldValue(), 0);
  EXPECT_DOUBLE_EQ(summaries_->GetItem(4)->GetFieldValue(), 0);
}

// ---- Status bar ------------------------------------------------------------------------

TEST_F(SummaryScanTest, DisplayMakesOnePanelPerItem) {
  TStatusBar bar(nullptr);
  for (int i = 0; i < 5; ++i) bar.Panels()->Add()->SetText(u"old");
  summaries_->SetAsText(u"amount\nqty=0,max");
  summaries_->GetItem(0)->SetWidth(120);
  summaries_->GetItem(1)->SetWidth(40);
  summaries_->DisplaySummaries(&bar);
  ASSERT_EQ(bar.Panels()->Count(), 2);
  EXPECT_EQ(bar.Panels()->Items(0)->Text(), u"34.75");
  EXPECT_EQ(bar.Panels()->Items(0)->Width(), 120);
  EXPECT_EQ(bar.Panels()->Items(1)->Text(), u"5");
  EXPECT_EQ(bar.Panels()->Items(1)->Width(), 40);
  summaries_->SetAsText(u"amount=1\nqty=,count\nid=0,avg");
  summaries_->DisplaySummaries(&bar);
  ASSERT_EQ(bar.Panels()->Count(), 3);
  EXPECT_EQ(bar.Panels()->Items(0)->Text(), u"34.8");
  EXPECT_EQ(bar.Panels()->Items(1)->Text(), u"4.00");  // "%f" has two decimals too
  EXPECT_EQ(bar.Panels()->Items(2)->Text(), u"3");  // 2.5 rounds away from zero
  EXPECT_EQ(bar.Panels()->Items(2)->Width(), 0);
  summaries_->SetAsText(u"");
  summaries_->DisplaySummaries(&bar);
  EXPECT_EQ(bar.Panels()->Count(), 0);
  summaries_->DisplaySummaries(nullptr);
}

TEST_F(SummaryScanTest, DisplayOnAnEmptyDatasetShowsZeroThroughTheFormat) {
  Exec(u"DELETE FROM T");
  query_->Refresh();
  TStatusBar bar(nullptr);
  summaries_->SetAsText(u"amount\nqty=\"%.0f buc\",count\nid=,min");
  summaries_->DisplaySummaries(&bar);
  ASSERT_EQ(bar.Panels()->Count(), 3);
  EXPECT_EQ(bar.Panels()->Items(0)->Text(), u"0.00");
  EXPECT_EQ(bar.Panels()->Items(1)->Text(), u"0 buc");
  EXPECT_EQ(bar.Panels()->Items(2)->Text(), u"0.00");
}

TEST_F(SummaryScanTest, DisplayRaisesTheFormatErrorAfterSizingThePanels) {
  TStatusBar bar(nullptr);
  summaries_->SetAsText(u"amount=\"%d\"");
  EXPECT_THROW(summaries_->DisplaySummaries(&bar), EConvertError);
  EXPECT_EQ(bar.Panels()->Count(), 1);
}

// ---- Errors of the scan ------------------------------------------------------------------

TEST_F(SummaryScanTest, InvalidNumberFromTheEngineIsDropped) {
  // The bad text lies beyond the first fetched block: the open succeeds and
  // the scan's fetch fails with ORA-01722.
  Exec(u"CREATE TABLE RAW (ID NUMBER(5), TXT VARCHAR2(10))");
  for (int i = 1; i <= 60; ++i)
    Exec(u"INSERT INTO RAW VALUES (" + IntToStr(i) + u", '" + (i == 50 ? String(u"abc") : IntToStr(i)) + u"')");
  TOraQuery* raw = Query(u"SELECT ID, TO_NUMBER(TXT) AS N FROM RAW");
  raw->Open();
  XTTTSummaryCollection summaries(raw);
  summaries.SetAsText(u"id");
  EXPECT_NO_THROW(summaries.CheckSummaries());
  EXPECT_FALSE(summaries.Dirty());
  EXPECT_DOUBLE_EQ(summaries.GetItem(0)->Value(), 0);
  EXPECT_FALSE(raw->ControlsDisabled());
  // The same scan, uncaught, shows what was dropped.
  raw->Close();
  raw->Open();
  try {
    summaries.RealCalcSummaries();
    FAIL() << "the engine did not fail";
  } catch (const Exception& e) {
    EXPECT_EQ(e.Message.SubString(1, 9), u"ORA-01722") << e.Message;
  }
}

class SummaryFaultTest : public FaultDbTest {};

TEST_F(SummaryFaultTest, OtherErrorsGetThePrefixAndKeepTheirClass) {
  Exec(u"CREATE TABLE T (ID NUMBER(5))");
  for (int i = 1; i <= 40; ++i) Exec(u"INSERT INTO T VALUES (" + IntToStr(i) + u")");
  TOraQuery* q = Query(u"SELECT ID FROM T");
  q->Open();
  XTTTSummaryCollection summaries(q);
  summaries.SetAsText(u"id");
  TFaultPlan::Current().Countdown = 3;  // a fetch of the scan
  try {
    summaries.CheckSummaries();
    FAIL() << "the scan did not fail";
  } catch (const EOraError& e) {
    EXPECT_EQ(e.Message, u"Error in XTTTSummaryCollection::CheckSummaries():\n"
                         u"ORA-03113: end-of-file on communication channel");
  }
  EXPECT_FALSE(q->ControlsDisabled());
}

TEST_F(SummaryScanTest, MinimumOverAMissingFieldRaisesWithThePrefix) {
  summaries_->SetAsText(u"nope=,min");
  try {
    summaries_->CheckSummaries();
    FAIL() << "no error";
  } catch (const EDatabaseError& e) {
    EXPECT_EQ(e.Message.Pos(u"Error in XTTTSummaryCollection::CheckSummaries():\n"), 1) << e.Message;
    EXPECT_GT(e.Message.Pos(u"NOPE"), 0) << e.Message;
  }
  EXPECT_FALSE(query_->ControlsDisabled());
  EXPECT_EQ(query_->FieldByName(u"ID")->AsInteger(), 1);
}

}  // namespace

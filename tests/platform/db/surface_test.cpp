// The members of fields and datasets that the kit reads beyond moving and
// posting: search over several keys, appearance, text forms, blobs, deep
// filters and the failures of each step.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include "platform/db/datasource.h"
#include "platform/db/memdataset.h"

namespace {

class SurfaceTest : public ::testing::Test {
 protected:
  void SetUp() override {
    table_ = std::make_unique<TVirtualTable>(nullptr);
    table_->AddField(u"ID", ftInteger);
    table_->AddField(u"CITY", ftString, 20);
    table_->AddField(u"NAME", ftString, 30);
    table_->AddField(u"PRICE", ftFloat);
    table_->AddField(u"DAY", ftDate);
    table_->AddField(u"DATA", ftBlob);
    table_->AddField(u"NOTE", ftMemo);
    table_->Open();
    Add(1, u"Chișinău", u"Ana Popescu", 10.5, EncodeDate(2024, 1, 5));
    Add(2, u"Bălți", u"ana maria", 2, EncodeDate(2024, 2, 29));
    Add(3, u"Chișinău", u"ANATOL", 3.25, EncodeDate(2023, 12, 31));
    Add(4, u"Cahul", u"Andrei", 0, EncodeDate(2024, 3, 1));
    table_->First();
  }
  void Add(int id, const String& city, const String& name, double price, TDateTime day) {
    table_->Append();
    table_->FieldByName(u"ID")->SetAsInteger(id);
    table_->FieldByName(u"CITY")->SetAsString(city);
    table_->FieldByName(u"NAME")->SetAsString(name);
    table_->FieldByName(u"PRICE")->SetAsFloat(price);
    table_->FieldByName(u"DAY")->SetAsDateTime(day);
    table_->Post();
  }
  int Id() const { return table_->FieldByName(u"ID")->AsInteger(); }
  // Ids of the records that pass a filter, as "1,3".
  std::string Ids(const String& filter, TFilterOptions options = TFilterOptions()) {
    table_->SetFiltered(false);
    table_->SetFilterOptions(options);
    table_->SetFilter(filter);
    table_->SetFiltered(true);
    std::string out;
    for (table_->First(); !table_->Eof(); table_->Next()) out += (out.empty() ? "" : ",") + std::to_string(Id());
    table_->SetFiltered(false);
    return out;
  }

  std::unique_ptr<TVirtualTable> table_;
};

TEST_F(SurfaceTest, LocateOverSeveralKeysAppliesTheOptionsToEachTextKey) {
  const TLocateOptions none;
  const TLocateOptions ci = TLocateOptions() << loCaseInsensitive;
  const TLocateOptions partial = TLocateOptions() << loPartialKey;
  const TLocateOptions both = TLocateOptions() << loCaseInsensitive << loPartialKey;
  EXPECT_FALSE(table_->Locate(u"CITY;NAME", VarArrayOf({u"Chișinău", u"anatol"}), none));
  EXPECT_TRUE(table_->Locate(u"CITY;NAME", VarArrayOf({u"CHIȘINĂU", u"anatol"}), ci));
  EXPECT_EQ(Id(), 3);
  // Partial keys match from the start of each text, in order of the records.
  EXPECT_TRUE(table_->Locate(u"CITY;NAME", VarArrayOf({u"Ch", u"Ana"}), partial));
  EXPECT_EQ(Id(), 1);
  EXPECT_TRUE(table_->Locate(u"CITY; NAME", VarArrayOf({u"b", u"ANA M"}), both));
  EXPECT_EQ(Id(), 2);
  EXPECT_FALSE(table_->Locate(u"CITY;NAME", VarArrayOf({u"Cahul", u"an"}), partial));
  EXPECT_TRUE(table_->Locate(u"CITY;NAME", VarArrayOf({u"Cahul", u"an"}), both));
  EXPECT_EQ(Id(), 4);
  // Options leave numbers and dates exact; three keys of three kinds.
  const Variant keys = VarArrayOf({Variant(1), Variant(u"ana p"), Variant(EncodeDate(2024, 1, 5))});
  EXPECT_TRUE(table_->Locate(u"ID;NAME;DAY", keys, both));
  EXPECT_EQ(Id(), 1);
  EXPECT_FALSE(table_->Locate(u"PRICE;NAME", VarArrayOf({Variant(3.2), Variant(u"ANATOL")}), both));
  EXPECT_EQ(Id(), 1);
  // A failed search does not move.
  EXPECT_FALSE(table_->Locate(u"NAME", Variant(u"Ion"), both));
  EXPECT_EQ(Id(), 1);
  try {
    table_->Locate(u"CITY;NAME;ID", VarArrayOf({u"Cahul", u"Andrei"}), none);
    FAIL() << "two values for three keys";
  } catch (const EDatabaseError& e) {
    EXPECT_EQ(e.Message, u"The number of key values does not match the key fields 'CITY;NAME;ID'");
  }
}

TEST_F(SurfaceTest, LookupOverSeveralKeysGivesTheResultWithoutMoving) {
  table_->Last();
  Variant r = table_->Lookup(u"CITY;ID", VarArrayOf({u"Chișinău", 3}), u"NAME;PRICE");
  ASSERT_TRUE(r.IsArray());
  EXPECT_EQ(r.GetElement(0).AsString(), u"ANATOL");
  EXPECT_DOUBLE_EQ(r.GetElement(1).AsFloat(), 3.25);
  EXPECT_EQ(Id(), 4);
  // Lookup is exact: no case folding, no prefixes.
  EXPECT_TRUE(table_->Lookup(u"CITY;ID", VarArrayOf({u"chișinău", 3}), u"NAME").IsNull());
  EXPECT_TRUE(table_->Lookup(u"NAME", Variant(u"Ana"), u"ID").IsNull());
  EXPECT_THROW(table_->Lookup(u"CITY;ID", VarArrayOf({u"Cahul", 4}), u"NOPE"), EDatabaseError);
  table_->Close();
  try {
    table_->Lookup(u"ID", Variant(1), u"NAME");
    FAIL() << "a closed dataset looked up";
  } catch (const EDatabaseError& e) {
    EXPECT_EQ(e.Message, u"Cannot perform this operation on a closed dataset");
  }
}

TEST_F(SurfaceTest, FieldsAppearByTheirTypeUntilToldOtherwise) {
  TField* id = table_->FieldByName(u"ID");
  TField* city = table_->FieldByName(u"CITY");
  TField* price = table_->FieldByName(u"PRICE");
  EXPECT_EQ(id->Alignment(), taRightJustify);
  EXPECT_EQ(price->Alignment(), taRightJustify);
  EXPECT_EQ(city->Alignment(), taLeftJustify);
  EXPECT_EQ(city->DisplayWidth(), 20);
  EXPECT_EQ(city->Size(), 20);
  city->SetDisplayWidth(7);
  city->SetAlignment(taCenter);
  EXPECT_EQ(city->DisplayWidth(), 7);
  EXPECT_EQ(city->Alignment(), taCenter);
  EXPECT_EQ(city->DisplayLabel(), u"CITY");
  city->SetDisplayLabel(u"Oraș");
  EXPECT_EQ(city->DisplayName(), u"Oraș");
  EXPECT_EQ(city->FieldName(), u"CITY");
  EXPECT_EQ(table_->FindField(u"Oraș"), nullptr) << "fields are found by name, not label";
  EXPECT_TRUE(city->Visible());
  EXPECT_EQ(id->Index(), 0);
  EXPECT_EQ(table_->FieldByName(u"DAY")->Index(), 4);
  EXPECT_EQ(table_->FieldByName(u"DAY")->DataType(), ftDate);
  EXPECT_EQ(table_->FieldByName(u"DATA")->DataType(), ftBlob);
}

TEST_F(SurfaceTest, DisplayAndEditTextFollowFormatsMasksAndEvents) {
  auto* price = static_cast<TFloatField*>(table_->FieldByName(u"PRICE"));
  auto* day = static_cast<TDateTimeField*>(table_->FieldByName(u"DAY"));
  TField* name = table_->FieldByName(u"NAME");
  price->SetDisplayFormat(u"#,##0.00 'lei'");
  EXPECT_EQ(price->DisplayText(), u"10.50 lei");
  day->SetDisplayFormat(u"yyyy-mm-dd");
  EXPECT_EQ(day->DisplayText(), u"2024-01-05");
  table_->Next();
  EXPECT_EQ(day->DisplayText(), u"2024-02-29");
  EXPECT_EQ(price->DisplayText(), u"2.00 lei");

  // The mask lays the text out with its literals.
  TField* id = table_->FieldByName(u"ID");
  id->SetEditMask(u"\\N\\r. 000;0;_");
  EXPECT_EQ(id->EditText(), u"Nr. 2  ");
  name->SetEditMask(u">LLL;0; ");
  EXPECT_EQ(name->EditText(), u"ANA");
  name->SetEditMask(u"");
  EXPECT_EQ(name->EditText(), u"ana maria");

  // OnGetText is asked with the form wanted; OnSetText takes the typed text.
  std::vector<bool> asked;
  name->OnGetText = [&](TField* f, String& text, bool display) {
    asked.push_back(display);
    text = display ? UpperCase(f->AsString()) : f->AsString();
  };
  EXPECT_EQ(name->DisplayText(), u"ANA MARIA");
  EXPECT_EQ(name->Text(), u"ana maria");
  EXPECT_EQ(asked, (std::vector<bool>{true, false}));
  name->OnSetText = [](TField* f, const String& text) { f->SetAsString(Trim(text)); };
  table_->Edit();
  name->SetText(u"  Maria  ");
  EXPECT_EQ(name->AsString(), u"Maria");
  // Without a handler, text goes in as the field's own conversion.
  price->SetText(u"7.75");
  EXPECT_DOUBLE_EQ(price->AsFloat(), 7.75);
  EXPECT_THROW(price->SetText(u"seven"), EDatabaseError);
  EXPECT_DOUBLE_EQ(price->AsFloat(), 7.75);
  table_->Post();
  EXPECT_EQ(table_->FieldByName(u"NAME")->AsString(), u"Maria");
}

TEST_F(SurfaceTest, RequiredFieldsRefuseThePostAndKeepTheEdit) {
  TField* city = table_->FieldByName(u"CITY");
  city->SetRequired(true);
  table_->Append();
  table_->FieldByName(u"ID")->SetAsInteger(9);
  try {
    table_->Post();
    FAIL() << "posted without a required value";
  } catch (const EDatabaseError& e) {
    EXPECT_EQ(e.Message, u"Field 'CITY' must have a value");
  }
  EXPECT_EQ(table_->State(), dsInsert);
  EXPECT_EQ(Id(), 9);
  city->SetAsString(u"Orhei");
  table_->Post();
  EXPECT_EQ(table_->RecordCount(), 5);
  EXPECT_TRUE(table_->Locate(u"CITY", Variant(u"Orhei"), TLocateOptions()));
}

TEST_F(SurfaceTest, BlobsGoToAndComeFromStreamsAndFiles) {
  auto* data = static_cast<TBlobField*>(table_->FieldByName(u"DATA"));
  const std::string bytes("\x00\x01\xff binary\r\n\x00", 12);
  TMemoryStream in;
  in.WriteBuffer(bytes.data(), static_cast<int64_t>(bytes.size()));
  table_->Edit();
  data->LoadFromStream(&in);
  table_->Post();
  EXPECT_EQ(data->BlobSize(), 12);
  EXPECT_EQ(data->AsBytes(), bytes);
  EXPECT_EQ(data->DisplayText(), u"(BLOB)");

  TMemoryStream out;
  data->SaveToStream(&out);
  ASSERT_EQ(out.Size(), 12);
  std::string copy(12, '\0');
  out.SetPosition(0);
  out.ReadBuffer(copy.data(), 12);
  EXPECT_EQ(copy, bytes);

  const std::filesystem::path path = std::filesystem::temp_directory_path() /
                                     ("kelmar-blob-" + std::to_string(reinterpret_cast<uintptr_t>(this)) + ".bin");
  data->SaveToFile(String(path.string()));
  EXPECT_EQ(std::filesystem::file_size(path), 12u);
  table_->Next();
  EXPECT_EQ(data->BlobSize(), 0);
  EXPECT_EQ(data->DisplayText(), u"(Blob)");
  table_->Edit();
  data->LoadFromFile(String(path.string()));
  table_->Post();
  std::remove(path.string().c_str());
  EXPECT_EQ(data->AsBytes(), bytes);
  table_->First();
  EXPECT_EQ(data->AsBytes(), bytes);
  // A memo is text; both show their type rather than their content.
  TField* note = table_->FieldByName(u"NOTE");
  EXPECT_EQ(note->DisplayText(), u"(Memo)");
  table_->Edit();
  note->SetAsString(u"rândul 1\r\nстрока 2");
  table_->Post();
  EXPECT_EQ(note->AsString(), u"rândul 1\r\nстрока 2");
  EXPECT_EQ(note->DisplayText(), u"(MEMO)");
  EXPECT_EQ(note->DataType(), ftMemo);
  // A file that is not there is a clear error and changes nothing.
  table_->Edit();
  EXPECT_THROW(data->LoadFromFile(String(path.string())), EFOpenError);
  EXPECT_EQ(data->AsBytes(), bytes);
  table_->Cancel();
}

TEST_F(SurfaceTest, FiltersCombineOptionsLogicAndLiterals) {
  EXPECT_EQ(Ids(u"NAME = 'ana*'"), "2");
  EXPECT_EQ(Ids(u"NAME = 'ana*'", TFilterOptions() << foCaseInsensitive), "1,2,3");
  EXPECT_EQ(Ids(u"NAME = 'ana*'", TFilterOptions() << foCaseInsensitive << foNoPartialCompare), "");
  EXPECT_EQ(Ids(u"NAME = 'ANATOL'", TFilterOptions() << foCaseInsensitive << foNoPartialCompare), "3");
  EXPECT_EQ(Ids(u"NOT (CITY = 'Chișinău' OR PRICE < 1) AND DAY >= '2024-01-01'"), "2");
  EXPECT_EQ(Ids(u"(CITY = 'C*' AND (PRICE > 5 OR DAY < '2024-01-01')) OR ID = 4"), "1,3,4");
  EXPECT_EQ(Ids(u"CITY = \"Cahul\" OR NAME = 'ana maria'"), "2,4");
  EXPECT_EQ(Ids(u"DATA IS NULL AND NOT NAME IS NULL"), "1,2,3,4");
  EXPECT_EQ(Ids(u"PRICE >= 2 and PRICE <= 3.25 and id <> 1"), "2,3");
}

TEST_F(SurfaceTest, AFilterNotInForceDoesNotStopTheOpening) {
  table_->Close();
  table_->SetFilter(u"ID >");
  table_->Open();
  EXPECT_EQ(table_->RecordCount(), 4);
  // Switching it on reads it, and a bad text leaves the filter off.
  EXPECT_THROW(table_->SetFiltered(true), EDatabaseError);
  EXPECT_FALSE(table_->Filtered());
  EXPECT_EQ(table_->RecordCount(), 4);
  table_->SetFilter(u"ID > 2");
  table_->SetFiltered(true);
  EXPECT_EQ(table_->RecordCount(), 2);
  // While open, a bad text is refused as it is set, in force or not.
  table_->SetFiltered(false);
  EXPECT_THROW(table_->SetFilter(u"ID = = 1"), EDatabaseError);
  EXPECT_EQ(table_->Filter(), u"ID > 2");
  table_->Close();
  table_->SetFiltered(true);
  table_->Open();
  EXPECT_EQ(table_->RecordCount(), 2);
}

TEST_F(SurfaceTest, LongAndDeepFiltersAreBoundedNotFatal) {
  // A long chain is fine however long; nesting has a limit and says so.
  String chain = u"ID > 0";
  for (int i = 0; i < 20000; ++i) chain += u" AND ID <> 99";
  EXPECT_EQ(Ids(chain), "1,2,3,4");
  String deep = u"ID = 1";
  for (int i = 0; i < 1000; ++i) deep = u"(" + deep + u")";
  try {
    table_->SetFilter(deep);
    FAIL() << "a filter nested a thousand deep was taken";
  } catch (const EDatabaseError& e) {
    EXPECT_NE(e.Message.ToUtf8().find("nested too deeply"), std::string::npos) << e.Message.ToUtf8();
  }
  String nots;
  for (int i = 0; i < 40; ++i) nots += u"NOT NOT ";
  EXPECT_EQ(Ids(nots + u"ID = 2"), "2");
}

TEST(SurfaceLinks, AFailedCalculationOfAnotherRecordLeavesTheCurrentOneIntact) {
  TVirtualTable t(nullptr);
  auto* id = new TIntegerField(&t);
  id->SetFieldName(u"ID");
  id->SetDataSet(&t);
  auto* label = new TStringField(&t);
  label->SetFieldName(u"LABEL");
  label->SetFieldKind(fkCalculated);
  label->SetDataSet(&t);
  bool refuseFirst = false;
  t.OnCalcFields = [&](TDataSet* ds) {
    const int value = ds->FieldByName(u"ID")->AsInteger();
    if (refuseFirst && value == 1) throw EDatabaseError(u"cannot calculate 1");
    ds->FieldByName(u"LABEL")->SetAsString(u"#" + IntToStr(value));
  };
  t.Open();
  for (int i = 1; i <= 2; ++i) {
    t.Append();
    id->SetAsInteger(i);
    t.Post();
  }
  EXPECT_EQ(label->AsString(), u"#2");
  TDataSource source(nullptr);
  source.SetDataSet(&t);
  TDataLink link;
  link.SetBufferCount(2);
  link.SetDataSource(&source);
  ASSERT_EQ(link.ActiveRecord(), 1);
  link.SetActiveRecord(0);
  EXPECT_EQ(label->AsString(), u"#1");
  link.SetActiveRecord(1);
  EXPECT_EQ(label->AsString(), u"#2");
  refuseFirst = true;
  link.SetActiveRecord(0);
  EXPECT_THROW(label->AsString(), EDatabaseError);
  link.SetActiveRecord(1);
  // The current record's values are calculated again, not taken from the
  // buffer the failed calculation left behind.
  EXPECT_EQ(id->AsInteger(), 2);
  EXPECT_EQ(label->AsString(), u"#2");
  link.SetDataSource(nullptr);
}

// Records the steps and fails in the one it is told.
class StepTable : public TVirtualTable {
 public:
  explicit StepTable(TComponent* owner) : TVirtualTable(owner) {}
  std::string failIn;

 protected:
  void Fail(const char* step) {
    if (failIn == step) throw EDatabaseError(u"refused");
  }
  void DoBeforeScroll() override {
    Fail("BeforeScroll");
    TVirtualTable::DoBeforeScroll();
  }
  void DoBeforeInsert() override {
    Fail("BeforeInsert");
    TVirtualTable::DoBeforeInsert();
  }
  void DoBeforeDelete() override {
    Fail("BeforeDelete");
    TVirtualTable::DoBeforeDelete();
  }
  void DoOnNewRecord() override {
    Fail("NewRecord");
    TVirtualTable::DoOnNewRecord();
  }
};

TEST(SurfaceSteps, AStepThatFailsBeforeTheChangeLeavesRecordsAndPositionAlone) {
  StepTable t(nullptr);
  t.AddField(u"ID", ftInteger);
  t.Open();
  for (int i = 1; i <= 3; ++i) {
    t.Append();
    t.FieldByName(u"ID")->SetAsInteger(i);
    t.Post();
  }
  t.First();
  t.Next();
  for (const char* step : {"BeforeScroll", "BeforeInsert"}) {
    t.failIn = step;
    EXPECT_THROW(t.Insert(), EDatabaseError) << step;
    EXPECT_THROW(t.Append(), EDatabaseError) << step;
    EXPECT_EQ(t.State(), dsBrowse) << step;
    EXPECT_EQ(t.RecordCount(), 3) << step;
    EXPECT_EQ(t.FieldByName(u"ID")->AsInteger(), 2) << step;
  }
  // A new record refused by OnNewRecord is dropped again: an insert stays
  // where it was, an append on the last record it went to.
  t.failIn = "NewRecord";
  EXPECT_THROW(t.Insert(), EDatabaseError);
  EXPECT_EQ(t.State(), dsBrowse);
  EXPECT_EQ(t.FieldByName(u"ID")->AsInteger(), 2);
  EXPECT_THROW(t.Append(), EDatabaseError);
  EXPECT_EQ(t.State(), dsBrowse);
  EXPECT_EQ(t.RecordCount(), 3);
  EXPECT_EQ(t.FieldByName(u"ID")->AsInteger(), 3);
  t.failIn.clear();
  t.Prior();
  for (const char* step : {"BeforeScroll", "BeforeDelete"}) {
    t.failIn = step;
    EXPECT_THROW(t.Delete(), EDatabaseError) << step;
    EXPECT_EQ(t.RecordCount(), 3) << step;
    EXPECT_EQ(t.FieldByName(u"ID")->AsInteger(), 2) << step;
  }
  t.failIn = "BeforeScroll";
  EXPECT_THROW(t.Locate(u"ID", Variant(3), TLocateOptions()), EDatabaseError);
  EXPECT_THROW(t.Last(), EDatabaseError);
  EXPECT_EQ(t.FieldByName(u"ID")->AsInteger(), 2);
  t.failIn.clear();
  EXPECT_TRUE(t.Locate(u"ID", Variant(3), TLocateOptions()));
}

}  // namespace

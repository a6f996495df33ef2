#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "platform/db/datasource.h"
#include "platform/db/memdataset.h"

namespace {

// Records every overridable step, and can be told to fail in one.
class RecordingTable : public TVirtualTable {
 public:
  explicit RecordingTable(TComponent* owner) : TVirtualTable(owner) {}
  std::vector<std::string> log;
  std::string failIn;

 protected:
  void Step(const char* name) {
    log.push_back(name);
    if (failIn == name) throw EDatabaseError(String(u"refused in ") + String(name));
  }
  void OpenCursor(bool InfoQuery) override {
    Step("OpenCursor");
    TVirtualTable::OpenCursor(InfoQuery);
  }
  void DoBeforeOpen() override {
    Step("BeforeOpen");
    TVirtualTable::DoBeforeOpen();
  }
  void DoAfterOpen() override {
    Step("AfterOpen");
    TVirtualTable::DoAfterOpen();
  }
  void DoBeforeClose() override {
    Step("BeforeClose");
    TVirtualTable::DoBeforeClose();
  }
  void DoAfterClose() override {
    Step("AfterClose");
    TVirtualTable::DoAfterClose();
  }
  void DoBeforeScroll() override {
    Step("BeforeScroll");
    TVirtualTable::DoBeforeScroll();
  }
  void DoAfterScroll() override {
    Step("AfterScroll");
    TVirtualTable::DoAfterScroll();
  }
  void DoBeforeEdit() override {
    Step("BeforeEdit");
    TVirtualTable::DoBeforeEdit();
  }
  void DoAfterEdit() override {
    Step("AfterEdit");
    TVirtualTable::DoAfterEdit();
  }
  void DoBeforeInsert() override {
    Step("BeforeInsert");
    TVirtualTable::DoBeforeInsert();
  }
  void DoAfterInsert() override {
    Step("AfterInsert");
    TVirtualTable::DoAfterInsert();
  }
  void DoOnNewRecord() override {
    Step("NewRecord");
    TVirtualTable::DoOnNewRecord();
  }
  void DoBeforePost() override {
    Step("BeforePost");
    TVirtualTable::DoBeforePost();
  }
  void DoAfterPost() override {
    Step("AfterPost");
    TVirtualTable::DoAfterPost();
  }
  void DoBeforeCancel() override {
    Step("BeforeCancel");
    TVirtualTable::DoBeforeCancel();
  }
  void DoAfterCancel() override {
    Step("AfterCancel");
    TVirtualTable::DoAfterCancel();
  }
  void DoBeforeDelete() override {
    Step("BeforeDelete");
    TVirtualTable::DoBeforeDelete();
  }
  void DoAfterDelete() override {
    Step("AfterDelete");
    TVirtualTable::DoAfterDelete();
  }
  void DoBeforeRefresh() override {
    Step("BeforeRefresh");
    TVirtualTable::DoBeforeRefresh();
  }
  void DoAfterRefresh() override {
    Step("AfterRefresh");
    TVirtualTable::DoAfterRefresh();
  }
};

using Log = std::vector<std::string>;

class DataSetTest : public ::testing::Test {
 protected:
  void SetUp() override {
    table_ = std::make_unique<RecordingTable>(nullptr);
    table_->AddField(u"ID", ftInteger);
    table_->AddField(u"NAME", ftString, 20);
    table_->AddField(u"PRICE", ftFloat);
    table_->Open();
    const char16_t* names[] = {u"apple", u"Banana", u"cherry", u"Date", u"elder"};
    for (int i = 0; i < 5; ++i) AddRow(i + 1, names[i], (i + 1) * 1.5);
    table_->First();
    table_->log.clear();
  }
  void AddRow(int id, const String& name, double price) {
    table_->Append();
    table_->FieldByName(u"ID")->SetAsInteger(id);
    table_->FieldByName(u"NAME")->SetAsString(name);
    table_->FieldByName(u"PRICE")->SetAsFloat(price);
    table_->Post();
  }
  int Id() { return table_->FieldByName(u"ID")->AsInteger(); }

  std::unique_ptr<RecordingTable> table_;
};

TEST_F(DataSetTest, EveryOperationRunsItsStepsInOrder) {
  table_->Close();
  EXPECT_EQ(table_->log, (Log{"BeforeClose", "AfterClose"}));
  table_->log.clear();
  table_->Open();
  EXPECT_EQ(table_->log, (Log{"BeforeOpen", "OpenCursor", "AfterOpen", "AfterScroll"}));

  table_->log.clear();
  table_->Edit();
  EXPECT_EQ(table_->log, (Log{"BeforeEdit", "AfterEdit"}));
  table_->log.clear();
  table_->FieldByName(u"NAME")->SetAsString(u"apricot");
  table_->Post();
  EXPECT_EQ(table_->log, (Log{"BeforePost", "AfterPost"}));

  table_->log.clear();
  table_->Insert();
  EXPECT_EQ(table_->log, (Log{"BeforeInsert", "BeforeScroll", "NewRecord", "AfterInsert", "AfterScroll"}));
  table_->log.clear();
  table_->Cancel();
  EXPECT_EQ(table_->log, (Log{"BeforeCancel", "AfterCancel"}));

  table_->log.clear();
  table_->Next();
  EXPECT_EQ(table_->log, (Log{"BeforeScroll", "AfterScroll"}));
  table_->log.clear();
  table_->Delete();
  EXPECT_EQ(table_->log, (Log{"BeforeDelete", "BeforeScroll", "AfterDelete", "AfterScroll"}));
  table_->log.clear();
  table_->Refresh();
  EXPECT_EQ(table_->log, (Log{"BeforeRefresh", "AfterRefresh"}));
}

TEST_F(DataSetTest, MovingWhileEditingPostsFirst) {
  table_->Edit();
  table_->FieldByName(u"NAME")->SetAsString(u"avocado");
  table_->log.clear();
  table_->Next();
  EXPECT_EQ(table_->log, (Log{"BeforePost", "AfterPost", "BeforeScroll", "AfterScroll"}));
  table_->First();
  EXPECT_EQ(table_->FieldByName(u"NAME")->AsString(), u"avocado");
}

TEST_F(DataSetTest, AFailingBeforeStepLeavesTheStateAlone) {
  struct Case {
    const char* step;
    std::function<void()> act;
    TDataSetState expected;
  };
  std::vector<Case> cases = {
      {"BeforeEdit", [&] { table_->Edit(); }, dsBrowse},
      {"BeforeInsert", [&] { table_->Insert(); }, dsBrowse},
      {"BeforeDelete", [&] { table_->Delete(); }, dsBrowse},
      {"BeforeScroll", [&] { table_->Next(); }, dsBrowse},
      {"BeforeRefresh", [&] { table_->Refresh(); }, dsBrowse},
      {"BeforeClose", [&] { table_->Close(); }, dsBrowse},
  };
  for (const Case& c : cases) {
    table_->failIn = c.step;
    int id = Id();
    EXPECT_THROW(c.act(), EDatabaseError) << c.step;
    EXPECT_EQ(table_->State(), c.expected) << c.step;
    EXPECT_EQ(Id(), id) << c.step;
    EXPECT_EQ(table_->RecordCount(), 5) << c.step;
  }

  table_->failIn.clear();
  table_->Edit();
  table_->FieldByName(u"NAME")->SetAsString(u"kept");
  table_->failIn = "BeforePost";
  EXPECT_THROW(table_->Post(), EDatabaseError);
  EXPECT_EQ(table_->State(), dsEdit);
  EXPECT_EQ(table_->FieldByName(u"NAME")->AsString(), u"kept");
  table_->failIn = "BeforeCancel";
  EXPECT_THROW(table_->Cancel(), EDatabaseError);
  EXPECT_EQ(table_->State(), dsEdit);
  table_->failIn.clear();
  table_->Cancel();
  EXPECT_EQ(table_->FieldByName(u"NAME")->AsString(), u"apple");

  table_->Close();
  table_->failIn = "BeforeOpen";
  EXPECT_THROW(table_->Open(), EDatabaseError);
  EXPECT_EQ(table_->State(), dsInactive);
}

TEST_F(DataSetTest, AbortInABeforeEventIsSilentAndStopsTheOperation) {
  table_->BeforeEdit = [](TDataSet*) { Abort(); };
  EXPECT_THROW(table_->Edit(), EAbort);
  EXPECT_EQ(table_->State(), dsBrowse);
}

TEST_F(DataSetTest, MovementAndEofBof) {
  EXPECT_TRUE(table_->Bof());
  EXPECT_EQ(table_->MoveBy(3), 3);
  EXPECT_EQ(Id(), 4);
  EXPECT_EQ(table_->MoveBy(10), 1);
  EXPECT_TRUE(table_->Eof());
  EXPECT_EQ(Id(), 5);
  table_->Next();
  EXPECT_TRUE(table_->Eof());
  EXPECT_EQ(table_->MoveBy(-2), -2);
  EXPECT_FALSE(table_->Eof());
  EXPECT_EQ(table_->RecNo(), 3);
  table_->Last();
  EXPECT_TRUE(table_->Eof());
  table_->First();
  table_->Prior();
  EXPECT_TRUE(table_->Bof());
  int seen = 0;
  for (table_->First(); !table_->Eof(); table_->Next()) ++seen;
  EXPECT_EQ(seen, 5);
}

TEST_F(DataSetTest, BookmarksSurviveOtherChanges) {
  table_->MoveBy(2);
  TBookmark mark = table_->GetBookmark();
  TBookmark first;
  table_->First();
  first = table_->GetBookmark();
  EXPECT_LT(table_->CompareBookmarks(first, mark), 0);
  table_->Insert();
  table_->FieldByName(u"ID")->SetAsInteger(0);
  table_->Post();
  table_->Last();
  table_->Delete();
  EXPECT_TRUE(table_->BookmarkValid(mark));
  table_->GotoBookmark(mark);
  EXPECT_EQ(Id(), 3);
  EXPECT_EQ(table_->Bookmark(), mark);
  table_->Delete();
  EXPECT_FALSE(table_->BookmarkValid(mark));
  EXPECT_THROW(table_->GotoBookmark(mark), EDatabaseError);
  table_->FreeBookmark(mark);
  EXPECT_FALSE(mark.Assigned());
}

TEST_F(DataSetTest, InsertGoesBeforeTheCurrentRecordAndAppendAtTheEnd) {
  table_->MoveBy(1);
  table_->Insert();
  EXPECT_EQ(table_->State(), dsInsert);
  table_->FieldByName(u"ID")->SetAsInteger(10);
  table_->Post();
  EXPECT_EQ(table_->RecNo(), 2);
  table_->Next();
  EXPECT_EQ(Id(), 2);
  table_->Append();
  table_->FieldByName(u"ID")->SetAsInteger(11);
  table_->Post();
  table_->Last();
  EXPECT_EQ(Id(), 11);
  EXPECT_EQ(table_->RecordCount(), 7);
  table_->Insert();
  table_->Cancel();
  EXPECT_EQ(table_->RecordCount(), 7);
  EXPECT_EQ(Id(), 11);
}

TEST_F(DataSetTest, EditOfAnEmptyDataSetInserts) {
  table_->Clear();
  EXPECT_TRUE(table_->IsEmpty());
  table_->Edit();
  EXPECT_EQ(table_->State(), dsInsert);
  table_->Cancel();
  EXPECT_THROW(table_->Delete(), EDatabaseError);
}

TEST_F(DataSetTest, FieldsCheckModeReadOnlyAndRequired) {
  TField* name = table_->FieldByName(u"NAME");
  EXPECT_THROW(name->SetAsString(u"x"), EDatabaseError);
  name->SetReadOnly(true);
  table_->Edit();
  try {
    name->SetAsString(u"x");
    FAIL();
  } catch (const EDatabaseError& e) {
    EXPECT_EQ(e.Message, u"Field 'NAME' cannot be modified");
  }
  name->SetReadOnly(false);
  name->SetRequired(true);
  name->Clear();
  EXPECT_TRUE(table_->Modified());
  try {
    table_->Post();
    FAIL();
  } catch (const EDatabaseError& e) {
    EXPECT_EQ(e.Message, u"Field 'NAME' must have a value");
  }
  EXPECT_EQ(table_->State(), dsEdit);
  table_->Cancel();
  EXPECT_EQ(name->AsString(), u"apple");
  try {
    table_->FieldByName(u"NOPE");
    FAIL();
  } catch (const EDatabaseError& e) {
    EXPECT_EQ(e.Message, u"Field 'NOPE' not found");
  }
  EXPECT_EQ(table_->FindField(u"nope"), nullptr);
  EXPECT_EQ(table_->FindField(u"name"), name);
}

TEST_F(DataSetTest, FieldConversionsAndTheirErrors) {
  TField* id = table_->FieldByName(u"ID");
  TField* name = table_->FieldByName(u"NAME");
  TField* price = table_->FieldByName(u"PRICE");
  EXPECT_EQ(id->AsString(), u"1");
  EXPECT_DOUBLE_EQ(id->AsFloat(), 1.0);
  EXPECT_EQ(price->AsString(), u"1.5");
  EXPECT_EQ(price->Value().VarType(), varDouble);
  EXPECT_EQ(id->Value().VarType(), varInteger);
  table_->Edit();
  id->SetAsString(u" 42 ");
  EXPECT_EQ(id->AsInteger(), 42);
  EXPECT_THROW(id->SetAsString(u"forty"), EDatabaseError);
  EXPECT_EQ(id->AsInteger(), 42);
  EXPECT_THROW(price->SetAsString(u"1,2,3"), EDatabaseError);
  name->SetAsString(u"12");
  EXPECT_EQ(name->AsInteger(), 12);
  name->SetAsString(u"twelve");
  EXPECT_THROW(name->AsInteger(), EConvertError);
  EXPECT_THROW(id->AsDateTime(), EDatabaseError);
  int64_t raw = 0;
  EXPECT_TRUE(id->GetData(&raw));
  EXPECT_EQ(raw, 42);
  EXPECT_EQ(name->DataSize(), 6);
  id->SetValue(Null());
  EXPECT_FALSE(id->GetData());
  EXPECT_TRUE(id->IsNull());
  EXPECT_TRUE(id->Value().IsNull());
  EXPECT_EQ(id->AsString(), u"");
  table_->Cancel();
  EXPECT_EQ(id->AsInteger(), 1);
}

TEST_F(DataSetTest, TextFormatsAndEvents) {
  auto* price = static_cast<TFloatField*>(table_->FieldByName(u"PRICE"));
  price->SetDisplayFormat(u"0.00");
  EXPECT_EQ(price->DisplayText(), u"1.50");
  EXPECT_EQ(price->Text(), u"1.50");
  price->SetEditFormat(u"0.###");
  EXPECT_EQ(price->Text(), u"1.5");
  TField* name = table_->FieldByName(u"NAME");
  name->OnGetText = [](TField* f, String& text, bool display) { text = (display ? u"<" : u"[") + f->AsString() + u">"; };
  EXPECT_EQ(name->DisplayText(), u"<apple>");
  EXPECT_EQ(name->Text(), u"[apple>");
  name->OnSetText = [](TField* f, const String& text) { f->SetAsString(UpperCase(text)); };
  table_->Edit();
  name->SetText(u"pear");
  EXPECT_EQ(name->AsString(), u"PEAR");
  int changes = 0;
  name->OnChange = [&](TField*) { ++changes; };
  name->SetAsString(u"plum");
  EXPECT_EQ(changes, 1);
  table_->Cancel();
  TField* id = table_->FieldByName(u"ID");
  id->SetEditMask(u"000;1;_");
  EXPECT_EQ(id->EditText(), u"1  ");
}

TEST_F(DataSetTest, ValidationFailureKeepsTheOldValue) {
  TField* id = table_->FieldByName(u"ID");
  id->OnValidate = [](TField* f) {
    if (f->AsInteger() < 0) throw EDatabaseError(u"negative");
  };
  table_->Edit();
  EXPECT_THROW(id->SetAsInteger(-1), EDatabaseError);
  EXPECT_EQ(id->AsInteger(), 1);
  EXPECT_FALSE(table_->Modified());
}

TEST_F(DataSetTest, LocateAndLookupOptions) {
  EXPECT_TRUE(table_->Locate(u"NAME", Variant(u"cherry"), TLocateOptions()));
  EXPECT_EQ(Id(), 3);
  EXPECT_FALSE(table_->Locate(u"NAME", Variant(u"CHERRY"), TLocateOptions()));
  EXPECT_EQ(Id(), 3);
  EXPECT_TRUE(table_->Locate(u"NAME", Variant(u"BANANA"), TLocateOptions() << loCaseInsensitive));
  EXPECT_EQ(Id(), 2);
  EXPECT_FALSE(table_->Locate(u"NAME", Variant(u"da"), TLocateOptions() << loPartialKey));
  EXPECT_TRUE(table_->Locate(u"NAME", Variant(u"da"), TLocateOptions() << loPartialKey << loCaseInsensitive));
  EXPECT_EQ(Id(), 4);
  EXPECT_FALSE(table_->Locate(u"NAME", Variant(u"elderberry"), TLocateOptions() << loPartialKey));
  EXPECT_TRUE(table_->Locate(u"ID;NAME", VarArrayOf({5, u"elder"}), TLocateOptions()));
  EXPECT_FALSE(table_->Locate(u"ID; NAME", VarArrayOf({4, u"elder"}), TLocateOptions()));
  EXPECT_TRUE(table_->Locate(u"ID", Variant(u"2"), TLocateOptions()));
  EXPECT_FALSE(table_->Locate(u"ID", Variant(u"two"), TLocateOptions()));
  EXPECT_TRUE(table_->Locate(u"PRICE", Variant(4.5), TLocateOptions()));
  EXPECT_EQ(Id(), 3);
  EXPECT_THROW(table_->Locate(u"ID;NAME", Variant(1), TLocateOptions()), EDatabaseError);
  EXPECT_THROW(table_->Locate(u"NOPE", Variant(1), TLocateOptions()), EDatabaseError);

  EXPECT_EQ(table_->Lookup(u"ID", Variant(4), u"NAME").AsString(), u"Date");
  EXPECT_EQ(Id(), 3);
  Variant both = table_->Lookup(u"NAME", Variant(u"apple"), u"ID;PRICE");
  ASSERT_TRUE(both.IsArray());
  EXPECT_EQ(both.GetElement(0).AsInteger(), 1);
  EXPECT_DOUBLE_EQ(both.GetElement(1).AsFloat(), 1.5);
  EXPECT_TRUE(table_->Lookup(u"ID", Variant(99), u"NAME").IsNull());
}

TEST_F(DataSetTest, LocateMatchesNulls) {
  table_->Edit();
  table_->FieldByName(u"NAME")->Clear();
  table_->Post();
  table_->Last();
  EXPECT_TRUE(table_->Locate(u"NAME", Null(), TLocateOptions()));
  EXPECT_EQ(Id(), 1);
}

TEST_F(DataSetTest, FilteredByEventAndByExpression) {
  table_->OnFilterRecord = [](TDataSet* ds, bool& accept) { accept = ds->FieldByName(u"ID")->AsInteger() % 2 == 1; };
  table_->SetFiltered(true);
  EXPECT_EQ(table_->RecordCount(), 3);
  EXPECT_EQ(Id(), 1);
  table_->OnFilterRecord = nullptr;
  table_->SetFilter(u"PRICE > 3 AND NAME <> 'Date'");
  EXPECT_EQ(table_->RecordCount(), 2);
  EXPECT_EQ(Id(), 3);
  table_->SetFiltered(false);
  EXPECT_EQ(table_->RecordCount(), 5);
  EXPECT_EQ(Id(), 3);
  EXPECT_THROW(table_->SetFilter(u"PRICE >"), EDatabaseError);
}

TEST_F(DataSetTest, CalculatedAndLookupFields) {
  auto lookup = std::make_unique<TVirtualTable>(nullptr);
  lookup->AddField(u"CODE", ftInteger);
  lookup->AddField(u"LABEL", ftString);
  lookup->Open();
  for (int i = 1; i <= 5; ++i) {
    lookup->Append();
    lookup->FieldByName(u"CODE")->SetAsInteger(i);
    lookup->FieldByName(u"LABEL")->SetAsString(u"L" + IntToStr(i));
    lookup->Post();
  }
  auto t = std::make_unique<TVirtualTable>(nullptr);
  auto* id = new TIntegerField(t.get());
  id->SetFieldName(u"ID");
  id->SetDataSet(t.get());
  auto* twice = new TIntegerField(t.get());
  twice->SetFieldName(u"TWICE");
  twice->SetFieldKind(fkCalculated);
  twice->SetDataSet(t.get());
  auto* label = new TStringField(t.get());
  label->SetFieldName(u"LABEL");
  label->SetFieldKind(fkLookup);
  label->SetLookupDataSet(lookup.get());
  label->SetKeyFields(u"ID");
  label->SetLookupKeyFields(u"CODE");
  label->SetLookupResultField(u"LABEL");
  label->SetDataSet(t.get());
  int calls = 0;
  t->OnCalcFields = [&](TDataSet* ds) {
    ++calls;
    ds->FieldByName(u"TWICE")->SetAsInteger(ds->FieldByName(u"ID")->AsInteger() * 2);
  };
  t->Open();
  t->Append();
  id->SetAsInteger(3);
  EXPECT_EQ(twice->AsInteger(), 6);
  EXPECT_EQ(label->AsString(), u"L3");
  t->Post();
  t->Append();
  id->SetAsInteger(4);
  t->Post();
  t->First();
  EXPECT_EQ(label->AsString(), u"L3");
  t->Next();
  EXPECT_EQ(twice->AsInteger(), 8);
  int before = calls;
  EXPECT_EQ(twice->AsInteger(), 8);
  EXPECT_EQ(calls, before);
  EXPECT_TRUE(t->Locate(u"TWICE", Variant(6), TLocateOptions()));
  EXPECT_EQ(id->AsInteger(), 3);
  t->Close();
  lookup.reset();
  EXPECT_EQ(label->LookupDataSet(), nullptr);
}

TEST_F(DataSetTest, MemoryTableKeepsDefinitionsAndRecordsAcrossClose) {
  table_->Close();
  EXPECT_EQ(table_->FieldDefs()->Count(), 3);
  table_->Open();
  EXPECT_EQ(table_->RecordCount(), 5);
  table_->Last();
  EXPECT_EQ(table_->FieldByName(u"NAME")->AsString(), u"elder");
  table_->Clear();
  EXPECT_EQ(table_->RecordCount(), 0);
  table_->Close();
  table_->Open();
  EXPECT_TRUE(table_->IsEmpty());
  EXPECT_EQ(table_->FieldCount(), 3);
}

TEST_F(DataSetTest, LoadFromDataSetCopiesDefinitionsAndRecords) {
  TVirtualTable copy(nullptr);
  EXPECT_EQ(copy.LoadFromDataSet(table_.get()), 5);
  EXPECT_EQ(copy.FieldDefs()->Count(), 3);
  copy.Last();
  EXPECT_EQ(copy.FieldByName(u"NAME")->AsString(), u"elder");
  EXPECT_EQ(Id(), 1);
}

TEST_F(DataSetTest, PublishedPropertiesReachTheDataSetByName) {
  EXPECT_TRUE(GetPropBool(table_.get(), u"Active"));
  SetPropString(table_.get(), u"Filter", u"ID = 2");
  SetPropBool(table_.get(), u"Filtered", true);
  EXPECT_EQ(table_->RecordCount(), 1);
  EXPECT_TRUE(IsPropType(table_.get(), u"AfterScroll", tkMethod));
  EXPECT_TRUE(IsPropType(table_.get(), u"DataSource", tkClass));
  SetPropBool(table_.get(), u"Active", false);
  EXPECT_FALSE(table_->Active());
}

// ---- Data sources and links ----

class RecordingLink : public TDataLink {
 public:
  std::vector<std::string> log;

 protected:
  void ActiveChanged() override { log.push_back(Active() ? "active" : "inactive"); }
  void DataSetChanged() override { log.push_back("changed"); }
  void DataSetScrolled(int) override { log.push_back("scrolled"); }
  void EditingChanged() override { log.push_back(Editing() ? "editing" : "browsing"); }
  void RecordChanged(TField* f) override { log.push_back(f ? "field " + f->FieldName().ToUtf8() : "record"); }
};

TEST_F(DataSetTest, LinksHearOfStateScrollAndFieldChanges) {
  TDataSource source(nullptr);
  RecordingLink link;
  link.SetDataSource(&source);
  source.SetDataSet(table_.get());
  EXPECT_EQ(link.log, (Log{"active"}));
  EXPECT_EQ(table_->DataSources().size(), 1u);
  link.log.clear();
  table_->Next();
  table_->Edit();
  table_->FieldByName(u"NAME")->SetAsString(u"x");
  table_->Post();
  EXPECT_EQ(link.log, (Log{"scrolled", "editing", "record", "field NAME", "browsing", "changed"}));
  link.log.clear();
  table_->DisableControls();
  table_->DisableControls();
  EXPECT_TRUE(table_->ControlsDisabled());
  table_->Next();
  table_->EnableControls();
  EXPECT_TRUE(link.log.empty());
  table_->EnableControls();
  EXPECT_FALSE(table_->ControlsDisabled());
  EXPECT_EQ(link.log, (Log{"changed"}));
  link.log.clear();
  table_->Close();
  EXPECT_EQ(link.log, (Log{"inactive"}));
}

TEST_F(DataSetTest, ALinkBufferReachesThePreviousRecord) {
  TDataSource source(nullptr);
  source.SetDataSet(table_.get());
  TDataLink link;
  link.SetBufferCount(2);
  link.SetDataSource(&source);
  EXPECT_EQ(link.ActiveRecord(), 0);
  table_->MoveBy(2);
  ASSERT_EQ(link.RecordCount(), 2);
  EXPECT_EQ(link.ActiveRecord(), 1);
  link.SetActiveRecord(0);
  EXPECT_EQ(Id(), 2);
  link.SetActiveRecord(1);
  EXPECT_EQ(Id(), 3);
  table_->First();
  EXPECT_EQ(link.ActiveRecord(), 0);
  EXPECT_THROW(link.SetActiveRecord(5), EDatabaseError);
}

TEST_F(DataSetTest, DeletingTheDataSetReleasesItsSources) {
  TDataSource source(nullptr);
  source.SetDataSet(table_.get());
  table_.reset();
  EXPECT_EQ(source.DataSet(), nullptr);
  EXPECT_EQ(source.State(), dsInactive);
}

}  // namespace

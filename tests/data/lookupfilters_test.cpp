// Lookup filters and search fields on the embedded engine: the two lists,
// the record filter over a second real table, setFilter's client route,
// freeFilters and the field-reading locate.
#include <gtest/gtest.h>

#include <vector>

#include "data/lookupfilters.h"
#include "data/veskodacquerylib.h"
#include "data/veskvirt.h"
#include "tests/support/kitfixture.h"

namespace {

// ORDERS(ID, GOODS_ID, NOTE) over GOODS; GOODS_NAME shows the goods' NAME.
//   10 -> 1 Apple   "first lot"     40 -> 4 Bread   NULL
//   20 -> 2 Apricot "Second LOT"    50 -> 9 (none)  ""
//   30 -> 3 Butter  "apple pie"
class LookupFilterTest : public KitDbTest {
 protected:
  void SetUp() override {
    KitDbTest::SetUp();
    Exec(u"CREATE TABLE ORDERS (ID NUMBER(9), GOODS_ID NUMBER(9), NOTE VARCHAR2(40))");
    Exec(u"INSERT INTO ORDERS VALUES (10, 1, 'first lot'), (20, 2, 'Second LOT'), (30, 3, 'apple pie'), "
         u"(40, 4, NULL), (50, 9, '')");
    goods_ = OpenGoods(u"qLk");
    q_ = NewQuery(u"qOrders");
    q_->SQL()->SetText(u"SELECT ID, GOODS_ID, NOTE FROM ORDERS ORDER BY ID");
    Add(new TIntegerField(q_), u"ID", fkData);
    Add(new TIntegerField(q_), u"GOODS_ID", fkData);
    Add(new TStringField(q_), u"NOTE", fkData);
    name_ = AddLookupField(q_, u"GOODS_NAME", u"GOODS_ID", goods_, u"ID", u"NAME");
    q_->Open();
  }
  TField* Add(TField* field, const String& name, TFieldKind kind) {
    return AddPersistentField(q_, field, name, kind);
  }
  // The IDs of the visible rows, in order.
  std::vector<int> Ids() {
    std::vector<int> ids;
    for (q_->First(); !q_->Eof(); q_->Next()) ids.push_back(q_->FieldByName(u"ID")->AsInteger());
    return ids;
  }
  void FilterBy(bool (TVeskODACQuery::*add)(TField*, const String&, int, bool), TField* field, const String& text,
                int partial, bool caseSens) {
    (q_->*add)(field, text, partial, caseSens);
    q_->EnabledLookUpFilter(true);
    q_->SetFiltered(false);
    q_->SetFiltered(true);
  }

  TVeskODACQuery* goods_ = nullptr;
  TVeskODACQuery* q_ = nullptr;
  TField* name_ = nullptr;
};

using V = std::vector<int>;

TEST_F(LookupFilterTest, ListsAreKeyedExactlyAndKeepTheirOrder) {
  TField* note = q_->FieldByName(u"NOTE");
  TField* qty = q_->FieldByName(u"GOODS_ID");
  EXPECT_TRUE(q_->addSF(note, u"lot", 1, false));
  EXPECT_TRUE(q_->addSF(qty, u"2", 0, true));
  EXPECT_EQ(q_->GetIndexSF(u"NOTE"), 0);
  EXPECT_EQ(q_->GetIndexSF(u"GOODS_ID"), 1);
  EXPECT_EQ(q_->GetIndexSF(u"note"), -1);
  EXPECT_EQ(q_->getSF(u"Note"), u"");
  EXPECT_TRUE(q_->isSF(u"NOTE"));
  // A condition with an empty text exists but does not count as set.
  q_->addSF(note, u"", 1, false);
  EXPECT_FALSE(q_->isSF(u"NOTE"));
  EXPECT_EQ(q_->GetIndexSF(u"NOTE"), 0);
  EXPECT_TRUE(q_->removeSF(u"NOTE"));
  EXPECT_FALSE(q_->removeSF(u"NOTE"));
  EXPECT_EQ(q_->GetIndexSF(u"GOODS_ID"), 0);
  EXPECT_EQ(q_->FilterLists().CountSF(), 1);

  // Lookup filters are keyed by KeyFields: a second lookup field over the
  // same key column shares the record.
  auto* code = new TStringField(nullptr);
  code->SetFieldName(u"GOODS_CODE");
  code->SetFieldKind(fkLookup);
  code->SetKeyFields(u"GOODS_ID");
  code->SetLookupDataSet(goods_);
  code->SetLookupKeyFields(u"ID");
  code->SetLookupResultField(u"CODE");
  EXPECT_TRUE(q_->addLF(name_, u"app", 1, false));
  EXPECT_TRUE(q_->addLF(code, u"A01", 0, true));
  EXPECT_EQ(q_->FilterLists().CountLF(), 1);
  EXPECT_EQ(q_->getLF(u"GOODS_ID"), u"A01");
  EXPECT_EQ(q_->FilterLists().LF(0).Partial, 0);
  EXPECT_EQ(q_->FilterLists().LF(0).CaseSens, 1);
  EXPECT_EQ(q_->FilterLists().LF(0).FieldName, u"GOODS_NAME");
  EXPECT_EQ(q_->GetIndexLF(u"GOODS_NAME"), -1);
  EXPECT_TRUE(q_->removeLF(u"GOODS_ID"));
  EXPECT_FALSE(q_->isLF(u"GOODS_ID"));
  delete code;
}

TEST_F(LookupFilterTest, AddSFOnAnExistingFieldChangesOnlyTheText) {
  TField* note = q_->FieldByName(u"NOTE");
  q_->addSF(note, u"lot", 1, false);
  EXPECT_TRUE(q_->addSF(note, u"LOT", 0, true));
  const TVeskFilterCond& cond = q_->FilterLists().SF(0);
  EXPECT_EQ(cond.Text, u"LOT");
  EXPECT_EQ(cond.Partial, 1);
  EXPECT_EQ(cond.CaseSens, 0);
  EXPECT_EQ(cond.KeyFields, u"NOTE");
  EXPECT_EQ(cond.Id, 0);
}

TEST_F(LookupFilterTest, AddLFSaysWhetherTheFilterCanWorkAndKeepsTheRecordEitherWay) {
  name_->SetLookupKeyFields(u"ID;CODE");
  EXPECT_FALSE(q_->addLF(name_, u"x", 1, false));
  EXPECT_EQ(q_->getLF(u"GOODS_ID"), u"x");
  name_->SetLookupKeyFields(u"NO_SUCH");
  EXPECT_TRUE(q_->addLF(name_, u"y", 1, false));  // an existing record only takes the new text
  q_->removeLF(u"GOODS_ID");
  EXPECT_FALSE(q_->addLF(name_, u"y", 1, false));
  EXPECT_EQ(q_->FilterLists().CountLF(), 1);
}

TEST_F(LookupFilterTest, FiftyConditionsFitAndTheFiftyFirstRaisesLeavingTheTable) {
  std::vector<std::unique_ptr<TStringField>> fields;
  for (int i = 0; i < 51; ++i) {
    auto field = std::make_unique<TStringField>(nullptr);
    field->SetFieldName(u"F" + IntToStr(i));
    field->SetKeyFields(u"K" + IntToStr(i));
    fields.push_back(std::move(field));
  }
  for (int i = 0; i < 50; ++i) {
    q_->addSF(fields[static_cast<size_t>(i)].get(), u"t", 1, false);
    q_->addLF(fields[static_cast<size_t>(i)].get(), u"t", 1, false);
  }
  EXPECT_EQ(q_->FilterLists().CountSF(), 50);
  EXPECT_EQ(q_->FilterLists().CountLF(), 50);
  try {
    q_->addSF(fields[50].get(), u"t", 1, false);
    FAIL() << "the 51st search field was taken";
  } catch (const Exception& e) {
    EXPECT_EQ(e.Message, u"Too many filter conditions!");
  }
  EXPECT_THROW(q_->addLF(fields[50].get(), u"t", 1, false), Exception);
  EXPECT_EQ(q_->FilterLists().CountSF(), 50);
  EXPECT_EQ(q_->FilterLists().CountLF(), 50);
  EXPECT_EQ(q_->GetIndexSF(u"F50"), -1);
  EXPECT_EQ(q_->GetIndexLF(u"K50"), -1);
  // Updating one of the fifty still works at the limit.
  EXPECT_TRUE(q_->addSF(fields[7].get(), u"new", 1, false));
  EXPECT_EQ(q_->getSF(u"F7"), u"new");
}

TEST_F(LookupFilterTest, SearchFieldsFilterByContainsWithOrWithoutCase) {
  TField* note = q_->FieldByName(u"NOTE");
  FilterBy(&TVeskODACQuery::addSF, note, u"lot", 0, false);  // Partial plays no part
  EXPECT_EQ(Ids(), (V{10, 20}));
  q_->addSF(note, u"LOT", 0, false);
  q_->SetFiltered(false);
  q_->SetFiltered(true);
  EXPECT_EQ(Ids(), (V{10, 20}));
  q_->removeSF(u"NOTE");
  FilterBy(&TVeskODACQuery::addSF, note, u"lot", 1, true);
  EXPECT_EQ(Ids(), (V{10}));
  // An empty text lets every row through.
  q_->addSF(note, u"", 1, true);
  q_->SetFiltered(false);
  q_->SetFiltered(true);
  EXPECT_EQ(Ids(), (V{10, 20, 30, 40, 50}));
}

TEST_F(LookupFilterTest, BlankFindsNullCellsOnlyAndSearchFieldsCombine) {
  TField* note = q_->FieldByName(u"NOTE");
  // Row 50 holds an empty text; the engine keeps it apart from null.
  ASSERT_FALSE(q_->Locate(u"ID", 50, TLocateOptions()) && note->IsNull());
  FilterBy(&TVeskODACQuery::addSF, note, u"blank", 1, false);
  EXPECT_EQ(Ids(), (V{40}));
  // Only the exact word asks for empty cells.
  q_->addSF(note, u"BLANK", 1, false);
  q_->SetFiltered(false);
  q_->SetFiltered(true);
  EXPECT_EQ(Ids(), V{});
  q_->addSF(note, u"l", 1, false);
  FilterBy(&TVeskODACQuery::addSF, q_->FieldByName(u"GOODS_ID"), u"2", 1, false);
  EXPECT_EQ(Ids(), (V{20}));
}

TEST_F(LookupFilterTest, LookupFiltersReadTheSecondTable) {
  FilterBy(&TVeskODACQuery::addLF, name_, u"ap", 1, false);
  EXPECT_EQ(Ids(), (V{10, 20}));  // Apple, Apricot; 50 has no goods row
  q_->addLF(name_, u"Apple", 0, true);
  q_->SetFiltered(false);
  q_->SetFiltered(true);
  EXPECT_EQ(Ids(), (V{10}));
  q_->addLF(name_, u"apple", 0, true);
  q_->SetFiltered(false);
  q_->SetFiltered(true);
  EXPECT_EQ(Ids(), V{});
  // The lookup table's own changes are seen by the next pass.
  q_->addLF(name_, u"BUTTER", 0, false);
  q_->SetFiltered(false);
  q_->SetFiltered(true);
  EXPECT_EQ(Ids(), (V{30}));
  ASSERT_TRUE(goods_->Locate(u"ID", 2, TLocateOptions()));
  goods_->SetVeskCom(dsgEdit);
  goods_->Edit();
  goods_->FieldByName(u"NAME")->SetAsString(u"Butter");
  goods_->SetVeskCom(dsgPost);
  goods_->Post();
  q_->SetFiltered(false);
  q_->SetFiltered(true);
  EXPECT_EQ(Ids(), (V{20, 30}));
}

TEST_F(LookupFilterTest, AClosedLookupTableRejectsEveryRecord) {
  FilterBy(&TVeskODACQuery::addLF, name_, u"a", 1, false);
  EXPECT_EQ(Ids(), (V{10, 20, 40}));
  goods_->Close();
  q_->SetFiltered(false);
  q_->SetFiltered(true);
  EXPECT_EQ(Ids(), V{});
}

TEST_F(LookupFilterTest, TheApplicationHasTheLastWord) {
  std::vector<int> seen;
  q_->OnVeskFilterRecord = [&](TDataSet* ds, bool& accept) {
    seen.push_back(ds->FieldByName(u"ID")->AsInteger());
    if (ds->FieldByName(u"ID")->AsInteger() == 10) accept = false;
  };
  FilterBy(&TVeskODACQuery::addSF, q_->FieldByName(u"NOTE"), u"lot", 1, false);
  EXPECT_EQ(Ids(), (V{20}));
  // Records the lists turn down never reach it.
  EXPECT_EQ(seen, (V{10, 20}));
}

TEST_F(LookupFilterTest, SetFilteredInstallsTheRecordFilterOnlyWhenWanted) {
  q_->SetFiltered(true);
  EXPECT_FALSE(q_->OnFilterRecord);
  q_->SetFiltered(false);
  q_->EnabledLookUpFilter(true);
  q_->SetFiltered(false);
  EXPECT_TRUE(q_->OnFilterRecord);
  // An application's own handler is not replaced by the lists.
  bool own = false;
  q_->OnFilterRecord = [&](TDataSet*, bool&) { own = true; };
  q_->SetFiltered(true);
  q_->First();
  EXPECT_TRUE(own);
}

// ---- setFilter, client route -----------------------------------------------------------------

TEST_F(LookupFilterTest, SetFilterOnATextFieldUsesTheSearchList) {
  EXPECT_TRUE(q_->setFilter(q_->FieldByName(u"NOTE"), u"lot", false, nullptr));
  EXPECT_EQ(q_->getSF(u"NOTE"), u"lot");
  EXPECT_TRUE(q_->Filtered());
  EXPECT_EQ(q_->Filter(), u"");
  EXPECT_EQ(Ids(), (V{10, 20}));
  EXPECT_EQ(GetSF(q_, u"NOTE"), u"lot");
  // An empty value takes the field out again.
  EXPECT_TRUE(q_->setFilter(q_->FieldByName(u"NOTE"), u"", false, nullptr));
  EXPECT_EQ(q_->GetIndexSF(u"NOTE"), -1);
  EXPECT_EQ(Ids(), (V{10, 20, 30, 40, 50}));
}

TEST_F(LookupFilterTest, SetFilterOnALookupFieldUsesTheLookupList) {
  EXPECT_TRUE(q_->setFilter(name_, u"br", false, nullptr));
  EXPECT_EQ(GetLF(q_, u"GOODS_ID"), u"br");
  EXPECT_EQ(Ids(), (V{40}));
  EXPECT_TRUE(q_->setFilter(name_, u"", false, nullptr));
  EXPECT_EQ(Ids(), (V{10, 20, 30, 40, 50}));
}

TEST_F(LookupFilterTest, SetFilterOnOtherFieldsBuildsTheFilterText) {
  q_->SetFilter(u"ID < 50");
  q_->SetFiltered(true);
  EXPECT_TRUE(q_->setFilter(q_->FieldByName(u"GOODS_ID"), u"1,3", true, nullptr));
  EXPECT_EQ(q_->Filter(), u"(ID < 50) AND ([GOODS_ID]='1' OR [GOODS_ID]='3')");
  EXPECT_EQ(Ids(), (V{10, 30}));
  // freeFilters brings back the text the dataset had before.
  q_->freeFilters(false);
  EXPECT_EQ(q_->Filter(), u"ID < 50");
  EXPECT_EQ(Ids(), (V{10, 20, 30, 40}));
}

TEST_F(LookupFilterTest, ABadClientFilterIsReportedAndTheOldOneRestored) {
  q_->SetFilter(u"ID > 10");
  q_->SetFiltered(true);
  try {
    q_->setFilter(q_->FieldByName(u"GOODS_ID"), u"x", false, nullptr);
    FAIL() << "a text compared with a number field was taken";
  } catch (const Exception& e) {
    EXPECT_EQ(e.Message.Pos(u"Invalid filter: (ID > 10) AND [GOODS_ID]='x'\n"), 1) << e.Message.ToUtf8();
    EXPECT_GT(e.Message.Pos(u"\nRestored old filter: ID > 10"), 0) << e.Message.ToUtf8();
  }
  EXPECT_EQ(q_->Filter(), u"ID > 10");
  EXPECT_TRUE(q_->Filtered());
  EXPECT_EQ(Ids(), (V{20, 30, 40, 50}));
}

TEST_F(LookupFilterTest, AnOldFilterTheEngineCannotReadDoesNotHideTheRefusal) {
  // An in-memory table takes a filter text while closed and reads it only
  // when the filter is switched on.
  TVeskVirt virt(nullptr);
  virt.LoadFromDataSet(goods_);
  virt.Close();
  virt.SetFilter(u"ID >");
  virt.Open();
  ASSERT_EQ(virt.RecordCount(), 5);
  try {
    virt.setFilter(virt.FieldByName(u"ID"), u"2", false, nullptr);
    FAIL() << "the broken filter text was taken";
  } catch (const Exception& e) {
    EXPECT_EQ(e.Message.Pos(u"Invalid filter: (ID >) AND [ID]='2'\n"), 1) << e.Message.ToUtf8();
    EXPECT_GT(e.Message.Pos(u"\nRestored old filter: ID >"), 0) << e.Message.ToUtf8();
  }
  EXPECT_FALSE(virt.Filtered());
  EXPECT_EQ(virt.RecordCount(), 5);
}

TEST_F(LookupFilterTest, CalculatedFieldsAreLeftToTheApplication) {
  TField* calc = new TStringField(q_);
  q_->Close();
  Add(calc, u"CLC", fkCalculated);
  q_->Open();
  int asked = 0;
  q_->VeskExtFilter = [&](TObject*) { ++asked; };
  EXPECT_TRUE(q_->setFilter(calc, u"x", false, nullptr));
  EXPECT_EQ(asked, 1);
  EXPECT_EQ(q_->Filter(), u"");
}

TEST_F(LookupFilterTest, AGridListFilterWithoutValueAsksTheDialogue) {
  static TField* chosen = nullptr;
  chosen = q_->FieldByName(u"NOTE");
  TComponent grid(nullptr);
  // No dialogue: taken as cancelled, nothing changes.
  auto previous = RegisterClientFilterDialogue(nullptr);
  EXPECT_TRUE(q_->setFilter(q_->FieldByName(u"ID"), u"", true, &grid));
  EXPECT_EQ(q_->FilterLists().CountSF(), 0);
  RegisterClientFilterDialogue([](TClientFilterQuery& query) {
    query.Field = chosen;
    query.Value = u"PIE";
    query.Partial = 1;
    return true;
  });
  EXPECT_TRUE(q_->setFilter(q_->FieldByName(u"ID"), u"", true, &grid));
  RegisterClientFilterDialogue(previous);
  EXPECT_EQ(q_->getSF(u"NOTE"), u"PIE");
  EXPECT_EQ(Ids(), (V{30}));
}

// ---- freeFilters -----------------------------------------------------------------------------

TEST_F(LookupFilterTest, FreeFiltersKeepingDropsOnlyTheLists) {
  q_->SetFilter(u"ID < 40");
  q_->SetFiltered(true);
  q_->setFilter(q_->FieldByName(u"NOTE"), u"lot", false, nullptr);
  int freed = 0;
  q_->VeskExtFilterFree = [&](TObject*) { ++freed; };
  q_->freeFilters(true);
  EXPECT_EQ(q_->FilterLists().CountSF(), 0);
  EXPECT_EQ(q_->Filter(), u"ID < 40");
  EXPECT_EQ(freed, 0);
  EXPECT_TRUE(q_->OnFilterRecord);
}

TEST_F(LookupFilterTest, FreeFiltersDroppingRestoresAndTellsTheApplication) {
  q_->SetFilter(u"ID < 40");
  q_->setFilter(q_->FieldByName(u"GOODS_ID"), u"2", false, nullptr);
  q_->setFilter(q_->FieldByName(u"NOTE"), u"lot", false, nullptr);
  EXPECT_EQ(Ids(), (V{20}));
  int freed = 0;
  q_->VeskExtFilterFree = [&](TObject*) { ++freed; };
  q_->freeFilters(false);
  EXPECT_EQ(freed, 1);
  EXPECT_EQ(q_->Filter(), u"ID < 40");
  EXPECT_TRUE(q_->Filtered());
  EXPECT_FALSE(q_->OnFilterRecord);
  EXPECT_EQ(Ids(), (V{10, 20, 30}));
}

TEST_F(LookupFilterTest, AnApplicationsFilterTheKitNeverTouchedSurvivesAClose) {
  q_->SetFilter(u"ID = 20");
  q_->SetFiltered(true);
  q_->Close();
  q_->Open();
  EXPECT_EQ(q_->Filter(), u"ID = 20");
  EXPECT_EQ(Ids(), (V{20}));
}

TEST_F(LookupFilterTest, ClosingDropsTheListsAndTheComposersReopenKeepsThem) {
  q_->SetVeskTableLive(u"ORDERS");
  q_->setFilter(q_->FieldByName(u"NOTE"), u"lot", false, nullptr);
  q_->SetVeskGroupField(u"ID DESC");  // the composer closes and reopens
  EXPECT_EQ(q_->getSF(u"NOTE"), u"lot");
  EXPECT_EQ(Ids(), (V{20, 10}));
  q_->Close();
  EXPECT_EQ(q_->FilterLists().CountSF(), 0);
}

// ---- Free functions and the field-reading locate ---------------------------------------------

TEST(LookupFilterFree, PlainDatasetsHaveNoLists) {
  TVirtualTable table(nullptr);
  EXPECT_EQ(GetLF(&table, u"ID"), u"");
  EXPECT_EQ(GetSF(&table, u"ID"), u"");
  EXPECT_EQ(GetLF(nullptr, u"ID"), u"");
}

TEST_F(LookupFilterTest, LocateLKCALCSearchesLookupFieldsAndReturnsOnFailure) {
  EXPECT_TRUE(q_->LocateLKCALC(u"GOODS_NAME", u"apr", TLocateOptions{loCaseInsensitive, loPartialKey}, false));
  EXPECT_EQ(q_->FieldByName(u"ID")->AsInteger(), 20);
  // Forward goes on behind the present record.
  EXPECT_TRUE(q_->LocateLKCALC(u"GOODS_NAME", u"B", TLocateOptions{loPartialKey}, true));
  EXPECT_EQ(q_->FieldByName(u"ID")->AsInteger(), 30);
  EXPECT_TRUE(q_->LocateLKCALC(u"GOODS_NAME", u"B", TLocateOptions{loPartialKey}, true));
  EXPECT_EQ(q_->FieldByName(u"ID")->AsInteger(), 40);
  EXPECT_FALSE(q_->LocateLKCALC(u"GOODS_NAME", u"B", TLocateOptions{loPartialKey}, true));
  EXPECT_EQ(q_->FieldByName(u"ID")->AsInteger(), 40);
  EXPECT_FALSE(q_->LocateLKCALC(u"GOODS_NAME", u"bread", TLocateOptions(), false));
  EXPECT_EQ(q_->FieldByName(u"ID")->AsInteger(), 40);
  EXPECT_TRUE(q_->LocateLKCALC(u"GOODS_NAME;GOODS_ID", VarArrayOf({u"Apple", 1}), TLocateOptions(), false));
  EXPECT_EQ(q_->FieldByName(u"ID")->AsInteger(), 10);
  EXPECT_FALSE(q_->ControlsDisabled());
  EXPECT_THROW(q_->LocateLKCALC(u"GOODS_NAME;GOODS_ID", u"Apple", TLocateOptions(), false), Exception);
}

}  // namespace

namespace {

// A lookup dataset that finds its rows through OnVESKLocateEvent.
TEST_F(LookupFilterTest, ALookupDatasetWithALocateEventFindsTheRowsItself) {
  std::vector<int> codes;
  goods_->OnVESKLocateEvent = [&](const String& keys, const Variant& values, int options) {
    codes.push_back(options);
    return LocateLKCALC(goods_, keys, values, TLocateOptions(), false);
  };
  FilterBy(&TVeskODACQuery::addLF, name_, u"ap", 1, false);
  EXPECT_EQ(Ids(), (V{10, 20}));
  ASSERT_FALSE(codes.empty());
  EXPECT_EQ(codes.front(), 11);
  // The event has the last word over the lookup's rows: one that finds
  // nothing rejects every record.
  goods_->OnVESKLocateEvent = [](const String&, const Variant&, int) { return false; };
  q_->SetFiltered(false);
  q_->SetFiltered(true);
  EXPECT_EQ(Ids(), V{});
}

TEST_F(LookupFilterTest, ALocateEventMayAnswerWithTheDatasetsOwnLocate) {
  // The handler looks at the request and leaves the search to the dataset:
  // inside the handler Locate is the ordinary one.
  std::vector<String> asked;
  goods_->OnVESKLocateEvent = [&](const String& keys, const Variant& values, int options) {
    asked.push_back(VarToStr(values));
    TLocateOptions o;
    if (options % 10 == 1) o << loCaseInsensitive;
    return goods_->Locate(keys, values, o);
  };
  FilterBy(&TVeskODACQuery::addLF, name_, u"BREAD", 0, false);
  EXPECT_EQ(Ids(), (V{40}));
  EXPECT_EQ(asked.size(), 5u);
  // Outside the handler the event answers again.
  asked.clear();
  EXPECT_TRUE(goods_->Locate(u"ID", 3, TLocateOptions()));
  EXPECT_EQ(asked, std::vector<String>{u"3"});
  EXPECT_EQ(goods_->FieldByName(u"NAME")->AsString(), u"Butter");
}

TEST_F(LookupFilterTest, ALocateEventMayRequeryTheLookupDatasetMidFilter) {
  // As a single-row reference table does: the event reopens the lookup
  // dataset on the one row sought, while the orders are being filtered.
  goods_->OnVESKLocateEvent = [&](const String& keys, const Variant& values, int) {
    goods_->Close();
    goods_->SetFilterSQL(keys + u" = " + VarToStr(values));
    goods_->Open();
    return goods_->RecordCount() == 1;
  };
  FilterBy(&TVeskODACQuery::addLF, name_, u"B", 1, true);
  EXPECT_EQ(Ids(), (V{30, 40}));
  // The orders' own lookup field reads whatever row is left open.
  goods_->OnVESKLocateEvent = nullptr;
  goods_->SetFilterSQL(String());
  q_->SetFiltered(false);
  q_->SetFiltered(true);
  EXPECT_EQ(Ids(), (V{30, 40}));
}

TEST_F(LookupFilterTest, AnInMemoryLookupWithALocateEvent) {
  auto* virt = new TVeskVirt(owner_.get());
  virt->LoadFromDataSet(goods_);
  virt->OnVESKLocateEvent = [&](const String& keys, const Variant& values, int) {
    return LocateLKCALC(virt, keys, values, TLocateOptions(), false);
  };
  name_->SetLookupDataSet(virt);
  q_->Close();
  q_->Open();
  FilterBy(&TVeskODACQuery::addLF, name_, u"apricot", 0, false);
  EXPECT_EQ(Ids(), (V{20}));
  EXPECT_EQ(q_->FieldByName(u"GOODS_NAME")->AsString(), u"Apricot");
  delete virt;
  EXPECT_EQ(name_->LookupDataSet(), nullptr);
  q_->SetFiltered(false);
  q_->SetFiltered(true);
  EXPECT_EQ(Ids(), V{});
}

}  // namespace

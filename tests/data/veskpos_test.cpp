// Positions by key values: cutting key lists, reading key values, TVeskPos
// across reopens, and the dataset's own memorized position.
#include <gtest/gtest.h>

#include <array>

#include "data/veskpos.h"
#include "tests/support/kitfixture.h"

namespace {

TEST(BreakApart, SkipsEmptyPartsAndAlwaysCutsAtTilde) {
  std::vector<String> parts;
  EXPECT_EQ(breakApart(u"A;;B", parts, u";"), 2);
  EXPECT_EQ(parts, (std::vector<String>{u"A", u"B"}));
  EXPECT_EQ(breakApart(u"A~B", parts, String()), 2);
  EXPECT_EQ(parts, (std::vector<String>{u"A", u"B"}));
  EXPECT_EQ(breakApart(u";", parts, u";"), 0);
  EXPECT_EQ(breakApart(String(), parts, u";"), 0);
  EXPECT_EQ(breakApart(u"x,y;z", parts, u",;"), 3);
  EXPECT_EQ(parts.back(), u"z");
  EXPECT_EQ(breakApart(u"only", parts, u";"), 1);
  EXPECT_EQ(parts.front(), u"only");
}

TEST(BreakApart, TakesNoMoreThanTheLimitOrTheArray) {
  std::vector<String> parts;
  String many;
  for (int i = 0; i < 300; ++i) many += u"p" + IntToStr(i) + u";";
  EXPECT_EQ(breakApart(many, parts, u";"), kVeskMaxParts);
  EXPECT_EQ(parts.back(), u"p254");
  std::array<String, 3> three;
  EXPECT_EQ(breakApart(u"a;b;c;d;e", std::span<String>(three), u";"), 3);
  EXPECT_EQ(three[2], u"c");
}

TEST_F(KitDbTest, KeyValuesSkipMissingFields) {
  TVeskODACQuery* q = OpenGoods();
  String keys;
  Variant values;
  ReadKeyValues(q, u"CODE;NOPE", keys, values);
  EXPECT_EQ(keys, u"CODE");
  EXPECT_EQ(values, Variant(u"A01"));
  ReadKeyValues(q, u"id;NAME", keys, values);
  EXPECT_EQ(keys, u"ID;NAME");  // the fields' own names
  ASSERT_TRUE(VarIsArray(values));
  EXPECT_EQ(VarArrayHighBound(values, 1) - VarArrayLowBound(values, 1), 1);
  EXPECT_EQ(values.GetElement(VarArrayLowBound(values, 1)), Variant(1));
  EXPECT_EQ(values.GetElement(VarArrayLowBound(values, 1) + 1), Variant(u"Apple"));
  ReadKeyValues(q, String(), keys, values);
  EXPECT_EQ(keys, u"");
  EXPECT_TRUE(VarIsEmpty(values));
}

TEST_F(KitDbTest, FieldValuesAndKeyFieldsOfTheDataset) {
  TVeskODACQuery* q = OpenGoods();
  q->Locate(u"ID", 3, TLocateOptions());
  EXPECT_EQ(q->getVeskFieldsValues(u"NAME"), Variant(u"Butter"));
  Variant both = q->getVeskFieldsValues(u"CODE;NOPE;QTY");
  ASSERT_TRUE(VarIsArray(both));
  EXPECT_EQ(both.GetElement(VarArrayLowBound(both, 1)), Variant(u"B01"));
  EXPECT_EQ(both.GetElement(VarArrayHighBound(both, 1)), Variant(7));
  EXPECT_TRUE(VarIsEmpty(q->getVeskFieldsValues(u"NOPE")));

  // No key fields: all names, stored only when asked.
  EXPECT_EQ(q->getVeskKeyFields(false), u"ID;CODE;NAME;PRICE;QTY");
  EXPECT_EQ(q->VeskKeyFields(), u"");
  EXPECT_EQ(q->getVeskKeyFields(true), u"ID;CODE;NAME;PRICE;QTY");
  EXPECT_EQ(GetPropString(q, u"VeskKeyFields"), u"ID;CODE;NAME;PRICE;QTY");
  SetPropString(q, u"VeskKeyFields", u"CODE,NAME");
  EXPECT_EQ(q->getVeskKeyFields(false), u"CODE;NAME");
}

// ---- TVeskPos -------------------------------------------------------------------------

TEST_F(KitDbTest, PositionOutlivesAReopenInAnotherOrder) {
  TVeskODACQuery* q = OpenGoods();
  q->SetVeskKeyFields(u"CODE");
  q->Locate(u"ID", 4, TLocateOptions());
  TVeskPos pos(q, true);
  EXPECT_EQ(pos.KeyText(), u"CODE");
  ASSERT_EQ(pos.Count(), 1);
  EXPECT_EQ(pos.Value(0), Variant(u"B02"));

  q->Close();
  Exec(u"INSERT INTO GOODS VALUES (6, 'A00', 'Almond', 8, 2)");
  q->SQL()->SetText(u"SELECT * FROM GOODS ORDER BY NAME DESC");
  q->Open();
  EXPECT_NE(q->FieldByName(u"CODE")->AsString(), u"B02");
  EXPECT_TRUE(pos.Restore(false));
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"Bread");
  EXPECT_EQ(pos.Count(), 1);  // kept for another restore

  // A record that is gone: not found, the cursor stays, and ClearAfter
  // empties the position.
  q->First();
  Exec(u"DELETE FROM GOODS WHERE ID = 4");
  q->Refresh();
  const String before = q->FieldByName(u"CODE")->AsString();
  EXPECT_FALSE(pos.Restore(true));
  EXPECT_EQ(q->FieldByName(u"CODE")->AsString(), before);
  EXPECT_EQ(pos.Count(), 0);
  EXPECT_EQ(pos.KeyText(), u"");
  EXPECT_FALSE(pos.Restore(false));
}

TEST_F(KitDbTest, PositionBySeveralKeysWithBlanksAndSemicolons) {
  TVeskODACQuery* q = OpenGoods();
  q->SetVeskKeyFields(u" NAME ; PRICE ");
  q->Locate(u"ID", 2, TLocateOptions());
  TVeskPos pos(q);
  EXPECT_EQ(pos.Count(), 0);  // not asked to memorize
  pos.Memorize();
  EXPECT_EQ(pos.KeyText(), u"NAME ; PRICE");
  ASSERT_EQ(pos.Count(), 2);
  EXPECT_EQ(pos.Value(0), Variant(u"Apricot"));
  EXPECT_DOUBLE_EQ(pos.Value(1).AsFloat(), 4.0);
  EXPECT_THROW(pos.Value(2), EListError);
  q->Last();
  EXPECT_TRUE(pos.Restore(true));
  EXPECT_EQ(q->FieldByName(u"ID")->AsInteger(), 2);
  EXPECT_EQ(pos.Count(), 0);

  // Re-memorizing with fewer keys re-uses the array and forgets the rest.
  q->SetVeskKeyFields(u"ID");
  q->Last();
  pos.Memorize();
  ASSERT_EQ(pos.Count(), 1);
  EXPECT_EQ(pos.Value(0), Variant(5));
}

TEST_F(KitDbTest, PositionMovesToAnotherDatasetAndRaisesOnAMissingKey) {
  TVeskODACQuery* q = OpenGoods();
  q->SetVeskKeyFields(u"CODE;NOPE");
  q->Locate(u"ID", 3, TLocateOptions());
  TVeskPos pos(q, true);
  ASSERT_EQ(pos.Count(), 2);
  EXPECT_EQ(pos.Value(0), Variant(u"B01"));
  EXPECT_TRUE(VarIsEmpty(pos.Value(1)));  // the slot of the missing field
  EXPECT_THROW(pos.Restore(true), EDatabaseError);
  EXPECT_EQ(pos.Count(), 0);  // cleared although the locate raised

  q->SetVeskKeyFields(u"CODE");
  pos.Memorize();
  TVeskODACQuery* other = OpenGoods(u"qOther");
  pos.SetDataSet(other);
  EXPECT_EQ(pos.DataSet(), other);
  EXPECT_EQ(pos.Count(), 1);  // what was memorized stays
  EXPECT_TRUE(pos.Restore(false));
  EXPECT_EQ(other->FieldByName(u"ID")->AsInteger(), 3);
}

TEST_F(KitDbTest, PositionWithoutDatasetKeysOrAnOpenDataset) {
  TVeskPos none(nullptr, true);
  none.Memorize();
  EXPECT_EQ(none.Count(), 0);
  EXPECT_FALSE(none.Restore(true));

  // A dataset outside the family has no VeskKeyFields: nothing to keep.
  auto* plain = new TOraQuery(owner_.get());
  plain->SetSession(session_);
  plain->SQL()->SetText(u"SELECT * FROM GOODS");
  plain->Open();
  TVeskPos pos(plain, true);
  EXPECT_EQ(pos.Count(), 0);
  EXPECT_FALSE(pos.Restore(false));

  // A closed dataset is not memorized at construction, and a restore into
  // it finds nothing until it opens again.
  TVeskODACQuery* q = OpenGoods();
  q->SetVeskKeyFields(u"ID");
  q->Locate(u"ID", 5, TLocateOptions());
  TVeskPos kept(q, true);
  q->Close();
  TVeskPos closed(q, true);
  EXPECT_EQ(closed.Count(), 0);
  EXPECT_FALSE(kept.Restore(false));
  EXPECT_EQ(kept.Count(), 1);
  q->Open();
  EXPECT_TRUE(kept.Restore(false));
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"Cheese");

  // Memorized while closed, the fields are read as they stand: a closed
  // dataset has none, so every slot is empty and nothing is found later.
  q->Close();
  closed.Memorize();
  ASSERT_EQ(closed.Count(), 1);
  EXPECT_TRUE(VarIsEmpty(closed.Value(0)));
  q->Open();
  EXPECT_FALSE(closed.Restore(false));
}

// ---- The dataset's memorized position -------------------------------------------------------

TEST_F(KitDbTest, RefreshComesBackToTheRecordByItsKeys) {
  TVeskODACQuery* q = OpenGoods();
  q->SetVeskKeyFields(u"NOPE;CODE");  // a key the dataset lacks is passed over
  q->SetVeskRememberPos(true);
  q->Locate(u"CODE", u"B01", TLocateOptions());
  Exec(u"INSERT INTO GOODS VALUES (0, 'A00', 'Almond', 8, 2)");  // ahead of it
  q->Refresh();
  EXPECT_EQ(q->FieldByName(u"CODE")->AsString(), u"B01");
  EXPECT_EQ(q->RecNo(), 4);

  // Without key fields the bookmark brings it back.
  q->SetVeskKeyFields(String());
  q->Locate(u"CODE", u"B02", TLocateOptions());
  q->Refresh();
  EXPECT_EQ(q->FieldByName(u"CODE")->AsString(), u"B02");
}

TEST_F(KitDbTest, RefreshQueryFindsTheRecordOrEndsOnTheLast) {
  TVeskODACQuery* q = OpenGoods();
  q->SetVeskKeyFields(u"ID");
  q->Locate(u"ID", 2, TLocateOptions());
  Exec(u"UPDATE GOODS SET NAME = 'Apricots' WHERE ID = 2");
  q->RefreshQuery();
  EXPECT_EQ(q->FieldByName(u"NAME")->AsString(), u"Apricots");
  q->VeskMemorizeFieldValues();
  q->First();
  EXPECT_TRUE(q->VeskLocate());
  EXPECT_EQ(q->FieldByName(u"ID")->AsInteger(), 2);

  Exec(u"DELETE FROM GOODS WHERE ID = 2");
  q->RefreshQuery();
  EXPECT_EQ(q->FieldByName(u"ID")->AsInteger(), 5);
  EXPECT_TRUE(q->Eof() || q->RecNo() == q->RecordCount());
}

}  // namespace

#include "data/fieldsetup.h"

#include <gtest/gtest.h>

#include "data/contfields.h"
#include "grid/gridpropcmp.h"
#include "platform/db/memdataset.h"
#include "platform/rtl/stringlist.h"
#include "tests/support/dbfixture.h"

namespace {

String MaskOf(TDataSet* ds, const String& name) { return ds->FieldByName(name)->EditMask(); }

String DisplayFormatOf(TDataSet* ds, const String& name) {
  TField* f = ds->FieldByName(name);
  if (auto* d = dynamic_cast<TDateTimeField*>(f)) return d->DisplayFormat();
  if (auto* n = dynamic_cast<TNumericField*>(f)) return n->DisplayFormat();
  return u"<none>";
}

class FieldSetupTest : public DbTest {
 protected:
  void SetUp() override {
    DbTest::SetUp();
    Exec(u"CREATE TABLE docs (id NUMBER(10) PRIMARY KEY, name VARCHAR2(20), doc_date DATE, doc_datetime DATE, "
         u"doc_time DATE, summa NUMBER(12,2))");
    Exec(u"INSERT INTO docs VALUES (1, 'first', TO_DATE('2024-03-05', 'YYYY-MM-DD'), "
         u"TO_DATE('2024-03-05 10:20:30', 'YYYY-MM-DD HH24:MI:SS'), NULL, 12.5)");
    Exec(u"INSERT INTO docs VALUES (2, 'second', NULL, NULL, NULL, 7)");
  }
  TOraQuery* Docs(const String& sql = u"SELECT id, name, doc_date, doc_datetime, doc_time, summa FROM docs ORDER BY id") {
    TOraQuery* q = Query(sql);
    q->Open();
    return q;
  }
};

// ---- Format classes ------------------------------------------------------------------

TEST_F(FieldSetupTest, DateTimeFieldsTakeTheirClassByTheEndOfTheName) {
  TOraQuery* q = Docs();
  ASSERT_TRUE(q->FieldByName(u"DOC_DATETIME")->InheritsFrom(TDateTimeField::StaticClass()));
  EXPECT_EQ(FieldFormatClass(q->FieldByName(u"DOC_DATETIME")), fcDateTime);
  EXPECT_EQ(FieldFormatClass(q->FieldByName(u"DOC_DATE")), fcDate);
  EXPECT_EQ(FieldFormatClass(q->FieldByName(u"DOC_TIME")), fcTime);
  EXPECT_EQ(FieldFormatClass(q->FieldByName(u"ID")), fcNone);
  EXPECT_EQ(FieldFormatClass(q->FieldByName(u"NAME")), fcNone);
  EXPECT_EQ(FieldFormatClass(nullptr), fcNone);

  SetupFieldsAfterOpen(q);
  EXPECT_EQ(MaskOf(q, u"DOC_DATETIME"), u"99.99.9999 99:99:99");
  EXPECT_EQ(DisplayFormatOf(q, u"DOC_DATETIME"), u"");  // the date-and-time class sets no format
  EXPECT_EQ(MaskOf(q, u"DOC_DATE"), u"99.99.9999");
  EXPECT_EQ(DisplayFormatOf(q, u"DOC_DATE"), u"dd.mm.yyyy");
  EXPECT_EQ(MaskOf(q, u"DOC_TIME"), u"99:99:99");
  EXPECT_EQ(DisplayFormatOf(q, u"DOC_TIME"), u"hh:nn:ss");
  EXPECT_EQ(MaskOf(q, u"ID"), u"");
  EXPECT_EQ(DisplayFormatOf(q, u"SUMMA"), u"");
  EXPECT_EQ(q->FieldByName(u"DOC_DATE")->DisplayText(), u"05.03.2024");
}

TEST_F(FieldSetupTest, DateAndTimeFieldClassesWinOverTheName) {
  TVirtualTable table(nullptr);
  table.AddField(u"SHIFT_DATETIME", ftDate);
  table.AddField(u"START", ftTime);
  table.AddField(u"STAMP", ftDateTime);
  table.Open();
  EXPECT_EQ(FieldFormatClass(table.FieldByName(u"SHIFT_DATETIME")), fcDate);
  EXPECT_EQ(FieldFormatClass(table.FieldByName(u"START")), fcTime);
  EXPECT_EQ(FieldFormatClass(table.FieldByName(u"STAMP")), fcDate);
}

TEST_F(FieldSetupTest, OwnMasksAndFormatsStay) {
  TOraQuery* q = Docs();
  q->FieldByName(u"DOC_DATE")->SetEditMask(u"!99/99/9999;1;_");
  static_cast<TDateTimeField*>(q->FieldByName(u"DOC_TIME"))->SetDisplayFormat(u"hh:nn");
  SetupFieldsAfterOpen(q);
  EXPECT_EQ(MaskOf(q, u"DOC_DATE"), u"!99/99/9999;1;_");
  EXPECT_EQ(DisplayFormatOf(q, u"DOC_DATE"), u"dd.mm.yyyy");
  EXPECT_EQ(MaskOf(q, u"DOC_TIME"), u"99:99:99");
  EXPECT_EQ(DisplayFormatOf(q, u"DOC_TIME"), u"hh:nn");
}

TEST_F(FieldSetupTest, WithoutAPropertyStoreNoFieldIsContent) {
  TOraQuery* q = Docs(u"SELECT id cont, summa xcont, id cont_1 FROM docs");
  SetupFieldsAfterOpen(q);
  for (const char16_t* name : {u"CONT", u"XCONT", u"CONT_1"}) {
    EXPECT_EQ(FieldFormatClass(q->FieldByName(name)), fcNone) << String(name);
    EXPECT_EQ(MaskOf(q, name), u"") << String(name);
    EXPECT_FALSE(IsContentField(q->FieldByName(name))) << String(name);
  }
}

// ---- Content fields ------------------------------------------------------------------------

class ContentFieldTest : public FieldSetupTest {
 protected:
  void SetUp() override {
    FieldSetupTest::SetUp();
    store_ = new TGridPropCmp(owner_.get());
    store_->SetStartUpInit(true);
    store_->SetUseDotInCont(true);
  }
  TOraQuery* Accounts() {
    return Docs(u"SELECT id cont, summa xcont, id \"A.CONT\", id cont_1, id dt, summa ct, id cc1, id cc2, "
                u"id contx, name cont_s, id \"A.B.CONT\" FROM docs ORDER BY id");
  }
  TGridPropCmp* store_ = nullptr;
};

TEST_F(ContentFieldTest, AccountNamesOfNumberFieldsAreContent) {
  TOraQuery* q = Accounts();
  for (const char16_t* name : {u"CONT", u"XCONT", u"A.CONT", u"CONT_1", u"DT", u"CT", u"CC1", u"CC2"})
    EXPECT_EQ(FieldFormatClass(q->FieldByName(name)), fcContent) << String(name);
  for (const char16_t* name : {u"CONTX", u"CONT_S", u"A.B.CONT"})
    EXPECT_EQ(FieldFormatClass(q->FieldByName(name)), fcNone) << String(name);

  q->FieldByName(u"CONT")->SetEditMask(u"999");
  SetupFieldsAfterOpen(q);
  EXPECT_EQ(MaskOf(q, u"CONT"), u"99\\.99");  // the content mask replaces a field's own
  EXPECT_EQ(DisplayFormatOf(q, u"CONT"), u"00.00");
  EXPECT_EQ(DisplayFormatOf(q, u"XCONT"), u"00.00");
  EXPECT_EQ(q->FieldByName(u"CONT")->DisplayText(), u"01.00");
  EXPECT_EQ(q->FieldByName(u"XCONT")->DisplayText(), u"12.50");
  EXPECT_EQ(MaskOf(q, u"CONTX"), u"");
  EXPECT_TRUE(q->FieldByName(u"CONT")->OnSetText.Assigned());
}

TEST_F(ContentFieldTest, ContentFieldsActAsTheirContentClass) {
  TOraQuery* q = Accounts();
  SetupFieldsAfterOpen(q);
  SetupFieldsAfterOpen(q);  // a second pass attaches nothing more
  TField* cont = q->FieldByName(u"CONT");
  TField* xcont = q->FieldByName(u"XCONT");
  EXPECT_EQ(FieldClassOf(cont)->ClassName(), u"TContIntegerField");
  EXPECT_EQ(FieldClassOf(xcont)->ClassName(), u"TContFloatField");
  EXPECT_TRUE(FieldClassOf(cont)->InheritsFrom(TIntegerField::StaticClass()));
  EXPECT_TRUE(FieldClassOf(xcont)->InheritsFrom(TFloatField::StaticClass()));
  EXPECT_EQ(cont->ComponentCount(), 1);
  EXPECT_TRUE(IsContentField(cont));
  EXPECT_FALSE(IsContentField(q->FieldByName(u"CONTX")));
  EXPECT_EQ(FieldClassOf(q->FieldByName(u"CONTX")), q->FieldByName(u"CONTX")->ClassType());
  EXPECT_EQ(FieldClassOf(nullptr), nullptr);

  // Fields made anew at the next open start plain again.
  q->Close();
  q->Open();
  EXPECT_FALSE(IsContentField(q->FieldByName(u"CONT")));
  SetupFieldsAfterOpen(q);
  EXPECT_TRUE(IsContentField(q->FieldByName(u"CONT")));
}

TEST_F(ContentFieldTest, DeclaredContentFieldsNeedNoBehaviour) {
  TContIntegerField declared(nullptr);
  TStringField text(nullptr);
  EXPECT_TRUE(MakeContentField(&declared));
  EXPECT_EQ(declared.ComponentCount(), 0);
  EXPECT_EQ(FieldClassOf(&declared), TContIntegerField::StaticClass());
  EXPECT_FALSE(MakeContentField(&text));
  EXPECT_FALSE(MakeContentField(nullptr));
  EXPECT_EQ(ContentBehaviour(&text), nullptr);
}

TEST_F(ContentFieldTest, TheDotComesFromTheStoreAndNeedsItOn) {
  store_->SetUseDotInContChar(u'-');
  TOraQuery* q = Accounts();
  SetupFieldsAfterOpen(q);
  EXPECT_EQ(MaskOf(q, u"CONT"), u"99\\-99");
  EXPECT_EQ(DisplayFormatOf(q, u"CONT"), u"00-00");

  store_->SetUseDotInCont(false);
  EXPECT_EQ(FieldFormatClass(q->FieldByName(u"XCONT")), fcNone);
  store_->SetUseDotInCont(true);
  store_->SetStartUpInit(false);
  EXPECT_EQ(FieldFormatClass(q->FieldByName(u"XCONT")), fcNone);
}

TEST_F(ContentFieldTest, ContentParamsKeepTheirOwnMask) {
  TOraQuery* q = Accounts();
  SetupFieldsAfterOpen(q);
  TField* cont = q->FieldByName(u"CONT");
  TStringList list;
  GetVeskFieldParams(cont, &list);
  EXPECT_EQ(list.Count(), 0);  // default format, and no mask for content fields

  static_cast<TNumericField*>(cont)->SetDisplayFormat(u"0000");
  GetVeskFieldParams(cont, &list);
  EXPECT_EQ(list.Text(), u"DisplayFormat=0000\n");
  list.SetValues(u"EditMask", u"9999");
  cont->SetEditMask(String());
  SetVeskFieldParams(cont, &list);
  EXPECT_EQ(MaskOf(q, u"CONT"), u"99\\.99");
  EXPECT_EQ(DisplayFormatOf(q, u"CONT"), u"0000");
}

// ---- The mask text handler -------------------------------------------------------------

TEST_F(FieldSetupTest, MaskLiteralsAloneClearTheField) {
  TOraQuery* q = Docs();
  SetupFieldsAfterOpen(q);
  TField* date = q->FieldByName(u"DOC_DATE");
  ASSERT_TRUE(date->OnSetText.Assigned());
  EXPECT_FALSE(q->FieldByName(u"NAME")->OnSetText.Assigned());
  q->SQLUpdate()->SetText(u"UPDATE docs SET doc_date = :DOC_DATE WHERE id = :OLD_ID");

  q->Edit();
  date->SetText(u"  .  .    ");
  EXPECT_TRUE(date->IsNull());
  q->Post();
  EXPECT_EQ(Value(u"SELECT doc_date FROM docs WHERE id = 1"), u"<null>");

  q->Edit();
  date->SetText(u"17.04.2025");
  EXPECT_EQ(date->AsDateTime(), EncodeDate(2025, 4, 17));
  q->Post();
  EXPECT_EQ(Value(u"SELECT TO_CHAR(doc_date, 'DD.MM.YYYY') FROM docs WHERE id = 1"), u"17.04.2025");
}

TEST_F(FieldSetupTest, AFieldsOwnTextHandlerIsKept) {
  TOraQuery* q = Docs();
  String seen;
  TField* date = q->FieldByName(u"DOC_DATE");
  date->OnSetText = [&seen](TField*, const String& text) { seen = text; };
  SetupFieldsAfterOpen(q);
  q->Edit();
  date->SetText(u"  .  .    ");
  EXPECT_EQ(seen, u"  .  .    ");
  EXPECT_FALSE(date->IsNull());
  q->Cancel();
}

TEST(SetTextByMaskTest, ADigitAnywhereStoresTheTextAsItStands) {
  TVirtualTable table(nullptr);
  table.AddField(u"CODE", ftString, 10);
  table.Open();
  table.Append();
  TField* code = table.FieldByName(u"CODE");
  SetTextByMask(code, u"--1--");
  EXPECT_EQ(code->AsString(), u"--1--");
  SetTextByMask(code, u"-- --");
  EXPECT_TRUE(code->IsNull());
  table.Cancel();
}

// ---- The Origin of calculated companions ------------------------------------------------

class CompanionTest : public FieldSetupTest {
 protected:
  void SetUp() override {
    FieldSetupTest::SetUp();
    q_ = Docs(u"SELECT id, name, id AS \"DOC.COD\", name AS \"DOC.TXT\", id AS \"ACC.NR_T\", "
              u"'a' clc_name, 'b' clcname, 'c' clc_namet, 'd' clc_name_t, 'e' clc_doc_cod, 'f' clcdoccodt, "
              u"'g' clc_doc_cod_t, 'h' clc_acc_nr, 'i' clc_doc_txt, 'j' clc, 'k' clc_nothing FROM docs");
  }
  TField* Companion(const String& name) { return FindCompanionField(q_, name); }
  TOraQuery* q_ = nullptr;
};

TEST_F(CompanionTest, TheNameBehindClcWithOrWithoutItsTrailingT) {
  ASSERT_NE(Companion(u"CLC_NAME"), nullptr);
  EXPECT_EQ(Companion(u"CLC_NAME")->FieldName(), u"NAME");
  EXPECT_EQ(Companion(u"clcname"), q_->FieldByName(u"NAME"));
  EXPECT_EQ(Companion(u"CLC_NAMET"), q_->FieldByName(u"NAME"));
  EXPECT_EQ(Companion(u"CLC_NAME_T"), q_->FieldByName(u"NAME"));
  EXPECT_EQ(Companion(u"CLC"), nullptr);
  EXPECT_EQ(Companion(u"CLC_NOTHING"), nullptr);
  EXPECT_EQ(Companion(u"NAME"), nullptr);
}

TEST_F(CompanionTest, NumberColumnsWithADotMatchWithItUnderscoredOrDropped) {
  EXPECT_EQ(Companion(u"CLC_DOC_COD"), q_->FieldByName(u"DOC.COD"));
  EXPECT_EQ(Companion(u"CLCDOCCODT"), q_->FieldByName(u"DOC.COD"));
  EXPECT_EQ(Companion(u"CLC_DOC_COD_T"), q_->FieldByName(u"DOC.COD"));
  EXPECT_EQ(Companion(u"CLC_ACC_NR"), q_->FieldByName(u"ACC.NR_T"));  // the name + "_T"
  // Only numbers are looked at: a text column with a dot is no companion.
  EXPECT_EQ(Companion(u"CLC_DOC_TXT"), nullptr);
}

TEST_F(CompanionTest, SetupGivesOriginsToFieldsMadeAtRunTimeOnly) {
  q_->FieldByName(u"CLCNAME")->SetName(u"ClcNameField");
  q_->FieldByName(u"CLCNAME")->SetOrigin(u"KEPT");
  SetupFieldsAfterOpen(q_);
  EXPECT_EQ(q_->FieldByName(u"CLC_NAME")->Origin(), u"NAME");
  EXPECT_EQ(q_->FieldByName(u"CLC_NAME_T")->Origin(), u"NAME");
  EXPECT_EQ(q_->FieldByName(u"CLC_DOC_COD_T")->Origin(), u"DOC.COD");
  EXPECT_EQ(q_->FieldByName(u"CLC_ACC_NR")->Origin(), u"ACC.NR_T");
  EXPECT_EQ(q_->FieldByName(u"CLCNAME")->Origin(), u"KEPT");
  EXPECT_EQ(q_->FieldByName(u"CLC_NOTHING")->Origin(), q_->FieldDefs()->Find(u"CLC_NOTHING")->Origin());
}

// ---- Labels and widths ------------------------------------------------------------------

TEST_F(FieldSetupTest, WidthsHideOnZeroAndSkipEmptyEntries) {
  TOraQuery* q = Docs(u"SELECT id, name, doc_date, summa FROM docs");
  q->FieldByName(u"DOC_DATE")->SetDisplayWidth(12);
  q->FieldByName(u"SUMMA")->SetDisplayWidth(14);
  SetupFieldWidths(q, u"10,0,,");
  EXPECT_EQ(q->FieldByName(u"ID")->DisplayWidth(), 10);
  EXPECT_TRUE(q->FieldByName(u"ID")->Visible());
  EXPECT_FALSE(q->FieldByName(u"NAME")->Visible());
  EXPECT_TRUE(q->FieldByName(u"DOC_DATE")->Visible());
  EXPECT_EQ(q->FieldByName(u"DOC_DATE")->DisplayWidth(), 12);
  EXPECT_TRUE(q->FieldByName(u"SUMMA")->Visible());
  EXPECT_EQ(q->FieldByName(u"SUMMA")->DisplayWidth(), 14);

  // More entries than fields: the rest is ignored.
  SetupFieldWidths(q, u"1,2,3,4,5,6");
  EXPECT_EQ(q->FieldByName(u"SUMMA")->DisplayWidth(), 4);
}

TEST_F(FieldSetupTest, LabelsSkipEmptyEntries) {
  TOraQuery* q = Docs(u"SELECT id, name, summa FROM docs");
  SetupFieldLabels(q, u"Code,,\"Total sum\"");
  EXPECT_EQ(q->FieldByName(u"ID")->DisplayLabel(), u"Code");
  EXPECT_EQ(q->FieldByName(u"NAME")->DisplayLabel(), u"NAME");
  EXPECT_EQ(q->FieldByName(u"SUMMA")->DisplayLabel(), u"Total sum");
  SetupFieldLabels(q, u"");
  EXPECT_EQ(q->FieldByName(u"ID")->DisplayLabel(), u"Code");
  // A comma text: unquoted blanks separate entries too.
  SetupFieldLabels(q, u"Doc no,Name");
  EXPECT_EQ(q->FieldByName(u"ID")->DisplayLabel(), u"Doc");
  EXPECT_EQ(q->FieldByName(u"NAME")->DisplayLabel(), u"no");
  SetupFieldLabels(nullptr, u"x");  // nothing to do, nothing raised
}

TEST_F(FieldSetupTest, TheStatementCarriesItsOwnCaptionsAndWidths) {
  TOraQuery* q = Docs(u"/*\n.Captions=Code,Name\n.Widths=10,0\n*/\nSELECT id, name, summa FROM docs");
  SetDesignFromSQL(q);
  EXPECT_EQ(q->FieldByName(u"ID")->DisplayLabel(), u"Code");
  EXPECT_EQ(q->FieldByName(u"NAME")->DisplayLabel(), u"Name");
  EXPECT_EQ(q->FieldByName(u"ID")->DisplayWidth(), 10);
  EXPECT_FALSE(q->FieldByName(u"NAME")->Visible());
  EXPECT_TRUE(q->FieldByName(u"SUMMA")->Visible());
  EXPECT_EQ(q->RecordCount(), 2);  // the comment does not disturb the statement

  TVirtualTable table(nullptr);
  table.AddField(u"A", ftInteger);
  table.Open();
  SetDesignFromSQL(&table);
  EXPECT_EQ(table.FieldByName(u"A")->DisplayLabel(), u"A");
}

TEST_F(FieldSetupTest, DesignListsForMasterAndDetail) {
  TOraQuery* q = Docs(u"SELECT id, name FROM docs");
  TStringList list;
  list.SetText(u".Captions=  Code,Name  \nCaptionsD=\"Detail code\"\nWidthsD=7,0\n.Widths=   ");
  SetDesignFromParams(q, &list);
  EXPECT_EQ(q->FieldByName(u"ID")->DisplayLabel(), u"Code");
  EXPECT_EQ(q->FieldByName(u"NAME")->DisplayLabel(), u"Name");
  EXPECT_TRUE(q->FieldByName(u"NAME")->Visible());

  SetDesignFromParamsDetail(q, &list);
  EXPECT_EQ(q->FieldByName(u"ID")->DisplayLabel(), u"Detail code");
  EXPECT_EQ(q->FieldByName(u"ID")->DisplayWidth(), 7);
  EXPECT_FALSE(q->FieldByName(u"NAME")->Visible());
  SetDesignFromParams(q, nullptr);
}

// ---- Field params in a list --------------------------------------------------------------

TEST_F(FieldSetupTest, FieldParamsRoundTripThroughAList) {
  TOraQuery* q = Docs();
  SetupFieldsAfterOpen(q);
  TStringList list;
  GetVeskFieldParams(q->FieldByName(u"DOC_DATE"), &list);
  // The class's default format is not written at all.
  EXPECT_EQ(list.IndexOfName(u"DisplayFormat"), -1);
  EXPECT_EQ(list.Values(u"EditMask"), u"99.99.9999");

  auto* time = static_cast<TDateTimeField*>(q->FieldByName(u"DOC_TIME"));
  time->SetDisplayFormat(u"hh:nn");
  time->SetEditMask(u"99:99");
  TStringList timeList;
  GetVeskFieldParams(time, &timeList);
  EXPECT_EQ(timeList.Values(u"DisplayFormat"), u"hh:nn");
  EXPECT_EQ(timeList.Values(u"EditMask"), u"99:99");

  // A class-0 field writes nothing.
  TStringList none;
  GetVeskFieldParams(q->FieldByName(u"NAME"), &none);
  GetVeskFieldParams(q->FieldByName(u"SUMMA"), &none);
  EXPECT_EQ(none.Count(), 0);

  // Back onto the fields after a reopen, which makes them anew.
  q->Close();
  q->Open();
  SetVeskFieldParams(q->FieldByName(u"DOC_TIME"), &timeList);
  EXPECT_EQ(DisplayFormatOf(q, u"DOC_TIME"), u"hh:nn");
  EXPECT_EQ(MaskOf(q, u"DOC_TIME"), u"99:99");
  SetVeskFieldParams(q->FieldByName(u"DOC_DATE"), &list);
  EXPECT_EQ(DisplayFormatOf(q, u"DOC_DATE"), u"dd.mm.yyyy");  // the default, for a field made at run time
  EXPECT_EQ(MaskOf(q, u"DOC_DATE"), u"99.99.9999");
}

TEST_F(FieldSetupTest, DefaultFormatOnlyForFieldsMadeAtRunTimeAndWithoutOne) {
  TOraQuery* q = Docs();
  TStringList empty;
  TField* named = q->FieldByName(u"DOC_DATE");
  named->SetName(u"DocDate");
  SetVeskFieldParams(named, &empty);
  EXPECT_EQ(DisplayFormatOf(q, u"DOC_DATE"), u"");
  EXPECT_EQ(MaskOf(q, u"DOC_DATE"), u"");  // a list without a mask leaves the field's own

  auto* stamp = static_cast<TDateTimeField*>(q->FieldByName(u"DOC_DATETIME"));
  stamp->SetDisplayFormat(u"yyyy");
  SetVeskFieldParams(stamp, &empty);
  EXPECT_EQ(stamp->DisplayFormat(), u"yyyy");

  // Numbers of class 0 take a listed format, texts cannot hold one.
  TStringList listed;
  listed.SetText(u"DisplayFormat=#,##0.00");
  SetVeskFieldParams(q->FieldByName(u"SUMMA"), &listed);
  SetVeskFieldParams(q->FieldByName(u"NAME"), &listed);
  EXPECT_EQ(DisplayFormatOf(q, u"SUMMA"), u"#,##0.00");
  EXPECT_EQ(q->FieldByName(u"SUMMA")->DisplayText(), u"12.50");
}

TEST_F(FieldSetupTest, OriginFromTheListOrByTheKindOfParameter) {
  TOraQuery* q = Docs();
  TField* id = q->FieldByName(u"ID");
  auto apply = [&](const String& text) {
    id->SetOrigin(u"BEFORE");
    TStringList list;
    list.SetText(text);
    SetVeskFieldParams(id, &list);
    return id->Origin();
  };
  EXPECT_EQ(apply(u"Origin=DOCS.ID\nTIP=U\nFIELD_COD=COD"), u"DOCS.ID");
  for (const char16_t* kind : {u"U", u"S", u"I", u"i", u"M"})
    EXPECT_EQ(apply(String(u"TIP=") + kind + u"\nFIELD_COD=COD\nFIELD_CONT=CONT"), u"COD") << String(kind);
  EXPECT_EQ(apply(u"TIP=P\nFIELD_COD=COD\nFIELD_CONT=CONT"), u"CONT");
  EXPECT_EQ(apply(u"TIP=P\nFIELD_COD=COD"), u"BEFORE");
  EXPECT_EQ(apply(u"TIP=U\nFIELD_CONT=CONT"), u"BEFORE");
  EXPECT_EQ(apply(u"TIP=m\nFIELD_COD=COD"), u"BEFORE");
  EXPECT_EQ(apply(u"TIP=UU\nFIELD_COD=COD"), u"BEFORE");
  EXPECT_EQ(apply(u"FIELD_COD=COD"), u"BEFORE");
}

TEST_F(FieldSetupTest, FieldParamsIgnoreMissingArguments) {
  TOraQuery* q = Docs();
  TStringList list;
  list.SetText(u"DisplayFormat=yyyy\nOrigin=X");
  GetVeskFieldParams(nullptr, &list);
  GetVeskFieldParams(q->FieldByName(u"DOC_DATE"), nullptr);
  SetVeskFieldParams(q->FieldByName(u"DOC_DATE"), nullptr);
  SetVeskFieldParams(nullptr, &list);
  TDateTimeField loose(nullptr);
  loose.SetFieldName(u"LOOSE_DATE");
  SetVeskFieldParams(&loose, &list);
  EXPECT_EQ(loose.DisplayFormat(), u"");
  EXPECT_EQ(loose.Origin(), u"");
  EXPECT_EQ(list.Count(), 2);
}

}  // namespace

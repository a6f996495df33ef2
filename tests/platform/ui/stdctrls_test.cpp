#include "platform/ui/stdctrls.h"

#include "platform/rtl/datetime.h"
#include "platform/ui/extctrls.h"
#include "platform/ui/input.h"
#include "tests/platform/ui/uifixture.h"

class StdCtrlsTest : public UiTest {};

TEST_F(StdCtrlsTest, CheckBoxCyclesThroughGreyOnlyWhenAllowed) {
  auto* cb = Add<TCheckBox>();
  int clicks = 0;
  cb->OnClick = [&](TObject*) { ++clicks; };
  MouseClick(cb, 1, 1);
  EXPECT_TRUE(cb->Checked());
  MouseClick(cb, 1, 1);
  EXPECT_EQ(cb->State(), cbUnchecked);
  cb->SetAllowGrayed(true);
  PressKey(VK_SPACE);
  PressKey(VK_SPACE);
  EXPECT_EQ(cb->State(), cbGrayed);
  EXPECT_FALSE(cb->Checked());
  cb->SetState(cbGrayed);  // no change, no click
  EXPECT_EQ(clicks, 4);
  cb->SetChecked(true);  // set by code: fires too
  EXPECT_EQ(clicks, 5);
}

TEST_F(StdCtrlsTest, RadioButtonsOfOneParentExcludeEachOther) {
  auto* a = Add<TRadioButton>();
  auto* b = Add<TRadioButton>();
  auto* elsewhere = new TRadioButton(form);
  elsewhere->SetParent(Add<TPanel>());
  elsewhere->SetChecked(true);
  a->SetChecked(true);
  MouseClick(b, 1, 1);
  EXPECT_FALSE(a->Checked());
  EXPECT_TRUE(b->Checked());
  EXPECT_TRUE(elsewhere->Checked());
}

TEST_F(StdCtrlsTest, RadioGroupItemIndexFiresOnClick) {
  auto* rg = Add<TRadioGroup>();
  rg->Items()->SetText(u"Cod\nText");
  int clicks = 0;
  rg->OnClick = [&](TObject*) { ++clicks; };
  rg->SetItemIndex(1);
  EXPECT_TRUE(rg->Buttons(1)->Checked());
  MouseClick(rg->Buttons(0), 1, 1);
  EXPECT_EQ(rg->ItemIndex(), 0);
  EXPECT_FALSE(rg->Buttons(1)->Checked());
  rg->SetItemIndex(0);  // unchanged
  EXPECT_EQ(clicks, 2);
  rg->SetItemIndex(7);
  EXPECT_EQ(rg->ItemIndex(), -1);
}

TEST_F(StdCtrlsTest, ComboBoxListStyleSelectsByKeys) {
  auto* cb = Add<TComboBox>();
  cb->SetStyle(csDropDownList);
  cb->Items()->SetText(u"Apple\nBanana\nBlueberry\nCherry");
  int changes = 0, selects = 0;
  cb->OnChange = [&](TObject*) { ++changes; };
  cb->OnSelect = [&](TObject*) { ++selects; };
  cb->SetItemIndex(0);  // by code: no events
  EXPECT_EQ(cb->Text(), u"Apple");
  cb->SetFocus();
  PressKey(VK_DOWN);
  EXPECT_EQ(cb->ItemIndex(), 1);
  TypeText(u"b");
  EXPECT_EQ(cb->Text(), u"Blueberry");
  TypeText(u"c");
  EXPECT_EQ(cb->ItemIndex(), 3);
  EXPECT_EQ(changes, 3);
  EXPECT_EQ(selects, 3);
  cb->SetText(u"Nothing");  // not an item: a list shows nothing
  EXPECT_EQ(cb->ItemIndex(), -1);
  EXPECT_EQ(cb->Text(), u"");
  PressKey(VK_F4);
  EXPECT_TRUE(cb->DroppedDown());
}

TEST_F(StdCtrlsTest, ComboBoxEditStyleTypesFreely) {
  auto* cb = Add<TComboBox>();
  cb->Items()->SetText(u"one\ntwo");
  cb->SetFocus();
  TypeText(u"tw");
  EXPECT_EQ(cb->ItemIndex(), -1);
  TypeText(u"o");
  EXPECT_EQ(cb->ItemIndex(), 1);
  cb->SetText(u"free text");
  EXPECT_EQ(cb->Text(), u"free text");
}

TEST_F(StdCtrlsTest, ListBoxKeysAndMouse) {
  auto* lb = Add<TListBox>();
  lb->Items()->SetText(u"a\nb\nc\nd");
  int clicks = 0;
  lb->OnClick = [&](TObject*) { ++clicks; };
  lb->SetFocus();
  PressKey(VK_DOWN);
  PressKey(VK_END);
  EXPECT_EQ(lb->ItemIndex(), 3);
  MouseClick(lb, 5, 17);  // second row of 16 pixels
  EXPECT_EQ(lb->ItemIndex(), 1);
  EXPECT_TRUE(lb->Selected(1));
  EXPECT_FALSE(lb->Selected(3));
  EXPECT_EQ(clicks, 3);
  EXPECT_THROW(lb->Selected(9), EListError);
  lb->Items()->Delete(3);
  lb->Items()->Delete(2);
  lb->Items()->Delete(1);
  EXPECT_EQ(lb->ItemIndex(), -1);
}

TEST_F(StdCtrlsTest, CheckListBoxTogglesWithSpace) {
  auto* clb = Add<TCheckListBox>();
  clb->Items()->SetText(u"x\ny");
  int checks = 0;
  clb->OnClickCheck = [&](TObject*) { ++checks; };
  clb->SetFocus();
  PressKey(VK_DOWN);  // from no item to the first
  PressKey(VK_SPACE);
  EXPECT_TRUE(clb->Checked(0));
  EXPECT_FALSE(clb->Checked(1));
  clb->SetItemEnabled(0, false);
  clb->ToggleItem(0);
  EXPECT_TRUE(clb->Checked(0));
  EXPECT_EQ(checks, 1);
  EXPECT_THROW(clb->State(5), EListError);
}

TEST_F(StdCtrlsTest, MemoLinesAndTextAreOneValue) {
  auto* memo = Add<TMemo>();
  memo->Lines()->Add(u"select *");
  memo->Lines()->Add(u"from dual");
  EXPECT_EQ(memo->Text(), u"select *\r\nfrom dual");
  memo->Lines()->SetStrings(0, u"select 1");
  memo->Lines()->Delete(1);
  EXPECT_EQ(memo->Text(), u"select 1");
  memo->SetText(u"a\nb\r\nc");
  EXPECT_EQ(memo->Lines()->Count(), 3);
  EXPECT_EQ(memo->Lines()->Strings(2), u"c");
  memo->SetFocus();
  PressKey(VK_END);
  PressKey(VK_RETURN);
  TypeText(u"d");
  EXPECT_EQ(memo->Lines()->Count(), 4);
  EXPECT_THROW(memo->Lines()->Strings(9), EStringListError);
}

TEST_F(StdCtrlsTest, MaskEditLaysOutTypingAndValidates) {
  auto* me = Add<TMaskEdit>();
  me->SetEditMask(u"00.00.0000;1;_");
  EXPECT_EQ(me->EditText(), u"__.__.____");
  me->SetFocus();
  me->SetSelStart(0);
  me->SetSelLength(0);
  TypeText(u"3112x2024");  // the letter is refused
  EXPECT_EQ(me->EditText(), u"31.12.2024");
  EXPECT_EQ(me->Text(), u"31.12.2024");
  PressKey(VK_BACK);
  EXPECT_EQ(me->EditText(), u"31.12.202_");
  EXPECT_THROW(me->ValidateEdit(), EDBEditError);
  me->SetEditMask(u"000-000;0;_");
  me->SetText(u"123456");
  EXPECT_EQ(me->EditText(), u"123-456");
  EXPECT_EQ(me->Text(), u"123456");
  me->ValidateEdit();
}

TEST_F(StdCtrlsTest, ButtonPutsItsModalResultOnTheForm) {
  auto* b = Add<TButton>();
  b->SetModalResult(mrYes);
  b->SetFocus();
  PressKey(VK_SPACE);
  EXPECT_EQ(form->ModalResult(), mrYes);
  auto* sb = Add<TSpeedButton>();
  sb->SetModalResult(mrRetry);
  MouseClick(sb, 1, 1);
  EXPECT_EQ(form->ModalResult(), mrRetry);
}

TEST_F(StdCtrlsTest, SpeedButtonGroups) {
  auto* a = Add<TSpeedButton>();
  auto* b = Add<TSpeedButton>();
  a->SetGroupIndex(1);
  b->SetGroupIndex(1);
  a->Click();
  EXPECT_TRUE(a->Down());
  b->Click();
  EXPECT_FALSE(a->Down());
  EXPECT_TRUE(b->Down());
  b->Click();  // the last one down stays down
  EXPECT_TRUE(b->Down());
  b->SetAllowAllUp(true);
  b->Click();
  EXPECT_FALSE(b->Down());
}

TEST_F(StdCtrlsTest, UpDownClampsAndShowsInItsEdit) {
  auto* edit = Add<TEdit>();
  auto* ud = Add<TUpDown>();
  ud->SetMin(0);
  ud->SetMax(10);
  ud->SetAssociate(edit);
  ud->SetPosition(12);
  EXPECT_EQ(ud->Position(), 10);
  EXPECT_EQ(edit->Text(), u"10");
  bool allow = false;
  ud->OnChanging = [&](TObject*, bool& a) { a = allow; };
  ud->Step(btPrev);
  EXPECT_EQ(ud->Position(), 10);
  allow = true;
  ud->Step(btPrev);
  EXPECT_EQ(edit->Text(), u"9");
  delete edit;
  EXPECT_EQ(ud->Associate(), nullptr);
}

TEST_F(StdCtrlsTest, PageControlSwitchesPages) {
  auto* pc = Add<TPageControl>();
  auto* p1 = new TTabSheet(form);
  p1->SetPageControl(pc);
  auto* p2 = new TTabSheet(form);
  p2->SetPageControl(pc);
  EXPECT_EQ(pc->ActivePage(), p1);
  EXPECT_FALSE(p2->Visible());
  int changes = 0;
  pc->OnChange = [&](TObject*) { ++changes; };
  pc->SelectNextPage(true);
  EXPECT_EQ(pc->ActivePageIndex(), 1);
  EXPECT_TRUE(p2->Visible());
  EXPECT_FALSE(p1->Visible());
  pc->OnChanging = [](TObject*, bool& allow) { allow = false; };
  pc->SelectNextPage(true);
  EXPECT_EQ(pc->ActivePage(), p2);
  EXPECT_EQ(changes, 1);
  delete p2;
  EXPECT_EQ(pc->ActivePage(), p1);
  EXPECT_EQ(pc->PageCount(), 1);
}

TEST_F(StdCtrlsTest, StatusBarPanelsAreDrawn) {
  auto* sb = Add<TStatusBar>();
  auto* p = sb->Panels()->Add();
  p->SetText(u"Rows: 12");
  p->SetWidth(80);
  sb->Panels()->Add()->SetText(u"Sum: 4");
  sb->Repaint();
  const TCanvasOp* first = sb->Canvas()->FindText(u"Rows: 12");
  const TCanvasOp* second = sb->Canvas()->FindText(u"Sum: 4");
  ASSERT_NE(first, nullptr);
  ASSERT_NE(second, nullptr);
  EXPECT_EQ(first->Rect.Width(), 80);
  EXPECT_EQ(second->Rect.Left, 80);
  EXPECT_EQ(second->Rect.Right, sb->Width());
}

TEST_F(StdCtrlsTest, TimerFiresFromProcessMessagesByTheClock) {
  int64_t now = 1000;
  Application->SetClock([&] { return now; });
  auto* timer = new TTimer(form);
  timer->SetInterval(100);
  int fired = 0;
  timer->OnTimer = [&](TObject*) { ++fired; };
  Application->ProcessMessages();
  EXPECT_EQ(fired, 0);
  now += 100;
  Application->ProcessMessages();
  now += 350;  // late: one firing, not three
  Application->ProcessMessages();
  EXPECT_EQ(fired, 2);
  timer->SetEnabled(false);
  now += 1000;
  Application->ProcessMessages();
  EXPECT_EQ(fired, 2);
  delete timer;
  Application->SetClock(nullptr);
}

TEST_F(StdCtrlsTest, ControlsPublishTheirProperties) {
  auto* cb = Add<TCheckBox>();
  SetPropBool(cb, u"Checked", true);
  EXPECT_TRUE(cb->Checked());
  SetPropString(cb, u"Caption", u"Case");
  EXPECT_EQ(cb->Caption(), u"Case");
  auto* rg = Add<TRadioGroup>();
  rg->Items()->SetText(u"a\nb");
  SetPropInteger(rg, u"ItemIndex", 1);
  EXPECT_EQ(GetPropInteger(rg, u"ItemIndex"), 1);
  EXPECT_TRUE(GetPropBool(rg, u"Visible"));
  EXPECT_TRUE(IsPublishedProp(rg, u"Items"));
  auto* edit = Add<TEdit>();
  SetPropString(edit, u"Text", u"abc");
  EXPECT_EQ(GetPropString(edit, u"Text"), u"abc");
  EXPECT_TRUE(IsPropType(edit, u"OnChange", tkMethod));
}

TEST_F(StdCtrlsTest, MonthCalendarMovesByDaysWeeksAndMonths) {
  auto* cal = Add<TMonthCalendar>();
  cal->SetDate(EncodeDate(2024, 1, 31) + 0.75);  // the time is dropped
  EXPECT_EQ(cal->Date(), EncodeDate(2024, 1, 31));
  int changes = 0;
  cal->OnChange = [&](TObject*) { ++changes; };
  cal->SetFocus();
  PressKey(VK_RIGHT);
  EXPECT_EQ(cal->Date(), EncodeDate(2024, 2, 1));
  PressKey(VK_DOWN);
  EXPECT_EQ(cal->Date(), EncodeDate(2024, 2, 8));
  PressKey(VK_NEXT);
  EXPECT_EQ(cal->Date(), EncodeDate(2024, 3, 8));
  cal->SetMaxDate(EncodeDate(2024, 3, 10));
  PressKey(VK_DOWN);
  EXPECT_EQ(cal->Date(), EncodeDate(2024, 3, 10));
  EXPECT_EQ(changes, 4);
}

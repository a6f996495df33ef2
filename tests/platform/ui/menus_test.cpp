#include "platform/ui/menus.h"

#include "platform/ui/input.h"
#include "tests/platform/ui/uifixture.h"

using Log = std::vector<std::string>;

class MenusTest : public UiTest {
 protected:
  void SetUp() override {
    UiTest::SetUp();
    menu = new TPopupMenu(form);
    menu->SetName(u"PopUpSFR");
    auto add = [&](TMenuItem* parent, const char16_t* name, int tag, const char16_t* sc) {
      TMenuItem* item = NewItem(form, name, TextToShortCut(sc), nullptr, name);
      item->SetTag(tag);
      item->OnClick = [this, item](TObject*) { clicked.push_back(static_cast<int>(item->Tag())); };
      parent->Add(item);
      return item;
    };
    filter = add(menu->Items(), u"miFilter", 2, u"Ctrl+F");
    add(menu->Items(), u"miSearch", 0, u"Ctrl+Z");
    menu->Items()->Add(NewLine(form));
    auto* sub = add(menu->Items(), u"miAdvancedProps", -1, u"");
    design = add(sub, u"miDesign", 11, u"Alt+D");
    rec = Add<TRecorder>(&log);
    rec->SetPopupMenu(menu);
    rec->SetFocus();
    log.clear();
  }
  TPopupMenu* menu = nullptr;
  TMenuItem* filter = nullptr;
  TMenuItem* design = nullptr;
  TRecorder* rec = nullptr;
  std::vector<int> clicked;
};

TEST_F(MenusTest, AShortcutOnTheControlRunsThePopupItem) {
  PressKey('F', {ssCtrl});
  EXPECT_EQ(clicked, std::vector<int>{2});
  // The item took the key: KeyDown never saw it, only the key up came.
  EXPECT_EQ(log, (Log{"up 46 C"}));
  PressKey('D', {ssAlt});  // inside the submenu
  EXPECT_EQ(clicked, (std::vector<int>{2, 11}));
}

TEST_F(MenusTest, DisabledOrHiddenItemsLeaveTheKeyToTheControl) {
  filter->SetEnabled(false);
  PressKey('F', {ssCtrl});
  EXPECT_TRUE(clicked.empty());
  EXPECT_EQ(log, (Log{"down 46 C", "press #6", "up 46 C"}));
  design->Parent()->SetVisible(false);
  PressKey('D', {ssAlt});
  EXPECT_TRUE(clicked.empty());
}

TEST_F(MenusTest, AChildFindsTheMenuOfItsParent) {
  auto* child = new TRecorder(form, &log, "child");
  auto* holder = Add<TRecorder>(&log, "holder");
  child->SetParent(holder);
  holder->SetPopupMenu(menu);
  child->SetFocus();
  PressKey('Z', {ssCtrl});
  EXPECT_EQ(clicked, std::vector<int>{0});
}

TEST_F(MenusTest, RightClickPopsUpThroughThePortAfterOnPopup) {
  int popups = 0;
  menu->OnPopup = [&](TObject*) {
    ++popups;
    filter->SetEnabled(true);
  };
  ui.ExpectPopup(u"miDesign");
  MouseClick(rec, 5, 5, mbRight);
  EXPECT_EQ(popups, 1);
  EXPECT_EQ(clicked, std::vector<int>{11});
  EXPECT_EQ(menu->PopupComponent(), rec);
  ui.ExpectPopup(u"");  // dismissed
  menu->Popup(0, 0);
  EXPECT_EQ(clicked.size(), 1u);
}

TEST_F(MenusTest, AbortInOnPopupStopsTheMenu) {
  menu->OnPopup = [](TObject*) { Abort(); };
  menu->Popup(1, 1);  // no expectation: the port is never asked
  EXPECT_TRUE(clicked.empty());
}

TEST_F(MenusTest, ItemsListAndFind) {
  EXPECT_EQ(menu->Items()->Count(), 4);
  EXPECT_TRUE(menu->Items()->Items(2)->IsLine());
  EXPECT_EQ(menu->Items()->Find(u"MIFILTER"), filter);
  EXPECT_EQ(design->Parent()->MenuIndex(), 3);
  delete filter;  // an item deleted leaves its parent
  EXPECT_EQ(menu->Items()->Count(), 3);
  EXPECT_EQ(StripHotkey(u"&Save && close"), u"Save & close");
}

TEST_F(MenusTest, RadioItemsOfAGroupExcludeEachOther) {
  auto* a = NewItem(form, u"a", 0, nullptr);
  auto* b = NewItem(form, u"b", 0, nullptr);
  for (auto* i : {a, b}) {
    i->SetRadioItem(true);
    i->SetGroupIndex(3);
    menu->Items()->Add(i);
  }
  a->SetChecked(true);
  b->SetChecked(true);
  EXPECT_FALSE(a->Checked());
  EXPECT_TRUE(b->Checked());
}

TEST_F(MenusTest, ActionsDriveTheirItemsAndShortcuts) {
  auto* list = new TActionList(form);
  auto* action = new TAction(form);
  list->AddAction(action);
  int runs = 0;
  action->OnExecute = [&](TObject*) { ++runs; };
  action->SetCaption(u"Refresh");
  action->SetShortCut(TextToShortCut(u"Alt+R"));
  auto* item = NewItem(form, u"", 0, nullptr);
  item->SetAction(action);
  EXPECT_EQ(item->Caption(), u"Refresh");
  item->Click();
  EXPECT_EQ(runs, 1);
  PressKey('R', {ssAlt});  // the form's action list
  EXPECT_EQ(runs, 2);
  action->SetEnabled(false);
  EXPECT_FALSE(item->Enabled());
  item->Click();
  PressKey('R', {ssAlt});
  EXPECT_EQ(runs, 2);
  delete action;
  EXPECT_EQ(item->Action(), nullptr);
  EXPECT_EQ(list->ActionCount(), 0);
}

#include "platform/ui/forms.h"

#include "platform/ui/dialogs.h"
#include "platform/ui/stdctrls.h"
#include "tests/platform/ui/uifixture.h"

namespace {

// A little dialogue as the kit builds them: an edit and two buttons.
class TAskForm : public TForm {
 public:
  explicit TAskForm(TComponent* owner) : TForm(owner) {
    SetName(u"AskForm");
    SetCaption(u"Ask");
    Value = new TEdit(this);
    Value->SetName(u"Value");
    Value->SetParent(this);
    auto* ok = new TButton(this);
    ok->SetName(u"BtnOK");
    ok->SetModalResult(mrOk);
    ok->SetParent(this);
    auto* cancel = new TButton(this);
    cancel->SetName(u"BtnCancel");
    cancel->SetModalResult(mrCancel);
    cancel->SetParent(this);
  }
  TEdit* Value;
};

}  // namespace

class FormsTest : public UiTest {};

TEST_F(FormsTest, ShowModalRunsTheScriptAndReturnsTheButtonsResult) {
  TAskForm dlg(nullptr);
  int shows = 0;
  dlg.OnShow = [&](TObject*) { ++shows; };
  ui.ExpectForm(u"askform", [](TCustomForm& f) {
    EXPECT_TRUE(f.Visible());
    EXPECT_TRUE(f.Modal());
    Control<TEdit>(f, u"Value").SetText(u"42");
    PressButton(f, u"BtnOK");
  });
  EXPECT_EQ(dlg.ShowModal(), mrOk);
  EXPECT_EQ(dlg.Value->Text(), u"42");
  EXPECT_EQ(shows, 1);
  EXPECT_FALSE(dlg.Visible());
  EXPECT_FALSE(dlg.Modal());
}

TEST_F(FormsTest, FocusReturnsAfterTheModalForm) {
  auto* edit = Add<TEdit>();
  edit->SetFocus();
  TAskForm dlg(nullptr);
  ui.ExpectForm(u"Ask", mrCancel);
  EXPECT_EQ(dlg.ShowModal(), mrCancel);
  EXPECT_TRUE(edit->Focused());
}

TEST_F(FormsTest, CloseQueryCanRefuseAndOnCloseSeesTheResult) {
  TAskForm dlg(nullptr);
  dlg.OnCloseQuery = [&](TObject*, bool& can) { can = !dlg.Value->Text().IsEmpty(); };
  ui.ExpectForm(u"AskForm", [](TCustomForm& f) { PressButton(f, u"BtnOK"); });
  EXPECT_EQ(dlg.ShowModal(), mrNone);  // refused: the value was empty
  TCloseAction seen = caNone;
  dlg.OnClose = [&](TObject*, TCloseAction& a) { seen = a; };
  ui.ExpectForm(u"AskForm", [](TCustomForm& f) {
    Control<TEdit>(f, u"Value").SetText(u"x");
    PressButton(f, u"BtnOK");
  });
  EXPECT_EQ(dlg.ShowModal(), mrOk);
  EXPECT_EQ(seen, caHide);
}

TEST_F(FormsTest, AVisibleFormCannotBeMadeModal) {
  EXPECT_THROW(form->ShowModal(), EInvalidOperation);
}

TEST_F(FormsTest, ReleaseDeletesTheFormAfterTheQueuedMessages) {
  auto* other = new TForm(nullptr);
  other->SetName(u"Other");
  int destroyed = 0;
  other->OnDestroy = [&](TObject*) { ++destroyed; };
  other->Release();
  EXPECT_EQ(destroyed, 0);
  Application->ProcessMessages();
  EXPECT_EQ(destroyed, 1);
}

TEST_F(FormsTest, MainFormAndTitle) {
  Application->SetTitle(u"Kelmar");
  EXPECT_EQ(Application->Title(), u"Kelmar");
  TForm* main = nullptr;
  Application->CreateForm(main);
  EXPECT_EQ(Application->MainForm(), main);
  TDataModule* module = nullptr;
  Application->CreateForm(module);  // a data module is never the main form
  EXPECT_EQ(module->Owner(), Application);
  EXPECT_EQ(Application->MainForm(), main);
  delete module;
  delete main;
  EXPECT_EQ(Application->MainForm(), nullptr);
}

class PortTest : public UiTest {};

TEST_F(PortTest, MessageDlgAnswersAndIsRecorded) {
  ui.ExpectMessageDlg(u"modificati", mrNo);
  EXPECT_EQ(MessageDlg(u"Sunteti siguri ca doriti sa modificati inregistrarea?", mtWarning, mbYesNo), mrNo);
  ASSERT_EQ(ui.Shown().size(), 1u);
  EXPECT_EQ(ui.Shown()[0].Kind, dkMessageDlg);
  EXPECT_EQ(ui.Shown()[0].DlgType, mtWarning);
  EXPECT_EQ(ui.Shown()[0].Buttons, mbYesNo);
}

TEST_F(PortTest, InputBoxGivesTheValueOrTheDefault) {
  ui.ExpectInputQuery(u"Введите", u"12,5");
  ui.ExpectInputQuery(u"Введите", u"ignored", false);
  EXPECT_EQ(InputBox(u"Введите значение:", u"добавить", u""), u"12,5");
  EXPECT_EQ(InputBox(u"Введите значение:", u"убавить", u"7"), u"7");
  String v = u"keep";
  ui.ExpectInputQuery(u"", u"", false);
  EXPECT_FALSE(InputQuery(u"c", u"p", v));
  EXPECT_EQ(v, u"keep");
}

TEST_F(PortTest, FileDialoguesAddTheDefaultExtension) {
  TSaveDialog sd(nullptr);
  sd.SetDefaultExt(u"dzn");
  sd.SetFilter(u"Design files (*.dzn)|*.dzn|All files (*.*)|*.*");
  sd.SetTitle(u"Save design");
  ui.ExpectSaveFile(u"design", u"/tmp/grid");
  ASSERT_TRUE(sd.Execute());
  EXPECT_EQ(sd.FileName(), u"/tmp/grid.dzn");
  TOpenDialog od(nullptr);
  ui.ExpectOpenFile(u"", u"", false);
  EXPECT_FALSE(od.Execute());
  String dir = u"/old";
  ui.ExpectSelectDirectory(u"Folder", u"/new");
  EXPECT_TRUE(SelectDirectory(u"Folder", u"", dir));
  EXPECT_EQ(dir, u"/new");
}

TEST_F(PortTest, AnUnexpectedDialogueIsRefusedAndReported) {
  ui.ExpectMessageDlg(u"first", mrOk);
  EXPECT_THROW(ShowMessage(u"surprise"), EUnexpectedDialog);
  ASSERT_EQ(ui.Failures().size(), 1u);
  EXPECT_NE(ui.Failures()[0].Pos(u"Unexpected ShowMessage \"surprise\""), 0);
  EXPECT_NE(ui.Failures()[0].Pos(u"MessageDlg \"first\""), 0);
  EXPECT_NE(ui.Verify().Pos(u"never came"), 0);
  ui.Reset();
}

TEST_F(PortTest, NothingExpectedMeansEveryDialogueFails) {
  EXPECT_THROW(MessageDlg(u"boom", mtError, {mbOK}), EUnexpectedDialog);
  TAskForm dlg(nullptr);
  EXPECT_THROW(dlg.ShowModal(), EUnexpectedDialog);
  EXPECT_FALSE(dlg.Visible());  // the failed show was undone
  EXPECT_EQ(ui.Failures().size(), 2u);
  ui.Reset();
}

TEST_F(PortTest, AScriptThatPressesNothingIsAFailure) {
  TAskForm dlg(nullptr);
  ui.ExpectForm(u"AskForm", [](TCustomForm&) {});
  EXPECT_EQ(dlg.ShowModal(), mrCancel);
  EXPECT_NE(ui.Verify().Pos(u"left form AskForm open"), 0);
  ui.Reset();
}

TEST_F(PortTest, PressingAMissingOrDisabledButtonFails) {
  TAskForm dlg(nullptr);
  ui.ExpectForm(u"AskForm", [](TCustomForm& f) { PressButton(f, u"BtnNope"); });
  EXPECT_THROW(dlg.ShowModal(), EUnexpectedDialog);
  static_cast<TButton*>(dlg.FindComponent(u"BtnOK"))->SetEnabled(false);
  ui.ExpectForm(u"AskForm", [](TCustomForm& f) { PressButton(f, u"BtnOK"); });
  EXPECT_THROW(dlg.ShowModal(), EUnexpectedDialog);
}

TEST_F(PortTest, HandleExceptionShowsAnErrorBoxAndKeepsAbortSilent) {
  ui.ExpectMessageDlg(u"", [](const String& msg, TMsgDlgType type, TMsgDlgButtons) {
    EXPECT_EQ(msg, u"ORA-00942: table or view does not exist.");
    EXPECT_EQ(type, mtError);
    return mrOk;
  });
  try {
    throw EDatabaseError(u"ORA-00942: table or view does not exist");
  } catch (...) {
    Application->HandleException(nullptr);
  }
  try {
    Abort();
  } catch (...) {
    Application->HandleException(nullptr);
  }
  String seen;
  Application->OnException = [&](TObject*, Exception* e) { seen = e->Message; };
  try {
    throw EConvertError(u"bad");
  } catch (...) {
    Application->HandleException(nullptr);
  }
  Application->OnException = nullptr;
  EXPECT_EQ(seen, u"bad");
}

TEST_F(PortTest, WaitCursorIsToldToThePortAndRestored) {
  {
    TWaitCursor wait;
    EXPECT_EQ(Screen->Cursor(), crHourGlass);
  }
  EXPECT_EQ(Screen->Cursor(), crDefault);
  EXPECT_EQ(ui.Cursors(), (std::vector<TCursor>{crHourGlass, crDefault}));
  MessageBeep(MB_SIMPLEBEEP);
  EXPECT_EQ(ui.BeepCount(), 1);
}

TEST(HeadlessPort, RefusesDialoguesWithTheirText) {
  UserInterface* previous = SetUserInterface(nullptr);
  try {
    ShowMessage(u"Hello there");
    ADD_FAILURE() << "no exception";
  } catch (const EInvalidOperation& e) {
    EXPECT_NE(e.Message.Pos(u"Hello there"), 0);
  }
  EXPECT_TRUE(MessageBeep(0));
  SetUserInterface(previous);
}

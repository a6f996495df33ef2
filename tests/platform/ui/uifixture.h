// Shared pieces of the ui tests: a form that is shown and deleted with the
// test, and a control that writes down what reaches it.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/ui/forms.h"
#include "platform/ui/scriptedui.h"

// A windowed control that logs its keyboard, focus and mouse traffic as
// short lines: "down 41 S", "press a", "up 41", "enter", "exit", "click".
class TRecorder : public TWinControl {
 public:
  explicit TRecorder(TComponent* owner, std::vector<std::string>* log, const char* tag = "")
      : TWinControl(owner), log_(log), tag_(tag) {
    SetTabStop(true);
    SetBounds(0, 0, 100, 20);
  }
  LRESULT dlgCode = DLGC_WANTALLKEYS | DLGC_WANTARROWS | DLGC_WANTTAB | DLGC_WANTCHARS;
  Word zeroKeyDown = 0;  // KeyDown sets this key to 0
  LRESULT GetDlgCode() const override { return dlgCode; }
  void KeyDown(Word& Key, TShiftState Shift) override {
    Log("down " + Hex(Key) + Mods(Shift));
    if (Key == zeroKeyDown) Key = 0;
    TWinControl::KeyDown(Key, Shift);
  }
  void KeyPress(WideChar& Key) override {
    Log(Key >= 32 ? "press " + std::string(1, static_cast<char>(Key)) : "press #" + std::to_string(Key));
    TWinControl::KeyPress(Key);
  }
  void KeyUp(Word& Key, TShiftState Shift) override {
    Log("up " + Hex(Key) + Mods(Shift));
    TWinControl::KeyUp(Key, Shift);
  }
  void DoEnter() override { Log("enter"); TWinControl::DoEnter(); }
  void DoExit() override { Log("exit"); TWinControl::DoExit(); }
  void MouseDown(TMouseButton b, TShiftState s, int x, int y) override {
    Log("mousedown " + std::to_string(x) + "," + std::to_string(y) + (s.Contains(ssDouble) ? " double" : ""));
  }
  void Click() override { Log("click"); }
  void DblClick() override { Log("dblclick"); }

 private:
  void Log(const std::string& s) { log_->push_back(tag_.empty() ? s : tag_ + ":" + s); }
  static std::string Hex(Word k) {
    char buf[8];
    std::snprintf(buf, sizeof buf, "%X", k);
    return buf;
  }
  static std::string Mods(TShiftState s) {
    std::string m;
    if (s.Contains(ssShift)) m += "S";
    if (s.Contains(ssCtrl)) m += "C";
    if (s.Contains(ssAlt)) m += "A";
    return m.empty() ? m : " " + m;
  }
  std::vector<std::string>* log_;
  std::string tag_;
};

// Each test gets a shown form and a scripted port that must end satisfied.
class UiTest : public ::testing::Test {
 protected:
  void SetUp() override {
    previous_ = SetUserInterface(&ui);
    form = new TForm(nullptr);
    form->SetName(u"TestForm");
    form->Show();
  }
  void TearDown() override {
    delete form;
    Application->ProcessMessages();
    ResetKeyboardState();
    SetUserInterface(previous_);
    EXPECT_EQ(ui.Verify(), u"");
  }
  template <class T, class... A>
  T* Add(A&&... args) {
    T* c = new T(form, std::forward<A>(args)...);
    c->SetParent(form);
    return c;
  }

  TScriptedUserInterface ui;
  TForm* form = nullptr;
  std::vector<std::string> log;

 private:
  UserInterface* previous_ = nullptr;
};

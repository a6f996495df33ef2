// Standard controls: labels, edit boxes, memo, buttons, check and radio
// buttons, combo and list boxes, group box.
//
// They hold state and fire their events as the historical ones do; typing
// into an edit box (WM_CHAR, WM_KEYDOWN through the input driver) edits its
// text as the system's own edit control would.
#pragma once

#include <memory>
#include <vector>

#include "platform/rtl/stringlist.h"
#include "platform/ui/controls.h"
#include "platform/ui/editbuffer.h"

// ---- Labels ------------------------------------------------------------------------

enum TTextLayout { tlTop, tlCenter, tlBottom };
KELMAR_ENUM(TTextLayout, u"tlTop", u"tlCenter", u"tlBottom");

class TCustomLabel : public TGraphicControl {
  KELMAR_CLASS(TCustomLabel, TGraphicControl)
 public:
  explicit TCustomLabel(TComponent* AOwner);

  TAlignment Alignment() const { return alignment_; }
  void SetAlignment(TAlignment v) { alignment_ = v; Invalidate(); }
  TTextLayout Layout() const { return layout_; }
  void SetLayout(TTextLayout v) { layout_ = v; Invalidate(); }
  bool WordWrap() const { return wordWrap_; }
  void SetWordWrap(bool v) { wordWrap_ = v; }
  bool AutoSize() const { return autoSize_; }
  void SetAutoSize(bool v) { autoSize_ = v; }
  bool Transparent() const { return transparent_; }
  void SetTransparent(bool v) { transparent_ = v; }
  TWinControl* FocusControl() const { return focusControl_; }
  void SetFocusControl(TWinControl* v);

 protected:
  void Paint() override;
  void Notification(TComponent* AComponent, TOperation Operation) override;

 private:
  TAlignment alignment_ = taLeftJustify;
  TTextLayout layout_ = tlTop;
  bool wordWrap_ = false, autoSize_ = true, transparent_ = false;
  TWinControl* focusControl_ = nullptr;
};

class TLabel : public TCustomLabel {
  KELMAR_CLASS(TLabel, TCustomLabel)
 public:
  explicit TLabel(TComponent* AOwner) : TCustomLabel(AOwner) {}
};

enum TStaticBorderStyle { sbsNone, sbsSingle, sbsSunken };
KELMAR_ENUM(TStaticBorderStyle, u"sbsNone", u"sbsSingle", u"sbsSunken");

class TStaticText : public TWinControl {
  KELMAR_CLASS(TStaticText, TWinControl)
 public:
  explicit TStaticText(TComponent* AOwner) : TWinControl(AOwner) {}
  TAlignment Alignment() const { return alignment_; }
  void SetAlignment(TAlignment v) { alignment_ = v; }
  TStaticBorderStyle BorderStyle() const { return borderStyle_; }
  void SetBorderStyle(TStaticBorderStyle v) { borderStyle_ = v; }

 private:
  TAlignment alignment_ = taLeftJustify;
  TStaticBorderStyle borderStyle_ = sbsNone;
};

// ---- Edit boxes --------------------------------------------------------------------

enum TEditCharCase { ecNormal, ecUpperCase, ecLowerCase };
KELMAR_ENUM(TEditCharCase, u"ecNormal", u"ecUpperCase", u"ecLowerCase");

class TCustomEdit : public TWinControl {
  KELMAR_CLASS(TCustomEdit, TWinControl)
 public:
  explicit TCustomEdit(TComponent* AOwner);

  bool ReadOnly() const { return readOnly_; }
  void SetReadOnly(bool v) { readOnly_ = v; }
  // Most characters the person may type; 0 for no limit.
  int MaxLength() const { return maxLength_; }
  void SetMaxLength(int v) { maxLength_ = v < 0 ? 0 : v; }
  TEditCharCase CharCase() const { return charCase_; }
  void SetCharCase(TEditCharCase v);
  WideChar PasswordChar() const { return passwordChar_; }
  void SetPasswordChar(WideChar v) { passwordChar_ = v; }
  bool AutoSelect() const { return autoSelect_; }
  void SetAutoSelect(bool v) { autoSelect_ = v; }
  bool Modified() const { return modified_; }
  void SetModified(bool v) { modified_ = v; }

  // 0-based: the number of characters before the selection.
  int SelStart() const { return buffer_.SelStart(); }
  void SetSelStart(int v) { buffer_.SetSelStart(v); }
  int SelLength() const { return buffer_.SelLength(); }
  void SetSelLength(int v) { buffer_.SetSelLength(v); }
  String SelText() const { return buffer_.SelText(); }
  void SetSelText(const String& v);
  void SelectAll() { buffer_.SelectAll(); }
  void ClearSelection() { SetSelText(String()); }
  void Clear() { SetText(String()); }
  void CopyToClipboard();
  void CutToClipboard();
  void PasteFromClipboard();

  LRESULT GetDlgCode() const override { return DLGC_WANTCHARS | DLGC_WANTARROWS; }
  void DefaultHandler(TMessage& Message) override;

  TNotifyEvent OnChange;

 protected:
  String GetText() const override { return buffer_.Text(); }
  void SetTextValue(const String& value) override;
  void TextChanged() override { Change(); }
  // Every change of the text, typed or set: EN_CHANGE to the parent, then
  // OnChange.
  virtual void Change();
  void FocusGained() override;
  void FocusLost() override;
  void DoEnter() override;
  // Whether a typed character may go in; masked edits narrow this.
  virtual bool AcceptChar(WideChar) { return true; }
  // Typing: the selection gives way to `s` unless read-only or too long.
  bool TypeText(const String& s);
  TEditBuffer& Buffer() { return buffer_; }

 private:
  String Cased(const String& s) const;
  bool EditKey(Word key, TShiftState shift);

  TEditBuffer buffer_;
  bool readOnly_ = false;
  int maxLength_ = 0;
  TEditCharCase charCase_ = ecNormal;
  WideChar passwordChar_ = 0;
  bool autoSelect_ = true;
  bool modified_ = false;
};

class TEdit : public TCustomEdit {
  KELMAR_CLASS(TEdit, TCustomEdit)
 public:
  explicit TEdit(TComponent* AOwner) : TCustomEdit(AOwner) {}
};

// An edit box laid out by an edit mask, "mask;save literals;blank": 0 and
// 9 digits, # digit or sign, L l letters, A a letters or digits, C c any;
// upper case required, lower case optional; "\\" quotes a literal, ">" and
// "<" change case. EditText is the text with its literals and
// blanks; Text drops the literals when the mask says not to save them.
class TCustomMaskEdit : public TCustomEdit {
  KELMAR_CLASS(TCustomMaskEdit, TCustomEdit)
 public:
  explicit TCustomMaskEdit(TComponent* AOwner) : TCustomEdit(AOwner) {}

  const String& EditMask() const { return editMask_; }
  void SetEditMask(const String& mask);
  bool IsMasked() const { return !editMask_.IsEmpty(); }
  String EditText() const { return TCustomEdit::GetText(); }
  void SetEditText(const String& text);
  // Raises EDBEditError "Invalid input value..." when a required
  // position is blank.
  virtual void ValidateEdit();

 protected:
  String GetText() const override;
  void SetTextValue(const String& value) override;
  bool AcceptChar(WideChar c) override;
  void DefaultHandler(TMessage& Message) override;
  void DoExit() override;

 private:
  struct Slot {
    WideChar MaskChar;  // 0 for a literal
    WideChar Literal;
    int CaseMode;       // 0 as typed, 1 upper, -1 lower
  };
  void Parse();
  int NextSlot(int from) const;

  String editMask_;
  std::vector<Slot> slots_;
  bool saveLiterals_ = true;
  WideChar blank_ = u'_';
};

class TMaskEdit : public TCustomMaskEdit {
  KELMAR_CLASS(TMaskEdit, TCustomMaskEdit)
 public:
  explicit TMaskEdit(TComponent* AOwner) : TCustomMaskEdit(AOwner) {}
};

KELMAR_EXCEPTION(EDBEditError, Exception);

enum TScrollStyle { ssNone, ssHorizontal, ssVertical, ssBoth };
KELMAR_ENUM(TScrollStyle, u"ssNone", u"ssHorizontal", u"ssVertical", u"ssBoth");

// Several lines; Lines reads and writes the same text. Lines are joined
// with CR LF, as the system's memo does.
class TCustomMemo : public TCustomEdit {
  KELMAR_CLASS(TCustomMemo, TCustomEdit)
 public:
  explicit TCustomMemo(TComponent* AOwner);
  ~TCustomMemo() override;

  TStrings* Lines() const { return lines_.get(); }
  void SetLines(TStrings* v) { lines_->Assign(v); }
  bool WantReturns() const { return wantReturns_; }
  void SetWantReturns(bool v) { wantReturns_ = v; }
  bool WantTabs() const { return wantTabs_; }
  void SetWantTabs(bool v) { wantTabs_ = v; }
  bool WordWrap() const { return wordWrap_; }
  void SetWordWrap(bool v) { wordWrap_ = v; }
  TScrollStyle ScrollBars() const { return scrollBars_; }
  void SetScrollBars(TScrollStyle v) { scrollBars_ = v; }

  LRESULT GetDlgCode() const override;
  void DefaultHandler(TMessage& Message) override;

 private:
  std::unique_ptr<TStrings> lines_;
  bool wantReturns_ = true, wantTabs_ = false, wordWrap_ = true;
  TScrollStyle scrollBars_ = ssNone;
};

class TMemo : public TCustomMemo {
  KELMAR_CLASS(TMemo, TCustomMemo)
 public:
  explicit TMemo(TComponent* AOwner) : TCustomMemo(AOwner) {}
};

// ---- Buttons -----------------------------------------------------------------------

class TButton : public TWinControl {
  KELMAR_CLASS(TButton, TWinControl)
 public:
  explicit TButton(TComponent* AOwner);

  int ModalResult() const { return modalResult_; }
  void SetModalResult(int v) { modalResult_ = v; }
  bool Default() const { return default_; }
  void SetDefault(bool v) { default_ = v; }
  bool Cancel() const { return cancel_; }
  void SetCancel(bool v) { cancel_ = v; }

  // Puts ModalResult on the parent form, then fires OnClick.
  void Click() override;
  void Dispatch(TMessage& Message) override;
  LRESULT GetDlgCode() const override;

 private:
  int modalResult_ = 0;
  bool default_ = false, cancel_ = false;
};

enum TCheckBoxState { cbUnchecked, cbChecked, cbGrayed };
KELMAR_ENUM(TCheckBoxState, u"cbUnchecked", u"cbChecked", u"cbGrayed");

class TCustomCheckBox : public TWinControl {
  KELMAR_CLASS(TCustomCheckBox, TWinControl)
 public:
  explicit TCustomCheckBox(TComponent* AOwner);

  bool Checked() const { return state_ == cbChecked; }
  void SetChecked(bool v) { SetState(v ? cbChecked : cbUnchecked); }
  TCheckBoxState State() const { return state_; }
  // A change fires OnClick, set by code or by the person.
  void SetState(TCheckBoxState v);
  bool AllowGrayed() const { return allowGrayed_; }
  void SetAllowGrayed(bool v) { allowGrayed_ = v; }
  TAlignment Alignment() const { return alignment_; }
  void SetAlignment(TAlignment v) { alignment_ = v; }
  // What a click does: unchecked, checked, grey (when allowed), unchecked.
  virtual void Toggle();

  void DefaultHandler(TMessage& Message) override;

 protected:
  void MouseClicked() override { Toggle(); }
  // Shows a state without a click, for controls that load it.
  void SetStateQuietly(TCheckBoxState v) {
    state_ = v;
    Invalidate();
  }

 private:
  TCheckBoxState state_ = cbUnchecked;
  bool allowGrayed_ = false;
  TAlignment alignment_ = taRightJustify;
};

class TCheckBox : public TCustomCheckBox {
  KELMAR_CLASS(TCheckBox, TCustomCheckBox)
 public:
  explicit TCheckBox(TComponent* AOwner) : TCustomCheckBox(AOwner) {}
};

class TRadioButton : public TWinControl {
  KELMAR_CLASS(TRadioButton, TWinControl)
 public:
  explicit TRadioButton(TComponent* AOwner);
  bool Checked() const { return checked_; }
  // Checking one unchecks the radio buttons of the same parent, and fires
  // OnClick.
  void SetChecked(bool v);
  void DefaultHandler(TMessage& Message) override;

 protected:
  void MouseClicked() override { SetChecked(true); }

 private:
  bool checked_ = false;
};

// ---- Lists ---------------------------------------------------------------------------

enum TComboBoxStyle { csDropDown, csSimple, csDropDownList, csOwnerDrawFixed, csOwnerDrawVariable };
KELMAR_ENUM(TComboBoxStyle, u"csDropDown", u"csSimple", u"csDropDownList", u"csOwnerDrawFixed",
            u"csOwnerDrawVariable");

class TCustomComboBox : public TCustomEdit {
  KELMAR_CLASS(TCustomComboBox, TCustomEdit)
 public:
  explicit TCustomComboBox(TComponent* AOwner);
  ~TCustomComboBox() override;

  TStrings* Items() const { return items_.get(); }
  void SetItems(TStrings* v) { items_->Assign(v); }
  // -1 for none. Setting it shows the item's text and fires no event.
  int ItemIndex() const { return itemIndex_; }
  void SetItemIndex(int v);
  TComboBoxStyle Style() const { return style_; }
  void SetStyle(TComboBoxStyle v) { style_ = v; }
  int DropDownCount() const { return dropDownCount_; }
  void SetDropDownCount(int v) { dropDownCount_ = v; }
  bool DroppedDown() const { return droppedDown_; }
  void SetDroppedDown(bool v);
  bool Sorted() const { return sorted_; }
  void SetSorted(bool v);

  void DefaultHandler(TMessage& Message) override;
  LRESULT GetDlgCode() const override;

  TNotifyEvent OnSelect;
  TNotifyEvent OnDropDown;
  TNotifyEvent OnCloseUp;

 protected:
  void SetTextValue(const String& value) override;
  // The person picked another item: text, OnChange, OnSelect.
  void SelectByUser(int index);

 private:
  void ItemsChanged(TObject*);
  std::unique_ptr<TStringList> items_;
  int itemIndex_ = -1;
  TComboBoxStyle style_ = csDropDown;
  int dropDownCount_ = 8;
  bool droppedDown_ = false;
  bool sorted_ = false;
};

class TComboBox : public TCustomComboBox {
  KELMAR_CLASS(TComboBox, TCustomComboBox)
 public:
  explicit TComboBox(TComponent* AOwner) : TCustomComboBox(AOwner) {}
};

class TCustomListBox : public TWinControl {
  KELMAR_CLASS(TCustomListBox, TWinControl)
 public:
  explicit TCustomListBox(TComponent* AOwner);
  ~TCustomListBox() override;

  TStrings* Items() const { return items_.get(); }
  void SetItems(TStrings* v) { items_->Assign(v); }
  int ItemIndex() const { return itemIndex_; }
  void SetItemIndex(int v);
  bool MultiSelect() const { return multiSelect_; }
  void SetMultiSelect(bool v) { multiSelect_ = v; }
  bool Selected(int index) const;
  void SetSelected(int index, bool v);
  int SelCount() const;
  bool Sorted() const { return sorted_; }
  void SetSorted(bool v);
  int ItemHeight() const { return itemHeight_; }
  void SetItemHeight(int v) { itemHeight_ = v > 0 ? v : 1; }
  int TopIndex() const { return topIndex_; }
  void SetTopIndex(int v) { topIndex_ = v < 0 ? 0 : v; }
  // The item under a client point, or -1.
  int ItemAtPos(TPoint p, bool existing) const;
  void Clear() { items_->Clear(); }

  LRESULT GetDlgCode() const override { return DLGC_WANTARROWS | DLGC_WANTCHARS; }
  void DefaultHandler(TMessage& Message) override;
  void MouseDown(TMouseButton Button, TShiftState Shift, int X, int Y) override;

 protected:
  // The person moved to another item: select it and fire OnClick.
  void SelectByUser(int index);

 private:
  void ItemsChanged(TObject*);
  std::unique_ptr<TStringList> items_;
  std::vector<bool> selected_;
  int itemIndex_ = -1;
  bool multiSelect_ = false, sorted_ = false;
  int itemHeight_ = 16;
  int topIndex_ = 0;
};

class TListBox : public TCustomListBox {
  KELMAR_CLASS(TListBox, TCustomListBox)
 public:
  explicit TListBox(TComponent* AOwner) : TCustomListBox(AOwner) {}
};

class TCheckListBox : public TCustomListBox {
  KELMAR_CLASS(TCheckListBox, TCustomListBox)
 public:
  explicit TCheckListBox(TComponent* AOwner) : TCustomListBox(AOwner) {}

  bool Checked(int index) const { return State(index) == cbChecked; }
  void SetChecked(int index, bool v) { SetState(index, v ? cbChecked : cbUnchecked); }
  TCheckBoxState State(int index) const;
  void SetState(int index, TCheckBoxState v);
  bool ItemEnabled(int index) const;
  void SetItemEnabled(int index, bool v);
  bool AllowGrayed() const { return allowGrayed_; }
  void SetAllowGrayed(bool v) { allowGrayed_ = v; }
  // What the person's space bar or tick does to the item; fires OnClickCheck.
  void ToggleItem(int index);

  void DefaultHandler(TMessage& Message) override;

  TNotifyEvent OnClickCheck;

 private:
  void Grow(int index) const;
  mutable std::vector<TCheckBoxState> states_;
  mutable std::vector<bool> disabled_;
  bool allowGrayed_ = false;
};

class TGroupBox : public TCustomControl {
  KELMAR_CLASS(TGroupBox, TCustomControl)
 public:
  explicit TGroupBox(TComponent* AOwner) : TCustomControl(AOwner) {}
};

#include "platform/ui/stdctrls.h"

#include <algorithm>

#include "platform/os/clipboard.h"
#include "platform/rtl/sysutils.h"
#include "platform/ui/dialogs.h"
#include "platform/ui/forms.h"
#include "platform/ui/textlines.h"

namespace {

bool ShiftHeld() { return GetKeyState(VK_SHIFT) < 0; }
bool CtrlHeld() { return GetKeyState(VK_CONTROL) < 0; }

}  // namespace

// ---- Labels ------------------------------------------------------------------------

KELMAR_PUBLISH(TCustomLabel) {
  r.Prop(u"Alignment", &TCustomLabel::Alignment, &TCustomLabel::SetAlignment).Default = taLeftJustify;
  r.Prop(u"AutoSize", &TCustomLabel::AutoSize, &TCustomLabel::SetAutoSize).Default = 1;
  r.Prop(u"Caption", &TCustomLabel::Caption, &TCustomLabel::SetCaption);
  r.Prop(u"FocusControl", &TCustomLabel::FocusControl, &TCustomLabel::SetFocusControl);
  r.Prop(u"Layout", &TCustomLabel::Layout, &TCustomLabel::SetLayout).Default = tlTop;
  r.Prop(u"Transparent", &TCustomLabel::Transparent, &TCustomLabel::SetTransparent).Default = 0;
  r.Prop(u"WordWrap", &TCustomLabel::WordWrap, &TCustomLabel::SetWordWrap).Default = 0;
}

TCustomLabel::TCustomLabel(TComponent* AOwner) : TGraphicControl(AOwner) { SetBounds(0, 0, 65, 17); }

void TCustomLabel::SetFocusControl(TWinControl* v) {
  if (focusControl_) focusControl_->RemoveFreeNotification(this);
  focusControl_ = v;
  if (v) v->FreeNotification(this);
}

void TCustomLabel::Notification(TComponent* AComponent, TOperation Operation) {
  inherited::Notification(AComponent, Operation);
  if (Operation == opRemove && AComponent == focusControl_) focusControl_ = nullptr;
}

void TCustomLabel::Paint() {
  TTextFormat format;
  format << (alignment_ == taCenter ? tfCenter : alignment_ == taRightJustify ? tfRight : tfLeft);
  format << (layout_ == tlCenter ? tfVerticalCenter : layout_ == tlBottom ? tfBottom : tfTop);
  if (wordWrap_) format << tfWordBreak;
  if (!transparent_) {
    Canvas()->Brush()->SetColor(Color());
    Canvas()->FillRect(ClientRect());
  }
  Canvas()->TextRect(ClientRect(), Caption(), format);
}

KELMAR_PUBLISH(TLabel) {}

KELMAR_PUBLISH(TStaticText) {
  r.Prop(u"Alignment", &TStaticText::Alignment, &TStaticText::SetAlignment).Default = taLeftJustify;
  r.Prop(u"BorderStyle", &TStaticText::BorderStyle, &TStaticText::SetBorderStyle).Default = sbsNone;
  r.Prop(u"Caption", &TStaticText::Caption, &TStaticText::SetCaption);
}

// ---- TCustomEdit -----------------------------------------------------------------------

KELMAR_PUBLISH(TCustomEdit) {
  r.Prop(u"AutoSelect", &TCustomEdit::AutoSelect, &TCustomEdit::SetAutoSelect).Default = 1;
  r.Prop(u"CharCase", &TCustomEdit::CharCase, &TCustomEdit::SetCharCase).Default = ecNormal;
  r.Prop(u"MaxLength", &TCustomEdit::MaxLength, &TCustomEdit::SetMaxLength).Default = 0;
  r.Prop(u"PasswordChar", &TCustomEdit::PasswordChar, &TCustomEdit::SetPasswordChar).Default = 0;
  r.Prop(u"ReadOnly", &TCustomEdit::ReadOnly, &TCustomEdit::SetReadOnly).Default = 0;
  r.Prop(u"Text", &TCustomEdit::Text, &TCustomEdit::SetText);
  r.Prop(u"OnChange", &TCustomEdit::OnChange);
}

TCustomEdit::TCustomEdit(TComponent* AOwner) : TWinControl(AOwner) {
  SetTabStop(true);
  SetColor(clWindow);
  SetBounds(0, 0, 121, 21);
}

void TCustomEdit::SetCharCase(TEditCharCase v) {
  charCase_ = v;
  if (v != ecNormal) SetText(Cased(Text()));
}

String TCustomEdit::Cased(const String& s) const {
  return charCase_ == ecUpperCase ? UpperCase(s) : charCase_ == ecLowerCase ? LowerCase(s) : s;
}

void TCustomEdit::SetTextValue(const String& value) { buffer_.SetText(Cased(value)); }

void TCustomEdit::SetSelText(const String& v) {
  buffer_.ReplaceSelection(Cased(v));
  Change();
}

void TCustomEdit::Change() {
  NotifyParent(EN_CHANGE);
  OnChange(this);
}

void TCustomEdit::FocusGained() { NotifyParent(EN_SETFOCUS); }
void TCustomEdit::FocusLost() { NotifyParent(EN_KILLFOCUS); }

void TCustomEdit::DoEnter() {
  if (autoSelect_) SelectAll();
  inherited::DoEnter();
}

bool TCustomEdit::TypeText(const String& s) {
  if (readOnly_) return false;
  String text = Cased(s);
  if (maxLength_ > 0) {
    int room = maxLength_ - (buffer_.Text().Length() - buffer_.SelLength());
    if (room <= 0) {
      NotifyParent(EN_MAXTEXT);
      return false;
    }
    text = text.SubString(1, room);
  }
  buffer_.ReplaceSelection(text);
  modified_ = true;
  Change();
  return true;
}

void TCustomEdit::CopyToClipboard() {
  if (SelLength() > 0 && passwordChar_ == 0) Clipboard()->SetAsText(SelText());
}

void TCustomEdit::CutToClipboard() {
  if (readOnly_) return;
  CopyToClipboard();
  if (SelLength() > 0) TypeText(String());
}

void TCustomEdit::PasteFromClipboard() {
  String text = Clipboard()->AsText();
  // One line: the paste stops at the first line break.
  int br = 0;
  for (int i = 1; i <= text.Length() && !br; ++i)
    if (text[i] == u'\r' || text[i] == u'\n') br = i;
  TypeText(br ? text.SubString(1, br - 1) : text);
}

bool TCustomEdit::EditKey(Word key, TShiftState shift) {
  bool extend = shift.Contains(ssShift), ctrl = shift.Contains(ssCtrl);
  switch (key) {
    case VK_LEFT: buffer_.Left(extend); return true;
    case VK_RIGHT: buffer_.Right(extend); return true;
    case VK_HOME: buffer_.Home(extend); return true;
    case VK_END: buffer_.End(extend); return true;
    case VK_DELETE:
      if (extend) CutToClipboard();
      else if (!readOnly_ && buffer_.DeleteForward()) { modified_ = true; Change(); }
      return true;
    case VK_INSERT:
      if (ctrl) CopyToClipboard();
      else if (extend) PasteFromClipboard();
      return true;
    default: return false;
  }
}

void TCustomEdit::DefaultHandler(TMessage& Message) {
  switch (Message.Msg) {
    case WM_KEYDOWN: {
      TShiftState shift;
      if (ShiftHeld()) shift << ssShift;
      if (CtrlHeld()) shift << ssCtrl;
      EditKey(static_cast<Word>(Message.WParam), shift);
      return;
    }
    case WM_CHAR: {
      WideChar c = static_cast<WideChar>(Message.WParam);
      switch (c) {
        case 1: SelectAll(); return;
        case 3: CopyToClipboard(); return;
        case 22: PasteFromClipboard(); return;
        case 24: CutToClipboard(); return;
        case 8:
          if (!readOnly_ && buffer_.DeleteBack()) { modified_ = true; Change(); }
          return;
        default:
          if (c >= 32 && c != 127 && AcceptChar(c)) TypeText(String(c));
          return;
      }
    }
    case WM_CUT: CutToClipboard(); return;
    case WM_COPY: CopyToClipboard(); return;
    case WM_PASTE: PasteFromClipboard(); return;
    case WM_CLEAR: ClearSelection(); return;
    default: inherited::DefaultHandler(Message);
  }
}

KELMAR_PUBLISH(TEdit) {}

// ---- TCustomMaskEdit -------------------------------------------------------------------

KELMAR_PUBLISH(TCustomMaskEdit) { r.Prop(u"EditMask", &TCustomMaskEdit::EditMask, &TCustomMaskEdit::SetEditMask); }

namespace {
bool IsMaskChar(WideChar c) {
  switch (c) {
    case u'0': case u'9': case u'#': case u'L': case u'l': case u'A': case u'a': case u'C': case u'c': return true;
    default: return false;
  }
}
bool IsRequired(WideChar m) { return m == u'0' || m == u'L' || m == u'A' || m == u'C'; }
bool IsLetter(WideChar c) { return UpperCase(String(c)) != LowerCase(String(c)); }
bool Fits(WideChar m, WideChar c) {
  bool digit = c >= u'0' && c <= u'9';
  switch (m) {
    case u'0': case u'9': return digit;
    case u'#': return digit || c == u'+' || c == u'-';
    case u'L': case u'l': return IsLetter(c);
    case u'A': case u'a': return digit || IsLetter(c);
    default: return true;
  }
}
}  // namespace

void TCustomMaskEdit::Parse() {
  slots_.clear();
  saveLiterals_ = true;
  blank_ = u'_';
  String mask = editMask_;
  // "mask;save;blank": the two fields after the last separators.
  int last = mask.LastDelimiter(u";");
  if (last > 0 && last == mask.Length() - 1) {
    blank_ = mask[last + 1];
    mask = mask.SubString(1, last - 1);
    int save = mask.LastDelimiter(u";");
    if (save > 0 && save == mask.Length() - 1) {
      saveLiterals_ = mask[save + 1] != u'0';
      mask = mask.SubString(1, save - 1);
    }
  }
  int caseMode = 0;
  for (int i = 1; i <= mask.Length(); ++i) {
    WideChar c = mask[i];
    if (c == u'\\' && i < mask.Length()) slots_.push_back({0, mask[++i], 0});
    else if (c == u'<' && i < mask.Length() && mask[i + 1] == u'>') { caseMode = 0; ++i; }
    else if (c == u'>') caseMode = 1;
    else if (c == u'<') caseMode = -1;
    else if (c == u'!') continue;
    else if (IsMaskChar(c)) slots_.push_back({c, 0, caseMode});
    else slots_.push_back({0, c, 0});
  }
}

void TCustomMaskEdit::SetEditMask(const String& mask) {
  String value = Text();
  editMask_ = mask;
  Parse();
  SetTextValue(value);
  Change();
}

void TCustomMaskEdit::SetEditText(const String& text) {
  Buffer().SetText(text);
  Change();
}

String TCustomMaskEdit::GetText() const {
  String edit = EditText();
  if (!IsMasked()) return edit;
  String result;
  for (size_t i = 0; i < slots_.size() && static_cast<int>(i) < edit.Length(); ++i) {
    WideChar c = edit[static_cast<int>(i) + 1];
    if (slots_[i].MaskChar == 0) {
      if (saveLiterals_) result += c;
    } else {
      result += c == blank_ ? u' ' : c;
    }
  }
  return result;
}

void TCustomMaskEdit::SetTextValue(const String& value) {
  if (!IsMasked()) {
    inherited::SetTextValue(value);
    return;
  }
  // A value as long as the mask holds its literals; a shorter one gives
  // the editable positions only.
  bool withLiterals = value.Length() == static_cast<int>(slots_.size());
  String edit;
  int from = 1;
  for (const Slot& s : slots_) {
    if (s.MaskChar == 0) {
      edit += s.Literal;
      if (withLiterals) ++from;
      continue;
    }
    WideChar c = from <= value.Length() ? value[from++] : blank_;
    edit += c == u' ' ? blank_ : c;
  }
  Buffer().SetText(edit);
}

int TCustomMaskEdit::NextSlot(int from) const {
  for (int i = std::max(0, from); i < static_cast<int>(slots_.size()); ++i)
    if (slots_[static_cast<size_t>(i)].MaskChar) return i;
  return -1;
}

bool TCustomMaskEdit::AcceptChar(WideChar c) {
  if (!IsMasked()) return true;
  int slot = NextSlot(Buffer().SelStart());
  return slot >= 0 && Fits(slots_[static_cast<size_t>(slot)].MaskChar, c);
}

void TCustomMaskEdit::DefaultHandler(TMessage& Message) {
  if (!IsMasked() || ReadOnly() || (Message.Msg != WM_CHAR && !(Message.Msg == WM_KEYDOWN && Message.WParam == VK_DELETE))) {
    inherited::DefaultHandler(Message);
    return;
  }
  // Masked typing overwrites one position at a time and steps over literals.
  String edit = EditText();
  while (edit.Length() < static_cast<int>(slots_.size())) edit += blank_;
  WideChar c = static_cast<WideChar>(Message.WParam);
  int caret = Buffer().SelStart();
  int pos = -1;
  WideChar put = blank_;
  if (Message.Msg == WM_KEYDOWN) {
    pos = NextSlot(caret);
  } else if (c == 8) {
    for (int i = caret - 1; i >= 0 && pos < 0; --i)
      if (slots_[static_cast<size_t>(i)].MaskChar) pos = i;
  } else if (c >= 32 && AcceptChar(c)) {
    pos = NextSlot(caret);
    const Slot& s = slots_[static_cast<size_t>(pos)];
    put = s.CaseMode > 0 ? UpperCase(String(c))[1] : s.CaseMode < 0 ? LowerCase(String(c))[1] : c;
  } else {
    if (c >= 32) MessageBeep(MB_OK);
    return;
  }
  if (pos < 0) return;
  edit[pos + 1] = put;
  Buffer().SetText(edit);
  int next = put == blank_ ? pos : NextSlot(pos + 1);
  Buffer().SetSelStart(next < 0 ? pos + 1 : next);
  SetModified(true);
  Change();
}

void TCustomMaskEdit::ValidateEdit() {
  if (!IsMasked()) return;
  String edit = EditText();
  for (size_t i = 0; i < slots_.size(); ++i) {
    WideChar c = static_cast<int>(i) < edit.Length() ? edit[static_cast<int>(i) + 1] : blank_;
    if (IsRequired(slots_[i].MaskChar) && (c == blank_ || c == u' ')) {
      SetSelStart(static_cast<int>(i));
      throw EDBEditError(u"Invalid input value.  Use escape key to abandon changes");
    }
  }
}

void TCustomMaskEdit::DoExit() {
  if (IsMasked() && Modified()) ValidateEdit();
  inherited::DoExit();
}

KELMAR_PUBLISH(TMaskEdit) {}

// ---- TCustomMemo --------------------------------------------------------------------------


KELMAR_PUBLISH(TCustomMemo) {
  r.Prop(u"Lines", &TCustomMemo::Lines, &TCustomMemo::SetLines);
  r.Prop(u"ScrollBars", &TCustomMemo::ScrollBars, &TCustomMemo::SetScrollBars).Default = ssNone;
  r.Prop(u"WantReturns", &TCustomMemo::WantReturns, &TCustomMemo::SetWantReturns).Default = 1;
  r.Prop(u"WantTabs", &TCustomMemo::WantTabs, &TCustomMemo::SetWantTabs).Default = 0;
  r.Prop(u"WordWrap", &TCustomMemo::WordWrap, &TCustomMemo::SetWordWrap).Default = 1;
}

TCustomMemo::TCustomMemo(TComponent* AOwner)
    : TCustomEdit(AOwner),
      lines_(std::make_unique<TTextLines>([this] { return Text(); }, [this](const String& t) { SetText(t); })) {
  SetAutoSelect(false);
  SetBounds(0, 0, 185, 89);
}

TCustomMemo::~TCustomMemo() = default;

LRESULT TCustomMemo::GetDlgCode() const {
  LRESULT code = inherited::GetDlgCode();
  if (wantReturns_) code |= DLGC_WANTALLKEYS;
  if (wantTabs_) code |= DLGC_WANTTAB;
  return code;
}

void TCustomMemo::DefaultHandler(TMessage& Message) {
  if (Message.Msg == WM_CHAR) {
    WideChar c = static_cast<WideChar>(Message.WParam);
    if (c == u'\r' || c == u'\n') {
      if (wantReturns_ || c == u'\n') TypeText(u"\r\n");
      return;
    }
    if (c == u'\t') {
      if (wantTabs_) TypeText(u"\t");
      return;
    }
  }
  inherited::DefaultHandler(Message);
}

KELMAR_PUBLISH(TMemo) {}

// ---- Buttons -----------------------------------------------------------------------------

KELMAR_PUBLISH(TButton) {
  r.Prop(u"Cancel", &TButton::Cancel, &TButton::SetCancel).Default = 0;
  r.Prop(u"Caption", &TButton::Caption, &TButton::SetCaption);
  r.Prop(u"Default", &TButton::Default, &TButton::SetDefault).Default = 0;
  r.Prop(u"ModalResult", &TButton::ModalResult, &TButton::SetModalResult).Default = 0;
}

TButton::TButton(TComponent* AOwner) : TWinControl(AOwner) {
  SetTabStop(true);
  SetBounds(0, 0, 75, 25);
}

void TButton::Click() {
  if (TCustomForm* form = GetParentForm(this)) form->SetModalResult(modalResult_);
  inherited::Click();
}

LRESULT TButton::GetDlgCode() const { return 0; }

void TButton::Dispatch(TMessage& Message) {
  if (Message.Msg == CM_DIALOGKEY) {
    Word key = static_cast<Word>(Message.WParam);
    // The focused button acts on Enter; otherwise the default one does,
    // unless another button has the focus.
    TWinControl* focused = Screen->ActiveControl();
    bool active = focused == this || (default_ && !dynamic_cast<TButton*>(focused));
    if (((key == VK_RETURN && active) || (key == VK_ESCAPE && cancel_)) && CanFocus()) {
      Click();
      Message.Result = 1;
    }
    return;
  }
  if (Message.Msg == WM_KEYUP && Message.WParam == VK_SPACE && Enabled()) {
    inherited::Dispatch(Message);
    Click();
    return;
  }
  inherited::Dispatch(Message);
}

KELMAR_PUBLISH(TCustomCheckBox) {
  r.Prop(u"Alignment", &TCustomCheckBox::Alignment, &TCustomCheckBox::SetAlignment).Default = taRightJustify;
  r.Prop(u"AllowGrayed", &TCustomCheckBox::AllowGrayed, &TCustomCheckBox::SetAllowGrayed).Default = 0;
  r.Prop(u"Caption", &TCustomCheckBox::Caption, &TCustomCheckBox::SetCaption);
  r.Prop(u"Checked", &TCustomCheckBox::Checked, &TCustomCheckBox::SetChecked).Default = 0;
  r.Prop(u"State", &TCustomCheckBox::State, &TCustomCheckBox::SetState).Default = cbUnchecked;
}

TCustomCheckBox::TCustomCheckBox(TComponent* AOwner) : TWinControl(AOwner) {
  SetTabStop(true);
  SetBounds(0, 0, 97, 17);
}

void TCustomCheckBox::SetState(TCheckBoxState v) {
  if (state_ == v) return;
  state_ = v;
  Invalidate();
  Click();
}

void TCustomCheckBox::Toggle() {
  switch (state_) {
    case cbUnchecked: SetState(cbChecked); break;
    case cbChecked: SetState(allowGrayed_ ? cbGrayed : cbUnchecked); break;
    case cbGrayed: SetState(cbUnchecked); break;
  }
}

void TCustomCheckBox::DefaultHandler(TMessage& Message) {
  if (Message.Msg == WM_KEYUP && Message.WParam == VK_SPACE) Toggle();
  else inherited::DefaultHandler(Message);
}

KELMAR_PUBLISH(TCheckBox) {}

KELMAR_PUBLISH(TRadioButton) {
  r.Prop(u"Caption", &TRadioButton::Caption, &TRadioButton::SetCaption);
  r.Prop(u"Checked", &TRadioButton::Checked, &TRadioButton::SetChecked).Default = 0;
}

TRadioButton::TRadioButton(TComponent* AOwner) : TWinControl(AOwner) { SetBounds(0, 0, 113, 17); }

void TRadioButton::SetChecked(bool v) {
  if (checked_ == v) return;
  checked_ = v;
  SetTabStop(v);
  Invalidate();
  if (!v) return;
  if (TWinControl* p = Parent())
    for (int i = 0; i < p->ControlCount(); ++i)
      if (auto* other = dynamic_cast<TRadioButton*>(p->Controls(i)); other && other != this) other->SetChecked(false);
  Click();
}

void TRadioButton::DefaultHandler(TMessage& Message) {
  if (Message.Msg == WM_KEYUP && Message.WParam == VK_SPACE) SetChecked(true);
  else inherited::DefaultHandler(Message);
}

// ---- TCustomComboBox -----------------------------------------------------------------

KELMAR_PUBLISH(TCustomComboBox) {
  r.Prop(u"DropDownCount", &TCustomComboBox::DropDownCount, &TCustomComboBox::SetDropDownCount).Default = 8;
  r.Prop(u"ItemIndex", &TCustomComboBox::ItemIndex, &TCustomComboBox::SetItemIndex).Default = -1;
  r.Prop(u"Items", &TCustomComboBox::Items, &TCustomComboBox::SetItems);
  r.Prop(u"Sorted", &TCustomComboBox::Sorted, &TCustomComboBox::SetSorted).Default = 0;
  r.Prop(u"Style", &TCustomComboBox::Style, &TCustomComboBox::SetStyle).Default = csDropDown;
  r.Prop(u"OnCloseUp", &TCustomComboBox::OnCloseUp);
  r.Prop(u"OnDropDown", &TCustomComboBox::OnDropDown);
  r.Prop(u"OnSelect", &TCustomComboBox::OnSelect);
}

TCustomComboBox::TCustomComboBox(TComponent* AOwner) : TCustomEdit(AOwner), items_(std::make_unique<TStringList>()) {
  items_->OnChange = Closure(this, &TCustomComboBox::ItemsChanged);
  SetAutoSelect(false);
  SetBounds(0, 0, 145, 21);
}

TCustomComboBox::~TCustomComboBox() { items_->OnChange = nullptr; }

void TCustomComboBox::ItemsChanged(TObject*) {
  if (itemIndex_ >= items_->Count()) itemIndex_ = -1;
}

void TCustomComboBox::SetItemIndex(int v) {
  if (v < -1 || v >= items_->Count()) v = -1;
  itemIndex_ = v;
  Buffer().SetText(v >= 0 ? items_->Strings(v) : String());
  Invalidate();
}

void TCustomComboBox::SetTextValue(const String& value) {
  int index = items_->IndexOf(value);
  if (style_ == csDropDownList) {
    // A list-only box shows nothing but its items.
    itemIndex_ = index;
    inherited::SetTextValue(index >= 0 ? items_->Strings(index) : String());
    return;
  }
  itemIndex_ = index;
  inherited::SetTextValue(value);
}

void TCustomComboBox::SetDroppedDown(bool v) {
  if (droppedDown_ == v) return;
  droppedDown_ = v;
  if (v) OnDropDown(this);
  else OnCloseUp(this);
}

void TCustomComboBox::SetSorted(bool v) {
  sorted_ = v;
  items_->SetSorted(v);
}

void TCustomComboBox::SelectByUser(int index) {
  if (index < 0 || index >= items_->Count() || index == itemIndex_) return;
  itemIndex_ = index;
  Buffer().SetText(items_->Strings(index));
  Buffer().SelectAll();
  Change();
  OnSelect(this);
}

LRESULT TCustomComboBox::GetDlgCode() const {
  // An open list keeps Enter and Escape for itself.
  return inherited::GetDlgCode() | (droppedDown_ ? DLGC_WANTALLKEYS : 0);
}

void TCustomComboBox::DefaultHandler(TMessage& Message) {
  if (Message.Msg == WM_KEYDOWN || Message.Msg == WM_SYSKEYDOWN) {
    Word key = static_cast<Word>(Message.WParam);
    bool alt = Message.Msg == WM_SYSKEYDOWN;
    if (key == VK_F4 || (alt && (key == VK_DOWN || key == VK_UP))) {
      SetDroppedDown(!droppedDown_);
      return;
    }
    switch (key) {
      case VK_DOWN: SelectByUser(itemIndex_ + 1); return;
      case VK_UP: SelectByUser(itemIndex_ < 0 ? 0 : itemIndex_ - 1); return;
      case VK_NEXT: SelectByUser(std::min(items_->Count() - 1, itemIndex_ + dropDownCount_)); return;
      case VK_PRIOR: SelectByUser(std::max(0, itemIndex_ - dropDownCount_)); return;
      default: break;
    }
    if (style_ == csDropDownList) {
      if (key == VK_HOME) SelectByUser(0);
      else if (key == VK_END) SelectByUser(items_->Count() - 1);
      return;
    }
  }
  if (Message.Msg == WM_CHAR) {
    WideChar c = static_cast<WideChar>(Message.WParam);
    if (c == u'\r' || c == 27) {
      SetDroppedDown(false);
      return;
    }
    if (style_ == csDropDownList) {
      // The next item that starts with the character, after the current one.
      int n = items_->Count();
      for (int step = 1; step <= n; ++step) {
        int i = (itemIndex_ + step) % n;
        String item = items_->Strings(i);
        if (!item.IsEmpty() && SameText(String(item[1]), String(c))) {
          SelectByUser(i);
          break;
        }
      }
      return;
    }
    inherited::DefaultHandler(Message);
    itemIndex_ = items_->IndexOf(Text());
    return;
  }
  inherited::DefaultHandler(Message);
}

KELMAR_PUBLISH(TComboBox) {}

// ---- TCustomListBox -----------------------------------------------------------------------

KELMAR_PUBLISH(TCustomListBox) {
  r.Prop(u"ItemHeight", &TCustomListBox::ItemHeight, &TCustomListBox::SetItemHeight).Default = 16;
  r.Prop(u"ItemIndex", &TCustomListBox::ItemIndex, &TCustomListBox::SetItemIndex).Default = -1;
  r.Prop(u"Items", &TCustomListBox::Items, &TCustomListBox::SetItems);
  r.Prop(u"MultiSelect", &TCustomListBox::MultiSelect, &TCustomListBox::SetMultiSelect).Default = 0;
  r.Prop(u"Sorted", &TCustomListBox::Sorted, &TCustomListBox::SetSorted).Default = 0;
}

TCustomListBox::TCustomListBox(TComponent* AOwner) : TWinControl(AOwner), items_(std::make_unique<TStringList>()) {
  items_->OnChange = Closure(this, &TCustomListBox::ItemsChanged);
  SetTabStop(true);
  SetColor(clWindow);
  SetBounds(0, 0, 121, 97);
}

TCustomListBox::~TCustomListBox() { items_->OnChange = nullptr; }

void TCustomListBox::ItemsChanged(TObject*) {
  selected_.resize(static_cast<size_t>(items_->Count()), false);
  if (itemIndex_ >= items_->Count()) itemIndex_ = -1;
  Invalidate();
}

void TCustomListBox::SetItemIndex(int v) {
  if (v < -1 || v >= items_->Count()) v = -1;
  itemIndex_ = v;
  if (!multiSelect_) std::fill(selected_.begin(), selected_.end(), false);
  if (v >= 0) selected_[static_cast<size_t>(v)] = true;
  Invalidate();
}

bool TCustomListBox::Selected(int index) const {
  if (index < 0 || index >= items_->Count()) throw EListError(u"List index out of bounds (" + IntToStr(index) + u")");
  return static_cast<size_t>(index) < selected_.size() && selected_[static_cast<size_t>(index)];
}

void TCustomListBox::SetSelected(int index, bool v) {
  Selected(index);
  if (!multiSelect_) {
    SetItemIndex(v ? index : (itemIndex_ == index ? -1 : itemIndex_));
    return;
  }
  selected_[static_cast<size_t>(index)] = v;
}

int TCustomListBox::SelCount() const {
  if (!multiSelect_) return -1;
  return static_cast<int>(std::count(selected_.begin(), selected_.end(), true));
}

void TCustomListBox::SetSorted(bool v) {
  sorted_ = v;
  items_->SetSorted(v);
}

int TCustomListBox::ItemAtPos(TPoint p, bool existing) const {
  int index = topIndex_ + p.Y / itemHeight_;
  if (p.Y < 0 || index >= items_->Count()) return existing ? -1 : items_->Count();
  return index;
}

void TCustomListBox::SelectByUser(int index) {
  if (index < 0 || index >= items_->Count()) return;
  SetItemIndex(index);
  Click();
}

void TCustomListBox::MouseDown(TMouseButton Button, TShiftState Shift, int X, int Y) {
  if (Button == mbLeft) {
    int index = ItemAtPos({X, Y}, true);
    if (index >= 0) {
      if (multiSelect_ && Shift.Contains(ssCtrl)) SetSelected(index, !Selected(index));
      SetItemIndex(index);
    }
  }
  inherited::MouseDown(Button, Shift, X, Y);
}

void TCustomListBox::DefaultHandler(TMessage& Message) {
  if (Message.Msg == WM_KEYDOWN) {
    int page = std::max(1, ClientHeight() / itemHeight_);
    switch (Message.WParam) {
      case VK_DOWN: SelectByUser(std::min(items_->Count() - 1, itemIndex_ + 1)); return;
      case VK_UP: SelectByUser(std::max(0, itemIndex_ - 1)); return;
      case VK_HOME: SelectByUser(0); return;
      case VK_END: SelectByUser(items_->Count() - 1); return;
      case VK_NEXT: SelectByUser(std::min(items_->Count() - 1, itemIndex_ + page)); return;
      case VK_PRIOR: SelectByUser(std::max(0, itemIndex_ - page)); return;
      default: break;
    }
  }
  inherited::DefaultHandler(Message);
}

KELMAR_PUBLISH(TListBox) {}

KELMAR_PUBLISH(TCheckListBox) {
  r.Prop(u"AllowGrayed", &TCheckListBox::AllowGrayed, &TCheckListBox::SetAllowGrayed).Default = 0;
  r.Prop(u"OnClickCheck", &TCheckListBox::OnClickCheck);
}

void TCheckListBox::Grow(int index) const {
  if (index < 0 || index >= Items()->Count()) throw EListError(u"List index out of bounds (" + IntToStr(index) + u")");
  if (states_.size() < static_cast<size_t>(Items()->Count())) {
    states_.resize(static_cast<size_t>(Items()->Count()), cbUnchecked);
    disabled_.resize(static_cast<size_t>(Items()->Count()), false);
  }
}

TCheckBoxState TCheckListBox::State(int index) const {
  Grow(index);
  return states_[static_cast<size_t>(index)];
}

void TCheckListBox::SetState(int index, TCheckBoxState v) {
  Grow(index);
  states_[static_cast<size_t>(index)] = v;
  Invalidate();
}

bool TCheckListBox::ItemEnabled(int index) const {
  Grow(index);
  return !disabled_[static_cast<size_t>(index)];
}

void TCheckListBox::SetItemEnabled(int index, bool v) {
  Grow(index);
  disabled_[static_cast<size_t>(index)] = !v;
}

void TCheckListBox::ToggleItem(int index) {
  if (!ItemEnabled(index)) return;
  TCheckBoxState s = State(index);
  SetState(index, s == cbUnchecked ? cbChecked : (s == cbChecked && allowGrayed_) ? cbGrayed : cbUnchecked);
  OnClickCheck(this);
}

void TCheckListBox::DefaultHandler(TMessage& Message) {
  if (Message.Msg == WM_CHAR && Message.WParam == u' ' && ItemIndex() >= 0) ToggleItem(ItemIndex());
  else inherited::DefaultHandler(Message);
}

KELMAR_PUBLISH(TGroupBox) { r.Prop(u"Caption", &TGroupBox::Caption, &TGroupBox::SetCaption); }

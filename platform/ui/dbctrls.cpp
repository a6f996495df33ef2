#include "platform/ui/dbctrls.h"

#include "platform/rtl/sysutils.h"
#include "platform/ui/dialogs.h"

// ---- TFieldDataLink -------------------------------------------------------------------

KELMAR_PUBLISH(TFieldDataLink) {}

void TFieldDataLink::SetFieldName(const String& v) {
  if (fieldName_ == v) return;
  fieldName_ = v;
  UpdateField();
}

void TFieldDataLink::UpdateField() {
  field_ = Active() && DataSet() && !fieldName_.IsEmpty() ? DataSet()->FindField(fieldName_) : nullptr;
  modified_ = false;
  OnDataChange(this);
}

bool TFieldDataLink::CanModify() const { return !ReadOnly() && field_ && field_->CanModify(); }

bool TFieldDataLink::Edit() {
  if (CanModify()) TDataLink::Edit();
  return Editing();
}

void TFieldDataLink::Reset() { RecordChanged(nullptr); }

void TFieldDataLink::ActiveChanged() {
  UpdateField();
  OnActiveChange(this);
}

void TFieldDataLink::LayoutChanged() { UpdateField(); }

void TFieldDataLink::RecordChanged(TField* Field) {
  if (Field && Field != field_) return;
  modified_ = false;
  OnDataChange(this);
}

void TFieldDataLink::UpdateData() {
  if (!modified_) return;
  if (field_) OnUpdateData(this);
  modified_ = false;
}

void TFieldDataLink::FocusControl(TField* Field) {
  if (Field != field_) return;
  if (auto* c = dynamic_cast<TWinControl*>(control_); c && c->CanFocus()) c->SetFocus();
}

namespace {

template <class T>
void PublishDataAware(TPublisher<T>& r) {
  r.Prop(u"DataField", &T::DataField, &T::SetDataField);
  r.Prop(u"DataSource", &T::DataSource, &T::SetDataSource);
}

// A text typed into a control goes to the field; the control keeps the
// focus when the field refuses it.
template <class T>
void WriteOnExit(T* control) {
  try {
    control->DataLink()->UpdateRecord();
  } catch (...) {
    control->SelectAll();
    if (control->CanFocus()) control->SetFocus();
    throw;
  }
}

}  // namespace

// ---- TDBEdit ---------------------------------------------------------------------------

KELMAR_PUBLISH(TDBEdit) { PublishDataAware(r); }

TDBEdit::TDBEdit(TComponent* AOwner) : TDataAware(AOwner) {
  DataLink()->SetControl(this);
  DataLink()->OnDataChange = Closure(this, &TDBEdit::DataChange);
  DataLink()->OnUpdateData = Closure(this, &TDBEdit::UpdateData);
}

TDBEdit::~TDBEdit() { DataLink()->OnDataChange = nullptr; }

void TDBEdit::DataChange(TObject*) {
  loading_ = true;
  TField* f = Field();
  if (f) {
    if (EditMask() != f->EditMask()) SetEditMask(f->EditMask());
    TFieldType t = f->DataType();
    SetMaxLength(t == ftString || t == ftWideString || t == ftFixedChar ? f->Size() : 0);
    SetText(Focused() && DataLink()->CanModify() ? f->EditText() : f->DisplayText());
  } else {
    SetText(String());
  }
  SetModified(false);
  loading_ = false;
}

void TDBEdit::UpdateData(TObject*) {
  ValidateEdit();
  Field()->SetText(Text());
}

void TDBEdit::Change() {
  if (!loading_) DataLink()->Modified();
  inherited::Change();
}

void TDBEdit::KeyDown(Word& Key, TShiftState Shift) {
  inherited::KeyDown(Key, Shift);
  if (Key == VK_DELETE || (Key == VK_INSERT && Shift.Contains(ssShift))) DataLink()->Edit();
}

void TDBEdit::KeyPress(WideChar& Key) {
  inherited::KeyPress(Key);
  if (Key == 27) {
    DataLink()->Reset();
    SelectAll();
    Key = 0;
  } else if ((Key >= 32 || Key == 8 || Key == 22 || Key == 24) && !DataLink()->Edit()) {
    Key = 0;
  }
}

void TDBEdit::DoExit() {
  WriteOnExit(this);
  SetSelLength(0);
  inherited::DoExit();
}

// ---- TDBText --------------------------------------------------------------------------

KELMAR_PUBLISH(TDBText) { PublishDataAware(r); }

TDBText::TDBText(TComponent* AOwner) : TDataAware(AOwner) {
  DataLink()->SetControl(this);
  DataLink()->OnDataChange = Closure(this, &TDBText::DataChange);
}

TDBText::~TDBText() { DataLink()->OnDataChange = nullptr; }

void TDBText::DataChange(TObject*) { SetCaption(Field() ? Field()->DisplayText() : String()); }

// ---- TDBCheckBox ---------------------------------------------------------------------------

KELMAR_PUBLISH(TDBCheckBox) {
  PublishDataAware(r);
  r.Prop(u"ValueChecked", &TDBCheckBox::ValueChecked, &TDBCheckBox::SetValueChecked);
  r.Prop(u"ValueUnchecked", &TDBCheckBox::ValueUnchecked, &TDBCheckBox::SetValueUnchecked);
}

TDBCheckBox::TDBCheckBox(TComponent* AOwner) : TDataAware(AOwner) {
  DataLink()->SetControl(this);
  DataLink()->OnDataChange = Closure(this, &TDBCheckBox::DataChange);
  DataLink()->OnUpdateData = Closure(this, &TDBCheckBox::UpdateData);
  SetStateQuietly(cbGrayed);
}

TDBCheckBox::~TDBCheckBox() { DataLink()->OnDataChange = nullptr; }

namespace {
bool InValues(const String& text, const String& values) {
  String rest = values;
  while (true) {
    int sep = rest.Pos(u";");
    String one = sep ? rest.SubString(1, sep - 1) : rest;
    if (SameText(Trim(one), Trim(text))) return true;
    if (!sep) return false;
    rest = rest.SubString(sep + 1, rest.Length());
  }
}
String FirstValue(const String& values) {
  int sep = values.Pos(u";");
  return sep ? values.SubString(1, sep - 1) : values;
}
}  // namespace

void TDBCheckBox::DataChange(TObject*) {
  TField* f = Field();
  TCheckBoxState s = cbGrayed;
  if (f && !f->IsNull()) {
    if (f->DataType() == ftBoolean) s = f->AsBoolean() ? cbChecked : cbUnchecked;
    else if (InValues(f->AsString(), valueChecked_)) s = cbChecked;
    else if (InValues(f->AsString(), valueUnchecked_)) s = cbUnchecked;
  }
  SetStateQuietly(s);
}

void TDBCheckBox::Toggle() {
  if (!DataLink()->Edit()) return;
  inherited::Toggle();
  if (State() == cbGrayed) inherited::Toggle();  // a field is either value
  DataLink()->Modified();
  DataLink()->UpdateRecord();
}

void TDBCheckBox::UpdateData(TObject*) {
  TField* f = Field();
  if (f->DataType() == ftBoolean) f->SetAsBoolean(Checked());
  else f->SetText(FirstValue(Checked() ? valueChecked_ : valueUnchecked_));
}

// ---- TDBComboBox ----------------------------------------------------------------------------

KELMAR_PUBLISH(TDBComboBox) { PublishDataAware(r); }

TDBComboBox::TDBComboBox(TComponent* AOwner) : TDataAware(AOwner) {
  DataLink()->SetControl(this);
  DataLink()->OnDataChange = Closure(this, &TDBComboBox::DataChange);
  DataLink()->OnUpdateData = Closure(this, &TDBComboBox::UpdateData);
}

TDBComboBox::~TDBComboBox() { DataLink()->OnDataChange = nullptr; }

void TDBComboBox::DataChange(TObject*) {
  loading_ = true;
  SetText(Field() ? Field()->AsString() : String());
  loading_ = false;
}

void TDBComboBox::Change() {
  if (!loading_) {
    if (!DataLink()->Edit()) {
      DataChange(nullptr);  // nothing may change: show the field again
      return;
    }
    DataLink()->Modified();
  }
  inherited::Change();
}

void TDBComboBox::UpdateData(TObject*) { Field()->SetText(Text()); }

void TDBComboBox::DoExit() {
  WriteOnExit(this);
  inherited::DoExit();
}

// ---- TDBMemo ---------------------------------------------------------------------------------

KELMAR_PUBLISH(TDBMemo) { PublishDataAware(r); }

TDBMemo::TDBMemo(TComponent* AOwner) : TDataAware(AOwner) {
  DataLink()->SetControl(this);
  DataLink()->OnDataChange = Closure(this, &TDBMemo::DataChange);
  DataLink()->OnUpdateData = Closure(this, &TDBMemo::UpdateData);
}

TDBMemo::~TDBMemo() { DataLink()->OnDataChange = nullptr; }

void TDBMemo::DataChange(TObject*) {
  loading_ = true;
  SetText(Field() ? Field()->AsString() : String());
  loading_ = false;
}

void TDBMemo::Change() {
  if (!loading_) {
    if (!DataLink()->Edit()) {
      DataChange(nullptr);
      return;
    }
    DataLink()->Modified();
  }
  inherited::Change();
}

void TDBMemo::UpdateData(TObject*) { Field()->SetAsString(Text()); }

void TDBMemo::DoExit() {
  WriteOnExit(this);
  inherited::DoExit();
}

// ---- TDBNavigator ------------------------------------------------------------------------------

KELMAR_PUBLISH(TDBNavigator) {
  r.Prop(u"ConfirmDelete", &TDBNavigator::ConfirmDelete, &TDBNavigator::SetConfirmDelete).Default = 1;
  r.Prop(u"DataSource", &TDBNavigator::DataSource, &TDBNavigator::SetDataSource);
  r.Prop(u"VisibleButtons", &TDBNavigator::VisibleButtons, &TDBNavigator::SetVisibleButtons);
  r.Prop(u"BeforeAction", &TDBNavigator::BeforeAction);
  r.Prop(u"OnClick", &TDBNavigator::OnClick);
}

TDBNavigator::TDBNavigator(TComponent* AOwner) : TCustomControl(AOwner) { SetBounds(0, 0, 240, 25); }

TDBNavigator::~TDBNavigator() = default;

bool TDBNavigator::ButtonEnabled(TNavigateBtn Button) const {
  TDataSet* ds = dataLink_->DataSet();
  if (!ds || !dataLink_->Active()) return false;
  bool editing = ds->State() == dsEdit || ds->State() == dsInsert;
  bool canModify = ds->CanModify();
  switch (Button) {
    case nbFirst: case nbPrior: return !ds->Bof();
    case nbNext: case nbLast: return !ds->Eof();
    case nbInsert: return canModify;
    case nbDelete: return canModify && !ds->IsEmpty();
    case nbEdit: return canModify && !editing;
    case nbPost: case nbCancel: return editing;
    case nbRefresh: return true;
  }
  return false;
}

void TDBNavigator::BtnClick(TNavigateBtn Index) {
  TDataSet* ds = dataLink_->DataSet();
  if (!ds || !dataLink_->Active()) return;
  BeforeAction(this, Index);
  switch (Index) {
    case nbFirst: ds->First(); break;
    case nbPrior: ds->Prior(); break;
    case nbNext: ds->Next(); break;
    case nbLast: ds->Last(); break;
    case nbInsert: ds->Insert(); break;
    case nbEdit: ds->Edit(); break;
    case nbPost: ds->Post(); break;
    case nbCancel: ds->Cancel(); break;
    case nbRefresh: ds->Refresh(); break;
    case nbDelete:
      if (!confirmDelete_ || MessageDlg(u"Delete record?", mtConfirmation, mbOKCancel) != mrCancel) ds->Delete();
      break;
  }
  OnClick(this, Index);
}

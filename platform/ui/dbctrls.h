// Data-aware controls: a link to one field, and the edit box, label, check
// box, combo box, memo and navigator that show and change it.
//
// A control shows its field's text and follows the record. Typing puts the
// dataset in edit (when the data source allows it); the text goes to the
// field when the control is left, when Enter is pressed, or when the record
// is written. Escape takes the field's value back.
#pragma once

#include "platform/db/datasource.h"
#include "platform/ui/extctrls.h"
#include "platform/ui/stdctrls.h"

// The link of a control to one field of a data source.
class TFieldDataLink : public TDataLink {
  KELMAR_CLASS(TFieldDataLink, TDataLink)
 public:
  TFieldDataLink() = default;

  const String& FieldName() const { return fieldName_; }
  void SetFieldName(const String& v);
  // The field, found by name while the dataset is active; null otherwise.
  TField* Field() const { return field_; }
  TComponent* Control() const { return control_; }
  void SetControl(TComponent* v) { control_ = v; }
  bool CanModify() const;
  bool IsModified() const { return modified_; }
  // The control's text differs from the field's; the next UpdateRecord
  // writes it.
  void Modified() { modified_ = true; }
  // Starts editing when the data source allows; true when editing.
  bool Edit();
  // Takes the field's value back into the control.
  void Reset();

  TNotifyEvent OnDataChange;
  TNotifyEvent OnEditingChange;
  TNotifyEvent OnUpdateData;
  TNotifyEvent OnActiveChange;

 protected:
  void ActiveChanged() override;
  void EditingChanged() override { OnEditingChange(this); }
  void LayoutChanged() override;
  void RecordChanged(TField* Field) override;
  void UpdateData() override;
  void FocusControl(TField* Field) override;

 private:
  void UpdateField();
  String fieldName_;
  TField* field_ = nullptr;
  TComponent* control_ = nullptr;
  bool modified_ = false;
};

// What every data-aware control has: a data source, a field name, and the
// link between them.
template <class Base>
class TDataAware : public Base {
 public:
  using Base::Base;
  TDataSource* DataSource() const { return dataLink_->DataSource(); }
  void SetDataSource(TDataSource* v) { dataLink_->SetDataSource(v); }
  const String& DataField() const { return dataLink_->FieldName(); }
  void SetDataField(const String& v) { dataLink_->SetFieldName(v); }
  TField* Field() const { return dataLink_->Field(); }
  TFieldDataLink* DataLink() const { return dataLink_.get(); }

 private:
  std::unique_ptr<TFieldDataLink> dataLink_ = std::make_unique<TFieldDataLink>();
};

class TDBEdit : public TDataAware<TCustomMaskEdit> {
  KELMAR_CLASS(TDBEdit, TCustomMaskEdit)
 public:
  explicit TDBEdit(TComponent* AOwner);
  ~TDBEdit() override;

  void KeyDown(Word& Key, TShiftState Shift) override;
  void KeyPress(WideChar& Key) override;

 protected:
  void Change() override;
  void DoExit() override;

 private:
  void DataChange(TObject*);
  void UpdateData(TObject*);
  bool loading_ = false;
};

class TDBText : public TDataAware<TCustomLabel> {
  KELMAR_CLASS(TDBText, TCustomLabel)
 public:
  explicit TDBText(TComponent* AOwner);
  ~TDBText() override;

 private:
  void DataChange(TObject*);
};

class TDBCheckBox : public TDataAware<TCustomCheckBox> {
  KELMAR_CLASS(TDBCheckBox, TCustomCheckBox)
 public:
  explicit TDBCheckBox(TComponent* AOwner);
  ~TDBCheckBox() override;
  // Texts of the field meaning checked and unchecked; ';' separates
  // several that count the same (the first is written).
  const String& ValueChecked() const { return valueChecked_; }
  void SetValueChecked(const String& v) { valueChecked_ = v; }
  const String& ValueUnchecked() const { return valueUnchecked_; }
  void SetValueUnchecked(const String& v) { valueUnchecked_ = v; }
  void Toggle() override;

 private:
  void DataChange(TObject*);
  void UpdateData(TObject*);
  String valueChecked_ = u"True", valueUnchecked_ = u"False";
  bool loading_ = false;
};

class TDBComboBox : public TDataAware<TCustomComboBox> {
  KELMAR_CLASS(TDBComboBox, TCustomComboBox)
 public:
  explicit TDBComboBox(TComponent* AOwner);
  ~TDBComboBox() override;

 protected:
  void Change() override;
  void DoExit() override;

 private:
  void DataChange(TObject*);
  void UpdateData(TObject*);
  bool loading_ = false;
};

class TDBMemo : public TDataAware<TCustomMemo> {
  KELMAR_CLASS(TDBMemo, TCustomMemo)
 public:
  explicit TDBMemo(TComponent* AOwner);
  ~TDBMemo() override;

 protected:
  void Change() override;
  void DoExit() override;

 private:
  void DataChange(TObject*);
  void UpdateData(TObject*);
  bool loading_ = false;
};

// ---- Navigator -------------------------------------------------------------------------

enum TNavigateBtn { nbFirst, nbPrior, nbNext, nbLast, nbInsert, nbDelete, nbEdit, nbPost, nbCancel, nbRefresh };
KELMAR_ENUM(TNavigateBtn, u"nbFirst", u"nbPrior", u"nbNext", u"nbLast", u"nbInsert", u"nbDelete", u"nbEdit",
            u"nbPost", u"nbCancel", u"nbRefresh");
using TButtonSet = Set<TNavigateBtn>;
using TNavClick = TEvent<void(TObject* Sender, TNavigateBtn Button)>;

// Buttons that move through and change the dataset of a data source.
class TDBNavigator : public TCustomControl {
  KELMAR_CLASS(TDBNavigator, TCustomControl)
 public:
  explicit TDBNavigator(TComponent* AOwner);
  ~TDBNavigator() override;

  TDataSource* DataSource() const { return dataLink_->DataSource(); }
  void SetDataSource(TDataSource* v) { dataLink_->SetDataSource(v); }
  TButtonSet VisibleButtons() const { return visibleButtons_; }
  void SetVisibleButtons(TButtonSet v) { visibleButtons_ = v; }
  bool ConfirmDelete() const { return confirmDelete_; }
  void SetConfirmDelete(bool v) { confirmDelete_ = v; }
  // Whether the button can act in the dataset's present state.
  bool ButtonEnabled(TNavigateBtn Button) const;
  // A press of the button: BeforeAction (which may Abort), the dataset
  // command, OnClick. Delete asks "Delete record?" with ConfirmDelete.
  virtual void BtnClick(TNavigateBtn Index);

  TNavClick BeforeAction;
  TNavClick OnClick;

 private:
  std::unique_ptr<TDataLink> dataLink_ = std::make_unique<TDataLink>();
  TButtonSet visibleButtons_{nbFirst, nbPrior, nbNext, nbLast, nbInsert, nbDelete, nbEdit, nbPost, nbCancel, nbRefresh};
  bool confirmDelete_ = true;
};

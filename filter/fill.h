// TFindFilterForm: the find/filter dialogue over a dataset's TListFilts.
//
// The person picks a field, types a condition in the value language
// (filter/filterlang.h) and chooses the text options; the form turns the
// rows into one SQL expression, a line per field joined by AND, which the
// dataset puts into its SQL as VeskFilter.
//
// While the form is open its grid StringGrid1 is the working copy of the
// list: the handlers edit the grid's cells, and SetupFilter writes them
// back on OK or restores the backups otherwise. Grid column order:
//   0 Field, 1 Expression, 2 Type, 3 Real Field Name, 4 Config,
//   5 FieldKind, 6 TableName, 7 KeyField, 8 LKeyField, 9 LResField,
//   10 Cod_Text
// (the two lookup key columns stand the other way round than in the list).
//
// The form derives from the value language, so its state (upper prefix and
// suffix, text option, digits, limit) is the generators' state.
//
// The dataset side (data/veskbody.h) reaches the form only through
// ShowFindFilterForm and TListFilts::GenerateFilter, declared in
// filter/listfilts.h and defined here, so data/ never includes this header.
#pragma once

#include "filter/filterlang.h"
#include "filter/listfilts.h"
#include "platform/ui/extctrls.h"
#include "platform/ui/forms.h"
#include "platform/ui/grids.h"
#include "platform/ui/stdctrls.h"

// The message by which the form asks the application's main form for the
// language (WParam: the 8-bit text "GET_LANGUAGE", LParam: int* index),
// and which FormShow posts to the form itself when it has an input text.
constexpr UINT WM_FINDFILTER_LANGUAGE = 1024;

class TField;

class TFindFilterForm : public TForm, public TFilterValueLanguage {
  KELMAR_CLASS(TFindFilterForm, TForm)
 public:
  // Languages: 0 English, 1 Romanian, 2 Russian.
  enum { flEnglish, flRomanian, flRussian };
  static constexpr int GridColumnCount = 11;

  // Builds the controls, asks the language, and sets the form up on the
  // field whose real name is FieldName (none: the field list gets the
  // focus). Mode non-zero is search, zero filter.
  TFindFilterForm(TComponent* AOwner, TListFilts* List, const String& FieldName, int Mode);

  TListFilts* List() const { return list_; }
  int Language() const { return language_; }
  // The grid's text the dialogue was opened over; FormShow posts
  // WM_FINDFILTER_LANGUAGE to the form when it is not empty, and the form,
  // on receiving its own post, offers the text as the value of a selected
  // field that has none yet.
  const String& Input() const { return input_; }
  void SetInput(const String& Text) { input_ = Text; }

  void SetupControls();
  void SetMode(int Mode);
  void Setup(const String& FieldName);
  // Joins the grid's rows into mFilter, one condition per line.
  void GenerateFilter();
  // Stores the scalars; on OK FilterText and the rows from the grid,
  // otherwise the expressions and configs from their backups.
  void SetupFilter();

  // ---- Controls ----
  TLabel* lbField;
  TComboBox* Fields;
  TLabel* lbValue;
  TEdit* Value;
  TSpeedButton* sbClear;
  TRadioGroup* rgTxtOpts;
  TCheckBox* cbCaseSen;
  TRadioGroup* rgLkpMode;
  TCheckBox* cbNumber;
  TStaticText* stNumber;
  TEdit* edLimit;
  TUpDown* udLimit;
  TButton* BtnOK;
  TButton* BtnCancel;
  TButton* BtnAdvanced;
  TPanel* panBottom;
  TLabel* lbExpression;
  TMemo* mFilter;
  TButton* BtnGenerate;
  TButton* ClearButton;
  TStringGrid* StringGrid1;

  // ---- Handlers ----
  void FieldsChange(TObject* Sender);
  void ValueEnter(TObject* Sender);
  void ValueKeyPress(TObject* Sender, WideChar& Key);
  void ValueChange(TObject* Sender);
  void rgTxtOptsClick(TObject* Sender);
  void cbCaseSenClick(TObject* Sender);
  void rgLkpModeClick(TObject* Sender);
  void sbClearClick(TObject* Sender);
  void stNumberClick(TObject* Sender);
  void BtnAdvancedClick(TObject* Sender);
  void ClearButtonClick(TObject* Sender);
  void BtnGenerateClick(TObject* Sender);
  void BtnOKClick(TObject* Sender);
  void FormShow(TObject* Sender);
  void FormClose(TObject* Sender, TCloseAction& Action);

 protected:
  void Dispatch(TMessage& Message) override;

 private:
  void CreateControls();
  void AskLanguage();
  // The grid row of the selected field, or 0 when none is selected.
  int SelectedRow() const;
  // The dataset's field of the selected row (alias ignored), or null.
  TField* SelectedField() const;
  String Cell(int Column, int Row) const;
  void SetCell(int Column, int Row, const String& Text);
  // The case box and text option from the row's Config.
  void ReadConfig(int Row);
  void ApplyChanges(bool Empty);
  void SetLookupMode(int Row);

  TListFilts* list_;
  String input_;
  int language_ = flRomanian;
  int mode_ = 0;
  bool loading_ = false;  // controls are being loaded from a row
};

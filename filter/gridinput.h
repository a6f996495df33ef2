// TGridInputForm: the small question a grid asks before a search or a
// client filter on its selected column: the text, whether it matches whole
// or in part, and which column is meant, the column itself ("Text") or, for
// a lookup column, the key field that feeds it ("Code").
//
// The search (filter/vesksearch.h) shows it for a grid directly. The client
// filter lives in data/, which must not know forms: it asks through the
// dialogue seam of data/lookupfilters.h, where this unit puts the form when
// the program loads (InstallClientFilterDialogue puts it back after an
// application's own); with nothing there a grid's list filter without a
// value is cancelled.
#pragma once

#include "platform/ui/extctrls.h"
#include "platform/ui/forms.h"
#include "platform/ui/stdctrls.h"

class TDataSet;
class TField;
struct TClientFilterQuery;

// What the form asks and answers.
struct TGridInputRequest {
  TDataSet* DataSet = nullptr;
  TField* Field = nullptr;  // the grid's selected field
  String Caption;           // "Search" or "Filter"
  String Text;              // the text offered; the text typed
  bool Partial = true;      // in part ("contains" for a filter, "begins" for a search)
  bool CaseSens = false;
  bool AskCase = false;     // offer the case box (the filter does, the search not)
  bool ByCode = false;      // the key field of a lookup column was chosen
};

class TGridInputForm : public TForm {
  KELMAR_CLASS(TGridInputForm, TForm)
 public:
  enum { miWhole, miPartial };
  enum { ccText, ccCode };

  TGridInputForm(TComponent* AOwner, const TGridInputRequest& Request);

  // The answers as the controls hold them.
  void ReadAnswer(TGridInputRequest& Request) const;

  TLabel* lbPrompt;
  TEdit* Value;
  TRadioGroup* rgMatch;
  TRadioGroup* rgColumn;
  TCheckBox* cbCaseSen;
  TButton* BtnOK;
  TButton* BtnCancel;
};

// The field that a lookup column's "Code" choice means: the one its
// KeyFields name, when the dataset has it; else null.
TField* GridInputCodeField(TField* Field);

// Shows the form modally; on OK the request holds the answers and the
// result is true.
bool ShowGridInputForm(TGridInputRequest& Request);

// Puts the form behind the client filter's question (and returns the
// dialogue it replaces, so that a caller may put that one back).
using TClientFilterDialogueFn = bool (*)(TClientFilterQuery&);
TClientFilterDialogueFn InstallClientFilterDialogue();

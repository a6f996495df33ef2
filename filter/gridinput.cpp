#include "filter/gridinput.h"

#include "data/lookupfilters.h"
#include "platform/db/dataset.h"

KELMAR_PUBLISH(TGridInputForm) {}

TGridInputForm::TGridInputForm(TComponent* AOwner, const TGridInputRequest& Request) : TForm(AOwner) {
  SetName(u"GridInputForm");
  SetBorderStyle(bsDialog);
  SetPosition(poScreenCenter);
  SetCaption(Request.Caption);
  auto make = [this]<class T>(T*& control, const char16_t* name) {
    control = new T(this);
    control->SetName(name);
    control->SetParent(this);
  };
  make(lbPrompt, u"lbPrompt");
  make(Value, u"Value");
  make(rgMatch, u"rgMatch");
  make(rgColumn, u"rgColumn");
  make(cbCaseSen, u"cbCaseSen");
  make(BtnOK, u"BtnOK");
  make(BtnCancel, u"BtnCancel");

  lbPrompt->SetCaption((Request.Field ? Request.Field->DisplayName() : String()) + u":");
  Value->SetText(Request.Text);
  rgMatch->SetCaption(u"Match");
  rgMatch->Items()->Add(u"Whole value");
  rgMatch->Items()->Add(u"Partial");
  rgMatch->SetItemIndex(Request.Partial ? miPartial : miWhole);
  rgColumn->SetCaption(u"Column");
  rgColumn->Items()->Add(u"Text");
  rgColumn->Items()->Add(u"Code");
  rgColumn->SetItemIndex(Request.ByCode ? ccCode : ccText);
  // Only a column fed by a key field of this dataset has a code to seek.
  rgColumn->SetEnabled(GridInputCodeField(Request.Field) != nullptr);
  cbCaseSen->SetCaption(u"Case sensitive");
  cbCaseSen->SetChecked(Request.CaseSens);
  cbCaseSen->SetVisible(Request.AskCase);
  BtnOK->SetCaption(u"OK");
  BtnOK->SetDefault(true);
  BtnOK->SetModalResult(mrOk);
  BtnCancel->SetCaption(u"Cancel");
  BtnCancel->SetCancel(true);
  BtnCancel->SetModalResult(mrCancel);
  SetActiveControl(Value);
}

void TGridInputForm::ReadAnswer(TGridInputRequest& Request) const {
  Request.Text = Value->Text();
  Request.Partial = rgMatch->ItemIndex() == miPartial;
  Request.CaseSens = cbCaseSen->Checked();
  Request.ByCode = rgColumn->Enabled() && rgColumn->ItemIndex() == ccCode;
}

TField* GridInputCodeField(TField* Field) {
  if (!Field || !Field->DataSet() || Field->KeyFields().IsEmpty()) return nullptr;
  return Field->DataSet()->FindField(Field->KeyFields());
}

bool ShowGridInputForm(TGridInputRequest& Request) {
  TGridInputForm form(nullptr, Request);
  if (form.ShowModal() != mrOk) return false;
  form.ReadAnswer(Request);
  return true;
}

namespace {

bool AskClientFilter(TClientFilterQuery& Query) {
  TGridInputRequest request;
  request.DataSet = Query.DataSet;
  request.Field = Query.Field;
  request.Caption = u"Filter";
  request.Text = Query.Value;
  request.Partial = Query.Partial != 0;
  request.CaseSens = Query.CaseSens;
  request.AskCase = true;
  if (!ShowGridInputForm(request)) return false;
  Query.Value = request.Text;
  Query.Partial = request.Partial ? 1 : 0;
  Query.CaseSens = request.CaseSens;
  if (request.ByCode) Query.Field = GridInputCodeField(Query.Field);
  return true;
}

}  // namespace

TClientFilterDialogueFn InstallClientFilterDialogue() { return RegisterClientFilterDialogue(&AskClientFilter); }

// The kit's form answers the client filter's question from the start; an
// application may put its own in its place.
[[maybe_unused]] const TClientFilterDialogueFn installedAtLoad = InstallClientFilterDialogue();

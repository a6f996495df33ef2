#include "grid/gridpropcmp.h"

namespace {

// The process-wide stores; the kit runs on one thread.
TGridPropCmp* activeStore = nullptr;
TGridPropCmp* defaultStore = nullptr;

}  // namespace

KELMAR_PUBLISH(TGridPropCmp) {
  r.Prop(u"OraSession", &TGridPropCmp::OraSession, &TGridPropCmp::SetOraSession);
  r.Prop(u"UserID", &TGridPropCmp::UserID, &TGridPropCmp::SetUserID).Default = 0;
  r.Prop(u"TableName", &TGridPropCmp::TableName, &TGridPropCmp::SetTableName);
  r.Prop(u"Default", &TGridPropCmp::Default, &TGridPropCmp::SetDefault);
  r.Prop(u"StartUpInit", &TGridPropCmp::StartUpInit, &TGridPropCmp::SetStartUpInit);
  r.Prop(u"AdminMode", &TGridPropCmp::AdminMode, &TGridPropCmp::SetAdminMode).Default = 0;
  r.Prop(u"ReadOnly", &TGridPropCmp::ReadOnly, &TGridPropCmp::SetReadOnly).Default = 0;
  r.Prop(u"Flat", &TGridPropCmp::Flat, &TGridPropCmp::SetFlat).Default = 0;
  r.Prop(u"DisableNumberSearch", &TGridPropCmp::DisableNumberSearch, &TGridPropCmp::SetDisableNumberSearch)
      .Default = 0;
  r.Prop(u"HighlightRowMode", &TGridPropCmp::HighlightRowMode, &TGridPropCmp::SetHighlightRowMode).Default =
      hrmShadow;
  r.Prop(u"HighlightEdit", &TGridPropCmp::HighlightEdit, &TGridPropCmp::SetHighlightEdit).Default = 0;
  r.Prop(u"HighlightEditColor", &TGridPropCmp::HighlightEditColor, &TGridPropCmp::SetHighlightEditColor)
      .Default = clInfoBk;
  r.Prop(u"UseDefaultDisplayFormat", &TGridPropCmp::UseDefaultDisplayFormat,
         &TGridPropCmp::SetUseDefaultDisplayFormat)
      .Default = 0;
  r.Prop(u"UseDotInCont", &TGridPropCmp::UseDotInCont, &TGridPropCmp::SetUseDotInCont).Default = 0;
  r.Prop(u"UseDotInContChar", &TGridPropCmp::UseDotInContChar, &TGridPropCmp::SetUseDotInContChar).Default =
      u'.';
  r.Prop(u"OraNavigator", &TGridPropCmp::OraNavigator, &TGridPropCmp::SetOraNavigator);
  r.Prop(u"Params", &TGridPropCmp::Params, &TGridPropCmp::SetParams);
  r.Prop(u"OnStateChangeImplicit", &TGridPropCmp::OnStateChangeImplicit);
  r.Prop(u"OnDblClick", &TGridPropCmp::OnDblClick);
  r.Prop(u"OnInsertClick", &TGridPropCmp::OnInsertClick);
  r.Prop(u"OnKeyDown", &TGridPropCmp::OnKeyDown);
  r.Prop(u"OnDataExportToExcel", &TGridPropCmp::OnDataExportToExcel);
  r.Prop(u"OnDataImportFromExcel", &TGridPropCmp::OnDataImportFromExcel);
  r.Prop(u"OnXPopUpCmpLoad", &TGridPropCmp::OnXPopUpCmpLoad);
  r.Prop(u"OnClearDBMSOutput", &TGridPropCmp::OnClearDBMSOutput);
  r.Prop(u"OnShowDBMSOutput", &TGridPropCmp::OnShowDBMSOutput);
  r.Prop(u"OnSelectFromList", &TGridPropCmp::OnSelectFromList);
  r.Prop(u"OnXVeskEditClick", &TGridPropCmp::OnXVeskEditClick);
  r.Prop(u"OnGridLoseFocus", &TGridPropCmp::OnGridLoseFocus);
}

TGridPropCmp::TGridPropCmp(TComponent* AOwner) : TComponent(AOwner), params_(std::make_unique<TStringList>()) {}

TGridPropCmp::~TGridPropCmp() {
  // Nobody may reach a store that is gone.
  if (activeStore == this) activeStore = nullptr;
  if (defaultStore == this) defaultStore = nullptr;
}

// ---- The process-wide stores --------------------------------------------------------

TGridPropCmp* TGridPropCmp::GetPointer() { return activeStore; }

void TGridPropCmp::SetPointer(TGridPropCmp* Value) { activeStore = Value; }

TGridPropCmp* TGridPropCmp::DefaultStore() { return defaultStore; }

void TGridPropCmp::SetStartUpInit(bool Value) { SetPointer(Value ? this : nullptr); }

void TGridPropCmp::SetDefault(bool) { defaultStore = this; }

// ---- Asked of the active store -------------------------------------------------------

bool TGridPropCmp::IsAdminMode() { return !activeStore || activeStore->AdminMode(); }

bool TGridPropCmp::IsReadOnly() { return activeStore && activeStore->ReadOnly(); }

bool TGridPropCmp::IsFlat() { return activeStore && activeStore->Flat(); }

WideChar TGridPropCmp::DotInContChar() {
  return activeStore && activeStore->UseDotInCont() ? activeStore->UseDotInContChar() : u'.';
}

void TGridPropCmp::ClearDBMSOutput(TObject* Sender) {
  if (activeStore) activeStore->OnClearDBMSOutput(Sender);
}

void TGridPropCmp::ShowDBMSOutput(TObject* Sender) {
  if (activeStore) activeStore->OnShowDBMSOutput(Sender);
}

// ---- Peers -------------------------------------------------------------------------

namespace {

// Points a peer reference at Value, asking to be told when it goes.
template <class T>
void SetPeer(TComponent* self, T*& peer, T* Value) {
  if (peer == Value) return;
  if (peer) peer->RemoveFreeNotification(self);
  peer = Value;
  if (peer) peer->FreeNotification(self);
}

}  // namespace

void TGridPropCmp::SetOraSession(TOraSession* Value) { SetPeer(this, oraSession_, Value); }

void TGridPropCmp::SetOraNavigator(TOraNavigator* Value) { SetPeer(this, oraNavigator_, Value); }

void TGridPropCmp::Notification(TComponent* AComponent, TOperation Operation) {
  TComponent::Notification(AComponent, Operation);
  if (Operation != opRemove) return;
  if (AComponent == oraSession_) oraSession_ = nullptr;
  if (AComponent == oraNavigator_) oraNavigator_ = nullptr;
}

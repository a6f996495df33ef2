#include "data/veskodacsmartquerylib.h"

#include "data/querydoc.h"
#include "data/veskbodyimpl.h"

template class TVeskBody<TSmartQuery, TVeskODACSmartQueryTraits>;

namespace {

TEditQueryFormProc& EditQueryForm() {
  static TEditQueryFormProc editor = nullptr;
  return editor;
}

}  // namespace

TEditQueryFormProc RegisterEditQueryForm(TEditQueryFormProc Editor) {
  TEditQueryFormProc before = EditQueryForm();
  EditQueryForm() = Editor;
  return before;
}

KELMAR_PUBLISH(TVeskODACSmartQuery) {
  PublishVeskBody(r);
  r.Prop(u"SQLPrepare", &TVeskODACSmartQuery::SQLPrepare, &TVeskODACSmartQuery::SetSQLPrepare);
  r.Prop(u"PropText", &TVeskODACSmartQuery::PropText, &TVeskODACSmartQuery::SetPropText);
  r.Command(u"EditProps", &TVeskODACSmartQuery::SetEditProps);
  r.Prop(u"EditPropsCmp", &TVeskODACSmartQuery::EditPropsCmp, &TVeskODACSmartQuery::SetEditPropsCmp);
  r.Prop(u"EditPropsResult", &TVeskODACSmartQuery::EditPropsResult, nullptr);
  r.Prop(u"VeskRepairFields", &TVeskODACSmartQuery::VeskRepairFields, &TVeskODACSmartQuery::SetVeskRepairFields)
      .Default = 0;
}

TVeskODACSmartQuery::TVeskODACSmartQuery(TComponent* AOwner)
    : TVeskODACSmartQueryBody(AOwner), sqlPrepare_(std::make_unique<TStringList>()) {}

TVeskODACSmartQuery::~TVeskODACSmartQuery() { SetEditPropsCmp(nullptr); }

String TVeskODACSmartQuery::PropText() { return GetPropText(this); }

void TVeskODACSmartQuery::SetPropText(const String& Value) { ::SetPropText(this, Value); }

void TVeskODACSmartQuery::DoEditProps(bool) {
  TEditQueryFormProc editor = EditQueryForm();
  editPropsResult_ = editor ? editor(this, editPropsCmp_) : 0;
}

void TVeskODACSmartQuery::SetEditPropsCmp(TComponent* Value) {
  if (Value == editPropsCmp_) return;
  if (editPropsCmp_) editPropsCmp_->RemoveFreeNotification(this);
  editPropsCmp_ = Value;
  if (editPropsCmp_) editPropsCmp_->FreeNotification(this);
}

void TVeskODACSmartQuery::SetRefreshOptions(TRefreshOptions Value) {
  inherited::SetRefreshOptions(Value);
  SetFullRefresh(!Value.Empty());
}

void TVeskODACSmartQuery::Notification(TComponent* AComponent, TOperation Operation) {
  inherited::Notification(AComponent, Operation);
  if (Operation == opRemove && AComponent == editPropsCmp_) editPropsCmp_ = nullptr;
}

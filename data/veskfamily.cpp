#include "data/veskfamily.h"

#include "data/veskbodyimpl.h"
#include "data/veskodacsmartquerylib.h"
#include "platform/db/datasource.h"

template class TVeskBody<TOraTable, TVeskODACTableQueryTraits>;
template class TVeskBody<TOraNestedTable, TVeskNoGroups>;
template class TVeskBody<TOraStoredProc, TVeskNoGroups>;
template class TVeskBody<TQuery, TVeskQuery1Traits>;

KELMAR_PUBLISH(TVeskODACTableQuery) { PublishVeskBody(r); }
KELMAR_PUBLISH(TVeskODACNNTab) { PublishVeskBody(r); }
KELMAR_PUBLISH(TVeskODACProc) { PublishVeskBody(r); }
KELMAR_PUBLISH(TVeskQuery1) { PublishVeskBody(r); }

void RegisterVeskFamily() {
  for (TClass cls : {TVeskODACQuery::StaticClass(), TVeskODACSmartQuery::StaticClass(), TVeskODACTableQuery::StaticClass(),
                     TVeskODACNNTab::StaticClass(), TVeskODACProc::StaticClass(), TVeskQuery1::StaticClass(),
                     TVeskTable1::StaticClass(), TVeskVirt::StaticClass()})
    RegisterClass(cls);
}

namespace {

const bool familyRegistered = (RegisterVeskFamily(), true);

// The control for which the store's navigator was last bound. The store has
// no place for it, so it is kept here beside the store it belongs to; only
// compared, never followed.
struct TNavigatorBinding {
  const TGridPropCmp* Store = nullptr;
  const TComponent* Owner = nullptr;
};
TNavigatorBinding& Binding() {
  static TNavigatorBinding binding;
  return binding;
}

}  // namespace

void ManageNavigator(TDataSource* Source, TComponent* Owner, bool Active) {
  (void)familyRegistered;
  if (!Source || !Source->DataSet()) return;
  TOraNavigator* shared = nullptr;
  if (TGridPropCmp* store = GetGridPropCmp(); store && store->OraNavigator()) {
    shared = store->OraNavigator();
    TNavigatorBinding& binding = Binding();
    if (Active) {
      shared->SetDataSource(Source);
      binding = {store, Owner};
    } else if (shared->DataSource() == Source && binding.Store == store && binding.Owner == Owner) {
      shared->SetDataSource(nullptr);
    }
  }
  TObject* own = GetPropObject(Source->DataSet(), u"VeskNav", TOraNavigator::StaticClass());
  if (auto* nav = dynamic_cast<TOraNavigator*>(own); nav && nav != shared) nav->SetDataSource(Source);
}

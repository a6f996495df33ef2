// The member functions of TVeskBody (data/veskbody.h). Included by the
// units that define a member of the family, and nowhere else.
#pragma once

#include "data/fieldsetup.h"
#include "data/oranavigator.h"
#include "data/veskbody.h"
#include "data/veskui.h"
#include "data/veskupdater.h"
#include "data/veskutil.h"
#include "filter/listfilts.h"
#include "filter/veskorasession.h"
#include "filter/xttsum.h"
#include "grid/gridpropcmp.h"
#include "platform/ui/dialogs.h"

// ---- Construction -------------------------------------------------------------------

template <class B, class T>
TVeskBody<B, T>::TVeskBody(TComponent* AOwner)
    : B(AOwner), summary_(std::make_unique<XTTTSummaryCollection>(this)) {
  if constexpr (T::SqlComposition) listFilts_ = std::make_unique<TListFilts>(this);
  if constexpr (T::Updater) this->SetUpdater(new TVeskUpdater<TVeskBody>(this));
}

template <class B, class T>
TVeskBody<B, T>::~TVeskBody() {
  OnInLog = nullptr;
  freeFilters(true);
  freeDefFV();
  SetVeskNav(nullptr);
  SetXTTStatusBarComponent(nullptr);
}

// ---- The guard ------------------------------------------------------------------------

template <class B, class T>
void TVeskBody<B, T>::CheckStateChange(TVeskState Requested) {
  TGridPropCmp* store = GetGridPropCmp();
  if (!store || !store->OnStateChangeImplicit) Abort();
  if (!store->OnStateChangeImplicit(this, Requested, veskCom_, this->State())) Abort();
}

template <class B, class T>
bool TVeskBody<B, T>::TblToEdit(bool Value) {
  if (veskMode_ && tblIsEdit_ != Value) {
    tblIsEdit_ = Value;
    if (veskNav_) {
      TButtonSet buttons = veskNav_->VisibleButtons();
      buttons >> nbFirst >> nbPrior >> nbNext >> nbLast;
      veskNav_->SetVisibleButtons(buttons);
    }
  }
  return tblIsEdit_;
}

template <class B, class T>
void TVeskBody<B, T>::SetVeskNav(TOraNavigator* Value) {
  if (Value == veskNav_) return;
  if (veskNav_) veskNav_->RemoveFreeNotification(this);
  veskNav_ = Value;
  if (veskNav_) veskNav_->FreeNotification(this);
}

template <class B, class T>
bool TVeskBody<B, T>::IsDataReadOnly() {
  return TGridPropCmp::IsReadOnly();
}

// ---- Position and search ------------------------------------------------------------------

template <class B, class T>
void TVeskBody<B, T>::SetVeskKeyFields(const String& Value) {
  veskKeyFields_ = StringReplace(Value, u",", u";", TReplaceFlags{rfReplaceAll});
}

template <class B, class T>
void TVeskBody<B, T>::VeskMemorizeFieldValues() {
  ReadKeyValues(this, veskKeyFields_, memKeyText_, memKeyValue_);
}

template <class B, class T>
bool TVeskBody<B, T>::VeskLocate() {
  if (memKeyText_.IsEmpty()) return false;
  return Locate(memKeyText_, memKeyValue_, TLocateOptions());
}

template <class B, class T>
Variant TVeskBody<B, T>::getVeskFieldsValues(const String& Names) const {
  String keyText;
  Variant values;
  ReadKeyValues(this, Names, keyText, values);
  return values;
}

template <class B, class T>
String TVeskBody<B, T>::getVeskKeyFields(bool Store) {
  String keys = veskKeyFields_;
  if (keys.IsEmpty())
    for (int i = 0; i < this->FieldCount(); ++i)
      keys += (i == 0 ? u"" : u";") + this->Fields()->Fields(i)->FieldName();
  if (Store) SetVeskKeyFields(keys);
  return keys;
}

template <class B, class T>
TField* TVeskBody<B, T>::FieldAt(int Index) const {
  return Index >= 0 && Index < this->FieldCount() ? this->Fields()->Fields(Index) : nullptr;
}

template <class B, class T>
bool TVeskBody<B, T>::locate(TField* Field, const String& Value, bool Repeat, TComponent* Grid) {
  TVeskSearchHooks hooks;
  hooks.Options = locateOptions_;
  hooks.ExtSearch = VeskExtSearch;
  hooks.LookupFilterCount = filterLists_.CountLF();
  hooks.LocateCalc = [this](const String& Keys, const Variant& Values, TLocateOptions Options, bool Forward) {
    return LocateLKCALC(Keys, Values, Options, Forward);
  };
  hooks.Miss = [this](const String& Name, const String& Text) { SetSearchMiss(Name, Text); };
  return VeskSearchLocate(this, search_, hooks, Field, Value, Repeat ? 1 : 0, Grid);
}

template <class B, class T>
TListFilts* TVeskBody<B, T>::FindFilterList() const {
  if constexpr (T::SqlComposition) return listFilts_.get();
  else return nullptr;
}

template <class B, class T>
String TVeskBody<B, T>::DefaultValuesText() const {
  String text;
  for (const TVeskDefaultValue& value : defaults_)
    text += (text.IsEmpty() ? u"" : u"; ") + value.Name + u"=" + VarToStr(value.Value);
  return text;
}

template <class B, class T>
void TVeskBody<B, T>::RememberFilter(const String& Text) {
  pristineFilter_ = Text;
  pristineFilterPending_ = false;
}

// ---- Client filters -------------------------------------------------------------------

template <class B, class T>
void TVeskBody<B, T>::VeskSetOnFilterRecord(TDataSet* DataSet, bool& Accept) {
  Accept = false;
  if (!filterLists_.Accepts(DataSet)) return;
  Accept = true;
  OnVeskFilterRecord(DataSet, Accept);
}

template <class B, class T>
void TVeskBody<B, T>::SetFiltered(bool Value) {
  filterLists_.Reset();
  if ((filterLists_.LookUpFilter() && !this->OnFilterRecord) || (Value && OnVeskFilterRecord))
    this->OnFilterRecord = TFilterRecordEvent(this, &TVeskBody::VeskSetOnFilterRecord);
  B::SetFiltered(Value);
}

template <class B, class T>
void TVeskBody<B, T>::freeFilters(bool Keep) {
  const bool hadLists = filterLists_.CountLF() > 0 || filterLists_.CountSF() > 0;
  filterLists_.Clear();
  if (Keep) return;
  // Only a filter text that the kit changed goes back; one the application
  // set and the kit never touched stays.
  if (!pristineFilterPending_ && this->Filter() != pristineFilter_) this->SetFilter(pristineFilter_);
  SetFiltered(!this->Filter().IsEmpty());
  VeskExtFilterFree(this);
  this->OnFilterRecord = nullptr;
  // The records the lists hid come back.
  if (hadLists && this->Active() && this->Filtered()) {
    B::SetFiltered(false);
    B::SetFiltered(true);
  }
  if constexpr (T::SqlComposition) {
    if (!filter_.IsEmpty() || veskSQLServer_) {
      listFilts_->ClearValues();
      setVeskSQLComp(vscFilter, String());
    }
  }
}

template <class B, class T>
bool TVeskBody<B, T>::setFilter(TField* Field, const String& Value, bool Multi, TComponent* Grid) {
  if (!Field) return false;
  if constexpr (T::SqlComposition) {
    if (Field->FieldKind() == fkData && veskSQLServer_) {
      return SetFilterOnServer(Field, Value, Multi, Grid);
    }
  }
  return SetFilterOnClient(Field, Value, Multi, Grid);
}

template <class B, class T>
bool TVeskBody<B, T>::SetFilterOnClient(TField* Field, String Value, bool Multi, TComponent* Grid) {
  const String oldFilter = this->Filter();
  const TFilterOptions oldOptions = this->FilterOptions();
  const bool oldFiltered = this->Filtered();
  TClientFilterQuery query;
  query.DataSet = this;
  query.Grid = Grid;
  query.Field = Field;
  query.Value = Value;
  if constexpr (T::SqlComposition) {
    query.Partial = listFilts_->TextOption();
    query.CaseSens = listFilts_->CaseSensitive();
  }
  if (Grid && Multi && Field->FieldKind() != fkCalculated && Value.IsEmpty()) {
    TClientFilterDialogue ask = ClientFilterDialogue();
    if (!ask || !ask(query) || !query.Field) return true;
    Field = query.Field;
    Value = query.Value;
  }
  if (pristineFilterPending_) {
    pristineFilter_ = this->Filter();
    pristineFilterPending_ = false;
  }
  String text = this->Filter();
  try {
    auto toList = [&](auto add, auto remove, const String& key) {
      if (Value.IsEmpty()) {
        (filterLists_.*remove)(key);
        this->Refresh();
        filterLists_.SetLookUpFilter(true);
      } else if ((filterLists_.*add)(Field, Value, query.Partial, query.CaseSens)) {
        filterLists_.SetLookUpFilter(true);
        text = String();
      }
    };
    switch (Field->FieldKind()) {
      case fkData:
        if (Field->DataType() == ftString && query.Partial != 0) {
          toList(&TVeskFilterLists::addSF, &TVeskFilterLists::removeSF, Field->FieldName());
        } else {
          const String condition = ClientFilterCondition(Field, Value, Multi);
          text = text.IsEmpty() ? condition : u"(" + text + u") AND " + condition;
          filterLists_.SetLookUpFilter(false);
        }
        break;
      case fkCalculated:
        VeskExtFilter(this);
        return true;
      case fkLookup:
        toList(&TVeskFilterLists::addLF, &TVeskFilterLists::removeLF, Field->KeyFields());
        break;
      default:
        return true;
    }
    if (filterLists_.LookUpFilter()) {
      SetFiltered(false);
      SetFiltered(true);
    } else if (text != this->Filter()) {
      this->SetFilter(text);
      if (Multi) SetFiltered(false);
      SetFiltered(!text.IsEmpty());
    }
  } catch (Exception& e) {
    e.Message = u"Invalid filter: " + text + u"\n" + e.Message;
    if (!oldFilter.IsEmpty()) e.Message += u"\nRestored old filter: " + oldFilter;
    // Each step back is tried on its own: a step that fails as well (an
    // old text the engine cannot read either) must not hide the refusal.
    auto attempt = [](auto step) {
      try {
        step();
      } catch (const Exception&) {
      }
    };
    B::SetFiltered(false);
    attempt([&] { this->SetFilter(oldFilter); });
    attempt([&] { this->SetFilterOptions(oldOptions); });
    attempt([&] { SetFiltered(oldFiltered); });
    throw;
  }
  return true;
}

template <class B, class T>
void TVeskBody<B, T>::Append() {
  if (this->Filtered()) this->Last();
  B::Append();
}

template <class B, class T>
bool TVeskBody<B, T>::duplicateRecord(bool AppendRecord, const String& KeyNames) {
  if (this->State() == dsEdit || this->State() == dsInsert) return false;
  veskCom_ = dsgInsert;
  if (AppendRecord) {
    Append();
  } else {
    this->Next();
    // Past the last record an insert would stand before the original.
    if (this->Eof()) Append();
    else this->Insert();
  }
  DittoFieldsExcept(this, KeyNames);
  return true;
}

// ---- Commands -------------------------------------------------------------------------

template <class B, class T>
void TVeskBody<B, T>::SetSearchCmdFirst(int FieldIndex) {
  if (TField* field = FieldAt(FieldIndex)) locate(field, String(), false);
}

template <class B, class T>
void TVeskBody<B, T>::SetSearchCmdNext(int) {
  if (search_.LastField.IsEmpty()) return;
  if (TField* field = this->FindField(search_.LastField)) locate(field, search_.LastValue, true);
}

template <class B, class T>
void TVeskBody<B, T>::SetDefValCmdSet(int FieldIndex) {
  setDefFV(FieldAt(FieldIndex), true);
}

template <class B, class T>
void TVeskBody<B, T>::SetDefValCmdSetCurr(int FieldIndex) {
  setDefFV(FieldAt(FieldIndex), false);
}

template <class B, class T>
void TVeskBody<B, T>::SetPrevRecCmdCopy(int FieldIndex) {
  if (TField* field = FieldAt(FieldIndex)) getDitto(field, nullptr);
}

// ---- Summaries ------------------------------------------------------------------------

template <class B, class T>
TStatusBar* TVeskBody<B, T>::XTTStatusBar() const {
  return AsStatusBar(statusBar_);
}

template <class B, class T>
void TVeskBody<B, T>::SetXTTStatusBar(TStatusBar* Value) {
  SetXTTStatusBarComponent(StatusBarComponent(Value));
}

template <class B, class T>
void TVeskBody<B, T>::SetXTTStatusBarComponent(TComponent* Value) {
  if (Value && !Value->InheritsFrom(StatusBarClass())) return;
  if (Value == statusBar_) return;
  if (statusBar_) statusBar_->RemoveFreeNotification(this);
  statusBar_ = Value;
  if (statusBar_) statusBar_->FreeNotification(this);
}

template <class B, class T>
void TVeskBody<B, T>::SetXTTShowSummary(bool Value) {
  showSummary_ = Value;
  if (Value) XTTCalcSummaries();
  else if (!Designing()) ClearStatusPanels(XTTStatusBar());
}

template <class B, class T>
void TVeskBody<B, T>::SetXTTSummary(XTTTSummaryCollection* Value) {
  if (Value) summary_->Assign(Value);
}

template <class B, class T>
void TVeskBody<B, T>::XTTCalcSummaries() {
  if (this->State() != dsBrowse || Designing()) return;
  walking_ = true;
  try {
    summary_->CalcSummaries();
    summary_->CheckSummaries();
  } catch (...) {
    walking_ = false;
    throw;
  }
  walking_ = false;
  OnXTTChangeSum(this);
  XTTDisplaySummaries();
}

template <class B, class T>
void TVeskBody<B, T>::XTTDisplaySummaries() {
  if (TStatusBar* bar = XTTStatusBar()) summary_->DisplaySummaries(bar);
}

template <class B, class T>
void TVeskBody<B, T>::DoBeforeRefreshRecord() {
  if (showSummary_) summary_->IncludeCurrentRecord(false);
}

template <class B, class T>
void TVeskBody<B, T>::DoAfterRefreshRecord() {
  if (showSummary_) summary_->IncludeCurrentRecord(true);
}

// ---- SQL composition ------------------------------------------------------------------

template <class B, class T>
void TVeskBody<B, T>::SetVeskTableLive(const String& Value) requires T::SqlComposition {
  setVeskTableLive(Value);
  VeskSQLChanged(this, vscTableLive);
}

template <class B, class T>
TStrings* TVeskBody<B, T>::VeskSQL1() requires T::SqlComposition {
  if (!sql1_) sql1_ = std::make_unique<TStringList>();
  return sql1_.get();
}

template <class B, class T>
void TVeskBody<B, T>::SetVeskSQL1(TStrings* Value) requires T::SqlComposition {
  VeskSQL1()->SetText(Value ? Value->Text() : String());
  setVeskTableLive(tableLive_);
  VeskSQLChanged(this, vscSQL1);
}

template <class B, class T>
void TVeskBody<B, T>::setVeskSQLComp(int Which, const String& Text) requires T::SqlComposition {
  switch (Which) {
    case vscGroupField: groupField_ = Text; break;
    case vscFilter: filter_ = Text; break;
    case vscFilterSYS: filterSYS_ = Text; break;
    default: break;
  }
  setVeskTableLive(tableLive_);
  VeskSQLChanged(this, Which);
}

template <class B, class T>
String TVeskBody<B, T>::getVeskSQL() requires T::SqlComposition {
  if (tableLive_.IsEmpty() && sql1_ && sql1_->Count() > 0) {
    String base = sql1_->Text();
    if (alias_.IsEmpty()) return base;
    return u"SELECT " + alias_ + u".* FROM(" + base + u") " + alias_;
  }
  String sql = u"SELECT " + (alias_.IsEmpty() ? tableLive_ : alias_) + u".*";
  for (TField* field : *this->Fields()) {
    if (field->FieldKind() != fkData || !field->LookupDataSet()) continue;
    String table = VeskLookupTableName(field->LookupDataSet());
    if (table.IsEmpty()) continue;
    sql += u", ( select " + field->LookupResultField() + u" FROM " + table + u" WHERE " + table + u"." +
           field->LookupKeyFields() + u"=" + field->KeyFields() + u") as " + field->FieldName() + u"_LK";
  }
  sql += u" FROM " + tableLive_;
  if (!alias_.IsEmpty()) sql += u" " + alias_;
  return sql;
}

// The whole statement: the base, then WHERE with the user's and the fixed
// condition, then ORDER BY.
template <class B, class T>
String TVeskBody<B, T>::ComposedSQL() requires T::SqlComposition {
  TStringList lines;
  lines.SetText(getVeskSQL());
  if (!filterSYS_.IsEmpty() || !filter_.IsEmpty()) lines.Add(u"WHERE");
  if (!filter_.IsEmpty()) lines.Add(u"(" + filter_ + u")");
  if (!filterSYS_.IsEmpty()) {
    if (!filter_.IsEmpty()) lines.Add(u"AND");
    lines.Add(u"(" + filterSYS_ + u")");
  }
  if (!groupField_.IsEmpty()) lines.Add(u"ORDER BY " + groupField_);
  return lines.Text();
}

template <class B, class T>
void TVeskBody<B, T>::setVeskTableLive(const String& Value) requires T::SqlComposition {
  tableLive_ = Value;
  if (this->ComponentState().Contains(csLoading)) return;
  const String kept = this->SQL()->Text();
  // A statement written by hand on a fresh dataset is left alone; one the
  // composer wrote is its own to rebuild.
  if (!this->Active() && this->FieldCount() == 0 && !Trim(kept).IsEmpty() && kept != composedSQL_) return;
  if (tableLive_.IsEmpty() && (!sql1_ || sql1_->Count() == 0)) return;
  const bool wasActive = this->Active();
  selfClose_ = true;
  try {
    if (wasActive) this->Close();
    this->SQL()->SetText(ComposedSQL());
  } catch (...) {
    selfClose_ = false;
    throw;
  }
  selfClose_ = false;
  composedSQL_ = this->SQL()->Text();
  if (!wasActive) return;
  this->Open();
  if (!this->Active()) {
    this->SQL()->SetText(kept);
    this->Open();
  }
}

template <class B, class T>
void TVeskBody<B, T>::RefreshQuery() requires T::SqlComposition {
  if (simpleRefresh_) {
    this->RefreshRecord();
    return;
  }
  VeskMemorizeFieldValues();
  this->DisableControls();
  try {
    this->Refresh();
    if (!VeskLocate()) this->Last();
  } catch (...) {
    this->EnableControls();
    throw;
  }
  this->EnableControls();
}

// ---- The find/filter route (filter/listfilts.h) ----------------------------------

template <class B, class T>
void TVeskBody<B, T>::ComposeKeepingList(const String& Text, bool OpenClosed) requires T::SqlComposition {
  // The reopen would otherwise refill the list from the fields and lose
  // what the person chose.
  const bool refill = refill_;
  refill_ = false;
  try {
    setVeskSQLComp(vscFilter, Text);
    if (OpenClosed && !this->Active()) this->Open();
  } catch (...) {
    refill_ = refill;
    throw;
  }
  refill_ = refill;
}

template <class B, class T>
template <class Change, class Restore>
bool TVeskBody<B, T>::ApplyListFilter(Change change, Restore restore) requires T::SqlComposition {
  const String oldFilter = filter_;
  const bool wasActive = this->Active();
  try {
    if (!change()) return false;
    ComposeKeepingList(listFilts_->FilterText());
  } catch (...) {
    restore();
    // The engine's refusal is what the caller must hear, not a second
    // failure of the old text.
    try {
      // The refused open left the dataset closed.
      if (filter_ != oldFilter || (wasActive && !this->Active())) ComposeKeepingList(oldFilter, wasActive);
    } catch (const Exception&) {
    }
    throw;
  }
  return true;
}

template <class B, class T>
void TVeskBody<B, T>::DoFilterCmdShow(const String& FieldName) requires T::SqlComposition {
  const String state = listFilts_->GetState();
  const String name = alias_.IsEmpty() ? FieldName : alias_ + u"." + FieldName;
  ApplyListFilter([&] { return ShowFindFilterForm(listFilts_.get(), name, String()); },
                  [&] { listFilts_->SetState(state); });
}

template <class B, class T>
void TVeskBody<B, T>::DoFilterCmdSetExpr(const String& Text) requires T::SqlComposition {
  const int eq = Text.Pos(u"=");
  if (Text.Length() < 2 || eq < 2) return;
  const String name = Text.SubString(1, eq - 1);
  const int row = listFilts_->GetFieldIndex(name);
  if (row < 0) return;
  TStringList* expressions = listFilts_->Column(TListFilts::lfExpression);
  TStringList* configs = listFilts_->Column(TListFilts::lfConfig);
  // After a restore the value columns may have no entry for the row yet.
  for (TStringList* column : {expressions, configs})
    while (column->Count() <= row) column->Add(u" ");
  const String oldExpression = expressions->Strings(row), oldConfig = configs->Strings(row);
  const String oldText = listFilts_->FilterText();
  ApplyListFilter(
      [&] {
        expressions->SetStrings(row, Text.SubString(eq + 1, Text.Length() - eq));
        configs->SetStrings(row, u"00");
        listFilts_->GenerateFilter();
        return true;
      },
      [&] {
        expressions->SetStrings(row, oldExpression);
        configs->SetStrings(row, oldConfig);
        listFilts_->SetFilterText(oldText);
      });
}

template <class B, class T>
bool TVeskBody<B, T>::SetFilterOnServer(TField* Field, const String& Value, bool Multi, TComponent* Grid)
    requires T::SqlComposition {
  const String name = alias_.IsEmpty() ? Field->FieldName() : alias_ + u"." + Field->FieldName();
  if (Value.IsEmpty()) {
    const String state = listFilts_->GetState();
    const String input = Grid ? Field->DisplayText() : String();
    return ApplyListFilter([&] { return ShowFindFilterForm(listFilts_.get(), name, input); },
                           [&] { listFilts_->SetState(state); });
  }
  String condition = Multi ? name + u" IN(" + Value + u")" : name + u"='" + Value + u"'";
  if (!listFilts_->FilterText().IsEmpty()) condition = u"(" + listFilts_->FilterText() + u")AND " + condition;
  const String oldFilter = filter_;
  try {
    setVeskSQLComp(vscFilter, condition);
    // "5" names no field: the clicked field's own row stays unfiltered.
    listFilts_->SetFieldExpr(u"5", Value);
    listFilts_->SetFilterText(condition);
  } catch (const Exception& e) {
    ShowMessage(e.Message);
    ComposeKeepingList(oldFilter, true);
  }
  return true;
}

template <class B, class T>
bool TVeskBody<B, T>::RefreshAfterWrite() const {
  if constexpr (T::SqlComposition) return veskSQLServer_ && !this->CachedUpdates() && !editRefreshNotNeed_;
  else return false;
}

// ---- Session group --------------------------------------------------------------------

template <class B, class T>
void TVeskBody<B, T>::CheckLockMode() requires T::SessionGroup {
  if (Trim(this->SQLLock()->Text()).IsEmpty() && this->LockMode() == lmPessimistic && autonomous_)
    this->SetLockMode(lmNone);
}

template <class B, class T>
TOraSession* TVeskBody<B, T>::TransactionSession() const {
  if constexpr (T::SessionGroup) {
    TOraSession* session = this->UsedSession();
    return session && session->Connected() ? session : nullptr;
  } else {
    return nullptr;
  }
}

template <class B, class T>
void TVeskBody<B, T>::AutoStartTransaction() {
  if (!transAutoStart_) return;
  if (TOraSession* session = TransactionSession(); session && !session->InTransaction()) session->StartTransaction();
}

template <class B, class T>
void TVeskBody<B, T>::PrepareXSingleRowQuery(const String& KeyFields, const Variant& KeyValues) requires
    T::SessionGroup {
  singleRowValues_ = KeyValues;
  singleRowKeys_.Clear();
  const String names = StringReplace(KeyFields, u",", u";", TReplaceFlags{rfReplaceAll});
  int start = 1;
  for (int i = 1; i <= names.Length() + 1; ++i) {
    if (i <= names.Length() && names[i] != u';') continue;
    String name = Trim(names.SubString(start, i - start));
    start = i + 1;
    if (!name.IsEmpty()) singleRowKeys_.Add(name);
  }
  const int given = VarIsArray(KeyValues) ? VarArrayHighBound(KeyValues, 1) + 1 : 1;
  if (given != singleRowKeys_.Count()) throw Exception(u"Количество параметров не соответствует количеству условий");
  String condition;
  for (int i = 0; i < singleRowKeys_.Count(); ++i) {
    const String& name = singleRowKeys_.Strings(i);
    condition += (i > 0 ? u" and " : u"") + name + u" = :p__" + name;
  }
  condition += u" ";
  // A re-query of the same condition must run again with the new values,
  // and the filters outlive it as they outlive the composer's reopens.
  selfClose_ = true;
  try {
    this->Close();
    this->SetFilterSQL(condition);
  } catch (...) {
    selfClose_ = false;
    throw;
  }
  selfClose_ = false;
  this->Open();
}

// ---- Locate, Lookup, aggregates -------------------------------------------------------------

namespace vesk_detail {
// Sets a flag for the life of a scope, exceptions included.
class TFlagGuard {
 public:
  explicit TFlagGuard(bool& Flag) : flag_(Flag) { flag_ = true; }
  ~TFlagGuard() { flag_ = false; }
  TFlagGuard(const TFlagGuard&) = delete;
  TFlagGuard& operator=(const TFlagGuard&) = delete;

 private:
  bool& flag_;
};

// A key or result value as the single-row cache writes it.
inline String CacheText(const Variant& Value) {
  if (!VarIsArray(Value)) return VarToStr(Value);
  String text;
  for (int i = VarArrayLowBound(Value, 1); i <= VarArrayHighBound(Value, 1); ++i)
    text += (text.IsEmpty() ? u"" : u";") + VarToStr(Value.GetElement(i));
  return text;
}
}  // namespace vesk_detail

template <class B, class T>
bool TVeskBody<B, T>::Locate(const String& KeyFields, const Variant& KeyValues, TLocateOptions Options) {
  if constexpr (T::LocateLookup) {
    if (CurrentRecordCount() == 0) return false;
    if (OnVESKLocateEvent && !inLocateEvent_) {
      vesk_detail::TFlagGuard inside(inLocateEvent_);
      return OnVESKLocateEvent(KeyFields, KeyValues, VeskLocateOptionsCode(Options));
    }
    if constexpr (T::SessionGroup) {
      if (singleRow_) {
        PrepareXSingleRowQuery(KeyFields, KeyValues);
        return CurrentRecordCount() != 0;
      }
    }
  }
  return B::Locate(KeyFields, KeyValues, Options);
}

template <class B, class T>
Variant TVeskBody<B, T>::Lookup(const String& KeyFields, const Variant& KeyValues, const String& ResultFields) {
  if constexpr (T::LocateLookup) {
    if (OnVESKLookupEvent && !inLookupEvent_) {
      vesk_detail::TFlagGuard inside(inLookupEvent_);
      return OnVESKLookupEvent(KeyFields, KeyValues, ResultFields);
    }
    if constexpr (T::SessionGroup) {
      if (singleRow_) {
        if (VarIsNull(KeyValues) || VarIsEmpty(KeyValues)) return Null();
        if (lookupCache_.Count() > 1000) lookupCache_.Clear();
        const int line = lookupCache_.IndexOfName(vesk_detail::CacheText(KeyValues));
        if (line >= 0) return lookupCache_.ValueFromIndex(line).SubString(1, 255);
        PrepareXSingleRowQuery(KeyFields, KeyValues);
        if (CurrentRecordCount() == 0) return Null();
        Variant result = this->FieldValues(ResultFields);
        lookupCache_.Add(vesk_detail::CacheText(this->FieldValues(KeyFields)) + u"=" +
                         vesk_detail::CacheText(result));
        return result;
      }
    }
  }
  return B::Lookup(KeyFields, KeyValues, ResultFields);
}

template <class B, class T>
String TVeskBody<B, T>::sgCFunc(TVeskFunc Func, const String& Field, const String& Where) requires T::CFunc {
  static constexpr const char16_t* kFunctions[] = {u"SUM", u"MIN", u"MAX", u"AVG"};
  const String function = Func >= vfSum && Func <= vfAvg ? String(kFunctions[Func]) : String();
  String condition = Where;
  if (condition.IsEmpty() && this->Filtered() && !this->Filter().IsEmpty()) condition = this->Filter();
  String text = u"SELECT " + function + u"(" + Field + u")  SSF FROM (" + this->GetFinalSQL() + u")";
  if (!condition.IsEmpty()) text += u" where " + condition;
  TOraQuery query(nullptr);
  query.SetSession(this->UsedSession());
  query.SQL()->SetText(text);
  query.Params()->AssignValues(this->Params());
  query.Open();
  String result = query.FieldByName(u"SSF")->AsString();
  query.Close();
  return result;
}

template <class B, class T>
void TVeskBody<B, T>::Resync(TResyncMode Mode) {
  try {
    B::Resync(Mode);
  } catch (Exception& e) {
    // The cursor is lost: take a fresh one, and still tell the caller.
    if (e.Message.Pos(u"ORA-01002") == 1) {
      this->Close();
      this->Open();
    }
    if (e.Message.Pos(u"ORA-01722") == 1) return;
    e.Message = u"Error in " + this->Name() + u".Resync():\n" + e.Message;
    throw;
  }
}

// ---- Hooks ----------------------------------------------------------------------------

template <class B, class T>
void TVeskBody<B, T>::Notification(TComponent* AComponent, TOperation Operation) {
  if (Operation == opRemove) {
    if (AComponent == statusBar_) statusBar_ = nullptr;
    if (AComponent == veskNav_) veskNav_ = nullptr;
  }
  B::Notification(AComponent, Operation);
}

template <class B, class T>
bool TVeskBody<B, T>::GetCanModify() const {
  bool result = B::GetCanModify();
  if constexpr (T::SessionGroup) {
    if (result && !notReadOnly_) {
      auto* session = dynamic_cast<TVeskOraSession*>(this->Session());
      if (session && session->Connected() && session->OnVESKReadOnlyMode)
        result = !session->GetVESKReadOnlyMode(const_cast<TVeskBody*>(this));
    }
  }
  return result;
}

template <class B, class T>
void TVeskBody<B, T>::DoBeforeOpen() {
  if constexpr (kSql) {
    if (!this->Session()) this->SetSession(DefaultSession());
  }
  if constexpr (T::SessionGroup) {
    if (singleRow_ && singleRowKeys_.Count() == 1) {
      this->ParamByName(u"p__" + singleRowKeys_.Strings(0))->SetValue(singleRowValues_);
    } else if (singleRow_ && singleRowKeys_.Count() > 1) {
      for (int i = 0; i < singleRowKeys_.Count(); ++i)
        if (TParam* param = this->FindParam(u"p__" + singleRowKeys_.Strings(i)))
          param->SetValue(singleRowValues_.GetElement(VarArrayLowBound(singleRowValues_, 1) + i));
    }
  }
  B::DoBeforeOpen();
}

template <class B, class T>
void TVeskBody<B, T>::OpenCursor(bool InfoQuery) {
  if constexpr (T::SessionGroup) {
    auto* session = dynamic_cast<TVeskOraSession*>(this->Session());
    if (!Designing() && !enableAutoConnect_ && session && !session->Connected() && !session->EnableAutoConnect()) {
      // Nothing is opened and nothing is said; DoAfterOpen takes the
      // dataset back to inactive.
      refusedOpen_ = true;
      return;
    }
  }
  const bool noFields = this->FieldCount() == 0;
  if constexpr (kSql) {
    try {
      B::OpenCursor(InfoQuery);
    } catch (Exception& e) {
      e.Message = u"Error " + e.ClassName() + u" opening DataSet " + GetDataSetName(this) + u":\n\n" + e.Message +
                  u"\n" + u"SQL text:\n" + this->GetFinalSQL();
      throw;
    }
  } else {
    B::OpenCursor(InfoQuery);
  }
  searchMiss_.Name = String();
  if (InfoQuery) return;
  if (noFields) SetDesignFromSQL(this);
  if (Designing()) return;
  SetupFieldsAfterOpen(this);
  const std::vector<TDataSource*> sources = this->DataSources();
  for (auto it = sources.rbegin(); it != sources.rend(); ++it) DataSourceOpen(*it);
}

template <class B, class T>
void TVeskBody<B, T>::DoAfterOpen() {
  if (refusedOpen_) {
    refusedOpen_ = false;
    this->SetState(dsInactive);
    return;
  }
  B::DoAfterOpen();
  if (showSummary_) XTTCalcSummaries();
  if constexpr (T::SqlComposition) {
    if (refill_) {
      listFilts_->ClearAll();
      listFilts_->AddFields(this->Fields());
    }
  }
}

template <class B, class T>
void TVeskBody<B, T>::DoAfterClose() {
  filterLists_.Reset();
  B::DoAfterClose();
  if (!Designing() && showSummary_) ClearStatusPanels(XTTStatusBar());
  if (selfClose_) return;
  freeFilters(false);
  freeDefFV();
}

template <class B, class T>
void TVeskBody<B, T>::DoBeforeScroll() {
  if (walking_) return;
  B::DoBeforeScroll();
  if (!veskMode_ || !tblIsEdit_) return;
  if (veskCom_ != dsgInsert && !veskModeNotAbort_ && !(veskCom_ == dsgPost && ze5EnableScrollBeforePost_))
    CheckStateChange(this->Modified() ? dsgPost : dsgCancel);
  tblIsEdit_ = false;
}

template <class B, class T>
void TVeskBody<B, T>::DoAfterScroll() {
  if (walking_) return;
  B::DoAfterScroll();
  if (veskMode_ && tblIsEdit_ && veskCom_ == dsgInsert) veskCom_ = dsgEdit;
}

template <class B, class T>
void TVeskBody<B, T>::DoBeforeEdit() {
  if constexpr (kOra && !kTable) {
    if (Trim(this->SQLUpdate()->Text()).IsEmpty()) Abort();
  }
  if constexpr (kSql) {
    if (!notReadOnly_ && IsDataReadOnly()) Abort();
  }
  if constexpr (T::SessionGroup) CheckLockMode();
  searchMiss_.Name = String();
  if (veskMode_) {
    if (veskCom_ != dsgEdit && !veskModeNotAbort_) CheckStateChange(dsgEdit);
    veskCom_ = dsgEdit;
  }
  B::DoBeforeEdit();
  AutoStartTransaction();
}

template <class B, class T>
void TVeskBody<B, T>::DoAfterEdit() {
  B::DoAfterEdit();
  if (veskMode_ && veskCom_ == dsgEdit) tblIsEdit_ = true;
  TblBegEdit();
}

template <class B, class T>
void TVeskBody<B, T>::DoBeforeInsert() {
  if constexpr (kOra) {
    if (Trim(this->SQLInsert()->Text()).IsEmpty()) Abort();
  }
  if constexpr (kSql) {
    if (!notReadOnly_ && IsDataReadOnly()) Abort();
  }
  if (veskMode_ && (tblIsEdit_ || veskCom_ != dsgInsert)) CheckStateChange(dsgInsert);
  B::DoBeforeInsert();
  AutoStartTransaction();
}

template <class B, class T>
void TVeskBody<B, T>::DoAfterInsert() {
  B::DoAfterInsert();
  if (veskMode_ && !tblIsEdit_ && veskCom_ == dsgInsert) tblIsEdit_ = true;
  TblBegEdit();
  if constexpr (T::SqlComposition) {
    if (!paramsNotCPL_) FillDetailFieldsFromMaster(this->DataSource());
  }
  ApplySearchMiss(this, searchMiss_);
  ApplyDefaultValues(this, defaults_);
}

template <class B, class T>
void TVeskBody<B, T>::DoBeforePost() {
  if (veskMode_ && veskCom_ != dsgPost && !(veskModeNotAbort_ && veskModePostAuto_)) CheckStateChange(dsgPost);
  if (showDBMSOutput_) TGridPropCmp::ClearDBMSOutput(this);
  B::DoBeforePost();
}

template <class B, class T>
void TVeskBody<B, T>::DoAfterPost() {
  if (veskMode_) {
    tblIsEdit_ = false;
    veskCom_ = dsgInactive;
  }
  TblEndEdit();
  if constexpr (T::SqlComposition) {
    if (RefreshAfterWrite()) RefreshQuery();
  }
  B::DoAfterPost();
  if (transAutoEnd_) {
    if (TOraSession* session = TransactionSession(); session && session->InTransaction()) session->Commit();
  }
  if (showSummary_) XTTCalcSummaries();
  if (masterRefresh_) MasterRefresh(this);
  if (showDBMSOutput_) TGridPropCmp::ShowDBMSOutput(this);
}

template <class B, class T>
void TVeskBody<B, T>::DoBeforeCancel() {
  B::DoBeforeCancel();
  if (veskMode_ && veskCom_ != dsgCancel && !(veskModeNotAbort_ && veskModePostAuto_)) CheckStateChange(dsgCancel);
  if (transAutoEndCheck_) {
    TOraSession* session = TransactionSession();
    if (session && session->InTransaction() && !ConfirmWarning(u"ORACLE Session Control!\nCancel all last changes?"))
      Abort();
  }
  if (showDBMSOutput_) TGridPropCmp::ShowDBMSOutput(this);
  tblIsEdit_ = false;
}

template <class B, class T>
void TVeskBody<B, T>::DoAfterCancel() {
  B::DoAfterCancel();
  if (veskMode_ && veskCom_ == dsgCancel) {
    tblIsEdit_ = false;
    veskCom_ = dsgInactive;
  }
  TblEndEdit();
  if (transAutoEnd_) {
    if (TOraSession* session = TransactionSession(); session && session->InTransaction()) session->Rollback();
  }
}

template <class B, class T>
void TVeskBody<B, T>::DoBeforeDelete() {
  if constexpr (T::SessionGroup) CheckLockMode();
  if constexpr (kOra && !kTable) {
    if (Trim(this->SQLDelete()->Text()).IsEmpty()) Abort();
  }
  if constexpr (kSql) {
    if (!notReadOnly_ && IsDataReadOnly()) Abort();
  }
  if (showDBMSOutput_) TGridPropCmp::ClearDBMSOutput(this);
  B::DoBeforeDelete();
  AutoStartTransaction();
}

template <class B, class T>
void TVeskBody<B, T>::DoAfterDelete() {
  if constexpr (T::SqlComposition) {
    if (RefreshAfterWrite()) RefreshQuery();
  }
  B::DoAfterDelete();
  if (showSummary_) XTTCalcSummaries();
  tblIsEdit_ = false;
  TblEndEdit();
  if (transAutoEnd_) {
    if (TOraSession* session = TransactionSession(); session && session->InTransaction()) session->Commit();
  }
  if (masterRefresh_) MasterRefresh(this);
  if (showDBMSOutput_) TGridPropCmp::ShowDBMSOutput(this);
}

template <class B, class T>
void TVeskBody<B, T>::DoBeforeRefresh() {
  if (veskRememberPos_) {
    VeskMemorizeFieldValues();
    if (memKeyText_.IsEmpty()) memBookmark_ = this->GetBookmark();
  }
  B::DoBeforeRefresh();
}

template <class B, class T>
void TVeskBody<B, T>::DoAfterRefresh() {
  searchMiss_.Name = String();
  B::DoAfterRefresh();
  if (masterRefresh_) {
    masterRefresh_ = false;
    try {
      MasterRefresh(this);
    } catch (...) {
      masterRefresh_ = true;
      throw;
    }
    masterRefresh_ = true;
  }
  if (veskRememberPos_) {
    restoring_ = true;
    auto forget = [this] {
      memKeyText_ = String();
      memKeyValue_ = Variant();
      memBookmark_ = TBookmark();
      restoring_ = false;
    };
    try {
      if (!memKeyText_.IsEmpty()) VeskLocate();
      else if (memBookmark_.Assigned() && !this->IsEmpty() && this->BookmarkValid(memBookmark_))
        this->GotoBookmark(memBookmark_);
    } catch (Exception& e) {
      forget();
      if (!e.Message.IsEmpty()) throw;
    }
    forget();
  }
  if (showSummary_) XTTCalcSummaries();
}

// ---- Publishing -----------------------------------------------------------------------------

template <class C>
void PublishVeskBody(TPublisher<C>& r) {
  using T = typename C::TTraits;
  r.Prop(u"VeskMode", &C::VeskMode, &C::SetVeskMode).Default = 0;
  r.Prop(u"VeskCom", &C::VeskCom, &C::SetVeskCom).Default = dsgInactive;
  r.Prop(u"VeskModeNotAbort", &C::VeskModeNotAbort, &C::SetVeskModeNotAbort).Default = 0;
  r.Prop(u"VeskModePostAuto", &C::VeskModePostAuto, &C::SetVeskModePostAuto).Default = 0;
  r.Prop(u"Ze5EnableScrollBeforePost", &C::Ze5EnableScrollBeforePost, &C::SetZe5EnableScrollBeforePost).Default = 0;
  r.Prop(u"VeskRememberPos", &C::VeskRememberPos, &C::SetVeskRememberPos).Default = 0;
  r.Prop(u"VeskKeyFields", &C::VeskKeyFields, &C::SetVeskKeyFields);
  r.Prop(u"VeskSQLServer", &C::VeskSQLServer, &C::SetVeskSQLServer).Default = 0;
  r.Prop(u"VeskNav", &C::VeskNav, &C::SetVeskNav);
  r.Prop(u"TblBegEdit", &C::TblBegEdit);
  r.Prop(u"TblEndEdit", &C::TblEndEdit);
  r.Prop(u"OnInLog", &C::OnInLog);
  r.Prop(u"OnVeskFilterRecord", &C::OnVeskFilterRecord);
  r.Prop(u"VeskExtSearch", &C::VeskExtSearch);
  r.Prop(u"VeskExtFilter", &C::VeskExtFilter);
  r.Prop(u"VeskExtFilterFree", &C::VeskExtFilterFree);
  r.Prop(u"VeskSQLChanged", &C::VeskSQLChanged);
  TPropInfo& bar = r.Prop(u"XTTStatusBar", &C::XTTStatusBarComponent, &C::SetXTTStatusBarComponent);
  bar.PropClass = &StatusBarClass;
  r.Prop(u"XTTShowSummary", &C::XTTShowSummary, &C::SetXTTShowSummary).Default = 0;
  r.Prop(u"XTTSummary", &C::XTTSummary, &C::SetXTTSummary);
  r.Prop(u"OnXTTChangeSum", &C::OnXTTChangeSum);
  r.Command(u"SearchCmdFirst", &C::SetSearchCmdFirst);
  r.Command(u"SearchCmdNext", &C::SetSearchCmdNext);
  r.Command(u"DefValCmdSet", &C::SetDefValCmdSet);
  r.Command(u"DefValCmdSetCurr", &C::SetDefValCmdSetCurr);
  r.Command(u"DefValCmdClear", &C::SetDefValCmdClear);
  r.Command(u"PrevRecCmdCopy", &C::SetPrevRecCmdCopy);
  if constexpr (T::SqlComposition) {
    r.Prop(u"VeskTableLive", &C::VeskTableLive, &C::SetVeskTableLive);
    r.Prop(u"VeskAlias", &C::VeskAlias, &C::SetVeskAlias);
    r.Prop(u"VeskGroupField", &C::VeskGroupField, &C::SetVeskGroupField);
    r.Prop(u"VeskFilter", &C::VeskFilter, &C::SetVeskFilter);
    r.Prop(u"VeskFilterSYS", &C::VeskFilterSYS, &C::SetVeskFilterSYS);
    r.Prop(u"VeskSQL1", &C::VeskSQL1, &C::SetVeskSQL1);
    r.Prop(u"VeskSimpleRefresh", &C::VeskSimpleRefresh, &C::SetVeskSimpleRefresh).Default = 0;
    r.Prop(u"VeskEditRefreshNotNeed", &C::VeskEditRefreshNotNeed, &C::SetVeskEditRefreshNotNeed).Default = 0;
    r.Prop(u"VeskParamsNotCPLAfterInsert", &C::VeskParamsNotCPLAfterInsert, &C::SetVeskParamsNotCPLAfterInsert)
        .Default = 0;
    r.Command(u"FilterCmdShow", &C::SetFilterCmdShow);
    r.Command(u"FilterCmdSetExpr", &C::SetFilterCmdSetExpr);
    r.Command(u"FilterCmdClear", &C::SetFilterCmdClear);
  }
  if constexpr (T::SessionGroup) {
    r.Prop(u"VeskNotReadOnly", &C::VeskNotReadOnly, &C::SetVeskNotReadOnly).Default = 0;
    r.Prop(u"TransVeskAutoStart", &C::TransVeskAutoStart, &C::SetTransVeskAutoStart).Default = 0;
    r.Prop(u"TransVeskAutoEnd", &C::TransVeskAutoEnd, &C::SetTransVeskAutoEnd).Default = 0;
    r.Prop(u"TransVeskAutoEndCheck", &C::TransVeskAutoEndCheck, &C::SetTransVeskAutoEndCheck).Default = 0;
    r.Prop(u"TrnsVeskAutonomous", &C::TrnsVeskAutonomous, &C::SetTrnsVeskAutonomous).Default = 0;
    r.Prop(u"Version", &C::Version, &C::SetVersion).Default = 0;
    r.Prop(u"VeskXsessionEnableIntegers", &C::VeskXsessionEnableIntegers, &C::SetVeskXsessionEnableIntegers)
        .Default = odacEIdefault;
    r.Prop(u"VeskXSingleRowQuery", &C::VeskXSingleRowQuery, &C::SetVeskXSingleRowQuery).Default = 0;
    r.Prop(u"EnableAutoConnect", &C::EnableAutoConnect, &C::SetEnableAutoConnect).Default = 0;
    r.Prop(u"VeskMasterRefresh", &C::VeskMasterRefresh, &C::SetVeskMasterRefresh).Default = 0;
    r.Prop(u"ShowDBMSOutput", &C::ShowDBMSOutput, &C::SetShowDBMSOutput).Default = 0;
    r.Prop(u"SkipRefreshRecord", &C::SkipRefreshRecord, &C::SetSkipRefreshRecord).Default = 0;
  }
  if constexpr (T::LocateLookup) {
    r.Prop(u"OnVESKLocateEvent", &C::OnVESKLocateEvent);
    r.Prop(u"OnVESKLookupEvent", &C::OnVESKLookupEvent);
  }
}

#include "filter/vesksort.h"

#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

#include "platform/db/dadataset.h"
#include "platform/db/fields.h"
#include "platform/db/memdataset.h"
#include "platform/db/orasession.h"
#include "platform/rtl/stringlist.h"
#include "platform/rtl/typinfo.h"
#include "platform/ui/dbgrids.h"
#include "platform/ui/forms.h"

namespace {

// A sort value with a total order: nulls, then numbers and dates, then text.
struct TSortKey {
  int Rank = 0;
  double Number = 0;
  String Text;
};

TSortKey KeyOf(const Variant& v) {
  TSortKey key;
  if (v.IsNull() || v.IsEmpty()) return key;
  if (VarIsStr(v) || v.IsArray()) {
    key.Rank = 2;
    if (!v.IsArray()) key.Text = v.AsString();
    return key;
  }
  key.Rank = 1;
  key.Number = v.AsFloat();
  return key;
}

bool KeyLess(const TSortKey& a, const TSortKey& b) {
  if (a.Rank != b.Rank) return a.Rank < b.Rank;
  if (a.Rank == 1) return a.Number < b.Number;
  return a.Rank == 2 && a.Text.u16() < b.Text.u16();
}

// Every record's values, field by field, as read from First to Eof.
struct TRecordTable {
  int FieldCount = 0;
  std::vector<Variant> Cells;
  size_t Rows() const { return FieldCount == 0 ? 0 : Cells.size() / static_cast<size_t>(FieldCount); }
  const Variant& At(size_t row, int field) const { return Cells[row * static_cast<size_t>(FieldCount) + static_cast<size_t>(field)]; }
};

TRecordTable ReadRecords(TDataSet* ds) {
  TRecordTable table;
  table.FieldCount = ds->FieldCount();
  table.Cells.reserve(static_cast<size_t>(ds->RecordCount()) * static_cast<size_t>(table.FieldCount));
  for (ds->First(); !ds->Eof(); ds->Next())
    for (int f = 0; f < table.FieldCount; ++f) table.Cells.push_back(ds->Fields()->Fields(f)->Value());
  return table;
}

std::vector<size_t> SortedOrder(const TRecordTable& table, int field) {
  std::vector<TSortKey> keys;
  keys.reserve(table.Rows());
  for (size_t r = 0; r < table.Rows(); ++r) keys.push_back(KeyOf(table.At(r, field)));
  std::vector<size_t> order(table.Rows());
  std::iota(order.begin(), order.end(), size_t{0});
  std::stable_sort(order.begin(), order.end(), [&](size_t a, size_t b) { return KeyLess(keys[a], keys[b]); });
  return order;
}

// Appends the rows in the order given. Calculated and lookup fields are
// the dataset's own business and are not written.
void AppendRows(TDataSet* ds, const TRecordTable& table, const std::vector<size_t>& order, bool reverse) {
  const size_t n = order.size();
  for (size_t i = 0; i < n; ++i) {
    const size_t row = order[reverse ? n - 1 - i : i];
    ds->Append();
    for (int f = 0; f < table.FieldCount; ++f) {
      TField* field = ds->Fields()->Fields(f);
      if (field->FieldKind() == fkData) field->SetValue(table.At(row, f));
    }
    ds->Post();
  }
}

void DeleteAll(TDataSet* ds) {
  ds->First();
  while (ds->RecordCount() > 0) ds->Delete();
}

// The kit's switches that would act on every record written back, where
// the dataset publishes them: the editing guard would ask about each
// append, and the summaries would walk the whole table after each post.
class TKitSwitches {
 public:
  void Off(TDataSet* ds) {
    ds_ = ds;
    for (TSwitch& s : switches_) {
      if (!IsPropType(ds_, s.Name, tkEnumeration) || !GetPropBool(ds_, s.Name)) continue;
      SetPropBool(ds_, s.Name, false);
      s.WasOn = true;
    }
  }
  // Turns on again what Off turned off (the summaries compute once here).
  void Restore() {
    for (TSwitch& s : switches_)
      if (std::exchange(s.WasOn, false)) SetPropBool(ds_, s.Name, true);
  }

 private:
  struct TSwitch {
    const char16_t* Name;
    bool WasOn = false;
  };
  TDataSet* ds_ = nullptr;
  TSwitch switches_[2] = {{u"VeskMode"}, {u"XTTShowSummary"}};
};

void RewriteInMemory(TMemDataSet* ds, const TRecordTable& table, const std::vector<size_t>& order, bool reverse) {
  ds->Clear();
  try {
    AppendRows(ds, table, order, reverse);
  } catch (...) {
    if (ds->State() == dsInsert || ds->State() == dsEdit) ds->Cancel();
    ds->Clear();
    std::vector<size_t> original(table.Rows());
    std::iota(original.begin(), original.end(), size_t{0});
    AppendRows(ds, table, original, false);
    throw;
  }
}

void RewriteInTransaction(TCustomDADataSet* ds, const TRecordTable& table, const std::vector<size_t>& order,
                          bool reverse) {
  TOraSession* session = ds->UsedSession();
  if (session->InTransaction())
    DatabaseError(u"VeskSort: a transaction is open on the session; the records are not rewritten", ds);
  session->StartTransaction();
  try {
    DeleteAll(ds);
    AppendRows(ds, table, order, reverse);
    session->Commit();
  } catch (...) {
    if (ds->State() == dsInsert || ds->State() == dsEdit) ds->Cancel();
    session->Rollback();
    ds->Close();
    ds->Open();
    throw;
  }
}

}  // namespace

void VeskSort(TDataSet* DataSet, const String& FieldName, bool Descending) {
  if (!DataSet || DataSet->RecordCount() < 2) return;
  TField* sortField = DataSet->FieldByName(FieldName);
  auto* memory = dynamic_cast<TMemDataSet*>(DataSet);
  auto* database = dynamic_cast<TCustomDADataSet*>(DataSet);
  if (!memory && !database)
    DatabaseError(u"VeskSort: " + DataSet->ClassName() + u" can not be rewritten safely; the records are not sorted",
                  DataSet);
  DataSet->CheckBrowseMode();
  const Variant current = sortField->Value();
  // Clear drops the records a filter hides as well: they are read and
  // written back with the others. On a server the hidden rows are simply
  // not touched.
  const bool showHidden = memory && DataSet->Filtered();

  TKitSwitches switches;
  auto restore = [&] {
    switches.Restore();
    if (showHidden && !DataSet->Filtered()) DataSet->SetFiltered(true);
  };
  DataSet->DisableControls();
  try {
    if (showHidden) DataSet->SetFiltered(false);
    const TRecordTable table = ReadRecords(DataSet);
    const std::vector<size_t> order = SortedOrder(table, sortField->Index());
    switches.Off(DataSet);
    if (memory) RewriteInMemory(memory, table, order, Descending);
    else RewriteInTransaction(database, table, order, Descending);
    restore();
    if (!DataSet->Locate(FieldName, current, TLocateOptions())) DataSet->First();
  } catch (...) {
    // The sort's own error is the one to report.
    try {
      restore();
    } catch (const Exception&) {
    }
    DataSet->EnableControls();
    throw;
  }
  DataSet->EnableControls();
}

void VeskSort(TWinControl* Grid, const String& FieldName, bool Descending) {
  auto* grid = dynamic_cast<TCustomDBGrid*>(Grid);
  if (!grid || !grid->DataSource() || !grid->DataSource()->DataSet()) return;
  const int selected = grid->SelectedIndex();
  VeskSort(grid->DataSource()->DataSet(), FieldName, Descending);
  Application->ProcessMessages();
  grid->SetSelectedIndex(selected);
}

void ListApplyToDataSet(TDataSet* DataSet, TStrings* List) {
  if (!DataSet || !List || List->Count() == 0) return;
  if (DataSet->State() != dsEdit && DataSet->State() != dsInsert) return;
  const bool postEdit = !List->Values(u"AutoPostEdit").IsEmpty();
  if (!postEdit && List->Values(u"AutoPost").IsEmpty()) return;
  DataSet->Post();
  if (postEdit) DataSet->Edit();
}

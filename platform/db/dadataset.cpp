#include "platform/db/dadataset.h"

#include <cmath>

#include "platform/db/datasource.h"
#include "platform/db/sqlscan.h"

using RowId = TRecordStore::RowId;

namespace {

TFieldType FieldTypeOf(const TDbColumn& column, TDbKind firstValue) {
  switch (column.Type) {
    case dcInteger: return ftInteger;
    case dcFloat: return ftFloat;
    case dcNumber:
      if (column.Scale == 0 && column.Precision > 0 && column.Precision <= 9) return ftInteger;
      if (column.Scale == 0 && column.Precision > 9 && column.Precision <= 18) return ftLargeint;
      return ftFloat;
    case dcText: return ftString;
    case dcFixedText: return ftFixedChar;
    case dcDate: return ftDate;
    case dcDateTime: return ftDateTime;
    case dcTime: return ftTime;
    case dcBoolean: return ftBoolean;
    case dcBlob: return ftBlob;
    case dcClob: return ftMemo;
    case dcUnknown: break;
  }
  // An expression: the type of its first value decides.
  switch (firstValue) {
    case dkInteger: return ftLargeint;
    case dkFloat: return ftFloat;
    case dkDate: return ftDateTime;
    case dkBlob: return ftBlob;
    default: return ftString;
  }
}

bool IsDateType(TFieldType t) { return t == ftDate || t == ftTime || t == ftDateTime || t == ftTimeStamp; }

// Puts one engine value into a store cell of whatever kind the column is.
void StoreValue(TRecordStore& store, RowId row, int col, TDbKind kind, int64_t i, double d, std::string_view bytes) {
  if (kind == dkNull) return store.SetNull(row, col);
  switch (store.Kind(col)) {
    case ckInteger:
      if (kind == dkInteger) return store.SetInteger(row, col, i);
      if (kind == dkFloat || kind == dkDate) {
        if (std::isfinite(d) && std::fabs(d) < 9.2e18) return store.SetInteger(row, col, std::llround(d));
        return store.SetNull(row, col);
      } else {
        String text = String::FromUtf8(bytes);
        int64_t n;
        double f;
        if (TryStrToInt64(Trim(text), n)) return store.SetInteger(row, col, n);
        if (TryStrToFloat(Trim(text), f, TFormatSettings()) && std::fabs(f) < 9.2e18)
          return store.SetInteger(row, col, std::llround(f));
        return store.SetNull(row, col);
      }
    case ckFloat:
      if (kind == dkInteger) return store.SetFloat(row, col, static_cast<double>(i));
      if (kind == dkFloat || kind == dkDate) return store.SetFloat(row, col, d);
      {
        String text = Trim(String::FromUtf8(bytes));
        double f;
        TDateTime dt;
        if (TryStrToFloat(text, f, TFormatSettings())) return store.SetFloat(row, col, f);
        if (TryISOToDateTime(text, dt)) return store.SetFloat(row, col, dt.Val);
        return store.SetNull(row, col);
      }
    case ckText:
    case ckBlob:
      if (kind == dkText || kind == dkBlob) return store.SetBytes(row, col, bytes);
      if (kind == dkInteger) return store.SetBytes(row, col, IntToStr(i).ToUtf8());
      if (kind == dkDate) return store.SetBytes(row, col, DateTimeToISO(TDateTime(d)).ToUtf8());
      return store.SetBytes(row, col, FloatToStr(d, TFormatSettings()).ToUtf8());
  }
}

TDbValue CellToDbValue(const TField* f, bool null, int64_t i, double d, std::string_view bytes) {
  if (null) return TDbValue::Null();
  switch (f->ColumnKind()) {
    case ckInteger: return TDbValue::Integer(i);
    case ckFloat: return IsDateType(f->DataType()) ? TDbValue::Date(d) : TDbValue::FloatValue(d);
    case ckText: return TDbValue::TextValue(String::FromUtf8(bytes));
    case ckBlob: return TDbValue::Blob(std::string(bytes));
  }
  return TDbValue::Null();
}

bool StartsWithWord(const String& sql, const char16_t* word) {
  String t = UpperCase(TrimLeft(sql));
  String w(word);
  return t.SubString(1, w.Length()) == w;
}

}  // namespace

// ---- The updater ---------------------------------------------------------------

KELMAR_PUBLISH(TDADataSetUpdater) {}

String TDADataSetUpdater::GetUpdateStatement(TStatementType StatementType) {
  TStrings* text = dataSet_->UpdateSQL(StatementType);
  String sql = text ? TrimRight(text->Text()) : String();
  if (Trim(sql).IsEmpty()) sql = dataSet_->DefaultUpdateStatement(StatementType);
  return sql;
}

void TDADataSetUpdater::PerformSQL(const String& SQL, TStatementType StatementType) {
  std::unique_ptr<TDbStatement> st = dataSet_->RunWriteStatement(SQL);
  for (int i = 0; i < st->ParamCount(); ++i) {
    String name = st->ParamName(i);
    TDbValue out = st->OutValue(name);
    if (out.IsNull()) continue;
    if (TField* f = dataSet_->FindField(name)) dataSet_->StoreFieldValue(f, out);
    else if (TParam* p = dataSet_->FindParam(name)) p->SetValue(DbValueToVariant(out));
  }
  auto* ora = dynamic_cast<TOraDataSet*>(dataSet_);
  bool plain = StartsWithWord(SQL, u"UPDATE") || StartsWithWord(SQL, u"DELETE");
  if (ora && ora->Options()->StrictUpdate() && plain && (StatementType == stUpdate || StatementType == stDelete) &&
      st->RowsAffected() != 1)
    DatabaseError(String(StatementType == stUpdate ? u"Update" : u"Delete") + u" failed. Found " +
                      IntToStr(st->RowsAffected()) + u" records",
                  dataSet_);
}

bool TDADataSetUpdater::PerformRefreshRecord() {
  String sql = GetUpdateStatement(stRefresh);
  if (Trim(sql).IsEmpty()) DatabaseError(u"SQLRefresh is empty: the record cannot be refreshed", dataSet_);
  if (IsWhereClauseOnly(sql)) sql = u"SELECT * FROM (\n" + dataSet_->GetFinalSQL() + u"\n) " + Trim(sql);
  std::unique_ptr<TDbStatement> st = dataSet_->RunWriteStatement(sql);
  bool row = false;
  CheckDbStatus(st->Fetch(row));
  if (!row) DatabaseError(u"Refresh failed. Found 0 records", dataSet_);
  TRecordStore::RowId current;
  if (!dataSet_->CurrentRecord(current)) return false;
  for (int c = 0; c < st->ColumnCount(); ++c) {
    TField* f = dataSet_->FindField(st->Column(c).Name);
    if (f && f->Column() >= 0) TCustomDADataSet::CopyColumn(dataSet_->Store(), current, f->Column(), *st, c);
  }
  return true;
}

// ---- TCustomDADataSet ------------------------------------------------------------

KELMAR_PUBLISH(TCustomDADataSet) {
  r.Prop(u"SQL", &TCustomDADataSet::SQL, &TCustomDADataSet::SetSQL);
  r.Prop(u"FilterSQL", &TCustomDADataSet::FilterSQL, &TCustomDADataSet::SetFilterSQL);
  r.Prop(u"Params", &TCustomDADataSet::Params, &TCustomDADataSet::SetParams);
  r.Prop(u"Macros", &TCustomDADataSet::Macros, nullptr);
  r.Prop(u"SQLInsert", &TCustomDADataSet::SQLInsert, &TCustomDADataSet::SetSQLInsert);
  r.Prop(u"SQLUpdate", &TCustomDADataSet::SQLUpdate, &TCustomDADataSet::SetSQLUpdate);
  r.Prop(u"SQLDelete", &TCustomDADataSet::SQLDelete, &TCustomDADataSet::SetSQLDelete);
  r.Prop(u"SQLLock", &TCustomDADataSet::SQLLock, &TCustomDADataSet::SetSQLLock);
  r.Prop(u"SQLRefresh", &TCustomDADataSet::SQLRefresh, &TCustomDADataSet::SetSQLRefresh);
  r.Prop(u"FetchRows", &TCustomDADataSet::FetchRows, &TCustomDADataSet::SetFetchRows).Default = 25;
  r.Prop(u"UniDirectional", &TCustomDADataSet::UniDirectional, &TCustomDADataSet::SetUniDirectional).Default = 0;
  r.Prop(u"RefreshOptions", &TCustomDADataSet::RefreshOptions, &TCustomDADataSet::SetRefreshOptions);
  r.Prop(u"DMLRefresh", &TCustomDADataSet::DMLRefresh, &TCustomDADataSet::SetDMLRefresh).Default = 0;
  r.Prop(u"ReadOnly", &TCustomDADataSet::ReadOnly, &TCustomDADataSet::SetReadOnly).Default = 0;
  r.Prop(u"FullRefresh", &TCustomDADataSet::FullRefresh, &TCustomDADataSet::SetFullRefresh).Default = 0;
  r.Prop(u"KeyFields", &TCustomDADataSet::KeyFields, &TCustomDADataSet::SetKeyFields);
  r.Prop(u"Session", &TCustomDADataSet::Session, &TCustomDADataSet::SetSession);
  r.Prop(u"BeforeUpdateExecute", &TCustomDADataSet::BeforeUpdateExecute);
  r.Prop(u"AfterUpdateExecute", &TCustomDADataSet::AfterUpdateExecute);
}

TCustomDADataSet::TCustomDADataSet(TComponent* AOwner)
    : TDataSet(AOwner),
      sql_(std::make_unique<TStringList>()),
      params_(std::make_unique<TOraParams>()),
      macros_(std::make_unique<TMacros>()),
      updater_(std::make_unique<TDADataSetUpdater>(this)) {
  for (auto& s : statements_) s = std::make_unique<TStringList>();
  sql_->OnChange = Closure(this, &TCustomDADataSet::SQLTextChanged);
}

TCustomDADataSet::~TCustomDADataSet() {
  sql_->OnChange = nullptr;
  try {
    Close();
  } catch (...) {
    // Closing must not fail the destruction; the cursor goes with us.
  }
  if (attached_) attached_->DetachDataSet(this);
  if (session_) session_->RemoveFreeNotification(this);
}

void TCustomDADataSet::SQLChanged() {
  if (Active()) Close();
  std::vector<TSqlPlace> places = ScanSqlPlaces(sql_->Text());
  std::vector<TSqlPlace> extra = ScanSqlPlaces(filterSQL_);
  places.insert(places.end(), extra.begin(), extra.end());
  params_->Update(SqlPlaceNames(places, TSqlPlace::Param));
  macros_->Update(SqlPlaceNames(places, TSqlPlace::Macro));
  FieldDefs()->Clear();
}

void TCustomDADataSet::SetFilterSQL(const String& value) {
  if (value == filterSQL_) return;
  bool wasActive = Active();
  filterSQL_ = value;
  SQLChanged();
  if (wasActive) Open();
}

String TCustomDADataSet::BaseSQL() const {
  return ExpandSqlMacros(sql_->Text(), [this](const String& name) {
    TMacro* m = macros_->FindMacro(name);
    return m && m->Active() ? m->Value() : String();
  });
}

String TCustomDADataSet::GetFinalSQL() const {
  String base = TrimRight(BaseSQL());
  if (Trim(filterSQL_).IsEmpty()) return base;
  return u"SELECT * FROM (\n" + base + u"\n) WHERE " + filterSQL_;
}

TStrings* TCustomDADataSet::UpdateSQL(int StatementType) const {
  if (StatementType < int{stInsert} || StatementType > int{stRefresh}) return nullptr;
  return statements_[StatementType].get();
}

void TCustomDADataSet::SetFetchRows(int value) {
  if (value < 1) DatabaseError(u"FetchRows must be at least 1", this);
  fetchRows_ = value;
}

void TCustomDADataSet::SetUniDirectional(bool value) {
  if (value == uniDirectional_) return;
  CheckInactive();
  uniDirectional_ = value;
}

void TCustomDADataSet::SetSession(TOraSession* value) {
  if (value == session_) return;
  CheckInactive();
  if (session_) session_->RemoveFreeNotification(this);
  session_ = value;
  if (session_) session_->FreeNotification(this);
}

void TCustomDADataSet::Notification(TComponent* AComponent, TOperation Operation) {
  TDataSet::Notification(AComponent, Operation);
  if (Operation == opRemove && AComponent == session_) session_ = nullptr;
}

void TCustomDADataSet::SessionGone(TOraSession* session) {
  if (attached_ != session) return;
  try {
    Close();
  } catch (...) {
    // The session is going either way.
  }
  cursor_.reset();
  attached_ = nullptr;
  if (session_ == session) session_ = nullptr;
}

void TCustomDADataSet::SetUpdater(TDADataSetUpdater* value) {
  updater_.reset(value ? value : new TDADataSetUpdater(this));
}

// ---- Statements ----------------------------------------------------------------

std::unique_ptr<TDbStatement> TCustomDADataSet::Run(const String& sql, bool fromRecord) {
  TOraSession* session = UsedSession();
  if (!session->Connected()) session->Connect();
  if (attached_ != session) {
    if (attached_) attached_->DetachDataSet(this);
    attached_ = session;
    session->AttachDataSet(this);
  }
  std::unique_ptr<TDbStatement> st;
  CheckDbStatus(session->Connection()->Prepare(sql, st));
  for (int i = 0; i < st->ParamCount(); ++i) {
    String name = st->ParamName(i);
    TDbValue value;
    if (fromRecord) {
      value = ParamValueFor(name);
    } else if (TParam* p = params_->FindParam(name)) {
      value = VariantToDbValue(p->Value());
    }
    CheckDbStatus(st->Bind(name, value));
  }
  CheckDbStatus(st->Execute());
  return st;
}

TDbValue TCustomDADataSet::ParamValueFor(const String& name) const {
  RowId row;
  bool hasRow = CurrentRecord(row);
  if (name.Length() > 4 && SameText(name.SubString(1, 4), u"OLD_")) {
    TField* f = FindField(name.SubString(5, name.Length()));
    if (f && f->Column() >= 0 && hasRow) {
      int col = f->Column();
      if (State() == dsEdit || State() == dsInsert) {
        const TRecordStore::TRowImage& old = OldValues();
        if (static_cast<size_t>(col) < old.size()) {
          const TRecordStore::TCell& c = old[static_cast<size_t>(col)];
          return CellToDbValue(f, c.Null, c.Int, c.Float, c.Bytes);
        }
      }
      const TRecordStore& s = Store();
      bool null = s.IsNull(row, col);
      return CellToDbValue(f, null, null || s.Kind(col) != ckInteger ? 0 : s.Integer(row, col),
                           null || s.Kind(col) != ckFloat ? 0 : s.Float(row, col),
                           null || s.Kind(col) < ckText ? std::string_view() : s.Bytes(row, col));
    }
  }
  if (TField* f = FindField(name); f && f->Column() >= 0 && hasRow) {
    const TRecordStore& s = Store();
    int col = f->Column();
    bool null = s.IsNull(row, col);
    return CellToDbValue(f, null, null || s.Kind(col) != ckInteger ? 0 : s.Integer(row, col),
                         null || s.Kind(col) != ckFloat ? 0 : s.Float(row, col),
                         null || s.Kind(col) < ckText ? std::string_view() : s.Bytes(row, col));
  }
  if (TParam* p = params_->FindParam(name)) return VariantToDbValue(p->Value());
  return TDbValue::Null();
}

void TCustomDADataSet::StoreFieldValue(TField* field, const TDbValue& value) {
  RowId row;
  if (field->Column() < 0 || !CurrentRecord(row)) return;
  std::string bytes = value.Kind == dkText ? value.Text.ToUtf8() : value.Bytes;
  StoreValue(Store(), row, field->Column(), value.Kind, value.Int, value.Float, bytes);
}

void TCustomDADataSet::CopyColumn(TRecordStore& store, RowId row, int column, const TDbStatement& st, int source) {
  TDbKind kind = st.Kind(source);
  switch (kind) {
    case dkNull: return store.SetNull(row, column);
    case dkInteger: return StoreValue(store, row, column, kind, st.AsInteger(source), 0, {});
    case dkFloat:
    case dkDate: return StoreValue(store, row, column, kind, 0, st.AsFloat(source), {});
    case dkText: return StoreValue(store, row, column, kind, 0, 0, st.AsUtf8(source));
    case dkBlob: return StoreValue(store, row, column, kind, 0, 0, st.AsBytes(source));
  }
}

// ---- Open, fetch, close --------------------------------------------------------------

namespace {

// One column of a fetched block into fresh store rows from `first` on. The
// kind the store column holds is looked at once; the values that already
// have it go straight in, the rest through the conversions.
void StoreColumn(TRecordStore& store, RowId first, int column, const TDbColumnCells& cells) {
  auto convert = [&](RowId row, const TDbCell& cell) {
    switch (cell.Kind) {
      case dkNull: return;
      case dkInteger: return StoreValue(store, row, column, cell.Kind, cell.Int, 0, {});
      case dkFloat:
      case dkDate: return StoreValue(store, row, column, cell.Kind, 0, cell.Float, {});
      case dkText:
      case dkBlob: return StoreValue(store, row, column, cell.Kind, 0, 0, cells.View(cell));
    }
  };
  RowId row = first;
  switch (store.Kind(column)) {
    case ckInteger:
      for (const TDbCell& cell : cells.Cells) {
        if (cell.Kind == dkInteger) store.SetInteger(row, column, cell.Int);
        else convert(row, cell);
        ++row;
      }
      break;
    case ckFloat:
      for (const TDbCell& cell : cells.Cells) {
        if (cell.Kind == dkFloat || cell.Kind == dkDate) store.SetFloat(row, column, cell.Float);
        else convert(row, cell);
        ++row;
      }
      break;
    case ckText:
    case ckBlob: {
      const TRecordStore::TBytesRun run = store.AddBytesRun(column, cells.Bytes);
      for (const TDbCell& cell : cells.Cells) {
        if (cell.Kind == dkText || cell.Kind == dkBlob) store.SetBytesFromRun(row, column, run, cell.Offset, cell.Length);
        else convert(row, cell);
        ++row;
      }
      break;
    }
  }
}

}  // namespace

void TCustomDADataSet::InternalOpen(bool InfoQuery) {
  if (DataSource() && DataSource()->DataSet() && DataSource()->DataSet()->Active()) MasterParamsChanged();
  String sql = GetFinalSQL();
  if (Trim(sql).IsEmpty()) DatabaseError(u"No SQL statement to open", this);
  cursor_ = Run(sql, false);
  pendingRow_ = false;
  if (!cursor_->ReturnsRows()) {
    cursor_.reset();
    DatabaseError(u"The SQL statement does not return rows", this);
  }
  DefineFields();
}

void TCustomDADataSet::DefineFields() {
  bool unknown = false;
  for (int c = 0; c < cursor_->ColumnCount(); ++c) unknown = unknown || cursor_->Column(c).Type == dcUnknown;
  if (unknown) {
    bool row = false;
    CheckDbStatus(cursor_->Fetch(row));
    pendingRow_ = row;
  }
  FieldDefs()->Clear();
  for (int c = 0; c < cursor_->ColumnCount(); ++c) {
    const TDbColumn& col = cursor_->Column(c);
    String name = col.Name.IsEmpty() ? u"COLUMN" + IntToStr(c + 1) : col.Name;
    for (int n = 1; FieldDefs()->IndexOf(name) >= 0; ++n) name = col.Name + u"_" + IntToStr(n);
    TFieldDef* def = FieldDefs()->Add(name, FieldTypeOf(col, pendingRow_ ? cursor_->Kind(c) : dkNull), col.Size);
    def->SetPrecision(col.Precision);
    if (!col.TableName.IsEmpty() && !col.OriginName.IsEmpty()) def->SetOrigin(col.TableName + u"." + col.OriginName);
  }
}

int TCustomDADataSet::FetchRecords(int count) {
  int n = 0;
  TRecordStore& store = Store();
  const int columns = cursor_ ? std::min(store.ColumnCount(), cursor_->ColumnCount()) : 0;
  if (pendingRow_ && count > 0) {
    // The row stepped to when the fields were defined.
    pendingRow_ = false;
    RowId r = store.AddRow();
    for (int c = 0; c < columns; ++c) CopyColumn(store, r, c, *cursor_, c);
    AddFetchedRow(r);
    ++n;
  }
  if (!cursor_ || n >= count) return n;
  CheckDbStatus(cursor_->FetchBlock(block_, count - n));
  const int rows = block_.Rows;
  if (rows < count - n) cursor_.reset();
  if (rows == 0) return n;
  const RowId first = store.AddRows(static_cast<size_t>(rows));
  for (int c = 0; c < columns; ++c) StoreColumn(store, first, c, block_.Columns[static_cast<size_t>(c)]);
  for (int r = 0; r < rows; ++r) AddFetchedRow(first + static_cast<RowId>(r));
  return n + rows;
}

void TCustomDADataSet::InternalClose() {
  cursor_.reset();
  pendingRow_ = false;
}

void TCustomDADataSet::InternalRefresh() {
  cursor_ = Run(GetFinalSQL(), false);
  pendingRow_ = false;
  ResetRecords();
}

// ---- Writing ----------------------------------------------------------------------

void TCustomDADataSet::InternalEdit() {
  auto* ora = dynamic_cast<TOraDataSet*>(this);
  if (ora && ora->LockMode() == lmPessimistic) {
    String lock = updater_->GetUpdateStatement(stLock);
    if (!Trim(lock).IsEmpty()) updater_->PerformSQL(lock, stLock);
  }
  if (refreshOptions_.Contains(roBeforeEdit)) updater_->PerformRefreshRecord();
}

void TCustomDADataSet::InternalPost(bool inserting) {
  TStatementType kind = inserting ? stInsert : stUpdate;
  String sql = updater_->GetUpdateStatement(kind);
  if (Trim(sql).IsEmpty())
    DatabaseError(inserting ? u"SQLInsert is empty: the record cannot be inserted"
                            : u"SQLUpdate is empty: the record cannot be updated",
                  this);
  BeforeUpdateExecute(this);
  updater_->PerformSQL(sql, kind);
  AfterUpdateExecute(this);
  if (dmlRefresh_ || refreshOptions_.Contains(inserting ? roAfterInsert : roAfterUpdate))
    updater_->PerformRefreshRecord();
}

void TCustomDADataSet::InternalDelete() {
  String sql = updater_->GetUpdateStatement(stDelete);
  if (Trim(sql).IsEmpty()) DatabaseError(u"SQLDelete is empty: the record cannot be deleted", this);
  BeforeUpdateExecute(this);
  updater_->PerformSQL(sql, stDelete);
  AfterUpdateExecute(this);
}

void TCustomDADataSet::RefreshRecord() {
  CheckActive();
  if (IsEmpty()) return;
  if (updater_->PerformRefreshRecord()) Resync(TResyncMode());
}

void TCustomDADataSet::ExecSQL() {
  std::unique_ptr<TDbStatement> st = Run(GetFinalSQL(), false);
  rowsAffected_ = st->RowsAffected();
  for (int i = 0; i < params_->Count(); ++i) {
    TParam* p = params_->Items(i);
    TDbValue out = st->OutValue(p->Name());
    if (!out.IsNull()) p->SetValue(DbValueToVariant(out));
  }
}

// ---- Master and detail ---------------------------------------------------------------

bool TCustomDADataSet::MasterParamsChanged() {
  TDataSet* master = DataSource() ? DataSource()->DataSet() : nullptr;
  if (!master || !master->Active()) return false;
  bool changed = false;
  for (int i = 0; i < params_->Count(); ++i) {
    TParam* p = params_->Items(i);
    TField* f = master->FindField(p->Name());
    if (!f) continue;
    Variant v = f->Value();
    if (!p->Bound() || p->Value().VarType() != v.VarType() || !(p->IsNull() ? v.IsNull() : VarSameValue(p->Value(), v))) {
      p->SetValue(v);
      changed = true;
    }
  }
  return changed;
}

void TCustomDADataSet::MasterChanged() {
  if (!Active()) return;
  if (!MasterParamsChanged()) return;
  Close();
  Open();
}

// ---- The Oracle family ---------------------------------------------------------------

KELMAR_PUBLISH(TOraDataSetOptions) {
  r.Prop(u"StrictUpdate", &TOraDataSetOptions::StrictUpdate, &TOraDataSetOptions::SetStrictUpdate).Default = 1;
}

void TOraDataSetOptions::Assign(TPersistent* Source) {
  auto* o = dynamic_cast<TOraDataSetOptions*>(Source);
  if (!o) return TPersistent::Assign(Source);
  strictUpdate_ = o->strictUpdate_;
}

KELMAR_PUBLISH(TOraDataSet) {
  r.Prop(u"LockMode", &TOraDataSet::LockMode, &TOraDataSet::SetLockMode).Default = 0;
  r.Prop(u"Options", &TOraDataSet::Options, &TOraDataSet::SetOptions);
  r.Prop(u"ObjectView", &TOraDataSet::ObjectView, &TOraDataSet::SetObjectView).Default = 0;
}

TOraDataSet::TOraDataSet(TComponent* AOwner)
    : TCustomDADataSet(AOwner), options_(std::make_unique<TOraDataSetOptions>()) {
  SetUpdater(new TOraDataSetUpdater(this));
}

TOraDataSet::~TOraDataSet() {
  try {
    Close();
  } catch (...) {
    // As in the base: nothing may escape a destructor.
  }
}

KELMAR_PUBLISH(TOraDataSetUpdater) {}
KELMAR_PUBLISH(TOraQuery) {}
KELMAR_PUBLISH(TSmartQuery) {}
KELMAR_PUBLISH(TOraNestedTable) {}

KELMAR_PUBLISH(TOraTable) {
  r.Prop(u"TableName", &TOraTable::TableName, &TOraTable::SetTableName);
  r.Prop(u"OrderFields", &TOraTable::OrderFields, &TOraTable::SetOrderFields);
}

void TOraTable::SetTableName(const String& value) {
  if (value == tableName_) return;
  if (Active()) Close();
  tableName_ = value;
  FieldDefs()->Clear();
}

void TOraTable::SetOrderFields(const String& value) {
  if (value == orderFields_) return;
  if (Active()) Close();
  orderFields_ = value;
}

String TOraTable::BaseSQL() const {
  if (Trim(tableName_).IsEmpty()) return TCustomDADataSet::BaseSQL();
  String sql = u"SELECT * FROM " + tableName_;
  if (!Trim(orderFields_).IsEmpty()) sql += u" ORDER BY " + StringReplace(orderFields_, u";", u", ", TReplaceFlags() << rfReplaceAll);
  return sql;
}

String TOraTable::DefaultUpdateStatement(TStatementType StatementType) const {
  if (Trim(tableName_).IsEmpty()) return String();
  return MakeTableStatement(this, tableName_, KeyFields(), StatementType);
}

KELMAR_PUBLISH(TOraStoredProc) {
  r.Prop(u"StoredProcName", &TOraStoredProc::StoredProcName, &TOraStoredProc::SetStoredProcName);
}

void TOraStoredProc::ExecProc() {
  TOraSession* session = UsedSession();
  if (!session->Connected()) session->Connect();
  const TOraProcedure* proc = session->FindProcedure(storedProcName_);
  if (!proc)
    CheckDbStatus(TDbStatus::Error(6550, u"PLS-00201: identifier '" + UpperCase(storedProcName_) + u"' must be declared"));
  (*proc)(*Params());
}

// ---- Generated statements ---------------------------------------------------------------

String MakeTableStatement(const TDataSet* dataSet, const String& table, const String& keyFields, TStatementType kind) {
  std::vector<TField*> data;
  for (TField* f : *dataSet->Fields())
    if (f->FieldKind() == fkData) data.push_back(f);
  std::vector<TField*> keys;
  if (!Trim(keyFields).IsEmpty()) {
    dataSet->GetFieldList(keys, keyFields);
  } else {
    for (TField* f : data)
      if (!f->IsBlob()) keys.push_back(f);
  }
  String where;
  for (TField* f : keys) {
    if (!where.IsEmpty()) where += u" AND ";
    const String& n = f->FieldName();
    where += Trim(keyFields).IsEmpty() ? u"(" + n + u" = :OLD_" + n + u" OR " + n + u" IS NULL AND :OLD_" + n + u" IS NULL)"
                                      : n + u" = :OLD_" + n;
  }
  String list, values, sets;
  for (TField* f : data) {
    const String& n = f->FieldName();
    list += (list.IsEmpty() ? u"" : u", ") + n;
    values += (values.IsEmpty() ? u":" : u", :") + n;
    sets += (sets.IsEmpty() ? u"" : u", ") + n + u" = :" + n;
  }
  switch (kind) {
    case stInsert: return data.empty() ? String() : u"INSERT INTO " + table + u" (" + list + u") VALUES (" + values + u")";
    case stUpdate:
      return data.empty() || keys.empty() ? String() : u"UPDATE " + table + u" SET " + sets + u" WHERE " + where;
    case stDelete: return keys.empty() ? String() : u"DELETE FROM " + table + u" WHERE " + where;
    case stRefresh: return keys.empty() ? String() : u"SELECT * FROM " + table + u" WHERE " + where;
    default: return String();
  }
}

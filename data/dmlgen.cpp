#include "data/dmlgen.h"

#include "platform/rtl/sysutils.h"
#include "platform/ui/dialogs.h"

const char16_t* const kDMLColumnsSQL =
    u"Select cols.column_name as Name,nullable,data_type as Type,"
    u"Decode(data_type,'NUMBER',data_precision,data_length)Length,data_precision Precision, data_scale Scale, "
    u"data_length dlength FROM all_tab_columns cols where (owner = sys_context ('USERENV', 'SESSION_USER') or "
    u"(owner, table_name) in (select table_owner, table_name from user_synonyms)) and cols.table_name = :TABNAME "
    u"order by column_id";

namespace {

const char16_t* const kSelField = u"SelField";
const char16_t* const kDMLField = u"DMLField";
const char16_t* const kIsKey = u"is_key";
const char16_t* const kKeyDMLFieldEmpty = u"Incorrect key - DMLField is Empty ";

// The key names as the editor's edit holds them: split at ";" and ",".
std::vector<String> KeyNames(const String& text) {
  std::vector<String> names;
  String name;
  for (int i = 1; i <= text.Length() + 1; ++i) {
    if (i > text.Length() || text[i] == u';' || text[i] == u',') {
      if (!Trim(name).IsEmpty()) names.push_back(Trim(name));
      name = String();
    } else {
      name += text[i];
    }
  }
  return names;
}

String WithoutColon(const String& selField) {
  return !selField.IsEmpty() && selField[1] == u':' ? selField.SubString(2, selField.Length() - 1) : selField;
}

}  // namespace

TDMLGenerator::TDMLGenerator()
    : vt_(std::make_unique<TVirtualTable>(nullptr)),
      selPick_(std::make_unique<TStringList>()),
      dmlPick_(std::make_unique<TStringList>()) {
  vt_->SetName(u"VT");
  vt_->AddField(kSelField, ftString, 64);
  vt_->AddField(kDMLField, ftString, 64);
  vt_->AddField(kIsKey, ftString, 1);
}

TDMLGenerator::~TDMLGenerator() = default;

const String& TDMLGenerator::Statement(TStatementType Kind) const {
  if (Kind < stInsert || Kind > stRefresh) throw Exception(u"No write statement of kind " + IntToStr(int(Kind)));
  return statements_[Kind];
}

// ---- Filling VT ----------------------------------------------------------------------

std::vector<String> TDMLGenerator::Columns(const String& Table) const {
  TOraQuery query(nullptr);
  query.SetSession(session_);
  query.SQL()->SetText(kDMLColumnsSQL);
  query.ParamByName(u"TABNAME")->SetAsString(UpperCase(Table));
  query.Open();
  std::vector<String> names;
  for (; !query.Eof(); query.Next()) names.push_back(query.Fields()->Fields(0)->AsString());
  return names;
}

void TDMLGenerator::GetTableFields() {
  std::vector<String> selectColumns = Columns(selectTable_);
  std::vector<String> dmlColumns = Columns(dmlTable_);
  std::vector<String> keys = KeyNames(keyFields_);

  vt_->Open();
  vt_->Clear();
  selPick_->Clear();
  dmlPick_->Clear();
  auto append = [this](const String& selField, const String& key) {
    vt_->Append();
    vt_->FieldByName(kSelField)->SetAsString(selField);
    vt_->FieldByName(kIsKey)->SetAsString(key);
    vt_->Post();
    selPick_->Add(selField);
  };
  for (size_t i = 0; i < selectColumns.size(); ++i) {
    String selField = u":" + UpperCase(selectColumns[i]);
    String key;
    if (selField.Pos(u":NRDOC") == 1 || (i == 0 && selField == u":COD")) {
      key = u"1";
    } else {
      for (size_t k = 0; k < keys.size(); ++k)
        if (SameText(keys[k], selectColumns[i])) key = k + 1 == keys.size() && cbGenerateKeyValue ? u"2" : u"1";
    }
    append(selField, key);
  }
  append(u":ROWID", String());

  // Writing goes to the DML table's columns; the calculated helpers "CLC..."
  // are never written.
  for (const String& column : dmlColumns) {
    dmlPick_->Add(column);
    if (UpperCase(column).Pos(u"CLC") == 1) continue;
    if (vt_->Locate(kSelField, Variant(u":" + UpperCase(column)), TLocateOptions())) {
      vt_->Edit();
      vt_->FieldByName(kDMLField)->SetAsString(column);
      vt_->Post();
    }
  }
  dmlPick_->Add(u"ROWID");
  vt_->First();
}

// ---- Generating --------------------------------------------------------------------------

std::vector<TDMLGenerator::TRow> TDMLGenerator::Rows() const {
  std::vector<TRow> rows;
  TBookmark place = vt_->GetBookmark();
  for (vt_->First(); !vt_->Eof(); vt_->Next())
    rows.push_back({vt_->FieldByName(kSelField)->AsString(), vt_->FieldByName(kDMLField)->AsString(),
                    vt_->FieldByName(kIsKey)->AsString()});
  if (place.Assigned() && vt_->BookmarkValid(place)) vt_->GotoBookmark(place);
  return rows;
}

String TDMLGenerator::Param(const String& SelField) const {
  if (SelField.Length() >= 2 && SelField[1] == u':') return u":" + Q(WithoutColon(SelField));
  return SelField;
}

// The written columns and their values, each joined by ", ".
void TDMLGenerator::WrittenColumns(const std::vector<TRow>& rows, String& columns, String& values) const {
  for (const TRow& row : rows) {
    if (row.DMLField.IsEmpty()) continue;
    if (row.SelField.IsEmpty()) throw Exception(row.DMLField + u"  - DMLField is not empty \n but SelField Is Empty");
    if (!columns.IsEmpty()) {
      columns += u", ";
      values += u", ";
    }
    columns += Q(row.DMLField);
    values += Param(row.SelField);
  }
}

String TDMLGenerator::ColumnPart(const std::vector<TRow>& rows) const {
  String columns, values;
  WrittenColumns(rows, columns, values);
  return u"\r  (" + columns + u")\rVALUES\r   (" + values + u")";
}

String TDMLGenerator::ReturningPart(const std::vector<TRow>& rows) const {
  String columns, values;
  WrittenColumns(rows, columns, values);
  return u"RETURNING\r   " + columns + u" \rINTO\r   " + values;
}

String TDMLGenerator::SetPart(const std::vector<TRow>& rows) const {
  String text;
  for (const TRow& row : rows) {
    if (row.DMLField.IsEmpty()) continue;
    if (row.SelField.IsEmpty()) throw Exception(row.DMLField + u" - is not empty \n but SelField Is Empty");
    text += text.IsEmpty() ? u"\rSET\r   " : u",\r   ";
    text += Q(row.DMLField) + u" = " + Param(row.SelField);
  }
  return text;
}

// The WHERE of the key rows; `old` compares every key, ROWID as well, with
// its OLD_ parameter, as an update must.
String TDMLGenerator::KeyWhere(const std::vector<TRow>& rows, bool old) const {
  String text;
  for (const TRow& row : rows) {
    if (row.Key.IsEmpty()) continue;
    if (row.SelField.IsEmpty()) throw Exception(u"Incorrect key  - SelField is Empty ");
    if (row.DMLField.IsEmpty()) throw Exception(u"Incorrect key  - DMLField is Empty ");
    text += text.IsEmpty() ? u"WHERE\r   " : u" AND\r   ";
    String name = WithoutColon(row.SelField);
    if (old) text += Q(row.DMLField) + u" = :" + Q(u"OLD_" + name);
    else if (SameText(name, u"ROWID")) text += Q(u"ROWID") + u" = :OLD_ROWID ";
    else text += Q(row.DMLField) + u" = :" + Q(name);
  }
  return text;
}

String TDMLGenerator::SequenceBlock(const std::vector<TRow>& rows, const String& Statement) const {
  auto line = [](const TRow& row) {
    if (row.DMLField.IsEmpty()) throw Exception(kKeyDMLFieldEmpty);
    return u"SELECT ID_TMDB_CM.NEXTVAL INTO :" + row.DMLField + u" FROM DUAL;\n";
  };
  String lines;
  const TRow* lastKey = nullptr;
  for (const TRow& row : rows) {
    if (row.Key.IsEmpty()) continue;
    lastKey = &row;
    if (row.Key != u"1") lines += line(row);
  }
  if (lines.IsEmpty() && lastKey) lines = line(*lastKey);
  if (lines.IsEmpty()) return Statement;
  return u"BEGIN\n" + lines + Statement + u";\nEND;";
}

String TDMLGenerator::KeyList(const std::vector<TRow>& rows) const {
  String list;
  for (const TRow& row : rows) {
    if (row.Key.IsEmpty()) continue;
    if (row.DMLField.IsEmpty()) throw Exception(kKeyDMLFieldEmpty);
    list += (list.IsEmpty() ? u"" : u";") + row.DMLField;
  }
  return list;
}

bool TDMLGenerator::Generate() {
  if (!vt_->Active() || vt_->RecordCount() == 0) {
    ShowMessage(u"Press \"Get Table Fields\" first!");
    return false;
  }
  const std::vector<TRow> rows = Rows();
  if (cbSQL) sqlText_ = u"SELECT * FROM \r " + selectTable_;
  for (String& s : statements_) s = String();

  if (cbInsert) {
    String text = u"INSERT INTO " + dmlTable_ + ColumnPart(rows);
    if (cbUseReturning) text += ReturningPart(rows);
    if (cbGenerateKeyValue) text = SequenceBlock(rows, text);
    statements_[stInsert] = text;
  }
  if (cbUpdate) {
    String text = u"UPDATE " + dmlTable_ + SetPart(rows) + u"\r" + KeyWhere(rows, true);
    if (cbUseReturning) text += ReturningPart(rows);
    statements_[stUpdate] = text;
  }
  if (cbDelete) statements_[stDelete] = u"DELETE FROM " + dmlTable_ + u"\r" + KeyWhere(rows, false);
  if (cbLock) statements_[stLock] = u"SELECT * FROM \r " + dmlTable_;
  if (cbRefresh) statements_[stRefresh] = KeyWhere(rows, false);
  keyFields_ = KeyList(rows);
  return true;
}

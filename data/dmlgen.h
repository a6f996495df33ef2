// TDMLGenerator: writes a query's SELECT and its five write statements
// (INSERT, UPDATE, DELETE, LOCK, REFRESH) from a table's columns, as the
// query editor does when asked to generate.
//
// GetTableFields reads the columns of SelectTable and DMLTable from the
// data dictionary into VT, one row per column of the select table plus a
// last row for ROWID:
//
//   SelField   the value written: normally ":" + column
//   DMLField   the column written; empty when the row takes no part
//   is_key     empty, "1" a key, "2" a key fed from the sequence ID_TMDB_CM
//
// The user may change VT before Generate, which writes the texts the
// switches ask for, and the key list back into KeyFields. Names are
// quoted with QuoteFields on ('"'); lines end in a single "\r" except in
// the sequence block, which uses "\n".
#pragma once

#include <memory>
#include <vector>

#include "platform/db/dadataset.h"
#include "platform/db/memdataset.h"
#include "platform/rtl/stringlist.h"

class TOraSession;

// The dictionary statement the columns of a table come from, by TABNAME.
extern const char16_t* const kDMLColumnsSQL;

class TDMLGenerator {
 public:
  TDMLGenerator();
  ~TDMLGenerator();
  TDMLGenerator(const TDMLGenerator&) = delete;
  TDMLGenerator& operator=(const TDMLGenerator&) = delete;

  // ---- Input ----
  // The session whose dictionary is read; not owned.
  TOraSession* Session() const { return session_; }
  void SetSession(TOraSession* Value) { session_ = Value; }
  const String& SelectTable() const { return selectTable_; }
  void SetSelectTable(const String& Value) { selectTable_ = Value; }
  const String& DMLTable() const { return dmlTable_; }
  void SetDMLTable(const String& Value) { dmlTable_ = Value; }
  // The key names, split at ";" and ","; Generate writes the key list here.
  const String& KeyFields() const { return keyFields_; }
  void SetKeyFields(const String& Value) { keyFields_ = Value; }

  // The editor's check boxes.
  bool cbSQL = false;
  bool cbInsert = true;
  bool cbUpdate = true;
  bool cbDelete = true;
  bool cbLock = false;
  bool cbRefresh = true;
  bool cbUseReturning = false;
  // The last key name is fed from the sequence; INSERT becomes a block.
  bool cbGenerateKeyValue = false;
  // "Quote names".
  bool cbQuoteFields = false;
  // '"' with cbQuoteFields, else empty.
  String QuoteText() const { return cbQuoteFields ? String(u"\"") : String(); }

  // ---- The table ----
  TVirtualTable* VT() const { return vt_.get(); }
  // The values offered for SelField and DMLField.
  TStringList* SelFieldPickList() const { return selPick_.get(); }
  TStringList* DMLFieldPickList() const { return dmlPick_.get(); }
  // Refills VT from the dictionary; raises the engine's error when the
  // statement fails.
  void GetTableFields();

  // ---- Output ----
  // The SELECT, written with cbSQL.
  const String& SQLText() const { return sqlText_; }
  void SetSQLText(const String& Value) { sqlText_ = Value; }
  // The write statement of a kind (stInsert ... stRefresh).
  const String& Statement(TStatementType Kind) const;

  // Writes the texts. With VT empty: shows "Press "Get Table Fields"
  // first!" and returns false, changing nothing (the editor then puts the
  // focus on its fields button). A wrong row raises; the texts written
  // before it stay, the others are empty.
  bool Generate();

 private:
  struct TRow {
    String SelField, DMLField, Key;
  };
  std::vector<TRow> Rows() const;
  String Q(const String& Name) const { return QuoteText() + Name + QuoteText(); }
  String Param(const String& SelField) const;
  void WrittenColumns(const std::vector<TRow>& rows, String& columns, String& values) const;
  String ColumnPart(const std::vector<TRow>& rows) const;
  String ReturningPart(const std::vector<TRow>& rows) const;
  String SetPart(const std::vector<TRow>& rows) const;
  String KeyWhere(const std::vector<TRow>& rows, bool old) const;
  String SequenceBlock(const std::vector<TRow>& rows, const String& Statement) const;
  String KeyList(const std::vector<TRow>& rows) const;
  // The column names of a table, in column order.
  std::vector<String> Columns(const String& Table) const;

  TOraSession* session_ = nullptr;
  String selectTable_, dmlTable_, keyFields_;
  std::unique_ptr<TVirtualTable> vt_;
  std::unique_ptr<TStringList> selPick_, dmlPick_;
  String sqlText_;
  String statements_[stRefresh + 1];
};

// TListFilts: what the user has asked for on each filterable field of one
// dataset, as a table of parallel text columns with a row per field.
//
// A dataset owns one, refills it from its fields after each open (ClearAll,
// AddFields) and keeps it across the reopens that the filter code itself
// causes. The find/filter dialogue edits the rows and turns them into
// FilterText, one condition per line.
//
// Every entry of a row holds text; an empty value is the blank placeholder
// " ", so that the columns stay aligned and no entry is empty. Emptiness is
// always tested on the trimmed text. ClearValues is the exception: it
// empties the value columns to no entries at all, and SetState refills the
// expressions only.
#pragma once

#include <array>
#include <memory>

#include "platform/rtl/stringlist.h"

class TDataSet;
class TFields;

class TListFilts : public TObject {
  KELMAR_CLASS(TListFilts, TObject)
 public:
  // The columns, in their historical order.
  enum TColumn {
    lfReserved,        // made and freed, never written
    lfField,           // the field's display name
    lfExpression,      // the typed value
    lfType,            // "S", "I" or "D"
    lfExpressionBackup,  // copy of lfExpression taken when the dialogue opens
    lfRealFieldName,   // alias + "." + FieldName, or FieldName
    lfConfig,          // text options: case flag and option digit
    lfConfigBackup,    // copy of lfConfig taken when the dialogue opens
    lfTableName,       // lookup table
    lfKeyField,        // KeyFields of a lookup field
    lfLResField,       // LookupResultField
    lfLKeyField,       // LookupKeyFields
    lfFieldKind,       // "2" for a lookup field
    lfCodText,         // lookup mode: "0" or "1" once set
    lfColumnCount
  };

  // The dataset must outlive the list.
  explicit TListFilts(TDataSet* DataSet);
  ~TListFilts() override;

  TDataSet* DataSet() const { return dataSet_; }
  TStringList* Column(TColumn Index) const { return columns_[Index].get(); }
  // Rows: the entries of the Field column.
  int Count() const { return Column(lfField)->Count(); }

  // ---- What the dialogue remembers between runs ----
  int TextOption() const { return textOption_; }
  void SetTextOption(int value) { textOption_ = value; }
  int Limit() const { return limit_; }
  void SetLimit(int value) { limit_ = value; }
  bool CaseSensitive() const { return caseSensitive_; }
  void SetCaseSensitive(bool value) { caseSensitive_ = value; }
  bool Number() const { return number_; }
  void SetNumber(bool value) { number_ = value; }
  // The generated condition, one line per field.
  const String& FilterText() const { return filterText_; }
  void SetFilterText(const String& value) { filterText_ = value; }

  // ---- Rows ----
  // A row per field that can be filtered: strings ("S"), numbers ("I") and
  // dates ("D"); a lookup field only when its lookup dataset names a table.
  void AddFields(TFields* Fields);
  // Appends one row; the value columns get the blank placeholder.
  void AddRecord(const String& Field, const String& Type, const String& RealFieldName, const String& TableName,
                 const String& KeyField, const String& LResField, const String& LKeyField,
                 const String& FieldKind);
  // Empties every column.
  void ClearAll();
  // Empties the value columns (expressions, configs, their backups and the
  // lookup modes) to no entries, and FilterText.
  void ClearValues();

  // ---- By field name (the dataset's VeskAlias is put in front) ----
  // The row whose real field name matches, case-insensitively; -1 if none.
  int GetFieldIndex(const String& Name) const;
  // The row's expression, or empty.
  String GetFieldExpr(const String& Name) const;
  // Sets the row's expression; nothing when there is no row.
  void SetFieldExpr(const String& Name, const String& Expr);
  // True when the row has a non-blank expression.
  bool GetIsFiltered(const String& Name) const;

  // Rebuilds FilterText from the rows through the find/filter form, run
  // hidden with an OK result (filter/fill.cpp).
  void GenerateFilter();

  // ---- Saving and restoring around a failed reopen ----
  // The expressions, expression backups, configs, config backups and lookup
  // modes, a line per entry, column after column.
  String GetState() const;
  // With a line count that is a multiple of five: ClearValues, and the
  // first fifth of the lines become the expressions. The other columns
  // stay empty. Any other count changes nothing.
  void SetState(const String& Text);

 private:
  String Alias() const;
  String QualifiedName(const String& Name) const;

  TDataSet* dataSet_;
  std::array<std::unique_ptr<TStringList>, lfColumnCount> columns_;
  int textOption_ = 1;
  int limit_ = 7;
  bool caseSensitive_ = false;
  bool number_ = true;
  String filterText_;
};

// Runs the find/filter dialogue (filter/fill.h) modally over List, on the
// field whose real name is RealName, with a grid's text as its input; true
// when the person pressed OK. The dataset side calls the dialogue through
// this, so that it needs nothing of the form.
bool ShowFindFilterForm(TListFilts* List, const String& RealName, const String& Input);

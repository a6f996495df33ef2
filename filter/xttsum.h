// Summaries: running totals of a dataset's fields, shown in the panels of a
// status bar.
//
// A dataset owns one XTTTSummaryCollection. Each item names a field, a
// function and a Format template for one floating-point value. The
// collection is computed by scanning the dataset (RealCalcSummaries) when
// it is dirty; the dataset's hooks mark it dirty after open, refresh, post
// and delete, and adjust it record by record around a record refresh
// (IncludeCurrentRecord).
//
// Text form, one line per item, as users type it:
//
//   SUMA                a sum at two decimals ("%.2f")
//   SUMA=3              a sum at three decimals
//   SUMA=               a sum with "%f"
//   SUMA=,1             a minimum with "%f"
//   PRICE=0,4           an average without decimals
//   SUMA="%.4n",max     a maximum with a format of its own
//
// Binary form (SaveToStream / LoadFromStream): an int32 item count, then
// per item the field name and the format as 8-bit text in the system code
// page ended by a zero byte, the width and the function as int32; integers
// little-endian.
#pragma once

#include "platform/rtl/collection.h"
#include "platform/rtl/streams.h"

class TDataSet;
class TField;
class TStatusBar;

// The summary functions, numbered as the text and binary forms carry them.
enum XTTTSummaryFunction { smfSum, smfMin, smfMax, smfCount, smfAvg };
KELMAR_ENUM(XTTTSummaryFunction, u"smfSum", u"smfMin", u"smfMax", u"smfCount", u"smfAvg");

class XTTTSummaryCollection;

class XTTTSummaryCollectionItem : public TCollectionItem {
  KELMAR_CLASS(XTTTSummaryCollectionItem, TCollectionItem)
 public:
  explicit XTTTSummaryCollectionItem(TCollection* Collection);

  // Kept as given; the text form stores it in upper case.
  const String& FieldName() const { return fieldName_; }
  void SetFieldName(const String& value) { fieldName_ = value; }
  // A Format template for one floating-point value.
  const String& Format() const { return format_; }
  void SetFormat(const String& value) { format_ = value; }
  // Width of the item's status panel.
  int Width() const { return width_; }
  void SetWidth(int value) { width_ = value; }
  // The function's number; the binary form may carry any int32, which then
  // matches no function in a scan.
  int TypeofFunction() const { return function_; }
  void SetTypeofFunction(int value) { function_ = value; }
  // The computed result.
  double Value() const { return value_; }
  void SetValue(double value) { value_ = value; }

  // The item's line of the text form; empty for an item without a name.
  String GetAsString() const;
  void SetAsString(const String& text);

  // Value through Format; raises the Format error for a template that does
  // not take a floating-point value.
  String GetText() const;
  double GetValue() const { return value_; }
  // The field's AsFloat on the dataset's current record, or 0 when the
  // dataset lacks the field, the field is null, or its type is not one of
  // ftSmallint .. ftBCD.
  double GetFieldValue() const;

  // Copies name, format, width and function (not the value).
  void Assign(TPersistent* Source) override;
  String DisplayName() const override;

  XTTTSummaryCollection* Summaries() const;

 private:
  String fieldName_;
  String format_ = u"%.2f";
  int width_ = 0;
  int function_ = smfSum;
  double value_ = 0;
};

class XTTTSummaryCollection : public TTypedCollection<XTTTSummaryCollectionItem, TOwnedCollection> {
  KELMAR_CLASS(XTTTSummaryCollection, TOwnedCollection)
 public:
  // The dataset owns the collection and must outlive it.
  explicit XTTTSummaryCollection(TDataSet* DataSet);

  TDataSet* DataSet() const { return dataSet_; }
  // True after construction, loading, SetAsText and CalcSummaries; a scan
  // clears it.
  bool Dirty() const { return dirty_; }

  // ---- Items (Add and Items come typed from the base) ----
  XTTTSummaryCollectionItem* GetItem(int Index) const { return Items(Index); }
  // Assigns Value to the item at Index.
  void SetItem(int Index, XTTTSummaryCollectionItem* Value) { Items(Index)->Assign(Value); }
  // By field name, compared in upper case; null when absent.
  XTTTSummaryCollectionItem* GetItemByName(const String& Name) const;
  // The same, also matching the function.
  XTTTSummaryCollectionItem* GetItemByName(int Function, const String& Name) const;

  // ---- Text and binary forms ----
  // Each non-empty item line followed by a line feed.
  String GetAsText() const;
  // Marks dirty, clears, and adds an item for each non-empty line.
  void SetAsText(const String& Text);
  void SaveToStream(TStream* Stream) const;
  // Marks dirty and replaces the items. A stream that ends early or holds a
  // negative count raises EReadError and leaves the items as they were.
  void LoadFromStream(TStream* Stream);

  // ---- Table-style editing ----
  int GetAttrCount() const { return 4; }
  // "FieldName", "TypeofFunction", "Format", "Width" for 0 to 3; empty
  // otherwise.
  String GetAttr(int Index) const;
  // The item's name, function name (smfSum ...), format or width as text.
  String GetItemAttr(int Index, int ItemIndex) const;

  // ---- Computing ----
  // Marks the summaries dirty.
  void CalcSummaries() { dirty_ = true; }
  // Scans when dirty. An error whose message starts with "ORA-01722" is
  // dropped; any other is raised on with the prefix
  // "Error in XTTTSummaryCollection::CheckSummaries():\n".
  void CheckSummaries();
  // Scans every record of the dataset and comes back to the current one.
  // Null and non-numeric values count as 0 in every function; counts count
  // every record. Minima and maxima start from the first record's AsFloat.
  void RealCalcSummaries();
  // Takes the current record out of the totals (add false) or puts it in
  // (add true) when every item is a sum or a count; otherwise an add marks
  // the summaries dirty.
  void IncludeCurrentRecord(bool Add);
  // Makes the bar's panels one per item, computes, and shows each item's
  // width and text. Nothing for a null bar.
  void DisplaySummaries(TStatusBar* Bar);

 private:
  TDataSet* dataSet_;
  bool dirty_ = true;
};

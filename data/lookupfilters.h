// Client filters of the dataset family: lookup filters (LF) and search
// fields (SF).
//
// A lookup filter keeps the rows whose lookup field shows a text; a search
// field keeps the rows whose text column holds a text. A dataset keeps both
// in a TVeskFilterLists of up to 50 conditions each and tests each record
// with Accepts, from the record filter VeskSetOnFilterRecord. Keys compare
// exactly: an LF is keyed by the field's KeyFields (two lookup fields over
// one key column share it), an SF by its FieldName.
//
// Accepts resolves the fields once and finds a lookup's row through an
// index of the lookup dataset keyed by its key, which the lookup dataset's
// changes drop; lookups whose dataset searches in its own way (locate
// events, single-row mode) or whose key spans several fields go through
// the dataset's Locate.
#pragma once

#include <memory>
#include <vector>

#include "platform/db/dataset.h"

// One condition; the same record serves both lists.
struct TVeskFilterCond {
  int Id = 0;               // always 0
  String Text;              // the value sought
  String FieldName;         // the lookup field (LF only)
  String KeyFields;         // LF: the field's KeyFields; SF: its FieldName
  String LookupKeyFields;   // LF only
  int Partial = 0;          // non-zero: contains; zero: whole value
  int CaseSens = 0;         // zero: compare in upper case
};

class TVeskFilterLists {
 public:
  static constexpr int MaxConditions = 50;

  TVeskFilterLists();
  ~TVeskFilterLists();
  TVeskFilterLists(const TVeskFilterLists&) = delete;
  TVeskFilterLists& operator=(const TVeskFilterLists&) = delete;

  // Adds or updates the lookup filter of Field. True when the filter can
  // work: single key fields on both sides that both datasets have. A false
  // answer keeps the condition. Raises "Too many filter conditions!" for a
  // 51st.
  bool addLF(TField* Field, const String& Text, int Partial, bool CaseSens);
  // Adds the search field of Field, or changes only the text of an existing
  // one (its flags stay). Same limit. Always true.
  bool addSF(TField* Field, const String& Text, int Partial, bool CaseSens);
  // False when there is no condition of the key.
  bool removeLF(const String& Key);
  bool removeSF(const String& Key);
  // The text sought, empty when there is no condition.
  String getLF(const String& Key) const;
  String getSF(const String& Key) const;
  // A condition with a non-empty text exists.
  bool isLF(const String& Key) const { return !getLF(Key).IsEmpty(); }
  bool isSF(const String& Key) const { return !getSF(Key).IsEmpty(); }
  // Place of the key's condition; -1 when there is none.
  int GetIndexLF(const String& Key) const;
  int GetIndexSF(const String& Key) const;

  int CountLF() const { return static_cast<int>(lf_.size()); }
  int CountSF() const { return static_cast<int>(sf_.size()); }
  const TVeskFilterCond& LF(int Index) const { return lf_.at(static_cast<size_t>(Index)); }
  const TVeskFilterCond& SF(int Index) const { return sf_.at(static_cast<size_t>(Index)); }
  // Drops every condition.
  void Clear();

  // The lookup-filter flag: the record filter is wanted.
  bool LookUpFilter() const { return lookUpFilter_; }
  void SetLookUpFilter(bool Value) { lookUpFilter_ = Value; }

  // Whether the active record of DataSet passes every condition. Raises
  // the dataset's error for a condition whose field is gone.
  bool Accepts(TDataSet* DataSet);
  // Forgets the resolved fields and lookup indexes; the owner calls it when
  // its fields may have been remade (close) or a filter is applied anew.
  void Reset();

 private:
  struct TPlan;
  TPlan& Plan(TDataSet* DataSet);

  std::vector<TVeskFilterCond> lf_, sf_;
  bool lookUpFilter_ = false;
  std::unique_ptr<TPlan> plan_;
};

// The client filter's question to the user, asked for a grid's list filter
// with no value: which field (by name, or the grid's selected one), which
// value, and, for text, whether it is a "contains" search and whether case
// counts. Partial and CaseSens come in with the dialogue's last answers.
struct TClientFilterQuery {
  TDataSet* DataSet = nullptr;
  TComponent* Grid = nullptr;
  TField* Field = nullptr;
  String Value;
  int Partial = 1;
  bool CaseSens = false;
};
// False when the user cancels.
using TClientFilterDialogue = bool (*)(TClientFilterQuery& Query);

// The find/filter unit registers the dialogue; null takes it away. Returns
// the one registered before. With no dialogue, a grid's list filter without
// a value is taken as cancelled.
TClientFilterDialogue RegisterClientFilterDialogue(TClientFilterDialogue Dialogue);
TClientFilterDialogue ClientFilterDialogue();

// The condition that the client filter adds to Filter for a plain data
// field: [NAME]='value' with quotes doubled; with List the value is a
// comma list and any of its items matches.
String ClientFilterCondition(TField* Field, const String& Value, bool List);

// A locate that reads the fields' values, so that lookup and calculated
// fields can be sought. Walks from First, or from the record behind the
// current one with Forward; text compares under Options. On failure the
// dataset returns to where it was. Controls are disabled meanwhile.
bool LocateLKCALC(TDataSet* DataSet, const String& KeyFields, const Variant& KeyValues, TLocateOptions Options,
                  bool Forward);

// What every member of the dataset family is: the owner of its lists.
class TVeskFilterHost {
 public:
  virtual TVeskFilterLists& FilterLists() = 0;

 protected:
  ~TVeskFilterHost() = default;
};

// The lookup filter's or search field's text of the key on a dataset of
// the family; empty for any other dataset.
String GetLF(TDataSet* DataSet, const String& Key);
String GetSF(TDataSet* DataSet, const String& Key);

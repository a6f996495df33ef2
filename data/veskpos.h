// Keeping the cursor's place by key values rather than by a bookmark, so
// that a position outlives a reopen: TVeskPos for any dataset, and the
// reading of key values behind the dataset members VeskMemorizeFieldValues
// and getVeskFieldsValues.
#pragma once

#include <memory>
#include <span>
#include <vector>

#include "platform/db/dataset.h"

class TStringList;

// At most this many parts are cut from a text, and this many key fields
// are read at once.
inline constexpr int kVeskMaxParts = 255;

// Cuts a text at any of `Separators` and always at "~", skipping empty
// parts; no more than kVeskMaxParts parts, and no more than Parts holds.
// Returns their number.
int breakApart(const String& Text, std::span<String> Parts, const String& Separators);
int breakApart(const String& Text, std::vector<String>& Parts, const String& Separators);

// The values of the named fields (";"-separated) that the dataset has: the
// key text names the fields found, joined by ";"; the key value is the
// scalar for one field, else a Variant array in the same order, and
// Unassigned for none. The names and values pass through arrays shared by
// the whole process, so the call is not re-entrant (all datasets live on
// the main thread).
void ReadKeyValues(const TDataSet* DataSet, const String& Names, String& KeyText, Variant& KeyValue);

// A record remembered by the values of the dataset's VeskKeyFields (read
// by name, so any dataset serves; one without the property has no keys).
// The dataset is not owned, and the position does not follow its close:
// what was memorized stays until Clear or the next Memorize.
class TVeskPos {
 public:
  // Memorizes at once when asked and the dataset is active.
  explicit TVeskPos(TDataSet* DataSet, bool MemorizeNow = false);
  ~TVeskPos();
  TVeskPos(const TVeskPos&) = delete;
  TVeskPos& operator=(const TVeskPos&) = delete;

  TDataSet* DataSet() const { return dataSet_; }
  // Changes the dataset; what was memorized stays.
  void SetDataSet(TDataSet* DataSet) { dataSet_ = DataSet; }

  // Clears, then stores the value of each key field of the current record
  // in the key's place; a key the dataset lacks keeps an unassigned slot.
  // A dataset that is closed is read as its fields stand; without a
  // dataset or keys the position stays empty.
  void Memorize();
  // Locates the memorized values (no options) when there is something
  // memorized and the dataset is active; true when found. ClearAfter
  // clears in any case, found or not, raised or not.
  bool Restore(bool ClearAfter);
  void Clear();

  // The key field list as memorized, trimmed.
  const String& KeyText() const { return keyText_; }
  // The number of keys memorized, and the value of key i (0-based).
  int Count() const { return count_; }
  const Variant& Value(int Index) const;

 private:
  TDataSet* dataSet_;
  String keyText_;
  std::unique_ptr<TStringList> keys_;  // made on the first Memorize
  std::vector<Variant> values_;        // re-used while large enough
  int count_ = 0;
};

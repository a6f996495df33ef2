// What a grid asks of any dataset before it draws a title or opens its menu:
// is it filtered, has it been searched, does it carry default values; and
// SetVeskFilter, which gives a dataset a filter text that freeFilters comes
// back to.
//
// The functions take a plain TDataSet. A member of the dataset family
// answers through TVeskStateHost, which the family's body implements, and
// through the by-name protocol (its published VeskFilter); any other
// dataset answers only for its own Filter text.
#pragma once

#include "filter/vesksearch.h"

class TListFilts;

// The family body's side of these questions.
class TVeskStateHost {
 public:
  // The find/filter list; null for members without SQL composition.
  virtual TListFilts* FindFilterList() const = 0;
  virtual const TVeskSearchState& SearchState() const = 0;
  // The default values for new records, "NAME=value" joined by "; ", in
  // the order they were set; empty when there are none.
  virtual String DefaultValuesText() const = 0;
  // The filter text that freeFilters restores.
  virtual void RememberFilter(const String& Text) = 0;

 protected:
  ~TVeskStateHost() = default;
};

// True when the dataset's Filter text is not empty, or it has lookup
// filters or search fields, or a VeskFilter, or a generated FilterText.
// Members without SQL composition have only the first two.
bool GetFiltered(TDataSet* DataSet);
// False for a null field, one without a dataset, or a closed dataset.
// Otherwise true when the field's name keys a search field or a lookup
// filter, when the field is a lookup column whose KeyFields key a lookup
// filter, or when the find/filter list holds an expression for it.
bool GetFiltered(TField* Field);
// True when the dataset has searched a field.
bool GetSearched(TDataSet* DataSet);
// The default values as a text for a caption; empty when there are none,
// which is how a menu tells whether there is anything to clear. Empty for a
// dataset outside the family.
String GetDefValue(TDataSet* DataSet);
// Sets Filter and, on a member of the family, makes it the text that
// freeFilters restores.
void SetVeskFilter(TDataSet* DataSet, const String& Text);

#include "filter/vesklocate.h"

#include <vector>

#include "platform/db/fields.h"
#include "platform/rtl/stringlist.h"
#include "platform/rtl/sysutils.h"
#include "platform/rtl/typinfo.h"
#include "platform/ui/dialogs.h"
#include "platform/ui/uiport.h"

namespace {

struct TKey {
  TField* Field;
  Variant Value;
  bool AsText;       // compared as text under the case and partial options
  String Text;       // the value's text, in upper case for vloCaseInsensitive
};

bool IsStringField(const TField* field) { return field->DataType() == ftString; }

bool KeyMatches(const TKey& key, TVeskLocateOption options) {
  const TField* field = key.Field;
  if (field->IsNull() || key.Value.IsNull()) return field->IsNull() && key.Value.IsNull();
  if (!key.AsText) return field->Value() == key.Value;
  String text = field->AsString();
  if (options.Contains(vloPartialKey) && key.Text.Length() < text.Length()) text.SetLength(key.Text.Length());
  if (options.Contains(vloCaseInsensitive)) text = text.UpperCase();
  return text == key.Text;
}

// Controls are disabled for the scan unless the caller has done so.
class TControlsOff {
 public:
  explicit TControlsOff(TDataSet* dataSet) : dataSet_(dataSet->ControlsDisabled() ? nullptr : dataSet) {
    if (dataSet_) dataSet_->DisableControls();
  }
  ~TControlsOff() {
    if (dataSet_) dataSet_->EnableControls();
  }
  TControlsOff(const TControlsOff&) = delete;
  TControlsOff& operator=(const TControlsOff&) = delete;

 private:
  TDataSet* dataSet_;
};

Variant ValueAt(const Variant& values, size_t index, size_t count) {
  if (count == 1 && !values.IsArray()) return values;
  if (!values.IsArray())
    throw EDatabaseError(u"Locate: " + IntToStr(static_cast<int>(count)) + u" fields need an array of values");
  const int low = VarArrayLowBound(values, 1);
  if (VarArrayHighBound(values, 1) - low + 1 != static_cast<int>(count))
    throw EDatabaseError(u"Locate: the number of values differs from the number of fields");
  return values.GetElement(low + static_cast<int>(index));
}

}  // namespace

TVeskLocateOption VeskLocateOptions(TLocateOptions Options) {
  TVeskLocateOption result;
  if (Options.Contains(loCaseInsensitive)) result << vloCaseInsensitive;
  if (Options.Contains(loPartialKey)) result << vloPartialKey;
  return result;
}

bool UserInputMessage() { return CurrentUserInterface().InputPending(); }

bool Locate(TDataSet* DataSet, TStrings* Names, const Variant& Values, TVeskLocateOption Options) {
  if (!DataSet || !Names || Names->Count() == 0 || DataSet->RecordCount() == 0) return false;
  const size_t count = static_cast<size_t>(Names->Count());
  std::vector<TKey> keys;
  keys.reserve(count);
  for (size_t i = 0; i < count; ++i) {
    TField* field = DataSet->FieldByName(Names->Strings(static_cast<int>(i)).Trim());
    TKey key{field, ValueAt(Values, i, count), false, String()};
    const bool textOptions = Options.Contains(vloCaseInsensitive) || Options.Contains(vloPartialKey);
    if (IsStringField(field) && textOptions && !key.Value.IsNull() && !key.Value.IsEmpty()) {
      key.AsText = true;
      key.Text = VarToStr(key.Value);
      if (Options.Contains(vloCaseInsensitive)) key.Text = key.Text.UpperCase();
    }
    keys.push_back(std::move(key));
  }
  const bool ordered = Options.Contains(vloOrdered);
  const TBookmark start = ordered ? TBookmark() : DataSet->GetBookmark();

  bool found = false;
  {
    TWaitCursor wait;
    TControlsOff controlsOff(DataSet);
    CurrentUserInterface().DiscardPendingInput();
    if (Options.Contains(vloFromNext)) DataSet->Next();
    else DataSet->First();
    while (!DataSet->Eof() && !UserInputMessage()) {
      bool all = true;
      for (const TKey& key : keys)
        if (!KeyMatches(key, Options)) {
          all = false;
          break;
        }
      if (all) {
        found = true;
        break;
      }
      if (ordered && keys.size() == 1 && !keys[0].Field->IsNull() && !keys[0].Value.IsNull() &&
          keys[0].Field->Value() > keys[0].Value) {
        DataSet->Prior();
        break;
      }
      DataSet->Next();
    }
    if (!found && !ordered) DataSet->GotoBookmark(start);
  }
  return found;
}

bool Locate(TDataSet* DataSet, const String& Names, const Variant& Values, TVeskLocateOption Options) {
  TStringList names;
  names.SetCommaText(StringReplace(Names, u";", u",", TReplaceFlags{rfReplaceAll}));
  return Locate(DataSet, &names, Values, Options);
}

bool Locate(TDataSet* DataSet, const String& Names, const Variant& Values, TLocateOptions Options) {
  return Locate(DataSet, Names, Values, VeskLocateOptions(Options));
}

bool qlocate(TDataSet* DataSet, const Variant& V1, const Variant& V2, const Variant& V3, const Variant& V4,
             const Variant& V5, const Variant& V6, const Variant& V7) {
  if (!DataSet) return false;
  std::vector<Variant> values;
  for (const Variant* v : {&V1, &V2, &V3, &V4, &V5, &V6, &V7}) {
    if (v->IsEmpty()) break;
    values.push_back(*v);
  }
  TStringList index;
  index.SetDelimiter(u';');
  index.SetStrictDelimiter(true);
  index.SetDelimitedText(GetPropString(DataSet, u"IndexFieldNames", String()));
  if (values.empty() || index.Count() < static_cast<int>(values.size())) return false;
  String names;
  for (size_t i = 0; i < values.size(); ++i)
    names += (i ? u";" : u"") + index.Strings(static_cast<int>(i)).Trim();
  const Variant keys = values.size() == 1 ? values[0] : VarArrayOf(std::span<const Variant>(values));
  return DataSet->Locate(names, keys, TLocateOptions());
}

#include "data/veskpos.h"

#include <algorithm>
#include <array>

#include "filter/vesklocate.h"
#include "platform/rtl/stringlist.h"
#include "platform/rtl/typinfo.h"

int breakApart(const String& Text, std::span<String> Parts, const String& Separators) {
  const size_t limit = std::min(Parts.size(), static_cast<size_t>(kVeskMaxParts));
  size_t count = 0;
  int start = 1;
  auto cut = [&](int end) {  // the part [start, end)
    if (end > start && count < limit) Parts[count++] = Text.SubString(start, end - start);
    start = end + 1;
  };
  for (int i = 1; i <= Text.Length(); ++i) {
    const WideChar c = Text[i];
    if (c == u'~' || Separators.Pos(String(c)) > 0) cut(i);
  }
  cut(Text.Length() + 1);
  return static_cast<int>(count);
}

int breakApart(const String& Text, std::vector<String>& Parts, const String& Separators) {
  Parts.assign(kVeskMaxParts, String());
  Parts.resize(static_cast<size_t>(breakApart(Text, std::span<String>(Parts), Separators)));
  return static_cast<int>(Parts.size());
}

void ReadKeyValues(const TDataSet* DataSet, const String& Names, String& KeyText, Variant& KeyValue) {
  // Shared by every dataset of the process, as the key readers always were;
  // the single main thread makes that safe.
  static std::array<String, kVeskMaxParts> names;
  static std::array<Variant, kVeskMaxParts> values;
  const int parts = breakApart(Names, std::span<String>(names), u";");
  int found = 0;
  KeyText = String();
  for (int i = 0; i < parts; ++i) {
    TField* field = DataSet->FindField(names[static_cast<size_t>(i)]);
    if (!field) continue;
    KeyText += (KeyText.IsEmpty() ? u"" : u";") + field->FieldName();
    values[static_cast<size_t>(found++)] = field->Value();
  }
  if (found == 0) KeyValue = Variant();
  else if (found == 1) KeyValue = values[0];
  else KeyValue = VarArrayOf(std::span<const Variant>(values.data(), static_cast<size_t>(found)));
}

// ---- TVeskPos ------------------------------------------------------------------------

TVeskPos::TVeskPos(TDataSet* DataSet, bool MemorizeNow) : dataSet_(DataSet) {
  if (MemorizeNow && dataSet_ && dataSet_->Active()) Memorize();
}

TVeskPos::~TVeskPos() = default;

void TVeskPos::Clear() {
  keyText_ = String();
  if (keys_) keys_->Clear();
  for (int i = 0; i < count_; ++i) values_[static_cast<size_t>(i)] = Variant();
  count_ = 0;
}

void TVeskPos::Memorize() {
  Clear();
  if (!dataSet_) return;
  keyText_ = Trim(GetPropString(dataSet_, u"VeskKeyFields"));
  if (keyText_.IsEmpty()) return;
  if (!keys_) keys_ = std::make_unique<TStringList>();
  keys_->SetCommaText(StringReplace(keyText_, u";", u",", TReplaceFlags{rfReplaceAll}));
  const size_t n = static_cast<size_t>(keys_->Count());
  if (values_.size() < n) values_.assign(n, Variant());
  for (size_t i = 0; i < n; ++i) {
    TField* field = dataSet_->FindField(keys_->Strings(static_cast<int>(i)));
    values_[i] = field ? field->Value() : Variant();
  }
  count_ = static_cast<int>(n);
}

bool TVeskPos::Restore(bool ClearAfter) {
  bool found = false;
  try {
    if (count_ > 0 && dataSet_ && dataSet_->Active() && !keyText_.IsEmpty()) {
      const Variant values =
          count_ == 1 ? values_[0]
                      : VarArrayOf(std::span<const Variant>(values_.data(), static_cast<size_t>(count_)));
      found = Locate(dataSet_, keyText_, values, TVeskLocateOption());
    }
  } catch (...) {
    if (ClearAfter) Clear();
    throw;
  }
  if (ClearAfter) Clear();
  return found;
}

const Variant& TVeskPos::Value(int Index) const {
  if (Index < 0 || Index >= count_)
    throw EListError(u"TVeskPos: key index " + IntToStr(Index) + u" is outside 0.." + IntToStr(count_ - 1));
  return values_[static_cast<size_t>(Index)];
}

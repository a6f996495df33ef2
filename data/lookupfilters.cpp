#include "data/lookupfilters.h"

#include <algorithm>
#include <string>
#include <utility>
#include <unordered_map>

#include "platform/db/datasource.h"
#include "platform/rtl/stringlist.h"
#include "platform/rtl/sysutils.h"
#include "platform/rtl/typinfo.h"

namespace {

constexpr const char16_t* kTooMany = u"Too many filter conditions!";

int IndexOf(const std::vector<TVeskFilterCond>& List, const String& Key) {
  for (size_t i = 0; i < List.size(); ++i)
    if (List[i].KeyFields == Key) return static_cast<int>(i);
  return -1;
}

bool Remove(std::vector<TVeskFilterCond>& List, const String& Key) {
  const int at = IndexOf(List, Key);
  if (at < 0) return false;
  List.erase(List.begin() + at);
  return true;
}

bool Contains(std::u16string_view Text, std::u16string_view Sought) {
  return Sought.empty() || Text.find(Sought) != std::u16string_view::npos;
}

// A text as the conditions compare it: upper case unless case counts.
String Folded(const String& Text, bool CaseSens) { return CaseSens ? Text : UpperCase(Text); }

// The rows of a lookup dataset by key, as its Locate would find them: the
// first row in order whose key matches. Any change of the lookup dataset
// but a scroll drops it.
class TLookupIndex : private TDataLink {
 public:
  TLookupIndex(TField* Field, TLocateOptions Options) : options_(Options) {
    TDataSet* lookup = Field->LookupDataSet();
    keyField_ = lookup->FieldByName(Field->LookupKeyFields());
    resultField_ = lookup->FieldByName(Field->LookupResultField());
    source_.SetDataSet(lookup);
    SetDataSource(&source_);
  }
  ~TLookupIndex() override { SetDataSource(nullptr); }

  // Whether the index can stand for Locate on Field's lookup dataset.
  static bool Serves(TField* Field) {
    TDataSet* lookup = Field->LookupDataSet();
    if (Field->KeyFields().Pos(u";") > 0 || Field->LookupKeyFields().Pos(u";") > 0) return false;
    TField* key = lookup->FindField(Field->LookupKeyFields());
    if (!key || key->Column() < 0 || !lookup->FindField(Field->LookupResultField())) return false;
    // Datasets that search in their own way keep their Locate.
    if (GetPropMethod(lookup, u"OnVESKLocateEvent")) return false;
    return !GetPropBool(lookup, u"VeskXSingleRowQuery", false);
  }

  bool Valid(TDataSet* Lookup) const { return built_ && DataSet() == Lookup; }

  // The result text of the row of Key; false when no row has it.
  bool Find(const Variant& Key, String& Result) {
    if (!built_) Build();
    if (Key.IsNull() || Key.IsEmpty()) return Hit(null_, Result);
    try {
      switch (keyField_->ColumnKind()) {
        case ckInteger: {
          if (VarIsFloat(Key) && static_cast<double>(Key.AsInt64()) != Key.AsFloat()) return false;
          const int64_t k = keyField_->DataType() == ftBoolean ? (Key.AsBoolean() ? 1 : 0) : Key.AsInt64();
          auto it = ints_.find(k);
          return it != ints_.end() && Hit(it->second, Result);
        }
        case ckFloat: {
          const TFieldType t = keyField_->DataType();
          const double k = (t == ftDate || t == ftTime || t == ftDateTime) ? VarToDateTime(Key).Val : Key.AsFloat();
          auto it = floats_.find(k);
          return it != floats_.end() && Hit(it->second, Result);
        }
        default: return FindText(Folded(Key.AsString(), !options_.Contains(loCaseInsensitive)), Result);
      }
    } catch (const EConvertError&) {
      return false;
    } catch (const EVariantError&) {
      return false;
    }
  }

 private:
  void ActiveChanged() override { built_ = false; }
  void DataSetChanged() override { built_ = false; }
  void RecordChanged(TField*) override { built_ = false; }
  void DataSetScrolled(int) override {}

  bool Hit(int Row, String& Result) const {
    if (Row < 0) return false;
    Result = results_[static_cast<size_t>(Row)];
    return true;
  }

  bool FindText(const String& Key, String& Result) {
    if (!options_.Contains(loPartialKey)) {
      auto it = texts_.find(std::u16string(Key.view()));
      return it != texts_.end() && Hit(it->second, Result);
    }
    auto memo = prefixes_.find(std::u16string(Key.view()));
    if (memo == prefixes_.end()) {
      // The first row in order among the keys that begin with Key.
      const std::u16string_view prefix = Key.view();
      int first = -1;
      for (auto it = std::lower_bound(sorted_.begin(), sorted_.end(), prefix,
                                      [](const auto& e, std::u16string_view p) { return std::u16string_view(e.first) < p; });
           it != sorted_.end() && std::u16string_view(it->first).substr(0, prefix.size()) == prefix; ++it)
        if (first < 0 || it->second < first) first = it->second;
      memo = prefixes_.emplace(std::u16string(prefix), first).first;
    }
    return Hit(memo->second, Result);
  }

  void Build() {
    TDataSet* lookup = DataSet();
    ints_.clear();
    floats_.clear();
    texts_.clear();
    sorted_.clear();
    prefixes_.clear();
    results_.clear();
    null_ = -1;
    const int count = lookup->RecordCount();
    const bool text = keyField_->ColumnKind() != ckInteger && keyField_->ColumnKind() != ckFloat;
    const bool caseSens = !options_.Contains(loCaseInsensitive);
    results_.reserve(static_cast<size_t>(count));
    try {
      for (int p = 0; p < lookup->ViewCount(); ++p) {
        lookup->SetReadPosition(p);
        const int row = static_cast<int>(results_.size());
        results_.push_back(resultField_->AsString());
        if (keyField_->IsNull()) {
          if (null_ < 0) null_ = row;
        } else if (keyField_->ColumnKind() == ckInteger) {
          ints_.emplace(keyField_->AsLargeInt(), row);
        } else if (keyField_->ColumnKind() == ckFloat) {
          floats_.emplace(keyField_->AsFloat(), row);
        } else {
          std::u16string key(Folded(keyField_->AsString(), caseSens).view());
          texts_.emplace(key, row);
          if (text && options_.Contains(loPartialKey)) sorted_.emplace_back(std::move(key), row);
        }
      }
    } catch (...) {
      lookup->SetReadPosition(-1);
      throw;
    }
    lookup->SetReadPosition(-1);
    std::sort(sorted_.begin(), sorted_.end());
    built_ = true;
  }

  TLocateOptions options_;
  TField* keyField_ = nullptr;
  TField* resultField_ = nullptr;
  TDataSource source_{nullptr};
  bool built_ = false;
  std::vector<String> results_;
  int null_ = -1;
  // emplace keeps the first row of a key, as Locate finds it.
  std::unordered_map<int64_t, int> ints_;
  std::unordered_map<double, int> floats_;
  std::unordered_map<std::u16string, int> texts_;
  std::vector<std::pair<std::u16string, int>> sorted_;
  std::unordered_map<std::u16string, int> prefixes_;
};

}  // namespace

// The conditions resolved against one dataset's fields: texts folded once,
// fields found once, an index per lookup.
struct TVeskFilterLists::TPlan {
  struct TLookupStep {
    TField* Field;
    String Text;
    bool Partial, CaseSens;
    TLocateOptions Options;
    std::unique_ptr<TLookupIndex> Index;  // null: the dataset's Locate
  };
  struct TSearchStep {
    TField* Field;
    String Text;
    bool CaseSens, Blank;
  };
  TDataSet* DataSet = nullptr;
  std::vector<TLookupStep> Lookups;
  std::vector<TSearchStep> Searches;
};

TVeskFilterLists::TVeskFilterLists() = default;
TVeskFilterLists::~TVeskFilterLists() = default;

bool TVeskFilterLists::addLF(TField* Field, const String& Text, int Partial, bool CaseSens) {
  const String key = Field->KeyFields();
  const int at = IndexOf(lf_, key);
  Reset();
  if (at >= 0) {
    TVeskFilterCond& cond = lf_[static_cast<size_t>(at)];
    cond.Text = Text;
    cond.Partial = Partial;
    cond.CaseSens = CaseSens;
    return true;
  }
  if (CountLF() >= MaxConditions) throw Exception(kTooMany);
  TVeskFilterCond cond;
  cond.Text = Text;
  cond.FieldName = Field->FieldName();
  cond.KeyFields = key;
  cond.LookupKeyFields = Field->LookupKeyFields();
  cond.Partial = Partial;
  cond.CaseSens = CaseSens;
  lf_.push_back(cond);
  TDataSet* lookup = Field->LookupDataSet();
  return key.Pos(u";") == 0 && cond.LookupKeyFields.Pos(u";") == 0 && Field->DataSet() &&
         Field->DataSet()->FindField(key) && lookup && lookup->FindField(cond.LookupKeyFields);
}

bool TVeskFilterLists::addSF(TField* Field, const String& Text, int Partial, bool CaseSens) {
  const String key = Field->FieldName();
  const int at = IndexOf(sf_, key);
  Reset();
  if (at >= 0) {
    sf_[static_cast<size_t>(at)].Text = Text;
    return true;
  }
  if (CountSF() >= MaxConditions) throw Exception(kTooMany);
  TVeskFilterCond cond;
  cond.Text = Text;
  cond.KeyFields = key;
  cond.Partial = Partial;
  cond.CaseSens = CaseSens;
  sf_.push_back(cond);
  return true;
}

bool TVeskFilterLists::removeLF(const String& Key) {
  Reset();
  return Remove(lf_, Key);
}

bool TVeskFilterLists::removeSF(const String& Key) {
  Reset();
  return Remove(sf_, Key);
}

String TVeskFilterLists::getLF(const String& Key) const {
  const int at = IndexOf(lf_, Key);
  return at < 0 ? String() : lf_[static_cast<size_t>(at)].Text;
}

String TVeskFilterLists::getSF(const String& Key) const {
  const int at = IndexOf(sf_, Key);
  return at < 0 ? String() : sf_[static_cast<size_t>(at)].Text;
}

int TVeskFilterLists::GetIndexLF(const String& Key) const { return IndexOf(lf_, Key); }
int TVeskFilterLists::GetIndexSF(const String& Key) const { return IndexOf(sf_, Key); }

void TVeskFilterLists::Clear() {
  lf_.clear();
  sf_.clear();
  Reset();
}

void TVeskFilterLists::Reset() { plan_.reset(); }

TVeskFilterLists::TPlan& TVeskFilterLists::Plan(TDataSet* DataSet) {
  if (plan_ && plan_->DataSet == DataSet) return *plan_;
  auto plan = std::make_unique<TPlan>();
  plan->DataSet = DataSet;
  for (const TVeskFilterCond& c : lf_) {
    if (c.Text.IsEmpty()) continue;
    TPlan::TLookupStep step{DataSet->FieldByName(c.FieldName), Folded(c.Text, c.CaseSens), c.Partial != 0,
                            c.CaseSens != 0, TLocateOptions(), nullptr};
    if (c.Partial) step.Options << loPartialKey;
    if (!c.CaseSens) step.Options << loCaseInsensitive;
    plan->Lookups.push_back(std::move(step));
  }
  for (const TVeskFilterCond& c : sf_)
    plan->Searches.push_back({DataSet->FieldByName(c.KeyFields), Folded(c.Text, c.CaseSens), c.CaseSens != 0,
                              c.Text == u"blank"});
  plan_ = std::move(plan);
  return *plan_;
}

bool TVeskFilterLists::Accepts(TDataSet* DataSet) {
  TPlan& plan = Plan(DataSet);
  for (TPlan::TLookupStep& step : plan.Lookups) {
    TDataSet* lookup = step.Field->LookupDataSet();
    if (!lookup || !lookup->Active()) return false;
    const Variant key = DataSet->GetFieldValue(step.Field->KeyFields());
    String shown;
    if (!step.Index || !step.Index->Valid(lookup)) {
      step.Index.reset();
      if (TLookupIndex::Serves(step.Field)) step.Index = std::make_unique<TLookupIndex>(step.Field, step.Options);
    }
    if (step.Index) {
      if (!step.Index->Find(key, shown)) return false;
    } else {
      if (!lookup->Locate(step.Field->LookupKeyFields(), key, step.Options)) return false;
      shown = lookup->FieldByName(step.Field->LookupResultField())->AsString();
    }
    if (!step.CaseSens) shown = UpperCase(shown);
    if (step.Partial ? !Contains(shown.view(), step.Text.view()) : shown != step.Text) return false;
  }
  for (const TPlan::TSearchStep& step : plan.Searches) {
    const String value = step.Field->AsString();
    if (Contains(step.CaseSens ? value.view() : UpperCase(value).view(), step.Text.view())) continue;
    if (!(step.Blank && step.Field->IsNull())) return false;
  }
  return true;
}

// ---- Dialogues ------------------------------------------------------------------------

namespace {
TClientFilterDialogue& ClientDialogueSlot() {
  static TClientFilterDialogue dialogue = nullptr;
  return dialogue;
}
}  // namespace

TClientFilterDialogue RegisterClientFilterDialogue(TClientFilterDialogue Dialogue) {
  return std::exchange(ClientDialogueSlot(), Dialogue);
}
TClientFilterDialogue ClientFilterDialogue() { return ClientDialogueSlot(); }

// ---- Conditions and searches ------------------------------------------------------------

String ClientFilterCondition(TField* Field, const String& Value, bool List) {
  const String name = u"[" + Field->FieldName() + u"]";
  auto one = [&](const String& item) {
    return name + u"='" + StringReplace(item, u"'", u"''", TReplaceFlags{rfReplaceAll}) + u"'";
  };
  if (!List) return one(Value);
  TStringList items;
  items.SetCommaText(Value);
  String condition;
  for (int i = 0; i < items.Count(); ++i) condition += (i > 0 ? u" OR " : u"") + one(items.Strings(i));
  return items.Count() > 1 ? u"(" + condition + u")" : condition;
}

namespace {

bool ValueMatches(const Variant& Value, const Variant& Sought, TLocateOptions Options) {
  if (Sought.IsNull() || Sought.IsEmpty()) return Value.IsNull();
  if (Value.IsNull()) return false;
  if (!VarIsStr(Value) && !VarIsStr(Sought)) return VarCompareValue(Value, Sought) == vrEqual;
  const bool fold = Options.Contains(loCaseInsensitive);
  const String text = fold ? UpperCase(VarToStr(Value)) : VarToStr(Value);
  const String sought = fold ? UpperCase(VarToStr(Sought)) : VarToStr(Sought);
  if (Options.Contains(loPartialKey)) return text.view().substr(0, sought.view().size()) == sought.view();
  return text == sought;
}

}  // namespace

bool LocateLKCALC(TDataSet* DataSet, const String& KeyFields, const Variant& KeyValues, TLocateOptions Options,
                  bool Forward) {
  std::vector<TField*> fields;
  DataSet->GetFieldList(fields, KeyFields);
  auto sought = [&](size_t i) {
    if (fields.size() == 1 && !KeyValues.IsArray()) return KeyValues;
    return KeyValues.GetElement(VarArrayLowBound(KeyValues, 1) + static_cast<int>(i));
  };
  if (fields.size() > 1 && (!KeyValues.IsArray() || VarArrayHighBound(KeyValues, 1) - VarArrayLowBound(KeyValues, 1) + 1 !=
                                                        static_cast<int>(fields.size())))
    DatabaseError(u"The number of key values does not match the key fields '" + KeyFields + u"'", DataSet);
  const TBookmark kept = DataSet->GetBookmark();
  bool found = false;
  DataSet->DisableControls();
  try {
    if (Forward) DataSet->Next();
    else DataSet->First();
    while (!DataSet->Eof()) {
      found = true;
      for (size_t i = 0; i < fields.size() && found; ++i) found = ValueMatches(fields[i]->Value(), sought(i), Options);
      if (found) break;
      DataSet->Next();
    }
    if (!found && DataSet->BookmarkValid(kept)) DataSet->GotoBookmark(kept);
  } catch (...) {
    DataSet->EnableControls();
    throw;
  }
  DataSet->EnableControls();
  return found;
}

String GetLF(TDataSet* DataSet, const String& Key) {
  auto* host = dynamic_cast<TVeskFilterHost*>(DataSet);
  return host ? host->FilterLists().getLF(Key) : String();
}

String GetSF(TDataSet* DataSet, const String& Key) {
  auto* host = dynamic_cast<TVeskFilterHost*>(DataSet);
  return host ? host->FilterLists().getSF(Key) : String();
}

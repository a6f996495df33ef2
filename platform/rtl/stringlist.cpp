#include "platform/rtl/stringlist.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <numeric>
#include <unordered_map>

#include "platform/rtl/sysutils.h"

namespace {

// The case folding of CompareText, code unit by code unit, without
// building strings: name lookups run in loops over long lists.
inline char16_t FoldUnit(char16_t c) {
  if (c < 0x80) return c >= u'a' && c <= u'z' ? static_cast<char16_t>(c - 32) : c;
  UChar32 f = u_toupper(u_tolower(c));
  return f <= 0xFFFF ? static_cast<char16_t>(f) : c;
}

bool SameFolded(std::u16string_view a, std::u16string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i)
    if (a[i] != b[i] && FoldUnit(a[i]) != FoldUnit(b[i])) return false;
  return true;
}

std::u16string Folded(std::u16string_view s) {
  std::u16string out(s);
  for (char16_t& c : out) c = FoldUnit(c);
  return out;
}

// The name part of a line, or nothing when it has no separator.
inline bool NamePart(std::u16string_view line, WideChar separator, std::u16string_view& name) {
  size_t at = line.find(separator);
  if (at == std::u16string_view::npos) return false;
  name = line.substr(0, at);
  return true;
}

inline bool IsLineBreakChar(char16_t c) { return c == u'\r' || c == u'\n'; }

const String kSortedListError = u"Operation not allowed on sorted list";

}  // namespace

// ---- TStrings --------------------------------------------------------------

KELMAR_PUBLISH(TStrings) {
  r.Prop(u"Count", &TStrings::Count, nullptr);
  r.Prop(u"Text", &TStrings::Text, &TStrings::SetText);
  r.Prop(u"CommaText", &TStrings::CommaText, &TStrings::SetCommaText);
  r.Prop(u"DelimitedText", &TStrings::DelimitedText, &TStrings::SetDelimitedText);
  r.Prop(u"Delimiter", &TStrings::Delimiter, &TStrings::SetDelimiter);
  r.Prop(u"QuoteChar", &TStrings::QuoteChar, &TStrings::SetQuoteChar);
  r.Prop(u"StrictDelimiter", &TStrings::StrictDelimiter, &TStrings::SetStrictDelimiter);
  r.Prop(u"NameValueSeparator", &TStrings::NameValueSeparator, &TStrings::SetNameValueSeparator);
}

void TStrings::IndexError(int Index) const {
  throw EStringListError(u"List index out of bounds (" + IntToStr(Index) + u")");
}

TObject* TStrings::GetObject(int) const { return nullptr; }

void TStrings::Put(int Index, const String& S) {
  TObject* object = GetObject(Index);
  BeginUpdate();
  Delete(Index);
  InsertObject(Index, S, object);
  EndUpdate();
}

void TStrings::PutObject(int, TObject*) {}

int TStrings::Add(const String& S) {
  int index = GetCount();
  Insert(index, S);
  return index;
}

int TStrings::AddObject(const String& S, TObject* AObject) {
  int index = Add(S);
  PutObject(index, AObject);
  return index;
}

void TStrings::InsertObject(int Index, const String& S, TObject* AObject) {
  Insert(Index, S);
  PutObject(Index, AObject);
}

void TStrings::AddStrings(const TStrings* Strings) {
  const int n = Strings->Count();  // fixed first: a list may add itself
  BeginUpdate();
  for (int i = 0; i < n; ++i) AddObject(Strings->Get(i), Strings->GetObject(i));
  EndUpdate();
}

void TStrings::Exchange(int Index1, int Index2) {
  String s1 = Get(Index1), s2 = Get(Index2);
  TObject* o1 = GetObject(Index1);
  TObject* o2 = GetObject(Index2);
  BeginUpdate();
  Put(Index1, s2);
  PutObject(Index1, o2);
  Put(Index2, s1);
  PutObject(Index2, o1);
  EndUpdate();
}

void TStrings::Move(int CurIndex, int NewIndex) {
  if (CurIndex == NewIndex) return;
  String s = Get(CurIndex);
  TObject* object = GetObject(CurIndex);
  BeginUpdate();
  Delete(CurIndex);
  InsertObject(NewIndex, s, object);
  EndUpdate();
}

int TStrings::IndexOf(const String& S) const {
  const int n = GetCount();
  for (int i = 0; i < n; ++i)
    if (CompareStrings(Get(i), S) == 0) return i;
  return -1;
}

int TStrings::IndexOfName(const String& Name) const {
  const int n = GetCount();
  for (int i = 0; i < n; ++i)
    if (NameMatches(Get(i), Name)) return i;
  return -1;
}

int TStrings::IndexOfObject(const TObject* AObject) const {
  const int n = GetCount();
  for (int i = 0; i < n; ++i)
    if (GetObject(i) == AObject) return i;
  return -1;
}

bool TStrings::Equals(const TStrings* Strings) const {
  const int n = GetCount();
  if (n != Strings->GetCount()) return false;
  for (int i = 0; i < n; ++i)
    if (Get(i) != Strings->Get(i)) return false;
  return true;
}

int TStrings::CompareStrings(const String& S1, const String& S2) const { return CompareText(S1, S2); }

bool TStrings::NameMatches(const String& Line, const String& Name) const {
  std::u16string_view name;
  return NamePart(Line.view(), nameValueSeparator_, name) && CompareStrings(String(name), Name) == 0;
}

String TStrings::Names(int Index) const {
  std::u16string_view name;
  String line = Get(Index);
  return NamePart(line.view(), nameValueSeparator_, name) ? String(name) : String();
}

String TStrings::ValueFromIndex(int Index) const {
  String line = Get(Index);
  size_t at = line.view().find(nameValueSeparator_);
  return at == std::u16string_view::npos ? String() : String(line.view().substr(at + 1));
}

void TStrings::SetValueFromIndex(int Index, const String& Value) {
  if (Value.IsEmpty()) {
    if (Index >= 0) Delete(Index);
  } else if (Index < 0) {
    Add(String(nameValueSeparator_) + Value);
  } else {
    Put(Index, Names(Index) + nameValueSeparator_ + Value);
  }
}

String TStrings::Values(const String& Name) const {
  int i = IndexOfName(Name);
  return i < 0 ? String() : ValueFromIndex(i);
}

void TStrings::SetValues(const String& Name, const String& Value) {
  int i = IndexOfName(Name);
  if (Value.IsEmpty()) {
    if (i >= 0) Delete(i);
  } else if (i < 0) {
    Add(Name + nameValueSeparator_ + Value);
  } else {
    Put(i, Name + nameValueSeparator_ + Value);
  }
}

// ---- Text ----

String TStrings::Text() const {
  const int n = GetCount();
  std::u16string out;
  for (int i = 0; i < n; ++i) {
    if (i > 0) out += lineBreak_.view();
    out += Get(i).view();
  }
  if (n > 0 && trailingLineBreak_) out += lineBreak_.view();
  return String(std::move(out));
}

void TStrings::SetText(const String& Value) {
  std::u16string_view text = Value.view();
  std::u16string_view brk = lineBreak_.view();
  const bool anyBreak = brk.empty() || brk == u"\n" || brk == u"\r\n" || brk == u"\r";
  BeginUpdate();
  try {
    Clear();
    size_t start = 0;
    while (start < text.size()) {
      size_t end, next;
      if (anyBreak) {
        end = start;
        while (end < text.size() && !IsLineBreakChar(text[end])) ++end;
        next = end;
        if (next < text.size() && text[next] == u'\r') ++next;
        if (next < text.size() && text[next] == u'\n') ++next;
      } else {
        end = std::min(text.find(brk, start), text.size());
        next = std::min(end + brk.size(), text.size());
        if (end == text.size()) next = end;
      }
      Add(String(text.substr(start, end - start)));
      start = next;
    }
  } catch (...) {
    EndUpdate();
    throw;
  }
  EndUpdate();
}

namespace {

String JoinDelimited(const TStrings& list, WideChar delimiter, WideChar quote, bool strict) {
  const int n = list.Count();
  if (n == 1 && list.Get(0).IsEmpty()) return String(2, quote);
  std::u16string out;
  for (int i = 0; i < n; ++i) {
    if (i > 0) out += delimiter;
    String item = list.Get(i);
    std::u16string_view s = item.view();
    bool quoted = std::any_of(s.begin(), s.end(), [&](char16_t c) {
      return c == delimiter || c == quote || (!strict && c <= u' ');
    });
    if (!quoted) {
      out += s;
      continue;
    }
    out += quote;
    for (char16_t c : s) {
      if (c == quote) out += quote;
      out += c;
    }
    out += quote;
  }
  return String(std::move(out));
}

// Reads a quoted item starting at the quote at `p`; a doubled quote stands
// for one. An item whose closing quote is missing runs to the end.
String ExtractQuoted(std::u16string_view s, size_t& p, WideChar quote) {
  std::u16string out;
  ++p;
  while (p < s.size()) {
    size_t q = s.find(quote, p);
    if (q == std::u16string_view::npos) break;
    out += s.substr(p, q - p);
    p = q + 1;
    if (p < s.size() && s[p] == quote) {
      out += quote;
      ++p;
    } else {
      return String(std::move(out));
    }
  }
  out += s.substr(std::min(p, s.size()));
  p = s.size();
  return String(std::move(out));
}

void SplitDelimited(TStrings& list, const String& value, WideChar delimiter, WideChar quote, bool strict) {
  std::u16string_view s = value.view();
  const size_t n = s.size();
  auto skipBlanks = [&](size_t& p) {
    if (!strict)
      while (p < n && s[p] <= u' ') ++p;
  };
  list.BeginUpdate();
  try {
    list.Clear();
    size_t p = 0;
    skipBlanks(p);
    while (p < n) {
      if (s[p] == quote) {
        list.Add(ExtractQuoted(s, p, quote));
      } else {
        size_t start = p;
        while (p < n && s[p] != delimiter && (strict || s[p] > u' ')) ++p;
        list.Add(String(s.substr(start, p - start)));
      }
      skipBlanks(p);
      if (p < n && s[p] == delimiter) {
        if (p + 1 == n) list.Add(String());
        ++p;
        skipBlanks(p);
      }
    }
  } catch (...) {
    list.EndUpdate();
    throw;
  }
  list.EndUpdate();
}

}  // namespace

String TStrings::CommaText() const { return JoinDelimited(*this, u',', u'"', false); }
void TStrings::SetCommaText(const String& Value) { SplitDelimited(*this, Value, u',', u'"', false); }
String TStrings::DelimitedText() const { return JoinDelimited(*this, delimiter_, quoteChar_, strictDelimiter_); }
void TStrings::SetDelimitedText(const String& Value) {
  SplitDelimited(*this, Value, delimiter_, quoteChar_, strictDelimiter_);
}

// ---- Updates ----

void TStrings::BeginUpdate() {
  if (updateCount_++ == 0) SetUpdateState(true);
}

void TStrings::EndUpdate() {
  if (updateCount_ == 0) return;
  if (--updateCount_ == 0) SetUpdateState(false);
}

void TStrings::SetUpdateState(bool) {}

// ---- Files and streams ----

void TStrings::Load(TStream* Stream, const TEncoding* Encoding) {
  int64_t count = std::max<int64_t>(Stream->Size() - Stream->Position(), 0);
  std::string bytes(static_cast<size_t>(count), '\0');
  Stream->ReadBuffer(bytes.data(), count);
  TEncoding found = TEncoding::Default;
  size_t skip = DetectPreamble(bytes, found);
  if (Encoding && *Encoding != found) {
    // Told an encoding: its own mark is skipped, another is text.
    found = *Encoding;
    skip = 0;
  }
  SetText(DecodeText(std::string_view(bytes).substr(skip), found));
  encoding_ = found;
}

void TStrings::LoadFromStream(TStream* Stream) { Load(Stream, nullptr); }
void TStrings::LoadFromStream(TStream* Stream, TEncoding Encoding) { Load(Stream, &Encoding); }

void TStrings::LoadFromFile(const String& FileName) {
  TFileStream file(FileName, fmOpenRead | fmShareDenyWrite);
  Load(&file, nullptr);
}

void TStrings::LoadFromFile(const String& FileName, TEncoding Encoding) {
  TFileStream file(FileName, fmOpenRead | fmShareDenyWrite);
  Load(&file, &Encoding);
}

void TStrings::SaveToStream(TStream* Stream) const {
  String text = Text();
  // The system code page may not hold every character; UTF-8 does.
  SaveToStream(Stream, CanEncode(text, encoding_) ? encoding_ : TEncoding::UTF8);
}

void TStrings::SaveToStream(TStream* Stream, TEncoding Encoding) const {
  std::string bytes = writeBOM_ ? std::string(EncodingPreamble(Encoding)) : std::string();
  bytes += EncodeText(Text(), Encoding);
  Stream->WriteBuffer(bytes.data(), static_cast<int64_t>(bytes.size()));
}

void TStrings::SaveToFile(const String& FileName) const {
  TFileStream file(FileName, fmCreate);
  SaveToStream(&file);
}

void TStrings::SaveToFile(const String& FileName, TEncoding Encoding) const {
  TFileStream file(FileName, fmCreate);
  SaveToStream(&file, Encoding);
}

void TStrings::Assign(TPersistent* Source) {
  auto* source = dynamic_cast<TStrings*>(Source);
  if (!source) {
    inherited::Assign(Source);
    return;
  }
  if (source == this) return;
  BeginUpdate();
  try {
    Clear();
    delimiter_ = source->delimiter_;
    quoteChar_ = source->quoteChar_;
    nameValueSeparator_ = source->nameValueSeparator_;
    strictDelimiter_ = source->strictDelimiter_;
    lineBreak_ = source->lineBreak_;
    trailingLineBreak_ = source->trailingLineBreak_;
    AddStrings(source);
  } catch (...) {
    EndUpdate();
    throw;
  }
  EndUpdate();
}

// ---- TStringList -----------------------------------------------------------

KELMAR_PUBLISH(TStringList) {
  r.Prop(u"Sorted", &TStringList::Sorted, &TStringList::SetSorted);
  r.Prop(u"Duplicates", &TStringList::Duplicates, &TStringList::SetDuplicates);
  r.Prop(u"CaseSensitive", &TStringList::CaseSensitive, &TStringList::SetCaseSensitive);
  r.Prop(u"OwnsObjects", &TStringList::OwnsObjects, &TStringList::SetOwnsObjects);
  r.Prop(u"OnChange", &TStringList::OnChange);
  r.Prop(u"OnChanging", &TStringList::OnChanging);
}

// First line of each name, for lists that are asked for values in loops.
// Built on the first lookup in a long list; kept while lines are appended
// or rewritten under the same name, dropped on any other change.
class TStringList::NameIndex {
 public:
  NameIndex(const TStringList& list, WideChar separator, bool caseSensitive)
      : separator_(separator), caseSensitive_(caseSensitive) {
    for (int i = 0; i < list.GetCount(); ++i) Added(list.items_[static_cast<size_t>(i)].Text, i);
  }
  bool Fits(WideChar separator, bool caseSensitive) const {
    return separator == separator_ && caseSensitive == caseSensitive_;
  }
  void Added(const String& line, int index) {
    std::u16string_view name;
    if (NamePart(line.view(), separator_, name)) first_.try_emplace(Key(name), index);
  }
  int Find(const String& name) const {
    auto it = first_.find(Key(name.view()));
    return it == first_.end() ? -1 : it->second;
  }

 private:
  std::u16string Key(std::u16string_view name) const { return caseSensitive_ ? std::u16string(name) : Folded(name); }

  WideChar separator_;
  bool caseSensitive_;
  std::unordered_map<std::u16string, int> first_;
};

namespace {
// Shorter lists are scanned; the scan does not allocate.
constexpr int kNameIndexMinCount = 32;
// Lookups after a change that scan before the index is built.
constexpr int kScansBeforeIndex = 2;
}  // namespace

TStringList::TStringList() = default;

TStringList::~TStringList() {
  OnChange = nullptr;
  OnChanging = nullptr;
  if (ownsObjects_)
    for (Item& item : items_) delete item.Object;
}

void TStringList::CheckIndex(int Index) const {
  if (Index < 0 || Index >= GetCount()) IndexError(Index);
}

void TStringList::Touch() {
  nameIndex_.reset();
  scansSinceTouch_ = 0;
}

void TStringList::Changing() {
  if (UpdateCount() == 0) {
    OnChanging(this);
  } else if (!changingSent_) {
    changingSent_ = true;
    OnChanging(this);
  }
}

void TStringList::Changed() {
  if (UpdateCount() == 0) OnChange(this);
  else changedInUpdate_ = true;
}

void TStringList::SetUpdateState(bool Updating) {
  if (Updating) {
    changingSent_ = false;
    changedInUpdate_ = false;
  } else if (changedInUpdate_) {
    changedInUpdate_ = false;
    OnChange(this);
  }
}

String TStringList::Get(int Index) const {
  CheckIndex(Index);
  return items_[static_cast<size_t>(Index)].Text;
}

TObject* TStringList::GetObject(int Index) const {
  CheckIndex(Index);
  return items_[static_cast<size_t>(Index)].Object;
}

void TStringList::PutObject(int Index, TObject* AObject) {
  CheckIndex(Index);
  Changing();
  items_[static_cast<size_t>(Index)].Object = AObject;
  Changed();
}

void TStringList::Put(int Index, const String& S) {
  CheckIndex(Index);
  if (sorted_) {
    int place = 0;
    if (Find(S, place) && duplicates_ == dupError && items_[static_cast<size_t>(place)].Text != items_[static_cast<size_t>(Index)].Text)
      throw EStringListError(u"String list does not allow duplicates");
    Changing();
    Item item{S, items_[static_cast<size_t>(Index)].Object};
    items_.erase(items_.begin() + Index);
    if (place > Index) --place;
    items_.insert(items_.begin() + place, std::move(item));
    Touch();
    Changed();
    return;
  }
  Changing();
  String& line = items_[static_cast<size_t>(Index)].Text;
  if (nameIndex_) {
    std::u16string_view before, after;
    bool hadName = NamePart(line.view(), NameValueSeparator(), before);
    bool hasName = NamePart(S.view(), NameValueSeparator(), after);
    if (hadName != hasName || before != after) Touch();
  }
  line = S;
  Changed();
}

void TStringList::InsertItem(int Index, const String& S, TObject* AObject) {
  Changing();
  items_.insert(items_.begin() + Index, Item{S, AObject});
  if (nameIndex_ && Index == GetCount() - 1) nameIndex_->Added(S, Index);
  else Touch();
  Changed();
}

int TStringList::AddObject(const String& S, TObject* AObject) {
  int index = GetCount();
  if (sorted_ && Find(S, index)) {
    if (duplicates_ == dupIgnore) return index;
    if (duplicates_ == dupError) throw EStringListError(u"String list does not allow duplicates");
  }
  InsertItem(index, S, AObject);
  return index;
}

void TStringList::Insert(int Index, const String& S) {
  if (sorted_) throw EStringListError(kSortedListError);
  if (Index < 0 || Index > GetCount()) IndexError(Index);
  InsertItem(Index, S, nullptr);
}

void TStringList::Delete(int Index) {
  CheckIndex(Index);
  Changing();
  TObject* object = items_[static_cast<size_t>(Index)].Object;
  items_.erase(items_.begin() + Index);
  Touch();
  if (ownsObjects_) delete object;
  Changed();
}

void TStringList::Clear() {
  if (items_.empty()) return;
  Changing();
  std::vector<Item> old;
  old.swap(items_);
  Touch();
  if (ownsObjects_)
    for (Item& item : old) delete item.Object;
  Changed();
}

void TStringList::Exchange(int Index1, int Index2) {
  CheckIndex(Index1);
  CheckIndex(Index2);
  Changing();
  std::swap(items_[static_cast<size_t>(Index1)], items_[static_cast<size_t>(Index2)]);
  Touch();
  Changed();
}

void TStringList::Move(int CurIndex, int NewIndex) {
  if (CurIndex == NewIndex) return;
  if (sorted_) throw EStringListError(kSortedListError);
  CheckIndex(CurIndex);
  CheckIndex(NewIndex);
  Changing();
  auto from = items_.begin() + CurIndex, to = items_.begin() + NewIndex;
  if (from < to) std::rotate(from, from + 1, to + 1);
  else std::rotate(to, from, from + 1);
  Touch();
  Changed();
}

int TStringList::CompareStrings(const String& S1, const String& S2) const {
  return caseSensitive_ ? CompareStr(S1, S2) : CompareText(S1, S2);
}

bool TStringList::NameMatches(const String& Line, const String& Name) const {
  std::u16string_view name;
  if (!NamePart(Line.view(), NameValueSeparator(), name)) return false;
  return caseSensitive_ ? name == Name.view() : SameFolded(name, Name.view());
}

int TStringList::IndexOf(const String& S) const {
  int index = 0;
  if (sorted_) return Find(S, index) ? index : -1;
  for (const Item& item : items_) {
    if (CompareStrings(item.Text, S) == 0) return index;
    ++index;
  }
  return -1;
}

int TStringList::IndexOfName(const String& Name) const {
  const bool indexFits = nameIndex_ && nameIndex_->Fits(NameValueSeparator(), caseSensitive_);
  // A scan is cheaper than an index that the next change drops again.
  if (!indexFits && (GetCount() < kNameIndexMinCount || scansSinceTouch_ < kScansBeforeIndex)) {
    ++scansSinceTouch_;
    for (int i = 0; i < GetCount(); ++i)
      if (NameMatches(items_[static_cast<size_t>(i)].Text, Name)) return i;
    return -1;
  }
  if (!indexFits) nameIndex_ = std::make_unique<NameIndex>(*this, NameValueSeparator(), caseSensitive_);
  return nameIndex_->Find(Name);
}

bool TStringList::Find(const String& S, int& Index) const {
  bool found = false;
  int lo = 0, hi = GetCount() - 1;
  while (lo <= hi) {
    int mid = lo + (hi - lo) / 2;
    int c = CompareStrings(items_[static_cast<size_t>(mid)].Text, S);
    if (c < 0) {
      lo = mid + 1;
    } else {
      hi = mid - 1;
      if (c == 0) found = true;
    }
  }
  Index = lo;
  return found;
}

void TStringList::Sort() {
  CustomSort([](TStringList* list, int a, int b) {
    return list->CompareStrings(list->items_[static_cast<size_t>(a)].Text, list->items_[static_cast<size_t>(b)].Text);
  });
}

void TStringList::CustomSort(const TStringListSortCompare& Compare) {
  if (sorted_ || GetCount() < 2) return;
  // Sorts positions, so that Compare sees the list as it stands.
  std::vector<int> order(items_.size());
  std::iota(order.begin(), order.end(), 0);
  std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return Compare(this, a, b) < 0; });
  Changing();
  std::vector<Item> sorted;
  sorted.reserve(items_.size());
  for (int i : order) sorted.push_back(std::move(items_[static_cast<size_t>(i)]));
  items_ = std::move(sorted);
  Touch();
  Changed();
}

void TStringList::SetSorted(bool Value) {
  if (Value == sorted_) return;
  if (Value) Sort();
  sorted_ = Value;
}

void TStringList::SetCaseSensitive(bool Value) {
  if (Value == caseSensitive_) return;
  caseSensitive_ = Value;
  Touch();
  if (sorted_) {
    sorted_ = false;
    Sort();
    sorted_ = true;
  }
}

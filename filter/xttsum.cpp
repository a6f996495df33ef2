#include "filter/xttsum.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/db/dataset.h"
#include "platform/rtl/format.h"
#include "platform/rtl/stringlist.h"
#include "platform/rtl/sysutils.h"
#include "platform/ui/extctrls.h"

namespace {

constexpr int kFunctionCount = 5;
constexpr std::array<const char16_t*, kFunctionCount> kFunctionWords = {u"sum", u"min", u"max", u"count", u"avg"};

// Function numbers are ints (a stream may carry any); compared as ints.
bool Is(int function, XTTTSummaryFunction f) { return function == static_cast<int>(f); }

bool IsDigit(WideChar c) { return c >= u'0' && c <= u'9'; }

// Decimal text of an int: an optional sign and digits, nothing else.
bool TryDecimalInt(const String& text, int& value) {
  int start = text.Length() > 0 && (text[1] == u'-' || text[1] == u'+') ? 2 : 1;
  if (start > text.Length()) return false;
  for (int i = start; i <= text.Length(); ++i)
    if (!IsDigit(text[i])) return false;
  return TryStrToInt(text, value);
}

// The field a summary reads, when its values count: a field of the dataset
// of a type from ftSmallint to ftBCD.
TField* SummedField(const TDataSet* dataSet, const String& name) {
  TField* field = dataSet ? dataSet->FindField(name) : nullptr;
  if (!field || field->DataType() < ftSmallint || field->DataType() > ftBCD) return nullptr;
  return field;
}

// Null counts as 0. Number fields read 0 when null, so the scan asks them
// for the value alone; a Boolean field has no float value and is asked only
// when it holds one.
double SummedValue(const TField* field) {
  if (!field || (field->DataType() == ftBoolean && field->IsNull())) return 0;
  return field->AsFloat();
}

// ---- Binary form: little-endian int32 and zero-ended 8-bit text ----

void WriteInt32(TStream* stream, int32_t value) {
  auto u = static_cast<uint32_t>(value);
  const uint8_t bytes[4] = {static_cast<uint8_t>(u), static_cast<uint8_t>(u >> 8), static_cast<uint8_t>(u >> 16),
                            static_cast<uint8_t>(u >> 24)};
  stream->WriteBuffer(bytes, 4);
}

int32_t ReadInt32(TStream* stream) {
  uint8_t bytes[4];
  stream->ReadBuffer(bytes, 4);
  return static_cast<int32_t>(static_cast<uint32_t>(bytes[0]) | static_cast<uint32_t>(bytes[1]) << 8 |
                              static_cast<uint32_t>(bytes[2]) << 16 | static_cast<uint32_t>(bytes[3]) << 24);
}

void WriteText(TStream* stream, const String& text) {
  std::string bytes = StringToAnsi(text);
  stream->WriteBuffer(bytes.c_str(), static_cast<int64_t>(bytes.size()) + 1);
}

String ReadText(TStream* stream) {
  std::string bytes;
  for (char c; stream->ReadBuffer(&c, 1), c != '\0';) bytes += c;
  return AnsiToString(bytes);
}

struct TItemRecord {
  String FieldName, Format;
  int32_t Width = 0, Function = 0;
};

}  // namespace

// ---- Item --------------------------------------------------------------------------

KELMAR_PUBLISH(XTTTSummaryCollectionItem) {
  r.Prop(u"FieldName", &XTTTSummaryCollectionItem::FieldName, &XTTTSummaryCollectionItem::SetFieldName);
  r.Prop(u"TypeofFunction", &XTTTSummaryCollectionItem::TypeofFunction,
         &XTTTSummaryCollectionItem::SetTypeofFunction)
      .Default = smfSum;
  r.Prop(u"Format", &XTTTSummaryCollectionItem::Format, &XTTTSummaryCollectionItem::SetFormat);
  r.Prop(u"Width", &XTTTSummaryCollectionItem::Width, &XTTTSummaryCollectionItem::SetWidth).Default = 0;
}

XTTTSummaryCollectionItem::XTTTSummaryCollectionItem(TCollection* Collection) : TCollectionItem(Collection) {}

XTTTSummaryCollection* XTTTSummaryCollectionItem::Summaries() const {
  return dynamic_cast<XTTTSummaryCollection*>(Collection());
}

String XTTTSummaryCollectionItem::GetAsString() const {
  if (fieldName_.IsEmpty()) return String();
  String part;
  if (format_ == u"%f" || format_ == u"%.f") part = u" ";
  else if (format_.Length() == 4 && format_[1] == u'%' && format_[2] == u'.' && IsDigit(format_[3]) &&
           format_[4] == u'f')
    part = format_[3] == u'2' ? String() : String(format_[3]);
  else part = u"\"" + format_ + u"\"";
  if (!Is(function_, smfSum)) part += u"," + IntToStr(function_ % kFunctionCount);
  String name = UpperCase(fieldName_);
  return part.IsEmpty() ? name : name + u"=" + Trim(part);
}

void XTTTSummaryCollectionItem::SetAsString(const String& text) {
  function_ = smfSum;
  format_ = u"%.2f";
  int eq = text.Pos(u"=");
  if (eq == 0) {
    fieldName_ = UpperCase(Trim(text));
    return;
  }
  fieldName_ = UpperCase(Trim(text.SubString(1, eq - 1)));
  String rest = Trim(text.SubString(eq + 1, text.Length()));
  if (rest.IsEmpty()) {
    format_ = u"%f";
    return;
  }
  TStringList entries;
  entries.SetCommaText(rest);
  String first = entries.Count() > 0 ? entries.Strings(0) : String();
  if (first.Length() == 1 && IsDigit(first[1])) format_ = u"%." + first + u"f";
  else if (first.IsEmpty()) format_ = u"%f";
  else format_ = first;
  if (entries.Count() < 2) return;
  String second = Trim(LowerCase(entries.Strings(1)));
  int number;
  if (TryDecimalInt(second, number)) {
    function_ = number % kFunctionCount;
    return;
  }
  for (int i = 0; i < kFunctionCount; ++i)
    if (second == kFunctionWords[static_cast<size_t>(i)]) function_ = i;
}

String XTTTSummaryCollectionItem::GetText() const { return ::Format(format_, value_); }

double XTTTSummaryCollectionItem::GetFieldValue() const {
  XTTTSummaryCollection* summaries = Summaries();
  return SummedValue(SummedField(summaries ? summaries->DataSet() : nullptr, fieldName_));
}

void XTTTSummaryCollectionItem::Assign(TPersistent* Source) {
  auto* other = dynamic_cast<XTTTSummaryCollectionItem*>(Source);
  if (!other) {
    TCollectionItem::Assign(Source);
    return;
  }
  fieldName_ = other->fieldName_;
  format_ = other->format_;
  width_ = other->width_;
  function_ = other->function_;
}

String XTTTSummaryCollectionItem::DisplayName() const {
  return fieldName_.IsEmpty() ? TCollectionItem::DisplayName() : fieldName_;
}

// ---- Collection: items and forms --------------------------------------------------------

KELMAR_PUBLISH(XTTTSummaryCollection) {}

XTTTSummaryCollection::XTTTSummaryCollection(TDataSet* DataSet) : TTypedCollection(DataSet), dataSet_(DataSet) {}

XTTTSummaryCollectionItem* XTTTSummaryCollection::GetItemByName(const String& Name) const {
  String wanted = UpperCase(Name);
  for (int i = 0; i < Count(); ++i)
    if (UpperCase(Items(i)->FieldName()) == wanted) return Items(i);
  return nullptr;
}

XTTTSummaryCollectionItem* XTTTSummaryCollection::GetItemByName(int Function, const String& Name) const {
  String wanted = UpperCase(Name);
  for (int i = 0; i < Count(); ++i)
    if (Items(i)->TypeofFunction() == Function && UpperCase(Items(i)->FieldName()) == wanted) return Items(i);
  return nullptr;
}

String XTTTSummaryCollection::GetAsText() const {
  String text;
  for (int i = 0; i < Count(); ++i) {
    String line = Items(i)->GetAsString();
    if (!line.IsEmpty()) text += line + u"\n";
  }
  return text;
}

void XTTTSummaryCollection::SetAsText(const String& Text) {
  dirty_ = true;
  Clear();
  TStringList lines;
  lines.SetText(Text);
  for (int i = 0; i < lines.Count(); ++i)
    if (!lines.Strings(i).IsEmpty()) Add()->SetAsString(lines.Strings(i));
}

void XTTTSummaryCollection::SaveToStream(TStream* Stream) const {
  WriteInt32(Stream, Count());
  for (int i = 0; i < Count(); ++i) {
    const XTTTSummaryCollectionItem* item = Items(i);
    WriteText(Stream, item->FieldName());
    WriteText(Stream, item->Format());
    WriteInt32(Stream, item->Width());
    WriteInt32(Stream, item->TypeofFunction());
  }
}

void XTTTSummaryCollection::LoadFromStream(TStream* Stream) {
  dirty_ = true;
  // Read everything first: a broken stream leaves the items as they were.
  int32_t count = ReadInt32(Stream);
  if (count < 0) throw EReadError(u"Stream read error: negative summary count " + IntToStr(count));
  std::vector<TItemRecord> records;
  for (int32_t i = 0; i < count; ++i) {
    TItemRecord record;
    record.FieldName = ReadText(Stream);
    record.Format = ReadText(Stream);
    record.Width = ReadInt32(Stream);
    record.Function = ReadInt32(Stream);
    records.push_back(std::move(record));
  }
  Clear();
  for (const TItemRecord& record : records) {
    XTTTSummaryCollectionItem* item = Add();
    item->SetFieldName(record.FieldName);
    item->SetFormat(record.Format);
    item->SetWidth(record.Width);
    item->SetTypeofFunction(record.Function);
  }
}

String XTTTSummaryCollection::GetAttr(int Index) const {
  static constexpr const char16_t* names[] = {u"FieldName", u"TypeofFunction", u"Format", u"Width"};
  return Index >= 0 && Index < GetAttrCount() ? String(names[Index]) : String();
}

String XTTTSummaryCollection::GetItemAttr(int Index, int ItemIndex) const {
  const XTTTSummaryCollectionItem* item = GetItem(ItemIndex);
  switch (Index) {
    case 0: return item->FieldName();
    case 1: {
      int function = item->TypeofFunction();
      auto names = TEnumTypeInfo<XTTTSummaryFunction>::Names();
      return function >= 0 && function < kFunctionCount ? String(names[static_cast<size_t>(function)])
                                                        : IntToStr(function);
    }
    case 2: return item->Format();
    case 3: return IntToStr(item->Width());
    default: return String();
  }
}

// ---- Collection: computing -----------------------------------------------------------

void XTTTSummaryCollection::CheckSummaries() {
  if (!dirty_) return;
  try {
    RealCalcSummaries();
  } catch (Exception& e) {
    if (e.Message.SubString(1, 9) == u"ORA-01722") return;
    e.Message = u"Error in XTTTSummaryCollection::CheckSummaries():\n" + e.Message;
    throw;
  }
}

namespace {

// One item during a scan: its field is looked up once.
struct TScanSlot {
  XTTTSummaryCollectionItem* Item;
  const TField* Field;
  int Function;
  double Value;
};

// Back to the record the scan started from, controls enabled again.
void EndScan(TDataSet& dataSet, const TBookmark& start) {
  try {
    if (dataSet.BookmarkValid(start)) dataSet.GotoBookmark(start);
  } catch (...) {
    dataSet.EnableControls();
    throw;
  }
  dataSet.EnableControls();
}

void Accumulate(std::vector<TScanSlot>& slots) {
  for (TScanSlot& slot : slots) {
    switch (slot.Function) {
      case smfSum:
      case smfAvg: slot.Value += SummedValue(slot.Field); break;
      case smfMin: {
        double v = SummedValue(slot.Field);
        if (v < slot.Value) slot.Value = v;
        break;
      }
      case smfMax: {
        double v = SummedValue(slot.Field);
        if (v > slot.Value) slot.Value = v;
        break;
      }
      case smfCount: slot.Value += 1; break;
      default: break;
    }
  }
}

}  // namespace

void XTTTSummaryCollection::RealCalcSummaries() {
  for (int i = 0; i < Count(); ++i) Items(i)->SetValue(0);
  dirty_ = false;
  if (!dataSet_ || !dataSet_->Active() || dataSet_->RecordCount() == 0) return;
  // The platform gives no way to detach the data sources for the scan;
  // with controls disabled no link hears of it until the end.
  TDataSet& dataSet = *dataSet_;
  dataSet.DisableControls();
  TBookmark start = dataSet.GetBookmark();
  try {
    dataSet.First();
    std::vector<TScanSlot> slots;
    slots.reserve(static_cast<size_t>(Count()));
    for (int i = 0; i < Count(); ++i) {
      XTTTSummaryCollectionItem* item = Items(i);
      int function = item->TypeofFunction();
      double first =
          Is(function, smfMin) || Is(function, smfMax) ? dataSet.FieldByName(item->FieldName())->AsFloat() : 0;
      slots.push_back({item, SummedField(&dataSet, item->FieldName()), function, first});
    }
    int counter = 0;
    while (!dataSet.Eof()) {
      Accumulate(slots);
      dataSet.Next();
      ++counter;
    }
    for (TScanSlot& slot : slots) {
      if (Is(slot.Function, smfAvg) && counter != 0) slot.Value /= counter;
      slot.Item->SetValue(slot.Value);
    }
  } catch (...) {
    try {
      EndScan(dataSet, start);
    } catch (...) {
      // The scan's own error is the one to report.
    }
    throw;
  }
  EndScan(dataSet, start);
}

void XTTTSummaryCollection::IncludeCurrentRecord(bool Add) {
  for (int i = 0; i < Count(); ++i) {
    int function = Items(i)->TypeofFunction();
    if (!Is(function, smfSum) && !Is(function, smfCount)) {
      if (Add) dirty_ = true;
      return;
    }
  }
  double delta = Add ? 1 : -1;
  for (int i = 0; i < Count(); ++i) {
    XTTTSummaryCollectionItem* item = Items(i);
    double step = Is(item->TypeofFunction(), smfSum) ? item->GetFieldValue() * delta : delta;
    item->SetValue(item->Value() + step);
  }
}

void XTTTSummaryCollection::DisplaySummaries(TStatusBar* Bar) {
  if (!Bar) return;
  TStatusPanels* panels = Bar->Panels();
  while (panels->Count() < Count()) panels->Add();
  while (panels->Count() > Count()) panels->Delete(panels->Count() - 1);
  CheckSummaries();
  for (int i = 0; i < Count(); ++i) {
    panels->Items(i)->SetWidth(Items(i)->Width());
    panels->Items(i)->SetText(Items(i)->GetText());
  }
}

// Fuzz target of the client filter expressions: any text either compiles
// against the table's fields or is refused with EDatabaseError; what
// compiles evaluates on every record, and a filtered view holds only
// records of the table. Nothing may crash, hang or read out of bounds.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "platform/db/filterexpr.h"
#include "platform/db/memdataset.h"

namespace {

TVirtualTable* Table() {
  static TVirtualTable* table = [] {
    auto* t = new TVirtualTable(nullptr);
    t->AddField(u"ID", ftInteger);
    t->AddField(u"NAME", ftString, 20);
    t->AddField(u"AMOUNT", ftFloat);
    t->AddField(u"DAY", ftDateTime);
    t->AddField(u"OK", ftBoolean);
    t->AddField(u"NOTE", ftMemo);
    t->Open();
    const char16_t* names[] = {u"Anna", u"o'Neil", u"\u0219tefan", u"", u"*"};
    for (int i = 0; i < 5; ++i) {
      t->Append();
      t->FieldByName(u"ID")->SetAsInteger(i + 1);
      if (i != 3) t->FieldByName(u"NAME")->SetAsString(names[i]);
      t->FieldByName(u"AMOUNT")->SetAsFloat(i * 2.5 - 3);
      if (i != 4) t->FieldByName(u"DAY")->SetAsDateTime(TDateTime(45000.25 + i));
      t->FieldByName(u"OK")->SetAsBoolean(i % 2 == 0);
      t->FieldByName(u"NOTE")->SetAsString(u"note");
      t->Post();
    }
    return t;
  }();
  return table;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  // The first byte picks the options, the rest is the text.
  TFilterOptions options;
  if (data[0] & 1) options.Include(foCaseInsensitive);
  if (data[0] & 2) options.Include(foNoPartialCompare);
  const String text = String::FromUtf8(std::string(reinterpret_cast<const char*>(data) + 1, size - 1));
  TVirtualTable* table = Table();
  std::unique_ptr<TFilterExpression> expression;
  try {
    expression = std::make_unique<TFilterExpression>(text, table, options);
  } catch (const EDatabaseError& e) {
    if (e.Message.IsEmpty()) std::abort();
    return 0;
  }
  int passed = 0;
  for (table->First(); !table->Eof(); table->Next()) passed += expression->Evaluate() ? 1 : 0;
  // The same text as the table's filter shows exactly the records that pass.
  table->SetFilterOptions(options);
  table->SetFilter(text);
  table->SetFiltered(true);
  const int shown = table->RecordCount();
  table->SetFiltered(false);
  table->SetFilter(String());
  if (shown != passed || table->RecordCount() != 5) std::abort();
  return 0;
}

// Smart compare: the rate of VeskCmpValue on two prepared 40-character
// texts, and a Smart compare condition, written by the filter language from
// a typed value, over 100,000 rows of the embedded engine with the similarity functions
// registered (time and rows found). A row count can be named on the
// command line for a quick run.

#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/benchutil.h"
#include "drivers/sqlite/sqlitedriver.h"
#include "filter/filterlang.h"
#include "filter/veskcmp.h"
#include "platform/db/dadataset.h"
#include "platform/db/orasession.h"

namespace {

using namespace bench;

const char* const kWords[] = {"apple", "bread", "butter", "cheese", "milk", "sugar", "flour", "honey",
                              "salt", "pepper", "rice", "beans", "tea", "coffee", "jam", "oil"};

// "Honey Rice 417 Tea Salt" and the like: a few words and a number.
std::string ProductName(int i) {
  std::string s = kWords[i % 16];
  s += ' ';
  s += kWords[(i / 16) % 16];
  s += ' ';
  s += std::to_string(i % 1000);
  s += ' ';
  s += kWords[(i / 7) % 16];
  return s;
}

}  // namespace

int main(int argc, char** argv) {
  const int rows = argc > 1 ? std::atoi(argv[1]) : 100000;

  const String a = VeskCmpPrep(u"Fresh apple juice, 1 litre bottle No.42");
  const String b = VeskCmpPrep(u"Apple juice fresh: bottle of one litre 4");
  if (a.Length() < 38 || b.Length() < 38) return 1;
  const int calls = 200000;
  double sink = 0;
  const double cmpTime = Seconds([&] {
    for (int i = 0; i < calls; ++i) sink += VeskCmpValue(a, b);
  });
  if (sink <= 0) return 1;
  std::printf("rate vesk_cmp_value %.0f/s\n", calls / cmpTime);

  RegisterSQLiteDriver();
  TOraSession session(nullptr);
  session.SetServer(u":memory:");
  session.Connect();
  RegisterSimilarityFunctions(&session);
  session.StartTransaction();
  session.ExecSQL(u"CREATE TABLE goods (id INTEGER PRIMARY KEY, name VARCHAR2(60))");
  {
    TParams params;
    params.CreateParam(ftInteger, u"ID", ptInput);
    params.CreateParam(ftString, u"NAME", ptInput);
    for (int i = 1; i <= rows; ++i) {
      params.ParamByName(u"ID")->SetValue(i);
      params.ParamByName(u"NAME")->SetValue(String(ProductName(i)));
      session.ExecSQL(u"INSERT INTO goods VALUES (:ID, :NAME)", &params);
    }
  }
  session.Commit();

  // What the find/filter dialogue makes of "honey rice 417" under Smart
  // compare with the number box checked and the limit at 6.
  TFilterValueLanguage language;
  language.TextOption = TFilterValueLanguage::toSmart;
  language.NumberChecked = true;
  language.LimitPosition = 6;
  TOraQuery q(nullptr);
  q.SetSession(&session);
  q.SQL()->SetText(u"SELECT id, name FROM goods WHERE " + language.ReString(u"honey rice 417", u"name"));
  int found = 0;
  const double filterTime = Seconds([&] {
    q.Open();
    found = q.RecordCount();
  });
  if (found == 0) return 1;
  std::printf("time smart_compare_filter %.3f s rows %d of %d\n", filterTime, found, rows);
  return 0;
}

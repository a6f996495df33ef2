#include "apps/kelmar/sampledb.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/rtl/datetime.h"

namespace {

// A fixed linear congruential generator: the same numbers on every run.
class TSampleRandom {
 public:
  explicit TSampleRandom(uint32_t seed) : state_(seed) {}
  uint32_t Next(uint32_t bound) {
    state_ = state_ * 1664525u + 1013904223u;
    return (state_ >> 8) % bound;
  }
  template <size_t N>
  const char16_t* Pick(const std::array<const char16_t*, N>& items) {
    return items[Next(static_cast<uint32_t>(N))];
  }

 private:
  uint32_t state_;
};

constexpr std::array<const char16_t*, 16> kCompanyRoots = {
    u"Agroindustria", u"Carpați", u"Dunărea", u"Prut", u"Codrii", u"Nistru", u"Bucovina", u"Țara de Sus",
    u"Берёзка", u"Заря", u"Волна", u"Север", u"Рассвет", u"Ёлочка", u"Южный Двор", u"Ștefan Vodă"};
constexpr std::array<const char16_t*, 6> kCompanyForms = {u"SRL", u"SA", u"ÎI", u"ООО", u"АО", u"ИП"};
constexpr std::array<const char16_t*, 10> kCities = {u"Chișinău", u"Bălți", u"Iași", u"Cahul", u"Brașov",
                                                     u"Тирасполь", u"Одесса", u"Бендеры", u"Comrat", u"Timișoara"};
constexpr std::array<const char16_t*, 20> kGoods = {
    u"Pâine albă", u"Brânză de oaie", u"Mămăligă", u"Țuică de prune", u"Ceai de tei", u"Făină", u"Miere de salcâm",
    u"Vin roșu", u"Ulei de floarea-soarelui", u"Zahăr", u"Хлеб ржаной", u"Молоко", u"Гречка", u"Сгущёнка",
    u"Квас", u"Пельмени", u"Мёд липовый", u"Чай чёрный", u"Подсолнечное масло", u"Сыр плавленый"};
constexpr std::array<const char16_t*, 6> kVariants = {u"", u" extra", u" ecologic", u" 1 kg", u" в упаковке",
                                                      u" весовой"};
constexpr std::array<const char16_t*, 5> kUnits = {u"buc", u"kg", u"l", u"шт", u"кг"};

struct TAccount {
  const char16_t* Code;
  const char16_t* Name;
  const char16_t* Kind;  // A active, P passive, B both
};
constexpr TAccount kAccounts[] = {
    {u"1012", u"Capital subscris vărsat", u"P"},  {u"1061", u"Rezerve legale", u"P"},
    {u"2131", u"Echipamente tehnologice", u"A"},  {u"2814", u"Amortizarea altor imobilizări", u"P"},
    {u"3010", u"Materii prime", u"A"},            {u"3710", u"Mărfuri", u"A"},
    {u"4011", u"Furnizori", u"P"},                {u"4111", u"Clienți", u"A"},
    {u"4210", u"Personal - salarii datorate", u"P"}, {u"4423", u"TVA de plată", u"P"},
    {u"4426", u"TVA deductibilă", u"A"},          {u"5121", u"Conturi la bănci în lei", u"A"},
    {u"5311", u"Casa în lei", u"A"},              {u"6021", u"Cheltuieli cu materiile auxiliare", u"A"},
    {u"6070", u"Cheltuieli privind mărfurile", u"A"}, {u"7070", u"Venituri din vânzarea mărfurilor", u"P"},
    {u"6211", u"Расходы на рекламу", u"A"},       {u"7611", u"Доходы от курсовых разниц", u"P"},
    {u"4730", u"Decontări din operații în curs", u"B"}, {u"5125", u"Sume în curs de decontare", u"B"}};

constexpr int kPartners = 300, kGoodsCount = 400, kDocs = 1000, kLinesPerDocMax = 5;

// Runs one statement, or a prepared one again with new values.
class TWriter {
 public:
  explicit TWriter(TDbConnection& db) : db_(db) {}
  TDbStatus Exec(const String& sql) { return db_.ExecuteDirect(sql); }
  TDbStatus Prepare(const String& sql) { return db_.Prepare(sql, statement_); }
  TDbStatus Insert(std::initializer_list<std::pair<const char16_t*, TDbValue>> values) {
    for (const auto& [name, value] : values) {
      TDbStatus status = statement_->Bind(name, value);
      if (!status) return status;
    }
    return statement_->Execute();
  }

 private:
  TDbConnection& db_;
  std::unique_ptr<TDbStatement> statement_;
};

bool TableExists(TDbConnection& db, const String& name, int64_t* rows = nullptr) {
  std::unique_ptr<TDbStatement> s;
  bool row = false;
  if (!db.Prepare(u"SELECT COUNT(*) FROM all_tab_columns WHERE table_name = :name", s) ||
      !s->Bind(u"name", TDbValue::TextValue(name)) || !s->Execute() || !s->Fetch(row) || !row || s->AsInteger(0) == 0)
    return false;
  if (rows && (!db.Prepare(u"SELECT COUNT(*) FROM " + name, s) || !s->Execute() || !s->Fetch(row) || !row))
    return false;
  if (rows) *rows = s->AsInteger(0);
  return true;
}

TDbValue Text(const String& s) { return TDbValue::TextValue(s); }
TDbValue Int(int64_t v) { return TDbValue::Integer(v); }
TDbValue Money(double v) { return TDbValue::FloatValue(static_cast<double>(static_cast<int64_t>(v * 100 + 0.5)) / 100); }

TDbStatus FillAccounts(TWriter& w) {
  TDbStatus status = w.Exec(
      u"CREATE TABLE ACCOUNTS (CODE CHAR(6) PRIMARY KEY, NAME VARCHAR2(80) NOT NULL, KIND CHAR(1) NOT NULL)");
  if (status) status = w.Prepare(u"INSERT INTO ACCOUNTS (CODE, NAME, KIND) VALUES (:CODE, :NAME, :KIND)");
  for (const TAccount& a : kAccounts) {
    for (int analytic = 1; status && analytic <= 3; ++analytic) {
      const String suffix = analytic < 10 ? u"0" + String(std::to_string(analytic)) : String(std::to_string(analytic));
      status = w.Insert({{u"CODE", Text(String(a.Code) + suffix)},
                         {u"NAME", Text(String(a.Name) + u" / " + String(std::to_string(analytic)))},
                         {u"KIND", Text(a.Kind)}});
    }
  }
  return status;
}

TDbStatus FillPartners(TWriter& w, TSampleRandom& r) {
  TDbStatus status = w.Exec(
      u"CREATE TABLE PARTNERS (ID NUMBER(10) PRIMARY KEY, NAME VARCHAR2(60) NOT NULL, CITY VARCHAR2(30), "
      u"FISCAL_CODE VARCHAR2(13), ACCOUNT CHAR(6))");
  if (status)
    status = w.Prepare(u"INSERT INTO PARTNERS (ID, NAME, CITY, FISCAL_CODE, ACCOUNT) "
                       u"VALUES (:ID, :NAME, :CITY, :FISCAL_CODE, :ACCOUNT)");
  for (int id = 1; status && id <= kPartners; ++id) {
    const String name = String(r.Pick(kCompanyRoots)) + u" " + String(std::to_string(id)) + u" " + r.Pick(kCompanyForms);
    const String fiscal = String(std::to_string(1000000000000LL + r.Next(900000000) * 1000LL + id));
    status = w.Insert({{u"ID", Int(id)}, {u"NAME", Text(name)}, {u"CITY", Text(r.Pick(kCities))},
                       {u"FISCAL_CODE", Text(fiscal)}, {u"ACCOUNT", Text(id % 3 ? u"411101" : u"401101")}});
  }
  return status;
}

TDbStatus FillGoods(TWriter& w, TSampleRandom& r) {
  TDbStatus status = w.Exec(
      u"CREATE TABLE GOODS (ID NUMBER(10) PRIMARY KEY, CODE VARCHAR2(10) NOT NULL UNIQUE, NAME VARCHAR2(60) NOT NULL, "
      u"UNIT VARCHAR2(6), PRICE NUMBER(12,2), ACCOUNT CHAR(6))");
  if (status)
    status = w.Prepare(u"INSERT INTO GOODS (ID, CODE, NAME, UNIT, PRICE, ACCOUNT) "
                       u"VALUES (:ID, :CODE, :NAME, :UNIT, :PRICE, :ACCOUNT)");
  for (int id = 1; status && id <= kGoodsCount; ++id) {
    const std::string code = std::to_string(100000 + id);
    const String name = String(r.Pick(kGoods)) + r.Pick(kVariants) + u" #" + String(std::to_string(id));
    status = w.Insert({{u"ID", Int(id)}, {u"CODE", Text(String("G" + code))}, {u"NAME", Text(name)},
                       {u"UNIT", Text(r.Pick(kUnits))}, {u"PRICE", Money(1 + r.Next(50000) / 100.0)},
                       {u"ACCOUNT", Text(u"371001")}});
  }
  return status;
}

TDbStatus FillDocs(TDbConnection& db, TWriter& w, TSampleRandom& r) {
  TDbStatus status = w.Exec(
      u"CREATE TABLE DOCS (ID NUMBER(10) PRIMARY KEY, DOC_NO VARCHAR2(12) NOT NULL, DOC_DATE DATE NOT NULL, "
      u"PARTNER_ID NUMBER(10) REFERENCES PARTNERS (ID), ACCOUNT CHAR(6), TOTAL NUMBER(14,2), NOTE VARCHAR2(80))");
  if (status)
    status = w.Exec(
        u"CREATE TABLE DOC_LINES (ID NUMBER(10) PRIMARY KEY, DOC_ID NUMBER(10) NOT NULL REFERENCES DOCS (ID), "
        u"LINE_NO NUMBER(4) NOT NULL, GOODS_ID NUMBER(10) REFERENCES GOODS (ID), QTY NUMBER(12,3), "
        u"PRICE NUMBER(12,2), AMOUNT NUMBER(14,2))");
  if (status) status = w.Exec(u"CREATE INDEX DOC_LINES_DOC ON DOC_LINES (DOC_ID)");
  TWriter lines(db);
  if (status)
    status = w.Prepare(u"INSERT INTO DOCS (ID, DOC_NO, DOC_DATE, PARTNER_ID, ACCOUNT, TOTAL, NOTE) "
                       u"VALUES (:ID, :DOC_NO, :DOC_DATE, :PARTNER_ID, :ACCOUNT, :TOTAL, :NOTE)");
  if (status)
    status = lines.Prepare(u"INSERT INTO DOC_LINES (ID, DOC_ID, LINE_NO, GOODS_ID, QTY, PRICE, AMOUNT) "
                           u"VALUES (:ID, :DOC_ID, :LINE_NO, :GOODS_ID, :QTY, :PRICE, :AMOUNT)");
  const double first = EncodeDate(2024, 1, 1);
  int lineId = 0;
  struct TLine {
    int Goods;
    double Qty, Price, Amount;
  };
  for (int id = 1; status && id <= kDocs; ++id) {
    // The lines are drawn first, so that the document carries their total.
    std::vector<TLine> drawn(1 + r.Next(kLinesPerDocMax));
    double total = 0;
    for (TLine& line : drawn) {
      line.Qty = 1 + r.Next(20000) / 1000.0;
      line.Price = 1 + r.Next(30000) / 100.0;
      line.Amount = static_cast<double>(static_cast<int64_t>(line.Qty * line.Price * 100 + 0.5)) / 100;
      line.Goods = 1 + static_cast<int>(r.Next(kGoodsCount));
      total += line.Amount;
    }
    const String number = u"F-" + String(std::to_string(10000 + id));
    status = w.Insert({{u"ID", Int(id)}, {u"DOC_NO", Text(number)}, {u"DOC_DATE", TDbValue::Date(first + id / 3)},
                       {u"PARTNER_ID", Int(1 + r.Next(kPartners))}, {u"ACCOUNT", Text(id % 2 ? u"411101" : u"401101")},
                       {u"TOTAL", Money(total)}, {u"NOTE", Text(id % 7 ? u"Factură fiscală" : u"Счёт-фактура")}});
    for (size_t n = 0; status && n < drawn.size(); ++n)
      status = lines.Insert({{u"ID", Int(++lineId)}, {u"DOC_ID", Int(id)}, {u"LINE_NO", Int(static_cast<int64_t>(n) + 1)},
                             {u"GOODS_ID", Int(drawn[n].Goods)}, {u"QTY", TDbValue::FloatValue(drawn[n].Qty)},
                             {u"PRICE", Money(drawn[n].Price)}, {u"AMOUNT", Money(drawn[n].Amount)}});
  }
  return status;
}

TDbStatus FillRows(TWriter& w, int rows) {
  TDbStatus status = w.Exec(String(u"CREATE TABLE ") + kRowsTable +
                            u" (ID NUMBER(10) PRIMARY KEY, CODE VARCHAR2(10), NAME VARCHAR2(20), AMOUNT FLOAT, "
                            u"QTY NUMBER(10), MADE DATE, NOTE VARCHAR2(40))");
  if (status)
    status = w.Prepare(String(u"INSERT INTO ") + kRowsTable +
                       u" (ID, CODE, NAME, AMOUNT, QTY, MADE, NOTE) VALUES (:ID, :CODE, :NAME, :AMOUNT, :QTY, :MADE, :NOTE)");
  TSampleRandom r(7);
  const double first = EncodeDate(2020, 1, 1);
  const String note = u"Rând de probă pentru măsurarea vitezei.";  // 40 characters with the number
  for (int id = 1; status && id <= rows; ++id) {
    const std::string digits = std::to_string(id);
    status = w.Insert({{u"ID", Int(id)}, {u"CODE", Text(String("R" + digits))},
                       {u"NAME", Text(r.Pick(kCompanyRoots))}, {u"AMOUNT", TDbValue::FloatValue(r.Next(1000000) / 100.0)},
                       {u"QTY", Int(r.Next(1000))}, {u"MADE", TDbValue::Date(first + id % 1500)},
                       {u"NOTE", Text(note.SubString(1, 40 - static_cast<int>(digits.size())) + String(digits))}});
  }
  return status;
}

}  // namespace

TDbStatus CreateSampleDatabase(TDbConnection& db, int rows) {
  TWriter w(db);
  TSampleRandom r(20240101);
  TDbStatus status = db.StartTransaction();
  if (status && !TableExists(db, u"ACCOUNTS")) status = FillAccounts(w);
  if (status && !TableExists(db, u"PARTNERS")) status = FillPartners(w, r);
  if (status && !TableExists(db, u"GOODS")) status = FillGoods(w, r);
  if (status && !TableExists(db, u"DOCS")) status = FillDocs(db, w, r);
  if (status) {
    // The key sequence of the generated insert blocks starts above every sample key.
    status = w.Exec(u"CREATE SEQUENCE ID_TMDB_CM START WITH 100000");
    if (status.OraCode == 955) status = TDbStatus::Ok();  // already there
  }
  int64_t count = -1;
  if (status && rows > 0 && !(TableExists(db, kRowsTable, &count) && count == rows)) {
    if (count >= 0) status = w.Exec(String(u"DROP TABLE ") + kRowsTable);
    if (status) status = FillRows(w, rows);
  }
  if (status) return db.Commit();
  db.Rollback();
  return status;
}

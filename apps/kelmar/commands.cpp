#include "apps/kelmar/commands.h"

#include <filesystem>
#include <ostream>
#include <vector>

#include "apps/kelmar/sampledb.h"
#include "apps/kelmar/tableprinter.h"
#include "drivers/sqlite/sqlitedriver.h"
#include "platform/db/dadataset.h"

namespace {

constexpr const char16_t* kDemoTables[] = {u"ACCOUNTS", u"PARTNERS", u"GOODS", u"DOCS", u"DOC_LINES"};

void Connect(TOraSession& session, const std::string& file) {
  RegisterSQLiteDriver();
  session.SetServer(String::FromUtf8(file));
  session.Connect();
}

bool IsQuery(const String& sql) {
  String t = UpperCase(TrimLeft(sql));
  for (const char16_t* word : {u"SELECT", u"WITH"}) {
    String w(word);
    if (t.SubString(1, w.Length()) == w && (t.Length() == w.Length() || t[w.Length() + 1] <= u' ')) return true;
  }
  return false;
}

int Fail(std::ostream& err, const Exception& e) {
  err << "kelmar: " << e.Message.ToUtf8() << "\n";
  return 1;
}

}  // namespace

int RunDemo(const std::string& file, int rows, std::ostream& out, std::ostream& err) {
  try {
    TOraSession session(nullptr);
    Connect(session, file);
    CheckDbStatus(CreateSampleDatabase(*session.Connection(), rows));
    out << "Sample database " << file << "\n";
    TOraQuery count(nullptr);
    count.SetSession(&session);
    std::vector<const char16_t*> tables(std::begin(kDemoTables), std::end(kDemoTables));
    if (rows > 0) tables.push_back(kRowsTable);
    for (const char16_t* table : tables) {
      count.SQL()->SetText(String(u"SELECT COUNT(*) FROM ") + table);
      count.Open();
      String name(table);
      out << "  " << name.ToUtf8() << std::string(static_cast<size_t>(std::max(1, 10 - name.Length())), ' ')
          << count.Fields()->Fields(0)->AsString().ToUtf8() << " rows\n";
      count.Close();
    }
    return 0;
  } catch (const Exception& e) {
    return Fail(err, e);
  }
}

int RunSql(const std::string& file, const std::string& sql, std::ostream& out, std::ostream& err) {
  std::error_code ec;
  if (!std::filesystem::is_regular_file(file, ec)) {
    err << "kelmar: database file \"" << file << "\" not found\n";
    return 1;
  }
  try {
    TOraSession session(nullptr);
    Connect(session, file);
    TOraQuery query(nullptr);
    query.SetSession(&session);
    query.SQL()->SetText(String::FromUtf8(sql));
    if (query.ParamCount() > 0)
      throw EDatabaseError(u"The statement has parameters (:" + query.Params()->Items(0)->Name() +
                           u"); give their values in the text");
    if (IsQuery(query.SQL()->Text())) {
      query.Open();
      out << FormatTable(&query);
    } else {
      query.ExecSQL();
      out << query.RowsAffected() << (query.RowsAffected() == 1 ? " row" : " rows") << " affected\n";
    }
    return 0;
  } catch (const Exception& e) {
    return Fail(err, e);
  }
}

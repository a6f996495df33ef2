#include "apps/kelmar/querycmd.h"

#include <filesystem>
#include <map>
#include <ostream>

#include "apps/kelmar/tableprinter.h"
#include "data/veskodacquerylib.h"
#include "drivers/sqlite/sqlitedriver.h"
#include "filter/listfilts.h"
#include "filter/xttsum.h"
#include "platform/ui/forms.h"
#include "platform/ui/uiport.h"

const char* const kQueryUsage =
    "usage: kelmar query --db FILE --table T [--alias A] [--where TEXT] [--sys-filter TEXT] [--order TEXT]\n"
    "                    [--summary \"FIELD=2,sum;...\"] [--filter \"FIELD=condition\"]... [--show-sql]\n";

namespace {

struct TQueryArgs {
  std::map<std::string, std::string> values;  // by option name
  std::vector<std::string> filters;           // --filter, in order
  bool showSql = false;
};

// False for an unknown option, a missing value, or no --db or --table.
bool Parse(const std::vector<std::string>& args, TQueryArgs& parsed) {
  static const char* const kValued[] = {"--db", "--table", "--alias", "--where", "--sys-filter", "--order",
                                        "--summary"};
  for (size_t i = 0; i < args.size(); ++i) {
    if (args[i] == "--show-sql") {
      parsed.showSql = true;
      continue;
    }
    if (args[i] == "--filter") {
      // A field name, "=", and the condition as a person types it.
      if (i + 1 >= args.size() || args[i + 1].find('=') == std::string::npos || args[i + 1][0] == '=') return false;
      parsed.filters.push_back(args[++i]);
      continue;
    }
    bool known = false;
    for (const char* name : kValued) known = known || args[i] == name;
    if (!known || i + 1 >= args.size()) return false;
    parsed.values[args[i]] = args[i + 1];
    ++i;
  }
  return !parsed.values["--db"].empty() && !parsed.values["--table"].empty();
}

String Arg(TQueryArgs& parsed, const char* name) { return String::FromUtf8(parsed.values[name]); }

// The command's person is the terminal: what the filter language would
// show in a message box (a bad number or date) goes to the error stream,
// and the condition then goes on as typed, as it does for a person. The
// command asks nothing, so any other dialogue is refused.
class TConsoleMessages final : public UserInterface {
 public:
  explicit TConsoleMessages(std::ostream& err) : err_(err) {}
  void ShowModal(TCustomForm&) override { Refuse(); }
  int MessageDlg(const String& Msg, TMsgDlgType, TMsgDlgButtons, int) override {
    ShowMessage(Msg);
    return mrOk;
  }
  void ShowMessage(const String& Msg) override { err_ << "kelmar: " << Msg.ToUtf8() << "\n"; }
  bool InputQuery(const String&, const String&, String&) override { Refuse(); }
  bool FileDialog(TFileDialogRequest&) override { Refuse(); }
  bool SelectDirectory(const String&, const String&, String&) override { Refuse(); }
  TMenuItem* TrackPopupMenu(TPopupMenu&, int, int) override { Refuse(); }

 private:
  [[noreturn]] static void Refuse() { throw EInvalidOperation(u"kelmar query asks no questions"); }
  std::ostream& err_;
};

const char* FunctionWord(int function) {
  static const char* const kWords[] = {"sum", "min", "max", "count", "avg"};
  return function >= 0 && function < 5 ? kWords[function] : "?";
}

}  // namespace

int RunQueryCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  TQueryArgs parsed;
  if (!Parse(args, parsed)) {
    err << kQueryUsage;
    return 2;
  }
  const std::string file = parsed.values["--db"];
  std::error_code ec;
  if (!std::filesystem::is_regular_file(file, ec)) {
    err << "kelmar: database file \"" << file << "\" not found\n";
    return 1;
  }
  TConsoleMessages console(err);
  TUserInterfaceScope scope(console);
  try {
    RegisterSQLiteDriver();
    TOraSession session(nullptr);
    session.SetServer(String::FromUtf8(file));
    session.Connect();
    TVeskODACQuery query(nullptr);
    query.SetName(u"query");
    query.SetSession(&session);
    query.SetVeskAlias(Arg(parsed, "--alias"));
    query.SetVeskFilter(Arg(parsed, "--where"));
    query.SetVeskFilterSYS(Arg(parsed, "--sys-filter"));
    query.SetVeskGroupField(Arg(parsed, "--order"));
    query.SetVeskTableLive(Arg(parsed, "--table"));
    // The summary text takes one item per line; the option separates them by ";".
    query.XTTSummary()->SetAsText(StringReplace(Arg(parsed, "--summary"), u";", u"\n", TReplaceFlags{rfReplaceAll}));
    query.Open();
    // Each condition goes the way of the filter dialogue's typing, and the
    // query is recomposed and reopened after each.
    for (const std::string& filter : parsed.filters) {
      const String text = String::FromUtf8(filter);
      const String field = text.SubString(1, text.Pos(u"=") - 1);
      if (query.ListFilts()->GetFieldIndex(field) < 0) {
        err << "kelmar: the query has no field " << field.ToUtf8() << " to filter\n";
        return 1;
      }
      query.SetFilterCmdSetExpr(text);
    }
    if (parsed.showSql) out << query.SQL()->Text().ToUtf8() << "\n";
    out << FormatTable(&query);
    XTTTSummaryCollection* summary = query.XTTSummary();
    if (summary->Count() > 0) {
      query.XTTCalcSummaries();
      for (int i = 0; i < summary->Count(); ++i) {
        XTTTSummaryCollectionItem* item = summary->GetItem(i);
        out << item->FieldName().ToUtf8() << " " << FunctionWord(item->TypeofFunction()) << " = "
            << item->GetText().ToUtf8() << "\n";
      }
    }
    return 0;
  } catch (const Exception& e) {
    err << "kelmar: " << e.Message.ToUtf8() << "\n";
    return 1;
  }
}

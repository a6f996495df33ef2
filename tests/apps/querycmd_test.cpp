// kelmar query: composition from the options, the rows, the summaries and
// the errors, over a database file.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <sstream>

#include "apps/kelmar/querycmd.h"
#include "apps/kelmar/tableprinter.h"
#include "data/veskodacquerylib.h"
#include "drivers/sqlite/sqlitedriver.h"
#include "platform/db/orasession.h"
#include "platform/ui/uiport.h"

namespace {

namespace fs = std::filesystem;

class QueryCommand : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = fs::temp_directory_path() / ("kelmar_query_" + std::to_string(getpid()));
    fs::create_directories(dir_);
    db_ = (dir_ / "q.db").string();
    RegisterSQLiteDriver();
    TOraSession session(nullptr);
    session.SetServer(String::FromUtf8(db_));
    session.Connect();
    for (const char16_t* sql :
         {u"CREATE TABLE GOODS (ID INTEGER, NAME VARCHAR2(20), PRICE NUMBER(10,2), QTY INTEGER)",
          u"INSERT INTO GOODS VALUES (1, 'Apple', 2.5, 10)", u"INSERT INTO GOODS VALUES (2, 'Apricot', 4, 5)",
          u"INSERT INTO GOODS VALUES (3, 'Butter', 3.1, 7)", u"INSERT INTO GOODS VALUES (4, 'Bread', 1.2, NULL)"})
      session.ExecSQL(sql);
  }
  void TearDown() override {
    std::error_code ec;
    fs::remove_all(dir_, ec);
  }
  int Run(std::vector<std::string> args) {
    out_.str(std::string());
    err_.str(std::string());
    return RunQueryCommand(args, out_, err_);
  }

  fs::path dir_;
  std::string db_;
  std::ostringstream out_, err_;
};

TEST_F(QueryCommand, PrintsTheComposedStatementRowsAndSummaries) {
  ASSERT_EQ(Run({"--db", db_, "--table", "GOODS", "--alias", "G", "--where", "G.PRICE > 2", "--sys-filter",
                 "G.QTY IS NOT NULL", "--order", "G.NAME DESC", "--summary", "PRICE;QTY=0,count;PRICE=1,max",
                 "--show-sql"}),
            0)
      << err_.str();
  const std::string out = out_.str();
  EXPECT_EQ(out.rfind("SELECT G.* FROM GOODS G\nWHERE\n(G.PRICE > 2)\nAND\n(G.QTY IS NOT NULL)\nORDER BY G.NAME DESC\n\n",
                      0),
            0u)
      << out;
  const size_t butter = out.find("Butter"), apricot = out.find("Apricot"), apple = out.find("Apple");
  ASSERT_NE(butter, std::string::npos) << out;
  EXPECT_LT(butter, apricot);
  EXPECT_LT(apricot, apple);
  EXPECT_EQ(out.find("Bread"), std::string::npos);
  EXPECT_NE(out.find("PRICE sum = 9.60\nQTY count = 3\nPRICE max = 4.0\n"), std::string::npos) << out;
  EXPECT_EQ(err_.str(), "");
}

TEST_F(QueryCommand, WithoutOptionsShowsTheWholeTableAndNoStatement) {
  ASSERT_EQ(Run({"--table", "GOODS", "--db", db_}), 0) << err_.str();
  EXPECT_EQ(out_.str().find("SELECT"), std::string::npos);
  EXPECT_NE(out_.str().find("Bread"), std::string::npos);
}

TEST_F(QueryCommand, BadArgumentsShowTheUsage) {
  EXPECT_EQ(Run({"--db", db_}), 2);
  EXPECT_EQ(err_.str(), kQueryUsage);
  EXPECT_EQ(Run({"--db", db_, "--table", "GOODS", "--colour", "red"}), 2);
  EXPECT_EQ(Run({"--db", db_, "--table"}), 2);
  EXPECT_EQ(Run({"--db", (dir_ / "none.db").string(), "--table", "GOODS"}), 1);
  EXPECT_NE(err_.str().find("not found"), std::string::npos);
}

TEST_F(QueryCommand, AFailingStatementReportsTheOpenErrorWithItsText) {
  EXPECT_EQ(Run({"--db", db_, "--table", "GOODS", "--where", "NOSUCH = 1"}), 1);
  EXPECT_EQ(err_.str().rfind("kelmar: Error EOraError opening DataSet query:\n\nORA-00904", 0), 0u) << err_.str();
  EXPECT_NE(err_.str().find("\nSQL text:\nSELECT GOODS.* FROM GOODS\nWHERE\n(NOSUCH = 1)"), std::string::npos)
      << err_.str();
  EXPECT_EQ(out_.str(), "");
}

TEST_F(QueryCommand, FiltersGoThroughTheValueLanguageAndShowInTheStatement) {
  ASSERT_EQ(Run({"--db", db_, "--table", "GOODS", "--alias", "G", "--filter", "PRICE=>=3,<=4", "--filter",
                 "NAME=butter", "--show-sql"}),
            0)
      << err_.str();
  const std::string out = out_.str();
  // A line per field, in the fields' order.
  const size_t name = out.find("(( UPPER(G.NAME) = UPPER('butter') ))");
  const size_t price = out.find("AND((G.PRICE>=3) AND (G.PRICE<=4))");
  EXPECT_NE(name, std::string::npos) << out;
  EXPECT_NE(price, std::string::npos) << out;
  EXPECT_LT(name, price);
  EXPECT_NE(out.find("Butter"), std::string::npos) << out;
  for (const char* gone : {"Apricot", "Apple", "Bread"}) EXPECT_EQ(out.find(gone), std::string::npos) << gone;

  ASSERT_EQ(Run({"--db", db_, "--table", "GOODS", "--filter", "QTY=5 7", "--filter", "QTY=is null"}), 0)
      << err_.str();
  // The second condition on a field replaces the first.
  EXPECT_NE(out_.str().find("Bread"), std::string::npos) << out_.str();
  EXPECT_EQ(out_.str().find("Butter"), std::string::npos) << out_.str();
}

TEST_F(QueryCommand, BadFiltersAreRefusedClearly) {
  EXPECT_EQ(Run({"--db", db_, "--table", "GOODS", "--filter", "PRICE"}), 2);
  EXPECT_EQ(Run({"--db", db_, "--table", "GOODS", "--filter", "=5"}), 2);
  EXPECT_EQ(Run({"--db", db_, "--table", "GOODS", "--filter", "COLOUR=red"}), 1);
  EXPECT_EQ(err_.str(), "kelmar: the query has no field COLOUR to filter\n");
  // A quote closes the literal early: the engine refuses the statement.
  EXPECT_EQ(Run({"--db", db_, "--table", "GOODS", "--filter", "NAME=it's"}), 1);
  EXPECT_EQ(err_.str().rfind("kelmar: ", 0), 0u);
  EXPECT_EQ(out_.str(), "");
}

TEST_F(QueryCommand, ABadNumberIsToldAsTheDialogueWouldTellIt) {
  // The language tells of the bad number, then the condition goes on as
  // typed and the engine refuses it.
  EXPECT_EQ(Run({"--db", db_, "--table", "GOODS", "--filter", "PRICE=abc"}), 1);
  const std::string err = err_.str();
  EXPECT_EQ(err.rfind("kelmar: TFilterForm::ReFloat() - Incorrect float value: 'abc'\n", 0), 0u) << err;
  EXPECT_NE(err.find("abc", err.find('\n')), std::string::npos) << err;
  EXPECT_EQ(out_.str(), "");
  // Nothing is left installed behind the command.
  EXPECT_THROW(CurrentUserInterface().ShowMessage(u"x"), EInvalidOperation);
}

}  // namespace

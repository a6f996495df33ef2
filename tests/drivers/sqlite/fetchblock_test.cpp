// Fetching in blocks: the values of a block are those the row readers give.
#include <string>

#include "drivers/sqlite/datetext.h"
#include "tests/drivers/sqlite/enginefixture.h"

namespace {

// One cell as text: "<kind>:<value>", so that blocks and rows compare.
std::string Describe(TDbKind kind, int64_t i, double d, std::string_view bytes) {
  switch (kind) {
    case dkNull: return "null";
    case dkInteger: return "int:" + std::to_string(i);
    case dkFloat: return "float:" + std::to_string(d);
    case dkDate: return "date:" + std::to_string(d);
    case dkText: return "text:" + std::string(bytes);
    case dkBlob: return "blob:" + std::string(bytes);
  }
  return "?";
}

using TCells = std::vector<std::vector<std::string>>;

// Every row through Fetch and the As... readers.
TCells ByRows(TDbStatement& s) {
  TCells rows;
  bool row = true;
  while (s.Fetch(row) && row) {
    std::vector<std::string> cells;
    for (int c = 0; c < s.ColumnCount(); ++c) {
      const TDbKind kind = s.Kind(c);
      cells.push_back(Describe(kind, kind == dkInteger ? s.AsInteger(c) : 0,
                               kind == dkFloat || kind == dkDate ? s.AsFloat(c) : 0,
                               kind == dkText ? s.AsUtf8(c) : kind == dkBlob ? s.AsBytes(c) : std::string_view()));
    }
    rows.push_back(cells);
  }
  return rows;
}

// Every row through FetchBlock, `size` rows at a time; `sizes` gets the
// number of rows of each block.
TCells ByBlocks(TDbStatement& s, int size, std::vector<int>* sizes = nullptr) {
  TCells rows;
  TDbBlock block;
  do {
    TDbStatus status = s.FetchBlock(block, size);
    EXPECT_TRUE(status) << status.Message();
    if (!status) break;
    if (sizes) sizes->push_back(block.Rows);
    EXPECT_EQ(block.Columns.size(), static_cast<size_t>(s.ColumnCount()));
    for (int r = 0; r < block.Rows; ++r) {
      std::vector<std::string> cells;
      for (const TDbColumnCells& column : block.Columns) {
        const TDbCell& cell = column.Cells[static_cast<size_t>(r)];
        const bool bytes = cell.Kind == dkText || cell.Kind == dkBlob;
        cells.push_back(Describe(cell.Kind, cell.Kind == dkInteger ? cell.Int : 0,
                                 cell.Kind == dkFloat || cell.Kind == dkDate ? cell.Float : 0,
                                 bytes ? column.View(cell) : std::string_view()));
      }
      rows.push_back(cells);
    }
  } while (block.Rows == size);
  return rows;
}

// A statement that leaves FetchBlock to the port's row-by-row default.
class RowOnlyStatement : public TDbStatement {
 public:
  explicit RowOnlyStatement(std::unique_ptr<TDbStatement> inner) : inner_(std::move(inner)) {}
  int ParamCount() const override { return inner_->ParamCount(); }
  String ParamName(int index) const override { return inner_->ParamName(index); }
  TDbStatus Bind(const String& name, const TDbValue& value) override { return inner_->Bind(name, value); }
  TDbStatus Execute() override { return inner_->Execute(); }
  bool ReturnsRows() const override { return inner_->ReturnsRows(); }
  int64_t RowsAffected() const override { return inner_->RowsAffected(); }
  TDbValue OutValue(const String& name) const override { return inner_->OutValue(name); }
  int ColumnCount() const override { return inner_->ColumnCount(); }
  const TDbColumn& Column(int index) const override { return inner_->Column(index); }
  TDbStatus Fetch(bool& row) override { return inner_->Fetch(row); }
  TDbKind Kind(int column) const override { return inner_->Kind(column); }
  int64_t AsInteger(int column) const override { return inner_->AsInteger(column); }
  double AsFloat(int column) const override { return inner_->AsFloat(column); }
  std::string_view AsUtf8(int column) const override { return inner_->AsUtf8(column); }
  std::string_view AsBytes(int column) const override { return inner_->AsBytes(column); }

 private:
  std::unique_ptr<TDbStatement> inner_;
};

class FetchBlockTest : public EngineTest {
 protected:
  void SetUp() override {
    EngineTest::SetUp();
    // SQLite keeps what a row gives; a BLOB column converts nothing.
    Exec(u"CREATE TABLE mixed (id NUMBER(10), val BLOB, made DATE, amount FLOAT)");
    Exec(u"INSERT INTO mixed VALUES (1, 'plain', '2015-02-01 10:20:30', 1.5)");
    Exec(u"INSERT INTO mixed VALUES (2, NULL, NULL, NULL)");
    Exec(u"INSERT INTO mixed VALUES (3, 'Țară și пример', '1899-12-29 06:00:00', 2)");
    Exec(u"INSERT INTO mixed (id, val, made, amount) SELECT 4, 42, 45000, 'x' FROM dual");
    Exec(u"INSERT INTO mixed (id, val, made, amount) SELECT 5, 2.25, '01.02.2015', -0.5 FROM dual");
    Exec(u"INSERT INTO mixed (id, val, made, amount) SELECT 6, X'00FF41', 'not a date', 3 FROM dual");
    Exec(u"INSERT INTO mixed VALUES (7, 'last', '2024-01-02 00:00:00', 7.25)");
  }
  std::unique_ptr<TDbStatement> Open(const String& sql) {
    std::unique_ptr<TDbStatement> s;
    TDbStatus status = Run(*db, sql, {}, &s);
    EXPECT_TRUE(status) << status.Message();
    return s;
  }
  const String sql = u"SELECT id, val, made, amount FROM mixed ORDER BY id";
};

TEST_F(FetchBlockTest, BlocksGiveWhatTheRowReadersGive) {
  const TCells rows = ByRows(*Open(sql));
  ASSERT_EQ(rows.size(), 7u);
  // Spot checks of the dynamic typing and of the date column.
  EXPECT_EQ(rows[1], (std::vector<std::string>{"int:2", "null", "null", "null"}));
  EXPECT_EQ(rows[2][1], "text:Țară și пример");
  EXPECT_EQ(rows[3][1], "int:42");
  EXPECT_EQ(rows[3][2], "int:45000");
  EXPECT_EQ(rows[3][3], "text:x");
  EXPECT_EQ(rows[4][1], "float:2.250000");
  EXPECT_EQ(rows[5][1], "blob:" + std::string("\0\xff" "A", 3));
  EXPECT_EQ(rows[5][2], "date:0.000000");  // text that is no date reads as day 0
  TCivilTime t;
  t.Year = 2015, t.Month = 2, t.Day = 1, t.Hour = 10, t.Minute = 20, t.Second = 30;
  EXPECT_EQ(rows[0][2], "date:" + std::to_string(CivilToDays(t)));
  EXPECT_EQ(rows[2][2], "date:" + std::to_string(-1.25));
  EXPECT_EQ(rows[4][2], "date:42036.000000");  // a literal in the session's format
  for (int size : {1, 2, 3, 7, 8, 100}) {
    std::vector<int> sizes;
    EXPECT_EQ(ByBlocks(*Open(sql), size, &sizes), rows) << "blocks of " << size;
    // Full blocks until the last one, which is short (possibly empty).
    ASSERT_FALSE(sizes.empty());
    for (size_t i = 0; i + 1 < sizes.size(); ++i) EXPECT_EQ(sizes[i], size);
    EXPECT_LT(sizes.back(), size);
  }
  // The port's default, row by row, gives the same.
  std::unique_ptr<TDbStatement> inner = Open(sql);
  RowOnlyStatement rowOnly(std::move(inner));
  EXPECT_EQ(ByBlocks(rowOnly, 3), rows);
}

TEST_F(FetchBlockTest, BlocksAndSingleRowsMix) {
  std::unique_ptr<TDbStatement> s = Open(sql);
  bool row = false;
  ASSERT_TRUE(s->Fetch(row));
  ASSERT_TRUE(row);
  EXPECT_EQ(s->AsInteger(0), 1);
  TDbBlock block;
  ASSERT_TRUE(s->FetchBlock(block, 2));
  ASSERT_EQ(block.Rows, 2);
  EXPECT_EQ(block.Columns[0].Cells[0].Int, 2);
  EXPECT_EQ(block.Columns[0].Cells[1].Int, 3);
  ASSERT_TRUE(s->Fetch(row));
  ASSERT_TRUE(row);
  EXPECT_EQ(s->AsInteger(0), 4);
  // A reused block holds only the latest rows.
  ASSERT_TRUE(s->FetchBlock(block, 10));
  ASSERT_EQ(block.Rows, 3);
  ASSERT_EQ(block.Columns[1].Cells.size(), 3u);
  EXPECT_EQ(block.Columns[0].Cells[2].Int, 7);
  EXPECT_EQ(block.Columns[1].View(block.Columns[1].Cells[2]), "last");
  // At the end a block is empty, and stays so.
  ASSERT_TRUE(s->FetchBlock(block, 10));
  EXPECT_EQ(block.Rows, 0);
  EXPECT_TRUE(block.Columns[0].Cells.empty());
  ASSERT_TRUE(s->Fetch(row));
  EXPECT_FALSE(row);
}

TEST_F(FetchBlockTest, BlocksFailLikeRows) {
  std::unique_ptr<TDbStatement> s;
  ASSERT_TRUE(db->Prepare(sql, s));
  TDbBlock block;
  EXPECT_EQ(s->FetchBlock(block, 5).OraCode, 1002);  // not executed yet
  ASSERT_TRUE(s->Execute());
  ASSERT_TRUE(db->StartTransaction());
  ASSERT_TRUE(db->Rollback());
  EXPECT_EQ(s->FetchBlock(block, 5).OraCode, 1002);  // a rollback closed the cursor
  ASSERT_TRUE(s->Execute());
  ASSERT_TRUE(s->FetchBlock(block, 5));
  EXPECT_EQ(block.Rows, 5);
  db.reset();
  EXPECT_EQ(s->FetchBlock(block, 5).OraCode, 3114);
}

}  // namespace

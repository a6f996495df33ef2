#include "platform/db/recordstore.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/rtl/exceptions.h"

namespace {

using RowId = TRecordStore::RowId;

class RecordStoreTest : public ::testing::Test {
 protected:
  void SetUp() override {
    const TColumnKind kinds[] = {ckInteger, ckFloat, ckText, ckBlob};
    store.Reset(kinds);
  }
  TRecordStore store;
};

TEST_F(RecordStoreTest, AddedRowsAreNullEverywhereUntilSet) {
  EXPECT_EQ(store.AddRows(3), 0u);
  EXPECT_EQ(store.AddRow(), 3u);
  EXPECT_EQ(store.AddRows(70), 4u);  // the null mask spans a second word
  ASSERT_EQ(store.RowCount(), 74u);
  for (RowId r = 0; r < 74; ++r)
    for (int c = 0; c < 4; ++c) EXPECT_TRUE(store.IsNull(r, c)) << r << "," << c;
  store.SetInteger(70, 0, -5);
  store.SetFloat(71, 1, 2.5);
  store.SetBytes(72, 2, "text");
  EXPECT_FALSE(store.IsNull(70, 0));
  EXPECT_EQ(store.Integer(70, 0), -5);
  EXPECT_TRUE(store.IsNull(70, 1));
  EXPECT_DOUBLE_EQ(store.Float(71, 1), 2.5);
  EXPECT_EQ(store.Bytes(72, 2), "text");
  EXPECT_TRUE(store.IsNull(73, 2));
  store.SetNull(70, 0);
  EXPECT_TRUE(store.IsNull(70, 0));
}

// Chunks double in size; values at every chunk edge keep their row, also
// where the chunks are large enough to come from whole huge pages.
TEST_F(RecordStoreTest, ValuesKeepTheirRowsAcrossGrowingChunks) {
  const size_t rows = 700000;
  RowId first = store.AddRows(100);
  EXPECT_EQ(first, 0u);
  store.AddRows(rows - 100);
  std::vector<RowId> probes;
  for (size_t edge = 1024; edge < rows; edge = edge * 2 + 1024) {
    probes.push_back(static_cast<RowId>(edge - 1));
    probes.push_back(static_cast<RowId>(edge));
  }
  probes.push_back(static_cast<RowId>(rows - 1));
  for (RowId r : probes) {
    store.SetInteger(r, 0, static_cast<int64_t>(r) * 3);
    store.SetFloat(r, 1, r + 0.5);
    store.SetBytes(r, 2, "row " + std::to_string(r));
  }
  for (RowId r : probes) {
    EXPECT_EQ(store.Integer(r, 0), static_cast<int64_t>(r) * 3);
    EXPECT_DOUBLE_EQ(store.Float(r, 1), r + 0.5);
    EXPECT_EQ(store.Bytes(r, 2), "row " + std::to_string(r));
  }
  // Untouched neighbours stay null and zero.
  EXPECT_TRUE(store.IsNull(1025, 0));
  EXPECT_EQ(store.Integer(1025, 0), 0);
  EXPECT_EQ(store.FindInteger({1023, 1024, static_cast<RowId>(rows - 1)}, 0, 0, 3 * static_cast<int64_t>(rows - 1)), 2);
}

TEST_F(RecordStoreTest, ARunOfBytesIsSharedOutToItsCells) {
  store.AddRows(4);
  const std::string bytes = "alphabetagamma";
  TRecordStore::TBytesRun run = store.AddBytesRun(2, bytes);
  store.SetBytesFromRun(0, 2, run, 0, 5);
  store.SetBytesFromRun(1, 2, run, 5, 4);
  store.SetBytesFromRun(2, 2, run, 9, 5);
  store.SetBytesFromRun(3, 2, run, 14, 0);
  EXPECT_EQ(store.Bytes(0, 2), "alpha");
  EXPECT_EQ(store.Bytes(1, 2), "beta");
  EXPECT_EQ(store.Bytes(2, 2), "gamma");
  EXPECT_FALSE(store.IsNull(3, 2));  // empty, not null
  EXPECT_EQ(store.Bytes(3, 2), "");
  // A part outside the run is refused and the cell keeps its value.
  EXPECT_THROW(store.SetBytesFromRun(0, 2, run, 10, 5), EDatabaseError);
  EXPECT_THROW(store.SetBytesFromRun(0, 2, run, 15, 0), EDatabaseError);
  EXPECT_EQ(store.Bytes(0, 2), "alpha");
  // The run's copy is the store's own.
  std::string changing = "xyz";
  TRecordStore::TBytesRun other = store.AddBytesRun(3, changing);
  store.SetBytesFromRun(0, 3, other, 0, 3);
  changing = "abc";
  EXPECT_EQ(store.Bytes(0, 3), "xyz");
}

// Text keeps its place while much more is added after it, including values
// larger than a block.
TEST_F(RecordStoreTest, BytesStayPutWhileTheArenaGrows) {
  const int rows = 3000;
  store.AddRows(rows + 1);
  for (int r = 0; r < rows; ++r) store.SetBytes(static_cast<RowId>(r), 2, std::string(static_cast<size_t>(r % 97) + 1, static_cast<char>('a' + r % 26)));
  const std::string big(5u << 20, 'z');
  store.SetBytes(static_cast<RowId>(rows), 3, big);
  for (int r = 0; r < rows; ++r) {
    std::string_view v = store.Bytes(static_cast<RowId>(r), 2);
    ASSERT_EQ(v.size(), static_cast<size_t>(r % 97) + 1) << r;
    EXPECT_EQ(v.front(), static_cast<char>('a' + r % 26));
    EXPECT_EQ(v.back(), static_cast<char>('a' + r % 26));
  }
  EXPECT_EQ(store.Bytes(static_cast<RowId>(rows), 3), big);
  EXPECT_EQ(store.FindBytes({0, 1, 2, 3}, 0, 2, "ccc"), 2);
  EXPECT_EQ(store.FindBytes({0, 1, 2, 3}, 3, 2, "ccc"), -1);
}

TEST_F(RecordStoreTest, ClearKeepsTheColumnsAndSavedRowsComeBack) {
  store.AddRows(2000);
  store.SetInteger(1999, 0, 7);
  store.SetBytes(1999, 2, "kept");
  TRecordStore::TRowImage image = store.Save(1999);
  store.Clear();
  EXPECT_EQ(store.RowCount(), 0u);
  EXPECT_EQ(store.ColumnCount(), 4);
  EXPECT_EQ(store.Kind(3), ckBlob);
  RowId row = store.AddRow();
  EXPECT_EQ(row, 0u);
  EXPECT_TRUE(store.IsNull(row, 0));
  store.Restore(row, image);
  EXPECT_EQ(store.Integer(row, 0), 7);
  EXPECT_TRUE(store.IsNull(row, 1));
  EXPECT_EQ(store.Bytes(row, 2), "kept");
  EXPECT_TRUE(store.IsNull(row, 3));
}

TEST_F(RecordStoreTest, DeletedRowsKeepTheirIds) {
  store.AddRows(3);
  store.SetInteger(2, 0, 9);
  store.MarkDeleted(1);
  EXPECT_TRUE(store.IsDeleted(1));
  EXPECT_FALSE(store.IsDeleted(2));
  EXPECT_FALSE(store.IsDeleted(500));
  EXPECT_EQ(store.AddRow(), 3u);
  EXPECT_EQ(store.Integer(2, 0), 9);
}

}  // namespace

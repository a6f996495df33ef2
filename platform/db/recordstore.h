// TRecordStore: the client-side rows of a dataset, built for large tables.
//
// Each column is one typed vector (64-bit integers, doubles, or text and
// blob bytes in an arena of blocks that never move) plus a null bitmap; no
// cell is a Variant. A row's id is its index and never changes, so ids
// serve as bookmarks. Rows are never moved or reused: a deleted row simply
// leaves the datasets' views. Text is kept as UTF-8 and converted when a
// field reads it.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

enum TColumnKind : uint8_t { ckInteger, ckFloat, ckText, ckBlob };

class TRecordStore {
 public:
  using RowId = uint32_t;

  // A copy of one row's cells: the old values kept while a record is
  // edited, for Cancel and for :OLD_ parameters.
  struct TCell {
    bool Null = true;
    int64_t Int = 0;
    double Float = 0;
    std::string Bytes;
  };
  using TRowImage = std::vector<TCell>;

  // Drops every row and sets the columns anew.
  void Reset(std::span<const TColumnKind> kinds);
  // Drops every row, keeping the columns.
  void Clear();

  int ColumnCount() const { return static_cast<int>(columns_.size()); }
  TColumnKind Kind(int column) const { return columns_[static_cast<size_t>(column)].kind; }
  size_t RowCount() const { return rows_; }

  // Appends a row whose cells are all null.
  RowId AddRow();

  bool IsNull(RowId row, int column) const {
    const Column& c = columns_[static_cast<size_t>(column)];
    return (c.nulls[row >> 6] >> (row & 63)) & 1;
  }
  int64_t Integer(RowId row, int column) const { return columns_[static_cast<size_t>(column)].ints[row]; }
  double Float(RowId row, int column) const { return columns_[static_cast<size_t>(column)].floats[row]; }
  // Text (UTF-8) and blob cells.
  std::string_view Bytes(RowId row, int column) const {
    const Column& c = columns_[static_cast<size_t>(column)];
    return c.arena.View(c.places[row]);
  }

  void SetNull(RowId row, int column) {
    Column& c = columns_[static_cast<size_t>(column)];
    c.nulls[row >> 6] |= uint64_t{1} << (row & 63);
  }
  void SetInteger(RowId row, int column, int64_t value) {
    Column& c = columns_[static_cast<size_t>(column)];
    c.ints[row] = value;
    MarkPresent(c, row);
  }
  void SetFloat(RowId row, int column, double value) {
    Column& c = columns_[static_cast<size_t>(column)];
    c.floats[row] = value;
    MarkPresent(c, row);
  }
  void SetBytes(RowId row, int column, std::string_view value);

  TRowImage Save(RowId row) const;
  void Restore(RowId row, const TRowImage& image);

  // The first position from `from` on in `rows` whose cell equals the
  // value (never a null cell); -1 when none. The search loops of Locate.
  int64_t FindBytes(const std::vector<RowId>& rows, size_t from, int column, std::string_view value) const;
  int64_t FindInteger(const std::vector<RowId>& rows, size_t from, int column, int64_t value) const;

  // A deleted row stays in place (ids are stable) but no view shows it.
  void MarkDeleted(RowId row);
  bool IsDeleted(RowId row) const { return (row >> 6) < deleted_.size() && ((deleted_[row >> 6] >> (row & 63)) & 1); }


 private:
  // A vector in fixed chunks: growing never moves what is there, so a
  // large fetch neither copies nor touches its memory twice.
  template <class T>
  class Chunked {
   public:
    static constexpr size_t kShift = 14, kSize = size_t{1} << kShift;
    T& operator[](size_t i) { return chunks_[i >> kShift][i & (kSize - 1)]; }
    const T& operator[](size_t i) const { return chunks_[i >> kShift][i & (kSize - 1)]; }
    void push_back(T v) {
      if ((size_ & (kSize - 1)) == 0 && (size_ >> kShift) == chunks_.size()) chunks_.emplace_back(new T[kSize]);
      (*this)[size_++] = v;
    }
    size_t size() const { return size_; }

   private:
    std::vector<std::unique_ptr<T[]>> chunks_;
    size_t size_ = 0;
  };

  // Text and blob bytes in blocks that never move; a place is the block
  // number, the offset in it and the length.
  struct Place {
    uint32_t block = 0;
    uint32_t offset = 0;
    uint32_t length = 0;
  };
  class Arena {
   public:
    Place Add(std::string_view bytes);
    std::string_view View(const Place& p) const {
      return p.length == 0 ? std::string_view() : std::string_view(blocks_[p.block].data.get() + p.offset, p.length);
    }
   private:
    struct Block {
      std::unique_ptr<char[]> data;
      size_t size = 0, used = 0;
    };
    std::vector<Block> blocks_;
  };

  struct Column {
    TColumnKind kind = ckInteger;
    std::vector<uint64_t> nulls;
    Chunked<int64_t> ints;
    Chunked<double> floats;
    Chunked<Place> places;
    Arena arena;
  };
  void MarkPresent(Column& c, RowId row) { c.nulls[row >> 6] &= ~(uint64_t{1} << (row & 63)); }

  std::vector<Column> columns_;
  std::vector<uint64_t> deleted_;
  size_t rows_ = 0;
};

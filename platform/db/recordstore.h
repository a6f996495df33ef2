// TRecordStore: the client-side rows of a dataset, built for large tables.
//
// Each column is one typed vector (64-bit integers, doubles, or text and
// blob bytes in an arena with offsets and lengths) plus a null bitmap; no
// cell is a Variant. A row's id is its index and never changes, so ids
// serve as bookmarks. Rows are never moved or reused: a deleted row simply
// leaves the datasets' views. Text is kept as UTF-8 and converted when a
// field reads it.
#pragma once

#include <cstdint>
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
  void Reserve(size_t rows);

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
    return std::string_view(c.arena.data() + c.offsets[row], c.lengths[row]);
  }

  void SetNull(RowId row, int column);
  void SetInteger(RowId row, int column, int64_t value);
  void SetFloat(RowId row, int column, double value);
  void SetBytes(RowId row, int column, std::string_view value);

  TRowImage Save(RowId row) const;
  void Restore(RowId row, const TRowImage& image);
  // Copies every cell of `from` into `to`.
  void CopyRow(RowId from, RowId to);

  // A deleted row stays in place (ids are stable) but no view shows it.
  void MarkDeleted(RowId row);
  bool IsDeleted(RowId row) const { return (row >> 6) < deleted_.size() && ((deleted_[row >> 6] >> (row & 63)) & 1); }

  // Bytes held by the columns, for the memory accounting of benchmarks.
  size_t MemoryUsed() const;

 private:
  struct Column {
    TColumnKind kind = ckInteger;
    std::vector<uint64_t> nulls;
    std::vector<int64_t> ints;
    std::vector<double> floats;
    std::vector<uint64_t> offsets;
    std::vector<uint32_t> lengths;
    std::string arena;
  };
  void MarkPresent(Column& c, RowId row) { c.nulls[row >> 6] &= ~(uint64_t{1} << (row & 63)); }

  std::vector<Column> columns_;
  std::vector<uint64_t> deleted_;
  size_t rows_ = 0;
};

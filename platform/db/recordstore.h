// TRecordStore: the client-side rows of a dataset, built for large tables.
//
// Each column is one typed vector (64-bit integers, doubles, or text and
// blob bytes in an arena of blocks that never move) plus a null bitmap; no
// cell is a Variant. A row's id is its index and never changes, so ids
// serve as bookmarks. Rows are never moved or reused: a deleted row simply
// leaves the datasets' views. Text is kept as UTF-8 and converted when a
// field reads it.
#pragma once

#include <bit>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/os/pages.h"

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
  RowId AddRow() { return AddRows(1); }
  // Appends `count` such rows at once; returns the id of the first.
  RowId AddRows(size_t count);

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

  // Filling many text or blob cells of a column at once: their bytes are
  // copied in one run, then each cell takes its part of the run.
  struct TBytesRun {
    uint32_t Block = 0, Offset = 0, Length = 0;
  };
  TBytesRun AddBytesRun(int column, std::string_view bytes);
  void SetBytesFromRun(RowId row, int column, const TBytesRun& run, size_t offset, size_t length) {
    if (offset > run.Length || length > run.Length - offset) OutsideRun();
    Column& c = columns_[static_cast<size_t>(column)];
    c.places[row] = Place{run.Block, run.Offset + static_cast<uint32_t>(offset), static_cast<uint32_t>(length)};
    MarkPresent(c, row);
  }

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
  // A vector in chunks that double in size: growing never moves what is
  // there, a small table takes little room and a large one few big chunks.
  template <class T>
  class Chunked {
    static_assert(std::is_trivially_copyable_v<T>, "cells are plain values");

   public:
    Chunked() = default;
    Chunked(Chunked&& other) noexcept : chunks_(std::move(other.chunks_)), size_(other.size_) { other.size_ = 0; }
    Chunked& operator=(Chunked&& other) noexcept {
      std::swap(chunks_, other.chunks_);
      std::swap(size_, other.size_);
      return *this;
    }
    ~Chunked() {
      for (size_t k = 0; k < chunks_.size(); ++k) os::ReleaseZeroed(chunks_[k], ChunkBytes(k));
    }

    T& operator[](size_t i) {
      const size_t k = ChunkOf(i);
      return chunks_[k][i - First(k)];
    }
    const T& operator[](size_t i) const {
      const size_t k = ChunkOf(i);
      return chunks_[k][i - First(k)];
    }
    // Adds `count` zeroed elements.
    void grow(size_t count) {
      size_ += count;
      while (First(chunks_.size()) < size_) {
        chunks_.reserve(chunks_.size() + 1);
        chunks_.push_back(static_cast<T*>(os::AllocateZeroed(ChunkBytes(chunks_.size()))));
      }
    }
    size_t size() const { return size_; }

   private:
    // Chunk k holds kFirst << k elements, from First(k) on.
    static constexpr size_t kShift = 10;
    static size_t ChunkOf(size_t i) { return static_cast<size_t>(std::bit_width((i >> kShift) + 1)) - 1; }
    static size_t First(size_t k) { return ((size_t{1} << k) - 1) << kShift; }
    static size_t ChunkBytes(size_t k) { return (sizeof(T) << kShift) << k; }

    std::vector<T*> chunks_;
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
    Arena() = default;
    Arena(Arena&& other) noexcept : blocks_(std::move(other.blocks_)) {}
    Arena& operator=(Arena&& other) noexcept {
      std::swap(blocks_, other.blocks_);
      return *this;
    }
    ~Arena();
    Place Add(std::string_view bytes);
    std::string_view View(const Place& p) const {
      return p.length == 0 ? std::string_view() : std::string_view(blocks_[p.block].data + p.offset, p.length);
    }

   private:
    struct Block {
      char* data = nullptr;
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
  [[noreturn]] static void OutsideRun();
  void MarkPresent(Column& c, RowId row) { c.nulls[row >> 6] &= ~(uint64_t{1} << (row & 63)); }

  std::vector<Column> columns_;
  std::vector<uint64_t> deleted_;
  size_t rows_ = 0;
};

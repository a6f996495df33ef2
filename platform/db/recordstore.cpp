#include "platform/db/recordstore.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

#include "platform/os/pages.h"
#include "platform/rtl/exceptions.h"

void TRecordStore::Reset(std::span<const TColumnKind> kinds) {
  columns_.clear();
  columns_.resize(kinds.size());
  for (size_t i = 0; i < kinds.size(); ++i) columns_[i].kind = kinds[i];
  deleted_.clear();
  rows_ = 0;
}

void TRecordStore::Clear() {
  for (Column& c : columns_) {
    TColumnKind kind = c.kind;
    c = Column();
    c.kind = kind;
  }
  deleted_.clear();
  rows_ = 0;
}

TRecordStore::Arena::~Arena() {
  for (Block& b : blocks_) os::ReleaseZeroed(b.data, b.size);
}

TRecordStore::Place TRecordStore::Arena::Add(std::string_view bytes) {
  Place p;
  p.length = static_cast<uint32_t>(bytes.size());
  if (bytes.empty()) return p;
  if (blocks_.empty() || blocks_.back().size - blocks_.back().used < bytes.size()) {
    // Blocks grow with the column, from 16 KB up to 32 MB.
    const size_t grown = size_t{16} << (10 + std::min<size_t>(blocks_.size(), 11));
    Block b;
    b.size = std::max(grown, bytes.size());
    blocks_.reserve(blocks_.size() + 1);
    b.data = static_cast<char*>(os::AllocateZeroed(b.size));
    blocks_.push_back(b);
  }
  Block& b = blocks_.back();
  std::memcpy(b.data + b.used, bytes.data(), bytes.size());
  p.block = static_cast<uint32_t>(blocks_.size() - 1);
  p.offset = static_cast<uint32_t>(b.used);
  b.used += bytes.size();
  return p;
}

TRecordStore::RowId TRecordStore::AddRows(size_t count) {
  if (count > std::numeric_limits<RowId>::max() - rows_) throw EDatabaseError(u"Too many records");
  const RowId first = static_cast<RowId>(rows_);
  rows_ += count;
  // Words of the null masks start all set: a new row is null everywhere.
  const size_t words = (rows_ + 63) >> 6;
  for (Column& c : columns_) {
    c.nulls.resize(words, ~uint64_t{0});
    switch (c.kind) {
      case ckInteger: c.ints.grow(count); break;
      case ckFloat: c.floats.grow(count); break;
      case ckText:
      case ckBlob: c.places.grow(count); break;
    }
  }
  return first;
}

void TRecordStore::SetBytes(RowId row, int column, std::string_view value) {
  Column& c = columns_[static_cast<size_t>(column)];
  if (value.size() > std::numeric_limits<uint32_t>::max()) throw EDatabaseError(u"Value too long for a field");
  // The same bytes again (a Cancel restoring an unchanged text) need no room.
  Place& place = c.places[row];
  if (!(value.size() == place.length && c.arena.View(place) == value)) place = c.arena.Add(value);
  MarkPresent(c, row);
}

TRecordStore::TBytesRun TRecordStore::AddBytesRun(int column, std::string_view bytes) {
  if (bytes.size() > std::numeric_limits<uint32_t>::max()) throw EDatabaseError(u"Value too long for a field");
  const Place p = columns_[static_cast<size_t>(column)].arena.Add(bytes);
  return TBytesRun{p.block, p.offset, p.length};
}

void TRecordStore::OutsideRun() { throw EDatabaseError(u"Value outside its run of bytes"); }

TRecordStore::TRowImage TRecordStore::Save(RowId row) const {
  TRowImage image(columns_.size());
  for (int i = 0; i < ColumnCount(); ++i) {
    TCell& cell = image[static_cast<size_t>(i)];
    cell.Null = IsNull(row, i);
    if (cell.Null) continue;
    switch (Kind(i)) {
      case ckInteger: cell.Int = Integer(row, i); break;
      case ckFloat: cell.Float = Float(row, i); break;
      case ckText:
      case ckBlob: cell.Bytes = std::string(Bytes(row, i)); break;
    }
  }
  return image;
}

void TRecordStore::Restore(RowId row, const TRowImage& image) {
  for (int i = 0; i < ColumnCount() && static_cast<size_t>(i) < image.size(); ++i) {
    const TCell& cell = image[static_cast<size_t>(i)];
    if (cell.Null) {
      SetNull(row, i);
      continue;
    }
    switch (Kind(i)) {
      case ckInteger: SetInteger(row, i, cell.Int); break;
      case ckFloat: SetFloat(row, i, cell.Float); break;
      case ckText:
      case ckBlob: SetBytes(row, i, cell.Bytes); break;
    }
  }
}

void TRecordStore::MarkDeleted(RowId row) {
  if ((row >> 6) >= deleted_.size()) deleted_.resize((row >> 6) + 1, 0);
  deleted_[row >> 6] |= uint64_t{1} << (row & 63);
}

int64_t TRecordStore::FindBytes(const std::vector<RowId>& rows, size_t from, int column, std::string_view value) const {
  const Column& c = columns_[static_cast<size_t>(column)];
  for (size_t i = from; i < rows.size(); ++i) {
    RowId row = rows[i];
    const Place& p = c.places[row];
    if (p.length == value.size() && !((c.nulls[row >> 6] >> (row & 63)) & 1) && c.arena.View(p) == value)
      return static_cast<int64_t>(i);
  }
  return -1;
}

int64_t TRecordStore::FindInteger(const std::vector<RowId>& rows, size_t from, int column, int64_t value) const {
  const Column& c = columns_[static_cast<size_t>(column)];
  for (size_t i = from; i < rows.size(); ++i) {
    RowId row = rows[i];
    if (c.ints[row] == value && !((c.nulls[row >> 6] >> (row & 63)) & 1)) return static_cast<int64_t>(i);
  }
  return -1;
}

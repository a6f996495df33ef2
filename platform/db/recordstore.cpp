#include "platform/db/recordstore.h"

#include <algorithm>
#include <cstring>
#include <limits>

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

TRecordStore::Place TRecordStore::Arena::Add(std::string_view bytes) {
  Place p;
  p.length = static_cast<uint32_t>(bytes.size());
  if (bytes.empty()) return p;
  constexpr size_t kBlock = size_t{1} << 20;
  if (blocks_.empty() || blocks_.back().size - blocks_.back().used < bytes.size()) {
    Block b;
    b.size = std::max(kBlock, bytes.size());
    b.data.reset(new char[b.size]);
    blocks_.push_back(std::move(b));
  }
  Block& b = blocks_.back();
  std::memcpy(b.data.get() + b.used, bytes.data(), bytes.size());
  p.block = static_cast<uint32_t>(blocks_.size() - 1);
  p.offset = static_cast<uint32_t>(b.used);
  b.used += bytes.size();
  return p;
}


TRecordStore::RowId TRecordStore::AddRow() {
  if (rows_ >= std::numeric_limits<RowId>::max()) throw EDatabaseError(u"Too many records");
  RowId row = static_cast<RowId>(rows_++);
  for (Column& c : columns_) {
    if ((row & 63) == 0) c.nulls.push_back(~uint64_t{0});
    switch (c.kind) {
      case ckInteger: c.ints.push_back(0); break;
      case ckFloat: c.floats.push_back(0); break;
      case ckText:
      case ckBlob: c.places.push_back(Place()); break;
    }
  }
  return row;
}

void TRecordStore::SetBytes(RowId row, int column, std::string_view value) {
  Column& c = columns_[static_cast<size_t>(column)];
  if (value.size() > std::numeric_limits<uint32_t>::max()) throw EDatabaseError(u"Value too long for a field");
  // The same bytes again (a Cancel restoring an unchanged text) need no room.
  Place& place = c.places[row];
  if (!(value.size() == place.length && c.arena.View(place) == value)) place = c.arena.Add(value);
  MarkPresent(c, row);
}

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

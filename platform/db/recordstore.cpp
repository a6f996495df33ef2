#include "platform/db/recordstore.h"

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

void TRecordStore::Reserve(size_t rows) {
  for (Column& c : columns_) {
    c.nulls.reserve((rows + 63) / 64);
    switch (c.kind) {
      case ckInteger: c.ints.reserve(rows); break;
      case ckFloat: c.floats.reserve(rows); break;
      case ckText:
      case ckBlob:
        c.offsets.reserve(rows);
        c.lengths.reserve(rows);
        break;
    }
  }
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
      case ckBlob:
        c.offsets.push_back(0);
        c.lengths.push_back(0);
        break;
    }
  }
  return row;
}

void TRecordStore::SetNull(RowId row, int column) {
  Column& c = columns_[static_cast<size_t>(column)];
  c.nulls[row >> 6] |= uint64_t{1} << (row & 63);
}

void TRecordStore::SetInteger(RowId row, int column, int64_t value) {
  Column& c = columns_[static_cast<size_t>(column)];
  c.ints[row] = value;
  MarkPresent(c, row);
}

void TRecordStore::SetFloat(RowId row, int column, double value) {
  Column& c = columns_[static_cast<size_t>(column)];
  c.floats[row] = value;
  MarkPresent(c, row);
}

void TRecordStore::SetBytes(RowId row, int column, std::string_view value) {
  Column& c = columns_[static_cast<size_t>(column)];
  if (value.size() > std::numeric_limits<uint32_t>::max()) throw EDatabaseError(u"Value too long for a field");
  // The same bytes again (a Cancel restoring an unchanged text) need no room.
  if (!(value.size() == c.lengths[row] && Bytes(row, column) == value)) {
    c.offsets[row] = c.arena.size();
    c.lengths[row] = static_cast<uint32_t>(value.size());
    c.arena.append(value);
  }
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

void TRecordStore::CopyRow(RowId from, RowId to) { Restore(to, Save(from)); }

void TRecordStore::MarkDeleted(RowId row) {
  if ((row >> 6) >= deleted_.size()) deleted_.resize((row >> 6) + 1, 0);
  deleted_[row >> 6] |= uint64_t{1} << (row & 63);
}

size_t TRecordStore::MemoryUsed() const {
  size_t total = 0;
  for (const Column& c : columns_)
    total += c.nulls.capacity() * 8 + c.ints.capacity() * 8 + c.floats.capacity() * 8 + c.offsets.capacity() * 8 +
             c.lengths.capacity() * 4 + c.arena.capacity();
  return total;
}

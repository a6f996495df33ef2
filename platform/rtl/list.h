// TList: a list of untyped pointers it does not own. An index out of range
// raises EListError "List index out of bounds (N)".
#pragma once

#include <algorithm>
#include <vector>

#include "platform/rtl/exceptions.h"
#include "platform/rtl/sysutils.h"

// Orders two items: < 0, 0, > 0.
using TListSortCompare = int (*)(void* Item1, void* Item2);

class TList {
 public:
  int Count() const { return static_cast<int>(items_.size()); }
  void* Items(int Index) const { return items_[Checked(Index)]; }
  void SetItems(int Index, void* Item) { items_[Checked(Index)] = Item; }
  void* operator[](int Index) const { return Items(Index); }
  void* First() const { return Items(0); }
  void* Last() const { return Items(Count() - 1); }

  int Add(void* Item) {
    items_.push_back(Item);
    return Count() - 1;
  }
  // Index may be Count(), which appends.
  void Insert(int Index, void* Item) {
    if (Index < 0 || Index > Count()) Error(Index);
    items_.insert(items_.begin() + Index, Item);
  }
  void Delete(int Index) { items_.erase(items_.begin() + Checked(Index)); }
  // Removes the first occurrence; returns its index or -1.
  int Remove(void* Item) {
    int i = IndexOf(Item);
    if (i >= 0) Delete(i);
    return i;
  }
  int IndexOf(const void* Item) const {
    auto it = std::find(items_.begin(), items_.end(), Item);
    return it == items_.end() ? -1 : static_cast<int>(it - items_.begin());
  }
  void Exchange(int Index1, int Index2) { std::swap(items_[Checked(Index1)], items_[Checked(Index2)]); }
  void Move(int CurIndex, int NewIndex) {
    size_t from = Checked(CurIndex), to = Checked(NewIndex);
    if (from < to) std::rotate(items_.begin() + from, items_.begin() + from + 1, items_.begin() + to + 1);
    else if (to < from) std::rotate(items_.begin() + to, items_.begin() + from, items_.begin() + from + 1);
  }
  void Clear() { items_.clear(); }
  // Stable, so that equal items keep their order.
  void Sort(TListSortCompare Compare) {
    std::stable_sort(items_.begin(), items_.end(), [Compare](void* a, void* b) { return Compare(a, b) < 0; });
  }

 private:
  size_t Checked(int Index) const {
    if (Index < 0 || Index >= Count()) Error(Index);
    return static_cast<size_t>(Index);
  }
  [[noreturn]] static void Error(int Index) {
    throw EListError(u"List index out of bounds (" + IntToStr(Index) + u")");
  }

  std::vector<void*> items_;
};

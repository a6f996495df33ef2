// Set<E>: the framework's small sets of enumeration values (TShiftState,
// TLocateOptions, TReplaceFlags...), as a bit mask over values 0..63.
#pragma once

#include <cstdint>
#include <initializer_list>

template <class E>
class Set {
 public:
  constexpr Set() = default;
  constexpr Set(std::initializer_list<E> items) {
    for (E e : items) bits_ |= Bit(e);
  }
  static constexpr Set FromMask(uint64_t mask) {
    Set s;
    s.bits_ = mask;
    return s;
  }

  constexpr bool Contains(E e) const { return (bits_ & Bit(e)) != 0; }
  constexpr bool Empty() const { return bits_ == 0; }
  constexpr uint64_t Mask() const { return bits_; }

  // Adds and removes in place, chainable: Set<E>() << a << b.
  constexpr Set& operator<<(E e) { bits_ |= Bit(e); return *this; }
  constexpr Set& operator>>(E e) { bits_ &= ~Bit(e); return *this; }
  constexpr Set& Include(E e) { return *this << e; }
  constexpr Set& Exclude(E e) { return *this >> e; }

  friend constexpr Set operator+(Set a, Set b) { return FromMask(a.bits_ | b.bits_); }
  friend constexpr Set operator-(Set a, Set b) { return FromMask(a.bits_ & ~b.bits_); }
  friend constexpr Set operator*(Set a, Set b) { return FromMask(a.bits_ & b.bits_); }
  friend constexpr bool operator==(Set a, Set b) { return a.bits_ == b.bits_; }

 private:
  static constexpr uint64_t Bit(E e) { return uint64_t{1} << static_cast<unsigned>(e); }
  uint64_t bits_ = 0;
};

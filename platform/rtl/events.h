// Events: TEvent<Signature> is a method bound to an object, the "closure"
// of the historical framework.
//
//   ds->AfterOpen = Closure(this, &TForm1::DataSetOpened);
//   ds->AfterOpen(ds);            // does nothing when unassigned
//
// Two events are equal when they are bound to the same object and method;
// the kit relies on that ("point X at Y unless it already is"). An event made
// from a lambda equals only its own copies. TMethod is the type-erased form
// that the by-name property protocol carries.
#pragma once

#include <array>
#include <atomic>
#include <cstring>
#include <functional>
#include <memory>
#include <type_traits>
#include <typeinfo>

// Identity of the code an event runs: the bytes of a member pointer, or a
// unique number for a lambda.
struct TMethodCode {
  std::array<unsigned char, 2 * sizeof(void*)> Bytes{};
  bool operator==(const TMethodCode&) const = default;
};

struct TMethod {
  const void* Data = nullptr;  // the bound object
  TMethodCode Code;
  std::shared_ptr<const void> Impl;               // the callable, typed by Signature
  const std::type_info* Signature = nullptr;

  bool Assigned() const { return Impl != nullptr; }
  explicit operator bool() const { return Assigned(); }
  friend bool operator==(const TMethod& a, const TMethod& b) {
    if (!a.Assigned() || !b.Assigned()) return a.Assigned() == b.Assigned();
    return a.Data == b.Data && a.Code == b.Code;
  }
};

namespace kelmar_detail {
inline TMethodCode UniqueCode() {
  static std::atomic<unsigned long long> next{1};
  TMethodCode code;
  unsigned long long n = next++;
  std::memcpy(code.Bytes.data(), &n, sizeof n);
  code.Bytes.back() = 0xFF;  // never the bytes of a member pointer to a real method
  return code;
}
}  // namespace kelmar_detail

template <class Signature>
class TEvent;

template <class R, class... A>
class TEvent<R(A...)> {
 public:
  using Function = std::function<R(A...)>;

  TEvent() = default;
  TEvent(std::nullptr_t) {}

  // Binds a method of an object.
  template <class C, class M>
    requires std::is_base_of_v<M, C>
  TEvent(C* object, R (M::*method)(A...)) {
    method_.Data = object;
    static_assert(sizeof method <= sizeof method_.Code.Bytes);
    std::memcpy(method_.Code.Bytes.data(), &method, sizeof method);
    Store(Function([object, method](A... args) -> R { return (object->*method)(std::forward<A>(args)...); }));
  }

  // Binds any callable; equal only to its own copies.
  template <class F>
    requires(!std::is_same_v<std::decay_t<F>, TEvent> && !std::is_same_v<std::decay_t<F>, std::nullptr_t> &&
             std::is_invocable_r_v<R, F&, A...>)
  TEvent(F&& f) {
    method_.Code = kelmar_detail::UniqueCode();
    Store(Function(std::forward<F>(f)));
  }

  bool Assigned() const { return method_.Assigned(); }
  explicit operator bool() const { return Assigned(); }
  const void* Object() const { return method_.Data; }

  // Calls the method; an unassigned event does nothing and gives R{}.
  R operator()(A... args) const {
    if (!method_.Impl) {
      if constexpr (std::is_void_v<R>) return;
      else return R{};
    }
    return (*static_cast<const Function*>(method_.Impl.get()))(std::forward<A>(args)...);
  }

  friend bool operator==(const TEvent& a, const TEvent& b) { return a.method_ == b.method_; }

  TMethod ToMethod() const { return method_; }
  // An event of another signature reads as unassigned.
  static TEvent FromMethod(const TMethod& m) {
    TEvent e;
    if (m.Assigned() && m.Signature && *m.Signature == typeid(R(A...))) e.method_ = m;
    return e;
  }
  static bool Accepts(const TMethod& m) { return !m.Assigned() || (m.Signature && *m.Signature == typeid(R(A...))); }

 private:
  void Store(Function f) {
    method_.Impl = std::make_shared<const Function>(std::move(f));
    method_.Signature = &typeid(R(A...));
  }
  TMethod method_;
};

// Closure(obj, &Class::Method): an event bound to a method, its signature
// deduced from the method.
template <class C, class M, class R, class... A>
  requires std::is_base_of_v<M, C>
TEvent<R(A...)> Closure(C* object, R (M::*method)(A...)) {
  return TEvent<R(A...)>(object, method);
}

class TObject;
using TNotifyEvent = TEvent<void(TObject* Sender)>;

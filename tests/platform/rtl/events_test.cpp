#include "platform/rtl/events.h"

#include <gtest/gtest.h>

#include "platform/rtl/object.h"

namespace {

struct Listener {
  int calls = 0;
  TObject* last = nullptr;
  void Changed(TObject* sender) {
    ++calls;
    last = sender;
  }
  void Other(TObject*) {}
  bool Accept(int value) { return value > 0; }
};

TEST(EventTest, UnassignedDoesNothingAndGivesDefault) {
  TNotifyEvent e;
  EXPECT_FALSE(e.Assigned());
  e(nullptr);  // must not throw
  TEvent<int(int)> f;
  EXPECT_EQ(f(5), 0);
  TEvent<bool(int)> g = nullptr;
  EXPECT_FALSE(g(1));
}

TEST(EventTest, BoundMethodIsCalledOnItsObject) {
  Listener l;
  TObject sender;
  TNotifyEvent e = Closure(&l, &Listener::Changed);
  e(&sender);
  EXPECT_EQ(l.calls, 1);
  EXPECT_EQ(l.last, &sender);
  EXPECT_EQ(e.Object(), &l);
  TEvent<bool(int)> accept(&l, &Listener::Accept);
  EXPECT_TRUE(accept(3));
  EXPECT_FALSE(accept(-3));
}

TEST(EventTest, EqualityIsByObjectAndMethod) {
  Listener a, b;
  TNotifyEvent e1 = Closure(&a, &Listener::Changed);
  TNotifyEvent e2 = Closure(&a, &Listener::Changed);
  EXPECT_EQ(e1, e2);
  EXPECT_FALSE(e1 == Closure(&b, &Listener::Changed));
  EXPECT_FALSE(e1 == Closure(&a, &Listener::Other));
  EXPECT_FALSE(e1 == TNotifyEvent());
  EXPECT_EQ(TNotifyEvent(), TNotifyEvent());
}

TEST(EventTest, LambdaEqualsOnlyItsCopies) {
  int n = 0;
  TNotifyEvent e1 = [&n](TObject*) { ++n; };
  TNotifyEvent copy = e1;
  TNotifyEvent e2 = [&n](TObject*) { ++n; };
  EXPECT_EQ(e1, copy);
  EXPECT_FALSE(e1 == e2);
  copy(nullptr);
  EXPECT_EQ(n, 1);
}

TEST(EventTest, MethodFormKeepsIdentityAndChecksSignature) {
  Listener l;
  TNotifyEvent e = Closure(&l, &Listener::Changed);
  TMethod m = e.ToMethod();
  EXPECT_TRUE(m.Assigned());
  EXPECT_EQ(m, Closure(&l, &Listener::Changed).ToMethod());
  TNotifyEvent back = TNotifyEvent::FromMethod(m);
  EXPECT_EQ(back, e);
  back(nullptr);
  EXPECT_EQ(l.calls, 1);
  // A method of another signature reads as unassigned.
  EXPECT_FALSE(TEvent<bool(int)>::FromMethod(m).Assigned());
  EXPECT_FALSE(TEvent<bool(int)>::Accepts(m));
  EXPECT_TRUE(TEvent<bool(int)>::Accepts(TMethod()));
}

}  // namespace

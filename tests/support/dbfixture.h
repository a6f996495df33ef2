// Fixtures for data tests: a fresh embedded database per test, and a
// wrapping connection that fails on a countdown or injects a chosen
// Oracle error, to drive the error paths of the data framework.
#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "platform/db/dadataset.h"
#include "platform/db/orasession.h"

// What the "fault" driver does to the connections it makes. Operations
// (prepare, execute, fetch, transaction steps) are counted; the one that
// brings Countdown to zero fails with OraCode, and so does every statement
// whose text contains Matching (when set). The plan is global: tests set
// it and Reset() it.
struct TFaultPlan {
  int Countdown = -1;  // -1: never
  String Matching;
  int OraCode = 3113;
  String Text = u"end-of-file on communication channel";
  int Operations = 0;  // counted so far
  void Reset() { *this = TFaultPlan(); }
  static TFaultPlan& Current();
};

// Registers the "sqlite" driver and the "fault" driver that wraps it.
void RegisterTestDrivers();

// Makes Field the persistent field Name of the kind on DataSet (which
// owns it) and returns it, for tests that design their fields.
TField* AddPersistentField(TDataSet* DataSet, TField* Field, const String& Name, TFieldKind Kind);
// A persistent text lookup field Name on DataSet: ResultField of the
// Lookup record whose LookupKeyFields equal DataSet's KeyFields.
TField* AddLookupField(TDataSet* DataSet, const String& Name, const String& KeyFields, TDataSet* Lookup,
                       const String& LookupKeyFields, const String& ResultField);

// A fresh in-memory database behind a connected session.
class DbTest : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;
  // Runs statements, failing the test on an error.
  void Exec(const String& sql);
  // The first column of the first row as text; "<null>" for null.
  String Value(const String& sql);
  // A query on the session, owned by the fixture.
  TOraQuery* Query(const String& sql);

  std::unique_ptr<TComponent> owner_;
  TOraSession* session_ = nullptr;
};

// The same over the "fault" driver.
class FaultDbTest : public DbTest {
 protected:
  void SetUp() override;
  void TearDown() override;
};

// Fixtures of the kit's dataset tests: a fresh embedded database per test
// with a real GOODS table, a connected session, and TVeskODACQuery
// datasets on it that can write the table.
#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "data/veskodacquerylib.h"
#include "tests/support/dbfixture.h"

// GOODS(ID, CODE, NAME, PRICE, QTY) holds five rows:
//   1 A01 Apple   2.5  10      4 B02 Bread   1.2  NULL
//   2 A02 Apricot 4    5       5 C01 Cheese  9.75 1
//   3 B01 Butter  3.1  7
class KitDbTest : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  // Runs statements, failing the test on an error.
  void Exec(const String& sql);
  // The first column of the first row as text; "<null>" for null.
  String Value(const String& sql);
  // A TVeskODACQuery on the session, owned by the fixture, with the write
  // statements of GOODS; its SQL is left empty.
  TVeskODACQuery* NewQuery(const String& name = u"qGoods");
  // The same over "SELECT * FROM GOODS ORDER BY ID", opened.
  TVeskODACQuery* OpenGoods(const String& name = u"qGoods");
  // GOODS composed by the dataset itself (VeskTableLive, ordered by ID,
  // under the alias when one is given), opened.
  TVeskODACQuery* ComposedGoods(const String& alias = String());

  std::unique_ptr<TComponent> owner_;
  TOraSession* session_ = nullptr;
};

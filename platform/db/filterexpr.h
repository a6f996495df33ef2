// Client filter expressions: the text of TDataSet::Filter.
//
//   expr    := or
//   or      := and { OR and }
//   and     := not { AND not }
//   not     := NOT not | primary
//   primary := ( expr ) | operand op operand | operand IS [NOT] NULL
//   op      := = | <> | != | < | <= | > | >=
//   operand := field name | [field name] | 'text' | "text" | number
//              | NULL | TRUE | FALSE
//
// Keywords are case-insensitive. Text compares by the field's text, with
// case ignored under foCaseInsensitive; a text literal ending in "*"
// compares as a prefix unless foNoPartialCompare is set. Numbers compare
// numerically, dates as dates (a text literal is read as a date when the
// other side is a date field). A comparison with a null side is false;
// "= NULL" and "<> NULL" mean IS NULL and IS NOT NULL.
//
// The text is compiled once against the dataset's fields; evaluation reads
// the dataset's active record.
#pragma once

#include <memory>

#include "platform/db/dbtypes.h"

class TDataSet;

class TFilterExpression {
 public:
  // Raises EDatabaseError naming the position of bad text or the unknown
  // field ("Field 'X' not found").
  TFilterExpression(const String& text, TDataSet* dataSet, TFilterOptions options);
  ~TFilterExpression();
  TFilterExpression(const TFilterExpression&) = delete;
  TFilterExpression& operator=(const TFilterExpression&) = delete;

  bool Evaluate() const;

  struct Node;

 private:
  std::unique_ptr<Node> root_;
};

#include "platform/db/filterexpr.h"

#include <vector>

#include "platform/db/dataset.h"

namespace {

enum TTokenKind { tkEnd, tkName, tkText, tkNumber, tkOp, tkOpen, tkClose };

struct TToken {
  TTokenKind Kind = tkEnd;
  String Text;
  int Pos = 0;  // 1-based
};

bool IsNameStart(char16_t c) { return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || c == u'_' || c > 127; }
bool IsNameChar(char16_t c) { return IsNameStart(c) || (c >= u'0' && c <= u'9') || c == u'.' || c == u'$' || c == u'#'; }
bool IsDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

[[noreturn]] void SyntaxError(const String& what, int pos) {
  throw EDatabaseError(u"Filter expression: " + what + u" at position " + IntToStr(pos));
}

std::vector<TToken> Tokenize(const String& text) {
  std::vector<TToken> out;
  std::u16string_view s = text.view();
  size_t i = 0;
  while (i < s.size()) {
    char16_t c = s[i];
    int pos = static_cast<int>(i) + 1;
    if (c == u' ' || c == u'\t' || c == u'\r' || c == u'\n') {
      ++i;
    } else if (c == u'\'' || c == u'"') {
      std::u16string value;
      size_t j = i + 1;
      for (;; ++j) {
        if (j >= s.size()) SyntaxError(u"unterminated text", pos);
        if (s[j] == c) {
          if (j + 1 < s.size() && s[j + 1] == c) {
            value += c;
            ++j;
            continue;
          }
          break;
        }
        value += s[j];
      }
      out.push_back({tkText, String(std::move(value)), pos});
      i = j + 1;
    } else if (c == u'[') {
      size_t j = s.find(u']', i + 1);
      if (j == std::u16string_view::npos) SyntaxError(u"missing ']'", pos);
      out.push_back({tkName, String(s.substr(i + 1, j - i - 1)), pos});
      i = j + 1;
    } else if (IsDigit(c) || (c == u'.' && i + 1 < s.size() && IsDigit(s[i + 1]))) {
      size_t j = i;
      while (j < s.size() && (IsDigit(s[j]) || s[j] == u'.')) ++j;
      if (j < s.size() && (s[j] == u'e' || s[j] == u'E')) {
        size_t k = j + 1;
        if (k < s.size() && (s[k] == u'+' || s[k] == u'-')) ++k;
        if (k < s.size() && IsDigit(s[k])) {
          j = k;
          while (j < s.size() && IsDigit(s[j])) ++j;
        }
      }
      out.push_back({tkNumber, String(s.substr(i, j - i)), pos});
      i = j;
    } else if (IsNameStart(c)) {
      size_t j = i;
      while (j < s.size() && IsNameChar(s[j])) ++j;
      out.push_back({tkName, String(s.substr(i, j - i)), pos});
      i = j;
    } else if (c == u'(') {
      out.push_back({tkOpen, u"(", pos});
      ++i;
    } else if (c == u')') {
      out.push_back({tkClose, u")", pos});
      ++i;
    } else if (c == u'=' || c == u'<' || c == u'>' || c == u'!' || c == u'-') {
      String op(c);
      if (i + 1 < s.size() && ((c == u'<' && (s[i + 1] == u'>' || s[i + 1] == u'=')) ||
                               ((c == u'>' || c == u'!') && s[i + 1] == u'=')))
        op += s[++i];
      if (op == u"!") SyntaxError(u"unexpected '!'", pos);
      out.push_back({tkOp, op, pos});
      ++i;
    } else {
      SyntaxError(u"unexpected character '" + String(c) + u"'", pos);
    }
  }
  out.push_back({tkEnd, String(), static_cast<int>(s.size()) + 1});
  return out;
}

enum TCompareOp { opEq, opNe, opLt, opLe, opGt, opGe };

// A value of the record or of the text.
struct TValue {
  enum TKind { Null, Number, Text, Bool } Kind = Null;
  double Num = 0;
  String Str;
};

bool IsTextField(const TField* f) { return f->ColumnKind() == ckText || f->ColumnKind() == ckBlob; }
bool IsDateField(const TField* f) {
  return f->DataType() == ftDate || f->DataType() == ftTime || f->DataType() == ftDateTime ||
         f->DataType() == ftTimeStamp;
}

}  // namespace

struct TFilterExpression::Node {
  enum TKind { And, Or, Not, Compare, IsNull, Const } Kind;
  // And and Or: every term of the chain; Not: the one negated.
  std::vector<std::unique_ptr<Node>> Items;
  // Compare and IsNull: a field or a literal on each side.
  TField* LeftField = nullptr;
  TField* RightField = nullptr;
  TValue Left, Right;
  TCompareOp Op = opEq;
  bool Negate = false;
  bool Partial = false;
  bool CaseInsensitive = false;
  bool Value = false;

  static TValue Read(const TField* f) {
    TValue v;
    if (f->IsNull()) return v;
    if (IsTextField(f)) {
      v.Kind = TValue::Text;
      v.Str = f->AsString();
    } else if (f->DataType() == ftBoolean) {
      v.Kind = TValue::Bool;
      v.Num = f->AsBoolean() ? 1 : 0;
    } else {
      v.Kind = TValue::Number;
      v.Num = f->AsFloat();
    }
    return v;
  }

  bool Test() const {
    switch (Kind) {
      case And:
        for (const auto& item : Items)
          if (!item->Test()) return false;
        return true;
      case Or:
        for (const auto& item : Items)
          if (item->Test()) return true;
        return false;
      case Not: return !Items[0]->Test();
      case Const: return Value;
      case IsNull: return (LeftField ? LeftField->IsNull() : Left.Kind == TValue::Null) != Negate;
      case Compare: break;
    }
    TValue l = LeftField ? Read(LeftField) : Left;
    TValue r = RightField ? Read(RightField) : Right;
    if (l.Kind == TValue::Null || r.Kind == TValue::Null) return false;
    int c;
    if (l.Kind == TValue::Text && r.Kind == TValue::Text) {
      String a = CaseInsensitive ? UpperCase(l.Str) : l.Str;
      String b = CaseInsensitive ? UpperCase(r.Str) : r.Str;
      if (Partial) a = a.SubString(1, b.Length());
      c = CompareStr(a, b);
    } else {
      double a = l.Num, b = r.Num;
      if (l.Kind == TValue::Text && !TryStrToFloat(l.Str, a)) return false;
      if (r.Kind == TValue::Text && !TryStrToFloat(r.Str, b)) return false;
      c = a < b ? -1 : a > b ? 1 : 0;
    }
    switch (Op) {
      case opEq: return c == 0;
      case opNe: return c != 0;
      case opLt: return c < 0;
      case opLe: return c <= 0;
      case opGt: return c > 0;
      case opGe: return c >= 0;
    }
    return false;
  }
};

namespace {

class TParser {
 public:
  TParser(const String& text, TDataSet* dataSet, TFilterOptions options)
      : tokens_(Tokenize(text)), dataSet_(dataSet), options_(options) {}

  std::unique_ptr<TFilterExpression::Node> Parse() {
    auto node = ParseOr();
    if (Peek().Kind != tkEnd) SyntaxError(u"unexpected '" + Peek().Text + u"'", Peek().Pos);
    return node;
  }

 private:
  using Node = TFilterExpression::Node;

  const TToken& Peek() const { return tokens_[i_]; }
  TToken Take() { return tokens_[i_ < tokens_.size() - 1 ? i_++ : i_]; }
  bool IsWord(const char16_t* word) const { return Peek().Kind == tkName && SameText(Peek().Text, word); }

  // Chains of one operator are flat lists, so that a long chain costs no
  // depth; only parentheses and NOT nest, up to kMaxDepth.
  static constexpr int kMaxDepth = 100;

  std::unique_ptr<Node> Chain(Node::TKind kind, const char16_t* word, std::unique_ptr<Node> (TParser::*term)()) {
    auto first = (this->*term)();
    if (!IsWord(word)) return first;
    auto n = std::make_unique<Node>();
    n->Kind = kind;
    n->Items.push_back(std::move(first));
    while (IsWord(word)) {
      Take();
      n->Items.push_back((this->*term)());
    }
    return n;
  }

  std::unique_ptr<Node> ParseOr() { return Chain(Node::Or, u"OR", &TParser::ParseAnd); }
  std::unique_ptr<Node> ParseAnd() { return Chain(Node::And, u"AND", &TParser::ParseNot); }

  std::unique_ptr<Node> ParseNot() {
    if (!IsWord(u"NOT") && Peek().Kind != tkOpen) return ParseCondition();
    if (++depth_ > kMaxDepth) SyntaxError(u"nested too deeply", Peek().Pos);
    std::unique_ptr<Node> n;
    if (IsWord(u"NOT")) {
      Take();
      n = std::make_unique<Node>();
      n->Kind = Node::Not;
      n->Items.push_back(ParseNot());
    } else {
      Take();
      n = ParseOr();
      if (Peek().Kind != tkClose) SyntaxError(u"missing ')'", Peek().Pos);
      Take();
    }
    --depth_;
    return n;
  }

  // An operand: a field or a literal.
  void ParseOperand(TField*& field, TValue& value) {
    TToken t = Take();
    switch (t.Kind) {
      case tkText:
        value.Kind = TValue::Text;
        value.Str = t.Text;
        return;
      case tkNumber:
        value.Kind = TValue::Number;
        if (!TryStrToFloat(t.Text, value.Num, TFormatSettings())) SyntaxError(u"bad number '" + t.Text + u"'", t.Pos);
        return;
      case tkOp:
        if (t.Text == u"-" && Peek().Kind == tkNumber) {
          ParseOperand(field, value);
          value.Num = -value.Num;
          return;
        }
        break;
      case tkName:
        if (SameText(t.Text, u"NULL")) return;
        if (SameText(t.Text, u"TRUE") || SameText(t.Text, u"FALSE")) {
          value.Kind = TValue::Bool;
          value.Num = SameText(t.Text, u"TRUE") ? 1 : 0;
          return;
        }
        field = dataSet_->FindField(t.Text);
        if (!field) throw EDatabaseError(u"Filter expression: Field '" + t.Text + u"' not found");
        return;
      default: break;
    }
    SyntaxError(t.Kind == tkEnd ? String(u"unexpected end of text") : u"unexpected '" + t.Text + u"'", t.Pos);
  }

  // A text literal compared with a date or number field takes that kind.
  void Coerce(const TField* field, TValue& literal, int pos) {
    if (!field || literal.Kind != TValue::Text || IsTextField(field)) return;
    double v;
    if (IsDateField(field)) {
      TDateTime d;
      if (!TryStrToDateTime(literal.Str, d) && !TryISOToDateTime(literal.Str, d))
        SyntaxError(u"'" + literal.Str + u"' is not a valid date", pos);
      v = d.Val;
    } else if (field->DataType() == ftBoolean) {
      bool b;
      if (!TryStrToBool(literal.Str, b)) SyntaxError(u"'" + literal.Str + u"' is not a valid boolean", pos);
      v = b ? 1 : 0;
    } else if (!TryStrToFloat(literal.Str, v)) {
      SyntaxError(u"'" + literal.Str + u"' is not a valid number", pos);
    }
    literal.Kind = TValue::Number;
    literal.Num = v;
  }

  std::unique_ptr<Node> ParseCondition() {
    auto n = std::make_unique<Node>();
    int pos = Peek().Pos;
    ParseOperand(n->LeftField, n->Left);
    if (IsWord(u"IS")) {
      Take();
      n->Kind = Node::IsNull;
      if (IsWord(u"NOT")) {
        Take();
        n->Negate = true;
      }
      if (!IsWord(u"NULL")) SyntaxError(u"NULL expected", Peek().Pos);
      Take();
      return n;
    }
    size_t mark = i_;
    TToken op = Take();
    if (op.Kind != tkOp || op.Text == u"-") {
      if (!n->LeftField && n->Left.Kind == TValue::Bool) {
        // A lone TRUE or FALSE.
        i_ = mark;
        n->Kind = Node::Const;
        n->Value = n->Left.Num != 0;
        return n;
      }
      if (n->LeftField && n->LeftField->DataType() == ftBoolean && op.Kind != tkOp) {
        // A boolean field alone means "field = TRUE".
        i_ = mark;
        n->Kind = Node::Compare;
        n->Right.Kind = TValue::Bool;
        n->Right.Num = 1;
        return n;
      }
      SyntaxError(u"comparison operator expected", op.Pos);
    }
    n->Kind = Node::Compare;
    if (op.Text == u"=") n->Op = opEq;
    else if (op.Text == u"<>" || op.Text == u"!=") n->Op = opNe;
    else if (op.Text == u"<") n->Op = opLt;
    else if (op.Text == u"<=") n->Op = opLe;
    else if (op.Text == u">") n->Op = opGt;
    else n->Op = opGe;
    int rightPos = Peek().Pos;
    ParseOperand(n->RightField, n->Right);
    bool leftNull = !n->LeftField && n->Left.Kind == TValue::Null;
    bool rightNull = !n->RightField && n->Right.Kind == TValue::Null;
    if ((leftNull || rightNull) && (n->Op == opEq || n->Op == opNe)) {
      n->Kind = Node::IsNull;
      n->Negate = n->Op == opNe;
      if (leftNull) {
        n->LeftField = n->RightField;
        n->Left = n->Right;
      }
      return n;
    }
    n->CaseInsensitive = options_.Contains(foCaseInsensitive);
    if (!n->RightField && n->Right.Kind == TValue::Text && !options_.Contains(foNoPartialCompare) &&
        n->Right.Str.Length() > 0 && n->Right.Str[n->Right.Str.Length()] == u'*' && (n->Op == opEq || n->Op == opNe)) {
      n->Partial = true;
      n->Right.Str = n->Right.Str.SubString(1, n->Right.Str.Length() - 1);
    }
    Coerce(n->LeftField, n->Right, rightPos);
    Coerce(n->RightField, n->Left, pos);
    return n;
  }

  std::vector<TToken> tokens_;
  size_t i_ = 0;
  int depth_ = 0;
  TDataSet* dataSet_;
  TFilterOptions options_;
};

}  // namespace

TFilterExpression::TFilterExpression(const String& text, TDataSet* dataSet, TFilterOptions options)
    : root_(TParser(text, dataSet, options).Parse()) {}

TFilterExpression::~TFilterExpression() = default;

bool TFilterExpression::Evaluate() const { return root_->Test(); }

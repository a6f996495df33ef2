#include "drivers/sqlite/sqlshim.h"

#include <unordered_map>
#include <utility>

#include "drivers/sqlite/sqllexer.h"

namespace {

constexpr int kMaxNesting = 16;  // BEGIN ... END inside one another

TDbStatus PlsqlError(const std::string& text) { return TDbStatus::Error(6550, String(text)); }

TDbStatus NotEnded(const TToken& at) {
  return TDbStatus::Error(933, u"SQL command not properly ended near \"" + String::FromUtf8(at.Text) + u"\"");
}

bool IsDigits(std::string_view s, size_t from, size_t to) {
  if (from >= to || to > s.size()) return false;
  for (size_t i = from; i < to; ++i)
    if (s[i] < '0' || s[i] > '9') return false;
  return true;
}

// 'D.M.YYYY', optionally with ' H:MI' or ' H:MI:SS': the session's date
// format, in which the filter dialogue writes date literals.
bool IsNlsDateLiteral(std::string_view s) {
  const size_t dot1 = s.find('.');
  if (dot1 == std::string_view::npos || dot1 > 2 || !IsDigits(s, 0, dot1)) return false;
  const size_t dot2 = s.find('.', dot1 + 1);
  if (dot2 == std::string_view::npos || dot2 - dot1 > 3 || !IsDigits(s, dot1 + 1, dot2)) return false;
  if (s.size() < dot2 + 5 || !IsDigits(s, dot2 + 1, dot2 + 5)) return false;
  std::string_view rest = s.substr(dot2 + 5);
  if (rest.empty()) return true;
  if (rest[0] != ' ') return false;
  const size_t colon = rest.find(':');
  if (colon == std::string_view::npos || colon < 2 || colon > 3 || !IsDigits(rest, 1, colon)) return false;
  rest = rest.substr(colon + 1);
  if (rest.size() == 2) return IsDigits(rest, 0, 2);
  return rest.size() == 5 && IsDigits(rest, 0, 2) && rest[2] == ':' && IsDigits(rest, 3, 5);
}

bool IsComparison(const TToken& t) {
  if (t.Kind != tkSymbol) return false;
  const std::string_view s = t.Name;
  return s == "=" || s == "<" || s == ">" || s == "<=" || s == ">=" || s == "<>" || s == "!=" || s == "^=";
}

bool IsStatementStart(const TToken& t) {
  static constexpr std::string_view kVerbs[] = {"SELECT", "WITH",     "INSERT",  "UPDATE",  "DELETE", "REPLACE",
                                                "VALUES", "CREATE",   "DROP",    "ALTER",   "PRAGMA", "SAVEPOINT",
                                                "RELEASE", "ROLLBACK", "EXPLAIN", "ANALYZE", "VACUUM", "REINDEX"};
  if (IsSymbol(t, "(")) return true;
  for (std::string_view verb : kVerbs)
    if (IsKeyword(t, verb)) return true;
  return false;
}

bool IsName(const TToken& t) { return t.Kind == tkWord || t.Kind == tkQuoted; }

std::string NameOf(const TToken& t) { return t.Kind == tkQuoted ? std::string(t.Name) : FoldName(t.Name); }

class TTranslator {
 public:
  TTranslator(const std::vector<TToken>& tokens, TShimProgram& program) : t_(tokens), p_(program) {}

  TDbStatus Run() {
    const size_t n = t_.size();
    if (n == 0) return TDbStatus::Error(900, u"invalid SQL statement (the text is empty)");
    const size_t end = IsSymbol(t_[n - 1], ";") ? n - 1 : n;
    if (end == 0) return TDbStatus::Error(900, u"invalid SQL statement");
    if (IsKeyword(t_[0], "DECLARE")) return Autonomous(end);
    if (IsKeyword(t_[0], "BEGIN")) {
      if (end < 2 || !IsKeyword(t_[end - 1], "END"))
        return PlsqlError("the block does not close with END;");
      p_.Kind = skBlock;
      return Body(1, end - 1);
    }
    if (IsKeyword(t_[0], "COMMIT") || (IsKeyword(t_[0], "ROLLBACK") && !(end > 1 && IsKeyword(t_[1], "TO")))) {
      p_.Kind = IsKeyword(t_[0], "COMMIT") ? skCommit : skRollback;
      size_t i = 1;
      if (i < end && IsKeyword(t_[i], "WORK")) ++i;
      return i == end ? TDbStatus::Ok() : NotEnded(t_[i]);
    }
    if (IsKeyword(t_[0], "CREATE") || IsKeyword(t_[0], "DROP")) {
      bool handled = false;
      TDbStatus status = Ddl(end, handled);
      if (handled || !status) return status;
    }
    if (!IsStatementStart(t_[0]))
      return TDbStatus::Error(900, u"invalid SQL statement (\"" + String::FromUtf8(t_[0].Text) + u"\")");
    for (size_t i = 0; i < end; ++i)
      if (IsSymbol(t_[i], ";")) return TDbStatus::Error(911, u"invalid character \";\": one statement at a time");
    p_.Kind = skStatement;
    return Statement(0, end, false);
  }

 private:
  // "declare PRAGMA AUTONOMOUS_TRANSACTION;begin <statements> commit;end;"
  TDbStatus Autonomous(size_t end) {
    static const char* const head[] = {"DECLARE", "PRAGMA", "AUTONOMOUS_TRANSACTION", ";", "BEGIN"};
    for (size_t i = 0; i < 5; ++i) {
      const bool ok = i == 3 ? i < end && IsSymbol(t_[i], ";") : i < end && IsKeyword(t_[i], head[i]);
      if (!ok) return PlsqlError("only \"declare PRAGMA AUTONOMOUS_TRANSACTION;begin ... commit;end;\" is supported");
    }
    if (end < 8 || !IsKeyword(t_[end - 1], "END") || !IsSymbol(t_[end - 2], ";") || !IsKeyword(t_[end - 3], "COMMIT"))
      return PlsqlError("an autonomous block must close with \"commit;end;\"");
    p_.Kind = skBlock;
    p_.Autonomous = true;
    return Body(5, end - 3);
  }

  // Statements separated by ";", each a SELECT ... INTO, a DML statement
  // or a nested BEGIN ... END block.
  TDbStatus Body(size_t b, size_t e, int depth = 0) {
    if (depth > kMaxNesting) return PlsqlError("blocks nested too deeply");
    size_t i = b;
    while (i < e) {
      if (IsSymbol(t_[i], ";")) {
        ++i;
        continue;
      }
      if (IsKeyword(t_[i], "BEGIN")) {
        size_t close = 0;
        if (!MatchEnd(i, e, close)) return PlsqlError("BEGIN without its END");
        TDbStatus status = Body(i + 1, close, depth + 1);
        if (!status) return status;
        i = close + 1;
        continue;
      }
      size_t semi = i;
      while (semi < e && !IsSymbol(t_[semi], ";")) ++semi;
      TDbStatus status = Statement(i, semi, true);
      if (!status) return status;
      i = semi;
    }
    return TDbStatus::Ok();
  }

  // The END that closes the BEGIN at `b`; CASE ... END nests the same way.
  bool MatchEnd(size_t b, size_t e, size_t& close) const {
    int depth = 0;
    for (size_t i = b; i < e; ++i) {
      if (IsKeyword(t_[i], "BEGIN") || IsKeyword(t_[i], "CASE")) ++depth;
      if (IsKeyword(t_[i], "END") && --depth == 0) {
        close = i;
        return true;
      }
    }
    return false;
  }

  TDbStatus Ddl(size_t end, bool& handled) {
    const bool create = IsKeyword(t_[0], "CREATE");
    size_t i = 1;
    if (create && i + 1 < end && IsKeyword(t_[i], "OR") && IsKeyword(t_[i + 1], "REPLACE")) {
      p_.Replace = true;
      i += 2;
    }
    if (i < end && IsKeyword(t_[i], "PUBLIC")) ++i;
    const bool sequence = i < end && IsKeyword(t_[i], "SEQUENCE");
    const bool synonym = i < end && IsKeyword(t_[i], "SYNONYM");
    if (!sequence && !synonym) return TDbStatus::Ok();
    handled = true;
    ++i;
    std::string owner;
    if (!ReadName(i, end, owner, p_.Object)) return TDbStatus::Error(903, u"invalid object name");
    if (sequence) {
      p_.Kind = create ? skCreateSequence : skDropSequence;
      return create ? SequenceOptions(i, end) : (i == end ? TDbStatus::Ok() : NotEnded(t_[i]));
    }
    p_.Kind = create ? skCreateSynonym : skDropSynonym;
    if (!create) {
      if (i < end && IsKeyword(t_[i], "FORCE")) ++i;
      return i == end ? TDbStatus::Ok() : NotEnded(t_[i]);
    }
    if (i >= end || !IsKeyword(t_[i], "FOR")) return TDbStatus::Error(905, u"missing keyword FOR");
    ++i;
    if (!ReadName(i, end, p_.TargetOwner, p_.Target)) return TDbStatus::Error(903, u"invalid object name");
    return i == end ? TDbStatus::Ok() : NotEnded(t_[i]);
  }

  // [owner.]name
  bool ReadName(size_t& i, size_t end, std::string& owner, std::string& name) const {
    if (i >= end || !IsName(t_[i])) return false;
    name = NameOf(t_[i++]);
    if (i + 1 < end && IsSymbol(t_[i], ".") && IsName(t_[i + 1])) {
      owner = std::move(name);
      name = NameOf(t_[i + 1]);
      i += 2;
    }
    return true;
  }

  TDbStatus SequenceOptions(size_t i, size_t end) {
    while (i < end) {
      const TToken& word = t_[i];
      int64_t value = 0;
      if ((IsKeyword(word, "START") && i + 1 < end && IsKeyword(t_[i + 1], "WITH")) ||
          (IsKeyword(word, "INCREMENT") && i + 1 < end && IsKeyword(t_[i + 1], "BY"))) {
        i += 2;
        if (!ReadInteger(i, end, value)) return TDbStatus::Error(1722, u"invalid number in CREATE SEQUENCE");
        (IsKeyword(word, "START") ? p_.Start : p_.Increment) = value;
      } else if (IsKeyword(word, "MINVALUE") || IsKeyword(word, "MAXVALUE") || IsKeyword(word, "CACHE")) {
        ++i;
        if (!ReadInteger(i, end, value)) return TDbStatus::Error(1722, u"invalid number in CREATE SEQUENCE");
      } else if (IsKeyword(word, "CYCLE")) {
        return TDbStatus::Error(4002, u"CYCLE sequences are not supported by the embedded engine");
      } else if (IsKeyword(word, "NOMINVALUE") || IsKeyword(word, "NOMAXVALUE") || IsKeyword(word, "NOCACHE") ||
                 IsKeyword(word, "NOCYCLE") || IsKeyword(word, "ORDER") || IsKeyword(word, "NOORDER")) {
        ++i;
      } else {
        return NotEnded(word);
      }
    }
    if (p_.Increment == 0) return TDbStatus::Error(4002, u"INCREMENT must be a non-zero integer");
    return TDbStatus::Ok();
  }

  bool ReadInteger(size_t& i, size_t end, int64_t& value) const {
    bool negative = false;
    if (i < end && (IsSymbol(t_[i], "-") || IsSymbol(t_[i], "+"))) negative = IsSymbol(t_[i++], "-");
    if (i >= end || t_[i].Kind != tkNumber) return false;
    const std::string_view digits = t_[i++].Name;
    if (!IsDigits(digits, 0, digits.size()) || digits.size() > 18) return false;
    value = 0;
    for (char c : digits) value = value * 10 + (c - '0');
    if (negative) value = -value;
    return true;
  }

  int ParamIndex(std::string_view name) {
    const auto [it, added] = keys_.emplace(FoldName(name), static_cast<int>(p_.Params.size()));
    if (added) p_.Params.emplace_back(name);
    return it->second;
  }

  static TShimVerb VerbOf(const std::vector<TToken>& t, size_t b, size_t e) {
    while (b < e && IsSymbol(t[b], "(")) ++b;
    if (b >= e) return svOther;
    if (IsKeyword(t[b], "SELECT") || IsKeyword(t[b], "WITH")) return svSelect;
    if (IsKeyword(t[b], "INSERT")) return svInsert;
    if (IsKeyword(t[b], "UPDATE")) return svUpdate;
    if (IsKeyword(t[b], "DELETE")) return svDelete;
    return svOther;
  }

  // Index of the first `keyword` at parenthesis depth 0 in [b, e), or e.
  size_t FindTop(size_t b, size_t e, std::string_view keyword) const {
    int depth = 0;
    for (size_t i = b; i < e; ++i) {
      if (IsSymbol(t_[i], "(")) ++depth;
      if (IsSymbol(t_[i], ")")) --depth;
      if (depth == 0 && IsKeyword(t_[i], keyword)) return i;
    }
    return e;
  }

  // ":a, :b, ..." filling [b, e) exactly.
  TDbStatus Targets(size_t b, size_t e, std::vector<int>& into) {
    for (size_t i = b; i < e; i += 2) {
      if (t_[i].Kind != tkParam) return PlsqlError("INTO takes a list of :parameters");
      into.push_back(ParamIndex(t_[i].Name));
      if (i + 1 < e && !IsSymbol(t_[i + 1], ",")) return PlsqlError("INTO takes a list of :parameters");
    }
    if (into.empty()) return PlsqlError("INTO without :parameters");
    return TDbStatus::Ok();
  }

  // Counts the comma-separated items at depth 0 in [b, e).
  size_t CountItems(size_t b, size_t e) const {
    size_t count = b < e ? 1 : 0;
    int depth = 0;
    for (size_t i = b; i < e; ++i) {
      if (IsSymbol(t_[i], "(")) ++depth;
      if (IsSymbol(t_[i], ")")) --depth;
      if (depth == 0 && IsSymbol(t_[i], ",")) ++count;
    }
    return count;
  }

  TDbStatus Statement(size_t b, size_t e, bool inBlock) {
    for (size_t i = b; i < e; ++i)  // parameters are numbered in order of first appearance
      if (t_[i].Kind == tkParam) ParamIndex(t_[i].Name);
    TShimStep step;
    step.Verb = VerbOf(t_, b, e);
    if (inBlock && step.Verb == svOther)
      return PlsqlError("a block of the embedded engine holds only SELECT ... INTO, INSERT, UPDATE and DELETE, not \"" +
                        std::string(t_[b].Text) + "\"");
    size_t cut = e, cutEnd = e;  // the INTO part, left out of the text
    if (step.Verb == svSelect) {
      const size_t into = FindTop(b, e, "INTO");
      if (into != e) {
        if (!inBlock) return TDbStatus::Error(905, u"missing keyword: SELECT ... INTO runs only inside BEGIN ... END");
        const size_t from = FindTop(into, e, "FROM");
        TDbStatus status = Targets(into + 1, from, step.Into);
        if (!status) return status;
        step.SelectInto = true;
        cut = into;
        cutEnd = from;
      } else if (inBlock) {
        return PlsqlError("an INTO clause is expected in this SELECT statement");
      }
    } else if (step.Verb != svOther) {
      size_t returning = FindTop(b, e, "RETURNING");
      if (returning == e) returning = FindTop(b, e, "RETURN");
      const size_t into = returning == e ? e : FindTop(returning, e, "INTO");
      if (into != e) {
        TDbStatus status = Targets(into + 1, e, step.Into);
        if (!status) return status;
        const size_t values = CountItems(returning + 1, into);
        if (values != step.Into.size())
          return TDbStatus::Error(values < step.Into.size() ? 947 : 913,
                                  values < step.Into.size() ? u"not enough values" : u"too many values");
        cut = into;
      }
    }
    Arithmetic(b, e, cut);
    Emit(b, e, cut, cutEnd, step);
    p_.Steps.push_back(std::move(step));
    return TDbStatus::Ok();
  }

  void Put(std::string& out, bool space, std::string_view text) {
    if (space && !out.empty()) out += ' ';
    out += text;
  }

  void Emit(size_t b, size_t e, size_t cut, size_t cutEnd, TShimStep& step) {
    std::string& out = step.Sql;
    std::vector<int> local;  // program parameter -> 1-based ?n of this step
    int depth = 0;
    bool inSet = false;  // UPDATE ... SET, where literals stay as written
    bool space = false;
    for (size_t i = b; i < e;) {
      if (i == cut) {
        i = cutEnd;
        space = true;
        continue;
      }
      const TToken& t = t_[i];
      space = space || t.SpaceBefore;
      outAt_[i] = out.size();
      const bool afterDot = i > b && IsSymbol(t_[i - 1], ".");
      if (IsSymbol(t, "(")) ++depth;
      if (IsSymbol(t, ")")) --depth;
      if (step.Verb == svUpdate && depth == 0 && t.Kind == tkWord)
        inSet = IsKeyword(t, "SET") || (inSet && !IsKeyword(t, "WHERE") && !IsKeyword(t, "RETURNING"));

      size_t used = 1;
      std::string text;
      if (!before_[i].empty()) {
        Put(out, space, before_[i]);
        space = false;
      }
      if (!opText_[i].empty()) {
        text = opText_[i];
      } else if (t.Kind == tkParam) {
        const int index = ParamIndex(t.Name);
        if (local.size() <= static_cast<size_t>(index)) local.resize(index + 1, 0);
        if (local[index] == 0) {
          step.Params.push_back(index);
          local[index] = static_cast<int>(step.Params.size());
        }
        text = '?';
        text += std::to_string(local[index]);
      } else if (size_t n = SequenceCall(i, e, text)) {
        used = n;
        if (LoneSelectItem(b, i, i + n, e, depth, cut)) text += IsKeyword(t_[i + n - 1], "NEXTVAL") ? " AS NEXTVAL" : " AS CURRVAL";
      } else if (t.Kind == tkWord && !afterDot && i + 3 < e && IsSymbol(t_[i + 1], ".") && t_[i + 2].Kind == tkWord &&
                 IsSymbol(t_[i + 3], "(")) {
        text = t_[i + 2].Text;  // pkg.func( : the engine has no packages
        used = 3;
      } else if (IsKeyword(t, "SYSDATE") && !afterDot && !(i + 1 < e && (IsSymbol(t_[i + 1], "(") || IsSymbol(t_[i + 1], ".")))) {
        text = "(datetime('now','localtime'))";
        if (LoneSelectItem(b, i, i + 1, e, depth, cut)) text += " AS SYSDATE";
      } else if (IsKeyword(t, "MINUS") && !afterDot) {
        text = "EXCEPT";
      } else if (IsKeyword(t, "RETURN") && step.Verb != svSelect && step.Verb != svOther && depth == 0) {
        text = "RETURNING";
      } else if (step.Verb == svSelect && depth == 0 && IsKeyword(t, "FOR") && i + 1 < e && IsKeyword(t_[i + 1], "UPDATE")) {
        i = SkipForUpdate(i + 2, e);
        space = true;
        continue;
      } else if (IsSymbol(t, "^=")) {
        text = "<>";
      } else if (IsSymbol(t, "/")) {
        text = "* 1.0 /";  // Oracle divides exactly; the engine drops the fraction of two integers
      } else if (t.Kind == tkString && !inSet && IsNlsDateLiteral(t.Name)) {
        text = DateLiteral(b, i, out);
      } else if (t.Kind == tkWord && t.Name.find('#') != std::string_view::npos) {
        text.assign(1, '"').append(t.Name).push_back('"');
      } else {
        text = t.Text;
      }
      Put(out, space, text);
      space = false;
      for (size_t k = i; k < i + used; ++k) out += after_[k];
      i += used;
    }
  }

  // Words that end an operand of + and -: the clauses, the logic and the
  // comparisons around an arithmetic expression.
  static bool EndsOperand(const TToken& t) {
    static constexpr std::string_view kWords[] = {
        "SELECT", "DISTINCT", "ALL",   "FROM",   "WHERE",    "AND",       "OR",     "NOT",       "ON",
        "AS",     "WHEN",     "THEN",  "ELSE",   "BETWEEN",  "IN",        "LIKE",
        "ESCAPE", "IS",       "GROUP", "ORDER",  "BY",       "HAVING",    "UNION",  "INTERSECT", "EXCEPT",
        "MINUS",  "SET",      "VALUES", "INTO",  "RETURNING", "RETURN",   "ASC",    "DESC",      "NULLS",
        "JOIN",   "LEFT",     "RIGHT", "INNER",  "OUTER",    "CROSS",     "FULL",   "USING",     "WITH",
        "UPDATE", "DELETE",   "INSERT", "EXISTS", "CONNECT", "START",     "PRIOR",  "FOR",       "DEFAULT"};
    if (t.Kind == tkSymbol)
      return IsComparison(t) || IsSymbol(t, ",") || IsSymbol(t, "||") || IsSymbol(t, ";");
    if (t.Kind != tkWord) return false;
    for (std::string_view word : kWords)
      if (IsKeyword(t, word)) return true;
    return false;
  }

  static bool IsOperand(const TToken& t) { return t.Kind != tkSymbol || IsSymbol(t, ")"); }

  // Oracle's date arithmetic: the engine keeps dates as text, so every
  // binary + and - becomes a call that knows dates, left-associative:
  // "a - b + c" is kelmar_add(kelmar_sub(a,b),c). A chain that is a whole
  // item of the select list is labelled as Oracle labels it.
  void Arithmetic(size_t b, size_t e, size_t cut) {
    if (before_.size() < t_.size()) {
      before_.resize(t_.size());
      after_.resize(t_.size());
      opText_.resize(t_.size());
      chainStart_.resize(t_.size());
      outAt_.resize(t_.size());
    }
    constexpr size_t kNone = static_cast<size_t>(-1);
    struct TChain {
      size_t Start;
      std::vector<size_t> Ops;
      bool AfterOperand = false;
      size_t Factor = kNone;   // first token of the operand being read
      size_t Checked = kNone;  // one past the operand a product last checked
    };
    // Products and signs take numbers only: anything else but a number
    // literal goes through a call that refuses dates.
    auto check = [&](size_t from, size_t to, const char* call) {
      while (from < to && (IsSymbol(t_[from], "-") || IsSymbol(t_[from], "+"))) ++from;  // inside the signs
      if (to <= from || IsNumberFactor(from, to)) return;
      before_[from] = call + before_[from];
      after_[to - 1] += ")";
    };
    std::vector<TChain> open{TChain{b, {}}};
    auto close = [&](const TChain& chain, size_t end) {
      if (chain.Ops.empty() || end <= chain.Ops.back() + 1) return;
      std::string calls;
      for (size_t k = chain.Ops.size(); k-- > 0;)
        calls += IsSymbol(t_[chain.Ops[k]], "+") ? "kelmar_add(" : "kelmar_sub(";
      before_[chain.Start] = calls + before_[chain.Start];
      for (size_t k = 0; k < chain.Ops.size(); ++k) opText_[chain.Ops[k]] = k == 0 ? "," : "),";
      after_[end - 1] += ")";
      chainStart_[end - 1] = chain.Start + 1;
      if (open.size() == 1 && LoneSelectItem(b, chain.Start, end, e, 0, cut)) {
        std::string label;  // the text without blanks, unquoted names in upper case
        for (size_t k = chain.Start; k < end; ++k)
          label += t_[k].Kind == tkQuoted ? std::string(t_[k].Name) : FoldName(t_[k].Text);
        std::erase(label, '"');
        after_[end - 1] += " AS \"" + label + "\"";
      }
    };
    for (size_t i = b; i < e; ++i) {
      const TToken& t = t_[i];
      // CASE ... END is one operand, nested as parentheses are.
      if (IsSymbol(t, "(") || IsKeyword(t, "CASE")) {
        if (open.back().Factor == kNone) open.back().Factor = i;
        open.back().AfterOperand = false;
        open.push_back(TChain{i + 1, {}});
      } else if (IsSymbol(t, ")") || IsKeyword(t, "END")) {
        close(open.back(), i);
        if (open.size() > 1) open.pop_back();
        open.back().AfterOperand = true;
      } else if (IsKeyword(t, "OVER") && open.back().AfterOperand) {
        open.back().AfterOperand = false;  // f(...) OVER (...) is one operand
      } else if (i == cut || EndsOperand(t) || (open.back().AfterOperand && IsOperand(t))) {
        // A name right after an operand is an alias and starts afresh.
        close(open.back(), i);
        const bool alias = !(i == cut || EndsOperand(t));
        open.back() = TChain{alias ? i : i + 1, {}, alias, alias ? i : kNone};
      } else if ((IsSymbol(t, "*") || IsSymbol(t, "/")) && open.back().AfterOperand) {
        TChain& chain = open.back();
        if (chain.Factor != kNone && chain.Checked != i) check(chain.Factor, i, "kelmar_num(");
        // Oracle refuses a division by zero, where the engine gives NULL.
        chain.Checked = FactorEnd(i + 1, e);
        if (IsSymbol(t, "/") && chain.Checked > i + 1) {
          before_[i + 1] = "kelmar_divisor(" + before_[i + 1];
          after_[chain.Checked - 1] += ")";
        } else {
          check(i + 1, chain.Checked, "kelmar_num(");
        }
        chain.Factor = kNone;
        chain.AfterOperand = false;
      } else if ((IsSymbol(t, "+") || IsSymbol(t, "-")) && open.back().AfterOperand) {
        open.back().Ops.push_back(i);
        open.back().Factor = kNone;
        open.back().AfterOperand = false;
      } else if (IsSymbol(t, "+") || IsSymbol(t, "-")) {
        const size_t end = FactorEnd(i + 1, e);  // a sign before an operand
        if (end != open.back().Checked) check(i + 1, end, "kelmar_num(");
        open.back().Checked = end;
      } else {
        if (IsOperand(t) && open.back().Factor == kNone) open.back().Factor = i;
        open.back().AfterOperand = IsOperand(t);
      }
    }
    while (!open.empty()) {
      close(open.back(), e);
      open.pop_back();
    }
  }

  // Signs and a number: nothing in [from, to) can be a date.
  bool IsNumberFactor(size_t from, size_t to) const {
    while (from + 1 < to && (IsSymbol(t_[from], "-") || IsSymbol(t_[from], "+"))) ++from;
    return from + 1 == to && t_[from].Kind == tkNumber;
  }

  // One past the operand of a product that starts at `i`: a sign, then a
  // literal, a parameter, a [owner.]name with its call, or a group in
  // parentheses or CASE ... END. `i` when there is none.
  size_t FactorEnd(size_t i, size_t e) const {
    const size_t first = i;
    while (i < e && (IsSymbol(t_[i], "-") || IsSymbol(t_[i], "+"))) ++i;
    if (i >= e) return first;
    if (IsSymbol(t_[i], "(") || IsKeyword(t_[i], "CASE")) return GroupEnd(i, e);
    if (t_[i].Kind == tkSymbol || EndsOperand(t_[i])) return first;
    ++i;
    while (i + 1 < e && IsSymbol(t_[i], ".") && IsName(t_[i + 1])) i += 2;
    if (i < e && IsSymbol(t_[i], "(") && IsName(t_[i - 1])) i = GroupEnd(i, e);
    return i;
  }

  // One past the ")" or END that closes the group opening at `i`.
  size_t GroupEnd(size_t i, size_t e) const {
    int depth = 0;
    for (; i < e; ++i) {
      if (IsSymbol(t_[i], "(") || IsKeyword(t_[i], "CASE")) ++depth;
      if ((IsSymbol(t_[i], ")") || IsKeyword(t_[i], "END")) && --depth == 0) return i + 1;
    }
    return e;
  }

  // Whether tokens [first, end) make a whole item of the outermost select
  // list: a rewritten one then gets the label Oracle would give it.
  bool LoneSelectItem(size_t b, size_t first, size_t end, size_t e, int depth, size_t cut) const {
    if (depth != 0 || first == b || VerbOf(t_, b, e) != svSelect) return false;
    const TToken& before = t_[first - 1];
    if (!IsKeyword(before, "SELECT") && !IsKeyword(before, "DISTINCT") && !IsSymbol(before, ",")) return false;
    if (end != e && end != cut && !IsSymbol(t_[end], ",") && !IsKeyword(t_[end], "FROM")) return false;
    // A comma belongs to the select list only before the first FROM.
    return FindTop(b, first, "FROM") == first;
  }

  // seq.NEXTVAL, owner.seq.CURRVAL: returns the tokens used, 0 when none.
  size_t SequenceCall(size_t i, size_t e, std::string& text) const {
    if (!IsName(t_[i]) || (i > 0 && IsSymbol(t_[i - 1], "."))) return 0;
    size_t name = i, used = 3;
    if (i + 4 < e && IsSymbol(t_[i + 1], ".") && IsName(t_[i + 2]) && IsSymbol(t_[i + 3], ".") &&
        (IsKeyword(t_[i + 4], "NEXTVAL") || IsKeyword(t_[i + 4], "CURRVAL"))) {
      name = i + 2;
      used = 5;
    } else if (!(i + 2 < e && IsSymbol(t_[i + 1], ".") &&
                 (IsKeyword(t_[i + 2], "NEXTVAL") || IsKeyword(t_[i + 2], "CURRVAL")))) {
      return 0;
    }
    const bool next = IsKeyword(t_[i + used - 1], "NEXTVAL");
    text = std::string(next ? "kelmar_nextval(" : "kelmar_currval(") + SqlLiteral(NameOf(t_[name])) + ")";
    return used;
  }

  // FOR UPDATE [OF col, ...] [NOWAIT | WAIT n | SKIP LOCKED]: SQLite takes
  // the whole database for a writer anyway.
  size_t SkipForUpdate(size_t i, size_t e) const {
    if (i < e && IsKeyword(t_[i], "OF")) {
      ++i;
      while (i < e && (IsName(t_[i]) || IsSymbol(t_[i], ".") || IsSymbol(t_[i], ",")) && !IsKeyword(t_[i], "NOWAIT") &&
             !IsKeyword(t_[i], "WAIT") && !IsKeyword(t_[i], "SKIP"))
        ++i;
    }
    if (i < e && IsKeyword(t_[i], "NOWAIT")) return i + 1;
    if (i + 1 < e && IsKeyword(t_[i], "WAIT") && t_[i + 1].Kind == tkNumber) return i + 2;
    if (i + 1 < e && IsKeyword(t_[i], "SKIP") && IsKeyword(t_[i + 1], "LOCKED")) return i + 2;
    return i;
  }

  // `col >= '01.02.2015'`: the literal is read as a date when the column
  // holds dates, and stays text otherwise.
  std::string DateLiteral(size_t b, size_t i, const std::string& out) const {
    const std::string literal(t_[i].Text);
    if (i < b + 2 || !IsComparison(t_[i - 1])) return literal;
    size_t k = i - 2;
    if (chainStart_[k] > 0) {  // "doc_date + 7 >= '01.02.2015'": the sum as written out
      const size_t from = outAt_[chainStart_[k] - 1], to = outAt_[i - 1];
      return "kelmar_datelit(" + out.substr(from, to - from) + "," + literal + ")";
    }
    if (!IsName(t_[k]) || IsKeyword(t_[k], "SYSDATE")) return literal;
    while (k >= b + 2 && IsSymbol(t_[k - 1], ".") && IsName(t_[k - 2])) k -= 2;
    std::string operand;
    for (size_t j = k; j < i - 1; ++j) operand += t_[j].Text;
    return "kelmar_datelit(" + operand + "," + literal + ")";
  }

  const std::vector<TToken>& t_;
  TShimProgram& p_;
  std::unordered_map<std::string, int> keys_;  // folded parameter name -> index
  // What Arithmetic puts before a token, after it, or instead of it.
  std::vector<std::string> before_, after_, opText_;
  std::vector<size_t> chainStart_;  // 1 + first token of the chain ending here; 0: none
  std::vector<size_t> outAt_;       // where each token's text begins in the step's SQL
};

}  // namespace

std::string FoldName(std::string_view name) {
  std::string out(name);
  for (char& c : out)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return out;
}

std::string SqlLiteral(std::string_view text) {
  std::string out = "'";
  for (char c : text) {
    out += c;
    if (c == '\'') out += '\'';
  }
  return out + "'";
}

TDbStatus TranslateSql(std::string_view sql, TShimProgram& program) {
  program = TShimProgram();
  std::vector<TToken> tokens;
  TDbStatus status = LexSql(sql, tokens);
  if (!status) return status;
  return TTranslator(tokens, program).Run();
}

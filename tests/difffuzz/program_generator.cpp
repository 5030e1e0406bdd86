#include "difffuzz/program_generator.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "difffuzz/random_source.h"

namespace difffuzz {
namespace {

// What a statement may name where it stands.
struct Scope {
  std::vector<std::string> scalars;   // readable and assignable
  std::vector<std::string> arrays;    // one dimension, declared with a small bound
  std::vector<std::string> grids;     // two dimensions
  std::vector<std::string> loopVars;  // variables of the open FOR loops: read, never assigned
  std::string counterPrefix = "w";    // WHILE and DO loops count in <prefix><depth>
  std::string forPrefix = "f";
  bool procedure = false;
  int maxNesting = 3;
  int maxPasses = 4;
};

struct Procedure {
  std::string name;
  int params = 0;
  bool function = false;
  bool recursive = false;  // the first parameter is a depth and must be a small number
};

// How a builtin's arguments are made: e any expression, s a small number, t a short string
// literal, a an array, d a date, y a year, u a date unit, c a character code.
struct Builtin {
  const char* name;
  const char* args;
};

const std::vector<Builtin> kBuiltins = {
    {"Len", "e"},       {"InStr", "ee"},    {"InStr", "see"},      {"Mid", "ess"},
    {"Mid", "es"},      {"Left", "es"},     {"Right", "es"},       {"CStr", "e"},
    {"CInt", "e"},      {"CDbl", "e"},      {"CLng", "e"},         {"CBool", "e"},
    {"UCase", "e"},     {"LCase", "e"},     {"Trim", "e"},         {"LTrim", "e"},
    {"Abs", "e"},       {"Sgn", "e"},       {"Int", "e"},          {"Fix", "e"},
    {"Round", "e"},     {"IsNumeric", "e"}, {"IsEmpty", "e"},      {"IsArray", "e"},
    {"TypeName", "e"},  {"VarType", "e"},   {"StrReverse", "e"},   {"Replace", "ett"},
    {"StrComp", "ee"},  {"Space", "s"},     {"String", "st"},      {"Asc", "e"},
    {"Chr", "c"},       {"Hex", "e"},       {"Oct", "e"},          {"Mod", "ee"},
    {"UBound", "a"},    {"LBound", "a"},    {"Join", "at"},        {"IsArray", "a"},
    {"TypeName", "a"},  {"VarType", "d"},   {"Year", "d"},         {"Month", "d"},
    {"Day", "d"},       {"Weekday", "d"},   {"DateSerial", "yss"}, {"DateAdd", "usd"},
    {"IsNumeric", "t"},
};

// Texts that Eval reads; quotes inside are doubled by the caller.
const std::vector<std::string> kEvalTexts = {
    "1 + 2", "2 * 3 ^ 2", "v1 & \"x\"", "Len(\"abc\")", "v2", "(1 < 2)", "10 \\ 3", "\"a\" + 1",
};

// A generous cut for texts that loops grow: below it, texts keep their growth.
constexpr int kLongText = 40;
// The most passes any line may see through its enclosing loops.
constexpr int kMaxWork = 48;

class Generator {
 public:
  explicit Generator(uint64_t seed) : rnd_(seed) {}

  std::string program() {
    Scope main;
    // Before the declarations, ON ERROR lets a second run of the same script object go past
    // the declarations it already made.
    resuming_ = rnd_.percent(50);
    bool early = rnd_.percent(50);
    if (resuming_ && early) emit(onError(true));
    preamble(main);
    if (resuming_ && !early) emit(onError(true));
    int procedures = rnd_.between(0, 3);
    for (int i = 0; i < procedures; ++i) procedureDefinition();
    int count = rnd_.between(6, 16);
    for (int i = 0; i < count; ++i) {
      if (rnd_.percent(4)) procedureDefinition();  // defined late: earlier calls fail
      statement(main, 0);
    }
    if (rnd_.percent(85)) emit(kw("RESULT") + " = " + expr(main, 3));
    std::string text;
    for (const auto& line : lines_) text += line + "\n";
    return text;
  }

 private:
  // ---- text pieces

  std::string kw(const std::string& word) {
    int style = rnd_.below(10);
    if (style < 6) return word;
    std::string out = word;
    if (style < 8) {
      std::transform(out.begin(), out.end(), out.begin(),
                     [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    } else {
      for (size_t i = 1; i < out.size(); ++i) {
        out[i] = static_cast<char>(std::tolower(static_cast<unsigned char>(out[i])));
      }
    }
    return out;
  }

  std::string spaced(const std::string& op) {
    switch (rnd_.below(8)) {
      case 0:
        return op;
      case 1:
        return " " + op;
      case 2:
        return op + " ";
      case 3:
        return "  " + op + " ";
      default:
        return " " + op + " ";
    }
  }

  std::string numberLiteral() {
    return rnd_.pick({"0",      "1",    "2",    "3",    "7",   "10",  "42",   "2.5", ".5",  "1e3",
                      "1.5e-2", "&HFF", "&h1A", "&O17", "0.1", "100", "3.75", "65",  "1E2", "007"});
  }

  std::string stringLiteral() {
    if (rnd_.percent(85)) {
      return rnd_.pick({"\"abc\"", "\"\"", "\"12\"", "\"x\"", "\"Hello World\"", "\"9\"", "\"3.5\"",
                        "\"item\"", "\"-2\"", "\"a\"\"b\"", "\" 7 \"", "\"ab\""});
    }
    return rnd_.pick({"\"x+y\"", "\"a,b\"", "\"1e3\"", "\"&HFF\"", "\"a & b\"", "\"yes\"",
                      "\"TRUE\"", "\"(x)\"", "\"2 * 3\""});
  }

  std::string shortText() { return rnd_.pick({"\"a\"", "\"b\"", "\"\"", "\",\"", "\"9\""}); }

  std::string smallNumber(const Scope& s) {
    if (!s.loopVars.empty() && rnd_.percent(35)) return rnd_.pick(s.loopVars);
    return std::to_string(rnd_.between(0, 4));
  }

  std::string dateExpr(const Scope& s) {
    if (rnd_.percent(60)) {
      return "DateSerial(" + std::to_string(rnd_.between(1999, 2030)) + ", " +
             std::to_string(rnd_.between(1, 12)) + ", " + std::to_string(rnd_.between(1, 28)) + ")";
    }
    // v5 is the main program's; a procedure cannot read it.
    if (s.procedure || rnd_.percent(50)) {
      return "DateAdd(\"d\", " + smallNumber(s) + ", DateSerial(2024, 2, 29))";
    }
    return rnd_.percent(50) ? "DateAdd(\"d\", " + smallNumber(s) + ", v5)" : "v5";
  }

  std::string arrayExpr(const Scope& s) {
    if (!s.arrays.empty() && rnd_.percent(70)) return rnd_.pick(s.arrays);
    if (!s.grids.empty() && rnd_.percent(50)) return rnd_.pick(s.grids);
    return "Array(1, \"b\", 2.5)";
  }

  std::string variable(const Scope& s) {
    if (!s.loopVars.empty() && rnd_.percent(25)) return rnd_.pick(s.loopVars);
    if (!s.scalars.empty()) return rnd_.pick(s.scalars);
    return numberLiteral();
  }

  std::string atom(const Scope& s) {
    int choice = rnd_.below(20);
    if (choice < 9) return variable(s);
    if (choice < 13) return numberLiteral();
    if (choice < 17) return stringLiteral();
    if (choice < 19) return kw(rnd_.pick({"true", "false", "empty", "null"}));
    // A name in the form of a temporary, numbered beyond any a run reaches: the reference
    // evaluator looks it up like any variable and finds none.
    if (rnd_.percent(4)) return "____var_99999999999";
    // The next name a DIM will declare: unknown here, but a loop may come back to this line
    // once it exists.
    if (rnd_.percent(15)) return "d" + std::to_string(declared_ + 1);
    return s.procedure ? "p1" : "c1";  // a constant, or a parameter the callee may lack
  }

  std::string element(const Scope& s, int depth) {
    if (!s.grids.empty() && rnd_.percent(30)) {
      return rnd_.pick(s.grids) + "(" + index(s, depth, 2) + ", " + index(s, depth, 1) + ")";
    }
    if (s.arrays.empty()) return atom(s);
    return rnd_.pick(s.arrays) + "(" + index(s, depth, 3) + ")";
  }

  std::string index(const Scope& s, int depth, int bound) {
    if (rnd_.percent(6)) return expr(s, depth - 1);
    if (rnd_.percent(2)) return std::to_string(bound + rnd_.between(1, 3));  // out of bounds
    if (!s.loopVars.empty() && rnd_.percent(40)) return rnd_.pick(s.loopVars);
    return std::to_string(rnd_.between(0, bound));
  }

  std::string expr(const Scope& s, int depth) {
    if (depth <= 0) return atom(s);
    switch (rnd_.below(16)) {
      case 0:
      case 1:
      case 2:
        return atom(s);
      case 3:
      case 4:
      case 5:
      case 6:
        return binary(s, depth);
      case 7:
        return "(" + binary(s, depth) + ")";
      case 8:
        return "(" + condition(s, depth - 1) + ")";
      case 9:
      case 10:
      case 11:
        return builtin(s, depth - 1);
      case 12:
        return callExpression(s, depth - 1);
      case 13:
        return element(s, depth);
      case 14:  // a sign works on numbers; before a name it is an error
        return "(" + rnd_.pick({"-", "+", "- "}) + (rnd_.percent(90) ? numberLiteral() : atom(s)) +
               ")";
      default:
        return evalCall();
    }
  }

  std::string binary(const Scope& s, int depth) {
    std::string op = rnd_.pick(
        {"+", "-", "*", "/", "\\", "^", "&", "&", "+", "-", "*", "&", "+", "-", "*", "&"});
    return expr(s, depth - 1) + spaced(op) + expr(s, depth - 1);
  }

  std::string comparison(const Scope& s, int depth) {
    std::string op = rnd_.pick({"=", "<>", "<", ">", "<=", ">="});
    return expr(s, depth) + spaced(op) + expr(s, depth);
  }

  // A condition without its outer brackets: operands joined by AND and OR, some negated.
  std::string condition(const Scope& s, int depth) {
    std::string text;
    int operands = rnd_.percent(70) ? 1 : rnd_.between(2, 3);
    for (int i = 0; i < operands; ++i) {
      if (i) text += " " + kw(rnd_.percent(50) ? "AND" : "OR") + " ";
      if (rnd_.percent(15)) text += kw("NOT") + " ";
      text += rnd_.percent(85) ? comparison(s, std::min(depth, 1)) : expr(s, std::min(depth, 1));
    }
    return text;
  }

  // Builtin names are matched without regard to case.
  std::string builtinName(const char* name) {
    std::string text = name;
    if (rnd_.percent(85)) return text;
    bool upper = rnd_.percent(50);
    std::transform(text.begin(), text.end(), text.begin(), [upper](unsigned char c) {
      return static_cast<char>(upper ? std::toupper(c) : std::tolower(c));
    });
    return text;
  }

  std::string builtin(const Scope& s, int depth) {
    const Builtin& b = rnd_.pick(kBuiltins);
    std::vector<std::string> args;
    for (const char* a = b.args; *a; ++a) {
      switch (*a) {
        case 'e':
          args.push_back(expr(s, depth));
          break;
        case 's':
          args.push_back(smallNumber(s));
          break;
        case 't':
          args.push_back(shortText());
          break;
        case 'a':
          args.push_back(arrayExpr(s));
          break;
        case 'd':
          args.push_back(dateExpr(s));
          break;
        case 'y':
          args.push_back(std::to_string(rnd_.between(1999, 2030)));
          break;
        case 'u':
          args.push_back(rnd_.pick({"\"d\"", "\"m\"", "\"yyyy\"", "\"ww\""}));
          break;
        default:
          args.push_back(std::to_string(rnd_.between(65, 90)));
          break;
      }
    }
    return builtinName(b.name) + "(" + argumentList(std::move(args), s) + ")";
  }

  // Arguments joined with commas; now and then one too few or one too many.
  std::string argumentList(std::vector<std::string> args, const Scope& s) {
    if (rnd_.percent(2)) {
      if (!args.empty() && rnd_.percent(50)) {
        args.pop_back();
      } else {
        args.push_back(atom(s));
      }
    }
    std::string text;
    for (size_t i = 0; i < args.size(); ++i) {
      if (i) text += rnd_.percent(85) ? ", " : ",";
      text += args[i];
    }
    return text;
  }

  std::string evalCall() {
    std::string text = rnd_.pick(kEvalTexts);
    std::string quoted;
    for (char c : text) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
    return "Eval(\"" + quoted + "\")";
  }

  // ---- procedure calls

  bool mayCall(bool recursive) const { return passes_ <= (recursive ? 8 : 16) && callDepth_ < 3; }

  std::string callOf(const Procedure& p, const Scope& s, int depth) {
    std::vector<std::string> args;
    for (int i = 0; i < p.params; ++i) {
      if (i == 0 && p.recursive) {
        args.push_back(passes_ == 1 && rnd_.percent(3) ? stringLiteral() : smallNumber(s));
      } else {
        args.push_back(expr(s, depth));
      }
    }
    return p.name + "(" + argumentList(std::move(args), s) + ")";
  }

  const Procedure* callable(bool function) {
    std::vector<const Procedure*> found;
    for (const auto& p : procs_) {
      if ((!function || p.function) && mayCall(p.recursive)) found.push_back(&p);
    }
    return found.empty() ? nullptr : rnd_.pick(found);
  }

  std::string callExpression(const Scope& s, int depth) {
    const Procedure* p = callable(true);
    return p ? callOf(*p, s, depth) : builtin(s, depth);
  }

  // ---- lines

  void emit(std::string line) {
    if (rnd_.percent(3)) line = continued(line);
    std::string pad = rnd_.percent(5) ? std::string(static_cast<size_t>(indent_), '\t')
                                      : std::string(static_cast<size_t>(indent_) * 2, ' ');
    lines_.push_back(pad + line);
    if (rnd_.percent(3)) lines_.push_back(rnd_.percent(50) ? "" : kw("REM") + " a note");
  }

  // Splits a line after an operator and goes on on the next line.
  static std::string continued(const std::string& line) {
    for (const char* op : {" & ", " + ", ", "}) {
      auto at = line.find(op);
      if (at != std::string::npos && line.find('"') == std::string::npos) {
        size_t cut = at + std::char_traits<char>::length(op);
        return line.substr(0, cut) + "_\n    " + line.substr(cut);
      }
    }
    return line;
  }

  void preamble(Scope& s) {
    int count = rnd_.between(3, 6);
    std::string dim = kw("DIM") + " ";
    for (int i = 1; i <= count; ++i) {
      std::string name = "v" + std::to_string(i);
      s.scalars.push_back(name);
      if (i > 1) dim += ", ";
      dim += name;
      if (rnd_.percent(75)) {
        dim += " = " + (rnd_.percent(50) ? numberLiteral() : stringLiteral());
      }
    }
    emit(dim);
    emit(kw("DIM") + " v5x = 0, a1(3), a2(2, 1)");
    s.scalars.push_back("v5x");
    s.arrays.push_back("a1");
    s.grids.push_back("a2");
    if (count < 5) emit(kw("DIM") + " v5");
    emit("v5 = " + dateExpr(s));
    s.scalars.push_back("v5");
    emit(kw("DIM") + " a3 = Array(1, \"two\", 3.5, " + stringLiteral() + ")");
    s.arrays.push_back("a3");
    emit(kw("CONST") + " c1 = " + numberLiteral());
    emit(kw("DIM") + " w1 = 0, w2 = 0, w3 = 0, w4 = 0");
    if (rnd_.percent(92)) emit(kw("DIM") + " " + kw("RESULT"));
  }

  std::string onError(bool resume) {
    return resume ? kw("ON") + " " + kw("ERROR") + " " + kw("RESUME") + " " + kw("NEXT")
                  : kw("ON") + " " + kw("ERROR") + " " + kw("GOTO") + " 0";
  }

  std::string target(const Scope& s) {
    if (!s.arrays.empty() && rnd_.percent(15)) return element(s, 1);
    if (s.scalars.empty()) return "zz";
    return rnd_.pick(s.scalars);
  }

  // An assignment, and where loops may repeat it, a cut that keeps its text short.
  void assignment(const Scope& s) {
    std::string t = target(s);
    std::string value = expr(s, rnd_.between(1, 3));
    if (rnd_.percent(8)) value = "-" + numberLiteral();
    pendingCuts_.push_back(t);
    emitWithCuts(s, t + spaced("=") + value);
  }

  // Emits a line, then cuts the texts it assigned where the line may run again: a text that
  // doubles on every pass would exhaust memory long before a loop ends.
  void emitWithCuts(const Scope& s, std::string line) {
    emit(std::move(line));
    std::vector<std::string> targets;
    std::swap(targets, pendingCuts_);
    if (passes_ == 1 && !s.procedure) return;
    for (const auto& t : targets) {
      emit(kw("IF") + " Len(" + t + ") > " + std::to_string(kLongText) + " " + kw("THEN") + " " +
           t + " = Left(" + t + ", 12)");
    }
  }

  std::string loopControl() {
    std::string word = rnd_.pick(openLoops_);
    return kw(rnd_.percent(60) ? "EXIT" : "CONTINUE") + " " + kw(word);
  }

  // A statement that fits after THEN and ELSE of a single-line IF.
  std::string simpleStatement(const Scope& s) {
    int choice = rnd_.below(20);
    if (choice < 2 && !openLoops_.empty()) return loopControl();
    if (choice < 4) {
      if (const Procedure* p = callable(false)) return callOf(*p, s, 1);
    }
    if (choice < 5 && (resuming_ || rnd_.percent(40))) return failingStatement(s);
    if (choice < 6) return rnd_.pick({"Clear@(err)", "Raise@(err, 7)"});
    std::string t = target(s);
    pendingCuts_.push_back(t);
    return t + spaced("=") + expr(s, 2);
  }

  std::string failingStatement(const Scope& s) {
    switch (rnd_.below(12)) {
      case 0:
        return "zz = 1";
      case 1:
        return target(s) + " = nosuch + 1";
      case 2:
        return target(s) + " = " + atom(s) + " / 0";
      case 3:
        return "Left(\"a\")";
      case 4:
        return "c1 = 3";
      case 5:
        return target(s) + " = \"abc";
      case 6:
        return s.arrays.empty() ? "zz = 2" : rnd_.pick(s.arrays) + "(9) = 1";
      case 7:
        return s.loopVars.empty() ? "x y z" : rnd_.pick(s.loopVars) + " = 0";
      case 8:
        return target(s) + " = NoFunction(1)";
      case 9:
        return target(s) + " = (1 < )";
      case 10:
        return target(s) + " = Number@(err) + 1";
      default:
        return target(s) + " = Description@(err)";
    }
  }

  void statements(Scope& s, int count, int nesting) {
    for (int i = 0; i < count; ++i) statement(s, nesting);
  }

  void statement(Scope& s, int nesting) {
    bool deeper = nesting < s.maxNesting;
    int choice = rnd_.below(100);
    if (choice < 40) return assignment(s);
    if (choice < 50) {
      std::string line = simpleStatement(s);
      if (rnd_.percent(10)) line += " : " + simpleStatement(s);
      return emitWithCuts(s, line);
    }
    if (choice < 60) return singleLineIf(s);
    if (choice < 66 && deeper) return ifBlock(s, nesting);
    if (choice < 73 && deeper) return forLoop(s, nesting);
    if (choice < 78 && deeper) return whileLoop(s, nesting);
    if (choice < 83 && deeper) return doLoop(s, nesting);
    if (choice < 87) return declaration(s);
    if (choice < 90) return redim(s);
    if (choice < 93) {
      bool resume = rnd_.percent(70);
      if (!s.procedure) resuming_ = resume;
      return emit(onError(resume));
    }
    if (choice < 96) {
      if (const Procedure* p = callable(false)) return emit(callOf(*p, s, 2));
    }
    if (choice < 97 && !s.procedure && passes_ == 1 && rnd_.percent(20)) {
      return emit(kw(rnd_.pick({"EXIT", "ECHO 1", "SELECT CASE v1"})));
    }
    if (choice < 98 && s.procedure && rnd_.percent(50)) {
      return emit(kw("IF") + " p1 > 2 " + kw("THEN") + " " + kw("EXIT"));
    }
    if (!resuming_ && rnd_.percent(60)) return assignment(s);
    emit(failingStatement(s));
  }

  void singleLineIf(const Scope& s) {
    std::string line =
        kw("IF") + " " + condition(s, 1) + " " + kw("THEN") + " " + simpleStatement(s);
    if (rnd_.percent(45)) line += " " + kw("ELSE") + " " + simpleStatement(s);
    emitWithCuts(s, line);
  }

  void ifBlock(const Scope& outer, int nesting) {
    emit(kw("IF") + " " + condition(outer, 2) + " " + kw("THEN"));
    block(outer, nesting, 1);
    if (rnd_.percent(50)) {
      emit(kw("ELSE"));
      block(outer, nesting, 1);
    }
    // With two blanks the second word is empty and the line is no END IF at all.
    emit(rnd_.percent(97) ? kw("END") + " " + kw("IF") : "End  If");
  }

  // The statements of a block in a scope of their own: what they declare stays inside.
  void block(const Scope& outer, int nesting, int passes) {
    Scope inner = outer;
    ++indent_;
    int saved = passes_;
    passes_ *= std::max(passes, 1);
    statements(inner, rnd_.between(1, inner.procedure ? 2 : 4), nesting + 1);
    passes_ = saved;
    --indent_;
  }

  // How many passes a new loop may make without pushing the total past the limit.
  int passLimit(const Scope& s) const {
    return std::max(1, std::min(s.maxPasses, kMaxWork / passes_));
  }

  void forLoop(const Scope& outer, int nesting) {
    std::string var = outer.forPrefix + std::to_string(nesting + 1);
    int passes = rnd_.between(0, passLimit(outer));
    int from = rnd_.between(-1, 2);
    std::string header = kw("FOR") + " " + var + spaced("=");
    if (rnd_.percent(25)) {
      header += std::to_string(from + passes - 1) + " " + kw("TO") + " " + std::to_string(from) +
                " " + kw("STEP") + " -1";
    } else {
      header += std::to_string(from) + " " + kw("TO") + " " + std::to_string(from + passes - 1);
      if (rnd_.percent(15)) header += " " + kw("STEP") + " 1";
      if (rnd_.percent(3)) header += " " + kw("STEP") + rnd_.pick({" 0", " 0.5"});
    }
    emit(header);
    Scope inner = outer;
    inner.loopVars.push_back(var);
    openLoops_.push_back("FOR");
    block(inner, nesting, passes);
    openLoops_.pop_back();
    emit(kw("NEXT"));
  }

  std::string counter(const Scope& s, int nesting) {
    return s.counterPrefix + std::to_string(nesting + 1);
  }

  // WHILE and DO loops count their passes in a variable that nothing else assigns; the count
  // goes up first thing in the body, so CONTINUE cannot skip it.
  void countedBody(const Scope& outer, int nesting, const std::string& w, int passes,
                   const char* kind) {
    ++indent_;
    emit(w + " = " + w + " + 1");
    --indent_;
    openLoops_.push_back(kind);
    block(outer, nesting, passes);
    openLoops_.pop_back();
  }

  std::string extraCondition(const Scope& s) {
    return rnd_.percent(20) ? " " + kw(rnd_.percent(50) ? "AND" : "OR") + " " + comparison(s, 0)
                            : "";
  }

  void whileLoop(const Scope& outer, int nesting) {
    std::string w = counter(outer, nesting);
    int passes = rnd_.between(1, passLimit(outer));
    emit(w + " = 0");
    // OR with another comparison could make the loop endless; AND only shortens it.
    std::string extra = extraCondition(outer);
    if (extra.find("OR") != std::string::npos || extra.find("or") != std::string::npos ||
        extra.find("Or") != std::string::npos) {
      extra.clear();
    }
    emit(kw("WHILE") + " " + w + " < " + std::to_string(passes) + extra);
    countedBody(outer, nesting, w, passes, "WHILE");
    emit(kw("WEND"));
  }

  void doLoop(const Scope& outer, int nesting) {
    std::string w = counter(outer, nesting);
    int passes = rnd_.between(1, passLimit(outer));
    std::string n = std::to_string(passes);
    emit(w + " = 0");
    bool onTop = rnd_.percent(50);
    bool until = rnd_.percent(50);
    std::string test =
        until ? kw("UNTIL") + " " + w + " >= " + n : kw("WHILE") + " " + w + " < " + n;
    emit(onTop ? kw("DO") + " " + test : kw("DO"));
    countedBody(outer, nesting, w, passes, "DO");
    emit(onTop ? kw("LOOP") : kw("LOOP") + " " + test);
  }

  void declaration(Scope& s) {
    if (rnd_.percent(4)) {
      // A variable named like a built-in: from here on the name means the variable, and
      // Trim(x) reads an element.
      std::string name = rnd_.pick({"Trim", "Sgn", "Hex"});
      emit(kw("DIM") + " " + name + " = " + atom(s));
      s.scalars.push_back(name);
      return;
    }
    std::string name = "d" + std::to_string(++declared_);
    switch (rnd_.below(6)) {
      case 0:
        emit(kw("DIM") + " " + name);
        s.scalars.push_back(name);
        break;
      case 1:
        emit(kw("DIM") + " " + name + "(" + std::to_string(rnd_.between(0, 3)) + ")");
        s.arrays.push_back(name);
        break;
      case 2:
        emit(kw("CONST") + " " + name + " = " + atom(s));
        break;
      case 3:
        emit(kw("DIM") + " " + name + " = Array(" + atom(s) + ", " + atom(s) + ")");
        s.arrays.push_back(name);
        break;
      default:
        emit(kw("DIM") + " " + name + spaced("=") + expr(s, 2));
        s.scalars.push_back(name);
        break;
    }
  }

  void redim(const Scope& s) {
    std::string preserve = rnd_.percent(60) ? kw("PRESERVE") + " " : "";
    if (!s.grids.empty() && rnd_.percent(25)) {
      std::string bounds = rnd_.percent(85) ? "2, " + std::to_string(rnd_.between(0, 3))
                                            : std::to_string(rnd_.between(1, 3)) + ", 1";
      return emit(kw("REDIM") + " " + preserve + rnd_.pick(s.grids) + "(" + bounds + ")");
    }
    if (s.arrays.empty()) return emit(kw("REDIM") + " " + preserve + "zz(2)");
    std::string bound = rnd_.percent(90) ? std::to_string(rnd_.between(0, 5)) : "-1";
    emit(kw("REDIM") + " " + preserve + rnd_.pick(s.arrays) + "(" + bound + ")");
  }

  // ---- procedures

  void procedureDefinition() {
    Procedure p;
    p.function = rnd_.percent(65);
    p.recursive = p.function && rnd_.percent(40);
    p.params = p.recursive ? rnd_.between(1, 2) : rnd_.between(0, 3);
    p.name = std::string(p.function ? "F" : "S") + std::to_string(procs_.size() + 1);
    Scope body;
    body.procedure = true;
    body.counterPrefix = "k";
    body.forPrefix = "g";
    body.maxNesting = 1;
    body.maxPasses = 2;
    for (int i = 1; i <= p.params; ++i) body.scalars.push_back("p" + std::to_string(i));
    if (p.recursive) {
      // The depth is read, never assigned: a body that raised it would recurse for ever.
      body.scalars.erase(body.scalars.begin());
      body.loopVars.push_back("p1");
    }
    if (p.function) body.scalars.push_back(rnd_.percent(80) ? p.name : "result");
    body.arrays.clear();

    std::string header = kw(p.function ? "FUNCTION" : "SUB") + " " + p.name;
    std::string params;
    for (int i = 1; i <= p.params; ++i) params += (i > 1 ? ", p" : "p") + std::to_string(i);
    header += (rnd_.percent(10) ? " (" : "(") + params + ")";
    emit(header);
    ++indent_;
    ++callDepth_;
    int savedPasses = passes_;
    passes_ = 1;
    std::vector<std::string> savedLoops;
    std::swap(savedLoops, openLoops_);
    emit(kw("DIM") + " k1 = 0, l1 = " + atom(body));
    body.scalars.push_back("l1");
    statements(body, rnd_.between(0, 3), 0);
    if (p.recursive) {
      recursiveStep(p, body);
    } else if (p.function && rnd_.percent(85)) {
      emit(rnd_.pick(body.scalars.size() > 1 ? std::vector<std::string>{p.name, "result"}
                                             : std::vector<std::string>{p.name}) +
           " = " + expr(body, 2));
    }
    // Root variables can be assigned from inside, not read: a cut keeps repeated calls from
    // growing them.
    if (!p.function && rnd_.percent(40)) emit("v1 = Left(" + expr(body, 1) + ", 20)");
    std::swap(savedLoops, openLoops_);
    passes_ = savedPasses;
    --callDepth_;
    --indent_;
    emit(kw("END") + " " + kw(p.function ? "FUNCTION" : "SUB"));
    procs_.push_back(p);
  }

  void recursiveStep(const Procedure& p, const Scope& body) {
    std::string rest = p.params > 1 ? ", p2" : "";
    std::string self1 = p.name + "(p1 - 1" + rest + ")";
    if (rnd_.percent(50)) {
      emit(kw("IF") + " p1 < 1 " + kw("THEN") + " " + p.name + " = " + expr(body, 1) + " " +
           kw("ELSE") + " " + p.name + " = " + atom(body) + spaced(rnd_.pick({"&", "+"})) + self1);
      return;
    }
    emit(kw("IF") + " p1 < 2 " + kw("THEN"));
    emit("  " + p.name + " = p1");
    emit(kw("ELSE"));
    emit("  " + p.name + " = " + self1 + " + " + p.name + "(p1 - 2" + rest + ")");
    emit(kw("END") + " " + kw("IF"));
  }

  RandomSource rnd_;
  std::vector<std::string> lines_;
  std::vector<Procedure> procs_;
  std::vector<std::string> openLoops_;    // FOR, WHILE or DO, innermost last
  std::vector<std::string> pendingCuts_;  // targets of the line being made
  int indent_ = 0;
  int passes_ = 1;     // how often the current line may run through its enclosing loops
  int callDepth_ = 0;  // procedure definitions being written (bodies call only earlier ones)
  int declared_ = 0;
  // ON ERROR RESUME NEXT was the last ON ERROR written in the main program: failing lines
  // then show what follows them, so they may come more often.
  bool resuming_ = false;
};

}  // namespace

std::string generateProgram(uint64_t seed) {
  return Generator(seed).program();
}

}  // namespace difffuzz

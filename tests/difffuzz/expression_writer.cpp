#include "difffuzz/expression_writer.h"

#include <algorithm>
#include <cctype>
#include <utility>

namespace difffuzz {
namespace {

// How a builtin's arguments are made: e any expression, s a small number, t a short string
// literal, a an array, d a date, y a year, u a date unit, c a character code.
struct Builtin {
  const char* name;
  const char* args;
};

const std::vector<Builtin> kBuiltins = {
    {"Len", "e"},
    {"InStr", "ee"},
    {"InStr", "see"},
    {"Mid", "ess"},
    {"Mid", "es"},
    {"Left", "es"},
    {"Right", "es"},
    {"CStr", "e"},
    {"CInt", "e"},
    {"CDbl", "e"},
    {"CLng", "e"},
    {"CBool", "e"},
    {"UCase", "e"},
    {"LCase", "e"},
    {"Trim", "e"},
    {"LTrim", "e"},
    {"Abs", "e"},
    {"Sgn", "e"},
    {"Int", "e"},
    {"Fix", "e"},
    {"Round", "e"},
    {"IsNumeric", "e"},
    {"IsEmpty", "e"},
    {"IsArray", "e"},
    {"TypeName", "e"},
    {"VarType", "e"},
    {"StrReverse", "e"},
    {"Replace", "ett"},
    {"StrComp", "ee"},
    {"Space", "s"},
    {"String", "st"},
    {"Asc", "e"},
    {"Chr", "c"},
    {"Hex", "e"},
    {"Oct", "e"},
    {"Mod", "ee"},
    {"UBound", "a"},
    {"LBound", "a"},
    {"Join", "at"},
    {"IsArray", "a"},
    {"TypeName", "a"},
    {"VarType", "d"},
    {"Year", "d"},
    {"Month", "d"},
    {"Day", "d"},
    {"Weekday", "d"},
    {"DateSerial", "yss"},
    {"DateAdd", "usd"},
    {"IsNumeric", "t"},
    // The host object's methods, found like built-ins.
    {"Bump", "s"},
    {"Twice", "e"},
    {"Half", "e"},
};

// Texts that Eval reads; quotes inside are doubled by the caller.
const std::vector<std::string> kEvalTexts = {
    "1 + 2", "2 * 3 ^ 2", "v1 & \"x\"", "Len(\"abc\")", "v2", "(1 < 2)", "10 \\ 3", "\"a\" + 1",
};

}  // namespace

std::string ExpressionWriter::kw(const std::string& word) {
  int style = g_.rnd.below(10);
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

std::string ExpressionWriter::spaced(const std::string& op) {
  switch (g_.rnd.below(8)) {
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

std::string ExpressionWriter::numberLiteral() {
  return g_.rnd.pick({"0",      "1",    "2",    "3",    "7",   "10",  "42",   "2.5", ".5",  "1e3",
                      "1.5e-2", "&HFF", "&h1A", "&O17", "0.1", "100", "3.75", "65",  "1E2", "007"});
}

std::string ExpressionWriter::stringLiteral() {
  if (g_.rnd.percent(85)) {
    return g_.rnd.pick({"\"abc\"", "\"\"", "\"12\"", "\"x\"", "\"Hello World\"", "\"9\"", "\"3.5\"",
                        "\"item\"", "\"-2\"", "\"a\"\"b\"", "\" 7 \"", "\"ab\""});
  }
  return g_.rnd.pick({"\"x+y\"", "\"a,b\"", "\"1e3\"", "\"&HFF\"", "\"a & b\"", "\"yes\"",
                      "\"TRUE\"", "\"(x)\"", "\"2 * 3\""});
}

std::string ExpressionWriter::shortText() {
  return g_.rnd.pick({"\"a\"", "\"b\"", "\"\"", "\",\"", "\"9\""});
}

std::string ExpressionWriter::smallNumber(const Scope& s) {
  if (!s.loopVars.empty() && g_.rnd.percent(35)) return g_.rnd.pick(s.loopVars);
  return std::to_string(g_.rnd.between(0, 4));
}

std::string ExpressionWriter::dateExpr(const Scope& s) {
  if (g_.rnd.percent(60)) {
    return "DateSerial(" + std::to_string(g_.rnd.between(1999, 2030)) + ", " +
           std::to_string(g_.rnd.between(1, 12)) + ", " + std::to_string(g_.rnd.between(1, 28)) +
           ")";
  }
  // v5 is the main program's; a procedure cannot read it.
  if (s.procedure || g_.rnd.percent(50)) {
    return "DateAdd(\"d\", " + smallNumber(s) + ", DateSerial(2024, 2, 29))";
  }
  return g_.rnd.percent(50) ? "DateAdd(\"d\", " + smallNumber(s) + ", v5)" : "v5";
}

std::string ExpressionWriter::arrayExpr(const Scope& s) {
  if (!s.arrays.empty() && g_.rnd.percent(70)) return g_.rnd.pick(s.arrays);
  if (!s.grids.empty() && g_.rnd.percent(50)) return g_.rnd.pick(s.grids);
  return "Array(1, \"b\", 2.5)";
}

std::string ExpressionWriter::variable(const Scope& s) {
  if (!s.loopVars.empty() && g_.rnd.percent(25)) return g_.rnd.pick(s.loopVars);
  if (!s.scalars.empty()) return g_.rnd.pick(s.scalars);
  return numberLiteral();
}

std::string ExpressionWriter::atom(const Scope& s) {
  int choice = g_.rnd.below(20);
  if (choice < 9) return variable(s);
  if (choice < 13) return numberLiteral();
  if (choice < 17) return stringLiteral();
  if (choice < 19) return kw(g_.rnd.pick({"true", "false", "empty", "null"}));
  // A name in the form of a temporary, numbered beyond any a run reaches: the reference
  // evaluator looks it up like any variable and finds none.
  if (g_.rnd.percent(4)) return "____var_99999999999";
  // The next name a DIM will declare: unknown here, but a loop may come back to this line
  // once it exists.
  if (g_.rnd.percent(15)) return "d" + std::to_string(g_.declared + 1);
  // A bare name that is no variable calls the host object's method without arguments.
  if (g_.rnd.percent(20)) return kw("Total");
  return s.procedure ? "p1" : "c1";  // a constant, or a parameter the callee may lack
}

std::string ExpressionWriter::element(const Scope& s, int depth) {
  if (!s.grids.empty() && g_.rnd.percent(30)) {
    return g_.rnd.pick(s.grids) + "(" + index(s, depth, 2) + ", " + index(s, depth, 1) + ")";
  }
  if (s.arrays.empty()) return atom(s);
  return g_.rnd.pick(s.arrays) + "(" + index(s, depth, 3) + ")";
}

std::string ExpressionWriter::index(const Scope& s, int depth, int bound) {
  if (g_.rnd.percent(6)) return expr(s, depth - 1);
  if (g_.rnd.percent(2)) return std::to_string(bound + g_.rnd.between(1, 3));  // out of bounds
  if (!s.loopVars.empty() && g_.rnd.percent(40)) return g_.rnd.pick(s.loopVars);
  return std::to_string(g_.rnd.between(0, bound));
}

std::string ExpressionWriter::expr(const Scope& s, int depth) {
  if (depth <= 0) return atom(s);
  switch (g_.rnd.below(16)) {
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
      return "(" + g_.rnd.pick({"-", "+", "- "}) +
             (g_.rnd.percent(90) ? numberLiteral() : atom(s)) + ")";
    default:
      return evalCall();
  }
}

std::string ExpressionWriter::binary(const Scope& s, int depth) {
  std::string op = g_.rnd.pick(
      {"+", "-", "*", "/", "\\", "^", "&", "&", "+", "-", "*", "&", "+", "-", "*", "&"});
  return expr(s, depth - 1) + spaced(op) + expr(s, depth - 1);
}

std::string ExpressionWriter::comparison(const Scope& s, int depth) {
  std::string op = g_.rnd.pick({"=", "<>", "<", ">", "<=", ">="});
  return expr(s, depth) + spaced(op) + expr(s, depth);
}

// A condition without its outer brackets: operands joined by AND and OR, some negated.
std::string ExpressionWriter::condition(const Scope& s, int depth) {
  std::string text;
  int operands = g_.rnd.percent(70) ? 1 : g_.rnd.between(2, 3);
  for (int i = 0; i < operands; ++i) {
    if (i) text += " " + kw(g_.rnd.percent(50) ? "AND" : "OR") + " ";
    if (g_.rnd.percent(15)) text += kw("NOT") + " ";
    text += g_.rnd.percent(85) ? comparison(s, std::min(depth, 1)) : expr(s, std::min(depth, 1));
  }
  return text;
}

// Builtin names are matched without regard to case.
std::string ExpressionWriter::builtinName(const char* name) {
  std::string text = name;
  if (g_.rnd.percent(85)) return text;
  bool upper = g_.rnd.percent(50);
  std::transform(text.begin(), text.end(), text.begin(), [upper](unsigned char c) {
    return static_cast<char>(upper ? std::toupper(c) : std::tolower(c));
  });
  return text;
}

std::string ExpressionWriter::builtin(const Scope& s, int depth) {
  const Builtin& b = g_.rnd.pick(kBuiltins);
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
        args.push_back(std::to_string(g_.rnd.between(1999, 2030)));
        break;
      case 'u':
        args.push_back(g_.rnd.pick({"\"d\"", "\"m\"", "\"yyyy\"", "\"ww\""}));
        break;
      default:
        args.push_back(std::to_string(g_.rnd.between(65, 90)));
        break;
    }
  }
  return builtinName(b.name) + "(" + argumentList(std::move(args), s) + ")";
}

// Arguments joined with commas; now and then one too few or one too many.
std::string ExpressionWriter::argumentList(std::vector<std::string> args, const Scope& s) {
  if (g_.rnd.percent(2)) {
    if (!args.empty() && g_.rnd.percent(50)) {
      args.pop_back();
    } else {
      args.push_back(atom(s));
    }
  }
  std::string text;
  for (size_t i = 0; i < args.size(); ++i) {
    if (i) text += g_.rnd.percent(85) ? ", " : ",";
    text += args[i];
  }
  return text;
}

std::string ExpressionWriter::evalCall() {
  std::string text = g_.rnd.pick(kEvalTexts);
  std::string quoted;
  for (char c : text) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
  return "Eval(\"" + quoted + "\")";
}

// ---- procedure calls

// Calls in loops are few: each runs a whole body, and a recursive one many bodies.
bool ExpressionWriter::mayCall(bool recursive) const {
  return g_.passes <= (recursive ? 8 : 16);
}

std::string ExpressionWriter::callOf(const Procedure& p, const Scope& s, int depth) {
  std::vector<std::string> args;
  for (int i = 0; i < p.params; ++i) {
    if (i == 0 && p.recursive) {
      args.push_back(g_.passes == 1 && g_.rnd.percent(3) ? stringLiteral() : smallNumber(s));
    } else {
      args.push_back(expr(s, depth));
    }
  }
  return p.name + "(" + argumentList(std::move(args), s) + ")";
}

const Procedure* ExpressionWriter::callable(bool function) {
  std::vector<const Procedure*> found;
  for (const auto& p : g_.procs) {
    if ((!function || p.function) && mayCall(p.recursive)) found.push_back(&p);
  }
  return found.empty() ? nullptr : g_.rnd.pick(found);
}

std::string ExpressionWriter::callExpression(const Scope& s, int depth) {
  const Procedure* p = callable(true);
  return p ? callOf(*p, s, depth) : builtin(s, depth);
}

}  // namespace difffuzz

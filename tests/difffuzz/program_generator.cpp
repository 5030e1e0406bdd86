#include "difffuzz/program_generator.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "difffuzz/expression_writer.h"
#include "difffuzz/generation_state.h"

namespace difffuzz {
namespace {

// A generous cut for texts that loops grow: below it, texts keep their growth.
constexpr int kLongText = 40;
// The most passes any line may see through its enclosing loops.
constexpr int kMaxWork = 48;

class Generator {
 public:
  explicit Generator(uint64_t seed) : state_(seed), x_(state_) {}

  std::string program() {
    Scope main;
    // Before the declarations, ON ERROR lets a second run of the same script object go past
    // the declarations it already made.
    resuming_ = state_.rnd.percent(50);
    bool early = state_.rnd.percent(50);
    if (resuming_ && early) emit(onError(true));
    preamble(main);
    if (resuming_ && !early) emit(onError(true));
    int procedures = state_.rnd.between(0, 3);
    for (int i = 0; i < procedures; ++i) procedureDefinition();
    int count = state_.rnd.between(6, 16);
    for (int i = 0; i < count; ++i) {
      if (state_.rnd.percent(4)) procedureDefinition();  // defined late: earlier calls fail
      if (state_.rnd.percent(2)) conditionalDefinition();
      statement(main, 0);
    }
    if (state_.rnd.percent(85)) emit(x_.kw("RESULT") + " = " + x_.expr(main, 3));
    std::string text;
    for (const auto& line : lines_) text += line + "\n";
    return text;
  }

 private:
  // ---- lines

  void emit(std::string line) {
    if (state_.rnd.percent(3)) line = continued(line);
    std::string pad = state_.rnd.percent(5) ? std::string(static_cast<size_t>(indent_), '\t')
                                            : std::string(static_cast<size_t>(indent_) * 2, ' ');
    lines_.push_back(pad + line);
    if (state_.rnd.percent(3))
      lines_.push_back(state_.rnd.percent(50) ? "" : x_.kw("REM") + " a note");
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
    int count = state_.rnd.between(3, 6);
    std::string dim = x_.kw("DIM") + " ";
    for (int i = 1; i <= count; ++i) {
      std::string name = "v" + std::to_string(i);
      s.scalars.push_back(name);
      if (i > 1) dim += ", ";
      dim += name;
      if (state_.rnd.percent(75)) {
        dim += " = " + (state_.rnd.percent(50) ? x_.numberLiteral() : x_.stringLiteral());
      }
    }
    emit(dim);
    emit(x_.kw("DIM") + " v5x = 0, a1(3), a2(2, 1)");
    s.scalars.push_back("v5x");
    s.arrays.push_back("a1");
    s.grids.push_back("a2");
    if (count < 5) emit(x_.kw("DIM") + " v5");
    emit("v5 = " + x_.dateExpr(s));
    s.scalars.push_back("v5");
    emit(x_.kw("DIM") + " a3 = Array(1, \"two\", 3.5, " + x_.stringLiteral() + ")");
    s.arrays.push_back("a3");
    emit(x_.kw("CONST") + " c1 = " + x_.numberLiteral());
    emit(x_.kw("DIM") + " w1 = 0, w2 = 0, w3 = 0, w4 = 0, zb = 0");
    if (state_.rnd.percent(92)) emit(x_.kw("DIM") + " " + x_.kw("RESULT"));
  }

  std::string onError(bool resume) {
    return resume ? x_.kw("ON") + " " + x_.kw("ERROR") + " " + x_.kw("RESUME") + " " + x_.kw("NEXT")
                  : x_.kw("ON") + " " + x_.kw("ERROR") + " " + x_.kw("GOTO") + " 0";
  }

  std::string target(const Scope& s) {
    if (!s.arrays.empty() && state_.rnd.percent(15)) return x_.element(s, 1);
    if (s.scalars.empty()) return "zz";
    return state_.rnd.pick(s.scalars);
  }

  // An assignment, and where loops may repeat it, a cut that keeps its text short.
  void assignment(const Scope& s) {
    std::string t = target(s);
    std::string value = x_.expr(s, state_.rnd.between(1, 3));
    if (state_.rnd.percent(8)) value = "-" + x_.numberLiteral();
    pendingCuts_.push_back(t);
    emitWithCuts(s, t + x_.spaced("=") + value);
  }

  // Emits a line, then cuts the texts it assigned where the line may run again: a text that
  // doubles on every pass would exhaust memory long before a loop ends.
  void emitWithCuts(const Scope& s, std::string line) {
    emit(std::move(line));
    std::vector<std::string> targets;
    std::swap(targets, pendingCuts_);
    if (state_.passes == 1 && !s.procedure) return;
    for (const auto& t : targets) {
      emit(x_.kw("IF") + " Len(" + t + ") > " + std::to_string(kLongText) + " " + x_.kw("THEN") +
           " " + t + " = Left(" + t + ", 12)");
    }
  }

  std::string loopControl() {
    std::string word = state_.rnd.pick(openLoops_);
    return x_.kw(state_.rnd.percent(60) ? "EXIT" : "CONTINUE") + " " + x_.kw(word);
  }

  // A statement that fits after THEN and ELSE of a single-line IF.
  std::string simpleStatement(const Scope& s) {
    int choice = state_.rnd.below(20);
    if (choice < 2 && !openLoops_.empty()) return loopControl();
    if (choice < 4) {
      if (const Procedure* p = x_.callable(false)) return x_.callOf(*p, s, 1);
    }
    if (choice < 5 && (resuming_ || state_.rnd.percent(40))) return failingStatement(s);
    if (choice < 6) return state_.rnd.pick({"Clear@(err)", "Raise@(err, 7)"});
    std::string t = target(s);
    pendingCuts_.push_back(t);
    return t + x_.spaced("=") + x_.expr(s, 2);
  }

  std::string failingStatement(const Scope& s) {
    switch (state_.rnd.below(12)) {
      case 0:
        return "zz = 1";
      case 1:
        return target(s) + " = nosuch + 1";
      case 2:
        return target(s) + " = " + x_.atom(s) + " / 0";
      case 3:
        return "Left(\"a\")";
      case 4:
        return "c1 = 3";
      case 5:
        return target(s) + " = \"abc";
      case 6:
        return s.arrays.empty() ? "zz = 2" : state_.rnd.pick(s.arrays) + "(9) = 1";
      case 7:
        return s.loopVars.empty() ? "x y z" : state_.rnd.pick(s.loopVars) + " = 0";
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
    int choice = state_.rnd.below(100);
    if (choice < 40) return assignment(s);
    if (choice < 50) {
      std::string line = simpleStatement(s);
      if (state_.rnd.percent(10)) line += " : " + simpleStatement(s);
      return emitWithCuts(s, line);
    }
    if (choice < 59) return singleLineIf(s);
    if (choice < 60 && deeper && !s.procedure) return irregularBlocks(s, nesting);
    if (choice < 66 && deeper) return ifBlock(s, nesting);
    if (choice < 73 && deeper) return forLoop(s, nesting);
    if (choice < 78 && deeper) return whileLoop(s, nesting);
    if (choice < 83 && deeper) return doLoop(s, nesting);
    if (choice < 87) return declaration(s);
    if (choice < 90) return redim(s);
    if (choice < 93) {
      bool resume = state_.rnd.percent(70);
      if (!s.procedure) resuming_ = resume;
      return emit(onError(resume));
    }
    if (choice < 96) {
      if (const Procedure* p = x_.callable(false)) return emit(x_.callOf(*p, s, 2));
    }
    if (choice < 97 && !s.procedure && state_.passes == 1 && state_.rnd.percent(20)) {
      return emit(x_.kw(state_.rnd.pick({"EXIT", "ECHO 1", "SELECT CASE v1"})));
    }
    if (choice < 98 && s.procedure && state_.rnd.percent(50)) {
      return emit(x_.kw("IF") + " p1 > 2 " + x_.kw("THEN") + " " + x_.kw("EXIT"));
    }
    if (!resuming_ && state_.rnd.percent(60)) return assignment(s);
    emit(failingStatement(s));
  }

  void singleLineIf(const Scope& s) {
    std::string line =
        x_.kw("IF") + " " + x_.condition(s, 1) + " " + x_.kw("THEN") + " " + simpleStatement(s);
    if (state_.rnd.percent(45)) line += " " + x_.kw("ELSE") + " " + simpleStatement(s);
    emitWithCuts(s, line);
  }

  void ifBlock(const Scope& outer, int nesting) {
    emit(x_.kw("IF") + " " + x_.condition(outer, 2) + " " + x_.kw("THEN"));
    block(outer, nesting, 1);
    if (state_.rnd.percent(50)) {
      emit(x_.kw("ELSE"));
      block(outer, nesting, 1);
    }
    // With two blanks the second word is empty and the line is no END IF at all.
    emit(state_.rnd.percent(97) ? x_.kw("END") + " " + x_.kw("IF") : "End  If");
  }

  // The statements of a block in a scope of their own: what they declare stays inside.
  void block(const Scope& outer, int nesting, int passes) {
    Scope inner = outer;
    ++indent_;
    int saved = state_.passes;
    state_.passes *= std::max(passes, 1);
    statements(inner, state_.rnd.between(1, inner.procedure ? 2 : 4), nesting + 1);
    state_.passes = saved;
    --indent_;
  }

  // How many passes a new loop may make without pushing the total past the limit.
  int passLimit(const Scope& s) const {
    return std::max(1, std::min(s.maxPasses, kMaxWork / state_.passes));
  }

  void forLoop(const Scope& outer, int nesting) {
    std::string var = outer.forPrefix + std::to_string(nesting + 1);
    int passes = state_.rnd.between(0, passLimit(outer));
    int from = state_.rnd.between(-1, 2);
    std::string header = x_.kw("FOR") + " " + var + x_.spaced("=");
    if (state_.rnd.percent(25)) {
      header += std::to_string(from + passes - 1) + " " + x_.kw("TO") + " " + std::to_string(from) +
                " " + x_.kw("STEP") + " -1";
    } else {
      header += std::to_string(from) + " " + x_.kw("TO") + " " + std::to_string(from + passes - 1);
      if (state_.rnd.percent(15)) header += " " + x_.kw("STEP") + " 1";
      if (state_.rnd.percent(3)) header += " " + x_.kw("STEP") + state_.rnd.pick({" 0", " 0.5"});
    }
    emit(header);
    Scope inner = outer;
    inner.loopVars.push_back(var);
    openLoops_.push_back("FOR");
    block(inner, nesting, passes);
    openLoops_.pop_back();
    emit(x_.kw("NEXT"));
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
    return state_.rnd.percent(20)
               ? " " + x_.kw(state_.rnd.percent(50) ? "AND" : "OR") + " " + x_.comparison(s, 0)
               : "";
  }

  void whileLoop(const Scope& outer, int nesting) {
    std::string w = counter(outer, nesting);
    int passes = state_.rnd.between(1, passLimit(outer));
    emit(w + " = 0");
    // OR with another comparison could make the loop endless; AND only shortens it.
    std::string extra = extraCondition(outer);
    if (extra.find("OR") != std::string::npos || extra.find("or") != std::string::npos ||
        extra.find("Or") != std::string::npos) {
      extra.clear();
    }
    emit(x_.kw("WHILE") + " " + w + " < " + std::to_string(passes) + extra);
    countedBody(outer, nesting, w, passes, "WHILE");
    emit(x_.kw("WEND"));
  }

  void doLoop(const Scope& outer, int nesting) {
    std::string w = counter(outer, nesting);
    int passes = state_.rnd.between(1, passLimit(outer));
    std::string n = std::to_string(passes);
    emit(w + " = 0");
    bool onTop = state_.rnd.percent(50);
    bool until = state_.rnd.percent(50);
    std::string test =
        until ? x_.kw("UNTIL") + " " + w + " >= " + n : x_.kw("WHILE") + " " + w + " < " + n;
    emit(onTop ? x_.kw("DO") + " " + test : x_.kw("DO"));
    countedBody(outer, nesting, w, passes, "DO");
    emit(onTop ? x_.kw("LOOP") : x_.kw("LOOP") + " " + test);
  }

  void declaration(Scope& s) {
    if (state_.rnd.percent(4)) {
      // A variable named like a built-in: from here on the name means the variable, and
      // Trim(x) reads an element.
      std::string name = state_.rnd.pick({"Trim", "Sgn", "Hex"});
      emit(x_.kw("DIM") + " " + name + " = " + x_.atom(s));
      s.scalars.push_back(name);
      return;
    }
    std::string name = "d" + std::to_string(++state_.declared);
    switch (state_.rnd.below(6)) {
      case 0:
        emit(x_.kw("DIM") + " " + name);
        s.scalars.push_back(name);
        break;
      case 1:
        emit(x_.kw("DIM") + " " + name + "(" + std::to_string(state_.rnd.between(0, 3)) + ")");
        s.arrays.push_back(name);
        break;
      case 2:
        emit(x_.kw("CONST") + " " + name + " = " + x_.atom(s));
        break;
      case 3:
        emit(x_.kw("DIM") + " " + name + " = Array(" + x_.atom(s) + ", " + x_.atom(s) + ")");
        s.arrays.push_back(name);
        break;
      default:
        emit(x_.kw("DIM") + " " + name + x_.spaced("=") + x_.expr(s, 2));
        s.scalars.push_back(name);
        break;
    }
  }

  void redim(const Scope& s) {
    std::string preserve = state_.rnd.percent(60) ? x_.kw("PRESERVE") + " " : "";
    if (!s.grids.empty() && state_.rnd.percent(25)) {
      std::string bounds = state_.rnd.percent(85)
                               ? "2, " + std::to_string(state_.rnd.between(0, 3))
                               : std::to_string(state_.rnd.between(1, 3)) + ", 1";
      return emit(x_.kw("REDIM") + " " + preserve + state_.rnd.pick(s.grids) + "(" + bounds + ")");
    }
    if (s.arrays.empty()) return emit(x_.kw("REDIM") + " " + preserve + "zz(2)");
    std::string bound = state_.rnd.percent(90) ? std::to_string(state_.rnd.between(0, 5)) : "-1";
    emit(x_.kw("REDIM") + " " + preserve + state_.rnd.pick(s.arrays) + "(" + bound + ")");
  }

  // ---- blocks that do not nest: the gates of open conditionals and loops decide what runs

  void irregularBlocks(Scope& s, int nesting) {
    switch (state_.rnd.below(3)) {
      case 0:
        return strayCloser();
      case 1:
        return loopAcrossIf(s, nesting);
      default:
        return ifAcrossLoop(s, nesting);
    }
  }

  // END IF or ELSE where the program has no block IF open of its own: it closes (or flips)
  // whatever conditional is open at run time, or none. (Loop ends without their loop come
  // from loopAcrossIf when its condition fails.)
  void strayCloser() {
    emit(state_.rnd.percent(50) ? x_.kw("END") + " " + x_.kw("IF") : x_.kw("ELSE"));
  }

  // A WHILE loop whose end may not be where its header expects it. Besides its own count it
  // spends from zb, a budget that only grows: when the loop is left open, later loops reuse
  // its counter's name and reset it, and only the budget still bounds a jump back to it.
  void budgetedWhile(const std::string& w, int passes) {
    emit(w + " = 0");
    emit(x_.kw("WHILE") + " " + w + " < " + std::to_string(passes) + " " + x_.kw("AND") +
         " zb < 60");
    emit(w + " = " + w + " + 1");
    emit("zb = zb + 1");
  }

  // IF c THEN / FOR (or WHILE) ... / END IF / ... / NEXT (or WEND): the loop's header runs
  // only when c holds, its end always.
  void loopAcrossIf(const Scope& outer, int nesting) {
    emit(x_.kw("IF") + " " + x_.condition(outer, 1) + " " + x_.kw("THEN"));
    bool isFor = state_.rnd.percent(50);
    int passes = state_.rnd.between(1, passLimit(outer));
    Scope inner = outer;
    std::string w = counter(outer, nesting);
    if (isFor) {
      std::string var = outer.forPrefix + std::to_string(nesting + 1);
      emit(x_.kw("FOR") + " " + var + " = 1 " + x_.kw("TO") + " " + std::to_string(passes));
      inner.loopVars.push_back(var);
    } else {
      budgetedWhile(w, passes);
    }
    block(inner, nesting, passes);
    emit(x_.kw("END") + " " + x_.kw("IF"));
    block(inner, nesting, passes);
    emit(x_.kw(isFor ? "NEXT" : "WEND"));
  }

  // WHILE ... / IF c THEN / ... / WEND / ... / END IF: the loop's end lies inside the
  // conditional, so when c fails the loop is never closed and later lines run inside it.
  void ifAcrossLoop(const Scope& outer, int nesting) {
    std::string w = counter(outer, nesting);
    int passes = state_.rnd.between(1, passLimit(outer));
    budgetedWhile(w, passes);
    emit(x_.kw("IF") + " " + x_.condition(outer, 1) + " " + x_.kw("THEN"));
    block(outer, nesting, passes);
    emit(x_.kw("WEND"));
    block(outer, nesting, passes);
    emit(x_.kw("END") + " " + x_.kw("IF"));
  }

  // A procedure defined inside a conditional, taken or not: definitions are collected as the
  // driver passes their lines, whatever the gates say.
  void conditionalDefinition() {
    emit(x_.kw("IF") + " " + state_.rnd.pick({"0", "1", "v1 = 1"}) + " " + x_.kw("THEN"));
    procedureDefinition();
    if (state_.rnd.percent(40)) {
      emit(x_.kw("ELSE"));
      procedureDefinition();
    }
    emit(x_.kw("END") + " " + x_.kw("IF"));
  }

  // ---- procedures

  void procedureDefinition() {
    Procedure p;
    p.function = state_.rnd.percent(65);
    p.recursive = p.function && state_.rnd.percent(40);
    p.params = p.recursive ? state_.rnd.between(1, 2) : state_.rnd.between(0, 3);
    p.name = std::string(p.function ? "F" : "S") + std::to_string(state_.procs.size() + 1);
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
    if (p.function) body.scalars.push_back(state_.rnd.percent(80) ? p.name : "result");
    body.arrays.clear();

    std::string header = x_.kw(p.function ? "FUNCTION" : "SUB") + " " + p.name;
    std::string params;
    for (int i = 1; i <= p.params; ++i) params += (i > 1 ? ", p" : "p") + std::to_string(i);
    header += (state_.rnd.percent(10) ? " (" : "(") + params + ")";
    emit(header);
    ++indent_;
    int savedPasses = state_.passes;
    state_.passes = 1;
    std::vector<std::string> savedLoops;
    std::swap(savedLoops, openLoops_);
    emit(x_.kw("DIM") + " k1 = 0, l1 = " + x_.atom(body));
    body.scalars.push_back("l1");
    statements(body, state_.rnd.between(0, 3), 0);
    if (p.recursive) {
      recursiveStep(p, body);
    } else if (p.function && state_.rnd.percent(85)) {
      emit(state_.rnd.pick(body.scalars.size() > 1 ? std::vector<std::string>{p.name, "result"}
                                                   : std::vector<std::string>{p.name}) +
           " = " + x_.expr(body, 2));
    }
    // Root variables can be assigned from inside, not read: a cut keeps repeated calls from
    // growing them.
    if (!p.function && state_.rnd.percent(40)) emit("v1 = Left(" + x_.expr(body, 1) + ", 20)");
    std::swap(savedLoops, openLoops_);
    state_.passes = savedPasses;
    --indent_;
    emit(x_.kw("END") + " " + x_.kw(p.function ? "FUNCTION" : "SUB"));
    state_.procs.push_back(p);
  }

  void recursiveStep(const Procedure& p, const Scope& body) {
    std::string rest = p.params > 1 ? ", p2" : "";
    std::string self1 = p.name + "(p1 - 1" + rest + ")";
    if (state_.rnd.percent(50)) {
      emit(x_.kw("IF") + " p1 < 1 " + x_.kw("THEN") + " " + p.name + " = " + x_.expr(body, 1) +
           " " + x_.kw("ELSE") + " " + p.name + " = " + x_.atom(body) +
           x_.spaced(state_.rnd.pick({"&", "+"})) + self1);
      return;
    }
    emit(x_.kw("IF") + " p1 < 2 " + x_.kw("THEN"));
    emit("  " + p.name + " = p1");
    emit(x_.kw("ELSE"));
    emit("  " + p.name + " = " + self1 + " + " + p.name + "(p1 - 2" + rest + ")");
    emit(x_.kw("END") + " " + x_.kw("IF"));
  }

  GenerationState state_;
  ExpressionWriter x_;  // writes into state_
  std::vector<std::string> lines_;
  std::vector<std::string> openLoops_;    // FOR, WHILE or DO, innermost last
  std::vector<std::string> pendingCuts_;  // targets of the line being made
  int indent_ = 0;
  // ON ERROR RESUME NEXT was the last ON ERROR written in the main program: failing lines
  // then show what follows them, so they may come more often.
  bool resuming_ = false;
};

}  // namespace

std::string generateProgram(uint64_t seed) {
  return Generator(seed).program();
}

}  // namespace difffuzz

// The generator's promises: a program per seed that covers the grammar, balances its blocks,
// stays deterministic, ends, and keeps its texts small. A generator that broke one of them
// would leave the fuzzer passing while it tests little, or hanging.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "difffuzz/outcome.h"
#include "difffuzz/program_generator.h"

namespace difffuzz {
namespace {

using std::chrono::milliseconds;

std::string upper(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return text;
}

// The program's statements in upper case, continued lines joined, one per entry.
std::vector<std::string> statementsOf(const std::string& program) {
  std::string joined = upper(program);
  for (size_t at = joined.find("_\n"); at != std::string::npos; at = joined.find("_\n", at)) {
    joined.replace(at, 2, " ");
  }
  std::vector<std::string> lines;
  std::istringstream in(joined);
  for (std::string line; std::getline(in, line);) {
    size_t first = line.find_first_not_of(" \t");
    if (first != std::string::npos) lines.push_back(line.substr(first));
  }
  return lines;
}

// The names and keywords of a program, upper-cased; string literals are skipped.
std::vector<std::string> wordsOf(const std::string& program) {
  std::vector<std::string> words;
  std::string word;
  bool quoted = false;
  for (char c : upper(program) + "\n") {
    if (c == '"') quoted = !quoted;
    if (!quoted && (std::isalnum(static_cast<unsigned char>(c)) || c == '_')) {
      word += c;
    } else if (!word.empty()) {
      words.push_back(word);
      word.clear();
    }
  }
  return words;
}

bool startsWith(const std::string& text, const std::string& prefix) {
  return text.rfind(prefix, 0) == 0;
}

TEST(ProgramGenerator, SameSeedSameProgramAndSeedsDiffer) {
  EXPECT_EQ(generateProgram(7), generateProgram(7));
  EXPECT_NE(generateProgram(7), generateProgram(8));
}

TEST(ProgramGenerator, CorpusCoversTheGrammar) {
  std::string corpus;
  for (uint64_t seed = 1; seed <= 300; ++seed) corpus += upper(generateProgram(seed));
  const char* constructs[] = {
      "REDIM PRESERVE",
      "REDIM ",
      "DIM ",
      "CONST ",
      "FUNCTION ",
      "SUB ",
      "END FUNCTION",
      "END SUB",
      "FOR ",
      "STEP -1",
      "NEXT",
      "WHILE ",
      "WEND",
      "DO WHILE",
      "DO UNTIL",
      "LOOP UNTIL",
      "LOOP WHILE",
      "EXIT FOR",
      "EXIT WHILE",
      "EXIT DO",
      "CONTINUE FOR",
      "CONTINUE DO",
      " ELSE ",
      "END IF",
      "ON ERROR RESUME NEXT",
      "ON ERROR GOTO 0",
      " AND ",
      " OR ",
      "NOT ",
      "&H",
      "&O",
      "1E3",
      ".5",
      "\"\"",
      "A\"\"B",
      "EVAL(",
      "LEN(",
      "INSTR(",
      "MID(",
      "LEFT(",
      "CSTR(",
      "CINT(",
      "UCASE(",
      "ABS(",
      "ISNUMERIC(",
      "TYPENAME(",
      "VARTYPE(",
      "DATESERIAL(",
      "<>",
      "<=",
      ">=",
      "\\",
      "^",
      " _\n",
      "EMPTY",
      "RAISE@(ERR",
      "CLEAR@(ERR)",
      "REM ",
      "____VAR_",
      " : ",
  };
  for (const char* construct : constructs) {
    EXPECT_NE(corpus.find(construct), std::string::npos) << "never generated: " << construct;
  }
}

// Whatever a run's outcome depends on besides the program text would show as a difference
// between the two modes that no evaluator caused; calls that wait would stall the fuzzer.
TEST(ProgramGenerator, AvoidsClocksChanceAndWaiting) {
  const std::set<std::string> forbidden = {"RND",   "NOW",     "TIMER",       "TIME",     "DATE",
                                           "TODAY", "SLEEP",   "MSGBOX",      "INPUTBOX", "SPLIT",
                                           "PRINT", "WRITELN", "CREATEOBJECT"};
  for (uint64_t seed = 1; seed <= 300; ++seed) {
    for (const auto& word : wordsOf(generateProgram(seed))) {
      EXPECT_EQ(forbidden.count(word), 0u) << "seed " << seed << " uses " << word;
    }
  }
}

// Unbalanced blocks make the rest of a program skipped or fail at once, so that little of it
// is compared. (A rare END IF spelt with two blanks is unbalanced on purpose.)
TEST(ProgramGenerator, BlocksAreBalanced) {
  struct Pair {
    const char* open;
    const char* close;
  };
  const Pair pairs[] = {{"FOR ", "NEXT"},
                        {"WHILE ", "WEND"},
                        {"DO", "LOOP"},
                        {"SUB ", "END SUB"},
                        {"FUNCTION ", "END FUNCTION"}};
  for (uint64_t seed = 1; seed <= 300; ++seed) {
    auto lines = statementsOf(generateProgram(seed));
    for (const auto& pair : pairs) {
      auto opens = std::count_if(lines.begin(), lines.end(), [&](const std::string& l) {
        return startsWith(l, pair.open) &&
               (std::string(pair.open) != "DO" || l == "DO" || startsWith(l, "DO "));
      });
      auto closes = std::count_if(lines.begin(), lines.end(),
                                  [&](const std::string& l) { return startsWith(l, pair.close); });
      EXPECT_EQ(opens, closes) << "seed " << seed << ": " << pair.open << "/" << pair.close;
    }
  }
}

// Blocks that do not nest are where gates and jumps could part: some programs must close a
// loop inside a conditional that opened outside it (or the reverse), and define a procedure
// inside a block IF.
TEST(ProgramGenerator, SomeBlocksCrossAndSomeDefinitionsSitInsideConditionals) {
  int crossings = 0, definitionsInIf = 0;
  for (uint64_t seed = 1; seed <= 300; ++seed) {
    std::vector<char> open;  // 'I' for a block IF, 'L' for a FOR or WHILE loop
    for (const auto& line : statementsOf(generateProgram(seed))) {
      bool blockIf = startsWith(line, "IF ") && line.ends_with(" THEN");
      if (blockIf) open.push_back('I');
      if (startsWith(line, "FOR ") || startsWith(line, "WHILE ")) open.push_back('L');
      // The END IF spelt with two blanks closes nothing at run time, but it closes a block
      // of the generator's and must not count as a crossing here.
      bool endIf = startsWith(line, "END ") && line.ends_with(" IF");
      bool endLoop = line == "NEXT" || line == "WEND";
      if ((endIf || endLoop) && !open.empty()) {
        if (open.back() != (endIf ? 'I' : 'L')) ++crossings;
        open.pop_back();
      }
      bool definition = startsWith(line, "SUB ") || startsWith(line, "FUNCTION ");
      if (definition && std::find(open.begin(), open.end(), 'I') != open.end()) {
        ++definitionsInIf;
      }
    }
  }
  EXPECT_GT(crossings, 5);
  EXPECT_GT(definitionsInIf, 2);
}

TEST(ProgramGenerator, ProgramsEndWithinTheLimit) {
  for (uint64_t seed = 1; seed <= 150; ++seed) {
    Outcome o = runProgram(generateProgram(seed), true, milliseconds(5000));
    EXPECT_FALSE(o.timedOut) << "seed " << seed << " did not end:\n" << generateProgram(seed);
  }
}

// Texts that loops grow are cut back; without the cuts a doubling text exhausts memory.
TEST(ProgramGenerator, TextsStaySmall) {
  for (uint64_t seed = 1; seed <= 150; ++seed) {
    Outcome o = runProgram(generateProgram(seed), true, milliseconds(5000));
    for (const auto& [name, value] : o.vars) {
      EXPECT_LT(value.size(), 4000u) << "seed " << seed << ": " << name;
    }
  }
}

// Programs that stop at their first lines compare little: most must get past half their
// length, ended normally or carried on under ON ERROR RESUME NEXT.
TEST(ProgramGenerator, MostProgramsRunFar) {
  int far = 0;
  const int count = 200;
  for (uint64_t seed = 1; seed <= count; ++seed) {
    std::string program = generateProgram(seed);
    auto lines = static_cast<int>(std::count(program.begin(), program.end(), '\n'));
    Outcome o = runProgram(program, true, milliseconds(5000));
    if (!o.hasError || o.code <= 0 || o.lineNumber * 2 > lines) ++far;
  }
  EXPECT_GT(far, count / 2);
}

}  // namespace
}  // namespace difffuzz

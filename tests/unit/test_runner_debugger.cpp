// lxbasic --debug, driven through a pseudo-terminal the way a person types: breakpoints from
// the command line and from the prompt, stepping, the stack, locals and print, an untrapped
// error, and the exit status a plain run would have.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "support/terminal.h"

namespace {

using lxtest::Terminal;

constexpr const char* kPrompt = "(lxdb) ";

bool contains(const std::string& hay, const std::string& needle) {
  return hay.find(needle) != std::string::npos;
}

std::string writeScript(const std::string& name, const std::string& text) {
  const auto path = std::filesystem::temp_directory_path() / name;
  std::ofstream(path) << text;
  return path.string();
}

constexpr const char* kSquares =
    "DIM RESULT, total = 0\n"        // 1
    "FUNCTION Square(x)\n"           // 2
    "  Square = x * x\n"             // 3
    "END FUNCTION\n"                 // 4
    "FOR i = 1 TO 3\n"               // 5
    "  total = total + Square(i)\n"  // 6
    "NEXT\n"                         // 7
    "RESULT = total\n";              // 8

struct Step {
  const char* keys;
  const char* shows;  // must appear before the next prompt
};

void typeAll(Terminal& t, std::initializer_list<Step> steps) {
  for (const Step& s : steps) {
    const std::string answer = t.type(s.keys, kPrompt);
    EXPECT_TRUE(contains(answer, s.shows)) << s.keys << " showed: " << answer;
  }
}

TEST(RunnerDebugger, BreakStepInspectAndContinue) {
  const std::string file = writeScript("lx_debug_squares.bas", kSquares);
  Terminal t({"--plain-log", "--break", "3", "--debug", file});
  ASSERT_TRUE(t.started());
  const std::string first = t.readUntil(kPrompt);
  EXPECT_TRUE(contains(first, "Breakpoint 1, SQUARE, line 3")) << first;
  typeAll(t, {
                 {"bt\r", " #1  main script, line 6: total = total + Square(i)"},
                 {"p x * 10\r", "10"},
                 {"locals\r", "X = 1\t(Number)"},
                 {"up\r", "#1  main script, line 6"},
                 {"print total + 100\r", "100"},
                 {"fin\r", "main script, line 7"},
                 {"\r", "Breakpoint 1, SQUARE, line 3"},  // an empty line repeats finish
                 {"b 8 IF total > 4\r", "Breakpoint 2 at line 8 if total > 4"},
                 {"delete 1\r", "Deleted breakpoint 1."},
                 {"info b\r", "line 8 if total > 4"},
                 {"c\r", "Breakpoint 2, main script, line 8"},
             });
  const std::string end = t.type("n\r", "The script ended.");
  EXPECT_TRUE(contains(end, "RESULT = 14")) << end;
  EXPECT_EQ(t.waitForExit(), 0);
}

TEST(RunnerDebugger, StartsAtTheFirstLineAndPausesOnAnUntrappedError) {
  const std::string file = writeScript("lx_debug_error.bas",
                                       "DIM RESULT = 1, d = 0\n"
                                       "RESULT = 10 / d\n");
  Terminal t({"--plain-log", "--debug", file});
  ASSERT_TRUE(t.started());
  EXPECT_TRUE(contains(t.readUntil(kPrompt), "main script, line 1"));
  typeAll(t, {
                 {"l\r", "=> 1\tDIM RESULT = 1, d = 0"},
                 {"s\r", "main script, line 2"},
                 {"c\r", "Error #14: Division by zero"},
                 {"p d\r", "0"},
             });
  const std::string end = t.type("c\r", "The script ended.");
  // The division still answers, so the assignment is made before the error ends the run.
  EXPECT_TRUE(contains(end, "RESULT = inf")) << end;
  EXPECT_EQ(t.waitForExit(), 1);  // as a plain run that fails
}

TEST(RunnerDebugger, QuitStopsTheScript) {
  const std::string file =
      writeScript("lx_debug_quit.bas", "DIM n = 0\nWHILE 1 : n = n + 1 : WEND\n");
  Terminal t({"--debug", file});
  ASSERT_TRUE(t.started());
  t.readUntil(kPrompt);
  t.type("q\r", "The script ended.");
  EXPECT_EQ(t.waitForExit(), 0);
}

}  // namespace

// The runner's interactive mode, driven through a pseudo-terminal as a person at a terminal
// would: what each typed line shows, blocks held until closed, errors and Ctrl-C that leave
// the session going, line editing, and Ctrl-D that ends it.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

#include "support/terminal.h"

namespace {

using lxtest::Terminal;

bool contains(const std::string& hay, const std::string& needle) {
  return hay.find(needle) != std::string::npos;
}

TEST(RunnerInteractive, ASessionAtATerminal) {
  Terminal t({"--console", "--plain-log"});
  ASSERT_TRUE(t.started());
  ASSERT_TRUE(contains(t.readUntil("lx> "), "interactive")) << "no banner";

  struct Step {
    const char* keys;
    const char* shows;            // must appear in the answer
    const char* prompt = "lx> ";  // the prompt that follows
  };
  const Step steps[] = {
      {"DIM x = 6\r", "DIM x = 6"},
      {"x * 7\r", "42\r\n"},                            // a bare expression's value
      {"FOR i = 1 TO 3\r", "FOR i = 1 TO 3", "...> "},  // a block is held...
      {"x = x + i\r", "x = x + i", "...> "},
      {"NEXT\r", "NEXT"},  // ...and runs once closed
      {"x\r", "12\r\n"},
      {"y = 1\r", "Variable \"y\" not found"},  // errors leave the session going
      {"FUNCTION Twice(n)\r", "", "...> "},
      {"Twice = n * 2\r", "", "...> "},
      {"END FUNCTION\r", ""},
      {"Twice(x)\r", "24\r\n"},  // procedures persist
      {"DIM RESULT = \"done\"\r", "RESULT = done"},
      {"Print(\"logged\")\r", "logged"},
      // Ctrl-P recalls the line above; the recalled line is drawn after a prompt of its own.
      {"\x10\r", "logged", "logged\r\nlx> "},
  };
  for (const Step& s : steps) {
    std::string answer = t.type(s.keys, s.prompt);
    EXPECT_TRUE(contains(answer, s.shows)) << s.keys << " showed: " << answer;
    EXPECT_TRUE(contains(answer, s.prompt)) << s.keys << " showed: " << answer;
  }
  // Ctrl-C stops an endless loop through the engine, and the session goes on.
  t.type("DIM n = 0 : WHILE 1 : n = n + 1 : WEND\r", "WEND\r\n");
  // The echo comes before the line editor gives the terminal back; until then Ctrl-C is a
  // character, not a signal.
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  std::string stopped = t.type("\x03");
  EXPECT_TRUE(contains(stopped, "interrupted")) << stopped;
  // Keys typed before the line editor takes the terminal back can be dropped by it.
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  EXPECT_TRUE(contains(t.type("x\r"), "12\r\n"));
  // Ctrl-D on an empty line ends the session, once the line editor reads keys again.
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  std::string last = t.type("\x04", "\n");
  EXPECT_EQ(t.waitForExit(), 0) << last;
}

}  // namespace

// The command-line runner as a user meets it: what the script files under tests/scripts cannot
// express (standard input as the script, missing files, timing, option placement, channels,
// signals, script arguments, --check).
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <sstream>
#include <string>

#include "support/runner_path.h"

namespace {

namespace fs = std::filesystem;

struct Outcome {
  int status = -1;
  std::string out;
  std::string err;
  double seconds = 0;
};

std::string quoted(const std::string& s) {
  std::string q = "'";
  for (char c : s) q += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return q + "'";
}

std::string slurp(const fs::path& p) {
  std::ifstream in(p, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

class RunnerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = fs::temp_directory_path() / ("lxbasic_runner_test_" + std::to_string(getpid()));
    fs::create_directories(dir_);
  }
  void TearDown() override { fs::remove_all(dir_); }

  fs::path writeFile(const std::string& name, const std::string& content) {
    fs::path p = dir_ / name;
    std::ofstream(p, std::ios::binary) << content;
    return p;
  }

  Outcome run(std::initializer_list<std::string> args, const std::string& input = "") {
    fs::path in = writeFile("stdin.txt", input);
    std::string command = quoted(runnerPath().string());
    for (const std::string& a : args) {
      command += ' ';
      command += quoted(a);
    }
    command += " <" + quoted(in.string()) + " >" + quoted((dir_ / "out.txt").string()) + " 2>" +
               quoted((dir_ / "err.txt").string());
    auto start = std::chrono::steady_clock::now();
    int raw = std::system(command.c_str());
    Outcome o;
    o.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    o.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    o.out = slurp(dir_ / "out.txt");
    o.err = slurp(dir_ / "err.txt");
    return o;
  }

  fs::path dir_;
};

TEST_F(RunnerTest, ReadsTheScriptFromStandardInputForDash) {
  Outcome o = run({"--console", "-"}, "DIM RESULT = \"from stdin\"\n");
  EXPECT_EQ(o.status, 0) << o.err;
  EXPECT_EQ(o.out, "from stdin\n");
}

TEST_F(RunnerTest, WordsAfterTheFileReachTheScriptAsArgs) {
  fs::path script =
      writeFile("-odd name.bas", "DIM RESULT = UBound(ARGS) & \"|\" & Join(ARGS, \",\")\n");
  struct Case {
    std::initializer_list<std::string> args;
    const char* out;
  };
  const Case cases[] = {
      {{"--console", "--", script.string()}, "-1|\n"},
      {{"--", script.string(), "one", "two words"}, "1|one,two words\n"},
      // Options after FILE belong to the script, not to the runner.
      {{"--console", "--", script.string(), "--timeout", "5"}, "1|--timeout,5\n"},
  };
  for (const Case& c : cases) {
    Outcome o = run(c.args);
    EXPECT_EQ(o.status, 0) << o.err;
    EXPECT_EQ(o.out, c.out);
  }
}

TEST_F(RunnerTest, StandardOutputCarriesOnlyResult) {
  fs::path script = writeFile("ask.bas",
                              "DIM b = MsgBox(\"Proceed?\", vbYesNo, \"Question\")\n"
                              "DIM n = InputBox(\"Name?\", \"Who\", \"Bob\")\n"
                              "Print(\"logged\")\n"
                              "DIM RESULT = b & \" \" & n\n");
  Outcome o = run({"--console", script.string()}, "yes\nAnn\n");
  EXPECT_EQ(o.status, 0) << o.err;
  EXPECT_EQ(o.out, "6 Ann\n");
  for (const char* shown : {"Proceed?", "Question", "Name?", "[Bob]", "logged"}) {
    EXPECT_NE(o.err.find(shown), std::string::npos) << shown << " in " << o.err;
  }
}

TEST_F(RunnerTest, PlainLogLinesHaveNoStampAndDefaultOnesDo) {
  fs::path script = writeFile("log.bas", "Print(\"one\")\nWriteLn(\"two\")\n");
  Outcome plain = run({"--console", "--plain-log", script.string()});
  EXPECT_EQ(plain.status, 0);
  EXPECT_EQ(plain.err, "one\ntwo\n");
  Outcome stamped = run({"--console", script.string()});
  EXPECT_NE(stamped.err, "one\ntwo\n");
  EXPECT_NE(stamped.err.find("] one\n"), std::string::npos) << stamped.err;
}

TEST_F(RunnerTest, ErrorStartsWithFileAndLineBeforeTheEngineText) {
  fs::path script = writeFile("bad.bas", "DIM a = 1\ny = 2\n");
  Outcome o = run({"--console", script.string()});
  EXPECT_EQ(o.status, 1);
  EXPECT_EQ(o.err,
            script.string() + ":2: Error #3, Line #2: Variable \"y\" not found\nSource: y = 2\n");
  Outcome piped = run({"--console", "-"}, "DIM a = 1\n\nb = 1\n");
  EXPECT_EQ(piped.err.rfind("-:3: Error #3, Line #3: ", 0), 0u) << piped.err;
}

TEST_F(RunnerTest, InterruptStopsTheScriptThroughTheEngineAndExits130) {
  fs::path script = writeFile("spin.bas", "DIM RESULT = 0\nWHILE 1\nRESULT = 7\nWEND\n");
  std::string command = "timeout --foreground --preserve-status -k 10 -s INT 4 " +
                        quoted(runnerPath().string()) + " --console " + quoted(script.string()) +
                        " >" + quoted((dir_ / "out.txt").string()) + " 2>" +
                        quoted((dir_ / "err.txt").string());
  auto start = std::chrono::steady_clock::now();
  int raw = std::system(command.c_str());
  double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  ASSERT_TRUE(WIFEXITED(raw));
  EXPECT_EQ(WEXITSTATUS(raw), 130);
  EXPECT_LT(seconds, 10.0);
  // Stopped after a line, so RESULT still tells how far the script got.
  EXPECT_EQ(slurp(dir_ / "out.txt"), "7\n");
  EXPECT_NE(slurp(dir_ / "err.txt").find("stopped by Ctrl-C"), std::string::npos);
}

TEST_F(RunnerTest, StatsTellWhichLinesRanCompiled) {
  fs::path script = writeFile("counted.bas", "DIM i\nFOR i = 1 TO 3\nNEXT\n");
  Outcome fast = run({"--stats", script.string()});
  EXPECT_EQ(fast.status, 0);
  EXPECT_NE(fast.err.find("4 lines ran compiled, 1 on the reference evaluator"), std::string::npos)
      << fast.err;
  EXPECT_NE(fast.err.find(script.string() + ":1: on the reference evaluator"), std::string::npos)
      << fast.err;
  Outcome slow = run({"--stats", "--reference", script.string()});
  EXPECT_NE(slow.err.find("0 lines ran compiled, 5 on the reference evaluator"), std::string::npos)
      << slow.err;
}

TEST_F(RunnerTest, CheckReportsWithoutRunning) {
  fs::path bad = writeFile("shape.bas", "Print(\"ran\")\nFOR i = 1 TO 2\nDIM a = (1\nWEND\n");
  Outcome o = run({"--check", bad.string()});
  EXPECT_EQ(o.status, 1);
  EXPECT_EQ(o.out, "");
  std::string file = bad.string();
  EXPECT_EQ(o.err, file + ":2: FOR without NEXT\n" + file + ":3: bracket not closed\n" + file +
                       ":4: WEND without WHILE\n");

  Outcome good = run({"--check", writeFile("fine.bas", "Print(\"ran\")\n").string()});
  EXPECT_EQ(good.status, 0);
  EXPECT_EQ(good.err, "");  // not run: nothing logged
}

TEST_F(RunnerTest, FilesThatCannotBeReadExitWithTwoAndNameTheProblem) {
  Outcome missing = run({"--console", (dir_ / "nowhere.bas").string()});
  EXPECT_EQ(missing.status, 2);
  EXPECT_NE(missing.err.find("cannot open"), std::string::npos) << missing.err;
  EXPECT_NE(missing.err.find("nowhere.bas"), std::string::npos) << missing.err;
  EXPECT_EQ(missing.out, "");

  Outcome directory = run({"--console", dir_.string()});
  EXPECT_EQ(directory.status, 2);
  EXPECT_NE(directory.err.find("cannot read"), std::string::npos) << directory.err;
}

TEST_F(RunnerTest, RefusesMalformedUtf8ButKeepsValidMultibyteText) {
  // An overlong form of "/" and an encoded surrogate are not UTF-8, though a lax decoder
  // would accept both.
  for (std::string bad : {"DIM RESULT = \"\xC0\xAF\"\n", "DIM RESULT = \"\xED\xA0\x80\"\n",
                          "DIM RESULT = \"\xF4\x90\x80\x80\"\n", "DIM RESULT = \"\xE2\x82\"\n"}) {
    Outcome o = run({"--console", writeFile("bad.bas", bad).string()});
    EXPECT_EQ(o.status, 2) << bad;
    EXPECT_NE(o.err.find("not valid UTF-8 (line 1, byte 14)"), std::string::npos) << o.err;
  }
  Outcome good =
      run({"--console",
           writeFile("good.bas", "DIM RESULT = \"\xF0\x9F\x98\x80 \xE2\x82\xAC\"\n").string()});
  EXPECT_EQ(good.status, 0) << good.err;
  EXPECT_EQ(good.out, "\xF0\x9F\x98\x80 \xE2\x82\xAC\n");
}

TEST_F(RunnerTest, TimeLimitStopsAnEndlessLoopAfterAboutThatLong) {
  fs::path script = writeFile("loop.bas", "DIM n = 0\nWHILE 1\nn = n + 1\nWEND\n");
  Outcome o = run({"--console", "--timeout", "1", script.string()});
  EXPECT_EQ(o.status, 1);
  EXPECT_NE(o.err.find("Script execution time is out"), std::string::npos) << o.err;
  EXPECT_GE(o.seconds, 0.9);
  EXPECT_LT(o.seconds, 5.0);
}

TEST_F(RunnerTest, MemoryLimitEndsAGreedyScriptWithErrorThirtySix) {
  // 12 million characters: 24 MB of text, over a 16 MiB limit and well under the default.
  fs::path script = writeFile("greedy.bas", "DIM s = Space(12000000)\nDIM RESULT = Len(s)\n");
  Outcome limited = run({"--console", "--memory-limit", "16", script.string()});
  EXPECT_EQ(limited.status, 1);
  EXPECT_NE(limited.err.find("Error #36"), std::string::npos) << limited.err;
  EXPECT_NE(limited.err.find("Out of memory"), std::string::npos) << limited.err;
  Outcome roomy = run({"--console", script.string()});
  EXPECT_EQ(roomy.status, 0) << roomy.err;
  EXPECT_EQ(roomy.out, "12000000\n");
  EXPECT_EQ(run({"--console", "--memory-limit=0", script.string()}).status, 0);
  for (const char* bad : {"--memory-limit=-1", "--memory-limit=lots", "--memory-limit="}) {
    Outcome o = run({bad, script.string()});
    EXPECT_EQ(o.status, 2) << bad;
    EXPECT_NE(o.err.find("--memory-limit needs a whole number of MiB"), std::string::npos) << o.err;
  }
}

TEST_F(RunnerTest, InformationalOptionsAnswerAndExitZero) {
  Outcome version = run({"--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.out, "LxBasic 1.6\n");

  Outcome help = run({"--help"});
  EXPECT_EQ(help.status, 0);
  for (const char* topic :
       {"--timeout SECONDS", "--memory-limit MIB", "--gui", "--console", "Exit status", "RESULT"}) {
    EXPECT_NE(help.out.find(topic), std::string::npos) << topic;
  }
}

TEST_F(RunnerTest, NoArgumentsIsAUsageError) {
  Outcome o = run({});
  EXPECT_EQ(o.status, 2);
  EXPECT_NE(o.err.find("no script file given"), std::string::npos) << o.err;
  EXPECT_NE(o.err.find("--help"), std::string::npos) << o.err;
}

TEST_F(RunnerTest, DebugOptionsAreChecked) {
  fs::path script = writeFile("ok.bas", "DIM RESULT = 1\n");
  struct Case {
    std::initializer_list<std::string> args;
    const char* says;
  };
  const Case cases[] = {
      {{"--debug", "-"}, "give a script file"},  // its commands come from standard input
      {{"--break", "0", script.string()}, "--break needs a line number from 1 on"},
      {{"--break"}, "--break needs a line number"},
      {{"--check", "--debug", script.string()}, "cannot be combined"},
  };
  for (const Case& c : cases) {
    Outcome o = run(c.args);
    EXPECT_EQ(o.status, 2) << o.err;
    EXPECT_NE(o.err.find(c.says), std::string::npos) << o.err;
  }
  // Commands from a pipe: the run goes on to its end and reports as a plain run.
  Outcome o = run({"--debug", script.string()}, "c\n");
  EXPECT_EQ(o.status, 0) << o.err;
  EXPECT_NE(o.out.find("RESULT = 1"), std::string::npos) << o.out;
}

TEST_F(RunnerTest, GuiWithoutADisplayIsRefused) {
  fs::path script = writeFile("ok.bas", "DIM RESULT = 1\n");
  std::string command = "env -u DISPLAY -u WAYLAND_DISPLAY " + quoted(runnerPath().string()) +
                        " --gui " + quoted(script.string()) + " >/dev/null 2>&1";
  int raw = std::system(command.c_str());
  ASSERT_TRUE(WIFEXITED(raw));
  EXPECT_EQ(WEXITSTATUS(raw), 2);
}

}  // namespace

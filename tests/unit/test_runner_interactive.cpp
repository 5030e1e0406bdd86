// The runner's interactive mode, driven through a pseudo-terminal as a person at a terminal
// would: what each typed line shows, blocks held until closed, errors and Ctrl-C that leave
// the session going, line editing, and Ctrl-D that ends it.
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <thread>

#include "support/runner_path.h"

namespace {

class Terminal {
 public:
  Terminal() {
    std::string runner = runnerPath().string();
    pid_ = forkpty(&fd_, nullptr, nullptr, nullptr);
    if (pid_ == 0) {
      ::setenv("TERM", "dumb", 1);
      ::execl(runner.c_str(), runner.c_str(), "--console", "--plain-log", nullptr);
      ::_exit(127);
    }
  }
  ~Terminal() {
    if (pid_ > 0 && !exited_) {
      ::kill(pid_, SIGKILL);
      ::waitpid(pid_, nullptr, 0);
    }
    if (fd_ >= 0) ::close(fd_);
  }
  bool started() const { return pid_ > 0; }

  // Everything the terminal shows until `marker` appears (or 10 s pass).
  std::string readUntil(const std::string& marker) {
    std::string seen;
    auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (seen.find(marker) == std::string::npos && std::chrono::steady_clock::now() < deadline) {
      pollfd p{fd_, POLLIN, 0};
      if (::poll(&p, 1, 100) <= 0) continue;
      char buffer[4096];
      ssize_t n = ::read(fd_, buffer, sizeof buffer);
      if (n <= 0) break;
      seen.append(buffer, static_cast<size_t>(n));
    }
    return seen;
  }

  // Types `keys` and answers what appears up to the next prompt `prompt`.
  std::string type(const std::string& keys, const std::string& prompt = "lx> ") {
    ssize_t written = ::write(fd_, keys.data(), keys.size());
    EXPECT_EQ(written, static_cast<ssize_t>(keys.size()));
    return readUntil(prompt);
  }

  int waitForExit() {
    for (int i = 0; i < 200; ++i) {
      int status = 0;
      if (::waitpid(pid_, &status, WNOHANG) == pid_) {
        exited_ = true;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
      }
      ::usleep(50000);
    }
    return -2;
  }

 private:
  int fd_ = -1;
  pid_t pid_ = -1;
  bool exited_ = false;
};

bool contains(const std::string& hay, const std::string& needle) {
  return hay.find(needle) != std::string::npos;
}

TEST(RunnerInteractive, ASessionAtATerminal) {
  Terminal t;
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

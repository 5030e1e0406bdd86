// The runner on a pseudo-terminal, driven as a person at a terminal would: type keys, read
// what the screen shows up to a prompt, wait for the exit status.
#pragma once

#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <vector>

#include "support/runner_path.h"

namespace lxtest {

class Terminal {
 public:
  // Starts the runner with `args` on a new pseudo-terminal.
  explicit Terminal(const std::vector<std::string>& args) {
    const std::string runner = runnerPath().string();
    std::vector<char*> argv;
    argv.push_back(const_cast<char*>(runner.c_str()));
    for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    pid_ = forkpty(&fd_, nullptr, nullptr, nullptr);
    if (pid_ == 0) {
      ::setenv("TERM", "dumb", 1);
      ::execv(runner.c_str(), argv.data());
      ::_exit(127);
    }
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;
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

}  // namespace lxtest

#include "interrupt.h"

#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <thread>

#include "lxbasic/script.h"
#include "runner_options.h"

namespace runner {

namespace {

std::mutex targetMutex;
lx::LxBasicScript* target = nullptr;
bool stopAsked = false;  // a stop was asked of the current target
std::atomic<bool> interrupted{false};

void writeMessage(const char* text) {
  ssize_t ignored = ::write(STDERR_FILENO, text, std::strlen(text));
  (void)ignored;
}

// Called with targetMutex held.
void announceStop() {
  stopAsked = true;
  writeMessage("\nlxbasic: interrupted, stopping the script after its current line\n");
}

void onInterrupt() {
  interrupted = true;
  std::lock_guard lock(targetMutex);
  if (target == nullptr) return;
  if (stopAsked) {
    writeMessage("\nlxbasic: interrupted again, leaving without waiting for the script\n");
    std::_Exit(kExitInterrupted);
  }
  announceStop();
  target->terminate();
}

}  // namespace

void watchInterrupts(bool evenIfIgnored) {
  // A shell starts background jobs with SIGINT ignored; an interactive session owns its
  // terminal, so it takes Ctrl-C back.
  if (evenIfIgnored) std::signal(SIGINT, SIG_DFL);
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGINT);
  pthread_sigmask(SIG_BLOCK, &set, nullptr);
  std::thread([set] {
    for (;;) {
      int signal = 0;
      if (sigwait(&set, &signal) == 0) onInterrupt();
    }
  }).detach();
}

void setInterruptTarget(lx::LxBasicScript* script) {
  std::lock_guard lock(targetMutex);
  target = script;
  stopAsked = false;
}

bool takeInterrupt() {
  return interrupted.exchange(false);
}

bool stopForPendingInterrupt() {
  if (!interrupted.load()) return false;
  std::lock_guard lock(targetMutex);
  if (!stopAsked) announceStop();
  return true;
}

}  // namespace runner

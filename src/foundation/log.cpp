#include "lxbasic/log.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <ctime>
#include <mutex>
#include <string>

#include "lxbasic/text.h"

namespace lx {

namespace {

std::mutex& sinkMutex() {
  static std::mutex m;
  return m;
}

LogSink& currentSink() {
  static LogSink sink;
  return sink;
}

std::string processName() {
  char path[512];
  ssize_t n = readlink("/proc/self/exe", path, sizeof path - 1);
  if (n <= 0) return "lxbasic";
  std::string full(path, static_cast<size_t>(n));
  return full.substr(full.find_last_of('/') + 1);
}

void writeToStderr(UStringView message) {
  using namespace std::chrono;
  auto now = system_clock::now();
  time_t t = system_clock::to_time_t(now);
  auto ms = duration_cast<milliseconds>(now.time_since_epoch()).count() % 1000;
  struct tm local {};
  localtime_r(&t, &local);
  char stamp[64];
  std::strftime(stamp, sizeof stamp, "%Y-%m-%d %H:%M:%S", &local);
  static const std::string name = processName();
  std::string line = std::string(stamp) + "." + (ms < 100 ? (ms < 10 ? "00" : "0") : "") +
                     std::to_string(ms) + " " + name + "[" + std::to_string(getpid()) + "] " +
                     toUtf8(message) + "\n";
  std::fwrite(line.data(), 1, line.size(), stderr);
  std::fflush(stderr);
}

}  // namespace

void setLogSink(LogSink sink) {
  std::lock_guard lock(sinkMutex());
  currentSink() = std::move(sink);
}

void logMessage(UStringView message) {
  // The sink runs outside the lock: a sink may log again or replace itself.
  LogSink sink;
  {
    std::lock_guard lock(sinkMutex());
    sink = currentSink();
  }
  if (sink) {
    sink(message);
  } else {
    writeToStderr(message);
  }
}

}  // namespace lx

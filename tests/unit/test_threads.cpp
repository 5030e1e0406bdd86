// Many scripts at once in one process, each on its own host thread or in the background,
// with time limits, stop requests and error polling crossing threads. Built with
// ThreadSanitizer by tests/tsan/run.sh.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "lxbasic/script.h"
#include "lxbasic/text.h"

namespace {

using namespace std::chrono_literals;

// What each kind of script ends with when left alone, stopped or timed out.
struct Kind {
  std::u16string text;
  int32_t code;
  bool stopFromOutside;
};

const std::vector<Kind>& kinds() {
  static const std::vector<Kind> all = {
      {u"DIM RESULT = 0\nFOR i = 1 TO 200\nRESULT = RESULT + i\nNEXT", 0, false},
      {u"FUNCTION F(n)\nIF n > 0 THEN\nF = n + F(n - 1)\nEND IF\nEND FUNCTION\nDIM RESULT = F(60)",
       0, false},
      {u"WHILE 1\nWEND", 31, false},
      {u"DIM x = \"Eval(x)\"\nDIM RESULT = Eval(x)", 25, false},
      {u"DIM a(1)\na(0) = a\nDIM RESULT = a & \"\"", 0, false},
      {u"WHILE 1\nSleep(1)\nWEND", -1, true},
      {u"DIM s = \"x\"\nFOR i = 1 TO 40\ns = s & s\nNEXT", 36, false},
  };
  return all;
}

void runOne(const Kind& kind, bool background) {
  lx::LxBasicScript script;
  script.setMemoryLimit(int64_t{16} << 20);
  // Only the script that waits for its time limit gets a short one: the others must end by
  // themselves however loaded the machine is.
  script.setTimeLimit(kind.code == 31 ? 150ms : 10000ms);
  script.setScript(kind.text);
  std::thread stopper;
  if (kind.stopFromOutside) {
    stopper = std::thread([&script] {
      while (!script.running()) std::this_thread::sleep_for(1ms);
      std::this_thread::sleep_for(20ms);
      script.terminate();
    });
  }
  if (background) {
    script.run();
  } else {
    script.runScript();
  }
  if (stopper.joinable()) stopper.join();
  EXPECT_TRUE(script.waitUntilFinished(2000ms));
  auto snap = script.errorSnapshot();
  EXPECT_EQ(snap ? snap->code() : 0, kind.code) << lx::toUtf8(kind.text);
}

TEST(Threads, ManyScriptsAtOnceEachEndAsAlone) {
  std::vector<std::thread> hosts;
  for (int t = 0; t < 6; ++t) {
    hosts.emplace_back([t] {
      for (size_t i = 0; i < kinds().size(); ++i) {
        runOne(kinds()[(i + static_cast<size_t>(t)) % kinds().size()], (t + i) % 2 == 0);
      }
    });
  }
  for (auto& h : hosts) h.join();
}

TEST(Threads, PollingErrorAndLineWhileRunning) {
  lx::LxBasicScript script;
  script.setTimeLimit(300ms);
  script.setScript(
      u"ON ERROR RESUME NEXT\nDIM i = 0\nWHILE 1\ny = q\nRaise@(err, i)\ni = i + 1\nClear@(err)\n"
      u"WEND");
  std::atomic<bool> done{false};
  std::thread poller([&] {
    while (!done) {
      if (auto snap = script.errorSnapshot()) {
        EXPECT_FALSE(snap->description().empty());
      }
      (void)script.line();
      (void)script.running();
    }
  });
  script.run();
  done = true;
  poller.join();
  EXPECT_EQ(script.errorSnapshot()->code(), 31);
}

TEST(Threads, StopAndTimeLimitRaceToTheSameRun) {
  for (int i = 0; i < 20; ++i) {
    lx::LxBasicScript script;
    script.setTimeLimit(std::chrono::milliseconds(i % 5));
    script.setScript(u"WHILE 1\nWEND");
    std::thread stopper([&] { script.terminate(); });
    script.run();
    stopper.join();
    const int32_t code = script.errorSnapshot()->code();
    EXPECT_TRUE(code == 31 || code == -1) << code;
    EXPECT_FALSE(script.running());
  }
}

}  // namespace

// Deep procedure recursion on a host thread with a small stack: the call chain must neither
// exhaust that stack nor lose its result or its error.
#include <gtest/gtest.h>
#include <pthread.h>

#include <string>

#include "lxbasic/script.h"
#include "lxbasic/text.h"

namespace {

constexpr size_t kSmallHostStack = 512 * 1024;

struct DeepRun {
  explicit DeepRun(const char* s) : source(s) {}
  const char* source;
  std::string result;
  int32_t code = 0;
};

void* runScriptHere(void* p) {
  auto* run = static_cast<DeepRun*>(p);
  lx::LxBasicScript script;
  script.setScript(std::string_view(run->source));
  lx::Variant result = script.runScript();
  if (!result.isEmpty()) run->result = lx::toUtf8(lx::toText(result));
  if (lx::ErrorRef e = script.error()) run->code = e->code();
  return nullptr;
}

void runOnSmallStack(DeepRun& run) {
  pthread_attr_t attr;
  ASSERT_EQ(pthread_attr_init(&attr), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attr, kSmallHostStack), 0);
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &attr, runScriptHere, &run), 0);
  pthread_attr_destroy(&attr);
  pthread_join(thread, nullptr);
}

TEST(FlowStack, AllowedDepthFitsASmallHostStack) {
  DeepRun run(
      "FUNCTION Depth(n)\n"
      "  IF n < 256 THEN\n"
      "    Depth = Depth(n + 1)\n"
      "  ELSE\n"
      "    Depth = n\n"
      "  END IF\n"
      "END FUNCTION\n"
      "DIM RESULT = Depth(1)\n");
  runOnSmallStack(run);
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.result, "256");
}

TEST(FlowStack, OverflowIsReportedNotCrashed) {
  DeepRun run("FUNCTION Deep(n)\nDeep = Deep(n + 1)\nEND FUNCTION\nDIM RESULT = Deep(1)\n");
  runOnSmallStack(run);
  EXPECT_EQ(run.code, 25 + 257 * 100);
}

TEST(FlowStack, DepthCounterIsBackToZeroAfterAnOverflow) {
  // A second overflow in the same script must again take 256 levels, not fail at once.
  DeepRun run(
      "ON ERROR RESUME NEXT\n"
      "DIM levels = 0\n"
      "FUNCTION Deep(n)\nlevels = n\nDeep = Deep(n + 1)\nEND FUNCTION\n"
      "DIM a = Deep(1)\n"
      "levels = 0\n"
      "DIM b = Deep(1)\n"
      "DIM RESULT = levels\n");
  runOnSmallStack(run);
  EXPECT_EQ(run.result, "256");
}

}  // namespace

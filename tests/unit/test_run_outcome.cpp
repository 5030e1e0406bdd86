// The host's view of a run through the public header alone: one outcome record per run or
// call, the entries that refuse to change a running script, and a cancel that cannot be lost
// to a run that is just starting. The host here is a small document model, of the kind an
// editor embeds: paragraphs in a list, a method that fails.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "lxbasic/bridge.h"
#include "lxbasic/exceptions.h"
#include "lxbasic/script.h"
#include "lxbasic/text.h"

namespace {

class Document : public lx::Object {
 public:
  std::string className() const override { return "OutcomeDocument"; }
  int32_t paragraphCount() const { return static_cast<int32_t>(paragraphs_.size()); }
  void append(const std::string& text) { paragraphs_.push_back(text); }
  // A failure of the host's own, as a broken document would give.
  void corrupt() { throw std::runtime_error("the document is damaged"); }
  // Tries every entry a running script must refuse, from inside the run.
  std::string meddle() {
    std::string refused;
    auto attempt = [&refused](const char* name, auto&& entry) {
      try {
        entry();
      } catch (const lx::InvalidArgumentException&) {
        refused += name;
        refused += ' ';
      }
    };
    lx::LxBasicScript& s = *script;
    attempt("setScript", [&] { s.setScript(u"RESULT = 0"); });
    attempt("reset", [&] { s.reset(); });
    attempt("restart", [&] { s.restart(); });
    attempt("addObj", [&] { s.addObj(std::make_shared<Document>()); });
    attempt("removeObj", [&] { s.removeObj(0); });
    attempt("addVarWithName", [&] { s.addVarWithName(u"x", lx::Variant::int32(1)); });
    attempt("addConstWithName", [&] { s.addConstWithName(u"k", lx::Variant::int32(1)); });
    attempt("setLineHook", [&] { s.setLineHook(nullptr); });
    attempt("setDialogProvider", [&] { s.setDialogProvider(nullptr); });
    attempt("setReferenceEvaluator", [&] { s.setReferenceEvaluator(false); });
    attempt("call", [&] { s.call(u"P"); });
    return refused;
  }
  lx::LxBasicScript* script = nullptr;

 private:
  std::vector<std::string> paragraphs_;
};

void registerDocument() {
  static const bool done = [] {
    lx::ClassBuilder<Document>("OutcomeDocument")
        .method("ParagraphCount", &Document::paragraphCount)
        .method("Append:", &Document::append)
        .method("Corrupt", &Document::corrupt)
        .method("Meddle", &Document::meddle);
    return true;
  }();
  (void)done;
}

struct Host {
  explicit Host(bool reference) : document(std::make_shared<Document>()) {
    registerDocument();
    script.setReferenceEvaluator(reference);
    document->script = &script;
    script.addObj(document);
  }
  lx::LxBasicScript script;
  std::shared_ptr<Document> document;
};

class RunOutcomeTest : public ::testing::TestWithParam<bool> {};

TEST_P(RunOutcomeTest, OneRecordSaysHowTheRunEnded) {
  Host h(GetParam());
  h.script.setScript(u"Append(\"one\")\nDIM RESULT = ParagraphCount");
  h.script.runScript();
  lx::RunOutcome o = h.script.outcome();
  EXPECT_EQ(o.status, lx::RunState::Succeeded);
  EXPECT_EQ(lx::toText(o.result), u"1");
  EXPECT_EQ(o.error, nullptr);
  EXPECT_FALSE(o.exception);
  EXPECT_FALSE(o.swallowed);

  // A script error: the record, its line and the RESULT it had got to.
  h.script.setScript(u"RESULT = 5\nRESULT = nope");
  h.script.runScript();
  o = h.script.outcome();
  EXPECT_EQ(o.status, lx::RunState::Failed);
  EXPECT_EQ(lx::toText(o.result), u"5");
  ASSERT_NE(o.error, nullptr);
  EXPECT_EQ(o.error->code(), 3);
  EXPECT_EQ(o.error->lineNumber(), 2);
  EXPECT_TRUE(h.script.failed());

  // EXIT is a signal, not a failure.
  h.script.setScript(u"RESULT = 6\nEXIT\nRESULT = 7");
  h.script.runScript();
  o = h.script.outcome();
  EXPECT_EQ(o.status, lx::RunState::Succeeded);
  ASSERT_NE(o.error, nullptr);
  EXPECT_EQ(o.error->code(), -1);

  // A host method that throws on the main script's line ends the run; runScript's caller
  // gets the exception, and the outcome keeps it.
  h.script.setScript(u"RESULT = 8\nCorrupt");
  EXPECT_THROW(h.script.runScript(), std::runtime_error);
  o = h.script.outcome();
  EXPECT_EQ(o.status, lx::RunState::Failed);
  ASSERT_TRUE(o.exception);
  EXPECT_THROW(std::rethrow_exception(o.exception), std::runtime_error);
  EXPECT_EQ(lx::toText(o.result), u"8");
}

TEST_P(RunOutcomeTest, AnExceptionAProcedureDroppedReachesTheHost) {
  Host h(GetParam());
  // Inside a SUB the exception ends the SUB without an error, and the script goes on.
  h.script.setScript(u"SUB Damage()\nCorrupt\nEND SUB\nDamage()\nDIM RESULT = \"went on\"");
  h.script.runScript();
  lx::RunOutcome o = h.script.outcome();
  EXPECT_EQ(lx::toText(o.result), u"went on");
  EXPECT_EQ(o.error, nullptr);
  ASSERT_TRUE(o.swallowed);
  EXPECT_THROW(std::rethrow_exception(o.swallowed), std::runtime_error);
  EXPECT_EQ(o.status, lx::RunState::Failed);
  EXPECT_TRUE(h.script.failed());

  // The same through call(): the FUNCTION answers what it had, and the host is told.
  h.script.setScript(u"FUNCTION Count()\nCount = ParagraphCount\nCorrupt\nCount = -1\n"
                     u"END FUNCTION");
  h.script.runScript();
  EXPECT_FALSE(h.script.outcome().swallowed);  // a new run starts with none
  EXPECT_EQ(lx::toText(h.script.call(u"Count")), u"0");
  o = h.script.outcome();
  ASSERT_TRUE(o.swallowed);
  EXPECT_EQ(o.status, lx::RunState::Failed);

  // The next call that goes well is a success again.
  h.script.setScript(u"FUNCTION Fine()\nFine = 1\nEND FUNCTION");
  h.script.runScript();
  EXPECT_EQ(lx::toText(h.script.call(u"Fine")), u"1");
  EXPECT_TRUE(h.script.succeeded());
}

TEST_P(RunOutcomeTest, EntriesThatChangeARunningScriptAreRefused) {
  Host h(GetParam());
  h.script.setScript(u"SUB P()\nEND SUB\nDIM RESULT = Meddle");
  h.script.runScript();
  EXPECT_EQ(lx::toText(h.script.outcome().result),
            u"setScript reset restart addObj removeObj addVarWithName addConstWithName "
            u"setLineHook setDialogProvider setReferenceEvaluator call ");
  // Nothing the refused entries would have done happened.
  EXPECT_EQ(h.script.objCount(), 2);
  EXPECT_TRUE(h.script.valueOf(u"x").isEmpty());
  EXPECT_TRUE(h.script.succeeded());
  // Between runs they work.
  h.script.addVarWithName(u"x", lx::Variant::int32(4));
  EXPECT_EQ(lx::toText(h.script.valueOf(u"x")), u"4");
}

TEST_P(RunOutcomeTest, OutcomeWhileRunningSaysSo) {
  Host h(GetParam());
  std::atomic<bool> inside{false};
  std::atomic<bool> release{false};
  h.script.setLineHook([&](int32_t, int32_t) {
    inside = true;
    while (!release) std::this_thread::yield();
    return true;
  });
  h.script.setScript(u"DIM RESULT = 1");
  std::thread runner([&] { h.script.runScript(); });
  while (!inside) std::this_thread::yield();
  EXPECT_EQ(h.script.outcome().status, lx::RunState::Running);
  release = true;
  runner.join();
  EXPECT_EQ(h.script.outcome().status, lx::RunState::Succeeded);
}

// A run started on one thread and cancelled from another at once always stops, whichever
// comes first; terminate() at the same moment can be undone by the run's start.
TEST_P(RunOutcomeTest, CancelStopsARunThatIsStarting) {
  Host h(GetParam());
  h.script.setTimeLimit(std::chrono::seconds(20));
  h.script.addVarWithName(u"RESULT", lx::Variant::int32(0));
  h.script.setScript(u"RESULT = 0\nWHILE 1\nRESULT = RESULT + 1\nWEND");
  for (int i = 0; i < 1000; ++i) {
    std::thread runner([&] { h.script.runScript(); });
    std::thread canceller([&] { h.script.cancel(); });
    canceller.join();
    runner.join();
    const lx::RunOutcome o = h.script.outcome();
    ASSERT_NE(o.error, nullptr) << i;
    ASSERT_EQ(o.error->code(), -1) << i;  // cancelled, not timed out
    ASSERT_EQ(o.status, lx::RunState::Succeeded) << i;
  }
  // A cancel is used up by the run that honours it.
  h.script.setScript(u"RESULT = 42");
  h.script.runScript();
  EXPECT_EQ(h.script.error(), nullptr);
  EXPECT_EQ(lx::toText(h.script.outcome().result), u"42");
}

INSTANTIATE_TEST_SUITE_P(BothModes, RunOutcomeTest, ::testing::Values(false, true),
                         [](const ::testing::TestParamInfo<bool>& info) {
                           return info.param ? "reference" : "compiled";
                         });

}  // namespace

// The record a script tree shares: every frame of a run reaches the same one, and whatever a
// call or an Eval adds to it (call depth, Eval nesting, a stop) is gone once it ends, however
// it ends. Each case runs in both modes.
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "interpreter/script_core.h"
#include "lxbasic/bridge.h"
#include "lxbasic/exceptions.h"
#include "lxbasic/text.h"

namespace {

class Thrower : public lx::Object {
 public:
  std::string className() const override { return "SharedStateThrower"; }
  lx::Variant fail(const lx::Variant&) { throw std::runtime_error("host failure"); }
};

struct Tree {
  explicit Tree(bool reference) : core(lx::ScriptCore::create()) {
    core->setReferenceEvaluator(reference);
  }
  int32_t run(const char16_t* text) {
    core->setScript(lx::Variant(text));
    try {
      core->runScript(lx::Variant());
    } catch (const std::exception&) {
      return -1000;
    }
    return core->errorCode();
  }
  std::u16string result() const { return lx::toText(core->resultValue()); }
  std::shared_ptr<lx::ScriptCore> core;
};

class SharedStateTest : public ::testing::TestWithParam<bool> {};

TEST_P(SharedStateTest, CallDepthComesBackHoweverCallsEnd) {
  Tree t(GetParam());
  // 256 active calls is the deepest a tree may go; one more fails its line.
  EXPECT_EQ(t.run(u"FUNCTION D(n)\nIF n < 256 THEN D = D(n + 1) ELSE D = n\nEND FUNCTION\n"
                  u"DIM RESULT = D(1)"),
            0);
  EXPECT_EQ(t.result(), u"256");
  EXPECT_EQ(t.core->shared().callDepth(), 0);
  EXPECT_EQ(t.run(u"FUNCTION E(n)\nE = E(n + 1)\nEND FUNCTION\nDIM RESULT = E(1)"), 25725);
  EXPECT_EQ(t.core->shared().callDepth(), 0);
  // A host method that throws inside a procedure ends the procedure, not the depth count.
  static const bool registered = [] {
    lx::ClassBuilder<Thrower>("SharedStateThrower").method("Boom:", &Thrower::fail);
    return true;
  }();
  ASSERT_TRUE(registered);
  t.core->addObj(std::make_shared<Thrower>());
  EXPECT_EQ(t.run(u"SUB S(n)\nBoom(n)\nEND SUB\nS(1)\nS(2)\nRESULT = 3"), 0);
  EXPECT_EQ(t.result(), u"3");
  EXPECT_EQ(t.core->shared().callDepth(), 0);
}

TEST_P(SharedStateTest, EvalInsideProceduresAtAnyDepth) {
  Tree t(GetParam());
  // The deepest frame still evaluates: Eval adds no call of its own.
  EXPECT_EQ(t.run(u"FUNCTION D(n)\nIF n < 255 THEN D = D(n + 1) ELSE D = Eval(\"n * 2\")\n"
                  u"END FUNCTION\nDIM RESULT = D(1)"),
            0);
  EXPECT_EQ(t.result(), u"510");
  EXPECT_EQ(t.core->shared().evalNesting(), 0);
  EXPECT_EQ(t.core->shared().callDepth(), 0);
  // A text that evaluates itself stops at the nesting limit and leaves no nesting behind.
  EXPECT_EQ(t.run(u"DIM s = \"Eval(s)\"\nRESULT = Eval(s)"), 25);
  EXPECT_EQ(t.core->shared().evalNesting(), 0);
}

TEST_P(SharedStateTest, OneStopEndsEveryFrameAndTheNextRunStartsClear) {
  Tree t(GetParam());
  int32_t deepest = 0;
  t.core->setLineHook([&](int32_t, int32_t depth) {
    deepest = std::max(deepest, depth);
    return depth < 40;  // a stop from inside any frame stops the whole tree
  });
  EXPECT_EQ(t.run(u"DIM RESULT = 0\nSUB R(n)\nRESULT = n\nR(n + 1)\nEND SUB\nR(1)\nRESULT = -1"),
            -1);
  EXPECT_EQ(deepest, 40);
  EXPECT_EQ(t.result(), u"39");  // no frame went on after the stop, nor the main script
  EXPECT_EQ(t.core->shared().callDepth(), 0);
  t.core->setLineHook(nullptr);
  EXPECT_EQ(t.run(u"RESULT = 7"), 0);
  EXPECT_EQ(t.result(), u"7");
}

TEST_P(SharedStateTest, RestartDropsTheTreesProceduresButKeepsItsSettings) {
  Tree t(GetParam());
  t.core->setTimeLimit(60'000);
  t.core->setMemoryLimit(1 << 24);
  EXPECT_EQ(t.run(u"SUB P()\nEND SUB\nP()"), 0);
  ASSERT_NE(t.core->getSubByName(u"p"), nullptr);
  t.core->restart();
  EXPECT_EQ(t.core->getSubByName(u"p"), nullptr);
  EXPECT_EQ(t.core->timeLimit(), 60'000);
  EXPECT_EQ(t.core->memoryLimit(), 1 << 24);
  EXPECT_EQ(t.core->referenceEvaluator(), GetParam());
  EXPECT_EQ(t.run(u"P()"), 5);  // the procedure is gone for the scripts of the tree too
}

INSTANTIATE_TEST_SUITE_P(BothModes, SharedStateTest, ::testing::Values(false, true),
                         [](const ::testing::TestParamInfo<bool>& info) {
                           return info.param ? "reference" : "compiled";
                         });

}  // namespace

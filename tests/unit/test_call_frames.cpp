// Procedure calls run in frames that their procedure keeps from call to call. Whatever one
// call leaves behind (locals, ON ERROR, open blocks, err, the result, created objects) must
// not reach the next, and each case must come out as the reference evaluator, which makes a
// new child script for every call, has it.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "interpreter/script_core.h"
#include "lxbasic/bridge.h"
#include "support/both_modes.h"
#include "support/run.h"

namespace {

using lxtest::same;

TEST(CallFrames, NothingOfOneCallReachesTheNext) {
  struct Case {
    const char16_t* script;
    const char16_t* text;
  };
  const Case cases[] = {
      // a local declared in every call
      {u"FUNCTION F(a)\nDIM t = a * 2\nF = t\nEND FUNCTION\nRESULT = F(1) + F(2)", u"6"},
      // a result the second call never assigns
      {u"FUNCTION G(a)\nIF a > 0 THEN G = a\nEND FUNCTION\nRESULT = G(5) & \"|\" & G(0)", u"5|"},
      // err is the frame's own and starts clean after a call that failed
      {u"FUNCTION E(a)\nIF a = 1 THEN z = nope\nE = Number@(err)\nEND FUNCTION\n"
       u"ON ERROR RESUME NEXT\nDIM q = E(1)\nON ERROR GOTO 0\nRESULT = E(2)",
       u"0"},
      // err raised or cleared in one call, or kept by the script, is not the next call's err
      {u"FUNCTION F(p)\nF = Number@(err)\nRaise@(err, 7)\nEND FUNCTION\nRESULT = F(1) & F(2)",
       u"00"},
      {u"DIM g\nFUNCTION F(p)\nF = 1\ng = err\nEND FUNCTION\nDIM x = F(1) + F(2)\n"
       u"FUNCTION R()\nRaise@(err, 9)\nEND FUNCTION\nx = R()\nRESULT = Number@(g)",
       u"0"},
      // the same parameter slot holds each call's argument, not an earlier one
      {u"FUNCTION Id(x)\nId = x\nEND FUNCTION\nRESULT = Id(\"a\") & Id(2) & Id(\"\") & Id(3)",
       u"a23"},
      // an array made in one call is not changed by the next
      {u"FUNCTION Pair(x)\nDIM p(2)\np(0) = x\np(1) = x\nPair = p\nEND FUNCTION\n"
       u"DIM q = Pair(1)\nDIM r = Pair(2)\nRESULT = q(0) & r(1)",
       u"12"},
  };
  for (const Case& c : cases) {
    const lxtest::ModeRun r = same(c.script);
    EXPECT_EQ(r.code, 0) << lx::toUtf8(std::u16string(c.script)) << ": " << r.description;
    EXPECT_EQ(r.text, c.text) << lx::toUtf8(std::u16string(c.script));
  }
}

TEST(CallFrames, ALocalExistsFromItsDeclarationToTheEndOfItsCall) {
  // Frames keep a place for every name the body declares, empty until the declaration runs
  // and emptied when the call ends: before it, the name means what an undeclared name means.
  struct Case {
    const char16_t* script;
    int32_t code;
    const char16_t* text;
  };
  const Case cases[] = {
      // declared on the first call only: the second call's assignment reaches the main script
      {u"DIM t = \"r\"\nSUB P(k)\nIF k = 1 THEN\nDIM t = 5\nEND IF\nt = k\nEND SUB\n"
       u"P(1)\nP(2)\nRESULT = t",
       0, u"2"},
      // before its declaration, on every call
      {u"DIM g = 0\nSUB P(k)\ng = k\nDIM g = 100\ng = g + k\nEND SUB\nP(3)\nP(4)\n"
       u"RESULT = g",
       0, u"4"},
      // read before its declaration: not found, whatever the main script has
      {u"DIM y = 3\nFUNCTION F(k)\nF = y\nDIM y = k\nEND FUNCTION\nRESULT = F(1)", 103, u""},
      // recursion: each frame's locals, arrays and FOR variable are its own
      {u"FUNCTION S(n)\nDIM acc = n, pad(2), other = Mid(\"a,b\", 1, 2)\n"
       u"FOR i = 1 TO 2: pad(i - 1) = i: NEXT\nIF n > 0 THEN acc = acc + S(n - 1)\n"
       u"S = acc + pad(1) - 2 + i - 3\nEND FUNCTION\nRESULT = S(100)",
       0, u"5050"},
  };
  for (const Case& c : cases) {
    const lxtest::ModeRun r = same(c.script);
    EXPECT_EQ(r.code, c.code) << lx::toUtf8(std::u16string(c.script)) << ": " << r.description;
    if (c.code == 0) {
      EXPECT_EQ(r.text, c.text) << lx::toUtf8(std::u16string(c.script));
    }
  }
}

TEST(CallFrames, ACallLeftByExitOrAnErrorLeavesNoStateBehind) {
  // Each body is left early on its first call (a = 1); its second call must behave as it does
  // when it is the only call.
  const char16_t* bodies[] = {
      u"SUB P(a)\nIF a = 1 THEN\nEXIT\nEND IF\nEND IF\nEND SUB\n",                    // an open IF
      u"SUB P(a)\nDIM i\nFOR i = 1 TO 3\nIF a = 1 THEN EXIT\nNEXT\nNEXT\nEND SUB\n",  // FOR
      u"SUB P(a)\nIF a = 1 THEN\nON ERROR RESUME NEXT\nEND IF\nDIM y = nope\n"
      u"IF a = 2 THEN RESULT = \"went on\"\nEND SUB\n",
      u"SUB P(a)\nDIM w = 1\nIF a = 1 THEN DIM y = nope\nDIM w = 2\nEND SUB\n",
  };
  for (const char16_t* body : bodies) {
    const std::u16string alone = std::u16string(body) + u"P(2)";
    const std::u16string after =
        std::u16string(body) + u"ON ERROR RESUME NEXT\nP(1)\nON ERROR GOTO 0\nP(2)";
    const lxtest::ModeRun a = same(alone);
    const lxtest::ModeRun b = same(after);
    EXPECT_EQ(a.code, b.code) << lx::toUtf8(std::u16string(body));
    EXPECT_EQ(a.description, b.description) << lx::toUtf8(std::u16string(body));
    EXPECT_EQ(a.text, b.text) << lx::toUtf8(std::u16string(body));
  }
}

TEST(CallFrames, ParametersNamedLikeWhatACallBinds) {
  // A parameter may share its name with the function, "result", "__func__", err or a
  // constant: the later binding wins, as it does in a new child script.
  const char16_t* cases[] = {
      u"FUNCTION F(result)\nF = result + 1\nEND FUNCTION\nRESULT = F(1) & F(2)",
      u"FUNCTION F(f)\nRESULT = f\nEND FUNCTION\nRESULT = F(7) & F(8)",
      u"FUNCTION F(__func__)\nF = __func__\nEND FUNCTION\nRESULT = F(1) & F(2)",
      u"FUNCTION F(err)\nF = err\nEND FUNCTION\nRESULT = F(1) & F(2)",
      u"FUNCTION F(true)\nF = TRUE\nEND FUNCTION\nRESULT = F(5) & F(6) & TRUE",
      u"FUNCTION F(a, a)\nF = a\nEND FUNCTION\nRESULT = F(1, 2) & F(3, 4)",
      u"SUB Fill(arr, v)\narr(0) = v\nEND SUB\nDIM a(2)\nFill(a, 7)\nFill(a, 8)\nRESULT = a(0)",
      u"DIM g = 0\nSUB Bump(n)\ng = g + n\nEND SUB\nBump(1)\nBump(2)\nRESULT = g",
      u"FUNCTION Two(a)\nTwo = One(a)\nEND FUNCTION\nFUNCTION One(a)\nOne = nope\nEND FUNCTION\n"
      u"RESULT = Two(1)",
  };
  for (const char16_t* c : cases) same(c);
  EXPECT_EQ(same(u"FUNCTION F(a, a)\nF = a\nEND FUNCTION\nRESULT = F(1, 2) & F(3, 4)").text, u"24");
  EXPECT_EQ(same(u"FUNCTION Two(a)\nTwo = One(a)\nEND FUNCTION\nFUNCTION One(a)\nOne = nope\n"
                 u"END FUNCTION\nRESULT = Two(1)")
                .code,
            203);
}

TEST(CallFrames, RecursionDeeperThanTheFramesKept) {
  const char16_t* script =
      u"FUNCTION D(n)\nIF n = 0 THEN D = 0 ELSE D = D(n - 1) + 1\nEND FUNCTION\n"
      u"RESULT = D(200) + D(3) + D(150)";
  EXPECT_EQ(same(script).text, u"353");
  // The 257th call fails; each of the 256 calls and the first line add 100 on the way out.
  EXPECT_EQ(same(u"FUNCTION D(n)\nD = D(n + 1)\nEND FUNCTION\nRESULT = D(1)").code, 25725);
}

TEST(CallFrames, TheHostsSettingsReachProceduresOfLaterRuns) {
  lx::LxBasicScript s;
  s.setScript(u"SUB P\nDIM x = 1\nEND SUB\nP()\nP()");
  s.runScript();
  ASSERT_EQ(s.error(), nullptr);
  std::vector<int32_t> depths;
  s.setLineHook([&depths](int32_t, int32_t depth) {
    depths.push_back(depth);
    return true;
  });
  s.setScript(u"P()\nP()");  // the procedure stays defined from the first run
  s.runScript();
  EXPECT_EQ(s.error(), nullptr);
  EXPECT_EQ(std::count(depths.begin(), depths.end(), 1), 2);
}

class Made : public lx::Object {
 public:
  Made() { ++alive; }
  ~Made() override { --alive; }
  std::string className() const override { return "FrameMade"; }
  static inline int alive = 0;
};

TEST(CallFrames, ObjectsMadeInACallDieWithIt) {
  lx::ClassBuilder<Made>("FrameMade").creatable();
  for (bool reference : {false, true}) {
    lx::LxBasicScript s;
    s.setReferenceEvaluator(reference);
    s.setScript(u"SUB P\nDIM o = CreateObject(\"FrameMade\")\nEND SUB\nP()\nP()");
    s.runScript();
    EXPECT_EQ(s.error(), nullptr) << reference;
    EXPECT_EQ(Made::alive, 0) << reference;
  }
}

TEST(SharedConstants, ReadBeneathTheScriptsOwnVariables) {
  lx::LxBasicScript s;
  EXPECT_EQ(lxtest::run(s, u"DIM RESULT = vbYesNo & TRUE").text(), u"41");
  s.addVarWithName(u"vbYesNo", lx::Variant(u"mine"));
  EXPECT_EQ(lxtest::run(s, u"RESULT = vbYesNo").text(), u"mine");
  // Reset empties the table, constants included; restart brings them back.
  s.reset();
  EXPECT_EQ(lxtest::run(s, u"DIM RESULT = vbYesNo").code(), 3);
  s.restart();
  EXPECT_EQ(lxtest::run(s, u"DIM RESULT = vbYesNo").text(), u"4");
  EXPECT_EQ(lxtest::run(s, u"DIM TRUE = 2").code(), 17);
}

}  // namespace

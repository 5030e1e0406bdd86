// Type inspection, engine information, Sleep, the log writers and Eval.
#include <chrono>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "builtins/library.h"
#include "interpreter/script_handle.h"
#include "lxbasic/exceptions.h"
#include "lxbasic/log.h"
#include "lxbasic/script.h"
#include "support/builtin_values.h"

namespace {

using lx::Variant;
using namespace lxtest;

class HostThing final : public lx::Object {
 public:
  std::string className() const override { return "HostThing"; }
};

// Calls a built-in of the library object that belongs to `script`.
Variant callIn(lx::LxBasicScript& script, const char16_t* name, std::vector<Variant> args) {
  lx::LxBasicFunc& lib = lx::coreOf(script).library();
  const lx::MethodInfo* m = lx::findMethod(lib.lxClass(), name, static_cast<int32_t>(args.size()));
  if (!m) throw std::logic_error("no such built-in");
  return lx::sendMsgToObj(lib, *m, args).value;
}

double seconds(std::chrono::steady_clock::time_point since) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}

TEST(TypesVarType, KindCodes) {
  EXPECT_EQ(num(call(u"VarType", {Variant()})), 0);
  EXPECT_EQ(num(call(u"VarType", {u""})), 1);
  EXPECT_EQ(num(call(u"VarType", {I(0)})), 2);
  EXPECT_EQ(num(call(u"VarType", {Variant::boolean(true)})), 2);
  EXPECT_EQ(num(call(u"VarType", {std::make_shared<HostThing>()})), 3);
  EXPECT_EQ(num(call(u"VarType", {kNull})), 3);  // an Empty script value
  EXPECT_EQ(num(call(u"VarType", {call(u"Array", {})})), 4);
  EXPECT_EQ(num(call(u"VarType", {Variant::date(0)})), 5);
}

TEST(TypesTypeName, NamesOfKinds) {
  EXPECT_EQ(text(call(u"TypeName", {Variant()})), u"Null");
  EXPECT_EQ(text(call(u"TypeName", {I(1)})), u"Double");
  EXPECT_EQ(text(call(u"TypeName", {Variant::boolean(true)})), u"Double");
  EXPECT_EQ(text(call(u"TypeName", {u"1"})), u"String");
  EXPECT_EQ(text(call(u"TypeName", {Variant::date(0)})), u"Date");
  EXPECT_EQ(text(call(u"TypeName", {call(u"Array", {})})), u"Array");
  EXPECT_EQ(text(call(u"TypeName", {kNull})), u"NullObject");
  EXPECT_EQ(text(call(u"TypeName", {std::make_shared<HostThing>()})), u"HostThing");
}

TEST(TypesPredicates, DefinedThroughVarType) {
  EXPECT_EQ(num(call(u"IsNumeric", {I(3)})), 1);
  EXPECT_EQ(num(call(u"IsNumeric", {u"3"})), 0);  // a text is never numeric
  EXPECT_EQ(num(call(u"IsNull", {Variant()})), 1);
  EXPECT_EQ(num(call(u"IsEmpty", {Variant()})), 1);
  for (const Variant& v : {kNull, Variant(u""), I(0)}) {
    EXPECT_EQ(num(call(u"IsNull", {v})), 0);
    EXPECT_EQ(num(call(u"IsEmpty", {v})), 0);
  }
  EXPECT_EQ(num(call(u"IsObject", {kNull})), 1);
  EXPECT_EQ(num(call(u"IsObject", {call(u"Array", {})})), 0);
  EXPECT_EQ(num(call(u"IsObject", {Variant::date(0)})), 0);
  EXPECT_EQ(call(u"IsNumeric", {I(3)}).number().type(), lx::Number::Type::Boolean);
}

TEST(TypesEngine, NameAndVersion) {
  EXPECT_EQ(text(call(u"ScriptEngine", {})), u"LxBasic");
  EXPECT_EQ(num(call(u"ScriptEngineMajorVersion", {})), 1);
  EXPECT_EQ(num(call(u"ScriptEngineMinorVersion", {})), 6);
  Variant build = call(u"ScriptEngineBuildVersion", {});
  ASSERT_TRUE(build.isString());
  EXPECT_EQ(build.string(), u"1.6");
}

TEST(TypesLog, PrintAndWriteLnWriteTheTextOnce) {
  std::vector<std::u16string> entries;
  std::mutex m;
  lx::setLogSink([&](lx::UStringView message) {
    std::lock_guard lock(m);
    entries.emplace_back(message);
  });
  Variant r1 = call(u"Print", {R(1.5)});
  Variant r2 = call(u"WriteLn", {kNull});
  call(u"WriteLn", {u"héllo \U0001F600"});
  lx::setLogSink(nullptr);
  EXPECT_TRUE(r1.isEmpty());
  EXPECT_TRUE(r2.isEmpty());
  EXPECT_EQ(entries, (std::vector<std::u16string>{u"1.5", u"<null>", u"héllo \U0001F600"}));
}

TEST(TypesSleep, FractionsAndBadValuesReturnAtOnce) {
  auto start = std::chrono::steady_clock::now();
  for (const Variant& v : {I(0), I(-5), R(0.9), kNull, lxtest::someArray(), Variant(u"abc")}) {
    EXPECT_TRUE(call(u"Sleep", {v}).isEmpty());
  }
  EXPECT_LT(seconds(start), 0.5);
}

TEST(TypesSleep, WholeSecondsAndAStopRequestEndsIt) {
  lx::LxBasicScript script;
  auto start = std::chrono::steady_clock::now();
  callIn(script, u"Sleep", {R(1.7)});
  double slept = seconds(start);
  EXPECT_GE(slept, 0.95);
  EXPECT_LT(slept, 1.6);

  std::thread stopper([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    script.terminate();
  });
  start = std::chrono::steady_clock::now();
  callIn(script, u"Sleep", {I(30)});
  stopper.join();
  EXPECT_LT(seconds(start), 5.0);
}

TEST(TypesEval, EvaluatesInTheScript) {
  lx::LxBasicScript script;
  script.addVarWithName(u"x", I(21));
  EXPECT_EQ(num(callIn(script, u"Eval", {u"  x * 2  "})), 42);
  EXPECT_EQ(num(callIn(script, u"Eval", {u"1 + 2"})), 3);
  EXPECT_FALSE(lx::coreOf(script).getValueForVar(u"__eval__"));
}

TEST(TypesEval, OnlyTheFirstLineAndEmptyResults) {
  lx::LxBasicScript script;
  script.addVarWithName(u"y", I(1));
  EXPECT_EQ(num(callIn(script, u"Eval", {u"y + 1\ny = 100"})), 2);
  EXPECT_EQ(num(script.valueOf(u"y")), 1);
  EXPECT_TRUE(callIn(script, u"Eval", {u""}).isEmpty());
  EXPECT_TRUE(callIn(script, u"Eval", {u"   \n  "}).isEmpty());
  EXPECT_FALSE(lx::coreOf(script).getValueForVar(u"__eval__"));
}

TEST(TypesEval, NonTextFailsTheCallAndNoScriptGivesEmpty) {
  lx::LxBasicScript script;
  EXPECT_THROW(callIn(script, u"Eval", {I(5)}), lx::Exception);
  EXPECT_THROW(callIn(script, u"Eval", {kNull}), lx::Exception);
  EXPECT_TRUE(call(u"Eval", {u"1 + 2"}).isEmpty());  // a library without a script
}

}  // namespace

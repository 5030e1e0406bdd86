// Host objects: registration, lookup by name and argument count, conversions, CreateObject.
#include <gtest/gtest.h>

#include "lxbasic/bridge.h"
#include "lxbasic/exceptions.h"
#include "support/builtins.h"
#include "support/run.h"

using lxtest::run;

namespace {

class Shelf : public lx::Object, public lx::ScriptAware {
 public:
  void initWithScript(lx::LxBasicScript& script) override {
    script.addVarWithName(u"shelfReady", lx::Variant::int32(1));
  }
  int count() const { return count_; }
  int put(int n) { return count_ += n; }
  double half(double d) { return d / 2; }
  lx::Variant echo(const lx::Variant& v) { return v; }
  void clear() { count_ = 0; }
  lx::UString label(lx::UString prefix, int n) {
    return prefix + lx::toText(lx::Variant::int32(n));
  }
  lx::Variant fail() { throw std::runtime_error("shelf broke"); }
  int count_ = 0;
};

class Other : public lx::Object {
 public:
  int count() const { return 99; }
  int only() const { return 5; }
};

void registerClasses() {
  static bool done = false;
  if (done) return;
  done = true;
  lx::ClassBuilder<Shelf>("Shelf")
      .method("Count", &Shelf::count)
      .method("Put:", &Shelf::put)
      .method("Half:", &Shelf::half)
      .method("Echo:", &Shelf::echo)
      .method("Clear", &Shelf::clear)
      .method("Label:times:", &Shelf::label)
      .method("Fail", &Shelf::fail)
      .creatable();
  lx::ClassBuilder<Other>("Other").method("Count", &Other::count).method("Only", &Other::only);
}

struct Host {
  Host() {
    registerClasses();
    script.addObj(shelf);
    script.addObj(std::make_shared<Other>());
    script.addVarWithName(u"RESULT", lx::Variant());
  }
  lxtest::Outcome go(std::u16string_view text) {
    script.addVarWithName(u"RESULT", lx::Variant());
    return run(script, text);
  }
  lx::LxBasicScript script;
  std::shared_ptr<Shelf> shelf = std::make_shared<Shelf>();
};

}  // namespace

TEST(HostObjects, MethodsAreFoundInAnyLetterCaseByArgumentCount) {
  Host h;
  EXPECT_EQ(h.go(u"put(2)\nPUT(3)\nRESULT = Count()").text(), u"5");
  EXPECT_EQ(h.go(u"RESULT = count").text(), u"5");  // a bare name calls a 0-argument method
  EXPECT_EQ(h.go(u"RESULT = Label(\"n\", 4)").text(), u"n4");
  auto o = h.go(u"RESULT = Put(1, 2)");
  EXPECT_EQ(o.code(), 5);
  EXPECT_EQ(o.error->desc(), u"Function \"Put\" not found");
}

TEST(HostObjects, FirstRegisteredObjectWinsAndLaterOnesAreSearchedAfter) {
  Host h;
  EXPECT_EQ(h.go(u"Clear\nRESULT = Count() & \",\" & Only()").text(), u"0,5");
}

TEST(HostObjects, ArgumentsAreConvertedByParameterType) {
  Host h;
  EXPECT_EQ(h.go(u"RESULT = Half(\"2.5\")").text(), u"1.25");
  EXPECT_EQ(h.go(u"Clear\nRESULT = Put(2.9)").text(), u"2");
  EXPECT_EQ(h.go(u"Clear\nRESULT = Put(\"abc\")").text(), u"0");
  EXPECT_EQ(h.go(u"RESULT = VarType(Echo(Array(1)))").text(), u"4");
  // An Empty variable travels as the null object.
  EXPECT_EQ(h.go(u"DIM e\nRESULT = Echo(e)").text(), u"<null>");
  // A method without a result gives Empty.
  EXPECT_EQ(h.go(u"RESULT = Clear()").result.isEmpty(), true);
}

TEST(HostObjects, InitWithScriptRunsAtRegistration) {
  Host h;
  EXPECT_EQ(lx::toText(h.script.valueOf(u"SHELFREADY")), u"1");
  EXPECT_EQ(h.script.objCount(), 3);
  h.script.removeObj(1);
  EXPECT_EQ(h.go(u"RESULT = Count()").text(), u"99");
  EXPECT_THROW(h.script.removeObj(7), lx::RangeException);
}

TEST(HostObjects, ExceptionsFromHostMethodsReachTheCaller) {
  Host h;
  h.script.setScript(std::u16string_view(u"Fail()"));
  EXPECT_THROW(h.script.runScript(), std::runtime_error);
  EXPECT_FALSE(h.script.running());
}

TEST(HostObjects, MethodsOfAGivenObject) {
  Host h;
  h.script.addVarWithName(u"other", lx::Variant(std::make_shared<Other>()));
  EXPECT_EQ(h.go(u"RESULT = Count@(other)").text(), u"99");
  EXPECT_EQ(h.go(u"RESULT = Put@(other, 1)").code(), 5);
  EXPECT_EQ(h.go(u"RESULT = Retain@(other)").code(), 28);
}

TEST(CreateObject, MakesNewInstancesOfRegisteredClasses) {
  Host h;
  auto o = h.go(
      u"DIM a = CreateObject(\"Shelf\"), b = CreateObject(\"Shelf\")\n"
      u"Put@(a, 3)\nRESULT = Count@(a) & Count@(b) & VarType(a)");
  EXPECT_EQ(o.text(), u"303");
  EXPECT_TRUE(h.go(u"RESULT = CreateObject(\"NoSuchClass\")").result.isEmpty());
}

TEST(CreateObject, OnlyCreatableClassesOnTheScriptsList) {
  Host h;
  // "Other" is registered but not creatable: a list naming it does not make it so.
  h.script.setCreatableClasses({"Other"});
  EXPECT_TRUE(h.go(u"RESULT = CreateObject(\"Shelf\")").result.isEmpty());
  EXPECT_TRUE(h.go(u"RESULT = CreateObject(\"Other\")").result.isEmpty());
  h.script.setCreatableClasses({"Other", "Shelf"});
  EXPECT_EQ(h.go(u"RESULT = VarType(CreateObject(\"Shelf\"))").text(), u"3");
}

TEST(MethodCache, SameFirstPartDifferentArgumentCounts) {
  auto& lib = lxtest::library();
  EXPECT_NE(lx::findMethod(lib.lxClass(), u"mid", 2), nullptr);
  EXPECT_NE(lx::findMethod(lib.lxClass(), u"MID", 3), nullptr);
  EXPECT_EQ(lx::findMethod(lib.lxClass(), u"Mid", 1), nullptr);
  EXPECT_EQ(lx::findMethod(nullptr, u"Mid", 2), nullptr);
}

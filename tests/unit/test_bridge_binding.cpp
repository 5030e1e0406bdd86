// Host bindings that must not go wrong silently: 64-bit and unsigned values, selectors that
// do not fit their method, methods added late, callables of every sort, properties.
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "lxbasic/bridge.h"
#include "lxbasic/exceptions.h"
#include "support/run.h"

namespace {

class Meter : public lx::Object {
 public:
  int64_t big() const { return 5000000000LL; }
  int64_t twice(int64_t n) { return 2 * n; }
  uint64_t maxUnsigned() const { return UINT64_MAX; }
  uint32_t takeU32(uint32_t n) { return n; }
  uint64_t takeU64(uint64_t n) { return n; }
  uint8_t takeU8(uint8_t n) { return n; }
  float scale(float f) { return f * 2; }
  int16_t takeShort(int16_t n) { return n; }
  signed char takeChar(signed char n) { return n; }
  int takeInt(int n) { return n; }
  int32_t limit() const { return limit_; }
  void setLimit(int32_t n) { limit_ = n; }
  int32_t limit_ = 7;
};

class Late : public lx::Object {};
class Twice : public lx::Object {};
class Busy : public lx::Object {};

void registerMeter() {
  static bool done = false;
  if (done) return;
  done = true;
  auto offset = std::make_shared<int64_t>(100);
  std::function<std::string(Meter&, std::string)> shout = [](Meter&, std::string s) {
    return s + "!";
  };
  lx::ClassBuilder<Meter>("Meter")
      .method("Big", &Meter::big)
      .method<"Twice:">(&Meter::twice)
      .method("MaxUnsigned", &Meter::maxUnsigned)
      .method("U32:", &Meter::takeU32)
      .method("U64:", &Meter::takeU64)
      .method("U8:", &Meter::takeU8)
      .method("Scale:", &Meter::scale)
      .method("Short:", &Meter::takeShort)
      .method("Char:", &Meter::takeChar)
      .method("Whole:", &Meter::takeInt)
      .method("Offset:", [offset](int64_t n) { return n + *offset; })  // captures, no receiver
      .method("Shout:", shout)
      .method("Counted", [calls = 0](Meter&) mutable { return ++calls; })
      .property("Limit", &Meter::limit, &Meter::setLimit);
}

lxtest::Outcome runWithMeter(std::u16string_view text) {
  registerMeter();
  lx::LxBasicScript script;
  script.addObj(std::make_shared<Meter>());
  std::u16string full = u"DIM RESULT\n";
  full += text;
  return lxtest::run(script, full);
}

}  // namespace

TEST(Binding, SixtyFourBitValuesTravelWhole) {
  const lxtest::TextCase cases[] = {
      {u"RESULT = Big", u"5000000000"},
      {u"RESULT = Twice(3000000000)", u"6000000000"},
      {u"RESULT = Twice(6000000000)", u"12000000000"},
      {u"RESULT = Twice(-4611686018427387904)", u"-9223372036854775808"},
      {u"RESULT = Twice(\"3000000000\")", u"6000000000"},
      {u"RESULT = Twice(2.9)", u"4"},
      {u"RESULT = MaxUnsigned", u"18446744073709551615"},
      {u"RESULT = U32(4294967295)", u"4294967295"},
      {u"RESULT = U64(&HFFFFFFFFFFFFFFFF)", u"18446744073709551615"},
      {u"RESULT = U64(\"18446744073709551615\")", u"18446744073709551615"},
      {u"RESULT = U8(255)", u"255"},
      {u"RESULT = U8(\"abc\")", u"0"},
      {u"RESULT = Offset(1)", u"101"},
      {u"RESULT = Shout(\"hey\")", u"hey!"},
      {u"Counted\nRESULT = Counted()", u"2"},
      {u"RESULT = Limit", u"7"},
      {u"Limit(12)\nRESULT = Limit", u"12"},
  };
  lxtest::expectTexts(cases, runWithMeter);
}

// float is a floating-point number both ways; narrow signed integers take what fits and
// refuse the rest; int keeps the saturating text-to-integer reading.
TEST(Binding, FloatsAreNumbersAndNarrowIntegersDoNotWrap) {
  const lxtest::TextCase cases[] = {
      {u"RESULT = Scale(10.75)", u"21.5"},
      {u"RESULT = Scale(\"0.25\")", u"0.5"},
      {u"RESULT = VarType(Scale(1)) & TypeName(Scale(1.5))", u"2Double"},
      {u"RESULT = Short(-32768) & \" \" & Short(32767) & \" \" & Short(\"12abc\")",
       u"-32768 32767 12"},
      {u"RESULT = Char(-128) & \" \" & Char(127)", u"-128 127"},
      {u"RESULT = Whole(5000000000) & \" \" & Whole(-5000000000)", u"2147483647 -2147483648"},
  };
  lxtest::expectTexts(cases, runWithMeter);
  for (std::u16string_view line : {u"Short(100000)", u"Short(-32769)", u"Char(128)",
                                   u"Short(5000000000)", u"Char(\"-200\")"}) {
    EXPECT_THROW(runWithMeter(line), lx::InvalidArgumentException) << lx::toUtf8(line);
  }
}

TEST(Binding, UnsignedParametersRefuseValuesThatWouldWrap) {
  const std::u16string_view lines[] = {
      u"U32(-1)",
      u"U32(4294967296)",
      u"U8(256)",
      u"U64(\"-5\")",
      u"U64(-0.9 - 1)",
      u"U64(\"99999999999999999999\")",
      u"Twice(&HFFFFFFFFFFFFFFFF)",
  };
  for (std::u16string_view line : lines) {
    EXPECT_THROW(runWithMeter(line), lx::InvalidArgumentException) << lx::toUtf8(line);
  }
}

TEST(Binding, RegistrationRefusesSelectorsThatCouldNeverBeCalled) {
  lx::ClassBuilder<Twice> builder("TwiceRegistered");
  builder.method("Get", [](Twice&) { return 1; });
  // One colon per script argument: "Add" with a parameter would never be found.
  EXPECT_THROW(builder.method("Add", [](Twice&, int n) { return n; }), lx::BindingException);
  EXPECT_THROW(builder.method("Add:to:", [](int n) { return n; }), lx::BindingException);
  // A second method under one selector would be unreachable.
  EXPECT_THROW(builder.method("Get", [](Twice&) { return 2; }), lx::BindingException);
  EXPECT_EQ(builder.info().methods().size(), 1u);
}

TEST(Binding, MethodsAddedAfterFirstUseAreFound) {
  lx::ClassBuilder<Late> builder("Late");
  builder.method("First", [] { return 1; });
  lx::LxBasicScript script;
  script.addObj(std::make_shared<Late>());
  script.addVarWithName(u"RESULT", lx::Variant());
  EXPECT_EQ(lxtest::run(script, u"RESULT = First").text(), u"1");
  EXPECT_EQ(lxtest::run(script, u"RESULT = Bump(1)").code(), 5);
  builder.method("Bump:", [](int n) { return n + 1; });
  EXPECT_EQ(lxtest::run(script, u"RESULT = Bump(1)").text(), u"2");
  EXPECT_EQ(lxtest::run(script, u"RESULT = First").text(), u"1");
}

TEST(Binding, RegisteringWhileScriptsCallTheClassIsSafe) {
  lx::ClassBuilder<Busy> builder("Busy");
  builder.method("Ping", [] { return 1; });
  lx::LxBasicScript script;
  script.addObj(std::make_shared<Busy>());
  script.setScript("DIM RESULT = 0\nFOR i = 1 TO 3000\nRESULT = RESULT + Ping\nNEXT");
  std::thread runner([&] { script.runScript(); });
  // Each registration may move the class's method list and rebuild its table under the
  // calls the script is making.
  for (int i = 0; i < 300; ++i) builder.method("Extra" + std::to_string(i), [i] { return i; });
  runner.join();
  EXPECT_TRUE(script.succeeded());
  EXPECT_EQ(lx::toText(script.valueOf(u"RESULT")), u"3000");
  EXPECT_EQ(lxtest::run(script, u"RESULT = Extra299").text(), u"299");
}

// What the compile-time selector check counts: a leading reference to the class (or a base)
// is the receiver, not a script argument.
static_assert(lx::detail::scriptArity<Meter, decltype(&Meter::twice)>() == 1);
static_assert(lx::detail::scriptArity<Meter, int (*)(lx::Object&, int, int)>() == 2);
static_assert(lx::detail::scriptArity<Meter, int (*)(int, int)>() == 2);
static_assert(lx::detail::scriptArity<Meter, std::function<int(const Meter&)>>() == 0);
static_assert(lx::detail::scriptArity<Meter, std::function<int(Late&)>>() == 1);
static_assert(lx::Selector("Scale:by:").colons() == 2);

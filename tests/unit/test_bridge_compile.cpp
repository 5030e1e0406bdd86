#include <gtest/gtest.h>

#include "lxbasic/bridge.h"

namespace {
class Counter : public lx::Object {
 public:
  int add(int n) { return total_ += n; }
  double half(double d) const { return d / 2; }
  lx::Variant echo(const lx::Variant& v) { return v; }
  void reset() { total_ = 0; }
  lx::UString name(lx::UString s) { return s + u"!"; }
  int total_ = 0;
};
lx::Variant twice(Counter& c, const lx::Variant& v) {
  return lx::Variant::int32(2 * c.total_ + lx::intValue(v));
}
}  // namespace

TEST(BridgeCompile, registersAndCalls) {
  lx::ClassBuilder<Counter>("Counter")
      .method("Add:", &Counter::add)
      .method("Half:", &Counter::half)
      .method("Echo:", &Counter::echo)
      .method("Reset", &Counter::reset)
      .method("Name:", &Counter::name)
      .method("Twice:", &twice);
  Counter c;
  const lx::MethodInfo* m = lx::findMethod(c.lxClass(), u"add", 1);
  ASSERT_NE(m, nullptr);
  lx::Variant args[] = {lx::Variant(u"2.9")};
  auto r = lx::sendMsgToObj(c, *m, args);
  EXPECT_EQ(r.value.number().toInt32(), 2);
  EXPECT_EQ(m->argTypes, "i");
}

// The memory budget of a script tree: what texts and arrays charge, that they give it back,
// and that lists which contain themselves can be freed.
#include <gtest/gtest.h>

#include <memory>

#include "foundation/memory_budget.h"
#include "lxbasic/value.h"
#include "lxbasic/variant.h"

namespace {

using lx::Array;
using lx::BudgetScope;
using lx::MemoryBudget;
using lx::RunLimits;
using lx::Variant;

struct Budgeted : ::testing::Test {
  std::shared_ptr<MemoryBudget> budget = std::make_shared<MemoryBudget>(1 << 20);
  BudgetScope scope{RunLimits{budget, nullptr, nullptr}};
};

TEST_F(Budgeted, RefusedChargesLeaveTheBudgetAsItWas) {
  budget->charge(1000);
  EXPECT_THROW(budget->charge(1 << 20), lx::OutOfScriptMemory);
  EXPECT_EQ(budget->used(), 1000);
  EXPECT_THROW(lx::chargeTextGrowth(1 << 20), lx::OutOfScriptMemory);  // two bytes a unit
  EXPECT_EQ(budget->used(), 1000);
  budget->release(1000);
  EXPECT_EQ(budget->used(), 0);
}

TEST_F(Budgeted, TextsAndListsGiveBackWhatTheyCharged) {
  {
    Variant small(u"abc");
    Variant large(std::u16string(4000, u'x'));
    auto list = Array::make({Variant::int32(1), Variant::int32(2)});
    list->chargeFor(10);
    EXPECT_GE(budget->used(), 8000 + 10 * lx::kElementCost);
    list->chargeFor(1);
    EXPECT_LT(budget->used(), 8000 + 10 * lx::kElementCost);
  }
  EXPECT_EQ(budget->used(), 0);
}

TEST_F(Budgeted, LargeTextsPastTheLimitAreRefused) {
  EXPECT_THROW(Variant(std::u16string(600000, u'x')), lx::OutOfScriptMemory);
  EXPECT_EQ(budget->used(), 0);
}

// Every list a script grows (DIM, REDIM, Array, Split, Filter) charges for its elements, so
// the element limit holds for all of them; a host's own lists, made outside a run, are free.
TEST(ArrayElementLimit, ListsOfARunStopAtTheLimitAndAHostsDoNot) {
  auto unlimited = std::make_shared<MemoryBudget>(0);
  {
    BudgetScope scope{RunLimits{unlimited, nullptr, nullptr}};
    auto list = Array::make();
    EXPECT_NO_THROW(list->chargeFor(lx::kMaxArrayElements));
    EXPECT_THROW(list->chargeFor(lx::kMaxArrayElements + 1), lx::OutOfScriptMemory);
    EXPECT_THROW(lx::checkArrayElements(int64_t{100001} * 100001), lx::OutOfScriptMemory);
  }
  EXPECT_EQ(unlimited->used(), 0);
  EXPECT_NO_THROW(Array::make()->chargeFor(lx::kMaxArrayElements + 1));
}

TEST_F(Budgeted, BreakingCyclesFreesListsThatContainThemselves) {
  std::weak_ptr<Array> outer;
  std::weak_ptr<Array> kept;
  auto held = Array::make({Variant::int32(1)});
  {
    auto a = Array::make({Variant()});
    auto b = Array::make({Variant()});
    a->items[0] = Variant(lx::LxValue::make(Variant(b)));  // through a slot
    b->items[0] = Variant(a);                              // directly
    held->items.push_back(Variant(b));
    held->items.push_back(Variant(b));  // shared, but no cycle of its own
    outer = a;
    kept = held;
  }
  EXPECT_FALSE(outer.expired());
  budget->breakCycles();
  EXPECT_FALSE(kept.expired());
  ASSERT_EQ(held->items.size(), 3u);
  EXPECT_TRUE(held->items[1].isArray());  // the host's own list keeps its elements
  held.reset();
  EXPECT_TRUE(outer.expired());
}

TEST(ArrayNesting, DeepListsFreeWithoutRecursion) {
  auto list = Array::make();
  for (int i = 0; i < 1'000'000; ++i) list = Array::make({Variant(list)});
  list.reset();  // would overflow the stack if each level freed the next inside itself
  SUCCEED();
}

}  // namespace

// Array built-ins called directly.
#include <string>
#include <vector>

#include "lxbasic/value.h"
#include "support/builtin_values.h"

namespace {

using lx::Variant;
using namespace lxtest;

// The texts of the elements of an array made by a built-in; each element must be a slot.
std::vector<std::u16string> elements(const Variant& v) {
  std::vector<std::u16string> out;
  EXPECT_TRUE(v.isArray()) << lx::toUtf8(text(v));
  if (!v.isArray()) return out;
  for (const Variant& e : v.array()->items) {
    auto slot = e.objectAs<lx::LxValue>();
    EXPECT_TRUE(slot) << "element is not a slot";
    out.push_back(slot ? text(slot->data()) : text(e));
  }
  return out;
}
using Texts = std::vector<std::u16string>;

// A two-dimensional script array as DIM makes it: lists above, slots in the innermost lists.
Variant grid(int rows, int columns) {
  auto outer = lx::Array::make();
  for (int r = 0; r < rows; ++r) {
    auto row = lx::Array::make();
    for (int c = 0; c < columns; ++c) row->items.emplace_back(lx::LxValue::make());
    outer->items.emplace_back(row);
  }
  return outer;
}

TEST(ArraysArray, MakesFreshSlotsForEveryArgument) {
  EXPECT_EQ(elements(call(u"Array", {})), Texts{});
  EXPECT_EQ(elements(call(u"Array", {I(1), u"b", I(3)})), (Texts{u"1", u"b", u"3"}));
  Variant withNull = call(u"Array", {kNull});
  ASSERT_EQ(withNull.array()->items.size(), 1u);
  EXPECT_EQ(withNull.array()->items[0].objectAs<lx::LxValue>()->type(), lx::ValueKind::Object);
  for (int32_t n = 0; n <= 10; ++n) EXPECT_TRUE(lxtest::exists(u"Array", n)) << n;
  EXPECT_FALSE(lxtest::exists(u"Array", 11));
  EXPECT_EQ(call(u"Array", {I(1), I(2), I(3), I(4), I(5), I(6), I(7), I(8), I(9), I(10)})
                .array()
                ->items.size(),
            10u);
}

TEST(ArraysBounds, OneDimension) {
  EXPECT_EQ(num(call(u"UBound", {call(u"Array", {})})), -1);
  EXPECT_EQ(num(call(u"LBound", {call(u"Array", {})})), 0);
  EXPECT_EQ(num(call(u"UBound", {call(u"Array", {I(1), I(2), I(3)})})), 2);
  EXPECT_EQ(num(call(u"UBound", {call(u"Array", {I(1), I(2)}), u"1"})), 1);
}

TEST(ArraysBounds, MissingDimensionsAndNonArrays) {
  Variant a = call(u"Array", {I(1), I(2)});
  EXPECT_EQ(num(call(u"UBound", {a, I(2)})), -1);  // the first element is no array
  EXPECT_EQ(num(call(u"LBound", {a, I(2)})), -1);
  EXPECT_EQ(num(call(u"UBound", {a, I(0)})), -1);
  EXPECT_EQ(num(call(u"LBound", {I(5)})), -1);
  EXPECT_EQ(num(call(u"UBound", {kNull})), -1);
  EXPECT_EQ(num(call(u"UBound", {a, kNull})), -1);  // "<null>" reads 0
}

TEST(ArraysBounds, NestedDimensionsFollowTheFirstElement) {
  Variant g = grid(3, 4);
  EXPECT_EQ(num(call(u"UBound", {g, I(1)})), 2);
  EXPECT_EQ(num(call(u"UBound", {g, I(2)})), 3);
  EXPECT_EQ(num(call(u"LBound", {g, I(2)})), 0);
  EXPECT_EQ(num(call(u"UBound", {g, I(3)})), -1);
  EXPECT_EQ(num(call(u"UBound", {grid(0, 0), I(2)})), -1);
}

TEST(ArraysIsArray, OnlyArrays) {
  EXPECT_EQ(num(call(u"IsArray", {call(u"Array", {})})), 1);
  EXPECT_EQ(num(call(u"IsArray", {u"(1, 2)"})), 0);
  EXPECT_EQ(num(call(u"IsArray", {kNull})), 0);
}

TEST(ArraysFilter, IncludeAndExclude) {
  Variant fruit = call(u"Array", {u"apple", u"pear", u"plum"});
  EXPECT_EQ(elements(call(u"Filter", {fruit, u"p"})), (Texts{u"apple", u"pear", u"plum"}));
  EXPECT_EQ(elements(call(u"Filter", {fruit, u"pe", I(0), I(0)})), (Texts{u"apple", u"plum"}));
  EXPECT_EQ(elements(call(u"Filter", {call(u"Array", {u"Ab"}), u"a", I(1), I(1)})), Texts{u"Ab"});
  EXPECT_EQ(elements(call(u"Filter", {call(u"Array", {u"Ab"}), u"a", u"yes", I(0)})), Texts{});
  EXPECT_FALSE(lxtest::exists(u"Filter", 3));
}

TEST(ArraysFilter, InStrQuirksCarryOver) {
  Variant a = call(u"Array", {u"x", u"y"});
  EXPECT_EQ(elements(call(u"Filter", {a, u""})), Texts{});
  EXPECT_EQ(elements(call(u"Filter", {a, u"", I(0), I(0)})), (Texts{u"x", u"y"}));
  // An unreadable compare makes every search fail (-1), which counts as a match.
  EXPECT_EQ(elements(call(u"Filter", {a, u"zzz", I(1), kNull})), (Texts{u"x", u"y"}));
  EXPECT_TRUE(call(u"Filter", {u"abc", u"a"}).isEmpty());
}

TEST(ArraysFilter, ResultHoldsNewSlots) {
  Variant a = call(u"Array", {u"ab"});
  Variant f = call(u"Filter", {a, u"a"});
  ASSERT_EQ(f.array()->items.size(), 1u);
  EXPECT_NE(f.array()->items[0].object(), a.array()->items[0].object());
}

TEST(ArraysJoin, DelimitersAndNonArrays) {
  EXPECT_EQ(text(call(u"Join", {call(u"Array", {u"a", u"b", u"c"})})), u"a b c");
  EXPECT_EQ(text(call(u"Join", {call(u"Array", {u"a", u"b"}), u""})), u"ab");
  EXPECT_EQ(text(call(u"Join", {call(u"Array", {I(1), I(2)}), u", "})), u"1, 2");
  EXPECT_EQ(text(call(u"Join", {call(u"Array", {})})), u"");
  EXPECT_TRUE(call(u"Join", {I(5)}).isEmpty());
  // An Empty element contributes nothing.
  auto list = lx::Array::make({lx::LxValue::make(), lx::LxValue::make(Variant(u"z"))});
  EXPECT_EQ(text(call(u"Join", {Variant(list), u"-"})), u"-z");
}

TEST(ArraysSplit, PiecesAndDelimiters) {
  EXPECT_EQ(elements(call(u"Split", {u"a b  c"})), (Texts{u"a", u"b", u"", u"c"}));
  EXPECT_EQ(elements(call(u"Split", {u"a,b,c", u",", I(2)})), (Texts{u"a", u"b", u"c"}));
  EXPECT_EQ(elements(call(u"Split", {u"aXbxc", u"x", I(-1), I(1)})), (Texts{u"a", u"b", u"c"}));
  EXPECT_EQ(elements(call(u"Split", {u"aXbxc", u"x", I(-1), I(0)})), (Texts{u"aXb", u"c"}));
  EXPECT_EQ(elements(call(u"Split", {u"a::b", u"::"})), (Texts{u"a", u"b"}));
}

TEST(ArraysSplit, EdgesOfTheLoop) {
  EXPECT_EQ(elements(call(u"Split", {u""})), Texts{});
  EXPECT_EQ(elements(call(u"Split", {u"a,b,", u","})), (Texts{u"a", u"b"}));
  EXPECT_EQ(elements(call(u"Split", {u",a", u","})), (Texts{u"", u"a"}));
  EXPECT_EQ(elements(call(u"Split", {u"abc", u""})), Texts{u"abc"});
  EXPECT_EQ(elements(call(u"Split", {u"12.5", u"."})), (Texts{u"12", u"5"}));
}

TEST(ArraysSplit, UnicodeDelimiters) {
  EXPECT_EQ(elements(call(u"Split", {u"x\U0001F600y\U0001F600", u"\U0001F600"})),
            (Texts{u"x", u"y"}));
  EXPECT_EQ(elements(call(u"Split", {u"aÉbéc", u"é", I(-1), I(1)})), (Texts{u"a", u"b", u"c"}));
}

TEST(ArraysSplit, CountZeroWithoutScriptEndsAtTheBound) {
  // Without a script nothing could stop the endless tail of empty pieces; the direct call
  // ends once the bound of idle pieces is reached.
  Variant r = call(u"Split", {u"a,b", u",", I(0)});
  ASSERT_TRUE(r.isArray());
  const auto& items = r.array()->items;
  ASSERT_GT(items.size(), 1000u);
  EXPECT_EQ(items.size(), 65536u + 2);
  EXPECT_EQ(text(items[0].objectAs<lx::LxValue>()->data()), u"a");
  EXPECT_EQ(text(items[1].objectAs<lx::LxValue>()->data()), u"b");
  EXPECT_EQ(text(items[2].objectAs<lx::LxValue>()->data()), u"");
}

TEST(ArraysSplit, UnreadableCompareEndsToo) {
  // InStr fails on every step, so no piece consumes any text.
  Variant r = call(u"Split", {u"abc", u",", I(-1), kNull});
  ASSERT_TRUE(r.isArray());
  EXPECT_EQ(text(r.array()->items[0].objectAs<lx::LxValue>()->data()), u"abc");
}

}  // namespace

// The variable table, temporaries and array element lookup.
#include <gtest/gtest.h>

#include "interpreter/script_core.h"
#include "lxbasic/text.h"

namespace {

lx::ArrayRef threeSlots() {
  auto a = lx::Array::make();
  lx::dimArray(*a, 3, true);
  for (int i = 0; i < 3; ++i)
    a->items[i].objectAs<lx::LxValue>()->setData(lx::Variant::int32(i * 10));
  return a;
}

}  // namespace

TEST(VariableTable, NamesAreKeyedUpperCase) {
  auto s = lx::ScriptCore::create();
  s->addVarWithName(u"Abc", lx::Variant::int32(1));
  EXPECT_NE(s->getValueForVar(u"ABC"), nullptr);
  EXPECT_NE(s->getValueForVar(u"abc"), nullptr);
  EXPECT_EQ(s->getVars().count(u"ABC"), 1u);
  EXPECT_EQ(s->getVars().count(u"Abc"), 0u);
  s->removeVar(u"aBC");
  EXPECT_EQ(s->getValueForVar(u"abc"), nullptr);
}

TEST(VariableTable, ASlotWithTheSameConstantFlagIsSharedOtherwiseCopied) {
  auto s = lx::ScriptCore::create();
  auto slot = lx::LxValue::make(lx::Variant::int32(1));
  s->addVarWithName(u"a", lx::Variant(slot));
  slot->setData(lx::Variant::int32(2));
  EXPECT_EQ(lx::toText(s->getValueForVar(u"a")->data()), u"2");

  s->addConstWithName(u"c", lx::Variant(slot));  // another flag: the value is copied
  slot->setData(lx::Variant::int32(3));
  EXPECT_EQ(lx::toText(s->getValueForVar(u"c")->data()), u"2");
  EXPECT_TRUE(s->getValueForVar(u"c")->constant());
}

TEST(VariableTable, BadNamesAreRefusedWithError11) {
  auto s = lx::ScriptCore::create();
  EXPECT_EQ(s->addVarWithName(u"a.b", lx::Variant()), nullptr);
  ASSERT_NE(s->error(), nullptr);
  EXPECT_EQ(s->error()->code(), 11);
  EXPECT_EQ(s->getValueForVar(u"a.b"), nullptr);
}

TEST(VariableTable, TemporariesLiveUntilCleared) {
  auto s = lx::ScriptCore::create();
  lx::UString name = s->storeTemp(lx::Variant::int32(5));
  EXPECT_EQ(name.rfind(u"____var_", 0), 0u);
  EXPECT_NE(s->getValueForVar(name), nullptr);
  s->clearTmpVars();
  EXPECT_EQ(s->getValueForVar(name), nullptr);
}

TEST(Elements, IndicesAreReadAsIntegersFromTheirText) {
  lx::LxValue array{lx::Variant{threeSlots()}};
  lx::Variant index[] = {lx::Variant::real(2.9)};
  auto element = lx::getElement(index, &array);
  ASSERT_NE(element, nullptr);
  EXPECT_EQ(lx::toText(element->data()), u"20");
  lx::Variant text[] = {lx::Variant(u"1x")};
  EXPECT_EQ(lx::toText(lx::getElement(text, &array)->data()), u"10");
  lx::Variant outside[] = {lx::Variant::int32(3)};
  EXPECT_EQ(lx::getElement(outside, &array), nullptr);
  lx::Variant negative[] = {lx::Variant::int32(-1)};
  EXPECT_EQ(lx::getElement(negative, &array), nullptr);
}

TEST(Elements, DimensionsMustMatchTheIndices) {
  auto m = lx::Array::make();
  lx::dimArray(*m, 2, false);
  lx::dimArray(*m, 3, true);
  ASSERT_EQ(m->items.size(), 2u);
  EXPECT_EQ(m->items[1].array()->items.size(), 3u);
  lx::LxValue slot(lx::Variant{m});
  lx::Variant one[] = {lx::Variant::int32(1)};
  EXPECT_EQ(lx::getElement(one, &slot), nullptr);  // a row is no slot
  lx::Variant three[] = {lx::Variant::int32(1), lx::Variant::int32(2), lx::Variant::int32(0)};
  EXPECT_EQ(lx::getElement(three, &slot), nullptr);
  lx::Variant two[] = {lx::Variant::int32(1), lx::Variant::int32(2)};
  EXPECT_NE(lx::getElement(two, &slot), nullptr);
}

TEST(Elements, ANonArrayAnswersANewEmptySlot) {
  lx::LxValue scalar(lx::Variant::int32(4));
  lx::Variant index[] = {lx::Variant::int32(0)};
  auto element = lx::getElement(index, &scalar);
  ASSERT_NE(element, nullptr);
  EXPECT_EQ(element->type(), lx::ValueKind::Empty);
  EXPECT_NE(lx::getElement(index, nullptr), nullptr);
}

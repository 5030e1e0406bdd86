#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <string>

#include "lxbasic/text.h"
#include "lxbasic/value.h"
#include "lxbasic/variant.h"

using lx::Array;
using lx::Number;
using lx::UString;
using lx::ValueKind;
using lx::Variant;

namespace {

class Plain final : public lx::Object {
 public:
  std::string className() const override { return "Plain"; }
};

// Switches the process time zone for one test and restores it afterwards.
class ScopedTimeZone {
 public:
  explicit ScopedTimeZone(const char* tz) {
    const char* old = std::getenv("TZ");
    had_ = old != nullptr;
    if (had_) old_ = old;
    setenv("TZ", tz, 1);
    tzset();
  }
  ~ScopedTimeZone() {
    if (had_) {
      setenv("TZ", old_.c_str(), 1);
    } else {
      unsetenv("TZ");
    }
    tzset();
  }

 private:
  bool had_ = false;
  std::string old_;
};

}  // namespace

TEST(VariantKind, DerivedFromTheHeldValue) {
  EXPECT_EQ(Variant().kind(), ValueKind::Empty);
  EXPECT_EQ(Variant(u"").kind(), ValueKind::String);
  EXPECT_EQ(Variant::boolean(true).kind(), ValueKind::Number);
  EXPECT_EQ(Variant::real(1.5).kind(), ValueKind::Number);
  EXPECT_EQ(Variant::int64(1).kind(), ValueKind::Number);
  EXPECT_EQ(Variant(Array::make()).kind(), ValueKind::Array);
  EXPECT_EQ(Variant::date(0).kind(), ValueKind::Date);
  EXPECT_EQ(Variant(lx::nullObject()).kind(), ValueKind::Object);
  EXPECT_EQ(Variant(std::make_shared<lx::Dictionary>()).kind(), ValueKind::Object);
  EXPECT_EQ(Variant(lx::LxValue::make()).kind(), ValueKind::Object);
  EXPECT_EQ(static_cast<int>(ValueKind::Date), 5);
}

TEST(VariantKind, NullPointersAreEmpty) {
  EXPECT_TRUE(Variant(lx::ObjectRef()).isEmpty());
  EXPECT_TRUE(Variant(lx::ArrayRef()).isEmpty());
  EXPECT_TRUE(Variant(std::shared_ptr<Plain>()).isEmpty());
}

TEST(VariantKind, ClassificationHelpers) {
  Variant dict(std::make_shared<lx::Dictionary>());
  EXPECT_TRUE(lx::isDictionary(dict));
  EXPECT_FALSE(lx::isDictionary(Variant(lx::nullObject())));
  EXPECT_FALSE(lx::isDictionary(Variant()));
  EXPECT_TRUE(lx::isString(Variant(u"x")));
  EXPECT_FALSE(lx::isString(Variant()));
  EXPECT_TRUE(lx::isNumber(Variant::boolean(false)));
  EXPECT_TRUE(lx::isArray(Variant(Array::make())));
  EXPECT_TRUE(lx::isDate(Variant::date(1)));
  EXPECT_EQ(Variant(lx::LxValue::make()).objectAs<lx::LxValue>() != nullptr, true);
  EXPECT_EQ(Variant(lx::nullObject()).objectAs<lx::LxValue>(), nullptr);
  EXPECT_EQ(Variant(u"x").objectAs<lx::LxValue>(), nullptr);
}

TEST(VariantText, Numbers) {
  EXPECT_EQ(lx::toText(Variant::int32(-5)), u"-5");
  EXPECT_EQ(lx::toText(Variant::int32(INT32_MIN)), u"-2147483648");
  EXPECT_EQ(lx::toText(Variant::int64(INT64_MIN)), u"-9223372036854775808");
  EXPECT_EQ(lx::toText(Variant::boolean(true)), u"1");
  EXPECT_EQ(lx::toText(Variant::boolean(false)), u"0");
  EXPECT_EQ(lx::toText(Variant::real(0.1)), u"0.1");
  EXPECT_EQ(lx::toText(Variant::real(2.5)), u"2.5");
  EXPECT_EQ(lx::toText(Variant::real(-0.0)), u"-0");
  EXPECT_EQ(lx::toText(Variant::real(3.0)), u"3");
  EXPECT_EQ(lx::toText(Variant::real(1.0 / 3)), u"0.3333333333333333");
  EXPECT_EQ(lx::toText(Variant::real(0.1 + 0.2)), u"0.30000000000000004");
  EXPECT_EQ(lx::toText(Variant::real(1e20)), u"1e+20");
  EXPECT_EQ(lx::toText(Variant::real(-1.5e300)), u"-1.5e+300");
  EXPECT_EQ(lx::toText(Variant::real(5e-324)), u"5e-324");
}

TEST(VariantText, IntegralDoublesStayPlainUpToSixteenDigits) {
  EXPECT_EQ(lx::toText(Variant::real(1e6)), u"1000000");
  EXPECT_EQ(lx::toText(Variant::real(123456789.0)), u"123456789");
  EXPECT_EQ(lx::toText(Variant::real(1e15)), u"1000000000000000");
  EXPECT_EQ(lx::toText(Variant::real(1e16)), u"1e+16");
  EXPECT_EQ(lx::toText(Variant::real(0.0001)), u"0.0001");
  EXPECT_EQ(lx::toText(Variant::real(0.00001)), u"1e-05");
  EXPECT_EQ(lx::toText(Variant::real(-0.00012)), u"-0.00012");
}

TEST(VariantText, NonFiniteDoubles) {
  EXPECT_EQ(lx::toText(Variant::real(std::numeric_limits<double>::infinity())), u"inf");
  EXPECT_EQ(lx::toText(Variant::real(-std::numeric_limits<double>::infinity())), u"-inf");
  EXPECT_EQ(lx::toText(Variant::real(std::nan(""))), u"nan");
}

TEST(VariantText, EmptyNullAndObjects) {
  EXPECT_EQ(lx::toText(Variant()), u"(null)");
  EXPECT_EQ(lx::toText(Variant(lx::nullObject())), u"<null>");
  EXPECT_EQ(lx::toText(Variant(u"as is")), u"as is");
  auto dict = std::make_shared<lx::Dictionary>();
  dict->entries.push_back({u"a", Variant::int32(1)});
  EXPECT_EQ(lx::toText(Variant(dict)), u"{a = 1; }");
  auto plain = std::make_shared<Plain>();
  UString text = lx::toText(Variant(plain));
  EXPECT_EQ(text.rfind(u"<Plain: 0x", 0), 0u) << lx::toUtf8(text);
  EXPECT_EQ(text.back(), u'>');
}

TEST(VariantText, Arrays) {
  EXPECT_EQ(lx::toText(Variant(Array::make())), u"()");
  EXPECT_EQ(lx::toText(Variant(Array::make({Variant::int32(1), Variant::int32(2)}))), u"(1, 2)");
  auto nested = Array::make({Variant(u"a"), Variant(Array::make({Variant::real(0.5)})),
                             Variant(Array::make()), Variant(), Variant(lx::nullObject())});
  EXPECT_EQ(lx::toText(Variant(nested)), u"(a, (0.5), (), (null), <null>)");
}

TEST(VariantText, ArraysOfSlotsPrintTheirValues) {
  auto row = Array::make({Variant(lx::LxValue::make(Variant::int32(1))),
                          Variant(lx::LxValue::make()), Variant(lx::LxValue::make(Variant(u"x")))});
  EXPECT_EQ(lx::toText(Variant(row)), u"(1, , x)");
}

TEST(VariantText, DatesInLocalTime) {
  EXPECT_EQ(lx::toText(Variant::date(0)), u"1970-01-01 00:00:00 +0000");
  EXPECT_EQ(lx::toText(Variant::date(-1)), u"1969-12-31 23:59:59 +0000");
  EXPECT_EQ(lx::toText(Variant::date(0.999)), u"1970-01-01 00:00:00 +0000");
  EXPECT_EQ(lx::toText(Variant::date(-0.5)), u"1969-12-31 23:59:59 +0000");
  EXPECT_EQ(lx::toText(Variant::date(951782400)), u"2000-02-29 00:00:00 +0000");
  EXPECT_EQ(lx::toText(Variant::date(-2209161600.0)), u"1899-12-30 00:00:00 +0000");
  EXPECT_EQ(lx::toText(Variant::date(std::nan(""))), u"(invalid date)");
  EXPECT_EQ(lx::toText(Variant::date(1e300)), u"(invalid date)");
  {
    ScopedTimeZone east("XYZ-5:30");
    EXPECT_EQ(lx::toText(Variant::date(0)), u"1970-01-01 05:30:00 +0530");
  }
  {
    ScopedTimeZone west("XYZ+3");
    EXPECT_EQ(lx::toText(Variant::date(0)), u"1969-12-31 21:00:00 -0300");
  }
}

TEST(NumberConversion, TruncationAndWidth) {
  EXPECT_EQ(Number::int64(4294967297LL).toInt32(), 1);
  EXPECT_EQ(Number::int64(-1).toInt32(), -1);
  EXPECT_EQ(Number::real(2.9).toInt32(), 2);
  EXPECT_EQ(Number::real(-2.9).toInt32(), -2);
  EXPECT_EQ(Number::real(3e9).toInt32(), INT32_MIN);
  EXPECT_EQ(Number::real(std::nan("")).toInt32(), INT32_MIN);
  EXPECT_EQ(Number::real(2147483647.9).toInt32(), INT32_MAX);
  EXPECT_EQ(Number::real(1e19).toInt64(), INT64_MIN);
  EXPECT_EQ(Number::real(-2.5).toInt64(), -2);
  EXPECT_EQ(Number::boolean(true).toInt32(), 1);
  EXPECT_DOUBLE_EQ(Number::int64(1LL << 40).toDouble(), 1099511627776.0);
  EXPECT_TRUE(Number::real(0.1).toBool());
  EXPECT_FALSE(Number::real(0.0).toBool());
  EXPECT_FALSE(Number::real(-0.0).toBool());
  EXPECT_TRUE(Number::int64(1LL << 40).toBool());
}

TEST(NumberConversion, EqualityAcrossTypes) {
  EXPECT_TRUE(Number::boolean(true).equals(Number::int32(1)));
  EXPECT_TRUE(Number::int32(1).equals(Number::real(1.0)));
  EXPECT_TRUE(Number::int64(5).equals(Number::int32(5)));
  EXPECT_FALSE(Number::real(0.5).equals(Number::int32(0)));
  EXPECT_FALSE(Number::real(std::nan("")).equals(Number::real(std::nan(""))));
  EXPECT_TRUE(Number::real(0.0).equals(Number::real(-0.0)));
}

TEST(ValuesEqual, PlatformEquality) {
  EXPECT_FALSE(lx::valuesEqual(Variant(), Variant()));
  EXPECT_TRUE(lx::valuesEqual(Variant(u"abc"), Variant(u"abc")));
  EXPECT_FALSE(lx::valuesEqual(Variant(u"abc"), Variant(u"ABC")));
  EXPECT_FALSE(lx::valuesEqual(Variant(u"1"), Variant::int32(1)));
  EXPECT_TRUE(lx::valuesEqual(Variant::int32(1), Variant::real(1.0)));
  EXPECT_TRUE(lx::valuesEqual(Variant::date(10), Variant::date(10)));
  EXPECT_FALSE(lx::valuesEqual(Variant::date(10), Variant::real(10)));
  EXPECT_TRUE(lx::valuesEqual(Variant(lx::nullObject()), Variant(lx::nullObject())));
  EXPECT_FALSE(
      lx::valuesEqual(Variant(std::make_shared<Plain>()), Variant(std::make_shared<Plain>())));
}

TEST(ValuesEqual, ArraysElementByElement) {
  auto a = Array::make({Variant::int32(1), Variant(Array::make({Variant(u"x")}))});
  auto b = Array::make({Variant::real(1.0), Variant(Array::make({Variant(u"x")}))});
  auto c = Array::make({Variant::int32(1)});
  EXPECT_TRUE(lx::valuesEqual(Variant(a), Variant(b)));
  EXPECT_FALSE(lx::valuesEqual(Variant(a), Variant(c)));
  EXPECT_TRUE(lx::valuesEqual(Variant(a), Variant(a)));
  EXPECT_TRUE(lx::valuesEqual(Variant(Array::make()), Variant(Array::make())));
  // Empty elements are unequal even to themselves, but the same array is itself.
  auto holes = Array::make({Variant()});
  EXPECT_FALSE(lx::valuesEqual(Variant(holes), Variant(Array::make({Variant()}))));
  EXPECT_TRUE(lx::valuesEqual(Variant(holes), Variant(holes)));
}

TEST(ValuesEqual, SlotsCompareTheirData) {
  auto slot = lx::LxValue::make(Variant(u"abc"));
  EXPECT_TRUE(lx::valuesEqual(Variant(slot), Variant(u"abc")));
  EXPECT_TRUE(lx::valuesEqual(Variant(slot), Variant(lx::LxValue::make(Variant(u"abc")))));
  EXPECT_FALSE(lx::valuesEqual(Variant(lx::LxValue::make()), Variant(lx::LxValue::make())));
}

TEST(VariantStrings, CopiesShareText) {
  Variant a(u"shared");
  Variant b = a;
  EXPECT_EQ(&a.string(), &b.string());
  Variant c = Variant::fromUtf8("h\xC3\xA9");
  EXPECT_EQ(c.string(), u"h\u00E9");
}

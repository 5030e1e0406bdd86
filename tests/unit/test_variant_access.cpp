// Reading values safely: checked accessors, as<T>() and from(), unsigned 64-bit numbers.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "lxbasic/exceptions.h"
#include "lxbasic/text.h"
#include "lxbasic/variant.h"
#include "support/run.h"

using lx::Number;
using lx::Variant;

TEST(CheckedAccessors, WrongKindThrowsInsteadOfCrashing) {
  using Reader = void (*)(const Variant&);
  const std::pair<lx::ValueKind, Reader> readers[] = {
      {lx::ValueKind::String, [](const Variant& v) { (void)v.string(); }},
      {lx::ValueKind::Number, [](const Variant& v) { (void)v.number(); }},
      {lx::ValueKind::Object, [](const Variant& v) { (void)v.object(); }},
      {lx::ValueKind::Array, [](const Variant& v) { (void)v.array(); }},
      {lx::ValueKind::Date, [](const Variant& v) { (void)v.dateSeconds(); }},
  };
  const Variant values[] = {Variant(),
                            Variant::int32(3),
                            Variant(u"x"),
                            Variant(lx::nullObject()),
                            Variant(lx::Array::make()),
                            Variant::date(0)};
  for (const Variant& v : values) {
    for (const auto& [kind, read] : readers) {
      if (kind == v.kind()) {
        EXPECT_NO_THROW(read(v));
      } else {
        EXPECT_THROW(read(v), lx::TypeMismatchException) << lx::toUtf8(lx::toText(v));
      }
    }
  }
  std::string message;
  try {
    (void)Variant::int32(3).string();
  } catch (const lx::TypeMismatchException& e) {
    message = e.what();
  }
  EXPECT_EQ(message, "a value of kind Number was read as String");
}

TEST(AsOptional, AnswersOnlyWhatTheValueHolds) {
  EXPECT_EQ(Variant(u"héllo").as<std::string>(), "h\xc3\xa9llo");
  EXPECT_EQ(Variant(u"abc").as<std::u16string>(), u"abc");
  EXPECT_EQ(Variant(u"12").as<int64_t>(), std::nullopt);  // text is never parsed
  EXPECT_EQ(Variant::int32(3).as<std::string>(), std::nullopt);
  EXPECT_EQ(Variant::int64(5000000000LL).as<int64_t>(), 5000000000LL);
  EXPECT_EQ(Variant::int64(5000000000LL).as<int32_t>(), std::nullopt);
  EXPECT_EQ(Variant::int32(-1).as<uint32_t>(), std::nullopt);
  EXPECT_EQ(Variant::int32(300).as<uint8_t>(), std::nullopt);
  EXPECT_EQ(Variant::real(2.0).as<int>(), 2);
  EXPECT_EQ(Variant::real(2.5).as<int>(), std::nullopt);
  EXPECT_EQ(Variant::real(1e300).as<int64_t>(), std::nullopt);
  EXPECT_EQ(Variant::uint64(UINT64_MAX).as<uint64_t>(), UINT64_MAX);
  EXPECT_EQ(Variant::uint64(UINT64_MAX).as<int64_t>(), std::nullopt);
  EXPECT_EQ(Variant().as<bool>(), std::nullopt);
}

TEST(FromAndBack, StandardTypesRoundTrip) {
  EXPECT_EQ(Variant::from(std::string("abc")).as<std::string>(), "abc");
  EXPECT_EQ(Variant::from(std::u16string(u"abc")).as<std::u16string>(), u"abc");
  EXPECT_EQ(Variant::from(int64_t{-6000000000}).as<int64_t>(), -6000000000);
  EXPECT_EQ(Variant::from(uint64_t{UINT64_MAX}).as<uint64_t>(), UINT64_MAX);
  EXPECT_EQ(Variant::from(uint32_t{4000000000u}).as<int64_t>(), 4000000000);

  std::vector<Variant> items{Variant::int32(1), Variant(u"two")};
  auto back = Variant::from(items).as<std::vector<Variant>>();
  ASSERT_TRUE(back.has_value());
  ASSERT_EQ(back->size(), 2u);
  EXPECT_EQ(lx::toText((*back)[1]), u"two");

  using Clock = std::chrono::system_clock;
  const Clock::time_point when = Clock::from_time_t(1700000000) + std::chrono::milliseconds(250);
  Variant date = Variant::from(when);
  EXPECT_TRUE(date.isDate());
  EXPECT_DOUBLE_EQ(date.dateSeconds(), 1700000000.25);
  EXPECT_EQ(date.as<Clock::time_point>(), when);
}

TEST(UnsignedNumbers, KeepEveryDigitAndCompareBySign) {
  const Number top = Number::uint64(UINT64_MAX);
  EXPECT_EQ(top.text(), u"18446744073709551615");
  EXPECT_EQ(top.toInt32(), -1);  // low 32 bits, as any integer
  EXPECT_DOUBLE_EQ(top.toDouble(), 18446744073709551616.0);
  EXPECT_FALSE(top.equals(Number::int64(-1)));
  EXPECT_TRUE(top.equals(Number::uint64(UINT64_MAX)));
  EXPECT_EQ(Number::uint64(5).type(), Number::Type::Int64);  // small values stay signed
  EXPECT_TRUE(Number::uint64(5).equals(Number::int32(5)));
}

TEST(UnsignedNumbers, RadixLiteralsAboveInt64KeepTheirValue) {
  const lxtest::TextCase cases[] = {
      {u"&HFFFFFFFFFFFFFFFF", u"18446744073709551615"},
      {u"&H8000000000000000", u"9223372036854775808"},
      {u"&H7FFFFFFFFFFFFFFF", u"9223372036854775807"},
      {u"&o1777777777777777777777", u"18446744073709551615"},
      {u"&HFF", u"255"},
      {u"&HFFFFFFFFFFFFFFFF + 0", u"1.8446744073709552e+19"},  // arithmetic is in doubles
      {u"VarType(&HFFFFFFFFFFFFFFFF)", u"2"},
  };
  lxtest::expectTexts(cases, [](std::u16string_view expr) {
    std::u16string line = u"RESULT = ";
    line += expr;
    return lxtest::run(line);
  });
}

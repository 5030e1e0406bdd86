// String built-ins called directly: positions and lengths in UTF-16 code units, 1-based for
// scripts, with literal and case-insensitive comparison.
#include "lxbasic/exceptions.h"
#include "support/builtin_values.h"

namespace {

using lx::Variant;
using namespace lxtest;

const char16_t* kSmile = u"\U0001F600";  // outside the BMP: two code units

int32_t pos(const Variant& v) {
  return static_cast<int32_t>(num(v));
}

TEST(StringsInStr, ForwardSearchWithStart) {
  EXPECT_EQ(pos(call(u"InStr", {u"hello", u"l"})), 3);
  EXPECT_EQ(pos(call(u"InStr", {I(4), u"hello", u"l"})), 4);
  EXPECT_EQ(pos(call(u"InStr", {I(6), u"hello", u"l"})), 0);
  EXPECT_EQ(pos(call(u"InStr", {I(7), u"hello", u"l"})), 0);
  EXPECT_EQ(pos(call(u"InStr", {I(-5), u"hello", u"h"})), 1);
  EXPECT_EQ(pos(call(u"InStr", {u"hello", u"xyz"})), 0);
}

TEST(StringsInStr, EmptyTextsAndTheZeroBasedStartQuirk) {
  EXPECT_EQ(pos(call(u"InStr", {u"", u"a"})), 0);
  EXPECT_EQ(pos(call(u"InStr", {u"abc", u""})), 0);
  EXPECT_EQ(pos(call(u"InStr", {I(3), u"abc", u""})), 2);
  EXPECT_EQ(pos(call(u"InStr", {I(9), u"abc", u""})), 8);
}

TEST(StringsInStr, CompareOneIgnoresCaseOthersAreLiteral) {
  EXPECT_EQ(pos(call(u"InStr", {I(1), u"Hello", u"h", I(1)})), 1);
  EXPECT_EQ(pos(call(u"InStr", {I(1), u"Hello", u"h", I(0)})), 0);
  EXPECT_EQ(pos(call(u"InStr", {I(1), u"Hello", u"h", I(2)})), 0);
  EXPECT_EQ(pos(call(u"InStr", {I(1), u"Hello", u"h", I(-1)})), 0);
  EXPECT_EQ(pos(call(u"InStr", {I(1), u"Hello", u"h", u"1"})), 1);
}

TEST(StringsInStr, NumbersAreSearchedAsTheirText) {
  EXPECT_EQ(pos(call(u"InStr", {R(12.5), u"."})), 3);
  EXPECT_EQ(pos(call(u"InStr", {kNull, u"null"})), 2);  // "<null>"
}

TEST(StringsInStr, FailureAnswersMinusOne) {
  EXPECT_EQ(pos(call(u"InStr", {kArray, u"hello", u"l"})), -1);
  EXPECT_EQ(pos(call(u"InStr", {I(1), u"hello", u"l", kNull})), -1);
}

TEST(StringsInStr, CaseFoldingKeepsOriginalPositions) {
  // "Straße": ß folds to "ss"; the match is reported where ß stands.
  EXPECT_EQ(pos(call(u"InStr", {I(1), u"Straße!", u"SS", I(1)})), 5);
  EXPECT_EQ(pos(call(u"InStr", {I(1), u"Straße!", u"!", I(1)})), 7);
  // A search text may not match half of one character's folding.
  EXPECT_EQ(pos(call(u"InStr", {I(1), u"Straße", u"s", I(1)})), 1);
  EXPECT_EQ(pos(call(u"InStr", {I(2), u"Straße", u"s", I(1)})), 0);
  // Accents are not ignored.
  EXPECT_EQ(pos(call(u"InStr", {I(1), u"resume", u"RÉSUMÉ", I(1)})), 0);
  EXPECT_EQ(pos(call(u"InStr", {I(1), u"xrÉsumé", u"RéSUMÉ", I(1)})), 2);
  EXPECT_EQ(pos(call(u"InStr", {I(1), u"ÀÉ", u"é", I(0)})), 0);
}

TEST(StringsInStr, CharactersOutsideTheBmpCountTwoUnits) {
  std::u16string t = std::u16string(u"a") + kSmile + u"b";
  EXPECT_EQ(pos(call(u"InStr", {t, u"b"})), 4);
  EXPECT_EQ(pos(call(u"InStr", {I(1), t, u"B", I(1)})), 4);
  EXPECT_EQ(pos(call(u"InStr", {t, kSmile})), 2);
  // Deseret capital letter LONG I folds to its small form outside the BMP too.
  EXPECT_EQ(pos(call(u"InStr", {I(1), u"x\U00010400", u"\U00010428", I(1)})), 2);
}

TEST(StringsInStrRev, DefaultRangeLeavesOutTheLastUnit) {
  EXPECT_EQ(pos(call(u"InStrRev", {u"abcabc", u"c"})), 3);
  EXPECT_EQ(pos(call(u"InStrRev", {u"abc", u"c"})), 0);
  EXPECT_EQ(pos(call(u"InStrRev", {u"abcabc", u"c", I(7)})), 6);
  EXPECT_EQ(pos(call(u"InStrRev", {u"abcabc", u"bc", I(6)})), 2);  // must lie wholly inside
  EXPECT_EQ(pos(call(u"InStrRev", {u"abcabc", u"a", I(8)})), 0);
  EXPECT_EQ(pos(call(u"InStrRev", {u"abc", u"", I(3)})), 2);
  EXPECT_EQ(pos(call(u"InStrRev", {u"", u"a"})), 0);
}

TEST(StringsInStrRev, CompareAndFailure) {
  EXPECT_EQ(pos(call(u"InStrRev", {u"ABCABC", u"b", I(7), I(1)})), 5);
  EXPECT_EQ(pos(call(u"InStrRev", {u"ABCABC", u"b", I(7), I(0)})), 0);
  EXPECT_EQ(pos(call(u"InStrRev", {u"abc", u"a", kNull})), -1);
}

TEST(StringsCutting, Left) {
  EXPECT_EQ(text(call(u"Left", {u"abc", I(0)})), u"");
  EXPECT_EQ(text(call(u"Left", {u"abc", I(-2)})), u"");
  EXPECT_EQ(text(call(u"Left", {u"abc", I(2)})), u"ab");
  EXPECT_EQ(text(call(u"Left", {u"abc", I(3)})), u"abc");
  EXPECT_EQ(text(call(u"Left", {u"abc", I(4)})), u"");  // beyond the length: fails
  EXPECT_EQ(text(call(u"Left", {I(12345), I(2)})), u"12");
  EXPECT_EQ(text(call(u"Left", {u"abc", kNull})), u"");
}

TEST(StringsCutting, RightUsesTheArgumentsOwnLength) {
  EXPECT_EQ(text(call(u"Right", {u"abc", I(2)})), u"bc");
  EXPECT_EQ(text(call(u"Right", {u"abc", I(3)})), u"abc");
  EXPECT_EQ(text(call(u"Right", {u"abc", I(4)})), u"");
  EXPECT_EQ(text(call(u"Right", {u"abc", I(-1)})), u"");
  EXPECT_EQ(text(call(u"Right", {I(12345), I(2)})), u"");  // a Number has no length
  EXPECT_EQ(text(call(u"Right", {kNull, I(0)})), u"");
  EXPECT_EQ(text(call(u"Right", {u"abc", I(0)})), u"");
}

TEST(StringsCutting, Mid) {
  EXPECT_EQ(text(call(u"Mid", {u"abcdef", I(2), I(3)})), u"bcd");
  EXPECT_EQ(text(call(u"Mid", {u"abcdef", I(0), I(2)})), u"ab");
  EXPECT_EQ(text(call(u"Mid", {u"abcdef", I(5)})), u"ef");
  EXPECT_EQ(text(call(u"Mid", {u"abcdef", I(5), I(99)})), u"ef");
  EXPECT_EQ(text(call(u"Mid", {u"abcdef", I(2), I(-1)})), u"bcdef");
  EXPECT_EQ(text(call(u"Mid", {u"abc", I(4)})), u"");
  EXPECT_EQ(text(call(u"Mid", {u"abc", I(5)})), u"");
  EXPECT_EQ(text(call(u"Mid", {u"abc", I(1), I(0)})), u"");
  EXPECT_EQ(text(call(u"Mid", {u"abc", kNull})), u"");
}

TEST(StringsLength, CountsCodeUnitsOfTheText) {
  EXPECT_EQ(pos(call(u"Len", {u"abc"})), 3);
  EXPECT_EQ(pos(call(u"Len", {R(12.5)})), 4);
  EXPECT_EQ(pos(call(u"Len", {kNull})), 6);
  EXPECT_EQ(pos(call(u"Len", {u"é"})), 1);
  EXPECT_EQ(pos(call(u"Len", {kSmile})), 2);
}

TEST(StringsCase, FullUnicodeMapping) {
  EXPECT_EQ(text(call(u"UCase", {u"straße"})), u"STRASSE");
  EXPECT_EQ(text(call(u"UCase", {u"élan"})), u"ÉLAN");
  EXPECT_EQ(text(call(u"LCase", {u"ÉLAN Abc"})), u"élan abc");
  EXPECT_EQ(text(call(u"UCase", {kNull})), u"<NULL>");
  EXPECT_EQ(text(call(u"LCase", {u"\U00010400"})), u"\U00010428");
}

TEST(StringsTrim, LTrimAndRTrimRemoveOnlyFourBlanks) {
  EXPECT_EQ(text(call(u"LTrim", {u" \t\r\nab "})), u"ab ");
  EXPECT_EQ(text(call(u"RTrim", {u" ab \t\r\n"})), u" ab");
  EXPECT_EQ(text(call(u"LTrim", {u"\u00A0ab"})), u"\u00A0ab");
  EXPECT_EQ(text(call(u"RTrim", {u"ab\v\f"})), u"ab\v\f");
  EXPECT_EQ(text(call(u"LTrim", {I(5)})), u"5");
  EXPECT_EQ(text(call(u"LTrim", {u"   "})), u"");
}

TEST(StringsTrim, TrimUsesTheWhiteSpaceSetOnTheValueItself) {
  EXPECT_EQ(text(call(u"Trim", {u"\u00A0\v ab\u2028\u0085"})), u"ab");
  EXPECT_EQ(text(call(u"Trim", {u" a b "})), u"a b");
  EXPECT_TRUE(call(u"Trim", {Variant()}).isEmpty());
  EXPECT_THROW(call(u"Trim", {I(5)}), lx::Exception);
  EXPECT_THROW(call(u"Trim", {kNull}), lx::Exception);
  EXPECT_THROW(call(u"Trim", {kArray}), lx::Exception);
}

TEST(StringsBuilding, SpaceAndString) {
  EXPECT_EQ(text(call(u"Space", {I(3)})), u"   ");
  EXPECT_EQ(text(call(u"Space", {I(0)})), u"");
  EXPECT_EQ(text(call(u"Space", {I(-3)})), u"");
  EXPECT_EQ(text(call(u"Space", {kNull})), u"");
  EXPECT_EQ(text(call(u"String", {I(3), u"xyz"})), u"xxx");
  EXPECT_EQ(text(call(u"String", {I(2), I(7)})), u"77");
  EXPECT_EQ(text(call(u"String", {I(0), u"x"})), u"");
  EXPECT_EQ(text(call(u"String", {I(3), u""})), u"");
  // Only the first code unit of a pair is repeated.
  EXPECT_EQ(text(call(u"String", {I(2), kSmile})), std::u16string(2, u'\xD83D'));
}

TEST(StringsBuilding, HugeRequestsFailInsteadOfExhaustingMemory) {
  EXPECT_EQ(text(call(u"Space", {I(2147483647)})), u"");
  EXPECT_EQ(text(call(u"String", {I(2000000000), u"x"})), u"");
}

TEST(StringsBuilding, ConcatOfTwoToTenArguments) {
  EXPECT_EQ(text(call(u"Concat", {u"a", I(1), u"b"})), u"a1b");
  EXPECT_EQ(text(call(u"Concat", {kNull, u"x"})), u"<null>x");
  EXPECT_EQ(text(call(u"Concat", {Variant(), u"x"})), u"(null)x");
  EXPECT_EQ(text(call(u"Concat", {u"1", u"2", u"3", u"4", u"5", u"6", u"7", u"8", u"9", u"0"})),
            u"1234567890");
  EXPECT_FALSE(lxtest::exists(u"Concat", 1));
  EXPECT_FALSE(lxtest::exists(u"Concat", 11));
  for (int32_t n = 2; n <= 10; ++n) EXPECT_TRUE(lxtest::exists(u"Concat", n)) << n;
}

TEST(StringsReverse, ReversesCodeUnits) {
  EXPECT_EQ(text(call(u"StrReverse", {u"abc"})), u"cba");
  EXPECT_EQ(text(call(u"StrReverse", {u""})), u"");
  EXPECT_EQ(text(call(u"StrReverse", {R(1.5)})), u"5.1");
  EXPECT_EQ(text(call(u"StrReverse", {kSmile})), u"\xDE00\xD83D");
}

TEST(StringsReplace, AllOccurrencesFromTheStart) {
  EXPECT_EQ(text(call(u"Replace", {u"a-b-c", u"-", u"+"})), u"a+b+c");
  EXPECT_EQ(text(call(u"Replace", {u"ABab", u"a", u"x", I(1), I(1)})), u"xBxb");
  EXPECT_EQ(text(call(u"Replace", {u"ABab", u"a", u"x", I(1), I(0)})), u"ABxb");
  EXPECT_EQ(text(call(u"Replace", {u"aaa", u"aa", u"b"})), u"ba");  // non-overlapping
  EXPECT_EQ(text(call(u"Replace", {u"abc", u"", u"x"})), u"abc");
  EXPECT_EQ(text(call(u"Replace", {u"abc", u"b", u""})), u"ac");
  EXPECT_EQ(text(call(u"Replace", {u"abc", u"b", u"x", I(-4)})), u"axc");
}

TEST(StringsReplace, StartAfterTheFirstUnitGivesEmptyText) {
  EXPECT_EQ(text(call(u"Replace", {u"aaa", u"a", u"b", I(2)})), u"");
  EXPECT_EQ(text(call(u"Replace", {u"aaa", u"x", u"b", I(3)})), u"");
  EXPECT_EQ(text(call(u"Replace", {u"aaa", u"a", u"b", kNull})), u"");
}

TEST(StringsReplace, CaseInsensitiveWithExpandingFolds) {
  EXPECT_EQ(text(call(u"Replace", {u"Straße und STRASSE", u"ss", u"_", I(1), I(1)})),
            u"Stra_e und STRA_E");
  EXPECT_EQ(text(call(u"Replace", {u"ÉtÉ été", u"é", u"e", I(1), I(1)})), u"ete ete");
}

TEST(StringsStrComp, LiteralAndCaseInsensitive) {
  EXPECT_EQ(pos(call(u"StrComp", {u"a", u"B"})), 1);
  EXPECT_EQ(pos(call(u"StrComp", {u"a", u"B", I(1)})), -1);
  EXPECT_EQ(pos(call(u"StrComp", {u"abc", u"abc"})), 0);
  EXPECT_EQ(pos(call(u"StrComp", {u"ABC", u"abc", I(1)})), 0);
  EXPECT_EQ(pos(call(u"StrComp", {u"STRASSE", u"straße", I(1)})), 0);
  EXPECT_EQ(pos(call(u"StrComp", {u"É", u"é", I(1)})), 0);
  EXPECT_NE(pos(call(u"StrComp", {u"e", u"é", I(1)})), 0);
  EXPECT_EQ(pos(call(u"StrComp", {u"ab", u"abc"})), -1);
  EXPECT_EQ(pos(call(u"StrComp", {kNull, u"<null>"})), 0);
}

TEST(StringsStrComp, MissingObjectOrFailureGivesEmpty) {
  EXPECT_TRUE(call(u"StrComp", {Variant(), u"a"}).isEmpty());
  EXPECT_TRUE(call(u"StrComp", {u"a", Variant(), I(1)}).isEmpty());
  EXPECT_TRUE(call(u"StrComp", {u"a", u"b", kArray}).isEmpty());
}

TEST(StringsArities, OnlyTheListedForms) {
  EXPECT_FALSE(exists(u"InStr", 5));
  EXPECT_FALSE(exists(u"Replace", 2));
  EXPECT_TRUE(exists(u"replace", 5));
}

}  // namespace

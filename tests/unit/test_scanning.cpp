#include <gtest/gtest.h>

#include <set>
#include <thread>
#include <vector>

#include "foundation/scanning.h"
#include "lxbasic/text.h"

using lx::UString;

TEST(PosWithNeedle, SkipsLiteralsAndNestedCalls) {
  EXPECT_EQ(lx::posWithNeedle(u",", u"f(a,b),c"), 6);
  EXPECT_EQ(lx::posWithNeedle(u",", u"\"a,b\",c"), 5);
  EXPECT_EQ(lx::posWithNeedle(u",", u"a \"\"\"\" ,b"), 7);  // doubled quotes keep in step
  EXPECT_EQ(lx::posWithNeedle(u"=", u"x = 1"), 2);
  EXPECT_EQ(lx::posWithNeedle(u"x", u"X"), -1);  // exact code units
  EXPECT_EQ(lx::posWithNeedle(u",", u""), -1);
  EXPECT_EQ(lx::posWithNeedle(u"\"", u"a\"b\""), -1);  // quotes only switch the state
}

TEST(PosWithNeedle, NeedleMustBeOneCodeUnit) {
  EXPECT_EQ(lx::posWithNeedle(u"", u"abc"), -1);
  EXPECT_EQ(lx::posWithNeedle(u"ab", u"abc"), -1);
  EXPECT_EQ(lx::posWithNeedle(u"", u"abc", 0), -1);
  EXPECT_EQ(lx::posWithNeedle(u"ab", u"abc", 0), -1);
  EXPECT_EQ(lx::posLastWithNeedle(u"ab", u"abab"), -1);
}

TEST(PosWithNeedle, BracketNeedleIgnoresDepth) {
  EXPECT_EQ(lx::posWithNeedle(u")", u"(a(b))"), 4);
  EXPECT_EQ(lx::posWithNeedle(u"(", u"\"(\"x(y)"), 4);
  EXPECT_EQ(lx::posWithNeedle(u")", u"a)b)", 2), 3);
  EXPECT_EQ(lx::posLastWithNeedle(u")", u"(a(b))\")\""), 5);
}

TEST(PosWithNeedle, UnmatchedClosingBracketHidesTheRest) {
  EXPECT_EQ(lx::posWithNeedle(u",", u"a),b,c"), -1);
  EXPECT_EQ(lx::posLastWithNeedle(u",", u"a,b),c"), 1);
  EXPECT_EQ(lx::posWithNeedle(u",", u"(a,b"), -1);
}

TEST(PosWithNeedle, StartKeepsStateFromLineStart) {
  // Starting inside a literal must not treat its closing quote as an opening one.
  EXPECT_EQ(lx::posWithNeedle(u",", u"\"a,b\",c", 2), 5);
  EXPECT_EQ(lx::posWithNeedle(u",", u"f(a,b),c", 3), 6);
  EXPECT_EQ(lx::posWithNeedle(u",", u"a,b,c", 1), 1);
  EXPECT_EQ(lx::posWithNeedle(u",", u"a,b,c", 2), 3);
  EXPECT_EQ(lx::posWithNeedle(u",", u"a,b,c", 4), -1);
  EXPECT_EQ(lx::posWithNeedle(u",", u"a,b,c", 1000), -1);
  EXPECT_EQ(lx::posWithNeedle(u',', u"a,b,c", 2), 3);
}

TEST(PosWithNeedle, LastMatch) {
  EXPECT_EQ(lx::posLastWithNeedle(u",", u"a,b,\"c,d\",f(g,h)"), 9);
  EXPECT_EQ(lx::posLastWithNeedle(u",", u"abc"), -1);
  EXPECT_EQ(lx::posLastWithNeedle(u"+", u"1+2+3"), 3);
}

TEST(PosClosingBracket, FindsMatchingBracket) {
  EXPECT_EQ(lx::posClosingBracket(u"f(a(b)\")\",c)x", 2), 11);
  EXPECT_EQ(lx::posClosingBracket(u"(a)", 1), 2);
  EXPECT_EQ(lx::posClosingBracket(u"(a", 1), -1);
  EXPECT_EQ(lx::posClosingBracket(u"()", 1), 1);
  EXPECT_EQ(lx::posClosingBracket(u"(a)", 3), -1);
  EXPECT_EQ(lx::posClosingBracket(u"(a)", 99), -1);
}

TEST(GetTokenFrom, CutsAtSeparatorOutsideLiteralsAndBrackets) {
  UString s = u"a, \"x,y\", f(1,2)";
  EXPECT_EQ(lx::getTokenFrom(s, u","), u"a");
  EXPECT_EQ(lx::getTokenFrom(s, u","), u" \"x,y\"");
  EXPECT_EQ(lx::getTokenFrom(s, u","), u" f(1,2)");
  EXPECT_EQ(s, u"");
  EXPECT_EQ(lx::getTokenFrom(s, u","), u"");
  EXPECT_EQ(s, u"");
}

TEST(GetTokenFrom, EdgeCases) {
  UString s = u"abc,";
  EXPECT_EQ(lx::getTokenFrom(s, u','), u"abc");
  EXPECT_EQ(s, u"");
  s = u",,x";
  EXPECT_EQ(lx::getTokenFrom(s, u","), u"");
  EXPECT_EQ(lx::getTokenFrom(s, u","), u"");
  EXPECT_EQ(s, u"x");
  s = u"a,b";
  EXPECT_EQ(lx::getTokenFrom(s, u",,"), u"a,b");  // no single separator: everything
  EXPECT_EQ(s, u"");

  lx::UStringView v = u"IF a THEN";
  EXPECT_EQ(lx::tokenView(v, u' '), u"IF");
  EXPECT_EQ(lx::tokenView(v, u' '), u"a");
  EXPECT_EQ(lx::tokenView(v, u' '), u"THEN");
  EXPECT_TRUE(v.empty());
}

TEST(MidWithString, ClampsAndFailsQuietly) {
  EXPECT_EQ(lx::midWithString(u"abc", 1, 100), u"bc");
  EXPECT_EQ(lx::midWithString(u"abc", 5, 1), u"");
  EXPECT_EQ(lx::midWithString(u"abc", 3, 1), u"");
  EXPECT_EQ(lx::midWithString(u"abc", 0, 2), u"ab");
  EXPECT_EQ(lx::midWithString(u"abc", 1, 0xFFFFFFFFu), u"bc");
  EXPECT_EQ(lx::midWithString(u"", 0, 0), u"");
}

TEST(Trim, StripsWhitespaceAndLineBreaks) {
  EXPECT_EQ(lx::trim(u" \t\r\n x y \u2028\u00A0"), u"x y");
  EXPECT_EQ(lx::trim(u"   "), u"");
  EXPECT_EQ(lx::trim(u""), u"");
  EXPECT_EQ(lx::trim(u"a"), u"a");
  EXPECT_EQ(lx::trimView(u"\u3000a b\u0085"), u"a b");
}

TEST(FindWord, IgnoresLiteralsButNotWordBoundaries) {
  EXPECT_FALSE(lx::findWord(u"or", u"x = \"or\""));
  EXPECT_TRUE(lx::findWord(u"or", u"x = color"));
  EXPECT_TRUE(lx::findWord(u"NOT", u"x = NOTHING"));
  EXPECT_TRUE(lx::findWord(u"OR", u"ORDER"));
  EXPECT_TRUE(lx::findWord(u"and", u"a AND b"));
  EXPECT_FALSE(lx::findWord(u"and", u"\"a AND b\" & c"));
  EXPECT_TRUE(lx::findWord(u"and", u"\"x\" AND \"y\""));
  // Removing a literal joins what stood around it.
  EXPECT_TRUE(lx::findWord(u"an", u"a\"x\"n"));
  EXPECT_FALSE(lx::findWord(u"", u"abc"));
  EXPECT_FALSE(lx::findWord(u"abcd", u"abc"));
}

TEST(FindWord, FoldsUnicodeCase) {
  EXPECT_TRUE(lx::findWord(u"ÄND", u"x änd y"));
  EXPECT_TRUE(lx::findWord(u"strasse", u"STRAßE"));
  EXPECT_TRUE(lx::findWord(u"Σ", u"xσy"));
  EXPECT_FALSE(lx::findWord(u"é", u"e"));
}

TEST(FindKeyword, PositionAndLastTokenOffByOne) {
  EXPECT_EQ(lx::findKeyword(u"then", u"IF A THEN B"), 5);
  EXPECT_EQ(lx::findKeyword(u"THEN", u"IF A THEN"), 4);
  EXPECT_EQ(lx::findKeyword(u"THEN", u"IF A THEN "), 5);
  EXPECT_EQ(lx::findKeyword(u"TO", u"FOR i = 1 TO 10 STEP 2"), 10);
  EXPECT_EQ(lx::findKeyword(u"step", u"for i = 1 to 10 step 2"), 16);
  EXPECT_EQ(lx::findKeyword(u"THEN", u"IF A  THEN B"), 6);
}

TEST(FindKeyword, OnlyBlankSeparatedTokensOutsideLiteralsAndBrackets) {
  // The quoted THEN is skipped; the real one is last, so the off-by-one applies.
  EXPECT_EQ(lx::findKeyword(u"THEN", u"IF \"THEN\" THEN"), 9);
  EXPECT_EQ(lx::findKeyword(u"THEN", u"IF f(a THEN b) = 1"), -1);
  EXPECT_EQ(lx::findKeyword(u"THEN", u"IF A\tTHEN B"), -1);
  EXPECT_EQ(lx::findKeyword(u"THEN", u"IF (A)THEN B"), -1);
  EXPECT_EQ(lx::findKeyword(u"THEN", u"IF ATHEN B"), -1);
  EXPECT_EQ(lx::findKeyword(u"THEN", u""), -1);
  EXPECT_EQ(lx::findKeyword(u"ELSE", u"IF a THEN b"), -1);
}

TEST(Replace, Literal) {
  EXPECT_EQ(lx::replace(u"\"\"", u"\"", u"a\"\"b\"\"\"\"", lx::kLiteralSearch), u"a\"b\"\"");
  EXPECT_EQ(lx::replace(u"\t", u" ", u"\tx\t\ty", 2), u" x  y");
  EXPECT_EQ(lx::replace(u"ab", u"", u"xabyab", 2), u"xy");
  EXPECT_EQ(lx::replace(u"a", u"aa", u"aaa", 2), u"aaaaaa");  // no re-scan of the replacement
  EXPECT_EQ(lx::replace(u"A", u"x", u"aA", 2), u"ax");
  EXPECT_EQ(lx::replace(u"", u"x", u"abc", 2), u"abc");
  EXPECT_EQ(lx::replace(u"z", u"x", u"", 2), u"");
}

TEST(Replace, CaseInsensitive) {
  EXPECT_EQ(lx::replace(u" and ", u"\nAND\n", u"a AND b and c", lx::kCaseInsensitiveSearch),
            u"a\nAND\nb\nAND\nc");
  EXPECT_EQ(lx::replace(u" OR ", u"|", u"x Or y oR z", 1), u"x|y|z");
  EXPECT_EQ(lx::replace(u"É", u"e", u"café CAFÉ", 1), u"cafe CAFe");
  // Folding changes the length: the whole ß is one match of "ss", and vice versa.
  EXPECT_EQ(lx::replace(u"ss", u"_", u"Straße STRASSE", 1), u"Stra_e STRA_E");
  EXPECT_EQ(lx::replace(u"ß", u"_", u"STRASSE", 1), u"STRA_E");
  // A character whose folding only partly matches is no match.
  EXPECT_EQ(lx::replace(u"s", u"_", u"ß", 1), u"ß");
  // Characters beyond the BMP are kept whole.
  EXPECT_EQ(lx::replace(u"a", u"b", u"\U0001F600A\U0001F600", 1), u"\U0001F600b\U0001F600");
  EXPECT_EQ(lx::replace(u"", u"x", u"abc", 1), u"abc");
}

TEST(CheckVarName, LettersDigitsUnderscore) {
  for (const char16_t* ok :
       {u"_a1", u"1a", u"", u"abc", u"ABC_def_9", u"größe", u"имя", u"名前", u"\U0001D400x"}) {
    EXPECT_TRUE(lx::checkVarName(ok)) << lx::toUtf8(ok);
  }
  for (const char16_t* bad :
       {u"a.b", u"a$", u"a b", u"a-b", u"×", u"a\u0663", u"\xD800", u"x\xDC00", u"a(1)"}) {
    EXPECT_FALSE(lx::checkVarName(bad)) << lx::toUtf8(bad);
  }
}

TEST(TmpVarName, ConsecutiveNamesCountUp) {
  UString a = lx::getTmpVarName();
  UString b = lx::getTmpVarName();
  ASSERT_EQ(a.rfind(u"____var_", 0), 0u);
  ASSERT_EQ(b.rfind(u"____var_", 0), 0u);
  EXPECT_EQ(lx::longLongValue(UString(b.substr(8))), lx::longLongValue(UString(a.substr(8))) + 1);
}

TEST(TmpVarName, UniqueAcrossThreads) {
  std::vector<std::vector<UString>> names(4);
  std::vector<std::thread> threads;
  for (auto& list : names) {
    threads.emplace_back([&list] {
      for (int i = 0; i < 1000; ++i) list.push_back(lx::getTmpVarName());
    });
  }
  for (auto& t : threads) t.join();
  std::set<UString> all;
  for (const auto& list : names) all.insert(list.begin(), list.end());
  EXPECT_EQ(all.size(), 4000u);
}

TEST(ReservedWords, FixedListInOrder) {
  const auto& words = lx::reservedWords();
  ASSERT_EQ(words.size(), 34u);
  EXPECT_EQ(words.front(), u"REM");
  EXPECT_EQ(words[21], u"FUNCTION");
  EXPECT_EQ(words.back(), u"ENDIF");
  auto has = [&](const char16_t* w) {
    return std::find(words.begin(), words.end(), UString(w)) != words.end();
  };
  EXPECT_TRUE(has(u"ENDIF"));
  EXPECT_TRUE(has(u"SELECT"));
  EXPECT_FALSE(has(u"XOR"));
  EXPECT_FALSE(has(u"MOD"));
  EXPECT_FALSE(has(u"PRINT"));
}

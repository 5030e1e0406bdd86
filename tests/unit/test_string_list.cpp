#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "lxbasic/exceptions.h"
#include "lxbasic/string_list.h"
#include "lxbasic/text.h"
#include "lxbasic/value.h"

using lx::LxBasicStringList;
using lx::UString;
using lx::Variant;

namespace {

std::vector<UString> linesOf(const LxBasicStringList& list) {
  return list.array();
}

bool allNull(const LxBasicStringList& list) {
  for (size_t i = 0; i < list.objectCount(); ++i) {
    if (list.objectAtIndex(i).object() != lx::nullObject()) return false;
  }
  return true;
}

LxBasicStringList listOf(std::initializer_list<const char16_t*> lines) {
  LxBasicStringList list;
  for (const char16_t* line : lines) list.addString(Variant(line));
  return list;
}

}  // namespace

TEST(StringListText, SplitsAtEveryLineEndCharacter) {
  LxBasicStringList list;
  list.setText(Variant(u"a\nb"));
  EXPECT_EQ(linesOf(list), (std::vector<UString>{u"a", u"b"}));
  list.setText(Variant(u"a\r\nb"));
  EXPECT_EQ(linesOf(list), (std::vector<UString>{u"a", u"", u"b"}));
  list.setText(Variant(u"a\n"));
  EXPECT_EQ(linesOf(list), (std::vector<UString>{u"a", u""}));
  list.setText(Variant(u""));
  EXPECT_EQ(linesOf(list), (std::vector<UString>{u""}));
  list.setText(Variant(u"1\v2\f3\u00854\u20285\u20296"));
  EXPECT_EQ(list.count(), 6u);
  EXPECT_EQ(list.objectCount(), 6u);
  EXPECT_TRUE(allNull(list));
}

TEST(StringListText, NonStringsUseTheirText) {
  LxBasicStringList list;
  list.setText(Variant());
  EXPECT_EQ(linesOf(list), (std::vector<UString>{u"(null)"}));
  list.setText(Variant::real(2.5));
  EXPECT_EQ(linesOf(list), (std::vector<UString>{u"2.5"}));
  list.setText(Variant(lx::Array::make({Variant(u"x"), Variant::int32(1)})));
  EXPECT_EQ(linesOf(list), (std::vector<UString>{u"(x, 1)"}));
}

TEST(StringListText, JoinsWithCarriageReturns) {
  LxBasicStringList list;
  EXPECT_EQ(list.text(), u"");
  list.setText(Variant(u"a\nb"));
  EXPECT_EQ(list.text(), u"a\rb");
  list.setText(Variant(u"a\n"));
  EXPECT_EQ(list.text(), u"a\r");
  EXPECT_EQ(list.description(), u"(a, )");
  EXPECT_EQ(LxBasicStringList().description(), u"()");
}

TEST(StringListEdit, AddOnlyStrings) {
  LxBasicStringList list;
  list.addString(Variant::int32(5));
  list.addString(Variant::int32(5), Variant(u"obj"));
  list.addString(Variant());
  list.addString(Variant(lx::nullObject()));
  EXPECT_EQ(list.count(), 0u);
  EXPECT_EQ(list.objectCount(), 0u);
  list.addString(Variant(u"a"));
  list.addString(Variant(u"b"), Variant::int32(7));
  ASSERT_EQ(list.count(), 2u);
  EXPECT_EQ(list.objectAtIndex(0).object(), lx::nullObject());
  EXPECT_EQ(lx::intValue(list.objectAtIndex(1)), 7);
}

TEST(StringListEdit, InsertReplaceDeleteKeepObjectsInStep) {
  LxBasicStringList list;
  list.insertAtIndex(0, u"b");
  list.insertAtIndex(0, u"a", Variant::int32(1));
  list.insertAtIndex(2, u"c", Variant::int32(3));
  EXPECT_EQ(linesOf(list), (std::vector<UString>{u"a", u"b", u"c"}));
  EXPECT_EQ(lx::intValue(list.objectAtIndex(0)), 1);
  EXPECT_EQ(list.objectAtIndex(1).object(), lx::nullObject());

  list.replaceAtIndex(0, u"A");
  EXPECT_EQ(list.stringAtIndex(0), u"A");
  EXPECT_EQ(list.objectAtIndex(0).object(), lx::nullObject());
  list.replaceAtIndex(1, u"B", Variant(u"o"));
  EXPECT_EQ(lx::toText(list.objectAtIndex(1)), u"o");

  list.setObject(Variant::int32(9), 2);
  EXPECT_EQ(lx::intValue(list.objectAtIndex(2)), 9);
  list.setObject(Variant(), 2);
  EXPECT_EQ(list.objectAtIndex(2).object(), lx::nullObject());

  list.deleteAtIndex(1);
  EXPECT_EQ(linesOf(list), (std::vector<UString>{u"A", u"c"}));
  EXPECT_EQ(list.objectCount(), 2u);
  EXPECT_EQ(lx::toText(list.objectAtIndex(1)), u"<null>");
  list.clear();
  EXPECT_EQ(list.count(), 0u);
  EXPECT_EQ(list.objectCount(), 0u);
}

TEST(StringListEdit, IndexOutOfRangeThrows) {
  LxBasicStringList list = listOf({u"a"});
  EXPECT_THROW(list.stringAtIndex(1), lx::RangeException);
  EXPECT_THROW(list.objectAtIndex(1), lx::RangeException);
  EXPECT_THROW(list.setObject(Variant(u"x"), 1), lx::RangeException);
  EXPECT_THROW(list.deleteAtIndex(1), lx::RangeException);
  EXPECT_THROW(list.replaceAtIndex(1, u"x"), lx::RangeException);
  EXPECT_THROW(list.insertAtIndex(2, u"x"), lx::RangeException);
  EXPECT_THROW(list.stringAtIndex(UINT64_MAX), lx::RangeException);
  EXPECT_THROW(LxBasicStringList().deleteAtIndex(0), lx::RangeException);
  EXPECT_EQ(linesOf(list), (std::vector<UString>{u"a"}));
  EXPECT_EQ(list.objectCount(), 1u);
}

TEST(StringListQuirks, RemoveDuplicatesTouchesOnlyLines) {
  LxBasicStringList list = listOf({u"x", u"y", u"x", u"X"});
  list.removeDuplicates();
  EXPECT_EQ(linesOf(list), (std::vector<UString>{u"x", u"y", u"X"}));
  EXPECT_EQ(list.objectCount(), 4u);

  list = listOf({u"a", u"b", u"a", u"b", u"a", u"c", u"c"});
  list.removeDuplicates();
  EXPECT_EQ(linesOf(list), (std::vector<UString>{u"a", u"b", u"c"}));
  LxBasicStringList empty;
  empty.removeDuplicates();
  EXPECT_EQ(empty.count(), 0u);
}

TEST(StringListQuirks, AddFromListAppendsOnlyLines) {
  LxBasicStringList list = listOf({u"a"});
  LxBasicStringList other = listOf({u"b", u"c"});
  list.addFromList(other);
  EXPECT_EQ(linesOf(list), (std::vector<UString>{u"a", u"b", u"c"}));
  EXPECT_EQ(list.objectCount(), 1u);
  list.addFromList(list);
  EXPECT_EQ(list.count(), 6u);
  EXPECT_EQ(list.stringAtIndex(5), u"c");
}

TEST(StringListSearch, IndexOfIsExact) {
  LxBasicStringList list = listOf({u"a", u"A", u"a"});
  EXPECT_EQ(list.indexOf(u"A"), 1);
  EXPECT_EQ(list.indexOf(u"a"), 0);
  EXPECT_EQ(list.indexOf(u"z"), -1);
  EXPECT_EQ(LxBasicStringList().indexOf(u""), -1);
}

class StringListFile : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = std::filesystem::temp_directory_path() /
           ("lx_string_list_" + std::to_string(::getpid()) + "_" +
            ::testing::UnitTest::GetInstance()->current_test_info()->name());
    std::filesystem::create_directories(dir_);
  }
  void TearDown() override { std::filesystem::remove_all(dir_); }

  std::string path(const char* name) const { return (dir_ / name).string(); }
  void writeBytes(const char* name, const std::string& bytes) const {
    std::ofstream(path(name), std::ios::binary) << bytes;
  }
  std::string readBytes(const char* name) const {
    std::ifstream in(path(name), std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  }
  // Loads into a list that already holds a line, so that a failure must have emptied it.
  LxBasicStringList load(const char* name, uint64_t encoding, bool expectOk) const {
    LxBasicStringList list = listOf({u"old"});
    EXPECT_EQ(list.loadFromFile(path(name), encoding), expectOk) << name << " " << encoding;
    return list;
  }

  std::filesystem::path dir_;
};

TEST_F(StringListFile, SavesCarriageReturnSeparatedText) {
  LxBasicStringList list;
  list.setText(Variant(u"a\nbé"));
  ASSERT_TRUE(list.saveToFile(path("u8"), lx::kEncodingUTF8));
  EXPECT_EQ(readBytes("u8"), "a\rb\xC3\xA9");
  ASSERT_TRUE(list.saveToFile(path("l1"), lx::kEncodingISOLatin1));
  EXPECT_EQ(readBytes("l1"), "a\rb\xE9");
  ASSERT_TRUE(list.saveToFile(path("be"), lx::kEncodingUTF16BE));
  EXPECT_EQ(readBytes("be"), std::string("\0a\0\r\0b\0\xE9", 8));
  ASSERT_TRUE(list.saveToFile(path("le"), lx::kEncodingUTF16LE));
  EXPECT_EQ(readBytes("le"), std::string("a\0\r\0b\0\xE9\0", 8));
}

TEST_F(StringListFile, Utf16WithByteOrderMarkRoundTrips) {
  LxBasicStringList list;
  list.setText(Variant(u"x = \"ü\"\n\U0001F600"));
  ASSERT_TRUE(list.saveToFile(path("u16"), lx::kEncodingUTF16));
  std::string bytes = readBytes("u16");
  ASSERT_GE(bytes.size(), 2u);
  EXPECT_TRUE(bytes.substr(0, 2) == "\xFE\xFF" || bytes.substr(0, 2) == "\xFF\xFE");
  LxBasicStringList back = load("u16", lx::kEncodingUTF16, true);
  EXPECT_EQ(linesOf(back), linesOf(list));

  writeBytes("le_bom", std::string("\xFF\xFE"
                                   "a\0\n\0b\0",
                                   8));
  EXPECT_EQ(linesOf(load("le_bom", lx::kEncodingUTF16, true)), (std::vector<UString>{u"a", u"b"}));
}

TEST_F(StringListFile, RoundTripsInEverySupportedEncoding) {
  LxBasicStringList list;
  list.setText(Variant(u"PRINT 1\nx = \"abc\""));
  for (uint64_t enc :
       {1ull, 3ull, 4ull, 5ull, 8ull, 9ull, 10ull, 11ull, 12ull, 13ull, 14ull, 15ull, 30ull,
        0x8c000100ull, 0x90000100ull, 0x94000100ull, 0x98000100ull, 0x9c000100ull}) {
    ASSERT_TRUE(list.saveToFile(path("f"), enc)) << enc;
    EXPECT_EQ(linesOf(load("f", enc, true)), linesOf(list)) << enc;
  }
}

TEST_F(StringListFile, LoadsLegacyEncodings) {
  writeBytes("cp1252", "\x80 \x93q\x94");
  EXPECT_EQ(linesOf(load("cp1252", lx::kEncodingWindows1252, true)),
            (std::vector<UString>{u"\u20AC \u201Cq\u201D"}));
  writeBytes("mac", "\x8A");
  EXPECT_EQ(load("mac", lx::kEncodingMacRoman, true).stringAtIndex(0), u"\u00E4");
  writeBytes("cp1251", "\xC0");
  EXPECT_EQ(load("cp1251", lx::kEncodingWindows1251, true).stringAtIndex(0), u"\u0410");
  writeBytes("u8bom", "\xEF\xBB\xBFok");
  EXPECT_EQ(load("u8bom", lx::kEncodingUTF8, true).stringAtIndex(0), u"ok");
  writeBytes("empty", "");
  EXPECT_EQ(linesOf(load("empty", lx::kEncodingUTF8, true)), (std::vector<UString>{u""}));
}

TEST_F(StringListFile, BadFilesLeaveTheListEmpty) {
  writeBytes("high", "abc\xE9");
  EXPECT_EQ(load("high", lx::kEncodingASCII, false).count(), 0u);
  EXPECT_EQ(load("high", lx::kEncodingUTF8, false).count(), 0u);
  EXPECT_EQ(load("high", lx::kEncodingISOLatin1, true).stringAtIndex(0), u"abc\u00E9");
  writeBytes("odd", std::string("a\0b", 3));
  EXPECT_EQ(load("odd", lx::kEncodingUTF16LE, false).count(), 0u);
  writeBytes("sjis_cut", "a\x82");  // the lead byte of a pair, without its partner
  EXPECT_EQ(load("sjis_cut", lx::kEncodingShiftJIS, false).count(), 0u);
  writeBytes("fine", "abc");
  LxBasicStringList unknown = load("fine", 999, false);
  EXPECT_EQ(unknown.count(), 0u);
  EXPECT_EQ(unknown.objectCount(), 0u);
  EXPECT_EQ(load("missing", lx::kEncodingUTF8, false).count(), 0u);
  EXPECT_EQ(load(".", lx::kEncodingUTF8, false).count(), 0u);
}

TEST_F(StringListFile, SaveFailuresWriteNothing) {
  LxBasicStringList list;
  list.setText(Variant(u"caf\u00E9"));
  EXPECT_FALSE(list.saveToFile(path("ascii"), lx::kEncodingASCII));
  EXPECT_FALSE(std::filesystem::exists(path("ascii")));
  EXPECT_FALSE(list.saveToFile(path("unknown"), 999));
  EXPECT_FALSE(list.saveToFile(path("no/such/dir"), lx::kEncodingUTF8));
  list.setText(Variant(UString(u"a\xD800")));
  EXPECT_FALSE(list.saveToFile(path("lone"), lx::kEncodingUTF8));
}

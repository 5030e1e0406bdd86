#include <gtest/gtest.h>
#include <unistd.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "lxbasic/error.h"
#include "lxbasic/log.h"
#include "lxbasic/text.h"
#include "lxbasic/value.h"

using lx::LxError;
using lx::LxValue;
using lx::UString;
using lx::ValueKind;
using lx::Variant;

namespace {

class Throwing final : public lx::Object {
 public:
  UString description() const override { throw std::runtime_error("no text"); }
  std::string className() const override { return "Throwing"; }
};

}  // namespace

TEST(LxValueSlot, KindFollowsData) {
  LxValue slot;
  EXPECT_EQ(slot.type(), ValueKind::Empty);
  EXPECT_FALSE(slot.constant());
  slot.setData(Variant(lx::nullObject()));
  EXPECT_EQ(slot.type(), ValueKind::Object);
  slot.setData(Variant(std::make_shared<lx::Dictionary>()));
  EXPECT_EQ(slot.type(), ValueKind::Object);
  slot.setData(Variant::boolean(true));
  EXPECT_EQ(slot.type(), ValueKind::Number);
  slot.setData(Variant(u"s"));
  EXPECT_EQ(slot.type(), ValueKind::String);
  slot.setData(Variant(lx::Array::make()));
  EXPECT_EQ(slot.type(), ValueKind::Array);
  slot.setData(Variant::date(0));
  EXPECT_EQ(slot.type(), ValueKind::Date);
  slot.setData(Variant());
  EXPECT_EQ(slot.type(), ValueKind::Empty);
  EXPECT_TRUE(slot.data().isEmpty());

  auto made = LxValue::make(Variant::int32(3), true);
  EXPECT_TRUE(made->constant());
  EXPECT_EQ(made->type(), ValueKind::Number);
  made->setConstant(false);
  EXPECT_FALSE(made->constant());
}

TEST(LxValueSlot, SettingItsOwnValueIsSafe) {
  auto slot = LxValue::make(Variant(UString(100, u'x')));
  slot->setData(slot->data());
  EXPECT_EQ(slot->data().string(), UString(100, u'x'));
  // The last reference to an array may be the slot itself.
  auto inner = LxValue::make(Variant(lx::Array::make({Variant(u"e")})));
  inner->setData(inner->data().array()->items[0]);
  EXPECT_EQ(inner->description(), u"e");
}

TEST(LxValueSlot, Equality) {
  auto abc = LxValue::make(Variant(u"abc"));
  EXPECT_TRUE(abc->isEqual(Variant(u"abc")));
  EXPECT_TRUE(abc->isEqual(Variant(LxValue::make(Variant(u"abc")))));
  EXPECT_FALSE(abc->isEqual(Variant(u"ABC")));
  EXPECT_FALSE(abc->isEqual(Variant()));
  EXPECT_FALSE(LxValue().isEqual(Variant(LxValue::make())));
  EXPECT_FALSE(LxValue().isEqual(Variant()));
  EXPECT_FALSE(LxValue().isEqual(Variant(u"")));
  EXPECT_TRUE(LxValue::make(Variant::int32(2))->isEqual(Variant::real(2.0)));
  EXPECT_FALSE(LxValue::make(Variant::int32(2))->isEqual(Variant(u"2")));
  // A slot held in a slot compares by its own data in turn.
  auto holder = LxValue::make(Variant(abc));
  EXPECT_TRUE(holder->isEqual(Variant(u"abc")));
  EXPECT_TRUE(holder->isEqual(Variant(LxValue::make(Variant(abc)))));
}

TEST(LxValueSlot, Description) {
  EXPECT_EQ(LxValue().description(), u"");
  EXPECT_EQ(LxValue::make(Variant::int32(3))->description(), u"3");
  EXPECT_EQ(LxValue::make(Variant::real(0.1))->description(), u"0.1");
  EXPECT_EQ(LxValue::make(Variant(lx::nullObject()))->description(), u"<null>");
  EXPECT_EQ(LxValue::make(Variant(u""))->description(), u"");
  EXPECT_EQ(
      LxValue::make(Variant(lx::Array::make({Variant::int32(1), Variant(u"b")})))->description(),
      u"(1, b)");
  EXPECT_EQ(LxValue::make(Variant(std::make_shared<Throwing>()))->description(), u"");
  EXPECT_EQ(lx::toText(Variant(LxValue::make(Variant(u"in slot")))), u"in slot");
}

TEST(LxErrorRecord, DescriptionFormats) {
  auto e = LxError::errorWithCode(2, u"Syntax error", u"x =");
  EXPECT_EQ(e->lineNumber(), -1);
  EXPECT_EQ(e->description(), u"Error #2: Syntax error\nSource: x =");
  auto numbered = LxError::errorWithCode(2, u"Syntax error", u"x =", 7);
  EXPECT_EQ(numbered->description(), u"Error #2, Line #7: Syntax error\nSource: x =");
  EXPECT_EQ(LxError::errorWithCode(-1, u"Correct exit", u"")->description(),
            u"Error #-1: Correct exit\nSource: ");
  EXPECT_EQ(LxError::errorWithCode(103, u"m", u"l", 0)->description(),
            u"Error #103, Line #0: m\nSource: l");
  EXPECT_EQ(lx::toText(Variant(e)), e->description());
}

TEST(LxErrorRecord, ScriptOperations) {
  auto e = LxError::errorWithCode(14, u"Division by zero", u"x = 1 / 0", 3);
  EXPECT_EQ(lx::intValue(e->Number()), 14);
  EXPECT_EQ(e->Number().number().type(), lx::Number::Type::Int32);
  EXPECT_EQ(e->Description().string(), u"Division by zero");

  e->Raise(Variant::int32(5));
  EXPECT_EQ(lx::intValue(e->Number()), 5);
  EXPECT_EQ(e->Description().string(), u"Division by zero");
  EXPECT_EQ(e->line(), u"x = 1 / 0");
  EXPECT_EQ(e->lineNumber(), 3);

  e->Raise(Variant::real(7.9));
  EXPECT_EQ(e->code(), 7);
  e->Raise(Variant(u"12abc"));
  EXPECT_EQ(e->code(), 12);
  e->Raise(Variant());
  EXPECT_EQ(e->code(), 0);

  e->Clear();
  EXPECT_EQ(lx::intValue(e->Number()), 0);
  EXPECT_EQ(e->Description().string(), u"");
  EXPECT_EQ(e->line(), u"");
  EXPECT_EQ(e->lineNumber(), -1);
}

TEST(LxErrorRecord, RaiseWithoutIntegerChangesNothing) {
  auto e = LxError::errorWithCode(9, u"ELSE without IF", u"ELSE");
  e->Raise(Variant(lx::nullObject()));
  e->Raise(Variant(lx::Array::make({Variant::int32(3)})));
  e->Raise(Variant::date(100));
  EXPECT_EQ(e->code(), 9);
  EXPECT_EQ(e->desc(), u"ELSE without IF");
}

TEST(ErrorCatalogue, MessagesLetterForLetter) {
  const std::vector<std::pair<int, const char16_t*>> expected = {
      {-2, u"Loop exit"},
      {-1, u"Correct exit"},
      {0, u""},
      {1, u"Variable declaration block is empty"},
      {2, u"Syntax error"},
      {4, u"Internal error"},
      {6, u"Variable type error"},
      {7, u"IF without THEN"},
      {8, u"END IF without IF"},
      {9, u"ELSE without IF"},
      {10, u"NEXT without FOR"},
      {11, u"Unacceptable symbols in variable name"},
      {12, u"Wrong number of arguments"},
      {13, u"Wrong STEP value"},
      {14, u"Division by zero"},
      {15, u"Assignment of read-only variable"},
      {16, u"WEND without WHILE"},
      {17, u"Redeclaration detected"},
      {18, u"Illigal array initialization"},
      {19, u"Non-positive array length"},
      {20, u"Index out of bounds"},
      {21, u"EXIT FOR without FOR"},
      {22, u"EXIT WHILE without WHILE"},
      {23, u"CONTINUE FOR without FOR"},
      {24, u"CONTINUE WHILE without WHILE"},
      {25, u"Stack overflow"},
      {26, u"Incorrect usage of reserved word"},
      {27, u"Unable to change loop variable"},
      {28, u"Forbidden method call"},
      {29, u"Dimention count must be identical"},
      {30, u"Only the latest dimension could be resized"},
      {31, u"Script execution time is out"},
      {32, u"LOOP without DO"},
      {33, u"EXIT DO without DO"},
      {34, u"CONTINUE DO without DO"},
      {35, u"SELECT CASE ... END SELECT statement is not supported"},
  };
  for (const auto& [code, text] : expected) {
    EXPECT_EQ(lx::errorMessage(code), text) << code;
  }
}

TEST(ErrorCatalogue, FilledMessagesAndUnknownCodes) {
  EXPECT_EQ(lx::errorMessage(3, u"abc"), u"Variable \"abc\" not found");
  EXPECT_EQ(lx::errorMessage(5, u"Foo"), u"Function \"Foo\" not found");
  EXPECT_EQ(lx::errorMessage(35, u"GOTO"), u"GOTO is not supported");
  EXPECT_EQ(lx::errorMessage(2, u"ignored"), u"Syntax error");
  // A fill that itself holds "%@" is put in once, not expanded again.
  EXPECT_EQ(lx::errorMessage(3, u"%@"), u"Variable \"%@\" not found");
  EXPECT_EQ(lx::errorMessage(36), u"Out of memory");
  EXPECT_EQ(lx::errorMessage(38), u"");
  EXPECT_EQ(lx::errorMessage(-3), u"");
  EXPECT_EQ(lx::errorMessage(102), u"");

  auto e = LxError::make(lx::kFunctionNotFound, u"x = Foo(1)", u"Foo");
  EXPECT_EQ(e->code(), 5);
  EXPECT_EQ(e->desc(), u"Function \"Foo\" not found");
  EXPECT_EQ(e->line(), u"x = Foo(1)");
  EXPECT_EQ(e->lineNumber(), -1);
  EXPECT_EQ(LxError::make(lx::kNotSupported, u"SELECT CASE x")->desc(),
            u"SELECT CASE ... END SELECT statement is not supported");
}

TEST(Log, SinkCapturesMessages) {
  std::vector<UString> seen;
  lx::setLogSink([&seen](lx::UStringView m) { seen.emplace_back(m); });
  lx::logMessage(u"one");
  lx::logMessage(u"two \u00E9");
  lx::setLogSink(nullptr);
  EXPECT_EQ(seen, (std::vector<UString>{u"one", u"two \u00E9"}));
}

TEST(Log, SinkMayLogAndReplaceItselfReentrantly) {
  std::vector<UString> seen;
  lx::setLogSink([&seen](lx::UStringView m) {
    seen.emplace_back(m);
    if (m == u"outer") {
      lx::logMessage(u"inner");
      lx::setLogSink([&seen](lx::UStringView m2) { seen.push_back(u"new:" + UString(m2)); });
    }
  });
  lx::logMessage(u"outer");
  lx::logMessage(u"after");
  lx::setLogSink(nullptr);
  EXPECT_EQ(seen, (std::vector<UString>{u"outer", u"inner", u"new:after"}));
}

TEST(Log, DefaultWritesStampedLineToStderr) {
  lx::setLogSink(nullptr);
  ::testing::internal::CaptureStderr();
  lx::logMessage(u"hello \u00E9");
  std::string out = ::testing::internal::GetCapturedStderr();
  // "YYYY-MM-DD HH:MM:SS.mmm NAME[PID] hello é", one line.
  const std::string shape = "dddd-dd-dd dd:dd:dd.ddd ";
  const std::string tail = "] hello \xC3\xA9\n";
  ASSERT_GT(out.size(), shape.size() + tail.size()) << out;
  for (size_t i = 0; i < shape.size(); ++i) {
    if (shape[i] == 'd') {
      EXPECT_TRUE(out[i] >= '0' && out[i] <= '9') << out;
    } else {
      EXPECT_EQ(out[i], shape[i]) << out;
    }
  }
  ASSERT_TRUE(out.ends_with(tail)) << out;
  const size_t open = out.rfind('[', out.size() - tail.size());
  ASSERT_NE(open, std::string::npos) << out;
  ASSERT_GT(open, shape.size()) << out;  // a process name before the bracket
  EXPECT_EQ(out.substr(shape.size(), open - shape.size()).find(' '), std::string::npos) << out;
  EXPECT_EQ(std::stol(out.substr(open + 1, out.size() - tail.size() - open - 1)),
            static_cast<long>(::getpid()));
}

// MsgBox and InputBox against a scripted provider, and the console dialogs through streams.
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <iostream>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <vector>

#include "lxbasic/dialogs.h"
#include "lxbasic/script.h"
#include "support/builtins.h"

namespace {

using lx::AlertKind;
using lx::AlertRequest;
using lx::InputAnswer;
using lx::InputRequest;
using lx::Variant;
using lxtest::call;
using lxtest::text;
using std::nullopt;
using std::u16string;

// Records what the dialogs were asked to show and answers as told.
class ScriptedDialogs final : public lx::DialogProvider {
 public:
  int runAlert(const AlertRequest& request, const lx::StopPoll& stop) override {
    alerts.push_back(request);
    ++opened;
    return waitForStop(stop) ? lx::kAlertNoAnswer : alertAnswer;
  }
  InputAnswer runInput(const InputRequest& request, const lx::StopPoll& stop) override {
    inputs.push_back(request);
    ++opened;
    return waitForStop(stop) ? InputAnswer{} : inputAnswer;
  }

  int alertAnswer = lx::kAlertDefault;
  InputAnswer inputAnswer{true, nullopt};
  bool blockUntilStopped = false;
  bool fail = false;
  std::vector<AlertRequest> alerts;
  std::vector<InputRequest> inputs;
  std::atomic<int> opened{0};  // read by other threads while a script runs

 private:
  bool waitForStop(const lx::StopPoll& stop) {
    if (fail) throw std::runtime_error("window system gone");
    if (!blockUntilStopped) return false;
    auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!stop() && std::chrono::steady_clock::now() < giveUp) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
  }
};

class DialogTest : public ::testing::Test {
 protected:
  void SetUp() override { lx::setDefaultDialogProvider(fake); }
  void TearDown() override { lx::setDefaultDialogProvider(nullptr); }

  const AlertRequest& lastAlert() const { return fake->alerts.back(); }
  const InputRequest& lastInput() const { return fake->inputs.back(); }

  std::shared_ptr<ScriptedDialogs> fake = std::make_shared<ScriptedDialogs>();
};

// ---- MsgBox: what is shown

struct Layout {
  int32_t buttons;
  AlertKind kind;
  const char16_t* defaultButton;
  const char16_t* alternate;  // nullptr: the place is empty
  const char16_t* other;
};

std::optional<u16string> place(const char16_t* t) {
  return t ? std::optional<u16string>(t) : nullopt;
}

TEST_F(DialogTest, MsgBoxButtonValuesChooseButtonsDefaultAndIcon) {
  constexpr auto I = AlertKind::Informational;
  constexpr auto C = AlertKind::Critical;
  constexpr auto P = AlertKind::Plain;
  const Layout cases[] = {
      {0, I, u"OK", nullptr, nullptr},
      {1, I, u"OK", u"Cancel", nullptr},
      {2, I, u"Abort", u"Retry", u"Ignore"},
      {3, I, u"Yes", u"No", u"Cancel"},
      {4, I, u"Yes", u"No", nullptr},
      {5, I, u"Retry", u"Cancel", nullptr},
      {16, C, u"OK", nullptr, nullptr},
      {4 + 16, C, u"Yes", u"No", nullptr},
      {4 + 32, P, u"Yes", u"No", nullptr},
      {1 + 48, C, u"OK", u"Cancel", nullptr},
      {5 + 64, I, u"Retry", u"Cancel", nullptr},
      {3 + 256, I, u"No", u"Yes", u"Cancel"},
      {1 + 256, I, u"Cancel", u"OK", nullptr},
      {2 + 512, I, u"Ignore", u"Abort", u"Retry"},
      {3 + 512, I, u"Cancel", u"Yes", u"No"},
      {4 + 512, I, u"Yes", u"No", nullptr},  // no third button: the first stays default
      {256, I, u"OK", nullptr, nullptr},
      {3 + 768, I, u"Yes", u"No", u"Cancel"},
      {3 + 4096, I, u"Yes", u"No", u"Cancel"},
      // Only the largest flag comes off; what is left is no button set.
      {4 + 32 + 256, I, u"OK", nullptr, nullptr},
      {16 + 4096, I, u"OK", nullptr, nullptr},
      {7, I, u"OK", nullptr, nullptr},
      {6, I, u"OK", nullptr, nullptr},
      {-1, I, u"OK", nullptr, nullptr},
      {-4096, I, u"OK", nullptr, nullptr},
  };
  for (const Layout& c : cases) {
    SCOPED_TRACE(c.buttons);
    call(u"MsgBox", {Variant(u"m"), Variant::int32(c.buttons), Variant(u"T")});
    const AlertRequest& r = lastAlert();
    EXPECT_EQ(r.kind, c.kind);
    EXPECT_EQ(r.defaultButton, c.defaultButton);
    EXPECT_EQ(r.alternateButton, place(c.alternate));
    EXPECT_EQ(r.otherButton, place(c.other));
  }
}

TEST_F(DialogTest, MsgBoxTitleOnlyWhenGivenAndPromptShownLiterally) {
  call(u"MsgBox", {Variant(u"100%d %@ done")});
  EXPECT_EQ(lastAlert().message, u"100%d %@ done");
  EXPECT_EQ(lastAlert().title, nullopt);
  call(u"MsgBox", {Variant(u"x"), Variant::int32(4)});
  EXPECT_EQ(lastAlert().title, nullopt);
  call(u"MsgBox", {Variant(u"x"), Variant::int32(4), Variant(u"Title")});
  EXPECT_EQ(lastAlert().title, u"Title");
  // An Empty script value arrives as the null object and is a title like any other.
  call(u"MsgBox", {Variant(u"x"), Variant::int32(4), lx::nullObject()});
  EXPECT_EQ(lastAlert().title, u"<null>");
  call(u"MsgBox", {Variant::int32(42), Variant::int32(0), Variant::real(1.5)});
  EXPECT_EQ(lastAlert().message, u"42");
  EXPECT_EQ(lastAlert().title, u"1.5");
}

TEST_F(DialogTest, MsgBoxReadsTheButtonValueFromItsText) {
  call(u"MsgBox", {Variant(u"x"), Variant(u" 36 apples")});
  EXPECT_EQ(lastAlert().kind, AlertKind::Plain);
  EXPECT_EQ(lastAlert().alternateButton, u"No");
  call(u"MsgBox", {Variant(u"x"), Variant::real(3.9)});  // truncated to 3
  EXPECT_EQ(lastAlert().otherButton, u"Cancel");
  call(u"MsgBox", {Variant(u"x"), lx::nullObject()});
  EXPECT_EQ(lastAlert().alternateButton, nullopt);
  call(u"MsgBox", {Variant(u"x"), Variant(lx::Array::make())});
  EXPECT_EQ(lastAlert().defaultButton, u"OK");
}

// ---- MsgBox: what it answers

TEST_F(DialogTest, MsgBoxAnswersTheCodeOfThePressedButtonsTitle) {
  struct Press {
    int32_t buttons;
    int answer;
    int32_t code;
  };
  const Press presses[] = {
      {0, lx::kAlertDefault, 1},
      {4 + 32, lx::kAlertAlternate, 7},
      {3 + 256, lx::kAlertDefault, 7},
      {3 + 256, lx::kAlertAlternate, 6},
      {3 + 256, lx::kAlertOther, 2},
      {2 + 512, lx::kAlertDefault, 5},
      {2 + 512, lx::kAlertAlternate, 3},
      {2 + 512, lx::kAlertOther, 4},
      {5, lx::kAlertDefault, 4},
      {1, lx::kAlertAlternate, 2},
      // No button in that place, or an answer that names no place.
      {0, lx::kAlertAlternate, -1},
      {4, lx::kAlertOther, -1},
      {3, lx::kAlertNoAnswer, -1},
      {3, 5, -1},
  };
  for (const Press& p : presses) {
    SCOPED_TRACE(testing::Message() << p.buttons << " answered " << p.answer);
    fake->alertAnswer = p.answer;
    Variant result = call(u"MsgBox", {Variant(u"m"), Variant::int32(p.buttons)});
    ASSERT_TRUE(result.isNumber());
    EXPECT_EQ(result.number().type(), lx::Number::Type::Int32);
    EXPECT_EQ(result.number().toInt32(), p.code);
  }
}

TEST_F(DialogTest, FailingProviderGivesNoAnswerNotAnException) {
  fake->fail = true;
  fake->inputAnswer = InputAnswer{true, u"typed"};
  EXPECT_EQ(text(call(u"MsgBox", {Variant(u"m")})), u"-1");
  EXPECT_EQ(text(call(u"InputBox", {Variant(u"p"), Variant(u"t"), Variant(u"def")})), u"def");
}

TEST(ModRes, MatchesTitlesExactly) {
  const std::pair<u16string, int32_t> titles[] = {
      {u"OK", 1},  {u"Cancel", 2}, {u"Abort", 3}, {u"Retry", 4}, {u"Ignore", 5},
      {u"Yes", 6}, {u"No", 7},     {u"ok", -1},   {u"", -1},     {u"OK ", -1}};
  for (const auto& [title, code] : titles) EXPECT_EQ(lx::modRes(title), code) << lx::toUtf8(title);
}

// ---- InputBox

TEST_F(DialogTest, InputBoxFormsPassTheirDefaults) {
  call(u"InputBox", {Variant(u"Name?")});
  EXPECT_EQ(lastInput().prompt, u"Name?");
  EXPECT_EQ(lastInput().title, u"");
  EXPECT_EQ(lastInput().defaultText, u"");
  call(u"InputBox", {Variant(u"p"), Variant(u"T")});
  EXPECT_EQ(lastInput().title, u"T");
  EXPECT_EQ(lastInput().defaultText, u"");
  call(u"InputBox", {Variant(u"p"), Variant(u"T"), Variant::int32(7)});
  EXPECT_EQ(lastInput().defaultText, u"7");
  EXPECT_EQ(lastInput().okButton, u"OK");
  EXPECT_EQ(lastInput().cancelButton, u"Cancel");
  // The four-argument form opens centred whatever its x says.
  call(u"InputBox", {Variant(u"p"), Variant(u"t"), Variant(u"d"), Variant::int32(300)});
  EXPECT_EQ(lastInput().x, 0);
  EXPECT_EQ(lastInput().y, 0);
  call(u"InputBox",
       {Variant(u"p"), Variant(u"t"), Variant(u"d"), Variant::int32(300), Variant::int32(200)});
  EXPECT_EQ(lastInput().x, 300);
  EXPECT_EQ(lastInput().y, 200);
  call(u"InputBox",
       {Variant(u"p"), Variant(u"t"), Variant(u"d"), Variant(u"12.9px"), lx::nullObject()});
  EXPECT_EQ(lastInput().x, 12);
  EXPECT_EQ(lastInput().y, 0);
  EXPECT_EQ(fake->inputs.size(), 6u);
}

TEST_F(DialogTest, InputBoxResultsForOkCancelAndNoEdit) {
  const Variant name = Variant(u"Name?");
  fake->inputAnswer = InputAnswer{true, u"Ann"};
  EXPECT_EQ(text(call(u"InputBox", {name})), u"Ann");
  fake->inputAnswer = InputAnswer{false, u"Ann"};
  EXPECT_EQ(text(call(u"InputBox", {name})), u"");
  EXPECT_EQ(text(call(u"InputBox", {name, Variant(u"T"), Variant(u"Bob")})), u"Bob");
  fake->inputAnswer = InputAnswer{true, nullopt};
  EXPECT_EQ(text(call(u"InputBox", {name, Variant(u"T"), Variant(u"Bob")})), u"(null)");
  fake->inputAnswer = InputAnswer{true, u"Bob"};
  EXPECT_EQ(text(call(u"InputBox", {name, Variant(u"T"), Variant(u"Bob")})), u"Bob");
  fake->inputAnswer = InputAnswer{true, u""};  // edited down to nothing
  EXPECT_EQ(text(call(u"InputBox", {name, Variant(u"T"), Variant(u"Bob")})), u"");
  EXPECT_TRUE(call(u"InputBox", {name}).isString());
}

// ---- dialogs inside running scripts

TEST_F(DialogTest, ScriptUsesItsOwnProviderAlsoInsideProcedures) {
  auto own = std::make_shared<ScriptedDialogs>();
  own->alertAnswer = lx::kAlertAlternate;
  lx::LxBasicScript script;
  script.setDialogProvider(own);
  script.setScript(
      u"FUNCTION Ask(q)\n  Ask = MsgBox(q, vbYesNo + vbQuestion, \"Sure?\")\nEND FUNCTION\n"
      u"DIM a = Ask(\"go on\")\nDIM RESULT = a * 10 + MsgBox(\"x\")");
  Variant result = script.run();
  ASSERT_EQ(script.error(), nullptr) << lx::toUtf8(script.error()->description());
  EXPECT_EQ(text(result), u"69");  // "No" from the procedure, then the OK-only alert's -1
  ASSERT_EQ(own->alerts.size(), 2u);
  EXPECT_EQ(own->alerts[0].title, u"Sure?");
  EXPECT_EQ(own->alerts[0].kind, AlertKind::Plain);
  EXPECT_TRUE(fake->alerts.empty());
}

TEST_F(DialogTest, TerminateClosesAWaitingDialogAndStopsAfterItsLine) {
  fake->blockUntilStopped = true;
  lx::LxBasicScript script;
  script.setScript(u"DIM a = InputBox(\"p\", \"t\", \"kept\")\nDIM RESULT = \"after\"");
  std::thread stopper([&] {
    auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (fake->opened == 0 && std::chrono::steady_clock::now() < giveUp) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    script.terminate();
  });
  auto start = std::chrono::steady_clock::now();
  Variant result = script.run();
  stopper.join();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  EXPECT_TRUE(result.isEmpty());
  EXPECT_EQ(fake->opened, 1);
  ASSERT_NE(script.error(), nullptr);
  EXPECT_EQ(script.error()->code(), -1);
}

TEST_F(DialogTest, TimeLimitEndsAScriptWaitingInAnAlert) {
  fake->blockUntilStopped = true;
  lx::LxBasicScript script;
  script.setScript(u"DIM RESULT = MsgBox(\"waiting\")\nRESULT = 5");
  script.setTimeout(1);
  auto start = std::chrono::steady_clock::now();
  script.run();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  ASSERT_NE(script.error(), nullptr);
  EXPECT_EQ(script.error()->code(), 31);
  EXPECT_EQ(fake->alerts.size(), 1u);
}

// ---- console dialogs

struct Console {
  explicit Console(const std::string& input) : in(input) {}
  std::istringstream in;
  std::ostringstream out;
  std::shared_ptr<lx::DialogProvider> dialogs = lx::makeConsoleDialogs(in, out);
  lx::StopPoll never = [] { return false; };
};

AlertRequest yesNoCancel() {
  AlertRequest r;
  r.kind = AlertKind::Critical;
  r.title = u"Save";
  r.message = u"Save 100% of it?";
  r.defaultButton = u"Yes";
  r.alternateButton = u"No";
  r.otherButton = u"Cancel";
  return r;
}

TEST(ConsoleDialogs, AlertListsButtonsAndReadsNumberTitleOrReturn) {
  const std::pair<std::string, int> answers[] = {
      {"1\n", lx::kAlertDefault},    {"2\n", lx::kAlertAlternate},
      {"3\n", lx::kAlertOther},      {"\n", lx::kAlertDefault},
      {"cAnCeL\n", lx::kAlertOther}, {"  no \n", lx::kAlertAlternate},
      {"", lx::kAlertNoAnswer},      {"4\nmaybe\n0\n", lx::kAlertNoAnswer},
  };
  for (const auto& [input, expected] : answers) {
    SCOPED_TRACE(input);
    Console c(input);
    EXPECT_EQ(c.dialogs->runAlert(yesNoCancel(), c.never), expected);
  }
  Console c("x\n2\n");
  EXPECT_EQ(c.dialogs->runAlert(yesNoCancel(), c.never), lx::kAlertAlternate);
  EXPECT_EQ(c.out.str(),
            "Save\n[!] Save 100% of it?\n1) Yes (default)  2) No  3) Cancel\n> "
            "Please answer with a number from 1 to 3 or a button's title.\n> ");
  // No title line, and no other button without an alternate one.
  Console lone("2\n");
  AlertRequest r;
  r.message = u"Done";
  r.otherButton = u"Ignored";
  EXPECT_EQ(lone.dialogs->runAlert(r, lone.never), lx::kAlertNoAnswer);
  EXPECT_EQ(lone.out.str(),
            "[i] Done\n1) OK (default)\n> Please answer with a number from 1 to 1 or a button's "
            "title.\n> \n");
}

TEST(ConsoleDialogs, InputReadsALineAsEditEmptyAsNoEditEndAsCancel) {
  InputRequest r;
  r.title = u"Who";
  r.prompt = u"Name?";
  r.defaultText = u"Bob";
  Console c(" Ann Lee \n\n");
  InputAnswer typed = c.dialogs->runInput(r, c.never);
  EXPECT_TRUE(typed.ok);
  EXPECT_EQ(typed.lastEdit, u" Ann Lee ");
  InputAnswer empty = c.dialogs->runInput(r, c.never);
  EXPECT_TRUE(empty.ok);
  EXPECT_EQ(empty.lastEdit, nullopt);
  InputAnswer ended = c.dialogs->runInput(r, c.never);
  EXPECT_FALSE(ended.ok);
  EXPECT_EQ(c.out.str(), "Who\nName?\n[Bob] > Who\nName?\n[Bob] > Who\nName?\n[Bob] > \n");
}

TEST(ConsoleDialogs, StopRequestAnswersAtOnceWithoutReading) {
  Console c("1\n");
  lx::StopPoll stop = [] { return true; };
  EXPECT_EQ(c.dialogs->runAlert(yesNoCancel(), stop), lx::kAlertNoAnswer);
  EXPECT_FALSE(c.dialogs->runInput(InputRequest{}, stop).ok);
  std::string rest;
  EXPECT_TRUE(std::getline(c.in, rest));
  EXPECT_EQ(rest, "1");
}

TEST(ConsoleDialogs, WaitOnStandardInputEndsOnStopRequest) {
  int pipeFds[2];
  ASSERT_EQ(::pipe(pipeFds), 0);
  const int savedStdin = ::dup(STDIN_FILENO);
  ::dup2(pipeFds[0], STDIN_FILENO);
  std::ostringstream out;
  auto dialogs = lx::makeConsoleDialogs(std::cin, out);
  const auto start = std::chrono::steady_clock::now();
  lx::StopPoll soon = [start] {
    return std::chrono::steady_clock::now() - start > std::chrono::milliseconds(200);
  };
  EXPECT_EQ(dialogs->runAlert(AlertRequest{}, soon), lx::kAlertNoAnswer);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(3));
  // The writer is still there: a line that comes later is read by the next dialog.
  ASSERT_EQ(::write(pipeFds[1], "typed\n", 6), 6);
  InputAnswer typed = dialogs->runInput(InputRequest{}, [] { return false; });
  EXPECT_EQ(typed.lastEdit, u"typed");
  ::dup2(savedStdin, STDIN_FILENO);
  ::close(savedStdin);
  ::close(pipeFds[0]);
  ::close(pipeFds[1]);
}

TEST(ConsoleDialogs, DrivesMsgBoxAndInputBoxEndToEnd) {
  Console c("no\nAnn\n");
  lx::setDefaultDialogProvider(c.dialogs);
  EXPECT_EQ(text(call(u"MsgBox", {Variant(u"Go?"), Variant::int32(4 + 256), Variant(u"Q")})), u"7");
  EXPECT_EQ(text(call(u"InputBox", {Variant(u"Name?")})), u"Ann");
  EXPECT_EQ(text(call(u"InputBox", {Variant(u"Name?"), Variant(u""), Variant(u"d")})), u"d");
  lx::setDefaultDialogProvider(nullptr);
  EXPECT_EQ(c.out.str(), "Q\n[i] Go?\n1) No (default)  2) Yes\n> Name?\n> Name?\n[d] > \n");
}

}  // namespace

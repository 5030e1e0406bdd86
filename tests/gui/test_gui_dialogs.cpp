// The graphical dialogs on a private X server: each window is opened for real, answered with
// the keyboard or the mouse through xdotool, and photographed into test-artifacts/.
//
// Exits with 77 (reported as skipped) when Xvfb or xdotool is missing or the server does not
// come up; every other problem is a failure.
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <map>
#include <sstream>
#include <string>

#include "gui/label_metrics.h"
#include "lxbasic/graphical_dialogs.h"

namespace {

constexpr int kSkipped = 77;
constexpr int kScreenW = 1280;
constexpr int kScreenH = 900;

int shell(const std::string& command, std::string* output = nullptr) {
  FILE* p = ::popen(command.c_str(), "r");
  if (!p) return -1;
  std::string text;
  char buf[512];
  while (size_t n = std::fread(buf, 1, sizeof buf, p)) text.append(buf, n);
  int status = ::pclose(p);
  if (output) *output = text;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool haveProgram(const char* name) {
  return shell(std::string("command -v ") + name + " >/dev/null 2>&1") == 0;
}

// Xvfb picks a free display number itself and writes it to the given descriptor once it
// accepts connections, so parallel test runs never collide.
class PrivateServer {
 public:
  bool start(std::string& why) {
    int fds[2];
    if (::pipe(fds) != 0) return fail(why, "cannot make a pipe");
    pid_ = ::fork();
    if (pid_ < 0) return fail(why, "cannot fork");
    if (pid_ == 0) {
      ::close(fds[0]);
      std::string fd = std::to_string(fds[1]);
      std::string screen = std::to_string(kScreenW) + "x" + std::to_string(kScreenH) + "x24";
      std::freopen("/dev/null", "w", stderr);
      ::execlp("Xvfb", "Xvfb", "-displayfd", fd.c_str(), "-screen", "0", screen.c_str(),
               "-nolisten", "tcp", static_cast<char*>(nullptr));
      ::_exit(127);
    }
    ::close(fds[1]);
    std::string number;
    pollfd p{fds[0], POLLIN, 0};
    char c;
    while (::poll(&p, 1, 15000) > 0 && ::read(fds[0], &c, 1) == 1 && c != '\n') number += c;
    ::close(fds[0]);
    if (number.empty()) return fail(why, "Xvfb did not start");
    display_ = ":" + number;
    return true;
  }
  ~PrivateServer() {
    if (pid_ > 0) {
      ::kill(pid_, SIGTERM);
      ::waitpid(pid_, nullptr, 0);
    }
  }
  const std::string& display() const { return display_; }

 private:
  static bool fail(std::string& why, const char* what) {
    why = what;
    return false;
  }
  pid_t pid_ = -1;
  std::string display_;
};

std::filesystem::path artifacts() {
  std::filesystem::path dir = LX_GUI_ARTIFACTS;
  std::filesystem::create_directories(dir);
  return dir;
}

// ---- driving windows

std::string findWindow(const std::string& title) {
  std::string out;
  shell("timeout 30 xdotool search --sync --onlyvisible --name '^" + title + "$' 2>/dev/null",
        &out);
  std::string id = out.substr(0, out.find('\n'));
  if (!id.empty()) ::usleep(300 * 1000);  // let the first expose be drawn
  return id;
}

bool windowVisible(const std::string& title) {
  return shell("xdotool search --onlyvisible --name '^" + title + "$' >/dev/null 2>&1") == 0;
}

void xdo(const std::string& id, const std::string& actions) {
  ASSERT_EQ(shell("xdotool windowfocus --sync " + id + " " + actions), 0) << actions;
}

std::map<std::string, int> geometry(const std::string& id) {
  std::string out;
  shell("xdotool getwindowgeometry --shell " + id, &out);
  std::map<std::string, int> g;
  std::istringstream lines(out);
  for (std::string line; std::getline(lines, line);) {
    auto eq = line.find('=');
    if (eq != std::string::npos) g[line.substr(0, eq)] = std::atoi(line.c_str() + eq + 1);
  }
  return g;
}

void screenshot(const std::string& id, const std::string& name) {
  std::string file = (artifacts() / (name + ".png")).string();
  EXPECT_EQ(shell("import -window " + id + " '" + file + "' 2>/dev/null"), 0) << file;
}

// The colour at a point of a window, as ImageMagick prints it ("#RRGGBB").
std::string pixel(const std::string& id, int x, int y) {
  std::string out;
  shell("import -window " + id + " -crop 1x1+" + std::to_string(x) + "+" + std::to_string(y) +
            " -depth 8 txt:- 2>/dev/null",
        &out);
  auto hash = out.find('#', out.find('\n'));
  return hash == std::string::npos ? "" : out.substr(hash, 7);
}

// A dialog running on its own thread, as on a script's thread, with a stop switch that also
// fires by itself if the test forgets the window.
template <class Answer>
struct Running {
  template <class Open>
  explicit Running(Open open) {
    auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    lx::StopPoll poll = [this, deadline] {
      return stop.load() || std::chrono::steady_clock::now() > deadline;
    };
    result = std::async(std::launch::async, [open, poll] { return open(poll); });
  }
  Answer get() {
    if (result.wait_for(std::chrono::seconds(15)) != std::future_status::ready) stop = true;
    return result.get();
  }
  std::atomic<bool> stop{false};
  std::future<Answer> result;
};

class GraphicalDialogs : public ::testing::Test {
 protected:
  Running<int> alert(const lx::AlertRequest& request) {
    return Running<int>(
        [d = dialogs, request](const lx::StopPoll& stop) { return d->runAlert(request, stop); });
  }
  Running<lx::InputAnswer> input(const lx::InputRequest& request) {
    return Running<lx::InputAnswer>(
        [d = dialogs, request](const lx::StopPoll& stop) { return d->runInput(request, stop); });
  }

  std::shared_ptr<lx::DialogProvider> dialogs = lx::makeGraphicalDialogs();
};

std::u16string ascii(const std::string& s) {
  return std::u16string(s.begin(), s.end());
}

lx::AlertRequest threeButtons(lx::AlertKind kind, const std::string& title) {
  lx::AlertRequest r;
  r.kind = kind;
  r.title = ascii(title);
  r.message = u"Save the changes to \"report 100%d @home & away\"?";
  r.defaultButton = u"Yes";
  r.alternateButton = u"No";
  r.otherButton = u"Cancel";
  return r;
}

lx::InputRequest nameRequest(const std::string& title, int64_t x = 0, int64_t y = 0) {
  lx::InputRequest r;
  r.title = ascii(title);
  r.prompt = u"Name? (@home & 100%d)";
  r.defaultText = u"Bob";
  r.x = x;
  r.y = y;
  return r;
}

// ---- alerts

TEST_F(GraphicalDialogs, EachAlertKindHasItsOwnIconAndReturnPressesTheDefault) {
  const std::pair<lx::AlertKind, std::string> kinds[] = {
      {lx::AlertKind::Critical, "critical"},
      {lx::AlertKind::Plain, "plain"},
      {lx::AlertKind::Informational, "informational"}};
  std::map<std::string, std::string> iconColours;
  for (const auto& [kind, name] : kinds) {
    SCOPED_TRACE(name);
    const std::string title = "Alert " + name;
    auto running = alert(threeButtons(kind, title));
    std::string id = findWindow(title);
    ASSERT_FALSE(id.empty()) << "no window titled " << title;
    screenshot(id, "alert_" + name);
    // Near the middle of the icon, beside its glyph.
    iconColours[pixel(id, 20, 37)] = name;
    xdo(id, "key Return");
    EXPECT_EQ(running.get(), lx::kAlertDefault);
    EXPECT_FALSE(windowVisible(title));
  }
  EXPECT_EQ(iconColours.size(), 3u) << "the icons of the three kinds look alike";
}

TEST_F(GraphicalDialogs, AlertButtonsAnswerTheirPlaces) {
  // Focus starts on the default button and Tab walks on to the alternate and other ones.
  const std::pair<std::string, int> presses[] = {
      {"key Tab space", lx::kAlertAlternate},
      {"key Tab Tab space", lx::kAlertOther},
      {"key Escape", lx::kAlertOther},  // the "Cancel" button
  };
  for (const auto& [keys, answer] : presses) {
    SCOPED_TRACE(keys);
    auto running = alert(threeButtons(lx::AlertKind::Plain, "Places"));
    std::string id = findWindow("Places");
    ASSERT_FALSE(id.empty());
    xdo(id, keys);
    EXPECT_EQ(running.get(), answer);
  }
}

TEST_F(GraphicalDialogs, AlertWithoutTitleUsesADefaultOneAndOneButton) {
  lx::AlertRequest r;
  r.message = u"@@ Done: 100%d & nothing else.\nA second line.";
  auto running = alert(r);
  std::string id = findWindow("Alert");
  ASSERT_FALSE(id.empty());
  screenshot(id, "alert_untitled");
  auto g = geometry(id);
  // Centred on the screen.
  EXPECT_NEAR(g["X"], (kScreenW - g["WIDTH"]) / 2, 1);
  EXPECT_NEAR(g["Y"], (kScreenH - g["HEIGHT"]) / 2, 1);
  xdo(id, "key KP_Enter");
  EXPECT_EQ(running.get(), lx::kAlertDefault);
}

// ---- the input window

TEST_F(GraphicalDialogs, InputWindowLayoutAndTypedAnswer) {
  const Measured m = labelMetrics();
  auto running = input(nameRequest("Who are you"));
  std::string id = findWindow("Who are you");
  ASSERT_FALSE(id.empty());
  screenshot(id, "input_default");
  auto g = geometry(id);
  EXPECT_EQ(g["WIDTH"], m.W + 40);
  EXPECT_EQ(g["HEIGHT"], 2 * m.H + 102);
  EXPECT_NEAR(g["X"], (kScreenW - g["WIDTH"]) / 2, 1);
  EXPECT_NEAR(g["Y"], (kScreenH - g["HEIGHT"]) / 2, 1);
  // The proposed text is selected, so typing replaces it.
  xdo(id, "type --delay 30 'Ann Lee'");
  screenshot(id, "input_typed");
  xdo(id, "key Return");
  lx::InputAnswer a = running.get();
  EXPECT_TRUE(a.ok);
  EXPECT_EQ(a.lastEdit, u"Ann Lee");
}

TEST_F(GraphicalDialogs, InputReportsOnlyEditsAndWhichButtonClosedIt) {
  struct Case {
    std::string title;
    std::string keys;
    bool ok;
    std::optional<std::u16string> lastEdit;
  };
  const Case cases[] = {
      {"No edit", "key Return", true, std::nullopt},
      {"Edited back", "key End BackSpace type b", true, u"Bob"},
      {"Escaped", "type x", false, u"x"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.title);
    auto running = input(nameRequest(c.title));
    std::string id = findWindow(c.title);
    ASSERT_FALSE(id.empty());
    xdo(id, c.keys);
    if (c.keys != "key Return") xdo(id, c.ok ? "key Return" : "key Escape");
    lx::InputAnswer a = running.get();
    EXPECT_EQ(a.ok, c.ok);
    EXPECT_EQ(a.lastEdit, c.lastEdit);
  }
}

TEST_F(GraphicalDialogs, InputPlacedFromTheBottomLeftAndCancelledWithTheMouse) {
  auto running = input(nameRequest("Placed", 300, 200));
  std::string id = findWindow("Placed");
  ASSERT_FALSE(id.empty());
  auto g = geometry(id);
  EXPECT_EQ(g["X"], 300);
  EXPECT_EQ(g["Y"], kScreenH - 200 - g["HEIGHT"]);
  screenshot(id, "input_placed");
  xdo(id, "type x");
  // Cancel is the left button: 120 wide, 32 high, its right edge 100 left of the OK button's.
  const int cancelX = g["WIDTH"] - 40 - 220 + 60;
  const int cancelY = g["HEIGHT"] - 15 - 16;
  xdo(id, "mousemove --window " + id + " " + std::to_string(cancelX) + " " +
              std::to_string(cancelY) + " click 1");
  lx::InputAnswer a = running.get();
  EXPECT_FALSE(a.ok);
  EXPECT_EQ(a.lastEdit, u"x");
}

TEST_F(GraphicalDialogs, InputFarOffTheScreenIsKeptOnIt) {
  auto running = input(nameRequest("Far away", -5000, 99999));
  std::string id = findWindow("Far away");
  ASSERT_FALSE(id.empty());
  auto g = geometry(id);
  // In the top-left corner; FLTK itself leaves room for a frame (a pixel, and a title bar).
  EXPECT_LE(g["X"] + g["Y"], 21);
  xdo(id, "key Escape");
  EXPECT_FALSE(running.get().ok);
}

TEST_F(GraphicalDialogs, StopRequestClosesOpenWindowsAtOnce) {
  auto alerting = alert(threeButtons(lx::AlertKind::Critical, "Stopped"));
  ASSERT_FALSE(findWindow("Stopped").empty());
  auto asked = std::chrono::steady_clock::now();
  alerting.stop = true;
  EXPECT_EQ(alerting.get(), lx::kAlertNoAnswer);
  EXPECT_LT(std::chrono::steady_clock::now() - asked, std::chrono::seconds(1));
  EXPECT_FALSE(windowVisible("Stopped"));
  auto asking = input(nameRequest("Stop input"));
  ASSERT_FALSE(findWindow("Stop input").empty());
  asking.stop = true;
  EXPECT_FALSE(asking.get().ok);
  EXPECT_FALSE(windowVisible("Stop input"));
}

}  // namespace

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  for (const char* tool : {"Xvfb", "xdotool", "import"}) {
    if (!haveProgram(tool)) {
      std::printf("SKIPPED: %s is not installed\n", tool);
      return kSkipped;
    }
  }
  PrivateServer server;
  std::string why;
  if (!server.start(why)) {
    std::printf("SKIPPED: no X server could be started (%s)\n", why.c_str());
    return kSkipped;
  }
  ::setenv("DISPLAY", server.display().c_str(), 1);
  if (!lx::graphicalDialogsAvailable()) {
    std::printf("SKIPPED: the display %s cannot be opened\n", server.display().c_str());
    return kSkipped;
  }
  std::printf("Dialogs on display %s; screenshots in %s\n", server.display().c_str(),
              artifacts().c_str());
  return RUN_ALL_TESTS();
}

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <iostream>
#include <mutex>
#include <string>
#include <vector>

#include "lxbasic/dialogs.h"
#include "lxbasic/text.h"

namespace lx {

namespace {

const char* kindMarker(AlertKind kind) {
  switch (kind) {
    case AlertKind::Critical:
      return "[!] ";
    case AlertKind::Plain:
      return "[?] ";
    case AlertKind::Informational:
      break;
  }
  return "[i] ";
}

// The alert's buttons in the order they are listed; list index i answers 1 - i, which is
// kAlertDefault, kAlertAlternate and kAlertOther in turn.
std::vector<UString> listedButtons(const AlertRequest& r) {
  std::vector<UString> list{r.defaultButton};
  if (r.alternateButton) {
    list.push_back(*r.alternateButton);
    if (r.otherButton) list.push_back(*r.otherButton);
  }
  return list;
}

std::string trimmed(const std::string& s) {
  size_t first = s.find_first_not_of(" \t\r");
  if (first == std::string::npos) return {};
  size_t last = s.find_last_not_of(" \t\r");
  return s.substr(first, last - first + 1);
}

// The list index chosen by an answer line, or -1 when it names no button.
int chosenButton(const std::string& line, const std::vector<UString>& buttons) {
  std::string answer = trimmed(line);
  if (answer.empty()) return 0;
  if (answer.find_first_not_of("0123456789") == std::string::npos && answer.size() < 4) {
    int n = std::stoi(answer);
    return n >= 1 && n <= static_cast<int>(buttons.size()) ? n - 1 : -1;
  }
  UString folded = lowerCase(fromUtf8(answer));
  for (size_t i = 0; i < buttons.size(); ++i) {
    if (lowerCase(buttons[i]) == folded) return static_cast<int>(i);
  }
  return -1;
}

// Characters that the C library has already taken from the terminal but nobody has read;
// poll cannot see them.
bool stdinHasBufferedInput() {
#ifdef __GLIBC__
  return stdin->_IO_read_ptr < stdin->_IO_read_end;
#else
  return false;
#endif
}

class ConsoleDialogs final : public DialogProvider {
 public:
  ConsoleDialogs(std::istream& in, std::ostream& out) : in_(in), out_(out) {}

  int runAlert(const AlertRequest& request, const StopPoll& stopRequested) override {
    std::lock_guard lock(mutex_);
    std::vector<UString> buttons = listedButtons(request);
    if (request.title) out_ << toUtf8(*request.title) << '\n';
    out_ << kindMarker(request.kind) << toUtf8(request.message) << '\n';
    for (size_t i = 0; i < buttons.size(); ++i) {
      out_ << (i ? "  " : "") << i + 1 << ") " << toUtf8(buttons[i]) << (i ? "" : " (default)");
    }
    out_ << '\n';
    for (;;) {
      std::string line;
      if (!readLine(line, stopRequested)) return kAlertNoAnswer;
      int index = chosenButton(line, buttons);
      if (index >= 0) return 1 - index;
      out_ << "Please answer with a number from 1 to " << buttons.size()
           << " or a button's title.\n";
    }
  }

  InputAnswer runInput(const InputRequest& request, const StopPoll& stopRequested) override {
    std::lock_guard lock(mutex_);
    if (!request.title.empty()) out_ << toUtf8(request.title) << '\n';
    out_ << toUtf8(request.prompt) << '\n';
    if (!request.defaultText.empty()) out_ << '[' << toUtf8(request.defaultText) << "] ";
    std::string line;
    if (!readLine(line, stopRequested)) return {};
    // Only the line end is dropped: blanks the user typed are part of the answer.
    if (!line.empty() && line.back() == '\r') line.pop_back();
    InputAnswer answer{true, std::nullopt};
    if (!line.empty()) answer.lastEdit = fromUtf8(line);
    return answer;
  }

 private:
  // Prompts and reads one line; false at the end of the input or on a stop request.
  bool readLine(std::string& line, const StopPoll& stopRequested) {
    out_ << "> " << std::flush;
    bool got = waitForInput(stopRequested) && std::getline(in_, line);
    // A line the user typed ends with its own echo; anything else needs a line end here.
    if (!got) out_ << '\n' << std::flush;
    return got;
  }

  // Waits until a line can be read, watching the stop request. Only the process's standard
  // input can be watched; other streams answer at once anyway.
  bool waitForInput(const StopPoll& stopRequested) {
    if (stopRequested && stopRequested()) return false;
    if (&in_ != &std::cin) return true;
    for (;;) {
      if (in_.rdbuf()->in_avail() > 0 || stdinHasBufferedInput()) return true;
      pollfd p{STDIN_FILENO, POLLIN, 0};
      // Readable, end of file, hang-up and errors all end the wait: getline tells them apart.
      int ready = ::poll(&p, 1, 50);
      if (ready < 0 && errno == EINTR) ready = 0;
      if (ready != 0) return true;
      if (stopRequested && stopRequested()) return false;
    }
  }

  std::istream& in_;
  std::ostream& out_;
  std::mutex mutex_;  // scripts on several threads sharing one console take turns
};

}  // namespace

std::shared_ptr<DialogProvider> makeConsoleDialogs(std::istream& in, std::ostream& out) {
  return std::make_shared<ConsoleDialogs>(in, out);
}

}  // namespace lx

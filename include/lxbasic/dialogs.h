// The windows that scripts open with MsgBox and InputBox.
//
// The engine decides what to show (which buttons, which one is the default, which icon, what
// text) and a DialogProvider shows it. A host that wants the dialogs in its own toolkit, or
// wants to answer them itself (tests, batch runs), implements DialogProvider and hands it to
// LxBasicScript::setDialogProvider. A script without a provider uses the process default:
//
//   auto console = lx::makeConsoleDialogs(std::cin, std::cout);
//   lx::setDefaultDialogProvider(console);   // every script without its own provider
//   script.setDialogProvider(myProvider);    // this script only
//
// Threading: a provider is called on the thread that runs the script (a background thread
// under LxBasicScript::run), never handed over to another thread, and the call blocks that
// thread until the user answers. Both calls receive `stopRequested`; a provider polls it
// (a few times a second is enough) and, once it answers true, closes its window and returns
// at once: that is how LxBasicScript::terminate and the time limit end a script that waits
// in a dialog. The run then stops after the line that opened the dialog.
#pragma once

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>

#include "lxbasic/export.h"

namespace lx {

using UString = std::u16string;

// Polled while a dialog waits for the user; true means "close now".
using StopPoll = std::function<bool()>;

// The icon that tells the user how serious an alert is.
enum class AlertKind { Critical, Plain, Informational };

// What runAlert answers: the place of the button that was pressed. Any other value (the
// window was closed by a stop request, could not be shown, or the input ended) is an error,
// which MsgBox reports as -1.
inline constexpr int kAlertDefault = 1;
inline constexpr int kAlertAlternate = 0;
inline constexpr int kAlertOther = -1;
inline constexpr int kAlertNoAnswer = -2;

// A modal alert. Its buttons sit in three places; the default one answers the Return key.
// The alternate and other places may be empty, and the other place is only used when the
// alternate one is not empty.
struct LX_API AlertRequest {
  AlertKind kind = AlertKind::Informational;
  // None: the provider shows its own default title.
  std::optional<UString> title;
  // Shown exactly as given: no format characters, markup or symbols are interpreted.
  UString message;
  UString defaultButton = u"OK";
  std::optional<UString> alternateButton;
  std::optional<UString> otherButton;
};

// A modal line-input window: a title, a prompt, a field that starts with `defaultText`, and
// the buttons `okButton` (the default, answering Return) and `cancelButton`.
struct LX_API InputRequest {
  UString title;
  UString prompt;
  UString defaultText;
  // Origin of the window frame in screen coordinates measured from the bottom-left corner
  // of the screen, y growing upwards. (0, 0) means "centre the window on the screen".
  int64_t x = 0;
  int64_t y = 0;
  UString okButton = u"OK";
  UString cancelButton = u"Cancel";
};

struct LX_API InputAnswer {
  // True when the OK button closed the window; false for Cancel, a stop request or failure.
  bool ok = false;
  // The text of the field after the user's last edit. Showing the default text is not an
  // edit, so this stays empty when the user pressed OK without touching the field; InputBox
  // tells the two apart.
  std::optional<UString> lastEdit;
};

class LX_API DialogProvider {
 public:
  virtual ~DialogProvider() = default;
  // Shows the alert and waits for a button: kAlertDefault, kAlertAlternate or kAlertOther
  // for the place of the button pressed; kAlertNoAnswer (or any other value) for none.
  // Must not throw for any request; a provider that cannot show a window answers
  // kAlertNoAnswer.
  virtual int runAlert(const AlertRequest& request, const StopPoll& stopRequested) = 0;
  // Shows the input window and waits for one of its buttons. Must not throw; a provider that
  // cannot show a window answers a default InputAnswer (as if Cancel had been pressed).
  virtual InputAnswer runInput(const InputRequest& request, const StopPoll& stopRequested) = 0;
};

// Dialogs on a terminal. The alert writes its title, message and numbered buttons to `out`
// and reads one line from `in`: a button's number, its title in any letter case, or an empty
// line for the default button; anything else asks again. End of input answers
// kAlertNoAnswer, so a script fed from a file never hangs on a missing answer. The input box
// writes the title and prompt and reads one line: a non-empty line is an edit followed by
// OK, an empty line is OK without an edit, end of input is Cancel.
// Both streams must outlive the provider. When `in` is std::cin the wait for a line also
// watches the stop request; other streams are read without waiting.
LX_API std::shared_ptr<DialogProvider> makeConsoleDialogs(std::istream& in, std::ostream& out);

// Dialogs in real windows live in the separate library lxbasic_fltk (CMake
// `LxBasic::fltk`, header lxbasic/graphical_dialogs.h), so that a headless host links
// neither a toolkit nor X11.

// The provider for scripts that have none of their own. Until a host sets one (or after it
// sets nullptr) it is made on first use: the console dialogs on standard input and output.
// A GUI host calls lx::useGraphicalDialogs() (lxbasic/graphical_dialogs.h) to make windows
// the default. Safe to call from any thread.
LX_API void setDefaultDialogProvider(std::shared_ptr<DialogProvider> provider);
LX_API std::shared_ptr<DialogProvider> defaultDialogProvider();

// The result code of a button title, matched exactly: "OK" 1, "Cancel" 2, "Abort" 3,
// "Retry" 4, "Ignore" 5, "Yes" 6, "No" 7; any other title gives -1.
LX_API int32_t modRes(const UString& title);

}  // namespace lx

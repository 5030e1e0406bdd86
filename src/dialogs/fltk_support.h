// What the FLTK dialogs share: exclusive use of the toolkit, the modal loop, and widgets that
// show their text literally. Only the fltk_*.cpp sources include this.
#pragma once

#include <FL/Fl.H>
#include <FL/Fl_Window.H>

#include <functional>
#include <mutex>
#include <string>

#include "dialogs/fltk_text.h"
#include "lxbasic/dialogs.h"

namespace lx::fltk {

// Exclusive use of the toolkit for one dialog. FLTK is not re-entrant and scripts may run on
// several threads, so dialogs take turns process-wide; the toolkit lock also lets a host
// that runs its own FLTK loop on another thread carry on between our events.
class Session {
 public:
  Session();
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  // False when the display could not be opened; nothing may be shown then.
  bool ready() const noexcept { return ready_; }

 private:
  std::unique_lock<std::mutex> turn_;
  bool ready_ = false;
};

// Shows `window` modally and runs the toolkit until `finished` answers true, the window is
// hidden, or a stop is requested; then hides it.
void runModal(Fl_Window& window, const std::function<bool()>& finished,
              const StopPoll& stopRequested);

// A label type that draws text as given: '@' starts no symbol. Widgets that also must not
// treat '&' as a shortcut mark are made with Literal<>.
Fl_Labeltype literalLabel();

template <class Widget>
class Literal : public Widget {
 public:
  Literal(int x, int y, int w, int h) : Widget(x, y, w, h) {
    this->clear_flag(Fl_Widget::SHORTCUT_LABEL);
    this->labeltype(literalLabel());
  }
};

// The size of `text` in the font, wrapped at `wrapWidth` when that is above 0.
void measureText(const std::string& text, Fl_Font font, Fl_Fontsize size, int wrapWidth, int& w,
                 int& h);

// The main screen, which the bottom-left origin of a dialog's position refers to.
struct ScreenArea {
  int x = 0, y = 0, w = 0, h = 0;
};
ScreenArea screenArea();

int showAlert(const AlertRequest& request, const StopPoll& stopRequested);
InputAnswer showInput(const InputRequest& request, const StopPoll& stopRequested);

}  // namespace lx::fltk

#include <FL/fl_draw.H>
#include <FL/x.H>

#include <cstdio>

#include "dialogs/fltk_support.h"
#include "lxbasic/graphical_dialogs.h"

namespace lx::fltk {

namespace {

std::mutex& turnMutex() {
  static std::mutex m;
  return m;
}

// FLTK ends the process when it cannot open the display itself, so the connection is opened
// here, where a failure can be answered.
bool openDisplay() {
  if (fl_display) return true;
  Display* d = XOpenDisplay(nullptr);
  if (!d) {
    std::fprintf(stderr, "lxbasic: cannot open the display \"%s\" for a dialog\n",
                 XDisplayName(nullptr));
    return false;
  }
  fl_open_display(d);
  return true;
}

void drawLiteral(const Fl_Label* label, int x, int y, int w, int h, Fl_Align align) {
  fl_font(label->font, label->size);
  fl_color(label->color);
  fl_draw(label->value, x, y, w, h, align, label->image, 0);
}

void measureLiteral(const Fl_Label* label, int& w, int& h) {
  fl_font(label->font, label->size);
  fl_measure(label->value, w, h, 0);
}

}  // namespace

Session::Session() : turn_(turnMutex()) {
  Fl::lock();
  ready_ = openDisplay();
}

Session::~Session() {
  Fl::unlock();
}

void runModal(Fl_Window& window, const std::function<bool()>& finished,
              const StopPoll& stopRequested) {
  window.set_modal();
  window.show();
  while (!finished() && window.shown()) {
    Fl::wait(0.05);
    if (stopRequested && stopRequested()) break;
  }
  window.hide();
  Fl::flush();
}

Fl_Labeltype literalLabel() {
  // A label type of our own far enough from the first free one that a host's types stay.
  static const Fl_Labeltype type = [] {
    auto t = static_cast<Fl_Labeltype>(FL_FREE_LABELTYPE + 5);
    Fl::set_labeltype(t, drawLiteral, measureLiteral);
    return t;
  }();
  return type;
}

void measureText(const std::string& text, Fl_Font font, Fl_Fontsize size, int wrapWidth, int& w,
                 int& h) {
  fl_font(font, size);
  w = wrapWidth > 0 ? wrapWidth : 0;
  h = 0;
  fl_measure(text.c_str(), w, h, 0);
}

ScreenArea screenArea() {
  ScreenArea a;
  Fl::screen_xywh(a.x, a.y, a.w, a.h, 0);
  return a;
}

namespace {

class FltkDialogs final : public DialogProvider {
 public:
  int runAlert(const AlertRequest& request, const StopPoll& stopRequested) override {
    try {
      Session session;
      return session.ready() ? showAlert(request, stopRequested) : kAlertNoAnswer;
    } catch (...) {
      return kAlertNoAnswer;
    }
  }

  InputAnswer runInput(const InputRequest& request, const StopPoll& stopRequested) override {
    try {
      Session session;
      return session.ready() ? showInput(request, stopRequested) : InputAnswer{};
    } catch (...) {
      return {};
    }
  }
};

}  // namespace

}  // namespace lx::fltk

namespace lx {

std::shared_ptr<DialogProvider> makeGraphicalDialogs() {
  return std::make_shared<fltk::FltkDialogs>();
}

bool graphicalDialogsAvailable() {
  Display* d = XOpenDisplay(nullptr);
  if (!d) return false;
  XCloseDisplay(d);
  return true;
}

bool useGraphicalDialogs() {
  if (!graphicalDialogsAvailable()) return false;
  setDefaultDialogProvider(makeGraphicalDialogs());
  return true;
}

}  // namespace lx

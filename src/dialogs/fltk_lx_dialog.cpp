// LxDialog: the window behind InputBox. Its layout is given in a bottom-left coordinate
// system (y grows upwards, as the script's x and y do); FLTK measures from the top left, so
// every rectangle is flipped against the content height here.
#include <FL/Fl_Box.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Double_Window.H>
#include <FL/Fl_Input.H>
#include <FL/Fl_Return_Button.H>
#include <FL/fl_draw.H>

#include <algorithm>
#include <array>
#include <memory>
#include <optional>

#include "dialogs/fltk_support.h"

namespace lx::fltk {

namespace {

constexpr Fl_Font kLabelFont = FL_HELVETICA;
const Fl_Fontsize kLabelSize = FL_NORMAL_SIZE;

void ignoreClose(Fl_Widget*, void*) {}

}  // namespace

class LxDialog {
 public:
  LxDialog();
  LxDialog(const LxDialog&) = delete;
  LxDialog& operator=(const LxDialog&) = delete;

  static int getTextWidthWithFont(Fl_Font font, Fl_Fontsize size, int symbols);
  static int getTextHeightWithFont(Fl_Font font, Fl_Fontsize size);

  // The frame's origin from the bottom-left corner of the screen.
  int64_t x() const noexcept { return x_; }
  int64_t y() const noexcept { return y_; }
  void setX(int64_t x) noexcept { x_ = x; }
  void setY(int64_t y) noexcept { y_ = y; }
  void setTitle(const UString& t) { wind->copy_label(utf8(t).c_str()); }
  void setPrompt(const UString& p) { label->copy_label(utf8(p).c_str()); }
  void setDefValue(const UString& v) { def_value = v; }
  void setDefaultButton(const UString& t) { btn1->copy_label(utf8(t).c_str()); }
  void setAlternateButton(const UString& t) { btn2->copy_label(utf8(t).c_str()); }
  Fl_Window& window() noexcept { return *wind; }
  const std::optional<UString>& res_text() const noexcept { return res_text_; }
  int result() const noexcept { return result_; }

  void show();

 private:
  static void buttonClicked(Fl_Widget* sender, void* self);
  static void controlTextDidChange(Fl_Widget* sender, void* self);

  int result_ = 2;  // 1: btn1 closed the window, 0: btn2; 2 while it is open
  int lineHeight = 0;
  std::unique_ptr<Fl_Double_Window> wind;
  Fl_Button* btn1 = nullptr;
  Fl_Button* btn2 = nullptr;
  Fl_Box* label = nullptr;
  Fl_Input* textfield = nullptr;
  std::optional<UString> def_value;
  std::optional<UString> res_text_;
  int64_t x_ = 0;
  int64_t y_ = 0;
};

int LxDialog::getTextWidthWithFont(Fl_Font font, Fl_Fontsize size, int symbols) {
  if (symbols < 1) return 0;
  fl_font(font, size);
  return static_cast<int>(fl_width(std::string(static_cast<size_t>(symbols), 'W').c_str()));
}

int LxDialog::getTextHeightWithFont(Fl_Font font, Fl_Fontsize size) {
  int w = 0, h = 0;
  measureText("Wj", font, size, 0, w, h);
  return h;
}

LxDialog::LxDialog() {
  const int W = getTextWidthWithFont(kLabelFont, kLabelSize, 51);
  const int H = getTextHeightWithFont(kLabelFont, kLabelSize);
  const int winW = W + 40;
  const int winH = 2 * H + 102;
  // A rectangle given from the bottom-left corner of the content, in FLTK's terms.
  auto top = [winH](int bottomY, int height) { return winH - bottomY - height; };

  wind = std::make_unique<Fl_Double_Window>(winW, winH);
  wind->callback(ignoreClose);
  // The field comes first so that it has the keyboard when the window opens.
  textfield = new Fl_Input(20, top(57, H + 5), W, H + 5);
  textfield->when(FL_WHEN_CHANGED);
  textfield->callback(controlTextDidChange, this);
  label = new Literal<Fl_Box>(20, top(H + 67, H), W, H);
  label->labelfont(kLabelFont);
  label->labelsize(kLabelSize);
  label->align(FL_ALIGN_LEFT | FL_ALIGN_INSIDE | FL_ALIGN_CLIP);
  // The button frames are those of rounded bezels, which draw a few points inside them;
  // FLTK boxes fill their frame, so the two would touch without the inset.
  constexpr int kInsetX = 6, kInsetY = 4;
  auto bezel = [&](int left) {
    return std::array<int, 4>{left + kInsetX, top(15, 32) + kInsetY, 120 - 2 * kInsetX,
                              32 - 2 * kInsetY};
  };
  auto [x2, y2, w2, h2] = bezel(W - 220);
  btn2 = new Literal<Fl_Button>(x2, y2, w2, h2);
  btn2->callback(buttonClicked, this);
  btn2->shortcut(FL_Escape);
  auto [x1, y1, w1, h1] = bezel(W - 100);
  btn1 = new Literal<Fl_Return_Button>(x1, y1, w1, h1);
  btn1->callback(buttonClicked, this);
  wind->end();
  lineHeight = H;
}

void LxDialog::show() {
  if (def_value) textfield->value(utf8(*def_value).c_str());
  // Typing replaces the proposed text; the arrow keys keep it.
  textfield->position(textfield->size(), 0);
  const ScreenArea screen = screenArea();
  const int w = wind->w();
  const int h = wind->h();
  if (x_ == 0 && y_ == 0) {
    wind->position(screen.x + (screen.w - w) / 2, screen.y + (screen.h - h) / 2);
  } else {
    // Kept on the screen: a window out of reach could never be answered.
    const int64_t left = std::clamp<int64_t>(x_, 0, std::max(0, screen.w - w));
    const int64_t bottom = std::clamp<int64_t>(y_, 0, std::max(0, screen.h - h));
    wind->position(screen.x + static_cast<int>(left),
                   screen.y + screen.h - h - static_cast<int>(bottom));
  }
}

void LxDialog::buttonClicked(Fl_Widget* sender, void* self) {
  auto* d = static_cast<LxDialog*>(self);
  d->result_ = sender == d->btn1 ? 1 : 0;
  d->wind->hide();
}

void LxDialog::controlTextDidChange(Fl_Widget* /*sender*/, void* self) {
  auto* d = static_cast<LxDialog*>(self);
  d->res_text_ = utf16(d->textfield->value());
}

InputAnswer showInput(const InputRequest& request, const StopPoll& stopRequested) {
  LxDialog dialog;
  dialog.setX(request.x);
  dialog.setY(request.y);
  dialog.setTitle(request.title);
  dialog.setPrompt(request.prompt);
  dialog.setDefValue(request.defaultText);
  dialog.setDefaultButton(request.okButton);
  dialog.setAlternateButton(request.cancelButton);
  dialog.show();
  runModal(
      dialog.window(), [&dialog] { return dialog.result() != 2; }, stopRequested);
  return InputAnswer{dialog.result() == 1, dialog.res_text()};
}

}  // namespace lx::fltk

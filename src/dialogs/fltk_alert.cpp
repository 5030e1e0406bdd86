// The alert behind MsgBox: an icon for its kind, the message, and up to three buttons with
// the default one on the right, where the eye ends, answering Return.
#include <FL/Fl_Box.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Double_Window.H>
#include <FL/Fl_Return_Button.H>

#include <algorithm>
#include <array>
#include <memory>

#include "dialogs/fltk_support.h"

namespace lx::fltk {

namespace {

constexpr int kMargin = 12;
constexpr int kIconSize = 50;
constexpr int kMessageWrap = 420;
constexpr int kButtonHeight = 28;
constexpr int kButtonGap = 8;
constexpr int kMinButtonWidth = 80;
constexpr int kReturnMarkWidth = 24;  // room for the Return arrow of the default button
constexpr int kLabelPad = 3;          // FLTK insets left-aligned labels by this on each side

struct AlertState {
  int answer = kAlertNoAnswer;
  bool done = false;
};

struct ButtonSlot {
  AlertState* state = nullptr;
  int answer = kAlertNoAnswer;
};

void buttonPressed(Fl_Widget*, void* data) {
  auto* slot = static_cast<ButtonSlot*>(data);
  slot->state->answer = slot->answer;
  slot->state->done = true;
}

// Closing the window from outside is not an answer: one of the buttons must be chosen.
void ignoreClose(Fl_Widget*, void*) {}

// Drawn rather than loaded, so the library carries no image files: a red disc for critical
// alerts, a neutral tile for plain ones, a blue tile for information.
struct IconStyle {
  Fl_Boxtype box;
  Fl_Color background;
  Fl_Color glyphColour;
  Fl_Font font;
  const char* glyph;
};

IconStyle iconStyle(AlertKind kind) {
  switch (kind) {
    case AlertKind::Critical:
      return {FL_OVAL_BOX, fl_rgb_color(200, 30, 30), FL_WHITE, FL_HELVETICA_BOLD, "!"};
    case AlertKind::Plain:
      return {FL_THIN_UP_BOX, fl_rgb_color(225, 225, 225), fl_rgb_color(60, 60, 60),
              FL_HELVETICA_BOLD, "?"};
    case AlertKind::Informational:
      break;
  }
  return {FL_ROUNDED_BOX, fl_rgb_color(40, 100, 200), FL_WHITE, FL_TIMES_BOLD_ITALIC, "i"};
}

void styleIcon(Fl_Box& icon, AlertKind kind) {
  const IconStyle style = iconStyle(kind);
  icon.box(style.box);
  icon.color(style.background);
  icon.labelcolor(style.glyphColour);
  icon.labelfont(style.font);
  icon.labelsize(34);
  icon.label(style.glyph);
}

}  // namespace

int showAlert(const AlertRequest& request, const StopPoll& stopRequested) {
  const ScreenArea screen = screenArea();
  const std::string message = utf8(request.message);
  int messageW = 0, messageH = 0;
  measureText(message, FL_HELVETICA, FL_NORMAL_SIZE, kMessageWrap, messageW, messageH);
  // A word longer than the wrap width widens the text; neither may outgrow the screen.
  messageW = std::min(messageW, std::max(kMessageWrap, screen.w - 100));
  messageH = std::clamp(messageH, kIconSize, std::max(kIconSize, screen.h - 150));

  // Places from right to left: default, alternate, other.
  std::array<const UString*, 3> titles{&request.defaultButton, nullptr, nullptr};
  if (request.alternateButton) {
    titles[1] = &*request.alternateButton;
    if (request.otherButton) titles[2] = &*request.otherButton;
  }
  std::array<int, 3> widths{};
  int rowWidth = 0;
  for (size_t i = 0; i < titles.size() && titles[i]; ++i) {
    int w = 0, h = 0;
    measureText(utf8(*titles[i]), FL_HELVETICA, FL_NORMAL_SIZE, 0, w, h);
    widths[i] = std::max(kMinButtonWidth, w + 30 + (i == 0 ? kReturnMarkWidth : 0));
    rowWidth += widths[i] + (i ? kButtonGap : 0);
  }

  const int textX = kMargin + kIconSize + kMargin;
  const int winW = std::max(textX + messageW + kLabelPad + kMargin, rowWidth + 2 * kMargin);
  const int rowY = kMargin + messageH + 14;
  const int winH = rowY + kButtonHeight + kMargin;

  AlertState state;
  std::array<ButtonSlot, 3> slots{
      {{&state, kAlertDefault}, {&state, kAlertAlternate}, {&state, kAlertOther}}};
  Fl_Double_Window window(winW, winH);
  window.copy_label(request.title ? utf8(*request.title).c_str() : "Alert");
  window.callback(ignoreClose);
  Fl_Box icon(kMargin, kMargin, kIconSize, kIconSize);
  styleIcon(icon, request.kind);
  Literal<Fl_Box> text(textX - kLabelPad, kMargin, winW - textX + kLabelPad - kMargin, messageH);
  text.copy_label(message.c_str());
  text.align(FL_ALIGN_LEFT | FL_ALIGN_INSIDE | FL_ALIGN_WRAP | FL_ALIGN_CLIP);
  std::array<std::unique_ptr<Fl_Button>, 3> buttons;
  int right = winW - kMargin;
  for (size_t i = 0; i < titles.size() && titles[i]; ++i) {
    const int left = right - widths[i];
    if (i == 0) {
      buttons[i] =
          std::make_unique<Literal<Fl_Return_Button>>(left, rowY, widths[i], kButtonHeight);
    } else {
      buttons[i] = std::make_unique<Literal<Fl_Button>>(left, rowY, widths[i], kButtonHeight);
    }
    buttons[i]->copy_label(utf8(*titles[i]).c_str());
    buttons[i]->callback(buttonPressed, &slots[i]);
    if (i > 0 && *titles[i] == u"Cancel") buttons[i]->shortcut(FL_Escape);
    right = left - kButtonGap;
  }
  window.end();
  window.position(screen.x + (screen.w - winW) / 2, screen.y + (screen.h - winH) / 2);
  runModal(
      window, [&state] { return state.done; }, stopRequested);
  return state.answer;
}

}  // namespace lx::fltk

#include <array>
#include <utility>

#include "dialogs/dialog_boxes.h"
#include "lxbasic/text.h"

namespace lx {

namespace {

// Flags are taken off the top one at a time; only the first match is removed, which is why a
// value combining two flags falls back to the single OK button.
struct Flag {
  int32_t value;
  std::optional<AlertKind> kind;
  int defaultPosition;  // 0: leaves the default where it is
};
constexpr std::array<Flag, 8> kFlags{{
    {4096, std::nullopt, 0},
    {768, std::nullopt, 0},
    {512, std::nullopt, 3},
    {256, std::nullopt, 2},
    {64, AlertKind::Informational, 0},
    {48, AlertKind::Critical, 0},
    {32, AlertKind::Plain, 0},
    {16, AlertKind::Critical, 0},
}};

struct ButtonSet {
  const char16_t* first;
  const char16_t* second;
  const char16_t* third;
};
constexpr std::array<ButtonSet, 6> kButtonSets{{
    {u"OK", nullptr, nullptr},
    {u"OK", u"Cancel", nullptr},
    {u"Abort", u"Retry", u"Ignore"},
    {u"Yes", u"No", u"Cancel"},
    {u"Yes", u"No", nullptr},
    {u"Retry", u"Cancel", nullptr},
}};

std::optional<UString> titleOrNone(const char16_t* t) {
  return t ? std::optional<UString>(t) : std::nullopt;
}

}  // namespace

int32_t modRes(const UString& title) {
  static constexpr std::array<const char16_t*, 7> kTitles{u"OK",     u"Cancel", u"Abort", u"Retry",
                                                          u"Ignore", u"Yes",    u"No"};
  for (size_t i = 0; i < kTitles.size(); ++i) {
    if (title == kTitles[i]) return static_cast<int32_t>(i) + 1;
  }
  return -1;
}

AlertRequest messageBoxRequest(const UString& prompt, int32_t buttons,
                               std::optional<UString> title) {
  AlertRequest r;
  r.title = std::move(title);
  r.message = prompt;
  if (buttons <= 0) return r;  // informational, OK alone

  int defaultPosition = 1;
  for (const Flag& f : kFlags) {
    if (buttons < f.value) continue;
    buttons -= f.value;
    if (f.kind) r.kind = *f.kind;
    if (f.defaultPosition) defaultPosition = f.defaultPosition;
    break;
  }
  const ButtonSet& set = buttons >= 1 && buttons <= 5 ? kButtonSets[buttons] : kButtonSets[0];
  const char16_t* place[3] = {set.first, set.second, set.third};
  if (defaultPosition == 2 && set.second) {
    std::swap(place[0], place[1]);
  } else if (defaultPosition == 3 && set.third) {
    place[0] = set.third;
    place[1] = set.first;
    place[2] = set.second;
  }
  r.defaultButton = place[0];
  r.alternateButton = titleOrNone(place[1]);
  r.otherButton = titleOrNone(place[2]);
  return r;
}

int32_t messageBoxResult(const AlertRequest& shown, int answer) {
  const std::optional<UString>* pressed = nullptr;
  std::optional<UString> defaultTitle = shown.defaultButton;
  if (answer == kAlertDefault) pressed = &defaultTitle;
  if (answer == kAlertAlternate) pressed = &shown.alternateButton;
  if (answer == kAlertOther) pressed = &shown.otherButton;
  return pressed && *pressed ? modRes(**pressed) : -1;
}

int32_t messageBox(DialogProvider& provider, const Variant& prompt, const Variant& buttons,
                   const Variant& title, const StopPoll& stopRequested) {
  std::optional<UString> shownTitle;
  if (!title.isEmpty()) shownTitle = toText(title);
  AlertRequest request = messageBoxRequest(toText(prompt), intValue(toText(buttons)), shownTitle);
  int answer = kAlertNoAnswer;
  try {
    answer = provider.runAlert(request, stopRequested);
  } catch (...) {
    // A host's provider that fails is treated like a window closed without an answer.
  }
  return messageBoxResult(request, answer);
}

}  // namespace lx

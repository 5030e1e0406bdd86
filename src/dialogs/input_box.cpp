#include "dialogs/dialog_boxes.h"
#include "lxbasic/text.h"

namespace lx {

UString inputBox(DialogProvider& provider, const Variant& prompt, const Variant& title,
                 const Variant& def, const Variant& x, const Variant& y,
                 const StopPoll& stopRequested) {
  InputRequest request;
  request.title = toText(title);
  request.prompt = toText(prompt);
  // A missing default shows an empty field; anything else shows its text.
  request.defaultText = def.isEmpty() ? UString() : toText(def);
  request.x = intValue(toText(x));
  request.y = intValue(toText(y));
  InputAnswer answer;
  try {
    answer = provider.runInput(request, stopRequested);
  } catch (...) {
    // A failing provider counts as Cancel: the script gets its default text back.
  }
  if (!answer.ok) return request.defaultText;
  // The field reports only edits; OK without one answers the text of "no text at all".
  return answer.lastEdit ? *answer.lastEdit : toText(Variant());
}

}  // namespace lx

// MsgBox and InputBox as the script sees them, written once on top of DialogProvider.
#pragma once

#include <cstdint>
#include <optional>

#include "lxbasic/dialogs.h"
#include "lxbasic/variant.h"

namespace lx {

// The alert MsgBox shows for a prompt, a button value and an optional title.
AlertRequest messageBoxRequest(const UString& prompt, int32_t buttons,
                               std::optional<UString> title);
// The result code for the provider's answer to `shown`: the code of the pressed button's
// title, -1 for anything else.
int32_t messageBoxResult(const AlertRequest& shown, int answer);

// MsgBox(prompt, buttons, title); a missing (plain Empty) title means "no title".
int32_t messageBox(DialogProvider& provider, const Variant& prompt, const Variant& buttons,
                   const Variant& title, const StopPoll& stopRequested);

// InputBox(prompt, title, def, x, y): the last edit after OK ("(null)" when there was none),
// the default text otherwise.
UString inputBox(DialogProvider& provider, const Variant& prompt, const Variant& title,
                 const Variant& def, const Variant& x, const Variant& y,
                 const StopPoll& stopRequested);

}  // namespace lx

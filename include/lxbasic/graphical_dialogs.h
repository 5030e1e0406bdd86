// MsgBox and InputBox as real windows (FLTK on X11). Declared here and defined in the
// separate library lxbasic_fltk (CMake `LxBasic::fltk`, pkg-config `lxbasic-fltk`): only
// hosts that want windows link it, the engine itself knows no toolkit.
#pragma once

#include <memory>

#include "lxbasic/dialogs.h"
#include "lxbasic/export.h"

namespace lx {

// A provider that shows the dialogs in windows. The windows open on the display named by
// DISPLAY when the first dialog is shown; if it cannot be opened then, the dialogs answer
// "no button" / Cancel and a message goes to standard error.
LX_API std::shared_ptr<DialogProvider> makeGraphicalDialogs();

// True when the display can be opened right now.
LX_API bool graphicalDialogsAvailable();

// Makes windows the process default (setDefaultDialogProvider) when a display can be opened;
// answers whether it did. Scripts with a provider of their own keep it.
LX_API bool useGraphicalDialogs();

}  // namespace lx

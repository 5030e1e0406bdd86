// The built-in function families. Each source registers its functions on the library class
// under their full selectors, one per accepted argument count ("Mid:start:",
// "Mid:start:length:"); shorter forms pass the missing object (an Empty Variant) or the
// documented default to the longest one.
#pragma once

#include "builtins/library.h"
#include "lxbasic/bridge.h"

namespace lx {

using LibraryBuilder = ClassBuilder<LxBasicFunc>;

void registerConversionFunctions(LibraryBuilder& b);  // conversion.cpp
void registerMathFunctions(LibraryBuilder& b);        // math.cpp (math, Rnd, Round, bits)
void registerStringFunctions(LibraryBuilder& b);      // strings.cpp
void registerArrayFunctions(LibraryBuilder& b);       // arrays.cpp
void registerDateFunctions(LibraryBuilder& b);        // dates.cpp
void registerFormatFunctions(LibraryBuilder& b);      // formatting.cpp
void registerTypeFunctions(LibraryBuilder& b);        // types.cpp (kinds, engine, Sleep, log)
void registerEvalFunction(LibraryBuilder& b);         // eval.cpp
void registerDialogFunctions(LibraryBuilder& b);      // dialog_functions.cpp (MsgBox, InputBox)
void registerObjectFunctions(LibraryBuilder& b);      // library.cpp (CreateObject)

}  // namespace lx

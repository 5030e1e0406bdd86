// UTF-8 for FLTK and back. Kept apart from the FLTK headers: Xlib, which they pull in,
// defines macros (Bool, Status) that clash with the engine's value headers.
#pragma once

#include <string>

namespace lx::fltk {

std::string utf8(const std::u16string& text);
std::u16string utf16(const char* text);

}  // namespace lx::fltk

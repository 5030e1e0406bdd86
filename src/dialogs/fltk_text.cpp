#include "dialogs/fltk_text.h"

#include "lxbasic/text.h"

namespace lx::fltk {

std::string utf8(const std::u16string& text) {
  return toUtf8(text);
}
std::u16string utf16(const char* text) {
  return fromUtf8(text ? text : "");
}

}  // namespace lx::fltk

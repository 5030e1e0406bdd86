#include "bridge/script_services.h"
#include "builtins/families.h"
#include "dialogs/dialog_boxes.h"

namespace lx {

namespace {

std::shared_ptr<DialogProvider> providerFor(const ScriptServices* script) {
  if (script) {
    if (auto p = script->dialogs()) return p;
  }
  return defaultDialogProvider();
}

StopPoll stopPollFor(const ScriptServices* script) {
  if (!script) return [] { return false; };
  return [script] { return script->stopRequested(); };
}

Variant MsgBox3(LxBasicFunc& lib, const Variant& prompt, const Variant& buttons,
                const Variant& title) {
  const ScriptServices* script = lib.script();
  return Variant::int32(
      messageBox(*providerFor(script), prompt, buttons, title, stopPollFor(script)));
}

Variant MsgBox2(LxBasicFunc& lib, const Variant& prompt, const Variant& buttons) {
  return MsgBox3(lib, prompt, buttons, Variant());
}

Variant MsgBox1(LxBasicFunc& lib, const Variant& prompt) {
  return MsgBox3(lib, prompt, Variant::int32(0), Variant());
}

Variant InputBox5(LxBasicFunc& lib, const Variant& prompt, const Variant& title, const Variant& def,
                  const Variant& x, const Variant& y) {
  const ScriptServices* script = lib.script();
  return inputBox(*providerFor(script), prompt, title, def, x, y, stopPollFor(script));
}

// The four-argument form has always ignored its x; scripts written against it expect the
// window centred, so it stays that way.
Variant InputBox4(LxBasicFunc& lib, const Variant& prompt, const Variant& title, const Variant& def,
                  const Variant& /*x*/) {
  return InputBox5(lib, prompt, title, def, Variant::int32(0), Variant::int32(0));
}

Variant InputBox3(LxBasicFunc& lib, const Variant& prompt, const Variant& title,
                  const Variant& def) {
  return InputBox5(lib, prompt, title, def, Variant::int32(0), Variant::int32(0));
}

Variant InputBox2(LxBasicFunc& lib, const Variant& prompt, const Variant& title) {
  return InputBox3(lib, prompt, title, Variant(u""));
}

Variant InputBox1(LxBasicFunc& lib, const Variant& prompt) {
  return InputBox2(lib, prompt, Variant(u""));
}

}  // namespace

void registerDialogFunctions(LibraryBuilder& b) {
  b.method("MsgBox:", &MsgBox1)
      .method("MsgBox:buttons:", &MsgBox2)
      .method("MsgBox:buttons:title:", &MsgBox3)
      .method("InputBox:", &InputBox1)
      .method("InputBox:title:", &InputBox2)
      .method("InputBox:title:def:", &InputBox3)
      .method("InputBox:title:def:x:", &InputBox4)
      .method("InputBox:title:def:x:y:", &InputBox5);
}

}  // namespace lx

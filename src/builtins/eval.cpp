// Eval: evaluates a text as an expression of the calling script, with its variables,
// constants, procedures and host objects, by running the one-line assignment
// "__eval__ = <text>" through the script's own driver.
#include "bridge/script_services.h"
#include "builtins/common.h"
#include "builtins/families.h"
#include "builtins/guard.h"
#include "lxbasic/string_list.h"
#include "lxbasic/text.h"

namespace lx {

namespace {

constexpr const char16_t* kEvalVariable = u"__eval__";

Variant Eval(LxBasicFunc& lib, const Variant& text) {
  // Only a text can be trimmed; anything else fails the call itself rather than answering.
  Variant trimmed = TrimOf(text);
  ScriptServices* script = lib.script();
  if (!script) return Variant();
  return guarded(Variant(), [&]() -> Variant {
    LxBasicStringList lines;
    lines.setText(trimmed);
    if (lines.count() == 0) return Variant();
    UString first = lines.stringAtIndex(0);
    ValueRef slot = script->addVariable(kEvalVariable);
    if (!slot) return Variant();
    lines.clear();
    lines.addString(UString(kEvalVariable) + u" = " + first);
    // Whatever the line does, the name does not outlive the evaluation.
    struct Remove {
      ScriptServices* script;
      ~Remove() { script->removeVariable(kEvalVariable); }
    } remove{script};
    script->runNestedLines(lines);
    return slot->data();
  });
}

}  // namespace

void registerEvalFunction(LibraryBuilder& b) {
  b.method("Eval:", &Eval);
}

}  // namespace lx

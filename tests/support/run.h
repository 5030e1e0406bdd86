// Runs script text on the calling thread and keeps what the host would look at.
#pragma once

#include <string>

#include "lxbasic/script.h"
#include "lxbasic/text.h"

namespace lxtest {

struct Outcome {
  lx::Variant result;
  lx::ErrorRef error;
  int32_t code() const { return error ? error->code() : 0; }
  std::u16string text() const { return lx::toText(result); }
  std::string description() const { return error ? lx::toUtf8(error->description()) : ""; }
};

inline Outcome run(lx::LxBasicScript& script, std::u16string_view text) {
  script.setScript(text);
  Outcome o;
  o.result = script.runScript();
  o.error = script.error();
  return o;
}

// A fresh script with RESULT declared, so that tests read like the line they check.
inline Outcome run(std::u16string_view text) {
  lx::LxBasicScript script;
  std::u16string full = u"DIM RESULT\n";
  full += text;
  return run(script, full);
}

}  // namespace lxtest

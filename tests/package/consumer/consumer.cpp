// A host as someone outside the project writes it: public headers only, against an installed
// or embedded engine.
#include <cstdio>

#include "lxbasic/check.h"
#include "lxbasic/script.h"
#include "lxbasic/text.h"
#include "lxbasic/version.h"

int main() {
  lx::LxBasicScript script;
  script.addVarWithName(u"price", lx::Variant::real(9.5));
  script.setScript(std::string_view("DIM RESULT = UCase(\"total \") & price * 2"));
  lx::Variant result = script.run();
  if (lx::ErrorRef err = script.error(); err && err->code() > 0) {
    std::printf("error: %s\n", lx::toUtf8(err->description()).c_str());
    return 1;
  }
  bool shapeOk = lx::checkScript(std::string_view("FOR i = 1 TO 2\nNEXT\n")).empty();
  std::printf("%s %s: %s, check %s\n", lx::kEngineName, lx::kVersionText,
              lx::toUtf8(lx::toText(result)).c_str(), shapeOk ? "ok" : "wrong");
  return 0;
}

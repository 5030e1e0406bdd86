// LxBasicFunc: the built-in function library, registered as host object 0 of every script.
#pragma once

#include <string>
#include <vector>

#include "lxbasic/bridge.h"
#include "lxbasic/value.h"
#include "lxbasic/variant.h"

namespace lx {

class ScriptCore;

class LxBasicFunc final : public Object, public ScriptAware {
 public:
  LxBasicFunc();
  // Remembers the script and shows it the predefined constants (predefinedConstants()).
  void initWithScript(LxBasicScript& script) override;
  ScriptCore* script() const noexcept { return script_; }
  std::string className() const override { return "LxBasicFunc"; }

  // Objects made by CreateObject, kept for the life of the library object.
  std::vector<ObjectRef> objects;

 private:
  ScriptCore* script_ = nullptr;
};

// The library's predefined constants (vbOK, vbYesNo, ...): upper-case names and immutable
// slots, made once and shared by every script.
const std::vector<std::pair<UString, ValueRef>>& predefinedConstants();

}  // namespace lx

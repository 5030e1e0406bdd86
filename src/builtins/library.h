// LxBasicFunc: the built-in function library, registered as host object 0 of every script.
#pragma once

#include <string>
#include <vector>

#include "lxbasic/bridge.h"
#include "lxbasic/value.h"
#include "lxbasic/variant.h"

namespace lx {

class ScriptServices;

class LxBasicFunc final : public Object {
 public:
  LxBasicFunc();
  // The script whose host object 0 this is; its functions reach the script through it alone.
  void attach(ScriptServices& script) noexcept { script_ = &script; }
  // nullptr when the library is used on its own (a direct call from a test).
  ScriptServices* script() const noexcept { return script_; }
  std::string className() const override { return "LxBasicFunc"; }

  // Objects made by CreateObject, kept for the life of the library object.
  std::vector<ObjectRef> objects;

 private:
  ScriptServices* script_ = nullptr;
};

// The library's predefined constants (vbOK, vbYesNo, ...): upper-case names and immutable
// slots, made once and shared by every script.
const std::vector<std::pair<UString, ValueRef>>& predefinedConstants();

}  // namespace lx

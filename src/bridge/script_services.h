// What a built-in function may ask of the script that calls it. The library object is handed
// this interface when its script registers it, and reaches the script through nothing else;
// the script object implements it.
#pragma once

#include <memory>
#include <string_view>

#include "lxbasic/string_list.h"
#include "lxbasic/value.h"
#include "lxbasic/variant.h"

namespace lx {

class DialogProvider;

class ScriptServices {
 public:
  // A stop was requested for the run (terminate, the time limit): long work polls this.
  virtual bool stopRequested() const noexcept = 0;
  // Sleeps up to `seconds`, waking early when a stop is requested; answers false then.
  virtual bool interruptibleSleep(double seconds) const = 0;
  // Whether CreateObject may make an object of that class for this script.
  virtual bool mayCreate(std::string_view className) const = 0;
  // Where MsgBox and InputBox open their windows; nullptr for the default ones.
  virtual std::shared_ptr<DialogProvider> dialogs() const = 0;

  // Eval's part: a variable of the script (added, or the existing one of that name), the
  // removal of one, and a run of lines through the script's own driver while it is running,
  // with its variables, procedures and host objects. A failure is left on the script as any
  // line leaves it.
  virtual ValueRef addVariable(UStringView name) = 0;
  virtual void removeVariable(UStringView name) = 0;
  virtual void runNestedLines(const LxBasicStringList& lines) = 0;

 protected:
  ScriptServices() = default;
  ~ScriptServices() = default;
  ScriptServices(const ScriptServices&) = default;
  ScriptServices& operator=(const ScriptServices&) = default;
};

}  // namespace lx

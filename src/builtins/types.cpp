// Type inspection (VarType, TypeName, IsNumeric, IsNull, IsEmpty, IsObject), engine
// information, Sleep and the log writers Print and WriteLn.
#include <chrono>
#include <thread>

#include "bridge/script_services.h"
#include "builtins/families.h"
#include "builtins/guard.h"
#include "lxbasic/log.h"
#include "lxbasic/text.h"
#include "lxbasic/version.h"

namespace lx {

namespace {

// Only no value at all is Empty: an Empty script value arrives as the null object, which is
// an Object like any host object.
Variant VarType(LxBasicFunc& /*lib*/, const Variant& x) {
  return Variant::int32(static_cast<int32_t>(x.kind()));
}

Variant TypeName(LxBasicFunc& /*lib*/, const Variant& x) {
  switch (x.kind()) {
    case ValueKind::Empty:
      return u"Null";
    case ValueKind::Number:
      return u"Double";  // integers and booleans alike
    case ValueKind::Date:
      return u"Date";
    case ValueKind::String:
      return u"String";
    case ValueKind::Array:
      return u"Array";
    case ValueKind::Object:
      break;
  }
  return guarded(u"Nothing", [&] { return Variant::fromUtf8(x.object()->className()); });
}

template <ValueKind Kind>
Variant isKind(LxBasicFunc& /*lib*/, const Variant& x) {
  return Variant::boolean(x.kind() == Kind);
}

// Whole seconds only: Sleep(0.9) returns at once, Sleep(2.7) sleeps two seconds. A stop
// request for the script ends the sleep early.
void Sleep(LxBasicFunc& lib, const Variant& seconds) {
  try {
    int32_t n = truncToInt32(doubleValue(seconds));
    if (n < 1) return;
    if (lib.script()) {
      lib.script()->interruptibleSleep(n);
    } else {
      std::this_thread::sleep_for(std::chrono::seconds(n));
    }
  } catch (...) {
    // A value without a number of its own does not sleep.
  }
}

// Unguarded, like every "%@" text.
void WriteLn(LxBasicFunc& /*lib*/, const Variant& x) {
  logMessage(toText(x));
}
void Print(LxBasicFunc& lib, const Variant& x) {
  WriteLn(lib, x);
}

Variant ScriptEngine(LxBasicFunc& /*lib*/) {
  return Variant::fromUtf8(kEngineName);
}
Variant ScriptEngineMajorVersion(LxBasicFunc& /*lib*/) {
  return Variant::int32(kVersionMajor);
}
Variant ScriptEngineMinorVersion(LxBasicFunc& /*lib*/) {
  return Variant::int32(kVersionMinor);
}
// A text, not a number.
Variant ScriptEngineBuildVersion(LxBasicFunc& /*lib*/) {
  return Variant::fromUtf8(kVersionText);
}

}  // namespace

void registerTypeFunctions(LibraryBuilder& b) {
  b.method("VarType:", &VarType)
      .method("TypeName:", &TypeName)
      .method("IsNumeric:", &isKind<ValueKind::Number>)
      .method("IsNull:", &isKind<ValueKind::Empty>)
      .method("IsEmpty:", &isKind<ValueKind::Empty>)
      .method("IsObject:", &isKind<ValueKind::Object>)
      .method("Sleep:", &Sleep)
      .method("Print:", &Print)
      .method("WriteLn:", &WriteLn)
      .method("ScriptEngine", &ScriptEngine)
      .method("ScriptEngineMajorVersion", &ScriptEngineMajorVersion)
      .method("ScriptEngineMinorVersion", &ScriptEngineMinorVersion)
      .method("ScriptEngineBuildVersion", &ScriptEngineBuildVersion);
}

}  // namespace lx

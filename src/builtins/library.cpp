#include "builtins/library.h"

#include <mutex>

#include "bridge/script_services.h"
#include "foundation/memory_budget.h"
#include "builtins/families.h"
#include "lxbasic/error.h"
#include "lxbasic/script.h"
#include "lxbasic/text.h"
#include "lxbasic/value.h"

namespace lx {

namespace {

constexpr int64_t kCreatedObjectCost = 256;

struct Constant {
  const char16_t* name;
  int32_t value;
};

constexpr Constant kConstants[] = {
    {u"vbBinaryCompare", 0},
    {u"vbTextCompare", 1},
    {u"vbOKOnly", 0},
    {u"vbOKCancel", 1},
    {u"vbAbortRetryIgnore", 2},
    {u"vbYesNoCancel", 3},
    {u"vbYesNo", 4},
    {u"vbRetryCancel", 5},
    {u"vbCritical", 16},
    {u"vbQuestion", 32},
    {u"vbExclamation", 48},
    {u"vbInformation", 64},
    {u"vbDefaultButton1", 0},
    {u"vbDefaultButton2", 256},
    {u"vbDefaultButton3", 512},
    {u"vbDefaultButton4", 768},
    {u"vbApplicationModal", 0},
    {u"vbSystemModal", 4096},
    {u"vbOK", 1},
    {u"vbCancel", 2},
    {u"vbAbort", 3},
    {u"vbRetry", 4},
    {u"vbIgnore", 5},
    {u"vbYes", 6},
    {u"vbNo", 7},
    {u"vbGeneralDate", 0},
    {u"vbLongDate", 1},
    {u"vbShortDate", 2},
    {u"vbLongTime", 3},
    {u"vbShortTime", 4},
    {u"TristateUseDefault", -2},
    {u"TristateTrue", -1},
    {u"TristateFalse", 0},
};

// Only classes their host registered as creatable, and only those the script's allow-list
// names (when it has one); the library itself never, since a second library would be beyond
// the reach of its script's stop request. Anything else answers Empty, as a missing class.
Variant CreateObject(LxBasicFunc& lib, const Variant& name) {
  const std::string className = toUtf8(toText(name));
  const ClassInfo* cls = ClassRegistry::instance().byName(className);
  if (!cls || cls->type() == typeid(LxBasicFunc)) return Variant();
  if (lib.script() && !lib.script()->mayCreate(className)) return Variant();
  // The library keeps what it makes until the script goes; each costs the script memory.
  if (const BudgetRef& budget = currentBudget()) budget->charge(kCreatedObjectCost);
  ObjectRef made = cls->createInstance();
  if (!made) return Variant();
  lib.objects.push_back(made);
  return Variant(made);
}

void registerClasses() {
  ClassBuilder<LxError>("LxError")
      .method("Number", &LxError::Number)
      .method("Description", &LxError::Description)
      .method("Clear", &LxError::Clear)
      .method("Raise:", &LxError::Raise);
  LibraryBuilder b("LxBasicFunc");
  registerConversionFunctions(b);
  registerMathFunctions(b);
  registerStringFunctions(b);
  registerArrayFunctions(b);
  registerDateFunctions(b);
  registerFormatFunctions(b);
  registerTypeFunctions(b);
  registerEvalFunction(b);
  registerDialogFunctions(b);
  registerObjectFunctions(b);
}

}  // namespace

void registerObjectFunctions(LibraryBuilder& b) {
  b.method("CreateObject:", &CreateObject);
}

LxBasicFunc::LxBasicFunc() {
  static std::once_flag once;
  std::call_once(once, registerClasses);
}

// The predefined constants hold immutable numbers, so every script can share one set of
// read-only slots: a script can neither assign them nor change their data, only hide them
// under a variable of its own. Sharing them keeps making a script cheap.
const std::vector<std::pair<UString, ValueRef>>& predefinedConstants() {
  static const auto slots = [] {
    std::vector<std::pair<UString, ValueRef>> made;
    for (const Constant& c : kConstants) {
      made.emplace_back(upperCase(c.name), LxValue::make(Variant::int32(c.value), true));
    }
    return made;
  }();
  return slots;
}

}  // namespace lx

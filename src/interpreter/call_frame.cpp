#include "interpreter/call_frame.h"

#include "builtins/library.h"
#include "interpreter/procedures.h"
#include "interpreter/script_core.h"
#include "lxbasic/text.h"

namespace lx {

namespace {

// What an idle frame's parameters and result hold: nothing of the last call's values.
const ValueRef& vacantSlot() {
  static const ValueRef slot = LxValue::make(Variant(), true);
  return slot;
}

}  // namespace

CallFrame::CallFrame(const LxBasicSub& sub, ScriptCore& owner)
    : script_(ScriptCore::createChild(owner)), owner_(owner) {
  ScriptCore& s = *script_;
  s.getScript() = sub.body();  // its line tags say where each body line came from
  auto& vars = s.getVars();
  err_ = &vars.find(u"ERR")->second;
  freshErr_ = *err_;
  funcName_ = LxValue::make(Variant(sub.name()), true);
  auto entryOf = [&vars](UStringView name) { return &vars[upperCase(name)]; };
  for (size_t i = 0; i < sub.params().size(); ++i) {
    bindings_.push_back({entryOf(sub.params()[i]), Role::Parameter, i});
  }
  if (sub.func()) {
    for (UStringView name :
         {UStringView(sub.name()), UStringView(u"result"), UStringView(u"function")}) {
      bindings_.push_back({entryOf(name), Role::Result, 0});
    }
  }
  bindings_.push_back({entryOf(u"__func__"), Role::FuncName, 0});
  for (const Binding& b : bindings_) *b.entry = vacantSlot();
  s.varsChanged();
  names_ = vars.size();
  ownerObjects_ = owner.objsEpoch();
  s.getObjs().resize(1);  // the host objects are copied per call, so an idle frame holds none
}

CallFrame::~CallFrame() = default;

ValueRef CallFrame::bind(std::span<const Variant> args) {
  ScriptCore& s = *script_;
  s.adoptOwnerSettings();
  const auto& hostObjects = owner_.getObjs();
  if (hostObjects.size() > 1) {
    s.getObjs().insert(s.getObjs().end(), hostObjects.begin() + 1, hostObjects.end());
  }
  if (ownerObjects_ != owner_.objsEpoch()) {
    ownerObjects_ = owner_.objsEpoch();
    s.objsChanged();
  }
  *err_ = freshErr_;
  ValueRef result;
  for (const Binding& b : bindings_) {
    switch (b.role) {
      case Role::Parameter: {
        bool shared = false;
        *b.entry = boundSlot(args[b.parameter], false, &shared);
        break;
      }
      case Role::Result:
        if (!result) result = LxValue::make();
        *b.entry = result;
        break;
      case Role::FuncName:
        *b.entry = funcName_;
        break;
    }
  }
  s.varsChanged();
  s.recordNewNames(&locals_);
  return result;
}

bool CallFrame::unbind() {
  ScriptCore& s = *script_;
  s.recordNewNames(nullptr);
  s.clearTmpVars();
  auto& vars = s.getVars();
  for (const UString& name : locals_) vars.erase(name);
  locals_.clear();
  for (const Binding& b : bindings_) *b.entry = vacantSlot();
  *err_ = freshErr_;
  s.varsChanged();
  s.getObjs().resize(1);
  s.library().objects.clear();
  s._ifs.clear();
  s._loops.clear();
  s._newsub.reset();
  s._ignore_error = 0;
  if (s.hasError()) s.setError(nullptr);
  return vars.size() == names_ && !s.hasError() && s.getObjs().size() == 1;
}

}  // namespace lx

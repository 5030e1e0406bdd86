#include "interpreter/call_frame.h"

#include <algorithm>

#include "builtins/library.h"
#include "interpreter/procedures.h"
#include "interpreter/script_core.h"
#include "lxbasic/text.h"

namespace lx {

CallFrame::CallFrame(const LxBasicSub& sub, ScriptCore& owner)
    : script_(ScriptCore::createChild(owner)), owner_(owner), func_(sub.func()) {
  ScriptCore& s = *script_;
  s.getScript() = sub.body();  // its line tags say where each body line came from
  auto& vars = s.getVars();
  err_ = &vars.find(u"ERR")->second;
  makeErr();
  funcName_ = LxValue::make(Variant(sub.name()), true);
  frameEpoch_ = sub.frameEpoch();
  const std::vector<UString>& names = sub.boundNames();
  for (const UString& key : names) entries_.push_back(&vars[key]);
  s.setBoundNames(&names, entries_.data());
  auto entryOf = [this, &names](UStringView name) {
    const auto at = std::find(names.begin(), names.end(), upperCase(name));
    return entries_[static_cast<size_t>(at - names.begin())];
  };
  for (const UString& param : sub.params()) parameters_.push_back(entryOf(param));
  if (func_) {
    for (UStringView name :
         {UStringView(sub.name()), UStringView(u"result"), UStringView(u"function")}) {
      ValueRef* entry = entryOf(name);
      if (std::find(resultEntries_.begin(), resultEntries_.end(), entry) == resultEntries_.end()) {
        resultEntries_.push_back(entry);
      }
    }
  }
  funcEntry_ = entryOf(u"__func__");
  for (ValueRef* entry : parameters_) {
    shadowed_ =
        shadowed_ || entry == funcEntry_ ||
        std::find(resultEntries_.begin(), resultEntries_.end(), entry) != resultEntries_.end();
  }
  for (ValueRef* entry : parameters_) entry->reset();
  firstLocal_ = sub.firstLocal();
  dropLocals();
  bindResult();
  *funcEntry_ = funcName_;
  names_ = vars.size();
  s.getObjs().resize(1);  // the host objects are copied per call, so an idle frame holds none
}

CallFrame::~CallFrame() = default;

void CallFrame::renewErr() {
  if (*err_ != freshErr_) *err_ = freshErr_;  // the body failed, or a parameter is named err
  // Scripts can Raise and Clear the record, and keep it: it serves the next call only when
  // nothing else holds it and it is as a new script has it.
  const LxError& record = *freshRecord_;
  const bool untouched = freshErr_.use_count() == 2 &&
                         freshErr_->data().objectUnchecked().use_count() == 1 &&
                         record.code() == 0 && record.desc().empty() && record.line().empty() &&
                         record.lineNumber() == -1;
  if (!untouched) makeErr();
}

void CallFrame::makeErr() {
  auto record = std::make_shared<LxError>(0, UString(), UString(), -1);
  freshRecord_ = record.get();
  freshErr_ = LxValue::make(Variant(std::move(record)), true);
  *err_ = freshErr_;
}

void CallFrame::dropLocals() {
  for (size_t i = firstLocal_; i < entries_.size(); ++i) entries_[i]->reset();
}

void CallFrame::vacate(ValueRef& entry) {
  if (!entry) return;
  if (entry.use_count() == 1) {
    entry->setData(Variant());
  } else {
    entry.reset();
  }
}

void CallFrame::bindResult() {
  if (!func_) return;
  result_ = LxValue::make();
  for (ValueRef* entry : resultEntries_) *entry = result_;
}

const LxValue* CallFrame::bind(std::span<const Variant> args) {
  ScriptCore& s = *script_;
  const auto& hostObjects = owner_.getObjs();
  if (hostObjects.size() > 1) {
    s.getObjs().insert(s.getObjs().end(), hostObjects.begin() + 1, hostObjects.end());
  }
  if (ownerObjects_ != owner_.objsEpoch()) {
    ownerObjects_ = owner_.objsEpoch();
    // The frame's list is its own library followed by the owner's objects but the first.
    const bool sameClasses =
        !hostObjects.empty() && hostObjects.front()->lxClass() == s.library().lxClass();
    s.setObjsEpoch(sameClasses ? ownerObjects_ : nextBindingEpoch());
  }
  // Into the slot the last call had, when nothing else took it.
  for (size_t i = 0; i < parameters_.size(); ++i) bindSlot(*parameters_[i], args[i], false);
  if (shadowed_) {
    bindResult();
    *funcEntry_ = funcName_;
  }
  s.setVarsEpoch(frameEpoch_);
  s.recordNewNames(&locals_);
  return result_.get();
}

bool CallFrame::unbind() {
  ScriptCore& s = *script_;
  s.recordNewNames(nullptr);
  if (!s._tmps.empty()) s.clearTmpVars();
  auto& vars = s.getVars();
  for (const UString& name : locals_) vars.erase(name);
  locals_.clear();
  dropLocals();
  for (ValueRef* entry : parameters_) vacate(*entry);
  if (func_) {
    // The result slot is emptied for the next call unless something else took it.
    const bool kept = !shadowed_ &&
                      result_.use_count() == static_cast<long>(resultEntries_.size()) + 1 &&
                      std::all_of(resultEntries_.begin(), resultEntries_.end(),
                                  [this](const ValueRef* entry) { return *entry == result_; });
    if (kept) {
      result_->setData(Variant());
    } else {
      bindResult();
    }
  }
  if (*funcEntry_ != funcName_) *funcEntry_ = funcName_;
  renewErr();
  s.getObjs().resize(1);
  if (!s.library().objects.empty()) s.library().objects.clear();
  s._ifs.clear();
  s._loops.clear();
  s._newsub.reset();
  s._ignore_error = 0;
  if (s.hasError()) s.setError(nullptr);
  return vars.size() == names_ && !s.hasError() && s.getObjs().size() == 1;
}

}  // namespace lx

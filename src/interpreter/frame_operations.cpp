// What the compiled form asks of a frame beyond its state, carried out by the script object
// that every frame is.
#include "execution/frame.h"
#include "interpreter/procedures.h"
#include "interpreter/script_core.h"

namespace lx {

namespace {

ScriptCore& script(Frame& frame) noexcept {
  return static_cast<ScriptCore&>(frame);
}
const ScriptCore& script(const Frame& frame) noexcept {
  return static_cast<const ScriptCore&>(frame);
}

}  // namespace

const ValueRef& Frame::variableSlot(const UString& key) const {
  return script(*this).variableSlot(key);
}

ValueRef Frame::getValueForVar(UStringView name) const {
  return script(*this).getValueForVar(name);
}

bool Frame::isLoopVariable(const LxValue* slot) const {
  return script(*this).isLoopVariable(slot);
}

int32_t Frame::findSel(const MethodInfo** method, UStringView name, int32_t n) const {
  return script(*this).findSel(method, name, n);
}

bool Frame::sendCounted(Object& target, const MethodInfo& method, std::span<const Variant> args,
                        CallResult* r) {
  return script(*this).sendCounted(target, method, args, r);
}

Variant Frame::operate(char16_t op, const Variant& a, const Variant& b) {
  return script(*this).operate(op, a, b);
}

void Frame::loopJump(const LoopJump& jump) {
  script(*this).runLoopJump(jump);
}

std::shared_ptr<LxBasicSub> Frame::getSubByName(UStringView name) const {
  return script(*this).getSubByName(name);
}

CallResult Frame::callProcedure(LxBasicSub& sub, std::span<const Variant> args, ErrorRef* error) {
  return sub.run(args, error);
}

}  // namespace lx

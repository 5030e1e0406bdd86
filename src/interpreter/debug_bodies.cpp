#include "interpreter/debug_bodies.h"

#include <algorithm>

#include "interpreter/script_core.h"
#include "lxbasic/text.h"

namespace lx {

namespace {

// Elements are slots: what they hold is what a script sees.
const Variant& held(const Variant& v) {
  const LxValue* slot = slotOf(v);
  return slot ? slot->data() : v;
}

}  // namespace

DebugVariable describeValue(UString name, const Variant& value, bool constant) {
  const Variant& v = held(value);
  DebugVariable out;
  out.name = std::move(name);
  out.kind = kindName(v.kind());
  out.constant = constant;
  out.value = toText(v);
  // One line per value: an error record's text has two.
  std::replace(out.value.begin(), out.value.end(), u'\n', u' ');
  if (out.value.size() > kDebugValueText) {
    out.value.resize(kDebugValueText);
    out.value += u"...";
  }
  // An array's shape follows its first elements down.
  const Variant* level = &v;
  while (level->isArray() && out.bounds.size() < 16) {
    const auto& items = level->arrayUnchecked()->items;
    out.bounds.push_back(static_cast<int32_t>(items.size()));
    if (items.empty()) break;
    level = &held(items.front());
  }
  return out;
}

bool DebugBodies::callerTraps() const {
  if (bodies_.size() < 2) return false;
  const ScriptCore* innermost = bodies_.back().script;
  return std::any_of(bodies_.begin(), bodies_.end() - 1, [innermost](const Body& b) {
    return b.script != innermost && b.script->trapsErrors();
  });
}

const DebugBodies::Body* DebugBodies::frameAt(size_t frame) const {
  if (frame >= bodies_.size()) return nullptr;
  return &bodies_[bodies_.size() - 1 - frame];
}

std::vector<DebugFrame> DebugBodies::stack() {
  std::vector<DebugFrame> out;
  for (size_t i = 0; i < bodies_.size(); ++i) {
    const Body& b = *frameAt(i);
    DebugFrame f;
    f.kind = b.eval               ? DebugFrame::Kind::Eval
             : b.script->isRoot() ? DebugFrame::Kind::Main
                                  : DebugFrame::Kind::Procedure;
    if (f.kind == DebugFrame::Kind::Procedure) f.procedure = b.script->procedureName();
    f.line = b.line;
    f.text = b.text;
    out.push_back(std::move(f));
  }
  return out;
}

std::vector<DebugVariable> DebugBodies::variables(size_t frame) {
  std::vector<DebugVariable> out;
  const Body* b = frameAt(frame);
  if (!b) return out;
  for (const auto& [name, slot] : b->script->getVars()) {
    if (!slot || name.starts_with(u"____")) continue;  // a line's temporaries
    out.push_back(describeValue(name, slot->data(), slot->constant()));
  }
  std::sort(out.begin(), out.end(),
            [](const DebugVariable& a, const DebugVariable& c) { return a.name < c.name; });
  return out;
}

DebugValue DebugBodies::evaluate(UStringView expression, size_t frame) {
  const Body* b = frameAt(frame);
  if (!b) {
    DebugValue none;
    none.text = u"no such frame";
    return none;
  }
  return b->script->evaluateForDebugger(expression);
}

bool DebugBodies::stopRequested() const {
  return shared_.stopRequested();
}

}  // namespace lx

// One operand text of a compiled line: what the rewriting evaluator would hand to getValue.
// Everything the text alone decides (literals, numbers, whether it can name a variable) is
// worked out once; what depends on the script (variables, zero-argument methods) is looked up
// when the operand is read and remembered for as long as the table it came from is unchanged.
#pragma once

#include <cstdint>
#include <optional>

#include "execution/frame.h"
#include "lxbasic/bridge.h"
#include "lxbasic/value.h"
#include "lxbasic/variant.h"

namespace lx::compiled {

// What getValue answers for an operand: a slot, whose data an operator reads when it runs.
// A variable's slot is held, not copied; literals and registers outlive the evaluation.
class Held {
 public:
  Held() = default;
  Held(const Held&) = delete;
  Held& operator=(const Held&) = delete;
  const Variant& value() const noexcept { return *value_; }
  // A slot that its table keeps alive for now: borrowed until keep() is called.
  void slot(const ValueRef& s) noexcept {
    source_ = &s;
    value_ = &s->data();
  }
  // A slot that nothing else may keep alive (an element slot made for a non-array).
  void hold(ValueRef s) {
    hold_ = std::move(s);
    value_ = &hold_->data();
  }
  // Holds a borrowed slot, for when code may run (and change the table) before it is read.
  void keep() {
    if (source_ && !hold_) hold_ = *source_;
  }
  void point(const Variant& v) noexcept { value_ = &v; }
  void own(Variant v) {
    own_.emplace(std::move(v));
    value_ = &*own_;
  }

 private:
  const Variant* value_ = nullptr;
  const ValueRef* source_ = nullptr;
  ValueRef hold_;
  std::optional<Variant> own_;  // rarely used: an optional costs nothing to destroy empty
};

// A variable looked up once and remembered with the epoch of the table it was found in. In
// call frames, a name the call binds is remembered by its place in the procedure's list of
// bound names instead, which holds in every frame of the procedure, however deep.
struct VariableCache {
  uint64_t epoch = 0;
  ValueRef slot;
  // Where the name's slot is kept (the table's entry, a constant's, or an empty reference),
  // found in the names epoch `namesIn`: while no name comes or goes it stays there, so a
  // slot replaced under the name (a FOR over it, the ON ERROR record) is read from there
  // without a look-up by name.
  const ValueRef* found = nullptr;
  uint64_t namesIn = 0;
  const std::vector<UString>* boundNames = nullptr;
  int32_t bound = -1;  // the name's index in boundNames, -1 for none

  // The frame's entry when the name was found bound in frames of this script's procedure.
  const ValueRef* boundEntry(const Frame& script) const noexcept {
    if (bound < 0 || boundNames != script.boundNames()) return nullptr;
    return &script.boundEntry(static_cast<size_t>(bound));
  }
};
const ValueRef& lookupVariableAgain(Frame& script, const UString& key, VariableCache& cache);
// The slot the upper-cased name has in the script's own table, or nullptr.
inline const ValueRef& lookupVariable(Frame& script, const UString& key, VariableCache& cache) {
  if (cache.epoch == script.varsEpoch()) return cache.slot;
  return lookupVariableAgain(script, key, cache);
}

class Leaf {
 public:
  explicit Leaf(UStringView text);

  // getValue's rules, in its order: the variable's value, a string or radix literal, a
  // zero-argument method's answer, a number. False when the text is none of these; an error
  // may then be set (a lone quote, a failed method call).
  bool read(Frame& script, Held& out) const {
    const Known k = known(script);
    if (k.slot) {
      out.slot(*k.slot);
      return true;
    }
    if (k.value) {
      out.point(*k.value);
      return true;
    }
    return readSlow(script, out);
  }
  // The value read() would point at, when that is known without running anything; nullptr
  // when reading takes the long way.
  const Variant* peek(const Frame& script) const {
    const Known k = known(script);
    return k.slot ? &(*k.slot)->data() : k.value;
  }
  // False when reading the operand now surely runs no code (no method call).
  bool mayRunCode(const Frame& script) const {
    const Known k = known(script);
    return !k.slot && !k.value;
  }
  // The variable the text names right now; nullptr for an empty text or no variable.
  const ValueRef& variable(Frame& script) const;
  const UString& text() const noexcept { return text_; }
  const UString& key() const noexcept { return upper_; }

 private:
  // What the operand reads as while the tables it was found in are unchanged: a variable's
  // slot, or a literal or number that names neither a variable nor a method. Neither when
  // reading must take the long way.
  struct Known {
    const ValueRef* slot = nullptr;
    const Variant* value = nullptr;
  };
  [[gnu::always_inline]] Known known(const Frame& script) const {
    if (literalOnly_) return {nullptr, &literal_};
    if (!mayBeVariable_ || variable_.epoch == script.varsEpoch()) {
      if (variable_.slot) return {&variable_.slot, nullptr};
      if (numberOnly(script)) return {nullptr, &literal_};
    } else if (const ValueRef* entry = variable_.boundEntry(script); entry && *entry) {
      // A local the body has not declared yet has an empty entry: the long way decides.
      return {entry, nullptr};
    }
    return {};
  }
  bool readSlow(Frame& script, Held& out) const;
  bool callMethod(Frame& script, Held& out, bool& found) const;
  bool numberOnly(const Frame& script) const {
    return hasNumber_ && !method_ && methodEpoch_ == script.objsEpoch();
  }

  UString text_;   // trimmed
  UString upper_;  // the variable table's key
  bool mayBeVariable_ = false;
  bool badQuote_ = false;
  bool hasLiteral_ = false;  // a string or radix literal: decided before methods
  bool mayBeMethod_ = false;
  bool hasNumber_ = false;    // a number: decided after methods
  bool literalOnly_ = false;  // a string or radix literal, which no name can hide
  Variant literal_;
  mutable VariableCache variable_;
  mutable uint64_t methodEpoch_ = 0;
  mutable const MethodInfo* method_ = nullptr;
  mutable int32_t target_ = -1;  // the method's object: its index in the script's list
};

}  // namespace lx::compiled

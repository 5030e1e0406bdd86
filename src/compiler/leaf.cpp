#include "compiler/leaf.h"

#include <algorithm>

#include "execution/frame.h"
#include "foundation/scanning.h"
#include "lxbasic/text.h"
#include "syntax/text_rules.h"

namespace lx::compiled {

namespace {

const ValueRef kNoSlot;

}  // namespace

const ValueRef& lookupVariableAgain(Frame& script, const UString& key, VariableCache& cache) {
  if (const std::vector<UString>* names = script.boundNames()) {
    if (cache.boundNames != names) {
      const auto at = std::find(names->begin(), names->end(), key);
      cache.bound = at == names->end() ? -1 : static_cast<int32_t>(at - names->begin());
      cache.boundNames = names;
    }
    if (const ValueRef* entry = cache.boundEntry(script)) return *entry;
  }
  if (cache.namesIn != script.namesEpoch()) {
    cache.found = &script.variableSlot(key);
    cache.namesIn = script.namesEpoch();
  }
  cache.slot = *cache.found;
  cache.epoch = script.varsEpoch();
  return cache.slot;
}

Leaf::Leaf(UStringView text) : text_(trim(text)), upper_(upperCase(text_)) {
  // Every name in a variable table passed checkVarName, so other texts never name one.
  mayBeVariable_ = checkVarName(upper_);
  mayBeMethod_ = !text_.empty() && !isForbiddenMethodName(upper_);
  if (!text_.empty()) {
    const bool first = text_.front() == u'"';
    const bool last = text_.back() == u'"';
    if (first != last) {
      badQuote_ = true;
      return;
    }
    if (first) {
      UString inner = text_.size() >= 2 ? text_.substr(1, text_.size() - 2) : UString();
      literal_ = Variant(replace(u"\"\"", u"\"", inner, 2));
      hasLiteral_ = true;
      literalOnly_ = !mayBeVariable_;
      return;
    }
    if (text_.size() >= 3 && text_[0] == u'&') {
      if (text_[1] == u'H' || text_[1] == u'h') {
        literal_ = radixLiteral(UStringView(text_).substr(2), 16);
        hasLiteral_ = true;
        literalOnly_ = !mayBeVariable_;
        return;
      }
      if (text_[1] == u'O' || text_[1] == u'o') {
        literal_ = radixLiteral(UStringView(text_).substr(2), 8);
        hasLiteral_ = true;
        literalOnly_ = !mayBeVariable_;
        return;
      }
    }
  }
  double number = 0;
  if (scanNumber(text_, &number)) {
    hasNumber_ = true;
    literal_ = Variant::real(number);
  }
}

const ValueRef& Leaf::variable(Frame& script) const {
  if (!mayBeVariable_ || text_.empty()) return kNoSlot;
  return lookupVariable(script, upper_, variable_);
}

bool Leaf::callMethod(Frame& script, Held& out, bool& found) const {
  if (methodEpoch_ == script.objsEpoch() && !method_) {
    found = false;
    return false;
  }
  if (methodEpoch_ != script.objsEpoch()) {
    method_ = nullptr;
    target_ = script.findSel(&method_, text_, 0);
    methodEpoch_ = script.objsEpoch();
  }
  found = method_ != nullptr;
  if (!found) return false;
  // Held for the call: the method may change the script's object list.
  ObjectRef target = script.getObjs()[static_cast<size_t>(target_)];
  CallResult r;
  if (!script.sendCounted(*target, *method_, {}, &r)) return false;
  if (r.argumentMismatch) {
    script.setError(LxError::make(kWrongArgumentCount));
    return false;
  }
  out.own(std::move(r.value));
  return true;
}

bool Leaf::readSlow(Frame& script, Held& out) const {
  if (mayBeVariable_) {
    if (const ValueRef& slot = lookupVariable(script, upper_, variable_)) {
      out.slot(slot);
      return true;
    }
  }
  if (badQuote_) {
    script.setError(LxError::make(kSyntaxError));
    return false;
  }
  if (hasLiteral_) {
    out.point(literal_);
    return true;
  }
  if (mayBeMethod_) {
    bool found = false;
    const bool answered = callMethod(script, out, found);
    if (found) return answered;
  }
  if (hasNumber_) {
    out.point(literal_);
    return true;
  }
  return false;
}

}  // namespace lx::compiled

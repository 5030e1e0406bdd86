#include "lxbasic/value.h"

#include "foundation/memory_budget.h"
#include "lxbasic/text.h"

namespace lx {

bool LxValue::isEqual(const Variant& other) const {
  if (type_ == ValueKind::Empty) return false;
  if (const LxValue* slot = slotOf(other)) return valuesEqual(data_, slot->data());
  return valuesEqual(data_, other);
}

UString LxValue::description() const {
  if (type_ == ValueKind::Empty) return UString();
  try {
    return toText(data_);
  } catch (...) {
    rethrowIfLimit();
    return UString();
  }
}

}  // namespace lx

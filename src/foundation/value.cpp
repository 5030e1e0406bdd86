#include "lxbasic/value.h"

#include <memory>
#include <utility>

#include "foundation/memory_budget.h"
#include "foundation/slot_pool.h"
#include "lxbasic/text.h"

namespace lx {

std::shared_ptr<LxValue> LxValue::make(Variant data, bool constant) {
  return std::allocate_shared<LxValue>(SlotAllocator<LxValue, /*kMustPool=*/true>{},
                                       std::move(data), constant);
}

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

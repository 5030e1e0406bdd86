#include "lxbasic/value.h"

#include <memory>
#include <utility>

#include "foundation/memory_budget.h"
#include "foundation/nesting.h"
#include "foundation/slot_pool.h"
#include "lxbasic/text.h"

namespace lx {

std::shared_ptr<LxValue> LxValue::make(Variant data, bool constant) {
  return std::allocate_shared<LxValue>(SlotAllocator<LxValue, /*kMustPool=*/true>{},
                                       std::move(data), constant);
}

const Variant& Variant::unslotted() const noexcept {
  const LxValue* slot = slotOf(*this);
  return slot ? slot->data() : *this;
}

namespace {

// True when the script can use `list` as it is: every item a slot, or a nested list that is
// so too (the rows of a DIM'd array). Lists met again, or too deep, are left alone.
bool scriptShaped(const Array& list) {
  NestingPath inside(&list);
  if (!inside.entered()) return true;
  for (const Variant& item : list.items) {
    if (slotOf(item)) continue;
    if (item.isArray() && scriptShaped(*item.arrayUnchecked())) continue;
    return false;
  }
  return true;
}

Variant copyIntoSlots(const ArrayRef& list) {
  NestingPath inside(list.get());
  if (!inside.entered()) return Variant(list);
  auto copy = Array::make();
  copy->chargeFor(list->items.size());
  copy->items.reserve(list->items.size());
  for (const Variant& item : list->items) {
    if (slotOf(item)) {
      copy->items.push_back(item);
    } else {
      copy->items.emplace_back(
          LxValue::make(item.isArray() ? copyIntoSlots(item.arrayUnchecked()) : item));
    }
  }
  return Variant(copy);
}

}  // namespace

Variant scriptValueOf(const Variant& value) {
  if (!value.isArray() || scriptShaped(*value.arrayUnchecked())) return value;
  return copyIntoSlots(value.arrayUnchecked());
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

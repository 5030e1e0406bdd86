// LxValue: one variable slot. Variables, constants, temporaries and array elements are slots.
#pragma once

#include <memory>
#include <typeinfo>

#include "lxbasic/export.h"
#include "lxbasic/variant.h"

namespace lx {

class LX_API LxValue final : public Object {
 public:
  LxValue() = default;
  explicit LxValue(Variant data, bool constant = false) : constant_(constant) {
    setData(std::move(data));
  }
  // Slots come from a pool of their own: scripts make and drop them by the thousand.
  static std::shared_ptr<LxValue> make(Variant data = {}, bool constant = false);

  bool constant() const noexcept { return constant_; }
  void setConstant(bool c) noexcept { constant_ = c; }
  const Variant& data() const noexcept { return data_; }
  ValueKind type() const noexcept { return type_; }
  // The kind follows the value. Safe when handed the slot's own value.
  void setData(const Variant& v) { setData(Variant(v)); }
  void setData(Variant&& v) noexcept {
    type_ = v.kind();
    data_ = std::move(v);
  }

  // Equality with another slot's data or with a plain value; an Empty slot equals nothing.
  bool isEqual(const Variant& other) const;
  // "" for an Empty slot, otherwise the "%@" text of the data; never throws.
  UString description() const override;
  std::string className() const override { return "LxValue"; }

 private:
  bool constant_ = false;
  ValueKind type_ = ValueKind::Empty;
  Variant data_;
};
using ValueRef = std::shared_ptr<LxValue>;

// The slot a value holds (array elements are slots), or nullptr. LxValue is final, so its
// exact type answers what a dynamic cast would, for a fraction of the cost.
inline LxValue* slotOf(const Variant& v) noexcept {
  if (!v.isObject()) return nullptr;
  Object* o = v.objectUnchecked().get();
  return o && typeid(*o) == typeid(LxValue) ? static_cast<LxValue*>(o) : nullptr;
}
inline ValueRef slotRefOf(const Variant& v) {
  return slotOf(v) ? std::static_pointer_cast<LxValue>(v.objectUnchecked()) : nullptr;
}

// A value a host hands to a script, shaped as script arrays are: an array holding anything
// but variable slots (a host's Variant::from(std::vector<Variant>{...})) is copied, each item
// in a slot of its own and nested arrays alike, so that the script can index and assign it.
// Arrays that are already so, and every other value, are answered as they are.
LX_API Variant scriptValueOf(const Variant& value);

}  // namespace lx

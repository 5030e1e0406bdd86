// The variable table, temporaries and arrays.
#include <algorithm>
#include <iterator>
#include <unordered_map>

#include "builtins/library.h"
#include "foundation/scanning.h"
#include "interpreter/script_core.h"
#include "lxbasic/text.h"
#include "syntax/text_rules.h"

namespace lx {

ValueRef ScriptCore::addVarWithName(UStringView name, const Variant& value, bool constant) {
  if (!checkVarName(name)) {
    setError(LxError::make(kBadVariableName));
    return nullptr;
  }
  ValueRef slot;
  const bool shared = bindSlot(slot, value, constant);
  // A shared slot is not answered: the caller gets a slot of its own, as it always has.
  ValueRef answer = shared ? LxValue::make(Variant(), constant) : slot;
  auto [entry, inserted] = _vars.insert_or_assign(upperCase(name), std::move(slot));
  // An entry that was there, even empty (a procedure's local before its declaration), is a
  // name compiled lines find by place, never one they remember as absent.
  if (inserted) {
    namesChanged();
    if (newNames_) newNames_->push_back(entry->first);
  } else {
    varsChanged();
  }
  return answer;
}

namespace {

struct SharedConstant {
  ValueRef slot;
  uint8_t part;
};

// Immutable, so every script shares the same slots.
const std::unordered_map<UString, SharedConstant>& sharedConstants() {
  static const auto table = [] {
    std::unordered_map<UString, SharedConstant> made;
    for (const auto& [name, slot] : predefinedConstants()) {
      made.emplace(name, SharedConstant{slot, ScriptCore::kLibraryConstants});
    }
    auto own = [&made](const char16_t* name, ValueRef slot) {
      made.emplace(name, SharedConstant{std::move(slot), ScriptCore::kScriptConstants});
    };
    own(u"NULL", LxValue::make(Variant(), true));
    own(u"NOTHING", LxValue::make(Variant(), true));
    own(u"EMPTY", LxValue::make(Variant(), true));
    own(u"TRUE", LxValue::make(Variant::boolean(true), true));
    own(u"FALSE", LxValue::make(Variant::boolean(false), true));
    return made;
  }();
  return table;
}

const ValueRef kNoSlot;

}  // namespace

const ValueRef& ScriptCore::variableSlot(const UString& key) const {
  if (auto it = _vars.find(key); it != _vars.end()) return it->second;
  if (constantsShown_ != 0) {
    const auto& constants = sharedConstants();
    if (auto it = constants.find(key);
        it != constants.end() && (it->second.part & constantsShown_)) {
      return it->second.slot;
    }
  }
  return kNoSlot;
}

bool ScriptCore::isPredefinedConstant(const UString& key) {
  return sharedConstants().contains(key);
}

void ScriptCore::showConstants(uint8_t parts) {
  const auto& constants = sharedConstants();
  for (auto it = _vars.begin(); it != _vars.end();) {
    const auto constant = constants.find(it->first);
    const bool hidden = constant != constants.end() && (constant->second.part & parts);
    it = hidden ? _vars.erase(it) : std::next(it);
  }
  constantsShown_ |= parts;
  namesChanged();
}

ValueRef ScriptCore::getValueForVar(UStringView name) const {
  return variableSlot(upperCase(name));
}

void ScriptCore::removeVar(UStringView name) {
  namesChanged();
  _vars.erase(upperCase(name));
}

void ScriptCore::clearTmpVars() {
  for (const UString& name : _tmps) _vars.erase(name);
  _tmps.clear();
}

UString ScriptCore::storeTempSlot(ValueRef slot) {
  UString name = getTmpVarName();
  // The table is keyed by upper-cased names; "____var_" upper-cases to "____VAR_".
  UString key = name;
  key.replace(4, 3, u"VAR");
  _vars.insert_or_assign(key, std::move(slot));
  _tmps.push_back(std::move(key));
  return name;
}

UString ScriptCore::storeTemp(Variant value) {
  return storeTempSlot(LxValue::make(std::move(value)));
}

ValueRef getElement(std::span<const Variant> indices, const LxValue* slot) {
  if (!slot || slot->type() != ValueKind::Array) return LxValue::make();
  const Variant* current = &slot->data();
  for (const Variant& index : indices) {
    // More indices than dimensions, or one outside its dimension.
    current = itemAt(*current, leadingIntOf(index));
    if (!current) return nullptr;
  }
  return slotRefOf(*current);
}

void dimArray(Array& list, int32_t count, bool leaf) {
  auto fill = [count, leaf](Array& target) {
    const size_t total = target.items.size() + static_cast<size_t>(std::max(count, 0));
    target.chargeFor(total);
    target.items.reserve(total);
    for (int32_t i = 0; i < count; ++i) {
      if (leaf) {
        target.items.emplace_back(LxValue::make());
      } else {
        target.items.emplace_back(Array::make());
      }
    }
  };
  if (list.items.empty()) {
    fill(list);
    return;
  }
  // Descend along first elements to the deepest list whose first element is an empty list.
  Array* level = &list;
  while (!level->items.empty() && level->items[0].isArray() &&
         !level->items[0].array()->items.empty() && level->items[0].array()->items[0].isArray()) {
    level = level->items[0].array().get();
  }
  for (Variant& element : level->items) {
    if (element.isArray()) fill(*element.array());
  }
}

}  // namespace lx

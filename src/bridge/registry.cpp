// The class registry and the per-class method cache.
#include <algorithm>
#include <mutex>
#include <shared_mutex>
#include <unordered_map>

#include "lxbasic/bridge.h"
#include "lxbasic/exceptions.h"
#include "lxbasic/text.h"

namespace lx {

struct ClassRegistry::Impl {
  mutable std::shared_mutex mutex;
  // ClassInfo entries never move once made, so pointers to them stay valid.
  std::unordered_map<std::string, std::unique_ptr<ClassInfo>> byName;
  std::unordered_map<std::type_index, ClassInfo*> byType;
};

ClassRegistry& ClassRegistry::instance() {
  static ClassRegistry registry;
  return registry;
}

ClassRegistry::Impl& ClassRegistry::impl() const {
  static Impl impl;
  return impl;
}

ClassInfo& ClassRegistry::add(std::string name, std::type_index type) {
  Impl& d = impl();
  std::unique_lock lock(d.mutex);
  if (auto it = d.byType.find(type); it != d.byType.end()) return *it->second;
  auto info = std::make_unique<ClassInfo>(name, type);
  ClassInfo* raw = info.get();
  d.byName[std::move(name)] = std::move(info);
  d.byType.emplace(type, raw);
  return *raw;
}

const ClassInfo* ClassRegistry::byName(std::string_view name) const {
  Impl& d = impl();
  std::shared_lock lock(d.mutex);
  auto it = d.byName.find(std::string(name));
  return it == d.byName.end() ? nullptr : it->second.get();
}

const ClassInfo* ClassRegistry::byType(std::type_index type) const {
  Impl& d = impl();
  std::shared_lock lock(d.mutex);
  auto it = d.byType.find(type);
  return it == d.byType.end() ? nullptr : it->second;
}

namespace {

// Upper-cased first part of a selector -> the class's methods with that first part, one per
// argument count (the first registered wins).
using MethodTable = std::unordered_map<UString, std::vector<const MethodInfo*>>;

// One lock guards the tables and every class's method list, so that a method registered
// while scripts run on other threads is seen whole or not at all.
struct MethodCache {
  std::shared_mutex mutex;
  std::unordered_map<const ClassInfo*, MethodTable> tables;
};

MethodCache& methodCache() {
  static MethodCache cache;
  return cache;
}

int32_t colonCount(std::string_view selector) {
  return static_cast<int32_t>(std::count(selector.begin(), selector.end(), ':'));
}

MethodTable buildTable(const ClassInfo& cls) {
  MethodTable table;
  for (const MethodInfo& m : cls.methods()) {
    size_t colon = m.selector.find(':');
    UString key = upperCase(fromUtf8(m.selector.substr(0, colon)));
    const int32_t params = colonCount(m.selector);
    auto& entries = table[key];
    bool taken = false;
    for (const MethodInfo* e : entries) taken = taken || colonCount(e->selector) == params;
    if (!taken) entries.push_back(&m);
  }
  return table;
}

const MethodInfo* lookUp(const MethodTable& table, const UString& key, int32_t n) {
  auto it = table.find(key);
  if (it == table.end()) return nullptr;
  for (const MethodInfo* m : it->second) {
    if (colonCount(m->selector) == n) return m;
  }
  return nullptr;
}

}  // namespace

const MethodInfo* ClassInfo::instanceMethod(std::string_view selector) const {
  std::shared_lock lock(methodCache().mutex);
  for (const ClassInfo* c = this; c; c = c->super_) {
    for (const MethodInfo& m : c->methods_) {
      if (m.selector == selector) return &m;
    }
  }
  return nullptr;
}

void ClassInfo::addMethod(MethodInfo m) {
  MethodCache& cache = methodCache();
  std::unique_lock lock(cache.mutex);
  for (const MethodInfo& existing : methods_) {
    if (existing.selector == m.selector) {
      throw BindingException("class " + name_ + ": the selector \"" + m.selector +
                             "\" is registered twice");
    }
  }
  methods_.push_back(std::move(m));
  // Scripts that looked the class up before see the new method on their next call.
  cache.tables.erase(this);
}

const MethodInfo* findMethod(const ClassInfo* cls, UStringView name, int32_t n) {
  if (!cls || name.empty()) return nullptr;
  const UString key = upperCase(name);
  MethodCache& cache = methodCache();
  {
    std::shared_lock lock(cache.mutex);
    if (auto it = cache.tables.find(cls); it != cache.tables.end()) {
      return lookUp(it->second, key, n);
    }
  }
  std::unique_lock lock(cache.mutex);
  auto [it, inserted] = cache.tables.try_emplace(cls);
  if (inserted) it->second = buildTable(*cls);
  return lookUp(it->second, key, n);
}

const MethodInfo* findMethodBySel(const ClassInfo* cls, std::string_view selector) {
  return cls ? cls->instanceMethod(selector) : nullptr;
}

CallResult sendMsgToObj(Object& target, const MethodInfo& method, std::span<const Variant> args) {
  if (static_cast<size_t>(method.arity) != args.size()) return CallResult{Variant(), true};
  return CallResult{method.call(target, args.data()), false};
}

CallResult sendMsgToObj(Object& target, std::string_view selector, std::span<const Variant> args) {
  const MethodInfo* method = findMethodBySel(target.lxClass(), selector);
  if (!method) return CallResult{Variant(), true};
  return sendMsgToObj(target, *method, args);
}

}  // namespace lx

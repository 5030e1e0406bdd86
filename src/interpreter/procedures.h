// User procedures (SUB and FUNCTION): the procedure record, which runs one call as a child
// script, and the procedure table that a script shares with all its children.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "interpreter/epoch.h"
#include "lxbasic/bridge.h"
#include "lxbasic/error.h"
#include "lxbasic/string_list.h"
#include "lxbasic/variant.h"

namespace lx {

class ScriptCore;

// Calls that may be active at once in one script tree; one more is error 25.
inline constexpr int32_t kMaxCallDepth = 256;

class LxBasicSub {
 public:
  explicit LxBasicSub(ScriptCore* owner) : owner_(owner) {}
  LxBasicSub(ScriptCore* owner, UString name, std::vector<UString> params, UStringView body,
             bool func);

  // One call: the function's result (Empty for a sub), or argumentMismatch when the argument
  // count differs from the parameter count. A body that fails leaves its error (code,
  // message, line text) in *error and answers Empty.
  CallResult run(std::span<const Variant> args, ErrorRef* error);

  LxBasicStringList& body() noexcept { return body_; }
  const LxBasicStringList& body() const noexcept { return body_; }
  bool func() const noexcept { return func_; }
  void setFunc(bool f) noexcept { func_ = f; }
  const UString& name() const noexcept { return name_; }
  const std::vector<UString>& params() const noexcept { return params_; }
  ScriptCore* owner() const noexcept { return owner_; }

 private:
  bool func_ = false;
  UString name_;  // upper case
  std::vector<UString> params_;
  LxBasicStringList body_;
  ScriptCore* owner_;  // the script that owns the procedure table; it outlives every call
};

class LxBasicSubs {
 public:
  explicit LxBasicSubs(ScriptCore* owner) : owner_(owner) {}

  // The record under that name (any letter case); an existing one is answered unchanged.
  std::shared_ptr<LxBasicSub> addSubWithName(UStringView name, std::vector<UString> params,
                                             UStringView body, bool func);
  std::shared_ptr<LxBasicSub> getSubByName(UStringView name) const;
  // Changes whenever a procedure is added (see interpreter/epoch.h).
  uint64_t epoch() const noexcept { return epoch_; }

 private:
  ScriptCore* owner_;
  uint64_t epoch_ = nextBindingEpoch();
  std::unordered_map<UString, std::shared_ptr<LxBasicSub>> subs_;
};

}  // namespace lx

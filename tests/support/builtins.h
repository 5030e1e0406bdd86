// Calls a built-in the way the bridge does, without running a script: by name and argument
// count on a library object of its own.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <stdexcept>
#include <vector>

#include "builtins/library.h"
#include "lxbasic/bridge.h"
#include "lxbasic/text.h"

namespace lxtest {

inline lx::LxBasicFunc& library() {
  static auto lib = std::make_shared<lx::LxBasicFunc>();
  return *lib;
}

// An Empty argument is passed as it is (the missing object); use lx::nullObject() for what an
// Empty script value becomes.
inline lx::Variant call(const char16_t* name, std::initializer_list<lx::Variant> args) {
  lx::LxBasicFunc& lib = library();
  const lx::MethodInfo* m = lx::findMethod(lib.lxClass(), name, static_cast<int32_t>(args.size()));
  if (!m)
    throw std::logic_error("no built-in " + lx::toUtf8(name) + "/" + std::to_string(args.size()));
  std::vector<lx::Variant> list(args);
  return lx::sendMsgToObj(lib, *m, list).value;
}

inline bool exists(const char16_t* name, int32_t count) {
  return lx::findMethod(library().lxClass(), name, count) != nullptr;
}

inline std::u16string text(const lx::Variant& v) {
  return lx::toText(v);
}

}  // namespace lxtest

// A host object for generated programs: its methods are called like built-ins (Bump(2),
// Total, Twice(x), Half(x)), and the count it keeps is an outcome a host can observe.
#pragma once

#include <memory>
#include <string>

#include "lxbasic/variant.h"

namespace difffuzz {

class Tally final : public lx::Object {
 public:
  // A new tally, its class registered with the engine on first use.
  static std::shared_ptr<Tally> make();

  int bump(int by);
  int total() const { return total_; }
  lx::Variant twice(const lx::Variant& v);
  double half(double d) { return d / 2; }

  // What the host sees after a run: the count and how many calls reached the object.
  std::string summary() const;
  std::string className() const override { return "Tally"; }

 private:
  int total_ = 0;
  int calls_ = 0;
};

}  // namespace difffuzz

#include "difffuzz/host_tally.h"

#include <mutex>

#include "lxbasic/bridge.h"
#include "lxbasic/text.h"

namespace difffuzz {

std::shared_ptr<Tally> Tally::make() {
  static std::once_flag registered;
  std::call_once(registered, [] {
    lx::ClassBuilder<Tally>("Tally")
        .method("Bump:", &Tally::bump)
        .method("Total", &Tally::total)
        .method("Twice:", &Tally::twice)
        .method("Half:", &Tally::half);
  });
  return std::make_shared<Tally>();
}

int Tally::bump(int by) {
  ++calls_;
  total_ += by;
  return total_;
}

lx::Variant Tally::twice(const lx::Variant& v) {
  ++calls_;
  lx::UString text = lx::toText(v);
  return lx::Variant(text + text);
}

std::string Tally::summary() const {
  return "total " + std::to_string(total_) + " after " + std::to_string(calls_) + " calls";
}

}  // namespace difffuzz

// The open loops of a script, innermost last. Every change gives the stack a new version, drawn
// from the counter of the binding epochs so that no two stacks anywhere share one: an answer
// worked out from a stack (is this slot a FOR variable?) holds while its version is unchanged.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "execution/epoch.h"

namespace lx {

class LxLoopProtocol;

class LoopStack {
 public:
  using Entry = std::shared_ptr<LxLoopProtocol>;

  bool empty() const noexcept { return items_.empty(); }
  size_t size() const noexcept { return items_.size(); }
  const Entry& back() const noexcept { return items_.back(); }
  const Entry& operator[](size_t i) const noexcept { return items_[i]; }
  auto begin() const noexcept { return items_.begin(); }
  auto end() const noexcept { return items_.end(); }

  void push_back(Entry loop) {
    items_.push_back(std::move(loop));
    version_ = nextBindingEpoch();
  }
  void pop_back() {
    items_.pop_back();
    version_ = nextBindingEpoch();
  }
  void clear() {
    if (items_.empty()) return;
    items_.clear();
    version_ = nextBindingEpoch();
  }
  uint64_t version() const noexcept { return version_; }

 private:
  std::vector<Entry> items_;
  uint64_t version_ = nextBindingEpoch();
};

}  // namespace lx

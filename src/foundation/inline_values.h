// A short list of values built one by one, kept on the stack while it holds at most N: the
// arguments of one call, which are almost always few. Only the values pushed are made and
// destroyed, so an unused place costs nothing.
#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <span>
#include <vector>

#include "lxbasic/variant.h"

namespace lx {

template <size_t N>
class InlineValues {
 public:
  InlineValues() = default;
  ~InlineValues() { std::destroy_n(inlineData(), inlineCount_); }
  InlineValues(const InlineValues&) = delete;
  InlineValues& operator=(const InlineValues&) = delete;

  void push(Variant v) {
    if (heap_.empty() && inlineCount_ < N) {
      std::construct_at(inlineData() + inlineCount_, std::move(v));
      ++inlineCount_;
      return;
    }
    if (heap_.empty()) heap_.assign(inlineData(), inlineData() + inlineCount_);
    heap_.push_back(std::move(v));
  }
  std::span<const Variant> span() const {
    return heap_.empty() ? std::span<const Variant>(inlineData(), inlineCount_)
                         : std::span<const Variant>(heap_);
  }

 private:
  Variant* inlineData() const {
    return std::launder(reinterpret_cast<Variant*>(const_cast<unsigned char*>(storage_)));
  }
  alignas(Variant) unsigned char storage_[N * sizeof(Variant)];
  size_t inlineCount_ = 0;
  std::vector<Variant> heap_;
};

}  // namespace lx

// The shared list behind script arrays: its memory charge and its flat destruction.
#include <algorithm>
#include <string>
#include <unordered_map>

#include "foundation/memory_budget.h"
#include "lxbasic/value.h"
#include "lxbasic/variant.h"

namespace lx {

Array::~Array() {
  if (budget_) budget_->release(charged_);
  if (items.empty()) return;
  // Lists freed while another list is being freed are queued here instead of being freed
  // inside it; the outermost destructor works the queue off.
  thread_local std::vector<std::vector<Variant>>* pending = nullptr;
  if (pending) {
    pending->push_back(std::move(items));
    return;
  }
  std::vector<std::vector<Variant>> queue;
  pending = &queue;
  queue.push_back(std::move(items));
  while (!queue.empty()) {
    std::vector<Variant> batch = std::move(queue.back());
    queue.pop_back();
    batch.clear();
  }
  pending = nullptr;
}

ArrayRef Array::make(std::vector<Variant> items) {
  const size_t count = items.size();
  auto array = std::make_shared<Array>(std::move(items));
  if (count > 0 && currentBudget()) array->chargeFor(count);
  return array;
}

void checkArrayElements(int64_t elements) {
  if (elements > kMaxArrayElements) {
    throw OutOfScriptMemory("an array of " + std::to_string(elements) +
                            " elements exceeds the limit of " + std::to_string(kMaxArrayElements));
  }
}

void Array::chargeFor(size_t elements) {
  if (!budget_) {
    budget_ = currentBudget();
    if (!budget_) return;
    // A list that no shared pointer owns cannot be part of a cycle; it needs no record.
    if (auto self = weak_from_this().lock()) budget_->remember(self);
  }
  // Only arrays a script makes are held to the element limit: a host's own are not.
  checkArrayElements(static_cast<int64_t>(std::min<size_t>(elements, INT64_MAX)));
  const int64_t wanted = static_cast<int64_t>(elements) * kElementCost;
  if (wanted > charged_) {
    budget_->charge(wanted - charged_);
  } else {
    budget_->release(charged_ - wanted);
  }
  charged_ = wanted;
}

void MemoryBudget::remember(const std::shared_ptr<Array>& array) {
  std::lock_guard lock(arraysMutex_);
  if (arrays_.size() >= pruneAt_) {
    std::erase_if(arrays_, [](const std::weak_ptr<Array>& a) { return a.expired(); });
    pruneAt_ = std::max<size_t>(1024, arrays_.size() * 2);
  }
  arrays_.push_back(array);
}

namespace {

// The list an element leads to: a nested list itself or the list in an element's slot.
Array* listBehind(const Variant& element) {
  if (element.isArray()) return element.array().get();
  if (const LxValue* slot = slotOf(element)) {
    if (slot->data().isArray()) return slot->data().array().get();
  }
  return nullptr;
}

void cut(Variant& element) {
  if (LxValue* slot = slotOf(element)) {
    slot->setData(Variant());
  } else {
    element = Variant();
  }
}

}  // namespace

void MemoryBudget::breakCycles() {
  std::vector<ArrayRef> live;
  {
    std::lock_guard lock(arraysMutex_);
    for (const auto& weak : arrays_) {
      if (auto a = weak.lock()) live.push_back(std::move(a));
    }
    arrays_.clear();
  }
  // Depth-first, without recursion: an element that leads back to a list still being walked
  // closes a cycle and is emptied.
  enum class Mark : uint8_t { Walking, Done };
  std::unordered_map<const Array*, Mark> marks;
  struct Frame {
    Array* list;
    size_t next;
  };
  for (const ArrayRef& root : live) {
    if (marks.count(root.get())) continue;
    std::vector<Frame> stack{{root.get(), 0}};
    marks[root.get()] = Mark::Walking;
    while (!stack.empty()) {
      Frame& top = stack.back();
      std::vector<Variant>& items = top.list->items;
      Array* child = nullptr;
      while (top.next < items.size() && !(child = listBehind(items[top.next]))) ++top.next;
      if (!child) {
        marks[top.list] = Mark::Done;
        stack.pop_back();
        continue;
      }
      Variant& element = items[top.next++];
      auto it = marks.find(child);
      if (it == marks.end()) {
        marks[child] = Mark::Walking;
        stack.push_back({child, 0});
      } else if (it->second == Mark::Walking) {
        cut(element);
      }
    }
  }
}

}  // namespace lx

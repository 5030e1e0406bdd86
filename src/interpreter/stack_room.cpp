// Deep nesting of procedure calls and Eval: each level runs a whole driver on the stack.
#include "interpreter/stack_room.h"

#include <pthread.h>

#include <cstdint>

#include "foundation/memory_budget.h"

namespace lx {

namespace {

// Deep call chains. Each nesting level runs a whole driver on the stack, so 256 levels do not
// fit every host thread (hosts may run scripts on threads with a few hundred KiB). When the
// current thread is running low, the next child runs on a helper thread with a stack of its
// own, joined before the call returns; shallow calls never pay for it.
constexpr size_t kStackReserve = size_t{256} * 1024;
constexpr size_t kHelperStackSize = size_t{16} * 1024 * 1024;

// Lowest usable address of this thread's stack; 0 when the platform cannot tell.
uintptr_t stackLimit() {
  thread_local const uintptr_t limit = [] {
    uintptr_t low = 0;
    pthread_attr_t attr;
    if (pthread_getattr_np(pthread_self(), &attr) != 0) return low;
    void* addr = nullptr;
    size_t size = 0;
    size_t guard = 0;
    if (pthread_attr_getstack(&attr, &addr, &size) == 0 && addr) {
      pthread_attr_getguardsize(&attr, &guard);
      low = reinterpret_cast<uintptr_t>(addr) + guard;
    }
    pthread_attr_destroy(&attr);
    return low;
  }();
  return limit;
}

struct HelperJob {
  void (*fn)(void*);
  void* arg;
  RunLimits limits;
};

void* runHelperJob(void* p) {
  auto* job = static_cast<HelperJob*>(p);
  // The helper works for the same run: same memory budget, same stop request.
  BudgetScope scope(job->limits);
  job->fn(job->arg);
  return nullptr;
}

}  // namespace

bool stackIsLow() {
  const uintptr_t limit = stackLimit();
  const auto here = reinterpret_cast<uintptr_t>(__builtin_frame_address(0));
  return limit != 0 && (here < limit || here - limit < kStackReserve);
}

// std::thread cannot choose its stack size, hence a plain pthread.
bool runOnFreshStack(void (*fn)(void*), void* arg) {
  pthread_attr_t attr;
  if (pthread_attr_init(&attr) != 0) return false;
  HelperJob job{fn, arg, currentLimits()};
  pthread_t thread;
  int rc = pthread_attr_setstacksize(&attr, kHelperStackSize);
  if (rc == 0) rc = pthread_create(&thread, &attr, runHelperJob, &job);
  pthread_attr_destroy(&attr);
  if (rc != 0) return false;
  pthread_join(thread, nullptr);
  return true;
}

}  // namespace lx

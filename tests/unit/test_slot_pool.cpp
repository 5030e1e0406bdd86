// The pool behind variable slots: blocks never overlap whatever order they come and go in,
// they cross threads, memory goes back to the system, and running out of it throws. The
// threaded test also runs under ThreadSanitizer (tests/tsan/run.sh).
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <mutex>
#include <random>
#include <thread>
#include <utility>
#include <vector>

#include "foundation/slot_pool.h"
#include "lxbasic/value.h"

namespace {
std::atomic<bool> refuseChunks{false};
}  // namespace

// The pool asks for its chunks with an alignment and nothing else here does, so refusing
// aligned requests refuses chunks.
void* operator new(std::size_t size, std::align_val_t align) {
  const auto a = static_cast<std::size_t>(align);
  void* p = refuseChunks ? nullptr : std::aligned_alloc(a, (size + a - 1) / a * a);
  return p ? p : throw std::bad_alloc();
}
void operator delete(void* p, std::align_val_t) noexcept {
  std::free(p);
}

namespace {

using lx::LxValue;
using lx::ValueRef;

ValueRef numbered(int n) {
  return LxValue::make(lx::Variant::int32(n));
}
int numberOf(const ValueRef& slot) {
  return slot->data().number().toInt32();
}

TEST(SlotPoolAllocator, SlotsKeepTheirValuesWhateverTheOrderOfFrees) {
  std::vector<std::pair<ValueRef, int>> slots;  // with the number each was made with
  auto make = [&](int n) { slots.emplace_back(numbered(n), n); };
  for (int i = 0; i < 5000; ++i) make(i);
  while (slots.size() > 2500) slots.pop_back();      // the last made goes first
  slots.erase(slots.begin(), slots.begin() + 1000);  // the first made goes first
  // Random frees and makes, leaning towards makes and then towards frees, so that chunks
  // fill, empty, go back and are made again.
  std::mt19937 random(7);
  for (int step = 0; step < 300000; ++step) {
    if (slots.empty() || random() % 8 >= (step / 30000 % 2 ? 7u : 2u)) {
      make(5000 + step);
      continue;
    }
    std::swap(slots[random() % slots.size()], slots.back());
    ASSERT_EQ(numberOf(slots.back().first), slots.back().second);
    slots.pop_back();
  }
}

TEST(SlotPoolAllocator, SlotsComeFromThePoolUnlessAddressSanitizerWatches) {
  std::vector<ValueRef> slots;
  for (int i = 0; i < 1000; ++i) slots.push_back(numbered(i));
  EXPECT_EQ(lx::slotPoolChunks() == 0, lx::kSlotPoolBypassed);
  // Arrays and objects too large for a block go to the heap.
  const size_t before = lx::slotPoolChunks();
  std::vector<int, lx::SlotAllocator<int>> numbers(100000, 3);
  auto large = std::allocate_shared<std::array<char, 4096>>(lx::SlotAllocator<char>{});
  EXPECT_EQ(lx::slotPoolChunks(), before);
  EXPECT_EQ(numbers[99999] + large->size(), 4099u);
}

TEST(SlotPoolAllocator, WeakReferencesExpireWhenTheSlotGoes) {
  std::weak_ptr<LxValue> weak;
  {
    ValueRef slot = numbered(5);
    weak = slot;
    EXPECT_EQ(numberOf(weak.lock()), 5);
  }
  // The block stays with the weak reference: slots made now must not land on it.
  std::vector<ValueRef> more;
  for (int i = 0; i < 2000; ++i) more.push_back(numbered(i));
  EXPECT_TRUE(weak.expired());
  EXPECT_EQ(weak.lock(), nullptr);
}

class SlotPool : public ::testing::Test {
  void SetUp() override {
    if (lx::kSlotPoolBypassed) GTEST_SKIP() << "slots come from the heap under this sanitizer";
  }
};

TEST_F(SlotPool, MemoryComesBackAndFreedBlocksAreReusedFirst) {
  const size_t before = lx::slotPoolChunks();
  std::vector<ValueRef> slots;
  for (int i = 0; i < 100000; ++i) slots.push_back(numbered(i));
  const size_t peak = lx::slotPoolChunks();
  EXPECT_GT(peak, before + 100);
  // Every tenth slot stays, so every chunk has nine tenths of its blocks free: new slots
  // must fill those before any new chunk is made.
  std::vector<ValueRef> kept;
  for (size_t i = 0; i < slots.size(); i += 10) kept.push_back(slots[i]);
  slots.clear();
  for (int i = 0; i < 80000; ++i) slots.push_back(numbered(i));
  EXPECT_LE(lx::slotPoolChunks(), peak);
  slots.clear();
  kept.clear();
  EXPECT_LE(lx::slotPoolChunks(), before + 1);  // at most the shard's spare
}

TEST_F(SlotPool, RunningOutOfMemoryThrowsAndLeavesThePoolUsable) {
  std::vector<ValueRef> slots;
  auto fill = [&] {  // the shard has room for a chunk and its spare at most
    for (int i = 0; i < 5000; ++i) slots.push_back(numbered(i));
  };
  refuseChunks = true;
  EXPECT_THROW(fill(), std::bad_alloc);
  refuseChunks = false;
  slots.push_back(numbered(-1));  // would hang if the shard's lock were still held
  EXPECT_EQ(numberOf(slots.back()), -1);
}

TEST(SlotPoolThreads, SlotsMadeOnOneThreadAreFreedOnAnother) {
  // Each thread puts its new slots on a shared pile and takes away what another left there,
  // to check and drop while the others make theirs.
  std::mutex mutex;
  std::vector<std::pair<ValueRef, int>> pile;
  std::atomic<int> wrong{0};
  auto work = [&](int self) {
    for (int round = 0; round < 300; ++round) {
      std::vector<std::pair<ValueRef, int>> made;
      for (int n = (self * 300 + round) * 200, end = n + 200; n < end; ++n) {
        made.emplace_back(numbered(n), n);
      }
      {
        std::lock_guard lock(mutex);
        made.swap(pile);
      }
      for (auto& [slot, n] : made) wrong += numberOf(slot) != n;
    }
  };
  std::vector<std::thread> threads;
  for (int t = 0; t < 6; ++t) threads.emplace_back(work, t);
  for (auto& t : threads) t.join();
  pile.clear();
  EXPECT_EQ(wrong, 0);
  EXPECT_LE(lx::slotPoolChunks(), 8u);  // a spare a shard at most
}

}  // namespace

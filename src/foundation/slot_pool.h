// Memory for variable slots. Scripts make and drop slots by the thousand (every array element
// is one), and the general-purpose heap spends hundreds of instructions on each such block
// when they come and go in bulk. The pool hands out blocks of one size, fitted to a slot's
// shared_ptr control block, from chunks of its own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>

namespace lx {

// The one block size the pool serves: a slot's control block (the slot and its two counts)
// rounded up to the 16-byte alignment the heap would have given it.
inline constexpr std::size_t kSlotBlockBytes = 80;
inline constexpr std::size_t kSlotBlockAlign = 16;

// Under AddressSanitizer every block comes from the heap, so that a slot used after it was
// freed is reported; the pool would hand the block out again unnoticed.
#if defined(__SANITIZE_ADDRESS__)
#define LX_SLOT_POOL_BYPASSED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define LX_SLOT_POOL_BYPASSED 1
#endif
#endif
#ifndef LX_SLOT_POOL_BYPASSED
#define LX_SLOT_POOL_BYPASSED 0
#endif
inline constexpr bool kSlotPoolBypassed = LX_SLOT_POOL_BYPASSED;

// A block of kSlotBlockBytes; throws std::bad_alloc when no memory is left.
void* takeSlotBlock();
// Gives back a block from takeSlotBlock. Any thread may give back any thread's block.
void giveSlotBlock(void* block) noexcept;
// The chunks the pool holds now, kept spares included; lets tests see memory come back.
std::size_t slotPoolChunks() noexcept;

// Serves single objects that fit a block from the pool and everything else from the heap.
// With kMustPool, an object that would not fit fails to compile instead: allocate_shared
// rebinds the allocator to its control block, whose size only the standard library knows,
// and slots whose control block outgrew the blocks would quietly go back to the heap.
template <class T, bool kMustPool = false>
class SlotAllocator {
  static constexpr bool kFits = sizeof(T) <= kSlotBlockBytes && alignof(T) <= kSlotBlockAlign;
  static_assert(!kMustPool || kFits, "the slot's control block no longer fits a pool block");
  static_assert(alignof(T) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__, "over-aligned types unsupported");

 public:
  using value_type = T;
  template <class U>
  struct rebind {
    using other = SlotAllocator<U, kMustPool>;
  };

  SlotAllocator() = default;
  template <class U>
  SlotAllocator(const SlotAllocator<U, kMustPool>&) noexcept {}

  T* allocate(std::size_t n) {
    if constexpr (kFits && !kSlotPoolBypassed) {
      if (n == 1) return static_cast<T*>(takeSlotBlock());
    }
    if (n > SIZE_MAX / sizeof(T)) throw std::bad_array_new_length();
    return static_cast<T*>(::operator new(n * sizeof(T)));
  }

  void deallocate(T* p, [[maybe_unused]] std::size_t n) noexcept {
    if constexpr (kFits && !kSlotPoolBypassed) {
      if (n == 1) return giveSlotBlock(p);
    }
    ::operator delete(p);  // unsized: clang enables sized deallocation only on request
  }

  template <class U>
  bool operator==(const SlotAllocator<U, kMustPool>&) const noexcept {
    return true;
  }
};

}  // namespace lx

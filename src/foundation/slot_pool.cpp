#include "foundation/slot_pool.h"

#include <atomic>
#include <mutex>
#include <thread>
#include <type_traits>
#include <utility>

namespace lx {

namespace {

// Chunks are aligned to their own size, so a block finds its chunk by masking its address.
constexpr std::size_t kChunkBytes = std::size_t{64} * 1024;
constexpr std::align_val_t kChunkAlign{kChunkBytes};
// Threads spread over this many independently locked shards; more would only hold more
// half-used chunks, fewer would make scripts on different threads wait on each other.
constexpr unsigned kShards = 8;

// Taking or giving back a block holds the lock for a dozen instructions; an uncontended
// mutex costs more than that on its own. A holder that is descheduled makes the others
// yield rather than burn their time slice.
class SpinLock {
 public:
  bool try_lock() noexcept { return !flag_.test_and_set(std::memory_order_acquire); }
  void lock() noexcept {
    while (!try_lock()) {
      for (int spins = 0; flag_.test(std::memory_order_relaxed); ++spins) {
        if (spins >= 64) std::this_thread::yield();
      }
    }
  }
  void unlock() noexcept { flag_.clear(std::memory_order_release); }

 private:
  std::atomic_flag flag_;
};

struct FreeBlock {
  FreeBlock* next;
};

struct Shard;

// The head of a chunk; its blocks follow.
struct Chunk {
  Chunk* prev;  // in its shard's list of chunks with room
  Chunk* next;
  FreeBlock* freed;  // blocks given back, reused before fresh ones
  char* fresh;       // the first block never handed out
  std::uint32_t inUse;
  Shard* shard;  // set once, so a block finds its lock without taking any
};

constexpr std::size_t kFirstBlock =
    (sizeof(Chunk) + kSlotBlockAlign - 1) / kSlotBlockAlign * kSlotBlockAlign;
constexpr std::uint32_t kBlocksPerChunk = (kChunkBytes - kFirstBlock) / kSlotBlockBytes;
static_assert(kBlocksPerChunk > 1 && kChunkBytes % kSlotBlockAlign == 0);
static_assert(kSlotBlockBytes % kSlotBlockAlign == 0 && kSlotBlockBytes >= sizeof(FreeBlock));

struct alignas(64) Shard {
  SpinLock lock;
  Chunk* room = nullptr;   // chunks with a block to hand out; full and empty ones are not here
  Chunk* spare = nullptr;  // an empty chunk kept back, so that a shard hovering around a chunk
                           // boundary does not ask the system for one over and over
  std::size_t chunks = 0;  // spare included
};

// Blocks may be given back after main() returns or while other objects with static storage
// are destroyed, so the shards are never destroyed: they are constant-initialized and
// trivially destructible, and the chunks they still hold stay reachable through them.
static_assert(std::is_trivially_destructible_v<Shard>);
constinit Shard shards[kShards];
constinit std::atomic<unsigned> nextShard{0};

// Initial-exec: read for every slot made, it must not go through the dynamic TLS lookup.
thread_local Shard* shardOfThread __attribute__((tls_model("initial-exec"))) = nullptr;

[[gnu::noinline]] Shard& assignShard() noexcept {
  shardOfThread = &shards[nextShard.fetch_add(1, std::memory_order_relaxed) % kShards];
  return *shardOfThread;
}

Chunk* chunkOf(void* block) noexcept {
  // Stepped back from the block itself, so the pointer stays one into the chunk.
  const std::uintptr_t offset = reinterpret_cast<std::uintptr_t>(block) & (kChunkBytes - 1);
  return reinterpret_cast<Chunk*>(static_cast<char*>(block) - offset);
}

void makeFresh(Chunk* chunk) noexcept {
  chunk->freed = nullptr;
  chunk->fresh = reinterpret_cast<char*>(chunk) + kFirstBlock;
  chunk->inUse = 0;
}

void addRoom(Shard& shard, Chunk* chunk) noexcept {
  chunk->prev = nullptr;
  chunk->next = shard.room;
  if (shard.room) shard.room->prev = chunk;
  shard.room = chunk;
}

void removeRoom(Shard& shard, Chunk* chunk) noexcept {
  if (chunk->prev) {
    chunk->prev->next = chunk->next;
  } else {
    shard.room = chunk->next;
  }
  if (chunk->next) chunk->next->prev = chunk->prev;
}

// The slow paths below are kept out of line, and the fast paths reach them by tail calls
// only, so that taking and giving back need no stack frame.

// Hands out a block of `chunk`, which has room, and unlocks its shard.
inline void* carve(Shard& shard, Chunk* chunk) noexcept {
  void* block;
  if (FreeBlock* freed = chunk->freed) {
    chunk->freed = freed->next;
    block = freed;
  } else {
    block = chunk->fresh;
    chunk->fresh += kSlotBlockBytes;
  }
  if (++chunk->inUse == kBlocksPerChunk) removeRoom(shard, chunk);
  shard.lock.unlock();
  return block;
}

// `shard` is locked and has no room: its spare is used, or else a new chunk. The lock is let
// go while the system is asked, so that a failure throws with nothing held; should another
// thread have made room meanwhile, that room is used and the new chunk kept as the spare.
[[gnu::noinline]] void* takeFromNewRoom(Shard& shard) {
  if (Chunk* spare = std::exchange(shard.spare, nullptr)) {
    addRoom(shard, spare);
    return carve(shard, spare);
  }
  shard.lock.unlock();
  void* memory = ::operator new(kChunkBytes, kChunkAlign);
  auto* chunk = static_cast<Chunk*>(memory);
  makeFresh(chunk);
  chunk->shard = &shard;
  shard.lock.lock();
  ++shard.chunks;
  if (shard.room && !shard.spare) {
    shard.spare = chunk;
  } else {
    addRoom(shard, chunk);
  }
  return carve(shard, shard.room);
}

// `chunk`'s last block came back to `shard`, whose lock is held; unlocks.
[[gnu::noinline]] void retire(Shard& shard, Chunk* chunk) noexcept {
  removeRoom(shard, chunk);
  if (!shard.spare) {
    makeFresh(chunk);
    shard.spare = chunk;
    shard.lock.unlock();
    return;
  }
  --shard.chunks;
  shard.lock.unlock();
  ::operator delete(chunk, kChunkAlign);
}

// Hands out a block of `shard`, whose lock is held; unlocks.
inline void* takeLocked(Shard& shard) {
  Chunk* chunk = shard.room;
  if (!chunk) [[unlikely]] {
    return takeFromNewRoom(shard);
  }
  return carve(shard, chunk);
}

// Takes `block` back into its chunk, whose shard's lock is held; unlocks.
inline void giveLocked(Shard& shard, Chunk* chunk, void* block) noexcept {
  auto* freed = static_cast<FreeBlock*>(block);
  freed->next = chunk->freed;
  chunk->freed = freed;
  const std::uint32_t left = --chunk->inUse;
  if (left == kBlocksPerChunk - 1) addRoom(shard, chunk);
  if (left == 0) [[unlikely]] {
    return retire(shard, chunk);
  }
  shard.lock.unlock();
}

[[gnu::noinline]] void* takeWaiting(Shard& shard) {
  shard.lock.lock();
  return takeLocked(shard);
}

[[gnu::noinline]] void giveWaiting(Shard& shard, Chunk* chunk, void* block) noexcept {
  shard.lock.lock();
  giveLocked(shard, chunk, block);
}

}  // namespace

void* takeSlotBlock() {
  Shard* shard = shardOfThread;
  if (!shard) [[unlikely]] {
    shard = &assignShard();
  }
  if (!shard->lock.try_lock()) [[unlikely]] {
    return takeWaiting(*shard);
  }
  return takeLocked(*shard);
}

void giveSlotBlock(void* block) noexcept {
  Chunk* chunk = chunkOf(block);
  Shard& shard = *chunk->shard;
  if (!shard.lock.try_lock()) [[unlikely]] {
    return giveWaiting(shard, chunk, block);
  }
  giveLocked(shard, chunk, block);
}

std::size_t slotPoolChunks() noexcept {
  std::size_t total = 0;
  for (Shard& shard : shards) {
    std::lock_guard held(shard.lock);
    total += shard.chunks;
  }
  return total;
}

}  // namespace lx

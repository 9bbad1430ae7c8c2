#include "HeapCount.h"

#include <cerrno>
#include <cstddef>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)

int64_t quensoak::heapBlocks() {
    return -1;
}

#else

#include <atomic>

// The C library's own, under the names that it keeps for those who replace them.
extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
void __libc_free(void* block);
}

namespace {

/** A thread's count; several share one when there are many. Far apart, so that they do not meet. */
struct alignas(64) Counter {
    std::atomic<int64_t> blocks{0};
};
constexpr unsigned kCounters = 16;
Counter gCounters[kCounters];
std::atomic<unsigned> gThreads{0};
thread_local Counter* tCounter = nullptr;

void count(int64_t blocks) {
    if (tCounter == nullptr) {
        tCounter = &gCounters[gThreads.fetch_add(1) % kCounters];
    }
    tCounter->blocks.fetch_add(blocks, std::memory_order_relaxed);
}

void* counted(void* block) {
    count(block == nullptr ? 0 : 1);
    return block;
}

}  // namespace

extern "C" {

void* malloc(size_t size) {
    return counted(__libc_malloc(size));
}

void* calloc(size_t number, size_t size) {
    return counted(__libc_calloc(number, size));
}

void* realloc(void* block, size_t size) {
    void* const result = __libc_realloc(block, size);
    bool const isNew = block == nullptr && result != nullptr;
    bool const isGone = block != nullptr && size == 0;
    count(int64_t{isNew} - int64_t{isGone});
    return result;
}

void* memalign(size_t alignment, size_t size) {
    return counted(__libc_memalign(alignment, size));
}

void* aligned_alloc(size_t alignment, size_t size) {
    return counted(__libc_memalign(alignment, size));
}

int posix_memalign(void** block, size_t alignment, size_t size) {
    void* const result = counted(__libc_memalign(alignment, size));
    if (result == nullptr) {
        return ENOMEM;
    }
    *block = result;
    return 0;
}

void free(void* block) {
    count(block == nullptr ? 0 : -1);
    __libc_free(block);
}

}  // extern "C"

int64_t quensoak::heapBlocks() {
    int64_t blocks = 0;
    for (Counter const& counter : gCounters) {
        blocks += counter.blocks.load(std::memory_order_relaxed);
    }
    return blocks;
}

#endif

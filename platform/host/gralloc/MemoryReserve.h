#pragma once

#include <cstddef>
#include <cstdint>
#include <future>
#include <memory>

#include "host/base/Mutex.h"
#include "host/gralloc/MemoryMapping.h"

namespace quen::host {

/**
 * Memory made ahead: for a program that allocates a large buffer of one size again and again,
 * another thread makes the next one, with all its pages, and gives the pages of the last one back.
 * Any thread.
 */
class MemoryReserve {
  public:
    /** Makes memory. @return its descriptor, -1 when there is none */
    using Make = int (*)(uint64_t size);

    /** @param most how often to make memory ahead */
    MemoryReserve(Make make, size_t most) : mMake(make), mLeft(most) {}

    /**
     * Memory of a size, ready when it was made for that size; -1 when there is none. As long as
     * some may be made ahead, that is next made for this size.
     */
    int take(uint64_t size);

  private:
    /** Closes the descriptor unless it is taken. */
    struct Memory {
        Memory() = default;
        Memory(Make make, uint64_t bytes);
        Memory(Memory&& other) noexcept;
        Memory& operator=(Memory&&) = delete;
        ~Memory();

        uint64_t size = 0;
        int descriptor = -1;
        std::shared_ptr<MemoryMapping> mapping;
    };

    void makeNext(uint64_t size) HOST_REQUIRES(mLock);

    Make const mMake;
    Mutex mLock;
    size_t mLeft HOST_GUARDED_BY(mLock);  // how often memory may yet be made ahead
    std::future<Memory> mNext HOST_GUARDED_BY(mLock);
    uint64_t mNextSize HOST_GUARDED_BY(mLock) = 0;
    // Of the memory taken last: whoever imports it finds it mapped.
    std::shared_ptr<MemoryMapping> mTaken HOST_GUARDED_BY(mLock);
};

}  // namespace quen::host

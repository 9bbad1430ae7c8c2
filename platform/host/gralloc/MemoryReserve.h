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

    explicit MemoryReserve(Make make) : mMake(make) {}

    /** Memory of a size, ready when the last one was of that size too; -1 when there is none. */
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
    std::future<Memory> mNext HOST_GUARDED_BY(mLock);
    // Of the memory taken last: whoever imports it finds it mapped.
    std::shared_ptr<MemoryMapping> mTaken HOST_GUARDED_BY(mLock);
};

}  // namespace quen::host

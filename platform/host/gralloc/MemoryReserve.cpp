#include "host/gralloc/MemoryReserve.h"

#include <unistd.h>

#include <system_error>
#include <thread>
#include <utility>

namespace quen::host {

MemoryReserve::Memory::Memory(Make make, uint64_t bytes) : size(bytes), descriptor(make(bytes)) {
    std::optional<MemoryIdentity> const memory = MemoryIdentity::of(descriptor);
    if (memory) {
        mapping = MemoryMapping::of(descriptor, *memory, bytes, MemoryMapping::Pages::AtOnce);
    }
}

MemoryReserve::Memory::Memory(Memory&& other) noexcept
    : size(other.size),
      descriptor(std::exchange(other.descriptor, -1)),
      mapping(std::move(other.mapping)) {}

MemoryReserve::Memory::~Memory() {
    if (descriptor >= 0) {
        close(descriptor);
    }
}

int MemoryReserve::take(uint64_t size) {
    MutexLock const guard(mLock);
    int taken = -1;
    std::shared_ptr<MemoryMapping> mapping;
    // One made for another size is worth keeping only when it is the last.
    if (mNext.valid() && (mNextSize == size || mLeft != 0)) {
        Memory next = mNext.get();
        if (next.size == size) {
            taken = std::exchange(next.descriptor, -1);
            mapping = std::move(next.mapping);
        }
    }
    if (mLeft != 0) {
        --mLeft;
        makeNext(size);
    }
    if (mapping != nullptr) {
        mTaken = std::move(mapping);
    }
    return taken >= 0 ? taken : mMake(size);
}

/** Goes without when the system refuses a thread. Nobody waits for the last one when the process
 * ends. */
void MemoryReserve::makeNext(uint64_t size) {
    std::packaged_task<Memory()> task([make = mMake, size, last = std::move(mTaken)]() mutable {
        last = nullptr;
        return Memory(make, size);
    });
    std::future<Memory> next = task.get_future();
    try {
        std::thread(std::move(task)).detach();
        mNext = std::move(next);
        mNextSize = size;
    } catch (std::system_error const&) {
    }
}

}  // namespace quen::host

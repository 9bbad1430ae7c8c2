#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace quen::host {

/**
 * A buffer's memory in this process: one mapping for all imports of the buffer, as long as any of
 * them holds it. A mapping of its own would cost each of them the entries of all its pages.
 */
class MemoryMapping {
  public:
    /**
     * The mapping of a descriptor's memory, made when there is none of that size. Any thread.
     *
     * @param populated how many of the first bytes get their pages at once, when it is made
     * @return null when it cannot be mapped
     */
    static std::shared_ptr<MemoryMapping> of(int descriptor, size_t bytes, size_t populated);

    ~MemoryMapping();
    MemoryMapping(MemoryMapping const&) = delete;
    MemoryMapping& operator=(MemoryMapping const&) = delete;

    uint8_t* address() const { return mAddress; }

  private:
    MemoryMapping(uint8_t* address, size_t bytes) : mAddress(address), mBytes(bytes) {}

    static std::shared_ptr<MemoryMapping> make(int descriptor, size_t bytes, size_t populated);

    uint8_t* const mAddress;
    size_t const mBytes;
};

}  // namespace quen::host

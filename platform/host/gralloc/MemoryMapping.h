#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "host/gralloc/MemoryPages.h"

namespace quen::host {

/** Which memory a descriptor is of, whatever its number, and how large it is. */
struct MemoryIdentity {
    dev_t device;
    ino_t inode;
    uint64_t bytes;

    /** Nothing for no descriptor. */
    static std::optional<MemoryIdentity> of(int descriptor);
};

/**
 * A buffer's memory in this process: one mapping for all imports of the buffer, as long as any of
 * them holds it. A mapping of its own would cost each of them the entries of all its pages.
 */
class MemoryMapping {
  public:
    /**
     * The mapping of a descriptor's memory, made when there is none of that size. Any thread.
     *
     * @param memory that of the descriptor
     * @return null when it cannot be mapped
     */
    static std::shared_ptr<MemoryMapping> of(int descriptor, MemoryIdentity const& memory,
                                             size_t bytes, PagesMade made);

    ~MemoryMapping();
    MemoryMapping(MemoryMapping const&) = delete;
    MemoryMapping& operator=(MemoryMapping const&) = delete;

    uint8_t* address() const { return mPages.address; }

  private:
    explicit MemoryMapping(MappedPages const& pages) : mPages(pages) {}

    static std::shared_ptr<MemoryMapping> make(int descriptor, size_t bytes, PagesMade made);

    MappedPages const mPages;
};

}  // namespace quen::host

#pragma once

#include <cstddef>
#include <cstdint>

namespace quen::host {

/** Shared memory in the address space: where, and how many bytes munmap takes. */
struct MappedPages {
    uint8_t* address;  ///< null when it could not be mapped
    size_t bytes;      ///< at least those asked for; those beyond the memory's end are not accessed
};

/**
 * Maps memory readable and writable, without its pages. Memory that is worth huge pages is mapped
 * at an address where it can have them, up to the end of the last one. Any thread.
 */
MappedPages mapShared(int descriptor, size_t bytes);

/**
 * Makes huge pages for the first bytes of mapped memory, where they are worth it and the system
 * lets. What the memory holds stays. Any thread.
 *
 * @param pages from mapShared
 * @param bytes within the memory
 * @return bytes that have huge pages now, maybe more than asked for; 0 when the system makes none
 */
size_t makeHugePages(MappedPages const& pages, size_t bytes);

/** As makeHugePages, and makes small pages for what has no huge ones. */
void makePages(MappedPages const& pages, size_t bytes);

}  // namespace quen::host

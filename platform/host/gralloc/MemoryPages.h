#pragma once

#include <cstddef>
#include <cstdint>

namespace quen::host {

/** When the pages of mapped memory are made. */
enum class PagesMade {
    AtOnce,       ///< with the mapping
    WhenTouched,  ///< each when it is first touched; huge ones of the first sixteenth with the
                  ///< mapping
};

/** Shared memory in the address space: where, and how many bytes munmap takes. */
struct MappedPages {
    uint8_t* address;  ///< null when it could not be mapped
    size_t bytes;      ///< at least those asked for; those beyond the memory's end are not accessed
};

/**
 * Maps memory readable and writable. Where that is worth it and the system lets, its pages are
 * huge: to make and to clear small ones takes longer than most of what is done with a picture. What
 * the memory holds stays. Any thread.
 */
MappedPages mapShared(int descriptor, size_t bytes, PagesMade made);

}  // namespace quen::host

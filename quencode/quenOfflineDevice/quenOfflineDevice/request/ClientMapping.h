#pragma once

#include <sys/mman.h>

#include <cstddef>

#include "quenOfflineDevice/ClientRecords.h"

namespace quen {

/**
 * Maps a client's buffer, readable and writable, from its first descriptor.
 *
 * @return the address, MAP_FAILED when it cannot be mapped; released with unmapClientBuffer
 */
inline void* mapClientBuffer(ImageBuffer const& buffer) {
    int const descriptor = buffer.buffer == nullptr ? -1 : buffer.buffer->data[0];
    return mmap(nullptr, static_cast<size_t>(buffer.size), PROT_READ | PROT_WRITE, MAP_SHARED,
                descriptor, 0);
}

inline void unmapClientBuffer(void* address, ImageBuffer const& buffer) {
    munmap(address, static_cast<size_t>(buffer.size));
}

}  // namespace quen

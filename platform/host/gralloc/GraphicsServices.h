#pragma once

#include <utils/StrongPointer.h>

#include "host/gralloc/MemfdAllocator.h"
#include "host/gralloc/MemfdMapper.h"

namespace quen::host {

/** The graphics services of a process, with their host-only settings and counters. */
struct GraphicsServices {
    android::sp<MemfdAllocator> allocator;
    android::sp<MemfdMapper> mapper;
};

/**
 * Registers a new allocator and a new mapper as "default", in place of earlier ones. Clients that
 * hold the earlier ones go on using them, and free buffers through the mapper that imported them.
 */
GraphicsServices registerGraphicsServices();

}  // namespace quen::host

#pragma once

#include <utils/StrongPointer.h>

#include "host/gralloc/MemfdAllocator.h"
#include "host/gralloc/MemfdMapper.h"

namespace quen::host {

/** The graphics services of a process, to be set up further and asked for what is in use. */
struct GraphicsServices {
    android::sp<MemfdAllocator> allocator;
    android::sp<MemfdMapper> mapper;
};

/**
 * Registers a fresh allocator and a fresh mapper as "default", in place of earlier ones. Whoever
 * fetched those keeps them, and frees through the mapper it imported with.
 */
GraphicsServices registerGraphicsServices();

}  // namespace quen::host

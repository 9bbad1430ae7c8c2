#pragma once

#include <cstdint>
#include <optional>

#include <android/hardware/graphics/common/1.2/types.h>
#include <cutils/native_handle.h>

#include "host/gralloc/BufferLayout.h"
#include "host/gralloc/MemoryMapping.h"

namespace quen::host {

/** Parameters of a buffer, as its handle carries them. */
struct BufferFacts {
    uint64_t id;  ///< unique
    uint32_t width;
    uint32_t height;
    android::hardware::graphics::common::V1_2::PixelFormat format;
    Layout layout;
    uint64_t usage;
    BufferExtent extent;
    uint64_t reservedSize;  ///< bytes beside the picture for clients
};

/** A buffer's parameters and the memory behind its handle. */
struct BufferDetails {
    BufferFacts facts;
    MemoryIdentity memory;
};

/**
 * Makes the handle of a buffer: its memory as the only descriptor, its parameters as integers.
 *
 * @param memory owned by the handle on success
 * @return for native_handle_close and native_handle_delete; null, `memory` still the caller's, when
 *         out of memory
 */
native_handle_t* makeBufferHandle(int memory, BufferFacts const& facts);

/**
 * Reads a handle from makeBufferHandle, or any copy of one: recognises it by its integers.
 *
 * @param handle may be null
 * @return nothing for any other handle, and for one whose memory is not as large as it states, with
 *         the settings (BufferSettings.h) or without
 */
std::optional<BufferDetails> readBufferHandle(native_handle_t const* handle);

}  // namespace quen::host

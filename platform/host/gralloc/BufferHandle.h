#pragma once

#include <cstdint>
#include <optional>

#include <android/hardware/graphics/common/1.2/types.h>
#include <cutils/native_handle.h>

#include "host/gralloc/BufferLayout.h"

namespace quen::host {

/** What a buffer's handle tells of it. */
struct BufferFacts {
    uint64_t id;  ///< unlike that of every other buffer
    uint32_t width;
    uint32_t height;
    android::hardware::graphics::common::V1_2::PixelFormat format;
    Layout layout;
    uint64_t usage;
    BufferExtent extent;
    uint64_t reservedSize;  ///< bytes beside the picture, for clients
};

/**
 * Makes the handle of a buffer: its memory as the only descriptor, its facts as integers.
 *
 * @param memory becomes the handle's
 * @return for native_handle_close and native_handle_delete; null, `memory` still the caller's, when
 *         there is no memory for it
 */
native_handle_t* makeBufferHandle(int memory, BufferFacts const& facts);

/**
 * Reads a handle that makeBufferHandle made, or any copy of one: it is known by its integers.
 *
 * @param handle may be null
 * @return nothing for any other handle, and for one whose memory is not as large as it says, with
 *         the settings (BufferSettings.h) or without
 */
std::optional<BufferFacts> readBufferHandle(native_handle_t const* handle);

}  // namespace quen::host

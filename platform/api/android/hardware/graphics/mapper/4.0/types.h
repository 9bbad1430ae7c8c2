#pragma once

#include <cstdint>

#include <hidl/HidlSupport.h>

namespace android::hardware::graphics::mapper::V4_0 {

/** Outcome of an operation of the mapper or the allocator. */
enum class Error : int32_t {
    NONE = 0,
    BAD_DESCRIPTOR = 1,  ///< not a descriptor of this mapper
    BAD_BUFFER = 2,      ///< not a buffer, not imported, or not in the state that is needed
    BAD_VALUE = 3,
    NO_RESOURCES = 5,
    UNSUPPORTED = 7,
};

/** Encoded description of a buffer to allocate; only an allocator reads it. */
using BufferDescriptor = hidl_vec<uint8_t>;

}  // namespace android::hardware::graphics::mapper::V4_0

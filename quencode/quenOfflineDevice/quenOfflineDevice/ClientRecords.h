#pragma once

#include <cstdint>
#include <vector>

#include <cutils/native_handle.h>
#include <system/camera_metadata.h>

/**
 * What the post-processing service hands to the library: plain records, owned by the client and
 * only read here, with the one exception named at PostProcessParams::settings.
 */

/** One stream of a session. */
struct StreamConfig {
    int32_t streamId;  ///< becomes the ISP stream id, sign-extended
    int32_t format;    ///< Android HAL pixel format
    uint32_t width;    ///< pixels
    uint32_t height;   ///< pixels
    bool isOutput;     ///< informative; nothing reads it
};

/** A session: what `quenOfflineDevice::create` is given. */
struct SessionParams {
    std::vector<StreamConfig> input_streams;   ///< at least one; the first decides the raw depth
    std::vector<StreamConfig> output_streams;  ///< at least one; the first decides the stage
    camera_metadata const* metadata;           ///< session metadata, may be null
};

/**
 * One buffer of a request. An input of format YCBCR_420_888 is read as packed rows of the image's
 * width: luma, then interleaved V and U if the device buffer is semi-planar, otherwise the U plane
 * and the V plane.
 */
struct ImageBuffer {
    int32_t streamId;
    int32_t format;         ///< Android HAL pixel format
    int32_t size;           ///< bytes that a mapping of the buffer has
    int32_t width;          ///< pixels
    int32_t height;         ///< pixels
    native_handle* buffer;  ///< gralloc buffer; its first descriptor is the one mapped
};

/** One request: what `quenOfflineDevice::process` is given. */
struct PostProcessParams {
    void* session;                             ///< opaque, only printed
    int32_t frame_number;                      ///< the default ISP request number
    ImageBuffer* input_buffer;                 ///< not null
    std::vector<ImageBuffer*> output_buffers;  ///< at least one
    /** Request metadata; the 3A buffer index in it is overwritten when an output gets a 3A buffer.
     */
    camera_metadata* settings;
};

namespace quen {

/** Which side of the ISP a stream or a buffer is on. */
enum class Direction : uint32_t { Input = 0, Output = 1 };

}  // namespace quen

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <utils/StrongPointer.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/ICallback.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/types.h>

#include "host/isp/buffers/Picture.h"
#include "host/isp/device/RequestSettings.h"

namespace quen::host::isp {

enum class StreamKind {
    Raw,   ///< Bayer or interleaved RGB
    Yuv,   ///< 8-bit 4:2:0, as the buffer's planes lie
    Jpeg,  ///< a file in a block of bytes
};

/** A configured stream. */
struct Stream {
    uint32_t id = 0;  ///< requests name streams by 32 bits
    StreamKind kind = StreamKind::Yuv;
    RawLayout rawLayout = RawLayout::Words16;  ///< of a Raw stream
    int width = 0;
    int height = 0;
    size_t firstStride = 0;  ///< bytes from row to row, for a buffer without a plane layout
};

/** A configuration in force. Requests keep theirs when another one follows. */
struct IspConfiguration {
    std::vector<Stream> inputs;
    std::vector<Stream> outputs;
    RequestSettings settings;
    android::sp<vendor::mediatek::hardware::camera::isphal::V1_0::ICallback> callback;
};

/**
 * Reads a configuration.
 *
 * ILLEGAL_ARGUMENT is the answer to: no input or no output; two streams of one direction with the
 * same id; a side of 0 or above 65500; an input below 8 pixels on a side; a format that the ISP
 * does not take (inputs: RAW10 of a width that is a multiple of four, RAW16, the RGB layout, 4:2:0;
 * outputs: 4:2:0, BLOB); malformed settings.
 *
 * @param result streams and settings are set on OK
 * @param problem says why when the answer is not OK
 */
vendor::mediatek::hardware::camera::isphal::V1_0::Status readConfiguration(
        vendor::mediatek::hardware::camera::isphal::V1_0::ISPStreamConfiguration const& config,
        IspConfiguration& result, std::string& problem);

/** The stream of that id; null when there is none. */
Stream const* findStream(std::vector<Stream> const& streams, uint64_t id);

}  // namespace quen::host::isp

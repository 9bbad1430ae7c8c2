#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <vendor/mediatek/hardware/camera/isphal/1.0/types.h>

#include "host/isp/buffers/CalibrationBuffer.h"
#include "host/isp/buffers/GraphicBuffer.h"
#include "host/isp/buffers/Picture.h"
#include "host/isp/buffers/SampleLayout.h"
#include "host/isp/device/ClientThread.h"
#include "host/isp/device/IspConfiguration.h"
#include "host/isp/device/RequestSettings.h"

namespace quen::host::isp {

/** A buffer of a request, checked to hold an image of its stream. */
struct RequestImage {
    Stream stream;
    GraphicBuffer buffer;
    CalibrationBuffer calibration;
    YuvLayout yuv;          ///< of a Yuv stream
    RawRows raw;            ///< of a Raw stream
    size_t blockBytes = 0;  ///< of a Jpeg stream
};

/** An accepted request, with everything needed to execute it. */
struct Request {
    uint32_t number = 0;
    std::shared_ptr<IspConfiguration const> configuration;
    RequestSettings settings;
    PixelRect crop;   ///< within the input
    int rawBits = 0;  ///< depth of the samples of a Raw input
    RequestImage input;
    std::vector<RequestImage> outputs;
    std::chrono::steady_clock::time_point submitted;
    ClientThread client = ClientThread::current();  ///< who submitted it
};

/**
 * Checks a request and imports its buffers.
 *
 * | What is wrong                                            | Status                  |
 * |----------------------------------------------------------|-------------------------|
 * | a buffer names a stream that is not configured           | REQUEST_STREAM_ID_ERROR |
 * | not exactly one input, or no output                      | ILLEGAL_ARGUMENT        |
 * | settings malformed, or a crop outside the input          | ILLEGAL_ARGUMENT        |
 * | a handle of no buffer, or one too small for its stream   | ILLEGAL_ARGUMENT        |
 * | a tuning handle of neither form, or too small            | ILLEGAL_ARGUMENT        |
 * | the mapper fails, or no descriptor is left               | RESOURCE_ERROR          |
 *
 * A crop that reaches beyond the input is clipped to it. For a 4:2:0 input its corner moves to even
 * pixels.
 *
 * @param configuration the one in force
 * @param mapper where the buffers are imported
 * @param result set on OK
 * @param problem says why when the answer is not OK
 */
vendor::mediatek::hardware::camera::isphal::V1_0::Status readRequest(
        vendor::mediatek::hardware::camera::isphal::V1_0::ISPRequest const& request,
        std::shared_ptr<IspConfiguration const> const& configuration,
        android::sp<GraphicBuffer::IMapper> const& mapper, Request& result, std::string& problem);

}  // namespace quen::host::isp

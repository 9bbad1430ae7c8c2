#define LOG_TAG "quenOfflineDevice"

#include "quenCommon/Log.h"
#include "quenOfflineDevice/quenOfflineDevice.h"

using vendor::mediatek::hardware::camera::isphal::V1_0::ISPStream;

namespace {

StreamConfig describe(ImageBuffer const& buffer, bool isOutput) {
    return {buffer.streamId, buffer.format, static_cast<uint32_t>(buffer.width),
            static_cast<uint32_t>(buffer.height), isOutput};
}

std::vector<StreamConfig> describeOutputs(std::vector<ImageBuffer*> const& outputs) {
    std::vector<StreamConfig> streams;
    streams.reserve(outputs.size());
    for (ImageBuffer const* const output : outputs) {
        streams.push_back(describe(*output, true));
    }
    return streams;
}

bool matches(ISPStream const& configured, StreamConfig const& wanted) {
    return configured.width == wanted.width && configured.height == wanted.height &&
           configured.format == wanted.format;
}

}  // namespace

/**
 * Configures the ISP device anew when the request's buffers or its raw depth are not those of the
 * last configuration, after the outstanding requests have drained or were given up. Blocks
 * meanwhile. An object that is not connected only notes the raw depth.
 *
 * What is compared are the streams as the ISP was told them: an RGB reprocess input, told with a
 * third of its width and as a BLOB, does not match the client's buffer and is configured for every
 * request. Outputs are compared by size and format, whatever their number and ids; none at all
 * configured forces a configuration, no input configured does not.
 *
 * @param outputs not empty: a configuration takes its stage from the first
 */
void quenOfflineDevice::checkReconfigure(ImageBuffer const* input,
                                         std::vector<ImageBuffer*> outputs,
                                         camera_metadata const* settings) {
    QLOGI("process request %s stage checkReconfigure E", mStage);
    StreamConfig const inputStream = describe(*input, false);
    bool needReconfigure = false;
    if (!mInputStreams.empty()) {
        ISPStream const& last = mInputStreams.begin()->second;
        QLOGI("last config input stream info width = %d, height = %d, format is equal %d",
              last.width, last.height, last.format == inputStream.format);
        needReconfigure = !matches(last, inputStream);
    }
    for (ImageBuffer const* const output : outputs) {
        StreamConfig const outputStream = describe(*output, true);
        bool matched = false;
        int index = 0;
        for (auto const& [key, last] : mOutputStreams) {
            QLOGI("last config output stream info streamIndex %d, width = %d, height = %d, "
                  "format is equal %d",
                  index, last.width, last.height, last.format == outputStream.format);
            matched = matches(last, outputStream);
            if (matched) {
                break;
            }
            ++index;
        }
        needReconfigure = needReconfigure || !matched;
    }

    bool const raw14bit = isNeedRaw14bit(settings, input->format);
    QLOGI("current snapshot IsNeedRaw14bit %d, last snapshot IsNeedRaw14bit %d", raw14bit,
          IsNeedRaw14bit);
    if (raw14bit != IsNeedRaw14bit) {
        needReconfigure = true;
        IsNeedRaw14bit = raw14bit;
    }
    QLOGI("needReconfigure %d", needReconfigure);
    if (needReconfigure && mHalInterface != nullptr) {
        // Before the wait: the client may change its records meanwhile.
        std::vector<StreamConfig> const outputStreams = describeOutputs(outputs);
        mHalInterface->waitForRequestDrained();
        mInputStreams.clear();
        mOutputStreams.clear();
        config({inputStream}, outputStreams, settings);
    }
    QLOGI("process request %s stage checkReconfigure X", mStage);
}

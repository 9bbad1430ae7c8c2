#include "client/DeviceSession.h"

namespace quen::reprocess {
namespace {

/** The stream that a buffer belongs to. */
StreamConfig streamOf(ImageBuffer const& buffer, bool isOutput) {
    return {buffer.streamId, buffer.format, static_cast<uint32_t>(buffer.width),
            static_cast<uint32_t>(buffer.height), isOutput};
}

}  // namespace

DeviceSession::DeviceSession(ImageBuffer const& input, ImageBuffer const& output,
                             RequestMetadata const& metadata, Stopwatch& watch)
    : mInput(input), mOutput(output), mMetadata(metadata), mWatch(watch) {
    SessionParams params;
    params.input_streams = {streamOf(input, false)};
    params.output_streams = {streamOf(output, true)};
    RequestMetadata const session = metadata.sessionMetadata();
    params.metadata = session.get();
    mWatch.time("create", [&] { mDevice.create(&params); });
}

DeviceSession::~DeviceSession() {
    mWatch.time("destroy", [&] { mDevice.destroy(); });
}

void DeviceSession::submit(int32_t frameNumber) {
    PostProcessParams const params = request(frameNumber);
    mWatch.time("process", [&] { mDevice.process(&params, mWaiter); });
}

std::optional<ClientResult> DeviceSession::wait(int timeoutSeconds) {
    auto result = mWatch.time(
            "wait", [&] { return mWaiter->waitFor(std::chrono::seconds(timeoutSeconds)); });
    if (!result) {
        mDevice.flush();
    }
    return result;
}

int DeviceSession::processAndWait(int32_t frameNumber) {
    PostProcessParams const params = request(frameNumber);
    return mWatch.time("process and wait", [&] { return mDevice.process(&params, nullptr); });
}

PostProcessParams DeviceSession::request(int32_t frameNumber) {
    PostProcessParams params;
    params.session = this;
    params.frame_number = frameNumber;
    params.input_buffer = &mInput;
    params.output_buffers = {&mOutput};
    params.settings = mMetadata.get();
    return params;
}

}  // namespace quen::reprocess

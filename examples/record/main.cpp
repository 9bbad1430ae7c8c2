// A client that develops one RAW frame and has its session written down, for quen-replay to run
// again. It differs from examples/reprocess, whose frame it takes, in the lines that name the
// recorder. Usage: record-example OUT.rec

#include <cstdio>
#include <cstring>
#include <string>

#include <quenRecorder/RecordedDevice.h>
#include <quenRecorder/RecordedIsp.h>
#include <quenRecorder/Recorder.h>

#include "../reprocess/Capture.h"
#include "../reprocess/GraphicBuffer.h"
#include "../reprocess/ResultListener.h"

namespace {

using namespace quen::recorder;

/** Develops a frame with a device object that records. @return whether that succeeds */
bool develop() {
    GraphicBuffer const raw(kWidth, kHeight, HAL_PIXEL_FORMAT_RAW16);
    GraphicBuffer const yuv(kWidth, kHeight, HAL_PIXEL_FORMAT_YCBCR_420_888);
    expose(raw);
    ImageBuffer rawImage = {0, HAL_PIXEL_FORMAT_RAW16, kPixels * 2, kWidth, kHeight, raw.handle()};
    ImageBuffer yuvImage = {
            1, HAL_PIXEL_FORMAT_YCBCR_420_888, kPixels * 3 / 2, kWidth, kHeight, yuv.handle()};
    camera_metadata* const settings = describeCapture();
    SessionParams session;
    session.input_streams = {{0, HAL_PIXEL_FORMAT_RAW16, kWidth, kHeight, false}};
    session.output_streams = {{1, HAL_PIXEL_FORMAT_YCBCR_420_888, kWidth, kHeight, true}};
    session.metadata = settings;

    RecordedDevice device;  // in the place of a quenOfflineDevice
    device.create(&session);
    PostProcessParams const request = {&session, 1, &rawImage, {&yuvImage}, settings};
    android::sp<ResultListener> const listener = new ResultListener;
    device.process(&request, listener);
    bool const isDeveloped = listener->succeedsWithin(std::chrono::seconds(30));
    device.destroy();
    free_camera_metadata(settings);
    return isDeveloped;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s OUT.rec\n", argv[0]);
        return 2;
    }
    int error = 0;
    auto const recorder = Recorder::start(argv[1], Pictures::Hashes, error);
    if (recorder == nullptr) {
        std::fprintf(stderr, "%s cannot be written: %s\n", argv[1], std::strerror(error));
        return 2;
    }
    bool const hasIsp = recordIsp(recorder) == android::OK;  // before the first session
    Recorder::setCurrent(recorder);                          // device objects record from now on
    bool const isDeveloped = develop();
    Recorder::setCurrent(nullptr);
    std::string const problem = recorder->finish();
    if (!hasIsp || !isDeveloped || !problem.empty()) {
        std::fprintf(stderr, "%s: %s\n", argv[1],
                     !hasIsp        ? "there is no ISP"
                     : !isDeveloped ? "the frame was not developed"
                                    : problem.c_str());
        return 1;
    }
    std::printf("%s: recorded\n", argv[1]);
    return 0;
}

// A client of quenOfflineDevice, from a RAW frame to a JPEG: RAW2YUV with a callback, then YUV2JPEG
// without one. docs/client-guide.md has the reasons. Usage: reprocess-example OUT.jpg

#include <cstdio>

#include <quenOfflineDevice/quenOfflineDevice.h>

#include "Capture.h"
#include "GraphicBuffer.h"
#include "ResultListener.h"

namespace {

constexpr int32_t kJpegBytes = kPixels * 3;  // more than any JPEG of the size takes

bool writeFile(char const* name, GraphicBuffer const& jpeg, int size) {
    size_t written = 0;
    std::FILE* const file = std::fopen(name, "wb");
    jpeg.access([&](void const* address) {
        written = file == nullptr ? 0 : std::fwrite(address, 1, static_cast<size_t>(size), file);
    });
    return file != nullptr && std::fclose(file) == 0 && written == static_cast<size_t>(size);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s OUT.jpg\n", argv[0]);
        return 2;
    }
    GraphicBuffer const raw(kWidth, kHeight, HAL_PIXEL_FORMAT_RAW16);
    GraphicBuffer const yuv(kWidth, kHeight, HAL_PIXEL_FORMAT_YCBCR_420_888);
    GraphicBuffer const jpeg(kJpegBytes, 1, HAL_PIXEL_FORMAT_BLOB);
    expose(raw);
    // Stream, format, bytes, width, height, handle. A JPEG has the size of its picture.
    ImageBuffer rawImage = {0, HAL_PIXEL_FORMAT_RAW16, kPixels * 2, kWidth, kHeight, raw.handle()};
    ImageBuffer yuvImage = {
            1, HAL_PIXEL_FORMAT_YCBCR_420_888, kPixels * 3 / 2, kWidth, kHeight, yuv.handle()};
    ImageBuffer jpegImage = {2, HAL_PIXEL_FORMAT_BLOB, kJpegBytes, kWidth, kHeight, jpeg.handle()};

    camera_metadata* const settings = describeCapture();
    SessionParams session;
    session.input_streams = {{0, HAL_PIXEL_FORMAT_RAW16, kWidth, kHeight, false}};
    session.output_streams = {{1, HAL_PIXEL_FORMAT_YCBCR_420_888, kWidth, kHeight, true}};
    session.metadata = settings;
    quenOfflineDevice device;
    device.create(&session);

    PostProcessParams request = {&session, 1, &rawImage, {&yuvImage}, settings};
    android::sp<ResultListener> const listener = new ResultListener;
    device.process(&request, listener);
    int size = 0;
    if (listener->succeedsWithin(std::chrono::seconds(30))) {
        // Another output format is another stage: the library configures the ISP anew.
        request = {&session, 2, &yuvImage, {&jpegImage}, settings};
        size = device.process(&request, nullptr);
    }
    device.destroy();
    free_camera_metadata(settings);

    bool const isWritten = size > 0 && writeFile(argv[1], jpeg, size);
    std::printf("%s: %d bytes%s\n", argv[1], size, isWritten ? "" : ", not written");
    return isWritten ? 0 : 1;
}

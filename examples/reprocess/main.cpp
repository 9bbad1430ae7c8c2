// A client of quenOfflineDevice, from a RAW frame to a JPEG: RAW2YUV with a callback, then YUV2JPEG
// without one. docs/client-guide.md has the reasons. Usage: reprocess-example OUT.jpg

#include <sys/mman.h>

#include <cstdio>

#include <host/isp/buffers/SensorCalibration.h>
#include <quen/Quen3AInfoManager.h>
#include <quenOfflineDevice/quenOfflineDevice.h>

#include "GraphicBuffer.h"
#include "ResultListener.h"

namespace {

// The width is a multiple of 64, so that the developed picture has packed rows: the library reads a
// YUV input as packed rows, whatever the stride of its buffer.
constexpr int32_t kWidth = 1280;
constexpr int32_t kHeight = 960;
constexpr int32_t kPixels = kWidth * kHeight;
constexpr int32_t kJpegBytes = kPixels * 3;  // more than any JPEG of the size takes

// Writes how the sensor took the frame into a 3A buffer. @return the index to find it by
int32_t publishCalibration() {
    using namespace quen::host::isp;
    QIF3ABufferInfo info;
    Quen3AInfoManager::Get3AInfoBuf(&info, kCalibrationBufferBytes);
    void* const address =
            mmap(nullptr, kCalibrationBufferBytes, PROT_WRITE, MAP_SHARED, info.fd, 0);
    if (address != MAP_FAILED) {
        SensorCalibration calibration;  // a grey mosaic needs no more than its levels
        calibration.levelBits = 14;
        calibration.whiteLevel = 16383;
        encodeCalibration({}, calibration, address, kCalibrationBufferBytes);
        munmap(address, kCalibrationBufferBytes);
    }
    return info.bufferIndex;
}

// What library and ISP are told of the capture.
camera_metadata* describeCapture() {
    int64_t const mode = 0;  // without it the library takes every mode as set
    uint8_t const quality = 90;
    struct {
        uint32_t tag;
        int32_t value;
    } const numbers[] = {
            {0xc00c0018, publishCalibration()},  // 3A buffer index
            {0xc0030099, 0},                     // camera id
            {0xc00300a2, 1},                     // request number, for the log
            {0xc0080001, 0},                     // UI mode: not 16, so 14 bits
            {0xc0090002, 0},                     // scene mode
            {0xc0030022, 0},                     // engineer mode
            {0xc0030092, 0},                     // fusion
    };
    camera_metadata* const settings = allocate_camera_metadata(16, 64);
    add_camera_metadata_entry(settings, 0xc0030014, &mode, 1);  // current mode
    add_camera_metadata_entry(settings, ANDROID_JPEG_QUALITY, &quality, 1);
    for (auto const& number : numbers) {
        add_camera_metadata_entry(settings, number.tag, &number.value, 1);
    }
    return settings;
}

// A slope of grey in the 14-bit samples that the library asks of a RAW16 buffer.
void expose(GraphicBuffer const& raw) {
    raw.access([](void* address) {
        for (int32_t i = 0; address != nullptr && i < kPixels; ++i) {
            static_cast<uint16_t*>(address)[i] =
                    static_cast<uint16_t>(7 * (i % kWidth + i / kWidth));
        }
    });
}

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

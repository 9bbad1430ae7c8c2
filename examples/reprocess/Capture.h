#pragma once

// The frame that the example develops, and what its client says of it.

#include <sys/mman.h>

#include <cstdint>

#include <host/isp/buffers/SensorCalibration.h>
#include <quen/Quen3AInfoManager.h>
#include <system/camera_metadata.h>

#include "GraphicBuffer.h"

// The width is a multiple of 64, so that the developed picture has packed rows: the library reads a
// YUV input as packed rows, whatever the stride of its buffer.
constexpr int32_t kWidth = 1280;
constexpr int32_t kHeight = 960;
constexpr int32_t kPixels = kWidth * kHeight;

// Writes how the sensor took the frame into a 3A buffer. @return the index to find it by
inline int32_t publishCalibration() {
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
inline camera_metadata* describeCapture() {
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
inline void expose(GraphicBuffer const& raw) {
    raw.access([](void* address) {
        for (int32_t i = 0; address != nullptr && i < kPixels; ++i) {
            static_cast<uint16_t*>(address)[i] =
                    static_cast<uint16_t>(7 * (i % kWidth + i / kWidth));
        }
    });
}

#define LOG_TAG "quenOfflineDevice"

#include "quenOfflineDevice/session/IspStreams.h"

#include <cstring>

#include <mtkcam/isp_metadata.h>
#include <nscam/Format.h>
#include <system/graphics.h>

#include "quenCommon/Log.h"
#include "quenOfflineDevice/metadata/IspMetadata.h"
#include "quenOfflineDevice/metadata/MetadataTags.h"

using android::hardware::hidl_vec;
using vendor::mediatek::hardware::camera::isphal::V1_0::ISPStream;
namespace Format = NSCam::Utils::Format;

namespace quen {
namespace {

constexpr int32_t kUiModeWithoutRaw14bit = 16;
constexpr int32_t kRawBits = 14;

constexpr size_t kStreamPlanes = 3;
constexpr uint32_t kJpegDataSpace = HAL_DATASPACE_V0_JFIF;
constexpr uint64_t kOutputUsage = 6;
constexpr uint64_t kImplementationDefinedUsage = 0x60000;

// The RGB reprocess flow: an input at least six times as wide as the first output, which is no
// BLOB, is configured as a BLOB of a third of the input's width with six bytes a pixel.
constexpr uint32_t kRgbLayout = 0x00010002;
constexpr uint32_t kRgbSamplesPerPixel = 3;
constexpr uint32_t kRgbBytesPerPixel = 6;
constexpr uint32_t kRgbWidthFactor = 6;

/** First int32 of a tag; false when the tag is absent. */
bool findInt32(camera_metadata const* metadata, uint32_t tag, int32_t& value) {
    camera_metadata_entry_t entry;
    if (find_camera_metadata_entry(const_cast<camera_metadata*>(metadata), tag, &entry) != 0) {
        return false;
    }
    value = entry.data.i32[0];
    return true;
}

int appendInt32(std::vector<unsigned char>& buffer, uint32_t tag, int32_t value) {
    int32_t values[] = {value};
    return add_isp_metadata_entry(buffer, tag, kIspTypeInt32, values, sizeof(values), nullptr);
}

/** Bytes per row of each plane; 0 beyond the format's planes. */
hidl_vec<uint32_t> planeStrides(int32_t format, uint32_t width) {
    hidl_vec<uint32_t> strides{0, 0, 0};
    for (size_t plane = 0; plane < Format::queryPlaneCount(format) && plane < kStreamPlanes;
         ++plane) {
        uint64_t const bits =
                static_cast<uint64_t>(Format::queryPlaneWidthInPixels(format, plane, width)) *
                Format::queryPlaneBitsPerPixel(format, plane);
        strides[plane] = static_cast<uint32_t>(bits / 8);
        QLOGI("Stream stride[%d] %d,", static_cast<int>(plane), strides[plane]);
    }
    return strides;
}

uint64_t streamUsage(Direction direction, int32_t format) {
    if (format == HAL_PIXEL_FORMAT_IMPLEMENTATION_DEFINED) {
        return kImplementationDefinedUsage;
    }
    return direction == Direction::Input ? 0 : kOutputUsage;
}

/** Converts one client stream to an ISP stream. */
ISPStream buildStream(StreamConfig const& stream, Direction direction,
                      std::vector<StreamConfig> const& outputs) {
    uint32_t width = stream.width;
    int32_t format = stream.format;
    bool const rgb = direction == Direction::Input && !outputs.empty() &&
                     outputs[0].format != HAL_PIXEL_FORMAT_BLOB &&
                     stream.width >= kRgbWidthFactor * outputs[0].width;
    if (rgb) {
        width = stream.width / kRgbSamplesPerPixel;
        format = HAL_PIXEL_FORMAT_BLOB;
        QLOGI("it is RGB reprocess flow, width %d, height %d", width, stream.height);
    }
    QLOGI("config stream info streamId %lld, width %d, height %d, format %d",
          static_cast<long long>(stream.streamId), width, stream.height, format);

    ISPStream result;
    result.id = static_cast<uint64_t>(static_cast<int64_t>(stream.streamId));
    result.stride = planeStrides(format, width);
    // 32-bit arithmetic that wraps, on purpose.
    result.size = static_cast<uint32_t>(Format::queryImageBitsPerPixel(format)) * width *
                  stream.height / 8;
    result.width = width;
    result.height = stream.height;
    result.format = format;
    result.dataSpace = format == HAL_PIXEL_FORMAT_BLOB ? kJpegDataSpace : 0;
    result.bufferLayout = 0;
    result.usage = streamUsage(direction, format);
    result.tail = 0;
    if (rgb) {
        result.bufferLayout = kRgbLayout;
        result.stride[0] = kRgbBytesPerPixel * width;
        result.size = kRgbBytesPerPixel * width * stream.height;
    }
    return result;
}

}  // namespace

bool isNeedRaw14bit(camera_metadata const* meta, int inputFormat) {
    bool result = true;
    if (inputFormat == HAL_PIXEL_FORMAT_RAW10) {
        QLOGI("inputFormat == HAL_PIXEL_FORMAT_RAW10");
        result = false;
    }
    int32_t uiMode = 0;
    if (findInt32(meta, tag::currentUiMode, uiMode)) {
        QLOGI("current ui mode %d", uiMode);
        result = result && uiMode != kUiModeWithoutRaw14bit;
    }
    QLOGI("isNeedRaw14bit %d", result);
    return result;
}

std::vector<ISPStream> buildIspStreams(Direction direction,
                                       std::vector<StreamConfig> const& streams,
                                       std::vector<StreamConfig> const& outputs) {
    std::vector<ISPStream> result;
    result.reserve(streams.size());
    for (StreamConfig const& stream : streams) {
        result.push_back(buildStream(stream, direction, outputs));
    }
    return result;
}

void clearPadding(hidl_vec<ISPStream>& streams) {
    static constexpr size_t kPaddingOffsets[] = {12, 52, 68};
    static constexpr size_t kPaddingBytes = 4;
    for (ISPStream& stream : streams) {
        for (size_t const offset : kPaddingOffsets) {
            memset(reinterpret_cast<uint8_t*>(&stream) + offset, 0, kPaddingBytes);
        }
    }
}

void appendSessionSettings(std::vector<unsigned char>& settings, camera_metadata const* meta,
                           bool isNeedRaw14bit) {
    if (isNeedRaw14bit && appendInt32(settings, tag::rawBitDepth, kRawBits) != 0) {
        QLOGD("add_isp_metadata_entry fail");
    }
    int32_t cameraId = 0;
    if (findInt32(meta, tag::cameraId, cameraId)) {
        QLOGI("current cameraId = %d", cameraId);
        appendInt32(settings, tag::ispCameraId, cameraId);
    } else {
        QLOGE("get cameraId failed");
    }
}

}  // namespace quen

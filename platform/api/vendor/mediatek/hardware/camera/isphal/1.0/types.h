#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include <hidl/HidlSupport.h>

namespace vendor::mediatek::hardware::camera::isphal::V1_0 {

using ::android::hardware::hidl_handle;
using ::android::hardware::hidl_vec;

/** Outcome of an operation of the ISP HAL. Value 6 has no name. */
enum class Status : uint32_t {
    OK = 0,
    ILLEGAL_ARGUMENT = 1,
    RESOURCE_ERROR = 2,
    REQUEST_ERROR = 3,
    REQUEST_STREAM_ID_ERROR = 4,
    RESULT_ERROR = 5,
    INTERNAL_ERROR = 7,
};

/** One image stream of a configuration. */
struct ISPStream final {
    uint64_t id __attribute__((aligned(8)));
    uint32_t size __attribute__((aligned(4)));              ///< bytes of one image
    hidl_vec<uint32_t> stride __attribute__((aligned(8)));  ///< bytes per row, per plane
    uint32_t width __attribute__((aligned(4)));             ///< pixels
    uint32_t height __attribute__((aligned(4)));            ///< pixels
    int32_t format __attribute__((aligned(4)));             ///< Android HAL pixel format
    uint32_t dataSpace __attribute__((aligned(4)));         ///< Android data space
    uint32_t bufferLayout __attribute__((aligned(4)));      ///< 0, or the ISP's own layout code
    uint64_t usage __attribute__((aligned(8)));             ///< gralloc usage bits
    uint32_t tail __attribute__((aligned(4)));              ///< always 0
};

static_assert(offsetof(ISPStream, id) == 0, "wrong offset");
static_assert(offsetof(ISPStream, size) == 8, "wrong offset");
static_assert(offsetof(ISPStream, stride) == 16, "wrong offset");
static_assert(offsetof(ISPStream, width) == 32, "wrong offset");
static_assert(offsetof(ISPStream, height) == 36, "wrong offset");
static_assert(offsetof(ISPStream, format) == 40, "wrong offset");
static_assert(offsetof(ISPStream, dataSpace) == 44, "wrong offset");
static_assert(offsetof(ISPStream, bufferLayout) == 48, "wrong offset");
static_assert(offsetof(ISPStream, usage) == 56, "wrong offset");
static_assert(offsetof(ISPStream, tail) == 64, "wrong offset");
static_assert(sizeof(ISPStream) == 72, "wrong size");
static_assert(alignof(ISPStream) == 8, "wrong alignment");

/** Streams and session settings of one configuration. */
struct ISPStreamConfiguration final {
    hidl_vec<ISPStream> inputStreams __attribute__((aligned(8)));
    hidl_vec<ISPStream> outputStreams __attribute__((aligned(8)));
    hidl_vec<uint8_t> sessionSettings __attribute__((aligned(8)));  ///< ISP metadata buffer
};

static_assert(sizeof(ISPStreamConfiguration) == 48, "wrong size");

/** One image buffer of a request, with the tuning data that goes with it. */
struct ISPBuffer final {
    uint64_t streamId __attribute__((aligned(8)));
    hidl_handle buffer __attribute__((aligned(8)));
    hidl_handle tuningData __attribute__((aligned(8)));   ///< null when there is none
    uint32_t tuningDataSize __attribute__((aligned(4)));  ///< bytes
    hidl_handle reserved __attribute__((aligned(8)));     ///< null
    uint32_t reservedSize __attribute__((aligned(4)));    ///< 0
};

static_assert(offsetof(ISPBuffer, buffer) == 8, "wrong offset");
static_assert(offsetof(ISPBuffer, tuningData) == 24, "wrong offset");
static_assert(offsetof(ISPBuffer, tuningDataSize) == 40, "wrong offset");
static_assert(offsetof(ISPBuffer, reserved) == 48, "wrong offset");
static_assert(offsetof(ISPBuffer, reservedSize) == 64, "wrong offset");
static_assert(sizeof(ISPBuffer) == 72, "wrong size");

/** One request: an input image and the outputs to make of it. */
struct ISPRequest final {
    uint32_t requestNumber __attribute__((aligned(4)));
    hidl_vec<uint8_t> settings __attribute__((aligned(8)));  ///< ISP metadata buffer
    hidl_vec<ISPBuffer> inputBuffers __attribute__((aligned(8)));
    hidl_vec<ISPBuffer> outputBuffers __attribute__((aligned(8)));
};

static_assert(sizeof(ISPRequest) == 56, "wrong size");

/** Outcome of one request. */
struct ISPResult final {
    uint32_t reqNumber __attribute__((aligned(4)));
    hidl_vec<uint8_t> resultMetadata __attribute__((aligned(8)));  ///< ISP metadata buffer
    Status status __attribute__((aligned(4)));
};

static_assert(sizeof(ISPResult) == 32, "wrong size");

/**
 * Text of a status: its name, or its value in hexadecimal when it has none.
 */
inline std::string toString(Status status) {
    switch (status) {
        case Status::OK:
            return "OK";
        case Status::ILLEGAL_ARGUMENT:
            return "ILLEGAL_ARGUMENT";
        case Status::RESOURCE_ERROR:
            return "RESOURCE_ERROR";
        case Status::REQUEST_ERROR:
            return "REQUEST_ERROR";
        case Status::REQUEST_STREAM_ID_ERROR:
            return "REQUEST_STREAM_ID_ERROR";
        case Status::RESULT_ERROR:
            return "RESULT_ERROR";
        case Status::INTERNAL_ERROR:
            return "INTERNAL_ERROR";
    }
    return ::android::hardware::details::toHexString(static_cast<uint32_t>(status));
}

}  // namespace vendor::mediatek::hardware::camera::isphal::V1_0

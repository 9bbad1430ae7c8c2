#include "report/InfoNames.h"

#include <cstddef>

#include <system/graphics.h>

namespace quen::reprocess {
namespace {

struct FormatName {
    int32_t format;
    char const* name;
};

constexpr FormatName kFormatNames[] = {
        {HAL_PIXEL_FORMAT_YCRCB_420_SP, "NV21"},
        {HAL_PIXEL_FORMAT_RAW16, "RAW16"},
        {HAL_PIXEL_FORMAT_BLOB, "BLOB"},
        {HAL_PIXEL_FORMAT_IMPLEMENTATION_DEFINED, "implementation-defined"},
        {HAL_PIXEL_FORMAT_YCBCR_420_888, "YCbCr_420_888"},
        {HAL_PIXEL_FORMAT_RAW10, "RAW10"},
};

constexpr char const* kBayerNames[] = {"rggb", "grbg", "gbrg", "bggr"};

// By host::isp::CalibrationState.
constexpr char const* kCalibrationOrigins[] = {"not given: defaults", "given",
                                               "malformed: defaults"};

}  // namespace

char const* formatName(int32_t format) {
    for (FormatName const& entry : kFormatNames) {
        if (entry.format == format) {
            return entry.name;
        }
    }
    return "unknown";
}

char const* stageName(isphal::ISPStreamConfiguration const& config) {
    bool const encodes = config.outputStreams.size() > 0 &&
                         config.outputStreams[0].format == HAL_PIXEL_FORMAT_BLOB;
    return encodes ? "YUV2JPEG" : "RAW2YUV";
}

char const* bayerName(host::isp::BayerOrder order) {
    return kBayerNames[static_cast<size_t>(order)];
}

char const* originName(host::isp::CalibrationState state) {
    return kCalibrationOrigins[static_cast<size_t>(state)];
}

}  // namespace quen::reprocess
